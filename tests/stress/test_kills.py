"""quorvanectl killed at every call of a write in turn: the next command has the rules as they were, or as they were meant."""

import unittest

import faults
from scene import Scene, journal_versions

POSITIONS = 4  # of each command, in a short run

FEW = ["allow prefix /folder/%d /bin/%d rw tag \"\" %d" % (number, number % 7, number) for number in range(60)]
# More than a page of the database, and of the file.
MANY = ["allow prefix /folder/with/a/name/%d /bin/%d rw tag \"\" %d" % (number, number % 7, number)
        for number in range(1500)]


class Kills(unittest.TestCase):
    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)
        self.exchange = self.scene.sandbox.new_file("x.quorv", ["allow prefix /x/%d any r" % number
                                                                for number in range(300)])
        self.commands = {"add": ["add", "allow", "prefix", "/new", "any", "r"],
                         "delete": ["delete", "allow", "prefix", "/folder/7", "/bin/0", "rw"],
                         "import": ["import", self.exchange], "undo": ["undo"], "redo": ["redo"],
                         "restore": ["restore", "1"]}

    def walk(self, rules, command, fault, has_history=True, first=()):
        self.scene.sandbox.write_user(*rules)
        if has_history:
            self.assertEqual(self.scene.run("add", "allow", "prefix", "/folder/7", "/bin/0", "rw").status, 0)
            if first:
                self.assertEqual(self.scene.run(*first).status, 0)
            rules_file = self.scene.sandbox.user_file
            with open(rules_file, "ab") as file:  # a version by another program, only in the file
                file.write(b"allow prefix /another any r\n")
        self.scene.keep()
        before = self.scene.rules()
        whole = self.scene.run(*self.commands[command])
        self.assertEqual(whole.status, 0, whole)
        meant = self.scene.rules()
        calls = "write" if fault == "cut" else "any"
        kills = 0
        for number in faults.sample(range(1, whole.counts[calls] + 1), POSITIONS):
            with self.subTest(command=command, number=number, fault=fault):
                self.scene.reset()
                killed = self.scene.run(*self.commands[command], fault=f"{calls}:{number}:{fault}")
                if faults.was_killed(killed):
                    kills += 1
                else:  # a file that was written just now is looked at more closely, and so with more calls
                    self.assertLess(killed.counts[calls], number, killed)
                self.assert_as_before_or_as_meant(before, meant)
        self.assertGreater(kills, 0)

    def assert_as_before_or_as_meant(self, before, meant):
        was_cut = self.scene.rules() not in (before, meant)
        added, rules = self.scene.settled_rules()
        self.assertEqual(added.status, 0, added)
        self.assertIn(rules, (before, meant))
        if was_cut:
            self.assertIn("cut short", added.err)
        versions, _ = journal_versions(self, self.scene)
        self.assertNotIn(1, [version["state"] for version in versions], "under way")

    def test_adding_to_few_rules(self):
        self.walk(FEW, "add", "kill")

    def test_deleting_of_few_rules(self):
        self.walk(FEW, "delete", "kill")

    def test_importing_to_few_rules(self):
        self.walk(FEW, "import", "kill")

    def test_importing_to_many_rules(self):
        self.walk(MANY, "import", "kill")

    def test_deleting_of_many_rules(self):
        self.walk(MANY, "delete", "kill")

    def test_undoing(self):
        self.walk(FEW, "undo", "kill")

    def test_redoing(self):
        self.walk(FEW, "redo", "kill", first=["undo"])

    def test_restoring(self):
        self.walk(FEW, "restore", "kill")

    def test_adding_the_very_first_rule(self):
        self.walk([], "add", "kill", has_history=False)

    def test_adding_to_rules_without_a_history(self):
        self.walk(FEW, "add", "kill", has_history=False)

    def test_half_of_a_write(self):
        self.walk(FEW, "import", "cut")

    def test_half_of_a_write_that_makes_the_file_shorter(self):
        self.walk(FEW, "delete", "cut")

    def test_half_of_the_write_of_an_undo(self):
        self.walk(MANY, "undo", "cut")

    def test_half_of_the_write_of_a_restored_version(self):
        self.walk(MANY, "restore", "cut")

    def test_half_of_a_write_of_many_rules(self):
        self.walk(MANY, "delete", "cut")
