// The polled list as the host asked for it, and as the driver has it: without the variables that
// the controller refuses, or is suspected to. Each list that the driver is given is a generation.
// All calls under the gate.
#ifndef TAVMIR_SESSION_SEARCHED_LIST_H
#define TAVMIR_SESSION_SEARCHED_LIST_H

#include "culprit_search.h"
#include "session_state.h"

namespace tavmir::host
{

class SearchedList
{
public:
    // While the search goes on the driver is given another list this often at most.
    static constexpr std::chrono::seconds kLeastBetween{1};

    // searches  false: what is refused is polled on
    SearchedList(SessionState& state, bool searches) : state_(state), searches_(searches) {}

    // Another list, which must be one that the driver may get. Empty, or what went wrong.
    QString replace(const std::vector<PolledElement>& polled);

    const std::vector<PolledElement>& polled() const { return polled_; }
    CulpritSearch& search() { return search_; }

    // A polled request is over. The elements of one that was refused for an address, else none.
    void polledRequestEnded(bool good, const std::vector<WireElement>& refused,
                            Clock::time_point now);

    // What the search has tried is over; tells the feed what that changes.
    void tried(TryEnd end, quint8 code, Clock::time_point now);

    // Gives the driver another list, and the feed its plan, when what the search has found is worth
    // it. A new list is asked for from its head: so that its end has its turn too, a whole pass
    // lies between two, and many changes are made at once.
    void giveIfDue(Clock::time_point now);

private:
    bool isDue(Clock::time_point now);
    QString give(Clock::time_point now);
    void publishPlan();

    SessionState& state_;
    bool searches_;
    std::vector<PolledElement> polled_;
    CulpritSearch search_;
    std::optional<Clock::time_point> differsSince_;
    Clock::time_point givenAt_;
    bool isPlanOld_ = false;    // other variables are set aside than it says
    uint64_t passesBefore_ = 0; // the present list was given
};

} // namespace tavmir::host

#endif
