#include "codesign/ProgramCode.h"
#include "codesign/SignatureQueries.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace quorvane::codesign {

namespace {

constexpr const char* noCode = "basic 6, strict 6, none, none, platform 0, Self-Signed Certificate";
constexpr const char* adHoc
    = "basic 2, strict 2, com.example.tool, none, platform 0, Self-Signed Certificate";
constexpr const char* wrongInfo
    = "basic 6, strict 6, com.example.tool, none, platform 0, Self-Signed Certificate";

std::string infoPlist(const std::string& executable)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//MAKER//DTD PLIST 1.0//EN\" \"http://example.com/plist.dtd\">\n"
           "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>"
        + executable + "</string></dict></plist>";
}

// A program that seals the Info.plist.
Bytes programSealing(const std::string& info)
{
    test::ProgramPlan plan;
    plan.signature->infoPlist = test::bytesOf(info);
    return makeProgram(plan);
}

// A binary property list: one dictionary with one text.
Bytes binaryInfoPlist(const std::string& executable)
{
    Bytes list = test::bytesOf("bplist00");
    const std::size_t dictionary = list.size();
    test::append(list, Bytes{0xd1, 1, 2});
    const std::size_t key = list.size();
    test::append(list, Bytes{0x5f, 0x10, 18});
    test::append(list, "CFBundleExecutable");
    const std::size_t value = list.size();
    test::append(list, Bytes{static_cast<std::uint8_t>(0x50 + executable.size())});
    test::append(list, executable);
    const std::size_t table = list.size();
    for (const std::size_t offset : {dictionary, key, value})
        list.push_back(static_cast<std::uint8_t>(offset));
    Bytes trailer(32);
    trailer[6] = trailer[7] = 1;
    test::putNumber(trailer, 8, 3, 8, ByteOrder::big);
    test::putNumber(trailer, 24, table, 8, ByteOrder::big);
    test::append(list, trailer);
    return list;
}

} // namespace

TEST(Bundle, OfAnApplicationAnswersForItsMainExecutable)
{
    const test::TemporaryFolder folder;
    const std::string info = infoPlist("tool");
    folder.write("X.app/Contents/Info.plist", info);
    const std::string program = folder.write("X.app/Contents/MacOS/tool", programSealing(info));

    EXPECT_EQ(test::answersAt(folder.path("X.app")), adHoc);
    EXPECT_EQ(test::answersAt(folder.path("X.app/")), adHoc);
    EXPECT_EQ(test::answersAt(program), adHoc);
    std::filesystem::create_symlink(program, folder.path("link"));
    EXPECT_EQ(test::answersAt(folder.path("link")), adHoc);
}

TEST(Bundle, WhoseInfoPlistChangedOrIsMissingCannotBeTold)
{
    const test::TemporaryFolder folder;
    const std::string info = infoPlist("X");
    const std::string program = folder.write("X.app/Contents/MacOS/X", programSealing(info));
    EXPECT_EQ(test::answersAt(program), wrongInfo);
    EXPECT_EQ(test::answersAt(folder.path("X.app")), wrongInfo);

    folder.write("X.app/Contents/Info.plist", info + "\n");
    EXPECT_EQ(test::answersAt(program), wrongInfo);
    folder.write("X.app/Contents/Info.plist", info);
    EXPECT_EQ(test::answersAt(program), adHoc);
}

TEST(Bundle, NamesItsExecutableInABinaryList)
{
    const test::TemporaryFolder folder;
    const Bytes info = binaryInfoPlist("tool");
    folder.write("X.app/Contents/Info.plist", info);
    const std::string program
        = folder.write("X.app/Contents/MacOS/tool", programSealing(std::string(ByteView(info).text())));
    EXPECT_EQ(test::answersAt(folder.path("X.app")), adHoc);
    EXPECT_EQ(test::answersAt(program), adHoc);
}

TEST(Bundle, WithoutANameUsesItsFolders)
{
    const test::TemporaryFolder folder;
    const std::string info = "<plist><dict/></plist>";
    folder.write("Some Tool.app/Contents/Info.plist", info);
    folder.write("Some Tool.app/Contents/MacOS/Some Tool", programSealing(info));
    EXPECT_EQ(test::answersAt(folder.path("Some Tool.app")), adHoc);
}

TEST(Bundle, MayBeFlatOrAVersionedFramework)
{
    const test::TemporaryFolder folder;
    const std::string info = infoPlist("Code");
    folder.write("Flat.app/Info.plist", info);
    folder.write("Flat.app/Code", programSealing(info));
    folder.write("Y.framework/Versions/A/Resources/Info.plist", info);
    folder.write("Y.framework/Versions/A/Code", programSealing(info));
    std::filesystem::create_directory_symlink("A", folder.path("Y.framework/Versions/Current"));
    std::filesystem::create_symlink("Versions/Current/Code", folder.path("Y.framework/Code"));

    for (const char* path : {"Flat.app", "Flat.app/Code", "Y.framework", "Y.framework/Code",
             "Y.framework/Versions/A/Code", "Y.framework/Versions/A", "Y.framework/Versions/Current/Code"})
        EXPECT_EQ(test::answersAt(folder.path(path)), adHoc) << path;
}

TEST(Bundle, IsNotWhatAHelperBesideItsMainExecutableBelongsTo)
{
    const test::TemporaryFolder folder;
    const std::string info = infoPlist("tool");
    folder.write("X.app/Contents/Info.plist", info);
    folder.write("X.app/Contents/MacOS/tool", programSealing(info));
    const std::string helper = folder.write("X.app/Contents/MacOS/helper", test::makeProgram());
    const std::string sealing = folder.write("X.app/Contents/MacOS/other", programSealing(info));

    EXPECT_EQ(test::answersAt(helper), adHoc);
    EXPECT_EQ(test::answersAt(sealing), wrongInfo);
}

TEST(Bundle, HasAnInfoPlistOfFourMebibytesAtMost)
{
    const test::TemporaryFolder folder;
    std::string info = infoPlist("tool");
    info.resize(4U << 20U, '\n');
    folder.write("X.app/Contents/Info.plist", info);
    folder.write("X.app/Contents/MacOS/tool", programSealing(info));
    EXPECT_EQ(test::answersAt(folder.path("X.app")), adHoc);
    info += '\n';
    folder.write("X.app/Contents/Info.plist", info);
    folder.write("X.app/Contents/MacOS/tool", programSealing(info));
    EXPECT_EQ(test::answersAt(folder.path("X.app")), noCode);
}

TEST(Bundle, MayBearTheNameOfTheFolderOfExecutables)
{
    const test::TemporaryFolder folder;
    const std::string info = infoPlist("tool");
    folder.write("MacOS/Info.plist", info);
    EXPECT_EQ(test::answersAt(folder.write("MacOS/tool", programSealing(info))), adHoc);
    folder.write("Contents/tools/Info.plist", info);
    EXPECT_EQ(test::answersAt(folder.write("Contents/tools/tool", programSealing(info))), adHoc);
}

TEST(Bundle, OnAnotherVolumeIsReadThereButItsResourcesAreNotVerified)
{
    const test::TemporaryFolder folder;
    const std::string info = infoPlist("tool");
    folder.write("Apps/X.app/Contents/Info.plist", info);
    folder.write("Apps/X.app/Contents/MacOS/tool", programSealing(info));
    std::error_code error;
    const auto volume = platform::FileRoot::at(folder.path(), error);
    for (const char* path : {"/Apps/X.app", "/Apps/X.app/Contents/MacOS/tool"}) {
        const auto code = ProgramCode::atPath(path, test::testAnchor(), *volume);
        EXPECT_EQ(test::answers(code.get()), adHoc) << path;
        EXPECT_EQ(codeSignState(code.get(), 0), 4) << path;
    }
}

TEST(Bundle, NeverNamesAFileOutside)
{
    for (const char* name : {"../../../outside", "/bin/ls", ".", "..", ""}) {
        const test::TemporaryFolder folder;
        folder.write("outside", test::makeProgram());
        folder.write("X.app/Contents/Info.plist", infoPlist(name));
        folder.write("X.app/Contents/MacOS/X", test::makeProgram());
        EXPECT_EQ(test::answersAt(folder.path("X.app")), noCode) << name;
    }
}

TEST(Path, ThatNamesNoCodeCannotBeTold)
{
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("folder"));
    std::filesystem::create_symlink("loop", folder.path("loop"));
    std::filesystem::create_directory(folder.path("Loop.app"));
    std::filesystem::create_directory_symlink("../Loop.app", folder.path("Loop.app/Contents"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_directories(folder.path("Pipe.app/Contents/MacOS"));
    ASSERT_EQ(mkfifo(folder.path("Pipe.app/Contents/MacOS/Pipe").c_str(), 0600), 0);
    folder.write("file", test::makeProgram());

    for (const std::string& path :
        {folder.path("missing"), folder.path("folder"), folder.path("loop"), folder.path("Loop.app"),
            folder.path("pipe"), folder.path("Pipe.app"), folder.path("file/x"), std::string("/dev/zero"),
            std::string(), std::string(5000, 'x'), folder.path("file") + std::string("\0x", 2)})
        EXPECT_EQ(test::answersAt(path), noCode) << path;
}

TEST(Path, OfABundleWithAPipeForAnInfoPlistNeverBlocks)
{
    const test::TemporaryFolder folder;
    folder.write("X.app/Contents/MacOS/X", programSealing("info"));
    ASSERT_EQ(mkfifo(folder.path("X.app/Contents/Info.plist").c_str(), 0600), 0);
    EXPECT_EQ(test::answersAt(folder.path("X.app")), wrongInfo);
}

TEST(Path, ThatGrowsOrShrinksAfterwardsFailsAndDoesNoHarm)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", test::makeProgram());
    const auto code = ProgramCode::atPath(path);
    ASSERT_EQ(codeSignState(code.get(), strictFlags), 2);
    std::filesystem::resize_file(path, 5000);

    EXPECT_EQ(codeSignState(code.get(), strictFlags), 3);
    EXPECT_EQ(codeSignState(code.get(), basicFlags), 2) << "the signature was read before";
}

TEST(Path, OfASparseFileEndsInTime)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", test::makeProgram());
    constexpr std::uint64_t largest = 16ULL << 30U;
    std::filesystem::resize_file(path, largest);
    EXPECT_EQ(test::answersAt(path),
        "basic 2, strict 6, com.example.tool, none, platform 0, Self-Signed Certificate");
    for (const std::uint64_t larger : {largest + 1, std::uint64_t{1} << 42U}) {
        std::filesystem::resize_file(path, larger);
        EXPECT_EQ(test::answersAt(path), noCode) << "no program is as large as this";
    }
}

} // namespace quorvane::codesign
