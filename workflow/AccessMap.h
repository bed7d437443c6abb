#pragma once

#include "rules/RuleRef.h"

#include <cstddef>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

// The folders that rules apply to, which show who may do what where. Pure; any thread that may read the
// rules.

namespace quorvane::workflow {

struct AccessCounts {
    std::size_t allow = 0;
    std::size_t deny = 0;
    std::size_t watch = 0;
};

struct MappedFolder {
    // What the rules apply to, in this order: every path; paths by their ending; folders, whose paths end
    // with "/"; and anything that is not a file.
    enum class Kind { everyPath, byEnding, folder, other };
    Kind kind;
    std::string path; // of a folder, or the beginning of a resource that is not a file; empty otherwise
    std::size_t depth = 0; // how many of the folders before it contain it
    AccessCounts counts; // of the rules on it or on its direct contents
    std::map<std::string, std::size_t> programs; // their processes, and how many rules each has
    std::vector<std::size_t> rules{}; // indexes in the rules that the map was made from
};

// The folders of the rules, in order, each after those that contain it. A prefix rule that ends with "/"
// applies to that folder, any other rule on a file to the folder of the file. Rules of an unknown class are
// skipped. Incomplete when `stop` is requested.
std::vector<MappedFolder> accessMap(
    const std::vector<rules::RuleRef>& rules, const std::stop_token& stop = {});

} // namespace quorvane::workflow
