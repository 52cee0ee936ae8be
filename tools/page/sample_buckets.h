// Samples in the order of time, thinned where there are too many: into spans of equal length, each
// with smallest, largest and last value. A value that stays counts in every span that it reaches
// into.
#ifndef TAVMIR_PAGE_SAMPLE_BUCKETS_H
#define TAVMIR_PAGE_SAMPLE_BUCKETS_H

#include "history_source.h"

namespace tavmir::host
{

class SampleBuckets
{
public:
    // piece  outlives it; samples are added to it
    SampleBuckets(qint64 from, qint64 to, size_t count, HistoryPiece& piece);

    void add(qint64 at, double value) { add(at, value, value, value); }
    // Samples that follow each other, the first of them at that moment, in one span: they count as
    // one by one.
    void add(qint64 at, double low, double high, double last);
    bool isOneSpan(qint64 first, qint64 last) const
    {
        return first >= from_ && spanOf(first) == spanOf(last);
    }
    // Adds the last span.
    void end();

private:
    qint64 spanOf(qint64 at) const;

    const qint64 from_;
    const double length_; // of a span, ms
    HistoryPiece& piece_;
    bool any_ = false; // something was added
    qint64 span_ = 0;  // the present one; what lies before `from` is the span -1
    qint64 at_ = 0;
    double min_ = 0;
    double max_ = 0;
    double last_ = 0;
};

} // namespace tavmir::host

#endif
