// A session's capture on a thread of its own: reads the feed some times a second and writes what
// has come into the capture's files. Nobody waits for it; where it is too slow it misses entries
// and the capture says so.
#ifndef TAVMIR_CAPTURE_FEED_CAPTURE_THREAD_H
#define TAVMIR_CAPTURE_FEED_CAPTURE_THREAD_H

#include "capture_files.h"
#include "feed_capture.h"

#include "feed/feed.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace tavmir::capture
{

class FeedCaptureThread
{
public:
    // Captures everything from now on.
    //   files  opened
    FeedCaptureThread(host::Feed& feed, std::unique_ptr<CaptureFiles> files);
    // Writes what has happened until now.
    ~FeedCaptureThread();
    FeedCaptureThread(const FeedCaptureThread&) = delete;
    FeedCaptureThread& operator=(const FeedCaptureThread&) = delete;

private:
    void loop();
    bool look();

    std::unique_ptr<CaptureFiles> files_;
    PcapngWriter writer_;
    FeedCapture capture_;
    std::unique_ptr<host::FeedReader> reader_;
    std::mutex mutex_;
    std::condition_variable ends_;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace tavmir::capture

#endif
