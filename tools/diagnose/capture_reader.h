// Packets out of a capture file, pcap or pcapng, with nanoseconds. Any bytes are safe.
#ifndef TAVMIR_DIAGNOSE_CAPTURE_READER_H
#define TAVMIR_DIAGNOSE_CAPTURE_READER_H

#include "moment.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

struct pcap;

namespace tavmir::diagnose
{

// Its bytes stay valid until the next packet is asked for.
struct CapturedPacket {
    Nanoseconds at = 0;
    int linkType = 0;
    const unsigned char* bytes = nullptr;
    std::size_t size = 0;
};

class CaptureReader
{
public:
    // Null: it cannot be read, and `problem` says why.
    static std::unique_ptr<CaptureReader> open(const std::string& path, std::string& problem);
    // The same of an open file, which is closed in the end.
    static std::unique_ptr<CaptureReader> of(std::FILE* file, std::string& problem);
    ~CaptureReader();
    CaptureReader(const CaptureReader&) = delete;
    CaptureReader& operator=(const CaptureReader&) = delete;

    // False: there is no other.
    bool next(CapturedPacket& packet);

    // Behind the last packet: why the file ends before its end, as that of a program that was
    // killed does; empty when it is whole.
    const std::string& brokenOff() const { return brokenOff_; }

private:
    explicit CaptureReader(pcap* opened);

    pcap* pcap_;
    int linkType_;
    std::string brokenOff_;
};

} // namespace tavmir::diagnose

#endif
