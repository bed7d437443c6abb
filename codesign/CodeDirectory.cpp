#include "codesign/CodeDirectory.h"

#include <algorithm>

namespace quorvane::codesign {

namespace {

constexpr std::uint32_t codeDirectoryMagic = 0xfade0c02;
constexpr std::uint64_t smallestBlob = 44;
constexpr std::uint32_t oldestVersion = 0x20001;
constexpr std::uint32_t newestVersion = 0x2f000;
constexpr std::uint8_t largestPageSize = 40; // base-2 logarithm

// The versions that introduced fields.
constexpr std::uint32_t versionOfScatter = 0x20100;
constexpr std::uint32_t versionOfTeam = 0x20200;
constexpr std::uint32_t versionOfLimit64 = 0x20300;
constexpr std::uint32_t versionOfPreEncrypt = 0x20500;

std::uint64_t lengthOfHashType(std::uint8_t type)
{
    switch (type) {
    case hashType::sha1:
    case hashType::sha256Cut:
        return 20;
    case hashType::sha256:
        return 32;
    case hashType::sha384:
        return 48;
    default:
        return 0;
    }
}

} // namespace

ValidityStatus CodeDirectory::parse(ByteView blob, CodeDirectory& directory)
{
    if (blob.u32(0) != codeDirectoryMagic || blob.size() < smallestBlob)
        return status::signatureFailed;
    const std::uint32_t version = blob.u32(8);
    if (version < oldestVersion || version > newestVersion)
        return status::unsupported;

    CodeDirectory parsed;
    parsed.m_blob = blob;
    parsed.m_codeLimit = blob.u32(32);
    if (parsed.hasField(versionOfLimit64) && blob.u64(56) != 0)
        parsed.m_codeLimit = blob.u64(56);
    if (const ValidityStatus texts = parsed.readTexts(); texts != status::valid)
        return texts;
    if (!parsed.hashesLieInside() || !parsed.scatterListEnds() || !parsed.pagesFitLimit())
        return status::signatureFailed;
    const std::uint64_t expected = lengthOfHashType(parsed.hashType());
    if (expected != 0 && parsed.hashSize() != expected)
        return status::signatureFailed;
    directory = parsed;
    return status::valid;
}

ValidityStatus CodeDirectory::readTexts()
{
    const auto identifier = m_blob.zeroTerminated(m_blob.u32(20));
    if (!identifier)
        return status::signatureFailed;
    m_identifier = *identifier;
    if (hasField(versionOfTeam) && m_blob.u32(48) != 0) {
        m_teamIdentifier = m_blob.zeroTerminated(m_blob.u32(48));
        if (!m_teamIdentifier)
            return status::signatureFailed;
    }
    return status::valid;
}

bool CodeDirectory::hashesLieInside() const
{
    if (specialSlotCount() * hashSize() > hashOffset())
        return false;
    if (!m_blob.holds(hashOffset(), pageCount() * hashSize()))
        return false;
    const std::uint64_t preEncrypt = hasField(versionOfPreEncrypt) ? m_blob.u32(92) : 0;
    return preEncrypt == 0 || m_blob.holds(preEncrypt, pageCount() * hashSize());
}

bool CodeDirectory::scatterListEnds() const
{
    constexpr std::uint64_t recordSize = 24;
    std::uint64_t at = hasField(versionOfScatter) ? m_blob.u32(44) : 0;
    if (at == 0)
        return true;
    for (; m_blob.holds(at, recordSize); at += recordSize) {
        if (m_blob.u32(at) == 0)
            return true;
    }
    return false;
}

bool CodeDirectory::pagesFitLimit() const
{
    const std::uint8_t logarithm = m_blob.u8(39);
    if (logarithm == 0)
        return pageCount() == 1 || (pageCount() == 0 && m_codeLimit == 0);
    return logarithm <= largestPageSize && m_codeLimit > 0
        && ((m_codeLimit - 1) >> logarithm) + 1 == pageCount();
}

std::optional<std::uint64_t> CodeDirectory::pageSize() const
{
    const std::uint8_t logarithm = m_blob.u8(39);
    return logarithm == 0 ? std::nullopt : std::optional(1ULL << logarithm);
}

ByteView CodeDirectory::pageHash(std::uint32_t page) const
{
    return m_blob.part(hashOffset() + page * hashSize(), hashSize()).value_or(ByteView());
}

std::optional<ByteView> CodeDirectory::specialHash(std::uint32_t slot) const
{
    if (slot == 0 || slot > specialSlotCount())
        return std::nullopt;
    const auto stored = m_blob.part(hashOffset() - slot * hashSize(), hashSize());
    if (!stored || std::all_of(stored->begin(), stored->end(), [](std::uint8_t byte) { return byte == 0; }))
        return std::nullopt;
    return stored;
}

std::optional<HashAlgorithm> CodeDirectory::hashAlgorithm() const
{
    switch (hashType()) {
    case hashType::sha1:
        return HashAlgorithm::sha1;
    case hashType::sha256:
    case hashType::sha256Cut:
        return HashAlgorithm::sha256;
    case hashType::sha384:
        return HashAlgorithm::sha384;
    default:
        return std::nullopt;
    }
}

} // namespace quorvane::codesign
