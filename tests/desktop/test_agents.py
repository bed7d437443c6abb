"""The agents of the product are told of changes when the application ends, and nobody else is."""

import os
import plistlib
import shutil
import signal
import subprocess
import sys

from desk import PATIENCE, Desk, eventually
from rules_window import ALONE, DesktopTest
from sandbox import read

IDENTIFIER = "vantreal.QuorvaneUserAgent"
NAME = "QuorvaneUserAgent"

# Records the names of received signals.
AGENT = """
import signal, sys
watched = {signal.SIGHUP, signal.SIGINT, signal.SIGUSR1}
signal.pthread_sigmask(signal.SIG_BLOCK, watched)
print("ready", flush=True)
while True:
    print(signal.sigwaitinfo(watched).si_signo, flush=True)
"""


class Process:
    """A running process that records signals."""

    def __init__(self, test, program, name=None):
        self.notes = test.sandbox.path(f"notes-{len(test.desk.processes)}")
        with open(self.notes, "wb") as notes:
            self.process = test.desk.start(name or program, "-S", "-c", AGENT, executable=program, stdout=notes,
                                           environment={"PYTHONHOME": "/usr"})
        test.addCleanup(test.desk.stop, self.process)
        eventually(self.signals_or_none, "the process to be ready")

    def signals_or_none(self):
        return read(self.notes).startswith(b"ready\n")

    def signals(self):
        return [int(line) for line in read(self.notes).split()[1:]]


class Agents(DesktopTest):
    def setUp(self):
        super().setUp()
        if not ALONE:
            self.skipTest("agents of others must be out of sight, which needs root")

    def program(self, path):
        path = self.sandbox.path(path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        return shutil.copy(os.path.realpath("/usr/bin/python3"), path)

    def bundled_program(self, bundle, identifier):
        program = self.program(f"{bundle}.app/Contents/MacOS/{NAME}")
        with open(self.sandbox.path(f"{bundle}.app/Contents/Info.plist"), "wb") as info:
            plistlib.dump({"CFBundleIdentifier": identifier}, info)
        return program

    def agent(self, path=NAME):
        return Process(self, self.program(path))

    def change_and_quit(self):
        return self.quit(self.changed_window())

    def quit(self, window):
        """The lines about agents in the log."""
        self.assertEqual(window.close(), 0)
        return [line for line in self.log().splitlines() if "UserAgent" in line or "SIGHUP" in line]

    def assert_signals(self, process, *expected):
        # Our signal arrives after those of the application.
        process.process.send_signal(10)
        self.assert_becomes(process.signals, [*expected, 10])

    def test_all_get_sighup_after_a_change_in_the_order_of_their_start(self):
        first = self.agent()
        second = Process(self, self.bundled_program("Any", IDENTIFIER))
        lines = self.change_and_quit()
        self.assertEqual(lines, [f"there are 2 instances of {IDENTIFIER} running",
                                 f"sending SIGHUP to {first.process.pid}", f"sending SIGHUP to {second.process.pid}"])
        self.assert_signals(first, 1)
        self.assert_signals(second, 1)

    def changed_window(self):
        window = self.open_with("allow path /a any r", "allow path /b any r")
        window.click_row(0)
        self.desk.press("Delete")
        self.assert_becomes(lambda: b"/a" in read(self.sandbox.user_file), False)
        return window

    def test_signals_end_the_program_in_order(self):
        agent = self.agent()
        expected = []
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                window = self.changed_window()
                window.process.send_signal(number)
                self.assertEqual(window.process.wait(PATIENCE), 0)
                expected.append(1)
        self.assert_signals(agent, *expected)

    def test_a_burst_of_signals_tells_them_once(self):
        agent = self.agent()
        window = self.changed_window()
        for number in [signal.SIGTERM, signal.SIGHUP, signal.SIGINT] * 50:
            window.process.send_signal(number)
        self.assertEqual(window.process.wait(PATIENCE), 0)
        self.assert_signals(agent, 1)

    def test_a_signal_ends_the_program_while_a_panel_or_menu_waits(self):
        agent = self.agent()
        expected = []
        for key, role in (("ctrl+o", "dialog"), ("alt+f", "popup menu"), ("ctrl+n", "dialog")):
            with self.subTest(role=role):
                window = self.changed_window()
                self.desk.press(key)
                window.program.find(role)
                window.process.send_signal(signal.SIGTERM)
                self.assertEqual(window.process.wait(PATIENCE), 0)
                expected.append(1)
        self.assert_signals(agent, *expected)

    def test_the_end_of_the_display_tells_them(self):
        desk, self.__class__.desk = self.desk, Desk()
        try:
            self.addCleanup(self.desk.end)
            agent = self.agent()
            window = self.changed_window()
            self.desk.end_screen()
            self.assertNotEqual(window.process.wait(PATIENCE), 0)
            self.assert_signals(agent, 1)
        finally:
            self.__class__.desk = desk

    def test_an_agent_whose_program_was_replaced_is_told_as_well(self):
        agent = self.agent()
        os.remove(self.sandbox.path(NAME))
        self.program(NAME)
        self.change_and_quit()
        self.assert_signals(agent, 1)

    def test_none_is_told_without_a_change(self):
        agent = self.agent()
        self.assertEqual(self.quit(self.open_with("allow path /a any r")), [])
        self.assert_signals(agent)

    def test_without_agents_their_number_is_logged(self):
        self.assertEqual(self.change_and_quit(), [f"there are 0 instances of {IDENTIFIER} running"])

    def test_what_only_looks_like_an_agent_is_left_alone(self):
        decoys = [Process(self, self.program("elsewhere/another"), name=NAME),
                  Process(self, self.program(NAME + "2")),
                  Process(self, self.program(NAME.lower())),
                  Process(self, self.bundled_program("Other", "other." + NAME)),
                  Process(self, self.bundled_program("Broken", 7))]
        self.assertEqual(self.change_and_quit(), [f"there are 0 instances of {IDENTIFIER} running"])
        for decoy in decoys:
            self.assert_signals(decoy)
