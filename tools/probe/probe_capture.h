// The probe's connection as a capture. Does nothing until it is opened.
#ifndef TAVMIR_PROBE_PROBE_CAPTURE_H
#define TAVMIR_PROBE_PROBE_CAPTURE_H

#include "capture/capture_files.h"
#include "capture/tcp_conversation.h"
#include "wire/connect_attempt.h"

#include <QtCore/QByteArray>

#include <memory>
#include <string>
#include <vector>

namespace tavmir
{
namespace probe
{

class ProbeCapture
{
public:
    ProbeCapture();
    ~ProbeCapture(); // the host closes what is still open

    // Empty, or why the file cannot be written.
    std::string open(const std::string& file, const wire::Endpoint& controller);

    void tried(const std::vector<wire::ConnectAttempt>& attempts);
    void sent(const QByteArray& bytes);
    //   problem  what is wrong with them; empty: nothing
    void received(const QByteArray& bytes, const std::string& problem);
    // By the probe, which says why; empty: it is through.
    void closed(const std::string& why);

private:
    void data(capture::Side from, const QByteArray& bytes, const std::string& comment);

    std::unique_ptr<capture::CaptureFiles> files;
    std::unique_ptr<capture::PcapngWriter> writer;
    std::unique_ptr<capture::TcpConversation> conversation; // null: not connected
};

} // namespace probe
} // namespace tavmir

#endif
