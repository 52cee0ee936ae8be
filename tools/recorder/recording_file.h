// One file of a recording while it is written. It can be read by itself: it holds the project, the
// variables, and how each stood when it began. What is written at once is there as a whole or not
// at all, also after the program was killed. One thread.
#ifndef TAVMIR_RECORDER_RECORDING_FILE_H
#define TAVMIR_RECORDER_RECORDING_FILE_H

#include "database.h"
#include "recorded_rows.h"

namespace tavmir::recorder
{

// What a file says of itself.
struct FileFacts {
    QString program;     // "tavmir-host 1.2.3"
    QString controller;  // "127.0.0.1:502"
    QString projectName; // the file's
    QByteArray project;
};

class RecordingFile
{
public:
    // Null: `problem` says why; nothing is left of the file then.
    //   mostBytes  it never becomes longer; what does not fit fails with StorageError::full
    static std::unique_ptr<RecordingFile> create(const std::string& path, const FileFacts& facts,
                                                 Micros began, quint64 mostBytes,
                                                 const Batch& opening, QString& problem);

    // False: nothing of it was written; problem() and error() say why.
    //   until  the recording covers everything up to then
    bool write(const Batch& batch, Micros until);

    // Without the log beside it, so that it can be read from where nothing can be written. Where
    // somebody reads just now, it is done later, see settle().
    void finish();

    quint64 bytes() const;       // as long as the file is, or will be with what is in the log
    quint64 bytesOnDisk() const; // with its log
    const std::string& path() const { return path_; }
    // The file is where it was begun; somebody may have removed it.
    bool isThere() const;

    const QString& problem() const { return problem_; }
    StorageError error() const { return error_; }

private:
    RecordingFile(std::unique_ptr<Database> database, const std::string& path);
    bool describeAll(const FileFacts& facts, Micros began, const Batch& opening);
    bool begin(quint64 mostBytes);
    bool describe(const FileFacts& facts, Micros began);
    bool setAbout(const QString& key, const RecordedValue& value);
    bool insert(const Batch& batch);
    bool fail();

    std::unique_ptr<Database> database_;
    std::string path_;
    quint64 inode_ = 0;
    QString problem_;
    StorageError error_ = StorageError::none;
};

// Puts what stands in the log beside a file, which a killed program left, into the file.
void settle(const std::string& path);

} // namespace tavmir::recorder

#endif
