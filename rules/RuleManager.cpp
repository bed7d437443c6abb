#include "rules/RuleManager.h"

#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/SystemError.h"
#include "platform/Unicode.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleLine.h"
#include "rules/RulesContent.h"
#include "rules/RulesFile.h"
#include "rules/RulesFileWriter.h"
#include "rules/RulesParser.h"
#include "rules/RulesReading.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>

namespace quorvane::rules {

namespace {

// The part of `text` that a reader of a file with it would use.
std::string_view readablePart(std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    return platform::isValidUtf8(text) ? text : std::string_view();
}

} // namespace

RuleManager::RuleManager(platform::Locations locations, platform::Log& log, std::chrono::milliseconds wait)
    : m_locations(std::move(locations))
    , m_log(log)
    , m_wait(wait)
    , m_store(std::make_unique<RuleStore>())
{
}

RuleManager& RuleManager::sharedManager(const platform::Locations& locations, platform::Log& log)
{
    static RuleManager* const shared = initWithCurrentUserConfiguration(locations, log).release();
    return *shared;
}

std::unique_ptr<RuleManager> RuleManager::initWithCurrentUserConfiguration(
    platform::Locations locations, platform::Log& log, std::chrono::milliseconds wait)
{
    const std::string userFile = locations.userRulesFile();
    auto store = initWithContentsOfFile(userFile, false, std::move(locations), log, wait);
    store->loadOptions(); // Deliberate: every option is there twice; the first one counts.
    store->readSelectedSystemFiles();
    return store;
}

std::unique_ptr<RuleManager> RuleManager::initWithContentsOfFile(const NullableText& path,
    bool shouldLabelAsSystemRules, platform::Locations locations, platform::Log& log,
    std::chrono::milliseconds wait)
{
    auto store = std::make_unique<RuleManager>(std::move(locations), log, wait);
    store->readOwnFile(path, shouldLabelAsSystemRules);
    store->loadOptions();
    store->rebuildRulesCache();
    return store;
}

std::unique_ptr<RuleManager> RuleManager::initWithText(
    std::string_view text, const std::string& path, platform::Locations locations, platform::Log& log)
{
    auto store = std::make_unique<RuleManager>(std::move(locations), log);
    store->addText(readablePart(text), path, false);
    store->loadOptions();
    store->rebuildRulesCache();
    return store;
}

void RuleManager::reloadCurrentUserConfiguration()
{
    reloadAs([this] { readOwnFile(m_locations.userRulesFile(), false); });
}

void RuleManager::reloadCurrentUserConfiguration(std::string_view userText)
{
    reloadAs([this, userText] {
        m_unreadRules.reset();
        addText(readablePart(userText), m_locations.userRulesFile(), false);
    });
}

// A rule that is equal before and after keeps its record, so that records held elsewhere stay the store's.
void RuleManager::reloadAs(const std::function<void()>& readUserRules)
{
    const bool hasRoom = attempt([this] {
        auto store = std::make_unique<RuleStore>();
        store->setView(*m_store);
        m_former = std::exchange(m_store, std::move(store));
    });
    if (!hasRoom)
        return;
    m_options.clear();
    m_readFailures.clear();
    const bool isRead = attempt([&] {
        readUserRules();
        loadOptions();
        readSelectedSystemFiles();
    });
    if (!isRead) // not everything was read
        m_unreadRules = {*m_lastErrorMessage, true};
    m_former.reset();
}

void RuleManager::readOwnFile(const NullableText& path, bool shouldLabelAsSystemRules)
{
    const bool hasFailed = !addFileContents(path, shouldLabelAsSystemRules);
    m_ownFile = m_lastFile;
    ++m_ownFileReadings;
    m_unreadRules.reset();
    if (hasFailed)
        m_unreadRules = {*m_lastErrorMessage, true};
    else if (m_lastUnreadReason)
        m_unreadRules = {*m_lastUnreadReason, false};
}

void RuleManager::readSelectedSystemFiles()
{
    readPreferences();
    addFileContents(
        m_options.areParanoid() ? m_locations.paranoidSystemRulesFile() : m_locations.mainSystemRulesFile(),
        true);
    for (const auto& optional : FilterOptions::optionalSystemFiles) {
        if (!m_options.leaveOut(optional)) // the previous file may have set the option
            addFileContents(m_locations.systemFolder() + optional.name, true);
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
    RulesFileText contents = RulesFileText::read(file, m_wait);
    m_lastUnreadReason = contents.unreadReason();
    m_lastFile = KnownFile::of(file, contents);
    if (contents.errorMessage()) {
        if (contents.isTooLargeForMemory())
            m_log.write("failed to allocate buffer for " + file);
        m_lastErrorMessage = contents.errorMessage();
        noteReadFailure(*m_lastErrorMessage);
        return false;
    }
    if (contents.isNothing()) {
        m_log.write("failed to load contents of " + file);
        return true;
    }
    return addText(contents.text(), file, shouldLabelAsSystemRules,
        [&contents](std::string_view part) { contents.discard(part); });
}

bool RuleManager::addUserText(std::string_view text, const std::function<void(std::string_view)>& discard)
{
    return addText(readablePart(text), m_locations.userRulesFile(), false, discard);
}

// Adds the rules of `text`, the current or future contents of `file`. What has been read of it is discarded,
// or text and rules of a long file would be in memory together.
bool RuleManager::addText(std::string_view text, const std::string& file, bool shouldLabelAsSystemRules,
    const std::function<void(std::string_view)>& discard)
{
    const bool optionsAllowed = file.starts_with(m_locations.mainSystemRulesFile())
        || file.starts_with(m_locations.paranoidSystemRulesFile());
    try {
        RulesReading reading(*m_store, m_former.get(), m_options, m_ruleSequence, m_log);
        if (file == m_locations.failSafeFile())
            reading.mergeAsFailSafe();
        useParsedLines(
            text, {shouldLabelAsSystemRules, optionsAllowed},
            [&](std::vector<ParsedLine>& lines) { reading.store(lines); }, discard);
    } catch (const std::bad_alloc&) {
        m_lastErrorMessage = "Internal error: unable to allocate memory";
        return false;
    }
    return true;
}

void RuleManager::readPreferences()
{
    const std::string path = m_locations.preferencesFile();
    std::error_code error;
    m_options.setPreferences(platform::PropertyList::read(path, error));
    if (error && error != std::errc::no_such_file_or_directory)
        noteReadFailure("Failed to read file '" + path + "': " + platform::errorText(error));
}

void RuleManager::noteReadFailure(const std::string& message)
{
    if (std::find(m_readFailures.begin(), m_readFailures.end(), message) == m_readFailures.end())
        m_readFailures.push_back(message);
}

void RuleManager::loadOptions()
{
    readPreferences();
    m_options.loadAll();
}

void RuleManager::loadOptionAsBool(const std::string& name)
{
    m_options.loadAsBool(name);
}

void RuleManager::loadOptionAsInteger(const std::string& name)
{
    m_options.loadAsInteger(name);
}

bool RuleManager::writeToCurrentUserConfiguration()
{
    const std::string path = m_locations.userRulesFile();
    if (m_unreadRules && !m_unreadRules->isFailure) {
        const auto aside = platform::putUnreadFileAside(path);
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
    return writeContent(path, [this](RulesContent& content) {
        m_store->forEachUserRule([&content](const auto& rule) { content.append(rule->fields()); });
    });
}

bool RuleManager::writeToFile(const std::string& path, const std::vector<RuleRef>& policiesToWrite)
{
    return writeContent(path, [&policiesToWrite](RulesContent& content) {
        forEachRule(policiesToWrite, [&content](const RuleRef& rule) { content.append(rule); });
    });
}

bool RuleManager::writeContent(const std::string& path, const std::function<void(RulesContent&)>& make)
{
    m_writeWarnings.clear();
    WriteResult result;
    const bool hasRoom = attempt([&] {
        const std::int64_t size = m_ownFile.identity ? m_ownFile.identity->size : 0;
        RulesContent content(LineEnds::cut, storedRules(), static_cast<std::uintmax_t>(size));
        make(content);
        result = writeRulesFile(path, content);
    });
    if (!hasRoom)
        return false;
    m_lastErrorMessage = std::move(result.message);
    m_writeWarnings = std::move(result.warnings);
    return result.opened;
}

void RuleManager::rebuildRulesCache()
{
    m_store->rebuildRows();
}

void RuleManager::applyFilterWithString(const std::string& text)
{
    attempt([&] { m_store->setSearchText(text); });
}

void RuleManager::sortIndexUsingDescriptors(std::vector<SortDescriptor> descriptors)
{
    attempt([&] { m_store->sort(std::move(descriptors)); });
}

std::size_t RuleManager::totalRules(bool includeSystemRules) const
{
    return presentRows().count(includeSystemRules);
}

const RuleRef& RuleManager::ruleAtIndex(std::size_t row, bool includeSystemRules) const
{
    return presentRows().at(row, includeSystemRules);
}

std::shared_ptr<const RuleRows> RuleManager::rows() const
{
    attempt([this] { m_store->rows(); });
    return m_store->presentRows();
}

std::optional<RowsComputation> RuleManager::longComputation(std::size_t manyRules) const
{
    std::optional<RowsComputation> computation;
    attempt([&] { computation = m_store->longComputation(manyRules); });
    return computation;
}

std::shared_ptr<const RuleRows> RuleManager::storedRows() const
{
    auto rows = std::make_shared<const RuleRows>();
    attempt([&] { rows = m_store->storedRows(); });
    return rows;
}

bool RuleManager::hasExactly(const RuleRows& stored) const
{
    return m_store->hasExactly(stored);
}

std::vector<PolicyRulePtr> RuleManager::policyRules() const
{
    std::vector<PolicyRulePtr> rules;
    attempt([&] { rules = m_store->passingPolicyRules(); });
    return rules;
}

bool RuleManager::hasEqualPolicyRule(const PolicyRule& rule) const
{
    bool isThere = false;
    attempt([&] {
        isThere = m_store->hasEqual(
            rule.fields(), [this](const PolicyRule& stored) { return m_store->passes(stored); });
    });
    return isThere;
}

std::vector<std::string> RuleManager::sortedKeys() const
{
    std::vector<std::string> keys;
    attempt([&] {
        for (const RuleStore::Groups::value_type* group : m_store->orderedGroups())
            keys.push_back(group->first);
    });
    return keys;
}

bool RuleManager::addWatchRule(const WatchRulePtr& rule)
{
    rebuildRulesCache();
    return appendWatchRule(rule);
}

bool RuleManager::appendWatchRule(const WatchRulePtr& rule)
{
    return attempt([&] { m_store->append(rule); });
}

bool RuleManager::addPolicyRule(const PolicyRulePtr& rule)
{
    rebuildRulesCache();
    return attempt([&] { m_store->append(rule); });
}

bool RuleManager::deleteWatchRule(const WatchRule& rule)
{
    return m_store->removeFirstEqual(rule);
}

bool RuleManager::deletePolicyRule(const PolicyRule& rule)
{
    bool isDone = false;
    attempt([&] { isDone = m_store->removeFirstEqual(rule); });
    return isDone;
}

bool RuleManager::takeOutWatchRule(const WatchRule& rule)
{
    return m_store->remove(rule) || deleteWatchRule(rule);
}

bool RuleManager::takeOutPolicyRule(const PolicyRule& rule)
{
    bool isDone = false;
    attempt([&] { isDone = m_store->remove(rule); });
    return isDone || deletePolicyRule(rule);
}

WatchRulePtr RuleManager::firstEqualRule(const WatchRule& rule) const
{
    return m_store->watchRules().firstEqual(rule);
}

PolicyRulePtr RuleManager::firstEqualRule(const PolicyRule& rule) const
{
    PolicyRulePtr equal;
    attempt([&] {
        const PolicyGroup* group = m_store->existingGroupOf(rule.fields());
        equal = group == nullptr ? nullptr : group->rules().firstEqual(rule);
    });
    return equal;
}

const PolicyRule* RuleManager::coveringRule(const PolicyRule& rule) const
{
    const PolicyRule* covering = nullptr;
    attempt([&] {
        const PolicyGroup* group = m_store->existingGroupOf(rule.fields());
        covering = group == nullptr ? nullptr : group->firstCovering(rule);
    });
    return covering;
}

ChangeSet RuleManager::apply(const ChangeSet& changes)
{
    ChangeSet done;
    attempt([&] { done = applied(changes); });
    return done;
}

ChangeSet RuleManager::apply(ChangeSet&& changes)
{
    ChangeSet done;
    attempt([&] { done = applied(std::move(changes)); });
    return done;
}

ChangeSet RuleManager::applied(ChangeSet changes)
{
    if (!changes.whole) {
        m_exchange.dropUnneeded();
        return m_store->apply(std::move(changes));
    }
    if (m_exchange.perform(m_store, *changes.whole))
        return changes;
    return m_store->apply(ruleByRule(*changes.whole));
}

std::optional<ChangeSet> RuleManager::removalOfAllUserRules() const
{
    std::optional<ChangeSet> removal;
    attempt([&] {
        if (!m_store->canRemoveAllAtOnce())
            return;
        const auto rules = std::make_shared<const WholeRules>(
            WholeRules{m_store->storedRows(), m_store->userRulesSnapshot()});
        removal.emplace();
        removal->whole = ChangeSet::Whole{true, rules};
    });
    return removal;
}

std::vector<RuleRef> RuleManager::allRules() const
{
    std::vector<RuleRef> rules;
    attempt([&] { m_store->forEachRule([&rules](const auto& rule) { rules.emplace_back(rule); }); });
    return rules;
}

std::vector<RuleRef> RuleManager::userRules() const
{
    std::vector<RuleRef> rules;
    m_store->forEachUserRule([&rules](const auto& rule) { rules.emplace_back(rule); });
    return rules;
}

RulesSnapshot RuleManager::userRulesSnapshot() const
{
    return m_store->userRulesSnapshot();
}

bool RuleManager::isStored(const RuleRef& rule) const
{
    bool isStored = false;
    attempt([&] { isStored = m_store->isStored(rule); });
    return isStored;
}

std::optional<RuleRef> RuleManager::firstEqualRule(
    const RuleRef& rule, const std::unordered_set<const void*>& excluded) const
{
    std::optional<RuleRef> equal;
    attempt([&] {
        equal = m_store->firstEqual(
            rule, [&excluded](const void* record) { return !excluded.contains(record); });
    });
    return equal;
}

std::vector<RuleRef> RuleManager::firstEqualRules(const std::vector<RuleRef>& rules) const
{
    std::vector<RuleRef> equal;
    attempt([&] { equal = m_store->firstEqualRules(rules); });
    return equal;
}

// The previous rows when there is no memory for new ones.
const RuleRows& RuleManager::presentRows() const
{
    attempt([this] { m_store->rows(); });
    return *m_store->presentRows();
}

} // namespace quorvane::rules
