// One JSON object a line: all values, one change, or the statistics.
#ifndef TAVMIR_HOST_JSON_VIEW_H
#define TAVMIR_HOST_JSON_VIEW_H

#include "run_view.h"

namespace tavmir::host
{

class JsonView : public RunView
{
public:
    explicit JsonView(Console& console) : console_(console) {}

    void show(const std::vector<ValueRow>& rows, const LineState& state) override;
    void change(const ValueRow& row, WallClock::time_point time) override;
    void message(const QString& text) override;
    void close(const QStringList& lines, const QJsonObject& json) override;

private:
    Console& console_;
};

} // namespace tavmir::host

#endif
