// Entries by hand.
#include "live_page.h"

#include "project/project_reader.h"
#include "wire/frame_layout.h"

#include <QtCore/QJsonDocument>

namespace tavmir::host
{

namespace
{

const char kProject[] = R"({
  "connection": { "host": "127.0.0.1", "port": 502, "station": 1 },
  "labels": [ { "name": "Main", "variables": [
    { "name": "Run", "type": "bit", "address": 100 },
    { "name": "W", "type": "word", "address": 3000 },
    { "name": "S", "type": "word", "address": 3016, "format": "signed" },
    { "name": "Mode", "type": "word", "address": 3032, "bits": true },
    { "name": "Temp", "type": "real", "address": 5000 },
    { "name": "Title", "type": "text", "address": 6000, "words": 3 },
    { "name": "Grid", "type": "word", "address": 6800,
      "array": { "radix": 16, "bounds": [[10, 13]] } },
    { "name": "Off", "type": "word", "address": 7000 } ] } ],
  "polled": [ { "address": "Main.Run" }, { "address": "Main.W", "name": "Level" },
    { "address": "Main.S" }, { "address": "Main.Mode", "format": "hex" },
    { "address": "Main.Mode.b[2]" }, { "address": "Main.Temp" }, { "address": "Main.Title" },
    { "address": "Main.Grid[C]" },
    { "address": "Main.S", "name": "Unsigned", "format": "unsigned" } ]
})";

} // namespace

const project::Project& pageProject()
{
    static const project::ReadOutcome read = project::readProject(kProject, "plant.json");
    return *read.project;
}

LivePage::LivePage()
{
    options_.rules = {2000, "127.0.0.1:502"};
    options_.projectFile = "plant.json";
    options_.version = "9";
    options_.clocks.steady = [this] { return momentAt(ms_); };
    options_.clocks.wall = [this] { return wallAt(ms_); };
    options_.clocks.processor = [this] { return processor_ += costs_; };
    content_ = std::make_unique<LiveContent>(feed_, pageProject(), options_);
}

void LivePage::tell(int ms, FeedEntry entry)
{
    entry.at = momentAt(ms);
    entry.wall = wallAt(ms);
    feed_.publish(entry);
}

void LivePage::tell(int ms, FeedKind kind, const QString& text, const QString& variable)
{
    FeedEntry entry;
    entry.kind = kind;
    entry.text = text;
    entry.variable = variable;
    tell(ms, entry);
}

void LivePage::plan(const std::vector<SetAside>& setAside, size_t variables)
{
    std::vector<PolledElement> polled = polledElements(pageProject());
    polled.resize(variables);
    FeedEntry entry;
    entry.kind = FeedKind::planChanged;
    entry.plan = std::make_shared<PolledGeneration>(PolledGeneration{1, polled, setAside});
    tell(ms_, entry);
}

void LivePage::connect(int ms)
{
    tell(ms, FeedKind::connected);
}

void LivePage::read(int ms, quint8 function, const std::vector<ReadElement>& elements)
{
    Exchange exchange = madeRead(function, 1, elements, momentAt(ms));
    exchange.endedWall = wallAt(ms);
    feed_.publish(exchange);
}

void LivePage::fails(int ms, ExchangeEnd end, const std::vector<ReadElement>& elements,
                     quint8 exceptionCode)
{
    Exchange exchange = madeRead(kReadWords, 1, elements, momentAt(ms));
    exchange.endedWall = wallAt(ms);
    exchange.end = end;
    exchange.replyTimeoutMs = 500;
    exchange.exceptionCode = exceptionCode;
    exchange.replySize = end == ExchangeEnd::exception ? wire::kHeaderBytes : 0;
    exchange.reply[wire::kFunctionOffset] |= wire::kExceptionBit;
    exchange.reply[wire::kCountOffset] = exceptionCode;
    if (end == ExchangeEnd::notSent || end == ExchangeEnd::suppressed) {
        exchange.sentBytes = 0;
    }
    feed_.publish(exchange);
}

QJsonObject LivePage::parsed(const std::string& json)
{
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(json.data(), static_cast<int>(json.size())), &error);
    EXPECT_EQ(QJsonParseError::NoError, error.error) << json;
    return document.object();
}

QJsonObject LivePage::get(const char* what,
                          const std::vector<std::pair<std::string, std::string>>& query)
{
    return parsed(content_->get(what, page::Query{query}).body);
}

unsigned LivePage::statusOf(const char* what,
                            const std::vector<std::pair<std::string, std::string>>& query)
{
    const page::Answer answer = content_->get(what, page::Query{query});
    EXPECT_EQ(answer.status != 200, parsed(answer.body).contains("error")) << answer.body;
    return answer.status;
}

QJsonArray LivePage::row(size_t index)
{
    return get("values")["values"].toArray()[static_cast<int>(index)].toArray();
}

std::string LivePage::conclusion(const char* address)
{
    return get("explain", {{"address", address}})["conclusion"].toString().toStdString();
}

QStringList LivePage::eventTexts()
{
    QStringList texts;
    for (const QJsonValue& event : get("events")["events"].toArray()) {
        texts << event.toObject()["text"].toString();
    }
    return texts;
}

} // namespace tavmir::host
