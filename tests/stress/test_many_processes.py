"""Many programs at once on one rules file, windows among them: nothing is lost, no exit status lies, and the journal adds up to
the file."""

import os
import random
import shlex
import subprocess
import sys
import threading
import unittest

import faults
from sandbox import SANITIZER_REPORT, read
from scene import Scene, journal_versions

sys.path.append(os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "desktop"))
from desk import ACTIVE, Desk, eventually  # noqa: E402
from gi.repository import GLib  # noqa: E402
from rules_window import PATH, RulesWindow  # noqa: E402

ACTIONS = 400 if faults.IS_LONG else 64
WINDOWS = 2 if faults.IS_LONG else 1
WORKERS = 8
PROGRAMS = ("/bin/sh", "/usr/bin/ssh via any", "any")
WINDOW_PROGRAM = os.path.join(faults.BIN, "quorvane-configuration")


def identity(line):
    """The identity of the rule on a written line."""
    fields = shlex.split(line)
    fields[4] = "".join(sorted(fields[4]))
    return tuple(fields[:5]) + (tuple(fields[6:7]) if fields[0] != "watch" else ())


def rules_of(text):
    """The rules of a file in order, each with its marks."""
    return {identity(line): tuple(shlex.split(line)[5:]) for line in text.decode().splitlines()}


class Actions:
    """Random adds, deletes, tags and imports, and their expected result. For many threads."""

    def __init__(self, scene, seed):
        self.scene, self.random = scene, random.Random(seed)
        self.lock = threading.Lock()
        self.left, self.made = ACTIONS, 0
        self.present = []  # definitely added, and not in use by any process
        self.tags = {}  # of all rules that must be there
        self.added, self.removed, self.refused = set(), set(), set()
        self.failures = []

    def run(self, actor):
        """Lets `actor` act until all is done or something has failed."""
        try:
            while self.next_action(actor)():
                pass
        except BaseException as failure:  # passed to the test, which reports it
            self.failures.append(failure)

    def next_action(self, actor):
        with self.lock:
            self.left -= 1
            if self.left < 0 or self.failures:
                return lambda: False
            name = self.random.choice(("add", "add", "delete", "tag", "add_many"))
        return lambda: getattr(self, name)(actor) or True

    def new_rule(self, classes=("allow", "deny", "watch"), programs=PROGRAMS, operations="r"):
        with self.lock:
            self.made += 1
            return (self.random.choice(classes), "prefix", f"/rule/{self.made}/", self.random.choice(programs), operations)

    def taken(self):
        """A rule reserved for the caller until it is returned; None when there is none."""
        with self.lock:
            return self.present.pop(self.random.randrange(len(self.present))) if self.present else None

    def note_added(self, is_done, rules, tag):
        with self.lock:
            (self.added if is_done else self.refused).update(rules)
            if is_done:
                self.present += rules
                self.tags.update((rule, tag) for rule in rules)

    def add(self, actor):
        rule = self.new_rule(**actor.can_add)
        self.note_added(actor.add(rule), [rule], "")

    def add_many(self, actor):
        rules = [self.new_rule() for _ in range(3)]
        file = self.scene.sandbox.new_file(f"{rules[0][2].strip('/').replace('/', '-')}.quorv", [
            f'{rule[0]} {rule[1]} "{rule[2]}" "{rule[3]}" {rule[4]} "imported"' for rule in rules])
        self.note_added(run_command(self.scene, "import", file), rules, "imported")

    def delete(self, actor):
        rule = self.taken()
        if rule is None:
            return
        is_done = actor.delete(rule)
        with self.lock:
            (self.removed if is_done else self.refused).add(rule)
            if is_done:
                del self.tags[rule]

    def tag(self, actor):
        rule = self.taken()
        if rule is None:
            return
        text = f"tag {self.random.randrange(100)}"
        is_done = actor.tag(rule, text)
        with self.lock:
            self.present.append(rule)
            if is_done:
                self.tags[rule] = text
            else:
                self.refused.add(rule)


def run_command(scene, *arguments):
    """Whether the command succeeded; else it must have printed why not."""
    done = subprocess.run([faults.PROGRAM, *arguments], env=scene.environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120, check=False)
    if done.returncode not in (0, 1, 3) or (done.returncode != 0 and not done.stderr):
        raise AssertionError(done)
    return done.returncode == 0


class Commands:
    """Acts by a new process of quorvanectl each time."""

    can_add = {}

    def __init__(self, scene):
        self.scene = scene

    def add(self, rule):
        return run_command(self.scene, "add", *rule)

    def delete(self, rule):
        return run_command(self.scene, "delete", *rule)

    def tag(self, rule, text):
        return run_command(self.scene, "set", "--set-tag", text, "--path", rule[2])


class Window:
    """Acts by mouse and keyboard in one window, on a desk of its own. What it has done is in the file when it returns."""

    can_add = {"classes": ("allow",), "programs": ("any",), "operations": "crw"}  # what its button creates

    def __init__(self, scene):
        self.scene, self.desk, self.acted = scene, Desk(), 0
        self.errors = scene.sandbox.new_file(f"errors of {self.desk.environment['DISPLAY']}")
        with open(self.errors, "wb") as errors:
            self.process = self.desk.start(WINDOW_PROGRAM, stdout=subprocess.DEVNULL, stderr=errors, environment={
                **scene.environment, "ASAN_OPTIONS": scene.environment["ASAN_OPTIONS"] + ":detect_leaks=0"})
        self.window = RulesWindow(self.desk, self.process)

    def end(self):
        """Closes it like a user; returns its exit status."""
        status = self.window.close()
        errors = read(self.errors).decode(errors="replace")
        if SANITIZER_REPORT.search(errors):
            raise AssertionError(errors)
        return status

    def is_in_file(self, rule, tag=None):
        rules = rules_of(self.scene.content()) if self.scene.content().endswith(b"\n") else {}
        found = next((marks for other, marks in rules.items() if other[:5] == rule), None)
        return found is not None and tag in (None, found[0])

    def show(self, rule):
        """Makes it the only row, selected. Another program's rule appears after the next poll of the file."""
        self.wait_until_active(self.window.frame)
        self.desk.press("ctrl+f", "ctrl+a")
        self.desk.type_text(rule[2])
        if not self.becomes(lambda: self.window.column(PATH) == [rule[2]]):
            return False
        self.window.click_row(0)
        return self.becomes(lambda: self.window.selected() == [rule[2]])

    @staticmethod
    def wait_until_active(window):
        eventually(lambda: window.has(ACTIVE), "the window to become active")

    @staticmethod
    def becomes(question):
        try:
            return eventually(lambda: answer_of(question))
        except AssertionError:
            return False

    def add(self, rule):
        self.wait_until_active(self.window.frame)  # again: the previous window may still be closing
        self.desk.press("ctrl+n")
        self.wait_until_active(self.window.program.find("dialog", "Any Process"))
        self.desk.type_text(rule[2])
        self.desk.press("Return")
        eventually(lambda: self.is_in_file(rule), f"the file to hold {rule}")
        self.acted += 1
        return True

    def delete(self, rule):
        if not self.show(rule):
            return False
        self.desk.press("Delete")
        eventually(lambda: not self.is_in_file(rule), f"the file to lose {rule}")
        self.acted += 1
        return True

    def tag(self, rule, text):
        if not self.show(rule):
            return False
        self.desk.press("F2", "ctrl+a")
        self.desk.type_text(text)
        self.desk.press("Return")
        eventually(lambda: self.is_in_file(rule, text), f"the file to hold {rule} with {text}")
        self.acted += 1
        return True


def answer_of(question):
    """None when a row vanishes during the query."""
    try:
        return question()
    except GLib.Error:
        return None


def merged_order(ours, theirs, result):
    """The rules of a merge in order: ours in order; rules added by theirs behind their predecessor there, else at the end of
    their kind."""
    merged = [rule for rule in ours if rule in result]
    behind = None
    for rule in (rule for rule in theirs if rule in result):
        if rule not in ours:
            watch_rules = sum(other[0] == "watch" for other in merged)
            end_of_kind = watch_rules if rule[0] == "watch" else len(merged)
            merged.insert(end_of_kind if behind is None else merged.index(behind) + 1, rule)
        behind = rule
    return merged


def list_of(rule):
    """The watch rules are in one list, the policy rules of each program in a separate one."""
    return "watch" if rule[0] == "watch" else rule[3]


def by_list(rules):
    """The order of the lists does not matter."""
    lists = {}
    for rule in rules:
        lists.setdefault(list_of(rule), []).append(rule)
    return lists


def with_added(known, added):
    """The rules known to a program, with those that it adds, each at the end of its list."""
    ours = list(known)
    for rule in added:
        behind = [place + 1 for place, other in enumerate(ours) if list_of(other) == list_of(rule)]
        ours.insert(behind[-1] if behind else 0 if rule[0] == "watch" else len(ours), rule)
    return ours


class ManyProcesses(unittest.TestCase):
    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)

    def test_lose_nothing_of_each_other(self):
        self.scene.sandbox.write_user('allow prefix "/before" "any" r "" "" "0"')
        windows = [self.window() for _ in range(WINDOWS)]
        actors = windows + [Commands(self.scene) for _ in range(WORKERS - WINDOWS)]
        actions = Actions(self.scene, int(os.environ.get("QUORVANE_SEED", "1")))
        for window in windows:
            actions.add(window)
        workers = [threading.Thread(target=actions.run, args=[actor]) for actor in actors]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        self.assertEqual(actions.failures, [])
        self.assertEqual([window.end() for window in windows], [0] * WINDOWS)
        self.assertNotIn(0, [window.acted for window in windows])
        self.check_file(actions)
        self.check_journal(actions)

    def window(self):
        window = Window(self.scene)
        self.addCleanup(window.desk.end)
        return window

    def check_file(self, actions):
        there = {rule[:5]: marks[0] for rule, marks in rules_of(self.scene.content()).items()}
        self.assertEqual(there, {("allow", "prefix", "/before", "any", "r"): "", **actions.tags})
        self.assertGreater(len(actions.added), ACTIONS // 2)
        self.assertLess(len(actions.refused), ACTIONS // 10)

    def check_journal(self, actions):
        """Each version differs from the one before as it says, and its rules stand in the order of a merge."""
        versions, folder = journal_versions(self, self.scene)
        contents, added, removed = [{}], [], []
        for version in versions:
            self.assertNotEqual(version["state"], 1, "under way")
            before, after = contents[-1], rules_of(read(os.path.join(folder, f"{version['number']}.meant")))
            added += (own_added := [rule for rule in after if rule not in before])
            removed += (own_removed := [rule for rule in before if rule not in after])
            own_changed = [rule for rule in after if rule in before and after[rule] != before[rule]]
            self.assertEqual((version["added"], version["removed"], version["changed"]),
                             (len(own_added), len(own_removed), len(own_changed)), version)
            self.assert_order_of_a_merge(contents, own_added, after)
            contents.append(after)
        self.assertEqual(contents[-1], rules_of(self.scene.content()))
        self.assertEqual(sorted(rule[:5] for rule in added[1:]), sorted(actions.added))
        self.assertEqual(sorted(rule[:5] for rule in removed), sorted(actions.removed))

    def assert_order_of_a_merge(self, contents, own, after):
        """Whoever wrote this had read some earlier version, which, with what it added itself, is "ours"."""
        expected = by_list(after)
        orders = (merged_order(with_added(known, own), contents[-1], after) for known in reversed(contents))
        self.assertTrue(any(by_list(order) == expected for order in orders),
                        f"{by_list(contents[-1])}\nbecame\n{expected}\nby adding {own}")

