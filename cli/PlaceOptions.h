#pragma once

#include "workflow/RulesPlace.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace quorvane::cli {

// --target and --no-target, which select where the programs and paths of rules are looked up.
class PlaceOptions {
public:
    void addTo(CLI::App& command);

    bool isNowhere() const { return m_isNowhere; }

    // A sentence about it for reports.
    std::string sentence() const;

    // The place; none, with an error printed, when the target is not a folder.
    std::optional<workflow::RulesPlace> open() const;

private:
    std::optional<std::string> m_target;
    bool m_isNowhere = false;
};

} // namespace quorvane::cli
