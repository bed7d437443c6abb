#include "windows/ProblemsModel.h"

#include "rules/RuleCodes.h"
#include "tests/support/TestRules.h"

#include <QAbstractItemModelTester>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

using workflow::FindingKind;

// "missing 3", or "none".
std::string shown(const std::optional<ProblemsModel::Place>& place)
{
    return place ? std::string(findingName(place->kind)) + " " + std::to_string(place->number) : "none";
}

class ProblemsModelTest : public testing::Test {
protected:
    // That many redundant rules and as many whose paths are gone.
    void show(std::size_t redundant, std::size_t missing)
    {
        workflow::ProblemLists::Lists lists;
        const auto add = [&lists](FindingKind kind, std::size_t count) {
            for (std::size_t each = 0; each < count; ++each)
                lists[static_cast<std::size_t>(kind)].push_back(
                    {test::policyRule({.policyClass = rules::PolicyClass::deny,
                         .policyType = rules::PolicyType::path,
                         .path = "/nonexistent/" + std::to_string(each),
                         .processName = "/bin/sh",
                         .operations = 1}),
                        {.kind = kind}});
        };
        add(FindingKind::redundant, redundant);
        add(FindingKind::missingPath, missing);
        model.setProblems(std::make_shared<const workflow::ProblemLists>(std::move(lists)));
    }
    QModelIndex kind(int row) const { return model.index(row, 0); }
    std::string next(FindingKind kind, std::size_t number, bool hasLeft = false) const
    {
        return shown(model.neighbour({kind, number}, hasLeft, true));
    }
    std::string previous(FindingKind kind, std::size_t number, bool hasLeft = false) const
    {
        return shown(model.neighbour({kind, number}, hasLeft, false));
    }

    ProblemsModel model;
};

} // namespace

TEST_F(ProblemsModelTest, KeepsTheRulesOfQtForModels)
{
    show(2, 3);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.rowCount(kind(1)), 3);
    const QModelIndex problem = model.index(2, 0, kind(1));
    EXPECT_EQ(problem.parent(), kind(1));
    EXPECT_EQ(model.rowCount(problem), 0);
    EXPECT_TRUE(model.hasChildren());
    EXPECT_TRUE(model.hasChildren(kind(0)));
    EXPECT_FALSE(model.hasChildren(problem));
    EXPECT_EQ(model.columnCount(), 1);
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
}

TEST_F(ProblemsModelTest, SaysWhatAKindIsAndWhatIsWrongWithARule)
{
    show(0, 1);
    const auto plain = [](const QModelIndex& index) {
        QTextDocument document;
        document.setHtml(index.data(Qt::ToolTipRole).toString());
        return document.toPlainText().remove(QChar(0x200b)).toStdString();
    };
    EXPECT_EQ(kind(0).data().toString(), QStringLiteral("Path is gone (1)"));
    EXPECT_EQ(plain(kind(0)), findingKindText(FindingKind::missingPath));
    EXPECT_FALSE(kind(0).data(Qt::AccessibleDescriptionRole).isValid());
    const QModelIndex problem = model.index(0, 0, kind(0));
    EXPECT_EQ(problem.data().toString(), QStringLiteral("sh  /nonexistent/0"));
    const std::string explanation = problem.data(Qt::AccessibleDescriptionRole).toString().toStdString();
    EXPECT_EQ(explanation, "sh may not read /nonexistent/0.\nNothing exists at this path.");
    EXPECT_EQ(plain(problem), explanation);
    EXPECT_FALSE(problem.data(Qt::DecorationRole).isValid());
}

TEST_F(ProblemsModelTest, CountsTheKindsThatAreShown)
{
    show(2, 3);
    EXPECT_EQ(model.count(), 5U);
    model.setShownKinds({FindingKind::missingPath});
    EXPECT_EQ(model.count(), 3U);
    EXPECT_EQ(model.rowCount(), 1);
    model.setProblems(nullptr);
    EXPECT_EQ(model.count(), 0U);
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(ProblemsModelTest, GoesRoundThroughAllProblems)
{
    show(2, 3);
    EXPECT_EQ(next(FindingKind::redundant, 0), "redundant 1");
    EXPECT_EQ(next(FindingKind::redundant, 1), "missing 0");
    EXPECT_EQ(next(FindingKind::missingPath, 2), "redundant 0");
    EXPECT_EQ(previous(FindingKind::redundant, 1), "redundant 0");
    EXPECT_EQ(previous(FindingKind::redundant, 0), "missing 2");
    EXPECT_EQ(previous(FindingKind::missingPath, 0), "redundant 1");
    EXPECT_EQ(shown(model.end(true)), "redundant 0");
    EXPECT_EQ(shown(model.end(false)), "missing 2");
    show(0, 0);
    EXPECT_EQ(next(FindingKind::redundant, 0), "none");
    EXPECT_EQ(previous(FindingKind::redundant, 0), "none");
}

TEST_F(ProblemsModelTest, GoesOnFromWhereAProblemWas)
{
    show(2, 3);
    EXPECT_EQ(next(FindingKind::redundant, 0, true), "redundant 0") << "the one that moved up";
    EXPECT_EQ(next(FindingKind::redundant, 2, true), "missing 0") << "it was the last of its kind";
    EXPECT_EQ(previous(FindingKind::redundant, 2, true), "redundant 1");
    EXPECT_EQ(previous(FindingKind::redundant, 9, true), "redundant 1") << "several have gone";
    EXPECT_EQ(next(FindingKind::invalidProgram, 0, true), "missing 0") << "the last of its kind has gone";
    EXPECT_EQ(previous(FindingKind::invalidProgram, 0, true), "redundant 1");
    EXPECT_EQ(previous(FindingKind::invalidProgram, 3, true), "redundant 1");
}

TEST_F(ProblemsModelTest, PassesOverKindsThatAreNotShown)
{
    show(2, 3);
    model.setShownKinds({FindingKind::missingPath});
    EXPECT_EQ(next(FindingKind::redundant, 0), "missing 0");
    EXPECT_EQ(previous(FindingKind::redundant, 1), "missing 2");
    EXPECT_FALSE(model.indexOf({FindingKind::redundant, 0}).isValid());
}

TEST_F(ProblemsModelTest, IsFetchedInPartsOfFiveHundred)
{
    show(0, 1200);
    for (const int fetched : {500, 1000, 1200}) {
        EXPECT_EQ(model.rowCount(kind(0)), fetched);
        EXPECT_EQ(model.canFetchMore(kind(0)), fetched < 1200);
        if (fetched < 1200)
            model.fetchMore(kind(0));
    }
    model.fetchMore(model.index(0, 0, kind(0)));
    EXPECT_EQ(model.rowCount(kind(0)), 1200) << "a problem has nothing below it";
}

TEST_F(ProblemsModelTest, FetchesUpToAProblemUnlessThatIsFarDown)
{
    show(0, 20001);
    EXPECT_EQ(model.indexOf({FindingKind::missingPath, 499}).row(), 499);
    EXPECT_EQ(model.rowCount(kind(0)), 500);
    EXPECT_EQ(model.indexOf({FindingKind::missingPath, 500}).row(), 500);
    EXPECT_EQ(model.rowCount(kind(0)), 1000);
    EXPECT_FALSE(model.indexOf({FindingKind::missingPath, 20000}).isValid());
    EXPECT_EQ(model.indexOf({FindingKind::missingPath, 19999}).row(), 19999);
}

} // namespace quorvane::windows
