#include "windows/PlaceMenu.h"

#include "windows/FilePanel.h"
#include "windows/QtText.h"
#include "windows/RulesTable.h"

#include <QActionGroup>
#include <QMenu>

#include <system_error>

namespace quorvane::windows {

namespace {

constexpr const char* usualVolumes = "/media/";

}

PlaceMenu::PlaceMenu(QMenu& menu, QWidget& window, RulesTable& table)
    : m_window(window)
    , m_table(table)
    , m_items(new QActionGroup(this))
    , m_thisMachine(addItem(tr("This &Machine")))
    , m_volume(addItem(tr("A Mounted &Volume...")))
    , m_elsewhere(addItem(tr("&Somewhere Else")))
    , m_chosen(m_thisMachine)
{
    m_thisMachine->setChecked(true);
    menu.addActions(m_items->actions());
    connect(m_thisMachine, &QAction::triggered, this,
        [this] { choose(m_thisMachine, workflow::RulesPlace::thisMachine(), {}); });
    connect(m_volume, &QAction::triggered, this, &PlaceMenu::chooseVolume);
    connect(m_elsewhere, &QAction::triggered, this,
        [this] { choose(m_elsewhere, workflow::RulesPlace::nowhere(), tr("somewhere else")); });
}

QAction* PlaceMenu::addItem(const QString& title)
{
    QAction* item = m_items->addAction(title);
    item->setCheckable(true);
    return item;
}

bool PlaceMenu::isThisMachine() const
{
    return m_chosen == m_thisMachine;
}

void PlaceMenu::choose(QAction* item, const workflow::RulesPlace& place, const QString& name)
{
    m_chosen = item;
    m_place = place;
    Q_EMIT placeChosen(place, name);
}

void PlaceMenu::chooseVolume()
{
    m_chosen->setChecked(true); // until a volume is chosen
    const auto folder
        = chooseFileOrFolder(m_window, tr("Volume of the machine that the rules are for"), usualVolumes);
    if (folder)
        useVolume(*folder);
}

void PlaceMenu::useVolume(const std::string& folder)
{
    std::error_code error;
    const auto place = workflow::RulesPlace::folder(folder, error);
    if (!place)
        return m_table.addNotice(
            {.text = tr("%1 cannot be used as a volume: %2").arg(toQt(folder), toQt(error.message())),
                .subject = QStringLiteral("place")});
    m_volume->setChecked(true);
    choose(m_volume, *place, toQt(folder));
}

} // namespace quorvane::windows
