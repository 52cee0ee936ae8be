// What was asked for, element by element: how often, how often it was answered or refused, and how
// long a pass over everything that is read again and again takes.
#ifndef TAVMIR_DIAGNOSE_ELEMENT_BOOK_H
#define TAVMIR_DIAGNOSE_ELEMENT_BOOK_H

#include "request_words.h"

#include <map>

namespace tavmir::diagnose
{

struct ElementEntry {
    int bits = 0;
    std::uint64_t asked = 0; // in requests; repetitions are none of their own
    std::uint64_t answered = 0;
    std::uint64_t refused = 0;
    std::uint64_t refusedAlone = 0; // it was the only element
    std::uint8_t code = 0;          // of the latest exception
    std::uint64_t read = 0;
    Nanoseconds firstRead = 0;
    Nanoseconds lastRead = 0;
    Nanoseconds longestPause = 0; // between two reads
};

class ElementBook
{
public:
    enum class Outcome { answered, refused, none };

    //   code  with Outcome::refused
    void add(const Exchange& exchange, Outcome outcome, std::uint8_t code);

    const std::map<Place, ElementEntry>& elements() const { return elements_; }

    struct Pass {
        std::size_t elements = 0; // that are read again and again
        Nanoseconds usual = 0;
        Nanoseconds longest = 0;
    };
    Pass pass() const;

private:
    std::map<Place, ElementEntry> elements_;
};

} // namespace tavmir::diagnose

#endif
