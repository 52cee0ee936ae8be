#include "capture_output.h"

#include <utility>

namespace tavmir::controller
{

namespace
{
constexpr int kGatherMs = 50;
} // namespace

CaptureOutput::CaptureOutput(const capture::CaptureOptions& options, const std::string& line,
                             capture::CaptureFiles::Tell tell)
    : files_(options, capture::originHere("tavmir-controller " TAVMIR_VERSION, line),
             std::move(tell)),
      writer_(files_)
{
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] { files_.flush(); });
}

void CaptureOutput::take(const capture::Packet& packet)
{
    writer_.take(packet);
    if (!timer_.isActive()) {
        timer_.start(kGatherMs);
    }
}

} // namespace tavmir::controller
