// libpcap, which knows both kinds of files.
#include "capture_reader.h"

#include "link_header.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavmir::diagnose
{

namespace
{

// Until the year 2223: nanoseconds since 1970 can say it, with room behind it.
constexpr Nanoseconds kMostSeconds = 8000000000;

Nanoseconds momentOf(const timeval& stamp)
{
    const Nanoseconds seconds = stamp.tv_sec;
    const Nanoseconds nanoseconds = stamp.tv_usec; // as was asked for
    return std::clamp<Nanoseconds>(seconds, 0, kMostSeconds) * kSecond +
           std::clamp<Nanoseconds>(nanoseconds, 0, kSecond - 1);
}

} // namespace

CaptureReader::CaptureReader(pcap* opened) : pcap_(opened), linkType_(pcap_datalink(opened)) {}

CaptureReader::~CaptureReader()
{
    pcap_close(pcap_);
}

std::unique_ptr<CaptureReader> CaptureReader::open(const std::string& path, std::string& problem)
{
    std::FILE* file = std::fopen(path.c_str(), "rbe");
    if (file == nullptr) {
        problem = std::strerror(errno);
        return nullptr;
    }
    return of(file, problem);
}

std::unique_ptr<CaptureReader> CaptureReader::of(std::FILE* file, std::string& problem)
{
    char reason[PCAP_ERRBUF_SIZE] = "";
    pcap* opened =
        pcap_fopen_offline_with_tstamp_precision(file, PCAP_TSTAMP_PRECISION_NANO, reason);
    if (opened == nullptr) {
        std::fclose(file);
        problem = reason;
        return nullptr;
    }
    std::unique_ptr<CaptureReader> reader(new CaptureReader(opened));
    if (!knowsLinkType(reader->linkType_)) {
        const char* name = pcap_datalink_val_to_name(reader->linkType_);
        problem = "its link type is " + std::to_string(reader->linkType_) +
                  (name != nullptr ? std::string(" (") + name + ")" : std::string()) +
                  "; Ethernet, Linux cooked, loopback and raw IP are read";
        return nullptr;
    }
    return reader;
}

bool CaptureReader::next(CapturedPacket& packet)
{
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    const int got = pcap_next_ex(pcap_, &header, &bytes);
    if (got == 1) {
        packet = {momentOf(header->ts), linkType_, bytes, header->caplen};
        return true;
    }
    if (got == PCAP_ERROR) {
        brokenOff_ = pcap_geterr(pcap_);
    }
    return false;
}

} // namespace tavmir::diagnose
