#pragma once

#include "workflow/ProgramFacts.h"

#include <map>
#include <optional>
#include <set>
#include <string>

namespace quorvane::test {

inline const std::string sha1OfNothing = "da39a3ee5e6b4b0d3255bfef95601890afd80709";
inline const std::string sha256OfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

// Configured facts; counts the queries.
class FakeProgramFacts : public workflow::ProgramFacts {
public:
    bool exists(const std::string& path) override
    {
        ++questions;
        return existing.contains(path) || folders.contains(path);
    }
    bool isFolder(const std::string& path) override
    {
        ++questions;
        return folders.contains(path);
    }
    std::optional<std::string> sha1(const std::string& path) override { return answer(sha1s, path); }
    std::optional<std::string> sha256(const std::string& path) override { return answer(sha256s, path); }
    bool isReadable(const std::string& path) override
    {
        ++questions;
        return !unreadable.contains(path);
    }
    std::optional<std::string> team(const std::string& path) override { return answer(teams, path); }
    workflow::TeamProof teamProof(const std::string& path) override
    {
        return answer(proofs, path).value_or(workflow::TeamProof::proven);
    }
    std::uint32_t platformIdentifier(const std::string& path) override
    {
        return answer(platformIdentifiers, path).value_or(0);
    }

    std::set<std::string> existing; // files
    std::set<std::string> folders;
    std::set<std::string> unreadable;
    std::map<std::string, std::string> sha1s;
    std::map<std::string, std::string> sha256s;
    std::map<std::string, std::string> teams;
    std::map<std::string, workflow::TeamProof> proofs;
    std::map<std::string, std::uint32_t> platformIdentifiers;
    int questions = 0;

private:
    template <class Answer>
    std::optional<Answer> answer(const std::map<std::string, Answer>& answers, const std::string& path)
    {
        ++questions;
        const auto found = answers.find(path);
        return found == answers.end() ? std::nullopt : std::optional(found->second);
    }
};

} // namespace quorvane::test
