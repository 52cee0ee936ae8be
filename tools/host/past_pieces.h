// What a recording says of a value, put together: its samples, and the times without a good one.
#ifndef TAVMIR_HOST_PAST_PIECES_H
#define TAVMIR_HOST_PAST_PIECES_H

#include "page/sample_buckets.h"
#include "recorder/recorded_value.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace tavmir::host
{

// Samples as they are while there are few of them, else in spans.
class PastSamples
{
public:
    PastSamples(qint64 from, qint64 to, size_t points, HistoryPiece& piece)
        : from_(from), to_(to), points_(points), piece_(piece)
    {
    }

    void add(recorder::Micros at, const recorder::RecordedValue& value)
    {
        if (value.isNone() || value.kind == recorder::RecordedValue::Kind::text) {
            const bool isNoNumber = value.text == "nan";
            if (!isNoNumber) {
                return;
            }
        }
        const double number =
            recorder::numberOf(value).value_or(std::numeric_limits<double>::quiet_NaN());
        const qint64 ms = at / recorder::kMillisecond;
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

// Times in which there is no good value.
class PastGaps
{
public:
    void add(recorder::Micros from, recorder::Micros to, const QString& reason)
    {
        if (from < to) {
            gaps_.push_back({from, to, reason});
        }
    }

    std::vector<HistoryGap> joined()
    {
        std::stable_sort(gaps_.begin(), gaps_.end(),
                         [](const Gap& left, const Gap& right) { return left.from < right.from; });
        std::vector<HistoryGap> all;
        for (const Gap& gap : gaps_) {
            const qint64 from = gap.from / recorder::kMillisecond;
            const qint64 to = gap.to / recorder::kMillisecond;
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
        recorder::Micros from;
        recorder::Micros to;
        QString reason;
    };

    std::vector<Gap> gaps_;
};

} // namespace tavmir::host

#endif
