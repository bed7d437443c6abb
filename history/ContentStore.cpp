#include "history/ContentStore.h"

#include "history/ContentDigest.h"
#include "history/VersionFrame.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace quorvane::history {

namespace {

constexpr std::size_t longestChain = 50; // contents
constexpr std::uint64_t largestChain = std::uint64_t{2} << 30U; // bytes to unpack

} // namespace

void ContentStore::createTable(Database& database)
{
    database.execute("CREATE TABLE content ("
                     " number INTEGER PRIMARY KEY AUTOINCREMENT,"
                     " base INTEGER," // the contents that the frame was packed against; null: self-contained
                     " size INTEGER NOT NULL," // bytes, unpacked
                     " digest TEXT NOT NULL," // of the bytes, unpacked
                     " frame BLOB NOT NULL,"
                     " frameDigest TEXT NOT NULL,"
                     " damaged INTEGER NOT NULL DEFAULT 0)");
}

std::int64_t ContentStore::keep(const DigestedBytes& bytes, std::optional<std::int64_t> base,
    const std::optional<DigestedBytes>& baseBytes)
{
    std::vector<Link> chain;
    if (base)
        chain = chainTo(*base);
    const bool isUsable = !chain.empty() && isSound(chain);
    if (isUsable && holds(*base, bytes))
        return *base;
    const std::uint64_t toUnpack
        = std::accumulate(chain.begin(), chain.end(), std::uint64_t{bytes.bytes().size()},
            [](std::uint64_t sum, const Link& link) { return sum + link.size; });
    if (!isUsable || chain.size() >= longestChain || toUnpack > largestChain)
        return insert(bytes, std::nullopt, {});
    if (baseBytes && holds(*base, *baseBytes))
        return insert(bytes, base, baseBytes->bytes());
    const auto prefix = this->bytes(*base);
    return prefix ? insert(bytes, base, *prefix) : insert(bytes, std::nullopt, {});
}

std::int64_t ContentStore::insert(
    const DigestedBytes& bytes, std::optional<std::int64_t> base, std::string_view prefix)
{
    const std::string frame = packedFrame(bytes.bytes(), prefix);
    Statement(m_database,
        "INSERT INTO content (base, size, digest, frame, frameDigest) VALUES (?, ?, ?, ?, ?)", base,
        std::uint64_t{bytes.bytes().size()}, bytes.digest(), Blob{frame}, contentDigest(frame))
        .run();
    return m_database.lastInserted();
}

std::vector<ContentStore::Link> ContentStore::chainTo(std::int64_t number)
{
    std::vector<Link> chain;
    std::optional<std::int64_t> next = number;
    while (next) {
        Statement row(m_database, "SELECT base, size FROM content WHERE number = ? AND NOT damaged", *next);
        if (!row.step())
            return {};
        chain.push_back({*next, row.count(1)});
        const auto base = row.optionalInteger(0);
        if (base && *base >= *next)
            return {}; // perhaps a cycle
        next = base;
    }
    std::reverse(chain.begin(), chain.end());
    return chain;
}

// Checks the packed bytes only, which is fast. New contents must not be packed against unreadable ones.
bool ContentStore::isSound(const std::vector<Link>& chain)
{
    return std::all_of(chain.begin(), chain.end(), [this](const Link& link) {
        Statement row(m_database, "SELECT frame, frameDigest FROM content WHERE number = ?", link.number);
        return row.step() && contentDigest(row.blob(0)) == row.text(1);
    });
}

std::optional<std::string> ContentStore::unpack(std::int64_t number, std::string_view prefix)
{
    Statement row(m_database, "SELECT frame, frameDigest, size FROM content WHERE number = ?", number);
    if (!row.step() || contentDigest(row.blob(0)) != row.text(1))
        return std::nullopt;
    return unpackedFrame(row.blob(0), prefix, row.count(2));
}

bool ContentStore::holds(std::int64_t number, const DigestedBytes& bytes)
{
    Statement held(m_database, "SELECT 1 FROM content WHERE number = ? AND size = ? AND digest = ?", number,
        std::uint64_t{bytes.bytes().size()}, bytes.digest());
    return held.step();
}

void ContentStore::repack(
    std::int64_t number, std::string_view bytes, std::optional<std::int64_t> base, std::string_view baseBytes)
{
    const std::string frame = packedFrame(bytes, baseBytes);
    Statement(m_database, "UPDATE content SET base = ?, frame = ?, frameDigest = ? WHERE number = ?", base,
        Blob{frame}, contentDigest(frame), number)
        .run();
}

void ContentStore::remove(std::int64_t number)
{
    Statement(m_database, "DELETE FROM content WHERE number = ?", number).run();
}

std::optional<std::string> ContentStore::bytes(std::int64_t number)
{
    const std::vector<Link> chain = chainTo(number);
    std::optional<std::string> contents;
    for (const Link& link : chain) {
        contents = unpack(link.number, contents ? *contents : std::string_view());
        if (!contents)
            return std::nullopt;
    }
    return contents && holds(number, *contents) ? std::move(contents) : std::nullopt;
}

std::optional<std::int64_t> ContentStore::firstDamaged(const std::vector<Link>& chain)
{
    const auto found
        = std::find_if(chain.begin(), chain.end(), [this](const Link& link) { return !isSound({link}); });
    return found == chain.end() ? std::nullopt : std::optional(found->number);
}

void ContentStore::markDamaged(std::int64_t number)
{
    const auto culprit = firstDamaged(chainTo(number));
    Statement(m_database, "UPDATE content SET damaged = 1 WHERE number = ?", culprit.value_or(number)).run();
}

std::uint64_t ContentStore::packedSize()
{
    Statement row(m_database, "SELECT coalesce(sum(length(frame)), 0) FROM content");
    row.step();
    return row.count(0);
}

// Self-contained, contents take about as much as those at the start of their chain.
std::int64_t ContentStore::firstWithin(std::uint64_t limit)
{
    std::uint64_t size = packedSize();
    std::uint64_t alone = 0;
    Statement rows(m_database, "SELECT number, base, length(frame) FROM content ORDER BY number");
    while (rows.step()) {
        const std::uint64_t packed = rows.count(2);
        if (rows.isNull(1))
            alone = packed;
        if (size - packed + std::max(packed, alone) <= limit)
            return rows.integer(0);
        size -= packed;
    }
    return std::numeric_limits<std::int64_t>::max();
}

std::set<std::int64_t> ContentStore::unreadable()
{
    std::set<std::int64_t> unreadable;
    std::set<std::int64_t> readable;
    Statement rows(m_database, "SELECT number, base, damaged FROM content ORDER BY number");
    while (rows.step()) {
        const auto base = rows.optionalInteger(1);
        const bool isDamaged = rows.integer(2) != 0 || (base && readable.count(*base) == 0);
        (isDamaged ? unreadable : readable).insert(rows.integer(0));
    }
    return unreadable;
}

} // namespace quorvane::history
