import os
import subprocess
import unittest

PROBE = os.environ["QUORVANE_PROGRAM"]


class Compositor(unittest.TestCase):
    """A display of two screens, of which each may have a compositing manager."""

    @classmethod
    def setUpClass(cls):
        reader, writer = os.pipe()
        screens = [word for number in "01" for word in ("-screen", number, "640x480x24")]
        cls.display = subprocess.Popen(["Xvfb", "-displayfd", str(writer), *screens, "-nolisten", "tcp", "-noreset", "-ac"],
                                       pass_fds=(writer,), stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as number:
            cls.name = ":" + number.readline().strip()

    @classmethod
    def tearDownClass(cls):
        cls.display.terminate()
        cls.display.wait()

    def blends(self, screen, *managed, platform="xcb"):
        """Whether a program on that screen takes the desktop for one that blends windows."""
        environment = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "DISPLAY": self.name + screen,
                       "QT_QPA_PLATFORM": platform}
        done = subprocess.run([PROBE, *managed], env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.strip()

    def test_a_screen_blends_windows_when_it_has_a_manager(self):
        self.assertEqual(self.blends(""), "no")
        self.assertEqual(self.blends("", "0"), "yes")
        self.assertEqual(self.blends(".0", "0"), "yes")

    def test_the_manager_of_another_screen_does_not_count(self):
        self.assertEqual(self.blends(".1"), "no")
        self.assertEqual(self.blends(".1", "0"), "no")
        self.assertEqual(self.blends(".0", "1"), "no")
        self.assertEqual(self.blends(".1", "1"), "yes")

    def test_a_program_without_a_display_asks_none(self):
        self.assertEqual(self.blends("", "0", platform="offscreen"), "no")
