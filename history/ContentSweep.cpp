#include "history/ContentSweep.h"

#include "history/ContentStore.h"
#include "history/Database.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace quorvane::history {

namespace {

struct Content {
    std::optional<std::int64_t> base; // the contents it is packed against, always earlier ones
    bool isTorn = false; // its base is missing
    std::int64_t chain = 0; // the first contents of its chain
    std::uint64_t size = 0; // bytes, unpacked
    bool isUsed = false; // a version refers to it
    bool isNeeded = false; // contents that stay are packed against it, directly or not
    bool isRepacked = false;
    bool isUnpacked = false; // for itself, or on the way to contents that are repacked
    std::size_t uses = 0; // how often its bytes are still needed
};

using Contents = std::map<std::int64_t, Content>;

struct ChainCost {
    std::size_t contents = 0;
    std::size_t unused = 0;
    std::uint64_t toUnpack = 0; // bytes
};

Contents allContents(Database& database)
{
    Contents contents;
    Statement rows(database,
        "SELECT number, base, size, number IN (SELECT bytes FROM version UNION"
        " SELECT meant FROM version WHERE meant IS NOT NULL) FROM content ORDER BY number");
    while (rows.step()) {
        Content content;
        const auto number = rows.optionalInteger(1);
        const auto base = number ? contents.find(*number) : contents.end();
        content.isTorn = number && base == contents.end();
        content.base = content.isTorn ? std::nullopt : number;
        content.chain = base == contents.end() ? rows.integer(0) : base->second.chain;
        content.size = rows.count(2);
        content.isUsed = rows.integer(3) != 0;
        contents.emplace(rows.integer(0), content);
    }
    return contents;
}

Content* baseOf(Contents& contents, const Content& content)
{
    return content.base ? &contents.find(*content.base)->second : nullptr;
}

// The nearest earlier contents that stay.
std::optional<std::int64_t> keptBaseOf(Contents& contents, const Content& content)
{
    std::optional<std::int64_t> number = content.base;
    for (const Content* base = baseOf(contents, content); base != nullptr && !base->isUsed;
         base = baseOf(contents, *base))
        number = base->base;
    return number;
}

// From the newest to the oldest, since later contents decide what happens to their base.
void plan(Contents& contents)
{
    for (auto entry = contents.rbegin(); entry != contents.rend(); ++entry) {
        Content& content = entry->second;
        Content* base = baseOf(contents, content);
        if (base == nullptr || (!content.isUsed && !content.isNeeded))
            continue;
        base->isNeeded = true;
        content.isRepacked = content.isUsed && !base->isUsed;
        content.isUnpacked = content.isUnpacked || content.isRepacked;
        if (content.isUnpacked) {
            base->isUnpacked = true;
            ++base->uses;
        }
    }
    for (auto& [number, content] : contents)
        if (const auto kept = content.isRepacked ? keptBaseOf(contents, content) : std::nullopt)
            ++contents[*kept].uses;
}

// The bytes of unpacked contents, each kept as long as it is still needed.
class UnpackedBytes {
public:
    UnpackedBytes(Contents& contents, ContentStore& store)
        : m_contents(contents)
        , m_store(store)
    {
    }

    // None when they are damaged.
    std::optional<std::string> unpack(std::int64_t number, const Content& content)
    {
        if (!content.base)
            return content.isTorn ? std::nullopt : m_store.unpack(number, {});
        const auto prefix = m_bytes.find(*content.base);
        auto bytes = prefix == m_bytes.end() ? std::nullopt : m_store.unpack(number, prefix->second);
        release(*content.base);
        return bytes;
    }

    const std::string& of(std::int64_t number) { return m_bytes[number]; }

    void keep(std::int64_t number, std::string bytes)
    {
        if (m_contents[number].uses != 0)
            m_bytes[number] = std::move(bytes);
    }

    void release(std::int64_t number)
    {
        if (--m_contents[number].uses == 0)
            m_bytes.erase(number);
    }

private:
    Contents& m_contents;
    ContentStore& m_store;
    std::map<std::int64_t, std::string> m_bytes;
};

void repack(Contents& contents, UnpackedBytes& unpacked, ContentStore& store, std::int64_t number,
    const std::string& bytes)
{
    const auto kept = keptBaseOf(contents, contents[number]);
    if (!kept) {
        store.repack(number, bytes, std::nullopt, {});
        return;
    }
    store.repack(number, bytes, kept, unpacked.of(*kept));
    unpacked.release(*kept);
}

void sweepChain(Contents& contents, ContentStore& store, std::int64_t chain)
{
    UnpackedBytes unpacked(contents, store);
    for (auto& [number, content] : contents) {
        if (content.chain != chain || !content.isUnpacked)
            continue;
        auto bytes = unpacked.unpack(number, content);
        if (!bytes || (content.isRepacked && !store.holds(number, *bytes))) {
            store.markDamaged(number);
            continue;
        }
        if (content.isRepacked)
            repack(contents, unpacked, store, number, *bytes);
        unpacked.keep(number, std::move(*bytes));
    }
}

std::map<std::int64_t, ChainCost> costs(const Contents& contents)
{
    std::map<std::int64_t, ChainCost> chains;
    for (const auto& [number, content] : contents) {
        ChainCost& chain = chains[content.chain];
        ++chain.contents;
        chain.unused += content.isUsed ? 0 : 1;
        chain.toUnpack += content.isUnpacked ? content.size : 0;
    }
    return chains;
}

bool isWorthwhile(const ChainCost& chain, std::uint64_t unpackedSoFar)
{
    constexpr std::uint64_t little = std::uint64_t{64} << 20U; // bytes
    constexpr std::uint64_t most = std::uint64_t{1} << 30U; // bytes in one sweep
    return chain.toUnpack <= little || (chain.unused * 2 >= chain.contents && unpackedSoFar < most);
}

} // namespace

// Plans for all contents first, then repacks chain by chain, so that only one chain's bytes are in memory.
void sweepContents(Database& database, SweepCost cost)
{
    Contents contents = allContents(database);
    plan(contents);
    ContentStore store(database);
    std::uint64_t unpacked = 0;
    for (const auto& [number, chain] : costs(contents)) {
        if (chain.unused == 0 || (cost == SweepCost::inPassing && !isWorthwhile(chain, unpacked)))
            continue;
        sweepChain(contents, store, number);
        unpacked += chain.toUnpack;
        for (const auto& [unused, content] : contents)
            if (content.chain == number && !content.isUsed)
                store.remove(unused);
    }
}

} // namespace quorvane::history
