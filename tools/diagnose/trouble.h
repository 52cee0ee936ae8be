// What can be wrong, in one table: what each trouble is called in the report, from which its key in
// JSON is made, and what it means.
#ifndef TAVMIR_DIAGNOSE_TROUBLE_H
#define TAVMIR_DIAGNOSE_TROUBLE_H

namespace tavmir::diagnose
{

enum class Trouble {
    unanswered,
    late,
    exception,
    lost,
    cut,
    noFrame,
    wrongLength,
    wrongCount,
    wrongAddresses,
    wrongFunction,
    wrongStation,
    wrongTransaction,
    unasked,
    duplicate,
    badRequest,
    closedIdle,
    refusedConnect,
    silentConnect,
    slow,
    standsOut,
    readOtherwise
};

struct TroubleRow {
    Trouble trouble;
    const char* label;
    const char* one; // of it
    const char* means;
    bool isRemark; // may be as it should: for a human to judge
};

inline constexpr TroubleRow kTroubles[] = {
    {Trouble::unanswered, "requests without a reply", "request without a reply",
     "each attempt counts: it or its reply was lost, or the controller is silent", false},
    {Trouble::late, "late replies", "late reply", "the host no longer waited for them", false},
    {Trouble::exception, "exceptions", "exception", "the controller refused the request", false},
    {Trouble::lost, "connections closed instead of a reply", "connection closed instead of a reply",
     "the controller closed, or was ended, while the host waited", false},
    {Trouble::cut, "cut replies", "cut reply", "the reply stopped in its middle", false},
    {Trouble::noFrame, "bytes that are no frame", "time bytes that are no frame",
     "the header is damaged, or something else speaks on this connection", false},
    {Trouble::wrongLength, "replies of wrong length", "reply of wrong length",
     "bytes lack at the end, or are too many, and the length field counts them so", false},
    {Trouble::wrongCount, "replies of wrong count", "reply of wrong count",
     "the header is damaged, or of another request", false},
    {Trouble::wrongAddresses, "replies with other addresses", "reply with other addresses",
     "meant for another request", false},
    {Trouble::wrongFunction, "replies of another function", "reply of another function",
     "the header is damaged, or of another request", false},
    {Trouble::wrongStation, "replies of another station", "reply of another station",
     "the header is damaged, or of another request", false},
    {Trouble::wrongTransaction, "replies of another transaction", "reply of another transaction",
     "they fit the request but for its number: the header is damaged", false},
    {Trouble::unasked, "replies that nobody asked for", "reply that nobody asked for",
     "they fit no request of this capture", false},
    {Trouble::duplicate, "duplicate replies", "duplicate reply",
     "one request, answered more than once", false},
    {Trouble::badRequest, "requests that are none", "request that is none",
     "the host sends what no controller can answer", false},
    {Trouble::closedIdle, "connections closed by the controller",
     "connection closed by the controller", "between two requests, or before the first", false},
    {Trouble::refusedConnect, "refused connections", "refused connection",
     "nobody listens there, or the controller takes no more", false},
    {Trouble::silentConnect, "connects without an answer", "connect without an answer",
     "the controller is off or unplugged, or a firewall drops them", false},
    {Trouble::slow, "slow replies", "slow reply", "in time, but far beyond the median", true},
    {Trouble::standsOut, "values that stand out", "value that stands out",
     "one reply differs from all before and behind it: garbled on the line, or so for a moment",
     true},
    {Trouble::readOtherwise, "values read otherwise than written",
     "value read otherwise than written",
     "the write was acknowledged: garbled on the line, or changed by somebody else", true},
};

constexpr const TroubleRow& rowOf(Trouble trouble)
{
    return kTroubles[static_cast<int>(trouble)];
}

constexpr bool troublesAreInOrder()
{
    int number = 0;
    for (const TroubleRow& row : kTroubles) {
        if (row.trouble != static_cast<Trouble>(number++)) {
            return false;
        }
    }
    return number == static_cast<int>(Trouble::readOtherwise) + 1;
}
static_assert(troublesAreInOrder(), "a row stands where its trouble's number says");

} // namespace tavmir::diagnose

#endif
