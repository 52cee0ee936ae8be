// Rows kept and written.
#include "value_rows.h"

#include "json_writer.h"

#include <charconv>
#include <cmath>

namespace tavmir::host
{

namespace
{

// As few digits as bring the float back; what is no float keeps all of its own.
void writeNumber(JsonWriter& json, const std::optional<double>& number)
{
    if (!number || !std::isfinite(*number)) {
        json.null();
        return;
    }
    const bool isWhole = std::floor(*number) == *number;
    const auto asFloat = static_cast<float>(*number);
    if (isWhole || static_cast<double>(asFloat) != *number) {
        json.number(*number);
        return;
    }
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, asFloat);
    json.raw(std::string(text, end.ptr));
}

} // namespace

// Many rows in a row have the same times: these are put into words once.
class ValueRows::TimeText
{
public:
    const std::string& of(qint64 ms)
    {
        if (ms != ms_) {
            ms_ = ms;
            text_ = ms == 0 ? "null" : std::to_string(ms);
        }
        return text_;
    }

private:
    qint64 ms_ = 0;
    std::string text_ = "null";
};

void ValueRows::reset(size_t count, quint64 sequence)
{
    Row row;
    row.sequence = sequence;
    rows_.assign(count, row);
}

void ValueRows::setValue(size_t index, const QString& text, const std::optional<double>& number,
                         qint64 changedAt, quint64 sequence)
{
    Row& row = rows_[index];
    row.text = text;
    row.number = number;
    row.changedAt = changedAt;
    row.sequence = sequence;
}

bool ValueRows::setQuality(size_t index, const ValueQuality& quality, qint64 readAt, bool refresh,
                           quint64 sequence)
{
    Row& row = rows_[index];
    const bool isOther = row.quality != quality.quality;
    const bool isNewer = row.readAt != readAt || row.reason != quality.reason;
    // A row that goes out anyway takes the newest along.
    if (!isOther && !(isNewer && (refresh || row.sequence == sequence))) {
        return false;
    }
    row.quality = quality.quality;
    row.reason = quality.reason;
    row.readAt = readAt;
    row.sequence = sequence;
    return true;
}

void ValueRows::write(size_t index, std::string& out) const
{
    TimeText read;
    TimeText changed;
    write(index, read, changed, out);
}

void ValueRows::write(size_t index, TimeText& read, TimeText& changed, std::string& out) const
{
    const Row& row = rows_[index];
    JsonWriter json(out);
    json.beginArray().whole(static_cast<qint64>(index)).text(row.text);
    writeNumber(json, row.number);
    json.word(qualityWord(row.quality)).text(row.reason);
    json.raw(read.of(row.readAt)).raw(changed.of(row.changedAt)).endArray();
}

bool ValueRows::writeSince(quint64 since, std::string& out) const
{
    TimeText read;
    TimeText changed;
    bool any = false;
    out += '[';
    for (size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].sequence > since) {
            out += any ? "," : "";
            any = true;
            write(i, read, changed, out);
        }
    }
    out += ']';
    return any;
}

} // namespace tavmir::host
