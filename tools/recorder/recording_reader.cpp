// Files put together.
#include "recording_reader.h"

#include <QtCore/QFile>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tavmir::recorder
{

namespace
{

using host::Quality;

bool isCalled(const RecordedVariable& variable, const QString& address)
{
    return variable.address == address || variable.name == address;
}

const NewVariable* find(const RecordingPart& part, const QString& address)
{
    const auto found =
        std::find_if(part.variables().begin(), part.variables().end(),
                     [&](const NewVariable& row) { return isCalled(row.variable, address); });
    return found == part.variables().end() ? nullptr : &*found;
}

class HistoryFold
{
public:
    HistoryFold(RecordedHistory& history, TimeSpan span, size_t buckets)
        : history_(history), span_(span), covered_(span.from)
    {
        history_.buckets.resize(buckets);
    }

    void take(RecordingPart& part, const NewVariable& variable)
    {
        const Micros from = std::max(span_.from, part.began());
        const Micros until = std::min(span_.until, part.coveredUntil());
        if (from > until) {
            return;
        }
        notRecorded(covered_, from);
        const Standing standing = part.standingAt(variable.id, from);
        if (!history_.isKnown && part.began() <= span_.from) {
            history_.before = standing.value;
        }
        history_.isKnown = true;
        history_.variable = variable.variable;
        part.samples(variable.id, from, until, [this](const SampleRow& row) { add(row); });
        begin(from, standing.quality);
        part.qualities(variable.id, from, until, [this](const QualityRow& row) {
            end(row.at);
            begin(row.at, row.quality);
        });
        end(until);
        for (const EventRow& gap : part.gaps()) {
            notRecorded(std::max(gap.at, from), std::min(gap.until, until));
        }
        covered_ = std::max(covered_, until);
    }

    void end()
    {
        notRecorded(covered_, span_.until);
        std::stable_sort(history_.notGood.begin(), history_.notGood.end(),
                         [](const NotGood& left, const NotGood& right) {
                             return left.span.from < right.span.from;
                         });
    }

private:
    void add(const SampleRow& row)
    {
        const double share = static_cast<double>(row.at - span_.from) /
                             static_cast<double>(span_.until - span_.from);
        const auto size = history_.buckets.size();
        const auto place =
            std::min(static_cast<size_t>(share * static_cast<double>(size)), size - 1);
        HistoryBucket& bucket = history_.buckets[place];
        ++bucket.count;
        bucket.last = row.value;
        if (const std::optional<double> number = numberOf(row.value)) {
            bucket.min = std::min(bucket.min.value_or(*number), *number);
            bucket.max = std::max(bucket.max.value_or(*number), *number);
        }
    }

    void begin(Micros at, const host::ValueQuality& quality) { open_ = {{at, at}, quality}; }

    void end(Micros at)
    {
        if (open_.quality.quality != Quality::good && at > open_.span.from) {
            open_.span.until = at;
            history_.notGood.push_back(open_);
        }
    }

    void notRecorded(Micros from, Micros until)
    {
        if (from < until) {
            history_.notGood.push_back({{from, until}, {Quality::never, kNotRecorded}});
        }
    }

    RecordedHistory& history_;
    TimeSpan span_;
    Micros covered_;
    NotGood open_;
};

} // namespace

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

QByteArray RecordingReader::project() const
{
    QByteArray project;
    parts([&](RecordingPart& part) {
        project = part.project();
        return true;
    });
    return project;
}

QString RecordingReader::controller() const
{
    QString controller;
    parts([&](RecordingPart& part) {
        controller = part.about("controller");
        return true;
    });
    return controller;
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

RecordedHistory RecordingReader::history(const QString& address, TimeSpan span,
                                         size_t buckets) const
{
    RecordedHistory history;
    HistoryFold fold(history, span, std::max<size_t>(1, buckets));
    if (span.until <= span.from) {
        return history;
    }
    parts([&](RecordingPart& part) {
        const NewVariable* variable = find(part, address);
        if (variable != nullptr) {
            fold.take(part, *variable);
        }
        return true;
    });
    fold.end();
    return history;
}

std::vector<RecordedValueAt> RecordingReader::valuesAt(Micros at) const
{
    std::vector<RecordedValueAt> values;
    parts([&](RecordingPart& part) {
        if (part.began() > at) {
            return true; // the clock may have been set back
        }
        values.clear();
        std::vector<RecordedVariable> known;
        bool isRecorded = at <= part.coveredUntil();
        for (const EventRow& gap : part.gaps()) {
            isRecorded = isRecorded && !(gap.at < at && at < gap.until);
        }
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
        return true;
    });
    return values;
}

std::vector<EventRow> RecordingReader::events(TimeSpan span, size_t limit) const
{
    std::vector<EventRow> events;
    parts([&](RecordingPart& part) {
        const auto left = static_cast<qint64>(limit - events.size());
        for (const EventRow& event : part.events(span.from, span.until, left)) {
            events.push_back(event);
        }
        return events.size() < limit;
    });
    std::stable_sort(events.begin(), events.end(), [](const EventRow& left, const EventRow& right) {
        return left.at < right.at;
    });
    return events;
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
