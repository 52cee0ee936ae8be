// The blocks of a pcapng file, least significant byte first:
//
//   section header     type 0x0A0D0D0A | size | 0x1A2B3C4D | 1 | 0 | -1 (8) | options | size
//   interface          type 1 | size | link type 101 (raw IP) (2) | 0 (2) | longest packet |
//   options
//                      | size
//   packet             type 6 | size | interface 0 | time, upper half | lower half | bytes kept
//                      | bytes | packet, padded to 4 | options | size
//   option             code (2) | size (2) | value, padded to 4; the last one is 0 | 0
//
// Numbers have 4 bytes where nothing else is said; times are nanoseconds since 1970.
#ifndef TAVMIR_CAPTURE_PCAPNG_BLOCKS_H
#define TAVMIR_CAPTURE_PCAPNG_BLOCKS_H

#include "packet.h"

namespace tavmir
{
namespace capture
{

// What a file says about itself.
struct Origin {
    std::string hardware;    // "x86_64"
    std::string system;      // "Linux 6.1.0"
    std::string application; // the program and its version
    std::string line;        // what was captured: "tavmir-host 192.0.2.10:502"
};

// Of this machine.
Origin originHere(const std::string& application, const std::string& line);

// What each file begins with: a section and its one interface.
void appendHeader(const Origin& origin, Bytes& bytes);

void appendPacket(const Packet& packet, Bytes& bytes);

} // namespace capture
} // namespace tavmir

#endif
