// Set-up in the driver's order, and its data exchange.
#include "host_session.h"

#include "plan/host_checks.h"
#include "plan/label_tree.h"

#include <algorithm>

namespace tavmir::host
{

using project::Element;

namespace
{

constexpr int kWritesToController = 2;
constexpr int kWritesToCaches = 0;

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

HostSession::HostSession(std::unique_ptr<Driver> driver, const project::Project& project,
                         const SessionOptions& options)
    : driver_(std::move(driver)), project_(project), mostRetries_(options.mostRetries),
      state_(driver_->api(), options.passMs), list_(state_, options.searches),
      index_(std::make_shared<PolledIndex>(project)),
      cycle_(std::make_unique<CycleThread>(state_, list_, linkOptions(project.connection, options),
                                           options.idleMs)),
      queue_(state_, project, [this] { cycle_->wake(); }), bits_(queue_)
{
    if (options.polls) {
        polled_ = polledElements(project);
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
    comInfo_.retryLimit = std::min(connection.retryLimit, mostRetries_);
    comInfo_.stationMode = connection.ownStations ? 1 : 0;
    comInfo_.writeMode = connection.writesToController ? kWritesToController : kWritesToCaches;
    const DriverApi& api = driver_->api();
    api.setComInfo(&comInfo_);
    api.registerCallbacks(DriverEvents::onVariableDone, DriverEvents::onCommunicationFailed);
    api.setLocalAreas(localBits_, localWords_, indexWords_);
    QList<Label_Type_Info> labels = labelTree(project_);
    api.passLabels(&labels);
    return poll(polled_);
}

QString HostSession::poll(const std::vector<PolledElement>& polled)
{
    const QString refusal = refusalOfPolling(project_, polled);
    if (!refusal.isEmpty()) {
        return refusal;
    }
    {
        const std::lock_guard<std::mutex> gate(state_.gate);
        const QString problem = list_.replace(polled);
        if (!problem.isEmpty()) {
            return problem;
        }
        const std::lock_guard<std::mutex> planned(plannedMutex_);
        const auto index = std::make_shared<PolledIndex>(*index_);
        index->add(polled);
        index_ = index;
        if (&polled != &polled_) {
            polled_ = polled;
        }
    }
    cycle_->wake();
    return QString();
}

std::vector<PolledElement> HostSession::polled() const
{
    const std::lock_guard<std::mutex> lock(plannedMutex_);
    return polled_;
}

size_t HostSession::polledElementsOnWire() const
{
    return wireOrder(polled()).size();
}

std::shared_ptr<const PolledIndex> HostSession::index() const
{
    const std::lock_guard<std::mutex> lock(plannedMutex_);
    return index_;
}

int HostSession::stationOf(const Element& element) const
{
    return index()->stationOf(element);
}

QByteArray HostSession::cachedValue(const Element& element)
{
    QByteArray bytes;
    const std::lock_guard<std::mutex> gate(state_.gate);
    driver_->api().readCached(element.addressText, 0, 0, 0, &bytes, project::driverCount(element));
    return bytes;
}

OperationId HostSession::queueRead(const Element& element, const Deadline& deadline)
{
    return queue_.read(element, stationOf(element), deadline);
}

OperationId HostSession::queueWrite(const Element& element, const QByteArray& bytes,
                                    const Deadline& deadline)
{
    const int station = stationOf(element);
    if (element.bitNumber) {
        return queue_.refuseWrite(element, station, "one bit of a word is not queued");
    }
    const auto order = bits_.lockOrder(deadline);
    if (!order.owns_lock()) {
        return queue_.refuseWrite(element, station, "earlier writes did not end in time");
    }
    return queue_.write(element, station, bytes, deadline);
}

OperationId HostSession::queueRecord(const RW_VAR& record, const Deadline& deadline)
{
    const auto order = bits_.lockOrder(deadline);
    return queue_.writeRecord(record, order.owns_lock() ? deadline : Deadline(0));
}

Outcome HostSession::read(const Element& element, const Deadline& deadline)
{
    return await(queueRead(element, deadline));
}

Outcome HostSession::write(const Element& element, const QByteArray& bytes,
                           const Deadline& deadline)
{
    return element.bitNumber ? bits_.write(element, stationOf(element), bytes, deadline)
                             : await(queueWrite(element, bytes, deadline));
}

void HostSession::enableStation(int station, bool enabled)
{
    state_.stationsSwitched = true;
    driver_->api().enableStation(station, enabled ? 1 : 0);
}

} // namespace tavmir::host
