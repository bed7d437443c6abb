#include "cli/PlaceOptions.h"

#include "cli/Output.h"
#include "platform/SystemError.h"

#include <CLI/CLI.hpp>

namespace quorvane::cli {

void PlaceOptions::addTo(CLI::App& command)
{
    auto* target
        = command
              .add_option_function<std::string>(
                  "--target", [this](const std::string& folder) { m_target = folder; },
                  "Look programs and paths up in this folder, as if it were the root of the file system")
              ->type_name("DIR");
    command.add_flag("--no-target", m_isNowhere, "Look no program and no path up")->excludes(target);
}

std::string PlaceOptions::sentence() const
{
    if (m_isNowhere)
        return "No program and no path was looked up.";
    return "Programs and paths were looked up " + (m_target ? "below " + *m_target : "on this machine") + ".";
}

std::optional<workflow::RulesPlace> PlaceOptions::open() const
{
    if (m_isNowhere)
        return workflow::RulesPlace::nowhere();
    if (!m_target)
        return workflow::RulesPlace::thisMachine();
    std::error_code error;
    auto place = workflow::RulesPlace::folder(*m_target, error);
    if (!place)
        printError("cannot look up programs and paths in '" + printable(*m_target)
            + "': " + platform::errorText(error));
    return place;
}

} // namespace quorvane::cli
