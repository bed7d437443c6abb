#include "platform/Mounts.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <utility>

namespace quorvane::platform {

namespace {

struct MountLine {
    Mount mount;
    std::string device; // "8:1"
};

// Blanks and the like are escaped as "\040".
std::string unescaped(std::string_view text)
{
    const auto isOctal = [](char digit) { return digit >= '0' && digit <= '7'; };
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view digits = text.substr(at + 1, 3);
        if (text[at] != '\\' || digits.size() < 3 || !std::all_of(digits.begin(), digits.end(), isOctal)) {
            plain += text[at];
            continue;
        }
        plain += static_cast<char>((digits[0] - '0') << 6 | (digits[1] - '0') << 3 | (digits[2] - '0'));
        at += digits.size();
    }
    return plain;
}

// Number, parent, device, root, folder, options, optional fields, "-", type, and more.
std::optional<MountLine> mountOf(const std::string& line)
{
    std::istringstream words(line);
    const std::vector<std::string> fields{std::istream_iterator<std::string>(words), {}};
    constexpr std::size_t device = 2;
    constexpr std::size_t folder = 4;
    constexpr std::size_t firstOptional = 6;
    if (fields.size() <= firstOptional)
        return std::nullopt;
    const auto dash = std::find(fields.begin() + firstOptional, fields.end(), "-");
    if (dash == fields.end() || dash + 1 == fields.end())
        return std::nullopt;
    return MountLine{{unescaped(fields[folder]), *(dash + 1)}, fields[device]};
}

std::vector<MountLine> linesIn(std::string_view mountInfo)
{
    std::vector<MountLine> lines;
    std::istringstream text{std::string(mountInfo)};
    for (std::string line; std::getline(text, line);) {
        if (auto mount = mountOf(line))
            lines.push_back(*std::move(mount));
    }
    return lines;
}

// Only the whole disk has a removable flag, not its partitions.
bool isOnRemovableMedium(const std::string& device)
{
    for (const char* file : {"/removable", "/../removable"}) {
        std::ifstream flag("/sys/dev/block/" + device + file);
        if (flag.get() == '1')
            return true;
    }
    return false;
}

} // namespace

std::vector<Mount> mountsOfThisMachine()
{
    // Files of /proc report size 0, so it is read to its end.
    std::ifstream file("/proc/self/mountinfo");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::vector<Mount> mounts;
    for (MountLine& line : linesIn(text)) {
        line.mount.isRemovable = isOnRemovableMedium(line.device);
        mounts.push_back(std::move(line.mount));
    }
    return mounts;
}

std::vector<Mount> mountsIn(std::string_view mountInfo)
{
    std::vector<Mount> mounts;
    for (MountLine& line : linesIn(mountInfo))
        mounts.push_back(std::move(line.mount));
    return mounts;
}

bool isNetworkMount(const Mount& mount)
{
    static constexpr std::array<std::string_view, 15> types{"nfs", "nfs4", "cifs", "smb3", "smbfs", "ncpfs",
        "afs", "ceph", "9p", "coda", "glusterfs", "lustre", "autofs", "fuse.sshfs", "fuse.davfs"};
    return std::find(types.begin(), types.end(), mount.type) != types.end();
}

} // namespace quorvane::platform
