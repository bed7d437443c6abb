#include "codesign/PageHashes.h"

#include <algorithm>

namespace quorvane::codesign {

namespace {

// The limit of the work, in hashed bytes; each page costs some more. Twice what the largest programs need.
constexpr std::uint64_t mostWork = 2ULL << 30U;
constexpr std::uint64_t workOfPage = 512;

std::uint64_t workOf(const CodeDirectory& directory)
{
    return std::min(directory.codeLimit(), mostWork) + directory.pageCount() * workOfPage;
}

// Receives the bytes of a program and compares each page with one directory's hashes.
class PageChecker {
public:
    PageChecker(const CodeDirectory& directory, HashAlgorithm algorithm)
        : m_directory(directory)
        , m_hasher(algorithm)
        , m_pageSize(directory.pageSize().value_or(directory.codeLimit()))
        , m_left(directory.codeLimit())
    {
    }

    // False at the first page that differs.
    bool take(ByteView bytes)
    {
        while (!bytes.empty() && m_left > 0) {
            const std::uint64_t pageRest = std::min(m_pageSize - m_inPage, m_left);
            const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(pageRest, bytes.size()));
            m_hasher.update(ByteView(bytes.data(), length));
            bytes = bytes.from(length);
            m_inPage += length;
            m_left -= length;
            if (length == pageRest && !pageMatches())
                return false;
        }
        return true;
    }

    // Call it after the last byte: true when no stored hash is left over. Code of no bytes is one empty page.
    bool atEnd() { return m_page == m_directory.pageCount() || (m_left == 0 && pageMatches()); }

private:
    bool pageMatches()
    {
        m_inPage = 0;
        return m_hasher.finish().startsWith(m_directory.pageHash(m_page++));
    }

    const CodeDirectory& m_directory;
    Hasher m_hasher;
    std::uint64_t m_pageSize;
    std::uint64_t m_left; // signed bytes still to come
    std::uint64_t m_inPage = 0;
    std::uint32_t m_page = 0;
};

} // namespace

ValidityStatus verifyPages(
    const CodeFile& file, std::uint64_t sliceOffset, const std::vector<CodeDirectory>& directories)
{
    std::vector<PageChecker> checkers;
    std::uint64_t limit = 0;
    std::uint64_t work = 0;
    for (const CodeDirectory& directory : directories) {
        const auto algorithm = directory.hashAlgorithm();
        if (!algorithm)
            return status::unsupported;
        checkers.emplace_back(directory, *algorithm);
        limit = std::max(limit, directory.codeLimit());
        work += workOf(directory);
    }
    // Checked before reading gigabytes in vain.
    if (sliceOffset > file.size() || limit > file.size() - sliceOffset)
        return status::signatureFailed;
    if (work > mostWork)
        return status::notVerifiable;
    bool same = true;
    const ReadResult result = file.forEachPiece(sliceOffset, limit, [&](ByteView piece) {
        same = std::all_of(
            checkers.begin(), checkers.end(), [piece](PageChecker& checker) { return checker.take(piece); });
        return same;
    });
    if (result == ReadResult::failed)
        return status::notVerifiable;
    if (!same || result == ReadResult::cutShort)
        return status::signatureFailed;
    const bool atEnd
        = std::all_of(checkers.begin(), checkers.end(), [](PageChecker& checker) { return checker.atEnd(); });
    return atEnd ? status::valid : status::signatureFailed;
}

} // namespace quorvane::codesign
