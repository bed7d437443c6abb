#pragma once

#include "rules/RuleRef.h"
#include "rules/RulesFileWriter.h"

#include <string>
#include <vector>

namespace quorvane::rules {
class RulesContent;
}

namespace quorvane::workflow {

// Exports. A file at the destination is replaced by a whole one or stays what it was: the new one is made
// beside it. Only where the folder allows no second file, or where a second one could not keep the owner or
// the other names of the first, it is written in place, as writeRulesFile() does it. Any thread.

// Writes `content` to `destination`. A symbolic link there is refused, and so is what is no regular file.
// `opened` is false when nothing was written.
rules::WriteResult exportRules(const std::string& destination, const rules::RulesContent& content);
// The same with these rules, in this order.
rules::WriteResult exportRules(const std::string& destination, const std::vector<rules::RuleRef>& rules);

// Copies the rules file at `source` to `destination`, byte for byte; a symbolic link there is replaced and
// not followed. Nothing happens when the source cannot be read whole, when both are the same file, or when
// something else than a file or link is at the destination.
void exportRulesFile(const std::string& source, const std::string& destination);

// True when both paths lead to the same file.
bool isSameFile(const std::string& a, const std::string& b);

} // namespace quorvane::workflow
