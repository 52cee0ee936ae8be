// The page of a host that never ran: a feed filled by hand, clocks that stand until they are moved.
#ifndef TAVMIR_TESTS_PAGE_LIVE_PAGE_H
#define TAVMIR_TESTS_PAGE_LIVE_PAGE_H

#include "feed/made_exchange.h"
#include "page/live_content.h"
#include "project/project_model.h"
#include "support/qt_printers.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

#include <memory>

namespace tavmir::host
{

// Wall clock at momentAt(0), milliseconds since 1970; it goes with the steady one until it is set
// back.
constexpr qint64 kWallMs = 1000000000000;

// Main.Run bit 100, Main.W word 3000, Main.S signed word 3016, Main.Mode word 3032 with its bit 2,
// Main.Temp real 5000, Main.Title text of 3 words 6000: polled in this order, station 1. Main.Off
// word 7000 is not polled.
const project::Project& pageProject();

// Places in that list.
enum Polled : size_t { kRun, kW, kS, kMode, kModeBit, kTemp, kTitle, kPolled };

class LivePage : public testing::Test
{
protected:
    LivePage();

    // The clocks stand here from now on.
    void at(int ms) { ms_ = ms; }
    void lookAt(int ms)
    {
        at(ms);
        content_->look();
    }

    // The wall clock goes on so much earlier from now on.
    void setClockBack(int ms) { setBack_ += ms; }
    WallClock::time_point wallAt(int ms) const
    {
        return WallClock::time_point(std::chrono::milliseconds(kWallMs + ms - setBack_));
    }

    // These happen at that time.
    void plan(const std::vector<SetAside>& setAside = {}, size_t variables = kPolled);
    void connect(int ms);
    void tell(int ms, FeedKind kind, const QString& text = QString(),
              const QString& variable = QString());
    void tell(int ms, FeedEntry entry);
    // A good reply.
    void read(int ms, quint8 function, const std::vector<ReadElement>& elements);
    void word(int ms, qint32 address, quint32 number) { read(ms, kReadWords, {{address, number}}); }
    // A request that ended so.
    void fails(int ms, ExchangeEnd end, const std::vector<ReadElement>& elements,
               quint8 exceptionCode = 0);

    QJsonObject get(const char* what,
                    const std::vector<std::pair<std::string, std::string>>& query = {});
    unsigned statusOf(const char* what,
                      const std::vector<std::pair<std::string, std::string>>& query = {});
    // A row of the values.
    QJsonArray row(size_t index);
    QString quality(size_t index) { return row(index)[3].toString(); }
    std::string conclusion(const char* address);
    QStringList eventTexts();

    static QJsonObject parsed(const std::string& json);

    Feed feed_;
    int ms_ = 0;
    int setBack_ = 0; // ms
    // What the page's thread seems to have had of a processor, and how much more it has each time
    // that it asks.
    std::chrono::nanoseconds processor_{0};
    std::chrono::nanoseconds costs_{0};
    LiveOptions options_;
    std::unique_ptr<LiveContent> content_;
};

} // namespace tavmir::host

#endif
