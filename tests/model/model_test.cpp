// Random sequences of host calls: driver and model agree after every call.
//
//   model_tests                      2,000 sequences of 200 calls, seed fixed
//   model_tests --long               1,000,000 calls, a seed of its own
//   model_tests --sequences N --calls N --seed N
//
// On a difference the sequence is shrunk, and the calls that remain are printed.
#include "model/session.h"
#include "model/sightings.h"
#include "model/step_table.h"

#include <rapidcheck.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

namespace
{

using namespace tavmir::model;

struct Options {
    unsigned long sequences = 2000;
    unsigned long calls = 200;
    unsigned long long seed = 20261121;
};

Options optionsFrom(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const char* value = i + 1 < argc ? argv[i + 1] : "0";
        if (std::strcmp(argv[i], "--long") == 0) {
            options.sequences = 5000;
            options.seed = std::random_device()();
        }
        if (std::strcmp(argv[i], "--sequences") == 0) {
            options.sequences = std::strtoul(value, nullptr, 10);
        }
        if (std::strcmp(argv[i], "--calls") == 0) {
            options.calls = std::strtoul(value, nullptr, 10);
        }
        if (std::strcmp(argv[i], "--seed") == 0) {
            options.seed = std::strtoull(value, nullptr, 10);
        }
    }
    return options;
}

struct Outcome {
    std::string difference;
    std::size_t calls = 0;
    std::vector<std::string> trace;
};

Outcome run(std::uint64_t world, const std::vector<Step>& steps, bool tracing, Sightings& sightings)
{
    Outcome outcome;
    Session session(world);
    session.tracing = tracing;
    for (const Step& step : steps) {
        ++outcome.calls;
        outcome.difference = session.perform(step);
        sightings.look(session.model());
        if (!outcome.difference.empty()) {
            break;
        }
    }
    outcome.trace = session.trace;
    return outcome;
}

rc::Gen<std::vector<Step>> sequenceOf(std::size_t calls)
{
    const auto step = rc::gen::map(rc::gen::noShrink(rc::gen::arbitrary<std::uint64_t>()),
                                   [](std::uint64_t word) {
                                       Step made;
                                       made.kind = static_cast<unsigned>(word % StepTable::kKinds);
                                       made.seed = word / StepTable::kKinds;
                                       return made;
                                   });
    return rc::gen::shrink(
        rc::gen::container<std::vector<Step>>(calls, step),
        [](std::vector<Step> steps) { return rc::shrink::removeChunks(std::move(steps)); });
}

} // namespace

int main(int argc, char** argv)
{
    // Qt 4 built with iconv takes the encoding of texts in lines from the C library.
    std::setlocale(LC_ALL, "");
    const Options options = optionsFrom(argc, argv);
    const std::string parameters = "max_success=" + std::to_string(options.sequences) +
                                   " seed=" + std::to_string(options.seed);
    setenv("RC_PARAMS", parameters.c_str(), 0);

    unsigned long long calls = 0;
    Sightings sightings;
    const bool agreed = rc::check("driver and model agree after every call", [&] {
        const auto world = *rc::gen::noShrink(rc::gen::arbitrary<std::uint64_t>());
        const auto steps = *sequenceOf(options.calls);
        const Outcome outcome = run(world, steps, false, sightings);
        calls += outcome.calls;
        if (outcome.difference.empty()) {
            return;
        }
        std::string report = outcome.difference + "\nafter:\n";
        for (const std::string& call : run(world, steps, true, sightings).trace) {
            report += "  " + call + "\n";
        }
        RC_FAIL(report);
    });
    for (const auto& sighting : sightings.counts()) {
        std::printf("%10lu  %s\n", sighting.second, sighting.first.c_str());
    }
    std::printf("%llu calls, seed %llu: %s\n", calls, options.seed,
                agreed ? "driver and model agree" : "they differ");
    // A short run need not meet everything.
    const bool isFullRun = options.sequences * options.calls >= 400000;
    bool complete = true;
    for (const std::string& name : sightings.missing()) {
        std::printf("never met: %s\n", name.c_str());
        complete = complete && !isFullRun;
    }
    return agreed && complete ? 0 : 1;
}
