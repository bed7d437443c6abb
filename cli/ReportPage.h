#pragma once

#include "workflow/AccessMap.h"
#include "workflow/FileFindings.h"

#include <string>
#include <vector>

namespace quorvane::cli {

// What the page is about.
struct ReportFacts {
    std::string subject; // the rules file, as the reader knows it
    std::string lookedUp; // where programs and paths were looked up, as a sentence
    std::vector<rules::RuleRef> rules; // in the order of the rows
    std::vector<workflow::FileFinding> findings;
};

// Map, problems and rules as one page: complete in itself, without scripts, legible when printed without
// colours. Every text of a rule is written so that it is only ever shown.
std::string reportPage(const ReportFacts& facts);

} // namespace quorvane::cli
