// The request in flight: what it is for, whom it carries, and what they are told at its end.
#include "session/request_in_flight.h"

#include "driver/driver_loader.h"
#include "support/driver_file.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

constexpr int kPatientMs = 60000;

class InFlight : public testing::Test
{
protected:
    void SetUp() override
    {
        QStringList problems;
        driver_ = Driver::load(test::driverFile(TAVMIR_DRIVER), problems);
        ASSERT_TRUE(driver_) << problems.join('\n').toStdString();
    }

    OperationId begin(OperationKind kind, int elements, qint32 firstAddress = 160)
    {
        OperationShape shape;
        shape.elements = elements;
        shape.station = 1;
        shape.firstAddress = firstAddress;
        shape.valueBytes = kind == OperationKind::read ? 2 : 0;
        const OperationId id = tracker_.admit(kind, shape, Deadline(kPatientMs), 1000);
        tracker_.given(id);
        return id;
    }

    // The driver has built a request of the function for these operations, an entry each.
    void build(unsigned char function, const std::vector<OperationId>& entries,
               quint32 generation = 1)
    {
        batch_.clear();
        for (const OperationId& id : entries) {
            RW_VAR entry;
            entry.hostKey = driverKeys(id).hostKey;
            entry.varKey = driverKeys(id).varKey;
            batch_.push_back(entry);
        }
        Communication_Protocol& context = *driver_->api().context;
        context.batchCount = static_cast<qint32>(batch_.size());
        for (size_t i = 0; i < batch_.size(); ++i) {
            context.batchElements[i] = &batch_[i];
        }
        Protocol request;
        request.frame = QByteArray(7, '\0');
        request.frame.append(static_cast<char>(function));
        if (!batch_.empty()) {
            request.var = batch_.front();
        } else {
            request.var.varKey = -1; // as polled elements have
        }
        request_.begin(context, request, generation);
    }

    void attempt(ExchangeEnd end, const QString& problem)
    {
        Exchange exchange;
        exchange.end = end;
        exchange.sentBytes = end == ExchangeEnd::notSent ? 0 : 15;
        exchange.expectedReply = exchange.replySize = end == ExchangeEnd::reply ? 9 : 0;
        request_.attempted(exchange, problem);
    }

    std::string outcomeOf(const OperationId& id)
    {
        tracker_.ended(id, "left behind");
        return outcomeInWords(tracker_.claimOrAbandon(id)).toStdString();
    }

    std::unique_ptr<Driver> driver_;
    std::vector<RW_VAR> batch_;
    Feed feed_;
    OperationTracker tracker_{feed_};
    RequestInFlight request_;
};

} // namespace

TEST_F(InFlight, NothingIsInFlightAtFirst)
{
    EXPECT_FALSE(request_.isActive());
    EXPECT_EQ(0, request_.entriesOf(OperationKind::write));
    EXPECT_EQ(0, request_.entriesOf(OperationKind::read));
    EXPECT_FALSE(request_.carries(begin(OperationKind::write, 1)));
}

TEST_F(InFlight, KindsComeFromFunctionAndKeys)
{
    const OperationId write = begin(OperationKind::write, 1);
    const OperationId read = begin(OperationKind::read, 1);
    for (const char function : {'e', 'g', 'm'}) {
        build(static_cast<unsigned char>(function), {write});
        EXPECT_EQ(RequestKind::write, request_.kind()) << function;
    }
    for (const char function : {'d', 'f', 'l'}) {
        build(static_cast<unsigned char>(function), {read});
        EXPECT_EQ(RequestKind::read, request_.kind()) << function;
        build(static_cast<unsigned char>(function), {});
        EXPECT_EQ(RequestKind::poll, request_.kind()) << function;
    }
}

TEST_F(InFlight, AttemptsAreCountedFromOneForEachRequest)
{
    build('f', {}, 7);
    EXPECT_TRUE(request_.isActive());
    EXPECT_EQ(1u, request_.attempt());
    EXPECT_EQ(7u, request_.generation());
    attempt(ExchangeEnd::timeout, "no answer");
    EXPECT_EQ(2u, request_.attempt());
    attempt(ExchangeEnd::exception, "refused");
    EXPECT_EQ(3u, request_.attempt());
    EXPECT_TRUE(request_.attempts().uncertain());
    request_.end(tracker_, QByteArray());
    EXPECT_FALSE(request_.isActive());
    build('f', {}, 8);
    EXPECT_EQ(1u, request_.attempt());
    EXPECT_EQ(8u, request_.generation());
    EXPECT_FALSE(request_.attempts().uncertain()) << "nothing of the one before";
}

TEST_F(InFlight, EntriesAreThoseOfItsOwnKindWhileItIsActive)
{
    const OperationId write = begin(OperationKind::write, 2);
    const OperationId other = begin(OperationKind::write, 1);
    build('g', {write, write});
    EXPECT_EQ(2, request_.entriesOf(OperationKind::write));
    EXPECT_EQ(0, request_.entriesOf(OperationKind::read));
    EXPECT_TRUE(request_.carries(write));
    EXPECT_FALSE(request_.carries(other));
    EXPECT_FALSE(request_.carries({OperationKind::read, write.key}));
    request_.end(tracker_, QByteArray());
    EXPECT_EQ(0, request_.entriesOf(OperationKind::write));
    EXPECT_FALSE(request_.carries(write));
    build('f', {begin(OperationKind::read, 1)});
    EXPECT_EQ(1, request_.entriesOf(OperationKind::read));
    EXPECT_EQ(0, request_.entriesOf(OperationKind::write));
}

TEST_F(InFlight, EachOperationIsToldOfItsOwnElements)
{
    const OperationId first = begin(OperationKind::write, 2);
    const OperationId second = begin(OperationKind::write, 3);
    const OperationId apart = begin(OperationKind::write, 1);
    build('g', {first, first, second});
    attempt(ExchangeEnd::reply, QString());
    request_.end(tracker_, "reply");
    EXPECT_EQ("done", outcomeOf(first));
    EXPECT_EQ("partial: 1 of 3 elements done, the rest not sent: left behind", outcomeOf(second));
    EXPECT_EQ("not sent: left behind", outcomeOf(apart));
}

TEST_F(InFlight, AllAttemptsCount)
{
    const OperationId lost = begin(OperationKind::write, 1);
    build('g', {lost});
    attempt(ExchangeEnd::timeout, "no answer");
    attempt(ExchangeEnd::notSent, "no line");
    request_.end(tracker_, QByteArray());
    EXPECT_EQ("unknown: no answer", outcomeOf(lost));
    const OperationId late = begin(OperationKind::write, 1);
    build('g', {late});
    attempt(ExchangeEnd::timeout, "no answer");
    attempt(ExchangeEnd::reply, QString());
    request_.end(tracker_, "reply");
    EXPECT_EQ("done", outcomeOf(late));
    const OperationId refused = begin(OperationKind::write, 1);
    build('g', {refused});
    attempt(ExchangeEnd::exception, "exception");
    request_.end(tracker_, QByteArray());
    EXPECT_EQ("refused: exception", outcomeOf(refused));
}

TEST_F(InFlight, ReadsAreToldTheirOwnValues)
{
    const OperationId first = begin(OperationKind::read, 2, 160);
    const OperationId second = begin(OperationKind::read, 1, 320);
    build('f', {first, first, second});
    attempt(ExchangeEnd::reply, QString());
    request_.end(tracker_, QByteArray("\0\1\0\0\0\x15\1f\3"
                                      "\0\0\0\xA0\x12\x34"
                                      "\0\0\0\xB0\x56\x78"
                                      "\0\0\1\x40\x9A\xBC",
                                      27));
    tracker_.ended(first, "left");
    tracker_.ended(second, "left");
    const Outcome ofFirst = tracker_.claimOrAbandon(first);
    EXPECT_EQ(OutcomeState::done, ofFirst.state);
    EXPECT_EQ(QByteArray("\x34\x12\x78\x56", 4), ofFirst.bytes);
    EXPECT_EQ(QByteArray("\xBC\x9A", 2), tracker_.claimOrAbandon(second).bytes);
}

TEST_F(InFlight, WithoutAGoodReplyNoValueIsTold)
{
    const OperationId read = begin(OperationKind::read, 1);
    build('f', {read});
    attempt(ExchangeEnd::timeout, "no answer");
    request_.end(tracker_, QByteArray());
    tracker_.ended(read, "left");
    const Outcome outcome = tracker_.claimOrAbandon(read);
    EXPECT_EQ("unknown: no answer", outcomeInWords(outcome).toStdString());
    EXPECT_EQ(QByteArray(2, '\0'), outcome.bytes);
}

TEST_F(InFlight, PollingTellsNobody)
{
    const OperationId read = begin(OperationKind::read, 1);
    build('f', {read});
    request_.end(tracker_, QByteArray());
    build('f', {});
    attempt(ExchangeEnd::reply, QString());
    request_.end(tracker_, QByteArray("\0\1\0\0\0\x09\1f\1\0\0\0\xA0\x12\x34", 15));
    EXPECT_TRUE(tracker_.isPending(read));
    EXPECT_EQ("not sent: left behind", outcomeOf(read)) << "of the request before, never sent";
}

} // namespace tavmir::host
