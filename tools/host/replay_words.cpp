// Values and the line of a moment.
#include "replay_words.h"

#include "page/json_writer.h"
#include "recorder/state_words.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

using recorder::EventRow;
using recorder::RecordedVariable;
namespace event_kind = recorder::event_kind;

struct LineWords {
    const char* kind;
    const char* state;
    const char* words;
    std::optional<bool> isUp;
};

const LineWords kLines[] = {
    {event_kind::kBegan, "connecting", "the program had just begun, not connected yet", false},
    {event_kind::kEnded, "lost", "the program had ended", false},
    {event_kind::kConnected, "connected", "connected", true},
    {event_kind::kAnswers, "connected", "connected", true},
    {event_kind::kConnectFailed, "lost", "not connected", false},
    {event_kind::kLost, "lost", "connection lost", false},
    {event_kind::kClosed, "lost", "connection closed by the host", false},
    {event_kind::kSilent, "silent", "connected, but not answered", false},
};

int bitsOf(const RecordedVariable& variable)
{
    return variable.type == "bit" ? 1 : variable.type == "word" ? 16 : 32;
}

struct Range {
    double low;
    double high;
};

std::optional<Range> rangeOf(const RecordedVariable& variable)
{
    const auto all = static_cast<double>(quint64(1) << bitsOf(variable));
    if (variable.format == "signed") {
        return Range{-all / 2, all / 2 - 1};
    }
    if (variable.format == "bit") {
        return Range{0, 1};
    }
    const bool isNatural = variable.format == "unsigned" || variable.format == "hex";
    return isNatural ? std::optional<Range>(Range{0, all - 1}) : std::nullopt;
}

} // namespace

QString sinceWords(recorder::Micros since, recorder::Micros at, bool isOrBefore)
{
    if (since > at) {
        return "since before the clock was set back";
    }
    return QString("since %1%2").arg(recorder::momentText(since), isOrBefore ? " or before" : "");
}

ValueQuality qualityThen(const recorder::Standing& standing, bool isRecorded)
{
    ValueQuality quality = standing.quality;
    if (quality.quality == Quality::good || !isRecorded) {
        return quality;
    }
    if (quality.reason.isEmpty()) {
        quality.reason = "no reply had brought it yet";
    } else if (standing.qualityAt > 0) {
        // The reason counts on ("not read for 2.1 s"): it is as it was told.
        quality.reason =
            QString("since %1: %2").arg(recorder::momentText(standing.qualityAt), quality.reason);
    }
    return quality;
}

LineThen lineThen(const ReplayMoment& moment)
{
    LineThen line;
    if (!moment.isRecorded) {
        line.state = "lost";
        line.words = recorder::kNotRecorded;
        return line;
    }
    if (!moment.past.line()) {
        line.state = "unknown";
        line.words = "what is recorded does not say how the line was";
        return line;
    }
    const recorder::LinePast& past = *moment.past.line();
    const EventRow& event = past.last;
    line.since = static_cast<double>(std::min(past.since, moment.at)) / 1000;
    for (const LineWords& one : kLines) {
        if (event.kind != one.kind) {
            continue;
        }
        line.state = one.state;
        line.isUp = one.isUp;
        line.words =
            QString("%1, %2").arg(one.words, sinceWords(past.since, moment.at, past.isSinceOr));
    }
    if (!line.isUp.value_or(true) && !event.text.isEmpty() && event.kind != event_kind::kBegan) {
        line.words += ": " + event.text;
    }
    return line;
}

std::string recordedVariablesJson(const std::vector<recorder::RecordedValueAt>& values)
{
    std::string out;
    JsonWriter json(out);
    json.beginArray();
    for (size_t i = 0; i < values.size(); ++i) {
        const RecordedVariable& variable = values[i].variable;
        const std::optional<Range> range = rangeOf(variable);
        json.beginObject().key("index").whole(static_cast<qint64>(i));
        json.key("name").text(variable.name).key("address").text(variable.address);
        json.key("station").whole(variable.station).key("type").text(variable.type);
        json.key("format").text(variable.format);
        json.key("elements").whole(variable.isText() ? variable.words : 1);
        json.key("writable").boolean(false).key("isBit").boolean(variable.type == "bit");
        json.key("low").number(range ? std::optional<double>(range->low) : std::nullopt);
        json.key("high").number(range ? std::optional<double>(range->high) : std::nullopt);
        json.endObject();
    }
    json.endArray();
    return out;
}

} // namespace tavmir::host
