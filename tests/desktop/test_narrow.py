"""The table is narrowed by View > Narrow, with mouse and keyboard, together with the search."""

from desk import ENABLED, FOCUSED, SELECTED, eventually, settled
from rules_window import PATH, DesktopTest

WATCH = 'watch prefix "/tmp/" "/bin/sh" r "one"'
ALLOW = 'allow prefix "/tmp/" "/bin/sh" r "one" "" "0"'
DENY = 'deny path "/nonexistent/a" "/bin/ls" w "two" "" "0"'
SUFFIX = 'deny suffix ".b" "any" w "" "" "0"'
ALL = ["/tmp/", ".b", "/nonexistent/a", "/tmp/"]


class Narrow(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(WATCH, ALLOW, DENY, SUFFIX)

    def assert_shown(self, paths):
        self.assert_becomes(lambda: self.window.column(PATH), paths)

    def choice(self, label):
        """The combo box with that label, whatever its value."""
        return eventually(lambda: next((node for node in self.window.frame.below()
                                        if node.role == "combo box" and node.labels() == [label]), None), label)

    def test_choices_are_made_by_keyboard_and_cleared_by_it(self):
        self.desk.press("ctrl+l")
        self.assert_becomes(lambda: self.choice("Class").has(FOCUSED), True)
        self.desk.type_text("d")
        self.assert_shown([".b", "/nonexistent/a"])
        self.assert_becomes(lambda: self.choice("Class").name, "Deny")
        self.assert_becomes(self.window.count, "2 of 4 rules shown, 2 left out by Narrow")
        self.desk.press("alt+y")
        self.desk.type_text("p")  # Prefix
        self.assert_shown([])
        self.desk.press("Down")  # Path
        self.assert_shown(["/nonexistent/a"])
        self.desk.press("Escape")
        self.assert_shown(ALL)
        self.assert_becomes(self.window.count, "4 of 4 rules shown")
        self.desk.press("Escape", "End")  # leads to the table
        self.assert_becomes(lambda: self.window.table.cell(3, PATH).has(SELECTED), True)

    def test_the_tab_key_leads_through_all_choices_and_on(self):
        self.desk.press("ctrl+l")
        self.desk.type_text("d")
        self.assert_shown([".b", "/nonexistent/a"])
        for label in ("Class", "Type", "State", "Tag", "Problem", "Program"):
            self.assert_becomes(lambda: self.choice(label).has(FOCUSED), True)
            self.desk.press("Tab")
        clear = self.window.frame.find("push button", "Show All")
        self.assert_becomes(lambda: clear.has(FOCUSED), True)
        self.desk.press("space")
        self.assert_shown(ALL)

    def test_the_change_of_the_count_is_announced(self):
        names = self.desk.hear_names()
        self.desk.press("ctrl+l")
        self.desk.type_text("d")
        eventually(lambda: "2 of 4 rules shown, 2 left out by Narrow" in names, "the count")

    def test_a_choice_is_made_and_cleared_with_the_mouse(self):
        self.desk.press("alt+v", "n")
        tags = self.choice("Tag")
        self.desk.click(*settled(lambda: tags.center))
        item = eventually(lambda: next((node for node in self.window.program.below() if node.role == "list item"
                                        and node.name == "one" and settled(lambda: node.box)[2] > 0), None), "one")
        self.desk.click(*settled(lambda: item.center))
        self.assert_shown(["/tmp/", "/tmp/"])
        self.desk.click(*self.window.frame.find("push button", "Show All").center)
        self.assert_shown(ALL)

    def test_choice_and_search_must_both_hold(self):
        self.desk.press("ctrl+l")
        self.desk.type_text("d")
        self.assert_shown([".b", "/nonexistent/a"])
        self.desk.press("ctrl+f")
        self.desk.type_text("/bin/")
        self.assert_shown(["/nonexistent/a"])
        self.desk.press("Escape")
        self.assert_shown([".b", "/nonexistent/a"])

    def test_rules_with_a_problem_are_found_and_followed(self):
        self.desk.press("ctrl+l", "alt+p")
        self.desk.type_text("path")
        self.assert_shown(["/nonexistent/a"])
        self.window.click_row(0)
        self.desk.press("Delete")
        self.assert_shown([])
        self.desk.press("ctrl+z")
        self.assert_shown(["/nonexistent/a"])

    def test_it_is_off_at_the_next_start(self):
        self.desk.press("ctrl+l")
        self.desk.type_text("d")
        self.assert_shown([".b", "/nonexistent/a"])
        self.assertEqual(self.window.close(), 0)
        self.window = self.open()
        self.assert_shown(ALL)
        self.assertIsNone(self.window.frame.find_now("push button", "Show All"))

    def test_hiding_the_choices_shows_all_rules(self):
        self.desk.press("ctrl+l")
        self.desk.type_text("d")
        self.assert_shown([".b", "/nonexistent/a"])
        self.assertTrue(self.window.frame.find("push button", "Show All").has(ENABLED))
        self.desk.press("ctrl+l")
        self.assert_shown(ALL)

    def test_rules_with_the_same_problem_are_selected(self):
        self.window.click_row(2)
        self.desk.press("alt+e", "b", "r")
        self.assert_becomes(self.window.selected, ["/nonexistent/a"])
        self.window.click_row(0)
        self.desk.press("alt+e", "b", "r")
        self.window.frame.find("label", "The selected rules have no problem.")
