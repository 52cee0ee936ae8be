// The folder of a recording: which files in it are the recording's, in which order, how much room
// they take, and who writes to it.
//
//   recording-00000012-20261122T092144123Z.sqlite   the number counts on and says the order; then
//                                                   when the file begins (UTC)
//   …-wal, …-shm                                    SQLite's, beside a file that is written to
//   ….sqlite.new                                    a file that is being begun
//   recording.lock                                  locked while a program records
//
// No other file of the folder is ever touched.
#ifndef TAVMIR_RECORDER_RECORDING_FOLDER_H
#define TAVMIR_RECORDER_RECORDING_FOLDER_H

#include "recorded_value.h"

#include <string>
#include <vector>

namespace tavmir::recorder
{

struct Member {
    std::string path;
    quint64 number = 0;
    Micros began = 0;
    quint64 bytes = 0;   // with what SQLite keeps beside it
    bool hasLog = false; // such a file is there
};

// Ascending by number; names of the right shape whose file is another one's are left out. Empty
// where there is no such folder too.
std::vector<Member> membersOf(const std::string& folder);

quint64 bytesOf(const std::vector<Member>& members);

// It has not been removed meanwhile.
bool isThere(const Member& member);

// Of a file with this number that begins then.
std::string memberPath(const std::string& folder, quint64 number, Micros began);

// What stands behind the name of a file until it is begun.
constexpr char kUnfinished[] = ".new";
// Removes such files, which a killed program left. For whoever may record into the folder.
void removeUnfinished(const std::string& folder);

// Removes the file and what SQLite keeps beside it.
void removeMember(const Member& member);

// The right to record into a folder, as long as it lives; the folder is made when it is missing.
class FolderLock
{
public:
    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    // Empty, or why not in one line.
    QString take(const std::string& folder);

private:
    int descriptor_ = -1;
};

} // namespace tavmir::recorder

#endif
