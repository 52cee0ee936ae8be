// The search for refused variables by itself: a made-up controller, and time that is counted.
#include "session/culprit_search.h"

#include "feed/made_exchange.h"

#include <gtest/gtest.h>

#include <random>

namespace tavmir::host
{

namespace
{

using project::DataType;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr quint8 kNoAddress = 2;
constexpr size_t kWordsOfARequest = 38;
constexpr milliseconds kReply(5);

class Search : public testing::Test
{
protected:
    void watchWords(int count)
    {
        polled_.clear();
        for (int i = 0; i < count; ++i) {
            polled_.push_back(madeVariable(DataType::word, 1600 + 16 * i));
        }
        watch();
    }

    void watch()
    {
        search_.watch(polled_);
        search_.listGiven();
    }

    // A polled request of these variables, `count` of them from the first on.
    bool poll(size_t first, size_t count)
    {
        std::vector<WireElement> elements;
        bool isRefused = false;
        for (size_t i = first; i < first + count; ++i) {
            for (const WireElement& one : wireElements(polled_[i].element, polled_[i].station)) {
                elements.push_back(one);
            }
            isRefused = isRefused || lacks_.count(i) != 0;
        }
        now_ += kReply;
        isRefused ? search_.refused(elements, now_) : search_.answered();
        return !isRefused;
    }

    // One try, when one is due: what was asked for.
    std::vector<size_t> tryOnce()
    {
        const std::vector<size_t> asked = search_.next(now_);
        if (asked.empty()) {
            return asked;
        }
        ++tries_;
        now_ += kReply;
        const bool isRefused = std::any_of(asked.begin(), asked.end(),
                                           [&](size_t one) { return lacks_.count(one) != 0; });
        search_.ended(isRefused ? TryEnd::refused : TryEnd::answered, isRefused ? kNoAddress : 0,
                      now_);
        return asked;
    }

    // Waits for the next try and makes it.
    std::vector<size_t> tryNext()
    {
        now_ = std::max(now_, search_.nextAt());
        return tryOnce();
    }

    void searchToTheEnd()
    {
        while (search_.isSearching()) {
            ASSERT_FALSE(tryNext().empty());
        }
    }

    std::set<size_t> found() const
    {
        std::set<size_t> list;
        for (const CulpritSearch::Refused& one : search_.refusedVariables()) {
            EXPECT_EQ(kNoAddress, one.code);
            list.insert(one.variable);
        }
        return list;
    }

    CulpritSearch search_;
    std::vector<PolledElement> polled_;
    std::set<size_t> lacks_;
    Clock::time_point now_ = momentAt(1000);
    int tries_ = 0;
};

} // namespace

TEST_F(Search, FindsEachPlaceInARequest)
{
    for (size_t place = 0; place < kWordsOfARequest; ++place) {
        watchWords(38);
        lacks_ = {place};
        tries_ = 0;
        EXPECT_FALSE(poll(0, kWordsOfARequest));
        searchToTheEnd();
        EXPECT_EQ(lacks_, found());
        EXPECT_LE(tries_, 12) << "by halves";
        for (size_t i = 0; i < kWordsOfARequest; ++i) {
            EXPECT_EQ(i != place, search_.isWanted(i)) << i;
        }
        search_ = CulpritSearch();
    }
}

TEST_F(Search, ANamedVariableWasAlwaysRefusedByItself)
{
    watchWords(38);
    lacks_ = {3, 4, 20, 37};
    poll(0, kWordsOfARequest);
    std::set<size_t> alone;
    while (search_.isSearching()) {
        const std::vector<size_t> asked = tryNext();
        if (asked.size() == 1 && lacks_.count(asked.front()) != 0) {
            alone.insert(asked.front());
        }
        EXPECT_EQ(alone, found());
    }
    EXPECT_EQ(lacks_, found());
}

TEST_F(Search, EveryVariableOfARequestMayBeRefused)
{
    watchWords(38);
    for (size_t i = 0; i < kWordsOfARequest; ++i) {
        lacks_.insert(i);
    }
    poll(0, kWordsOfARequest);
    searchToTheEnd();
    EXPECT_EQ(lacks_, found());
    EXPECT_LE(tries_, 2 * 38);
}

TEST_F(Search, WhatIsSuspectedOrRefusedDoesNotBelongIntoTheList)
{
    watchWords(40);
    EXPECT_FALSE(search_.listDiffers());
    lacks_ = {1};
    poll(0, 38);
    EXPECT_TRUE(search_.listDiffers());
    for (size_t i = 0; i < 40; ++i) {
        EXPECT_EQ(i >= 38, search_.isWanted(i)) << i;
    }
    searchToTheEnd();
    EXPECT_TRUE(search_.listDiffers());
    EXPECT_TRUE(search_.isWanted(0));
    EXPECT_FALSE(search_.isWanted(1));
    search_.listGiven();
    EXPECT_FALSE(search_.listDiffers());
    now_ += seconds(20);
    lacks_.clear();
    tryNext();
    EXPECT_TRUE(search_.isWanted(1));
    EXPECT_TRUE(search_.listDiffers());
}

TEST_F(Search, OneThatIsKnownExplainsWhatIsRefusedUntilItLeavesTheList)
{
    watchWords(38);
    lacks_ = {5};
    poll(0, kWordsOfARequest);
    searchToTheEnd();
    const int before = tries_;
    now_ += seconds(1);
    poll(0, kWordsOfARequest);
    EXPECT_FALSE(search_.isSearching());
    EXPECT_EQ(before, tries_);
}

TEST_F(Search, ARefusedOneIsTriedAgainAfterTenSecondsAndThenLessAndLessOften)
{
    watchWords(3);
    lacks_ = {2}; // found by the last try
    poll(0, 3);
    searchToTheEnd();
    search_.listGiven();
    Clock::time_point last = now_;
    for (const int wanted : {10, 20, 40, 80, 160, 300, 300}) {
        EXPECT_TRUE(search_.next(last + seconds(wanted) - milliseconds(1)).empty()) << wanted;
        now_ = last + seconds(wanted);
        EXPECT_EQ(std::vector<size_t>{2}, tryOnce()) << wanted;
        last = now_;
    }
    search_.takeChanges();
    lacks_.clear();
    now_ += seconds(300);
    tryOnce();
    EXPECT_TRUE(found().empty());
    const auto changes = search_.takeChanges();
    ASSERT_EQ(1u, changes.size());
    EXPECT_EQ(2u, changes[0].variable);
    EXPECT_FALSE(changes[0].isRefused);
}

TEST_F(Search, ChangesAreToldOnce)
{
    watchWords(38);
    lacks_ = {5, 9};
    poll(0, kWordsOfARequest);
    searchToTheEnd();
    const auto changes = search_.takeChanges();
    ASSERT_EQ(2u, changes.size());
    EXPECT_TRUE(changes[0].isRefused);
    EXPECT_EQ(5u, changes[0].variable);
    EXPECT_EQ(kNoAddress, changes[0].code);
    EXPECT_EQ(9u, changes[1].variable);
    now_ += seconds(10);
    EXPECT_EQ(1u, tryNext().size());
    EXPECT_TRUE(search_.takeChanges().empty()) << "refused again is no news";
}

TEST_F(Search, WhatAnswersByItselfIsNotSearchedAgainAtOnce)
{
    watchWords(38);
    const auto refuseAll = [&] {
        lacks_ = {0};
        poll(0, kWordsOfARequest);
        lacks_.clear(); // by itself each answers: the controller refuses long requests
        searchToTheEnd();
        search_.listGiven();
    };
    refuseAll();
    EXPECT_GT(tries_, 0);
    for (const int wanted : {10, 20, 40}) {
        const Clock::time_point last = now_;
        const int before = tries_;
        now_ = last + seconds(wanted) - seconds(1);
        refuseAll();
        EXPECT_EQ(before, tries_) << wanted;
        now_ = last + seconds(wanted) + seconds(1);
        refuseAll();
        EXPECT_LT(before, tries_) << wanted;
    }
}

TEST_F(Search, TriesLeaveTheLineToOthersAsLongAsTheyTook)
{
    watchWords(38);
    lacks_ = {5};
    poll(0, kWordsOfARequest);
    EXPECT_FALSE(search_.next(now_).empty());
    EXPECT_EQ(Clock::time_point::max(), search_.nextAt()) << "one at a time";
    now_ += milliseconds(300);
    search_.answered();
    search_.ended(TryEnd::refused, kNoAddress, now_);
    EXPECT_TRUE(search_.next(now_ + milliseconds(299)).empty());
    EXPECT_FALSE(search_.next(now_ + milliseconds(300)).empty());
    now_ += milliseconds(300);
    search_.ended(TryEnd::answered, 0, now_);
    EXPECT_EQ(now_ + CulpritSearch::kLeastGap, search_.nextAt());
}

TEST_F(Search, WhereNothingIsAnsweredTriesGetRare)
{
    watchWords(1000);
    for (size_t i = 0; i < 1000; ++i) {
        lacks_.insert(i);
    }
    for (size_t i = 0; i + 38 <= 1000; i += 38) {
        poll(i, 38);
    }
    for (int i = 0; i < 10; ++i) {
        tryNext();
    }
    const Clock::time_point start = now_;
    const int before = tries_;
    while (now_ < start + seconds(10)) {
        tryNext();
    }
    EXPECT_LE(tries_ - before, 100);
    search_.answered();
    tryNext();
    EXPECT_LE(search_.nextAt(), now_ + kReply) << "as soon as something is answered they are not";
}

TEST_F(Search, WithTheFirstThatAnswersAgainTheOthersComeBackTogether)
{
    watchWords(280);
    for (size_t i = 0; i < 280; ++i) {
        lacks_.insert(i);
    }
    for (size_t i = 0; i < 280; i += 28) {
        poll(i, 28);
    }
    searchToTheEnd();
    EXPECT_EQ(280u, found().size());
    now_ += seconds(11);
    lacks_ = {77};
    tries_ = 0;
    tryNext();
    searchToTheEnd();
    EXPECT_LE(tries_, 11) << "one, and one for each request";
    const std::set<size_t> left = found();
    EXPECT_LE(left.size(), 28u);
    EXPECT_EQ(1u, left.count(77));
    for (int i = 0; i < 60 && found().size() > 1; ++i) {
        tryNext();
    }
    EXPECT_EQ(std::set<size_t>{77}, found());
}

TEST_F(Search, ATryWithoutAnAnswerBlamesNobody)
{
    watchWords(38);
    lacks_ = {5};
    poll(0, kWordsOfARequest);
    while (search_.isSearching()) {
        now_ = std::max(now_, search_.nextAt());
        ASSERT_FALSE(search_.next(now_).empty());
        search_.ended(TryEnd::nothing, 0, now_);
    }
    EXPECT_TRUE(found().empty());
    EXPECT_FALSE(search_.listDiffers());
    poll(0, kWordsOfARequest);
    searchToTheEnd();
    EXPECT_EQ(lacks_, found());
    now_ = search_.nextAt();
    ASSERT_EQ(1u, search_.next(now_).size());
    search_.ended(TryEnd::nothing, 0, now_);
    EXPECT_EQ(lacks_, found());
    EXPECT_GE(search_.nextAt(), now_ + CulpritSearch::kFirstPause);
}

TEST_F(Search, BitsOfAWordAreFoundOneByOne)
{
    polled_ = {madeVariable(DataType::word, 1600), madeBitOf(DataType::word, 1616, 3),
               madeBitOf(DataType::word, 1616, 4), madeVariable(DataType::word, 1632)};
    watch();
    lacks_ = {1, 2};
    poll(0, 4);
    searchToTheEnd();
    EXPECT_EQ(lacks_, found());
}

TEST_F(Search, AVariableThatSharesAnElementWithOneThatWasFoundIsFoundToo)
{
    polled_ = {madeVariable(DataType::word, 1600), madeBitOf(DataType::word, 1600, 3)};
    watch();
    lacks_ = {0};
    poll(0, 1);
    lacks_ = {0, 1};
    searchToTheEnd();
    search_.listGiven();
    poll(0, 2);
    searchToTheEnd();
    EXPECT_EQ(lacks_, found());
}

TEST_F(Search, ATextIsOneVariable)
{
    polled_ = {madeVariable(DataType::word, 1600), madeVariable(DataType::text, 1616, 1, 60)};
    watch();
    lacks_ = {1};
    poll(0, 2);
    searchToTheEnd();
    EXPECT_EQ(lacks_, found());
}

// What the driver's one-shot list does not hold is not asked for in one go.
TEST_F(Search, NoTryIsLongerThanTheListOfOneShotReads)
{
    polled_.clear();
    for (int i = 0; i < 4; ++i) {
        polled_.push_back(madeVariable(DataType::text, 1600 + 16 * i, 1, 600));
    }
    watch();
    lacks_ = {3};
    poll(0, 4);
    while (search_.isSearching()) {
        const std::vector<size_t> asked = tryNext();
        EXPECT_LE(asked.size() * 600, 1024u);
    }
    EXPECT_EQ(lacks_, found());
}

TEST_F(Search, AnotherListKeepsWhatIsKnown)
{
    watchWords(38);
    lacks_ = {5, 9};
    poll(0, kWordsOfARequest);
    searchToTheEnd();
    const PolledElement moved = polled_[5];
    polled_ = {polled_[20], moved};
    search_.watch(polled_);
    EXPECT_TRUE(search_.listDiffers());
    EXPECT_EQ(std::set<size_t>{1}, found());
    EXPECT_FALSE(search_.isWanted(1));
    search_.listGiven();
    EXPECT_FALSE(search_.listDiffers());
    lacks_ = {1};
    now_ += seconds(10);
    EXPECT_EQ(std::vector<size_t>{1}, tryNext());
}

TEST_F(Search, ATryOfAListThatIsGoneSaysNothing)
{
    watchWords(38);
    lacks_ = {5};
    poll(0, kWordsOfARequest);
    ASSERT_FALSE(search_.next(now_).empty());
    watchWords(3);
    search_.ended(TryEnd::refused, kNoAddress, now_);
    EXPECT_TRUE(found().empty());
    EXPECT_FALSE(search_.isSearching());
}

TEST_F(Search, OnlyCodesThatSpeakOfTheAddressBlameOne)
{
    for (int code = 0; code < 256; ++code) {
        EXPECT_EQ(code == 2 || code == 3, CulpritSearch::blamesAddress(static_cast<quint8>(code)))
            << code;
    }
}

TEST_F(Search, WhatWasPolledUntilNowIsTriedBeforeWhatWaits)
{
    watchWords(38 * 5);
    lacks_ = {0, 38, 76, 152};
    poll(0, 38);
    poll(38, 38);
    poll(76, 38);
    tryNext();
    poll(152, 38); // refused only now
    std::vector<size_t> order;
    while (search_.isSearching()) {
        tryNext();
        for (const CulpritSearch::Change& change : search_.takeChanges()) {
            order.push_back(change.variable);
        }
    }
    EXPECT_EQ((std::vector<size_t>{76, 152, 38, 0}), order);
    EXPECT_EQ(lacks_, found());
}

// Two hundred among ten thousand, with a reply time of 5 ms, while polling has its turn between any
// two tries.
TEST_F(Search, TwoHundredOfTenThousandAreFoundInUnderAMinute)
{
    constexpr size_t kAll = 10000;
    watchWords(kAll);
    std::mt19937 dice(7);
    while (lacks_.size() < 200) {
        lacks_.insert(dice() % kAll);
    }
    const Clock::time_point start = now_;
    std::vector<size_t> list;
    size_t place = 0;
    const auto give = [&] {
        list.clear();
        for (size_t i = 0; i < kAll; ++i) {
            if (search_.isWanted(i)) {
                list.push_back(i);
            }
        }
        place = 0;
        search_.listGiven();
    };
    give();
    int lists = 0;
    while (found() != lacks_ && now_ < start + seconds(120)) {
        std::vector<WireElement> elements;
        bool isRefused = false;
        const size_t end = std::min(list.size(), place + kWordsOfARequest);
        for (; place < end; ++place) {
            const PolledElement& one = polled_[list[place]];
            elements.push_back(wireElements(one.element, one.station).front());
            isRefused = isRefused || lacks_.count(list[place]) != 0;
        }
        now_ += isRefused ? 3 * kReply : kReply; // the driver repeats what is refused
        isRefused ? search_.refused(elements, now_) : search_.answered();
        tryOnce();
        if (place >= list.size()) {
            lists += search_.listDiffers() ? 1 : 0;
            give();
        }
    }
    EXPECT_EQ(lacks_, found());
    EXPECT_LT(now_ - start, seconds(50));
    EXPECT_LT(tries_, 10 * 200);
    EXPECT_LT(lists, 60);
}

} // namespace tavmir::host
