#pragma once

#include "codesign/CodeFile.h"

#include <optional>
#include <string>

namespace quorvane::codesign {

// Where the parts of a bundle lie: an application and its kin with a folder Contents, a framework with
// versions, or a flat bundle. Paths within `root` only; the files may be missing.
struct BundleLayout {
    platform::FileRoot root;
    std::string executable;
    std::string infoPlist;
    std::string resourceSeal;
    std::string sealedFolder; // what the seal's paths are relative to
};

// The layout of the bundle that `folder` is; none for any other folder, or when its Info.plist cannot be
// trusted to name a file of the bundle.
std::optional<BundleLayout> bundleAtFolder(const std::string& folder, const platform::FileRoot& root = {});

// The layout of the bundle whose main executable is the very file at `path`; none for any other file, a
// helper beside a main executable included.
std::optional<BundleLayout> bundleOfExecutable(
    const std::string& path, const CodeFile& file, const platform::FileRoot& root = {});

// The whole of a bundle's Info.plist; none when it is missing, unreadable or far too large.
std::optional<Bytes> readInfoPlist(const BundleLayout& layout);

} // namespace quorvane::codesign
