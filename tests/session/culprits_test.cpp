// Addresses that the controller lacks: which variables are named, what is polled on, and how often
// anything is asked for.
#include "running_session.h"

#include "feed/refused_variables.h"
#include "feed/value_fold.h"
#include "session/culprit_search.h"
#include "support/wait_until.h"

#include <thread>

namespace tavmir::host
{

namespace
{

using Mood = FakeController::Mood;
using Names = std::map<std::string, std::string>;

constexpr char kLacksIt[] = "refused, code 2 (illegal data address)";
constexpr int kSlow = 90000; // ms; where finding takes some 13 s, and coming back some 20 s

class Culprits : public RunningSession
{
protected:
    void openPolling(const QByteArray& polled, const QByteArray& connection = "")
    {
        Setting setting;
        setting.polled = polled;
        setting.connection = connection;
        prepare(setting);
        watcher_ = session_->feed().subscribe();
        start();
    }

    void TearDown() override
    {
        watcher_.reset();
        RunningSession::TearDown();
    }

    void look()
    {
        watcher_->read([this](const FeedEntry& entry) {
            refused_.take(entry);
            values_.take(entry);
            plans_ += entry.kind == FeedKind::planChanged ? 1 : 0;
            backs_ += entry.kind == FeedKind::elementBack ? 1 : 0;
            if (entry.kind == FeedKind::planChanged) {
                plan_ = entry.plan;
            }
        });
    }

    Names refusedNow()
    {
        look();
        Names names;
        for (const auto& [name, why] : refused_.all()) {
            names[name.toStdString()] = why.toStdString();
        }
        return names;
    }

    bool refusedBecome(const Names& wanted, int deadlineMs = 30000)
    {
        return test::waitUntil([&] { return refusedNow() == wanted; }, deadlineMs);
    }

    // The driver has been given what the search has found.
    bool listFollows()
    {
        return test::waitUntil([&] {
            look();
            return plan_->setAside.size() == refused_.all().size() && !refused_.all().empty();
        });
    }

    std::string valueOf(size_t variable)
    {
        return values_.value(variable).bytes.toHex().toStdString();
    }

    std::unique_ptr<FeedReader> watcher_;
    RefusedVariables refused_;
    ValueFold values_;
    std::shared_ptr<const PolledGeneration> plan_;
    int plans_ = 0;
    int backs_ = 0;
};

} // namespace

TEST_F(Culprits, OneLeavesTheListAndItsNeighboursArePolledOn)
{
    controller_.lack('f', kArrayAt + 3 * 16);
    openPolling(R"({ "address": "M.a" })");
    EXPECT_TRUE(refusedBecome({{"M.a[3]", kLacksIt}}));
    EXPECT_TRUE(listFollows());
    for (quint32 i = 0; i < 10; ++i) {
        controller_.set('f', kArrayAt + 16 * i, 0x100 + i);
    }
    EXPECT_TRUE(test::waitUntil([&] {
        look();
        return valueOf(0) == "0001" && valueOf(2) == "0201" && valueOf(9) == "0901";
    }));
    EXPECT_EQ("", valueOf(3));
    ASSERT_EQ(10u, plan_->polled.size()) << "it is polled still, as far as the host is concerned";
    EXPECT_EQ(3u, plan_->setAside.front().place);
    EXPECT_EQ(10u, session_->polled().size());
    const std::vector<QByteArray> requests = controller_.requests("f");
    EXPECT_EQ(9, countOf(requests.back()));
}

TEST_F(Culprits, BitsTextsAndDoubleWordsAreFoundInTheirClasses)
{
    controller_.lack('d', kBitAt);
    controller_.lack('f', kTextAt + 59 * 16, 3); // the last word of a text
    controller_.lack('l', kPairAt + 32);
    openPolling(R"({ "address": "M.bit" }, { "address": "M.w.b[4]" }, { "address": "M.text" },
                   { "address": "M.pair", "name": "pairs" }, { "address": "M.d" })");
    EXPECT_TRUE(refusedBecome({{"M.bit", kLacksIt},
                               {"M.text", "refused, code 3 (illegal data value)"},
                               {"pairs (2)", kLacksIt}}));
    EXPECT_TRUE(listFollows());
    EXPECT_TRUE(reaches("l", controller_.count("l") + 3));
    // Polling goes on between the two looks: all but the transaction is compared.
    EXPECT_EQ(controller_.requestsOf("l", kPairAt).back().mid(2),
              controller_.requestsOf("l", kDwordAt).back().mid(2))
        << "what is left of the class shares its request";
}

TEST_F(Culprits, BitsOfARefusedWordAreNamedEach)
{
    controller_.lack('f', kWordAt);
    openPolling(R"({ "address": "M.w.b[4]" }, { "address": "M.w.b[5]" }, { "address": "M.a[0]" })");
    EXPECT_TRUE(refusedBecome({{"M.w.b[4]", kLacksIt}, {"M.w.b[5]", kLacksIt}}));
    EXPECT_TRUE(listFollows());
    controller_.set('f', kArrayAt, 7);
    EXPECT_TRUE(test::waitUntil([&] {
        look();
        return valueOf(2) == "0700";
    }));
}

TEST_F(Culprits, StationsOfTheirOwnAreAskedAtTheirOwn)
{
    controller_.lack('f', kArrayAt + 16);
    controller_.lack('l', kDwordAt);
    openPolling(R"({ "address": "M.a", "station": 3 }, { "address": "M.d", "station": 4 },
                   { "address": "M.r", "station": 4 })",
                R"(, "stationMode": "own")");
    EXPECT_TRUE(refusedBecome({{"M.a[1]", kLacksIt}, {"M.d", kLacksIt}}));
    for (const QByteArray& request : controller_.requests("f")) {
        EXPECT_EQ(3, stationOf(request));
    }
    for (const QByteArray& request : controller_.requests("l")) {
        EXPECT_EQ(4, stationOf(request));
    }
}

// Nothing is asked for again and again, and what is known comes back.
TEST_F(Culprits, AControllerThatRefusesEverythingIsLeftInPeace)
{
    controller_.treat("dfl", Mood::refuses);
    openPolling(R"({ "address": "M.many[0]", "count": 60 }, { "address": "M.pair" })");
    EXPECT_TRUE(test::waitUntil([&] { return refusedNow().size() == 70; }, kSlow));
    EXPECT_TRUE(listFollows());
    const size_t before = controller_.count("dfl");
    const auto since = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const size_t after = controller_.count("dfl");
    // A busy machine sleeps longer.
    const auto gaps = (std::chrono::steady_clock::now() - since) / CulpritSearch::kLongestGap;
    EXPECT_LE(after, before + 2 * static_cast<size_t>(gaps));
    controller_.treat("dfl", Mood::answers);
    EXPECT_TRUE(refusedBecome({}, kSlow)) << "some were refused twice before all were found: 20 s";
    EXPECT_EQ(70, backs_);
    const size_t polls = controller_.count("l");
    EXPECT_TRUE(reaches("l", polls + 5));
}

TEST_F(Culprits, CodesThatBlameNoAddressChangeNothing)
{
    controller_.treat("fl", Mood::isBusy);
    openPolling(R"({ "address": "M.a" }, { "address": "M.d" })");
    EXPECT_TRUE(reaches("fl", 40));
    EXPECT_TRUE(refusedNow().empty());
    EXPECT_EQ(1, plans_);
    for (const QByteArray& request : controller_.requests("f")) {
        EXPECT_EQ(10, countOf(request));
    }
}

// Somebody's own reads of what the controller lacks blame nobody else, and go on.
TEST_F(Culprits, ReadsOfOthersMeanwhileBlameNobody)
{
    constexpr int kReads = 300;
    controller_.lack('f', kArrayAt + 16);
    controller_.lack('f', kManyAt + 16 * 500);
    openPolling(R"({ "address": "M.a" }, { "address": "M.many[0]", "count": 300 })");
    std::vector<Asked> reads;
    for (int i = 0; i < kReads; ++i) {
        reads.push_back(queueRead(i % 2 == 0 ? "M.many[500]" : "M.d"));
        if (i % 10 == 0) {
            EXPECT_EQ("done", write("M.r", "2").state);
        }
    }
    for (const Asked& one : reads) {
        await(one);
    }
    EXPECT_TRUE(refusedBecome({{"M.a[1]", kLacksIt}}));
    EXPECT_EQ("refused", read("M.many[500]").state);
    EXPECT_EQ("done", read("M.d").state);
    EXPECT_EQ(static_cast<quint64>(kReads + 2), figures().ended(OperationKind::read))
        << "the session's own tries are nobody's reads";
}

TEST_F(Culprits, AnotherListKeepsWhatIsKnown)
{
    controller_.lack('f', kArrayAt + 16);
    openPolling(R"({ "address": "M.a" })");
    EXPECT_TRUE(refusedBecome({{"M.a[1]", kLacksIt}}));
    EXPECT_EQ("", poll({"M.a[0]", "M.a[1]", "M.w"}));
    EXPECT_EQ((Names{{"M.a[1]", kLacksIt}}), refusedNow());
    EXPECT_EQ("", poll({"M.a[0]", "M.w"}));
    EXPECT_TRUE(refusedNow().empty());
}

TEST_F(Culprits, ManyAmongManyAreFoundWithFewLists)
{
    constexpr int kAll = 3000;
    Names wanted;
    for (int i = 7; i < kAll; i += 50) {
        controller_.lack('f', kManyAt + 16 * static_cast<quint32>(i));
        wanted["M.many[" + std::to_string(i) + "]"] = kLacksIt;
    }
    openPolling(R"({ "address": "M.many[0]", "count": 3000 })");
    EXPECT_TRUE(refusedBecome(wanted));
    EXPECT_TRUE(listFollows());
    EXPECT_LE(plans_, 25);
    const Clock::time_point from = Clock::now();
    EXPECT_TRUE(test::waitUntil([&] {
        look();
        for (size_t i = 0; i < kAll; ++i) {
            const FoldedValue value = values_.value(i);
            const bool isLacking = i % 50 == 7;
            if (isLacking == (value.readAt && *value.readAt > from)) {
                return false;
            }
        }
        return true;
    })) << "all others are polled";
}

} // namespace tavmir::host
