#include "history/VersionFrame.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>

#include <zstd.h>

namespace quorvane {

namespace {

// Contents of versions are alike over long stretches that lie as far apart as the contents are long. Matches
// that far away are found only by long-distance matching, and only within the window.
int windowFor(std::size_t length)
{
    const ZSTD_bounds bounds = ZSTD_cParam_getBounds(ZSTD_c_windowLog);
    return std::clamp(static_cast<int>(std::bit_width(length)), bounds.lowerBound, bounds.upperBound);
}

std::size_t checked(std::size_t result)
{
    if (ZSTD_isError(result) != 0)
        throw std::bad_alloc(); // parameters are right and the room suffices, so nothing else fails
    return result;
}

} // namespace

std::string packedFrame(std::string_view contents, std::string_view prefix)
{
    const std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context(ZSTD_createCCtx(), ZSTD_freeCCtx);
    if (!context)
        throw std::bad_alloc();
    checked(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1));
    checked(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_enableLongDistanceMatching, 1));
    checked(ZSTD_CCtx_setParameter(
        context.get(), ZSTD_c_windowLog, windowFor(std::max(contents.size(), prefix.size()))));
    checked(ZSTD_CCtx_refPrefix(context.get(), prefix.data(), prefix.size()));
    // Left as it is, so that only the pages that the frame needs are ever touched.
    const std::size_t bound = ZSTD_compressBound(contents.size());
    const auto room = std::make_unique_for_overwrite<char[]>(bound);
    const std::size_t length
        = checked(ZSTD_compress2(context.get(), room.get(), bound, contents.data(), contents.size()));
    return {room.get(), length};
}

std::optional<std::string> unpackedFrame(std::string_view frame, std::string_view prefix, std::size_t size)
{
    if (size > largestContents || ZSTD_getFrameContentSize(frame.data(), frame.size()) != size)
        return std::nullopt;
    const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(), ZSTD_freeDCtx);
    if (!context)
        throw std::bad_alloc();
    checked(ZSTD_DCtx_refPrefix(context.get(), prefix.data(), prefix.size()));
    std::string contents(size, '\0');
    if (ZSTD_decompressDCtx(context.get(), contents.data(), size, frame.data(), frame.size()) != size)
        return std::nullopt;
    return contents;
}

} // namespace quorvane
