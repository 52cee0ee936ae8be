// Values, ages and changes of variables, folded out of replies.
#include "feed/value_fold.h"

#include "made_exchange.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavmir::host
{

namespace
{

using project::DataType;

QByteArray bytes(std::initializer_list<int> numbers)
{
    QByteArray list;
    for (const int number : numbers) {
        list.append(static_cast<char>(number));
    }
    return list;
}

class Fold : public testing::Test
{
protected:
    using Places = std::vector<size_t>;

    void watch(const std::vector<PolledElement>& variables) { fold_.watch(variables); }

    // The variables that the entry changed.
    Places take(const FeedEntry& entry)
    {
        Places changed;
        fold_.take(entry, [&](size_t variable) { changed.push_back(variable); });
        return changed;
    }
    Places take(const Exchange& exchange) { return take(entryOf(exchange)); }

    Places words(const std::vector<ReadElement>& elements, int ms, int station = 1)
    {
        return take(madeRead(kReadWords, station, elements, momentAt(ms)));
    }

    QByteArray bytesOf(size_t variable) const { return fold_.value(variable).bytes; }
    bool known(size_t variable) const { return fold_.value(variable).readAt.has_value(); }
    // When it was read, in ms as given to words(); -1: never.
    int readAt(size_t variable) const
    {
        const auto at = fold_.value(variable).readAt;
        return at ? static_cast<int>((*at - momentAt(0)) / std::chrono::milliseconds(1)) : -1;
    }

    static PolledElement word(qint32 address, int station = 1)
    {
        return madeVariable(DataType::word, address, station);
    }
    static PolledElement text(qint32 address, int count, int station = 1)
    {
        return madeVariable(DataType::text, address, station, count);
    }

    ValueFold fold_;
};

} // namespace

TEST_F(Fold, NothingIsKnownBeforeAReply)
{
    watch({word(160), madeVariable(DataType::bit, 3), text(320, 2),
           madeBitOf(DataType::word, 480, 4)});
    ASSERT_EQ(4u, fold_.variables().size());
    for (size_t variable = 0; variable < 4; ++variable) {
        EXPECT_FALSE(known(variable)) << variable;
        EXPECT_TRUE(bytesOf(variable).isEmpty()) << variable;
    }
}

TEST_F(Fold, ValuesOfEachTypeAreLeastSignificantByteFirst)
{
    watch({madeVariable(DataType::bit, 5), word(160), madeVariable(DataType::dword, 320),
           madeVariable(DataType::real, 352), text(512, 2)});
    EXPECT_EQ(Places{0}, take(madeRead(kReadBits, 1, {{5, 1}}, momentAt(1))));
    EXPECT_EQ((Places{1, 4}), words({{160, 0x1234}, {512, 0x4241}, {528, 0x0043}}, 2));
    EXPECT_EQ((Places{2, 3}), take(madeRead(kReadDoubleWords, 1,
                                            {{320, 0x89ABCDEF}, {352, 0x3FC00000}}, momentAt(3))));
    EXPECT_EQ(bytes({1}), bytesOf(0));
    EXPECT_EQ(bytes({0x34, 0x12}), bytesOf(1));
    EXPECT_EQ(bytes({0xEF, 0xCD, 0xAB, 0x89}), bytesOf(2));
    EXPECT_EQ(bytes({0, 0, 0xC0, 0x3F}), bytesOf(3));
    EXPECT_EQ(bytes({'A', 'B', 'C', 0}), bytesOf(4));
    EXPECT_EQ(1, readAt(0));
    EXPECT_EQ(2, readAt(1));
    EXPECT_EQ(3, readAt(2));
    EXPECT_EQ(3, readAt(3));
    EXPECT_EQ(2, readAt(4));
}

TEST_F(Fold, BitsOfWordsAreOneByteOfZeroOrOne)
{
    watch({madeBitOf(DataType::word, 160, 0), madeBitOf(DataType::word, 160, 7),
           madeBitOf(DataType::word, 160, 8), madeBitOf(DataType::word, 160, 15),
           madeBitOf(DataType::dword, 160, 16), madeBitOf(DataType::dword, 160, 31)});
    words({{160, 0x8080}}, 1);
    take(madeRead(kReadDoubleWords, 1, {{160, 0x80000000}}, momentAt(1)));
    for (const auto& [variable, expected] :
         std::vector<std::pair<size_t, int>>{{0, 0}, {1, 1}, {2, 0}, {3, 1}, {4, 0}, {5, 1}}) {
        EXPECT_EQ(bytes({expected}), bytesOf(variable)) << variable;
    }
    words({{160, 0x0101}}, 2);
    take(madeRead(kReadDoubleWords, 1, {{160, 0x00010000}}, momentAt(2)));
    for (const auto& [variable, expected] :
         std::vector<std::pair<size_t, int>>{{0, 1}, {1, 0}, {2, 1}, {3, 0}, {4, 1}, {5, 0}}) {
        EXPECT_EQ(bytes({expected}), bytesOf(variable)) << variable;
    }
}

TEST_F(Fold, ABitOfAWordChangesWithItsOwnBitOnlyAndIsAsOldAsItsWord)
{
    watch({madeBitOf(DataType::word, 160, 3), word(160), madeBitOf(DataType::word, 160, 4)});
    EXPECT_EQ((Places{0, 1, 2}), words({{160, 0}}, 1)) << "the first value of each";
    EXPECT_EQ((Places{0, 1}), words({{160, 8}}, 2));
    EXPECT_EQ((Places{1}), words({{160, 9}}, 3));
    EXPECT_EQ((Places{1, 2}), words({{160, 0x19}}, 4));
    EXPECT_EQ(bytes({1}), bytesOf(0));
    EXPECT_EQ(4, readAt(0));
}

TEST_F(Fold, TheSameValueAgainIsNoChangeButYounger)
{
    watch({word(160)});
    EXPECT_EQ(Places{0}, words({{160, 0}}, 1)) << "a first zero is news";
    EXPECT_EQ(Places{}, words({{160, 0}}, 5));
    EXPECT_EQ(5, readAt(0));
    EXPECT_EQ(Places{0}, words({{160, 7}}, 6));
    EXPECT_EQ(Places{}, words({{160, 7}}, 9));
    EXPECT_EQ(9, readAt(0));
}

TEST_F(Fold, ChangesAreToldWhenTheWholeReplyIsTaken)
{
    watch({word(160), word(176), word(192)});
    words({{160, 1}, {176, 2}, {192, 3}}, 1);
    std::vector<QByteArray> seen;
    fold_.take(entryOf(madeRead(kReadWords, 1, {{160, 4}, {176, 2}, {192, 5}}, momentAt(2))),
               [&](size_t variable) {
                   seen.push_back(bytesOf(0) + bytesOf(1) + bytesOf(2));
                   EXPECT_NE(1u, variable);
               });
    EXPECT_EQ(std::vector<QByteArray>(2, bytes({4, 0, 2, 0, 5, 0})), seen);
}

TEST_F(Fold, NobodyNeedsToAskForChanges)
{
    watch({word(160)});
    fold_.take(entryOf(madeRead(kReadWords, 1, {{160, 4}}, momentAt(2))));
    EXPECT_EQ(bytes({4, 0}), bytesOf(0));
    EXPECT_EQ(Places{}, take(entryNow(FeedKind::gaveUp))) << "of an exchange before";
}

// A late reply to the first attempt answers the second, whose frame is the same.
TEST_F(Fold, ALateReplyThatAnswersTheRepetitionIsAValue)
{
    watch({word(160)});
    Exchange first = madeRead(kReadWords, 1, {{160, 4}}, momentAt(100));
    first.end = ExchangeEnd::timeout;
    first.replySize = 0;
    EXPECT_EQ(Places{}, take(first));
    EXPECT_FALSE(known(0));
    Exchange second = madeRead(kReadWords, 1, {{160, 4}}, momentAt(200));
    second.attempt = 2;
    EXPECT_EQ(Places{0}, take(second));
    EXPECT_EQ(bytes({4, 0}), bytesOf(0));
    EXPECT_EQ(200, readAt(0));
}

TEST_F(Fold, WhatWasWrittenIsShownWhenAReplyBringsIt)
{
    watch({word(160)});
    words({{160, 5}}, 1);
    for (const RequestKind kind : {RequestKind::write, RequestKind::poll}) {
        Exchange write = madeRead(kWriteWords, 1, {{160, 9}}, momentAt(2));
        write.kind = kind;
        EXPECT_EQ(Places{}, take(write));
        write.replySize = write.expectedReply = 9; // as controllers answer
        EXPECT_EQ(Places{}, take(write));
        EXPECT_EQ(bytes({5, 0}), bytesOf(0));
        EXPECT_EQ(1, readAt(0)) << "a write is no reading";
    }
    FeedEntry ended;
    ended.kind = FeedKind::operationEnded;
    EXPECT_EQ(Places{}, take(ended));
    EXPECT_EQ(1, readAt(0));
    EXPECT_EQ(Places{0}, words({{160, 9}}, 3));
}

TEST_F(Fold, TheSameAddressInAnotherClassIsAnotherElement)
{
    watch({madeVariable(DataType::bit, 160), word(160), madeVariable(DataType::dword, 160)});
    EXPECT_EQ(Places{1}, words({{160, 2}}, 1));
    EXPECT_EQ(Places{0}, take(madeRead(kReadBits, 1, {{160, 1}}, momentAt(2))));
    EXPECT_EQ(Places{2}, take(madeRead(kReadDoubleWords, 1, {{160, 3}}, momentAt(3))));
    EXPECT_EQ(bytes({1}), bytesOf(0));
    EXPECT_EQ(bytes({2, 0}), bytesOf(1));
    EXPECT_EQ(bytes({3, 0, 0, 0}), bytesOf(2));
    EXPECT_EQ(1, readAt(1));
}

TEST_F(Fold, TheSameAddressAtAnotherStationIsAnotherElement)
{
    watch({word(160, 1), word(160, 2), text(320, 2, 1), text(320, 2, 2)});
    EXPECT_EQ(Places{1}, words({{160, 7}}, 1, 2));
    EXPECT_FALSE(known(0));
    EXPECT_EQ(Places{0}, words({{160, 8}}, 2, 1));
    EXPECT_EQ(bytes({7, 0}), bytesOf(1));
    EXPECT_EQ(Places{}, words({{320, 1}}, 3, 1));
    EXPECT_EQ(Places{}, words({{336, 2}}, 4, 2)) << "half of each text";
    EXPECT_EQ(Places{}, words({{160, 9}, {320, 9}, {336, 9}}, 5, 3)) << "nobody's station";
    EXPECT_EQ(Places{2}, words({{336, 2}}, 6, 1));
    EXPECT_FALSE(known(3));
}

TEST_F(Fold, StationsAreTheByteThatTheFrameCarries)
{
    watch({word(160, 255), word(176, 256)});
    EXPECT_EQ(Places{0}, words({{160, 7}}, 1, 255));
    EXPECT_EQ(Places{1}, words({{176, 7}}, 1, 0));
}

TEST_F(Fold, APlanOfTheFeedIsWatchedAndKnownValuesAreKept)
{
    take(madePlan(1, {word(160), word(176), text(320, 2), madeBitOf(DataType::word, 160, 1)}));
    ASSERT_EQ(4u, fold_.variables().size());
    words({{160, 3}, {176, 4}, {320, 0x4241}, {336, 0x4443}}, 5);
    PolledElement renamed = word(176);
    renamed.name = "of another name";
    EXPECT_EQ(Places{}, take(madePlan(2, {text(320, 2), renamed, word(192), text(320, 3)})));
    ASSERT_EQ(4u, fold_.variables().size());
    EXPECT_EQ("of another name", fold_.variables()[1].name.toStdString());
    EXPECT_EQ(bytes({'A', 'B', 'C', 'D'}), bytesOf(0));
    EXPECT_EQ(5, readAt(0));
    EXPECT_EQ(bytes({4, 0}), bytesOf(1));
    EXPECT_EQ(5, readAt(1));
    EXPECT_FALSE(known(2)) << "new: never read";
    EXPECT_FALSE(known(3)) << "new: a longer text";
    EXPECT_EQ(Places{}, words({{176, 4}}, 6)) << "the value that was known";
    EXPECT_EQ(Places{2}, words({{192, 0}}, 7));
}

TEST_F(Fold, KeptValuesBelongToTheirClassAndStation)
{
    watch({word(160, 1), word(176, 1)});
    words({{160, 3}, {176, 4}}, 1);
    watch({word(160, 2), madeVariable(DataType::dword, 176, 1), madeVariable(DataType::bit, 160)});
    for (size_t variable = 0; variable < 3; ++variable) {
        EXPECT_FALSE(known(variable)) << variable;
    }
}

TEST_F(Fold, WhatWasNotWatchedMeanwhileStartsAsNeverRead)
{
    watch({word(160), word(176), text(320, 2)});
    words({{160, 3}, {176, 4}, {320, 1}, {336, 2}}, 1);
    watch({word(176)});
    watch({word(160), word(176), text(320, 2)});
    EXPECT_FALSE(known(0));
    EXPECT_EQ(1, readAt(1));
    EXPECT_FALSE(known(2));
}

// After a rebuild one reply to the list before it still comes.
TEST_F(Fold, AReplyOfTheOldListBringsWhatIsStillWatched)
{
    take(madePlan(1, {word(160), word(176), word(192)}));
    take(madePlan(2, {word(176), word(208)}));
    Exchange old = madeRead(kReadWords, 1, {{160, 1}, {176, 2}, {192, 3}}, momentAt(4));
    old.generation = 1;
    EXPECT_EQ(Places{0}, take(old));
    EXPECT_EQ(bytes({2, 0}), bytesOf(0));
    EXPECT_EQ(4, readAt(0));
    EXPECT_FALSE(known(1)) << "not taken for the entry at the same place in the new list";
}

TEST_F(Fold, AHalfReadTextBeginsAnewWithAnotherPlan)
{
    take(madePlan(1, {text(320, 2)}));
    words({{320, 0x4141}, {336, 0x4141}}, 1);
    words({{320, 0x4242}}, 2);
    take(madePlan(2, {word(160), text(320, 2)}));
    EXPECT_EQ(bytes({'A', 'A', 'A', 'A'}), bytesOf(1)) << "as it was shown last";
    EXPECT_EQ(1, readAt(1));
    EXPECT_EQ(Places{}, words({{336, 0x4242}}, 3)) << "half again";
    EXPECT_EQ(bytes({'A', 'A', 'A', 'A'}), bytesOf(1));
    EXPECT_EQ(Places{1}, words({{320, 0x4242}}, 4));
    EXPECT_EQ(bytes({'B', 'B', 'B', 'B'}), bytesOf(1));
}

TEST_F(Fold, ATextOverTwoRequestsIsShownWhenItIsWhole)
{
    watch({text(320, 4)});
    EXPECT_EQ(Places{}, words({{320, 0x4141}, {336, 0x4141}, {352, 0x4141}}, 1));
    EXPECT_FALSE(known(0));
    EXPECT_EQ(Places{0}, words({{368, 0x4141}}, 2));
    EXPECT_EQ(bytes({'A', 'A', 'A', 'A', 'A', 'A', 'A', 'A'}), bytesOf(0));
    EXPECT_EQ(1, readAt(0)) << "as old as its oldest word";

    EXPECT_EQ(Places{}, words({{320, 0x4242}, {336, 0x4242}}, 3));
    EXPECT_EQ(Places{}, words({{320, 0x4343}, {336, 0x4343}}, 4)) << "its first half again";
    EXPECT_EQ(bytes({'A', 'A', 'A', 'A', 'A', 'A', 'A', 'A'}), bytesOf(0));
    EXPECT_EQ(1, readAt(0));
    EXPECT_EQ(Places{0}, words({{352, 0x4444}, {368, 0x4444}}, 5));
    EXPECT_EQ(bytes({'C', 'C', 'C', 'C', 'D', 'D', 'D', 'D'}), bytesOf(0));
    EXPECT_EQ(4, readAt(0));
}

TEST_F(Fold, TheSameTextAgainIsNoChangeButYounger)
{
    watch({text(320, 2)});
    EXPECT_EQ(Places{0}, words({{320, 0}, {336, 0}}, 1)) << "a first empty text is news";
    EXPECT_EQ(Places{}, words({{320, 0}}, 2));
    EXPECT_EQ(1, readAt(0));
    EXPECT_EQ(Places{}, words({{336, 0}}, 3));
    EXPECT_EQ(2, readAt(0));
    EXPECT_EQ(Places{}, words({{336, 0}}, 4));
    EXPECT_EQ(Places{}, words({{320, 0}}, 5)) << "second word first";
    EXPECT_EQ(4, readAt(0));
}

TEST_F(Fold, ATextOfOneWordIsAWord)
{
    watch({text(320, 1)});
    EXPECT_EQ(Places{0}, words({{320, 0x4241}}, 1));
    EXPECT_EQ(bytes({'A', 'B'}), bytesOf(0));
    EXPECT_EQ(Places{}, words({{320, 0x4241}}, 2));
    EXPECT_EQ(2, readAt(0));
}

TEST_F(Fold, ALongTextTakesThreeRequests)
{
    watch({text(0, 100)});
    std::vector<ReadElement> elements;
    Places changed;
    QByteArray expected;
    for (int i = 0; i < 100; ++i) {
        elements.push_back({16 * i, static_cast<quint32>(0x100 * (i + 1) + i)});
        expected.append(static_cast<char>(i)).append(static_cast<char>(i + 1));
        if (elements.size() == 38 || i == 99) {
            EXPECT_EQ(Places{}, changed);
            EXPECT_FALSE(known(0));
            changed = words(elements, i + 1);
            elements.clear();
        }
    }
    EXPECT_EQ(Places{0}, changed);
    EXPECT_EQ(expected, bytesOf(0));
    EXPECT_EQ(38, readAt(0));
}

TEST_F(Fold, OverlappingTextsAreEachShownWhenWhole)
{
    watch({text(320, 2), text(336, 2)});
    EXPECT_EQ(Places{}, words({{336, 0x4242}}, 1));
    EXPECT_EQ(Places{1}, words({{352, 0x4343}}, 2));
    EXPECT_FALSE(known(0));
    EXPECT_EQ(Places{0}, words({{320, 0x4141}}, 3));
    EXPECT_EQ(bytes({'A', 'A', 'B', 'B'}), bytesOf(0));
    EXPECT_EQ(bytes({'B', 'B', 'C', 'C'}), bytesOf(1));
    EXPECT_EQ(1, readAt(0));
}

TEST_F(Fold, TwoVariablesOfOneElementChangeTogether)
{
    watch({word(160), word(176), word(160), text(320, 2), text(320, 2)});
    EXPECT_EQ((Places{0, 2}), words({{160, 6}}, 1));
    EXPECT_EQ(bytes({6, 0}), bytesOf(0));
    EXPECT_EQ(bytes({6, 0}), bytesOf(2));
    EXPECT_FALSE(known(1));
    EXPECT_EQ((Places{3, 4}), words({{320, 1}, {336, 2}}, 2));
    EXPECT_EQ(bytesOf(3), bytesOf(4));
}

TEST_F(Fold, AWordInsideATextChangesAtOnceTheTextWhenWhole)
{
    watch({text(320, 2), word(336), madeBitOf(DataType::word, 320, 0)});
    EXPECT_EQ(Places{1}, words({{336, 0x4242}}, 1));
    EXPECT_FALSE(known(0));
    EXPECT_EQ((Places{0, 2}), words({{320, 0x4141}}, 2));
    EXPECT_EQ(bytes({'A', 'A', 'B', 'B'}), bytesOf(0));
    EXPECT_EQ(bytes({1}), bytesOf(2));
    EXPECT_EQ(Places{1}, words({{336, 0x4343}}, 3));
    EXPECT_EQ(bytes({'A', 'A', 'B', 'B'}), bytesOf(0)) << "never half";
    EXPECT_EQ(bytes({'C', 'C'}), bytesOf(1));
    EXPECT_EQ(Places{0}, words({{320, 0x4141}}, 4)) << "the bit and its word are as they were";
    EXPECT_EQ(bytes({'A', 'A', 'C', 'C'}), bytesOf(0));
    EXPECT_EQ(3, readAt(0));
}

TEST_F(Fold, OfDuplicatesInOneReplyTheLastCounts)
{
    watch({word(160), text(320, 2)});
    words({{160, 1}, {176, 9}, {160, 2}, {160, 3}}, 1);
    EXPECT_EQ(bytes({3, 0}), bytesOf(0));
    EXPECT_EQ(Places{}, words({{320, 1}, {320, 2}}, 2)) << "one word of two";
    EXPECT_EQ(Places{1}, words({{336, 3}}, 3));
    EXPECT_EQ(bytes({2, 0, 3, 0}), bytesOf(1));
}

TEST_F(Fold, AVariableThatComesTwiceInOneReplyIsToldOnce)
{
    watch({word(160), word(160), text(320, 2)});
    EXPECT_EQ((Places{0, 1}), words({{160, 1}, {160, 2}}, 1));
    EXPECT_EQ((Places{2}), words({{320, 1}, {336, 1}, {320, 2}, {336, 2}}, 2));
}

TEST_F(Fold, OneShotReadsRefreshValuesAndAges)
{
    watch({word(160)});
    words({{160, 1}}, 1);
    Exchange read = madeRead(kReadWords, 1, {{160, 1}}, momentAt(50));
    read.kind = RequestKind::read;
    EXPECT_EQ(Places{}, take(read));
    EXPECT_EQ(50, readAt(0));
    read = madeRead(kReadWords, 1, {{9999, 5}, {160, 2}}, momentAt(60));
    read.kind = RequestKind::read;
    EXPECT_EQ(Places{0}, take(read));
    EXPECT_EQ(bytes({2, 0}), bytesOf(0));
}

// A list of 100 words goes round: each request begins where the one before ended.
TEST_F(Fold, RequestsBeginAtEveryElementInTurn)
{
    constexpr int kWords = 100;
    constexpr int kInOne = 38;
    std::vector<PolledElement> variables;
    for (int i = 0; i < kWords; ++i) {
        variables.push_back(word(16 * i));
    }
    watch(variables);
    std::vector<int> numbers(kWords, -1);
    std::vector<int> times(kWords, -1);
    int next = 0;
    for (int request = 1; request <= 60; ++request) {
        std::vector<ReadElement> elements;
        Places expected;
        for (int i = 0; i < kInOne; ++i) {
            const int place = (next + i) % kWords;
            numbers[place] = request * 256 + place;
            times[place] = request;
            elements.push_back({16 * place, static_cast<quint32>(numbers[place])});
            expected.push_back(static_cast<size_t>(place));
        }
        next = (next + kInOne) % kWords;
        Places changed = words(elements, request);
        std::sort(changed.begin(), changed.end());
        std::sort(expected.begin(), expected.end());
        ASSERT_EQ(expected, changed) << "request " << request;
        for (int i = 0; i < kWords; ++i) {
            ASSERT_EQ(times[i], readAt(i)) << "word " << i;
            if (times[i] >= 0) {
                ASSERT_EQ(bytes({numbers[i] & 0xFF, numbers[i] >> 8}), bytesOf(i));
            }
        }
    }
}

TEST_F(Fold, BadEndsChangeNothing)
{
    watch({word(160)});
    words({{160, 1}}, 1);
    for (const ExchangeEnd end : {ExchangeEnd::exception, ExchangeEnd::timeout, ExchangeEnd::cut,
                                  ExchangeEnd::lost, ExchangeEnd::broken, ExchangeEnd::notSent,
                                  ExchangeEnd::suppressed, ExchangeEnd::stopped}) {
        Exchange exchange = madeRead(kReadWords, 1, {{160, 2}}, momentAt(2));
        exchange.end = end;
        EXPECT_EQ(Places{}, take(exchange));
        EXPECT_EQ(bytes({1, 0}), bytesOf(0));
        EXPECT_EQ(1, readAt(0));
    }
}

TEST_F(Fold, RepliesOfWrongLengthChangeNothing)
{
    watch({word(160)});
    words({{160, 1}}, 1);
    for (const int difference : {-6, -1, 1, 6}) {
        Exchange exchange = madeRead(kReadWords, 1, {{160, 2}, {176, 3}}, momentAt(2));
        exchange.expectedReply =
            static_cast<quint32>(static_cast<int>(exchange.replySize) + difference);
        EXPECT_EQ(Places{}, take(exchange)) << difference;
        EXPECT_EQ(bytes({1, 0}), bytesOf(0));
        EXPECT_EQ(1, readAt(0));
    }
}

TEST_F(Fold, AFunctionThatNobodyKnowsChangesNothing)
{
    watch({word(160)});
    Exchange exchange = madeRead(kReadWords, 1, {{160, 2}}, momentAt(2));
    exchange.request[7] = 3;
    EXPECT_EQ(Places{}, take(exchange));
    EXPECT_FALSE(known(0));
}

TEST_F(Fold, EntriesOfOtherKindsChangeNothing)
{
    watch({word(160)});
    for (const FeedKind kind :
         {FeedKind::gaveUp, FeedKind::connected, FeedKind::connectFailed, FeedKind::connectionLost,
          FeedKind::framesDropped, FeedKind::operationEnded}) {
        FeedEntry entry = entryOf(madeRead(kReadWords, 1, {{160, 2}}, momentAt(2)));
        entry.kind = kind;
        EXPECT_EQ(Places{}, take(entry));
        EXPECT_FALSE(known(0));
    }
}

TEST_F(Fold, ElementsThatNobodyWatchesArePassedOver)
{
    watch({word(176), word(208)});
    EXPECT_EQ((Places{0, 1}), words({{160, 1}, {176, 2}, {192, 3}, {208, 4}, {224, 5}}, 1));
    EXPECT_EQ(bytes({2, 0}), bytesOf(0));
    EXPECT_EQ(bytes({4, 0}), bytesOf(1));
    EXPECT_EQ((Places{1, 0}), words({{208, 6}, {176, 7}}, 2)) << "in whatever order";
    EXPECT_EQ(Places{}, words({}, 3));
}

TEST_F(Fold, AddressesMayBeNegativeAndVeryLarge)
{
    constexpr qint32 kLowest = std::numeric_limits<qint32>::min();
    constexpr qint32 kHighest = std::numeric_limits<qint32>::max();
    watch({word(-16), word(0), word(kLowest), word(kHighest), word(0x7FFFFF00)});
    words({{kLowest, 1}, {-16, 2}, {0, 3}, {0x7FFFFF00, 4}, {kHighest, 5}}, 1);
    EXPECT_EQ(bytes({2, 0}), bytesOf(0));
    EXPECT_EQ(bytes({3, 0}), bytesOf(1));
    EXPECT_EQ(bytes({1, 0}), bytesOf(2));
    EXPECT_EQ(bytes({5, 0}), bytesOf(3));
    EXPECT_EQ(bytes({4, 0}), bytesOf(4));
}

TEST_F(Fold, ATextMayCrossTheHighestAddress)
{
    watch({text(0x7FFFFFF0, 2)});
    EXPECT_EQ(Places{}, words({{0x7FFFFFF0, 0x4141}}, 1));
    EXPECT_EQ(Places{0}, words({{static_cast<qint32>(0x80000000U), 0x4242}}, 2));
    EXPECT_EQ(bytes({'A', 'A', 'B', 'B'}), bytesOf(0));
}

TEST_F(Fold, TenThousandElementsAreEachKnown)
{
    constexpr int kElements = 10000;
    std::vector<PolledElement> variables;
    for (int i = 0; i < kElements; ++i) {
        variables.push_back(word(32 * (kElements - i))); // shown in another order than polled
    }
    watch(variables);
    std::vector<int> told(kElements, 0);
    for (int first = 1; first <= kElements; first += 38) {
        std::vector<ReadElement> elements;
        for (int i = first; i < first + 38 && i <= kElements; ++i) {
            elements.push_back({32 * i, static_cast<quint32>(i)});
        }
        for (const size_t variable : words(elements, first)) {
            ++told[variable];
        }
    }
    EXPECT_EQ(std::vector<int>(kElements, 1), told);
    for (int i = 0; i < kElements; ++i) {
        const int number = kElements - i;
        ASSERT_EQ(bytes({number & 0xFF, number >> 8}), bytesOf(i));
        ASSERT_EQ((number - 1) / 38 * 38 + 1, readAt(i));
    }
}

TEST_F(Fold, OfAReplyThatWasCutOnlyWhatIsKeptCounts)
{
    std::vector<PolledElement> variables;
    std::vector<ReadElement> elements;
    for (int i = 0; i < 45; ++i) {
        variables.push_back(word(16 * i));
        elements.push_back({16 * i, 7});
    }
    watch(variables);
    EXPECT_EQ(38u, words(elements, 1).size()) << "240 bytes hold 38 words with their addresses";
    EXPECT_TRUE(known(37));
    EXPECT_FALSE(known(38));
}

} // namespace tavmir::host
