#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace quorvane::history {

// What went wrong in a data base. The only exception of this folder; it never leaves a Journal.
class DatabaseError : public std::runtime_error {
public:
    // `code`: an extended result code of SQLite.
    DatabaseError(int code, const std::string& message)
        : std::runtime_error(message)
        , m_code(code)
    {
    }
    static DatabaseError damage(const std::string& message);

    // The file does not hold what was written into it.
    bool isDamage() const;
    // The file was renamed or removed while it was open.
    bool isMoved() const;

private:
    int m_code;
};

// An open SQLite data base, every commit of which is durable. Used by one thread at a time. Operations throw
// DatabaseError.
class Database {
public:
    // Opens the existing file `path`, which must not lead over symbolic links. For reading only where it
    // cannot be written.
    explicit Database(const std::string& path);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void execute(const char* sql);
    std::int64_t lastInserted() const;

private:
    friend class Statement;

    sqlite3* m_connection = nullptr;
};

// Bytes to bind as they are; anything else that is text is bound as text.
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

    // Goes to the next row; false when there is none.
    bool step();
    // Runs a statement that answers no rows.
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

// Everything until commit() takes place as a whole or, when the object goes without it, not at all.
class Transaction {
public:
    enum class Kind { read, write };
    // A write waits here until no other process writes.
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
