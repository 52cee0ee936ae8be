// The controller's side of the books: every request that reached it, every value that it stored.
// Not locked: its user does.
#ifndef TAVMIR_TESTS_SOAK_RUNTIME_MEMORY_BOOK_H
#define TAVMIR_TESTS_SOAK_RUNTIME_MEMORY_BOOK_H

#include "controller/simulation.h"
#include "element_book.h"
#include "plant.h"
#include "standing.h"

#include <map>
#include <string>

namespace tavmir::soak
{

using Words = std::vector<std::uint32_t>;

class MemoryBook
{
public:
    explicit MemoryBook(const Plant& plant);

    // What one request did.
    struct Seen {
        std::vector<std::uint64_t> reached; // operations, once for each element stored
        std::vector<std::uint64_t> doubted; // whose acknowledgement may look like a refusal
        std::string finding;
    };
    // A request that the controller has dealt with.
    Seen seen(const controller::Simulation::Outcome& outcome);

    ElementBook& element(int place) { return elements_[Plant::asIndex(place)]; }
    std::uint32_t now(int place) const { return values_[Plant::asIndex(place)].now(); }
    // When a wrong reply last went out to a request that wrote the place.
    Time doubtedAt(int place) const { return doubtedAt_[Plant::asIndex(place)]; }

    enum class Check { right, wrong, tooLongAgo };
    // Whether the place held the value at some time between the two.
    Check couldRead(int place, std::uint32_t value, Time from, Time to) const;
    // Whether the text's words stood together; always, when a request read a part of it then.
    Check couldReadWhole(int variable, const Words& words, Time from, Time to) const;

    // How many requests of each kind.
    std::uint64_t writes() const { return writes_; }
    std::uint64_t reads() const { return reads_; }
    std::uint64_t repeated() const { return repeated_; }

private:
    using Request = controller::Request;

    struct Text {
        Standing<Words> words;
        Time lastSplit; // when a request last read a part of it only
    };

    std::vector<int> placesOf(const Request& request, std::string& finding) const;
    bool isRepeated(const Request& request);
    void store(const Request& request, const std::vector<int>& places, Seen& seen);
    void doubt(const Request& request, const std::vector<int>& places, Seen& seen);
    void noteSplits(const std::vector<int>& places);

    const Plant& plant_;
    std::vector<ElementBook> elements_;
    std::vector<Standing<std::uint32_t>> values_;
    std::vector<Time> doubtedAt_;
    std::map<int, Text> texts_; // by variable
    Request last_;              // write that was carried out
    std::uint64_t writes_ = 0;
    std::uint64_t reads_ = 0;
    std::uint64_t repeated_ = 0;
};

} // namespace tavmir::soak

#endif
