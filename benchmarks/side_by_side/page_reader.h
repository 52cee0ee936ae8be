// A page as somebody has it open: its server's thread without the sockets, which looks ten times a
// second and makes the message that the client gets. It is open, its first message made, before
// anything is measured.
#ifndef TAVMIR_BENCHMARKS_SIDE_BY_SIDE_PAGE_READER_H
#define TAVMIR_BENCHMARKS_SIDE_BY_SIDE_PAGE_READER_H

#include "page/live_content.h"
#include "page/polling_first.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <atomic>
#include <thread>

namespace tavmir
{
namespace bench
{

class PageReader
{
public:
    explicit PageReader(host::Feed& feed) : content_(feed, project_, host::LiveOptions())
    {
        content_.look();
        sent_ += content_.snapshot().size();
        thread_ = std::thread([this] { loop(); });
    }
    ~PageReader() { end(); }

    // What it missed, in entries of the feed.
    quint64 end()
    {
        if (thread_.joinable()) {
            ended_ = true;
            thread_.join();
            content_.look();
        }
        const std::string status = content_.get("status", page::Query()).body;
        const QJsonDocument said = QJsonDocument::fromJson(QByteArray::fromStdString(status));
        return static_cast<quint64>(said.object()["missed"].toDouble());
    }

private:
    void loop()
    {
        page::letPollingGoFirst();
        while (!ended_) {
            const std::uint64_t seen = content_.sequence();
            content_.look();
            sent_ += content_.changes(seen, seen).size();
            for (int i = 0; i < 4 && !ended_; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(25));
                content_.keepUp();
            }
        }
    }

    const project::Project project_;
    host::LiveContent content_;
    size_t sent_ = 0; // bytes
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

} // namespace bench
} // namespace tavmir

#endif
