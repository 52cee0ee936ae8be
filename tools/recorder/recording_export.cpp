// Piece by piece.
#include "recording_export.h"

#include <algorithm>
#include <limits>

namespace tavmir::recorder
{

namespace
{

// A piece is as long as some ten thousand rows, so that it is read within a moment.
constexpr Micros kFirstPiece = 10 * kSecond;
constexpr Micros kLongestPiece = 60 * kMinute;
constexpr Micros kShortestPiece = kSecond / 10;
constexpr size_t kFewRows = 5000;
constexpr size_t kManyRows = 20000;

Micros lengthAfter(Micros length, size_t rows)
{
    if (rows < kFewRows) {
        return std::min(2 * length, kLongestPiece);
    }
    return rows > kManyRows ? std::max(length / 2, kShortestPiece) : length;
}

Micros roundedUp(Micros at, Micros step)
{
    return (at + step - 1) / step * step;
}

} // namespace

RecordingExport::RecordingExport(const RecordingReader& reader, const QStringList& addresses,
                                 QString& problem)
    : reader_(reader)
{
    const std::vector<RecordedVariable> all = reader.variables();
    if (addresses.isEmpty()) {
        columns_ = all;
        return;
    }
    for (const QString& address : addresses) {
        const size_t before = columns_.size();
        std::copy_if(all.begin(), all.end(), std::back_inserter(columns_),
                     [&](const RecordedVariable& variable) {
                         return variable.address == address || variable.name == address;
                     });
        if (columns_.size() == before && problem.isEmpty()) {
            problem = QString("%1: the recording has no such variable").arg(address);
        }
    }
}

void RecordingExport::walk(TimeSpan span, qint64 stepMs, const ExportSink& sink)
{
    sink_ = &sink;
    stepMicros_ = stepMs * 1000;
    const TimeSpan covered = reader_.coverage();
    const TimeSpan whole = {std::max(span.from, covered.from), std::min(span.until, covered.until)};
    reader_.parts([&](RecordingPart& part) { return walkPart(part, span, whole); }, sink.problem);
}

// False: no further.
bool RecordingExport::walkPart(RecordingPart& part, TimeSpan span, TimeSpan whole)
{
    const Micros from = std::max(span.from, part.began());
    // What was recorded last counts, too.
    const Micros until =
        std::min({span.until, part.coveredUntil() + 1, std::max(whole.until + 1, part.began())});
    if (from >= until) {
        return sink_->goesOn({whole.from, std::min(until, whole.until)}, whole);
    }
    selected_.clear();
    cells_.assign(columns_.size(), ExportCell());
    for (const NewVariable& row : part.variables()) {
        const auto column = std::find(columns_.begin(), columns_.end(), row.variable);
        if (column == columns_.end()) {
            continue;
        }
        const auto place = static_cast<size_t>(column - columns_.begin());
        const Standing standing = part.standingAt(row.id, from - 1);
        selected_.emplace_back(row.id, place);
        cells_[place] = {standing.value, textOf(*column, standing.value), standing.quality};
    }
    gaps_ = part.gaps();
    nextStep_ = stepMicros_ > 0 ? roundedUp(from, stepMicros_) : 0;
    Micros length = kFirstPiece;
    for (Micros at = from; at < until;) {
        const TimeSpan piece = {at, std::min(at + length, until)};
        const std::vector<PieceRow> rows = pieceOf(part, piece);
        for (const PieceRow& row : rows) {
            stepTo(row.at);
            apply(row);
        }
        stepTo(piece.until);
        at = piece.until;
        length = lengthAfter(length, rows.size());
        if (!sink_->goesOn({whole.from, at}, whole)) {
            return false;
        }
    }
    return true;
}

// In the order of time; a value and a quality of the same moment are one row.
std::vector<RecordingExport::PieceRow> RecordingExport::pieceOf(RecordingPart& part,
                                                                TimeSpan piece) const
{
    std::vector<PieceRow> rows;
    for (const auto& pair : selected_) {
        const size_t column = pair.second;
        part.qualities(pair.first, piece.from, piece.until, [&](const QualityRow& row) {
            rows.push_back({row.at, column, false, true, RecordedValue(), row.quality});
        });
        part.samples(pair.first, piece.from, piece.until, [&](const SampleRow& row) {
            rows.push_back({row.at, column, true, false, row.value, host::ValueQuality()});
        });
    }
    std::stable_sort(rows.begin(), rows.end(), [](const PieceRow& left, const PieceRow& right) {
        return std::make_pair(left.at, left.column) < std::make_pair(right.at, right.column);
    });
    std::vector<PieceRow> joined;
    for (const PieceRow& row : rows) {
        const bool isSame =
            !joined.empty() && joined.back().at == row.at && joined.back().column == row.column;
        if (!isSame) {
            joined.push_back(row);
        } else {
            // The quality stands in front, see above.
            joined.back().hasValue = true;
            joined.back().value = row.value;
        }
    }
    return joined;
}

void RecordingExport::apply(const PieceRow& row)
{
    ExportCell& cell = cells_[row.column];
    if (row.hasValue) {
        cell.value = row.value;
        cell.text = textOf(columns_[row.column], cell.value);
    }
    if (row.hasQuality) {
        cell.quality = row.quality;
    }
    if (stepMicros_ == 0) {
        sink_->row(row.at, row.column, cell);
    }
}

// The steps before that time.
void RecordingExport::stepTo(Micros at)
{
    if (stepMicros_ == 0) {
        return;
    }
    for (; nextStep_ < at; nextStep_ += stepMicros_) {
        if (!isInGap(nextStep_)) {
            sink_->step(nextStep_, cells_);
        }
    }
}

bool RecordingExport::isInGap(Micros at) const
{
    return std::any_of(gaps_.begin(), gaps_.end(),
                       [&](const EventRow& gap) { return gap.at < at && at < gap.until; });
}

} // namespace tavmir::recorder
