// The controller's capture on its way into files: gathers packets and writes them together, shortly
// after the first one.
//
// Lives on the server's thread and needs its event loop.
#ifndef TAVMIR_CONTROLLER_CAPTURE_OUTPUT_H
#define TAVMIR_CONTROLLER_CAPTURE_OUTPUT_H

#include "capture/capture_files.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace tavmir::controller
{

class CaptureOutput : public QObject, public capture::PacketSink
{
public:
    // line  what is captured, for the file
    CaptureOutput(const capture::CaptureOptions& options, const std::string& line,
                  capture::CaptureFiles::Tell tell);

    // Once, before everything else. Empty, or why it cannot be.
    std::string open() { return files_.open(); }

    void take(const capture::Packet& packet) override;

private:
    capture::CaptureFiles files_;
    capture::PcapngWriter writer_;
    QTimer timer_;
};

} // namespace tavmir::controller

#endif
