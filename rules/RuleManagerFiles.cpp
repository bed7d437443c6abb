#include "rules/RuleManager.h"

#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/SystemError.h"
#include "platform/Unicode.h"
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

// How a store reads and writes files.

namespace quorvane::rules {

namespace {

// The part of `text` that a reader of a file with it would use.
std::string_view readablePart(std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    return platform::isValidUtf8(text) ? text : std::string_view();
}

} // namespace

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

} // namespace quorvane::rules
