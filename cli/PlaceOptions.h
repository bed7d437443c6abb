#pragma once

#include "workflow/RulesPlace.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace quorvane::cli {

// --target and --no-target, which say where the programs and paths of rules are looked up.
class PlaceOptions {
public:
    void addTo(CLI::App& command);

    bool isNowhere() const { return m_isNowhere; }

    // What a reader is told of it.
    std::string sentence() const;

    // The place; none, after a complaint, when the target is no folder.
    std::optional<workflow::RulesPlace> open() const;

private:
    std::optional<std::string> m_target;
    bool m_isNowhere = false;
};

} // namespace quorvane::cli
