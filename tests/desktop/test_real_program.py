"""The preferences of the program itself, before real polkit, pkexec and fprintd."""

import os
import plistlib
import shutil
import stat

from desk import CHECKED, ENABLED, PATIENCE, Desk, eventually
from real_services import FingerReader, RealServices, as_user
from sandbox import Sandbox

ADMINISTRATOR = "admina"


class RealProgram(RealServices):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desk = Desk(as_user=as_user(ADMINISTRATOR))
        cls.addClassCleanup(cls.desk.end)

    def setUp(self):
        self.product = Sandbox()
        self.addCleanup(self.product.end)
        for folder in (self.product.home, self.product.root, self.product.shared):
            shutil.chown(folder, 41001, 41001)
        os.chmod(self.product.shared, 0o775)

    def prepare(self):
        """The program, started once something is written to the returned pipe."""
        pipe = self.product.path("pipe")
        os.mkfifo(pipe)
        os.chmod(pipe, 0o666)
        process = self.desk.start(
            "sh", "-c", 'read line < "$1"; exec "$0" -preferences', self.program, pipe,
            environment={"HOME": self.product.home, "QUORVANE_ROOT": self.product.root,
                         "DBUS_SYSTEM_BUS_ADDRESS": self.address, "ASAN_OPTIONS": "detect_leaks=0"})
        return process, pipe

    def preferences(self, process):
        return self.desk.tree_of(process).find("dialog", "Quorvane Preferences")

    @staticmethod
    def let_go(pipe):
        with open(pipe, "w", encoding="ascii") as start:
            start.write("go\n")


class Passwords(RealProgram):
    def test_the_right_one_opens_the_settings_and_a_second_one_opens_the_rules_folder_to_users(self):
        process, pipe = self.prepare()
        terminal = self.agent_of(process, ADMINISTRATOR)
        self.let_go(pipe)
        self.type_password(terminal, "right")
        window = self.preferences(process)
        box = window.find("check box", "Ordinary users may create rules")
        self.assertTrue(box.has(ENABLED))
        self.assertFalse(box.has(CHECKED))
        self.desk.click(box.box[0] + 8, box.center[1])
        eventually(lambda: box.has(CHECKED), "the box to be ticked")
        self.desk.click(*window.find("push button", "Save").center)
        self.type_password(terminal, "right")
        self.assertEqual(process.wait(PATIENCE), 0)
        self.assertEqual(stat.S_IMODE(os.stat(self.product.shared).st_mode), 0o777)
        saved = os.stat(self.product.preferences_file)
        self.assertEqual((saved.st_uid, stat.S_IMODE(saved.st_mode)), (41001, 0o775))
        with open(self.product.preferences_file, "rb") as file:
            self.assertIs(plistlib.load(file)["access.user.create"], True)

    def test_a_wrong_one_leaves_them_to_be_looked_at(self):
        process, pipe = self.prepare()
        terminal = self.agent_of(process, ADMINISTRATOR)
        self.let_go(pipe)
        self.type_password(terminal, "wrong")
        window = self.preferences(process)
        self.assertFalse(window.find("check box", "Ordinary users may create rules").has(ENABLED))
        self.desk.click(*window.find("push button").center)
        self.assertEqual(process.wait(PATIENCE), 0)
        self.assertFalse(os.path.exists(self.product.preferences_file))


class Fingers(FingerReader, RealProgram):
    ENROLLED = ADMINISTRATOR

    def test_an_enrolled_one_opens_the_settings_without_a_password(self):
        process, pipe = self.prepare()
        self.let_go(pipe)
        self.put_finger("finger-1")
        window = self.preferences(process)
        self.assertTrue(window.find("check box", "Ordinary users may create rules").has(ENABLED))
        self.desk.press("Escape")
        self.assertEqual(process.wait(PATIENCE), 0)
