// The kinds of faults, in one table: what a rule calls them, what the help says, and what they do.
// Whoever adds a kind adds it here, and a line to the manual page.
#ifndef TAVMIR_CONTROLLER_FAULT_KINDS_H
#define TAVMIR_CONTROLLER_FAULT_KINDS_H

#include "fault_effects.h"
#include "seeded_random.h"

#include <QtCore/QByteArray>

#include <cstddef>

namespace tavmir::controller
{

enum class FaultKind {
    None,
    Lose,
    Drop,
    Delay,
    Late,
    Truncate,
    Oversize,
    Cut,
    Corrupt,
    Garble,
    Duplicate,
    Disconnect,
    Refuse
};

// The connection of the client whose request meets a fault.
class FaultyLine
{
public:
    virtual void send(const QByteArray& reply) = 0;
    virtual void sendDelayed(const QByteArray& reply) = 0; // later replies wait behind it
    virtual void sendLate(const QByteArray& reply) = 0;    // later replies pass it
    virtual void close() = 0;
    virtual void closeAllAndRefuse() = 0;
    // For what a fault needs beside its kind: how many bytes, which byte.
    virtual SeededRandom& random() = 0;

protected:
    ~FaultyLine() = default;
};

struct FaultRow {
    FaultKind kind;
    const char* name; // in rules and statistics
    const char* help;
    bool carriesOut; // the request is carried out, and the fault is one of its reply
    void (*answer)(FaultyLine& line, const QByteArray& reply);
    // On its way to the controller; null: it arrives as it was sent.
    void (*change)(Request& request, SeededRandom& random) = nullptr;
};

inline constexpr FaultRow kFaultTable[] = {
    {FaultKind::None, "none", "", true,
     [](FaultyLine& line, const QByteArray& reply) { line.send(reply); }},
    {FaultKind::Lose, "lose", "the request is not carried out and not answered", false,
     [](FaultyLine&, const QByteArray&) {}},
    {FaultKind::Drop, "drop", "no reply", true, [](FaultyLine&, const QByteArray&) {}},
    {FaultKind::Delay, "delay", "the reply comes --delay-ms later; later replies wait behind it",
     true, [](FaultyLine& line, const QByteArray& reply) { line.sendDelayed(reply); }},
    {FaultKind::Late, "late", "the reply comes --late-ms later; later replies pass it", true,
     [](FaultyLine& line, const QByteArray& reply) { line.sendLate(reply); }},
    {FaultKind::Truncate, "truncate",
     "the reply lacks bytes at its end; its length field is that of the rest", true,
     [](FaultyLine& line, const QByteArray& reply) { line.send(truncated(reply, line.random())); }},
    {FaultKind::Oversize, "oversize",
     "the reply has bytes too many at its end; its length field counts them", true,
     [](FaultyLine& line, const QByteArray& reply) { line.send(oversized(reply, line.random())); }},
    {FaultKind::Cut, "cut", "the reply stops in its middle; its length field promises more", true,
     [](FaultyLine& line, const QByteArray& reply) { line.send(cutShort(reply, line.random())); }},
    {FaultKind::Corrupt, "corrupt", "the top bit of one byte of the reply's header is flipped",
     true,
     [](FaultyLine& line, const QByteArray& reply) { line.send(corrupted(reply, line.random())); }},
    {FaultKind::Garble, "garble",
     "one value changes on its way: a read brings another, a write stores another", true,
     [](FaultyLine& line, const QByteArray& reply) { line.send(garbled(reply, line.random())); },
     garble},
    {FaultKind::Duplicate, "duplicate", "the reply comes twice", true,
     [](FaultyLine& line, const QByteArray& reply) {
         line.send(reply);
         line.send(reply);
     }},
    {FaultKind::Disconnect, "disconnect", "the connection is closed instead of a reply", true,
     [](FaultyLine& line, const QByteArray&) { line.close(); }},
    {FaultKind::Refuse, "refuse",
     "all connections are closed, and new ones refused for --refuse-ms", true,
     [](FaultyLine& line, const QByteArray&) { line.closeAllAndRefuse(); }},
};
constexpr std::size_t kFaultKinds = sizeof kFaultTable / sizeof kFaultTable[0]; // None included

constexpr const FaultRow& faultRow(FaultKind kind)
{
    return kFaultTable[static_cast<std::size_t>(kind)];
}

constexpr bool faultRowsAreInOrder()
{
    for (std::size_t i = 0; i < kFaultKinds; ++i) {
        if (kFaultTable[i].kind != static_cast<FaultKind>(i)) {
            return false;
        }
    }
    return true;
}
static_assert(faultRowsAreInOrder(), "a row stands where its kind's number says");

} // namespace tavmir::controller

#endif
