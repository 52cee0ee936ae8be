// What is shown of each value, with the look that changed it last, so that a client gets what is
// newer than what it knows.
//
//   [index, text, number or null, quality, reason, readAt, changedAt]
#ifndef TAVMIR_PAGE_VALUE_ROWS_H
#define TAVMIR_PAGE_VALUE_ROWS_H

#include "feed/quality.h"

#include <optional>
#include <string>
#include <vector>

namespace tavmir::host
{

// What stands where nothing was ever read.
constexpr char kNeverRead[] = "–";

class ValueRows
{
public:
    // So many rows of which nothing is known, as changed by this look.
    void reset(size_t count, quint64 sequence);
    size_t size() const { return rows_.size(); }

    // Another value.
    //   text       as it is shown
    //   number     behind it; none of a text
    //   changedAt  milliseconds since 1970
    void setValue(size_t index, const QString& text, const std::optional<double>& number,
                  qint64 changedAt, quint64 sequence);
    // Another quality counts as a change; a reason that goes on, "not read for 3.2 s", and a newer
    // reading do with `refresh` only.
    //   readAt  milliseconds since 1970; 0: never
    // True when the row is another one now.
    bool setQuality(size_t index, const ValueQuality& quality, qint64 readAt, bool refresh,
                    quint64 sequence);

    QString text(size_t index) const { return rows_[index].text; }
    std::optional<double> number(size_t index) const { return rows_[index].number; }
    Quality quality(size_t index) const { return rows_[index].quality; }
    qint64 changedAt(size_t index) const { return rows_[index].changedAt; }

    // Appends the row.
    void write(size_t index, std::string& out) const;
    // Appends "[row,row…]" of those that were changed by a look after `since`. False: none was.
    bool writeSince(quint64 since, std::string& out) const;

private:
    struct Row {
        QString text = kNeverRead;
        std::optional<double> number;
        Quality quality = Quality::never;
        QString reason;
        qint64 readAt = 0;
        qint64 changedAt = 0;
        quint64 sequence = 0;
    };

    class TimeText;

    void write(size_t index, TimeText& read, TimeText& changed, std::string& out) const;

    std::vector<Row> rows_;
};

} // namespace tavmir::host

#endif
