#pragma once

#include "platform/FileIdentity.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::history {

// Where programs keep their state: "quorvane" in $XDG_STATE_HOME, else in ~/.local/state. Empty when there is
// no home folder either.
std::string defaultStateFolder();

// The files of the journal of one file: names, owners, permissions and the marker. Throws only
// std::bad_alloc. A value object; any thread.
class JournalPlace {
public:
    // The file is identified by its real path; it need not exist.
    JournalPlace(std::string stateFolder, const std::string& watchedFile);

    const std::string& watchedFile() const { return m_watchedFile; } // real path
    std::string databaseFile() const { return m_base + ".db"; }
    std::string markerFile() const { return m_base + ".underway"; }
    // Rules that are temporarily disabled; not part of the journal.
    std::string asideFile() const { return m_base + ".aside.quorv"; }

    // Why the owners of folder and files forbid using a journal here; none when they do not.
    std::optional<std::string> refusal() const;

    bool hasDatabase() const;

    // Creates the folder when it is missing, for its owner only. Returns why that failed; none on success.
    std::optional<std::string> makeFolder() const;

    // Creates what is missing: the folder, for its owner only, and an empty database file. Returns why that
    // failed; none on success.
    std::optional<std::string> prepare() const;

    // The marker says that a version may be under way; hasMarker() is also true when that cannot be
    // determined. Its creation is durable.
    bool hasMarker() const;
    bool makeMarker() const;
    void removeMarker() const;

    // The marker has space reserved for the digest of what a failed write has left, so that noting it works
    // on a full disk. Empty when there is none.
    bool noteLeft(const std::string& digest) const;
    std::string left() const;

    // Which file is at the path of the database; also missing when that cannot be determined.
    platform::FileIdentity databaseIdentity() const;

    // Renames the database, provided that it is still this file, whatever its contents. Returns the new name;
    // none when that fails.
    std::optional<std::string> setAside(const platform::FileIdentity& database) const;

    // The size of the database's files in bytes.
    std::uint64_t sizeOnDisk() const;

private:
    std::string m_folder;
    std::string m_watchedFile;
    std::string m_base; // path of all files of this journal, without their suffixes
};

} // namespace quorvane::history
