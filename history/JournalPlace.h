#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::history {

// Where programs keep their state: "quorvane" in $XDG_STATE_HOME, else in ~/.local/state. Empty when there is
// no home folder either.
std::string defaultStateFolder();

// Where the journal of one file is: names, owners, permissions and the marker. Nothing throws but what
// running out of memory throws. A value object; any thread.
class JournalPlace {
public:
    // The file is known by its real path; it need not exist.
    JournalPlace(std::string stateFolder, const std::string& watchedFile);

    const std::string& watchedFile() const { return m_watchedFile; } // real path
    std::string databaseFile() const { return m_base + ".db"; }
    std::string markerFile() const { return m_base + ".underway"; }
    // Rules that are out of force for a while; no business of the journal's.
    std::string asideFile() const { return m_base + ".aside.quorv"; }

    // Why no journal may be kept or read here, by whom folder and files belong to; none when one may.
    std::optional<std::string> refusal() const;

    bool hasDatabase() const;

    // Makes the folder when it is missing, for its owner only. Returns why that failed.
    std::optional<std::string> makeFolder() const;

    // Makes what is missing: the folder, for its owner only, and an empty data base file. Returns why that
    // failed.
    std::optional<std::string> prepare() const;

    // The marker says that a version may be under way, also when it cannot be told whether it is there.
    // Making it is durable.
    bool hasMarker() const;
    bool makeMarker() const;
    void removeMarker() const;

    // The marker has room for the digest of what a failed write has left, so that noting it takes no room on
    // a full disk. Empty when there is none.
    bool noteLeft(const std::string& digest) const;
    std::string left() const;

    // Tells one data base file of this name from another; none when there is no file.
    std::optional<std::uint64_t> databaseIdentity() const;

    // Gives the data base another name beside it, provided that it is still the one with this identity.
    // Returns the name; none when that fails.
    std::optional<std::string> setAside(std::uint64_t identity) const;

    // Bytes of the data base's files.
    std::uint64_t sizeOnDisk() const;

private:
    std::string m_folder;
    std::string m_watchedFile;
    std::string m_base; // path of all files of this journal, without their endings
};

} // namespace quorvane::history
