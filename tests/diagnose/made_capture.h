// Captures made byte by byte: files, link headers, IP, TCP and frames of the protocol.
#ifndef TAVMIR_TESTS_DIAGNOSE_MADE_CAPTURE_H
#define TAVMIR_TESTS_DIAGNOSE_MADE_CAPTURE_H

#include "diagnose/diagnosis.h"

#include <initializer_list>
#include <string>
#include <utility>

namespace tavmir::test
{

// Link types as files number them.
constexpr int kEthernet = 1;
constexpr int kNullLoopback = 0;
constexpr int kRawIp = 101;
constexpr int kCooked = 113;
constexpr int kCooked2 = 276;

enum class FileKind { pcap, pcapMicroseconds, pcapng };

class MadeCapture
{
public:
    explicit MadeCapture(int linkType = kRawIp, FileKind kind = FileKind::pcap);

    // An IP packet behind the link's header, `ms` after 2001-09-09T01:46:40Z. At most `keep` bytes
    // of it are kept.
    void packet(double ms, const std::string& ip, std::size_t keep = 65535);
    void tagVlan() { isTagged_ = true; }

    const std::string& bytes() const { return bytes_; }

private:
    std::string linkHeader(bool isSixth) const;

    int linkType_;
    FileKind kind_;
    bool isTagged_ = false;
    std::string bytes_;
};

// A host and a controller that count what they send.
class MadeConnection
{
public:
    explicit MadeConnection(MadeCapture& capture, int hostPort = 40000, int controllerPort = 5020,
                            bool isSixth = false);

    void connect(double ms);
    void ask(double ms);    // SYN alone
    void refuse(double ms); // the answer to it
    void request(double ms, const std::string& frame) { segment(ms, true, frame); }
    void reply(double ms, const std::string& frame) { segment(ms, false, frame); }
    void segment(double ms, bool byHost, const std::string& bytes);
    // Sent, but not in the capture.
    void missed(bool byHost, std::size_t bytes);
    // Bytes `ahead` of what was sent so far; what was sent stays as it is.
    void early(double ms, bool byHost, std::size_t ahead, const std::string& bytes);
    void acknowledge(double ms, bool byHost) { segment(ms, byHost, std::string()); }
    void close(double ms, bool byHost);
    void reset(double ms, bool byHost);

    void startAt(std::uint32_t host, std::uint32_t controller);
    void keep(std::size_t bytes) { keep_ = bytes; }

private:
    void tcp(double ms, bool byHost, int flags, std::uint32_t sequence, const std::string& bytes);

    MadeCapture& capture_;
    int ports_[2];
    bool isSixth_;
    std::size_t keep_ = 65535;
    std::uint32_t sent_[2] = {1000, 5000};
};

// Frames.
std::string readWords(int transaction, std::initializer_list<unsigned> addresses, int station = 1);
std::string words(int transaction,
                  std::initializer_list<std::pair<unsigned, unsigned>> addressesAndValues,
                  int station = 1);
std::string writeWord(int transaction, unsigned address, unsigned value);
std::string written(int transaction, int count = 1);
std::string refused(int transaction, int function, int code, int station = 1);

diagnose::Diagnosis diagnosisOf(const std::string& file,
                                const diagnose::DiagnosisSettings& settings = {});
diagnose::Diagnosis diagnosisOf(const MadeCapture& capture,
                                const diagnose::DiagnosisSettings& settings = {});

// The only conversation's.
diagnose::ConversationReport onlyOne(const diagnose::Diagnosis& diagnosis);

// Null: there is none.
const diagnose::Finding* find(const diagnose::ConversationReport& report,
                              diagnose::Trouble trouble);

// "late replies 2, exceptions 1"; of all findings.
std::string kindsOf(const diagnose::ConversationReport& report);

} // namespace tavmir::test

#endif
