#include "windows/SelectionController.h"

#include "rules/RuleCodes.h"
#include "rules/RuleMarks.h"
#include "windows/ChangeWindow.h"
#include "windows/ElidedLabel.h"
#include "windows/OneLineText.h"
#include "windows/OperationBoxesRow.h"
#include "windows/PathField.h"
#include "windows/QtText.h"
#include "windows/RulesTable.h"
#include "workflow/DifferenceText.h"
#include "workflow/DocumentTexts.h"
#include "workflow/MovedProgram.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr int betweenLabelAndControl = 10; // logical pixels, like the next
constexpr int betweenLikenesses = 8;

// A column of controls with their labels.
struct Form {
    QWidget* widget = new QWidget;
    QFormLayout* rows = new QFormLayout(widget);

    Form()
    {
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setHorizontalSpacing(betweenLabelAndControl);
        rows->setVerticalSpacing(betweenLikenesses);
    }
};

// The tag that all of the rules have; empty when they differ.
QString commonTag(const std::vector<rules::RuleRef>& rules)
{
    std::set<std::string> tags;
    for (const rules::RuleRef& rule : rules)
        tags.emplace(tagOf(valueOf(rule)).view());
    return tags.size() == 1 ? toQt(*tags.begin()) : QString();
}

std::string processOf(const rules::RuleRef& rule)
{
    return visitRule(
        rule, [](const auto& record) { return std::string(record.fields().processName.view()); });
}

// The constraints of the user's rules of the program. Any thread.
std::vector<std::string> constraintsOfProgram(
    const rules::RuleRows& rules, const std::string& program, const std::stop_token& stop)
{
    std::set<std::string> constraints;
    const std::size_t count = rules.count(false);
    for (std::size_t row = 0; row < count && !stop.stop_requested(); ++row) {
        const rules::PolicyRule* policy = policyRuleIn(rules.at(row, false));
        if (policy != nullptr && workflow::namedProgram(policy->processName().view()) == program)
            constraints.emplace(policy->constraint().view());
    }
    return {constraints.begin(), constraints.end()};
}

// The records of the change that remain in the store.
std::vector<rules::RuleRef> changedRules(const workflow::PlannedChange& planned)
{
    std::vector<rules::RuleRef> rules;
    for (const rules::ChangeSet::Change& change : planned.change.changed)
        rules.push_back(change.rule);
    for (const rules::ChangeSet::Addition& addition : planned.change.added)
        rules.push_back(addition.rule);
    return rules;
}

std::size_t changeCount(const workflow::PlannedChange& planned)
{
    const rules::RulesDifference& difference = planned.difference;
    return difference.added.size() + difference.removed.size() + difference.changed.size();
}

// True for plain absolute paths; anything else could be another form of process string.
bool isProgramPath(const std::string& text)
{
    return text.starts_with('/') && text.find(" via ") == std::string::npos;
}

workflow::PlannedChange nothingYet(const QString& remark)
{
    return {.remarks = {fromQt(remark)}};
}

} // namespace

SelectionController::SelectionController(
    QWidget& window, RulesTable& table, workflow::RulesDocument& document)
    : m_window(window)
    , m_table(table)
    , m_document(document)
{
}

SelectionController::~SelectionController()
{
    m_searching.request_stop();
}

rules::LineEnds SelectionController::lineEnds() const
{
    return m_document.settings().lineEnds();
}

void SelectionController::rulesDidChange()
{
    if (m_preview)
        m_preview->replan();
}

workflow::PlannedChange SelectionController::planned(const Command& command,
    const std::vector<rules::RuleRef>& selected, rules::LineEnds lineEnds, const MakePlan& plan) const
{
    std::vector<rules::RuleRef> rules;
    std::copy_if(
        selected.begin(), selected.end(), std::back_inserter(rules), [&](const rules::RuleRef& rule) {
            return m_document.store().isStored(rule) && (command.takesSystemRules || !isSystemRule(rule))
                && (command.takesWatchRules || policyRuleIn(rule) != nullptr);
        });
    workflow::PlannedChange change = plan(rules, lineEnds);
    const auto left = static_cast<std::size_t>(std::count_if(selected.begin(), selected.end(),
                          [this](const rules::RuleRef& rule) { return m_document.store().isStored(rule); }))
        - rules.size();
    if (left > 0)
        change.remarks.push_back(fromQt(
            tr("Left out: %1 of the system or of another kind.").arg(toQt(workflow::countedRules(left)))));
    return change;
}

ChangeWindow& SelectionController::openPreview(const Command& command, Plan plan)
{
    workflow::PlannedChange first = plan(lineEnds());
    return openPreview(command, std::move(plan), std::move(first));
}

ChangeWindow& SelectionController::openPreview(
    const Command& command, Plan plan, workflow::PlannedChange first)
{
    delete m_preview;
    m_preview = new ChangeWindow(
        command.title, command.verb, std::move(plan), std::move(first), lineEnds(), &m_window);
    connect(m_preview, &ChangeWindow::wholeLinesRequested, this, [this] { m_table.keepWholeLines(); });
    connect(
        m_preview, &ChangeWindow::wasConfirmed, this, [this, command](const workflow::PlannedChange& change) {
            m_preview.clear(); // it is closed and need not plan again
            perform(command, change);
        });
    m_preview->show();
    return *m_preview;
}

void SelectionController::perform(const Command& command, const workflow::PlannedChange& planned)
{
    const std::string action = workflow::actionName(command.action, changeCount(planned));
    if (m_table.perform(planned, {.action = action, .refusesCuts = true}))
        m_table.selectRules(changedRules(planned));
}

void SelectionController::performOrPreview(const Command& command, const MakePlan& plan)
{
    const auto now = [this, command, plan, selected = m_table.selectedRules()](
                         rules::LineEnds lineEnds) { return planned(command, selected, lineEnds, plan); };
    workflow::PlannedChange change = now(lineEnds());
    const bool isOfOneRule = changeCount(change) == 1 && change.difference.removed.empty();
    if (isOfOneRule && !change.refusal && change.remarks.empty())
        perform(command, change);
    else
        openPreview(command, now, std::move(change));
}

void SelectionController::patch(const Command& command, const workflow::RulePatch& patch)
{
    performOrPreview(
        command, [this, patch](const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds) {
            return patchingOf(m_document.store(), rules, patch, m_place.facts(), lineEnds);
        });
}

void SelectionController::setClass(std::int32_t policyClass)
{
    const bool allows = policyClass == rules::PolicyClass::allow;
    patch({.title = allows ? tr("Allow") : tr("Deny"),
              .verb = allows ? tr("Allow") : tr("Deny"),
              .action = allows ? "Allow in" : "Deny in",
              .takesWatchRules = false},
        {.ruleClass = policyClass});
}

void SelectionController::rebind()
{
    patch({.title = tr("Bind Anew"), .verb = tr("Bind"), .action = "Bind", .takesWatchRules = false},
        {.isBoundToProgram = true});
}

void SelectionController::clearConstraint()
{
    patch({.title = tr("Clear Constraint"),
              .verb = tr("Clear"),
              .action = "Clear Constraint of",
              .takesWatchRules = false},
        {.constraint = std::string()});
}

void SelectionController::setTag()
{
    const std::vector<rules::RuleRef> selected = m_table.selectedRules();
    const Command command{.title = tr("Tag"), .verb = tr("Tag"), .action = "Tag"};
    Form form;
    auto* field = new QLineEdit(commonTag(selected), form.widget);
    field->setObjectName(QStringLiteral("tagTextField"));
    field->setPlaceholderText(tr("Nothing takes the tags away"));
    keepToOneLine(*field);
    form.rows->addRow(tr("&Tag"), field);
    form.widget->setFocusProxy(field);
    field->selectAll();
    ChangeWindow& preview = openPreview(command, [this, command, selected, field](rules::LineEnds ends) {
        return planned(command, selected, ends,
            [this, field](const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds) {
                return patchingOf(
                    m_document.store(), rules, {.tag = fromQt(field->text())}, m_place.facts(), lineEnds);
            });
    });
    preview.setControls(form.widget);
    connect(field, &QLineEdit::textChanged, &preview, &ChangeWindow::planSoon);
}

void SelectionController::changeOperations()
{
    const std::vector<rules::RuleRef> selected = m_table.selectedRules();
    const Command command{
        .title = tr("Change Operations"), .verb = tr("Change"), .action = "Change Operations of"};
    Form form;
    auto* kind = new QComboBox(form.widget);
    kind->setObjectName(QStringLiteral("operationsPopUp"));
    kind->addItem(tr("Add"), workflow::RulePatch::Operations::added);
    kind->addItem(tr("Take away"), workflow::RulePatch::Operations::removed);
    kind->addItem(tr("Set to"), workflow::RulePatch::Operations::replaced);
    auto* boxes = new OperationBoxesRow(form.widget);
    form.rows->addRow(tr("&How"), kind);
    form.rows->addRow(tr("Operations"), boxes);
    form.widget->setFocusProxy(kind);
    ChangeWindow& preview
        = openPreview(command, [this, command, selected, kind, boxes](rules::LineEnds ends) {
              if (boxes->operations() == 0)
                  return nothingYet(tr("Tick the operations."));
              const workflow::RulePatch::Operations change{
                  static_cast<workflow::RulePatch::Operations::Kind>(kind->currentData().toInt()),
                  boxes->operations()};
              return planned(command, selected, ends,
                  [this, change](const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds) {
                      return patchingOf(
                          m_document.store(), rules, {.operations = change}, m_place.facts(), lineEnds);
                  });
          });
    preview.setControls(form.widget);
    connect(kind, &QComboBox::currentIndexChanged, &preview, &ChangeWindow::planSoon);
    connect(boxes, &OperationBoxesRow::operationsChanged, &preview, &ChangeWindow::planSoon);
}

void SelectionController::copyToProgram()
{
    const std::vector<rules::RuleRef> selected = m_table.selectedRules();
    const Command command{.title = tr("Copy Rules to Another Program"),
        .verb = tr("Copy"),
        .action = "Copy",
        .takesSystemRules = true};
    Form form;
    auto* program = new PathField(tr("Program"), form.widget);
    program->setObjectName(QStringLiteral("programField"));
    form.rows->addRow(tr("&Program"), program);
    form.widget->setFocusProxy(program);
    ChangeWindow& preview = openPreview(command, [this, command, selected, program](rules::LineEnds ends) {
        const std::string path = program->path();
        if (!isProgramPath(path))
            return nothingYet(tr("Name the program by its whole path."));
        return planned(command, selected, ends,
            [this, path](const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds) {
                return copyingOf(m_document.store(), rules, path, m_place.facts(), lineEnds);
            });
    });
    preview.setControls(form.widget);
    connect(program, &PathField::pathChanged, &preview, &ChangeWindow::planSoon);
}

void SelectionController::moveProgram()
{
    const std::vector<rules::RuleRef> selected = m_table.selectedRules();
    const std::string from
        = selected.empty() ? std::string() : workflow::namedProgram(processOf(selected.front()));
    if (from.empty())
        return m_table.addNotice({.text = tr("The rule names no program that could have moved."),
            .subject = QStringLiteral("change")});
    moveProgram(from);
}

void SelectionController::moveProgram(const std::string& from)
{
    Form form;
    auto* found = new QComboBox(form.widget);
    found->setObjectName(QStringLiteral("candidatesPopUp"));
    found->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    auto* program = new PathField(tr("Present path of the program"), form.widget);
    program->setObjectName(QStringLiteral("programField"));
    program->setPath(from);
    auto* former = new ElidedLabel(form.widget);
    former->setText(toQt(from));
    form.rows->addRow(tr("Rules of"), former);
    form.rows->addRow(tr("&Found"), found);
    form.rows->setRowVisible(found, false);
    form.rows->addRow(tr("Now &at"), program);
    form.widget->setFocusProxy(program);
    ChangeWindow& preview
        = openPreview({.title = tr("Program Moved"), .verb = tr("Move Rules"), .action = "Move"},
            [this, from, program](rules::LineEnds lineEnds) {
                const std::string to = program->path();
                return !isProgramPath(to) ? nothingYet(tr("Name the program by its whole path."))
                                          : workflow::movingOf(m_document.store(), from, to, lineEnds);
            });
    preview.setControls(form.widget);
    connect(found, &QComboBox::activated, program,
        [found, program] { program->setPath(fromQt(found->currentData().toString())); });
    connect(program, &PathField::pathChanged, &preview, &ChangeWindow::planSoon);
    offerCandidates(from, *found, *program);
}

// On another thread, since the search reads folders and whole programs. The results go into the form if it is
// still open, and into the field unless the user has entered another program by then.
void SelectionController::offerCandidates(const std::string& from, QComboBox& found, PathField& program)
{
    m_searching.request_stop();
    m_searching = {};
    connect(m_preview, &QObject::destroyed, this, [stop = m_searching]() mutable { stop.request_stop(); });
    auto candidates = std::make_shared<std::vector<workflow::ProgramCandidate>>();
    m_thread.run(
        [candidates, from, rules = m_document.store().storedRows(), place = m_place,
            stop = m_searching.get_token()] {
            *candidates = candidatesForMoved(from, constraintsOfProgram(*rules, from, stop), place, stop);
        },
        [candidates, from, stop = m_searching.get_token(), found = &found, program = &program] {
            if (stop.stop_requested() || candidates->empty())
                return;
            for (const workflow::ProgramCandidate& each : *candidates)
                found->addItem(tr("%1 (%2)").arg(toQt(each.path), toQt(candidateReasonWords(each.reason))),
                    toQt(each.path));
            qobject_cast<QFormLayout*>(found->parentWidget()->layout())->setRowVisible(found, true);
            if (program->path() == from)
                program->setPath(candidates->front().path);
        });
}

QString SelectionController::selectedText() const
{
    std::string lines;
    for (const rules::RuleRef& rule : m_table.selectedRules())
        lines += workflow::ruleText(valueOf(rule)) + '\n';
    return toQt(lines);
}

} // namespace quorvane::windows
