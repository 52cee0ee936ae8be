// Entries through lines into objects.
#include "frames_json.h"

#include "feed/feed_lines.h"
#include "json_writer.h"
#include "moments.h"

#include <algorithm>
#include <deque>

namespace tavmir::host
{

namespace
{

// A line's number says which entry made it and which of that entry's lines it is.
constexpr quint64 kLinesOfAnEntry = 8192;
// What came unasked is told before the exchange that shows it: so many entries are looked at before
// the first that is wanted.
constexpr quint64 kLeadIn = 32;

const char* wayOf(LineKind kind)
{
    switch (kind) {
    case LineKind::request:
        return "request";
    case LineKind::reply:
        return "reply";
    case LineKind::exception:
        return "exception";
    case LineKind::wrongReply:
        return "wrong reply";
    case LineKind::nothing:
        return "nothing";
    case LineKind::unsent:
        return "unsent";
    case LineKind::late:
        return "late";
    case LineKind::duplicate:
        return "duplicate";
    case LineKind::foreign:
        return "foreign";
    case LineKind::cut:
        return "cut";
    case LineKind::gaveUp:
        return "gave up";
    case LineKind::connected:
        return "connected";
    case LineKind::connectFailed:
        return "connect failed";
    case LineKind::lost:
        return "lost";
    case LineKind::closed:
        return "closed";
    case LineKind::missed:
        break;
    }
    return "missed";
}

bool isBad(LineKind kind)
{
    switch (kind) {
    case LineKind::request:
    case LineKind::reply:
    case LineKind::connected:
    case LineKind::closed:
        return false;
    default:
        return true;
    }
}

struct Line {
    quint64 id = 0;
    double at = 0;
    LineKind kind = LineKind::request;
    QString text;
    QString bytes; // null: none
    std::optional<double> elapsedMs;
};

// The lines of all entries from one on.
class Lines
{
public:
    Lines(const KeptEntries& kept, const project::ElementNames& names, quint64 from)
        : lines_(names, [this](const FeedLine& line) { add(line); })
    {
        if (const std::optional<FeedEntry> connection = kept.connectionBefore(from)) {
            lines_.take(*connection);
        }
        made_.clear(); // how things stood
        kept.visit(
            from,
            [this](const FeedEntry& entry, quint64 number) {
                begin(number);
                lines_.take(entry);
            },
            [this](quint64 missed, quint64 number) {
                begin(number);
                lines_.gap(missed);
            });
        lines_.quiet();
    }

    const std::deque<Line>& all() const { return made_; }

private:
    void begin(quint64 number)
    {
        entry_ = number;
        ofEntry_ = 0;
    }

    void add(const FeedLine& told)
    {
        Line line;
        line.id = entry_ * kLinesOfAnEntry + std::min(++ofEntry_, kLinesOfAnEntry - 1);
        line.at = msOf(told.at);
        line.kind = told.kind;
        line.text = QString::fromStdString(wire::wordsAndRemarks(told));
        if (told.bytes != nullptr && told.size > 0) {
            line.bytes = bytesInWords(told.bytes, told.size);
        }
        if (told.hasRequest) {
            line.elapsedMs = static_cast<double>(told.sinceRequest.count()) / 1e6;
        }
        made_.push_back(line);
    }

    std::deque<Line> made_;
    quint64 entry_ = 0;
    quint64 ofEntry_ = 0;
    FeedLines lines_;
};

void writeLine(JsonWriter& json, const Line& line, const Line* before)
{
    json.beginObject();
    json.key("id").whole(static_cast<qint64>(line.id));
    json.key("at").number(line.at);
    json.key("beforeMs");
    if (before == nullptr) {
        json.null();
    } else {
        json.number(std::round((line.at - before->at) * 1000) / 1000);
    }
    json.key("way").text(wayOf(line.kind));
    json.key("text").text(line.text);
    json.key("bytes").textOrNull(line.bytes);
    json.key("bad").boolean(isBad(line.kind));
    json.key("elapsedMs").number(line.elapsedMs);
    json.endObject();
}

} // namespace

QString bytesInWords(const unsigned char* bytes, size_t size)
{
    const auto count = static_cast<int>(size);
    return QString::fromLatin1(
        QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), count).toHex(' '));
}

std::string framesJson(const KeptEntries& kept, const project::ElementNames& names, quint64 since,
                       size_t limit)
{
    // Each entry makes at most two lines, but for what came unasked.
    const quint64 known = since / kLinesOfAnEntry;
    const quint64 enough = limit + kLeadIn;
    const quint64 newest = kept.end() > enough ? kept.end() - enough : 0;
    const quint64 behind = known > kLeadIn ? known - kLeadIn : 0;
    const quint64 from = std::max({newest, behind, kept.begin()});
    const Lines lines(kept, names, from);
    const std::deque<Line>& all = lines.all();
    const auto isNewer = [&](const Line& line) { return line.id > since; };
    auto first = static_cast<size_t>(std::find_if(all.begin(), all.end(), isNewer) - all.begin());
    quint64 missed = since > 0 && from > known + 1 ? from - known - 1 : 0;
    if (all.size() - first > limit) {
        missed += since > 0 ? all.size() - first - limit : 0;
        first = all.size() - limit;
    }
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("frames").beginArray();
    for (size_t i = first; i < all.size(); ++i) {
        writeLine(json, all[i], i > 0 ? &all[i - 1] : nullptr);
    }
    json.endArray().key("missed").whole(static_cast<qint64>(missed)).endObject();
    return out;
}

} // namespace tavmir::host
