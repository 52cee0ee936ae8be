// Content, writes and server put together.
#include "page_output.h"

#include "browser.h"
#include "capture/feed_capture.h"
#include "capture/pcapng_writer.h"
#include "page/live_content.h"
#include "page/page_server.h"
#include "page_writes.h"
#include "recorded_past.h"
#include "recording_status.h"
#include "worker.h"

#include <QtCore/QFileInfo>

namespace tavmir::host
{

namespace
{

LiveOptions optionsOf(const PreparedHost& host)
{
    LiveOptions options;
    options.rules = {host.line().staleAfterMs, host.controller()};
    options.projectFile = QFileInfo(host.line().projectFile).fileName();
    options.version = TAVMIR_VERSION;
    return options;
}

page::PageServerOptions serverOf(const PageOptions& page)
{
    page::PageServerOptions options;
    options.address = page.host.toStdString();
    options.port = static_cast<unsigned short>(page.port);
    options.isWritable = page.allowsWrites;
    // The feed holds what a fast line says meanwhile.
    options.limits.lookUnheard = std::chrono::milliseconds(250);
    return options;
}

std::string captureOf(const KeptEntries& kept, quint64 from, const QString& controller)
{
    capture::MemoryCapture memory(capture::originHere("tavmir-host " TAVMIR_VERSION,
                                                      "tavmir-host " + controller.toStdString()));
    capture::PcapngWriter writer(memory);
    capture::FeedCapture capture(writer);
    if (const std::optional<FeedEntry> connection = kept.connectionBefore(from)) {
        capture.take(*connection);
    }
    kept.visit(
        from, [&](const FeedEntry& entry, quint64) { capture.take(entry); },
        [&](quint64 missed, quint64) { capture.gap(missed); });
    capture.end();
    return std::string(memory.bytes().begin(), memory.bytes().end());
}

} // namespace

// Members end in the order that their promises ask for: the server first, the content last.
class PageOutput::Page
{
public:
    explicit Page(PreparedHost& host)
        : host_(host), content_(host.session().feed(), host.project(), optionsOf(host)),
          past_(host.line().record.folder), writes_(host),
          server_(content_, serverOf(host.line().page))
    {
    }

    QString open()
    {
        const QString refused = writes_.open();
        if (!refused.isEmpty()) {
            return refused;
        }
        content_.setWrites(&writes_);
        content_.setRecordingStatus([this] { return recordingStatus(host_.recording()); });
        if (!host_.line().record.folder.isEmpty()) {
            content_.setRecording(
                &past_, [this](std::function<void()> work) { reads_.add(std::move(work)); });
        }
        content_.setCapture([this](const KeptEntries& kept, quint64 from) {
            return captureOf(kept, from, host_.controller());
        });
        std::string problem;
        if (!server_.start(problem)) {
            return "--page: " + QString::fromStdString(problem);
        }
        return QString();
    }

    QString url() const { return QString::fromStdString(server_.url()); }
    Browser& browser() { return browser_; }
    LiveContent& content() { return content_; }

    void close()
    {
        writes_.stop();
        server_.stop();
    }

private:
    PreparedHost& host_;
    LiveContent content_;
    RecordedPast past_;
    Worker reads_;
    PageWrites writes_;
    page::PageServer server_;
    Browser browser_;
};

PageOutput::PageOutput(PreparedHost& host) : host_(host) {}

PageOutput::~PageOutput()
{
    close();
}

QString PageOutput::refusal()
{
    return QString();
}

QString PageOutput::open()
{
    if (!host_.line().page.isOn) {
        return QString();
    }
    page_ = std::make_unique<Page>(host_);
    const QString problem = page_->open();
    if (!problem.isEmpty()) {
        page_.reset();
    }
    return problem;
}

QString PageOutput::url() const
{
    return page_ ? page_->url() : QString();
}

QString PageOutput::openBrowser()
{
    return page_ && host_.line().page.opens ? page_->browser().open(page_->url()) : QString();
}

QString PageOutput::takeProblem()
{
    return page_ ? page_->browser().takeProblem() : QString();
}

void PageOutput::tellStorage(const QString& text)
{
    if (page_) {
        const std::optional<recorder::RecordingState> state = host_.recording();
        page_->content().tellStorage(text, state && !state->isOn());
    }
}

void PageOutput::close()
{
    if (page_) {
        page_->close();
    }
}

} // namespace tavmir::host
