#include "windows/NarrowBar.h"

#include "rules/RuleCodes.h"
#include "windows/QtText.h"
#include "windows/Shades.h"
#include "windows/WindowLook.h"
#include "workflow/RuleFindings.h"

#include <QAbstractItemView>
#include <QBoxLayout>
#include <QComboBox>
#include <QLabel>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QToolButton>

#include <optional>

namespace quorvane::windows {

namespace {

constexpr int besideHalves = 8; // logical pixels, like the following
constexpr int aboveHalves = 4;
constexpr int betweenChoices = 10;
constexpr int betweenLabelAndChoice = 4;

// The first item of each means everything and has no value.
std::optional<int> chosenCode(const QComboBox& choice)
{
    const QVariant value = choice.currentData();
    return value.isValid() ? std::optional(value.toInt()) : std::nullopt;
}

void takeCode(std::vector<std::int32_t>& wanted, const QComboBox& choice)
{
    if (const auto code = chosenCode(choice))
        wanted = {*code};
}

void takeName(std::vector<std::string>& wanted, const QComboBox& choice)
{
    if (const QVariant value = choice.currentData(); value.isValid())
        wanted = {fromQt(value.toString())};
}

void addName(QComboBox& choice, const QString& title, const QString& name)
{
    choice.addItem(title, name);
    choice.setItemData(choice.count() - 1, name, Qt::ToolTipRole);
}

void addRemark(QComboBox& choice, const QString& text)
{
    choice.addItem(text);
    qobject_cast<QStandardItemModel*>(choice.model())->item(choice.count() - 1)->setEnabled(false);
}

// Replaces the items after the first `kept`.
void offerNames(QComboBox& choice, int kept, const workflow::NamesInUse::List& list)
{
    const QSignalBlocker blocker(choice);
    const QString title = choice.currentText();
    const QVariant chosen = choice.currentData();
    while (choice.count() > kept)
        choice.removeItem(choice.count() - 1);
    for (const std::string& name : list.names)
        addName(choice, toQt(name), toQt(name));
    if (chosen.isValid() && choice.findData(chosen) < 0)
        addName(choice, title, chosen.toString());
    choice.setCurrentIndex(chosen.isValid() ? choice.findData(chosen) : 0);
    if (list.further > 0)
        addRemark(choice, NarrowBar::tr("%1 more: search for them").arg(inWords(list.further)));
}

// Moves to a second line when there is no room beside the first half.
QWidget* makeHalf(QBoxLayout& halves, QWidget* parent)
{
    auto* half = new QWidget(parent);
    auto* layout = new QHBoxLayout(half);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(betweenLabelAndChoice);
    halves.addWidget(half);
    return half;
}

} // namespace

NarrowBar::NarrowBar(QWidget* parent)
    : QWidget(parent)
    , m_halves(new QBoxLayout(QBoxLayout::LeftToRight, this))
    , m_clearButton(new QToolButton(this))
    , m_status(new QLabel(this))
{
    setAccessibleName(tr("Narrow"));
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // the window may be narrower than one row
    m_halves->setContentsMargins(besideHalves, aboveHalves, besideHalves, aboveHalves);
    m_halves->setSpacing(betweenChoices);
    makeHalves();
    fillFixedChoices();
    clear();
    auto* escape = new QShortcut(Qt::Key_Escape, this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, &NarrowBar::leave);
}

void NarrowBar::makeHalves()
{
    QWidget* first = makeHalf(*m_halves, this);
    m_class = addChoice(*first, "classChoice", tr("&Class"), tr("All"));
    m_type = addChoice(*first, "typeChoice", tr("T&ype"), tr("All"));
    m_state = addChoice(*first, "stateChoice", tr("S&tate"), tr("All"));
    QWidget* second = makeHalf(*m_halves, this);
    m_tag = addChoice(*second, "tagChoice", tr("Ta&g"), tr("All"));
    m_problem = addChoice(*second, "problemChoice", tr("&Problem"), tr("All rules"));
    m_program = addChoice(*second, "programChoice", tr("Pr&ogram"), tr("All"));
    m_halves->setStretch(1, 1);
    m_clearButton->setObjectName(QStringLiteral("clearNarrowButton"));
    m_clearButton->setText(tr("Show A&ll"));
    m_clearButton->setToolTip(tr("Show the rules of each class, type, state, tag, problem and program"));
    m_clearButton->setFocusPolicy(Qt::StrongFocus);
    connect(m_clearButton, &QToolButton::clicked, this, &NarrowBar::clear);
    m_status->setObjectName(QStringLiteral("narrowStatus"));
    setTextShade(*m_status, shades::faintText);
    second->layout()->addWidget(m_status);
    second->layout()->addWidget(m_clearButton);
    setTabOrder(m_program, m_clearButton);
    setFocusProxy(m_class);
}

QComboBox* NarrowBar::addChoice(QWidget& half, const char* name, const QString& label, const QString& whole)
{
    auto* layout = qobject_cast<QHBoxLayout*>(half.layout());
    if (layout->count() > 0)
        layout->addSpacing(betweenChoices - betweenLabelAndChoice);
    auto* choice = new QComboBox(&half);
    auto* title = new QLabel(label, &half);
    title->setBuddy(choice);
    measureWithMnemonic(*title);
    choice->setObjectName(QLatin1String(name));
    constexpr int fewestLetters = 7;
    choice->setMinimumContentsLength(fewestLetters);
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    choice->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    choice->addItem(whole);
    layout->addWidget(title);
    layout->addWidget(choice, 1);
    connect(choice, &QComboBox::currentIndexChanged, this, [this] {
        m_clearButton->setEnabled(!criteria().isEmpty());
        Q_EMIT criteriaChanged();
    });
    return choice;
}

// With the same words as the table.
void NarrowBar::fillFixedChoices()
{
    m_class->addItem(tr("Allow"), rules::PolicyClass::allow);
    m_class->addItem(tr("Deny"), rules::PolicyClass::deny);
    m_class->addItem(tr("Watch"), rules::PolicyClass::watch);
    m_type->addItem(tr("Prefix"), rules::PolicyType::prefix);
    m_type->addItem(tr("Path"), rules::PolicyType::path);
    m_type->addItem(tr("Suffix"), rules::PolicyType::suffix);
    m_state->addItem(tr("System"), rules::RuleState::system);
    m_state->addItem(tr("New"), rules::RuleState::recent);
    m_state->addItem(tr("Neither"), rules::RuleState::user);
    m_tag->addItem(tr("No tag"), QString());
    for (const workflow::FindingKind kind : workflow::allFindingKinds) {
        if (kind != workflow::FindingKind::joined) // which belongs to no rule
            m_problem->addItem(toQt(findingTitle(kind)), static_cast<int>(kind));
    }
    constexpr int listWidth = 320; // for names longer than the combo box is wide
    for (QComboBox* choice : {m_tag, m_problem, m_program})
        choice->view()->setMinimumWidth(listWidth);
}

workflow::RuleCriteria NarrowBar::criteria() const
{
    workflow::RuleCriteria criteria;
    takeCode(criteria.classes, *m_class);
    takeCode(criteria.types, *m_type);
    takeCode(criteria.states, *m_state);
    takeName(criteria.tags, *m_tag);
    takeName(criteria.programs, *m_program);
    if (const auto kind = chosenCode(*m_problem))
        criteria.findings = {static_cast<workflow::FindingKind>(*kind)};
    return criteria;
}

// All at once: otherwise each change would filter the table again.
void NarrowBar::clear()
{
    for (QComboBox* choice : {m_class, m_type, m_state, m_tag, m_problem, m_program}) {
        const QSignalBlocker blocker(choice);
        choice->setCurrentIndex(0);
    }
    m_clearButton->setEnabled(false);
    Q_EMIT criteriaChanged();
}

void NarrowBar::setNames(const workflow::NamesInUse& names)
{
    if (names == m_names)
        return;
    constexpr int tagsKept = 2; // all of them, and none
    constexpr int programsKept = 1;
    if (names.tags != m_names.tags)
        offerNames(*m_tag, tagsKept, names.tags);
    if (names.programs != m_names.programs)
        offerNames(*m_program, programsKept, names.programs);
    m_names = names;
}

void NarrowBar::setStatus(const QString& status)
{
    m_status->setText(status);
    m_status->setVisible(!status.isEmpty());
}

// First shows all rules again, then returns to the table.
void NarrowBar::leave()
{
    if (criteria().isEmpty())
        Q_EMIT wasLeft();
    else
        clear();
}

void NarrowBar::resizeEvent(QResizeEvent* /*event*/)
{
    int needed = 2 * besideHalves + betweenChoices;
    for (int half = 0; half < m_halves->count(); ++half)
        needed += m_halves->itemAt(half)->minimumSize().width();
    m_halves->setDirection(needed <= width() ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

} // namespace quorvane::windows
