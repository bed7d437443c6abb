#include "platform/Locations.h"
#include "platform/Log.h"
#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "rules/RuleManager.h"
#include "rules/RuleProperties.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/MovedProgram.h"

#include <QCoreApplication>
#include <QImageReader>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

// Creates a volume of the machine that the sample rules are for: the programs that they name, small and
// signed to meet their rules, with icons, and the files and folders. Some are missing or changed, so that
// there are problems to find.
//
// The signing authority is generated for the run and its key is not stored. A program that rules identify by
// digest is unsigned, and so has the same bytes in every run.

namespace quorvane::test {

namespace {

namespace fs = std::filesystem;

using Programs = std::map<std::string, std::string>; // the constraint of each, by path

// Missing programs, with everything below them.
constexpr std::array gone{"/Applications/Chat Room.app/", "/Applications/Plain Writer.app/",
    "/Users/ann/Chat Archive/", "/Volumes/Backup/", "/Volumes/CAMERA/", "/Volumes/Old Disk/",
    "/opt/old-scanner/", "/usr/local/bin/scan-import"};

// One now belongs to another team, one has moved.
const Programs changed{{"/Applications/Sheet Maker.app/Contents/MacOS/Sheet Maker", "SM81KWB4RT"},
    {"/Applications/Utilities/Chat Room.app/Contents/MacOS/Chat Room", "CR19FNA6ES"}};

bool isOnVolume(std::string_view path)
{
    const auto isAbove = [path](const char* other) { return path.starts_with(other); };
    return path.starts_with('/') && std::none_of(gone.begin(), gone.end(), isAbove);
}

std::vector<rules::RuleRef> sampleRules(const fs::path& samples)
{
    platform::Log log({});
    rules::RuleManager store(platform::Locations("", ""), log);
    store.addFileContents((samples / "user.quorvane.rc").string(), false);
    for (const auto& file : fs::directory_iterator(samples / "system"))
        store.addFileContents(file.path().string(), true);
    store.rebuildRulesCache();
    return store.allRules();
}

void addProgram(Programs& programs, const std::string& path, std::string_view constraint)
{
    if (!isOnVolume(path))
        return;
    std::string& bound = programs[path];
    if (bound.empty())
        bound = constraint;
}

Programs programsOf(const std::vector<rules::RuleRef>& rules)
{
    Programs programs = changed;
    for (const rules::RuleRef& rule : rules) {
        const rules::NullableText process
            = visitRule(rule, [](const auto& each) { return each.processName(); });
        const rules::PolicyRule* policy = policyRuleIn(rule);
        addProgram(programs, workflow::namedProgram(process.view()),
            policy == nullptr ? std::string_view() : policy->fields().constraint.view());
        addProgram(programs, applicationParentPathForProcess(process).value_or(""), {});
    }
    return programs;
}

void write(const fs::path& file, std::string_view contents)
{
    fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    if (!(out << contents << std::flush))
        throw std::runtime_error("cannot write " + file.string());
}

SignaturePlan signatureOfTeam(const std::string& team)
{
    static int keys = 100; // lower numbers are the authority's keys
    CertificatePlan plan;
    plan.commonName = "Sample Signer (" + team + ")";
    plan.organizationalUnit = team;
    plan.extendedUsage = "critical,codeSigning";
    CmsPlan cms;
    cms.signer = makeIdentity(testKey(++keys), plan, &testAuthority().intermediate);
    cms.certificates.back() = cms.signer;
    SignaturePlan signature = signedPlan(cms);
    signature.directories.front().team = team;
    return signature;
}

SignaturePlan signatureMeeting(const std::string& constraint)
{
    if (constraint != workflow::platformMarker
        && workflow::constraintKind(constraint) == workflow::ConstraintKind::team)
        return signatureOfTeam(constraint);
    SignaturePlan signature;
    signature.directories.front().platform = constraint == workflow::platformMarker ? 1 : 0;
    return signature;
}

std::string identifierOf(const fs::path& program)
{
    std::string name = program.filename().string();
    std::replace(name.begin(), name.end(), ' ', '-');
    return "com.example." + name;
}

std::string infoPlist(const fs::path& program)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>\n"
           "<key>CFBundleExecutable</key><string>"
        + program.filename().string() + "</string>\n<key>CFBundleIdentifier</key><string>"
        + identifierOf(program)
        + "</string>\n<key>CFBundleIconFile</key><string>icon</string>\n</dict></plist>\n";
}

void writeIcon(const fs::path& drawing, const fs::path& icon)
{
    constexpr int extent = 256;
    fs::create_directories(icon.parent_path());
    QImageReader reader(QString::fromStdString(drawing.string()));
    reader.setScaledSize({extent, extent});
    if (!reader.read().save(QString::fromStdString(icon.string()), "ICNS"))
        throw std::runtime_error("cannot make an icon of " + drawing.string());
}

void writeProgram(
    const fs::path& volume, const fs::path& samples, const std::string& path, const std::string& constraint)
{
    const fs::path file = volume / path.substr(1);
    const fs::path contents = file.parent_path().parent_path();
    ProgramPlan program;
    program.signature = signatureMeeting(constraint);
    program.signature->directories.front().identifier = identifierOf(path);
    if (contents.filename() == "Contents") {
        const std::string info = infoPlist(path);
        program.signature->infoPlist = bytesOf(info);
        write(contents / "Info.plist", info);
        const fs::path drawing = samples / "icons" / (contents.parent_path().stem().string() + ".svg");
        if (fs::exists(drawing))
            writeIcon(drawing, contents / "Resources/icon.icns");
    }
    write(file, codesign::ByteView(makeProgram(program)).text());
    fs::permissions(
        file, fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
}

// Creates a folder if the path ends with "/", else a file, unless something exists at the path.
void writePath(const fs::path& volume, const rules::RuleRef& rule)
{
    const std::string path = pathOf(valueOf(rule));
    const auto type = visitRule(rule, [](const auto& each) { return each.fields().policyType; });
    const fs::path place = volume / path.substr(std::min<std::size_t>(path.size(), 1));
    if (type == rules::PolicyType::suffix || !isOnVolume(path) || path.starts_with("/dev/"))
        return;
    if (path.ends_with('/'))
        fs::create_directories(place);
    else if (!fs::exists(place))
        write(place, {});
}

void makeVolume(const fs::path& samples, const fs::path& volume)
{
    const std::vector<rules::RuleRef> rules = sampleRules(samples);
    for (const auto& [path, constraint] : programsOf(rules))
        writeProgram(volume, samples, path, constraint);
    for (const rules::RuleRef& rule : rules)
        writePath(volume, rule);
}

} // namespace

} // namespace quorvane::test

// quorvane-sample-volume SAMPLES VOLUME: does nothing when VOLUME exists, and never creates an incomplete
// one.
int main(int argumentCount, char** arguments)
{
    namespace fs = std::filesystem;
    const QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 3) {
        std::fputs("usage: quorvane-sample-volume SAMPLES VOLUME\n", stderr);
        return 2;
    }
    const fs::path volume = arguments[2];
    const fs::path unfinished = volume.string() + ".unfinished";
    try {
        if (fs::exists(volume))
            return 0;
        fs::remove_all(unfinished);
        quorvane::test::makeVolume(arguments[1], unfinished);
        fs::rename(unfinished, volume);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "quorvane-sample-volume: %s\n", failure.what());
        return 1;
    }
    return 0;
}
