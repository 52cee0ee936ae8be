// One SQLite file and its statements. The only header of this room that speaks of SQLite; no other
// room knows it. One thread each.
#ifndef TAVMIR_RECORDER_DATABASE_H
#define TAVMIR_RECORDER_DATABASE_H

#include "recorded_value.h"

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace tavmir::recorder
{

class Statement;

// What kind of failure it was, for whoever decides what to do about it.
enum class StorageError {
    none,
    busy,    // another connection holds what is needed
    full,    // the disk, or the file's own limit of pages
    io,      // reading or writing failed
    damaged, // no database, or not a whole one
    other
};

class Database
{
public:
    enum class Mode {
        create, // a new file; it must not be there
        write,
        read
    };

    // Null: `problem` says why, in one line without the file's name.
    //   path  in the encoding of file names
    static std::unique_ptr<Database> open(const std::string& path, Mode mode, QString& problem);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Runs statements without results. False: problem() and error() say why.
    bool run(const char* sql);
    // A statement that does not compile gives no row and fails.
    Statement prepare(const char* sql);

    // The first number of the first row; `otherwise` when there is none.
    qint64 number(const char* sql, qint64 otherwise = 0);

    // Of the last call that failed, in words and as a kind.
    QString problem() const;
    StorageError error() const;

private:
    explicit Database(sqlite3* handle) : handle_(handle) {}

    sqlite3* handle_;
};

// Values are bound from 1 on, columns are read from 0 on. Must not outlive its database.
class Statement
{
public:
    explicit Statement(sqlite3_stmt* handle) : handle_(handle) {}
    ~Statement();
    Statement(Statement&& other) noexcept : handle_(other.handle_), failed_(other.failed_)
    {
        other.handle_ = nullptr;
    }
    Statement& operator=(Statement&&) = delete;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void bind(int place, qint64 number);
    void bindReal(int place, double number);
    void bind(int place, const QString& text); // a null text is NULL
    void bind(int place, const QByteArray& bytes);
    void bind(int place, const RecordedValue& value);

    // True: there is a row to be read. False: no more, or failed().
    bool step();
    bool failed() const { return failed_; }
    // Runs a statement without rows and makes it ready for other values. False: failed.
    bool runOnce();
    void reset();

    bool isNull(int column) const;
    qint64 number(int column) const;
    double real(int column) const;
    QString text(int column) const;
    QByteArray bytes(int column) const;
    RecordedValue value(int column) const;

private:
    sqlite3_stmt* handle_;
    bool failed_ = false;
};

} // namespace tavmir::recorder

#endif
