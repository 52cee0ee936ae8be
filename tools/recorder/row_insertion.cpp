// A statement for each table.
#include "row_insertion.h"

namespace tavmir::recorder
{

namespace
{

void bindReal(Statement& statement, int place, const std::optional<double>& number)
{
    if (number) {
        statement.bindReal(place, *number);
    } else {
        statement.bind(place, QString());
    }
}

// Of what is good there is no reason to keep.
QString reasonOf(const host::ValueQuality& quality)
{
    return quality.reason.isEmpty() ? QString() : quality.reason;
}

// Inserts until something fails.
class Insertion
{
public:
    explicit Insertion(Database& database) : database_(database) {}

    // bind  puts a row into the statement
    template <typename Row, typename Bind>
    Insertion& all(const std::vector<Row>& rows, const char* sql, Bind bind)
    {
        if (failure_ || rows.empty()) {
            return *this;
        }
        Statement insert = database_.prepare(sql);
        for (const Row& row : rows) {
            bind(insert, row);
            if (!insert.runOnce()) {
                failure_ = StorageFailure{database_.problem(), database_.error()};
                return *this;
            }
        }
        return *this;
    }

    const std::optional<StorageFailure>& failure() const { return failure_; }

private:
    Database& database_;
    std::optional<StorageFailure> failure_;
};

void bindVariable(Statement& insert, const NewVariable& row)
{
    insert.bind(1, row.id);
    insert.bind(2, row.variable.address);
    insert.bind(3, row.variable.name);
    insert.bind(4, row.variable.type);
    insert.bind(5, row.variable.format);
    insert.bind(6, row.variable.words);
    insert.bind(7, row.variable.station);
}

void bindPolled(Statement& insert, const PolledRow& row)
{
    insert.bind(1, row.at);
    insert.bind(2, row.place);
    insert.bind(3, row.variable);
}

void bindOpening(Statement& insert, const OpeningRow& row)
{
    insert.bind(1, row.variable);
    insert.bind(2, row.value);
    insert.bind(3, row.value.isNone() ? RecordedValue() : RecordedValue::of(row.readAt));
    insert.bind(4, static_cast<qint64>(row.quality.quality));
    insert.bind(5, reasonOf(row.quality));
}

void bindSample(Statement& insert, const SampleRow& row)
{
    insert.bind(1, row.variable);
    insert.bind(2, row.at);
    insert.bind(3, row.value);
}

void bindQuality(Statement& insert, const QualityRow& row)
{
    insert.bind(1, row.variable);
    insert.bind(2, row.at);
    insert.bind(3, static_cast<qint64>(row.quality.quality));
    insert.bind(4, reasonOf(row.quality));
}

void bindEvent(Statement& insert, const EventRow& row)
{
    insert.bind(1, row.at);
    insert.bind(2, row.until == 0 ? RecordedValue() : RecordedValue::of(row.until));
    insert.bind(3, row.kind);
    insert.bind(4, row.subject.isEmpty() ? QString() : row.subject);
    insert.bind(5, row.text.isEmpty() ? QString() : row.text);
}

void bindMinute(Statement& insert, const MinuteRow& row)
{
    const quint64 counts[] = {
        row.requests,   row.replies,       row.retries,  row.giveUps,         row.timeouts,
        row.exceptions, row.lateFrames,    row.connects, row.connectFailures, row.lostConnections,
        row.bytesSent,  row.bytesReceived, row.missed};
    int place = 0;
    insert.bind(++place, row.at);
    insert.bind(++place, row.until);
    for (const quint64 count : counts) {
        insert.bind(++place, static_cast<qint64>(count));
    }
    bindReal(insert, ++place, row.roundTripMin);
    bindReal(insert, ++place, row.roundTripMedian);
    bindReal(insert, ++place, row.roundTripP99);
    bindReal(insert, ++place, row.roundTripMax);
}

} // namespace

std::optional<StorageFailure> insertRows(Database& database, const Batch& batch)
{
    return Insertion(database)
        .all(batch.variables, "INSERT OR REPLACE INTO variable VALUES (?, ?, ?, ?, ?, ?, ?)",
             bindVariable)
        .all(batch.polled, "INSERT OR REPLACE INTO polled VALUES (?, ?, ?)", bindPolled)
        .all(batch.opening, "INSERT OR REPLACE INTO opening VALUES (?, ?, ?, ?, ?)", bindOpening)
        .all(batch.samples, "INSERT OR REPLACE INTO sample VALUES (?, ?, ?)", bindSample)
        .all(batch.qualities, "INSERT OR REPLACE INTO quality VALUES (?, ?, ?, ?)", bindQuality)
        .all(batch.events,
             "INSERT INTO event (at, until, kind, subject, text) VALUES (?, ?, ?, ?, ?)", bindEvent)
        .all(batch.minutes,
             "INSERT OR REPLACE INTO minute VALUES "
             "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
             bindMinute)
        .failure();
}

} // namespace tavmir::recorder
