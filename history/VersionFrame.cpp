#include "history/VersionFrame.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include <zstd.h>

namespace quorvane::history {

namespace {

// Versions have long equal ranges whose distance is about the length of the contents. Matches that far away
// are found only by long-distance matching, and only within the window.
int windowFor(std::size_t length)
{
    const ZSTD_bounds bounds = ZSTD_cParam_getBounds(ZSTD_c_windowLog);
    return std::clamp(static_cast<int>(std::bit_width(length)), bounds.lowerBound, bounds.upperBound);
}

std::size_t checked(std::size_t result)
{
    if (ZSTD_isError(result) != 0)
        throw std::bad_alloc(); // parameters are valid and the buffer suffices, so nothing else can fail
    return result;
}

// The lengths of the common start and end of two contents, which do not overlap.
struct CommonEnds {
    std::size_t start = 0;
    std::size_t end = 0;
};

// Whole blocks first, since these are compared many bytes at a time.
std::size_t commonStart(std::string_view a, std::string_view b)
{
    constexpr std::size_t block = 4096;
    const std::size_t most = std::min(a.size(), b.size());
    std::size_t length = 0;
    while (length + block <= most && std::memcmp(a.data() + length, b.data() + length, block) == 0)
        length += block;
    while (length < most && a[length] == b[length])
        ++length;
    return length;
}

std::size_t commonEnd(std::string_view a, std::string_view b)
{
    constexpr std::size_t block = 4096;
    const std::size_t most = std::min(a.size(), b.size());
    const auto at
        = [](std::string_view text, std::size_t fromEnd) { return text.data() + text.size() - fromEnd; };
    std::size_t length = 0;
    while (length + block <= most && std::memcmp(at(a, length + block), at(b, length + block), block) == 0)
        length += block;
    while (length < most && *at(a, length + 1) == *at(b, length + 1))
        ++length;
    return length;
}

CommonEnds commonEnds(std::string_view a, std::string_view b)
{
    const std::size_t start = commonStart(a, b);
    return {start, commonEnd(a.substr(start), b.substr(start))};
}

std::string_view withoutEnds(std::string_view text, const CommonEnds& ends)
{
    return text.substr(ends.start, text.size() - ends.start - ends.end);
}

// The lengths precede the packed rest in a skippable frame, which every decompressor ignores.
constexpr std::uint32_t skippedFrameWord = 0x184D2A51;
constexpr std::size_t skippedFrameSize = 24; // bytes: magic number, length of what follows, both lengths

template <class Number> void appendNumber(std::string& out, Number number)
{
    for (std::size_t byte = 0; byte < sizeof number; ++byte)
        out += static_cast<char>(number >> (8 * byte));
}

template <class Number> Number numberAt(std::string_view text, std::size_t at)
{
    Number number = 0;
    for (std::size_t byte = 0; byte < sizeof number; ++byte)
        number |= static_cast<Number>(static_cast<unsigned char>(text[at + byte])) << (8 * byte);
    return number;
}

std::string skippedFrame(const CommonEnds& ends)
{
    std::string frame;
    appendNumber(frame, skippedFrameWord);
    appendNumber(frame, static_cast<std::uint32_t>(2 * sizeof(std::uint64_t)));
    appendNumber(frame, std::uint64_t{ends.start});
    appendNumber(frame, std::uint64_t{ends.end});
    return frame;
}

// Removes the lengths from the front of `frame`; zero lengths if it has none.
CommonEnds takeEnds(std::string_view& frame)
{
    if (frame.size() < skippedFrameSize || numberAt<std::uint32_t>(frame, 0) != skippedFrameWord)
        return {};
    const CommonEnds ends{numberAt<std::uint64_t>(frame, 8), numberAt<std::uint64_t>(frame, 16)};
    frame.remove_prefix(skippedFrameSize);
    return ends;
}

bool areWithin(const CommonEnds& ends, std::size_t size)
{
    return ends.start <= size && ends.end <= size - ends.start;
}

std::string packed(std::string_view contents, std::string_view prefix, std::string frame)
{
    const std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context(ZSTD_createCCtx(), ZSTD_freeCCtx);
    if (!context)
        throw std::bad_alloc();
    checked(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1));
    // Of a long file this takes less than half of the time of the usual level with long-distance matching,
    // for a fifth more room; compared to a prefix, four fifths for 2 % more.
    checked(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, 1));
    if (!prefix.empty()) {
        checked(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_enableLongDistanceMatching, 1));
        checked(ZSTD_CCtx_setParameter(
            context.get(), ZSTD_c_windowLog, windowFor(std::max(contents.size(), prefix.size()))));
        checked(ZSTD_CCtx_refPrefix(context.get(), prefix.data(), prefix.size()));
    }
    // Left uninitialized, so that only the pages that the frame needs are touched.
    const std::size_t bound = ZSTD_compressBound(contents.size());
    const auto room = std::make_unique_for_overwrite<char[]>(bound);
    const std::size_t length
        = checked(ZSTD_compress2(context.get(), room.get(), bound, contents.data(), contents.size()));
    frame.append(room.get(), length);
    return frame;
}

} // namespace

std::string packedFrame(std::string_view contents, std::string_view prefix)
{
    const CommonEnds ends = commonEnds(contents, prefix);
    const bool isWhole = ends.start + ends.end == 0;
    return packed(
        withoutEnds(contents, ends), withoutEnds(prefix, ends), isWhole ? std::string() : skippedFrame(ends));
}

std::optional<std::string> unpackedFrame(std::string_view frame, std::string_view prefix, std::size_t size)
{
    const CommonEnds ends = takeEnds(frame);
    if (size > largestContents || !areWithin(ends, size) || !areWithin(ends, prefix.size()))
        return std::nullopt;
    const std::size_t length = size - ends.start - ends.end; // of the packed bytes
    if (ZSTD_getFrameContentSize(frame.data(), frame.size()) != length)
        return std::nullopt;
    const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(), ZSTD_freeDCtx);
    if (!context)
        throw std::bad_alloc();
    const std::string_view packedAgainst = withoutEnds(prefix, ends);
    checked(ZSTD_DCtx_refPrefix(context.get(), packedAgainst.data(), packedAgainst.size()));
    std::string contents;
    contents.reserve(size);
    contents.append(prefix.substr(0, ends.start)).resize(ends.start + length);
    if (ZSTD_decompressDCtx(context.get(), contents.data() + ends.start, length, frame.data(), frame.size())
        != length)
        return std::nullopt;
    contents.append(prefix.substr(prefix.size() - ends.end));
    return contents;
}

} // namespace quorvane::history
