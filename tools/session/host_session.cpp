// Set-up in the driver's order, and its data exchange.
#include "host_session.h"

#include "plan/host_checks.h"
#include "plan/label_tree.h"

namespace tavmir::host
{

using project::Element;

namespace
{

constexpr int kWritesToController = 2;
constexpr int kWritesToCaches = 0;
constexpr int kOnceReadRoom = 1024; // what is beyond, the driver drops in silence

LinkOptions linkOptions(const project::Connection& connection, const SessionOptions& options)
{
    LinkOptions link;
    link.host = connection.host;
    link.port = connection.port;
    link.connectTimeoutMs = connection.connectTimeoutMs;
    link.replyTimeoutMs = connection.replyTimeoutMs;
    link.reconnectMinMs = connection.reconnectMinMs;
    link.reconnectMaxMs = connection.reconnectMaxMs;
    link.jitterSeed = options.jitterSeed;
    return link;
}

} // namespace

HostSession::HostSession(const DriverApi& api, const project::Project& project,
                         const SessionOptions& options, TcpLink::Observer observer)
    : api_(api), project_(project), polled_(polledElements(project)),
      cycle_(std::make_unique<CycleThread>(api, shared_, linkOptions(project.connection, options),
                                           options.pauseMs, std::move(observer), options.idleMs))
{
    for (const project::Polled& entry : project.polled) {
        if (entry.station) {
            stations_.insert(entry.address, *entry.station);
        }
    }
    for (const PolledElement& entry : polled_) {
        stations_.insert(entry.element.addressText, entry.station);
    }
    if (!options.polls) {
        polled_.clear();
    }
}

HostSession::~HostSession()
{
    stop();
}

QString HostSession::setUp()
{
    const project::Connection& connection = project_.connection;
    const QString refusal = refusalOfPolling(project_, polled_);
    if (!refusal.isEmpty()) {
        return refusal;
    }
    comInfo_.defaultStation = connection.station;
    comInfo_.comStation = connection.station;
    comInfo_.retryLimit = connection.retryLimit;
    comInfo_.stationMode = connection.ownStations ? 1 : 0;
    comInfo_.writeMode = connection.writesToController ? kWritesToController : kWritesToCaches;
    api_.setComInfo(&comInfo_);
    api_.registerCallbacks(DriverEvents::onVariableDone, DriverEvents::onCommunicationFailed);
    api_.setLocalAreas(localBits_, localWords_, indexWords_);
    QList<Label_Type_Info> labels = labelTree(project_);
    api_.passLabels(&labels);
    return poll(polled_);
}

QString HostSession::poll(const std::vector<PolledElement>& polled)
{
    const QString refusal = refusalOfPolling(project_, polled);
    if (!refusal.isEmpty()) {
        return refusal;
    }
    AgeTable ages(wireOrder(polled));
    const size_t expected = ages.size();
    QList<HOSTVAR> records = hostRecords(polled);
    const std::lock_guard<std::mutex> gate(shared_.gate);
    if (!records.isEmpty()) {
        const int filed = api_.rebuildPolled(&records);
        if (static_cast<size_t>(filed) != expected) {
            return QString("the driver polls %1 of %2 elements").arg(filed).arg(expected);
        }
    }
    shared_.ages = std::move(ages);
    if (&polled != &polled_) {
        polled_ = polled;
    }
    cycle_->wake();
    return QString();
}

QByteArray HostSession::cachedValue(const Element& element)
{
    QByteArray bytes;
    const std::lock_guard<std::mutex> gate(shared_.gate);
    api_.readCached(element.addressText, 0, 0, 0, &bytes, project::driverCount(element));
    return bytes;
}

std::optional<Clock::time_point> HostSession::lastPolled(const Element& element)
{
    const std::lock_guard<std::mutex> gate(shared_.gate);
    return shared_.ages.lastRead(element);
}

size_t HostSession::polledElementsOnWire()
{
    const std::lock_guard<std::mutex> gate(shared_.gate);
    return shared_.ages.size();
}

int HostSession::stationOf(const Element& element) const
{
    const int fallback = project_.connection.station;
    return project_.connection.ownStations ? stations_.value(element.addressText, fallback)
                                           : fallback;
}

std::optional<OperationId> HostSession::readOnce(const Element& element, const Deadline& deadline)
{
    if (!refusalOfExchange(project_, element).isEmpty()) {
        return std::nullopt;
    }
    OperationTracker& operations = shared_.operations;
    const int elements = project::wireElementCount(element);
    const int station = stationOf(element);
    if (!operations.awaitIdle(OperationKind::read, station, deadline)) {
        return std::nullopt;
    }
    OperationId id;
    for (;;) {
        if (!operations.awaitRoom(OperationKind::read, kOnceReadRoom - elements, deadline)) {
            return std::nullopt;
        }
        const std::lock_guard<std::mutex> gate(shared_.gate);
        if (!operations.awaitRoom(OperationKind::read, kOnceReadRoom - elements, Deadline(0))) {
            continue; // another thread was faster
        }
        id = operations.begin(OperationKind::read, elements, station);
        RW_VAR variable;
        variable.hostKey = OperationTracker::hostKey(OperationKind::read);
        variable.varKey = id.key;
        variable.addressText = element.addressText;
        variable.station = station;
        variable.count = project::driverCount(element);
        if (api_.addOnceRead(&variable) == 0) {
            operations.cancel(id);
        }
        break;
    }
    cycle_->wake();
    return id;
}

OperationOutcome HostSession::write(const Element& element, const QByteArray& bytes,
                                    const Deadline& deadline)
{
    const QString refusal = refusalOfExchange(project_, element);
    if (!refusal.isEmpty()) {
        return {OperationState::failed, refusal};
    }
    if (element.bitNumber) {
        return writeBit(element, bytes, deadline);
    }
    const std::optional<OperationId> id = queueWrite(element, bytes, deadline);
    return id ? await(*id, deadline)
              : OperationOutcome{OperationState::failed, "earlier writes did not end in time"};
}

std::optional<OperationId> HostSession::queueWrite(const Element& element, const QByteArray& bytes,
                                                   const Deadline& deadline)
{
    if (!refusalOfExchange(project_, element).isEmpty() || element.bitNumber) {
        return std::nullopt;
    }
    const std::lock_guard<std::mutex> order(writeOrder_);
    return giveWrite(element, bytes, deadline);
}

QString HostSession::queueRecord(RW_VAR record, std::optional<OperationId>& id)
{
    record.hostKey = OperationTracker::hostKey(OperationKind::write);
    const QString refusal = refusalOfWriteRecord(&record);
    if (!refusal.isEmpty()) {
        return refusal;
    }
    const std::lock_guard<std::mutex> order(writeOrder_);
    const std::lock_guard<std::mutex> gate(shared_.gate);
    id = shared_.operations.begin(OperationKind::write, 1, record.station);
    record.varKey = id->key;
    api_.addWrite(&record);
    cycle_->wake();
    return QString();
}

OperationOutcome HostSession::writeBit(const Element& element, const QByteArray& bytes,
                                       const Deadline& deadline)
{
    const std::lock_guard<std::mutex> order(writeOrder_);
    if (!writesToController()) {
        return await(*giveWrite(element, bytes, deadline), deadline);
    }
    // A queued write of the word is not in the cache yet.
    if (!shared_.operations.awaitIdle(OperationKind::write, -1, deadline)) {
        return {OperationState::failed, "earlier writes did not end in time"};
    }
    const std::optional<OperationId> reading = readOnce(element, deadline);
    const OperationOutcome word =
        reading ? await(*reading, deadline)
                : OperationOutcome{OperationState::failed, "earlier reads did not end in time"};
    if (!word.ok()) {
        return {OperationState::failed, "its word could not be read: " + word.reason};
    }
    const std::optional<OperationId> writing = giveWrite(element, bytes, deadline);
    return writing ? await(*writing, deadline)
                   : OperationOutcome{OperationState::failed, "earlier writes did not end in time"};
}

std::optional<OperationId> HostSession::giveWrite(const Element& element, QByteArray bytes,
                                                  const Deadline& deadline)
{
    OperationTracker& operations = shared_.operations;
    const int station = stationOf(element);
    // A request carries one station: writes to two of them must not share a batch.
    if (!operations.awaitIdle(OperationKind::write, station, deadline)) {
        return std::nullopt;
    }
    OperationId id;
    {
        const std::lock_guard<std::mutex> gate(shared_.gate);
        id = operations.begin(OperationKind::write, project::wireElementCount(element), station);
        const int hostKey = OperationTracker::hostKey(OperationKind::write);
        const int queued = api_.writeValue(element.addressText, 0, QString(), station, &bytes,
                                           project::driverCount(element), hostKey, id.key);
        if (!writesToController()) {
            operations.finished(hostKey, id.key, true, QString()); // it is in the caches
        } else if (queued == 0) {
            operations.cancel(id);
        }
    }
    cycle_->wake();
    return id;
}

void HostSession::enableStation(int station, bool enabled)
{
    shared_.stationsSwitched = true;
    api_.enableStation(station, enabled ? 1 : 0);
}

} // namespace tavmir::host
