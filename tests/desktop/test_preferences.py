"""The preferences window, started alone by "-preferences": as an administrator and as anybody else.

Who is an administrator is up to the machine's group "admin", so these tests give the program a list of groups of its
own, for which they must be root. A stand-in answers for the service that asks for the password.
"""

import os
import plistlib
import stat
import subprocess
import threading
import unittest

from alone import can_mount
from desk import (ACTIVE, BUS_CONFIGURATION, CHECKED, ENABLED, FOCUSED, PATIENCE, SHOWING, connect,
                  connect_when_ready, eventually, settled)
from gi.repository import Gio, GLib
from rules_window import PROGRAM, DesktopTest
from sandbox import login_name

# Replaces the list of groups by the file $1, for the program only.
WITH_GROUPS = 'mount --bind "$1" /etc/group; shift; exec "$@"'

POLKIT = """<node><interface name="org.freedesktop.PolicyKit1.Authority">
  <method name="CheckAuthorization">
    <arg type="(sa{sv})" direction="in"/><arg type="s" direction="in"/><arg type="a{ss}" direction="in"/>
    <arg type="u" direction="in"/><arg type="s" direction="in"/><arg type="(bba{ss})" direction="out"/>
  </method>
</interface></node>"""


class PasswordService:
    """Replaces the service that asks an administrator for a password."""

    def __init__(self, address):
        self.granted, self.questions = True, []
        owned = threading.Event()
        threading.Thread(target=self._serve, args=(address, owned), daemon=True).start()
        if not owned.wait(PATIENCE):
            raise AssertionError("no password service")

    def _serve(self, address, owned):
        context = GLib.MainContext.new()
        context.push_thread_default()
        bus = connect(address)
        bus.register_object("/org/freedesktop/PolicyKit1/Authority",
                            Gio.DBusNodeInfo.new_for_xml(POLKIT).interfaces[0], self._answer)
        Gio.bus_own_name_on_connection(bus, "org.freedesktop.PolicyKit1", 0, lambda *_: owned.set(), None)
        GLib.MainLoop.new(context, False).run()

    def _answer(self, _bus, _sender, _path, _interface, _method, question, invocation):
        self.questions.append(question.unpack()[1])
        invocation.return_value(GLib.Variant("((bba{ss}))", ((self.granted, False, {}),)))


@unittest.skipUnless(can_mount(), "needs root, and mounts of its own")
class PreferencesTest(DesktopTest):
    screen = (1280, 800)

    def setUp(self):
        super().setUp()
        os.chmod(self.sandbox.shared, 0o775)
        self.is_admin = True
        bus = self.sandbox.path("system-bus")
        self.bus = "unix:path=" + bus
        configuration = self.sandbox.new_file("system-bus.conf", BUS_CONFIGURATION.format(socket=bus))
        self.daemon = self.desk.start("dbus-daemon", "--nofork", "--config-file=" + configuration)
        self.addCleanup(self.desk.stop, self.daemon)
        connect_when_ready(bus, "the system bus")
        self.passwords = PasswordService(self.bus)
        self.pretend_pkexec('eval "$3"')

    def pretend_pkexec(self, script):
        """Puts a pkexec first in PATH that records its arguments."""
        os.makedirs(self.sandbox.path("bin"), exist_ok=True)
        self.calls = self.sandbox.path("calls")
        pkexec = self.sandbox.new_file("bin/pkexec", f'#!/bin/sh\nprintf "%s\\n" "$*" >> "{self.calls}"\n{script}\n')
        os.chmod(pkexec, 0o755)

    def pkexec_calls(self):
        if not os.path.exists(self.calls):
            return []
        with open(self.calls, encoding="utf-8") as calls:
            return calls.read().splitlines()

    def command(self):
        with open("/etc/group", encoding="utf-8") as file:
            groups = [line for line in file if not line.startswith("admin:")]
        members = login_name() if self.is_admin else ""
        groups.append(f"admin:x:60999:{members}\n")
        return ["unshare", "--mount", "--propagation", "private", "sh", "-euc", WITH_GROUPS, "sh",
                self.sandbox.new_file("group", "".join(groups)), PROGRAM, "-preferences"]

    def open_preferences(self):
        """Starts the application for its preferences and waits for their window."""
        self.process = self.start(self.command(), DBUS_SYSTEM_BUS_ADDRESS=self.bus,
                                  PATH=self.sandbox.path("bin") + ":" + os.environ["PATH"])
        self.program = self.desk.tree_of(self.process)
        self.window = self.program.find("dialog", "Quorvane Preferences")
        eventually(lambda: self.window.has(ACTIVE), "the preferences to become active")
        settled(lambda: self.window.box)

    def box(self, title):
        return self.window.find("check box", title)

    def click(self, role, name):
        self.desk.click(*self.window.find(role, name).center)

    def turn(self, title):
        box = self.box(title)
        before = box.has(CHECKED)
        x, y, _, height = box.box
        self.desk.click(x + 10, y + height // 2)
        eventually(lambda: box.has(CHECKED) != before, title + " to change")

    def end(self):
        """The exit status, once the program has ended by itself."""
        return self.process.wait(PATIENCE)

    def saved(self):
        with open(self.sandbox.preferences_file, "rb") as file:
            return plistlib.load(file)

    def folder_permissions(self):
        return stat.S_IMODE(os.stat(self.sandbox.shared).st_mode)


class Administrator(PreferencesTest):
    def test_saves_what_was_changed_and_ends_the_program(self):
        with open(self.sandbox.preferences_file, "wb") as file:
            plistlib.dump({"policy.global.webcam": 0, "ours": [1, {"a": b"\0"}], "large": -2**63}, file,
                          fmt=plistlib.FMT_BINARY)
        self.open_preferences()
        self.assertEqual(self.passwords.questions, ["vantreal.quorvane.system.privilege.admin"])
        self.assertEqual([node.role for node in self.program.children() if node.has(SHOWING)], ["dialog"])
        self.turn("Monitor execution")
        self.turn("Allow signed execution")
        self.click("push button", "Save")
        self.assertEqual(self.end(), 0)
        self.assertEqual(self.saved(), {
            "ours": [1, {"a": b"\0"}], "large": -2**63,
            "access.user.detail": 0, "access.user.restrict": False, "access.user.create": False,
            "filter.exec.allow.signed": True, "policy.global.user": 1, "policy.global.webcam": 1,
            "policy.global.startup": 1, "policy.global.exec": 2, "policy.global.attach": 1,
            "ui.prompts.while_locked": 1, "ui.prompts.oob": 2, "policy.global.paranoid": 2, "ui.prompts.remote": 2,
            "ui.prompts.authenticate": 2})
        self.assertEqual(stat.S_IMODE(os.stat(self.sandbox.preferences_file).st_mode), 0o775)
        self.assertEqual(self.pkexec_calls(), [])

    def test_lets_users_create_rules_with_one_question(self):
        self.open_preferences()
        self.turn("Ordinary users may create rules")
        self.assertTrue(self.box("Restrict users' own rules").has(ENABLED))
        self.click("push button", "Save")
        self.assertEqual(self.end(), 0)
        self.assertEqual(self.pkexec_calls(), [f"/bin/sh -c /bin/chmod 777 '{self.sandbox.shared}'"])
        self.assertEqual(self.folder_permissions(), 0o777)
        self.assertIs(self.saved()["access.user.create"], True)

    def test_saves_the_rest_when_the_question_is_dismissed_or_refused(self):
        for status in (126, 127):
            with self.subTest(status=status):
                self.pretend_pkexec(f"echo 'not allowed' >&2; exit {status}")
                self.open_preferences()
                self.turn("Ordinary users may create rules")
                self.click("push button", "Save")
                self.assertEqual(self.end(), 0)
                self.assertEqual(self.folder_permissions(), 0o775)
                self.assertIs(self.saved()["access.user.create"], True)
                self.assertIn(f"pkexec: status {status}: not allowed", self.log())

    def test_the_window_stays_painted_and_takes_no_clicks_while_the_question_is_open(self):
        answered = self.sandbox.path("answered")
        self.pretend_pkexec(f'while ! test -e "{answered}"; do sleep 0.05; done')
        self.open_preferences()
        self.turn("Ordinary users may create rules")
        self.click("push button", "Save")
        eventually(self.pkexec_calls, "the question")
        x, y, _, height = self.box("Monitor the webcam").box
        self.desk.click(x + 10, y + height // 2)
        self.desk.press("Escape")
        self.assertTrue(self.box("Monitor the webcam").has(CHECKED))
        with open(answered, "w", encoding="utf-8"):
            pass
        self.assertEqual(self.end(), 0)
        self.assertEqual(self.saved()["policy.global.webcam"], 1)
        self.assertEqual(len(self.pkexec_calls()), 1)

    def test_leaves_with_escape_without_saving(self):
        self.open_preferences()
        self.turn("Monitor the webcam")
        self.desk.press("Escape")
        self.assertEqual(self.end(), 0)
        self.assertFalse(os.path.exists(self.sandbox.preferences_file))
        self.assertIn("-[QVPreferencesWindow windowWillClose:] exiting", self.log())

    def test_leaves_by_the_window_manager_without_saving(self):
        self.open_preferences()
        self.turn("Monitor the webcam")
        self.desk.press("alt+F4")
        self.assertEqual(self.end(), 0)
        self.assertFalse(os.path.exists(self.sandbox.preferences_file))

    def test_every_control_can_be_reached_by_keyboard_in_reading_order(self):
        self.open_preferences()
        reached = []
        while len(reached) < 20:
            focused = eventually(lambda: next((n for n in self.window.below() if n.has(FOCUSED)), None), "the focus")
            if focused.box in reached:
                break
            reached.append(focused.box)
            before = focused
            self.desk.press("Tab")
            eventually(lambda: not before.has(FOCUSED), "the focus to move")
        controls = [n for n in self.window.below()
                    if n.role in ("check box", "combo box", "push button") and n.has(SHOWING) and n.has(ENABLED)]
        self.assertEqual(len(reached), len(controls))
        columns = sorted(reached[:-2], key=lambda box: (box[0] > 640, box[1]))
        self.assertEqual(reached[:-2], columns)

    def test_the_window_fits_the_screen_and_nothing_in_it_is_cut_off(self):
        self.open_preferences()
        x, y, width, height = self.window.box
        self.assertLessEqual(x + width, 1280)
        self.assertLessEqual(y + height, 800)
        for node in self.window.below():
            if node.has(SHOWING) and node.role in ("check box", "label", "push button", "combo box"):
                left, top, w, h = node.box
                self.assertTrue(x <= left and left + w <= x + width and y <= top and top + h <= y + height, node.name)

    def test_the_level_of_detail_has_its_label(self):
        self.open_preferences()
        self.assertIn("Detail of users' access",
                      [label.replace("&", "") for label in self.window.find("combo box").labels()])


class AnybodyElse(PreferencesTest):
    def assert_read_only(self):
        enabled = [node.name for node in self.window.below() if node.role == "check box" and node.has(ENABLED)]
        self.assertEqual(enabled, ["Strict system rules"])
        self.assertFalse(self.window.find("combo box").has(ENABLED))
        self.window.find("label", "Only an administrator can change these settings.")
        self.assertIsNone(self.window.find_now("push button", "Cancel"))
        self.turn("Strict system rules")
        self.click("push button", "  OK  ")
        self.assertEqual(self.end(), 0)
        self.assertFalse(os.path.exists(self.sandbox.preferences_file))

    def test_outside_the_group_only_looks_and_is_not_asked(self):
        self.is_admin = False
        self.open_preferences()
        self.assertEqual(self.passwords.questions, [])
        self.assert_read_only()

    def test_who_does_not_authenticate_only_looks(self):
        self.passwords.granted = False
        self.open_preferences()
        self.assertEqual(len(self.passwords.questions), 1)
        self.assert_read_only()
