// Files put together.
#include "recording_reader.h"

#include <QtCore/QFile>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

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

void RecordingReader::partsWithin(TimeSpan span, const TakePart& take) const
{
    const std::vector<Member> members = membersOf(folder_);
    for (size_t i = 0; i < members.size(); ++i) {
        // The next one goes on where this one ends, unless the clock was set back between them.
        const bool isBefore = i + 1 < members.size() && members[i + 1].began <= span.from &&
                              members[i + 1].began > members[i].began;
        if (isBefore || members[i].began >= span.until) {
            continue;
        }
        QString ignored;
        const std::unique_ptr<RecordingPart> part = RecordingPart::open(members[i], ignored);
        if (part && !take(*part)) {
            return;
        }
    }
}

Micros RecordingReader::begin() const
{
    const std::vector<Member> members = membersOf(folder_);
    return members.empty() ? 0 : members.front().began;
}

TimeSpan RecordingReader::coverage() const
{
    const std::vector<TimeSpan> all = stretches();
    return all.empty() ? TimeSpan() : TimeSpan{all.front().from, all.back().until};
}

std::vector<TimeSpan> RecordingReader::stretches() const
{
    std::vector<TimeSpan> spans;
    const auto add = [&](Micros from, Micros until) {
        if (!spans.empty() && from == spans.back().until) {
            spans.back().until = until;
        } else if (until > from) {
            spans.push_back({from, until});
        }
    };
    parts([&](RecordingPart& part) {
        Micros from = part.began();
        for (const EventRow& gap : part.gaps()) {
            if (gap.at >= from) {
                add(from, gap.at);
                from = gap.until;
            }
        }
        add(from, part.coveredUntil());
        return true;
    });
    return spans;
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

void RecordingReader::partsBackFrom(Micros at, const TakePart& take) const
{
    const std::vector<Member> members = membersOf(folder_);
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        QString ignored;
        const std::unique_ptr<RecordingPart> part =
            member->began <= at ? RecordingPart::open(*member, ignored) : nullptr;
        if (part && part->began() <= at && !take(*part)) {
            return;
        }
    }
}

std::unique_ptr<RecordingPart> RecordingReader::partAt(Micros at) const
{
    const std::vector<Member> members = membersOf(folder_);
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        QString ignored;
        std::unique_ptr<RecordingPart> part =
            member->began <= at ? RecordingPart::open(*member, ignored) : nullptr;
        if (part && part->began() <= at) {
            return part;
        }
    }
    return nullptr;
}

std::unique_ptr<RecordingPart> RecordingReader::newestPart() const
{
    return partAt(std::numeric_limits<Micros>::max());
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

std::vector<EventRow> RecordingReader::lastEvents(Micros at, size_t limit) const
{
    std::vector<EventRow> events;
    partsBackFrom(at, [&](RecordingPart& part) {
        for (const EventRow& event : part.lastEvents(at, limit - events.size())) {
            events.push_back(event);
        }
        return events.size() < limit;
    });
    std::reverse(events.begin(), events.end());
    std::stable_sort(events.begin(), events.end(), [](const EventRow& left, const EventRow& right) {
        return left.at < right.at;
    });
    return events;
}

std::optional<EventRow> RecordingReader::lastLineEvent(Micros at) const
{
    std::optional<EventRow> event;
    partsBackFrom(at, [&](RecordingPart& part) {
        event = part.lastLineEvent(at);
        return !event;
    });
    return event;
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
