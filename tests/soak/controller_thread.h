// The simulated controller with seeded faults, on a thread of its own.
#ifndef TAVMIR_TESTS_SOAK_CONTROLLER_THREAD_H
#define TAVMIR_TESTS_SOAK_CONTROLLER_THREAD_H

#include "controller/server.h"
#include "controller/simulation.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

namespace tavmir::soak
{

enum class Frames {
    whole, // everything that a connection can do to frames, but for their halves
    half,  // frames that end in their middle, instead of late and changed ones
    both   // one after the other, again and again: whole ones, for a while late and lost ones only,
           // a pause for what is late still, half ones
};

// How bad the line is.
struct Line {
    std::uint64_t seed = 1;
    double rate = 1; // scales all faults; 1 is about one reply in four
    Frames frames = Frames::whole;
};

class ControllerThread
{
public:
    // Starts to listen on a free loopback port.
    //   prepare  what the controller holds at first; called once, here
    ControllerThread(const Line& line, const controller::ServerSettings& settings,
                     const std::function<void(controller::Simulation&)>& prepare,
                     std::size_t mostMemoryPages = controller::BitMemory::kDefaultMostPages);
    ~ControllerThread();

    ControllerThread(const ControllerThread&) = delete;
    ControllerThread& operator=(const ControllerThread&) = delete;

    int port() const { return port_; }

    // Faults so far. Any thread.
    std::uint64_t faults() const { return faults_; }

    // From now on every reply is right. Any thread.
    void calmDown() { calm_ = true; }

    // Ends the thread; memory and statistics may be looked at afterwards.
    void stop();
    controller::Simulation& simulation() { return simulation_; }

private:
    enum class Phase { whole, stale, pause, half, calm };

    void run(const controller::ServerSettings& settings);
    Phase phaseAt(std::chrono::milliseconds time, int lateMs) const;
    void begin(Phase phase);

    Line line_;
    controller::Simulation simulation_;
    std::uint64_t plans_ = 0; // of faults, made so far
    std::atomic<int> port_{0};
    std::atomic<std::uint64_t> faults_{0};
    std::atomic<bool> calm_{false};
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

} // namespace tavmir::soak

#endif
