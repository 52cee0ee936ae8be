// A table that is redrawn in place on a terminal, the latest messages below it.
#ifndef TAVMIR_HOST_SCREEN_VIEW_H
#define TAVMIR_HOST_SCREEN_VIEW_H

#include "run_view.h"

namespace tavmir::host
{

class ScreenView : public RunView
{
public:
    explicit ScreenView(Console& console) : console_(console) {}

    void show(const std::vector<ValueRow>& rows, const LineState& state) override;
    void change(const ValueRow& row, WallClock::time_point time) override;
    void message(const QString& text) override;
    void close(const QStringList& lines, const QJsonObject& json) override;

private:
    Console& console_;
    bool first_ = true;
    QStringList recent_;  // messages
    QStringList undrawn_; // messages since the table was drawn last
};

} // namespace tavmir::host

#endif
