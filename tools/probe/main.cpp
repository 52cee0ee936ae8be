// tavmir-probe: shows on a panel that the driver loads, is the right one, and reaches a controller.
// Needs QtCore 4.8 or 5 and nothing else.
#include "driver_library.h"
#include "options.h"
#include "real_read.h"
#include "record_table.h"

#include <cstdio>
#include <string>
#include <vector>

using namespace tavmir::probe;

namespace
{

const int kFailed = 1;
const int kWrongUsage = 2;

void printRecords(bool members)
{
    for (const RecordLayout& record : recordTable()) {
        std::printf("record     %-22s size %4zu, alignment %zu\n", record.name, record.size,
                    record.alignment);
        if (!members) {
            continue;
        }
        for (const Member& member : record.members) {
            std::printf("           %6zu %-20s %zu\n", member.offset, member.name, member.size);
        }
    }
}

bool printNames(const DriverLibrary& library)
{
    const std::vector<std::string> missing = library.missingNames();
    const std::size_t all = DriverLibrary::expectedNames().size();
    std::printf("names      %zu of %zu resolved\n", all - missing.size(), all);
    for (const std::string& name : missing) {
        std::printf("missing    %s\n", name.c_str());
    }
    return missing.empty();
}

bool readAndPrint(const DriverLibrary& library, const Options& options, ProbeCapture& capture)
{
    std::printf("read       type %d, station %d, %d at %d, from %s port %d\n", options.dataType,
                options.station, options.count, options.elementAddress,
                options.controller.host.c_str(), options.controller.port);
    std::vector<unsigned int> values;
    const std::string error = readValues(library.calls(), options, capture, values);
    if (!error.empty()) {
        std::printf("failed     %s\n", error.c_str());
        return false;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::printf("value      [%zu] %u (0x%X)\n", i, values[i], values[i]);
    }
    return true;
}

bool probe(const Options& options, ProbeCapture& capture)
{
    DriverLibrary library;
    const std::string error = library.load(options.library);
    if (!error.empty()) {
        std::printf("failed     %s\n", error.c_str());
        return false;
    }
    std::printf("library    %s\n", library.path().c_str());
    std::printf("version    %s (probe %s)\n", library.version().c_str(), TAVMIR_VERSION);
    std::printf("Qt         %s (probe built with %s)\n", qVersion(), QT_VERSION_STR);
    std::printf("pointers   %zu bits\n", 8 * sizeof(void*));
    printRecords(options.records);
    if (!printNames(library)) {
        return false;
    }
    return options.controller.host.empty() || readAndPrint(library, options, capture);
}

} // namespace

int main(int argc, char* argv[])
{
    Options options;
    const std::string error = parseOptions(argc - 1, argv + 1, options);
    if (!error.empty()) {
        std::fprintf(stderr, "tavmir-probe: %s\nTry: tavmir-probe --help\n", error.c_str());
        return kWrongUsage;
    }
    if (options.help) {
        std::fputs(usage(), stdout);
        return 0;
    }
    if (options.version) {
        std::printf("tavmir-probe %s\n", TAVMIR_VERSION);
        return 0;
    }
    ProbeCapture capture;
    const std::string problem =
        options.capture.empty() ? std::string() : capture.open(options.capture, options.controller);
    if (!problem.empty()) {
        std::fprintf(stderr, "tavmir-probe: %s\n", problem.c_str());
        return kWrongUsage;
    }
    const bool good = probe(options, capture);
    std::printf("%s\n", good ? "OK" : "NOT OK");
    return good ? 0 : kFailed;
}
