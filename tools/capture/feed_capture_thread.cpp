// Looking at the feed.
#include "feed_capture_thread.h"

namespace tavmir::capture
{

namespace
{

constexpr auto kLookEach = std::chrono::milliseconds(50);

} // namespace

FeedCaptureThread::FeedCaptureThread(host::Feed& feed, std::unique_ptr<CaptureFiles> files)
    : files_(std::move(files)), writer_(*files_), capture_(writer_), reader_(feed.subscribe()),
      thread_([this] { loop(); })
{
}

FeedCaptureThread::~FeedCaptureThread()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnding_ = true;
    }
    ends_.notify_one();
    thread_.join();
}

void FeedCaptureThread::loop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ends_.wait_for(lock, kLookEach, [this] { return isEnding_; })) {
        lock.unlock();
        if (!look()) {
            capture_.quiet();
        }
        files_->flush();
        lock.lock();
    }
    look();
    capture_.end();
    files_->flush();
}

// True when something had happened.
bool FeedCaptureThread::look()
{
    bool hasHappened = false;
    reader_->read(
        [&](const host::FeedEntry& entry) {
            hasHappened = true;
            capture_.take(entry);
        },
        [&](quint64 missed) {
            hasHappened = true;
            capture_.gap(missed);
        });
    return hasHappened;
}

} // namespace tavmir::capture
