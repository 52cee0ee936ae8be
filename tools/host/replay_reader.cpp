// Files into moments.
#include "replay_reader.h"

#include "project/project_reader.h"

#include <algorithm>
#include <limits>

namespace tavmir::host
{

namespace
{

using recorder::Micros;
using recorder::MinuteRow;
using recorder::RecordingPart;
using recorder::RecordingReader;
using recorder::TimeSpan;

void addTo(MinuteRow& sum, const MinuteRow& row)
{
    sum.timeouts += row.timeouts;
    sum.retries += row.retries;
    sum.giveUps += row.giveUps;
    sum.exceptions += row.exceptions;
    sum.lateFrames += row.lateFrames;
    sum.lostConnections += row.lostConnections;
    sum.connectFailures += row.connectFailures;
    sum.missed += row.missed;
}

} // namespace

std::unique_ptr<ReplayReader> ReplayReader::open(const QString& folder, QString& problem)
{
    std::unique_ptr<RecordingReader> recording = RecordingReader::open(folder, problem);
    if (!recording) {
        return nullptr;
    }
    QString unreadable;
    recording->parts([](RecordingPart&) { return false; },
                     [&](const QString& text) { unreadable = text; });
    const TimeSpan span = recording->coverage();
    if (span.until <= span.from) {
        problem = unreadable.isEmpty() ? folder + ": holds nothing yet" : unreadable;
        return nullptr;
    }
    std::unique_ptr<ReplayReader> reader(new ReplayReader(std::move(recording)));
    reader->coverage_ = span;
    reader->oldest_ = reader->reader_->oldest();
    reader->takeMinutes(span);
    return reader;
}

TimeSpan ReplayReader::coverage()
{
    const quint64 oldest = reader_->oldest();
    if (oldest != oldest_) { // with it may have gone what began first, or ended last
        const TimeSpan left = reader_->coverage();
        coverage_ = left.from < left.until ? left : coverage_;
        oldest_ = oldest;
    }
    if (const std::unique_ptr<RecordingPart> newest = reader_->newestPart()) {
        coverage_.from = std::min(coverage_.from, newest->began());
        coverage_.until = std::max(coverage_.until, newest->coveredUntil());
        takeMinutes({newest->began(), newest->coveredUntil()});
    }
    return coverage_;
}

void ReplayReader::takeMinutes(TimeSpan span)
{
    for (const MinuteRow& row : reader_->minutes(span)) {
        minutes_[row.at] = row;
    }
}

std::shared_ptr<const ReplayProject> ReplayReader::projectOf(RecordingPart& part)
{
    if (part.began() == projectOf_) {
        return project_;
    }
    projectOf_ = part.began();
    const QByteArray bytes = part.project();
    if (bytes == projectBytes_ && part.projectName() == project_->name) {
        return project_;
    }
    projectBytes_ = bytes;
    const auto found = std::make_shared<ReplayProject>();
    found->name = part.projectName();
    project::ReadOutcome outcome = project::readProject(bytes, found->name);
    found->problem = outcome.error;
    if (outcome.project) {
        found->project = std::move(*outcome.project);
    }
    project_ = found;
    return found;
}

void ReplayReader::addMinutes(ReplayMoment& moment) const
{
    for (const auto& [at, row] : minutes_) {
        if (at > moment.at) {
            break;
        }
        addTo(moment.total, row);
    }
}

// What the events say that were recorded before the moment: those of its file until then, and of
// the files before, which lie at later times where the clock was set back.
recorder::EventFold ReplayReader::pastOf(RecordingPart& part, Micros at)
{
    recorder::EventFold fold;
    quint64 next = 0;
    const auto take = [&fold](RecordingPart& one, Micros until) {
        for (const recorder::EventRow& row : one.eventsOf(recorder::EventFold::kinds(), until)) {
            fold.take(row);
        }
    };
    const bool isKnown = carriedInto_.count(part.number()) > 0;
    const auto carry = [&](RecordingPart& one) {
        if (next != one.number()) {
            fold.miss();
        }
        fold = carriedInto_.emplace(one.number(), fold).first->second;
        next = one.number() + 1;
        const bool isBefore = one.number() < part.number();
        if (isBefore && carriedInto_.count(next) == 0) {
            take(one, std::numeric_limits<Micros>::max());
        }
        return isBefore;
    };
    if (!isKnown) {
        reader_->parts(carry);
    }
    fold = carriedInto_[part.number()];
    take(part, at);
    return fold;
}

ReplayMoment ReplayReader::at(Micros at)
{
    ReplayMoment moment;
    moment.at = at;
    moment.coverage = coverage_;
    moment.project = project_;
    if (const std::unique_ptr<RecordingPart> part = reader_->partAt(at)) {
        moment.isRecorded = part->isRecordedAt(at);
        moment.controller = part->about("controller");
        moment.project = projectOf(*part);
        moment.values = RecordingReader::valuesAt(*part, at);
        moment.past = pastOf(*part, at);
        for (const MinuteRow& row : part->minutes(at - 1, at + 1)) {
            moment.minute = row;
        }
    }
    moment.events = reader_->lastEvents(at, kEvents);
    addMinutes(moment);
    return moment;
}

} // namespace tavmir::host
