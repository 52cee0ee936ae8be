// The feed, folded for a view.
#include "run_monitor.h"

namespace tavmir::host
{

RunMonitor::RunMonitor(Feed& feed, const QString& controller, RunView& view, bool everyChange)
    : reader_(feed.subscribe()), controller_(controller), view_(view), everyChange_(everyChange)
{
    state_.words = "not connected to " + controller + ": not tried yet";
}

void RunMonitor::look()
{
    reader_->read([this](const FeedEntry& entry) { take(entry); },
                  [this](quint64 count) {
                      figures_.gap(count);
                      if (everyChange_) {
                          view_.message(QString("%1 events were missed: changes among them are "
                                                "not shown")
                                            .arg(count));
                      }
                  });
}

void RunMonitor::take(const FeedEntry& entry)
{
    figures_.take(entry);
    recent_.take(entry);
    tellLine(entry);
    if (!everyChange_) {
        values_.take(entry);
        return;
    }
    values_.take(entry, [&](size_t variable) {
        view_.change(rowOf(values_.variables()[variable], values_.value(variable).bytes, 0),
                     entry.wall);
    });
}

// What failed names its address by itself, unless it is a name that was looked up.
QString RunMonitor::withController(const QString& why) const
{
    return why.startsWith(controller_ + ": ") ? why : controller_ + ": " + why;
}

void RunMonitor::tellLine(const FeedEntry& entry)
{
    if (entry.standing && (entry.kind == FeedKind::connected) == state_.connected) {
        return; // known
    }
    switch (entry.kind) {
    case FeedKind::connected:
        failureTold_ = false;
        state_ = {true, "connected to " + controller_};
        view_.message(state_.words);
        break;
    case FeedKind::connectFailed:
        state_ = {false, "not connected to " + withController(entry.text)};
        if (!failureTold_) {
            view_.message(
                QString("cannot connect to %1; trying again").arg(withController(entry.text)));
        }
        failureTold_ = true;
        break;
    case FeedKind::connectionLost:
        failureTold_ = true;
        state_ = {false, "not connected to " + withController(entry.text)};
        view_.message(QString("lost %1: %2").arg(controller_, entry.text));
        break;
    default:
        break;
    }
}

void RunMonitor::show()
{
    const Clock::time_point now = Clock::now();
    state_.recent = recent_.at(now);
    view_.show(rowsOf(values_, now), state_);
}

} // namespace tavmir::host
