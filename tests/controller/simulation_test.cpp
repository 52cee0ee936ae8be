// The controller's inside with a project: values, names, statistics; and any bytes at all.
#include "controller/frame_bytes.h"
#include "controller/simulation.h"
#include "controller/trace.h"
#include "frames.h"
#include "wire/frame_decoder.h"

#include "project/project_reader.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace tavmir::controller;
using namespace tavmir::test;

namespace
{

const char kPlant[] = R"({
  "connection": { "host": "127.0.0.1", "port": 5020, "station": 4 },
  "types": [ { "name": "Axis", "size": 64, "members": [
    { "name": "Pos", "type": "dword", "offset": 0 },
    { "name": "Home", "type": "bit", "offset": 40 } ] } ],
  "labels": [ { "name": "Main", "variables": [
    { "name": "Run", "type": "bit", "address": 100 },
    { "name": "W", "type": "word", "address": 3000, "bits": true },
    { "name": "Axis", "type": "Axis", "address": 1000, "array": { "bounds": [[0, 3]] } },
    { "name": "Temp", "type": "real", "address": 5000 },
    { "name": "Title", "type": "text", "address": 6000, "words": 4 } ] } ],
  "polled": [ { "address": "Main.Run" } ],
  "initial": [
    { "address": "Main.Run", "value": 1 },
    { "address": "Main.W", "value": -2 },
    { "address": "Main.W.b[4]", "value": 0 },
    { "address": "Main.Axis[2].Pos", "value": 100000 },
    { "address": "Main.Axis[1].Home", "value": true },
    { "address": "Main.Temp", "value": 2.5 },
    { "address": "Main.Title", "value": "Hello" } ],
  "signals": [
    { "address": "Main.Axis[0].Pos", "signal": "counter", "low": 5, "high": 100, "periodMs": 10 } ]
})";

tavmir::project::Project plant()
{
    const auto outcome = tavmir::project::readProject(kPlant, "plant");
    EXPECT_TRUE(outcome.project) << outcome.error.toStdString();
    return outcome.project.value_or(tavmir::project::Project());
}

} // namespace

TEST(Simulation, StartsWithTheProjectsValuesAtItsStation)
{
    Simulation simulation;
    QString problem;
    ASSERT_TRUE(simulation.load(plant(), &problem)) << problem.toStdString();
    const BitMemory& memory = simulation.memory();
    EXPECT_EQ(memory.read(4, 100, 1), 1u);
    EXPECT_EQ(memory.read(4, 3000, 16), 0xFFEEu);
    EXPECT_EQ(memory.read(4, 1128, 32), 100000u);
    EXPECT_EQ(memory.read(4, 1104, 1), 1u);
    EXPECT_EQ(memory.read(4, 5000, 32), 0x40200000u);
    EXPECT_EQ(memory.read(4, 6000, 16), 0x6548u) << "first character in the low byte";
    EXPECT_EQ(memory.read(4, 6032, 16), 0x006Fu);
    EXPECT_EQ(memory.read(4, 6048, 16), 0u);
    EXPECT_EQ(memory.read(1, 100, 1), 0u);
}

TEST(Simulation, MovesTheProjectsSignals)
{
    Simulation simulation;
    QString problem;
    ASSERT_TRUE(simulation.load(plant(), &problem)) << problem.toStdString();
    EXPECT_TRUE(simulation.hasSignals());
    EXPECT_EQ(simulation.memory().read(4, 1000, 32), 5u);
    EXPECT_TRUE(simulation.advanceTo(30));
    EXPECT_EQ(simulation.memory().read(4, 1000, 32), 8u);
    EXPECT_FALSE(Simulation().hasSignals());
}

TEST(Simulation, NamesWhatTheProjectNames)
{
    Simulation simulation;
    QString problem;
    ASSERT_TRUE(simulation.load(plant(), &problem)) << problem.toStdString();
    EXPECT_EQ(simulation.names().nameOf(1064, 32), "Main.Axis[1].Pos");
    EXPECT_EQ(simulation.names().nameOf(6016, 16), "Main.Title+16");
}

TEST(Simulation, SaysWhichValueTheMemoryHasNoRoomFor)
{
    QString problem;
    EXPECT_FALSE(Simulation(FaultPlan(), 1).load(plant(), &problem));
    EXPECT_EQ(problem, "initial[5]: the memory has no room for this value");
}

TEST(Simulation, SaysThatTheMemoryHasNoRoomForTheSignals)
{
    tavmir::project::Project project = plant();
    project.initial.clear();
    QString problem;
    EXPECT_FALSE(Simulation(FaultPlan(), 0).load(project, &problem));
    EXPECT_EQ(problem, "signals: the memory has no room for this value");
}

TEST(Simulation, SaysWhichAddressOrValueIsWrong)
{
    tavmir::project::Project project = plant();
    project.initial[0].address = "Main.Nothing";
    QString problem;
    EXPECT_FALSE(Simulation().load(project, &problem));
    EXPECT_TRUE(problem.startsWith("initial[0]: ")) << problem.toStdString();

    project = plant();
    project.initial[1].value = "70000";
    EXPECT_FALSE(Simulation().load(project, &problem));
    EXPECT_TRUE(problem.startsWith("initial[1]: ")) << problem.toStdString();

    project = plant();
    project.movingSignals[0].address = "Main.Title";
    EXPECT_FALSE(Simulation().load(project, &problem));
    EXPECT_EQ(problem, "signals[0]: a text has no signal");
}

TEST(Simulation, CountsWhatItIsAsked)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("drop@2", &problem)}));
    simulation.take(readFrame(1, 1, 102, {16, 32, 48}));
    EXPECT_EQ(simulation.take(readFrame(2, 1, 100, {16})).fault, FaultKind::Drop);
    simulation.take(writeFrame(3, 1, 109, {{16, hex("01000000")}, {48, hex("01000000")}}));
    simulation.take(frame(4, 1, 102, 9));
    simulation.take(frame(5, 1, 33, 1));
    const Statistics& statistics = simulation.statistics();
    EXPECT_EQ(statistics.requests, 5u);
    EXPECT_EQ(statistics.requestsByFunction.at(102), 2u);
    EXPECT_EQ(statistics.requestsByFunction.at(100), 1u);
    EXPECT_EQ(statistics.requestsByFunction.at(109), 1u);
    EXPECT_EQ(statistics.requestsOfUnknownFunction, 1u);
    EXPECT_EQ(statistics.elementsRead, 4u);
    EXPECT_EQ(statistics.elementsWritten, 2u);
    EXPECT_EQ(statistics.exceptions.at(1), 1u);
    EXPECT_EQ(statistics.exceptions.at(3), 1u);
    EXPECT_EQ(statistics.faultsOf(FaultKind::Drop), 1u);
}

TEST(Simulation, ARequestWithAFaultIsCarriedOutAllTheSameUnlessItIsLost)
{
    for (const FaultRow& row : kFaultTable) {
        if (row.kind == FaultKind::None || row.kind == FaultKind::Lose ||
            row.kind == FaultKind::Garble) {
            continue;
        }
        QString problem;
        Simulation simulation(FaultPlan({*parseFaultRule(row.name + QString("=1"), &problem)}));
        const auto outcome = simulation.take(writeFrame(1, 1, 103, {{16, hex("3412")}}));
        EXPECT_EQ(outcome.fault, row.kind);
        EXPECT_EQ(outcome.reply, frame(1, 1, 103, 1)) << "the fault is left to whoever sends";
        EXPECT_EQ(simulation.memory().read(1, 16, 16), 0x1234u) << row.name;
        EXPECT_EQ(simulation.statistics().elementsWritten, 1u);
    }
}

TEST(Simulation, ALostWriteChangesNothingAndIsCounted)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("lose@2", &problem)}));
    simulation.take(writeFrame(1, 1, 103, {{16, hex("3412")}}));
    const auto outcome = simulation.take(writeFrame(2, 1, 103, {{16, hex("7856")}}));
    EXPECT_EQ(outcome.fault, FaultKind::Lose);
    EXPECT_EQ(outcome.reply, QByteArray());
    EXPECT_EQ(outcome.request.transactionId, 2) << "for the trace";
    EXPECT_EQ(simulation.memory().read(1, 16, 16), 0x1234u);
    const Statistics& statistics = simulation.statistics();
    EXPECT_EQ(statistics.requests, 2u);
    EXPECT_EQ(statistics.requestsByFunction.at(103), 2u);
    EXPECT_EQ(statistics.elementsWritten, 1u);
    EXPECT_EQ(statistics.faultsOf(FaultKind::Lose), 1u);
    EXPECT_TRUE(statistics.text().contains("\nfaults: 1\nfaults lose: 1\n"));
}

TEST(Simulation, AWatcherSeesEachRequestAndWhetherItWasCarriedOut)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("lose@2", &problem)}));
    std::vector<std::pair<int, bool>> seen;
    simulation.watch([&](const Simulation::Outcome& outcome) {
        seen.emplace_back(outcome.request.transactionId, outcome.carriedOut);
    });
    simulation.take(writeFrame(1, 1, 103, {{16, hex("3412")}}));
    simulation.take(writeFrame(2, 1, 103, {{16, hex("7856")}}));
    simulation.take(frame(3, 1, 33, 1)); // refused
    simulation.take(readFrame(4, 1, 102, {16}));
    const std::vector<std::pair<int, bool>> all = {{1, true}, {2, false}, {3, false}, {4, true}};
    EXPECT_EQ(seen, all);
}

TEST(Simulation, ALostRequestThatMakesNoSenseIsNoException)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("lose=1", &problem)}));
    EXPECT_EQ(simulation.take(frame(1, 1, 33, 1)).reply, QByteArray());
    EXPECT_EQ(simulation.take(frame(2, 1, 102, 9)).reply, QByteArray());
    EXPECT_TRUE(simulation.statistics().exceptions.empty());
    EXPECT_EQ(simulation.statistics().requestsOfUnknownFunction, 1u);
    EXPECT_EQ(simulation.statistics().requests, 2u);
}

TEST(Simulation, WhatIsNotAdmittedChangesNothingAndIsCounted)
{
    Simulation simulation;
    AdmissionRules rules;
    rules.refused = {{16, 31, tavmir::wire::ElementClass::words, 2}};
    rules.stations = parseStations("1");
    simulation.admit(rules);
    EXPECT_EQ(simulation.take(writeFrame(1, 1, 103, {{0, hex("0100")}, {16, hex("0100")}})).reply,
              frame(1, 1, 103 | 0x80, 2));
    const auto elsewhere = simulation.take(writeFrame(2, 7, 103, {{0, hex("0100")}}));
    EXPECT_EQ(elsewhere.reply, frame(2, 7, 103 | 0x80, 11));
    EXPECT_FALSE(elsewhere.carriedOut);
    EXPECT_EQ(simulation.memory().pageCount(), 0u);
    EXPECT_TRUE(simulation.take(writeFrame(3, 1, 103, {{0, hex("0100")}})).carriedOut);
    const Statistics& statistics = simulation.statistics();
    EXPECT_EQ(statistics.requests, 3u);
    EXPECT_EQ(statistics.toRefusedAddresses, 1u);
    EXPECT_EQ(statistics.toUnknownStations, 1u);
    EXPECT_EQ(statistics.exceptions.at(2), 1u);
    EXPECT_EQ(statistics.exceptions.at(11), 1u);
    EXPECT_EQ(statistics.elementsWritten, 1u);
}

TEST(Simulation, ASilentStationHasNoReplyToSpoil)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("truncate=1", &problem)}));
    AdmissionRules rules;
    rules.stations = parseStations("1");
    rules.silentForOthers = true;
    simulation.admit(rules);
    const auto outcome = simulation.take(readFrame(1, 2, 102, {16}));
    EXPECT_EQ(outcome.reply, QByteArray());
    EXPECT_FALSE(outcome.verdict.isAnswered);
    EXPECT_EQ(outcome.fault, FaultKind::None);
    EXPECT_EQ(simulation.statistics().faultsOf(FaultKind::Truncate), 0u);
    EXPECT_EQ(simulation.statistics().unanswered, 1u);
    EXPECT_TRUE(simulation.statistics().exceptions.empty());
    EXPECT_EQ(simulation.take(readFrame(2, 1, 102, {16})).fault, FaultKind::Truncate);
}

TEST(Simulation, TheRateGoesByTheTimeThatItIsTold)
{
    Simulation simulation;
    AdmissionRules rules;
    rules.mostRequestsPerSecond = 1;
    simulation.admit(rules);
    EXPECT_TRUE(simulation.take(readFrame(1, 1, 102, {16}), 5000000).carriedOut);
    EXPECT_EQ(simulation.take(readFrame(2, 1, 102, {16}), 5000001).reply,
              frame(2, 1, 102 | 0x80, 6));
    EXPECT_TRUE(simulation.take(readFrame(3, 1, 102, {16}), 6000000).carriedOut);
    EXPECT_EQ(simulation.statistics().aboveRate, 1u);
}

TEST(Simulation, AGarbledWriteStoresAnotherValueAndIsAcknowledged)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("garble=1", &problem)}));
    for (int i = 0; i < 50; ++i) {
        const auto outcome = simulation.take(writeFrame(i, 1, 103, {{16, hex("3412")}}));
        EXPECT_EQ(outcome.reply, frame(i, 1, 103, 1));
        EXPECT_NE(simulation.memory().read(1, 16, 16), 0x1234u);
        EXPECT_EQ(outcome.request.elements.at(0).value & 0xFFFF,
                  simulation.memory().read(1, 16, 16))
            << "who keeps books sees what was stored";
    }
    EXPECT_EQ(simulation.statistics().faultsOf(FaultKind::Garble), 50u);
    EXPECT_EQ(simulation.take(frame(99, 1, 103, 9)).reply, frame(99, 1, 103 | 0x80, 3));
}

namespace
{

// Which of 500 writes, each to a place of its own, are in the memory.
std::vector<bool> writesThatAreThere(std::uint64_t seed)
{
    QString problem;
    Simulation simulation(FaultPlan({*parseFaultRule("lose=0.3", &problem)}, seed));
    std::vector<bool> there;
    for (int i = 0; i < 500; ++i) {
        const auto address = static_cast<std::uint32_t>(16 * i);
        const auto outcome = simulation.take(writeFrame(i, 1, 103, {{address, hex("0100")}}));
        there.push_back(simulation.memory().read(1, address, 16) == 1);
        EXPECT_EQ(there.back(), outcome.fault != FaultKind::Lose) << i;
    }
    return there;
}

} // namespace

TEST(Simulation, TheSeedSaysWhichWritesAreLost)
{
    const std::vector<bool> there = writesThatAreThere(7);
    EXPECT_EQ(there, writesThatAreThere(7));
    EXPECT_NE(there, writesThatAreThere(8));
    const auto lost = std::count(there.begin(), there.end(), false);
    EXPECT_GT(lost, 100);
    EXPECT_LT(lost, 200);
}

TEST(Statistics, PrintsOneFigurePerLine)
{
    Statistics statistics;
    statistics.countRequest(parseRequest(readFrame(1, 1, 102, {16, 32})), 0);
    statistics.countRequest(parseRequest(frame(1, 1, 5, 1)), 1);
    statistics.countFault(FaultKind::Late);
    statistics.countFault(FaultKind::None);
    statistics.countVerdict({false, false, false, true, 0, 0});
    statistics.countVerdict({true, true, false, true, 11, 0});
    statistics.countVerdict({false, true, false, false, 11, 0});
    statistics.countVerdict({false, false, true, true, 2, 0});
    statistics.clients = 3;
    statistics.bytesSent = 77;
    EXPECT_EQ(statistics.text().toStdString(), "requests: 2\n"
                                               "requests to read words: 1\n"
                                               "requests of unknown function: 1\n"
                                               "requests above the rate: 1\n"
                                               "requests to unknown stations: 2\n"
                                               "requests to refused addresses: 1\n"
                                               "requests not answered: 1\n"
                                               "elements read: 2\n"
                                               "elements written: 0\n"
                                               "exceptions of code 1: 1\n"
                                               "faults: 1\n"
                                               "faults late: 1\n"
                                               "clients: 3\n"
                                               "clients at once at most: 0\n"
                                               "clients refused: 0\n"
                                               "clients too slow: 0\n"
                                               "broken streams: 0\n"
                                               "bytes received: 0\n"
                                               "bytes sent: 77\n");
}

// Frames with random contents, many of them nearly right: every one gets a whole reply of its own.
TEST(Simulation, AnswersWhateverAFrameHolds)
{
    Simulation simulation(FaultPlan(), 64);
    SeededRandom random(99);
    const int functions[] = {100, 101, 102, 103, 108, 109, 3, 255};
    for (int i = 0; i < 20000; ++i) {
        QByteArray data;
        for (int size = random.between(0, 251); size > 0; --size) {
            data += static_cast<char>(random.between(0, 255));
        }
        const int count = random.between(0, 1) ? data.size() / 4 : random.between(0, 255);
        const QByteArray sent =
            frame(i, random.between(0, 255), functions[random.between(0, 7)], count, data);
        const auto outcome = simulation.take(sent);
        ASSERT_GE(outcome.reply.size(), 9);
        ASSERT_LE(outcome.reply.size(), 260);
        ASSERT_EQ(outcome.reply.left(2), sent.left(2));
        tavmir::wire::FrameDecoder decoder;
        tavmir::wire::FrameView view;
        decoder.append(bytesOf(outcome.reply), sizeOf(outcome.reply));
        ASSERT_EQ(decoder.next(view), tavmir::wire::FrameDecoder::State::frame);
        ASSERT_EQ(view.size, sizeOf(outcome.reply)) << "its length field is true";
        ASSERT_FALSE(requestInWords(sent, outcome.request, simulation.names()).isEmpty());
        ASSERT_FALSE(replyInWords(outcome.reply, simulation.names()).isEmpty());
    }
    EXPECT_LE(simulation.memory().pageCount(), 64u);
    EXPECT_GT(simulation.statistics().elementsRead, 0u);
}
