#pragma once

#include "rules/RuleRef.h"

#include <cstddef>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

// The folders that rules speak of: what a person looks at to see who may do what where. Pure; any
// thread.

namespace quorvane::workflow {

struct AccessCounts {
    std::size_t allow = 0;
    std::size_t deny = 0;
    std::size_t watch = 0;
};

struct MappedFolder {
    // What the rules are about, in this order: every path; paths by their ending; folders, whose paths end
    // with "/"; and whatever is no file.
    enum class Kind { everyPath, byEnding, folder, other };
    Kind kind;
    std::string path; // of a folder, or the beginning of what is no file; empty otherwise
    std::size_t depth = 0; // how many of the folders before it hold it
    AccessCounts counts; // of the rules on it or what is directly in it
    std::map<std::string, std::size_t> programs; // their processes, and how many rules each has
    std::vector<std::size_t> rules{}; // where they stand in what the map was made of
};

// The folders of the rules, in order, each behind those that hold it. A prefix rule that ends with "/" is
// about that folder, any other rule on a file about the folder that the file is in. Rules of an unknown class
// are left out.
// What is left to do when `stop` comes is left undone.
std::vector<MappedFolder> accessMap(
    const std::vector<rules::RuleRef>& rules, const std::stop_token& stop = {});

} // namespace quorvane::workflow
