#pragma once

#include "rules/RuleRef.h"
#include "rules/RulesFileWriter.h"

#include <string>
#include <vector>

namespace quorvane::rules {
class RulesContent;
}

namespace quorvane::workflow {

// Exports. A file at the destination is replaced atomically or stays unchanged: the new one is written beside
// it. It is written in place, as by writeRulesFile(), only where the folder permits no new file, or where a
// replacement could not keep the owner or the other hard links. Any thread.

// Writes `content` to `destination`. A symbolic link there is refused, and so is anything but a regular file.
// `opened` is false when nothing was written.
rules::WriteResult exportRules(const std::string& destination, const rules::RulesContent& content);
// The same with these rules, in this order.
rules::WriteResult exportRules(const std::string& destination, const std::vector<rules::RuleRef>& rules);

// Copies the rules file at `source` to `destination`, byte for byte; a symbolic link there is replaced, not
// followed. Does nothing when the source cannot be read completely, when both are the same file, or when the
// destination is neither a file nor a link.
void exportRulesFile(const std::string& source, const std::string& destination);

// True when both paths lead to the same file.
bool isSameFile(const std::string& a, const std::string& b);

} // namespace quorvane::workflow
