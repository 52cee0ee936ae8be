// Project files of any bytes: refused in one line, or a project whose polled addresses resolve.
#include "project/address_resolver.h"
#include "project/project_reader.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tavmir::project;
    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const ReadOutcome outcome = readProject(json, QString("fuzz"));
    if (!outcome.project) {
        if (outcome.error.isEmpty() || outcome.error.contains('\n')) {
            std::abort();
        }
        return 0;
    }
    for (const Polled& polled : outcome.project->polled) {
        if (!resolveAddress(*outcome.project, polled.address).ok) {
            std::abort();
        }
    }
    return 0;
}
