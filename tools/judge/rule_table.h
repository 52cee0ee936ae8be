// What a right host does and does not do, seen from the wire: every rule's identifier, what it
// asks for, and what has to happen before anybody can tell.
#ifndef TAVMIR_JUDGE_RULE_TABLE_H
#define TAVMIR_JUDGE_RULE_TABLE_H

#include <cstddef>

namespace tavmir::judge
{

enum class Rule {
    frameHeader,
    frameFunction,
    frameCount,
    frameLimit,
    frameWhole,
    stationKnown,
    idFresh,
    oneInFlight,
    waitOut,
    sameBytes,
    attempts,
    slowPatience,
    lateDropped,
    duplicateDropped,
    foreignDropped,
    shortRefused,
    longRefused,
    cutCloses,
    exceptionKeepsLine,
    exceptionGoesOn,
    refusedRateFalls,
    oneConnection,
    reconnectWithin,
    reconnectPause,
    reconnectGrows,
    recovers,
    pollGoesOn,
    pollBesideWrites,
    writeOnce,
    writeKept
};

struct RuleRow {
    Rule rule;
    const char* name;
    const char* sentence;
    const char* needs; // what did not happen when nobody can tell
};

inline constexpr RuleRow kRules[] = {
    {Rule::frameHeader, "frame-header",
     "what is sent is frames: the protocol is 0, and the length field is one of a request",
     "a request"},
    {Rule::frameFunction, "frame-function", "the function is one of the six", "a request"},
    {Rule::frameCount, "frame-count", "the count is that of the entries, and at least 1",
     "a request of a known function"},
    {Rule::frameLimit, "frame-limit", "neither a request nor its reply is longer than 260 bytes",
     "a request"},
    {Rule::frameWhole, "frame-whole", "a request that has begun is sent to its end at once",
     "a request"},
    {Rule::stationKnown, "station-known", "only stations that are there are asked",
     "\"stations\" in the script, and a request"},
    {Rule::idFresh, "id-fresh",
     "a new request has a transaction number that none of the 32 before it had on its connection",
     "a second request on a connection"},
    {Rule::oneInFlight, "one-in-flight",
     "no other request is sent while one waits for its reply and its time is not over",
     "a request behind another"},
    {Rule::waitOut, "wait-out",
     "a request is not repeated before the reply time-out is over, unless a bad reply came",
     "a repeated request that had no reply"},
    {Rule::sameBytes, "same-bytes",
     "a repetition, which has its request's transaction number, has all of its bytes",
     "a repeated request"},
    {Rule::attempts, "attempts", "a request is not sent more often than the host's limit",
     "a request that was repeated or given up"},
    {Rule::slowPatience, "slow-patience",
     "a reply that is slow but in time is waited for: no repetition, no other request, no end of "
     "the connection",
     "a reply of the situation slow"},
    {Rule::lateDropped, "late-dropped",
     "a late reply to an earlier request does not answer the one that waits",
     "a late reply while another request waited"},
    {Rule::duplicateDropped, "duplicate-dropped",
     "the second copy of a reply does not answer the next request",
     "a second copy while the next request waited"},
    {Rule::foreignDropped, "foreign-dropped",
     "a reply with another number, station, function, count or address is dropped, and the right "
     "one is still waited for",
     "a foreign reply while a request waited"},
    {Rule::shortRefused, "short-refused",
     "a reply that lacks bytes is no answer: of two such requests in a row one is repeated, or the "
     "connection given up",
     "a short reply to a request with attempts left, and a repetition or another one"},
    {Rule::longRefused, "long-refused",
     "a reply with bytes too many is no answer: of two such requests in a row one is repeated, or "
     "the connection given up",
     "a long reply to a request with attempts left, and a repetition or another one"},
    {Rule::cutCloses, "cut-closes",
     "behind half a reply nothing more is sent on the connection: it is given up",
     "half a reply, and something after it"},
    {Rule::exceptionKeepsLine, "exception-keeps-line",
     "an exception is an answer: the connection stays", "an exception, and something after it"},
    {Rule::exceptionGoesOn, "exception-goes-on",
     "after a refused request others are sent: polling does not stop for it",
     "an exception, and time after it"},
    {Rule::refusedRateFalls, "refused-rate-falls",
     "when everything is refused, the host asks ever more seldom",
     "the situation refuse-all, with enough requests"},
    {Rule::oneConnection, "one-connection", "an old connection is closed when a new one is opened",
     "a second connection"},
    {Rule::reconnectWithin, "reconnect-within",
     "when the controller can be reached again, the host is back within its bound",
     "a connection that the controller ended"},
    {Rule::reconnectPause, "reconnect-pause",
     "a connection that the controller ended is not opened again at once",
     "a connection that the controller ended"},
    {Rule::reconnectGrows, "reconnect-grows",
     "pauses between connections that are ended at once grow",
     "the situation rejected, with four attempts to connect"},
    {Rule::recovers, "recovers", "when replies are right again, the host goes on as before",
     "a situation that ended"},
    {Rule::pollGoesOn, "poll-goes-on", "reads go on as long as they are answered",
     "a second read on a connection"},
    {Rule::pollBesideWrites, "poll-beside-writes", "reads go on beside writes",
     "a write between two reads"},
    {Rule::writeOnce, "write-once", "a write that was acknowledged is never sent again",
     "a write that was acknowledged"},
    {Rule::writeKept, "write-kept", "no write is left out",
     "\"writes counting\" in the script, and two such writes"},
};
constexpr std::size_t kRuleCount = sizeof kRules / sizeof kRules[0];

constexpr const RuleRow& rowOf(Rule rule)
{
    return kRules[static_cast<std::size_t>(rule)];
}

constexpr bool rulesAreInOrder()
{
    for (std::size_t i = 0; i < kRuleCount; ++i) {
        if (kRules[i].rule != static_cast<Rule>(i)) {
            return false;
        }
    }
    return true;
}
static_assert(rulesAreInOrder(), "a row stands where its rule's number says");

} // namespace tavmir::judge

#endif
