"""The application's units with the real services for administrators, fingerprints and passwords."""

import os
import subprocess

from desk import PATIENCE
from real_services import GROUPS, FingerReader, RealServices, as_user


class Probe(RealServices):
    """A process that calls the services like the application, and prints the result."""

    def prepare(self, question, user):
        """A process that calls them for a user as soon as it gets a line; communicate() returns the result."""
        probe = subprocess.Popen(
            [*as_user(user), "sh", "-c", 'echo ready; read line; exec "$0" "$1"', self.program, question],
            env={"PATH": os.environ["PATH"], "QT_QPA_PLATFORM": "offscreen", "HOME": "/nonexistent",
                 "XDG_RUNTIME_DIR": "/nonexistent", "LC_ALL": "C.UTF-8", "ASAN_OPTIONS": "detect_leaks=0"},
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.stop, probe)
        # Before that it may still be root's, for which the user's agent is refused.
        self.assertEqual(probe.stdout.readline(), "ready\n")
        return probe

    def ask(self, question, user):
        return self.answer_of(self.prepare(question, user))

    def answer_of(self, probe):
        out, complaints = probe.communicate("go\n", timeout=PATIENCE)
        self.assertEqual(probe.returncode, 0, complaints)
        return out.strip()


class Administrators(Probe):
    def test_members_of_the_group_admin_are(self):
        self.assertEqual(self.ask("admin", "admina"), "yes")

    def test_users_whose_own_group_it_is_are(self):
        self.assertEqual(self.ask("admin", "adminb"), "yes")

    def test_others_are_not(self):
        self.assertEqual(self.ask("admin", "other"), "no")

    def test_nobody_is_without_such_a_group(self):
        self.hide("/etc/group", self.sandbox.new_file("no-admin", GROUPS.replace("admin:x", "wheel:x")))
        try:
            self.assertEqual(self.ask("admin", "admina"), "no")
        finally:
            self.unhide("/etc/group")


class Passwords(Probe):
    def password_answer(self, user, *passwords):
        """The result when these are typed at the terminal of a user."""
        probe = self.prepare("password", user)
        terminal = self.agent_of(probe, user)
        probe.stdin.write("go\n")
        probe.stdin.flush()
        for password in passwords:
            self.type_password(terminal, password)
        return self.answer_of(probe)

    def test_the_right_one_of_an_administrator_is_yes(self):
        self.assertEqual(self.password_answer("other", "right"), "yes")

    def test_a_wrong_one_is_no(self):
        self.assertEqual(self.password_answer("other", "wrong"), "no")

    def test_nobody_to_ask_is_no(self):
        self.assertEqual(self.ask("password", "other"), "no")


class Fingers(FingerReader, Probe):
    def finger_answer(self, user, *fingers):
        probe = self.prepare("finger", user)
        probe.stdin.write("go\n")
        probe.stdin.flush()
        for finger in fingers:
            self.put_finger(finger)
        return self.answer_of(probe)

    def test_an_enrolled_one_is_yes_and_the_reader_is_free_afterwards(self):
        for _ in range(2):
            self.assertEqual(self.finger_answer("other", "finger-1"), "yes")

    def test_another_is_no(self):
        self.assertEqual(self.finger_answer("other", "finger-2"), "no")

    def test_without_an_enrolled_one_the_answer_is_no_at_once(self):
        self.assertEqual(self.ask("finger", "admina"), "no")

    def test_a_reader_in_use_is_no_at_once(self):
        self.call("Claim", "other")
        try:
            self.assertEqual(self.ask("finger", "other"), "no")
        finally:
            self.call("Release")
