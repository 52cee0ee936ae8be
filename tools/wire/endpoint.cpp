// HOST:PORT.
#include "endpoint.h"

namespace tavmir
{
namespace wire
{

namespace
{

// Digits only; -1: no port number, or one beyond the last.
int parsePort(const std::string& text)
{
    if (text.empty()) {
        return -1;
    }
    int port = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') {
            return -1;
        }
        port = 10 * port + (digit - '0');
        if (port > kMostPort) {
            return -1;
        }
    }
    return port;
}

bool contains(const std::string& text, const char* characters)
{
    return text.find_first_of(characters) != std::string::npos;
}

// Takes the brackets off; empty: no host.
std::string parseHost(const std::string& text)
{
    const bool bracketed = text.size() > 2 && text.front() == '[' && text.back() == ']';
    const std::string host = bracketed ? text.substr(1, text.size() - 2) : text;
    return contains(host, "[]") || contains(host, ":") != bracketed ? std::string() : host;
}

} // namespace

bool parseEndpoint(const std::string& text, int leastPort, Endpoint& endpoint)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos) {
        return false;
    }
    const std::string host = parseHost(text.substr(0, colon));
    const int port = parsePort(text.substr(colon + 1));
    if (host.empty() || port < leastPort) {
        return false;
    }
    endpoint.host = host;
    endpoint.port = port;
    return true;
}

std::string endpointText(const std::string& host, int port)
{
    const std::string place = contains(host, ":") ? "[" + host + "]" : host;
    return place + ":" + std::to_string(port);
}

} // namespace wire
} // namespace tavmir
