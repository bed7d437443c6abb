#pragma once

#include "codesign/CmsMessage.h"
#include "codesign/CodeDirectories.h"

namespace quorvane::codesign {

// True when the lists of hashes among the signed attributes, in either form, contain exactly the loaded
// CodeDirectories. Without a list only a single CodeDirectory passes, since nothing would protect the
// alternates. Any thread.
bool hashListsMatch(const CmsSigner& signer, const CodeDirectories& directories);

} // namespace quorvane::codesign
