// The page of a recording: what stood at a moment of it, which goes on while it is played. Files
// are read on a thread of its own.
#ifndef TAVMIR_HOST_REPLAY_CONTENT_H
#define TAVMIR_HOST_REPLAY_CONTENT_H

#include "page/event_store.h"
#include "page/moments.h"
#include "page/page_content.h"
#include "page/value_rows.h"
#include "plan/frame_plan.h"
#include "recorded_past.h"
#include "replay_course.h"
#include "replay_reader.h"
#include "worker.h"

#include <mutex>

namespace tavmir::host
{

class JsonWriter;

struct ReplayOptions {
    QString folder;
    QString version;
    Clocks clocks = Clocks();
};

class ReplayContent : public page::PageContent
{
public:
    // Null: `problem` says in one line why there is nothing to be shown.
    static std::unique_ptr<ReplayContent> open(const ReplayOptions& options, QString& problem);

    page::Answer get(const std::string& what, const page::Query& query) override;
    void ask(const std::string& what, const page::Query& query, Done done) override;
    // An order is answered when the moment that it asks for has been read.
    void post(const std::string& what, const std::string& body, Done done) override;
    void look() override;
    std::string epoch() const override { return epoch_; }
    std::uint64_t sequence() const override { return sequence_; }
    std::string snapshot() override;
    std::string changes(std::uint64_t since, std::uint64_t eventsSince) override;

private:
    // A moment that was read, for the page's thread.
    struct Read {
        ReplayMoment moment;
        bool isJump = false;
    };

    ReplayContent(const ReplayOptions& options, std::unique_ptr<ReplayReader> reader);

    void read(bool isJump, const std::function<void()>& then);
    void takeRead();
    void show(const ReplayMoment& moment, bool isJump);
    void showRow(size_t index, const recorder::RecordedValueAt& value);
    void showEvents(const std::vector<recorder::EventRow>& events);
    void showList();
    bool isSameList(const ReplayMoment& moment) const;
    std::string status() const;
    page::Answer values(const page::Query& query) const;
    page::Answer plan() const;
    page::Answer explain(const page::Query& query) const;
    void writeHead(JsonWriter& json, const char* kind) const;
    qint64 shownAt() const { return moment_.at / 1000; }
    double now() const { return msOf(options_.clocks.wall()); }

    const ReplayOptions options_;
    const std::string epoch_;
    const double startedAt_;
    const std::unique_ptr<ReplayReader> reader_; // the worker's, behind the first moment
    RecordedPast past_;                          // the worker's
    ReplayCourse course_;
    ReplayMoment moment_;
    ValueRows rows_;
    EventStore events_;
    recorder::Micros lastEvent_ = 0;
    std::vector<PolledElement> polled_; // of the moment, as its project knows them
    std::vector<PlannedFrame> frames_;
    quint64 sequence_ = 0;
    quint64 generation_ = 0;
    quint64 jumpedAt_ = 0; // the look that brought another moment than the next one
    Clock::time_point wentOnAt_;
    Clock::time_point countedAt_;
    Clock::time_point readAt_;
    std::mutex mutex_;
    std::vector<Read> read_; // under the mutex
    int underWay_ = 0;       // moments that are read or wait for it; under the mutex
    Worker worker_;
};

} // namespace tavmir::host

#endif
