"""The windows follow the look that the desktop asks for."""

import os
from collections import Counter

from file_panel import answer_panel
from portal_service import PortalService
from review_window import ReviewWindow
from rules_window import PATH, DesktopTest

LIGHT, DARK, DARK_IN_HIGH_CONTRAST = (255, 255, 255), (29, 29, 32), (0, 0, 0)
DARK_RED = (255, 138, 128)

PICTURES = os.environ.get("QUORVANE_PICTURES", "pictures")
RULES = ["watch suffix .plist /usr/bin/defaults rw settings",
         "allow prefix /etc /bin/sh rwc mail", "deny path /etc/hosts /usr/bin/vi w",
         "allow prefix / any r", "allow path /etc/hosts any r", "deny path /no/such/file any x careful"]


def commonest(picture):
    return Counter(picture.getdata()).most_common(1)[0][0]


class Looks(DesktopTest):
    def start_portal(self, **settings):
        portal = PortalService(self.desk.environment["DBUS_SESSION_BUS_ADDRESS"], **settings)
        self.addCleanup(portal.end)
        return portal

    def empty_part(self, window):
        """Of the table, below its rows."""
        x, y, width, height = window.table.box
        return commonest(self.desk.picture((x, y + height // 2, width, height // 2)))

    def keep_picture(self, name, node):
        picture = self.desk.picture(node.box)
        os.makedirs(PICTURES, exist_ok=True)
        picture.save(os.path.join(PICTURES, name))
        return picture

    def test_a_desktop_without_a_say_has_light_windows(self):
        window = self.open_with(*RULES)
        self.assertEqual(self.empty_part(window), LIGHT)

    def test_a_dark_desktop_has_dark_windows_from_the_start(self):
        self.start_portal(color_scheme=1)
        window = self.open_with(*RULES)
        self.assertEqual(self.empty_part(window), DARK)
        missing = window.column(PATH).index("/no/such/file")
        x, y, width, height = window.table.cell(missing, PATH).box
        self.assertIn(DARK_RED, set(self.desk.picture((x, y, min(width, 300), height)).getdata()))
        self.keep_picture("main-window-dark.png", window.frame)

    def test_open_windows_follow_when_the_desktop_changes(self):
        portal = self.start_portal(color_scheme=0)
        window = self.open_with(*RULES)
        self.assertEqual(self.empty_part(window), LIGHT)
        portal.change(color_scheme=1)
        self.assert_becomes(lambda: self.empty_part(window), DARK)
        portal.change(contrast=1)
        self.assert_becomes(lambda: self.empty_part(window), DARK_IN_HIGH_CONTRAST)
        self.keep_picture("main-window-dark-contrast.png", window.frame)
        portal.change(color_scheme=0)
        self.assert_becomes(lambda: self.empty_part(window), LIGHT)
        self.keep_picture("main-window-contrast.png", window.frame)

    def test_the_editor_of_a_rule_stays_light(self):
        self.start_portal(color_scheme=1)
        window = self.open_with(*RULES)
        window.click_row(1)
        self.desk.press("Return")
        editor = window.program.find("dialog")
        self.assertGreater(min(commonest(self.desk.picture(editor.box))), 0xf0)
        self.keep_picture("editor-on-a-dark-desktop.png", editor)

    def test_a_review_follows_too(self):
        self.start_portal(color_scheme=1)
        file = self.sandbox.new_file("others.quorv", ["allow prefix /usr any r other", *RULES])
        window = self.open_with(*RULES)
        self.desk.press("ctrl+o")
        answer_panel(window, "Import Files", file)
        review = ReviewWindow(window, file)
        self.assertEqual(commonest(self.keep_picture("review-dark.png", review.dialog)), DARK)

    def test_menus_and_tool_tips_are_dark_too(self):
        self.start_portal(color_scheme=1)
        window = self.open_with(*RULES)
        self.desk.press("alt+f")
        menu = window.program.find("popup menu")
        self.assertLess(max(commonest(self.keep_picture("menu-dark.png", menu))), 0x60)
