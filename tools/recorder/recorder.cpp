// The recorder's thread and its files.
#include "recorder.h"

#include "state_words.h"

#include <QtCore/QFile>

#include <algorithm>
#include <csignal>
#include <cstdlib>

namespace tavmir::recorder
{

namespace
{

using host::Clock;

constexpr auto kLookEach = std::chrono::milliseconds(100);
// With the look before it and the writing, what a killed program leaves unwritten is less than a
// second.
constexpr auto kCommitEach = std::chrono::milliseconds(800);
constexpr Micros kMostDrift = kSecond; // else the clock was set, and another file begins
constexpr quint64 kFilesInALimit = 8;
// Beside the project: tables, indexes, variables.
constexpr quint64 kLeastInAFile = 128 * 1024;
constexpr quint64 kMostRowBytes = 64;

std::string pathOf(const QString& folder)
{
    std::string path = QFile::encodeName(folder).toStdString();
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

} // namespace

Recorder::Recorder(const RecorderOptions& options, const FileFacts& facts,
                   const host::QualityRules& rules, Tell tell, WallNow wall)
    : options_(options), folder_(pathOf(options.folder)), facts_(facts), tell_(std::move(tell)),
      wall_(std::move(wall)),
      recording_(rules, std::chrono::milliseconds(options.everyMs), clockNow())
{
    state_.folder = options.folder;
    state_.limit = options.limitBytes;
}

Recorder::~Recorder()
{
    stop();
}

quint64 Recorder::mostInAFile() const
{
    return std::min(RecorderOptions::kMostInAFile, options_.limitBytes / kFilesInALimit);
}

QString Recorder::open()
{
    ::signal(SIGXFSZ, SIG_IGN);
    const QString problem = lock_.take(folder_);
    if (!problem.isEmpty()) {
        return "cannot record into " + problem;
    }
    const quint64 needed = static_cast<quint64>(facts_.project.size()) + kLeastInAFile;
    if (2 * needed > mostInAFile()) {
        return QString("a recording of %1 MiB is too small: each of its files holds the project, "
                       "%2 MiB are needed")
            .arg(options_.limitBytes >> 20)
            .arg((2 * needed * kFilesInALimit >> 20) + 1);
    }
    removeUnfinished(folder_);
    tidy();
    const std::vector<Member> before = membersOf(folder_);
    if (!before.empty()) {
        nextNumber_ = before.back().number + 1;
    }
    covered_.read(before);
    const Clock::time_point now = Clock::now();
    coveredAt_ = now;
    recording_.setClock(clockNow(), now);
    if (!beginFile(now, beginningAfter(before, recording_.clock().at(now)))) {
        return QString("cannot record into %1: %2").arg(options_.folder, state_.problem);
    }
    publish();
    return QString();
}

void Recorder::start(host::Feed& feed)
{
    reader_ = feed.subscribe();
    nextCommit_ = Clock::now() + kCommitEach;
    thread_ = std::thread([this] { loop(); });
}

void Recorder::stop()
{
    if (thread_.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            isEnding_ = true;
        }
        ends_.notify_one();
        thread_.join();
    }
    if (file_) {
        file_->finish();
        file_.reset();
        tidy();
        publish();
    }
}

RecordingState Recorder::state() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

void Recorder::loop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ends_.wait_for(lock, kLookEach, [this] { return isEnding_; })) {
        lock.unlock();
        look();
        lock.lock();
    }
    lock.unlock();
    look();
    const Clock::time_point now = Clock::now();
    recording_.end(now);
    recording_.add(
        {recording_.clock().at(now), 0, event_kind::kEnded, facts_.controller, QString()});
    commit(now);
}

void Recorder::look()
{
    // What comes after the look, while this thread may be held up, is not promised yet.
    Clock::time_point now = Clock::now();
    quint64 missed = 0;
    reader_->read(
        [&](const host::FeedEntry& entry) {
            recording_.take(entry);
            takenAt_ = std::max(takenAt_, entry.at);
            now = std::max(now, takenAt_);
            if (state_.isOn() && isMuch(room_)) {
                commit(std::max(entry.at, committedAt_));
            }
        },
        [&](quint64 count) {
            missed += count;
            // Behind what was read before it, and in front of what comes behind it.
            recording_.gap(count, std::max(takenAt_, committedAt_));
        });
    if (missed > 0) {
        const std::lock_guard<std::mutex> lock(mutex_);
        state_.missedEvents += missed;
    }
    recording_.look(now);
    if (now >= nextCommit_ || isMuch(0)) {
        nextCommit_ = now + kCommitEach;
        commit(now);
    }
}

// So much waits that it may not fit into `room` bytes, nor into what any file has left that is not
// full.
bool Recorder::isMuch(quint64 room) const
{
    return recording_.waiting() * kMostRowBytes > std::max(room, mostInAFile() / 16);
}

void Recorder::commit(Clock::time_point now)
{
    committedAt_ = now;
    if (!state_.isOn()) {
        retry(now);
    } else if (write(now)) {
        const Micros drift = recording_.clock().drift(Clock::now(), wall_());
        if (std::abs(drift) > kMostDrift) {
            turnTo(QString("the clock was set %1 by %2 s, or the machine slept")
                       .arg(drift < 0 ? "back" : "ahead")
                       .arg(static_cast<double>(std::abs(drift)) / kSecond, 0, 'f', 1),
                   now);
        } else if (isFull()) {
            turnTo(QString(), now);
        }
    }
    makeRoom(mostInAFile() / 8);
    room_ = file_ && file_->bytes() < mostInAFile() ? mostInAFile() - file_->bytes() : 0;
    publish();
}

// What waits. False: it is lost.
bool Recorder::write(Clock::time_point now)
{
    const Batch batch = recording_.takeBatch(now);
    const Micros until = recording_.clock().at(now);
    const bool isThere = file_ && file_->isThere();
    if (!isThere || !file_->write(batch, until)) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            state_.lostSamples += batch.samples.size();
        }
        fail(isThere ? file_->problem() : QString("its file is gone"), now);
        return false;
    }
    covered_.tell(nextNumber_ - 1, until);
    coveredAt_ = now;
    const std::lock_guard<std::mutex> lock(mutex_);
    state_.samples += batch.samples.size();
    return true;
}

void Recorder::retry(Clock::time_point now)
{
    const Batch lost = recording_.takeBatch(now);
    const Micros failedAt = state_.failedAt;
    const QString problem = state_.problem;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        state_.lostSamples += lost.samples.size();
    }
    if (file_ && !file_->isThere()) {
        file_.reset();
    }
    if (!file_) {
        recording_.setClock(clockNow(), now);
        if (!beginFile(now, {})) {
            return;
        }
    }
    const Micros coveredBefore = recording_.clock().at(coveredAt_);
    const Micros until = recording_.clock().at(now);
    recording_.tellAll(now);
    recording_.add({std::min(failedAt, until), 0, event_kind::kStorage, QString(), problem});
    recording_.add({coveredBefore, until, event_kind::kGap, QString(),
                    "nothing could be written: " + problem});
    if (!write(now)) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        state_.problem.clear();
        state_.failedAt = 0;
    }
    tell_(QString("the recording is written again; nothing was recorded from %1 to %2")
              .arg(momentText(coveredBefore), momentText(until)));
}

} // namespace tavmir::recorder
