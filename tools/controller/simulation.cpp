#include "simulation.h"

#include "element_store.h"

#include "project/value_format.h"

#include <utility>

namespace tavmir::controller
{

namespace
{

QString memoryFull(const QString& path)
{
    return QString("%1: the memory has no room for this value").arg(path);
}

} // namespace

Simulation::Simulation(FaultPlan faults, std::size_t mostMemoryPages)
    : memory_(mostMemoryPages), faults_(std::move(faults))
{
}

bool Simulation::load(const project::Project& project, QString* problem)
{
    station_ = static_cast<std::uint8_t>(project.connection.station);
    names_ = project::ElementNames(project);
    return storeInitialValues(project, problem) && addSignals(project, problem);
}

bool Simulation::storeInitialValues(const project::Project& project, QString* problem)
{
    for (const project::InitialValue& initial : project.initial) {
        const project::Resolution place = project::resolveAddress(project, initial.address);
        if (!place.ok) {
            *problem = QString("%1: %2").arg(initial.path, place.problem);
            return false;
        }
        const project::EncodedValue value =
            project::encodeValue(place.element, project::Format::automatic, initial.value);
        if (!value.ok) {
            *problem = QString("%1: %2").arg(initial.path, value.problem);
            return false;
        }
        if (!storeElement(place.element, value.bytes, station_, memory_)) {
            *problem = memoryFull(initial.path);
            return false;
        }
    }
    return true;
}

bool Simulation::addSignals(const project::Project& project, QString* problem)
{
    for (const project::Signal& signal : project.movingSignals) {
        const project::Resolution place = project::resolveAddress(project, signal.address);
        if (!place.ok || place.element.type == project::DataType::text) {
            *problem = QString("%1: %2").arg(signal.path,
                                             place.ok ? "a text has no signal" : place.problem);
            return false;
        }
        signals_.add(signal, place.element);
    }
    if (advanceTo(0)) {
        return true;
    }
    *problem = memoryFull("signals");
    return false;
}

Simulation::Outcome Simulation::take(const QByteArray& frame, std::int64_t nowUs)
{
    Outcome outcome = respond(frame, nowUs);
    if (watcher_) {
        watcher_(outcome);
    }
    return outcome;
}

Simulation::Outcome Simulation::respond(const QByteArray& frame, std::int64_t nowUs)
{
    Outcome outcome;
    outcome.request = parseRequest(frame);
    outcome.fault = faults_.next();
    if (!faultRow(outcome.fault).carriesOut) {
        statistics_.countFault(outcome.fault);
        statistics_.countLostRequest(outcome.request);
        return outcome;
    }
    outcome.verdict = gatekeeper_.judge(outcome.request, nowUs);
    statistics_.countVerdict(outcome.verdict);
    if (!outcome.verdict.isAnswered) {
        outcome.fault = FaultKind::None; // there is no reply that it could happen to
        statistics_.countLostRequest(outcome.request);
        return outcome;
    }
    statistics_.countFault(outcome.fault);
    if (faultRow(outcome.fault).change) {
        faultRow(outcome.fault).change(outcome.request, faults_.detail());
    }
    const Answer answer = answerTo(outcome);
    outcome.reply = answer.reply;
    outcome.carriedOut = answer.exceptionCode == 0;
    statistics_.countRequest(outcome.request, answer.exceptionCode);
    return outcome;
}

Answer Simulation::answerTo(const Outcome& outcome)
{
    const std::uint8_t exceptionCode = outcome.verdict.exceptionCode;
    return exceptionCode != 0 ? refuse(outcome.request, exceptionCode)
                              : carryOut(outcome.request, memory_);
}

bool Simulation::advanceTo(std::int64_t ms)
{
    return signals_.advanceTo(ms, station_, memory_);
}

} // namespace tavmir::controller
