// Files put together.
#include "recording_reader.h"

#include <QtCore/QFile>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavmir::recorder
{

using host::Quality;

std::unique_ptr<RecordingReader> RecordingReader::open(const QString& folder, QString& problem)
{
    const std::string path = QFile::encodeName(folder).toStdString();
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        problem = QString("%1: %2").arg(folder, QString::fromLocal8Bit(std::strerror(errno)));
        return nullptr;
    }
    if (!S_ISDIR(status.st_mode)) {
        problem = QString("%1: is no folder; a recording is a folder of files").arg(folder);
        return nullptr;
    }
    if (membersOf(path).empty()) {
        problem = QString("%1: holds no recording").arg(folder);
        return nullptr;
    }
    return std::unique_ptr<RecordingReader>(new RecordingReader(path));
}

void RecordingReader::parts(const TakePart& take, const TakeProblem& tell) const
{
    for (const Member& member : membersOf(folder_)) {
        QString problem;
        const std::unique_ptr<RecordingPart> part = RecordingPart::open(member, problem);
        if (part && !take(*part)) {
            return;
        }
        if (!part && !problem.isEmpty() && tell) {
            tell(QString::fromLocal8Bit(member.path.c_str()) + ": " + problem);
        }
    }
}

std::vector<RecordedVariable> RecordingReader::variables() const
{
    std::vector<std::vector<RecordedVariable>> byPart;
    parts([&](RecordingPart& part) {
        byPart.emplace_back();
        for (const NewVariable& row : part.variables()) {
            byPart.back().push_back(row.variable);
        }
        return true;
    });
    std::vector<RecordedVariable> all;
    for (auto part = byPart.rbegin(); part != byPart.rend(); ++part) {
        const size_t known = all.size();
        for (const RecordedVariable& variable : *part) {
            const auto end = all.begin() + static_cast<std::ptrdiff_t>(known);
            if (std::find(all.begin(), end, variable) == end) {
                all.push_back(variable);
            }
        }
    }
    return all;
}

std::vector<RecordedValueAt> RecordingReader::valuesAt(Micros at) const
{
    const std::unique_ptr<RecordingPart> part = partAt(at);
    return part ? valuesAt(*part, at) : std::vector<RecordedValueAt>();
}

std::vector<RecordedValueAt> RecordingReader::valuesAt(RecordingPart& part, Micros at)
{
    const bool isRecorded = part.isRecordedAt(at);
    std::vector<RecordedValueAt> values;
    for (const VariableId id : part.polledAt(at)) {
        const auto row = std::find_if(part.variables().begin(), part.variables().end(),
                                      [&](const NewVariable& one) { return one.id == id; });
        if (row == part.variables().end()) {
            continue;
        }
        RecordedValueAt value = {row->variable, part.standingAt(id, at)};
        if (!isRecorded) {
            value.standing.quality = {
                value.standing.value.isNone() ? Quality::never : Quality::stale, kNotRecorded};
        }
        values.push_back(value);
    }
    return values;
}

std::vector<MinuteRow> RecordingReader::minutes(TimeSpan span) const
{
    std::vector<MinuteRow> minutes;
    parts([&](RecordingPart& part) {
        for (const MinuteRow& minute : part.minutes(span.from, span.until)) {
            minutes.push_back(minute);
        }
        return true;
    });
    return minutes;
}

} // namespace tavmir::recorder
