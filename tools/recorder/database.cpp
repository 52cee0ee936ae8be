// Calls of SQLite.
#include "database.h"

#include <sqlite3.h>

#include <cstring>

namespace tavmir::recorder
{

namespace
{

// What another connection holds is given back soon: readers read in short transactions.
constexpr int kBusyMs = 1000;

int flagsOf(Database::Mode mode)
{
    switch (mode) {
    case Database::Mode::create:
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    case Database::Mode::write:
        return SQLITE_OPEN_READWRITE;
    case Database::Mode::read:
        break;
    }
    return SQLITE_OPEN_READONLY;
}

} // namespace

std::unique_ptr<Database> Database::open(const std::string& path, Mode mode, QString& problem)
{
    sqlite3* handle = nullptr;
    const int result =
        sqlite3_open_v2(path.c_str(), &handle, flagsOf(mode) | SQLITE_OPEN_NOMUTEX, nullptr);
    if (handle == nullptr) {
        problem = "no memory";
        return nullptr;
    }
    std::unique_ptr<Database> database(new Database(handle));
    if (result != SQLITE_OK) {
        problem = database->problem();
        return nullptr;
    }
    sqlite3_extended_result_codes(handle, 1);
    sqlite3_busy_timeout(handle, kBusyMs);
    // A recording may come from anywhere: what stands in it is data.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    return database;
}

Database::~Database()
{
    sqlite3_close_v2(handle_);
}

bool Database::run(const char* sql)
{
    return sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

Statement Database::prepare(const char* sql)
{
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(handle_, sql, -1, &statement, nullptr);
    return Statement(statement);
}

qint64 Database::number(const char* sql, qint64 otherwise)
{
    Statement statement = prepare(sql);
    return statement.step() && !statement.isNull(0) ? statement.number(0) : otherwise;
}

QString Database::problem() const
{
    const QString words = QString::fromUtf8(sqlite3_errmsg(handle_));
    const int system = sqlite3_system_errno(handle_);
    const bool isSystems = error() == StorageError::io || error() == StorageError::full;
    return isSystems && system != 0
               ? QString("%1 (%2)").arg(words, QString::fromLocal8Bit(std::strerror(system)))
               : words;
}

StorageError Database::error() const
{
    switch (sqlite3_errcode(handle_) & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return StorageError::none;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return StorageError::busy;
    case SQLITE_FULL:
        return StorageError::full;
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
        return StorageError::io;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return StorageError::damaged;
    default:
        return StorageError::other;
    }
}

Statement::~Statement()
{
    sqlite3_finalize(handle_);
}

void Statement::bind(int place, qint64 number)
{
    sqlite3_bind_int64(handle_, place, number);
}

void Statement::bindReal(int place, double number)
{
    sqlite3_bind_double(handle_, place, number);
}

void Statement::bind(int place, const QString& text)
{
    if (text.isNull()) {
        sqlite3_bind_null(handle_, place);
        return;
    }
    const QByteArray utf8 = text.toUtf8();
    sqlite3_bind_text(handle_, place, utf8.constData(), utf8.size(), SQLITE_TRANSIENT);
}

void Statement::bind(int place, const QByteArray& bytes)
{
    sqlite3_bind_blob(handle_, place, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
}

void Statement::bind(int place, const RecordedValue& value)
{
    switch (value.kind) {
    case RecordedValue::Kind::none:
        sqlite3_bind_null(handle_, place);
        return;
    case RecordedValue::Kind::integer:
        sqlite3_bind_int64(handle_, place, value.integer);
        return;
    case RecordedValue::Kind::real:
        sqlite3_bind_double(handle_, place, value.real);
        return;
    case RecordedValue::Kind::text:
        bind(place, value.text);
        return;
    }
}

bool Statement::step()
{
    const int result = handle_ == nullptr ? SQLITE_ERROR : sqlite3_step(handle_);
    failed_ = result != SQLITE_ROW && result != SQLITE_DONE;
    return result == SQLITE_ROW;
}

bool Statement::runOnce()
{
    step();
    const bool done = !failed_;
    reset();
    return done;
}

void Statement::reset()
{
    sqlite3_reset(handle_);
}

bool Statement::isNull(int column) const
{
    return sqlite3_column_type(handle_, column) == SQLITE_NULL;
}

qint64 Statement::number(int column) const
{
    return sqlite3_column_int64(handle_, column);
}

double Statement::real(int column) const
{
    return sqlite3_column_double(handle_, column);
}

QString Statement::text(int column) const
{
    if (isNull(column)) {
        return QString();
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
    return QString::fromUtf8(text, sqlite3_column_bytes(handle_, column));
}

QByteArray Statement::bytes(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(handle_, column));
    return QByteArray(bytes, sqlite3_column_bytes(handle_, column));
}

RecordedValue Statement::value(int column) const
{
    switch (sqlite3_column_type(handle_, column)) {
    case SQLITE_INTEGER:
        return RecordedValue::of(number(column));
    case SQLITE_FLOAT:
        return RecordedValue::of(real(column));
    case SQLITE_TEXT:
        return RecordedValue::of(text(column));
    default:
        return RecordedValue();
    }
}

} // namespace tavmir::recorder
