// Walks through a recording in the order of time, for whoever writes it down: value by value, or
// at even steps. Reads a short piece at a time, so that a recorder that writes into the folder is
// never held up. One thread.
#ifndef TAVMIR_RECORDER_RECORDING_EXPORT_H
#define TAVMIR_RECORDER_RECORDING_EXPORT_H

#include "recording_reader.h"

#include <QtCore/QStringList>

namespace tavmir::recorder
{

// How a variable stands; its text is kept, as it is asked for again and again.
struct ExportCell {
    RecordedValue value;
    QString text; // null: no value
    host::ValueQuality quality;
};

// What is told of the walk.
struct ExportSink {
    // A variable has another value or quality from then on, or was looked at once more.
    std::function<void(Micros at, size_t column, const ExportCell& cell)> row;
    // All variables at a step. Only with steps; row is not called then.
    std::function<void(Micros at, const std::vector<ExportCell>& cells)> step;
    // How far it is; false: no further.
    std::function<bool(TimeSpan done, TimeSpan whole)> goesOn;
    // A file that cannot be read.
    std::function<void(const QString& problem)> problem;
};

class RecordingExport
{
public:
    // reader     outlives it
    // addresses  or names of variables; empty: all. One that is not known: `problem` says which
    //            in one line.
    RecordingExport(const RecordingReader& reader, const QStringList& addresses, QString& problem);

    const std::vector<RecordedVariable>& columns() const { return columns_; }

    // What is recorded within the span, and until this call began.
    //   stepMs  0: each row; else steps at whole multiples of it, none where nothing was recorded
    void walk(TimeSpan span, qint64 stepMs, const ExportSink& sink);

private:
    struct PieceRow {
        Micros at = 0;
        size_t column = 0;
        bool hasValue = false;
        bool hasQuality = false;
        RecordedValue value;
        host::ValueQuality quality;
    };

    bool walkPart(RecordingPart& part, TimeSpan span, TimeSpan whole);
    std::vector<PieceRow> pieceOf(RecordingPart& part, TimeSpan piece) const;
    void apply(const PieceRow& row);
    void stepTo(Micros at);
    bool isInGap(Micros at) const;

    const RecordingReader& reader_;
    std::vector<RecordedVariable> columns_;
    // Of the walk:
    const ExportSink* sink_ = nullptr;
    Micros stepMicros_ = 0;
    Micros nextStep_ = 0;
    std::vector<std::pair<VariableId, size_t>> selected_; // of the part, and their columns
    std::vector<EventRow> gaps_;                          // of the part
    std::vector<ExportCell> cells_;
};

} // namespace tavmir::recorder

#endif
