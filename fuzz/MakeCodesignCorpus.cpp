#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

// Regenerates the seeds of the code signature fuzzers in the folder named on the command line. Certificates
// are generated each time, so the files differ between runs.

namespace {

using namespace quorvane;

void write(const std::filesystem::path& path, const codesign::Bytes& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << codesign::ByteView(bytes).text();
}

// Small enough for a fuzzer: without the padding at the end.
codesign::Bytes trimmed(codesign::Bytes program)
{
    while (!program.empty() && program.back() == 0)
        program.pop_back();
    return program;
}

test::SignaturePlan fullSignature()
{
    test::CmsPlan cms;
    cms.stamp = test::StampPlan{test::testAuthority().timeStamper, {test::testAuthority().timeStamper},
        "20230601120000Z", std::nullopt};
    test::SignaturePlan plan = signedPlan(cms);
    plan.directories.push_back(plan.directories.front());
    plan.directories.front().hashType = 1;
    plan.blobs[2] = test::makeBlob(0xfade0c01, codesign::Bytes(4));
    plan.blobs[5] = test::makeBlob(0xfade7171, test::bytesOf("<plist/>"));
    return plan;
}

void writePrograms(const std::filesystem::path& folder)
{
    test::ProgramPlan big;
    big.is64Bit = false;
    big.order = codesign::ByteOrder::big;
    test::ProgramPlan full;
    full.signature = fullSignature();
    test::ProgramPlan withInfo;
    withInfo.infoPlistSection = test::bytesOf("<plist><dict/></plist>");
    withInfo.signature->infoPlist = withInfo.infoPlistSection;
    write(folder / "unsigned", trimmed(test::makeUnsignedProgram()));
    write(folder / "adhoc", trimmed(test::makeProgram()));
    write(folder / "adhoc-32-big", trimmed(makeProgram(big)));
    write(folder / "info-plist", trimmed(makeProgram(withInfo)));
    write(folder / "signed", trimmed(makeProgram(full)));
    write(folder / "universal",
        trimmed(test::makeUniversal({{test::x86_64, trimmed(test::makeUnsignedProgram())},
            {test::arm64, trimmed(test::makeProgram())}})));
    write(folder / "universal-wide",
        trimmed(test::makeUniversal({{test::powerPc, trimmed(makeProgram(big))}}, true)));
}

void writeSignatures(const std::filesystem::path& folder)
{
    const codesign::Bytes code(5000, 0x90);
    test::SignaturePlan definite = signedPlan([] {
        test::CmsPlan cms;
        cms.indefiniteLengths = false;
        return cms;
    }());
    test::SignaturePlan hashes;
    hashes.directories.front().hashType = 4;
    hashes.directories.front().version = 0x20600;
    write(folder / "adhoc", test::makeSignature({}, code));
    write(folder / "full", makeSignature(fullSignature(), code));
    write(folder / "definite", makeSignature(definite, code));
    write(folder / "sha384", makeSignature(hashes, code));
}

void writeLists(const std::filesystem::path& folder)
{
    write(folder / "info.xml",
        test::bytesOf(
            "<?xml version=\"1.0\"?><!DOCTYPE plist SYSTEM \"x\"><plist version=\"1.0\"><dict>"
            "<key>CFBundleExecutable</key><string>a&amp;b&#65;<![CDATA[x]]></string></dict></plist>"));
    write(folder / "rules.xml",
        test::bytesOf(
            "<dict><key>^(.*/)?\\.DS_Store$</key><dict><key>omit</key><true/><key>weight</key><real>20</real>"
            "</dict><key>^[^/]+$</key><true/><key>d</key><data>YWJj</data></dict>"));
    codesign::Bytes binary = test::bytesOf("bplist00");
    test::append(binary, codesign::Bytes{0xd1, 1, 2, 0x5f, 0x10, 18});
    test::append(binary, "CFBundleExecutable");
    test::append(binary, codesign::Bytes{0x52, 'a', 'b', 8, 11, 32});
    codesign::Bytes trailer(32);
    trailer[6] = trailer[7] = 1;
    trailer[15] = 3;
    trailer[31] = 35;
    test::append(binary, trailer);
    write(folder / "info.binary", binary);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::cerr << "usage: make_codesign_corpus FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    writePrograms(folder / "macho");
    writeSignatures(folder / "signature");
    writeLists(folder / "bundles");
    return 0;
}
