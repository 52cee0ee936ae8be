// Requests as the controller sees them.
#include "memory_book.h"

#include <algorithm>

namespace tavmir::soak
{

namespace
{

constexpr std::size_t kValuesKept = 64;
constexpr std::size_t kTextsKept = 32;

std::string nameOf(const Plant& plant, int place)
{
    const Place& its = plant.place(place);
    return plant.variable(its.variable).element.addressText.toStdString() + " part " +
           std::to_string(its.part);
}

bool isOneBit(std::uint32_t bits)
{
    return (bits & (bits - 1)) == 0;
}

bool sameElements(const std::vector<controller::BitValue>& left,
                  const std::vector<controller::BitValue>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const controller::BitValue& one, const controller::BitValue& other) {
                          return one.address == other.address && one.value == other.value;
                      });
}

} // namespace

MemoryBook::MemoryBook(const Plant& plant)
    : plant_(plant), elements_(plant.places().size()),
      values_(plant.places().size(), Standing<std::uint32_t>(kValuesKept)),
      doubtedAt_(plant.places().size())
{
    for (std::size_t i = 0; i < plant.variables().size(); ++i) {
        const Variable& variable = plant.variables()[i];
        if (variable.isText()) {
            const Words none(Plant::asIndex(variable.places), 0);
            texts_.emplace(static_cast<int>(i), Text{Standing<Words>(kTextsKept, none), Time()});
        }
    }
}

MemoryBook::Seen MemoryBook::seen(const controller::Simulation::Outcome& outcome)
{
    Seen seen;
    const Request& request = outcome.request;
    const std::vector<int> places = placesOf(request, seen.finding);
    if (!seen.finding.empty()) {
        return seen;
    }
    if (!request.functionCode->write) {
        ++reads_;
        noteSplits(places);
        return seen;
    }
    ++writes_;
    // A repetition changes nothing: it is the very request that was carried out last.
    if (outcome.carriedOut && !isRepeated(request)) {
        store(request, places, seen);
        last_ = request;
    }
    if (outcome.fault == controller::FaultKind::Corrupt) {
        doubt(request, places, seen);
    }
    return seen;
}

// The finding says what is wrong with the request itself.
std::vector<int> MemoryBook::placesOf(const Request& request, std::string& finding) const
{
    std::vector<int> places;
    if (request.exceptionCode != 0 || request.functionCode == nullptr) {
        finding = "a request that makes no sense";
        return places;
    }
    for (const controller::BitValue& element : request.elements) {
        const int place = plant_.placeAt(request.functionCode->valueBits, element.address);
        if (place < 0) {
            finding =
                "a request for address " + std::to_string(element.address) + ", where nothing is";
            return places;
        }
        if (plant_.place(place).station != request.station) {
            finding = nameOf(plant_, place) + " is asked for at station " +
                      std::to_string(request.station);
            return places;
        }
        places.push_back(place);
    }
    return places;
}

bool MemoryBook::isRepeated(const Request& request)
{
    const bool same = request.transactionId == last_.transactionId &&
                      request.station == last_.station && request.function == last_.function &&
                      sameElements(request.elements, last_.elements);
    repeated_ += same ? 1 : 0;
    return same;
}

void MemoryBook::store(const Request& request, const std::vector<int>& places, Seen& seen)
{
    const Time at = std::chrono::steady_clock::now();
    std::vector<int> texts;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const int place = places[i];
        const std::uint32_t value = request.elements[i].value;
        const Variable& variable = plant_.variable(plant_.place(place).variable);
        if (variable.kind == Kind::flags) {
            // Who writes a bit has read the word before, and nobody else writes in between.
            if (!isOneBit(now(place) ^ value)) {
                seen.finding = nameOf(plant_, place) + " goes from " + std::to_string(now(place)) +
                               " to " + std::to_string(value) + ": more than one bit changes";
            }
        } else {
            const std::vector<std::uint64_t> operations = element(place).stored(value);
            if (operations.empty()) {
                seen.finding = nameOf(plant_, place) + " gets " + std::to_string(value) +
                               ", which nobody asked for lately";
            } else if (variable.isUnique()) {
                seen.reached.push_back(operations.front());
            }
        }
        values_[Plant::asIndex(place)].changed(value, at);
        const int number = plant_.place(place).variable;
        if (variable.isText() && (texts.empty() || texts.back() != number)) {
            texts.push_back(number);
        }
    }
    for (const int number : texts) {
        const Variable& variable = plant_.variable(number);
        Words words;
        for (int part = 0; part < variable.places; ++part) {
            words.push_back(now(variable.firstPlace + part));
        }
        texts_.at(number).words.changed(words, at);
    }
}

void MemoryBook::doubt(const Request& request, const std::vector<int>& places, Seen& seen)
{
    for (std::size_t i = 0; i < places.size(); ++i) {
        doubtedAt_[Plant::asIndex(places[i])] = std::chrono::steady_clock::now();
        const std::vector<std::uint64_t> operations =
            element(places[i]).operationsOf(request.elements[i].value);
        seen.doubted.insert(seen.doubted.end(), operations.begin(), operations.end());
    }
}

void MemoryBook::noteSplits(const std::vector<int>& places)
{
    std::map<int, int> parts;
    for (const int place : places) {
        const int number = plant_.place(place).variable;
        if (plant_.variable(number).isText()) {
            ++parts[number];
        }
    }
    for (const auto& [number, count] : parts) {
        if (count != plant_.variable(number).places) {
            texts_.at(number).lastSplit = std::chrono::steady_clock::now();
        }
    }
}

MemoryBook::Check MemoryBook::couldRead(int place, std::uint32_t value, Time from, Time to) const
{
    const Standing<std::uint32_t>& values = values_[Plant::asIndex(place)];
    if (values.stood(value, from, to)) {
        return Check::right;
    }
    return values.reachesTo(from) ? Check::wrong : Check::tooLongAgo;
}

MemoryBook::Check MemoryBook::couldReadWhole(int variable, const Words& words, Time from,
                                             Time to) const
{
    const Text& text = texts_.at(variable);
    if (text.lastSplit >= from || text.words.stood(words, from, to)) {
        return Check::right;
    }
    return text.words.reachesTo(from) ? Check::wrong : Check::tooLongAgo;
}

} // namespace tavmir::soak
