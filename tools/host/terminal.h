// Where a run shows its values and messages: a table that is redrawn in place on a terminal,
// plain blocks or lines otherwise.
#ifndef TAVMIR_HOST_TERMINAL_H
#define TAVMIR_HOST_TERMINAL_H

#include "value_table.h"

#include <QtCore/QStringList>

#include <mutex>

namespace tavmir::host
{

class Terminal
{
public:
    explicit Terminal(OutputFormat format);

    // One refresh. `state` says how the connection is.
    void show(const std::vector<ValueRow>& rows, bool connected, const QString& state);

    // One line beside the values: below the table in place, else on standard error. Any thread.
    void message(const QString& text);

    // The closing lines, below everything; `json` instead of `lines` when that is the format.
    void close(const QStringList& lines, const QJsonObject& json);

private:
    void showInPlace(const QStringList& lines, const QString& state);

    std::mutex mutex_;
    OutputFormat format_;
    bool inPlace_;
    bool first_ = true;
    QStringList recent_; // messages shown below the table
};

} // namespace tavmir::host

#endif
