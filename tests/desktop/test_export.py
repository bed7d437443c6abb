import os

from desk import ENABLED, eventually
from file_panel import answer_panel
from rules_window import PATH, DesktopTest
from sandbox import read

RULES = b"; mine\noption.is.unknown 7\nallow path /a any r\nallow path /b any r\nwatch path /w any r\n"


class Export(DesktopTest):
    def open_rules(self):
        self.sandbox.write(self.sandbox.user_file, RULES)
        return self.open()

    def choose(self, window, item, title, name, replace=False):
        """Chooses an item of the File menu and saves as `name`."""
        self.desk.press("alt+f")
        entry = window.frame.find("menu item", item)
        self.desk.click(*entry.center)
        answer_panel(window, title, name)
        if replace:
            self.desk.click(*window.program.find("alert message").find("push button", "Yes").center)
        eventually(lambda: window.program.find_now("dialog", title) is None, "the panel to close")

    def test_the_whole_file_goes_out_as_it_is(self):
        window = self.open_rules()
        self.choose(window, "Export All Rules...", "Export All Rules", "all rules.quorv")
        self.assertEqual(read(os.path.join(self.sandbox.home, "all rules.quorv")), RULES)

    def test_the_name_is_the_users_by_default(self):
        window = self.open_rules()
        self.desk.press("alt+f")
        self.desk.click(*window.frame.find("menu item", "Export All Rules...").center)
        panel = window.program.find("dialog", "Export All Rules")
        name = os.path.basename(self.sandbox.user_file).removesuffix(".quorvane.rc") + ".quorv"
        self.assert_becomes(lambda: panel.find("text").text, name)

    def test_the_whole_file_exported_onto_itself_stays(self):
        window = self.open_rules()
        same = os.path.join(self.sandbox.home, "same.quorv")
        os.link(self.sandbox.user_file, same)
        self.choose(window, "Export All Rules...", "Export All Rules", same, replace=True)
        self.assertEqual(read(self.sandbox.user_file), RULES)

    def test_only_the_selected_rules_go_out(self):
        window = self.open_rules()
        self.desk.press("alt+f")
        self.assertFalse(window.frame.find("menu item", "Export Selected Rules...").has(ENABLED))
        self.desk.press("Escape")
        window.click_row(window.column(PATH).index("/b"))
        self.choose(window, "Export Selected Rules...", "Export Selected Rules", "some.quorv")
        self.assertEqual(read(os.path.join(self.sandbox.home, "some.quorv")), b'allow path "/b" "any" r "" "" "0"\n')
        self.assertEqual(read(self.sandbox.user_file), RULES)
