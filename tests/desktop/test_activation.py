"""The program as a desktop starts it: by its entry, over the session bus."""

import os
import shutil
import signal
import subprocess

from desk import ACTIVE, PATIENCE, SHOWING, Desk, call, eventually
from gi.repository import GLib
from review_window import ReviewWindow
from rules_window import PROGRAM, DesktopTest, RulesWindow
from sandbox import Sandbox

NAME = "com.vantreal.quorvane.configuration"
OBJECT = "/" + NAME.replace(".", "/")
RESOURCES = os.path.join(os.path.dirname(__file__), "../../resources")
APPLICATION = "org.freedesktop.Application"
ENTRY = os.path.join(RESOURCES, NAME + ".desktop")
# Uses the entry and files like a file manager or application menu. It keeps running as these do: the bus drops requests of
# processes that have ended.
LAUNCH = """
import sys
from gi.repository import Gio
files = [Gio.File.new_for_path(path) for path in sys.argv[2:]]
Gio.DesktopAppInfo.new_from_filename(sys.argv[1]).launch(files, None)
Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
    "%s", "/", "org.freedesktop.DBus.Peer", "Ping", None, None, Gio.DBusCallFlags.NONE, 20000, None)
""" % NAME


class Served:
    """A process started by the bus."""

    def __init__(self, pid):
        self.pid = pid

    def poll(self):
        return None if os.path.exists(f"/proc/{self.pid}/exe") else 0

    returncode = 0

    def wait(self, _):
        eventually(lambda: self.poll() is not None, "the program to end")
        return 0


class Activation(DesktopTest):
    @classmethod
    def setUpClass(cls):
        installed = Sandbox()
        cls.addClassCleanup(installed.end)
        services = installed.path("services")
        os.mkdir(services)
        shutil.copy(os.path.join(RESOURCES, NAME + ".service"), services)
        cls.desk = Desk(*cls.screen, services=services)
        cls.addClassCleanup(cls.desk.end)
        os.mkdir(installed.path("bin"))
        os.symlink(PROGRAM, installed.path("bin/quorvane-configuration"))
        cls.path = installed.path("bin") + ":" + os.environ["PATH"]

    def setUp(self):
        super().setUp()
        self.sandbox.write_user('allow path "/a" "any" r')
        self.surround({"PATH": self.path, "HOME": self.sandbox.home, "QUORVANE_ROOT": self.sandbox.root,
                       "XDG_CONFIG_HOME": self.sandbox.path("config"), "ASAN_OPTIONS": "detect_leaks=0"})
        self.addCleanup(self.end_service)

    def surround(self, environment):
        """Sets the environment of services that the bus starts from now on."""
        call(self.desk.session, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
             "UpdateActivationEnvironment", "(a{ss})", {**self.desk.environment, **environment})

    def ask_bus(self, method):
        try:
            return call(self.desk.session, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                        "(s)", NAME)[0]
        except GLib.Error:
            return None

    def end_service(self):
        pid = self.ask_bus("GetConnectionUnixProcessID")
        if pid:
            os.kill(pid, signal.SIGTERM)
            eventually(lambda: not self.ask_bus("NameHasOwner"), "the service to end")

    def launch(self, *files):
        subprocess.run(["/usr/bin/python3", "-c", LAUNCH, ENTRY, *files], env={**self.desk.environment, "PATH": self.path},
                       check=True, timeout=PATIENCE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return self.service()

    def service(self):
        return Served(eventually(lambda: self.ask_bus("GetConnectionUnixProcessID"), "the service"))

    def exchange_file(self, name):
        return self.sandbox.new_file(name, 'watch prefix "/w" "any" w\n')

    def shown(self, process, role):
        return [node for node in self.desk.tree_of(process).children() if node.role == role and node.has(SHOWING)]

    def test_the_entry_opens_the_window(self):
        window = RulesWindow(self.desk, self.launch())
        self.assertEqual(window.texts()[0][-1], "/a")
        self.assertEqual(window.close(), 0)

    def test_a_second_start_brings_the_window_to_the_front(self):
        window = RulesWindow(self.desk, self.launch())
        other = self.open()
        self.assert_becomes(lambda: window.frame.has(ACTIVE), False)
        self.assertEqual(self.launch().pid, window.process.pid)
        eventually(lambda: window.frame.has(ACTIVE), "the first window to come to the front")
        self.assertEqual(len(self.shown(window.process, "frame")), 1)
        self.desk.stop(other.process)

    def test_a_file_that_is_opened_is_reviewed(self):
        file = self.exchange_file("Photo Tools,2.quorv")
        window = RulesWindow(self.desk, self.launch(file), wait_until_active=False)
        self.assertEqual(ReviewWindow(window, file).count(), "1 of 1 rules ticked")

    def test_several_files_are_reviewed_one_after_the_other_by_the_program_that_runs(self):
        window = RulesWindow(self.desk, self.launch())
        first, second = self.exchange_file("First.quorv"), self.exchange_file("Second.quorv")
        self.assertEqual(self.launch(first, second).pid, window.process.pid)
        for file in (first, second):
            review = ReviewWindow(window, file)
            eventually(lambda: review.dialog.has(ACTIVE), "the review to have the keyboard")
            self.desk.press("Escape")
            review.wait_until_gone()
        self.assertEqual(self.shown(window.process, "dialog"), [])

    def test_the_action_shows_the_preferences_alone(self):
        call(self.desk.session, NAME, OBJECT, APPLICATION, "ActivateAction", "(sava{sv})", "preferences", [], {})
        eventually(lambda: not self.ask_bus("NameHasOwner"), "the program without a window to end")
        process = eventually(lambda: self.started([b"-preferences"]), "a program for the preferences")
        self.desk.tree_of(process).find("dialog", "Quorvane Preferences")
        self.assertEqual(self.shown(process, "frame"), [])
        self.desk.press("Escape")
        process.wait(PATIENCE)

    @staticmethod
    def started(arguments, besides=None):
        """A process of the program with these arguments."""
        for pid in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{pid}/cmdline", "rb") as file:
                    found = file.read().split(b"\0")[1:-1]
                if found == arguments and os.path.samefile(f"/proc/{pid}/exe", PROGRAM) and int(pid) != besides:
                    return Served(int(pid))
            except OSError:  # ended in the meantime
                pass
        return None

    def test_an_unknown_action_shows_nothing(self):
        call(self.desk.session, NAME, OBJECT, APPLICATION, "ActivateAction", "(sava{sv})", "format", [], {})
        process = self.service()
        self.assertEqual(self.shown(process, "frame") + self.shown(process, "dialog"), [])

    def test_a_start_from_a_shell_joins_no_other_and_ignores_a_path(self):
        served = RulesWindow(self.desk, self.launch())
        process = self.start([PROGRAM, self.exchange_file("Tools.quorv")])
        own = RulesWindow(self.desk, process)
        self.assertEqual(own.close(), 0)
        self.assertEqual(self.shown(served.process, "dialog"), [])
        self.assertEqual(self.service().pid, served.process.pid)

    def test_a_start_for_the_preferences_joins_no_other(self):
        served = RulesWindow(self.desk, self.launch())
        process = self.start([PROGRAM, "-preferences"])
        self.desk.tree_of(process).find("dialog", "Quorvane Preferences")
        self.assertEqual(self.shown(served.process, "dialog"), [])

    def test_a_launcher_that_knows_no_activation_opens_a_window_of_its_own(self):
        served = RulesWindow(self.desk, self.launch())
        process = self.start(["gio", "launch", ENTRY], PATH=self.path)
        process.wait(PATIENCE)
        own = RulesWindow(self.desk, eventually(lambda: self.started([], besides=served.process.pid), "another window"))
        self.assertEqual(own.close(), 0)
        self.assertEqual(self.service().pid, served.process.pid)

    def test_where_there_is_no_bus_the_window_opens(self):
        process = self.start(QUORVANE_STARTED_BY_BUS="yes", DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        # Then it is in no accessibility tree, but known to the window manager.
        self.desk.hands("search", "--sync", "--onlyvisible", "--pid", process.pid, "--name", "^Quorvane Configuration")
        self.assertIn("the session bus does not give the name " + NAME, self.log())
