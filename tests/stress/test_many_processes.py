"""Many programs at once on one rules file: nothing is lost, no exit status lies, and the journal adds up to the file."""

import os
import random
import shlex
import subprocess
import threading
import unittest

import faults
from sandbox import read
from scene import Scene, journal_versions

ACTIONS = 400 if faults.IS_LONG else 64
WORKERS = 8
PROGRAMS = ("/bin/sh", "/usr/bin/ssh via any", "any")


def identity(line):
    """What makes a rule the rule it is, of a written line."""
    fields = shlex.split(line)
    fields[4] = "".join(sorted(fields[4]))
    return tuple(fields[:5]) + (tuple(fields[6:7]) if fields[0] != "watch" else ())


def rules_of(text):
    """The rules of a file in order, each with its marks."""
    return {identity(line): tuple(shlex.split(line)[5:]) for line in text.decode().splitlines()}


class Actions:
    """Random adds, deletes and imports, and what must come of them. For many threads."""

    def __init__(self, scene, seed):
        self.scene, self.random = scene, random.Random(seed)
        self.lock = threading.Lock()
        self.left, self.made = ACTIONS, 0
        self.present = []  # added for certain, and nobody is at it
        self.added, self.removed, self.refused = set(), set(), set()

    def run(self):
        while True:
            with self.lock:
                if self.left == 0:
                    return
                self.left -= 1
                action = self.random.choice((self.add, self.add, self.delete, self.add_many))
            action()

    def new_rule(self):
        with self.lock:
            self.made += 1
            path, program = f"/rule/{self.made}", self.random.choice(PROGRAMS)
            rule_class = self.random.choice(("allow", "deny", "watch"))
        return [rule_class, "prefix", path, program, "r"]

    def settle(self, result, rules, where):
        with self.lock:
            (where if result.returncode == 0 else self.refused).update(map(tuple, rules))
            if result.returncode == 0 and where is self.added:
                self.present += rules

    def command(self, *arguments):
        done = subprocess.run([faults.PROGRAM, *arguments], env=self.scene.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120, check=False)
        if done.returncode not in (0, 1) or (done.returncode == 1 and not done.stderr):
            raise AssertionError(done)
        return done

    def add(self):
        rule = self.new_rule()
        self.settle(self.command("add", *rule), [rule], self.added)

    def add_many(self):
        rules = [self.new_rule() for _ in range(3)]
        file = self.scene.sandbox.new_file(f"{rules[0][2][6:]}.quorv", [
            f'{rule[0]} {rule[1]} "{rule[2]}" "{rule[3]}" {rule[4]} "imported"' for rule in rules])
        self.settle(self.command("import", file), rules, self.added)

    def delete(self):
        with self.lock:
            if not self.present:
                return
            rule = self.present.pop(self.random.randrange(len(self.present)))
        result = self.command("delete", *rule)
        self.settle(result, [rule], self.removed)


class ManyProcesses(unittest.TestCase):
    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)

    def test_lose_nothing_of_each_other(self):
        self.scene.sandbox.write_user('allow prefix "/before" "any" r "" "" "0"')
        actions = Actions(self.scene, int(os.environ.get("QUORVANE_SEED", "1")))
        workers = [threading.Thread(target=actions.run) for _ in range(WORKERS)]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        self.check_file(actions)
        self.check_journal(actions)

    def check_file(self, actions):
        there = {rule[:5] for rule in rules_of(self.scene.content())}
        expected = {("allow", "prefix", "/before", "any", "r")} | (actions.added - actions.removed)
        self.assertEqual(there, expected)
        self.assertGreater(len(actions.added), ACTIONS // 2)
        self.assertLess(len(actions.refused), ACTIONS // 10)

    def check_journal(self, actions):
        """Each version differs from the one before as it says, and rules that stay keep their order."""
        versions, folder = journal_versions(self, self.scene)
        before, done = {}, {"added": [], "removed": []}
        for version in versions:
            self.assertNotEqual(version["state"], 1, "under way")
            after = rules_of(read(os.path.join(folder, f"{version['number']}.meant")))
            added = [rule for rule in after if rule not in before]
            removed = [rule for rule in before if rule not in after]
            changed = [rule for rule in after if rule in before and after[rule] != before[rule]]
            self.assertEqual((version["added"], version["removed"], version["changed"]),
                             (len(added), len(removed), len(changed)), version)
            self.assert_same_order(before, after)
            done["added"] += added
            done["removed"] += removed
            before = after
        self.assertEqual(before, rules_of(self.scene.content()))
        self.assertEqual(sorted(rule[:5] for rule in done["added"][1:]), sorted(actions.added))
        self.assertEqual(sorted(rule[:5] for rule in done["removed"]), sorted(actions.removed))

    def assert_same_order(self, before, after):
        """Rules of one program that stay keep their order."""
        for program in ("watch", *PROGRAMS):
            def own(rules, others, program=program):
                return [rule for rule in rules
                        if rule in others and program == (rule[0] if rule[0] == "watch" else rule[3])]
            self.assertEqual(own(after, before), own(before, after))
