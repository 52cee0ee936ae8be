// Distances between occurrences: in requests, else in time.
#include "rhythm.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tavmir::diagnose
{

namespace
{

constexpr std::size_t kFewest = 3;
constexpr double kMostlyShare = 0.8; // of the distances agree
constexpr double kTolerance = 0.15;  // of a distance in time
constexpr Nanoseconds kLeastPeriod = 20 * kMillisecond;
constexpr double kApart = 10; // between bursts, in usual distances
constexpr Nanoseconds kLeastApart = kSecond;
constexpr Nanoseconds kLeastSpan = 10 * kSecond; // for a rate

template <typename Number> Number medianOf(std::vector<Number> numbers)
{
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

std::string decimal(double number, int places)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", places, number);
    return text;
}

std::string ordinal(std::uint64_t number)
{
    const std::uint64_t last = number % 10;
    const bool isTeen = number % 100 / 10 == 1;
    const char* ending = isTeen || last > 3 || last == 0 ? "th"
                         : last == 1                     ? "st"
                         : last == 2                     ? "nd"
                                                         : "rd";
    return std::to_string(number) + ending;
}

// Empty: they recur in no fixed number of requests.
std::string inRequests(const std::vector<Occurrence>& occurrences)
{
    std::vector<std::uint64_t> steps;
    for (std::size_t i = 1; i < occurrences.size(); ++i) {
        if (occurrences[i].ordinal <= occurrences[i - 1].ordinal) {
            return std::string();
        }
        steps.push_back(occurrences[i].ordinal - occurrences[i - 1].ordinal);
    }
    const std::uint64_t usual = medianOf(steps);
    const auto agree = static_cast<std::size_t>(std::count(steps.begin(), steps.end(), usual));
    if (static_cast<double>(agree) < kMostlyShare * static_cast<double>(steps.size())) {
        return std::string();
    }
    const std::string mostly = agree == steps.size() ? "" : "mostly ";
    return mostly + (usual == 1 ? "each request" : "every " + ordinal(usual) + " request");
}

std::vector<Nanoseconds> pausesOf(const std::vector<Occurrence>& occurrences)
{
    std::vector<Nanoseconds> pauses;
    for (std::size_t i = 1; i < occurrences.size(); ++i) {
        pauses.push_back(occurrences[i].at - occurrences[i - 1].at);
    }
    return pauses;
}

// Empty: they are not evenly apart.
std::string inTime(const std::vector<Nanoseconds>& pauses)
{
    const Nanoseconds usual = medianOf(pauses);
    if (usual < kLeastPeriod) {
        return std::string();
    }
    const auto agreeing = std::count_if(pauses.begin(), pauses.end(), [&](Nanoseconds pause) {
        return std::fabs(static_cast<double>(pause - usual)) <
               kTolerance * static_cast<double>(usual);
    });
    return static_cast<double>(agreeing) < kMostlyShare * static_cast<double>(pauses.size())
               ? std::string()
               : "every " + durationInWords(usual);
}

// Empty: they are not gathered.
std::string inBursts(const std::vector<Occurrence>& occurrences,
                     const std::vector<Nanoseconds>& pauses)
{
    const auto apart = std::max(
        kLeastApart, static_cast<Nanoseconds>(kApart * static_cast<double>(medianOf(pauses))));
    std::size_t bursts = 1;
    std::size_t begin = 0;
    std::size_t longest = 0;
    Nanoseconds lasting = 0;
    const auto endAt = [&](std::size_t last) {
        if (last - begin + 1 > longest) {
            longest = last - begin + 1;
            lasting = occurrences[last].at - occurrences[begin].at;
        }
    };
    for (std::size_t i = 0; i < pauses.size(); ++i) {
        if (pauses[i] > apart) {
            endAt(i);
            begin = i + 1;
            ++bursts;
        }
    }
    endAt(occurrences.size() - 1);
    if (bursts == 1 || bursts * kFewest > occurrences.size()) {
        return std::string();
    }
    return "in " + std::to_string(bursts) + " bursts, the longest of " + std::to_string(longest) +
           " within " + durationInWords(lasting);
}

} // namespace

std::string durationInWords(Nanoseconds duration)
{
    if (duration >= kSecond) {
        return decimal(secondsOf(duration), 1) + " s";
    }
    return decimal(millisecondsOf(duration), duration < 10 * kMillisecond ? 2 : 1) + " ms";
}

std::string rhythmOf(const std::vector<Occurrence>& occurrences)
{
    if (occurrences.size() < kFewest) {
        return std::string();
    }
    const std::vector<Nanoseconds> pauses = pausesOf(occurrences);
    for (const std::string& words :
         {inRequests(occurrences), inTime(pauses), inBursts(occurrences, pauses)}) {
        if (!words.empty()) {
            return words;
        }
    }
    const Nanoseconds span = occurrences.back().at - occurrences.front().at;
    const double minutes = secondsOf(span) / 60;
    return span < kLeastSpan
               ? std::string()
               : "irregularly, " +
                     decimal(static_cast<double>(occurrences.size() - 1) / minutes, 1) +
                     " a minute";
}

} // namespace tavmir::diagnose
