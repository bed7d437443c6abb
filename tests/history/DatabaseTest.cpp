#include "history/Database.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include <sqlite3.h>

namespace quorvane::history {

namespace {

std::string oneText(Database& database, const char* sql)
{
    Statement row(database, sql);
    return row.step() ? std::string(row.text(0)) : "nothing";
}

// The error of opening the path; none when there is none.
std::optional<DatabaseError> errorOf(const std::string& path)
{
    try {
        Database(path).execute("CREATE TABLE t (a)");
    } catch (const DatabaseError& error) {
        return error;
    }
    return std::nullopt;
}

class DatabaseTest : public testing::Test {
protected:
    const test::TemporaryFolder folder;
    const std::string path = folder.write("database", "");
    Database database{path};
};

} // namespace

TEST_F(DatabaseTest, SyncsEveryCommitAndTrustsNoFile)
{
    EXPECT_EQ(oneText(database, "PRAGMA journal_mode"), "truncate");
    EXPECT_EQ(oneText(database, "PRAGMA synchronous"), "2");
    EXPECT_EQ(oneText(database, "PRAGMA cell_size_check"), "1");
    EXPECT_EQ(oneText(database, "PRAGMA trusted_schema"), "0");
    EXPECT_EQ(oneText(database, "PRAGMA busy_timeout"), "5000");
    database.execute("CREATE TABLE t (a); PRAGMA writable_schema = ON");
    EXPECT_THROW(database.execute("DELETE FROM sqlite_schema"), DatabaseError) << "which would damage it";
}

TEST_F(DatabaseTest, GivesBackTheValuesThatWereBound)
{
    database.execute("CREATE TABLE t (a, b, c, d, e)");
    const std::optional<std::int64_t> none;
    Statement(database, "INSERT INTO t VALUES (?, ?, ?, ?, ?)", std::int64_t{-7}, std::uint64_t{7},
        std::string_view("te\0xt", 5), Blob{}, none)
        .run();
    EXPECT_EQ(database.lastInserted(), 1);
    Statement row(database, "SELECT a, b, c, d, e FROM t");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), -7);
    EXPECT_EQ(row.count(0), 0U) << "a negative number counts nothing";
    EXPECT_EQ(row.count(1), 7U);
    EXPECT_EQ(row.text(2), std::string_view("te\0xt", 5));
    EXPECT_EQ(row.blob(3), "");
    EXPECT_FALSE(row.isNull(3)) << "empty bytes are not null";
    EXPECT_TRUE(row.isNull(4));
    EXPECT_EQ(row.optionalInteger(1), 7);
    EXPECT_EQ(row.optionalInteger(4), std::nullopt);
    EXPECT_EQ(row.optionalText(2)->size(), 5U);
    EXPECT_EQ(row.optionalText(4), std::nullopt);
    EXPECT_FALSE(row.step());
}

TEST_F(DatabaseTest, RollsBackWhatIsNotCommitted)
{
    database.execute("CREATE TABLE t (a)");
    {
        Transaction transaction(database, Transaction::Kind::write);
        database.execute("INSERT INTO t VALUES (1)");
    }
    EXPECT_EQ(oneText(database, "SELECT count(*) FROM t"), "0");
    {
        Transaction transaction(database, Transaction::Kind::write);
        database.execute("INSERT INTO t VALUES (1)");
        transaction.commit();
    }
    Database other(path);
    EXPECT_EQ(oneText(other, "SELECT count(*) FROM t"), "1");
}

TEST_F(DatabaseTest, LocksForAWriteAtItsBeginning)
{
    Database other(path);
    other.execute("PRAGMA busy_timeout = 0");
    const Transaction reading(database, Transaction::Kind::read);
    EXPECT_NO_THROW(other.execute("BEGIN IMMEDIATE; ROLLBACK"));
    const Transaction writing(other, Transaction::Kind::write);
    Database third(path);
    third.execute("PRAGMA busy_timeout = 0");
    EXPECT_THROW(Transaction(third, Transaction::Kind::write), DatabaseError);
}

TEST_F(DatabaseTest, FailsAStatementThatIsNone)
{
    EXPECT_THROW(Statement(database, "SELECT FROM nowhere"), DatabaseError);
    EXPECT_THROW(database.execute("DROP TABLE none"), DatabaseError);
    database.execute("CREATE TABLE t (a UNIQUE); INSERT INTO t VALUES (1)");
    EXPECT_THROW(Statement(database, "INSERT INTO t VALUES (1)").run(), DatabaseError);
}

TEST(DatabaseError, IsDamageUnlessFilesLocksOrMemoryFailed)
{
    for (const int code : {SQLITE_PERM, SQLITE_BUSY, SQLITE_LOCKED, SQLITE_NOMEM, SQLITE_READONLY,
             SQLITE_IOERR, SQLITE_FULL, SQLITE_CANTOPEN, SQLITE_PROTOCOL, SQLITE_NOLFS, SQLITE_AUTH,
             SQLITE_IOERR_READ, SQLITE_BUSY_SNAPSHOT})
        EXPECT_FALSE(DatabaseError(code, "").isDamage()) << code;
    for (const int code :
        {SQLITE_CORRUPT, SQLITE_NOTADB, SQLITE_ERROR, SQLITE_MISMATCH, SQLITE_CORRUPT_INDEX})
        EXPECT_TRUE(DatabaseError(code, "").isDamage()) << code;
    EXPECT_TRUE(DatabaseError::damage("why").isDamage());
    EXPECT_STREQ(DatabaseError::damage("why").what(), "why");
    EXPECT_TRUE(DatabaseError(SQLITE_READONLY_DBMOVED, "").isMoved());
    EXPECT_FALSE(DatabaseError(SQLITE_READONLY, "").isMoved());
    EXPECT_TRUE(DatabaseError(SQLITE_BUSY_SNAPSHOT, "").isBusy());
    EXPECT_FALSE(DatabaseError(SQLITE_LOCKED, "").isBusy());
}

TEST(DatabaseError, SaysWhatIsWrongWithTheFile)
{
    const test::TemporaryFolder folder;
    const auto missing = errorOf(folder.path("missing"));
    ASSERT_TRUE(missing) << "it makes no file";
    EXPECT_FALSE(missing->isDamage());
    const auto rubbish = errorOf(folder.write("rubbish", std::string(4096, 'x')));
    ASSERT_TRUE(rubbish);
    EXPECT_TRUE(rubbish->isDamage());
    std::filesystem::create_symlink(folder.write("database", ""), folder.path("link"));
    EXPECT_FALSE(errorOf(folder.path("database")));
    const auto link = errorOf(folder.path("link"));
    ASSERT_TRUE(link) << "it follows no link";
    EXPECT_FALSE(link->isDamage());
}

} // namespace quorvane::history
