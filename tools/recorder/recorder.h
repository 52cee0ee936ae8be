// The recorder: reads the feed some times a second on a thread of its own and writes once a second
// into a ring of files. Nobody waits for it. What cannot be written is lost, counted, and tried
// anew every second; the files say from when until when.
//
//   open ──▶ start ──▶ … state() … ──▶ stop
#ifndef TAVMIR_RECORDER_RECORDER_H
#define TAVMIR_RECORDER_RECORDER_H

#include "covered_time.h"
#include "feed/feed.h"
#include "feed_recording.h"
#include "recording_file.h"
#include "recording_folder.h"
#include "recording_state.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tavmir::recorder
{

struct RecorderOptions {
    static constexpr quint64 kMostInAFile = 64 << 20;
    static constexpr int kUsualLimitMiB = 1024;
    static constexpr int kLeastLimitMiB = 4;

    QString folder;                                                  // empty: nothing is recorded
    quint64 limitBytes = static_cast<quint64>(kUsualLimitMiB) << 20; // of all files together
    int everyMs = 0; // least time between two samples of one variable
};

class Recorder
{
public:
    // Told in one line what is wrong, and that it is right again. On the recorder's thread.
    using Tell = std::function<void(const QString& text)>;

    Recorder(
        const RecorderOptions& options, const FileFacts& facts, const host::QualityRules& rules,
        Tell tell, WallNow wall = [] { return host::WallClock::now(); });
    // Stops.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Empty, or why nothing can be recorded there, in one line. What another program left behind
    // when it was killed is put in order. Since a file-size limit is an error of a write, SIGXFSZ
    // is ignored from then on.
    QString open();

    // Everything from now on.
    void start(host::Feed& feed);
    // What has happened until now is in the files then, and no log stays beside them.
    void stop();

    // Any thread.
    RecordingState state() const;

private:
    quint64 mostInAFile() const;
    RecordingClock clockNow() const { return {host::Clock::now(), wall_()}; }
    void loop();
    void look();
    bool isMuch(quint64 room) const;
    void commit(host::Clock::time_point now);
    bool write(host::Clock::time_point now);
    void retry(host::Clock::time_point now);
    bool beginFile(host::Clock::time_point now, const std::vector<EventRow>& events);
    void turnTo(const QString& event, host::Clock::time_point now);
    void makeRoom(quint64 wanted) const;
    void tidy() const;
    std::vector<EventRow> beginningAfter(const std::vector<Member>& before, Micros now) const;
    bool isFull() const;
    void fail(const QString& problem, host::Clock::time_point now);
    void publish();

    const RecorderOptions options_;
    const std::string folder_;
    const FileFacts facts_;
    const Tell tell_;
    const WallNow wall_;
    FolderLock lock_;
    FeedRecording recording_;
    std::unique_ptr<RecordingFile> file_; // none: the last one was given up
    quint64 nextNumber_ = 1;
    host::Clock::time_point nextCommit_;
    host::Clock::time_point committedAt_;
    host::Clock::time_point takenAt_ = host::Clock::now(); // when the newest happened that was read
    quint64 room_ = 0;                                     // bytes that the file has left
    CoveredTime covered_;
    host::Clock::time_point coveredAt_; // everything until then has been written
    std::unique_ptr<host::FeedReader> reader_;

    mutable std::mutex mutex_;
    RecordingState state_;  // with mutex_
    bool isEnding_ = false; // with mutex_
    std::condition_variable ends_;
    std::thread thread_;
};

} // namespace tavmir::recorder

#endif
