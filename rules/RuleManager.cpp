#include "rules/RuleManager.h"

#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/Unicode.h"
#include "rules/ApplicationIdentity.h"
#include "rules/FailSafeMerge.h"
#include "rules/GroupMemo.h"
#include "rules/RuleLine.h"
#include "rules/RulesFile.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

namespace quorvane {

namespace {

// Which optional system file an option leaves out.
struct OptionalSystemFile {
    const char* option;
    const char* file;
};
constexpr std::array<OptionalSystemFile, 4> optionalSystemFiles{{
    {"policy.global.user", "user.rc"},
    {"policy.global.webcam", "webcam.rc"},
    {"policy.global.startup", "startup.rc"},
    {"policy.global.exec", "exec.rc"},
}};
constexpr std::uint32_t leavesFileOut = 2;
constexpr const char* paranoidOption = "policy.global.paranoid";

constexpr std::array boolOptions{"access.user.restrict", "access.user.create"};
constexpr std::array integerOptions{"access.user.detail", "security.hashing.enforce",
    "filter.exec.allow.signed", "policy.global.user", "policy.global.webcam", "policy.global.startup",
    "policy.global.exec", "policy.global.attach", "policy.global.paranoid", "ui.prompts.while_locked",
    "ui.prompts.oob", "ui.prompts.remote", "ui.prompts.authenticate"};

// The pieces of a log line, joined.
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

RuleManager::RuleManager(Locations locations, Log& log)
    : m_locations(std::move(locations))
    , m_log(log)
{
}

RuleManager& RuleManager::sharedManager(const Locations& locations, Log& log)
{
    static RuleManager* const shared = initWithCurrentUserConfiguration(locations, log).release();
    return *shared;
}

std::unique_ptr<RuleManager> RuleManager::initWithCurrentUserConfiguration(Locations locations, Log& log)
{
    const std::string userFile = locations.userRulesFile();
    auto store = initWithContentsOfFile(userFile, false, std::move(locations), log);
    store->loadOptions(); // Deliberate: every option is there twice; the first one counts.
    store->readSelectedSystemFiles();
    return store;
}

std::unique_ptr<RuleManager> RuleManager::initWithContentsOfFile(
    const NullableText& path, bool shouldLabelAsSystemRules, Locations locations, Log& log)
{
    auto store = std::make_unique<RuleManager>(std::move(locations), log);
    store->readOwnFile(path, shouldLabelAsSystemRules);
    store->loadOptions();
    store->rebuildRulesCache();
    return store;
}

void RuleManager::reloadCurrentUserConfiguration()
{
    m_policyRulesByApplication.clear();
    m_orderedGroups.clear();
    m_watchRules.clear();
    m_filterOptions.clear();
    readOwnFile(m_locations.userRulesFile(), false);
    loadOptions();
    readSelectedSystemFiles();
}

void RuleManager::readOwnFile(const NullableText& path, bool shouldLabelAsSystemRules)
{
    const bool hasFailed = !addFileContents(path, shouldLabelAsSystemRules);
    m_unreadRules.reset();
    if (hasFailed)
        m_unreadRules = {*m_lastErrorMessage, true};
    else if (m_lastUnreadReason)
        m_unreadRules = {*m_lastUnreadReason, false};
}

void RuleManager::readSelectedSystemFiles()
{
    readSettings();
    const bool paranoid = m_settings && m_settings->integerForKey(paranoidOption) == 1;
    addFileContents(
        paranoid ? m_locations.paranoidSystemRulesFile() : m_locations.mainSystemRulesFile(), true);
    for (const OptionalSystemFile& optional : optionalSystemFiles) {
        if (getOption(optional.option) != leavesFileOut)
            addFileContents(m_locations.systemFolder() + optional.file, true);
    }
    rebuildRulesCache();
}

bool RuleManager::addFileContents(const NullableText& path, bool shouldLabelAsSystemRules)
{
    m_lastErrorMessage.reset();
    if (path.isNull()) {
        m_log.write("could not open null path");
        m_lastErrorMessage = "Internal error: the path provided was null";
        return false;
    }
    const std::string file(path.view());
    const RulesFileText contents = RulesFileText::read(file);
    m_lastUnreadReason = contents.unreadReason();
    if (contents.errorMessage()) {
        if (contents.isTooLargeForMemory())
            m_log.write("failed to allocate buffer for " + file);
        m_lastErrorMessage = contents.errorMessage();
        return false;
    }
    if (contents.isNothing()) {
        m_log.write("failed to load contents of " + file);
        return true;
    }
    const bool optionsAllowed = file.starts_with(m_locations.mainSystemRulesFile())
        || file.starts_with(m_locations.paranoidSystemRulesFile());
    std::unique_ptr<FailSafeMerge> failSafe;
    if (file == m_locations.failSafeFile())
        failSafe = std::make_unique<FailSafeMerge>();
    GroupMemo groups;
    try {
        useParsedLines(contents.text(), {shouldLabelAsSystemRules, optionsAllowed},
            [&](ParsedLine& line) { storeParsedLine(line, groups, failSafe.get()); });
    } catch (const std::bad_alloc&) {
        m_lastErrorMessage = "Internal error: unable to allocate memory";
        return false;
    }
    return true;
}

void RuleManager::storeParsedLine(ParsedLine& line, GroupMemo& groups, FailSafeMerge* failSafe)
{
    if (auto* policy = std::get_if<std::shared_ptr<PolicyRuleFields>>(&line.content)) {
        storeParsedRule(std::move(*policy), line.hash, groups, failSafe);
    } else if (auto* watch = std::get_if<std::shared_ptr<WatchRuleFields>>(&line.content)) {
        storeParsedRule(std::move(*watch), line);
    } else {
        auto& option = std::get<FilterOption>(line.content);
        m_log.write(logLine("option ", option.name.written(), " set to ", option.value));
        m_filterOptions.push_back(std::move(option));
    }
}

void RuleManager::storeParsedRule(std::shared_ptr<WatchRuleFields> fields, const ParsedLine& line)
{
    fields->sequence = m_ruleSequence++;
    if (m_log.isListening()) {
        m_log.write(logLine("watch policy type ", fields->policyType, " path ", fields->path.written(),
            " proc ", fields->processName.written(), " operations ", fields->operations, " (",
            line.operationsText.view(), ")"));
    }
    if (!m_watchRules.firstEqual(*fields, line.hash))
        m_watchRules.append(std::make_shared<WatchRule>(std::move(fields)), line.hash);
}

void RuleManager::storeParsedRule(
    std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash, GroupMemo& groups, FailSafeMerge* failSafe)
{
    fields->sequence = m_ruleSequence++;
    PolicyGroup* known = groups.find(*fields);
    PolicyGroup& group = known == nullptr ? groupOf(*fields) : *known;
    if (known == nullptr)
        groups.remember(*fields, group);
    if (m_log.isListening()) {
        m_log.write(logLine("policy class ", fields->policyClass, " type ", fields->policyType, " path ",
            fields->path.written(), " process ", fields->processName.written(), " operations ",
            fields->operations, " flags ", fields->flags, " constraint ", fields->constraint.written(),
            " to application directory for '", applicationGroupIdentityForFields(*fields), "'"));
    }
    if (failSafe != nullptr) {
        const auto rule = std::make_shared<PolicyRule>(std::move(fields));
        if (!failSafe->absorbs(*rule, group))
            group.rules().append(rule);
    } else if (!group.rules().firstEqual(*fields, hash)) {
        group.rules().append(std::make_shared<PolicyRule>(std::move(fields)), hash);
    }
}

void RuleManager::readSettings()
{
    m_settings = PropertyList::read(m_locations.preferencesFile());
}

void RuleManager::loadOptions()
{
    readSettings();
    if (!m_settings)
        return;
    for (const char* name : boolOptions)
        loadOptionAsBool(name);
    for (const char* name : integerOptions)
        loadOptionAsInteger(name);
}

void RuleManager::loadOptionAsBool(const std::string& name)
{
    m_filterOptions.push_back({name, m_settings && m_settings->boolForKey(name) ? 1U : 0U});
}

void RuleManager::loadOptionAsInteger(const std::string& name)
{
    const std::int32_t value = m_settings ? m_settings->integerForKey(name) : 0;
    m_filterOptions.push_back({name, static_cast<std::uint32_t>(value)});
}

std::uint32_t RuleManager::getOption(std::string_view name) const
{
    const auto found = std::find_if(m_filterOptions.begin(), m_filterOptions.end(),
        [&](const FilterOption& option) { return option.name.view() == name; });
    return found == m_filterOptions.end() ? 0 : found->value;
}

bool RuleManager::writeToCurrentUserConfiguration()
{
    const std::string path = m_locations.userRulesFile();
    if (m_unreadRules && !m_unreadRules->isFailure) {
        const auto aside = putUnreadFileAside(path);
        if (!aside) {
            m_lastErrorMessage = "Not writing file '" + path + "': " + m_unreadRules->reason
                + ", and it cannot be kept under another name";
            return false;
        }
        m_log.write("keeping '" + path + "', of which not everything was read, as '" + *aside + "'");
        m_unreadRules.reset();
    }
    return writeToFile(path);
}

bool RuleManager::writeToFile(const std::string& path)
{
    return writeLines(path, [this](RulesFileWriter& file) {
        const auto writeUserRule = [&file](const auto& rule) {
            if (!rule->fields().system)
                file.writeLine(ruleLine(rule->fields()));
        };
        m_watchRules.forEach(writeUserRule);
        for (const Groups::value_type* group : orderedGroups())
            group->second.rules().forEach(writeUserRule);
    });
}

bool RuleManager::writeToFile(const std::string& path, const std::vector<RuleRef>& policiesToWrite)
{
    return writeLines(path, [&policiesToWrite](RulesFileWriter& file) {
        for (const RuleRef& rule : policiesToWrite)
            askRule(rule, [&file](const auto& record) { file.writeLine(ruleLine(record.fields())); });
    });
}

bool RuleManager::writeLines(const std::string& path, const std::function<void(RulesFileWriter&)>& write)
{
    RulesFileWriter file(path);
    const bool opened = file.isOpen();
    if (opened) {
        write(file);
        file.finish();
    }
    m_lastErrorMessage = file.errorMessage();
    return opened;
}

void RuleManager::rebuildRulesCache()
{
    m_rulesChanged = true;
}

void RuleManager::applyFilterWithString(const std::string& text)
{
    m_index.setSearchText(text);
    m_rowsChanged = true;
}

void RuleManager::sortIndexUsingDescriptors(std::vector<SortDescriptor> descriptors)
{
    index();
    m_index.setSortDescriptors(std::move(descriptors));
    m_index.sort();
}

std::size_t RuleManager::totalRules(bool includeSystemRules) const
{
    return index().rows()->count(includeSystemRules);
}

const RuleRef& RuleManager::ruleAtIndex(std::size_t row, bool includeSystemRules) const
{
    return index().rows()->at(row, includeSystemRules);
}

std::shared_ptr<const RuleRows> RuleManager::rows() const
{
    return index().rows();
}

std::vector<PolicyRulePtr> RuleManager::policyRules() const
{
    return index().passingPolicyRules();
}

bool RuleManager::hasEqualPolicyRule(const PolicyRule& rule) const
{
    const std::uint64_t hash = identityHash(rule);
    const auto isIn = [&](const PolicyGroup& group) {
        const auto passes = [this](const PolicyRule& stored) { return m_index.passes(stored); };
        return group.rules().firstEqual(rule.fields(), hash, passes) != nullptr;
    };
    if (const PolicyGroup* group = existingGroupOf(rule.fields()); group != nullptr && isIn(*group))
        return true;
    // A rule that was changed after it was stored stays in the group of its former application.
    return std::any_of(m_policyRulesByApplication.begin(), m_policyRulesByApplication.end(),
        [&](const auto& group) { return group.second.rules().hasStrays() && isIn(group.second); });
}

std::vector<std::string> RuleManager::sortedKeys() const
{
    std::vector<std::string> keys;
    for (const Groups::value_type* group : orderedGroups())
        keys.push_back(group->first);
    return keys;
}

bool RuleManager::addWatchRule(const WatchRulePtr& rule)
{
    m_watchRules.append(rule);
    rebuildRulesCache();
    return true;
}

bool RuleManager::addPolicyRule(const PolicyRulePtr& rule)
{
    groupOf(rule->fields()).rules().append(rule);
    rebuildRulesCache();
    return true;
}

bool RuleManager::deleteWatchRule(const WatchRule& rule)
{
    const std::size_t slot = m_watchRules.slotOfFirstEqual(rule.fields(), identityHash(rule));
    if (slot == RuleList<WatchRule>::noSlot)
        return false;
    m_watchRules.removeAt(slot);
    rebuildRulesCache();
    return true;
}

bool RuleManager::deletePolicyRule(const PolicyRule& rule)
{
    const auto group = m_policyRulesByApplication.find(applicationGroupIdentityForRule(rule));
    if (group == m_policyRulesByApplication.end())
        return false;
    RuleList<PolicyRule>& rules = group->second.rules();
    const std::size_t slot = rules.slotOfFirstEqual(rule.fields(), identityHash(rule));
    if (slot == RuleList<PolicyRule>::noSlot)
        return false;
    rules.removeAt(slot);
    rebuildRulesCache();
    return true;
}

bool RuleManager::takeOutWatchRule(const WatchRule& rule)
{
    return remove(rule, nullptr) || deleteWatchRule(rule);
}

bool RuleManager::takeOutPolicyRule(const PolicyRule& rule)
{
    return remove(rule, nullptr) || deletePolicyRule(rule);
}

WatchRulePtr RuleManager::firstEqualRule(const WatchRule& rule) const
{
    return m_watchRules.firstEqual(rule);
}

PolicyRulePtr RuleManager::firstEqualRule(const PolicyRule& rule) const
{
    const PolicyGroup* group = existingGroupOf(rule.fields());
    return group == nullptr ? nullptr : group->rules().firstEqual(rule);
}

const PolicyRule* RuleManager::coveringRule(const PolicyRule& rule) const
{
    const PolicyGroup* group = existingGroupOf(rule.fields());
    return group == nullptr ? nullptr : group->firstCovering(rule);
}

PolicyGroup& RuleManager::groupOf(const PolicyRuleFields& rule)
{
    const auto [group, isNew]
        = m_policyRulesByApplication.try_emplace(applicationGroupIdentityForFields(rule), m_ruleChanges);
    if (isNew)
        m_orderedGroups.clear();
    return group->second;
}

const PolicyGroup* RuleManager::existingGroupOf(const PolicyRuleFields& rule) const
{
    const auto group = m_policyRulesByApplication.find(applicationGroupIdentityForFields(rule));
    return group == m_policyRulesByApplication.end() ? nullptr : &group->second;
}

const std::vector<const RuleManager::Groups::value_type*>& RuleManager::orderedGroups() const
{
    if (!m_orderedGroups.empty() || m_policyRulesByApplication.empty())
        return m_orderedGroups;
    std::vector<std::pair<std::string, const Groups::value_type*>> keyed;
    for (const Groups::value_type& group : m_policyRulesByApplication)
        keyed.emplace_back(foldedCase(group.first), &group);
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : a.second->first < b.second->first;
    });
    for (const auto& [key, group] : keyed)
        m_orderedGroups.push_back(group);
    return m_orderedGroups;
}

const RuleIndex& RuleManager::index() const
{
    if (std::exchange(m_rulesChanged, false)) {
        std::size_t total = m_watchRules.size();
        for (const Groups::value_type* group : orderedGroups())
            total += group->second.rules().size();
        std::vector<RuleRef> rules;
        rules.reserve(total);
        const auto collect = [&rules](const auto& rule) { rules.emplace_back(rule); };
        m_watchRules.forEach(collect);
        for (const Groups::value_type* group : orderedGroups())
            group->second.rules().forEach(collect);
        m_index.setRules(std::move(rules), m_ruleChanges);
    } else if (m_rowsChanged) {
        m_index.rebuild(m_ruleChanges);
    }
    m_rowsChanged = false;
    return m_index;
}

std::vector<RuleRef> RuleManager::userRules() const
{
    std::vector<RuleRef> rules;
    const auto collect = [&rules](const auto& rule) {
        if (!rule->fields().system)
            rules.emplace_back(rule);
    };
    m_watchRules.forEach(collect);
    for (const Groups::value_type* group : orderedGroups())
        group->second.rules().forEach(collect);
    return rules;
}

RulesSnapshot RuleManager::userRulesSnapshot() const
{
    std::vector<RuleValue> values;
    for (const RuleRef& rule : userRules())
        values.push_back(valueOf(rule));
    return RulesSnapshot(std::move(values));
}

ChangeSet RuleManager::apply(const ChangeSet& changes)
{
    ChangeSet done;
    for (const ChangeSet::Removal& removal : changes.removed) {
        ChangeSet::Removal removed{removal.rule, {}, valueOf(removal.rule)};
        if (askRule(removal.rule, [&](const auto& rule) { return remove(rule, &removed.place); }))
            done.removed.push_back(std::move(removed));
    }
    for (const ChangeSet::Change& change : changes.changed) {
        if (isStored(change.rule)) {
            done.changed.push_back({change.rule, valueOf(change.rule), change.after});
            setValue(change.rule, change.after);
        } else if (add({change.rule, change.after})) {
            done.added.push_back({change.rule, change.after});
        }
    }
    for (const ChangeSet::Addition& addition : changes.added) {
        if (add(addition))
            done.added.push_back(addition);
    }
    rebuildRulesCache();
    return done;
}

// The list and the slot in which a record is stored; the list is null when it is not. A rule that was changed
// after it was stored stays in the group of its former application.
std::pair<RuleList<WatchRule>*, std::size_t> RuleManager::placeOf(const WatchRule& rule)
{
    const std::size_t slot = m_watchRules.slotOf(rule);
    return {slot == RuleList<WatchRule>::noSlot ? nullptr : &m_watchRules, slot};
}

std::pair<RuleList<PolicyRule>*, std::size_t> RuleManager::placeOf(const PolicyRule& rule)
{
    const auto own = m_policyRulesByApplication.find(applicationGroupIdentityForRule(rule));
    if (own != m_policyRulesByApplication.end()) {
        const std::size_t slot = own->second.rules().slotOf(rule);
        if (slot != RuleList<PolicyRule>::noSlot)
            return {&own->second.rules(), slot};
    }
    for (Groups::value_type& group : m_policyRulesByApplication) {
        if (!group.second.rules().hasStrays())
            continue;
        const std::size_t slot = group.second.rules().slotOf(rule);
        if (slot != RuleList<PolicyRule>::noSlot)
            return {&group.second.rules(), slot};
    }
    return {nullptr, 0};
}

bool RuleManager::isStored(const RuleRef& rule)
{
    return askRule(rule, [this](const auto& record) { return placeOf(record).first != nullptr; });
}

// Takes the very record out and fills in where it stood, when wanted; false when it is not stored.
template <class Rule> bool RuleManager::remove(const Rule& rule, ChangeSet::Place* stood)
{
    const auto [list, slot] = placeOf(rule);
    if (list == nullptr)
        return false;
    if (stood != nullptr) {
        *stood = {ChangeSet::Place::start, {}};
        for (std::size_t before = slot; before-- > 0;) {
            if (const auto& predecessor = list->slots()[before]) {
                *stood = {ChangeSet::Place::behind, RuleRef(predecessor)};
                break;
            }
        }
    }
    list->removeAt(slot);
    rebuildRulesCache();
    return true;
}

bool RuleManager::add(const ChangeSet::Addition& addition)
{
    if (isStored(addition.rule))
        return false;
    setValue(addition.rule, addition.value);
    if (const auto* policy = std::get_if<PolicyRulePtr>(&addition.rule))
        insert(groupOf((*policy)->fields()).rules(), *policy, addition.place);
    else
        insert(m_watchRules, std::get<WatchRulePtr>(addition.rule), addition.place);
    return true;
}

template <class Rule>
void RuleManager::insert(
    RuleList<Rule>& list, const std::shared_ptr<Rule>& rule, const ChangeSet::Place& place)
{
    if (place.kind == ChangeSet::Place::start)
        return list.insert(0, rule);
    const auto* neighbour = place.rule ? std::get_if<std::shared_ptr<Rule>>(&*place.rule) : nullptr;
    if (place.kind == ChangeSet::Place::behind && neighbour != nullptr) {
        const std::size_t slot = list.slotOf(**neighbour);
        if (slot != RuleList<Rule>::noSlot)
            return list.insert(slot + 1, rule);
    }
    list.append(rule);
}

} // namespace quorvane
