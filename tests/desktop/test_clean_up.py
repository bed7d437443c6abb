"""Rules that have nothing to do are removed together, and come back together."""

from desk import eventually
from rules_window import PATH, DesktopTest
from sandbox import read, text_of

WIDE = 'allow prefix "/etc/" "any" rw "" "" "0"'
NARROW = 'allow path "/etc/hosts" "any" r "" "" "0"'
GONE = 'deny path "/nonexistent/a" "any" w "" "" "0"'
AWAY = 'deny path "/Volumes/none/b" "any" w "" "" "0"'


class CleanUp(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(WIDE, NARROW, GONE, AWAY)
        self.desk.press("alt+e", "l")
        self.dialog = self.window.program.find("dialog", "Clean Up")
        eventually(lambda: self.dialog.find_now("label", "2 of 3 ticked."), "the rules that can go")

    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of(lines))

    def test_what_is_ticked_goes_in_one_step_and_comes_back_in_one(self):
        self.desk.press("Return")
        self.assert_file(WIDE, AWAY)
        self.assert_becomes(lambda: self.window.column(PATH), ["/etc/", "/Volumes/none/b"])
        self.window.click_row(0)
        self.desk.press("ctrl+z")
        self.assert_file(WIDE, NARROW, GONE, AWAY)

    def test_a_rule_is_kept_by_its_tick_from_the_keyboard(self):
        self.desk.press("Down", "space")
        eventually(lambda: self.dialog.find_now("label", "3 of 3 ticked."), "the tick")
        self.desk.press("Up", "space")
        eventually(lambda: self.dialog.find_now("label", "2 of 3 ticked."), "the tick to go")
        self.desk.press("Return")
        self.assert_file(WIDE, GONE)

    def test_nothing_happens_when_it_is_left(self):
        self.desk.press("Escape")
        eventually(lambda: self.window.program.find_now("dialog", "Clean Up") is None, "the window to close")
        self.assert_file(WIDE, NARROW, GONE, AWAY)
