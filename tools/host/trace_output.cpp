// The thread and its descriptor.
#include "trace_output.h"

#include "value_row.h"

#include <fcntl.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

namespace tavmir::host
{

namespace
{

constexpr auto kLookEach = std::chrono::milliseconds(20);
constexpr auto kPatience = std::chrono::seconds(2); // with a slow disk, for what is left
// So many entries are told at once; then the thread rests for so many times as long as they took.
constexpr int kPortion = 16;
constexpr int kRests = 31;
constexpr int kPatienceMs = 500; // with a reader that takes nothing

std::chrono::nanoseconds processorTime()
{
    timespec used = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

QString errorInWords(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

TraceOutput::TraceOutput(const TraceOptions& options, project::ElementNames names,
                         size_t mostWaiting)
    : options_(options), names_(std::move(names)), mostWaiting_(mostWaiting),
      trace_(names_, options.withBytes, [this](const std::string& line) { add(line); })
{
}

TraceOutput::~TraceOutput()
{
    finish();
}

QString TraceOutput::open()
{
    int descriptor = STDERR_FILENO;
    if (!options_.file.isEmpty()) {
        const QByteArray name = QFile::encodeName(options_.file);
        file_ = ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (file_ < 0) {
            return QString("--trace=%1: %2").arg(printable(options_.file), errorInWords(errno));
        }
        descriptor = file_;
    }
    out_ = std::make_unique<Output>(descriptor, mostWaiting_);
    out_->waitForRoom();
    return QString();
}

void TraceOutput::start(Feed& feed)
{
    reader_ = feed.subscribe();
    thread_ = std::thread([this] { loop(); });
}

void TraceOutput::finish()
{
    if (!thread_.joinable()) {
        return;
    }
    {
        std::unique_lock<std::mutex> lock(mutex_);
        ending_ = true;
        changed_.notify_all();
        if (!changed_.wait_for(lock, kPatience, [this] { return ended_; })) {
            out_->hurry();
        }
    }
    thread_.join();
    if (out_->finish(kPatienceMs) && file_ >= 0) {
        ::close(file_); // else its thread may still be inside a write
        file_ = -1;
    }
}

QString TraceOutput::takeProblem()
{
    const int error = out_->error();
    const bool isOver = !thread_.joinable();
    const bool missing = error != 0 || (isOver && (out_->isBehind() || out_->dropped() > 0));
    if (!missing || problemTold_ || error == EPIPE) {
        return QString();
    }
    problemTold_ = true;
    return error != 0 ? "the trace cannot be written: " + errorInWords(error)
                      : QString("the trace could not be written in time: its end is missing");
}

void TraceOutput::loop()
{
    bool goesOn = true;
    while (goesOn && out_->error() == 0) {
        goesOn = waitForLook();
        look();
    }
    trace_.end();
    write();
    reader_.reset(); // nothing is kept for it any more
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

bool TraceOutput::waitForLook()
{
    std::unique_lock<std::mutex> lock(mutex_);
    return !changed_.wait_for(lock, kLookEach, [this] { return ending_; });
}

void TraceOutput::look()
{
    bool any = false;
    reader_->read(
        [&](const FeedEntry& entry) {
            any = true;
            takeOne(entry);
        },
        [&](quint64 missed) { trace_.gap(missed); });
    if (!any) {
        trace_.quiet();
    }
    write();
}

void TraceOutput::takeOne(const FeedEntry& entry)
{
    if (inPortion_ == 0) {
        usedBefore_ = processorTime();
    }
    trace_.take(entry);
    if (++inPortion_ == kPortion) {
        rest();
    }
}

void TraceOutput::rest()
{
    inPortion_ = 0;
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, kRests * (processorTime() - usedBefore_), [this] { return ending_; });
}

// Whole lines together, and no more than a pipe takes at once: between them other lines may stand,
// within them none.
void TraceOutput::add(const std::string& line)
{
    const auto size = static_cast<int>(line.size());
    if (piece_.size() + size + 1 > PIPE_BUF) {
        write();
    }
    piece_.append(line.data(), size);
    piece_.append('\n');
}

void TraceOutput::write()
{
    out_->write(piece_);
    piece_ = QByteArray();
}

bool isTraceOnTerminal(const TraceOptions& options)
{
    return options.isOn && options.file.isEmpty() && ::isatty(STDERR_FILENO) == 1;
}

} // namespace tavmir::host
