// The tries of the search for refused variables: one-shot reads that share their requests with
// nobody, so that an answer that refuses one speaks of these variables alone. Under the gate, on
// the communication thread.
#ifndef TAVMIR_SESSION_SEARCH_TRIES_H
#define TAVMIR_SESSION_SEARCH_TRIES_H

#include "culprit_search.h"
#include "session_state.h"

namespace tavmir::host
{

class SearchTries
{
public:
    struct End {
        TryEnd end = TryEnd::nothing;
        quint8 code = 0; // of a refused one
    };

    explicit SearchTries(SessionState& state) : state_(state) {}

    // Queues what the search wants to try now, unless one is under way or somebody's one-shot reads
    // are.
    //   polled  the list that it searches
    void begin(CulpritSearch& search, const std::vector<PolledElement>& polled,
               Clock::time_point now);

    bool isCarriedBy(const RequestInFlight& request) const;

    // A request is over, and `request` still says what it carried.
    //   last  its last attempt
    void requestEnded(const RequestInFlight& request, const Exchange& last);

    // How the try ended, once; none while it is under way.
    std::optional<End> takeEnd();

private:
    bool give(const PolledElement& polled);

    SessionState& state_;
    std::optional<OperationId> id_;
    std::optional<End> end_; // by the requests so far
};

} // namespace tavmir::host

#endif
