"""Notices go to the desktop where it shows them; test_start_up has what happens where it does not."""

import os
import shutil
import subprocess
import unittest

from desk import call, connect, eventually
from notification_service import NotificationService
from rules_window import DesktopTest

PICTURES = os.environ.get("QUORVANE_PICTURES", "pictures")
HEADER = "Error Loading Configuration"


class Notices(DesktopTest):
    def make_loading_fail(self):
        self.sandbox.write_user("allow path /a any r")
        folder = self.sandbox.system_file("exec.rc")
        os.makedirs(folder)
        return f"Failed to read() file '{folder}': Is a directory (21)"

    def put_icon(self):
        icon = self.sandbox.system_file("lock.png")
        shutil.copy(os.path.join(os.path.dirname(__file__), "../../resources/images/lock@3x.png"), icon)
        return icon


class AnyDesktop(Notices):
    def setUp(self):
        super().setUp()
        self.service = NotificationService(self.desk.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.service.end)

    def test_a_configuration_that_fails_to_load_is_told_by_the_desktop_and_the_window_opens(self):
        message = self.make_loading_fail()
        icon = self.put_icon()
        window = self.open()
        notice = self.service.notice()
        self.assertEqual(notice[2:6], ("file://" + icon.replace(" ", "%20"), HEADER, message, ["default", "OK"]))
        self.assertIsNone(window.program.find_now("dialog"))

    def test_a_notice_stays_when_the_program_ends(self):
        self.make_loading_fail()
        window = self.open()
        self.service.notice()
        self.assertEqual(window.close(), 0)
        self.assertEqual([method for method, _ in self.service.calls], ["GetCapabilities", "Notify"])


@unittest.skipUnless(shutil.which("dunst"), "the package dunst is missing")
class RealDesktop(Notices):
    def notices(self):
        """The visible windows of the service."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "Dunst"],
                               env=self.desk.environment, stdout=subprocess.PIPE, text=True)
        return found.stdout.split()

    def test_shows_a_notice_that_outlives_the_program_and_goes_away_with_a_click(self):
        configuration = self.sandbox.new_file(
            "dunstrc", "[global]\nmouse_left_click = do_action, close_current\nfont = DejaVu Sans 11\nwidth = 500\n")
        dunst = self.desk.start("dunst", "-conf", configuration)
        self.addCleanup(self.desk.stop, dunst)
        bus = connect(self.desk.environment["DBUS_SESSION_BUS_ADDRESS"])
        eventually(lambda: call(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", "(s)",
                                "org.freedesktop.Notifications")[0], "the service for notices")
        self.make_loading_fail()
        self.put_icon()
        window = self.open()
        eventually(self.notices, "the notice")
        os.makedirs(PICTURES, exist_ok=True)
        self.desk.picture().save(os.path.join(PICTURES, "notice.png"))
        self.assertIsNone(window.program.find_now("dialog"))
        self.assertEqual(window.close(), 0)
        self.assertEqual(len(self.notices()), 1)
        box = dict(line.split("=") for line in
                   self.desk.hands("getwindowgeometry", "--shell", self.notices()[0]).split())
        self.desk.click(int(box["X"]) + int(box["WIDTH"]) // 2, int(box["Y"]) + int(box["HEIGHT"]) // 2)
        eventually(lambda: not self.notices(), "the notice to go away")
