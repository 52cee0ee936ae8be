// Which reply belongs to which attempt.
#include "diagnose/exchange_fold.h"

#include <gtest/gtest.h>

using namespace tavmir::diagnose;

namespace
{

// Attempts and replies by time in milliseconds.
Exchange exchangeOf(const std::vector<int>& attempts, const std::vector<int>& replies,
                    const std::vector<unsigned char>& bytes = {})
{
    Exchange exchange;
    std::uint64_t ordinal = 10;
    for (const int at : attempts) {
        Attempt attempt;
        attempt.at = at * kMillisecond;
        attempt.ordinal = ++ordinal;
        exchange.attempts.push_back(attempt);
    }
    for (std::size_t i = 0; i < replies.size(); ++i) {
        Came came;
        came.at = replies[i] * kMillisecond;
        came.bytes = {bytes.empty() ? static_cast<unsigned char>(1) : bytes[i]};
        came.behind = 10;
        for (const int at : attempts) {
            came.behind += at <= replies[i] ? 1 : 0;
        }
        exchange.came.push_back(came);
    }
    return exchange;
}

constexpr std::size_t kNone = kNothing;

} // namespace

TEST(Pairing, OneReplyBelongsToTheLastAttemptBeforeIt)
{
    EXPECT_EQ((std::vector<std::size_t>{kNone, 0}), pairUp(exchangeOf({0, 200}, {201})).replyOf);
    EXPECT_EQ((std::vector<std::size_t>{0, kNone}), pairUp(exchangeOf({0, 200}, {150})).replyOf);
}

TEST(Pairing, AsManyRepliesAsAttemptsAreInTheirOrder)
{
    const Exchange exchange = exchangeOf({0, 200, 400}, {450, 650, 850});
    EXPECT_EQ((std::vector<std::size_t>{0, 1, 2}), pairUp(exchange).replyOf);
    EXPECT_TRUE(cameLate(exchange.attempts[0], exchange.came[0]));
    EXPECT_FALSE(cameLate(exchange.attempts[2], exchange.came[2]));
}

TEST(Pairing, AReplyRightBehindAnAttemptIsItsOwnAndTheOtherOneTheLateOne)
{
    const Exchange exchange = exchangeOf({0, 500}, {501, 2000});
    EXPECT_EQ((std::vector<std::size_t>{1, 0}), pairUp(exchange).replyOf);
    EXPECT_TRUE(cameLate(exchange.attempts[0], exchange.came[1]));
    EXPECT_FALSE(cameLate(exchange.attempts[1], exchange.came[0]));
    EXPECT_EQ((std::vector<std::size_t>{2, 0, 1}),
              pairUp(exchangeOf({0, 500, 1000}, {501, 1001, 2000})).replyOf);
}

TEST(Pairing, TwoThatCameTogetherHadWaitedBehindEachOther)
{
    EXPECT_EQ((std::vector<std::size_t>{0, 1}), pairUp(exchangeOf({0, 500}, {601, 602})).replyOf);
    EXPECT_EQ((std::vector<std::size_t>{0, 1}),
              pairUp(exchangeOf({0, 500}, {505, 506}, {1, 2})).replyOf);
}

TEST(Pairing, TheSameRightBehindIsADuplicate)
{
    const Pairing pairing = pairUp(exchangeOf({0, 200}, {201, 202}));
    EXPECT_EQ((std::vector<std::size_t>{kNone, 0}), pairing.replyOf);
    EXPECT_EQ(std::vector<std::size_t>{1}, pairing.duplicates);
}

TEST(Pairing, OtherBytesRightBehindAreNoDuplicate)
{
    EXPECT_EQ((std::vector<std::size_t>{0, 1}),
              pairUp(exchangeOf({0, 200}, {201, 202}, {1, 2})).replyOf);
}

TEST(Pairing, TwoThatCameTogetherLongBehindAreNoDuplicate)
{
    EXPECT_EQ((std::vector<std::size_t>{0, 1}), pairUp(exchangeOf({0, 200}, {500, 501})).replyOf);
}

TEST(Pairing, MoreRepliesThanAttemptsAreDuplicates)
{
    const Pairing pairing = pairUp(exchangeOf({0}, {1, 300, 400}));
    EXPECT_EQ(std::vector<std::size_t>{0}, pairing.replyOf);
    EXPECT_EQ((std::vector<std::size_t>{1, 2}), pairing.duplicates);
}

TEST(Pairing, NoReplyBelongsToAnAttemptBehindIt)
{
    const Pairing pairing = pairUp(exchangeOf({0, 200}, {1, 50}, {1, 2}));
    EXPECT_EQ((std::vector<std::size_t>{0, kNone}), pairing.replyOf);
    EXPECT_EQ(std::vector<std::size_t>{1}, pairing.duplicates);
}
