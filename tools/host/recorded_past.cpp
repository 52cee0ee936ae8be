// Files folded into one piece.
#include "recorded_past.h"

#include "page/sample_buckets.h"
#include "recorded_events.h"
#include "recorder/recording_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

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

// Samples as they are while there are few of them, else in spans.
class Samples
{
public:
    Samples(qint64 from, qint64 to, size_t points, HistoryPiece& piece)
        : from_(from), to_(to), points_(points), piece_(piece)
    {
    }

    void add(Micros at, const recorder::RecordedValue& value)
    {
        if (value.isNone() || value.kind == recorder::RecordedValue::Kind::text) {
            const bool isNoNumber = value.text == "nan";
            if (!isNoNumber) {
                return;
            }
        }
        const double number =
            recorder::numberOf(value).value_or(std::numeric_limits<double>::quiet_NaN());
        const qint64 ms = at / kMillisecond;
        const bool isSame = any_ && (number == last_ || (std::isnan(number) && std::isnan(last_)));
        if (isSame || (any_ && ms < at_)) {
            return;
        }
        any_ = true;
        last_ = number;
        at_ = ms;
        if (buckets_) {
            buckets_->add(ms, number);
        } else {
            addRaw(ms, number);
        }
    }

    void end()
    {
        if (buckets_) {
            buckets_->end();
        }
    }

private:
    void addRaw(qint64 ms, double number)
    {
        if (!piece_.t.empty() && piece_.t.back() == static_cast<double>(ms)) {
            piece_.min.back() = std::fmin(piece_.min.back(), number);
            piece_.max.back() = std::fmax(piece_.max.back(), number);
            piece_.last.back() = number;
            return;
        }
        piece_.add(static_cast<double>(ms), number, number, number);
        if (piece_.t.size() > points_) {
            beginBuckets();
        }
    }

    // Too many by now: what is there goes into spans, too.
    void beginBuckets()
    {
        HistoryPiece few;
        std::swap(few.t, piece_.t);
        std::swap(few.min, piece_.min);
        std::swap(few.max, piece_.max);
        std::swap(few.last, piece_.last);
        buckets_ =
            std::make_unique<SampleBuckets>(from_, to_, std::max<size_t>(2, points_) - 1, piece_);
        for (size_t i = 0; i < few.t.size(); ++i) {
            const auto at = static_cast<qint64>(few.t[i]);
            buckets_->add(at, few.min[i]);
            buckets_->add(at, few.max[i]);
            buckets_->add(at, few.last[i]);
        }
    }

    const qint64 from_;
    const qint64 to_;
    const size_t points_;
    HistoryPiece& piece_;
    std::unique_ptr<SampleBuckets> buckets_;
    bool any_ = false;
    double last_ = 0;
    qint64 at_ = 0;
};

// Times in which there is no good value; what was not recorded hides what else was the matter.
class Gaps
{
public:
    void add(Micros from, Micros to, const QString& reason)
    {
        if (from < to) {
            gaps_.push_back({from, to, reason});
        }
    }

    void cut(Micros from, Micros to)
    {
        std::vector<Gap> kept;
        for (const Gap& gap : gaps_) {
            const Gap before = {gap.from, std::min(gap.to, from), gap.reason};
            const Gap after = {std::max(gap.from, to), gap.to, gap.reason};
            for (const Gap& part : {before, after}) {
                if (part.from < part.to) {
                    kept.push_back(part);
                }
            }
        }
        gaps_ = kept;
    }

    std::vector<HistoryGap> joined()
    {
        std::stable_sort(gaps_.begin(), gaps_.end(),
                         [](const Gap& left, const Gap& right) { return left.from < right.from; });
        std::vector<HistoryGap> all;
        for (const Gap& gap : gaps_) {
            const qint64 from = gap.from / kMillisecond;
            const qint64 to = gap.to / kMillisecond;
            if (!all.empty() && all.back().reason == gap.reason && all.back().to >= from) {
                all.back().to = std::max(all.back().to, to);
            } else {
                all.push_back({from, to, gap.reason});
            }
        }
        return all;
    }

private:
    struct Gap {
        Micros from;
        Micros to;
        QString reason;
    };

    std::vector<Gap> gaps_;
};

class PastFold
{
public:
    PastFold(const QString& address, TimeSpan span, size_t points)
        : address_(address), span_(span), covered_(span.from),
          samples_(span.from / kMillisecond, span.until / kMillisecond, points, piece_)
    {
    }

    void take(RecordingPart& part)
    {
        const Micros from = std::max({span_.from, part.began(), covered_});
        const Micros until = std::min(span_.until, part.coveredUntil());
        for (const recorder::EventRow& row : part.events(span_.from, span_.until, kMostEvents)) {
            addEvent(row);
        }
        if (from >= until) {
            return;
        }
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
        for (const recorder::EventRow& gap : part.gaps()) {
            const Micros begin = std::max(gap.at, from);
            const Micros end = std::min(gap.until, until);
            gaps_.cut(begin, end);
            gaps_.add(begin, end, recorder::kNotRecorded);
        }
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
        if (event.address.isNull() || event.address == address_) {
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
    Samples samples_;
    Gaps gaps_;
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
        fold.take(part);
        return true;
    });
    HistoryPiece piece = fold.end();
    piece.oldest = reader->begin() / kMillisecond;
    return piece;
}

} // namespace tavmir::host
