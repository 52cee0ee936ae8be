// The addresses of a host, in bounded time: an address is taken as it is; a name is looked up on
// a thread of its own, and whoever asks waits for it no longer than he wants to.
//
// A look-up cannot be called off. One that nobody waits for any more goes on by itself and keeps
// alive what it needs; the next question for the same name joins it instead of starting another,
// and gets an answer that came in between.
#ifndef TAVMIR_WIRE_NAME_LOOKUP_H
#define TAVMIR_WIRE_NAME_LOOKUP_H

#include "deadline.h"

#include <sys/socket.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tavmir
{
namespace wire
{

// One address of a host; its port is not set.
struct HostAddress {
    sockaddr_storage bytes;
    socklen_t size;
};

struct HostAddresses {
    std::vector<HostAddress> found;
    std::string problem; // none found: why, in words
};

// Of "192.0.2.1", "::1" and the like; none of a name. At once.
HostAddresses numericAddresses(const std::string& host);

// Asks the system, which may take long.
HostAddresses askSystem(const std::string& host);

// Any thread may ask.
class NameLookUps
{
public:
    typedef std::function<HostAddresses(const std::string& host)> LookUp;

    // lookUp  is called on the threads of look-ups, also when this object is gone
    explicit NameLookUps(LookUp lookUp = askSystem);
    NameLookUps(const NameLookUps&) = delete;
    NameLookUps& operator=(const NameLookUps&) = delete;

    enum class End {
        answered, // `addresses` holds the answer, which may be a problem
        late,     // the deadline has passed
        woken     // `wakeDescriptor` is readable
    };
    // wakeDescriptor  ends the wait when readable; -1: none
    End find(const std::string& host, const Deadline& deadline, int wakeDescriptor,
             HostAddresses& addresses);

    // Those that all connections of this process share.
    static NameLookUps& ofThisProcess();

private:
    struct UnderWay;
    typedef std::shared_ptr<UnderWay> Shared;

    // The look-up of this name that is under way, or a new one.
    Shared join(const std::string& host);
    void start(const Shared& one, const std::string& host);
    void forget(const std::string& host, const Shared& answered);

    LookUp lookUp_;
    std::mutex mutex_;
    std::map<std::string, Shared> underWay_; // by host; guarded by mutex_
};

} // namespace wire
} // namespace tavmir

#endif
