// One row of the table: texts that can be printed, and what they are sorted by.
#ifndef TAVMIR_TERMINAL_TABLE_ROW_H
#define TAVMIR_TERMINAL_TABLE_ROW_H

#include "feed/quality.h"

#include <QtCore/QString>

#include <optional>

namespace tavmir::host
{

struct TableRow {
    QString name;
    QString address;
    QString value; // null: never read
    QString age;
    std::optional<qint64> ageMs; // none: never read
    Quality quality = Quality::never;
    QString reason;
};

} // namespace tavmir::host

#endif
