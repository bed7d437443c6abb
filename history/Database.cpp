#include "history/Database.h"

#include <sqlite3.h>

namespace quorvane::history {

namespace {

[[noreturn]] void fail(sqlite3* connection)
{
    throw DatabaseError(sqlite3_extended_errcode(connection), sqlite3_errmsg(connection));
}

int primaryCode(int code)
{
    constexpr int mask = 0xff; // an extended code holds the primary one in its lowest byte
    return code & mask;
}

} // namespace

DatabaseError DatabaseError::damage(const std::string& message)
{
    return {SQLITE_CORRUPT, message};
}

// Files, locks and memory fail for reasons outside the database. Anything else can only be caused by its
// contents, since the statements are always the same.
bool DatabaseError::isDamage() const
{
    switch (primaryCode(m_code)) {
    case SQLITE_PERM:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_NOMEM:
    case SQLITE_READONLY:
    case SQLITE_IOERR:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_PROTOCOL:
    case SQLITE_NOLFS:
    case SQLITE_AUTH:
        return false;
    default:
        return true;
    }
}

bool DatabaseError::isMoved() const
{
    return m_code == SQLITE_READONLY_DBMOVED;
}

bool DatabaseError::isBusy() const
{
    return primaryCode(m_code) == SQLITE_BUSY;
}

Database::Database(const std::string& path, std::chrono::milliseconds wait)
{
    constexpr int flags
        = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_PRIVATECACHE;
    try {
        if (sqlite3_open_v2(path.c_str(), &m_connection, flags, nullptr) != SQLITE_OK)
            fail(m_connection);
        sqlite3_busy_timeout(m_connection, static_cast<int>(wait.count()));
        sqlite3_db_config(m_connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(m_connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        // A commit is durable: with a rollback journal that is truncated, FULL syncs that as well.
        execute("PRAGMA cell_size_check = ON; PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = FULL");
    } catch (...) {
        sqlite3_close(m_connection);
        throw;
    }
}

Database::~Database()
{
    sqlite3_close(m_connection);
}

void Database::execute(const char* sql)
{
    if (sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(m_connection);
}

std::int64_t Database::lastInserted() const
{
    return sqlite3_last_insert_rowid(m_connection);
}

Statement::Statement(Database& database, const char* sql, Prepared)
    : m_connection(database.m_connection)
{
    check(sqlite3_prepare_v2(m_connection, sql, -1, &m_statement, nullptr));
}

Statement::~Statement()
{
    sqlite3_finalize(m_statement);
}

void Statement::check(int code) const
{
    if (code != SQLITE_OK)
        fail(m_connection);
}

bool Statement::step()
{
    const int code = sqlite3_step(m_statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        fail(m_connection);
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (step()) { }
}

bool Statement::isNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

std::uint64_t Statement::count(int column) const
{
    const std::int64_t value = integer(column);
    return value < 0 ? 0 : static_cast<std::uint64_t>(value);
}

std::string_view Statement::text(int column) const
{
    return blob(column);
}

// A null pointer can also mean that memory ran out.
std::string_view Statement::blob(int column) const
{
    const void* bytes = sqlite3_column_blob(m_statement, column);
    if (bytes == nullptr && sqlite3_errcode(m_connection) == SQLITE_NOMEM)
        fail(m_connection);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
    return bytes == nullptr ? std::string_view() : std::string_view(static_cast<const char*>(bytes), length);
}

std::optional<std::int64_t> Statement::optionalInteger(int column) const
{
    return isNull(column) ? std::nullopt : std::optional(integer(column));
}

std::optional<std::string> Statement::optionalText(int column) const
{
    return isNull(column) ? std::nullopt : std::optional<std::string>(text(column));
}

void Statement::bind(int at, std::int64_t value)
{
    check(sqlite3_bind_int64(m_statement, at, value));
}

void Statement::bind(int at, std::uint64_t value)
{
    bind(at, static_cast<std::int64_t>(value));
}

void Statement::bind(int at, std::string_view value)
{
    check(sqlite3_bind_text64(m_statement, at, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::bind(int at, Blob value)
{
    // A null pointer would be bound as null, which differs from empty bytes.
    const char* bytes = value.bytes.empty() ? "" : value.bytes.data();
    check(sqlite3_bind_blob64(m_statement, at, bytes, value.bytes.size(), SQLITE_STATIC));
}

void Statement::bindNull(int at)
{
    check(sqlite3_bind_null(m_statement, at));
}

Transaction::Transaction(Database& database, Kind kind)
    : m_database(database)
{
    m_database.execute(kind == Kind::write ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction()
{
    if (!m_isOpen)
        return;
    try {
        m_database.execute("ROLLBACK");
    } catch (...) {
        // Some failures have rolled back already; otherwise the next opening of the database does. There may
        // be no memory for the error itself.
    }
}

void Transaction::commit()
{
    m_database.execute("COMMIT");
    m_isOpen = false;
}

} // namespace quorvane::history
