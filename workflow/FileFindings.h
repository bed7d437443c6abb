#pragma once

#include "workflow/RuleFindings.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The findings of a whole rules file, in words. Any thread; one store belongs to one thread.

namespace quorvane::workflow {

struct FileFinding {
    FindingKind kind;
    std::optional<std::size_t> row{}; // of the rule; none for a joined line
    std::size_t line = 0; // of the file, from 1, ended by LF or CR LF; 0 when not searched for
    std::string rule; // as a line of a rules file; for a joined line, its bytes
    std::string other{}; // the rule that covers it or that it overlaps, likewise; empty for none
    std::string_view reason{}; // why the program or its team fails; empty for none
    std::string text; // a sentence for the user
};

// A store of the rules of a user's file with this text, without options and system rules. Each part of the
// text that is not needed any more is passed to `discard`, if there is one. Never null. Throws
// std::bad_alloc.
std::unique_ptr<rules::RuleManager> storeOfText(std::string_view text, const platform::Locations& locations,
    platform::Log& log, const std::function<void(std::string_view)>& discard = {});

// What to search a file for.
struct FileSearch {
    FindingSearch findings{};
    bool withLines = false; // also find the lines of the rules
};

// The joined lines of the file, if they are searched for. Throws std::bad_alloc.
std::vector<FileFinding> joinedLineFindings(std::string_view bytes, const FileSearch& search);

// Calls `use` with every finding of the user's rules in the store, by row, then by kind, and then with
// `joined`, which are found apart so that the bytes need not be in memory together with the rules. `bytes`:
// the contents of the file; only used when the lines of the rules are searched for. Throws std::bad_alloc.
void useFileFindings(const rules::RuleManager& store, std::string_view bytes, const FileSearch& search,
    const std::vector<FileFinding>& joined, const std::function<void(const FileFinding&)>& use);

} // namespace quorvane::workflow
