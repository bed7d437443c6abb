#include "bench/LongestGap.h"
#include "bench/WindowBench.h"
#include "history/Database.h"
#include "history/JournalPlace.h"
#include "windows/HistoryWindow.h"
#include "windows/RulesTableView.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesHistory.h"

#include <QApplication>
#include <QLineEdit>

#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

// history_times FILE: the history window over two versions of FILE, and over ten thousand of three rules. For
// each action of the user, how long it takes until the result is shown, and the longest time without input in
// between; one figure per line, in milliseconds.

namespace {

using namespace quorvane;

// A user with a version for one added rule.
class Editor : public bench::User {
public:
    Editor(const std::string& file, std::string folder)
        : User(file, std::move(folder))
    {
        document().perform(workflow::additionOf(std::make_shared<rules::PolicyRule>(rules::PolicyRuleFields{
                               .path = "/added", .processName = "any", .operations = 1})),
            {"Add Rule"});
        document().waitUntilWritten();
    }

    // Copies of the newest version, up to that number.
    void addVersions(int last)
    {
        history::Database database(
            history::JournalPlace(stateFolder(), locations().userRulesFile()).databaseFile());
        history::Statement(database,
            "WITH RECURSIVE next (number) AS (SELECT max(number) + 1 FROM version UNION ALL"
            " SELECT number + 1 FROM next WHERE number < ?)"
            " INSERT INTO version SELECT next.number, time, program, action, kind, of_number, next.number - "
            "1,"
            " state, rules, added, removed, changed, bytes, meant FROM next, version WHERE version.number = "
            "2",
            std::int64_t{last})
            .run();
    }
};

// Measures each action, until the table shows the changes of the selected version.
class Looking {
public:
    Looking(workflow::RulesDocument& document, std::string name)
        : m_history(document)
        , m_name(std::move(name))
    {
    }

    void open()
    {
        // In the program the main window comes first, after which the allocator has tidied up the memory of
        // reading the rules.
        const windows::RulesTableView table;
        print("open", [this] {
            m_window
                = std::make_unique<windows::HistoryWindow>(std::vector<workflow::FileHistory*>{&m_history});
            QObject::connect(
                m_window.get(), &windows::HistoryWindow::wasFilled, [this] { m_isFilled = true; });
            m_window->show();
        });
    }
    void select(const char* what, int row)
    {
        auto* versions = m_window->findChild<windows::RulesTableView*>(QStringLiteral("versionsTableView"));
        print(what, [=] { versions->selectRow(row < 0 ? versions->model()->rowCount() + row : row); });
    }
    void type(const char* what, const char* text)
    {
        auto* field = m_window->findChild<QLineEdit*>(QStringLiteral("searchField"));
        bench::LongestGap gap;
        gap.step([&] { field->setText(QString::fromLatin1(text)); });
        gap.step([] { QApplication::processEvents(); });
        print(what, gap);
    }
    void close()
    {
        bench::LongestGap gap;
        gap.step([this] { m_window.reset(); });
        print("close", gap);
    }

private:
    void print(const char* what, const std::function<void()>& command)
    {
        m_isFilled = false;
        bench::LongestGap gap;
        gap.step(command);
        gap.handleEventsUntil([this] { return m_isFilled; });
        gap.step([] { QApplication::processEvents(); });
        print(what, gap);
    }
    void print(const char* what, const bench::LongestGap& gap)
    {
        std::printf("%s-%s %.2f\n%s-%s-longest-gap %.2f\n", m_name.c_str(), what, gap.whole(), m_name.c_str(),
            what, gap.longest());
    }

    workflow::RulesHistory m_history;
    const std::string m_name;
    std::unique_ptr<windows::HistoryWindow> m_window;
    bool m_isFilled = false;
};

void printTimes(const std::string& file, const std::string& folder)
{
    {
        Editor user(file, folder + "/large");
        Looking looking(user.document(), "long-file");
        looking.open();
        looking.select("oldest", -1); // in this version every rule is new
        looking.select("newest", 0);
        looking.select("oldest-again", -1);
        looking.close();
    }
    const std::string small = folder + "/small";
    std::ofstream(small) << "allow prefix \"/a\" \"any\" r \"\" \"\" \"0\"\n";
    Editor user(small, folder + "/many");
    user.addVersions(10'000);
    Looking looking(user.document(), "many-versions");
    looking.open();
    looking.select("oldest", -1);
    looking.type("search", "added");
    looking.type("search-in-vain", "no version holds this");
    looking.type("search-end", "");
    looking.close();
}

} // namespace

int main(int argumentCount, char** arguments)
{
    return bench::runWindowBench("history_times", argumentCount, arguments, printTimes);
}
