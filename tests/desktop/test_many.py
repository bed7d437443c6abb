"""Many rules are changed at once from the Rules menu, with mouse and keyboard; one Ctrl+Z restores the file to the byte."""

from desk import ENABLED, eventually
from review_window import ReviewWindow
from rules_window import PATH, TAG, DesktopTest
from sandbox import read, text_of

WATCH = 'watch prefix "/w/" "/bin/sh" r "seen"'
FIRST = 'allow prefix "/a/" "/bin/sh" r "one" "" "7"'
SECOND = 'allow prefix "/b/" "/bin/sh" rw "two" "" "0"'
VI = 'deny path "/c" "/bin/vi" w "" "TEAM" "0"'


class Many(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(WATCH, FIRST, SECOND, VI)

    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of(lines))

    def preview(self, title):
        return self.window.program.find("dialog", title)

    def test_a_tag_for_several_rules_is_typed_shown_given_and_taken_back(self):
        self.window.click_row(1)
        self.desk.press("shift+Down", "ctrl+t")
        preview = self.preview("Tag")
        self.desk.type_text("work")
        self.assert_becomes(lambda: preview.find("table").rows, 2)
        self.desk.press("Return")
        self.assert_file(WATCH, 'allow prefix "/a/" "/bin/sh" r "work" "" "7"',
                         'allow prefix "/b/" "/bin/sh" rw "work" "" "0"', VI)
        self.assert_becomes(self.window.selected, ["/a/", "/b/"])
        self.desk.press("ctrl+z")
        self.assert_file(WATCH, FIRST, SECOND, VI)

    def test_operations_are_added_with_the_mouse(self):
        self.window.click_row(0)
        self.desk.press("ctrl+a", "alt+r", "o")
        preview = self.preview("Change Operations")
        button = preview.find("push button", "Change")
        self.assertFalse(button.has(ENABLED))
        self.desk.click(*preview.find("check box", "Execute").center)
        eventually(lambda: button.has(ENABLED), "the button to be enabled")
        self.desk.click(*button.center)
        self.assert_file('watch prefix "/w/" "/bin/sh" rx "seen"', 'allow prefix "/a/" "/bin/sh" rx "one" "" "7"',
                         'allow prefix "/b/" "/bin/sh" rwx "two" "" "0"', 'deny path "/c" "/bin/vi" wx "" "TEAM" "0"')
        self.desk.press("ctrl+z")
        self.assert_file(WATCH, FIRST, SECOND, VI)

    def test_the_rules_of_a_program_that_has_moved_follow_it(self):
        self.window.click_row(2)
        self.desk.press("alt+r", "m")
        preview = self.preview("Program Moved")
        self.desk.press("ctrl+a")
        self.desk.type_text("/opt/sh")
        self.assert_becomes(lambda: preview.find("table").rows, 3)
        self.desk.press("Return")
        self.assert_file(*(line.replace("/bin/sh", "/opt/sh") for line in (WATCH, FIRST, SECOND)), VI)
        self.desk.press("ctrl+z")
        self.assert_file(WATCH, FIRST, SECOND, VI)

    def test_rules_are_copied_as_text_and_pasted_through_the_review(self):
        self.window.click_row(3)
        self.desk.press("ctrl+c", "Delete")
        self.assert_file(WATCH, FIRST, SECOND)
        self.desk.press("ctrl+v")
        review = ReviewWindow(self.window, "Pasted Text")
        self.assert_becomes(review.ticked, ["/c"])
        review.click_button("Import")
        self.assert_file(WATCH, FIRST, SECOND, VI)

    def test_a_rule_is_duplicated_in_an_editor(self):
        self.window.click_row(1)
        self.desk.press("ctrl+d")
        self.window.program.find("dialog", "sh")
        self.desk.press("ctrl+a")
        self.desk.type_text("/d/")
        self.desk.press("Return")
        self.assert_file(WATCH, FIRST, SECOND, 'allow prefix "/d/" "/bin/sh" r "one" "" "0"', VI)
        self.assert_becomes(lambda: self.window.table.cell(3, TAG).name, "one")
        self.assertEqual(self.window.selected(), [self.window.table.cell(3, PATH).name])
