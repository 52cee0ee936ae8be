// The simulated controller with seeded faults, on a thread of its own.
#ifndef TAVMIR_TESTS_SOAK_CONTROLLER_THREAD_H
#define TAVMIR_TESTS_SOAK_CONTROLLER_THREAD_H

#include "controller/server.h"
#include "controller/simulation.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

namespace tavmir::soak
{

// How bad the line is.
struct Line {
    std::uint64_t seed = 1;
    double rate = 1;         // scales all faults; 1 is about one reply in four
    bool halfFrames = false; // frames that end in their middle, instead of late and changed ones
};

class ControllerThread
{
public:
    // Starts to listen on a free loopback port.
    ControllerThread(const Line& line, const controller::ServerSettings& settings);
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
    void run(const controller::ServerSettings& settings);

    controller::Simulation simulation_;
    std::atomic<int> port_{0};
    std::atomic<std::uint64_t> faults_{0};
    std::atomic<bool> calm_{false};
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

} // namespace tavmir::soak

#endif
