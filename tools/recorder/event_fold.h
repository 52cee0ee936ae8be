// What the events of a recording, one after the other, say of a moment: how the line was, and which
// variables were set aside. What they cannot say for sure is left open. One thread.
#ifndef TAVMIR_RECORDER_EVENT_FOLD_H
#define TAVMIR_RECORDER_EVENT_FOLD_H

#include "recorded_rows.h"

#include <map>
#include <set>

namespace tavmir::recorder
{

// How the line was.
struct LinePast {
    EventRow last;          // that says so, with the newest reason
    Micros since = 0;       // it is so: connected since then, or not connected since the loss
    bool isSinceOr = false; // "or before": what was before is not recorded any more
};

// A variable that the controller refused by itself.
struct AsidePast {
    QString why;
    Micros since = 0;
};

enum class WhetherAside {
    no,
    yes,
    unknown // the events of then are not there
};

class EventFold
{
public:
    // The kinds that say something here.
    static const std::vector<const char*>& kinds();

    // In the order in which they were recorded.
    void take(const EventRow& event);
    // Some are missing here: those of a file that is gone.
    void miss();

    // None: nothing says it.
    const std::optional<LinePast>& line() const { return line_; }

    //   name  as the polled list has it
    WhetherAside isAside(const QString& name) const;
    // Those that were, by name.
    const std::map<QString, AsidePast>& asides() const { return asides_; }

private:
    void takeLine(const EventRow& event);
    void takeAside(const EventRow& event);
    void takePlan(const EventRow& event);
    void down(const EventRow& event, bool isLoss);

    std::optional<LinePast> line_;
    std::optional<LinePast> up_;   // since when it is connected; none: it is not
    std::optional<LinePast> down_; // since when it is not connected
    std::map<QString, AsidePast> asides_;
    std::set<QString> polled_; // that were back
    bool isWhole_ = false;     // who is in neither was never refused
};

} // namespace tavmir::recorder

#endif
