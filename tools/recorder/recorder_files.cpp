// The ring of files of a recorder.
#include "recorder.h"
#include "state_words.h"

namespace tavmir::recorder
{

using host::Clock;

namespace
{

// What a new file may come to need: itself, its log, and what is written at once.
quint64 roomFor(quint64 mostInAFile)
{
    return 2 * mostInAFile + mostInAFile / 2;
}

} // namespace

// The file itself, or, while a reader holds on to it, what waits in its log.
bool Recorder::isFull() const
{
    return file_->bytes() > mostInAFile() - mostInAFile() / 8 ||
           file_->bytesOnDisk() > 2 * mostInAFile();
}

bool Recorder::beginFile(Clock::time_point now, const std::vector<EventRow>& events)
{
    const Micros began = recording_.clock().at(now);
    QString problem;
    Batch opening = recording_.standing(now);
    opening.events = events;
    makeRoom(roomFor(mostInAFile()));
    file_ = RecordingFile::create(memberPath(folder_, nextNumber_, began), facts_, began,
                                  mostInAFile(), opening, problem);
    if (!file_) {
        fail(problem, now);
        return false;
    }
    covered_.tell(nextNumber_, began);
    ++nextNumber_;
    return true;
}

// What is told at the beginning of the first one: since when nobody recorded, and that this program
// does.
std::vector<EventRow> Recorder::beginningAfter(const std::vector<Member>& before, Micros now) const
{
    std::vector<EventRow> events;
    const Micros earlier = before.empty() ? 0 : covered_.untilOf(before.back().number);
    if (earlier > 0 && earlier < now) {
        events.push_back(
            {earlier, now, event_kind::kGap, QString(), "no program recorded into this folder"});
    }
    events.push_back({now, 0, event_kind::kBegan, facts_.controller, facts_.program});
    return events;
}

// To the next file.
//   event  why, when it is not because this one is full: the clock was set
void Recorder::turnTo(const QString& event, Clock::time_point now)
{
    file_->finish();
    file_.reset();
    tidy();
    if (!event.isEmpty()) {
        recording_.setClock(clockNow(), now);
    }
    std::vector<EventRow> events;
    if (!event.isEmpty()) {
        events.push_back({recording_.clock().at(now), 0, event_kind::kClock, QString(), event});
    }
    beginFile(now, events);
}

// The oldest go until so much more fits into the limit.
void Recorder::makeRoom(quint64 wanted) const
{
    const std::vector<Member> members = membersOf(folder_);
    quint64 bytes = bytesOf(members);
    for (const Member& member : members) {
        if (bytes + wanted <= options_.limitBytes || (file_ && member.path == file_->path())) {
            return;
        }
        removeMember(member);
        bytes -= member.bytes;
    }
}

// Files that are finished but for a log, which a killed program left, or a reader held.
void Recorder::tidy() const
{
    for (const Member& member : membersOf(folder_)) {
        const bool isOpen = file_ && member.path == file_->path();
        if (member.hasLog && !isOpen) {
            settle(member.path);
        }
    }
}

void Recorder::fail(const QString& problem, Clock::time_point now)
{
    const bool isNews = state_.isOn();
    if (file_ && (file_->error() == StorageError::damaged || isFull())) {
        file_.reset(); // another one begins
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        state_.problem = problem.isEmpty() ? QString("unknown error") : problem;
        if (isNews) {
            state_.failedAt = recording_.clock().at(now);
        }
    }
    if (isNews && thread_.joinable()) {
        tell_("the recording cannot be written: " + problem);
    }
}

void Recorder::publish()
{
    const std::vector<Member> members = membersOf(folder_);
    const Micros written = recording_.clock().at(coveredAt_);
    const TimeSpan covered = members.empty() ? TimeSpan{written, written} : covered_.of(members);
    const std::lock_guard<std::mutex> lock(mutex_);
    state_.bytes = bytesOf(members);
    state_.from = covered.from;
    state_.until = covered.until;
}

} // namespace tavmir::recorder
