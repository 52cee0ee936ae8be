// What the feed counts of a session on the line, figure by figure, beside what the controller saw.
#include "running_session.h"

#include "support/wait_until.h"

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

constexpr quint64 kAcknowledgement = 9; // bytes

class Figures : public RunningSession
{
protected:
    void openWithRetries(int retryLimit, int replyTimeoutMs = kPatientMs)
    {
        Setting setting;
        setting.connection = ", \"retryLimit\": " + QByteArray::number(retryLimit);
        setting.replyTimeoutMs = replyTimeoutMs;
        open(setting);
    }

    quint64 bytesOfRequests()
    {
        quint64 bytes = 0;
        for (const QByteArray& request : controller_.requests("defglm")) {
            bytes += static_cast<quint64>(request.size());
        }
        return bytes;
    }

    // All figures, and that those which are not named are zero.
    void expectFigures(const LineFigures& expected)
    {
        const LineFigures& seen = figures();
        EXPECT_EQ(expected.requests, seen.requests);
        EXPECT_EQ(expected.replies, seen.replies);
        EXPECT_EQ(expected.retries, seen.retries);
        EXPECT_EQ(expected.giveUps, seen.giveUps);
        EXPECT_EQ(expected.timeouts, seen.timeouts);
        EXPECT_EQ(expected.notConnected, seen.notConnected);
        EXPECT_EQ(expected.lost, seen.lost);
        EXPECT_EQ(expected.suppressed, seen.suppressed);
        EXPECT_EQ(expected.exceptions, seen.exceptions);
        EXPECT_EQ(expected.discarded, seen.discarded);
        EXPECT_EQ(expected.refusedReplies, seen.refusedReplies);
        EXPECT_EQ(expected.brokenStreams, seen.brokenStreams);
        EXPECT_EQ(expected.connects, seen.connects);
        EXPECT_EQ(expected.connectFailures, seen.connectFailures);
        EXPECT_EQ(expected.lostConnections, seen.lostConnections);
        EXPECT_EQ(expected.bytesReceived, seen.bytesReceived);
        EXPECT_EQ(expected.polledElements, seen.polledElements);
        EXPECT_EQ(0u, seen.missed);
        EXPECT_EQ(bytesOfRequests(), seen.bytesSent);
        EXPECT_EQ(expected.requests + expected.retries, controller_.count("defglm"));
        EXPECT_EQ(expected.replies + expected.exceptions + expected.refusedReplies,
                  seen.roundTrip.count());
        for (const OperationKind kind : {OperationKind::write, OperationKind::read}) {
            for (int state = 0; state < kOutcomeStates; ++state) {
                EXPECT_EQ(expected.outcomes[static_cast<int>(kind)][state],
                          seen.outcomes[static_cast<int>(kind)][state])
                    << outcomeWord(static_cast<OutcomeState>(state));
            }
        }
    }

    // A connection, and nothing else yet.
    static LineFigures connectedOnce()
    {
        LineFigures figures;
        figures.connects = 1;
        return figures;
    }

    static quint64& count(LineFigures& figures, OperationKind kind, OutcomeState state)
    {
        return figures.outcomes[static_cast<int>(kind)][static_cast<int>(state)];
    }
};

} // namespace

TEST_F(Figures, OfWhatIsDone)
{
    open();
    EXPECT_EQ("done", write("M.w", "1").state);
    EXPECT_EQ("done", write("M.text", QString(2 * kTextWords, 'x')).state);
    EXPECT_EQ("0", read("M.d").value);
    LineFigures expected = connectedOnce();
    expected.requests = 4;
    expected.replies = 4;
    expected.bytesReceived = 3 * kAcknowledgement + 9 + 8;
    count(expected, OperationKind::write, OutcomeState::done) = 2;
    count(expected, OperationKind::read, OutcomeState::done) = 1;
    expectFigures(expected);
}

TEST_F(Figures, OfRefusals)
{
    openWithRetries(1);
    controller_.judge("g", untilNumber(4, Mood::refuses)); // given up once, then once more refused
    EXPECT_EQ("refused", write("M.w", "1").state);
    EXPECT_EQ("done", write("M.w", "2").state);
    LineFigures expected = connectedOnce();
    expected.requests = 2;
    expected.retries = 2;
    expected.exceptions = 3;
    expected.giveUps = 1;
    expected.replies = 1;
    expected.bytesReceived = 4 * kAcknowledgement;
    count(expected, OperationKind::write, OutcomeState::refused) = 1;
    count(expected, OperationKind::write, OutcomeState::done) = 1;
    expectFigures(expected);
}

TEST_F(Figures, OfLostConnections)
{
    openWithRetries(3);
    controller_.judge("m", untilNumber(4, Mood::losesAndCloses));
    EXPECT_EQ("done", write("M.d", "1").state);
    LineFigures expected = connectedOnce();
    expected.requests = 1;
    expected.retries = 3;
    expected.lost = 3;
    expected.lostConnections = 3;
    expected.connects = 4;
    expected.replies = 1;
    expected.bytesReceived = kAcknowledgement;
    count(expected, OperationKind::write, OutcomeState::done) = 1;
    expectFigures(expected);
}

TEST_F(Figures, OfTimeOuts)
{
    openWithRetries(1, kSoonMs);
    controller_.treat("e", Mood::silent);
    EXPECT_EQ("unknown", write("M.bit", "1").state);
    LineFigures expected = connectedOnce();
    expected.requests = 1;
    expected.retries = 1;
    expected.timeouts = 2;
    expected.giveUps = 1;
    count(expected, OperationKind::write, OutcomeState::unknown) = 1;
    expectFigures(expected);
}

TEST_F(Figures, OfStrayFramesAndWrongLengths)
{
    openWithRetries(0);
    controller_.treat("l", Mood::straysFirst); // two of them before each reply
    EXPECT_EQ("done", read("M.d").state);
    EXPECT_EQ("done", read("M.r").state);
    controller_.treat("g", Mood::tooLong);
    EXPECT_EQ("unknown", write("M.w", "1").state);
    LineFigures expected = connectedOnce();
    expected.requests = 3;
    expected.replies = 2;
    expected.discarded = 4;
    expected.refusedReplies = 1;
    expected.giveUps = 1;
    expected.bytesReceived = 2 * (2 * (9 + 8) + 9 + 16) + 9 + 300;
    count(expected, OperationKind::write, OutcomeState::unknown) = 1;
    count(expected, OperationKind::read, OutcomeState::done) = 2;
    expectFigures(expected);
}

TEST_F(Figures, OfAStationSwitchedOff)
{
    openWithRetries(1);
    session_->enableStation(1, false);
    EXPECT_EQ("not sent", write("M.w", "1").state);
    session_->enableStation(1, true);
    EXPECT_EQ("done", write("M.w", "2").state);
    const LineFigures& seen = figures();
    EXPECT_EQ(2u, seen.suppressed);
    EXPECT_EQ(1u, seen.giveUps);
    EXPECT_EQ(1u, seen.replies);
    EXPECT_EQ(2u, seen.requests);
    EXPECT_EQ(1u, seen.retries);
    EXPECT_EQ(bytesOfRequests(), seen.bytesSent);
    EXPECT_EQ(1u, controller_.count("g"));
}

TEST_F(Figures, OfTwoPasses)
{
    options_.passMs = 100 * kPatientMs;
    Setting setting;
    setting.polled = R"({ "address": "M.w" }, { "address": "M.a" }, { "address": "M.text" },
                        { "address": "M.d" }, { "address": "M.bit" })";
    open(setting);
    // A bit; a word, ten and the sixty of the text in two requests; a double word.
    ASSERT_TRUE(test::waitUntil([&] { return figures().replies == 4; }));
    EXPECT_EQ("", poll({"M.bit", "M.d"}));
    ASSERT_TRUE(test::waitUntil([&] { return figures().replies == 6; }));
    EXPECT_EQ("done", write("M.w", "1").state);
    LineFigures expected = connectedOnce();
    expected.requests = 7;
    expected.replies = 7;
    expected.polledElements = 1 + 71 + 1 + 2;
    expected.bytesReceived = 6 * 9 + 71 * 6 + 2 * (5 + 8) + kAcknowledgement;
    count(expected, OperationKind::write, OutcomeState::done) = 1;
    expectFigures(expected);
}

TEST_F(Figures, OfAControllerThatIsNotThere)
{
    controller_.unplug();
    openWithRetries(1);
    EXPECT_EQ("not sent", write("M.w", "1", kSoonMs / 4).state);
    EXPECT_EQ("not sent", read("M.w", kSoonMs / 4).state);
    ASSERT_TRUE(test::waitUntil([&] { return connectFailures() > 5; }));
    LineFigures expected;
    expected.connectFailures = figures().connectFailures;
    count(expected, OperationKind::write, OutcomeState::notSent) = 1;
    count(expected, OperationKind::read, OutcomeState::notSent) = 1;
    session_->stop();
    expected.connectFailures = figures().connectFailures;
    expectFigures(expected);
}

TEST_F(Figures, OfHalfAText)
{
    openWithRetries(0);
    controller_.judge("g", [](const QByteArray&, int number) {
        return number == 1 ? Mood::answers : Mood::refuses;
    });
    EXPECT_EQ("partial", write("M.text", QString(2 * kTextWords, 'x')).state);
    LineFigures expected = connectedOnce();
    expected.requests = 2;
    expected.replies = 1;
    expected.exceptions = 1;
    expected.giveUps = 1;
    expected.bytesReceived = 2 * kAcknowledgement;
    count(expected, OperationKind::write, OutcomeState::partial) = 1;
    expectFigures(expected);
}

} // namespace tavmir::host
