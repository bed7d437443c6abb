#include "cli/CommandFiles.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/PlaceOptions.h"
#include "cli/ReportPage.h"
#include "cli/RuleSelection.h"
#include "platform/Locations.h"
#include "rules/RulesFile.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

class ReportCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("report",
            "Write a page that shows what the rules say about folders, their problems, and them all");
        m_place.addTo(command);
        command.add_option("OUT.html", m_out, "The page to write")->required();
        command.add_option_function<std::string>(
            "FILE", [this](const std::string& file) { m_file = file; },
            "A rules file to use instead of the current user's configuration");
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto place = m_place.open();
        if (!place)
            return ExitStatus::failure;
        const auto page = m_file ? pageOfFile(context, *place) : pageOfConfiguration(context, *place);
        return page && writeResult(m_out, *page) ? ExitStatus::success : ExitStatus::failure;
    }

private:
    std::optional<std::string> pageOfFile(
        const CommandContext& context, const workflow::RulesPlace& place) const
    {
        const auto input = readText(*m_file);
        if (!input)
            return std::nullopt;
        const auto store = workflow::storeOfText(input->bytes(), context.locations, context.log);
        return page(*store, input->bytes(), *m_file, place);
    }

    std::optional<std::string> pageOfConfiguration(
        const CommandContext& context, const workflow::RulesPlace& place) const
    {
        const OpenedStore opened = openStore({}, context);
        if (opened.hasFailed || !opened.isComplete)
            return std::nullopt;
        const std::string file = context.locations.userRulesFile();
        const rules::RulesFileText text = rules::RulesFileText::read(file, context.lockTimeout);
        return page(opened.store, text.bytes(), file, place);
    }

    std::string page(const rules::RuleManager& store, std::string_view bytes, const std::string& subject,
        const workflow::RulesPlace& place) const
    {
        ReportFacts facts{subject, m_place.sentence(), {}, {}};
        for (std::size_t row = 0; row < store.totalRules(false); ++row)
            facts.rules.push_back(store.ruleAtIndex(row, false));
        const workflow::FileSearch search{{workflow::FindingKinds::all(), place}};
        workflow::useFileFindings(store, bytes, search, joinedLineFindings(bytes, search),
            [&facts](const workflow::FileFinding& finding) { facts.findings.push_back(finding); });
        return reportPage(facts);
    }

    PlaceOptions m_place;
    std::string m_out;
    std::optional<std::string> m_file;
};

} // namespace

std::unique_ptr<Command> makeReportCommand()
{
    return std::make_unique<ReportCommand>();
}

} // namespace quorvane::cli
