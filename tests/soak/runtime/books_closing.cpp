// The end of the books: what is left is compared, and said in words.
#include "books.h"

#include <cstdio>

namespace tavmir::soak
{

namespace
{

const char* const kKindNames[] = {"writes", "reads"};

std::string line(const char* name, const Answers& answers)
{
    std::string text = std::string(name) + ": " + std::to_string(answers.asked) + " asked";
    for (int state = 0; state < host::kOutcomeStates; ++state) {
        text += ", " + std::to_string(answers.told[state]) + " " +
                host::outcomeWord(static_cast<OutcomeState>(state));
    }
    return text + ", " + std::to_string(answers.underWay) +
           " under way when their time was over, " + std::to_string(answers.notAwaited);
}

} // namespace

void Books::close(const host::LineFigures& figures, const controller::BitMemory& memory)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!open_.empty()) {
        find(std::to_string(open_.size()) + " operations never ended");
    }
    if (figures.missed > 0) {
        find("the reader of the feed missed " + std::to_string(figures.missed) + " entries");
    }
    closeFigures(figures, OperationKind::write, bitWrites_);
    closeFigures(figures, OperationKind::read, bitReads_);
    closeMemory(memory);
}

// The feed's ends are those that callers were told, and one for each call that was told nothing.
void Books::closeFigures(const host::LineFigures& figures, OperationKind kind, std::uint64_t more)
{
    const std::string name = kKindNames[static_cast<int>(kind)];
    const Answers& answers = of(kind);
    if (figures.ended(kind) != answers.asked + more) {
        find(name + ": " + std::to_string(answers.asked + more) + " asked, " +
             std::to_string(figures.ended(kind)) + " ended");
    }
    if (foreignEnds_[static_cast<int>(kind)] != more) {
        find(name + " of bits: " + std::to_string(more) + " asked, " +
             std::to_string(foreignEnds_[static_cast<int>(kind)]) + " ended");
    }
    std::uint64_t untold = answers.underWay + answers.notAwaited;
    untold += kind == OperationKind::write ? bitAnswers_.underWay : bitReads_;
    std::uint64_t left = 0;
    for (int state = 0; state < host::kOutcomeStates; ++state) {
        std::uint64_t told = answers.told[state];
        told += kind == OperationKind::write ? bitAnswers_.told[state] : 0;
        const std::uint64_t ended = figures.ended(kind, static_cast<OutcomeState>(state));
        if (ended < told) {
            find(name + ": " + std::to_string(told) + " were told " +
                 host::outcomeWord(static_cast<OutcomeState>(state)) + ", the feed has " +
                 std::to_string(ended));
        }
        left += ended - told;
    }
    if (left != untold) {
        find(name + ": nobody was told how " + std::to_string(untold) + " ended, the feed has " +
             std::to_string(left) + " more");
    }
}

void Books::closeMemory(const controller::BitMemory& memory)
{
    for (std::size_t i = 0; i < plant_.places().size(); ++i) {
        const int number = static_cast<int>(i);
        const Place& place = plant_.places()[i];
        const std::string name = nameOf(place.variable) + " part " + std::to_string(place.part);
        const std::string finding = memory_.element(number).judge();
        if (!finding.empty()) {
            find(name + ": " + finding);
        }
        for (const int station : kStations) {
            const std::uint32_t expected = station == place.station ? memory_.now(number) : 0;
            const std::uint32_t value =
                memory.read(static_cast<std::uint8_t>(station), place.address, place.bits);
            if (value != expected) {
                find(name + " at station " + std::to_string(station) + " holds " +
                     std::to_string(value) + ", not " + std::to_string(expected));
            }
        }
    }
}

std::string Books::text() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return line("writes", answers_[0]) + " not awaited\n" + line("reads", answers_[1]) +
           " not awaited\n" + line("bits of words", bitAnswers_) + " not begun\n" +
           "at the controller: " + std::to_string(memory_.writes()) + " write requests, " +
           std::to_string(memory_.repeated()) + " of them repeated, " +
           std::to_string(memory_.reads()) + " read requests\n" + std::to_string(readsChecked_) +
           " reads and " + std::to_string(polledChecked_) + " polled values checked, " +
           std::to_string(tooLongAgo_) + " could not be; " + std::to_string(findingCount_) +
           " findings\n";
}

} // namespace tavmir::soak
