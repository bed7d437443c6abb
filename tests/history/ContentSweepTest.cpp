#include "history/ContentSweep.h"

#include "history/ContentStore.h"
#include "history/VersionTable.h"
#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::history {

namespace {

constexpr std::uint64_t mebibyte = 1U << 20U;

class ContentSweepTest : public testing::Test {
protected:
    ContentSweepTest()
    {
        ContentStore::createTable(database);
        VersionTable::createTable(database);
    }

    // Contents, each packed against those before, of which the first are number 1.
    void keep(std::size_t count)
    {
        std::optional<std::int64_t> base;
        for (std::size_t number = 1; number <= count; ++number)
            base = store.keep(textOf(number), base, std::nullopt);
    }
    static std::string textOf(std::size_t number)
    {
        return test::textOfLines(60, number, "number " + std::to_string(number));
    }
    void use(std::int64_t contents)
    {
        const std::string text = "of the version";
        VersionTable(database).insert(
            test::version(text), VersionState::done, 1, std::nullopt, {contents, {}});
    }
    void claimSize(std::int64_t number, std::uint64_t size)
    {
        Statement(database, "UPDATE content SET size = ? WHERE number = ?", size, number).run();
    }
    // "2 4<2": contents 2, self-contained, and 4, packed against 2.
    std::string left()
    {
        std::string text;
        Statement rows(database, "SELECT number, base FROM content ORDER BY number");
        while (rows.step()) {
            text += (text.empty() ? "" : " ") + std::to_string(rows.integer(0));
            if (const auto base = rows.optionalInteger(1))
                text += "<" + std::to_string(*base);
        }
        return text;
    }
    void expectReadable(std::initializer_list<std::size_t> numbers)
    {
        for (const std::size_t number : numbers)
            EXPECT_EQ(store.bytes(static_cast<std::int64_t>(number)), textOf(number)) << number;
    }

    const test::TemporaryFolder folder;
    Database database{folder.write("database", "")};
    ContentStore store{database};
};

} // namespace

TEST_F(ContentSweepTest, PacksWhatStaysAgainstTheNearestThatStays)
{
    keep(7);
    for (const std::int64_t used : {2, 3, 6})
        use(used);
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left(), "2 3<2 6<3");
    expectReadable({2, 3, 6});
}

TEST_F(ContentSweepTest, LeavesAChainAloneThatIsInUse)
{
    keep(3);
    for (const std::int64_t used : {1, 2, 3})
        use(used);
    sweepContents(database, SweepCost::whateverItTakes);
    EXPECT_EQ(left(), "1 2<1 3<2");
}

TEST_F(ContentSweepTest, CountsWhatAVersionMeantAsUsed)
{
    keep(3);
    const std::string text = "of the version";
    VersionTable(database).insert(test::version(text), VersionState::done, 1, std::nullopt, {1, 3});
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left(), "1 3<1");
    expectReadable({1, 3});
}

TEST_F(ContentSweepTest, SweepsEachChainByItself)
{
    keep(2); // 1 2<1
    const std::int64_t alone = store.keep("another chain", std::nullopt, std::nullopt);
    store.keep("another chain, later", alone, std::nullopt);
    use(2);
    use(alone);
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left(), "2 3");
    expectReadable({2});
    EXPECT_EQ(store.bytes(alone), "another chain");
}

TEST_F(ContentSweepTest, LeavesALongChainUntilHalfOfItIsUnused)
{
    keep(5);
    claimSize(1, 65 * mebibyte); // which has to be unpacked on the way to the second
    for (const std::int64_t used : {2, 4, 5})
        use(used);
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left(), "1 2<1 3<2 4<3 5<4") << "two of five";
    Statement(database, "DELETE FROM version WHERE bytes = 5").run();
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left(), "2<1 4<3") << "three of five, of which the first was not what it claims";
}

TEST_F(ContentSweepTest, SweepsAChainOfWhatIsQuicklyUnpackedAndALongOneOnDemand)
{
    keep(5);
    claimSize(1, 60 * mebibyte);
    for (const std::int64_t used : {2, 3, 4, 5})
        use(used);
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left().substr(0, 1), "2") << "one of five";

    keep(5); // the numbers go on from 6
    claimSize(6, 65 * mebibyte);
    for (const std::int64_t used : {7, 8, 9, 10})
        use(used);
    sweepContents(database, SweepCost::inPassing);
    EXPECT_NE(left().find(" 6 "), std::string::npos);
    sweepContents(database, SweepCost::whateverItTakes);
    EXPECT_EQ(left().find(" 6 "), std::string::npos);
}

TEST_F(ContentSweepTest, UnpacksAGibibyteAtMostInPassing)
{
    for (int chain = 0; chain < 3; ++chain)
        keep(2); // 1 2<1 3 4<3 5 6<5
    for (const std::int64_t first : {1, 3, 5}) {
        claimSize(first, 600 * mebibyte);
        use(first + 1);
    }
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left(), "2<1 4<3 5 6<5") << "two chains are beyond it";
    sweepContents(database, SweepCost::inPassing);
    EXPECT_EQ(left().find("5 "), std::string::npos) << "the next time";
}

TEST_F(ContentSweepTest, MarksWhatIsDamagedAndSpoilsNothingElse)
{
    keep(3);
    const std::int64_t other = store.keep("another chain", std::nullopt, std::nullopt);
    Statement(database, "UPDATE content SET frame = x'00' WHERE number = 1").run();
    use(2);
    use(3);
    use(other);
    sweepContents(database, SweepCost::inPassing);
    EXPECT_FALSE(store.bytes(2));
    EXPECT_EQ(store.unreadable(), (std::set<std::int64_t>{2, 3}));
    EXPECT_EQ(store.bytes(other), "another chain");
}

} // namespace quorvane::history
