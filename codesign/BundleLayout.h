#pragma once

#include "codesign/CodeFile.h"

#include <optional>
#include <string>

namespace quorvane::codesign {

// The paths of the parts of a bundle: an application or similar with a folder Contents, a framework with
// versions, or a flat bundle. Always within `root`; the files may be missing. A value object.
struct BundleLayout {
    platform::FileRoot root;
    std::string executable;
    std::string infoPlist;
    std::string resourceSeal;
    std::string sealedFolder; // what the seal's paths are relative to
};

// The layout of the bundle `folder`; none for a folder that is not a bundle, or when its Info.plist cannot be
// trusted to name a file of the bundle.
std::optional<BundleLayout> bundleAtFolder(const std::string& folder, const platform::FileRoot& root = {});

// The layout of the bundle whose main executable is the file at `path`; none for any other file, including a
// helper beside a main executable.
std::optional<BundleLayout> bundleOfExecutable(
    const std::string& path, const CodeFile& file, const platform::FileRoot& root = {});

// The contents of a bundle's Info.plist; none when it is missing, unreadable or far too large.
std::optional<Bytes> readInfoPlist(const BundleLayout& layout);

} // namespace quorvane::codesign
