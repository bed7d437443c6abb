#include "windows/LikeSelection.h"

#include "windows/RulesTable.h"

#include <QMenu>

#include <memory>
#include <vector>

namespace quorvane {

namespace {

QString titleOf(RuleTrait trait)
{
    switch (trait) {
    case RuleTrait::ruleClass:
        return LikeSelection::tr("Same &Class");
    case RuleTrait::type:
        return LikeSelection::tr("Same &Type");
    case RuleTrait::state:
        return LikeSelection::tr("Same &State");
    case RuleTrait::tag:
        return LikeSelection::tr("Same T&ag");
    case RuleTrait::program:
        return LikeSelection::tr("Same &Program");
    }
    return {};
}

} // namespace

LikeSelection::LikeSelection(RulesTable& table, QMenu& menu)
    : m_table(table)
{
    for (const RuleTrait trait : allRuleTraits) {
        QAction* item = menu.addAction(titleOf(trait));
        connect(item, &QAction::triggered, this, [this, trait] { select(trait); });
    }
    connect(&menu, &QMenu::aboutToShow, this, [this, &menu] {
        const bool anySelected = m_table.selection().count() > 0;
        for (QAction* item : menu.actions())
            item->setEnabled(anySelected);
    });
    // Their keys work whatever the menu last said.
    connect(&menu, &QMenu::aboutToHide, this, [&menu] {
        for (QAction* item : menu.actions())
            item->setEnabled(true);
    });
}

LikeSelection::~LikeSelection()
{
    m_stop.request_stop();
}

void LikeSelection::select(RuleTrait trait)
{
    m_stop.request_stop(); // only the latest choice counts
    m_stop = {};
    auto alike = std::make_shared<std::vector<RuleRef>>();
    m_thread.run(
        [alike, trait, selection = m_table.selection(), stop = m_stop.get_token()] {
            if (!stop.stop_requested())
                *alike = rulesLike(selection, trait);
        },
        [this, alike, stop = m_stop.get_token()] {
            if (!stop.stop_requested())
                m_table.selectRules(*alike);
        });
}

} // namespace quorvane
