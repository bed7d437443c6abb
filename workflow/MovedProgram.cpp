#include "workflow/MovedProgram.h"

#include "platform/Account.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/ApplicationValidation.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <optional>
#include <set>
#include <utility>

#include <re2/re2.h>

namespace quorvane::workflow {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostNames = 5000; // checked in one search
constexpr std::size_t mostCandidates = 20;
constexpr std::size_t mostFilesRead = 40;

// A name without its numbers: equal for all versions of the same thing.
std::string withoutVersion(std::string name)
{
    static const RE2 version(R"([ ._-]*[0-9]+(?:[._-][0-9]+)*)");
    RE2::GlobalReplace(&name, version, "");
    return name;
}

// Newer ones first.
bool isLaterVersion(const ProgramCandidate& a, const ProgramCandidate& b)
{
    return a.reason != b.reason ? a.reason < b.reason : strverscmp(a.path.c_str(), b.path.c_str()) > 0;
}

bool meets(const std::string& constraint, const std::string& program, ProgramFacts& facts)
{
    switch (constraintKind(constraint)) {
    case ConstraintKind::none:
        return false;
    case ConstraintKind::sha1:
        return facts.sha1(program) == constraint;
    case ConstraintKind::sha256:
        return facts.sha256(program) == constraint;
    case ConstraintKind::team:
        return facts.team(program) == constraint;
    }
    return false;
}

// One search and its remaining budget.
class Search {
public:
    Search(const std::string& path, const std::vector<std::string>& constraints,
        const platform::FileRoot& root, ProgramFacts& facts, const std::stop_token& stop)
        : m_path(path)
        , m_constraints(constraints)
        , m_root(root)
        , m_facts(facts)
        , m_stop(stop)
    {
    }

    std::vector<ProgramCandidate> run()
    {
        const fs::path path(m_path);
        const std::vector<fs::path> parts(path.begin(), path.end());
        lookForVersions("/", parts, 1);
        lookForSameName(path);
        std::sort(m_found.begin(), m_found.end(), isLaterVersion);
        if (m_found.size() > mostCandidates)
            m_found.resize(mostCandidates);
        return std::move(m_found);
    }

private:
    // Continues in `folder` with the part `next` of the path, and with every name beside it that differs only
    // in its version.
    void lookForVersions(const fs::path& folder, const std::vector<fs::path>& parts, std::size_t next)
    {
        if (next == parts.size())
            return add(folder.string(), ProgramCandidate::otherVersion);
        const std::string part = parts[next].string();
        std::set<std::string> names;
        if (m_facts.exists((folder / part).string()))
            names.insert(part);
        const std::string wanted = withoutVersion(part);
        if (wanted != part)
            forEachName(folder, [&](const std::string& name) {
                if (withoutVersion(name) == wanted)
                    names.insert(name);
            });
        for (const std::string& name : names)
            lookForVersions(folder / name, parts, next + 1);
    }

    // Searches for the program, or its bundle, one folder up or down, and in the usual places.
    void lookForSameName(const fs::path& path)
    {
        const fs::path bundle = applicationBundlePathForPath(rules::NullableText(m_path));
        const fs::path tail = path.lexically_relative(bundle.parent_path());
        std::vector<fs::path> folders{bundle.parent_path(), bundle.parent_path().parent_path(),
            "/Applications", "/opt", "/usr/local/bin", "/usr/bin"};
        if (m_root.isThisMachines()) // homes elsewhere are unknown
            folders.push_back(fs::path(platform::homeDirectory()) / "Applications");
        for (const fs::path& folder : folders) {
            addIfBound((folder / tail).string());
            forEachName(
                folder, [&](const std::string& name) { addIfBound((folder / name / tail).string()); });
        }
    }

    template <class Use> void forEachName(const fs::path& folder, const Use& use)
    {
        m_root.forEachName(folder.string(), [&](const std::string& name) {
            const bool goesOn = m_names < mostNames && !m_stop.stop_requested();
            if (goesOn) {
                ++m_names;
                use(name);
            }
            return goesOn;
        });
    }

    bool isProgram(const std::string& path)
    {
        return path != m_path && m_facts.exists(path) && !m_facts.isFolder(path);
    }

    bool isBound(const std::string& path)
    {
        return m_filesRead++ < mostFilesRead && !m_stop.stop_requested()
            && std::any_of(m_constraints.begin(), m_constraints.end(),
                [&](const std::string& constraint) { return meets(constraint, path, m_facts); });
    }

    void add(const std::string& path, ProgramCandidate::Reason reason)
    {
        if (isProgram(path) && m_known.insert(path).second)
            m_found.push_back({path, isBound(path) ? ProgramCandidate::sameConstraint : reason});
    }

    void addIfBound(const std::string& path)
    {
        if (isProgram(path) && m_known.insert(path).second && isBound(path))
            m_found.push_back({path, ProgramCandidate::sameConstraint});
    }

    const std::string& m_path;
    const std::vector<std::string>& m_constraints;
    const platform::FileRoot& m_root;
    ProgramFacts& m_facts;
    const std::stop_token& m_stop;
    std::size_t m_names = 0;
    std::size_t m_filesRead = 0;
    std::set<std::string> m_known;
    std::vector<ProgramCandidate> m_found;
};

} // namespace

std::string_view candidateReasonWords(ProgramCandidate::Reason reason)
{
    return reason == ProgramCandidate::sameConstraint ? "has what the rules are bound to" : "another version";
}

std::vector<ProgramCandidate> candidatesForMoved(const std::string& path,
    const std::vector<std::string>& constraints, const RulesPlace& place, const std::stop_token& stop)
{
    constexpr std::size_t longestPath = 4096;
    if (!place.root() || !path.starts_with('/') || path.size() > longestPath)
        return {};
    return Search(path, constraints, *place.root(), place.facts(), stop).run();
}

std::string namedProgram(std::string_view process)
{
    if (process.starts_with(rules::ProcessForm::anyAncestor))
        return std::string(process.substr(rules::ProcessForm::anyAncestor.size()));
    const rules::NullableText text{std::string(process)};
    std::string program = applicationPathForProcess(text);
    if (program == rules::ProcessForm::any || program.starts_with(rules::ProcessForm::anyVia))
        program = applicationParentPathForProcess(text).value_or(std::string());
    return program == rules::ProcessForm::any ? std::string() : program;
}

} // namespace quorvane::workflow
