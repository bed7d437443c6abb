#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

#include <functional>

namespace quorvane::codesign {

namespace {

constexpr const char* propertyListAttribute = "1.2.840.113635.100.9.1";
constexpr const char* setAttribute = "1.2.840.113635.100.9.2";

// The states of a program whose signer's attribute of that name is made from its one directory's hash.
std::string statesWith(
    const char* attribute, const std::function<std::vector<Bytes>(const HashValue& hash)>& values)
{
    test::SignaturePlan plan = test::signedPlan();
    plan.sign = [&](const std::vector<Bytes>& directories) {
        test::CmsPlan cms;
        cms.listAsPropertyList = cms.listAsSet = false;
        cms.alter = [&](std::vector<Bytes>& attributes) {
            const HashValue hash = hashOf(HashAlgorithm::sha256, directories.front());
            attributes.push_back(test::attribute(attribute, values(hash)));
        };
        return makeCms(cms, directories);
    };
    return test::states(programOf(plan));
}

std::string statesWithPropertyList(const std::function<std::string(const HashValue& hash)>& text)
{
    return statesWith(propertyListAttribute, [&](const HashValue& hash) {
        return std::vector<Bytes>{test::element(0x04, test::bytesOf(text(hash)))};
    });
}

std::string plistOf(const std::string& hashes)
{
    return "<plist><dict><key>cdhashes</key><array>" + hashes + "</array></dict></plist>";
}

std::string beginningOf(const HashValue& hash, std::size_t length)
{
    return "<data>" + test::base64(ByteView(hash.bytes.data(), length)) + "</data>";
}

Bytes named(const HashValue& hash)
{
    const Bytes sha256 = test::objectIdentifier("2.16.840.1.101.3.4.2.1");
    return test::elementOf(0x30, {sha256, test::element(0x04, hash.view())});
}

} // namespace

TEST(HashLists, AsPropertyListsHaveTheFirstTwentyBytesOfEachHash)
{
    EXPECT_EQ(statesWithPropertyList([](const auto& hash) { return plistOf(beginningOf(hash, 20)); }), "2 2");
    for (const std::size_t length : {0U, 19U, 21U, 32U})
        EXPECT_EQ(
            statesWithPropertyList([length](const auto& hash) { return plistOf(beginningOf(hash, length)); }),
            "3 3")
            << length;
}

TEST(HashLists, ThatAreNoListsOfDataMatchNothing)
{
    for (const char* text : {"", "rubbish", "<plist><array/></plist>", "<plist><dict/></plist>",
             "<plist><dict><key>cdhashes</key><string>x</string></dict></plist>",
             "<plist><dict><key>cdhashes</key><array/></dict></plist>",
             "<plist><dict><key>cdhashes</key><array><string>x</string></array></dict></plist>"})
        EXPECT_EQ(statesWithPropertyList([text](const auto&) { return text; }), "3 3") << text;
    EXPECT_EQ(statesWith(propertyListAttribute, [](const auto&) { return std::vector<Bytes>(); }), "3 3");
}

TEST(HashLists, WithMoreThanTheDirectoriesMatchNone)
{
    EXPECT_EQ(statesWithPropertyList(
                  [](const auto& hash) { return plistOf(beginningOf(hash, 20) + beginningOf(hash, 20)); }),
        "3 3");
    EXPECT_EQ(
        statesWith(setAttribute, [](const auto& hash) { return std::vector<Bytes>{named(hash)}; }), "2 2");
    EXPECT_EQ(statesWith(setAttribute,
                  [](const auto& hash) {
                      return std::vector<Bytes>{named(hash), named(hash)};
                  }),
        "3 3");
    EXPECT_EQ(statesWith(setAttribute, [](const auto&) { return std::vector<Bytes>(); }), "3 3");
}

TEST(HashLists, FollowTheHashTypesAndNotTheSlots)
{
    for (const bool asSet : {false, true}) {
        test::CmsPlan cms;
        cms.listAsPropertyList = !asSet;
        cms.listAsSet = asSet;
        test::SignaturePlan plan = signedPlan(cms);
        test::DirectoryPlan alternate = plan.directories.front();
        alternate.hashType = 1; // behind the one of type 2
        plan.directories.push_back(alternate);
        EXPECT_EQ(test::states(programOf(plan)), "2 2") << asSet;
    }
}

} // namespace quorvane::codesign
