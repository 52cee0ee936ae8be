// What a value was in the past, whoever knows it: the feed's memory, or a recording.
#ifndef TAVMIR_PAGE_HISTORY_SOURCE_H
#define TAVMIR_PAGE_HISTORY_SOURCE_H

#include "event_store.h"

#include <optional>
#include <vector>

namespace tavmir::host
{

// A time in which the value was not good. Milliseconds since 1970.
struct HistoryGap {
    qint64 from = 0;
    qint64 to = 0;
    QString reason; // "stale: not connected to 127.0.0.1:502: Connection refused"
};

// Samples on change: between two of them the value stayed as it was. Where there are more than was
// asked for, each stands for a while: it begins at `t`, the value was `min` at least, `max` at most
// and `last` in the end. What is no number is NaN.
struct HistoryPiece {
    std::optional<qint64> oldest; // from then on everything is known; none: nothing is
    std::vector<double> t;        // milliseconds since 1970, ascending
    std::vector<double> min;
    std::vector<double> max;
    std::vector<double> last;
    std::vector<HistoryGap> gaps;  // ascending
    std::vector<PageEvent> events; // of the element, or of all; ascending

    void add(double at, double low, double high, double end)
    {
        t.push_back(at);
        min.push_back(low);
        max.push_back(high);
        last.push_back(end);
    }
};

class HistorySource
{
public:
    virtual ~HistorySource() = default;

    // What is known of an element between two moments, with the sample that was there at `from`.
    // On one thread at a time; may take long.
    //   address  as it is shown
    //   points   samples at most
    virtual HistoryPiece history(const QString& address, qint64 from, qint64 to, size_t points) = 0;
};

} // namespace tavmir::host

#endif
