#include "rules/RulesReading.h"

#include "platform/Log.h"
#include "rules/ApplicationIdentity.h"
#include "rules/FilterOptions.h"
#include "rules/Prefetch.h"
#include "rules/RuleStore.h"
#include "rules/RulesParser.h"

#include <ctime>
#include <type_traits>
#include <utility>
#include <variant>

namespace quorvane::rules {

namespace {

// Concatenates the pieces of a log line.
template <class... Pieces> std::string logLine(const Pieces&... pieces)
{
    std::string line;
    const auto append = [&line](const auto& piece) {
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(piece)>>)
            line.append(std::to_string(piece));
        else
            line.append(piece);
    };
    (append(pieces), ...);
    return line;
}

} // namespace

RulesReading::RulesReading(
    RuleStore& store, RuleStore* former, FilterOptions& options, std::int64_t& sequence, platform::Log& log)
    : m_store(store)
    , m_former(former)
    , m_options(options)
    , m_sequence(sequence)
    , m_log(log)
{
}

void RulesReading::mergeAsFailSafe()
{
    m_failSafe = std::make_unique<FailSafeMerge>();
}

// Where the rules of many programs stand mixed, each needs a dozen places of memory that are in no cache.
// Fetching them while other rules are stored saves 15 % of the processor time that a long file takes.
void RulesReading::store(std::vector<ParsedLine>& lines)
{
    const auto prefetchStep
        = [&](std::size_t step) { return [&, step](std::size_t number) { prefetch(lines[number], step); }; };
    forEachPrefetched(
        lines.size(), [&](std::size_t number) { store(lines[number]); }, prefetchStep(0), prefetchStep(1),
        prefetchStep(2), prefetchStep(3), prefetchStep(4));
}

// First the rule itself, which another thread has made.
void RulesReading::prefetch(const ParsedLine& line, std::size_t step) const
{
    if (const auto* policy = std::get_if<std::shared_ptr<PolicyRuleFields>>(&line.content)) {
        if (step == 0)
            prefetchObject(**policy);
        else
            m_store.prefetch(**policy, line.hash, step - 1);
    } else if (std::holds_alternative<std::shared_ptr<WatchRuleFields>>(line.content)) {
        m_store.watchRules().prefetch(line.hash);
    }
}

void RulesReading::store(ParsedLine& line)
{
    if (auto* policy = std::get_if<std::shared_ptr<PolicyRuleFields>>(&line.content)) {
        storeRule(std::move(*policy), line.hash);
    } else if (auto* watch = std::get_if<std::shared_ptr<WatchRuleFields>>(&line.content)) {
        storeRule(std::move(*watch), line);
    } else {
        auto& option = std::get<FilterOption>(line.content);
        m_log.write(logLine("option ", option.name.written(), " set to ", option.value));
        m_options.append(std::move(option));
    }
}

void RulesReading::storeRule(std::shared_ptr<WatchRuleFields> fields, const ParsedLine& line)
{
    fields->sequence = m_sequence++;
    if (m_log.isListening()) {
        m_log.write(logLine("watch policy type ", fields->policyType, " path ", fields->path.written(),
            " proc ", fields->processName.written(), " operations ", fields->operations, " (",
            line.operationsText.view(), ")"));
    }
    RuleList<WatchRule>& rules = m_store.watchRules();
    if (!rules.firstEqual(*fields, line.hash))
        rules.append(recordFor(std::move(fields), line.hash), line.hash);
}

void RulesReading::storeRule(std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash)
{
    fields->sequence = m_sequence++;
    PolicyGroup& group = m_store.groupOf(*fields);
    if (m_log.isListening()) {
        m_log.write(logLine("policy class ", fields->policyClass, " type ", fields->policyType, " path ",
            fields->path.written(), " process ", fields->processName.written(), " operations ",
            fields->operations, " flags ", fields->flags, " constraint ", fields->constraint.written(),
            " to application directory for '", applicationGroupIdentityForFields(*fields), "'"));
    }
    RuleList<PolicyRule>& rules = group.rules();
    if (m_failSafe) {
        const PolicyRulePtr rule = recordFor(std::move(fields), hash);
        if (!m_failSafe->absorbs(*rule, group))
            rules.append(rule);
    } else if (!rules.firstEqual(*fields, hash)) {
        rules.append(recordFor(std::move(fields), hash), hash);
    }
}

PolicyRulePtr RulesReading::recordFor(std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash)
{
    PolicyRulePtr former = m_former ? m_former->take(*fields, hash) : nullptr;
    if (!former)
        return m_policyRules.make(PolicyValue(std::move(fields)));
    former->setValue(std::move(fields));
    former->setInitialized(static_cast<std::uint64_t>(std::time(nullptr)));
    return former;
}

WatchRulePtr RulesReading::recordFor(std::shared_ptr<WatchRuleFields> fields, std::uint64_t hash)
{
    WatchRulePtr former = m_former ? m_former->take(*fields, hash) : nullptr;
    if (!former)
        return m_watchRules.make(WatchValue(std::move(fields)));
    former->setValue(std::move(fields));
    return former;
}

} // namespace quorvane::rules
