// getaddrinfo, and threads around it.
#include "name_lookup.h"

#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <system_error>
#include <thread>

namespace tavmir
{
namespace wire
{

namespace
{

// An answer that nobody waited for is good for the next question within this time.
const std::chrono::seconds kKeepsGood(30);

struct FreeAddresses {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

HostAddresses noAddress(const std::string& why)
{
    HostAddresses none;
    none.problem = why;
    return none;
}

HostAddresses ask(const std::string& host, int flags)
{
    addrinfo hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* found = nullptr;
    const int looked = ::getaddrinfo(host.c_str(), nullptr, &hints, &found);
    if (looked != 0) {
        return noAddress(looked == EAI_SYSTEM ? std::strerror(errno) : ::gai_strerror(looked));
    }
    HostAddresses addresses;
    const std::unique_ptr<addrinfo, FreeAddresses> list(found);
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        HostAddress address = {};
        address.size = entry->ai_addrlen;
        std::memcpy(&address.bytes, entry->ai_addr, entry->ai_addrlen);
        addresses.found.push_back(address);
    }
    return addresses;
}

// Threads that are started while it lives take no signal: those are the program's own to answer.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_;
};

} // namespace

HostAddresses numericAddresses(const std::string& host)
{
    return ask(host, AI_NUMERICHOST);
}

HostAddresses askSystem(const std::string& host)
{
    return ask(host, 0);
}

// One look-up. Shared by its thread and by those who wait.
struct NameLookUps::UnderWay {
    UnderWay() : descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~UnderWay()
    {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;

    void answer(const HostAddresses& its)
    {
        {
            const std::lock_guard<std::mutex> guard(mutex);
            addresses = its;
            answered = true;
            when = Clock::now();
        }
        const std::uint64_t one = 1;
        const ssize_t written = ::write(descriptor, &one, sizeof one);
        static_cast<void>(written); // nobody reads it: readable from now on
    }

    // True when answered.
    bool take(HostAddresses& its)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        if (answered) {
            its = addresses;
        }
        return answered;
    }

    bool isStale()
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return answered && Clock::now() - when > kKeepsGood;
    }

    const int descriptor; // readable when answered
    std::mutex mutex;
    HostAddresses addresses; // this and what follows: guarded by mutex
    bool answered = false;
    Clock::time_point when;
};

NameLookUps::NameLookUps(LookUp lookUp) : lookUp_(std::move(lookUp)) {}

NameLookUps& NameLookUps::ofThisProcess()
{
    static NameLookUps shared;
    return shared;
}

void NameLookUps::start(const Shared& one, const std::string& host)
{
    if (one->descriptor < 0) {
        one->answer(noAddress(std::strerror(EMFILE)));
        return;
    }
    const SignalsBlocked blocked;
    const LookUp lookUp = lookUp_;
    try {
        std::thread([one, host, lookUp] { one->answer(lookUp(host)); }).detach();
    } catch (const std::system_error& error) {
        one->answer(noAddress(error.what()));
    }
}

NameLookUps::Shared NameLookUps::join(const std::string& host)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    Shared& entry = underWay_[host];
    if (entry && !entry->isStale()) {
        return entry;
    }
    entry = std::make_shared<UnderWay>();
    start(entry, host);
    return entry;
}

void NameLookUps::forget(const std::string& host, const Shared& answered)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = underWay_.find(host);
    if (found != underWay_.end() && found->second == answered) {
        underWay_.erase(found);
    }
}

NameLookUps::End NameLookUps::find(const std::string& host, const Deadline& deadline,
                                   int wakeDescriptor, HostAddresses& addresses)
{
    const Shared one = join(host);
    while (!one->take(addresses)) {
        pollfd waits[2] = {{one->descriptor, POLLIN, 0}, {wakeDescriptor, POLLIN, 0}};
        const int ready = ::poll(waits, 2, deadline.remainingMs());
        if (ready > 0 && waits[1].revents != 0) {
            return End::woken;
        }
        if (ready <= 0 && deadline.passed()) {
            return End::late;
        }
    }
    forget(host, one);
    return End::answered;
}

} // namespace wire
} // namespace tavmir
