// What all attempts of all requests together make of an operation.
#include "session/operation_progress.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

enum class Attempt { good, unanswered, refused, unsent };
constexpr Attempt kAttempts[] = {Attempt::good, Attempt::unanswered, Attempt::refused,
                                 Attempt::unsent};

Exchange exchangeOf(Attempt attempt)
{
    Exchange exchange;
    exchange.sentBytes = attempt == Attempt::unsent ? 0 : 15;
    exchange.expectedReply = 9;
    switch (attempt) {
    case Attempt::good:
        exchange.end = ExchangeEnd::reply;
        exchange.replySize = 9;
        break;
    case Attempt::unanswered:
        exchange.end = ExchangeEnd::timeout;
        break;
    case Attempt::refused:
        exchange.end = ExchangeEnd::exception;
        break;
    case Attempt::unsent:
        exchange.end = ExchangeEnd::notSent;
        break;
    }
    return exchange;
}

QString problemOf(Attempt attempt)
{
    switch (attempt) {
    case Attempt::good:
        break;
    case Attempt::unanswered:
        return "no answer";
    case Attempt::refused:
        return "exception";
    case Attempt::unsent:
        return "no line";
    }
    return QString();
}

RequestAttempts attemptsOf(const std::vector<Attempt>& list)
{
    RequestAttempts attempts;
    for (const Attempt attempt : list) {
        attempts.add(exchangeOf(attempt), problemOf(attempt));
    }
    return attempts;
}

bool has(const std::vector<Attempt>& list, Attempt wanted)
{
    return std::find(list.begin(), list.end(), wanted) != list.end();
}

std::string inWords(const OperationProgress& progress)
{
    return outcomeInWords(progress.outcome("left behind")).toStdString();
}

} // namespace

TEST(RequestAttempts, WithoutOneNothingIsSaid)
{
    const RequestAttempts none;
    EXPECT_FALSE(none.acknowledged());
    EXPECT_FALSE(none.uncertain());
    EXPECT_FALSE(none.refused());
    EXPECT_TRUE(none.why().isEmpty());
}

// Acknowledged once is done; sent once without an answer may be done; refused is refused.
TEST(RequestAttempts, EverySeriesOfThree)
{
    for (const Attempt first : kAttempts) {
        for (const Attempt second : kAttempts) {
            for (const Attempt third : kAttempts) {
                const std::vector<Attempt> list = {first, second, third};
                const RequestAttempts attempts = attemptsOf(list);
                const bool good = has(list, Attempt::good);
                const bool unanswered = has(list, Attempt::unanswered);
                const bool refused = has(list, Attempt::refused);
                const std::string what = std::to_string(static_cast<int>(first)) +
                                         std::to_string(static_cast<int>(second)) +
                                         std::to_string(static_cast<int>(third));
                EXPECT_EQ(good, attempts.acknowledged()) << what;
                EXPECT_EQ(!good && unanswered, attempts.uncertain()) << what;
                EXPECT_EQ(!good && !unanswered && refused, attempts.refused()) << what;
                if (!good) {
                    EXPECT_EQ(unanswered ? "no answer"
                              : refused  ? "exception"
                                         : "no line",
                              attempts.why().toStdString())
                        << what;
                }
            }
        }
    }
}

TEST(RequestAttempts, OfSeveralReasonsOfOneKindTheLastIsTold)
{
    RequestAttempts attempts;
    attempts.add(exchangeOf(Attempt::unsent), "first");
    attempts.add(exchangeOf(Attempt::unsent), "second");
    EXPECT_EQ("second", attempts.why().toStdString());
    attempts.add(exchangeOf(Attempt::refused), "third");
    attempts.add(exchangeOf(Attempt::refused), "fourth");
    EXPECT_EQ("fourth", attempts.why().toStdString());
    attempts.add(exchangeOf(Attempt::unanswered), "fifth");
    attempts.add(exchangeOf(Attempt::unanswered), "sixth");
    attempts.add(exchangeOf(Attempt::refused), "seventh");
    attempts.add(exchangeOf(Attempt::unsent), "eighth");
    EXPECT_EQ("sixth", attempts.why().toStdString()) << "may have been carried out then";
}

TEST(RequestAttempts, AReplyOfWrongLengthLeavesItUncertain)
{
    Exchange wrong = exchangeOf(Attempt::good);
    wrong.replySize = 10;
    RequestAttempts attempts;
    attempts.add(wrong, "10 bytes");
    EXPECT_FALSE(attempts.acknowledged());
    EXPECT_TRUE(attempts.uncertain());
    EXPECT_EQ("10 bytes", attempts.why().toStdString());
}

TEST(RequestAttempts, EachEndAfterSendingLeavesItUncertainButAnException)
{
    for (const ExchangeEnd end : {ExchangeEnd::timeout, ExchangeEnd::cut, ExchangeEnd::lost,
                                  ExchangeEnd::broken, ExchangeEnd::stopped}) {
        Exchange exchange;
        exchange.end = end;
        exchange.sentBytes = 1;
        RequestAttempts sent;
        sent.add(exchange, "why");
        EXPECT_TRUE(sent.uncertain()) << static_cast<int>(end);
        exchange.sentBytes = 0;
        RequestAttempts unsent;
        unsent.add(exchange, "why");
        EXPECT_FALSE(unsent.uncertain()) << static_cast<int>(end);
        EXPECT_FALSE(unsent.refused()) << static_cast<int>(end);
        EXPECT_EQ("why", unsent.why().toStdString());
    }
}

TEST(OperationProgress, OneRequestOfEachKind)
{
    const std::vector<std::pair<std::vector<Attempt>, std::string>> cases = {
        {{Attempt::good}, "done"},
        {{Attempt::unanswered, Attempt::good}, "done"},
        {{Attempt::refused, Attempt::good}, "done"},
        {{Attempt::unsent, Attempt::good}, "done"},
        {{Attempt::unanswered}, "unknown: no answer"},
        {{Attempt::unanswered, Attempt::refused}, "unknown: no answer"},
        {{Attempt::refused, Attempt::unanswered}, "unknown: no answer"},
        {{Attempt::unanswered, Attempt::unsent}, "unknown: no answer"},
        {{Attempt::refused}, "refused: exception"},
        {{Attempt::refused, Attempt::unsent}, "refused: exception"},
        {{Attempt::unsent}, "not sent: no line"},
        {{}, "not sent: left behind"},
    };
    for (const auto& [attempts, expected] : cases) {
        OperationProgress progress;
        progress.elements = 2;
        progress.requestEnded(2, attemptsOf(attempts));
        EXPECT_EQ(expected, inWords(progress));
        const Outcome outcome = progress.outcome("left behind");
        EXPECT_EQ(2, outcome.elements);
        EXPECT_EQ(expected == "done" ? 2 : 0, outcome.acknowledged);
        EXPECT_EQ(expected == "done", outcome.ok());
    }
}

TEST(OperationProgress, WithoutARequestItIsNotSent)
{
    OperationProgress progress;
    progress.elements = 1;
    EXPECT_EQ("not sent: left behind", inWords(progress));
}

// Three requests of an operation of 100 elements: 38, 38 and 24.
TEST(OperationProgress, EverySeriesOfThreeRequests)
{
    const int counts[] = {38, 38, 24};
    for (const Attempt first : kAttempts) {
        for (const Attempt second : kAttempts) {
            for (const Attempt third : kAttempts) {
                const std::vector<Attempt> list = {first, second, third};
                OperationProgress progress;
                progress.elements = 100;
                int acknowledged = 0;
                for (size_t i = 0; i < list.size(); ++i) {
                    progress.requestEnded(counts[i], attemptsOf({list[i]}));
                    acknowledged += list[i] == Attempt::good ? counts[i] : 0;
                }
                const std::string rest = has(list, Attempt::unanswered) ? "unknown: no answer"
                                         : has(list, Attempt::refused)  ? "refused: exception"
                                                                        : "not sent: no line";
                const std::string expected = acknowledged == 100 ? "done"
                                             : acknowledged == 0
                                                 ? rest
                                                 : "partial: " + std::to_string(acknowledged) +
                                                       " of 100 elements done, the rest " + rest;
                EXPECT_EQ(expected, inWords(progress));
                const Outcome outcome = progress.outcome("left behind");
                EXPECT_EQ(100, outcome.elements);
                EXPECT_EQ(acknowledged, outcome.acknowledged);
                EXPECT_EQ(acknowledged == 100, outcome.ok());
            }
        }
    }
}

TEST(OperationProgress, HalfDoneAndNoFurtherRequestIsPartial)
{
    OperationProgress progress;
    progress.elements = 60;
    progress.requestEnded(38, attemptsOf({Attempt::good}));
    EXPECT_EQ("partial: 38 of 60 elements done, the rest not sent: left behind", inWords(progress));
    progress.requestEnded(21, attemptsOf({Attempt::unanswered, Attempt::good}));
    EXPECT_EQ("partial: 59 of 60 elements done, the rest not sent: left behind", inWords(progress));
    progress.requestEnded(1, attemptsOf({Attempt::good}));
    EXPECT_EQ("done", inWords(progress));
}

TEST(OperationProgress, ReasonsWithPercentSignsAreToldAsTheyAre)
{
    OperationProgress progress;
    progress.elements = 2;
    progress.requestEnded(1, attemptsOf({Attempt::good}));
    EXPECT_EQ("partial: 1 of 2 elements done, the rest not sent: host %1 of %3",
              outcomeInWords(progress.outcome("host %1 of %3")).toStdString());
}

TEST(OperationProgress, OfSeveralRequestsOfAKindTheLastReasonIsTold)
{
    for (const Attempt attempt : {Attempt::unanswered, Attempt::refused, Attempt::unsent}) {
        OperationProgress progress;
        progress.elements = 2;
        for (const char* why : {"first", "second"}) {
            RequestAttempts attempts;
            attempts.add(exchangeOf(attempt), why);
            progress.requestEnded(1, attempts);
        }
        EXPECT_EQ("second", progress.outcome("left").reason.toStdString());
    }
}

} // namespace tavmir::host
