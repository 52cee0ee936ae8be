// Recordings made by hand: a folder, and files with rows in them.
#ifndef TAVMIR_TESTS_RECORDER_MADE_RECORDING_H
#define TAVMIR_TESTS_RECORDER_MADE_RECORDING_H

#include "recorder/recording_file.h"
#include "support/temporary_folder.h"

namespace tavmir::recorder
{

constexpr quint64 kMiB = 1 << 20;
// 2026-01-01T00:00:00Z; moments of tests are milliseconds behind it.
constexpr Micros kEpoch = 1767225600 * kSecond;

constexpr Micros momentOf(qint64 ms)
{
    return kEpoch + ms * 1000;
}

RecordedVariable madeRecorded(const char* address, const char* type = "word",
                              const char* format = "unsigned");

class MadeRecording
{
public:
    QString folder() const { return QString::fromStdString(folder_.path()); }
    std::string path() const { return folder_.path(); }

    // A file with these rows, finished.
    void addFile(quint64 number, Micros began, Micros until, const Batch& opening,
                 const Batch& rows);

    // Of files that are added from now on; without it, one that cannot be read.
    void setProject(const QByteArray& project, const QString& name)
    {
        project_ = project;
        projectName_ = name;
    }

private:
    test::TemporaryFolder folder_;
    QByteArray project_;
    QString projectName_;
};

// Variables with the ids 1, 2 …
std::vector<NewVariable> numbered(const std::vector<RecordedVariable>& variables);
SampleRow sampleAt(VariableId variable, qint64 ms, qint64 value);
QualityRow qualityAt(VariableId variable, qint64 ms, host::Quality quality,
                     const char* reason = "");

} // namespace tavmir::recorder

#endif
