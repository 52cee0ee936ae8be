// Transactions, and the file they go into.
#include "recording_file.h"

#include "recording_folder.h"
#include "row_insertion.h"
#include "schema.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tavmir::recorder
{

namespace
{

constexpr quint64 kPageBytes = 4096;
// Pages in the log before they are moved into the file: a small part of it.
constexpr quint64 kLeastLogPages = 32;
constexpr quint64 kMostLogPages = 1000;

quint64 inodeOf(const std::string& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

quint64 sizeOf(const std::string& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? static_cast<quint64>(status.st_size) : 0;
}

QByteArray pragma(const char* name, quint64 value)
{
    return QByteArray("PRAGMA ") + name + " = " + QByteArray::number(value);
}

} // namespace

RecordingFile::RecordingFile(std::unique_ptr<Database> database, const std::string& path)
    : database_(std::move(database)), path_(path)
{
}

std::unique_ptr<RecordingFile> RecordingFile::create(const std::string& path,
                                                     const FileFacts& facts, Micros began,
                                                     quint64 mostBytes, const Batch& opening,
                                                     QString& problem)
{
    const std::string unfinished = path + kUnfinished;
    std::unique_ptr<Database> database =
        Database::open(unfinished, Database::Mode::create, problem);
    if (!database) {
        return nullptr;
    }
    std::unique_ptr<RecordingFile> file(new RecordingFile(std::move(database), path));
    const bool isDescribed = file->describeAll(facts, began, opening);
    file->database_.reset();
    if (isDescribed && ::rename(unfinished.c_str(), path.c_str()) == 0 && file->begin(mostBytes)) {
        return file;
    }
    problem = isDescribed && file->problem().isEmpty()
                  ? QString::fromLocal8Bit(std::strerror(errno))
                  : file->problem();
    Member half;
    for (const std::string& left : {unfinished, path}) {
        half.path = left;
        removeMember(half);
    }
    return nullptr;
}

// Under another name, and without a journal on disk: nobody ever sees it half done.
bool RecordingFile::describeAll(const FileFacts& facts, Micros began, const Batch& opening)
{
    const bool isDescribed =
        database_->run(pragma("page_size", kPageBytes)) &&
        database_->run("PRAGMA journal_mode = MEMORY") && database_->run("BEGIN IMMEDIATE") &&
        database_->run(pragma("application_id", kApplicationId)) &&
        database_->run(pragma("user_version", kSchemaVersion)) && database_->run(kSchema);
    if (!isDescribed) {
        return fail();
    }
    if (!describe(facts, began) || !insert(opening)) {
        return false;
    }
    const bool isDone = database_->run("COMMIT") && database_->run("PRAGMA journal_mode = WAL");
    return isDone || fail();
}

bool RecordingFile::begin(quint64 mostBytes)
{
    database_ = Database::open(path_, Database::Mode::write, problem_);
    if (!database_) {
        return false;
    }
    inode_ = inodeOf(path_);
    const quint64 pages = mostBytes / kPageBytes;
    const quint64 logPages = std::clamp(pages / 16, kLeastLogPages, kMostLogPages);
    // What is written each second is to survive the program, not the loss of power.
    const bool isReady = database_->run("PRAGMA synchronous = NORMAL") &&
                         database_->run(pragma("max_page_count", pages)) &&
                         database_->run(pragma("wal_autocheckpoint", logPages)) &&
                         database_->run(pragma("journal_size_limit", logPages * kPageBytes));
    return isReady || fail();
}

bool RecordingFile::describe(const FileFacts& facts, Micros began)
{
    Statement project = database_->prepare("INSERT INTO project VALUES (?, ?)");
    project.bind(1, facts.projectName);
    project.bind(2, facts.project);
    if (!project.runOnce()) {
        return fail();
    }
    return setAbout("program", RecordedValue::of(facts.program)) &&
           setAbout("controller", RecordedValue::of(facts.controller)) &&
           setAbout("began", RecordedValue::of(began)) &&
           setAbout("covered_until", RecordedValue::of(began));
}

bool RecordingFile::setAbout(const QString& key, const RecordedValue& value)
{
    Statement about = database_->prepare("INSERT OR REPLACE INTO about VALUES (?, ?)");
    about.bind(1, key);
    about.bind(2, value);
    return about.runOnce() || fail();
}

bool RecordingFile::write(const Batch& batch, Micros until)
{
    if (!database_->run("BEGIN IMMEDIATE")) {
        return fail();
    }
    if (!insert(batch) || !setAbout("covered_until", RecordedValue::of(until))) {
        database_->run("ROLLBACK");
        return false;
    }
    if (!database_->run("COMMIT")) {
        fail();
        database_->run("ROLLBACK");
        return false;
    }
    return true;
}

bool RecordingFile::insert(const Batch& batch)
{
    const std::optional<StorageFailure> failure = insertRows(*database_, batch);
    if (failure) {
        problem_ = failure->problem;
        error_ = failure->error;
    }
    return !failure;
}

bool RecordingFile::fail()
{
    problem_ = database_->problem();
    error_ = database_->error();
    return false;
}

void RecordingFile::finish()
{
    database_.reset();
    settle(path_);
}

quint64 RecordingFile::bytes() const
{
    return std::max<quint64>(
        sizeOf(path_), static_cast<quint64>(database_->number("PRAGMA page_count")) * kPageBytes);
}

quint64 RecordingFile::bytesOnDisk() const
{
    return sizeOf(path_) + sizeOf(path_ + "-wal") + sizeOf(path_ + "-shm");
}

bool RecordingFile::isThere() const
{
    return inodeOf(path_) == inode_;
}

void settle(const std::string& path)
{
    QString ignored;
    const std::unique_ptr<Database> database = Database::open(path, Database::Mode::write, ignored);
    if (database) {
        database->run("PRAGMA busy_timeout = 0");
        database->run("PRAGMA wal_checkpoint(TRUNCATE)");
        // A journal on disk for this one page would be left behind if the program is killed now.
        database->run("PRAGMA journal_mode = MEMORY");
    }
}

} // namespace tavmir::recorder
