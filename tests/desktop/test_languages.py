"""The windows speak the desktop's language and are laid out in its direction."""

import os

from desk import FOCUSED, eventually
from rules_window import APPLICATION, PATH, DesktopTest

PICTURES = os.environ.get("QUORVANE_PICTURES", "pictures")
RULES = ["watch suffix .plist /usr/bin/defaults rw settings", "allow prefix /etc/ /bin/sh rwc mail",
         "deny path /etc/hosts /usr/bin/vi w"]


class Languages(DesktopTest):
    def open_in(self, locale):
        return self.open_with(*RULES, LC_ALL=locale)

    def keep_picture(self, name, node):
        os.makedirs(PICTURES, exist_ok=True)
        self.desk.picture(node.box).save(os.path.join(PICTURES, name))

    def menus(self, window):
        return [node.name for node in window.frame.find("menu bar").children()]

    def test_german_desktops_have_german_windows(self):
        window = self.open_in("de_DE.UTF-8")
        self.assertEqual(self.menus(window)[:2], ["Datei", "Bearbeiten"])
        self.keep_picture("main-window-german.png", window.frame)

    def test_what_names_the_rules_stays_as_it_is(self):
        window = self.open_in("de_DE.UTF-8")
        self.assertEqual([window.header(column).name for column in (APPLICATION, PATH)], ["Application", "Path"])
        self.assertEqual(window.texts()[1][2:5], ["Allow", "Prefix", "rwc"])

    def test_a_language_that_nobody_has_translated_is_english(self):
        self.assertEqual(self.menus(self.open_in("fi_FI.UTF-8"))[:2], ["File", "Edit"])

    def test_english_before_german_is_english(self):
        window = self.open_with(*RULES, LC_ALL="en_GB.UTF-8", LANGUAGE="en_GB:de")
        self.assertEqual(self.menus(window)[:2], ["File", "Edit"])

    def test_a_right_to_left_desktop_has_mirrored_windows_in_which_paths_are_typed_as_ever(self):
        window = self.open_in("ar_EG.UTF-8")
        self.assertGreater(window.table.cell(1, APPLICATION).box[0], window.table.cell(1, PATH).box[0])
        self.keep_picture("main-window-right-to-left.png", window.frame)
        window.click_row(1)
        self.desk.press("Return")
        editor = window.program.find("dialog")
        path = editor.find("text", "Path")
        eventually(lambda: path.has(FOCUSED), "the path to have the keyboard")
        self.desk.press("End")
        self.desk.type_text("x/")
        self.assert_becomes(lambda: path.text, "/etc/x/")
        self.keep_picture("editor-right-to-left.png", editor)
