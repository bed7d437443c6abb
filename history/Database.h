#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace quorvane::history {

// A failure of a database operation. Besides std::bad_alloc the only exception of this folder; it never
// leaves a Journal.
class DatabaseError : public std::runtime_error {
public:
    // `code`: an extended result code of SQLite.
    DatabaseError(int code, const std::string& message)
        : std::runtime_error(message)
        , m_code(code)
    {
    }
    static DatabaseError damage(const std::string& message);

    // True when the contents of the file are damaged.
    bool isDamage() const;
    // True when the file was renamed or removed while it was open.
    bool isMoved() const;
    // True when another connection had the file locked for longer than this one waits.
    bool isBusy() const;

private:
    int m_code;
};

// An open SQLite database, every commit of which is durable. One thread at a time. Operations throw
// DatabaseError.
class Database {
public:
    static constexpr std::chrono::milliseconds usualWait{5000};

    // Opens the existing file `path`, which must not contain symbolic links. Read-only if it cannot be
    // written. Each statement waits at most `wait` for other connections.
    explicit Database(const std::string& path, std::chrono::milliseconds wait = usualWait);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void execute(const char* sql);
    std::int64_t lastInserted() const;

private:
    friend class Statement;

    sqlite3* m_connection = nullptr;
};

// Bytes to bind as a blob; other strings are bound as text.
struct Blob {
    std::string_view bytes;
};

// One SQL statement. Columns are valid until the next step.
class Statement {
public:
    // The bound values, in order. Texts and blobs must outlive the statement.
    template <typename... Values>
    Statement(Database& database, const char* sql, const Values&... values)
        : Statement(database, sql, Prepared())
    {
        int at = 0;
        (bind(++at, values), ...);
    }
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Advances to the next row; false when there is none.
    bool step();
    // Runs a statement that returns no rows.
    void run();

    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    std::uint64_t count(int column) const; // 0 for a negative number
    std::string_view text(int column) const;
    std::string_view blob(int column) const;
    std::optional<std::int64_t> optionalInteger(int column) const;
    std::optional<std::string> optionalText(int column) const;

private:
    struct Prepared { };
    Statement(Database& database, const char* sql, Prepared);

    void bind(int at, std::int64_t value);
    void bind(int at, std::uint64_t value);
    void bind(int at, std::string_view value);
    void bind(int at, Blob value);
    void bindNull(int at);
    void check(int code) const;
    template <typename Value> void bind(int at, const std::optional<Value>& value)
    {
        if (value)
            bind(at, *value);
        else
            bindNull(at);
    }

    sqlite3* m_connection;
    sqlite3_stmt* m_statement = nullptr;
};

// Everything until commit() happens as a whole; without commit() the destructor rolls it back.
class Transaction {
public:
    enum class Kind { read, write };
    // For a write, waits until no other process writes.
    Transaction(Database& database, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Database& m_database;
    bool m_isOpen = true;
};

} // namespace quorvane::history
