#include "codesign/CodeDirectories.h"

#include <algorithm>
#include <array>

namespace quorvane::codesign {

namespace {

// 0 for an unknown hash.
int strength(const CodeDirectory& directory)
{
    constexpr std::array<std::uint8_t, 4> weakestFirst{
        hashType::sha1, hashType::sha256Cut, hashType::sha256, hashType::sha384};
    const auto* found = std::find(weakestFirst.begin(), weakestFirst.end(), directory.hashType());
    return found == weakestFirst.end() ? 0 : static_cast<int>(found - weakestFirst.begin()) + 1;
}

HashValue hashOfDirectory(const CodeDirectory& directory)
{
    const auto algorithm = directory.hashAlgorithm();
    return algorithm ? hashOf(*algorithm, directory.blob()) : HashValue();
}

ValidityStatus add(ByteView blob, CodeDirectories& loaded)
{
    CodeDirectory directory;
    const ValidityStatus status = CodeDirectory::parse(blob, directory);
    if (status != status::valid)
        return status;
    const bool repeated = std::any_of(loaded.all.begin(), loaded.all.end(),
        [&](const CodeDirectory& other) { return other.hashType() == directory.hashType(); });
    if (repeated)
        return status::signatureInvalid;
    loaded.all.push_back(directory);
    loaded.hashes.push_back(hashOfDirectory(directory));
    return status::valid;
}

} // namespace

CodeDirectories loadCodeDirectories(const SignatureContainer& container)
{
    CodeDirectories result;
    auto blob = container.blob(signatureSlot::codeDirectory);
    if (!blob)
        return result;
    for (std::uint32_t slot = signatureSlot::firstAlternate; blob; ++slot) {
        result.status = add(*blob, result);
        if (result.status != status::valid)
            return result;
        blob = slot <= signatureSlot::lastAlternate ? container.blob(slot) : std::nullopt;
    }
    const auto best = std::max_element(
        result.all.begin(), result.all.end(), [](const CodeDirectory& left, const CodeDirectory& right) {
            return strength(left) < strength(right);
        });
    result.best = static_cast<std::size_t>(best - result.all.begin());
    if (strength(*best) == 0)
        result.status = status::unknownHashes;
    return result;
}

} // namespace quorvane::codesign
