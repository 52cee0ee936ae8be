// Why a value is there or is not, in each fault.
#include "live_page.h"

#include <gmock/gmock.h>

namespace tavmir::host
{

namespace
{

class Why : public LivePage
{
protected:
    Why() { plan(); }
    // Exchanges that ask for Main.S, until 200 ms.
    void manyOthers()
    {
        for (int i = 1; i <= 20000; ++i) {
            word(190, 3016, 3);
            if (i % 5000 == 0) {
                lookAt(200);
            }
        }
    }
    QString step(const char* address, const char* name)
    {
        for (const QJsonValue& value : get("explain", {{"address", address}})["steps"].toArray()) {
            const QJsonObject step = value.toObject();
            if (step["step"].toString() == name) {
                const QJsonValue ok = step["ok"];
                return (ok.isNull() ? "? " : ok.toBool() ? "+ " : "- ") + step["text"].toString();
            }
        }
        return QString();
    }
};

} // namespace

TEST_F(Why, AGoodValue)
{
    connect(0);
    word(1000, 3000, 7);
    lookAt(1100);
    EXPECT_EQ("The value is there: request 2 of 3 brought it 100 ms ago.", conclusion("Main.W"));
    EXPECT_EQ("+ a word at bit address 3000, shown as unsigned", step("Main.W", "resolved"));
    EXPECT_EQ("+ variable 2 of 7 in the polled list", step("Main.W", "polled"));
    EXPECT_EQ("+ it is asked for at station 1", step("Main.W", "station"));
    EXPECT_EQ("+ request 2 of 3 of a pass, shared with Main.S, Main.Mode, Main.Mode.b[2], "
              "Main.Title (3 of 3 words); ends because the next element has another data type",
              step("Main.W", "request"));
    EXPECT_EQ("+ answered 100 ms ago, after 1.0 ms", step("Main.W", "exchange"));
    EXPECT_EQ("+ bytes 14 to 15 of the reply 100 ms ago: 00 07", step("Main.W", "bytes"));
    EXPECT_EQ("+ 7", step("Main.W", "value"));
    EXPECT_EQ("+ read 100 ms ago, good", step("Main.W", "age"));
}

TEST_F(Why, NeverConnected)
{
    tell(100, FeedKind::connectFailed, "Connection refused");
    lookAt(200);
    EXPECT_EQ("There is no value: there has been no connection yet; not connected to "
              "127.0.0.1:502: Connection refused.",
              conclusion("Main.W"));
    EXPECT_EQ("- nothing is sent: not connected to 127.0.0.1:502: Connection refused",
              step("Main.W", "exchange"));
}

TEST_F(Why, TheConnectionWasLost)
{
    connect(0);
    word(1000, 3000, 7);
    tell(2000, FeedKind::connectionLost, "the controller closed the connection");
    lookAt(4000);
    EXPECT_EQ("The value is 3.0 s old: the connection was lost; not connected to 127.0.0.1:502: "
              "the controller closed the connection.",
              conclusion("Main.W"));
}

TEST_F(Why, TheStationIsSwitchedOff)
{
    connect(0);
    fails(100, ExchangeEnd::suppressed, {{3000, 0}});
    tell(100, FeedKind::gaveUp);
    lookAt(200);
    EXPECT_EQ("There is no value: station 1 is switched off, nothing is sent to it.",
              conclusion("Main.W"));
    EXPECT_EQ("- station 1 is switched off: nothing is sent to it", step("Main.W", "station"));
}

TEST_F(Why, TheRequestIsRefusedWithOthersInIt)
{
    connect(0);
    fails(100, ExchangeEnd::exception, {{3000, 0}, {3016, 0}}, 2);
    tell(100, FeedKind::gaveUp);
    lookAt(200);
    EXPECT_EQ("There is no value: in a refused request of 2: the controller refused the request: "
              "exception 2 (illegal data address); 4 others are in the same request.",
              conclusion("Main.W"));
}

TEST_F(Why, TheRequestTimedOut)
{
    connect(0);
    word(50, 3000, 7);
    fails(1000, ExchangeEnd::timeout, {{3000, 0}});
    tell(1000, FeedKind::gaveUp);
    lookAt(1050);
    EXPECT_EQ("The value is 1.0 s old: the controller did not answer within 500 ms; 4 others are "
              "in the same request.",
              conclusion("Main.W"));
    EXPECT_EQ("- the controller did not answer within 500 ms, 50 ms ago",
              step("Main.W", "exchange"));
    EXPECT_EQ("+ bytes 14 to 15 of the reply 1.0 s ago: 00 07", step("Main.W", "bytes"))
        << "the last good one";
}

TEST_F(Why, TheControllerRefusesItByItself)
{
    connect(0);
    fails(100, ExchangeEnd::exception, {{3000, 0}}, 2);
    tell(100, FeedKind::gaveUp);
    at(150);
    plan({{kW, "refused, code 2 (illegal data address)"}});
    lookAt(200);
    EXPECT_EQ("There is no value: the controller refuses this address by itself (refused, code 2 "
              "(illegal data address)), so it is tried only now and then.",
              conclusion("Main.W"));
    EXPECT_EQ("- in no request of a pass", step("Main.W", "request"));
}

TEST_F(Why, ItsTurnHasNotComeYet)
{
    connect(0);
    lookAt(10);
    EXPECT_EQ("There is no value: it has not been asked for yet, its turn in the pass comes.",
              conclusion("Main.W"));
    EXPECT_EQ("? not asked for yet: its turn will come", step("Main.W", "exchange"));
}

TEST_F(Why, ARefusalThatIsLongOverIsNotTakenForNone)
{
    connect(0);
    fails(100, ExchangeEnd::exception, {{3000, 0}}, 2);
    tell(100, FeedKind::gaveUp);
    at(150);
    plan({{kW, "refused, code 2 (illegal data address)"}});
    manyOthers();
    EXPECT_EQ("- no request for it is among the last 20000 exchanges; of the one before: the "
              "controller refused the request: exception 2 (illegal data address)",
              step("Main.W", "exchange"));
    EXPECT_THAT(conclusion("Main.W"), testing::HasSubstr("the controller refuses this address"));
}

TEST_F(Why, AReadingThatIsLongOverIsNotTakenForNone)
{
    connect(0);
    word(50, 3000, 7);
    manyOthers();
    EXPECT_EQ("? no request for it is among the last 20000 exchanges; it was read 150 ms ago",
              step("Main.W", "exchange"));
}

TEST_F(Why, WhatWasNotSeenMayHaveAskedForIt)
{
    connect(0);
    manyOthers();
    EXPECT_EQ("? no request for it is among the last 20000 exchanges", step("Main.W", "exchange"));
    EXPECT_EQ("There is no value: no request for it is among the last 20000 exchanges.",
              conclusion("Main.W"));
}

TEST_F(Why, WhatIsNoLongerKeptMayHaveAskedForIt)
{
    options_.limits.keptBytes = 10000;
    content_ = std::make_unique<LiveContent>(feed_, pageProject(), options_);
    plan();
    connect(0);
    word(1, 3016, 3);
    lookAt(10);
    EXPECT_EQ("? not asked for yet: its turn will come", step("Main.W", "exchange"));
    for (int i = 0; i < 1000; ++i) {
        word(11, 3016, 3);
    }
    lookAt(20);
    EXPECT_THAT(step("Main.W", "exchange").toStdString(),
                testing::MatchesRegex("\\? no request for it is among the last [0-9]+ exchanges"));
}

TEST_F(Why, WhatWasMissedMayHaveAskedForIt)
{
    connect(0);
    lookAt(10);
    for (int i = 0; i < 40000; ++i) { // more than wait for the page
        word(20, 3016, 3);
    }
    lookAt(30);
    EXPECT_THAT(conclusion("Main.W"), testing::HasSubstr("no request for it is among the last"));
}

TEST_F(Why, ATextThatIsNotWholeYet)
{
    connect(0);
    read(100, kReadWords, {{6000, 0x4142}, {6016, 0x4344}});
    lookAt(200);
    EXPECT_EQ("There is no value: only 2 of its 3 words came, and a text is shown when it is "
              "whole.",
              conclusion("Main.Title"));
    EXPECT_EQ("- 2 of its 3 words came: it is shown when all have", step("Main.Title", "value"));
}

TEST_F(Why, AWriteOfItIsNotAcknowledged)
{
    connect(0);
    word(100, 3000, 7);
    FeedEntry entry;
    entry.kind = FeedKind::operationEnded;
    entry.text = "the controller did not answer within 500 ms";
    entry.operation = {OperationKind::write, OutcomeState::unknown, 1, 1, 0, 1, 3000, 16};
    tell(200, entry);
    lookAt(300);
    EXPECT_EQ("The value is 200 ms old, and it may be another one by now: a write of it ended as "
              "unknown: the controller did not answer within 500 ms.",
              conclusion("Main.W"));
}

TEST_F(Why, ItIsNotReadAnyMore)
{
    connect(0);
    word(10, 3000, 7);
    lookAt(4010);
    EXPECT_EQ("The value is 4.0 s old: not read for 4.0 s.", conclusion("Main.W"));
}

TEST_F(Why, AnAddressInAnotherSpelling)
{
    plan({}, 8);
    lookAt(1);
    EXPECT_EQ("+ variable 8 of 8 in the polled list", step("Main.Grid[C]", "polled"));
    EXPECT_EQ("+ variable 8 of 8 in the polled list", step("Main.Grid[c]", "polled"));
    EXPECT_EQ("- not in the project's polled list", step("Main.Grid[b]", "polled"));
}

TEST_F(Why, WhatIsNotPolledIsNamedAsTheProjectFileNamesIt)
{
    EXPECT_EQ("+ a dword at bit address 4000", step("@dword:4000", "resolved"));
    EXPECT_EQ("+ bit 3 of the word at bit address 3032", step("Main.Mode.b[3]", "resolved"));
}

TEST_F(Why, AnAddressThatMeansNothingOrIsNotPolled)
{
    lookAt(1);
    EXPECT_THAT(conclusion("Main.Nothing"), testing::StartsWith("There is no such value: "));
    EXPECT_EQ("The value is not there because it is not polled: nobody asks for it.",
              conclusion("Main.Off"));
    EXPECT_EQ("- not in the project's polled list", step("Main.Off", "polled"));
    EXPECT_EQ("The address stands for several values: ask for one of them.",
              conclusion("@word:0:4"));
}

} // namespace tavmir::host
