#pragma once

#include "workflow/FileFindings.h"

#include <string>

// Findings for review tools: a log in the Static Analysis Results Interchange Format, 2.1.0. The log is put
// together of pieces, so that it need not be in memory.

namespace quorvane::cli {

// A file as an address: a relative path as a relative reference.
std::string fileAddress(const std::string& path);

// A finding in the file of that address, as a JSON object.
std::string sarifResult(const std::string& address, const workflow::FileFinding& finding);

// A file that could not be read, as a JSON object.
std::string sarifNotification(const std::string& address, const std::string& message);

// What stands in front of the results, which commas separate.
std::string sarifBegin();

// What stands behind them. `notifications` are objects with commas between; empty when all went well.
std::string sarifEnd(const std::string& notifications);

} // namespace quorvane::cli
