// The cycle's loop.
#include "cycle_thread.h"

#include "driver/request_lists.h"
#include "plan/frame_plan.h"
#include "wire/frame_layout.h"

#include <algorithm>
#include <set>

namespace tavmir::host
{

namespace
{

// How long a request to a station that is switched off takes.
constexpr int kSuppressedMs = 20;

constexpr int kStatusRepeat = 0;
constexpr int kStatusGood = 1;

constexpr char kStops[] = "the host stops";
constexpr char kTimeOver[] = "its time was over before its turn came";

QString whyTimeIsOver(const ConnectionState& connection)
{
    return connection.isConnected() ? QString(kTimeOver)
                                    : "no connection to the controller: " + connection.problem();
}

} // namespace

CycleThread::CycleThread(SessionState& state, SearchedList& polled, const LinkOptions& link,
                         int idleMs)
    : state_(state), polled_(polled), tries_(state),
      link_(link, [this](const FeedEntry& entry) { linkChanged(entry); }), idleMs_(idleMs)
{
    reply_.reserve(static_cast<int>(wire::kMaxFrameBytes));
    DriverEvents::receiveInto(&events_);
}

CycleThread::~CycleThread()
{
    stop();
    link_.close();
    DriverEvents::receiveInto(nullptr);
}

void CycleThread::start()
{
    if (!thread_.joinable() && !stopping_) {
        thread_ = std::thread([this] { loop(); });
    }
}

void CycleThread::stop()
{
    stopping_ = true;
    link_.stop();
    state_.connection.close();
    const std::lock_guard<std::mutex> lock(stopMutex_);
    if (thread_.joinable()) {
        thread_.join();
        link_.close();
    }
    {
        const std::lock_guard<std::mutex> gate(state_.gate);
        if (state_.inFlight.isActive()) {
            state_.inFlight.end(state_.operations, QByteArray());
        }
    }
    state_.operations.close(kStops);
}

void CycleThread::linkChanged(const FeedEntry& entry)
{
    if (entry.kind == FeedKind::connected) {
        state_.connection.connected();
    } else if (entry.kind == FeedKind::connectFailed || entry.kind == FeedKind::connectionLost) {
        state_.connection.disconnected(entry.text);
    }
    state_.feed.publish(entry);
}

void CycleThread::loop()
{
    while (!stopping_) {
        if (!turn() && !stopping_) {
            const auto left = restUntil_ - Clock::now();
            const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
            link_.idle(static_cast<int>(std::max<decltype(ms)>(0, ms)));
        }
    }
}

bool CycleThread::turn()
{
    if (!connect()) {
        return !stopping_;
    }
    const Protocol* request = nextRequest();
    if (request == nullptr) {
        return false;
    }
    // The record is the driver's, and stays in place until the reply has been taken.
    if (perform(*request) == ExchangeEnd::stopped) {
        const std::lock_guard<std::mutex> gate(state_.gate);
        state_.inFlight.attempted(exchange_, problem_);
        return false;
    }
    takeReply();
    return true;
}

// False: there is no connection, and nothing in flight that must be seen to an end without one.
bool CycleThread::connect()
{
    if (link_.connected() || state_.inFlight.isActive()) {
        return true;
    }
    {
        const std::lock_guard<std::mutex> gate(state_.gate);
        withdrawExpired(state_); // makes room for who waits in line
    }
    return link_.reconnect();
}

Protocol* CycleThread::nextRequest()
{
    const std::lock_guard<std::mutex> gate(state_.gate);
    withdrawExpired(state_);
    if (state_.inFlight.isActive()) {
        return state_.api.nextRequest(); // the same again
    }
    Protocol* request = chooseRequest();
    if (request != nullptr) {
        state_.inFlight.begin(*state_.api.context, *request, state_.generation);
    }
    return request;
}

Protocol* CycleThread::chooseRequest()
{
    const Clock::time_point now = Clock::now();
    search(now);
    restUntil_ = std::min(now + std::chrono::milliseconds(idleMs_), polled_.search().nextAt());
    if (state_.passes.isDue(now)) {
        state_.passes.begins(now);
        return state_.api.nextRequest();
    }
    const bool writesWait = state_.operations.hasWork(OperationKind::write);
    const bool readsWait = state_.operations.hasWork(OperationKind::read);
    if (writesWait || readsWait) {
        keepPollingOut(*state_.api.context, writesWait, readsWait);
        return state_.api.nextRequest();
    }
    if (state_.passes.isPolling()) {
        restUntil_ = std::min(restUntil_, state_.passes.begin());
    }
    return nullptr;
}

// Under the gate, with nothing in flight.
void CycleThread::search(Clock::time_point now)
{
    if (const std::optional<SearchTries::End> end = tries_.takeEnd()) {
        polled_.tried(end->end, end->code, now);
    }
    polled_.giveIfDue(now);
    tries_.begin(polled_.search(), polled_.polled(), now);
}

ExchangeEnd CycleThread::perform(const Protocol& request)
{
    const RequestInFlight& inFlight = state_.inFlight; // only this thread changes it
    exchange_.generation = inFlight.generation();
    exchange_.attempt = inFlight.attempt();
    exchange_.kind = inFlight.kind();
    exchange_.expectedReply = static_cast<quint32>(request.replyLength);
    elements_ = static_cast<quint8>(request.frame.at(static_cast<int>(wire::kCountOffset)));
    if (state_.stationsSwitched.load(std::memory_order_relaxed) &&
        state_.api.stationDisabled(request.var.station)) {
        suppress(request);
    } else {
        link_.exchange(request.frame.constData(), static_cast<size_t>(request.frameLength), reply_,
                       exchange_);
    }
    problem_ = exchange_.isGood() ? QString() : endInWords(exchange_, link_.problem());
    noteRefusal(request);
    // Before the driver reports anything: whoever awaits an operation finds its exchange told.
    state_.feed.publish(exchange_, request.frame.constData(), reply_.constData());
    return exchange_.end;
}

void CycleThread::suppress(const Protocol& request)
{
    exchange_.sentAt = Clock::now();
    exchange_.end = ExchangeEnd::suppressed;
    exchange_.sentBytes = 0;
    exchange_.receivedBytes = 0;
    exchange_.foreignFrames = 0;
    exchange_.replySize = 0;
    exchange_.exceptionCode = 0;
    exchange_.requestSize = static_cast<quint32>(request.frameLength);
    link_.idle(kSuppressedMs);
    exchange_.endedAt = Clock::now();
    exchange_.endedWall = WallClock::now();
    if (stopping_) {
        exchange_.end = ExchangeEnd::stopped;
    }
}

void CycleThread::noteRefusal(const Protocol& request)
{
    refused_.clear();
    if (exchange_.kind == RequestKind::poll && exchange_.end == ExchangeEnd::exception &&
        CulpritSearch::blamesAddress(exchange_.exceptionCode)) {
        refused_ = plannedFrame(request).elements;
    }
}

void CycleThread::takeReply()
{
    const bool received = exchange_.end == ExchangeEnd::reply;
    if (!received) {
        reply_.resize(0); // the driver logs what it is handed
    }
    const std::lock_guard<std::mutex> gate(state_.gate);
    RequestInFlight& inFlight = state_.inFlight;
    inFlight.attempted(exchange_, problem_);
    events_.clear();
    if (exchange_.end == ExchangeEnd::exception && tries_.isCarriedBy(inFlight)) {
        giveUpAtNextFailure(*state_.api.context); // asked again it would be refused again
    }
    const int status = state_.api.takeReply(&reply_, received ? reply_.size() : 0)->status;
    if (status != kStatusRepeat) {
        endRequest(status == kStatusGood);
    }
}

// Under the gate: the driver is through with the request.
void CycleThread::endRequest(bool good)
{
    RequestInFlight& inFlight = state_.inFlight;
    if (inFlight.kind() == RequestKind::poll && inFlight.generation() == state_.generation) {
        endPoll(good);
    }
    tries_.requestEnded(inFlight, exchange_);
    inFlight.end(state_.operations, good ? reply_ : QByteArray());
    if (!good) {
        state_.feed.publish(entryNow(FeedKind::gaveUp, problem_));
    }
    reportEnded(!good);
}

void CycleThread::endPoll(bool good)
{
    state_.passes.asked(elements_, exchange_.endedAt);
    polled_.polledRequestEnded(good, refused_, exchange_.endedAt);
}

void CycleThread::reportEnded(bool gaveUp)
{
    OperationTracker& operations = state_.operations;
    for (const FinishedVariable& variable : events_.finished) {
        if (const auto id = operationOf(variable.hostKey, variable.varKey)) {
            operations.ended(*id, kTimeOver); // what is left of it was taken out of the list
        }
    }
    const RequestKind kind = state_.inFlight.kind();
    if (gaveUp && kind != RequestKind::poll) {
        // With the batch the driver dropped everything queued behind it. The gate is held, so
        // nothing that was given to it is in its list now.
        operations.dropGiven(kind == RequestKind::write ? OperationKind::write
                                                        : OperationKind::read,
                             "dropped behind one that was given up: " + problem_);
    }
}

void CycleThread::withdrawExpired(SessionState& state)
{
    const std::vector<OperationId> expired = state.operations.takeExpired(Clock::now());
    if (expired.empty()) {
        return;
    }
    std::set<quint64> keys;
    for (const OperationId& id : expired) {
        keys.insert(id.key);
    }
    const auto goes = [&](int hostKey, int varKey) {
        const std::optional<OperationId> id = operationOf(hostKey, varKey);
        return id && keys.count(id->key) != 0;
    };
    Communication_Protocol& driver = *state.api.context;
    withdraw(driver, RequestList::writes, goes, state.inFlight.entriesOf(OperationKind::write));
    withdraw(driver, RequestList::onceReads, goes, state.inFlight.entriesOf(OperationKind::read));
    const QString why = whyTimeIsOver(state.connection);
    for (const OperationId& id : expired) {
        if (!state.inFlight.carries(id)) {
            state.operations.ended(id, why);
        }
    }
}

} // namespace tavmir::host
