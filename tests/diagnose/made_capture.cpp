#include "made_capture.h"

#include "wire/frames.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace tavmir::test
{

namespace
{

constexpr int kSyn = 2, kRst = 4, kPush = 8, kAck = 16, kFin = 1;

std::string big(std::uint64_t number, int bytes)
{
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(number >> (8 * i) & 0xFF);
    }
    return text;
}

std::string little(std::uint64_t number, int bytes)
{
    const std::string text = big(number, bytes);
    return {text.rbegin(), text.rend()};
}

std::string addressOf(bool host, bool isSixth)
{
    return isSixth ? std::string(15, '\0') + (host ? '\2' : '\1')
                   : std::string("\x7f\0\0", 3) + (host ? '\2' : '\1');
}

std::string ipPacket(bool byHost, bool isSixth, const std::string& tcp)
{
    const std::string ends = addressOf(byHost, isSixth) + addressOf(!byHost, isSixth);
    if (isSixth) {
        return big(0x60000000, 4) + big(tcp.size(), 2) + big(6, 1) + big(64, 1) + ends + tcp;
    }
    return big(0x4500, 2) + big(20 + tcp.size(), 2) + big(0, 4) + big(64, 1) + big(6, 1) +
           big(0, 2) + ends + tcp;
}

std::string block(unsigned type, const std::string& body)
{
    const std::string padded = body + std::string((4 - body.size() % 4) % 4, '\0');
    const std::string size = little(12 + padded.size(), 4);
    return little(type, 4) + size + padded + size;
}

} // namespace

MadeCapture::MadeCapture(int linkType, FileKind kind) : linkType_(linkType), kind_(kind)
{
    const auto type = static_cast<unsigned>(linkType);
    if (kind == FileKind::pcapng) {
        const std::string nanoseconds = little(9, 2) + little(1, 2) + big(0x09000000, 4);
        bytes_ = block(0x0A0D0D0A, little(0x1A2B3C4D, 4) + little(1, 2) + little(0, 2) +
                                       std::string(8, '\xFF')) +
                 block(1, little(type, 2) + little(0, 2) + little(262144, 4) + nanoseconds +
                              little(0, 4));
        return;
    }
    bytes_ = little(kind == FileKind::pcap ? 0xA1B23C4D : 0xA1B2C3D4, 4) + little(2, 2) +
             little(4, 2) + little(0, 8) + little(262144, 4) + little(type, 4);
}

std::string MadeCapture::linkHeader(bool isSixth) const
{
    const std::string protocol = big(isSixth ? 0x86DD : 0x0800, 2);
    const std::string tagged = isTagged_ ? big(0x81000007, 4) + protocol : protocol;
    switch (linkType_) {
    case kEthernet:
        return std::string(12, '\0') + tagged;
    case kCooked:
        return std::string(14, '\0') + tagged;
    case kCooked2:
        return protocol + std::string(18, '\0');
    case kNullLoopback:
        return little(isSixth ? 10 : 2, 4);
    default:
        return std::string();
    }
}

void MadeCapture::packet(double ms, const std::string& ip, std::size_t keep)
{
    const std::string link = linkHeader((ip[0] & 0xF0) == 0x60);
    const std::string whole = link + ip;
    const std::string kept = link + ip.substr(0, keep);
    const auto ns = static_cast<std::uint64_t>(ms * 1e6) + 1000000000ULL * 1000000000ULL;
    const std::string sizes = little(kept.size(), 4) + little(whole.size(), 4);
    if (kind_ == FileKind::pcapng) {
        bytes_ += block(6, little(0, 4) + little(ns >> 32, 4) + little(ns & 0xFFFFFFFF, 4) + sizes +
                               kept);
        return;
    }
    const std::uint64_t part = ns % 1000000000;
    bytes_ += little(ns / 1000000000, 4) + little(kind_ == FileKind::pcap ? part : part / 1000, 4) +
              sizes + kept;
}

MadeConnection::MadeConnection(MadeCapture& capture, int hostPort, int controllerPort, bool isSixth)
    : capture_(capture), ports_{hostPort, controllerPort}, isSixth_(isSixth)
{
}

void MadeConnection::startAt(std::uint32_t host, std::uint32_t controller)
{
    sent_[0] = host;
    sent_[1] = controller;
}

void MadeConnection::tcp(double ms, bool byHost, int flags, std::uint32_t sequence,
                         const std::string& bytes)
{
    const auto from = static_cast<unsigned>(ports_[byHost ? 0 : 1]);
    const auto to = static_cast<unsigned>(ports_[byHost ? 1 : 0]);
    const std::uint32_t acknowledged = (flags & kAck) != 0 ? sent_[byHost ? 1 : 0] : 0;
    const std::string segment =
        big(from, 2) + big(to, 2) + big(sequence, 4) + big(acknowledged, 4) + big(0x50, 1) +
        big(static_cast<unsigned>(flags), 1) + big(65535, 2) + big(0, 4) + bytes;
    capture_.packet(ms, ipPacket(byHost, isSixth_, segment), keep_);
}

void MadeConnection::ask(double ms)
{
    tcp(ms, true, kSyn, sent_[0], "");
    ++sent_[0];
}

void MadeConnection::refuse(double ms)
{
    tcp(ms, false, kRst | kAck, 0, "");
}

void MadeConnection::connect(double ms)
{
    ask(ms);
    tcp(ms, false, kSyn | kAck, sent_[1], "");
    ++sent_[1];
    acknowledge(ms, true);
}

void MadeConnection::segment(double ms, bool byHost, const std::string& bytes)
{
    std::uint32_t& sent = sent_[byHost ? 0 : 1];
    tcp(ms, byHost, kAck | kPush, sent, bytes);
    sent += static_cast<std::uint32_t>(bytes.size());
}

void MadeConnection::missed(bool byHost, std::size_t bytes)
{
    sent_[byHost ? 0 : 1] += static_cast<std::uint32_t>(bytes);
}

void MadeConnection::early(double ms, bool byHost, std::size_t ahead, const std::string& bytes)
{
    tcp(ms, byHost, kAck, sent_[byHost ? 0 : 1] + static_cast<std::uint32_t>(ahead), bytes);
}

void MadeConnection::close(double ms, bool byHost)
{
    tcp(ms, byHost, kFin | kAck, sent_[byHost ? 0 : 1], "");
    ++sent_[byHost ? 0 : 1];
}

void MadeConnection::reset(double ms, bool byHost)
{
    tcp(ms, byHost, kRst, sent_[byHost ? 0 : 1], "");
}

std::string readWords(int transaction, std::initializer_list<unsigned> addresses, int station)
{
    std::string entries;
    for (const unsigned address : addresses) {
        entries += big(address, 4);
    }
    return frameOf(transaction, station, 102, static_cast<int>(addresses.size()), entries);
}

std::string words(int transaction,
                  std::initializer_list<std::pair<unsigned, unsigned>> addressesAndValues,
                  int station)
{
    std::string entries;
    for (const auto& [address, value] : addressesAndValues) {
        entries += big(address, 4) + big(value, 2);
    }
    return frameOf(transaction, station, 102, static_cast<int>(addressesAndValues.size()), entries);
}

std::string writeWord(int transaction, unsigned address, unsigned value)
{
    return frameOf(transaction, 1, 103, 1, big(address, 4) + little(value, 2));
}

std::string written(int transaction, int count)
{
    return frameOf(transaction, 1, 103, count);
}

std::string refused(int transaction, int function, int code, int station)
{
    return frameOf(transaction, station, function | 0x80, code);
}

diagnose::Diagnosis diagnosisOf(const std::string& file,
                                const diagnose::DiagnosisSettings& settings)
{
    std::FILE* opened = std::tmpfile();
    std::fwrite(file.data(), 1, file.size(), opened);
    std::rewind(opened);
    std::string problem;
    const auto reader = diagnose::CaptureReader::of(opened, problem);
    EXPECT_EQ("", problem);
    return reader ? diagnose::diagnose(*reader, settings,
                                       [](const wire::ElementInFrame* first, std::size_t) {
                                           return wire::elementInWords(*first);
                                       })
                  : diagnose::Diagnosis();
}

diagnose::Diagnosis diagnosisOf(const MadeCapture& capture,
                                const diagnose::DiagnosisSettings& settings)
{
    return diagnosisOf(capture.bytes(), settings);
}

diagnose::ConversationReport onlyOne(const diagnose::Diagnosis& diagnosis)
{
    EXPECT_EQ(1u, diagnosis.conversations.size());
    return diagnosis.conversations.empty() ? diagnose::ConversationReport()
                                           : diagnosis.conversations.front();
}

const diagnose::Finding* find(const diagnose::ConversationReport& report, diagnose::Trouble trouble)
{
    for (const diagnose::Finding& finding : report.findings) {
        if (finding.trouble == trouble) {
            return &finding;
        }
    }
    return nullptr;
}

std::string kindsOf(const diagnose::ConversationReport& report)
{
    std::string kinds;
    for (const diagnose::Finding& finding : report.findings) {
        kinds += (kinds.empty() ? "" : ", ") + std::string(rowOf(finding.trouble).label) + " " +
                 std::to_string(finding.times);
    }
    return kinds;
}

} // namespace tavmir::test
