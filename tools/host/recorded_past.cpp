// Files folded into one piece.
#include "recorded_past.h"

#include "past_pieces.h"
#include "recorded_events.h"
#include "recorder/recording_reader.h"

#include <algorithm>

namespace tavmir::host
{

namespace
{

using recorder::kMillisecond;
using recorder::Micros;
using recorder::NewVariable;
using recorder::RecordingPart;
using recorder::TimeSpan;

constexpr qint64 kMostEvents = 200;
constexpr char kNotPolled[] = "not polled at this time";
constexpr char kNotReadYet[] = "no reply has brought it yet"; // as the feed's memory says it

class PastFold
{
public:
    PastFold(const QString& address, TimeSpan span, size_t points)
        : address_(address), span_(span), covered_(span.from),
          samples_(span.from / kMillisecond, span.until / kMillisecond, points, piece_)
    {
    }

    // Of each file once.
    void takeEvents(RecordingPart& part)
    {
        for (const recorder::EventRow& row : part.events(span_.from, span_.until, kMostEvents)) {
            addEvent(row);
        }
    }

    // What the file knows of the piece, which lies behind those before.
    void take(RecordingPart& part, TimeSpan piece)
    {
        const auto [from, until] = piece;
        gaps_.add(covered_, from, recorder::kNotRecorded);
        covered_ = until;
        const auto& variables = part.variables();
        const auto found =
            std::find_if(variables.begin(), variables.end(), [this](const NewVariable& row) {
                return row.variable.address == address_;
            });
        if (found == variables.end()) {
            gaps_.add(from, until, kNotPolled);
            return;
        }
        takeValues(part, found->id, from, until);
        takeQualities(part, found->id, from, until);
    }

    HistoryPiece end()
    {
        gaps_.add(covered_, span_.until, recorder::kNotRecorded);
        samples_.end();
        piece_.gaps = gaps_.joined();
        std::stable_sort(
            piece_.events.begin(), piece_.events.end(),
            [](const PageEvent& left, const PageEvent& right) { return left.at < right.at; });
        return piece_;
    }

private:
    void addEvent(const recorder::EventRow& row)
    {
        const PageEvent event = pageEvent(row);
        if (event.variable.isNull() || event.address == address_) {
            piece_.events.push_back(event);
        }
    }

    void takeValues(RecordingPart& part, recorder::VariableId variable, Micros from, Micros until)
    {
        const recorder::Standing standing = part.standingAt(variable, from);
        samples_.add(isFirst_ ? standing.at : from, standing.value);
        isFirst_ = isFirst_ && standing.value.isNone();
        part.samples(variable, from, until, [this](const recorder::SampleRow& row) {
            samples_.add(row.at, row.value);
            isFirst_ = false;
        });
    }

    void takeQualities(RecordingPart& part, recorder::VariableId variable, Micros from,
                       Micros until)
    {
        Micros since = from;
        ValueQuality quality = part.standingAt(variable, from).quality;
        const auto endAt = [&](Micros at) {
            if (quality.quality != Quality::good) {
                gaps_.add(since, at,
                          QString("%1: %2").arg(qualityWord(quality.quality),
                                                quality.reason.isEmpty() ? QString(kNotReadYet)
                                                                         : quality.reason));
            }
        };
        part.qualities(variable, from, until, [&](const recorder::QualityRow& row) {
            endAt(row.at);
            since = row.at;
            quality = row.quality;
        });
        endAt(until);
    }

    const QString address_;
    const TimeSpan span_;
    Micros covered_;
    HistoryPiece piece_;
    PastSamples samples_;
    PastGaps gaps_;
    bool isFirst_ = true;
};

} // namespace

HistoryPiece RecordedPast::history(const QString& address, qint64 from, qint64 to, size_t points)
{
    const TimeSpan span = {from * kMillisecond, to * kMillisecond};
    PastFold fold(address, span, points);
    QString ignored;
    const auto reader = recorder::RecordingReader::open(folder_, ignored);
    if (!reader) {
        return fold.end();
    }
    reader->partsWithin(span, [&](RecordingPart& part) {
        fold.takeEvents(part);
        return true;
    });
    reader->piecesWithin(span,
                         [&](RecordingPart& part, TimeSpan piece) { fold.take(part, piece); });
    HistoryPiece piece = fold.end();
    piece.oldest = reader->begin() / kMillisecond;
    return piece;
}

} // namespace tavmir::host
