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
// Whatever tells of a rule that something is missing or does not match asks here. A value object; any thread.
class RulesPlace {
public:
    static RulesPlace thisMachine();
    // The folder stands for the root of the file system; nothing is told of home folders. None when it is no
    // folder; `error` says why.
    static std::optional<RulesPlace> folder(const std::string& folder, std::error_code& error);
    // Nothing is looked up, and so nothing is missing.
    static RulesPlace nowhere();
    // This machine as `facts`, which must outlive the place, tell of it.
    static RulesPlace of(ProgramFacts& facts);

    // The same for rules from elsewhere: in them the home folder, "~/", stands for another person's.
    RulesPlace withoutHomes() const;

    bool isNowhere() const { return m_kind == Kind::nowhere; }

    // What is asked about programs; nowhere, nothing exists.
    ProgramFacts& facts() const { return *m_facts; }

    // Below which the files are; none when nothing is looked up.
    const std::optional<platform::FileRoot>& root() const { return m_root; }

    // True when nothing can be told of what stands at the path.
    bool isUnknown(std::string_view path) const;

    // True when nothing exists at the path, "~/" being the home folder of the user.
    bool isMissing(std::string_view path) const;

private:
    enum class Kind { machine, machineWithoutHomes, folder, nowhere };

    RulesPlace(Kind kind, std::shared_ptr<ProgramFacts> facts, std::optional<platform::FileRoot> root);

    Kind m_kind;
    std::shared_ptr<ProgramFacts> m_facts; // never null
    std::optional<platform::FileRoot> m_root;
};

} // namespace quorvane::workflow
