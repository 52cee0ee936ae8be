// Writes of the page: asked for, permitted, told.
#include "live_page.h"
#include "page/write_desk.h"

#include "project/raw_address.h"

#include <gmock/gmock.h>

namespace tavmir::host
{

namespace
{

// Takes writes and ends them when the test says so.
class MadeDesk : public WriteDesk
{
public:
    bool isOpen() const override { return isOpen_; }
    bool permits(const project::Element& element) const override
    {
        return isOpen_ && (only_.isEmpty() || only_.contains(project::shownAddress(element)));
    }
    QStringList only() const override { return only_; }
    QString words() const override { return isOpen_ ? "on" : "off"; }
    std::optional<Refusal> write(const PageWrite& write, Done done) override
    {
        if (write.value == "bad") {
            return Refusal{400, "\"bad\" is not a value"};
        }
        taken_.push_back(write);
        done_ = std::move(done);
        return std::nullopt;
    }

    bool isOpen_ = true;
    QStringList only_;
    std::vector<PageWrite> taken_;
    Done done_;
};

class Writes : public LivePage
{
protected:
    Writes()
    {
        content_->setWrites(&desk_);
        plan();
        connect(10);
        word(20, 3000, 7);
        lookAt(30);
    }
    page::Answer post(const std::string& body)
    {
        answer_ = page::Answer();
        answer_.status = 0;
        content_->post("write", body, [this](const page::Answer& answer) { answer_ = answer; });
        return answer_;
    }
    void end(OutcomeState state, const QString& reason, const QString& line)
    {
        WriteEnd end;
        end.outcome.state = state;
        end.outcome.reason = reason;
        end.text = reason.isEmpty() ? QString("written") : reason;
        end.line = line;
        end.readBack = ReadBackValue{"5", 5, {Quality::good, QString()}};
        desk_.done_(end);
    }
    MadeDesk desk_;
    page::Answer answer_;
};

constexpr char kWrite[] = R"({"address":"Main.W","value":"5"})";

} // namespace

TEST(WriteBody, IsTakenApart)
{
    const ParsedWrite parsed = parseWrite(R"({"address":"Main.W","value":"5","expect":"7"})");
    EXPECT_EQ("", parsed.problem);
    EXPECT_EQ("Main.W", parsed.write.address);
    EXPECT_EQ("5", parsed.write.value);
    EXPECT_EQ("7", *parsed.write.expect);
    EXPECT_FALSE(parseWrite(kWrite).write.expect);
}

TEST(WriteBody, WhatIsNoneIsRefused)
{
    for (const char* body :
         {"", "x", "[]", "{}", "{\"address\":\"a\"}", "{\"address\":1,\"value\":\"2\"}",
          "{\"address\":\"a\",\"value\":2}", "{\"address\":\"a\",\"value\":\"2\",\"expect\":null}",
          "{\"address\":\"a\",\"value\":\"2\",\"more\":1}", "{\"address\":\"a\",\"value\":\"2\"",
          "\xFF\xFE"}) {
        EXPECT_NE("", parseWrite(body).problem) << body;
    }
    EXPECT_NE(
        "", parseWrite("{\"address\":\"a\",\"value\":\"" + std::string(5000, 'x') + "\"}").problem);
}

TEST_F(Writes, NothingIsWrittenWithoutPermission)
{
    desk_.isOpen_ = false;
    EXPECT_EQ(403, post(kWrite).status);
    desk_.isOpen_ = true;
    desk_.only_ = QStringList{"Main.S"};
    EXPECT_EQ(403, post(kWrite).status);
    content_->setWrites(nullptr);
    EXPECT_EQ(403, post(kWrite).status);
    EXPECT_TRUE(desk_.taken_.empty());
}

TEST_F(Writes, WhatMayBeWrittenIsSaidOfEachVariable)
{
    desk_.only_ = QStringList{"Main.S"};
    const QJsonArray variables = get("variables")["variables"].toArray();
    EXPECT_FALSE(variables[kW].toObject()["writable"].toBool());
    EXPECT_TRUE(variables[kS].toObject()["writable"].toBool());
    EXPECT_EQ(QJsonArray{"Main.S"}, get("status")["writes"].toObject()["only"].toArray());
}

TEST_F(Writes, AValueThatIsAnotherOneByNowIsNotOverwritten)
{
    word(40, 3000, 8);
    at(50);
    EXPECT_EQ(409, post(R"({"address":"Main.W","value":"5","expect":"7"})").status)
        << "nobody has looked since it changed";
    EXPECT_TRUE(desk_.taken_.empty());
    post(R"({"address":"Main.W","value":"5","expect":"8"})");
    EXPECT_EQ(1, desk_.taken_.size());
}

TEST_F(Writes, WhatWasExpectedHoldsHoweverTheAddressIsSpelt)
{
    plan({}, kPolled + 1);
    read(40, kReadWords, {{6832, 8}});
    lookAt(50);
    for (const char* address : {"Main.Grid[C]", "Main.Grid[c]", "Main.Grid[0C]", "@word:6832"}) {
        const std::string asked = std::string(R"({"address":")") + address + R"(","value":"5",)";
        EXPECT_EQ(409, post(asked + R"("expect":"7"})").status) << address;
        EXPECT_EQ(0, post(asked + R"("expect":"8"})").status) << address << " is under way";
        end(OutcomeState::done, QString(), "written");
        EXPECT_EQ("8", parsed(answer_.body)["old"].toString()) << address;
    }
    EXPECT_EQ(4, desk_.taken_.size());
}

TEST_F(Writes, WhatLiesThereUnderAnotherNameIsNamed)
{
    word(40, 3000, 8);
    at(50);
    EXPECT_EQ(409, post(R"({"address":"@word:3000","value":"5","expect":"7"})").status);
    EXPECT_EQ("@word:3000: Level is there, which is shown as 8, not 7",
              parsed(answer_.body)["error"].toString());
    EXPECT_EQ(409, post(R"({"address":"Main.W","value":"5","expect":"7"})").status);
    EXPECT_EQ("Main.W: is 8 by now, not 7", parsed(answer_.body)["error"].toString());
}

TEST_F(Writes, NothingIsExpectedOfWhatIsNotPolled)
{
    EXPECT_EQ(409, post(R"({"address":"Main.Off","value":"5","expect":"7"})").status);
    EXPECT_TRUE(desk_.taken_.empty());
    EXPECT_EQ(0, post(R"({"address":"Main.Off","value":"5"})").status) << "it is under way";
}

TEST_F(Writes, ATextThatIsNotEmptyAnyMoreIsNotOverwritten)
{
    const std::string asked = R"({"address":"Main.Title","value":"Ada","expect":""})";
    read(40, kReadWords, {{6000, 0}, {6016, 0}, {6032, 0}});
    lookAt(50);
    EXPECT_EQ(0, post(asked).status) << "it is under way";
    read(60, kReadWords, {{6000, 0x4142}, {6016, 0}, {6032, 0}});
    lookAt(150);
    EXPECT_EQ(409, post(asked).status);
    EXPECT_THAT(parsed(answer_.body)["error"].toString().toStdString(),
                testing::MatchesRegex("Main.Title: is [AB]+ by now, not empty"));
    EXPECT_EQ(1, desk_.taken_.size());
    EXPECT_EQ(409, post(R"({"address":"Main.Off","value":"5","expect":""})").status)
        << "nothing is known of it";
}

TEST_F(Writes, BadValuesAndAddressesAreRefused)
{
    EXPECT_EQ(400, post(R"({"address":"Main.W","value":"bad"})").status);
    EXPECT_EQ(400, post(R"({"address":"Main.Nothing","value":"1"})").status);
    EXPECT_EQ(400, post("{").status);
    page::Answer other;
    content_->post("other", "{}", [&](const page::Answer& answer) { other = answer; });
    EXPECT_EQ(404, other.status);
}

TEST_F(Writes, EachEndsWithItsOutcomeOldValueAndWhatStandsThere)
{
    EXPECT_EQ(0, post(kWrite).status) << "it is under way";
    end(OutcomeState::unknown, "the controller did not answer within 500 ms",
        "Main.W = 5: unknown");
    EXPECT_EQ(200, answer_.status);
    EXPECT_EQ(R"({"outcome":"unknown","text":"the controller did not answer within 500 ms",)"
              R"("old":"7","readBack":{"text":"5","number":5,"quality":"good","reason":""}})",
              answer_.body);
}

TEST_F(Writes, EachIsOneEventThatSaysWho)
{
    post(kWrite);
    FeedEntry told;
    told.kind = FeedKind::operationEnded;
    told.operation = {OperationKind::write, OutcomeState::done, 1, 1, 1, 1, 3000, 16};
    tell(40, told);
    told.operation.kind = OperationKind::read;
    tell(45, told);
    at(50);
    end(OutcomeState::done, QString(), "Main.W = 5: written; 5 stands there");
    told.operation.kind = OperationKind::write;
    tell(60, told); // somebody else's
    lookAt(70);
    EXPECT_EQ((QStringList{"connected to 127.0.0.1:502",
                           "Main.W = 5: written; 5 stands there (from the page)",
                           "write of Main.W: done"}),
              eventTexts());
    const QJsonObject event = get("events")["events"].toArray()[1].toObject();
    EXPECT_EQ("write", event["kind"].toString());
    EXPECT_EQ("Level", event["variable"].toString());
    EXPECT_EQ("Main.W", event["address"].toString());
}

TEST_F(Writes, OneThatIsRefusedAtOnceLeavesOthersTold)
{
    post(R"({"address":"Main.W","value":"bad"})");
    FeedEntry told;
    told.kind = FeedKind::operationEnded;
    told.operation = {OperationKind::write, OutcomeState::done, 1, 1, 1, 1, 3000, 16};
    tell(40, told);
    lookAt(50);
    EXPECT_EQ("write of Main.W: done", eventTexts().last());
}

} // namespace tavmir::host
