// The plain controller that all clients talk to: it answers Modbus function 3 and the driver's
// word reads, nothing else, with as little work as it can.
#ifndef TAVMIR_BENCHMARKS_SIDE_BY_SIDE_RESPONDER_H
#define TAVMIR_BENCHMARKS_SIDE_BY_SIDE_RESPONDER_H

#include <sys/types.h>

namespace tavmir
{
namespace bench
{

// A child process that serves one connection after another on a free loopback port, so that
// what it costs is not counted among the client's costs.
class Responder
{
public:
    // delayMs  waits so long before each reply: the round trip of a slower network or controller
    explicit Responder(int delayMs);
    ~Responder();
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    int port() const { return port_; }

private:
    int port_;
    pid_t process_;
};

} // namespace bench
} // namespace tavmir

#endif
