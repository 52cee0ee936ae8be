// The page of a running host: the feed folded, questions answered, writes handed on. Everything
// happens on the server's thread, but for the ends of writes.
#ifndef TAVMIR_PAGE_LIVE_CONTENT_H
#define TAVMIR_PAGE_LIVE_CONTENT_H

#include "history_json.h"
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
    //   elsewhere  runs what takes long on a thread of its own, one piece after the other; null:
    //              at once
    using Elsewhere = std::function<void(std::function<void()> work)>;
    void setRecording(HistorySource* recording, Elsewhere elsewhere = nullptr)
    {
        recording_ = recording;
        elsewhere_ = std::move(elsewhere);
    }
    // How the recording stands: a JSON object.
    void setRecordingStatus(std::function<std::string()> status) { status_ = std::move(status); }
    // Makes the capture of what was kept from a number on.
    using Capture = std::function<std::string(const KeptEntries& kept, quint64 from)>;
    void setCapture(Capture capture) { capture_ = std::move(capture); }

    page::Answer get(const std::string& what, const page::Query& query) override;
    void ask(const std::string& what, const page::Query& query, Done done) override;
    void post(const std::string& what, const std::string& body, Done done) override;
    void look() override;
    void keepUp() override { state_.keepUp(); }
    std::string epoch() const override { return epoch_; }
    std::uint64_t sequence() const override { return state_.sequence(); }
    std::string snapshot() override;
    std::string changes(std::uint64_t since, std::uint64_t eventsSince) override;

    // The recording cannot be written, or can be again. Any thread.
    void tellStorage(const QString& text, bool bad);

private:
    // What has ended or happened elsewhere, for the page's thread.
    struct Told {
        WireElement element;
        PageEvent event;
    };

    // A question about the past, with the memory's answer.
    struct Past {
        std::optional<page::Answer> refusal;
        HistoryFacts facts;
        HistoryPiece memory;
        qint64 border = 0;   // from there on the memory knows everything
        size_t recorded = 0; // points that the recording is to give; 0: it is not asked
    };

    void lookIfOld();
    Past past(const page::Query& query) const;
    static page::Answer answerTo(const Past& past, HistorySource* recording);
    std::string status() const;
    std::string variables() const;
    page::Answer values(const page::Query& query) const;
    page::Answer frames(const page::Query& query) const;
    page::Answer explain(const page::Query& query) const;
    page::Answer history(const page::Query& query) const;
    page::Answer capture(const page::Query& query) const;
    HistoryPiece memory(size_t variable, qint64 from, qint64 to, size_t points) const;
    void write(const std::string& body, const Done& done);
    QString unexpected(const PageWrite& asked, const project::Element& named,
                       const std::optional<size_t>& place) const;
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
    Elsewhere elsewhere_;
    std::function<std::string()> status_;
    Capture capture_;
    Clock::time_point lookedAt_;
    size_t longest_ = 0; // message of changes, in bytes
    std::mutex mutex_;
    std::vector<Told> told_; // under the mutex
};

} // namespace tavmir::host

#endif
