#include "codesign/CodeDirectory.h"

#include "codesign/CodeDirectories.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/SignatureBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace quorvane::codesign {

namespace {

// A CodeDirectory of no pages whose identifier is empty and ends the blob, which has the given size.
Bytes emptyDirectory(std::size_t size, std::uint32_t version = 0x20001)
{
    Bytes blob(size);
    test::putBig32(blob, 0, 0xfade0c02);
    test::putBig32(blob, 4, size);
    test::putBig32(blob, 8, version);
    test::putBig32(blob, 16, size); // where the hashes would begin
    test::putBig32(blob, 20, size - 1);
    blob[36] = 32;
    blob[37] = hashType::sha256;
    return blob;
}

ValidityStatus statusOf(const Bytes& blob)
{
    CodeDirectory directory;
    return CodeDirectory::parse(blob, directory);
}

// The status of a directory of one page after a change, which is given where its hashes begin.
ValidityStatus statusAfter(
    std::uint32_t version, const std::function<void(Bytes& blob, std::size_t hashes)>& change)
{
    test::DirectoryPlan plan;
    plan.version = version;
    Bytes blob = makeDirectory(plan, {}, Bytes(100, 'c'));
    change(blob, ByteView(blob).u32(16));
    return statusOf(blob);
}

// A scatter list of one record, the mark of the end and a byte, with nothing else that could be the mark.
Bytes directoryWithScatterList(std::size_t endMark)
{
    Bytes blob = emptyDirectory(300, 0x20100);
    test::putBig32(blob, 44, 100);
    std::fill(blob.begin() + 100, blob.end() - 1, std::uint8_t{1});
    test::putBig32(blob, endMark, 0);
    return blob;
}

} // namespace

TEST(CodeDirectory, HasAtLeastTheFieldsOfTheOldestVersion)
{
    EXPECT_EQ(statusOf(emptyDirectory(44)), status::valid);
    EXPECT_EQ(statusOf(emptyDirectory(43)), status::signatureFailed);
}

TEST(CodeDirectory, WithoutPagesCoversNothing)
{
    Bytes blob = emptyDirectory(44);
    test::putBig32(blob, 32, 1); // one signed byte
    EXPECT_EQ(statusOf(blob), status::signatureFailed);
    test::putBig32(blob, 32, 0);
    blob[39] = 12; // pages of a size
    EXPECT_EQ(statusOf(blob), status::signatureFailed);
}

TEST(CodeDirectory, HasTheLimitOf64BitsWhenThereIsOne)
{
    test::DirectoryPlan plan;
    Bytes blob = makeDirectory(plan, {}, Bytes(100, 'c'));
    CodeDirectory directory;
    test::putBig32(blob, 60, 99);
    ASSERT_EQ(CodeDirectory::parse(blob, directory), status::valid);
    EXPECT_EQ(directory.codeLimit(), 99U);
    test::putBig32(blob, 60, 0);
    ASSERT_EQ(CodeDirectory::parse(blob, directory), status::valid);
    EXPECT_EQ(directory.codeLimit(), 100U);
}

TEST(CodeDirectory, HoldsTheHashesBeforeEncryptionThatItNames)
{
    const auto naming = [](std::uint32_t version, std::uint32_t offset) {
        return statusAfter(version, [offset](Bytes& blob, std::size_t) { test::putBig32(blob, 92, offset); });
    };
    EXPECT_EQ(naming(0x20500, 0), status::valid) << "none";
    EXPECT_EQ(naming(0x20500, 108), status::valid);
    EXPECT_EQ(naming(0x20500, 0xfffffff0), status::signatureFailed);
    EXPECT_EQ(statusAfter(0x20500, [](Bytes& blob, std::size_t hashes) { test::putBig32(blob, 92, hashes); }),
        status::valid)
        << "up to the very end";
    EXPECT_EQ(
        statusAfter(0x20500, [](Bytes& blob, std::size_t hashes) { test::putBig32(blob, 92, hashes + 1); }),
        status::signatureFailed)
        << "a byte too far";
    EXPECT_EQ(statusAfter(0x20400, [](Bytes& blob, std::size_t) { test::putBig32(blob, 92, 0xfffffff0); }),
        status::valid)
        << "no such field in that version";
}

TEST(CodeDirectory, HasAScatterListOfWholeRecords)
{
    EXPECT_EQ(statusOf(directoryWithScatterList(100)), status::valid) << "of none";
    EXPECT_EQ(statusOf(directoryWithScatterList(124)), status::valid) << "of one";
    EXPECT_EQ(statusOf(directoryWithScatterList(148)), status::valid) << "of two";
    for (const std::size_t between : {101U, 123U, 125U, 130U})
        EXPECT_EQ(statusOf(directoryWithScatterList(between)), status::signatureFailed) << between;
}

TEST(CodeDirectory, HasPagesOfAtMostATebibyte)
{
    const auto withPagesOf = [](std::uint8_t logarithm) {
        return statusAfter(0x20400, [logarithm](Bytes& blob, std::size_t) { blob[39] = logarithm; });
    };
    EXPECT_EQ(withPagesOf(40), status::valid);
    EXPECT_EQ(withPagesOf(41), status::signatureFailed);
}

TEST(CodeDirectory, TellsTheHashesOfItsSpecialSlots)
{
    test::SignaturePlan signature;
    signature.infoPlist = test::bytesOf("a list");
    signature.blobs[11] = test::bytesOf("the last");
    const Bytes blob = makeDirectory({}, signature, Bytes(100, 'c'));
    CodeDirectory directory;
    ASSERT_EQ(CodeDirectory::parse(blob, directory), status::valid);
    EXPECT_FALSE(directory.specialHash(0));
    EXPECT_EQ(directory.specialHash(1)->text(),
        hashOf(HashAlgorithm::sha256, test::bytesOf("a list")).view().text());
    EXPECT_FALSE(directory.specialHash(2)) << "zeros";
    EXPECT_EQ(directory.specialHash(11)->text(),
        hashOf(HashAlgorithm::sha256, test::bytesOf("the last")).view().text());
    EXPECT_FALSE(directory.specialHash(12));
}

TEST(CodeDirectories, AreLoadedFromTheFirstSlotAndFiveAlternates)
{
    std::vector<std::pair<std::uint32_t, Bytes>> blobs;
    std::uint32_t slot = 0;
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{1, 9, 10, 3, 2, 4, 11}) {
        test::DirectoryPlan plan;
        plan.hashType = type;
        plan.identifier = "type " + std::to_string(type);
        blobs.emplace_back(slot, makeDirectory(plan, {}, Bytes(100, 'c')));
        slot = std::max(slot + 1, signatureSlot::firstAlternate);
    }
    const auto container = SignatureContainer::parse(test::makeContainer(blobs));
    const CodeDirectories loaded = loadCodeDirectories(*container);
    ASSERT_EQ(loaded.status, status::valid);
    EXPECT_EQ(loaded.all.size(), 6U);
    EXPECT_EQ(loaded.strongest().identifier(), "type 4");
    EXPECT_EQ(loaded.hashes[1].length, 0U) << "of an unknown kind";
    EXPECT_EQ(loaded.hashes[5].length, 48U);
}

} // namespace quorvane::codesign
