#include "windows/RuleStrip.h"

#include "desktop/Workspace.h"
#include "rules/ApplicationIdentity.h"
#include "windows/QtText.h"
#include "windows/RuleFixes.h"
#include "windows/RulesTable.h"
#include "windows/SelectableText.h"
#include "windows/Shades.h"
#include "windows/StateImages.h"
#include "workflow/RuleSentence.h"
#include "workflow/RulesDocument.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>

#include <memory>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr int iconPixels = 32;
constexpr int besideText = 10;
constexpr int aboveText = 6;
constexpr int shownLines = 7; // initially

std::string pathOfParent(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) {
        return applicationParentPathForProcess(fields.processName).value_or(std::string());
    });
}

std::string pathOfProgram(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return applicationPathForProcess(fields.processName); });
}

} // namespace

// Results of the other thread.
struct RuleStrip::RuleFacts {
    std::vector<workflow::RuleProblem> problems;
    std::string iconFile;
    std::optional<platform::FileRoot> iconRoot;
    bool isIconFileMissing = false; // then a placeholder is shown
};

RuleStrip::RuleStrip(RulesTable& table, workflow::RulesDocument& document, RuleFixes& fixes,
    desktop::Workspace& workspace, QWidget* parent)
    : QScrollArea(parent)
    , m_table(table)
    , m_document(document)
    , m_fixes(fixes)
    , m_workspace(workspace)
{
    setAccessibleName(tr("Rule in words"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto* content = new QWidget(this);
    setWidget(content);
    m_icon = new QLabel(content);
    m_icon->setFixedSize(iconPixels, iconPixels);
    m_icon->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    m_sentence = new SelectableText(content);
    m_sentence->setAccessibleName(tr("What the rule says"));
    m_details = new SelectableText(content);
    m_details->setAccessibleName(tr("Details of the rule"));
    m_details->setShade(shades::faintText);
    m_problems = new ProblemList(content);
    m_problems->setAccessibleName(tr("Problems of the rule"));

    auto* texts = new QVBoxLayout;
    texts->setSpacing(aboveText);
    for (QWidget* each : {static_cast<QWidget*>(m_sentence), static_cast<QWidget*>(m_details),
             static_cast<QWidget*>(m_problems)})
        texts->addWidget(each);
    texts->addStretch(1);
    auto* layout = new QHBoxLayout(content);
    layout->setContentsMargins(besideText, aboveText, besideText, aboveText);
    layout->setSpacing(besideText);
    layout->addWidget(m_icon, 0, Qt::AlignTop);
    layout->addLayout(texts, 1);

    m_due.setSingleShot(true);
    connect(&m_due, &QTimer::timeout, this, &RuleStrip::showSelection);
    showNothing();
}

RuleStrip::~RuleStrip()
{
    m_looking.request_stop();
}

QSize RuleStrip::sizeHint() const
{
    return {0, shownLines * fontMetrics().lineSpacing() + 2 * aboveText};
}

void RuleStrip::setPlace(const workflow::RulesPlace& place)
{
    m_place = place;
    selectionDidChange();
}

// Coalesces several changes into one update.
void RuleStrip::selectionDidChange()
{
    m_due.start(0);
}

void RuleStrip::showSelection()
{
    m_looking.request_stop();
    m_looking = {};
    const workflow::RulesSelection selection = m_table.selection();
    if (const auto rule = selection.onlyRule())
        return showRule(*rule);
    if (selection.count() > 0)
        return showSeveral(selection);
    showNothing();
    Q_EMIT wasFilled();
}

void RuleStrip::showNothing()
{
    m_icon->hide();
    m_sentence->setShade(shades::faintText);
    m_sentence->setText(tr("Select a rule to read here what it says."));
    m_details->hide();
    m_problems->setProblems({});
    m_shown.reset();
}

void RuleStrip::showRule(const rules::RuleRef& rule)
{
    const rules::RuleValue value = valueOf(rule);
    if (std::exchange(m_shown, rule) != rule)
        m_problems->setProblems({}); // their buttons are for another rule
    m_sentence->setShade(shades::text);
    m_sentence->setText(toQt(workflow::ruleSentence(value)));
    const QString details = toQt(workflow::ruleDetails(value));
    m_details->setText(details);
    m_details->setVisible(!details.isEmpty());

    auto facts = std::make_shared<RuleFacts>();
    const rules::LineEnds lineEnds = m_document.settings().lineEnds();
    m_thread.run(
        [=, place = m_place, stop = m_looking.get_token()] {
            if (stop.stop_requested())
                return;
            facts->problems = problemsOfRuleAlone(value, place, lineEnds);
            facts->iconFile = askValue(
                value, [](const auto& fields) { return applicationBundlePathForPath(fields.processName); });
            facts->iconRoot = place.root();
            facts->isIconFileMissing = facts->iconFile.starts_with('/') && place.isMissing(facts->iconFile);
        },
        [=, this, stop = m_looking.get_token()] {
            if (stop.stop_requested())
                return;
            showIcon(*facts);
            showProblems(rule, facts->problems);
            Q_EMIT wasFilled();
        });
}

void RuleStrip::showIcon(const RuleFacts& facts)
{
    const QIcon icon = facts.isIconFileMissing ? missingProgramImage()
                                               : m_workspace.iconForFile(facts.iconFile, facts.iconRoot);
    m_icon->setPixmap(icon.pixmap(QSize(iconPixels, iconPixels), devicePixelRatioF()));
    m_icon->show();
}

void RuleStrip::showProblems(const rules::RuleRef& rule, const std::vector<workflow::RuleProblem>& alone)
{
    std::vector<ShownProblem> problems;
    const bool isStored = m_document.store().isStored(rule);
    if (const auto covering
        = isStored ? workflow::storedCoveringRule(m_document.store(), rule) : std::nullopt)
        problems.push_back(coverProblem(rule, *covering));
    for (const workflow::RuleProblem& problem : alone)
        problems.push_back(shownProblem(rule, problem));
    m_problems->setProblems(problems);
}

ShownProblem::Button RuleStrip::deleteButton(const rules::RuleRef& rule, const QString& title)
{
    return {title, [this, rule] { m_fixes.remove(rule); }};
}

ShownProblem RuleStrip::coverProblem(const rules::RuleRef& rule, const rules::RuleRef& covering)
{
    const workflow::RuleProblem problem = problemWith(workflow::FindingKind::redundant, valueOf(covering));
    ShownProblem shown{
        toQt(problem.text), toQt(problem.help), {{tr("Show"), [this, covering] { m_fixes.show(covering); }}}};
    if (!isSystemRule(rule))
        shown.buttons.push_back(deleteButton(rule, tr("Delete This One")));
    return shown;
}

ShownProblem RuleStrip::shownProblem(const rules::RuleRef& rule, const workflow::RuleProblem& problem)
{
    return {toQt(problem.text), toQt(problem.help),
        isSystemRule(rule) ? std::vector<ShownProblem::Button>() : buttonsFor(rule, problem)};
}

std::vector<ShownProblem::Button> RuleStrip::buttonsFor(
    const rules::RuleRef& rule, const workflow::RuleProblem& problem)
{
    const auto mover = [this](std::string path) -> ShownProblem::Button {
        return {tr("Choose..."), [this, path = std::move(path)] { m_fixes.moveProgram(path); }};
    };
    const ShownProblem::Button edit{tr("Edit..."), [this, rule] { Q_EMIT editRequested(rule); }};
    switch (problem.fix) {
    case workflow::RuleProblem::Fix::drop:
        return {edit, deleteButton(rule, tr("Delete"))};
    case workflow::RuleProblem::Fix::chooseProgram:
        return {mover(pathOfProgram(valueOf(rule)))};
    case workflow::RuleProblem::Fix::chooseParent:
        return {mover(pathOfParent(valueOf(rule)))};
    case workflow::RuleProblem::Fix::rebind:
        return {{tr("Bind Anew"), [this, rule] { m_fixes.rebind(rule); }}};
    case workflow::RuleProblem::Fix::none:
        break;
    }
    return {edit};
}

void RuleStrip::showSeveral(const workflow::RulesSelection& selection)
{
    m_icon->hide();
    m_details->hide();
    m_problems->setProblems({});
    m_shown.reset();
    auto summary = std::make_shared<std::string>();
    m_thread.run(
        [summary, selection, stop = m_looking.get_token()] {
            if (!stop.stop_requested())
                *summary = selectionSummary(selection);
        },
        [this, summary, stop = m_looking.get_token()] {
            if (stop.stop_requested())
                return;
            m_sentence->setShade(shades::text);
            m_sentence->setText(toQt(*summary));
            m_problems->setProblems({actionsOnMany()});
            Q_EMIT wasFilled();
        });
}

ShownProblem RuleStrip::actionsOnMany() const
{
    ShownProblem actions{.text = tr("What can be done to all of them:"), .isWrong = false};
    for (QAction* action : m_actionsOnMany) {
        const QString title = action->text().section(QLatin1Char('\t'), 0, 0).remove(QLatin1Char('&'));
        actions.buttons.push_back({title, [action] { action->trigger(); }});
    }
    return actions;
}

} // namespace quorvane::windows
