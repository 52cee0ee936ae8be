#include "probe_capture.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

namespace tavmir
{
namespace probe
{

namespace
{

std::int64_t nowNs()
{
    const std::chrono::system_clock::duration now =
        std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

// On the wall clock.
std::int64_t nsOf(wire::Clock::time_point moment)
{
    return nowNs() -
           std::chrono::duration_cast<std::chrono::nanoseconds>(wire::Clock::now() - moment)
               .count();
}

void tell(const std::string& text)
{
    std::fprintf(stderr, "tavmir-probe: %s\n", text.c_str());
}

} // namespace

ProbeCapture::ProbeCapture() = default;

ProbeCapture::~ProbeCapture()
{
    closed(std::string());
}

std::string ProbeCapture::open(const std::string& file, const wire::Endpoint& controller)
{
    capture::CaptureOptions options;
    options.file = file;
    const std::string line = "tavmir-probe " + wire::endpointText(controller.host, controller.port);
    files.reset(new capture::CaptureFiles(
        options, capture::originHere("tavmir-probe " TAVMIR_VERSION, line), tell));
    writer.reset(new capture::PcapngWriter(*files));
    const std::string problem = files->open();
    if (!problem.empty()) {
        writer.reset();
        files.reset();
    }
    return problem;
}

void ProbeCapture::tried(const std::vector<wire::ConnectAttempt>& attempts)
{
    if (!writer) {
        return;
    }
    for (const wire::ConnectAttempt& attempt : attempts) {
        const std::int64_t beganNs = nsOf(attempt.began);
        const std::int64_t endedNs = nsOf(attempt.ended);
        conversation.reset(
            new capture::TcpConversation(attempt.local, attempt.peer, beganNs, *writer));
        if (attempt.error == 0) {
            conversation->opened(capture::Side::own, beganNs, endedNs);
            break;
        }
        conversation->failed(attempt.error == ECONNREFUSED, beganNs, endedNs,
                             std::string("no connection: ") + std::strerror(attempt.error));
        conversation.reset();
    }
    files->flush();
}

void ProbeCapture::sent(const QByteArray& bytes)
{
    data(capture::Side::own, bytes, std::string());
}

void ProbeCapture::received(const QByteArray& bytes, const std::string& problem)
{
    data(capture::Side::other, bytes, problem);
}

void ProbeCapture::data(capture::Side from, const QByteArray& bytes, const std::string& comment)
{
    if (conversation && !bytes.isEmpty()) {
        conversation->data(from, reinterpret_cast<const unsigned char*>(bytes.constData()),
                           static_cast<std::size_t>(bytes.size()), nowNs(), comment);
        files->flush();
    }
}

void ProbeCapture::closed(const std::string& why)
{
    if (conversation) {
        conversation->closed(capture::Side::own, nowNs(), why);
        conversation.reset();
        files->flush();
    }
}

} // namespace probe
} // namespace tavmir
