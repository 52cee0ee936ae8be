#include "controller_thread.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <chrono>
#include <numeric>

namespace tavmir::soak
{

namespace
{

using controller::FaultKind;
using std::chrono::milliseconds;

using Chance = std::pair<FaultKind, double>;

// Everything that a connection can do to frames.
const std::vector<Chance> kWholeFrames = {
    {FaultKind::Drop, 0.03},      {FaultKind::Delay, 0.06},      {FaultKind::Late, 0.03},
    {FaultKind::Truncate, 0.04},  {FaultKind::Oversize, 0.04},   {FaultKind::Corrupt, 0.04},
    {FaultKind::Duplicate, 0.04}, {FaultKind::Disconnect, 0.02}, {FaultKind::Refuse, 0.002},
    {FaultKind::Lose, 0.04}};

// Replies that come when another request waits for its own, which may never have been carried out.
const std::vector<Chance> kStaleFrames = {{FaultKind::Late, 0.2}, {FaultKind::Lose, 0.15}};

// Half frames. Without frames that come late: one of them could fill the gap, and nothing in the
// protocol tells such a frame from a right one.
const std::vector<Chance> kHalfFrames = {{FaultKind::Cut, 0.1},
                                         {FaultKind::Drop, 0.05},
                                         {FaultKind::Disconnect, 0.02},
                                         {FaultKind::Lose, 0.04}};

constexpr milliseconds kWholeTime{3500};
constexpr milliseconds kStaleTime{1000};
constexpr milliseconds kHalfTime{1500};

controller::FaultPlan faultPlan(const std::vector<Chance>& chances, double rate, std::uint64_t seed)
{
    std::vector<controller::FaultRule> rules;
    for (const Chance& chance : chances) {
        controller::FaultRule rule;
        rule.kind = chance.first;
        rule.probability = chance.second * rate;
        rules.push_back(rule);
    }
    return controller::FaultPlan(rules, seed);
}

} // namespace

ControllerThread::ControllerThread(const Line& line, const controller::ServerSettings& settings,
                                   const std::function<void(controller::Simulation&)>& prepare,
                                   std::size_t mostMemoryPages)
    : line_(line), simulation_(controller::FaultPlan(), mostMemoryPages)
{
    prepare(simulation_);
    thread_ = std::thread([this, settings] { run(settings); });
    while (port_ == 0) {
        std::this_thread::sleep_for(milliseconds(1));
    }
}

ControllerThread::~ControllerThread()
{
    stop();
}

void ControllerThread::stop()
{
    stopping_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
}

ControllerThread::Phase ControllerThread::phaseAt(milliseconds time, int lateMs) const
{
    if (calm_) {
        return Phase::calm;
    }
    if (line_.frames != Frames::both) {
        return line_.frames == Frames::whole ? Phase::whole : Phase::half;
    }
    // Late frames are all there before the first half one.
    const milliseconds pause(2 * lateMs);
    const milliseconds place = time % (kWholeTime + kStaleTime + pause + kHalfTime);
    if (place < kWholeTime) {
        return Phase::whole;
    }
    if (place < kWholeTime + kStaleTime) {
        return Phase::stale;
    }
    return place < kWholeTime + kStaleTime + pause ? Phase::pause : Phase::half;
}

void ControllerThread::begin(Phase phase)
{
    const std::uint64_t seed = line_.seed + plans_++;
    switch (phase) {
    case Phase::whole:
        simulation_.faults() = faultPlan(kWholeFrames, line_.rate, seed);
        break;
    case Phase::stale:
        simulation_.faults() = faultPlan(kStaleFrames, line_.rate, seed);
        break;
    case Phase::half:
        simulation_.faults() = faultPlan(kHalfFrames, line_.rate, seed);
        break;
    case Phase::pause:
    case Phase::calm:
        simulation_.faults() = controller::FaultPlan();
        break;
    }
}

void ControllerThread::run(const controller::ServerSettings& settings)
{
    QEventLoop loop; // first: it is what makes this a thread that sockets can live on
    controller::Server server(settings, simulation_);
    const auto started = std::chrono::steady_clock::now();
    Phase phase = phaseAt(milliseconds(0), settings.lateMs);
    begin(phase);
    const bool listens = server.listen(QHostAddress(QHostAddress::LocalHost), 0);
    port_ = listens ? server.port() : -1;
    QTimer ticks; // so that the loop looks up now and then
    ticks.start(5);
    while (!stopping_) {
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        const auto& faults = simulation_.statistics().faults;
        faults_ = std::accumulate(faults.begin(), faults.end(), std::uint64_t{0});
        const auto time =
            std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - started);
        const Phase now = phaseAt(time, settings.lateMs);
        if (now != phase) {
            phase = now;
            begin(phase);
        }
    }
}

} // namespace tavmir::soak
