// Samples into spans.
#include "sample_buckets.h"

#include <algorithm>
#include <cmath>

namespace tavmir::host
{

SampleBuckets::SampleBuckets(qint64 from, qint64 to, size_t count, HistoryPiece& piece)
    : from_(from),
      length_(std::max(1.0, static_cast<double>(to - from) / static_cast<double>(count))),
      piece_(piece)
{
}

qint64 SampleBuckets::spanOf(qint64 at) const
{
    return at < from_ ? -1
                      : static_cast<qint64>(std::floor(static_cast<double>(at - from_) / length_));
}

void SampleBuckets::add(qint64 at, double low, double high, double last)
{
    const qint64 span = spanOf(at);
    if (any_ && span == span_ && span >= 0) {
        min_ = std::fmin(min_, low);
        max_ = std::fmax(max_, high);
        last_ = last;
        return;
    }
    end();
    const bool stayed = any_ && span >= 0 && std::isfinite(last_);
    // At the span's beginning, unless nothing was known then.
    const double begin = static_cast<double>(from_) + static_cast<double>(span) * length_;
    at_ = stayed ? static_cast<qint64>(begin) : at;
    min_ = stayed ? std::fmin(last_, low) : low;
    max_ = stayed ? std::fmax(last_, high) : high;
    last_ = last;
    span_ = span;
    any_ = true;
}

void SampleBuckets::end()
{
    if (any_) {
        piece_.add(static_cast<double>(at_), min_, max_, last_);
    }
}

} // namespace tavmir::host
