// The inside of the simulated controller: memory, signals, faults, statistics, names. Requests go
// in as bytes, answers come out; it knows no socket and no clock. One thread only.
#ifndef TAVMIR_CONTROLLER_SIMULATION_H
#define TAVMIR_CONTROLLER_SIMULATION_H

#include "admission.h"
#include "bit_memory.h"
#include "fault_plan.h"
#include "request.h"
#include "request_handler.h"
#include "signal_board.h"
#include "statistics.h"

#include "project/element_names.h"
#include "project/project_model.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdint>
#include <functional>
#include <utility>

namespace tavmir::controller
{

class Simulation
{
public:
    explicit Simulation(FaultPlan faults = FaultPlan(),
                        std::size_t mostMemoryPages = BitMemory::kDefaultMostPages);

    // Takes the project's names, its initial values and its signals' values at time 0; all lie in
    // the memory of the project's default station. False when something cannot be: `problem` then
    // says what. Call once, before the first request.
    bool load(const project::Project& project, QString* problem);

    // Which requests are served at all; all of them when never called.
    void admit(AdmissionRules rules) { gatekeeper_ = Gatekeeper(std::move(rules)); }

    // What one request frame of FrameDecoder leads to.
    struct Outcome {
        Request request;  // as it arrived: a fault may have changed values on the way
        QByteArray reply; // whole and right, the fault still to be worked in; empty: none comes
        FaultKind fault = FaultKind::None; // of an unanswered request only what loses it
        Verdict verdict;
        bool carriedOut = false; // neither lost nor refused
    };
    // nowUs  of a steady clock, for the rate
    Outcome take(const QByteArray& frame, std::int64_t nowUs = 0);

    // Told of each request, before its answer goes out: for who keeps books of the memory.
    using Watcher = std::function<void(const Outcome& outcome)>;
    void watch(Watcher watcher) { watcher_ = std::move(watcher); }

    // The signals' values at `ms` milliseconds since the start. False: the memory is full.
    bool advanceTo(std::int64_t ms);
    bool hasSignals() const { return !signals_.isEmpty(); }

    BitMemory& memory() { return memory_; }
    FaultPlan& faults() { return faults_; }
    Statistics& statistics() { return statistics_; }
    const project::ElementNames& names() const { return names_; }

private:
    Outcome respond(const QByteArray& frame, std::int64_t nowUs);
    Answer answerTo(const Outcome& outcome);
    bool storeInitialValues(const project::Project& project, QString* problem);
    bool addSignals(const project::Project& project, QString* problem);

    BitMemory memory_;
    FaultPlan faults_;
    Gatekeeper gatekeeper_;
    Statistics statistics_;
    project::ElementNames names_;
    SignalBoard signals_;
    Watcher watcher_;
    std::uint8_t station_ = 1; // whose memory the project describes
};

} // namespace tavmir::controller

#endif
