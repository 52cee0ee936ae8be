// Packets handed down, reports handed up.
#include "diagnosis.h"

#include "link_header.h"
#include "streams.h"
#include "talk.h"

#include "wire/endpoint.h"

#include <algorithm>
#include <memory>
#include <set>

namespace tavmir::diagnose
{

namespace
{

constexpr Nanoseconds kLongestCapture = 10 * 366 * 24 * 3600 * kSecond;

struct Line {
    std::string host;
    TcpEnd controller;
    Conversation conversation;
};

// The conversations of a capture.
class Lines
{
public:
    explicit Lines(const DiagnosisSettings& settings) : settings_(settings) {}

    void take(const Stream& stream, const StreamEvent& event)
    {
        auto found = talks_.find(stream.number);
        if (found == talks_.end()) {
            found = talks_
                        .emplace(stream.number,
                                 Talk(stream, settings_.port,
                                      [this](const std::string& host, const TcpEnd& controller)
                                          -> Conversation& { return find(host, controller); }))
                        .first;
        }
        found->second.take(event);
        if (event.kind == StreamEvent::Kind::over) {
            talks_.erase(found);
        }
    }

    std::vector<ConversationReport> finish(Nanoseconds at, const wire::DescribeElements& describe)
    {
        std::set<TcpEnd> speaking;
        for (const auto& line : lines_) {
            line->conversation.finish(at);
            if (line->conversation.speaks()) {
                speaking.insert(line->controller);
            }
        }
        std::vector<ConversationReport> reports;
        for (const auto& line : lines_) {
            if (!isOfInterest(*line, speaking)) {
                continue;
            }
            reports.push_back(reportOf(line->conversation, describe));
            reports.back().host = line->host;
            reports.back().controller =
                wire::endpointText(line->controller.address, line->controller.port);
        }
        return reports;
    }

private:
    // The one that goes on, or a new one beside those that are open.
    Conversation& find(const std::string& host, const TcpEnd& controller)
    {
        std::vector<Line*>& candidates = byEnds_[{host, controller}];
        for (Line* line : candidates) {
            if (!line->conversation.isOpen()) {
                return line->conversation;
            }
        }
        lines_.push_back(std::make_unique<Line>());
        lines_.back()->host = host;
        lines_.back()->controller = controller;
        candidates.push_back(lines_.back().get());
        return lines_.back()->conversation;
    }

    bool isOfInterest(const Line& line, const std::set<TcpEnd>& speaking) const
    {
        if (line.conversation.speaks()) {
            return true;
        }
        const int port = line.controller.port;
        const bool isExpected = speaking.count(line.controller) > 0 || port == settings_.port ||
                                port == settings_.expectedPort;
        return isExpected && !line.conversation.happenings().empty();
    }

    DiagnosisSettings settings_;
    std::map<std::size_t, Talk> talks_; // by number of the stream
    std::vector<std::unique_ptr<Line>> lines_;
    std::map<std::pair<std::string, TcpEnd>, std::vector<Line*>> byEnds_;
};

} // namespace

bool Diagnosis::isWrong() const
{
    return conversations.empty() ||
           std::any_of(conversations.begin(), conversations.end(),
                       [](const ConversationReport& report) { return report.isWrong; });
}

Diagnosis diagnose(CaptureReader& reader, const DiagnosisSettings& settings,
                   const wire::DescribeElements& describe)
{
    Diagnosis diagnosis;
    Lines lines(settings);
    Streams streams(
        [&lines](const Stream& stream, const StreamEvent& event) { lines.take(stream, event); });
    std::uint64_t cutPackets = 0;
    std::uint64_t backwards = 0;
    CapturedPacket packet;
    while (reader.next(packet)) {
        if (diagnosis.packets++ == 0) {
            diagnosis.begin = diagnosis.end = packet.at;
        }
        backwards += packet.at < diagnosis.end ? 1 : 0;
        // Never back in time, and never so far on that a multiple of it cannot be said.
        packet.at = std::clamp(packet.at, diagnosis.end, diagnosis.begin + kLongestCapture);
        diagnosis.end = packet.at;
        Segment segment;
        if (readSegment(ipBytesOf(packet), segment)) {
            ++diagnosis.tcpPackets;
            cutPackets += segment.notKept > 0 ? 1 : 0;
            streams.take(std::move(segment), packet.at);
        }
    }
    streams.finish(diagnosis.end);
    diagnosis.connections = streams.connections();
    diagnosis.conversations = lines.finish(diagnosis.end, describe);
    if (!reader.brokenOff().empty()) {
        diagnosis.notes.push_back("the file breaks off (" + reader.brokenOff() +
                                  "); what is in front of that is judged");
    }
    if (backwards > 0) {
        diagnosis.notes.push_back(std::to_string(backwards) +
                                  " packets are stamped earlier than one in front of them: they "
                                  "are taken for simultaneous");
    }
    if (cutPackets > 0) {
        diagnosis.notes.push_back(std::to_string(cutPackets) +
                                  " packets are not whole in it: it was taken with a limit on "
                                  "their length");
    }
    if (diagnosis.conversations.empty()) {
        const std::string hint =
            settings.port == 0 ? "; --port N judges the connections to port N all the same" : "";
        diagnosis.notes.push_back("no frame of this protocol is in it" + hint);
    }
    return diagnosis;
}

} // namespace tavmir::diagnose
