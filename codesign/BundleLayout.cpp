#include "codesign/BundleLayout.h"

#include "codesign/InfoPlist.h"

#include <filesystem>

namespace quorvane::codesign {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t largestInfoPlist = 4U << 20U;

// Where a kind of bundle keeps its parts, and the name of its executable unless the Info.plist has one.
struct Places {
    fs::path base;
    fs::path infoPlist;
    fs::path executables;
    fs::path name;
};

std::optional<Places> placesOf(const fs::path& folder, const platform::FileRoot& root)
{
    const fs::path contents = folder / "Contents";
    if (root.isFolderAt(contents))
        return Places{contents, contents / "Info.plist", contents / "MacOS", folder.stem()};
    const fs::path current = folder / "Versions" / "Current";
    if (root.isFolderAt(current))
        return Places{current, current / "Resources" / "Info.plist", current, folder.stem()};
    if (folder.parent_path().filename() == "Versions")
        return Places{
            folder, folder / "Resources" / "Info.plist", folder, folder.parent_path().parent_path().stem()};
    if (root.isAnythingAt(folder / "Info.plist"))
        return Places{folder, folder / "Info.plist", folder, folder.stem()};
    return std::nullopt;
}

std::optional<std::string> executableName(const Places& places, const platform::FileRoot& root)
{
    const auto file = CodeFile::open(places.infoPlist.string(), root);
    if (!file)
        return places.name.string();
    const auto bytes = file->bytes(0, file->size(), largestInfoPlist);
    const auto info = bytes ? parseInfoPlist(*bytes) : std::nullopt;
    if (!info)
        return std::nullopt;
    return info->executable.value_or(places.name.string());
}

std::optional<BundleLayout> layoutOf(const fs::path& folder, const platform::FileRoot& root)
{
    const auto places = placesOf(folder, root);
    const auto name = places ? executableName(*places, root) : std::nullopt;
    if (!name || name->empty())
        return std::nullopt;
    return BundleLayout{root, (places->executables / *name).string(), places->infoPlist.string(),
        (places->base / "_CodeSignature" / "CodeResources").string(), places->base.string()};
}

} // namespace

std::optional<BundleLayout> bundleAtFolder(const std::string& folder, const platform::FileRoot& root)
{
    const auto path = root.resolved(folder);
    return path && root.isFolderAt(*path) ? layoutOf(*path, root) : std::nullopt;
}

std::optional<BundleLayout> bundleOfExecutable(
    const std::string& path, const CodeFile& file, const platform::FileRoot& root)
{
    fs::path folder = fs::path(root.resolved(path).value_or("")).parent_path();
    if (folder.empty())
        return std::nullopt;
    if (folder.filename() == "MacOS" && folder.parent_path().filename() == "Contents")
        folder = folder.parent_path().parent_path();
    auto layout = layoutOf(folder, root);
    const auto executable = layout ? CodeFile::open(layout->executable, root) : std::nullopt;
    return executable && executable->isSameFileAs(file) ? layout : std::nullopt;
}

std::optional<Bytes> readInfoPlist(const BundleLayout& layout)
{
    const auto file = CodeFile::open(layout.infoPlist, layout.root);
    return file ? file->bytes(0, file->size(), largestInfoPlist) : std::nullopt;
}

} // namespace quorvane::codesign
