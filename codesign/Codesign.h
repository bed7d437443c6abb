#pragma once

#include "codesign/SignatureQueries.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::codesign {

// Queries about the code signature of a macOS program: a file or bundle by its path, or a running process by
// its id. See SignatureQueries.h for the meaning of the results.
//
// Stateless; any thread; failures are part of the results. Each call reads the program again: for several
// queries about one program, create its code object once and query that. No network is used, so a revoked
// certificate is never reported.

// Null when the path names neither a readable file nor a bundle with one.
std::unique_ptr<CodeObject> getCodeRefWithPath(const std::string& path);

std::int32_t getStaticCodeSignStateWithFlags(const std::string& path, std::uint32_t flags);
std::int32_t getStaticCodeSignState(const std::string& path); // reads no code pages
std::int32_t getStaticStrictCodeSignState(const std::string& path); // reads the whole program
std::optional<SigningProperty> getStaticCodeSignProperty(const std::string& path, std::string_view key);
std::optional<std::string> getStaticCodeSignIdentifier(const std::string& path);
std::optional<std::string> getStaticCodeSignTeamIdentifier(const std::string& path);
std::uint32_t getStaticCodeSignPlatformIdentifier(const std::string& path);
std::string getStaticCodeSignCertInfo(const std::string& path);

// Null when there is no such process, it ends during the call, or its program cannot be read. The object
// represents the file that the process was started from, even when its path is gone; pages and resources are
// not checked.
std::unique_ptr<CodeObject> getCodeRefWithPID(std::int32_t pid);

std::int32_t getDynamicCodeSignStateWithFlags(std::int32_t pid, std::uint32_t flags);
std::int32_t getDynamicCodeSignState(std::int32_t pid);
std::optional<SigningProperty> getDynamicCodeSignProperty(std::int32_t pid, std::string_view key);
std::optional<std::string> getDynamicCodeSignIdentifier(std::int32_t pid);
std::optional<std::string> getDynamicCodeSignTeamIdentifier(std::int32_t pid);
std::int32_t getDynamicCodeSignPlatformIdentifier(std::int32_t pid);
std::string getDynamicCodeSignCertInfo(std::int32_t pid);

} // namespace quorvane::codesign
