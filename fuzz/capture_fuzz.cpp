// Captures of any bytes through everything that `diagnose` does, and its report both ways: it ends,
// and what it says can be printed.
#include "host/diagnose_report.h"

#include <QtCore/QJsonDocument>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace
{

using namespace tavmir;

void expectPrintable(const QStringList& lines)
{
    for (const QString& line : lines) {
        for (const QChar character : line) {
            if (!character.isPrint()) {
                std::abort();
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // fmemopen takes no empty buffer.
    std::FILE* file = size == 0 ? nullptr : ::fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
    if (file == nullptr) {
        return 0;
    }
    std::string problem;
    const auto reader = diagnose::CaptureReader::of(file, problem);
    if (!reader) {
        if (problem.empty()) {
            std::abort();
        }
        return 0;
    }
    const diagnose::Diagnosis diagnosis = diagnose::diagnose(
        *reader, diagnose::DiagnosisSettings(), [](const wire::ElementInFrame* first, std::size_t) {
            return wire::elementInWords(*first);
        });
    expectPrintable(host::diagnosisLines(diagnosis, "fuzz"));
    if (QJsonDocument(host::diagnosisJson(diagnosis, "fuzz")).toJson().isEmpty()) {
        std::abort();
    }
    return 0;
}
