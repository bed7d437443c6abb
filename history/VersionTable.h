#pragma once

#include "history/Database.h"
#include "history/JournalVersion.h"
#include "history/Thinning.h"

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace quorvane::history {

// The versions of a journal, in its table `version`. Operations throw DatabaseError; call them inside a
// transaction. One thread at a time.
class VersionTable {
public:
    explicit VersionTable(Database& database)
        : m_database(database)
    {
    }

    static void createTable(Database& database);

    // The contents that a version refers to.
    struct Contents {
        std::int64_t bytes = 0;
        std::optional<std::int64_t> meant;
    };

    // Returns the new version's number.
    std::int64_t insert(const NewVersion& version, VersionState state, std::int64_t time,
        std::optional<std::int64_t> before, const Contents& contents);

    // All versions, oldest first. `unreadable`: the contents that cannot be read.
    std::vector<JournalVersion> versions(const std::set<std::int64_t>& unreadable);

    struct Newest {
        std::int64_t version = 0;
        std::int64_t bytes = 0; // its contents
    };
    std::optional<Newest> newest();
    std::optional<Contents> contentsOf(std::int64_t number);
    bool isAnyUnderWay();
    std::vector<DatedVersion> dates(); // oldest first

    // The oldest version whose contents are `content` or later ones; the newest of all when there is none.
    std::int64_t firstWithContentsFrom(std::int64_t content);

    // Also sets older versions that are under way to recovered. False when there is no such version.
    bool setState(std::int64_t number, VersionState state);

    // Removes a version under way and links its successor to its predecessor. False when there is none.
    bool abandon(std::int64_t number);

    // Remove versions, but never the newest or one under way.
    void forgetBefore(std::int64_t number);
    void forget(const std::vector<std::int64_t>& numbers);

private:
    Database& m_database;
};

} // namespace quorvane::history
