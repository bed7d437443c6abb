#include "codesign/Digests.h"

#include "codesign/CodeFile.h"
#include "codesign/Hasher.h"

#include <initializer_list>
#include <new>

namespace quorvane::codesign {

namespace {

std::string hexadecimal(ByteView bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xfU];
    }
    return text;
}

std::string digest(HashAlgorithm algorithm, std::string_view buffer)
{
    const HashValue value = hashOf(algorithm, ByteView(buffer.data(), buffer.size()));
    if (value.length == 0)
        throw std::bad_alloc(); // the only way hashing bytes in memory can fail
    return hexadecimal(value.view());
}

std::optional<std::string> digestOf(Hasher& hasher)
{
    const HashValue value = hasher.finish();
    return value.length == 0 ? std::nullopt : std::optional(hexadecimal(value.view()));
}

// Feeds the whole file to the hashers; false when it cannot be read to its end.
bool hashFile(const std::string& path, const platform::FileRoot& root, std::initializer_list<Hasher*> hashers)
{
    const auto file = CodeFile::open(path, root);
    return file && file->forEachPieceToEnd([&hashers](ByteView piece) {
        for (Hasher* hasher : hashers)
            hasher->update(piece);
        return true;
    }) == ReadResult::complete;
}

std::optional<std::string> fileDigest(
    HashAlgorithm algorithm, const std::string& path, const platform::FileRoot& root)
{
    Hasher hasher(algorithm);
    return hashFile(path, root, {&hasher}) ? digestOf(hasher) : std::nullopt;
}

} // namespace

std::string sha1(std::string_view buffer)
{
    return digest(HashAlgorithm::sha1, buffer);
}

std::string sha256(std::string_view buffer)
{
    return digest(HashAlgorithm::sha256, buffer);
}

std::optional<std::string> sha1OfFile(const std::string& path, const platform::FileRoot& root)
{
    return fileDigest(HashAlgorithm::sha1, path, root);
}

std::optional<std::string> sha256OfFile(const std::string& path, const platform::FileRoot& root)
{
    return fileDigest(HashAlgorithm::sha256, path, root);
}

std::optional<FileDigests> digestsOfFile(const std::string& path)
{
    Hasher sha1Hasher(HashAlgorithm::sha1);
    Hasher sha256Hasher(HashAlgorithm::sha256);
    if (!hashFile(path, {}, {&sha1Hasher, &sha256Hasher}))
        return std::nullopt;
    const auto sha1 = digestOf(sha1Hasher);
    const auto sha256 = digestOf(sha256Hasher);
    return sha1 && sha256 ? std::optional(FileDigests{*sha1, *sha256}) : std::nullopt;
}

} // namespace quorvane::codesign
