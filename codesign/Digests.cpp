#include "codesign/Digests.h"

#include "codesign/CodeFile.h"
#include "codesign/Hasher.h"

#include <initializer_list>

namespace quorvane {

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
    return hexadecimal(hashOf(algorithm, ByteView(buffer.data(), buffer.size())).view());
}

// Takes the whole file into the hashers; false when it cannot be read to its end.
bool hashFile(const std::string& path, const FileRoot& root, std::initializer_list<Hasher*> hashers)
{
    const auto file = CodeFile::open(path, root);
    return file && file->forEachPieceToEnd([&hashers](ByteView piece) {
        for (Hasher* hasher : hashers)
            hasher->update(piece);
        return true;
    }) == ReadResult::complete;
}

std::optional<std::string> fileDigest(HashAlgorithm algorithm, const std::string& path, const FileRoot& root)
{
    Hasher hasher(algorithm);
    return hashFile(path, root, {&hasher}) ? std::optional(hexadecimal(hasher.finish().view()))
                                           : std::nullopt;
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

std::optional<std::string> sha1OfFile(const std::string& path, const FileRoot& root)
{
    return fileDigest(HashAlgorithm::sha1, path, root);
}

std::optional<std::string> sha256OfFile(const std::string& path, const FileRoot& root)
{
    return fileDigest(HashAlgorithm::sha256, path, root);
}

std::optional<FileDigests> digestsOfFile(const std::string& path)
{
    Hasher sha1Hasher(HashAlgorithm::sha1);
    Hasher sha256Hasher(HashAlgorithm::sha256);
    if (!hashFile(path, {}, {&sha1Hasher, &sha256Hasher}))
        return std::nullopt;
    return FileDigests{hexadecimal(sha1Hasher.finish().view()), hexadecimal(sha256Hasher.finish().view())};
}

} // namespace quorvane
