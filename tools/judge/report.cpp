// Text and JSON, from the same findings.
#include "report.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace tavmir::judge
{

namespace
{

constexpr int kKept = 0;
constexpr int kBroken = 1;
constexpr int kCouldNotJudge = 3;

const char* nameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::kept:
        return "kept";
    case Verdict::broken:
        return "broken";
    default:
        return "not judged";
    }
}

std::string times(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " time" : " times");
}

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string seconds(Us at)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", static_cast<double>(at) / 1e6);
    return text;
}

std::string hexOf(const Bytes& bytes)
{
    std::string text;
    for (const unsigned char byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(byte));
        text += (text.empty() ? "" : " ") + std::string(digits);
    }
    return text;
}

// What comes from a host may be anything: control characters do not reach a terminal or JSON.
std::string quoted(const std::string& text)
{
    std::string out = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            out += '\\';
            out += character;
        } else if (code < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            out += escape;
        } else {
            out += character;
        }
    }
    return out + "\"";
}

std::string wordsOf(const Bytes& request, const wire::DescribeElements& describe)
{
    return wire::requestInWords(request.data(), request.size(), describe);
}

// The plays that a rule waits for; empty: any.
std::vector<Play> playsOf(Rule rule)
{
    switch (rule) {
    case Rule::slowPatience:
        return {Play::slow};
    case Rule::lateDropped:
        return {Play::late};
    case Rule::duplicateDropped:
        return {Play::duplicate};
    case Rule::foreignDropped:
        return {Play::foreign};
    case Rule::shortRefused:
        return {Play::tooShort};
    case Rule::longRefused:
        return {Play::tooLong};
    case Rule::cutCloses:
        return {Play::cut};
    case Rule::exceptionKeepsLine:
        return {Play::exception, Play::refuseAll};
    case Rule::exceptionGoesOn:
        return {Play::exception};
    case Rule::refusedRateFalls:
        return {Play::refuseAll};
    case Rule::reconnectGrows:
        return {Play::rejected};
    case Rule::reconnectWithin:
    case Rule::reconnectPause:
        return {Play::disconnect, Play::restart, Play::refused, Play::rejected};
    case Rule::waitOut:
    case Rule::sameBytes:
    case Rule::attempts:
        return {Play::drop, Play::silent, Play::late};
    default:
        return {};
    }
}

bool isPlayed(const std::vector<Play>& plays, const Script& script, std::size_t situations)
{
    for (std::size_t i = 0; i < std::min(situations, script.situations.size()); ++i) {
        if (std::count(plays.begin(), plays.end(), script.situations[i].play) != 0) {
            return true;
        }
    }
    return false;
}

void addBreach(std::string& text, const Breach& breach, const wire::DescribeElements& describe)
{
    text += "  at " + seconds(breach.at) + " s";
    if (!breach.situation.empty()) {
        text += ", in or behind \"" + breach.situation + "\"";
    }
    if (breach.client > 0) {
        text += ", connection " + std::to_string(breach.client);
    }
    text += ": " + breach.what + "\n";
    if (!breach.request.empty()) {
        text +=
            "    " + wordsOf(breach.request, describe) + "\n    " + hexOf(breach.request) + "\n";
    }
}

std::string learned(const Judge& judge, const Script& script)
{
    std::string text;
    if (script.host.replyTimeout == 0) {
        text +=
            judge.host().replyTimeout == 0
                ? "reply time-out: not learned\n"
                : "reply time-out, learned: " + std::to_string(judge.host().replyTimeout / 1000) +
                      " ms\n";
    }
    if (script.host.attempts == 0) {
        text += judge.host().attempts == 0
                    ? "attempts: not learned\n"
                    : "attempts, learned: " + std::to_string(judge.host().attempts) + "\n";
    }
    return text;
}

std::string resultOf(const Judge& judge, const Played& played)
{
    if (judge.verdicts().any(Verdict::broken)) {
        return "broken";
    }
    if (!played.hostCame) {
        return "no host came";
    }
    return played.isComplete ? "kept" : "not finished";
}

std::string breachJson(const Breach& breach, const wire::DescribeElements& describe)
{
    std::string text =
        "{\"at\": " + seconds(breach.at) + ", \"situation\": " + quoted(breach.situation) +
        ", \"connection\": " + std::to_string(breach.client) + ", \"what\": " + quoted(breach.what);
    if (!breach.request.empty()) {
        text += ", \"request\": " + quoted(wordsOf(breach.request, describe)) +
                ", \"bytes\": " + quoted(hexOf(breach.request));
    }
    return text + "}";
}

} // namespace

std::string whyNotJudged(Rule rule, const Script& script, const Played& played)
{
    if (!played.hostCame) {
        return "no host came";
    }
    if (rule == Rule::stationKnown && !script.host.stations) {
        return "the script does not say which stations are there";
    }
    if (rule == Rule::writeKept && !script.host.counting) {
        return "the script does not say which writes count";
    }
    const std::vector<Play> plays = playsOf(rule);
    if (!plays.empty() && !isPlayed(plays, script, script.situations.size())) {
        return "the script does not play it";
    }
    if (!plays.empty() && !isPlayed(plays, script, played.begun)) {
        return "it was not played: the run ended before";
    }
    return std::string("did not happen: ") + rowOf(rule).needs;
}

std::string reportText(const Judge& judge, const Script& script, const Played& played,
                       const wire::DescribeElements& describe)
{
    constexpr std::size_t kNameWidth = 22;
    constexpr std::size_t kVerdictWidth = 12;
    std::string table = padded("rule", kNameWidth) + padded("verdict", kVerdictWidth) + "judged\n";
    std::string details;
    std::size_t counts[3] = {};
    for (const RuleRow& row : kRules) {
        const Finding& finding = judge.verdicts().of(row.rule);
        const Verdict verdict = finding.verdict();
        ++counts[static_cast<std::size_t>(verdict)];
        table += padded(row.name, kNameWidth) + padded(nameOf(verdict), kVerdictWidth);
        if (verdict == Verdict::notJudged) {
            table += whyNotJudged(row.rule, script, played) + "\n";
            continue;
        }
        table += times(finding.judged);
        if (verdict == Verdict::broken) {
            table += ", broken " + times(finding.broken);
            details += std::string("\n") + row.name + ": " + row.sentence + "\n";
            for (const Breach& breach : finding.breaches) {
                addBreach(details, breach, describe);
            }
        }
        table += "\n";
    }
    return table + details + "\n" + learned(judge, script) +
           "situations: " + std::to_string(played.begun) + " of " +
           std::to_string(played.situations) + "\n" + "result: " + resultOf(judge, played) + " (" +
           std::to_string(counts[0]) + " kept, " + std::to_string(counts[1]) + " broken, " +
           std::to_string(counts[2]) + " not judged)\n";
}

std::string reportJson(const Judge& judge, const Script& script, const Played& played,
                       const wire::DescribeElements& describe)
{
    std::string text =
        "{\n  \"result\": " + quoted(resultOf(judge, played)) +
        ",\n  \"situationsBegun\": " + std::to_string(played.begun) +
        ",\n  \"situations\": " + std::to_string(played.situations) +
        ",\n  \"replyTimeoutMs\": " + std::to_string(judge.host().replyTimeout / 1000) +
        ",\n  \"attempts\": " + std::to_string(judge.host().attempts) + ",\n  \"rules\": [";
    const char* behind = "\n";
    for (const RuleRow& row : kRules) {
        const Finding& finding = judge.verdicts().of(row.rule);
        text += std::string(behind) + "    {\"rule\": " + quoted(row.name) +
                ", \"sentence\": " + quoted(row.sentence) +
                ", \"verdict\": " + quoted(nameOf(finding.verdict())) +
                ", \"judged\": " + std::to_string(finding.judged) +
                ", \"broken\": " + std::to_string(finding.broken);
        if (finding.verdict() == Verdict::notJudged) {
            text += ", \"why\": " + quoted(whyNotJudged(row.rule, script, played));
        }
        text += ", \"breaches\": [";
        for (std::size_t i = 0; i < finding.breaches.size(); ++i) {
            text += (i == 0 ? "" : ", ") + breachJson(finding.breaches[i], describe);
        }
        text += "]}";
        behind = ",\n";
    }
    return text + "\n  ]\n}\n";
}

int exitStatus(const Judge& judge, const Played& played)
{
    if (judge.verdicts().any(Verdict::broken)) {
        return kBroken;
    }
    const bool isJudged = judge.verdicts().any(Verdict::kept);
    return isJudged && played.isComplete ? kKept : kCouldNotJudge;
}

} // namespace tavmir::judge
