// CSV rows on standard output, everything else on standard error.
#ifndef TAVMIR_HOST_CSV_VIEW_H
#define TAVMIR_HOST_CSV_VIEW_H

#include "run_view.h"

namespace tavmir::host
{

class CsvView : public RunView
{
public:
    explicit CsvView(Console& console) : console_(console) {}

    void show(const std::vector<ValueRow>& rows, const LineState& state) override;
    void change(const ValueRow& row, WallClock::time_point time) override;
    void message(const QString& text) override;
    void close(const QStringList& lines, const QJsonObject& json) override;

private:
    void head();

    Console& console_;
    bool headed_ = false;
};

} // namespace tavmir::host

#endif
