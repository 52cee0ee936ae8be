// A table as a block of text each time, for a standard output that is no terminal.
#ifndef TAVMIR_HOST_PLAIN_VIEW_H
#define TAVMIR_HOST_PLAIN_VIEW_H

#include "run_view.h"

namespace tavmir::host
{

class PlainView : public RunView
{
public:
    // colours  values that are not good are dimmed or coloured
    explicit PlainView(Console& console, bool colours = false)
        : console_(console), colours_(colours)
    {
    }

    void show(const std::vector<ValueRow>& rows, const LineState& state) override;
    void change(const ValueRow& row, WallClock::time_point time) override;
    void message(const QString& text) override;
    void close(const QStringList& lines, const QJsonObject& json) override;

private:
    Console& console_;
    bool colours_;
};

} // namespace tavmir::host

#endif
