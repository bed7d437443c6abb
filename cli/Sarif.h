#pragma once

#include "workflow/FileFindings.h"

#include <string>

// Findings for review tools: a log in the Static Analysis Results Interchange Format, 2.1.0. The log is
// generated in parts, so that it need not be in memory as a whole. Pure functions.

namespace quorvane::cli {

// A file as a URI: a relative path as a relative reference.
std::string fileAddress(const std::string& path);

// A finding in the file with that URI, as a JSON object.
std::string sarifResult(const std::string& address, const workflow::FileFinding& finding);

// A file that could not be read, as a JSON object.
std::string sarifNotification(const std::string& address, const std::string& message);

// The text before the results, which are separated by commas.
std::string sarifBegin();

// The text after them. `notifications` are objects separated by commas; empty when there are none.
std::string sarifEnd(const std::string& notifications);

} // namespace quorvane::cli
