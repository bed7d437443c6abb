"""The access map is walked with the keyboard and read by a screen reader; a click shows the rules of a place."""

from desk import SHOWING, eventually
from rules_window import DesktopTest


class Map(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with('watch suffix ".conf" "/bin/vi" r ""',
                                     'allow prefix "/etc/" "/bin/sh" r "" "" "0"',
                                     'deny path "/etc/ssh/key" "/bin/sh" w "" "" "0"',
                                     'allow prefix "/home/" "/bin/vi" r "" "" "0"')
        self.desk.press("ctrl+m")
        self.dialog = self.window.program.find("dialog", "Access Map")
        self.tree = self.dialog.find("tree")

    def place(self, name):
        return eventually(lambda: next((node for node in self.tree.children()
                                        if node.name == name and node.has(SHOWING)), None), f"the place {name}")

    def test_a_click_selects_the_rules_of_a_folder_and_of_what_is_in_it(self):
        self.desk.click(*self.place("/etc/").center)
        self.assert_becomes(self.window.selected, ["/etc/", "/etc/ssh/key"])

    def test_the_keyboard_goes_to_a_folder_and_shows_its_rules(self):
        self.place("ssh/")
        self.desk.press("End", "Return")
        self.assert_becomes(self.window.selected, ["/home/"])

    def test_a_screen_reader_hears_how_many_rules_a_place_has(self):
        self.place("/etc/")
        names = [node.name for node in self.tree.children()]
        self.assertIn("1 allow, 1 deny", names)
        self.assertIn("sh (2)", names)
