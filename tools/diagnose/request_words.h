// The different requests of a conversation, numbered, and what they are called.
#ifndef TAVMIR_DIAGNOSE_REQUEST_WORDS_H
#define TAVMIR_DIAGNOSE_REQUEST_WORDS_H

#include "exchange.h"

#include "wire/frame_layout.h"
#include "wire/frame_words.h"

#include <map>

namespace tavmir::diagnose
{

// One element at one station.
struct Place {
    std::uint8_t station = 0;
    wire::ElementClass elements = wire::ElementClass::words;
    std::uint32_t address = 0;

    bool operator<(const Place& other) const
    {
        return station != other.station     ? station < other.station
               : elements != other.elements ? elements < other.elements
                                            : address < other.address;
    }
};

struct PlaceAndValue {
    Place place;
    int bits = 0;
    std::uint32_t value = 0; // 0 where there is none
};

// The elements that a whole request names, with the values that it writes; of a whole reply to a
// read, those that it brings. None of any other bytes.
std::vector<PlaceAndValue> elementsOfRequest(const Bytes& request);
std::vector<PlaceAndValue> elementsOfReply(const Bytes& reply);

class RequestTable
{
public:
    // Requests that differ in their transactions only are the same.
    std::size_t numberOf(const Bytes& request);
    const Bytes& request(std::size_t number) const { return *requests_[number]; }

private:
    std::map<Bytes, std::size_t> numbers_;
    std::vector<const Bytes*> requests_;
};

// "station 1 read words: Main.Mode, Main.Setpoint and 36 more"
std::string requestName(const Bytes& request, const wire::DescribeElements& describe);

// "Main.Mode (word at 3000 of station 1)", or "word at 3000 of station 1"
std::string placeName(const PlaceAndValue& place, const wire::DescribeElements& describe);
// A value of it: "33"
std::string valueName(const PlaceAndValue& place, const wire::DescribeElements& describe);

} // namespace tavmir::diagnose

#endif
