// What a run tells of a feed: connections, changes, gaps and values.
#include "host/run_monitor.h"

#include "captured_console.h"
#include "feed/made_exchange.h"
#include "host/csv_view.h"
#include "host/json_view.h"
#include "host/plain_view.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

using project::DataType;
using Lines = std::vector<std::string>;

constexpr char kController[] = "plant:5020";

// Remembers what it was told.
class ToldView : public RunView
{
public:
    void show(const std::vector<ValueRow>& rows, const LineState& state) override
    {
        rows_ = rows;
        state_ = state;
        ++shown_;
    }
    void change(const ValueRow& row, WallClock::time_point time) override
    {
        changed_ = row;
        changes_.push_back((utcText(time) + " " + row.address + " " + row.value).toStdString());
    }
    void message(const QString& text) override { messages_.push_back(text.toStdString()); }
    void close(const QStringList&, const QJsonObject&) override {}

    std::vector<ValueRow> rows_;
    LineState state_;
    int shown_ = 0;
    Lines changes_;
    ValueRow changed_; // last
    Lines messages_;
};

FeedEntry entryWith(FeedKind kind, const QString& why = QString())
{
    FeedEntry entry;
    entry.kind = kind;
    entry.text = why;
    return entry;
}

Exchange wordsRead(const std::vector<ReadElement>& elements, qint64 wallMs)
{
    Exchange exchange = madeRead(kReadWords, 1, elements, Clock::now());
    exchange.endedWall = WallClock::time_point(std::chrono::milliseconds(wallMs));
    return exchange;
}

class Monitor : public testing::Test
{
protected:
    RunMonitor& open(bool everyChange = false)
    {
        monitor_ = std::make_unique<RunMonitor>(feed_, QualityRules{2000, kController}, view_,
                                                everyChange);
        return *monitor_;
    }

    // The messages of these entries alone.
    Lines messagesOf(const std::vector<FeedEntry>& entries)
    {
        view_.messages_.clear();
        for (const FeedEntry& entry : entries) {
            feed_.publish(entry);
        }
        monitor_->look();
        return view_.messages_;
    }

    std::string state()
    {
        monitor_->show();
        return (view_.state_.connected ? "+ " : "- ") + view_.state_.words.toStdString();
    }

    Feed feed_;
    ToldView view_;
    std::unique_ptr<RunMonitor> monitor_;
};

constexpr qint64 kNoon = 1772366400000; // 2026-03-01T12:00:00.000Z

} // namespace

TEST_F(Monitor, BeforeAnythingHappened)
{
    open();
    EXPECT_EQ("- not connected to plant:5020: not tried yet", state());
    EXPECT_TRUE(view_.rows_.empty());
    EXPECT_EQ(Lines(), messagesOf({}));
    EXPECT_EQ("- not connected to plant:5020: not tried yet", state());
}

TEST_F(Monitor, AConnectionIsTold)
{
    open();
    EXPECT_EQ(Lines{"connected to plant:5020"}, messagesOf({entryWith(FeedKind::connected)}));
    EXPECT_EQ("+ connected to plant:5020", state());
    EXPECT_EQ(1u, monitor_->figures().connects);
}

TEST_F(Monitor, FailedAttemptsAreToldOnceAndShownEachTime)
{
    open();
    EXPECT_EQ(Lines{"cannot connect to plant:5020: refused; trying again"},
              messagesOf({entryWith(FeedKind::connectFailed, "refused")}));
    EXPECT_EQ("- not connected to plant:5020: refused", state());
    EXPECT_EQ(Lines(), messagesOf({entryWith(FeedKind::connectFailed, "unreachable"),
                                   entryWith(FeedKind::connectFailed, "no route")}));
    EXPECT_EQ("- not connected to plant:5020: no route", state());
    EXPECT_EQ(3u, monitor_->figures().connectFailures);
    EXPECT_EQ(Lines{"connected to plant:5020"}, messagesOf({entryWith(FeedKind::connected)}));
    EXPECT_EQ(Lines{"cannot connect to plant:5020: again; trying again"},
              messagesOf({entryWith(FeedKind::connectFailed, "again")}));
}

TEST_F(Monitor, ARefusedVariableIsNamedWhenItIsFoundAndWhenItAnswersAgain)
{
    open();
    FeedEntry entry = entryWith(FeedKind::elementSetAside, "refused, code 2");
    entry.variable = "A.x";
    EXPECT_EQ(Lines{"A.x: refused, code 2"}, messagesOf({entry}));
    EXPECT_EQ(1u, monitor_->refused().all().count("A.x"));
    entry.kind = FeedKind::elementBack;
    EXPECT_EQ(Lines{"A.x: answers again"}, messagesOf({entry}));
    EXPECT_TRUE(monitor_->refused().all().empty());
}

TEST_F(Monitor, ALossIsToldAndTheAttemptsAfterItAreNot)
{
    open();
    EXPECT_EQ(
        (Lines{"connected to plant:5020", "lost plant:5020: cut"}),
        messagesOf({entryWith(FeedKind::connected), entryWith(FeedKind::connectionLost, "cut"),
                    entryWith(FeedKind::connectFailed, "refused")}));
    EXPECT_EQ("- not connected to plant:5020: refused", state());
    EXPECT_EQ((Lines{"connected to plant:5020", "lost plant:5020: cut again"}),
              messagesOf({entryWith(FeedKind::connected),
                          entryWith(FeedKind::connectionLost, "cut again")}));
    EXPECT_EQ("- not connected to plant:5020: cut again", state());
    EXPECT_EQ(2u, monitor_->figures().lostConnections);
}

TEST_F(Monitor, AReasonThatNamesTheControllerNamesItOnce)
{
    open();
    EXPECT_EQ(Lines{"cannot connect to plant:5020: refused; trying again"},
              messagesOf({entryWith(FeedKind::connectFailed, "plant:5020: refused")}));
    EXPECT_EQ("- not connected to plant:5020: refused", state());
    EXPECT_EQ(Lines(), messagesOf({entryWith(FeedKind::connectFailed, "plant:50201: refused")}));
    EXPECT_EQ("- not connected to plant:5020: plant:50201: refused", state());
}

TEST_F(Monitor, OtherEntriesAreNoMessages)
{
    open(true);
    EXPECT_EQ(Lines(), messagesOf({entryWith(FeedKind::gaveUp), entryWith(FeedKind::framesDropped),
                                   entryWith(FeedKind::operationEnded, "why"), madePlan(1, {})}));
    EXPECT_EQ(1u, monitor_->figures().giveUps);
}

TEST_F(Monitor, ALateOneIsToldHowThingsStandAndCountsNothing)
{
    feed_.publish(madePlan(1, {madeVariable(DataType::word, 160)}));
    feed_.publish(entryWith(FeedKind::connected));
    open();
    EXPECT_EQ(Lines{"connected to plant:5020"}, messagesOf({}));
    EXPECT_EQ(0u, monitor_->figures().connects);
    EXPECT_EQ("+ connected to plant:5020", state());
    ASSERT_EQ(1u, view_.rows_.size());
    EXPECT_TRUE(view_.rows_[0].value.isNull());
}

TEST_F(Monitor, ShowsTheValuesThatRepliesBrought)
{
    open();
    feed_.publish(
        madePlan(1, {madeVariable(DataType::word, 160), madeVariable(DataType::word, 176)}));
    feed_.publish(wordsRead({{160, 7}}, kNoon));
    monitor_->show();
    EXPECT_TRUE(view_.rows_.empty()) << "it looks when it is told to";
    monitor_->look();
    EXPECT_EQ(1, view_.shown_) << "and shows when it is told to";
    monitor_->show();
    ASSERT_EQ(2u, view_.rows_.size());
    EXPECT_EQ("7", view_.rows_[0].value.toStdString());
    EXPECT_LT(view_.rows_[0].ageMs.value(), 30000);
    EXPECT_TRUE(view_.rows_[1].value.isNull());
    EXPECT_TRUE(view_.changes_.empty()) << "changes were not asked for";
}

TEST_F(Monitor, EveryChangeIsToldAtTheTimeOfItsReply)
{
    open(true);
    feed_.publish(
        madePlan(1, {madeVariable(DataType::word, 160), madeVariable(DataType::word, 176)}));
    feed_.publish(wordsRead({{160, 7}, {176, 8}}, kNoon + 1));
    feed_.publish(wordsRead({{160, 7}, {176, 9}}, kNoon + 2));
    feed_.publish(wordsRead({{160, 8}, {176, 9}}, kNoon + 3));
    monitor_->look();
    EXPECT_EQ((Lines{"2026-03-01T12:00:00.001Z M.at160 7", "2026-03-01T12:00:00.001Z M.at176 8",
                     "2026-03-01T12:00:00.002Z M.at176 9", "2026-03-01T12:00:00.003Z M.at160 8"}),
              view_.changes_);
    monitor_->look();
    EXPECT_EQ(4u, view_.changes_.size());
    EXPECT_EQ(0, view_.shown_);
    EXPECT_EQ(6u, monitor_->figures().polledElements);
}

TEST_F(Monitor, GapsAmongChangesAreTold)
{
    open(true);
    for (size_t i = 0; i < Feed::kMostEntries + 1; ++i) {
        feed_.publish(madeEnd(ExchangeEnd::timeout, 1));
    }
    EXPECT_EQ(Lines{"64 events were missed: changes meanwhile are not shown"}, messagesOf({}));
    EXPECT_EQ(64u, monitor_->figures().missed);
    EXPECT_EQ(Feed::kMostEntries + 1 - 64, monitor_->figures().timeouts);
}

TEST_F(Monitor, WithoutChangesGapsAreOnlyCounted)
{
    open(false);
    for (size_t i = 0; i < Feed::kMostEntries + 1; ++i) {
        feed_.publish(madeEnd(ExchangeEnd::timeout, 1));
    }
    EXPECT_EQ(Lines(), messagesOf({}));
    EXPECT_EQ(64u, monitor_->figures().missed);
}

TEST_F(Monitor, ASilentControllerIsToldWhenARequestIsGivenUpAndWhenItAnswersAgain)
{
    open();
    Exchange late = madeEnd(ExchangeEnd::timeout, 9);
    late.replyTimeoutMs = 500;
    late.endedAt = Clock::now();
    EXPECT_EQ(Lines{"connected to plant:5020"}, messagesOf({entryWith(FeedKind::connected)}));
    feed_.publish(late);
    EXPECT_EQ(Lines(), messagesOf({})) << "one lost reply is no news";
    EXPECT_EQ("- no reply from plant:5020 yet: the controller did not answer within 500 ms",
              state());
    EXPECT_EQ(Lines{"no reply from plant:5020: the controller did not answer within 500 ms"},
              messagesOf({entryWith(FeedKind::gaveUp)}));
    feed_.publish(late);
    EXPECT_EQ(Lines(), messagesOf({entryWith(FeedKind::gaveUp)})) << "told once";
    feed_.publish(wordsRead({{1, 1}}, 0));
    EXPECT_EQ(Lines{"plant:5020 answers again"}, messagesOf({}));
    EXPECT_EQ("+ connected to plant:5020", state());
    feed_.publish(wordsRead({{1, 1}}, 0));
    EXPECT_EQ(Lines(), messagesOf({}));
}

TEST_F(Monitor, KnowsWhetherThereEverWasAConnection)
{
    open();
    messagesOf({entryWith(FeedKind::connectFailed, "refused")});
    EXPECT_FALSE(monitor_->wasConnected());
    messagesOf({entryWith(FeedKind::connected), entryWith(FeedKind::connectionLost, "cut")});
    EXPECT_TRUE(monitor_->wasConnected());
}

TEST_F(Monitor, AQualityThatChangesIsAChange)
{
    open(true);
    feed_.publish(
        madePlan(1, {madeVariable(DataType::word, 160), madeVariable(DataType::word, 176)}));
    feed_.publish(entryNow(FeedKind::connected));
    feed_.publish(wordsRead({{160, 7}}, kNoon));
    monitor_->look();
    ASSERT_EQ(1u, view_.changes_.size());
    const Clock::time_point now = Clock::now();
    monitor_->tellQualities(now);
    EXPECT_EQ(1u, view_.changes_.size()) << "nothing is new";
    monitor_->tellQualities(now + std::chrono::seconds(10));
    ASSERT_EQ(2u, view_.changes_.size());
    EXPECT_EQ(Quality::stale, view_.changed_.quality);
    EXPECT_EQ("M.at160", view_.changed_.address.toStdString());
    EXPECT_EQ("7", view_.changed_.value.toStdString());
    monitor_->tellQualities(now + std::chrono::seconds(11));
    EXPECT_EQ(2u, view_.changes_.size()) << "told once";
    monitor_->tellQualities(now);
    ASSERT_EQ(3u, view_.changes_.size());
    EXPECT_EQ(Quality::good, view_.changed_.quality);
    messagesOf({madePlan(2, {madeVariable(DataType::word, 160)})});
    monitor_->tellQualities(now);
    EXPECT_EQ(3u, view_.changes_.size()) << "known before the list changed";
}

TEST_F(Monitor, RowsHaveTheirQuality)
{
    open();
    feed_.publish(entryNow(FeedKind::connected));
    feed_.publish(madePlan(1, {madeVariable(DataType::word, 160)}));
    feed_.publish(wordsRead({{160, 7}}, kNoon));
    messagesOf({entryWith(FeedKind::connectionLost, "cut")});
    state();
    ASSERT_EQ(1u, view_.rows_.size());
    EXPECT_EQ(Quality::stale, view_.rows_[0].quality);
    EXPECT_EQ("not connected to plant:5020: cut", view_.rows_[0].reason.toStdString());
    EXPECT_EQ("7", view_.rows_[0].value.toStdString());
}

TEST(ChangeLines, InEachFormatAtTheTimeOfTheReply)
{
    const auto linesOf = [](OutputFormat format) {
        CapturedConsole captured;
        {
            Feed feed;
            const std::unique_ptr<RunView> view =
                makeRunView(format, false, false, captured.console());
            RunMonitor monitor(feed, {2000, kController}, *view, true);
            feed.publish(entryNow(FeedKind::connected));
            PolledElement level = madeVariable(DataType::word, 160);
            level.name = "level";
            feed.publish(madePlan(1, {level, madeBitOf(DataType::word, 160, 0)}));
            feed.publish(wordsRead({{160, 2}}, kNoon));
            feed.publish(wordsRead({{160, 2}}, kNoon + 1));
            feed.publish(wordsRead({{160, 3}}, kNoon + 2));
            monitor.look();
        }
        captured.finish();
        return captured.out();
    };
    EXPECT_EQ("2026-03-01T12:00:00.000Z  M.at160 = 2\n"
              "2026-03-01T12:00:00.000Z  M.at160.b[0] = 0\n"
              "2026-03-01T12:00:00.002Z  M.at160 = 3\n"
              "2026-03-01T12:00:00.002Z  M.at160.b[0] = 1\n",
              linesOf(OutputFormat::table));
    EXPECT_EQ(
        R"({"address":"M.at160","name":"level","quality":"good","reason":null,"time":"2026-03-01T12:00:00.000Z","value":2})"
        "\n"
        R"({"address":"M.at160.b[0]","name":"M.at160.b[0]","quality":"good","reason":null,"time":"2026-03-01T12:00:00.000Z","value":0})"
        "\n"
        R"({"address":"M.at160","name":"level","quality":"good","reason":null,"time":"2026-03-01T12:00:00.002Z","value":3})"
        "\n"
        R"({"address":"M.at160.b[0]","name":"M.at160.b[0]","quality":"good","reason":null,"time":"2026-03-01T12:00:00.002Z","value":1})"
        "\n",
        linesOf(OutputFormat::json));
    EXPECT_EQ("time,name,address,value,age_ms,quality,reason\n"
              "2026-03-01T12:00:00.000Z,level,M.at160,2,0,good,\n"
              "2026-03-01T12:00:00.000Z,M.at160.b[0],M.at160.b[0],0,0,good,\n"
              "2026-03-01T12:00:00.002Z,level,M.at160,3,0,good,\n"
              "2026-03-01T12:00:00.002Z,M.at160.b[0],M.at160.b[0],1,0,good,\n",
              linesOf(OutputFormat::csv));
}

} // namespace tavmir::host
