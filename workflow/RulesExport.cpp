#include "workflow/RulesExport.h"

#include "platform/FileBytes.h"
#include "platform/FileReplacement.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "rules/RulesContent.h"
#include "rules/RulesFile.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <new>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

constexpr mode_t ownerAndGroup = 0640;

using WriteTo = std::function<std::error_code(int descriptor)>;

std::string openFailure(const std::string& path, const std::error_code& error)
{
    return "Failed to open file '" + path + "' for writing: " + platform::errorText(error);
}

// True when a new file can replace the one that is open, or when there is none.
bool canStandFor(platform::FileReplacement& file, const platform::FileDescriptor& existing)
{
    struct stat status { };
    if (!existing)
        return true;
    return fstat(existing.get(), &status) == 0 && file.canStandFor(status);
}

std::error_code write(int descriptor, std::string_view bytes)
{
    std::error_code error;
    if (platform::writeFully(descriptor, bytes, error) < bytes.size() && !error)
        error = platform::systemError(EIO); // a write that returned 0 without an error
    return error;
}

// In pieces, so that a long file is never in memory as a whole.
std::error_code write(int descriptor, const std::vector<rules::RuleRef>& rules)
{
    constexpr std::size_t pieceSize = std::size_t{1} << 18U; // bytes
    std::error_code error;
    rules::RulesContent piece;
    forEachRule(rules, [&](const rules::RuleRef& rule) {
        if (error)
            return;
        piece.append(rule);
        if (piece.bytes().size() < pieceSize)
            return;
        error = write(descriptor, piece.bytes());
        piece.clear();
    });
    return error ? error : write(descriptor, piece.bytes());
}

rules::RulesContent contentOf(const std::vector<rules::RuleRef>& rules)
{
    rules::RulesContent content;
    forEachRule(rules, [&content](const rules::RuleRef& rule) { content.append(rule); });
    return content;
}

rules::WriteResult replace(
    platform::FileReplacement& file, const std::string& destination, const WriteTo& writeTo)
{
    rules::WriteResult result;
    std::error_code error = writeTo(file.descriptor());
    if (!error)
        error = file.takePlace(ownerAndGroup);
    result.opened = !error;
    if (error)
        result.message
            = "Failed write() operation on file '" + destination + "' " + platform::errorText(error);
    else
        result.identity = platform::FileIdentity::ofPath(destination, error);
    return result;
}

// `writeInPlace`: for a destination that cannot be replaced.
rules::WriteResult exportBy(const std::string& destination, const WriteTo& writeTo,
    const std::function<rules::WriteResult()>& writeInPlace)
{
    rules::WriteResult refused;
    std::error_code error;
    const platform::FileDescriptor existing
        = platform::openRegularFile(destination, O_WRONLY | O_NOFOLLOW, error);
    if (error && error != std::errc::no_such_file_or_directory) {
        refused.message = openFailure(destination, error);
        return refused;
    }
    platform::FileReplacement file(destination);
    if (file.isForbidden() || (!file.error() && !canStandFor(file, existing)))
        return writeInPlace();
    if (file.error()) {
        refused.message = openFailure(destination, file.error());
        return refused;
    }
    return replace(file, destination, writeTo);
}

} // namespace

rules::WriteResult exportRules(const std::string& destination, const rules::RulesContent& content)
{
    return exportBy(
        destination, [&](int descriptor) { return write(descriptor, content.bytes()); },
        [&] { return writeRulesFile(destination, content); });
}

rules::WriteResult exportRules(const std::string& destination, const std::vector<rules::RuleRef>& rules)
{
    try {
        return exportBy(
            destination, [&](int descriptor) { return write(descriptor, rules); },
            [&] { return writeRulesFile(destination, contentOf(rules)); });
    } catch (const std::bad_alloc&) {
        rules::WriteResult failed;
        failed.message = "Internal error: unable to allocate memory";
        return failed;
    }
}

void exportRulesFile(const std::string& source, const std::string& destination)
{
    struct stat there { };
    const bool isTaken = lstat(destination.c_str(), &there) == 0;
    if (isSameFile(source, destination) || (isTaken && !S_ISREG(there.st_mode) && !S_ISLNK(there.st_mode)))
        return;
    std::error_code error;
    const std::string resolved = std::filesystem::canonical(source, error).string();
    if (error)
        return;
    const rules::RulesFileText text = rules::RulesFileText::read(resolved);
    struct stat original { };
    if (text.errorMessage() || stat(resolved.c_str(), &original) != 0 || !S_ISREG(original.st_mode))
        return;
    platform::FileReplacement file(destination);
    if (file.isForbidden())
        platform::writeFileInPlace(destination, text.bytes());
    else if (!file.error()
        && platform::writeFully(file.descriptor(), text.bytes(), error) == text.bytes().size())
        file.takePlace(original.st_mode & 0777U);
}

bool isSameFile(const std::string& a, const std::string& b)
{
    std::error_code missing;
    return std::filesystem::equivalent(a, b, missing) && !missing;
}

} // namespace quorvane::workflow
