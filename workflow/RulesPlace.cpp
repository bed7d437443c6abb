#include "workflow/RulesPlace.h"

#include "platform/Account.h"

#include <utility>

namespace quorvane::workflow {

namespace {

bool isInHome(std::string_view path)
{
    return path.starts_with("~/");
}

// A non-owning pointer.
std::shared_ptr<ProgramFacts> referenceTo(ProgramFacts& facts)
{
    return {std::shared_ptr<void>(), &facts};
}

} // namespace

RulesPlace::RulesPlace(Kind kind, std::shared_ptr<ProgramFacts> facts, std::optional<platform::FileRoot> root)
    : m_kind(kind)
    , m_facts(std::move(facts))
    , m_root(std::move(root))
{
}

RulesPlace RulesPlace::thisMachine()
{
    return of(programFactsOnDisk());
}

RulesPlace RulesPlace::withoutHomes() const
{
    RulesPlace place = *this;
    if (m_kind == Kind::machine)
        place.m_kind = Kind::machineWithoutHomes;
    return place;
}

std::optional<RulesPlace> RulesPlace::folder(const std::string& folder, std::error_code& error)
{
    const auto root = platform::FileRoot::at(folder, error);
    return root ? std::optional(RulesPlace(Kind::folder, programFactsWithin(*root), root)) : std::nullopt;
}

RulesPlace RulesPlace::nowhere()
{
    return {Kind::nowhere, referenceTo(programFactsOfNothing()), std::nullopt};
}

RulesPlace RulesPlace::of(ProgramFacts& facts)
{
    return {Kind::machine, referenceTo(facts), platform::FileRoot()};
}

bool RulesPlace::isUnknown(std::string_view path) const
{
    return isNowhere() || (m_kind != Kind::machine && isInHome(path));
}

bool RulesPlace::isMissing(std::string_view path) const
{
    if (isUnknown(path))
        return false;
    std::string file(path);
    if (isInHome(path))
        file.replace(0, 1, platform::homeDirectory());
    return !m_facts->exists(file);
}

} // namespace quorvane::workflow
