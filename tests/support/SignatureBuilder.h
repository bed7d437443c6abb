#pragma once

#include "codesign/ByteView.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::test {

// One CodeDirectory to be made.
struct DirectoryPlan {
    std::uint8_t hashType = 2;
    std::uint32_t version = 0x20400;
    std::uint32_t flags = 0x2;
    std::string identifier = "com.example.tool";
    std::optional<std::string> team;
    std::uint8_t platform = 0;
    std::uint8_t pageSize = 12; // base-2 logarithm
    std::optional<std::uint64_t> limit; // instead of the code's length
};

// A signature to be made. The special hashes are those of the data given here.
struct SignaturePlan {
    std::vector<DirectoryPlan> directories{DirectoryPlan()}; // the first, then the alternates
    std::map<std::uint32_t, codesign::Bytes> blobs; // by slot: complete, with their headers
    std::optional<codesign::Bytes> infoPlist;
    std::optional<codesign::Bytes> resourceSeal;
    // Makes the CMS message over the finished directories; without it there is none.
    std::function<codesign::Bytes(const std::vector<codesign::Bytes>& directories)> sign;
    // Changes the finished directories before they are signed.
    std::function<void(std::vector<codesign::Bytes>& directories)> alter;
};

// A blob with its header.
codesign::Bytes makeBlob(std::uint32_t magic, codesign::ByteView contents);

codesign::Bytes makeDirectory(
    const DirectoryPlan& plan, const SignaturePlan& signature, codesign::ByteView code);

// The container of a signature over `code`.
codesign::Bytes makeSignature(const SignaturePlan& plan, codesign::ByteView code);

// A container of finished blobs.
codesign::Bytes makeContainer(const std::vector<std::pair<std::uint32_t, codesign::Bytes>>& blobs);

} // namespace quorvane::test
