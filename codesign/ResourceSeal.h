#pragma once

#include "codesign/BundleLayout.h"
#include "codesign/ByteView.h"

#include <chrono>
#include <functional>
#include <string>

namespace quorvane::codesign {

// The remaining budget for checking a bundle's resources, including everything nested in it. One thread at a
// time.
struct SealBudget {
    std::size_t entries = 500'000; // files and folders
    std::uint64_t bytes = 64ULL << 30U; // hashed
    std::chrono::nanoseconds comparing = std::chrono::seconds(1); // time for matching paths with rules
    std::size_t nestedCodes = 1000;
};

// Whether the code at `path` is the one identified by the hash `codeDirectoryHash` and is valid itself.
using NestedCodeCheck = std::function<bool(const std::string& path, ByteView codeDirectoryHash)>;

// True when every resource that the seal lists exists and is unchanged, and every file that its rules cover
// is listed.
//
// The bundle's folder is traversed without following links and never left, so that paths that lead out of it
// count as missing. False also for a seal that cannot be read and for a bundle that exceeds the budget.
bool resourcesMatchSeal(
    const BundleLayout& bundle, ByteView seal, const NestedCodeCheck& isIntactCode, SealBudget& budget);

} // namespace quorvane::codesign
