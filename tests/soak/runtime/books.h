// The books of a session: what its callers asked for and were told, what its feed said, and what
// the controller was asked and stored. Any thread.
//
//   ask ──▶ given ──▶ the feed tells the end ──▶ closed
//                └──▶ the caller is answered ──┘
//
// The end in the feed decides what may be in the controller. The caller's answer must be the same,
// unless it says that the operation is still under way.
#ifndef TAVMIR_TESTS_SOAK_RUNTIME_BOOKS_H
#define TAVMIR_TESTS_SOAK_RUNTIME_BOOKS_H

#include "feed/feed_entry.h"
#include "feed/line_figures.h"
#include "memory_book.h"

#include <map>
#include <mutex>
#include <optional>

namespace tavmir::soak
{

using host::OperationKind;
using host::Outcome;
using host::OutcomeState;

// What the callers of one kind were told.
struct Answers {
    std::uint64_t asked = 0;
    std::uint64_t told[host::kOutcomeStates] = {};
    std::uint64_t underWay = 0;   // the caller's time was over before the end was known
    std::uint64_t notAwaited = 0; // nobody asked how it ended
};

class Books
{
public:
    explicit Books(const Plant& plant) : plant_(plant), memory_(plant) {}

    // The controller's thread.
    void seen(const controller::Simulation::Outcome& outcome);

    // A caller, in this order. A write gets the bytes to write.
    struct Asked {
        std::uint64_t operation = 0;
        QByteArray bytes;
    };
    Asked askWrite(int variable);
    Asked askRead(int variable);
    void given(std::uint64_t operation, quint64 key, bool awaited);
    void answered(std::uint64_t operation, const Outcome& outcome);

    // A bit of flags is written by one call that makes a read and a write of its own.
    void bitAnswered(int variable, int bit, bool wanted, const Outcome& outcome, Time asked);
    // What the controller has in the bit. A bit that nobody writes must not change meanwhile.
    bool bitNow(int variable, int bit);

    // The reader of the feed.
    void ended(const host::FeedEntry& entry);
    // A reply brought a polled variable's value.
    void polled(int variable, const QByteArray& bytes, Time from, Time to);

    // What the driver's cache says: some write's value, whatever became of it.
    void cached(int variable, const QByteArray& bytes);

    void found(const std::string& finding);

    // Operations whose end the feed has not told yet.
    std::size_t open() const;

    // When all is over: compares what is left.
    void close(const host::LineFigures& figures, const controller::BitMemory& memory);

    std::vector<std::string> findings() const;
    Answers answers(OperationKind kind) const;
    std::string text() const;

private:
    struct End {
        OperationKind kind = OperationKind::write;
        OutcomeState state = OutcomeState::done;
        int elements = 0;
        int acknowledged = 0;
        int station = 0;
        bool restMayBeThere = false;
        Time at;
    };
    struct Operation {
        OperationKind kind = OperationKind::write;
        int variable = 0;
        quint64 key = 0;
        bool awaited = true;
        bool answered = false;
        bool doubted = false;
        int reached = 0; // elements that the controller stored
        Time askedAt;
        std::optional<End> end;
        std::optional<Outcome> answer; // until the end is known
    };
    enum class Known { yes, no };
    struct BitState {
        Known known = Known::yes;
        bool value = false;
    };
    using Open = std::map<std::uint64_t, Operation>;

    static bool isUnderWay(const Outcome& outcome);
    Asked ask(OperationKind kind, int variable);
    void end(Open::iterator operation, const End& end);
    void settleWrite(std::uint64_t number, const Operation& operation, const End& end);
    void checkReached(const Operation& operation, const End& end);
    void checkRead(const Operation& operation, const Outcome& outcome);
    void compare(const Operation& operation, const Outcome& outcome, const End& end);
    void closeWhenOver(Open::iterator operation);
    void forgetForeign();
    void closeFigures(const host::LineFigures& figures, OperationKind kind, std::uint64_t more);
    void closeMemory(const controller::BitMemory& memory);
    void find(const std::string& finding);
    void findIf(MemoryBook::Check check, const std::string& finding);
    std::string nameOf(int variable) const;
    Answers& of(OperationKind kind) { return answers_[static_cast<int>(kind)]; }

    const Plant& plant_;
    mutable std::mutex mutex_;
    MemoryBook memory_;
    Open open_;
    std::uint64_t lastOperation_ = 0;
    std::map<quint64, std::uint64_t> byKey_;
    std::map<quint64, End> foreign_; // ends of keys that no caller has named yet
    std::uint64_t foreignEnds_[2] = {};
    std::map<int, std::uint32_t> numbers_; // of the last write of each variable
    std::map<std::pair<int, int>, BitState> bits_;
    std::uint64_t openEnds_ = 0;
    Answers answers_[2];
    Answers bitAnswers_; // of all calls; told: those that came to the write
    std::uint64_t bitReads_ = 0;
    std::uint64_t bitWrites_ = 0;
    std::uint64_t tooLongAgo_ = 0;
    std::uint64_t readsChecked_ = 0;
    std::uint64_t polledChecked_ = 0;
    std::uint64_t findingCount_ = 0;
    std::vector<std::string> findings_;
};

} // namespace tavmir::soak

#endif
