// Spans of the recording as a piece of history.
#include "page_recording.h"

#include "page/json_writer.h"
#include "recorder/state_words.h"

#include <cmath>
#include <limits>

namespace tavmir::host
{

namespace
{

constexpr recorder::Micros kMs = 1000;

double numberOr(const recorder::RecordedValue& value)
{
    return recorder::numberOf(value).value_or(std::numeric_limits<double>::quiet_NaN());
}

void addSamples(const recorder::RecordedHistory& found, qint64 from, double length,
                HistoryPiece& piece)
{
    double last = numberOr(found.before);
    if (!found.before.isNone()) {
        const auto begin = static_cast<double>(from);
        piece.add(begin, last, last, last);
    }
    for (size_t i = 0; i < found.buckets.size(); ++i) {
        const recorder::HistoryBucket& bucket = found.buckets[i];
        if (bucket.count == 0) {
            continue; // it stayed as it was
        }
        const double at = static_cast<double>(from) + static_cast<double>(i) * length;
        const double end = numberOr(bucket.last);
        const double low = std::fmin(last, bucket.min.value_or(end));
        const double high = std::fmax(last, bucket.max.value_or(end));
        piece.add(std::floor(at), low, high, end);
        last = end;
    }
}

} // namespace

HistoryPiece PageRecording::history(const QString& address, qint64 from, qint64 to, size_t points)
{
    HistoryPiece piece;
    if (!reader_) {
        QString problem;
        reader_ = recorder::RecordingReader::open(folder_, problem);
    }
    if (!reader_ || to <= from) {
        return piece;
    }
    const size_t buckets = points > 2 ? points - 1 : 1;
    const recorder::RecordedHistory found =
        reader_->history(address, {from * kMs, to * kMs}, buckets);
    if (!found.isKnown) {
        return piece;
    }
    piece.oldest = reader_->coverage().from / kMs;
    if (!found.variable.isText()) {
        const double length = static_cast<double>(to - from) / static_cast<double>(buckets);
        addSamples(found, from, length, piece);
    }
    for (const recorder::NotGood& one : found.notGood) {
        piece.gaps.push_back(
            {one.span.from / kMs, one.span.until / kMs,
             QString("%1: %2").arg(qualityWord(one.quality.quality), one.quality.reason)});
    }
    return piece;
}

std::string recordingStatus(const std::optional<recorder::RecordingState>& state)
{
    if (!state) {
        return "null";
    }
    std::string out;
    JsonWriter json(out);
    json.beginObject().key("state").text(state->isOn() ? "on" : "failed");
    json.key("text").text(recorder::recordingWords(*state));
    json.key("bytes").whole(static_cast<qint64>(state->bytes));
    json.key("limit").whole(static_cast<qint64>(state->limit));
    json.key("from").whole(state->from / kMs).key("to").whole(state->until / kMs).endObject();
    return out;
}

} // namespace tavmir::host
