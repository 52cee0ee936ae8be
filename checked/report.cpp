#include "checked/report.h"

#include "checked/backtrace.h"
#include "checked/calls.h"
#include "checked/settings.h"
#include "checked/text.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>
#include <utility>

namespace tavmir
{
namespace checked
{

namespace
{

typedef std::pair<int, const void*> Place;

// All in one piece, however many writes that takes.
void writeAll(int file, const std::string& block)
{
    std::size_t done = 0;
    while (done < block.size()) {
        const ssize_t written = ::write(file, block.data() + done, block.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        done += static_cast<std::size_t>(written);
    }
}

// Everything that reports share. Lives from the library's first static object to its last, so
// that what the others do while they go can still be told.
class Desk
{
public:
    Desk() : ready_(false), open_(true), file_(STDERR_FILENO) {}
    ~Desk();

    void readSetting();
    bool watches(Duty duty);
    bool countAgain(Duty duty, const void* place);
    void take(Duty duty, const void* place, const std::string& what, const std::string& detail);

private:
    void say(const std::string& line) { writeAll(STDERR_FILENO, "tavmir-check: " + line + '\n'); }
    void openLog();
    bool countPlace(Duty duty, const void* place);

    std::atomic<bool> ready_;
    std::atomic<bool> open_;
    std::mutex mutex_;
    Settings settings_;
    int file_;
    std::map<Place, unsigned long> seen_;
};

Desk desk __attribute__((init_priority(200)));

Desk::~Desk()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    open_ = false;
    std::string lines;
    for (std::map<Place, unsigned long>::const_iterator it = seen_.begin(); it != seen_.end();
         ++it) {
        lines += text("  %8lu times %s, called from %p\n", it->second,
                      textOf(static_cast<Duty>(it->first.first)).id, it->first.second);
    }
    if (!lines.empty()) {
        writeAll(file_, "tavmir-check: in all\n" + lines + '\n');
    }
    if (file_ != STDERR_FILENO) {
        ::close(file_);
    }
}

void Desk::openLog()
{
    const int opened =
        ::open(settings_.logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (opened < 0) {
        settings_.problems.push_back("cannot write \"" + settings_.logFile +
                                     "\": reports go to standard error");
        return;
    }
    file_ = opened;
}

void Desk::readSetting()
{
    if (ready_.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    if (ready_.load(std::memory_order_relaxed)) {
        return;
    }
    const char* setting = std::getenv("TAVMIR_CHECK");
    settings_ = readSettings(setting ? setting : "");
    if (!settings_.logFile.empty()) {
        openLog();
    }
    for (std::size_t i = 0; i < settings_.problems.size(); ++i) {
        say(settings_.problems[i]);
    }
    ready_.store(true, std::memory_order_release);
}

bool Desk::watches(Duty duty)
{
    return open_.load(std::memory_order_relaxed) &&
           settings_.watched[static_cast<std::size_t>(duty)];
}

// True for the first time.
bool Desk::countPlace(Duty duty, const void* place)
{
    return ++seen_[Place(duty, place)] == 1;
}

bool Desk::countAgain(Duty duty, const void* place)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!open_) {
        return true;
    }
    const std::map<Place, unsigned long>::iterator seen = seen_.find(Place(duty, place));
    if (seen == seen_.end()) {
        return false;
    }
    ++seen->second;
    return true;
}

void Desk::take(Duty duty, const void* place, const std::string& what, const std::string& detail)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!open_ || !countPlace(duty, place)) {
            return;
        }
    }
    const DutyText& duties = textOf(duty);
    const std::string block = std::string("tavmir-check: ") + duties.id + "\n  what:      " + what +
                              '\n' + (detail.empty() ? "" : "  detail:    " + detail + '\n') +
                              "  duty:      " + duties.sentence +
                              "\n  otherwise: " + duties.otherwise + "\n  called from:\n" +
                              backtraceFrom(place) + '\n';
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!open_) {
        return;
    }
    writeAll(file_, block);
    if (settings_.endsProcess) {
        std::abort();
    }
}

__thread int knownThreadId;

} // namespace

void readyToReport()
{
    desk.readSetting();
}

bool isWatched(Duty duty)
{
    return desk.watches(duty);
}

void report(Duty duty, const Call& call, const std::string& what, const std::string& detail)
{
    if (isWatched(duty)) {
        desk.take(duty, call.caller(),
                  text("%s on thread %d ", nameOf(call.name()), threadId()) + what, detail);
    }
}

bool wasTold(Duty duty, const Call& call)
{
    return !isWatched(duty) || desk.countAgain(duty, call.caller());
}

void reportAt(Duty duty, const void* place, const std::string& what)
{
    readyToReport();
    if (isWatched(duty)) {
        desk.take(duty, place, what, std::string());
    }
}

int threadId()
{
    if (knownThreadId == 0) {
        knownThreadId = static_cast<int>(::syscall(SYS_gettid));
    }
    return knownThreadId;
}

} // namespace checked
} // namespace tavmir
