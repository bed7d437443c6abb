#include "workflow/ProgramBinding.h"

#include "codesign/ProtectedPath.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/ApplicationValidation.h"

namespace quorvane::workflow {

std::string decidingProgram(const rules::NullableText& process)
{
    std::string path = applicationPathForProcess(process);
    return path == "any" ? applicationParentPathForProcess(process).value_or(std::string()) : path;
}

ProgramBinding bindingOf(const std::string& program, ProgramFacts& facts)
{
    if (!facts.exists(program) || facts.isFolder(program))
        return {ProgramBinding::gone};
    if (auto team = facts.team(program); team && !team->empty())
        return {ProgramBinding::seen, *std::move(team)};
    if (facts.platformIdentifier(program) != 0)
        return {ProgramBinding::seen, std::string(platformMarker)};
    if (codesign::isSIP(program))
        return {};
    // A program that cannot be read may still have a team.
    if (!facts.isReadable(program))
        return {ProgramBinding::unreadable};
    auto digest = facts.sha256(program);
    return digest ? ProgramBinding{ProgramBinding::seen, *std::move(digest)}
                  : ProgramBinding{ProgramBinding::unreadable};
}

} // namespace quorvane::workflow
