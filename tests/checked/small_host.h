// The pieces of a small host that keeps every duty. The broken ones differ from it in one.
#ifndef TAVMIR_TESTS_CHECKED_SMALL_HOST_H
#define TAVMIR_TESTS_CHECKED_SMALL_HOST_H

#include "support/label_tree.h"
#include "support/records.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <functional>
#include <vector>

namespace tavmir::checked_tests
{

using test::hex;

// A host and its right twin.
struct HostPair {
    const char* id; // what the broken one is reported with
    void (*broken)();
    void (*right)();
    const char* setting = "report"; // "abort": the broken one would wait for ever, or crash late
    bool byExit = false;            // both end as processes do, not at once
};

// The pairs, by the part of the table that they belong to.
std::vector<HostPair> setUpHosts();
std::vector<HostPair> threadHosts();
std::vector<HostPair> callbackHosts();
std::vector<HostPair> recordHosts();
std::vector<HostPair> labelHosts();
std::vector<HostPair> replyHosts();
std::vector<HostPair> turnHosts();

std::vector<HostPair> allHosts();

// The host's connection record: quiet, no retries, writes go to the controller.
ComInfo& record();

// The label Main: bits Run, words W (with bits), double words D, text Text of 8 words, word array
// Row of 2000, structure array Axis.
QList<Label_Type_Info> labels();

// Runs in each callback.
extern std::function<void()> insideCallback;

// Everything in the right order, up to the cycle; nothing is polled.
void setUp();

// As above, and these addresses are polled, `count` elements each.
void setUpPolling(const QList<const char*>& addresses, int count = 1);

// Polls by hand, without the labels' order: as many words as `elements`.
void pollWords(int elements);

// The right reply to a request, with zeros for values.
QByteArray replyTo(const Protocol& request);

// Asks, answers. False when there was nothing to send.
bool turn();

// A write of one element that is all right.
RW_VAR goodWrite(int address = 3000);

// Queues a write and runs its turn: `insideCallback` runs.
void turnWithCallback();

} // namespace tavmir::checked_tests

#endif
