#pragma once

#include "workflow/AccessMap.h"
#include "workflow/FileFindings.h"

#include <string>
#include <vector>

namespace quorvane::cli {

// The contents of the page.
struct ReportFacts {
    std::string subject; // the rules file, as named for the reader
    std::string lookedUp; // where programs and paths were looked up, as a sentence
    std::vector<rules::RuleRef> rules; // in the order of the rows
    std::vector<workflow::FileFinding> findings;
};

// Map, problems and rules as one HTML page: self-contained, without scripts, legible when printed without
// colours. All texts of rules are escaped.
std::string reportPage(const ReportFacts& facts);

} // namespace quorvane::cli
