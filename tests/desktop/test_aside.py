"""Rules are set aside and brought back with mouse and keyboard; the rules file is right after each step."""

from rules_window import PATH, DesktopTest
from sandbox import read, text_of

FIRST = 'allow prefix "/a/" "/bin/sh" r "one" "" "7"'
SECOND = 'allow prefix "/b/" "/bin/sh" r "two" "" "0"'


class Aside(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(FIRST, SECOND)

    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of(lines))

    def set_aside(self, row):
        self.window.click_row(row)
        self.desk.press("alt+e", "a")

    def test_a_rule_is_set_aside_and_brought_back_with_tag_and_date(self):
        self.set_aside(0)
        self.assert_file(SECOND)
        self.desk.press("alt+v", "a")
        aside = self.window.program.find("dialog", "Set Aside")
        table = aside.find("table")
        self.assert_becomes(lambda: table.cell(0, PATH).name, "/a/")
        self.desk.click(*table.cell(0, PATH).center)
        self.desk.click(*aside.find("push button", "Bring Back").center)
        self.assert_file(SECOND, FIRST)
        self.assert_becomes(lambda: table.rows, 0)

    def test_setting_aside_is_taken_back_to_the_byte(self):
        self.set_aside(1)
        self.assert_file(FIRST)
        self.desk.press("ctrl+z")
        self.assert_file(FIRST, SECOND)
