// The formats of values, in one table: what each is called, for which elements it is, and how it
// shows a value. Whoever adds one adds it here, and to the manual page. Private to this folder.
#ifndef TAVMIR_PROJECT_FORMAT_TABLE_H
#define TAVMIR_PROJECT_FORMAT_TABLE_H

#include "address_resolver.h"

#include <QtCore/QByteArray>

#include <vector>

namespace tavmir::project
{

struct FormatRow {
    Format format;
    const char* name; // in project files and on command lines
    bool (*fits)(const Element& element);
    // bytes  least significant first; missing ones count as zero
    QString (*show)(const Element& element, const QByteArray& bytes);
};

// In the order in which they are listed; `automatic` is none of them.
const std::vector<FormatRow>& formatTable();

// Null for `automatic`.
const FormatRow* formatRow(Format format);

} // namespace tavmir::project

#endif
