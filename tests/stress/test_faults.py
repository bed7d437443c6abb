"""Every command of quorvanectl with every call that it makes failing in turn: it ends by itself and reports the failure, and
no rule is lost."""

import errno
import os
import unittest

import faults
from sandbox import read
from scene import Scene

POSITIONS = 2  # of each kind of call, in a short run
PERSISTENT = ("open", "write", "sync", "allocate")  # also made to fail persistently, like a full disk

READERS = {"list": ["list", "--json", "--system"], "check": ["check"], "options": ["options"],
           "history": ["history", "--json"], "version": ["history", "show", "--json", "2"]}
WRITERS = {"add": ["add", "allow", "prefix", "/new", "/bin/new", "r"],
           "delete": ["delete", "allow", "prefix", "/folder/7", "/bin/0", "rw"]}
BACK_AND_FORTH = {"undo": (["undo"], []), "redo": (["redo"], [["undo"]]), "restore": (["restore", "1"], [])}
OLD_EXPORT = b"allow prefix /old any r\n"


def fault_texts(counts):
    """All faults of a program that makes so many calls of each kind."""
    for call, errors in faults.ERRORS.items():
        for number in faults.sample(range(1, counts[call] + 1), POSITIONS):
            for error in errors if faults.IS_LONG else errors[:1] + errors[-1:]:
                yield f"{call}:{number}:{error}"
            if call in PERSISTENT:
                yield f"{call}:{number}+:{errors[0]}"


class Faults(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)
        sandbox = self.scene.sandbox
        sandbox.write_user(*["allow prefix /folder/%d /bin/%d rw tag \"\" %d" % (number, number % 7, number)
                             for number in range(60)], "watch prefix /w any r t")
        sandbox.write_system("quorvane.rc", "allow prefix /s any r", "set policy.global.user 1")
        sandbox.write_preferences(policy_global_user=1)
        self.exchange = sandbox.new_file("x.quorv", ["allow prefix /x/%d any r" % number for number in range(30)])
        self.out = sandbox.write(os.path.join(sandbox.root, "out.quorv"), OLD_EXPORT)
        self.assertEqual(self.scene.run("add", "allow", "prefix", "/first", "any", "r").status, 0)
        self.scene.keep()

    def prepare(self, commands):
        self.scene.reset()
        for command in commands:
            self.assertEqual(self.scene.run(*command).status, 0)

    def walk(self, command, first=()):
        """Runs the command without a fault, then with each; yields every result. The commands `first` come before."""
        self.prepare(first)
        whole = self.scene.run(*command)
        for fault in fault_texts(whole.counts):
            with self.subTest(fault=fault):
                self.prepare(first)
                result = self.scene.run(*command, fault=fault)
                self.assertGreaterEqual(result.status, 0, result)
                self.assertFalse(faults.is_sanitizer_report(result), result)
                if result.status != whole.status:
                    self.assertNotEqual(result.err.strip(), "", "failed without a word")
                yield result

    def test_a_command_that_reads_prints_all_or_reports(self):
        commands = {**READERS, "digest": ["digest", self.exchange], "import": ["list", self.exchange]}
        for name, command in commands.items():
            with self.subTest(name):
                whole = self.scene.run(*command)
                before = self.scene.tree()
                for result in self.walk(command):
                    if not result.err:
                        self.assertEqual((result.status, result.out), (whole.status, whole.out))
                    self.assertEqual(self.scene.tree(), before)

    def test_a_program_whose_file_fails_is_never_called_unsigned(self):
        for result in self.walk(["codesign", "--json", faults.PROGRAM]):
            if result.status == 0:
                self.assertRegex(result.out.decode(), '"state":(1|6)')

    def test_a_command_that_writes_does_so_whole_or_reports(self):
        commands = {name: (command, []) for name, command in WRITERS.items()}
        commands["import"] = ["import", self.exchange], []
        for name, (command, first) in {**commands, **BACK_AND_FORTH}.items():
            with self.subTest(name):
                self.prepare(first)
                before = self.scene.rules()
                self.scene.run(*command)
                content, meant = self.scene.content(), self.scene.rules()
                for result in self.walk(command, first):
                    if result.status == 0:
                        self.assertEqual(self.scene.content(), content)
                    added, rules = self.scene.settled_rules()
                    self.assertEqual(added.status, 0, added)
                    self.assertIn(rules, (before, meant))

    def test_an_export_is_whole_or_the_old_one(self):
        self.scene.run("export", self.out)
        whole = read(self.out)
        for result in self.walk(["export", self.out]):
            self.assertIn(read(self.out), (whole,) if result.status == 0 else (whole, OLD_EXPORT))
            left = [name for name in os.listdir(self.scene.sandbox.root) if name.startswith(".quorvane")]
            self.assertEqual(left, [])

    def test_without_memory_a_command_ends_with_the_status_of_its_failures(self):
        for status, command in [(1, ["list"]), (1, ["check", self.exchange]), (1, ["--root", self.scene.sandbox.root, "add", *WRITERS["add"][1:]]),
                                (3, ["diff", self.exchange, self.exchange]), (3, ["apply", "--dry-run", self.exchange]),
                                (3, ["--lock-timeout", "1", "remove", "--dry-run", "--all"]), (3, ["touching", "/x"])]:
            with self.subTest(command=command):
                allocations = self.scene.run(*command).counts["allocate"]
                for number in faults.sample(range(1, allocations // 2), 4):
                    result = self.scene.run(*command, fault=f"allocate:{number}+:{errno.ENOMEM}")
                    self.assertEqual((result.status, result.err), (status, "quorvanectl: out of memory\n"))

    def test_a_file_size_limit_and_a_quota_lose_nothing(self):
        """The kernel's own limit, instead of a fault: every intermediate size of a file."""
        before = self.scene.rules()
        size = len(self.scene.content())
        for limit in (0, 1, size - 1, size, size + 1, size + 20, 10_000, 40_000):
            with self.subTest(limit=limit):
                self.scene.reset()
                result = self.scene.run(*WRITERS["add"], prefix=["prlimit", f"--fsize={limit}"])
                self.assertGreaterEqual(result.status, 0, result)
                meant = self.scene.rules() if result.status == 0 else before
                _, rules = self.scene.settled_rules()
                self.assertIn(rules, (before, before + [rule for rule in rules if rule[2] == "/new"]))
                if result.status == 0:
                    self.assertIn("/new", [rule[2] for rule in meant])


class Journals(unittest.TestCase):
    """A journal that cannot be used stops no edit, and the command says so."""

    def setUp(self):
        self.scene = Scene()
        self.addCleanup(self.scene.end)
        self.state = os.path.join(self.scene.sandbox.home, ".local/state/quorvane")
        self.add("/first")
        self.database = next(os.path.join(self.state, name) for name in os.listdir(self.state) if name.endswith(".db"))

    def add(self, path):
        result = self.scene.run("add", "allow", "prefix", path, "any", "r")
        self.assertEqual(result.status, 0, result)
        return result

    def paths(self):
        return [rule[2] for rule in self.scene.rules()]

    def test_a_damaged_one_is_kept_and_begun_anew(self):
        for number, damage in enumerate((b"", b"no data base at all" * 100, read(self.database)[:5000])):
            with self.subTest(number):
                with open(self.database, "wb") as file:
                    file.write(damage)
                said = self.add(f"/{number}").err
                self.assertTrue(not damage or "damaged" in said, said)
        self.assertEqual(self.paths(), ["/first", "/0", "/1", "/2"])

    def test_one_of_a_newer_version_is_left_alone(self):
        with open(self.database, "r+b") as file:
            file.seek(60)  # the offset of the format number
            file.write((2).to_bytes(4, "big"))
        newer = read(self.database)
        self.assertIn("newer version", self.add("/second").err)
        self.assertEqual((self.paths(), read(self.database)), (["/first", "/second"], newer))

    def test_one_that_cannot_be_written_is_reported(self):
        os.rename(self.state, self.state + ".away")
        with open(self.state, "w", encoding="utf-8"):
            pass
        self.assertIn("history", self.add("/second").err)
        self.assertEqual(self.paths(), ["/first", "/second"])
