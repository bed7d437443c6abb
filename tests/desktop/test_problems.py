"""All problems are listed beside the table, and lead to their rules; from the keyboard, too."""

from desk import FOCUSED, eventually
from rules_window import PATH, DesktopTest
from sandbox import read, text_of

WIDE = 'allow prefix "/etc/" "any" rw "" "" "0"'
NARROW = 'allow path "/etc/hosts" "any" r "" "" "0"'
GONE = 'deny path "/nonexistent/a" "any" w "" "" "0"'


class Problems(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(WIDE, NARROW, GONE)
        self.window.click_row(0)

    def says(self, text):
        return self.window.frame.find_now("label", text)

    def show_panel(self):
        self.desk.press("alt+v", "p")
        eventually(lambda: self.says("2 problems."), "the problems")

    def test_a_click_on_a_problem_selects_its_rule(self):
        self.show_panel()
        tree = self.window.frame.find("tree", "Problems")
        item = eventually(lambda: next((node for node in tree.children() if node.name.endswith("/nonexistent/a")), None),
                          "the problem")
        self.desk.click(*item.center)
        self.assert_becomes(self.window.selected, ["/nonexistent/a"])

    def test_the_list_follows_what_is_done_to_the_rules(self):
        self.show_panel()
        self.window.click_row(2)
        self.desk.press("Delete")
        eventually(lambda: self.says("1 problem."), "one problem less")
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of([WIDE, NARROW]))
        self.desk.press("ctrl+z")
        eventually(lambda: self.says("2 problems."), "the problem again")

    def test_a_key_leads_from_problem_to_problem_without_the_list(self):
        self.desk.press("F8")
        self.assert_becomes(self.window.selected, ["/etc/hosts"])
        self.desk.press("F8")
        self.assert_becomes(self.window.selected, ["/nonexistent/a"])
        self.desk.press("shift+F8")
        self.assert_becomes(self.window.selected, ["/etc/hosts"])
        self.assertTrue(self.window.table.has(FOCUSED) or self.window.table.cell(1, PATH).has(FOCUSED))
