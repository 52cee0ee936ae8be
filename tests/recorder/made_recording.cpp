// Rows by hand.
#include "made_recording.h"

#include "recorder/recording_folder.h"

#include <stdexcept>

namespace tavmir::recorder
{

RecordedVariable madeRecorded(const char* address, const char* type, const char* format)
{
    RecordedVariable variable;
    variable.address = address;
    variable.name = QString("name of ") + address;
    variable.type = type;
    variable.format = format;
    variable.station = 1;
    return variable;
}

void MadeRecording::addFile(quint64 number, Micros began, Micros until, const Batch& opening,
                            const Batch& rows)
{
    QString problem;
    FileFacts facts;
    facts.program = "test";
    facts.controller = "10.0.0.2:502";
    facts.project = project_.isEmpty() ? "project " + QByteArray::number(number) : project_;
    facts.projectName = projectName_;
    const auto file = RecordingFile::create(memberPath(path(), number, began), facts, began, kMiB,
                                            opening, problem);
    if (!file || !file->write(rows, until)) {
        throw std::runtime_error(problem.toStdString());
    }
    file->finish();
}

std::vector<NewVariable> numbered(const std::vector<RecordedVariable>& variables)
{
    std::vector<NewVariable> rows;
    for (const RecordedVariable& variable : variables) {
        rows.push_back({static_cast<VariableId>(rows.size() + 1), variable});
    }
    return rows;
}

SampleRow sampleAt(VariableId variable, qint64 ms, qint64 value)
{
    return {variable, momentOf(ms), RecordedValue::of(value)};
}

QualityRow qualityAt(VariableId variable, qint64 ms, host::Quality quality, const char* reason)
{
    return {variable, momentOf(ms), {quality, reason}};
}

} // namespace tavmir::recorder
