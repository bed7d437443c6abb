#include "history/ContentStore.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::history {

namespace {

// A database with the contents `first` and, packed against them, `second`.
class ContentStorePair : public testing::Test {
protected:
    ContentStorePair()
    {
        ContentStore::createTable(database);
        firstNumber = store.keep(first, std::nullopt, std::nullopt);
        secondNumber = store.keep(second, firstNumber, first);
    }

    std::string frame(std::int64_t number)
    {
        Statement row(database, "SELECT frame FROM content WHERE number = ?", number);
        EXPECT_TRUE(row.step());
        return std::string(row.blob(0));
    }
    void setFrame(std::int64_t number, const std::string& frame)
    {
        Statement(database, "UPDATE content SET frame = ? WHERE number = ?", Blob{frame}, number).run();
    }

    const test::TemporaryFolder folder;
    Database database{folder.write("contents", "")};
    ContentStore store{database};
    const std::string first = test::textOfLines(300, 0, "r");
    const std::string second = test::textOfLines(300, 150, "changed");
    std::int64_t firstNumber = 0;
    std::int64_t secondNumber = 0;
};

} // namespace

TEST_F(ContentStorePair, GivesBackBoth)
{
    EXPECT_EQ(store.bytes(firstNumber), first);
    EXPECT_EQ(store.bytes(secondNumber), second);
    EXPECT_LT(frame(secondNumber).size(), 100U);
}

TEST_F(ContentStorePair, UnpacksNoFrameOfWhichAnyByteIsDamaged)
{
    const std::string whole = frame(secondNumber);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        setFrame(secondNumber, damaged);
        EXPECT_FALSE(store.unpack(secondNumber, first)) << at;
    }
    setFrame(secondNumber, whole);
    EXPECT_EQ(store.unpack(secondNumber, first), second);
}

TEST_F(ContentStorePair, GivesNothingForContentsWhoseBaseIsAnother)
{
    const std::string other
        = test::textOfLines(300, 299, "x"); // of the same length, and different where `second` equals `first`
    const std::int64_t otherNumber = store.keep(other, std::nullopt, std::nullopt);
    setFrame(firstNumber, frame(otherNumber));
    Statement(database,
        "UPDATE content SET frameDigest = (SELECT frameDigest FROM content WHERE number = ?)"
        " WHERE number = ?",
        otherNumber, firstNumber)
        .run();

    EXPECT_FALSE(store.bytes(secondNumber));
}

TEST_F(ContentStorePair, BeginsAnewAfterFiftyContents)
{
    std::int64_t last = secondNumber;
    for (std::size_t line = 0; line < 49; ++line)
        last = store.keep(test::textOfLines(300, line, "next"), last, std::nullopt);
    Statement row(database, "SELECT count(*), max(number) FROM content WHERE base IS NULL");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), 2);
    EXPECT_EQ(row.integer(1), 51) << "the first of the next chain";
    EXPECT_EQ(last, 51);
}

TEST_F(ContentStorePair, KeepsTheSameBytesOnce)
{
    EXPECT_EQ(store.keep(second, secondNumber, std::nullopt), secondNumber);
    EXPECT_NE(store.keep(first, secondNumber, std::nullopt), secondNumber);
}

TEST_F(ContentStorePair, BuildsOnNothingThatIsMarkedOrDamaged)
{
    setFrame(firstNumber, "damaged");
    store.markDamaged(secondNumber);
    EXPECT_EQ(store.unreadable(), (std::set<std::int64_t>{firstNumber, secondNumber}))
        << "the culprit is the first";
    const std::int64_t third = store.keep(second, secondNumber, second);
    EXPECT_NE(third, secondNumber);
    EXPECT_EQ(store.bytes(third), second);
    EXPECT_EQ(store.unreadable().count(third), 0U);
}

TEST_F(ContentStorePair, TellsFromWhichContentsOnTheyFitIntoALimit)
{
    const std::uint64_t firstSize = frame(firstNumber).size();
    const std::uint64_t secondSize = frame(secondNumber).size();
    EXPECT_EQ(store.packedSize(), firstSize + secondSize);
    EXPECT_EQ(store.firstWithin(firstSize + secondSize), firstNumber);
    EXPECT_EQ(store.firstWithin(firstSize + secondSize - 1), secondNumber);
    EXPECT_EQ(store.firstWithin(firstSize), secondNumber) << "alone it is as large as the first";
    EXPECT_GT(store.firstWithin(firstSize - 1), secondNumber) << "none";
}

TEST_F(ContentStorePair, GivesNothingForContentsThatAreNotThere)
{
    EXPECT_FALSE(store.bytes(secondNumber + 1));
}

TEST_F(ContentStorePair, GivesNothingForContentsWhoseDigestIsAnother)
{
    Statement(database, "UPDATE content SET digest = ? WHERE number = ?", DigestedBytes(first).digest(),
        secondNumber)
        .run();
    EXPECT_EQ(store.bytes(firstNumber), first);
    EXPECT_FALSE(store.bytes(secondNumber));
}

TEST_F(ContentStorePair, PacksAgainstTheBaseWhereOtherBytesAreSaidToBeIts)
{
    const std::string third = test::textOfLines(300, 10, "third");
    const std::int64_t number = store.keep(third, secondNumber, test::textOfLines(300, 20, "wrong"));

    EXPECT_EQ(store.bytes(number), third);
}

} // namespace quorvane::history
