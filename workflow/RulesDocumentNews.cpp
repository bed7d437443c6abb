#include "workflow/RulesDocument.h"

#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "workflow/DocumentTexts.h"

#include <algorithm>
#include <memory>
#include <utility>

// What a document reports to its observer.

namespace quorvane::workflow {

namespace {

// Above this number, or a tenth of all, rules removed by another program are reported.
constexpr std::size_t manyRules = 20;

bool isMuch(std::size_t lost, std::size_t total)
{
    return lost > manyRules || (lost > 0 && lost * 10 >= total);
}

} // namespace

void RulesDocument::notify(const DocumentNews& news)
{
    m_log.write(news.text);
    if (m_observer != nullptr)
        m_observer->documentHasNews(news);
}

void RulesDocument::reportFile()
{
    if (m_observer != nullptr)
        m_observer->fileStateDidChange();
}

// The first version after the last known one.
std::optional<std::int64_t> RulesDocument::followingVersion() const
{
    return m_knownVersion ? std::optional(*m_knownVersion + 1) : std::nullopt;
}

void RulesDocument::reportMerge(const rules::ChangeSet& done, const std::vector<rules::MergeReport>& reports)
{
    if (const std::string text = mergeText(done, reports); !text.empty()) {
        DocumentNews news{.kind = DocumentNews::Kind::merged, .text = text, .shownFrom = followingVersion()};
        if (isMuch(done.removed.size(), m_store.storedRows()->count(false) + done.removed.size())) {
            news.kind = DocumentNews::Kind::rulesLost;
            news.version = m_knownVersion;
        }
        for (const rules::ChangeSet::Addition& addition : done.added)
            news.rules.push_back(addition.rule);
        notify(news);
    }
}

void RulesDocument::keepPresentVersion()
{
    if (isWorking())
        return;
    auto present = std::make_shared<UserRulesFile::PresentVersion>();
    inBackground(
        DocumentWork::recording,
        [this, present] { *present = m_file.keepPresentVersion(m_owner.lockTimeout); },
        [this, present] { m_knownVersion = present->number; });
}

void RulesDocument::lookAtFile()
{
    if (isWorking() || hasUnwrittenChanges() || !m_knownFile.identity || !isFileAhead()
        || !platform::isAnythingAt(m_file.path()) || std::exchange(m_hasReportedFile, true))
        return;
    notify({.kind = DocumentNews::Kind::fileIsAhead,
        .text = "Another program has changed the rules file. The next change here takes that over.",
        .shownFrom = followingVersion()});
}

void RulesDocument::announceReload()
{
    if (m_observer != nullptr)
        m_observer->rulesWereReloaded();
}

// Another program's version is recorded as soon as it is noticed, so that it can be reverted.
void RulesDocument::recordForeignChange(std::size_t rulesBefore, std::function<std::size_t()> countLost)
{
    struct Found {
        UserRulesFile::PresentVersion present;
        std::size_t lost = 0;
    };
    auto found = std::make_shared<Found>();
    inBackground(
        DocumentWork::recording,
        [this, found, countLost = std::move(countLost)] {
            found->lost = countLost();
            found->present = m_file.keepPresentVersion(m_owner.lockTimeout);
        },
        [this, found, rulesBefore] {
            const auto& [present, lost] = *found;
            const auto known = std::exchange(m_knownVersion, present.number);
            const bool knewAnother = known && known != present.number;
            if (isMuch(lost, rulesBefore))
                notify({.kind = DocumentNews::Kind::rulesLost,
                    .text = "Another program has removed " + countedRules(lost) + ".",
                    .version = knewAnother ? known : present.before,
                    .shownFrom = knewAnother ? std::optional(*known + 1) : present.number});
        });
}

// Only when there are more than before, so that the same message does not follow every change.
void RulesDocument::warnOf(const UnwritableRules& unwritable)
{
    if (unwritable.count() <= std::exchange(m_unwritableRules, unwritable.count()))
        return;
    DocumentNews news{
        .kind = unwritable.cut > 0 ? DocumentNews::Kind::cutShort : DocumentNews::Kind::unwritable,
        .text = unwritableText(unwritable.cut, unwritable.others)};
    for (const rules::RuleValue& rule : unwritable.first) {
        if (const auto stored = m_store.firstEqualRule(rules::recordOf(rule), {}))
            news.rules.push_back(*stored);
    }
    notify(news);
}

} // namespace quorvane::workflow
