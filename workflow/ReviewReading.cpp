#include "workflow/ReviewReading.h"

#include "rules/ChangeSet.h"
#include "rules/RulesFile.h"
#include "workflow/JoinedRules.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace quorvane::workflow {

namespace {

// Numbered by their order.
std::unique_ptr<rules::RuleManager> storeOf(const RulesApart& apart, const ReviewReading& reading)
{
    auto store = std::make_unique<rules::RuleManager>(reading.locations, reading.log);
    rules::ChangeSet additions;
    std::int64_t sequence = 0;
    for (const RulesApart::Rule& each : apart.rules) {
        additions.added.push_back(askValue(each.rule, [sequence](auto fields) -> rules::ChangeSet::Addition {
            fields.sequence = sequence;
            const rules::RuleValue value = makeRuleValue(std::move(fields));
            return {recordOf(value), value};
        }));
        ++sequence;
    }
    store->apply(std::move(additions));
    return store;
}

std::vector<std::int64_t> numbersOfCut(const RulesApart& apart)
{
    std::vector<std::int64_t> cut;
    for (std::size_t number = 0; number < apart.rules.size(); ++number) {
        if (apart.rules[number].isCut)
            cut.push_back(static_cast<std::int64_t>(number));
    }
    return cut;
}

RulesApart joinedRulesOf(const ReviewReading& reading)
{
    if (reading.text)
        return rulesOfJoinedLines(*reading.text);
    return rulesOfJoinedLines(rules::RulesFileText::read(reading.path).bytes());
}

RulesApart allRulesOf(const ReviewReading& reading)
{
    if (reading.text)
        return rulesApart(*reading.text);
    return rulesApart(rules::RulesFileText::read(reading.path).bytes());
}

} // namespace

ReviewedRules ReviewReading::read() const
{
    ReviewedRules read;
    if (listing == Listing::file) {
        read.joinedLines = text ? joinedLineCount(*text) : joinedLineCountOfFile(path);
        if (read.joinedLines > 0)
            read.joinedRules = storeOf(joinedRulesOf(*this), *this);
        read.rules = text ? rules::RuleManager::initWithText(*text, path, locations, log)
                          : rules::RuleManager::initWithContentsOfFile(path, false, locations, log);
        return read;
    }
    const RulesApart joined = joinedRulesOf(*this);
    const RulesApart listed = listing == Listing::joinedLines ? joined : allRulesOf(*this);
    read.joinedRules = storeOf(joined, *this);
    read.cut = numbersOfCut(listed);
    read.rules = storeOf(listed, *this);
    return read;
}

bool ReviewReading::isLong() const
{
    constexpr std::uintmax_t longText = 1U << 20U; // bytes; read in some ten milliseconds
    std::error_code error;
    const std::uintmax_t size = text ? text->size() : std::filesystem::file_size(path, error);
    return !error && size >= longText;
}

} // namespace quorvane::workflow
