// Finds the variables that make a controller refuse requests: one address that it lacks takes up to
// 44 neighbours with it. Told which polled requests were refused, it says what to ask for by
// one-shot reads, halves first, and which variables belong into the polled list meanwhile:
//
//   polled ── in a refused request ──▶ suspected ── answers ─────────▶ polled
//                                          └─ refused by itself ──▶ refused ── answers ──▶ polled
//
// A refused one is tried again after 10 s, then after twice as long each time, up to 5 minutes.
// What answered although its request was refused is not suspected again for as long. Tries leave
// the line to others for at least as long as each took, and longer while nothing at all is
// answered.
//
// No clock, no line, no driver; not locked.
#ifndef TAVMIR_SESSION_CULPRIT_SEARCH_H
#define TAVMIR_SESSION_CULPRIT_SEARCH_H

#include "plan/polled_plan.h"
#include "wire/deadline.h"

#include <deque>
#include <set>

namespace tavmir::host
{

using wire::Clock;

// What became of a try.
enum class TryEnd {
    answered,
    refused, // for an address in it
    nothing  // no answer, or one that blames no address
};

class CulpritSearch
{
public:
    static constexpr std::chrono::seconds kFirstPause{10};
    static constexpr std::chrono::seconds kLongestPause{300};
    static constexpr std::chrono::milliseconds kLeastGap{5};
    static constexpr std::chrono::milliseconds kLongestGap{100};

    // True for the codes that speak of what was asked for: 2 (illegal data address), 3 (illegal
    // data value). The others speak of the function, of the controller's or a gateway's state, or
    // of the station, and no address is to blame: polling goes on at its pace.
    static bool blamesAddress(quint8 code) { return code == 2 || code == 3; }

    // The polled variables from now on, which the driver has yet to be given. What is known of
    // those that were polled before is kept; a try that is under way says nothing any more.
    void watch(const std::vector<PolledElement>& variables);

    // A polled request was refused for an address. Of a list that is not the driver's any more it
    // must not be told.
    void refused(const std::vector<WireElement>& elements, Clock::time_point now);

    // A polled request was answered: the controller does not refuse everything.
    void answered() { answersSomething_ = true; }

    // Variables to ask for in one go, or none now; to be told the end of it.
    std::vector<size_t> next(Clock::time_point now);
    void ended(TryEnd end, quint8 code, Clock::time_point now);
    // When `next` is worth another call; the clock's maximum: not before something else happens.
    Clock::time_point nextAt() const;

    // Variables are suspected.
    bool isSearching() const { return !groups_.empty(); }

    // What belongs into the driver's list, whether that is another list than it was given, and that
    // it has been given this one.
    bool isWanted(size_t variable) const { return variables_[variable].state == State::polled; }
    bool listDiffers() const { return differing_ > 0; }
    void listGiven();

    struct Refused {
        size_t variable = 0;
        quint8 code = 0;
    };
    std::vector<Refused> refusedVariables() const;

    // Each variable that was found refused, or that answers again, since the last call.
    struct Change {
        size_t variable = 0;
        bool isRefused = false;
        quint8 code = 0;
    };
    std::vector<Change> takeChanges();

private:
    enum class State { polled, suspected, refused };

    struct Variable {
        State state = State::polled;
        bool isListed = false; // the driver was given it
        quint8 code = 0;
        int elements = 1;
        // Of a refused one when it is tried again; of a polled one until when it is not suspected.
        Clock::time_point due;
        Clock::duration pause{};
        Clock::time_point tried;
    };

    // Variables that are tried together.
    struct Group {
        std::vector<size_t> variables;
        bool holdsOne = false;    // a refused one is known to be among them
        bool halfFollows = false; // the next group holds one when this holds none
        bool wereRefused = false; // they were found before; never cut
    };

    struct Place {
        WireElement element;
        size_t variable = 0;
    };

    static bool isBefore(const Place& left, const Place& right);
    std::vector<size_t> variablesOf(const std::vector<WireElement>& elements) const;
    void keepKnown(const std::vector<PolledElement>& before, const std::vector<Variable>& known);
    void set(size_t variable, State state);
    void suspect(const std::vector<size_t>& variables, Clock::time_point now);
    bool mustBeCut(const Group& group) const;
    void cutFirst();
    std::vector<size_t> begin(Group group, Clock::time_point now);
    void takeRefusal(const Group& group, quint8 code, Clock::time_point now);
    void convict(size_t variable, quint8 code, Clock::time_point now);
    void acquit(size_t variable, Clock::time_point now);
    void release(size_t variable, Clock::time_point now);
    void tryRefusedTogether(Clock::time_point now);
    void keepGap(TryEnd end, Clock::time_point now);

    std::vector<PolledElement> polled_;
    std::vector<Variable> variables_;
    std::vector<Place> places_;        // ascending
    std::deque<Group> groups_;         // to be tried, next first
    std::ptrdiff_t ofThisRequest_ = 0; // the first groups: of the request that is cut just now
    Group underWay_;                   // without variables: none
    std::set<std::pair<Clock::time_point, size_t>> retries_; // refused ones by `due`
    std::vector<Change> changes_;
    size_t differing_ = 0;
    Clock::time_point began_; // the try that is under way
    Clock::time_point gapEnd_;
    Clock::duration silence_{}; // the gap while everything is refused
    bool answersSomething_ = false;
};

} // namespace tavmir::host

#endif
