// HOST:PORT, read and written. Knows text only: whether the host exists is for others to find out.
#ifndef TAVMIR_WIRE_ENDPOINT_H
#define TAVMIR_WIRE_ENDPOINT_H

#include <string>

namespace tavmir
{
namespace wire
{

constexpr int kMostPort = 65535;

struct Endpoint {
    std::string host; // a name or an address, without brackets
    int port = 0;
};

// Reads "HOST:PORT", or "[ADDRESS]:PORT" with an IPv6 address; without its brackets such an
// address is refused, where it ends would be a guess.
//   leastPort  1, or 0 where that means "any free one"
//   result     false: the text is neither, `endpoint` is unchanged
bool parseEndpoint(const std::string& text, int leastPort, Endpoint& endpoint);

// The same way round, for messages.
std::string endpointText(const std::string& host, int port);

} // namespace wire
} // namespace tavmir

#endif
