#include "tests/support/SignatureBuilder.h"

#include "tests/support/ByteWriter.h"

#include <algorithm>
#include <stdexcept>

#include <openssl/evp.h>

namespace quorvane::test {

namespace {

constexpr std::uint32_t lastSpecialSlot = 11;

struct Hash {
    const EVP_MD* method;
    std::size_t size;
};

Hash hashOfType(std::uint8_t type)
{
    switch (type) {
    case 1:
        return {EVP_sha1(), 20};
    case 3:
        return {EVP_sha256(), 20};
    case 4:
        return {EVP_sha384(), 48};
    default:
        return {EVP_sha256(), 32};
    }
}

codesign::Bytes hashed(std::uint8_t type, codesign::ByteView data)
{
    const Hash hash = hashOfType(type);
    codesign::Bytes value(EVP_MAX_MD_SIZE);
    if (EVP_Digest(data.data(), data.size(), value.data(), nullptr, hash.method, nullptr) != 1)
        throw std::runtime_error("no digest");
    value.resize(hash.size);
    return value;
}

std::optional<codesign::Bytes> specialData(std::uint32_t slot, const SignaturePlan& signature)
{
    if (slot == 1)
        return signature.infoPlist;
    if (slot == 3)
        return signature.resourceSeal;
    const auto blob = signature.blobs.find(slot);
    return blob == signature.blobs.end() ? std::nullopt : std::optional(blob->second);
}

} // namespace

codesign::Bytes makeBlob(std::uint32_t magic, codesign::ByteView contents)
{
    codesign::Bytes blob(8 + contents.size());
    putBig32(blob, 0, magic);
    putBig32(blob, 4, blob.size());
    std::copy(contents.begin(), contents.end(), blob.begin() + 8);
    return blob;
}

codesign::Bytes makeDirectory(
    const DirectoryPlan& plan, const SignaturePlan& signature, codesign::ByteView code)
{
    const std::size_t hashSize = hashOfType(plan.hashType).size;
    const std::uint64_t limit = plan.limit.value_or(code.size());
    codesign::Bytes blob(plan.version >= 0x20500 ? 108 : 88);
    putBig32(blob, 0, 0xfade0c02);
    putBig32(blob, 8, plan.version);
    putBig32(blob, 12, plan.flags);
    putBig32(blob, 24, lastSpecialSlot);
    putBig32(blob, 32, limit);
    blob[36] = static_cast<std::uint8_t>(hashSize);
    blob[37] = plan.hashType;
    blob[38] = plan.platform;
    blob[39] = plan.pageSize;
    putBig32(blob, 20, blob.size());
    append(blob, plan.identifier);
    blob.push_back(0);
    if (plan.team) {
        putBig32(blob, 48, blob.size());
        append(blob, *plan.team);
        blob.push_back(0);
    }
    for (std::uint32_t slot = lastSpecialSlot; slot > 0; --slot) {
        const auto data = specialData(slot, signature);
        append(blob, data ? hashed(plan.hashType, *data) : codesign::Bytes(hashSize));
    }
    putBig32(blob, 16, blob.size());
    const std::uint64_t pageSize = plan.pageSize == 0 ? limit : 1ULL << plan.pageSize;
    std::uint32_t pages = 0;
    for (std::uint64_t at = 0; at < code.size() && at < limit; at += pageSize, ++pages)
        append(
            blob, hashed(plan.hashType, code.from(at).part(0, std::min(pageSize, code.size() - at)).value()));
    putBig32(blob, 28, pages);
    putBig32(blob, 4, blob.size());
    return blob;
}

codesign::Bytes makeContainer(const std::vector<std::pair<std::uint32_t, codesign::Bytes>>& blobs)
{
    codesign::Bytes container(12 + blobs.size() * 8);
    putBig32(container, 0, 0xfade0cc0);
    putBig32(container, 8, blobs.size());
    std::size_t entry = 12;
    for (const auto& [slot, blob] : blobs) {
        putBig32(container, entry, slot);
        putBig32(container, entry + 4, container.size());
        append(container, blob);
        entry += 8;
    }
    putBig32(container, 4, container.size());
    return container;
}

codesign::Bytes makeSignature(const SignaturePlan& plan, codesign::ByteView code)
{
    std::vector<codesign::Bytes> directories;
    for (const DirectoryPlan& directory : plan.directories)
        directories.push_back(makeDirectory(directory, plan, code));
    if (plan.alter)
        plan.alter(directories);
    std::vector<std::pair<std::uint32_t, codesign::Bytes>> blobs;
    for (std::uint32_t i = 0; i < directories.size(); ++i)
        blobs.emplace_back(i == 0 ? 0 : 0x1000 + i - 1, directories[i]);
    blobs.insert(blobs.end(), plan.blobs.begin(), plan.blobs.end());
    if (plan.sign)
        blobs.emplace_back(0x10000, makeBlob(0xfade0b01, plan.sign(directories)));
    return makeContainer(blobs);
}

} // namespace quorvane::test
