"""The volume of the samples has what the sample rules name, but for what they are to show as gone or changed."""

import hashlib
import json
import os
import subprocess
import unittest

from sandbox import Sandbox

PROGRAM = os.environ["QUORVANE_PROGRAM"]
QUORVANECTL = os.path.join(os.path.dirname(PROGRAM), "quorvanectl")
SAMPLES = os.path.abspath(os.path.join(os.path.dirname(__file__), "../../samples"))


def files_in(folder):
    """The SHA-256 of each file below the folder, by its path there."""
    digests = {}
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            with open(path, "rb") as file:
                digests[os.path.relpath(path, folder)] = hashlib.sha256(file.read()).hexdigest()
    return digests


class Samples(unittest.TestCase):
    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.end)
        self.volume = self.make("volume")

    def make(self, name):
        volume = self.sandbox.path(name)
        subprocess.run([PROGRAM, SAMPLES, volume], check=True)
        return volume

    def found(self, kind):
        """The findings on the volume: the program of each rule, or its path."""
        subprocess.run([os.path.join(SAMPLES, "seed"), self.sandbox.root], check=True)
        checked = subprocess.run([QUORVANECTL, "--root", self.sandbox.root, "check", "--json", "--only", kind,
                                  "--target", self.volume], stdout=subprocess.PIPE, check=False)
        self.assertEqual(checked.returncode, 1)
        rules = [json.loads(line)["rule"].split('"') for line in checked.stdout.splitlines()]
        return {rule[3] if kind == "invalid" else rule[1] for rule in rules}

    def test_only_programs_that_are_gone_or_have_changed_fail(self):
        self.assertEqual(self.found("invalid"), {
            "/Applications/Chat Room.app/Contents/MacOS/Chat Room",
            "/Applications/Plain Writer.app/Contents/MacOS/Plain Writer",
            "/Applications/Sheet Maker.app/Contents/MacOS/Sheet Maker",
            "/opt/tools/bin/mirror",
            "/usr/local/bin/scan-import"})

    def test_only_paths_that_are_gone_are_missing(self):
        self.assertEqual(self.found("missing"), {
            "/Users/ann/Chat Archive/", "/Volumes/Backup/Accounts/", "/Volumes/CAMERA/", "/Volumes/Old Disk/diary.txt",
            "/opt/old-scanner/"})

    def test_every_application_has_an_icon_of_its_own(self):
        applications = [path for path in files_in(self.volume) if path.count(".app/") == 1 and "/MacOS/" in path]
        icons = [digest for path, digest in files_in(self.volume).items() if path.endswith(".icns")]
        self.assertEqual(len(icons), len(applications))
        self.assertEqual(len(set(icons)), len(icons))

    def test_what_nobody_signs_is_the_same_in_every_run(self):
        first, second = files_in(self.volume), files_in(self.make("second"))
        self.assertEqual(first.keys(), second.keys())
        different = {path for path in first if first[path] != second[path]}
        self.assertIn("Applications/Ledger.app/Contents/MacOS/Ledger", different)
        self.assertTrue(all("/MacOS/" in path for path in different), different)

    def test_a_volume_that_is_there_stays_as_it_is(self):
        before = files_in(self.volume)
        self.make("volume")
        self.assertEqual(files_in(self.volume), before)

    def test_what_was_left_unfinished_is_made_anew(self):
        os.makedirs(self.sandbox.path("second.unfinished/left over"))
        second = self.make("second")
        self.assertEqual(files_in(second).keys(), files_in(self.volume).keys())
        self.assertFalse(os.path.exists(os.path.join(second, "left over")))
        self.assertFalse(os.path.exists(second + ".unfinished"))
