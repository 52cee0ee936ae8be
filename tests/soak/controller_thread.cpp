#include "controller_thread.h"

#include "layout.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <chrono>
#include <numeric>

namespace tavmir::soak
{

namespace
{

using controller::FaultKind;

using Chance = std::pair<FaultKind, double>;

// Everything that a connection can do to frames.
const std::vector<Chance> kWholeFrames = {
    {FaultKind::Drop, 0.03},      {FaultKind::Delay, 0.06},      {FaultKind::Late, 0.03},
    {FaultKind::Truncate, 0.04},  {FaultKind::Oversize, 0.04},   {FaultKind::Corrupt, 0.04},
    {FaultKind::Duplicate, 0.04}, {FaultKind::Disconnect, 0.02}, {FaultKind::Refuse, 0.002}};

// Half frames. Without frames that come late: one of them could fill the gap, and nothing in the
// protocol tells such a frame from a right one.
const std::vector<Chance> kHalfFrames = {
    {FaultKind::Cut, 0.1}, {FaultKind::Drop, 0.05}, {FaultKind::Disconnect, 0.02}};

controller::FaultPlan faultPlan(const Line& line)
{
    std::vector<controller::FaultRule> rules;
    for (const Chance& chance : line.halfFrames ? kHalfFrames : kWholeFrames) {
        controller::FaultRule rule;
        rule.kind = chance.first;
        rule.probability = chance.second * line.rate;
        rules.push_back(rule);
    }
    return controller::FaultPlan(rules, line.seed);
}

} // namespace

ControllerThread::ControllerThread(const Line& line, const controller::ServerSettings& settings)
    : simulation_(faultPlan(line))
{
    for (int i = 0; i < kElements; ++i)
        simulation_.memory().write(kStation, static_cast<std::uint32_t>(addressOf(Constants, i)),
                                   32, constantOf(i));
    thread_ = std::thread([this, settings] { run(settings); });
    while (port_ == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

ControllerThread::~ControllerThread()
{
    stop();
}

void ControllerThread::stop()
{
    stopping_ = true;
    if (thread_.joinable())
        thread_.join();
}

void ControllerThread::run(const controller::ServerSettings& settings)
{
    QEventLoop loop; // first: it is what makes this a thread that sockets can live on
    controller::Server server(settings, simulation_);
    const bool listens = server.listen(QHostAddress(QHostAddress::LocalHost), 0);
    port_ = listens ? server.port() : -1;
    QTimer ticks; // so that the loop looks up now and then
    ticks.start(5);
    bool calm = false;
    while (!stopping_) {
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        const auto& faults = simulation_.statistics().faults;
        faults_ = std::accumulate(faults.begin(), faults.end(), std::uint64_t{0});
        if (calm_ && !calm) {
            simulation_.faults() = controller::FaultPlan();
            calm = true;
        }
    }
}

} // namespace tavmir::soak
