#pragma once

#include "codesign/CodeDirectory.h"
#include "codesign/CodeFile.h"

#include <vector>

namespace quorvane::codesign {

// Compares the signed bytes of the slice that begins at `sliceOffset` with the page hashes of every
// directory, in one pass over the file. Returns the first failure: a difference or a file that ends inside a
// page (signatureFailed), an unknown hash (unsupported), or a read error (notVerifiable). Also notVerifiable
// when all directories together need more than 2 GiB hashed.
ValidityStatus verifyPages(
    const CodeFile& file, std::uint64_t sliceOffset, const std::vector<CodeDirectory>& directories);

} // namespace quorvane::codesign
