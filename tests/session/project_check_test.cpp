// A check of everything that is polled, against a controller that answers, refuses or is silent.
#include "session/project_check.h"

#include "running_session.h"

#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;

std::string inWords(const CheckAnswer& answer)
{
    switch (answer.end) {
    case CheckEnd::answered:
        return answer.ms > 0 ? "answered" : "answered in no time";
    case CheckEnd::refused:
        return "refused " + std::to_string(answer.code);
    case CheckEnd::noAnswer:
        return "no answer";
    case CheckEnd::notAsked:
        break;
    }
    return answer.why.toStdString();
}

class Check : public RunningSession
{
protected:
    const CheckResult& check(const QByteArray& polled, const QByteArray& connection = "",
                             int replyTimeoutMs = kPatientMs)
    {
        options_ = ProjectCheck::sessionOptions();
        Setting setting;
        setting.polled = polled;
        setting.connection = connection;
        setting.replyTimeoutMs = replyTimeoutMs;
        prepare(setting);
        ProjectCheck check(*session_, project_.connection,
                           [this](int, size_t asked, size_t) { tell(asked); });
        start();
        EXPECT_TRUE(session_->connection().awaitAttempt(Deadline(kPatientMs)));
        result_ = check.run();
        return result_;
    }

    // The same where some never answer. Each of them is waited for several times, so the time is
    // short. On a busy machine others may be later than that: until all of them have answered, it
    // is checked again with more time.
    void checkWithSilentOnes(const std::function<bool()>& othersHaveAnswered,
                             const QByteArray& polled, const QByteArray& connection = "")
    {
        for (const int replyTimeoutMs : {50, 250, 1000}) {
            reset();
            before_ = controller_.count("f");
            check(polled, connection, replyTimeoutMs);
            if (othersHaveAnswered()) {
                return;
            }
        }
    }

    // Requests for words of the last of these.
    size_t wordRequests() { return controller_.count("f") - before_; }

    virtual void tell(size_t) {}

    std::string alone(size_t variable) { return inWords(result_.variables[variable].alone); }
    std::string together(size_t variable)
    {
        return inWords(result_.variables[variable].together.answer);
    }

    // A controller that does not answer requests of a station, or that name one of the addresses.
    void silence(int station, const std::vector<quint32>& addresses = {})
    {
        controller_.judge("dfl", [=](const QByteArray& request, int) {
            bool isSilent = stationOf(request) == station;
            for (const quint32 address : addressesOf(request)) {
                isSilent = isSilent || std::count(addresses.begin(), addresses.end(), address) > 0;
            }
            return isSilent ? Mood::silent : Mood::answers;
        });
    }

    CheckResult result_;
    size_t before_ = 0;
};

} // namespace

TEST_F(Check, EachIsAskedInItsRequestAndAlone)
{
    controller_.set('f', kArrayAt + 16, 0x1234);
    check(R"({ "address": "M.bit" }, { "address": "M.a" }, { "address": "M.text" },
             { "address": "M.d" })");
    ASSERT_EQ(13u, result_.variables.size());
    for (size_t i = 0; i < result_.variables.size(); ++i) {
        EXPECT_EQ("answered", alone(i)) << i;
        EXPECT_EQ("answered", together(i)) << i;
        EXPECT_TRUE(result_.variables[i].isGood());
    }
    EXPECT_EQ("3412", result_.variables[2].bytes.toHex().toStdString());
    EXPECT_EQ(1, result_.variables[0].together.request);
    EXPECT_EQ(2, result_.variables[1].together.request);
    EXPECT_EQ(38, result_.variables[1].together.sharing);
    EXPECT_EQ(4, result_.variables[12].together.request);
    EXPECT_EQ(4, result_.requests);
    EXPECT_TRUE(result_.silentStations.empty());
    EXPECT_EQ(1u, controller_.requestsOf("d", kBitAt).size() - 1) << "once together, once alone";
}

TEST_F(Check, OneThatIsRefusedIsToldFromThoseItTakesWithIt)
{
    controller_.lack('f', kArrayAt + 3 * 16);
    check(R"({ "address": "M.a" }, { "address": "M.d" })");
    for (size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(i == 3 ? "refused 2" : "answered", alone(i)) << i;
        EXPECT_EQ("refused 2", together(i)) << i;
        EXPECT_FALSE(result_.variables[i].isGood());
    }
    EXPECT_EQ("refused, code 2 (illegal data address)",
              result_.variables[3].alone.why.toStdString());
    EXPECT_TRUE(result_.variables[10].isGood());
}

TEST_F(Check, ATextIsRefusedWithAnyOfItsRequests)
{
    controller_.lack('f', kTextAt + 59 * 16);
    check(R"({ "address": "M.text" })");
    EXPECT_EQ("refused 2", alone(0));
    EXPECT_EQ("refused 2", together(0));
}

TEST_F(Check, AStationThatNeverAnswersIsLeftSoon)
{
    silence(2);
    checkWithSilentOnes([this] { return result_.variables[600].isGood(); },
                        R"({ "address": "M.many[0]", "count": 600, "station": 2 },
                           { "address": "M.d", "station": 3 })",
                        R"(, "stationMode": "own")");
    EXPECT_EQ(std::vector<int>{2}, result_.silentStations);
    EXPECT_EQ("no answer", alone(0));
    EXPECT_EQ("not asked: station 2 does not answer", alone(599));
    EXPECT_EQ("no answer", together(0));
    EXPECT_TRUE(result_.variables[600].isGood());
    EXPECT_LE(wordRequests(), 30u);
}

TEST_F(Check, AControllerThatNeverAnswersIsLeftSoon)
{
    controller_.treat("dfl", Mood::silent);
    check(R"({ "address": "M.many[0]", "count": 3000 })", "", 30);
    EXPECT_EQ(std::vector<int>{1}, result_.silentStations);
    EXPECT_LE(controller_.count("f"), 20u);
    EXPECT_EQ("not asked: station 1 does not answer", alone(2999));
}

TEST_F(Check, SingleAddressesThatNeverAnswerDoNotEndIt)
{
    std::vector<quint32> silent;
    for (quint32 i = 20; i < 32; ++i) {
        silent.push_back(kManyAt + 16 * i);
    }
    silence(-1, silent);
    const auto isSilent = [](size_t i) { return i >= 20 && i < 32; };
    const auto othersHaveAnswered = [&] {
        bool all = together(50) == "answered";
        for (size_t i = 0; i < 80; ++i) {
            all = all && (isSilent(i) || alone(i) == "answered");
        }
        return all;
    };
    checkWithSilentOnes(othersHaveAnswered, R"({ "address": "M.many[0]", "count": 80 })");
    EXPECT_TRUE(result_.silentStations.empty());
    for (size_t i = 0; i < 80; ++i) {
        EXPECT_EQ(isSilent(i) ? "no answer" : "answered", alone(i)) << i;
    }
    EXPECT_EQ("no answer", together(0));
    EXPECT_EQ("answered", together(50));
    EXPECT_EQ("no answer", together(79)) << "its request goes on with the list's head";
}

namespace
{

class StoppedCheck : public Check
{
protected:
    void tell(size_t asked) override
    {
        if (asked == 5) {
            session_->stop();
        }
    }
};

} // namespace

TEST_F(StoppedCheck, TellsWhatIsKnownByThen)
{
    check(R"({ "address": "M.a" })");
    EXPECT_EQ("answered", alone(4));
    EXPECT_EQ("", alone(5));
    EXPECT_EQ("answered", together(9));
    EXPECT_FALSE(result_.variables[5].isGood());
}

} // namespace tavmir::host
