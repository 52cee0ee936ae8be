// The cycle's loop.
#include "cycle_thread.h"

namespace tavmir::host
{

namespace
{

// How long a request to a station that is switched off takes.
constexpr int kSuppressedMs = 20;

constexpr int kStatusRepeat = 0;
constexpr int kStatusGood = 1;

constexpr unsigned char kReadBits = 100;
constexpr unsigned char kReadDoubleWords = 108;
constexpr unsigned char kWriteBits = 101;
constexpr unsigned char kWriteWords = 103;
constexpr unsigned char kWriteDoubleWords = 109;

unsigned char functionOf(const Protocol& request)
{
    return static_cast<unsigned char>(request.frame.at(7));
}

ValueClass classOf(unsigned char function)
{
    if (function == kReadBits) {
        return ValueClass::bits;
    }
    return function == kReadDoubleWords ? ValueClass::doubleWords : ValueClass::words;
}

QString reasonOf(ExchangeResult result)
{
    switch (result) {
    case ExchangeResult::reply:
        return "the controller's reply has a wrong length";
    case ExchangeResult::timeout:
        return "the controller did not answer";
    case ExchangeResult::exception:
        return "the controller refused the request";
    case ExchangeResult::notConnected:
        return "no connection to the controller";
    case ExchangeResult::stopped:
        break;
    }
    return "the host stops";
}

} // namespace

CycleThread::CycleThread(const DriverApi& api, CycleShared& shared, const LinkOptions& link,
                         int pauseMs, TcpLink::Observer observer, int idleMs)
    : api_(api), shared_(shared), link_(link, shared.statistics, std::move(observer)),
      pauseMs_(pauseMs), idleMs_(idleMs)
{
    reply_.reserve(static_cast<int>(wire::kMaxFrameBytes));
    DriverEvents::receiveInto(&events_);
}

CycleThread::~CycleThread()
{
    stop();
    DriverEvents::receiveInto(nullptr);
}

void CycleThread::start()
{
    thread_ = std::thread([this] { loop(); });
}

void CycleThread::stop()
{
    stopping_ = true;
    link_.stop();
    if (thread_.joinable()) {
        thread_.join();
    }
    shared_.operations.close(reasonOf(ExchangeResult::stopped));
}

void CycleThread::loop()
{
    while (!stopping_) {
        // With nothing to poll, the driver puts one empty call between five turns of writes or
        // one-shot reads and the next: only two in a row mean that there is nothing to send.
        if (!turn() && !stopping_ && !turn() && !stopping_) {
            link_.idle(idleMs_);
        }
    }
}

bool CycleThread::turn()
{
    Protocol* request = nullptr;
    {
        const std::lock_guard<std::mutex> gate(shared_.gate);
        request = api_.nextRequest();
    }
    if (request == nullptr) {
        return false;
    }
    // The record is the driver's, and stays in place until the reply has been taken.
    const Turn kind = kindOf(*request);
    const ExchangeResult result = perform(*request);
    if (result == ExchangeResult::stopped) {
        return false;
    }
    endTurn(*request, kind, result);
    if (pauseMs_ > 0) {
        pauseAfterPass();
    }
    return true;
}

CycleThread::Turn CycleThread::kindOf(const Protocol& request)
{
    const unsigned char function = functionOf(request);
    if (function == kWriteBits || function == kWriteWords || function == kWriteDoubleWords) {
        return Turn::write;
    }
    const int readKey = OperationTracker::hostKey(OperationKind::read);
    return request.var.hostKey == readKey ? Turn::read : Turn::poll;
}

ExchangeResult CycleThread::perform(const Protocol& request)
{
    LinkStatistics& statistics = shared_.statistics;
    (repeat_ ? statistics.retries : statistics.requests).add();
    if (shared_.stationsSwitched.load(std::memory_order_relaxed) &&
        api_.stationDisabled(request.var.station)) {
        statistics.suppressed.add();
        link_.idle(kSuppressedMs);
        return stopping_ ? ExchangeResult::stopped : ExchangeResult::notConnected;
    }
    const ExchangeResult result =
        link_.exchange(request.frame.constData(), static_cast<size_t>(request.frameLength), reply_);
    if (result == ExchangeResult::notConnected) {
        statistics.notConnected.add();
    }
    return result;
}

void CycleThread::endTurn(const Protocol& request, Turn kind, ExchangeResult result)
{
    const bool received = result == ExchangeResult::reply;
    if (!received) {
        reply_.resize(0); // the driver logs what it is handed
    }
    // Shares the frame: the driver destroys its record when the request is over.
    const QByteArray frame = request.frame;
    const std::lock_guard<std::mutex> gate(shared_.gate);
    events_.clear();
    const int status = api_.takeReply(&reply_, received ? reply_.size() : 0)->status;
    countResult(status, received);
    if (status == kStatusGood && kind == Turn::poll) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(frame.constData());
        const size_t count = bytes[8];
        shared_.statistics.polledElements.add(count);
        shared_.ages.readNow(classOf(bytes[7]), bytes + wire::kHeaderBytes, count, Clock::now());
    }
    reportOperations(kind, reasonOf(result));
}

void CycleThread::countResult(int status, bool received)
{
    LinkStatistics& statistics = shared_.statistics;
    repeat_ = status == kStatusRepeat;
    if (status == kStatusGood) {
        statistics.replies.add();
        return;
    }
    if (received) {
        statistics.refusedReplies.add();
    }
    if (status != kStatusRepeat) {
        statistics.giveUps.add();
    }
}

void CycleThread::reportOperations(Turn kind, const QString& reason)
{
    for (const FinishedVariable& variable : events_.finished) {
        shared_.operations.finished(variable.hostKey, variable.varKey, variable.ok,
                                    variable.ok ? QString() : reason);
    }
    if (!events_.gaveUp || kind == Turn::poll) {
        return;
    }
    // With the batch the driver dropped everything queued behind it. The gate is held, so
    // nothing that is pending now was queued after that.
    shared_.operations.dropAll(kind == Turn::write ? OperationKind::write : OperationKind::read,
                               reason);
}

void CycleThread::pauseAfterPass()
{
    const uint64_t polled = shared_.statistics.polledElements.value();
    size_t pass = 0;
    {
        const std::lock_guard<std::mutex> gate(shared_.gate);
        pass = shared_.ages.size();
    }
    if (pass == 0 || polled - passStart_ < pass) {
        return;
    }
    passStart_ = polled;
    link_.idle(pauseMs_);
}

} // namespace tavmir::host
