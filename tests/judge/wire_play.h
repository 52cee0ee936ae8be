// A host and its controller as a list of events, in milliseconds, and what the judge makes of it.
#ifndef TAVMIR_TESTS_JUDGE_WIRE_PLAY_H
#define TAVMIR_TESTS_JUDGE_WIRE_PLAY_H

#include "judge/judge.h"

#include <set>
#include <string>

namespace tavmir::test
{

using judge::Bytes;
using judge::Event;
using judge::Play;
using judge::Reply;
using judge::Rule;

inline void append(Bytes& bytes, std::uint32_t value, int count)
{
    for (int i = count - 1; i >= 0; --i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i) & 0xFF));
    }
}

inline Bytes header(unsigned number, unsigned function, unsigned count, std::size_t entryBytes,
                    unsigned station = 1)
{
    Bytes bytes;
    append(bytes, number, 2);
    append(bytes, 0, 2);
    append(bytes, static_cast<std::uint32_t>(3 + entryBytes), 2);
    append(bytes, station, 1);
    append(bytes, function, 1);
    append(bytes, count, 1);
    return bytes;
}

// One word.
inline Bytes readWord(unsigned number, std::uint32_t address, unsigned station = 1)
{
    Bytes bytes = header(number, 102, 1, 4, station);
    append(bytes, address, 4);
    return bytes;
}

inline Bytes writeWord(unsigned number, std::uint32_t address, unsigned value)
{
    Bytes bytes = header(number, 103, 1, 6);
    append(bytes, address, 4);
    append(bytes, value & 0xFF, 1);
    append(bytes, value >> 8 & 0xFF, 1);
    return bytes;
}

// The right reply to one of these.
inline Bytes answerTo(const Bytes& request, unsigned value = 0)
{
    const unsigned number = wire::bigEndian16(request.data());
    if (request[wire::kFunctionOffset] == 103) {
        return header(number, 103, 1, 0);
    }
    Bytes reply = header(number, 102, 1, 6, request[wire::kStationOffset]);
    reply.insert(reply.end(), request.begin() + wire::kHeaderBytes, request.end());
    append(reply, value, 2);
    return reply;
}

// Time only goes on: every call says how many milliseconds after the one before it happens.
class WirePlay
{
public:
    explicit WirePlay(const judge::HostTraits& host = judge::HostTraits()) : judge_(host) {}

    void begins(Play play)
    {
        Event event = next(0, Event::Kind::begins);
        event.situation.play = play;
        event.situation.text = judge::rowOf(play).name;
        judge_.take(event);
    }
    void happens(Event::Kind kind, int ms = 0) { judge_.take(next(ms, kind)); }
    void connects(int ms = 0, int client = 1)
    {
        client_ = client;
        happens(Event::Kind::connected, ms);
    }
    void hostCloses(int ms = 0) { happens(Event::Kind::closedByHost, ms); }
    void controllerCloses(int ms = 0) { happens(Event::Kind::closedByController, ms); }
    // A tick each 10 ms, for so long.
    void waits(int ms)
    {
        for (int passed = 0; passed < ms; passed += 10) {
            happens(Event::Kind::tick, 10);
        }
    }
    // slowMs  so long it may have lain there unnoticed
    void asks(int ms, const Bytes& request, int slowMs = 0)
    {
        Event event = next(ms, Event::Kind::received);
        event.busySince = event.at - judge::milliseconds(slowMs);
        event.bytes = request;
        judge_.take(event);
    }
    void replies(int ms, const Bytes& reply, Reply kind = Reply::right)
    {
        Event event = next(ms, Event::Kind::sent);
        event.bytes = reply;
        event.reply = kind;
        judge_.take(event);
    }
    // A request and its right reply.
    void exchanges(const Bytes& request, int ms = 100)
    {
        asks(ms, request);
        replies(1, answerTo(request));
    }
    void refuses(const Bytes& request)
    {
        replies(1,
                header(wire::bigEndian16(request.data()),
                       request[wire::kFunctionOffset] | wire::kExceptionBit, 4, 0),
                Reply::exception);
    }
    // From here on events are of this connection.
    void on(int client) { client_ = client; }

    judge::Verdict verdictOf(Rule rule) const { return judge_.verdicts().of(rule).verdict(); }
    std::set<std::string> brokenRules() const
    {
        std::set<std::string> names;
        for (const judge::RuleRow& row : judge::kRules) {
            if (verdictOf(row.rule) == judge::Verdict::broken) {
                names.insert(row.name);
            }
        }
        return names;
    }
    const judge::Judge& judge() const { return judge_; }

private:
    Event next(int ms, Event::Kind kind)
    {
        now_ += judge::milliseconds(ms);
        Event event;
        event.kind = kind;
        event.at = now_;
        event.client = client_;
        return event;
    }

    judge::Judge judge_;
    judge::Us now_ = 0;
    int client_ = 1;
};

} // namespace tavmir::test

#endif
