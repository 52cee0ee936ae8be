// Asks a controller once for everything that a project polls, each variable in the request that
// polling puts it into and then alone, and says what came of it: the first thing to do at a new
// machine.
//
// Who never answers is not waited for again and again: after a few requests without an answer, what
// is left of the station is not asked for.
#ifndef TAVMIR_SESSION_PROJECT_CHECK_H
#define TAVMIR_SESSION_PROJECT_CHECK_H

#include "host_session.h"
#include "pass_check.h"

#include <functional>

namespace tavmir::host
{

struct CheckedVariable {
    CheckAnswer alone;
    PassCheck::Variable together;
    QByteArray bytes; // the value's, as the driver's calls give them, when it answered alone

    bool isGood() const
    {
        return alone.end == CheckEnd::answered && together.answer.end == CheckEnd::answered;
    }
};

struct CheckResult {
    std::vector<CheckedVariable> variables; // in the order of the session's polled list
    int requests = 0;                       // of the pass, as far as it came
    std::vector<int> silentStations;        // asked, and never answered
};

class ProjectCheck
{
public:
    // What a session for a check is opened with: one pass, in which nobody is searched for.
    static SessionOptions sessionOptions();

    // Called often.
    //   asked  variables that were asked for alone, of all
    using Tell = std::function<void(int requests, size_t asked, size_t all)>;

    // session  set up with these options, not started
    ProjectCheck(HostSession& session, const project::Connection& connection, Tell tell);

    // Asks and waits; the session is connected. When it is stopped meanwhile: what is known by
    // then.
    CheckResult run();

private:
    struct Station {
        bool hasAnswered = false;
        int unanswered = 0;              // in a row
        std::optional<size_t> answering; // a variable that answered alone
        QString whyGivenUp;              // null: it is asked
    };

    void askTogether();
    void askAlone(size_t variable);
    CheckAnswer ask(const PolledElement& variable, QByteArray& bytes);
    void takeAnswer(int station, const CheckAnswer& answer);
    void askAgainWhoAnswered(int station);
    bool allGivenUp() const;

    HostSession& session_;
    Tell tell_;
    int askMs_;
    std::unique_ptr<FeedReader> reader_;
    std::vector<PolledElement> polled_;
    std::map<int, Station> stations_;
    PassCheck pass_;
    CheckResult result_;
};

} // namespace tavmir::host

#endif
