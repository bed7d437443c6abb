#include "windows/LikeSelection.h"

#include "windows/ProblemsFinder.h"
#include "windows/RulesTable.h"

#include <QMenu>

#include <memory>
#include <vector>

namespace quorvane::windows {

namespace {

QString titleOf(workflow::RuleTrait trait)
{
    switch (trait) {
    case workflow::RuleTrait::ruleClass:
        return LikeSelection::tr("Same &Class");
    case workflow::RuleTrait::type:
        return LikeSelection::tr("Same &Type");
    case workflow::RuleTrait::state:
        return LikeSelection::tr("Same &State");
    case workflow::RuleTrait::tag:
        return LikeSelection::tr("Same T&ag");
    case workflow::RuleTrait::program:
        return LikeSelection::tr("Same &Program");
    }
    return {};
}

} // namespace

LikeSelection::LikeSelection(RulesTable& table, ProblemsFinder& finder, QMenu& menu)
    : m_table(table)
    , m_finder(finder)
{
    for (const workflow::RuleTrait trait : workflow::allRuleTraits) {
        QAction* item = menu.addAction(titleOf(trait));
        connect(item, &QAction::triggered, this, [this, trait] { select(trait); });
    }
    connect(
        menu.addAction(tr("Same P&roblem")), &QAction::triggered, this, &LikeSelection::selectSameProblem);
    connect(&m_finder, &ProblemsFinder::found, this, [this] {
        if (m_waitsForProblems)
            selectSameProblem();
    });
    connect(&menu, &QMenu::aboutToShow, this, [this, &menu] {
        const bool anySelected = m_table.selection().count() > 0;
        for (QAction* item : menu.actions())
            item->setEnabled(anySelected);
    });
    // The shortcuts must work even if the menu has disabled the items.
    connect(&menu, &QMenu::aboutToHide, this, [&menu] {
        for (QAction* item : menu.actions())
            item->setEnabled(true);
    });
}

LikeSelection::~LikeSelection()
{
    m_stop.request_stop();
}

void LikeSelection::select(workflow::RuleTrait trait)
{
    select([trait](const workflow::RulesSelection& selection) { return rulesLike(selection, trait); });
}

void LikeSelection::selectSameProblem()
{
    m_finder.start();
    m_waitsForProblems = m_finder.isLooking();
    const workflow::ProblemListsPtr problems = m_finder.problems();
    if (m_waitsForProblems || !problems)
        return;
    select([problems](const workflow::RulesSelection& selection) {
        return rulesWithSameProblem(selection, *problems);
    });
}

void LikeSelection::select(const FindAlike& find)
{
    m_waitsForProblems = false;
    m_stop.request_stop(); // only the latest choice counts
    m_stop = {};
    auto alike = std::make_shared<std::vector<rules::RuleRef>>();
    m_thread.run(
        [alike, find, selection = m_table.selection(), stop = m_stop.get_token()] {
            if (!stop.stop_requested())
                *alike = find(selection);
        },
        [this, alike, stop = m_stop.get_token()] {
            if (stop.stop_requested())
                return;
            if (alike->empty())
                m_table.addNotice(
                    {.text = tr("The selected rules have no problem."), .subject = QStringLiteral("like")});
            m_table.selectRules(*alike);
        });
}

} // namespace quorvane::windows
