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
// Contents are delta-compressed against those of the version before, which makes a chain that begins with
// self-contained contents. Reading one means unpacking all before it in its chain, so a chain ends after 50
// contents, or sooner if they are long. A number in `base` is always lower than the one it belongs to.
//
// Operations throw DatabaseError and std::bad_alloc. Call them inside a transaction. One thread at a time.
class ContentStore {
public:
    explicit ContentStore(Database& database)
        : m_database(database)
    {
    }

    static void createTable(Database& database);

    // Stores `bytes`, packed against the contents `base` if these are sound, and returns their number; `base`
    // itself when it holds the same bytes. `baseBytes` may pass the bytes of `base`, to save unpacking it;
    // that is checked.
    std::int64_t keep(const DigestedBytes& bytes, std::optional<std::int64_t> base,
        const std::optional<DigestedBytes>& baseBytes);

    // The contents `number`; none when they, or others in their chain, are damaged.
    std::optional<std::string> bytes(std::int64_t number);

    // Unpacks the one frame of `number`; `prefix`: the bytes that it was packed against. None when it is
    // damaged.
    std::optional<std::string> unpack(std::int64_t number, std::string_view prefix);

    // Whether `number` holds these bytes, by their digest.
    bool holds(std::int64_t number, const DigestedBytes& bytes);

    // Packs the contents `number`, which are `bytes`, against other contents.
    void repack(std::int64_t number, std::string_view bytes, std::optional<std::int64_t> base,
        std::string_view baseBytes);

    // Removes contents that nothing refers to.
    void remove(std::int64_t number);

    // Records damage: marks the contents in `number`'s chain at which unpacking fails.
    void markDamaged(std::int64_t number);

    // The size of all frames in bytes.
    std::uint64_t packedSize();

    // The oldest contents that can be kept with all later ones within `limit` bytes, allowing for the size of
    // the first ones once they are self-contained. A number beyond all contents when none can.
    std::int64_t firstWithin(std::uint64_t limit);

    // The contents known to be damaged or packed against damaged ones.
    std::set<std::int64_t> unreadable();

private:
    struct Link {
        std::int64_t number = 0;
        std::uint64_t size = 0; // bytes, unpacked
    };
    // From the self-contained contents to `number`. Empty when a link is missing or marked as damaged.
    std::vector<Link> chainTo(std::int64_t number);
    bool isSound(const std::vector<Link>& chain);
    std::int64_t insert(
        const DigestedBytes& bytes, std::optional<std::int64_t> base, std::string_view prefix);
    std::optional<std::int64_t> firstDamaged(const std::vector<Link>& chain);

    Database& m_database;
};

} // namespace quorvane::history
