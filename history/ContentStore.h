#pragma once

#include "history/Database.h"
#include "history/DigestedBytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::history {

// The packed contents of versions, in the table `content` of a journal.
//
// Contents are packed against those of the version before, which makes a chain that begins with contents that
// stand alone. To read one, all before it in its chain are unpacked, so a chain ends after 50 contents, or
// sooner where they are long. A number in `base` is always lower than the one that it belongs to.
//
// Operations throw DatabaseError and std::bad_alloc. They are to be called inside a transaction.
class ContentStore {
public:
    explicit ContentStore(Database& database)
        : m_database(database)
    {
    }

    static void createTable(Database& database);

    // Keeps `bytes`, packed against the contents `base` where these are sound; with `base` itself when it
    // holds the same bytes already. `baseBytes` may say what `base` holds, to save unpacking it; that is
    // checked. Returns the number of the contents.
    std::int64_t keep(const DigestedBytes& bytes, std::optional<std::int64_t> base,
        const std::optional<DigestedBytes>& baseBytes);

    // The contents `number`; none when they, or others in their chain, are damaged.
    std::optional<std::string> bytes(std::int64_t number);

    // Unpacks the one frame of `number`; `prefix`: what it was packed against. None when it is damaged.
    std::optional<std::string> unpack(std::int64_t number, std::string_view prefix);

    // Whether `number` holds these bytes, by their digest.
    bool holds(std::int64_t number, const DigestedBytes& bytes);

    // Packs the contents `number`, which are `bytes`, against others.
    void repack(std::int64_t number, std::string_view bytes, std::optional<std::int64_t> base,
        std::string_view baseBytes);

    // Removes contents that nothing refers to.
    void remove(std::int64_t number);

    // Remembers that contents are damaged: those of `number`'s chain with which unpacking fails.
    void markDamaged(std::int64_t number);

    // Bytes of all frames.
    std::uint64_t packedSize();

    // The oldest contents that can be kept with all later ones within `limit` bytes, allowing for what the
    // first ones take once they stand alone. A number beyond all contents when none can.
    std::int64_t firstWithin(std::uint64_t limit);

    // The contents that are damaged, or packed against such, as far as that was found.
    std::set<std::int64_t> unreadable();

private:
    struct Link {
        std::int64_t number = 0;
        std::uint64_t size = 0; // bytes, unpacked
    };
    // From the contents that stand alone to `number`. Empty when a link is missing or marked as damaged.
    std::vector<Link> chainTo(std::int64_t number);
    bool isSound(const std::vector<Link>& chain);
    std::int64_t insert(
        const DigestedBytes& bytes, std::optional<std::int64_t> base, std::string_view prefix);
    std::optional<std::int64_t> firstDamaged(const std::vector<Link>& chain);

    Database& m_database;
};

} // namespace quorvane::history
