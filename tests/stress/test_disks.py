"""Disks that are full or read-only, and a clock that is wrong: no rule is lost, and the command says what it could not do."""

import json
import os
import subprocess
import tempfile
import unittest

from alone import run_alone

# Each test has its own mounts, removed at its end.
CAN_MOUNT = run_alone()

import faults  # noqa: E402
from scene import Scene, journal_versions  # noqa: E402

POSITIONS = 6  # of each command, in a short run
PAGE = 4096  # the allocation unit of a memory disk
PAGES = 40  # more than a command needs
RULES = ["allow prefix /folder/with/a/name/%d /bin/%d rw tag \"\" %d" % (number, number % 7, number)
         for number in range(1000)]
DAY = 24 * 3600


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def room_on(folder):
    disk = os.statvfs(folder)
    return disk.f_bavail * disk.f_frsize


@unittest.skipUnless(CAN_MOUNT, "only root can mount disks")
class FullDisks(unittest.TestCase):
    def setUp(self):
        self.disk = tempfile.mkdtemp(prefix="quorvane-disk-")
        mount("-t", "tmpfs", "-o", "size=8m", "none", self.disk)
        self.addCleanup(lambda: (subprocess.run(["umount", self.disk], check=True), os.rmdir(self.disk)))
        self.scene = Scene(self.disk)
        self.addCleanup(self.scene.end)
        self.scene.sandbox.write_user(*RULES)
        self.assertEqual(self.scene.run("add", "allow", "prefix", "/first", "any", "r").status, 0)
        self.scene.keep()
        self.filler = os.path.join(self.disk, "filler")

    def leave_room(self, pages):
        with open(self.filler, "wb") as file:
            file.write(bytes(max(0, room_on(self.disk) - pages * PAGE)))

    def walk(self, *command):
        before = self.scene.rules()
        self.scene.run(*command)
        meant = self.scene.rules()
        reports = []
        for pages in faults.sample(range(PAGES), POSITIONS):
            with self.subTest(pages=pages):
                self.scene.reset()
                self.leave_room(pages)
                result = self.scene.run(*command)
                reports.append(result.err)
                self.assertIn(result.status, (0, 1, 3), result)
                self.assertTrue(result.status == 0 or result.err, result)
                self.assertIn(self.scene.rules(), (meant,) if result.status == 0 else (before, meant))
                os.remove(self.filler)
                added, rules = self.scene.settled_rules()
                self.assertEqual(added.status, 0, added)
                self.assertIn(rules, (meant,) if result.status == 0 else (before, meant))
        self.assertTrue(any(reports), "no disk was too full")
        self.assertIn("", reports, "no disk had room")

    def test_importing_rules_that_need_more_pages(self):
        file = self.scene.sandbox.new_file("x.quorv", ["allow prefix /a/path/%d any r" % number for number in range(500)])
        self.walk("import", file)

    def test_removing_half_of_the_rules(self):
        self.walk("remove", "--process", "/bin/1", "--process", "/bin/2", "--process", "/bin/3")

    def test_undoing(self):
        self.walk("undo")


@unittest.skipUnless(CAN_MOUNT, "only root can mount disks")
class ReadOnlyDisks(unittest.TestCase):
    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)
        self.add("/first")
        self.state = os.path.join(self.scene.sandbox.home, ".local/state/quorvane")

    def add(self, path):
        return self.scene.run("add", "allow", "prefix", path, "any", "r")

    def paths(self):
        return [rule[2] for rule in self.scene.rules()]

    def make_read_only(self, folder):
        mount("--bind", folder, folder)
        mount("-o", "remount,ro,bind", folder)
        self.addCleanup(subprocess.run, ["umount", folder], stderr=subprocess.DEVNULL, check=False)

    def test_a_journal_on_one_stops_no_change_and_is_reported(self):
        self.make_read_only(self.state)
        added = self.add("/second")
        self.assertEqual(added.status, 0, added)
        self.assertIn("history of the rules cannot be kept", added.err)
        self.assertEqual(self.paths(), ["/first", "/second"])

    def test_a_journal_that_can_be_written_again_goes_on_with_what_was_done_meanwhile(self):
        self.make_read_only(self.state)
        self.add("/second")
        subprocess.run(["umount", self.state], check=True)
        self.assertEqual(self.add("/third").err, "")
        versions, _ = journal_versions(self, self.scene)
        self.assertEqual([version["rules"] for version in versions], [1, 2, 3])

    def test_a_journal_on_one_lets_the_same_action_be_undone_once_only(self):
        self.make_read_only(self.state)
        undone = self.scene.run("undo")
        self.assertEqual((undone.status, undone.out.startswith(b"Undone: "), self.paths()), (0, True, []), undone)
        self.assertIn("history of the rules cannot be kept", undone.err)
        again = self.scene.run("undo")
        self.assertEqual((again.status, again.out), (3, b""), again)
        self.assertIn("the history cannot keep that version 1 is undone", again.err)

    def test_a_journal_on_one_can_be_read(self):
        self.make_read_only(self.state)
        history = self.scene.run("history", "--json")
        self.assertEqual((history.status, len(history.out.splitlines())), (0, 1), history)

    def test_rules_on_one_are_read_and_a_change_is_refused(self):
        self.make_read_only(self.scene.sandbox.shared)
        added = self.add("/second")
        self.assertEqual(added.status, 1)
        self.assertIn("Read-only file system", added.err)
        self.assertEqual(self.paths(), ["/first"])


class Clocks(unittest.TestCase):
    """Versions stand in the order in which they were made, and none is too old because the clock was wrong."""

    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)
        for number, days in enumerate((0, -400, -40, -800, -1)):
            self.scene.environment["QUORVANE_CLOCK"] = str(days * DAY)
            self.assertEqual(self.scene.run("add", "allow", "prefix", f"/{number}", "any", "r").status, 0)

    def test_one_that_goes_back_leaves_the_order_of_versions(self):
        history = [json.loads(line) for line in self.scene.run("history", "--json").out.splitlines()]
        self.assertEqual([version["version"] for version in history], sorted((version["version"] for version in history),
                                                                             reverse=True))
        self.assertEqual(history[0]["rules"], 5)
        self.assertGreater(history[0]["time"], history[1]["time"])

    def test_one_that_goes_back_lets_undo_take_the_newest(self):
        self.assertEqual(self.scene.run("undo").status, 0)
        self.assertEqual([rule[2] for rule in self.scene.rules()], ["/0", "/1", "/2", "/3"])

    def test_one_that_goes_back_makes_no_version_too_old(self):
        for path in ("/5", "/6"):
            self.scene.environment["QUORVANE_CLOCK"] = str(-900 * DAY)
            self.scene.run("add", "allow", "prefix", path, "any", "r")
        rules = [version["rules"] for version in journal_versions(self, self.scene)[0]]
        self.assertEqual(rules[-3:], [5, 6, 7])
