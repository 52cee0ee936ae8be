// The page of a running host: the feed folded, questions answered, writes handed on. Everything
// happens on the server's thread, but for the ends of writes.
#ifndef TAVMIR_PAGE_LIVE_CONTENT_H
#define TAVMIR_PAGE_LIVE_CONTENT_H

#include "history_source.h"
#include "live_state.h"
#include "page_content.h"
#include "plan/polled_index.h"
#include "write_desk.h"

#include <mutex>

namespace tavmir::host
{

struct LiveOptions {
    QualityRules rules; // name the controller
    QString projectFile;
    QString version;
    Clocks clocks = Clocks();
    LiveLimits limits = LiveLimits();
};

class LiveContent : public page::PageContent
{
public:
    // Subscribes: what happens from now on is in.
    // project  outlives it
    LiveContent(Feed& feed, const project::Project& project, const LiveOptions& options);

    // These before the server starts; what is given outlives the content, or is null.
    // Who carries writes out. Its ends may come until it is gone: it goes before the content.
    void setWrites(WriteDesk* desk) { desk_ = desk; }
    // Who knows what the memory does not reach back to.
    void setRecording(HistorySource* recording) { recording_ = recording; }
    // How the recording stands: a JSON object.
    void setRecordingStatus(std::function<std::string()> status) { status_ = std::move(status); }
    // Makes the capture of what was kept from a number on.
    using Capture = std::function<std::string(const KeptEntries& kept, quint64 from)>;
    void setCapture(Capture capture) { capture_ = std::move(capture); }

    page::Answer get(const std::string& what, const page::Query& query) override;
    void post(const std::string& what, const std::string& body, Done done) override;
    void look() override;
    std::string epoch() const override { return epoch_; }
    std::uint64_t sequence() const override { return state_.sequence(); }
    std::string snapshot() override;
    std::string changes(std::uint64_t since, std::uint64_t eventsSince) override;

private:
    // A write that has ended, for the page's thread.
    struct Told {
        WireElement element;
        PageEvent event;
    };

    void lookIfOld();
    std::string status() const;
    std::string variables() const;
    page::Answer values(const page::Query& query) const;
    page::Answer events(const page::Query& query) const;
    page::Answer frames(const page::Query& query) const;
    page::Answer explain(const page::Query& query) const;
    page::Answer history(const page::Query& query) const;
    page::Answer capture(const page::Query& query) const;
    HistoryPiece memory(size_t variable, qint64 from, qint64 to, size_t points) const;
    void write(const std::string& body, const Done& done);
    void tell(const WireElement& element, const QString& address, const QString& name,
              const WriteEnd& end);
    double now() const { return msOf(options_.clocks.wall()); }
    void writeHead(class JsonWriter& json, const char* kind) const;

    const project::Project& project_;
    const LiveOptions options_;
    const PolledIndex index_;
    const std::string epoch_;
    LiveState state_;
    WriteDesk* desk_ = nullptr;
    HistorySource* recording_ = nullptr;
    std::function<std::string()> status_;
    Capture capture_;
    Clock::time_point lookedAt_;
    std::mutex mutex_;
    std::vector<Told> told_; // under the mutex
};

} // namespace tavmir::host

#endif
