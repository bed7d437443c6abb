#include "workflow/RulesExport.h"

#include "platform/FileBytes.h"
#include "platform/FileReplacement.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"
#include "rules/RulesContent.h"
#include "rules/RulesFile.h"

#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane {

namespace {

constexpr mode_t ownerAndGroup = 0640;

std::string openFailure(const std::string& path, const std::error_code& error)
{
    return "Failed to open file '" + path + "' for writing: " + errorText(error);
}

// True when a new file can stand for the one that is open, or when there is none.
bool canStandFor(FileReplacement& file, const FileDescriptor& existing)
{
    struct stat status { };
    if (!existing)
        return true;
    return fstat(existing.get(), &status) == 0 && file.canStandFor(status);
}

WriteResult replace(FileReplacement& file, const std::string& destination, const RulesContent& content)
{
    WriteResult result;
    std::error_code error;
    if (writeFully(file.descriptor(), content.bytes(), error) == content.bytes().size())
        error = file.takePlace(ownerAndGroup);
    else if (!error)
        error = systemError(EIO); // a call that writes nothing and does not say why
    result.opened = !error;
    if (error)
        result.message = "Failed write() operation on file '" + destination + "' " + errorText(error);
    else
        result.identity = FileIdentity::ofPath(destination, error);
    return result;
}

} // namespace

WriteResult exportRules(const std::string& destination, const RulesContent& content)
{
    WriteResult refused;
    std::error_code error;
    const FileDescriptor existing = openRegularFile(destination, O_WRONLY | O_NOFOLLOW, error);
    if (error && error != std::errc::no_such_file_or_directory) {
        refused.message = openFailure(destination, error);
        return refused;
    }
    FileReplacement file(destination);
    if (file.isForbidden() || (!file.error() && !canStandFor(file, existing)))
        return writeRulesFile(destination, content);
    if (file.error()) {
        refused.message = openFailure(destination, file.error());
        return refused;
    }
    return replace(file, destination, content);
}

WriteResult exportRules(const std::string& destination, const std::vector<RuleRef>& rules)
{
    try {
        RulesContent content;
        for (const RuleRef& rule : rules)
            content.append(rule);
        return exportRules(destination, content);
    } catch (const std::bad_alloc&) {
        WriteResult failed;
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
    const RulesFileText text = RulesFileText::read(resolved);
    struct stat original { };
    if (text.errorMessage() || stat(resolved.c_str(), &original) != 0 || !S_ISREG(original.st_mode))
        return;
    FileReplacement file(destination);
    if (file.isForbidden())
        writeFileInPlace(destination, text.bytes());
    else if (!file.error() && writeFully(file.descriptor(), text.bytes(), error) == text.bytes().size())
        file.takePlace(original.st_mode & 0777U);
}

bool isSameFile(const std::string& a, const std::string& b)
{
    std::error_code missing;
    return std::filesystem::equivalent(a, b, missing) && !missing;
}

} // namespace quorvane
