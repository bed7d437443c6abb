#include "codesign/Codesign.h"

#include "codesign/ProgramCode.h"

namespace quorvane::codesign {

std::unique_ptr<CodeObject> getCodeRefWithPath(const std::string& path)
{
    return ProgramCode::atPath(path);
}

std::int32_t getStaticCodeSignStateWithFlags(const std::string& path, std::uint32_t flags)
{
    return codeSignState(getCodeRefWithPath(path).get(), flags);
}

std::int32_t getStaticCodeSignState(const std::string& path)
{
    return getStaticCodeSignStateWithFlags(path, basicFlags);
}

std::int32_t getStaticStrictCodeSignState(const std::string& path)
{
    return getStaticCodeSignStateWithFlags(path, strictFlags);
}

std::optional<SigningProperty> getStaticCodeSignProperty(const std::string& path, std::string_view key)
{
    return codeSignProperty(getCodeRefWithPath(path).get(), key);
}

std::optional<std::string> getStaticCodeSignIdentifier(const std::string& path)
{
    return codeSignText(getCodeRefWithPath(path).get(), kSecCodeInfoIdentifier);
}

std::optional<std::string> getStaticCodeSignTeamIdentifier(const std::string& path)
{
    return codeSignText(getCodeRefWithPath(path).get(), kSecCodeInfoTeamIdentifier);
}

std::uint32_t getStaticCodeSignPlatformIdentifier(const std::string& path)
{
    return static_cast<std::uint32_t>(codeSignPlatformIdentifier(getCodeRefWithPath(path).get()));
}

std::string getStaticCodeSignCertInfo(const std::string& path)
{
    return codeSignCertInfo(getCodeRefWithPath(path).get());
}

std::unique_ptr<CodeObject> getCodeRefWithPID(std::int32_t pid)
{
    return ProgramCode::ofProcess(pid);
}

std::int32_t getDynamicCodeSignStateWithFlags(std::int32_t pid, std::uint32_t flags)
{
    return codeSignState(getCodeRefWithPID(pid).get(), flags);
}

std::int32_t getDynamicCodeSignState(std::int32_t pid)
{
    return getDynamicCodeSignStateWithFlags(pid, dynamicFlags);
}

std::optional<SigningProperty> getDynamicCodeSignProperty(std::int32_t pid, std::string_view key)
{
    return codeSignProperty(getCodeRefWithPID(pid).get(), key);
}

std::optional<std::string> getDynamicCodeSignIdentifier(std::int32_t pid)
{
    return codeSignText(getCodeRefWithPID(pid).get(), kSecCodeInfoIdentifier);
}

std::optional<std::string> getDynamicCodeSignTeamIdentifier(std::int32_t pid)
{
    return codeSignText(getCodeRefWithPID(pid).get(), kSecCodeInfoTeamIdentifier);
}

std::int32_t getDynamicCodeSignPlatformIdentifier(std::int32_t pid)
{
    return codeSignPlatformIdentifier(getCodeRefWithPID(pid).get());
}

std::string getDynamicCodeSignCertInfo(std::int32_t pid)
{
    return codeSignCertInfo(getCodeRefWithPID(pid).get());
}

} // namespace quorvane::codesign
