#include "workflow/CutWrite.h"

#include <algorithm>

namespace quorvane::workflow {

namespace {

std::size_t lengthOfCommonBeginning(std::string_view a, std::string_view b)
{
    const auto [end, other] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return static_cast<std::size_t>(end - a.begin());
}

bool holdsOnlyZeros(std::string_view bytes)
{
    return bytes.find_first_not_of('\0') == std::string_view::npos;
}

} // namespace

// An interrupted write leaves new bytes up to some point, then the old ones or zeros.
FileAfterWrite fileAfterWrite(
    std::string_view now, std::optional<std::string_view> before, std::string_view meant, OldBytes old)
{
    if (now == meant)
        return FileAfterWrite::asMeant;
    if (now == before)
        return FileAfterWrite::asBefore;
    const std::size_t written = lengthOfCommonBeginning(now, meant);
    const std::string_view rest = now.substr(written);
    if (holdsOnlyZeros(rest)) // also true for an empty rest
        return FileAfterWrite::cutShort;
    if (before && old == OldBytes::beginning)
        before = before->substr(0, now.size());
    const bool isRestOfOld = before && before->size() == now.size() && before->substr(written) == rest;
    return isRestOfOld ? FileAfterWrite::cutShort : FileAfterWrite::foreign;
}

} // namespace quorvane::workflow
