#pragma once

#include "platform/FileRoot.h"
#include "workflow/ProgramFacts.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace quorvane::workflow {

// Where the programs and paths that rules name are looked up: on this machine, on a mounted volume of the
// machine that the rules are for, or nowhere.
//
// All checks of whether something named by a rule is missing or does not match use this class. A value
// object; any thread.
class RulesPlace {
public:
    static RulesPlace thisMachine();
    // The folder serves as the root of the file system; home folders are unknown. None when it is not a
    // folder; `error` says why.
    static std::optional<RulesPlace> folder(const std::string& folder, std::error_code& error);
    // Nothing is looked up, and so nothing is missing.
    static RulesPlace nowhere();
    // This machine with the given facts, which must outlive the place.
    static RulesPlace of(ProgramFacts& facts);

    // The same for rules from elsewhere, in which "~/" is another user's home folder.
    RulesPlace withoutHomes() const;

    bool isNowhere() const { return m_kind == Kind::nowhere; }

    // The facts about programs; for nowhere(), nothing exists.
    ProgramFacts& facts() const { return *m_facts; }

    // The root of the files; none when nothing is looked up.
    const std::optional<platform::FileRoot>& root() const { return m_root; }

    // True when it cannot be determined whether the path exists.
    bool isUnknown(std::string_view path) const;

    // True when nothing exists at the path, in which "~/" is the user's home folder.
    bool isMissing(std::string_view path) const;

private:
    enum class Kind { machine, machineWithoutHomes, folder, nowhere };

    RulesPlace(Kind kind, std::shared_ptr<ProgramFacts> facts, std::optional<platform::FileRoot> root);

    Kind m_kind;
    std::shared_ptr<ProgramFacts> m_facts; // never null
    std::optional<platform::FileRoot> m_root;
};

} // namespace quorvane::workflow
