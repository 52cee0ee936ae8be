// Happenings gathered by trouble.
#include "findings.h"

#include "rhythm.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>

namespace tavmir::diagnose
{

namespace
{

constexpr std::size_t kMostOccurrences = 3;
constexpr std::size_t kMostListed = 6;

// A reply is slow that took so many times the median, and so much longer.
constexpr Nanoseconds kSlowTimes = 10;
constexpr Nanoseconds kSlowBy = 20 * kMillisecond;

// What a time-out is rounded up to.
constexpr double kRoundMs = 10;

Nanoseconds shareOf(std::vector<Nanoseconds> times, double share)
{
    const auto place = static_cast<std::ptrdiff_t>(share * static_cast<double>(times.size() - 1));
    std::nth_element(times.begin(), times.begin() + place, times.end());
    return times[static_cast<std::size_t>(place)];
}

std::vector<Nanoseconds> lengthsOf(const std::vector<RoundTrip>& trips)
{
    std::vector<Nanoseconds> lengths;
    lengths.reserve(trips.size());
    for (const RoundTrip& trip : trips) {
        lengths.push_back(trip.lasted);
    }
    return lengths;
}

// One conversation's teller.
class Teller
{
public:
    Teller(const Conversation& conversation, const wire::DescribeElements& describe)
        : conversation_(conversation), describe_(describe)
    {
    }

    std::string requestOf(std::size_t number) const
    {
        return requestName(conversation_.requests().request(number), describe_);
    }

    // "2026-…Z #17 station 1 read words: Main.Mode: 14 bytes instead of 15"
    std::string occurrence(const Happening& happening) const
    {
        std::string text = utcOf(happening.at);
        if (happening.request != kNoRequest) {
            text +=
                " #" + std::to_string(happening.transaction) + " " + requestOf(happening.request);
        }
        if (happening.place) {
            PlaceAndValue expected = *happening.place;
            expected.value = happening.expected;
            text += ": " + placeName(*happening.place, describe_) + " was " +
                    valueName(*happening.place, describe_) + " instead of " +
                    valueName(expected, describe_);
        }
        return happening.words.empty()                 ? text
               : happening.trouble == Trouble::unasked ? text + " " + happening.words
                                                       : text + ": " + happening.words;
    }

    //   all  of one trouble, by time
    Finding findingOf(const std::vector<Happening>& all) const
    {
        Finding finding;
        finding.trouble = all.front().trouble;
        finding.times = all.size();
        finding.since = all.front().at;
        finding.until = all.back().at;
        const auto& trips = conversation_.roundTrips();
        finding.goodBefore = static_cast<std::uint64_t>(
            std::count_if(trips.begin(), trips.end(),
                          [&](const RoundTrip& trip) { return trip.at < finding.since; }));
        std::vector<Occurrence> occurrences;
        std::map<std::size_t, std::uint64_t> requests;
        std::map<std::string, std::uint64_t> places;
        for (const Happening& happening : all) {
            occurrences.push_back({happening.at, happening.ordinal});
            if (happening.request != kNoRequest) {
                ++requests[happening.request];
            }
            if (happening.place) {
                ++places[placeName(*happening.place, describe_)];
            }
            if (finding.occurrences.size() < kMostOccurrences) {
                finding.occurrences.push_back(occurrence(happening));
            }
        }
        finding.rhythm = rhythmOf(occurrences);
        for (const auto& [number, times] : requests) {
            finding.requests.push_back({requestOf(number), times});
        }
        for (const auto& [name, times] : places) {
            finding.variables.push_back({name, times});
        }
        sortAndCut(finding.requests);
        sortAndCut(finding.variables);
        return finding;
    }

    static void sortAndCut(std::vector<Counted>& list)
    {
        std::stable_sort(list.begin(), list.end(),
                         [](const Counted& a, const Counted& b) { return a.times > b.times; });
        if (list.size() > kMostListed) {
            std::uint64_t more = 0;
            for (std::size_t i = kMostListed; i < list.size(); ++i) {
                more += list[i].times;
            }
            const std::size_t others = list.size() - kMostListed;
            list.resize(kMostListed);
            list.push_back({"of " + std::to_string(others) + " others", more});
        }
    }

    std::string place(const std::pair<const Place, ElementEntry>& element) const
    {
        return placeName({element.first, element.second.bits, 0}, describe_);
    }

private:
    const Conversation& conversation_;
    const wire::DescribeElements& describe_;
};

std::string adviceOnTimeOut(const std::vector<Happening>& late, const Conversation& conversation)
{
    Nanoseconds longest = 0;
    for (const Happening& happening : late) {
        longest = std::max(longest, happening.lasted);
    }
    const double ms = (std::floor(millisecondsOf(longest) / kRoundMs) + 1) * kRoundMs;
    char text[80];
    std::snprintf(text, sizeof text, "a reply time-out of %.0f ms would have caught them all", ms);
    return conversation.waits().empty() ? std::string(text)
                                        : std::string(text) + "; the host waits about " +
                                              durationInWords(shareOf(conversation.waits(), 0.5));
}

// Elements that were never answered while requests with them were refused with this code.
void blame(Finding& finding, const Conversation& conversation, const Teller& teller)
{
    bool isRefusedAlone = false;
    for (const auto& element : conversation.book().elements()) {
        const ElementEntry& entry = element.second;
        if (entry.refused > 0 && entry.answered == 0 && entry.code == finding.code) {
            isRefusedAlone = isRefusedAlone || entry.refusedAlone > 0;
            finding.variables.push_back(
                {teller.place(element) + (entry.refusedAlone > 0 ? ", by itself, too" : ""),
                 entry.refused});
        }
    }
    if (finding.variables.empty()) {
        return;
    }
    finding.advice = isRefusedAlone ? "what was refused by itself, too, is to blame"
                     : finding.variables.size() == 1
                         ? "it was never answered, only refused"
                         : "these were never answered, only refused: at least one is to blame";
    Teller::sortAndCut(finding.variables);
}

void addTroubles(ConversationReport& report, const Conversation& conversation, const Teller& teller)
{
    std::map<std::pair<Trouble, int>, std::vector<Happening>> groups;
    for (const Happening& happening : conversation.happenings()) {
        groups[{happening.trouble, happening.code}].push_back(happening);
    }
    for (const auto& [key, all] : groups) {
        Finding finding = teller.findingOf(all);
        if (key.first == Trouble::exception) {
            finding.code = key.second;
            blame(finding, conversation, teller);
        }
        if (key.first == Trouble::late) {
            finding.advice = adviceOnTimeOut(all, conversation);
        }
        report.isWrong = report.isWrong || !rowOf(key.first).isRemark;
        report.findings.push_back(finding);
    }
}

void addSlow(ConversationReport& report, const Conversation& conversation, const Teller& teller)
{
    const std::vector<RoundTrip>& trips = conversation.roundTrips();
    if (trips.empty()) {
        return;
    }
    const Nanoseconds median = shareOf(lengthsOf(trips), 0.5);
    std::vector<Happening> slow;
    for (const RoundTrip& trip : trips) {
        if (trip.lasted > kSlowTimes * median && trip.lasted > median + kSlowBy) {
            slow.push_back({Trouble::slow, trip.at, trip.ordinal, trip.request, trip.transaction});
            slow.back().words = "answered after " + durationInWords(trip.lasted);
        }
    }
    if (slow.empty()) {
        return;
    }
    Finding finding = teller.findingOf(slow);
    finding.advice = "the median is " + durationInWords(median);
    report.findings.push_back(finding);
}

void addNeverAnswered(ConversationReport& report, const Conversation& conversation,
                      const Teller& teller)
{
    std::set<int> silent;
    std::set<int> heard;
    for (const auto& element : conversation.book().elements()) {
        const ElementEntry& entry = element.second;
        const bool isSilent = entry.answered == 0 && entry.refused == 0;
        (isSilent ? silent : heard).insert(element.first.station);
        if (isSilent) {
            report.neverAnswered.push_back({teller.place(element), entry.asked});
        }
    }
    Teller::sortAndCut(report.neverAnswered);
    std::set_difference(silent.begin(), silent.end(), heard.begin(), heard.end(),
                        std::back_inserter(report.silentStations));
}

void addFigures(ConversationReport& report, const Conversation& conversation, const Teller& teller)
{
    const Counts& counts = conversation.counts();
    const std::vector<Nanoseconds> lengths = lengthsOf(conversation.roundTrips());
    const bool isKnown = !lengths.empty();
    const auto ms = [&](double share) {
        return isKnown ? millisecondsOf(shareOf(lengths, share)) : 0;
    };
    const ElementBook::Pass pass = conversation.book().pass();
    const bool waited = !conversation.waits().empty();
    const auto number = [](std::uint64_t count) { return static_cast<double>(count); };
    report.figures = {
        {"connections", number(counts.connections)},
        {"connections closed by the host", number(counts.closedByHost)},
        {"requests", number(counts.requests)},
        {"attempts", number(counts.attempts)},
        {"replies", number(counts.replies)},
        {"round trip minimum ms", ms(0), isKnown},
        {"round trip median ms", ms(0.5), isKnown},
        {"round trip p99 ms", ms(0.99), isKnown},
        {"round trip maximum ms", ms(1), isKnown},
        {"elements read again and again", number(pass.elements)},
        {"pass ms", millisecondsOf(pass.usual), pass.elements > 0},
        {"longest pass ms", millisecondsOf(pass.longest), pass.elements > 0},
        {"host waits for a reply ms",
         waited ? millisecondsOf(shareOf(conversation.waits(), 0.5)) : 0, waited},
        {"bytes that the capture lacks", number(counts.lacking)},
        {"attempts not judged", number(counts.unjudged)},
    };
    const std::vector<RoundTrip>& trips = conversation.roundTrips();
    const auto slowest =
        std::max_element(trips.begin(), trips.end(), [](const RoundTrip& a, const RoundTrip& b) {
            return a.lasted < b.lasted;
        });
    if (slowest != trips.end()) {
        report.slowest = durationInWords(slowest->lasted) + ", " + utcOf(slowest->at) + " #" +
                         std::to_string(slowest->transaction) + " " +
                         teller.requestOf(slowest->request);
    }
}

void addNotes(ConversationReport& report, const Conversation& conversation)
{
    const Counts& counts = conversation.counts();
    const auto note = [&report](std::uint64_t count, const char* ofOne, const char* ofMany) {
        if (count > 0) {
            report.notes.push_back(std::to_string(count) + (count == 1 ? ofOne : ofMany));
        }
    };
    note(counts.lacking, " byte is missing in the capture; what it held is not judged",
         " bytes are missing in the capture; what they held is not judged");
    note(counts.unread,
         " byte behind a gap, or behind the capture's beginning, cannot be told apart and is not "
         "judged",
         " bytes behind a gap, or behind the capture's beginning, cannot be told apart and are not "
         "judged");
    note(counts.waiting,
         " request had no reply yet when the capture or the host ended, and had not waited for "
         "long; it is not judged",
         " requests had no reply yet when the capture or the host ended, and had not waited for "
         "long; they are not judged");
}

} // namespace

ConversationReport reportOf(const Conversation& conversation,
                            const wire::DescribeElements& describe)
{
    ConversationReport report;
    const Teller teller(conversation, describe);
    addFigures(report, conversation, teller);
    addNotes(report, conversation);
    addTroubles(report, conversation, teller);
    addSlow(report, conversation, teller);
    addNeverAnswered(report, conversation, teller);
    std::stable_sort(report.findings.begin(), report.findings.end(),
                     [](const Finding& a, const Finding& b) { return a.trouble < b.trouble; });
    return report;
}

} // namespace tavmir::diagnose
