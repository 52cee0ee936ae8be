// The feed as lines on standard error or in a file. A thread of its own reads the feed, puts it
// into words and waits for whoever reads or stores the lines. Nothing of it holds the communication
// up, nor takes it more than a small share of a processor: some 2,500 exchanges in a second. When
// more happens, or nobody takes the lines, the feed is missed and the trace has a line that says
// so.
#ifndef TAVMIR_HOST_TRACE_OUTPUT_H
#define TAVMIR_HOST_TRACE_OUTPUT_H

#include "command_line.h"
#include "feed/feed.h"
#include "output.h"
#include "trace/feed_trace.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavmir::host
{

class TraceOutput
{
public:
    //   mostWaiting  bytes of lines that may wait for who takes them
    TraceOutput(const TraceOptions& options, project::ElementNames names,
                size_t mostWaiting = Output::kMostWaiting);
    ~TraceOutput();
    TraceOutput(const TraceOutput&) = delete;
    TraceOutput& operator=(const TraceOutput&) = delete;

    // Makes the file anew. Empty, or why it cannot be written.
    QString open();

    // Everything that the feed tells from now on; once, after open().
    void start(Feed& feed);

    // Writes what the feed has told so far, and nothing more. May be called again.
    void finish();

    // Why lines are missing, once; empty: none are, it was told, or nobody reads them any more.
    QString takeProblem();

private:
    void loop();
    bool waitForLook(); // false: the last one
    void look();
    void takeOne(const FeedEntry& entry);
    void rest();
    void add(const std::string& line);
    void write();

    const TraceOptions options_;
    const project::ElementNames names_;
    const size_t mostWaiting_;
    FeedTrace trace_;
    std::unique_ptr<FeedReader> reader_;
    std::unique_ptr<Output> out_;
    int file_ = -1;
    QByteArray piece_;                       // lines that are to be written together
    int inPortion_ = 0;                      // entries told since the last rest
    std::chrono::nanoseconds usedBefore_{0}; // of the processor, by this thread, until then
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ending_ = false; // this and the next: guarded by mutex_
    bool ended_ = false;
    std::thread thread_;
    bool problemTold_ = false;
};

// True when the lines appear on a terminal, where a table that stays in place has no room then.
bool isTraceOnTerminal(const TraceOptions& options);

} // namespace tavmir::host

#endif
