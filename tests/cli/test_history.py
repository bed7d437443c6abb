import fcntl
import hashlib
import os
import sqlite3
import stat
import time
from concurrent.futures import ThreadPoolExecutor

from quorvanectl import CommandTest
from sandbox import read

FIRST = b'allow prefix "/a" "any" r "" "" "0"\n'
SECOND = b'allow prefix "/b" "any" r "" "" "0"\n'


class HistoryTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write(self.sandbox.user_file, FIRST)

    def written(self):
        return read(self.sandbox.user_file)

    def add(self, path="/b"):
        self.succeed("add", "allow", "prefix", path, "any", "r")

    def versions(self, key="version"):
        return self.succeed("history", "--json").values(key)

    def changes(self, version):
        return [(found["change"], found["path"], found["before"])
                for found in self.succeed("history", "show", "--json", str(version)).objects()]

    def journals(self):
        folder = os.path.join(self.sandbox.home, ".local/state/quorvane")
        return [os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".db")]


class History(HistoryTest):
    def test_without_a_journal_nothing_is_printed_and_nothing_made(self):
        self.assertEqual(self.succeed("history").out, b"")
        self.assertEqual(self.succeed("history", "--json").out, b"")
        self.assertEqual(os.listdir(self.sandbox.home), [])

    def test_versions_stand_newest_first_with_their_keys_in_order(self):
        before = int(time.time())
        self.add()
        result = self.succeed("history", "--json")
        keys = ["version", "time", "program", "action", "rules", "added", "removed", "changed", "bytes", "sha256",
                "state"]
        self.assertEqual(result.keys(), [keys, keys])
        newest, found = result.objects()
        self.assertGreaterEqual(newest["time"], before)
        self.assertLessEqual(newest["time"], time.time())
        both = FIRST + SECOND
        self.assertEqual({**newest, "time": 0},
                         {"version": 2, "time": 0, "program": "quorvanectl", "action": "Add Rule", "rules": 2,
                          "added": 1, "removed": 0, "changed": 0, "bytes": len(both),
                          "sha256": hashlib.sha256(both).hexdigest(), "state": "done"})
        self.assertEqual((found["program"], found["action"], found["added"], found["bytes"]),
                         (None, None, 1, len(FIRST)))

    def test_what_was_taken_back_and_done_again_is_named_so(self):
        self.add()
        self.succeed("undo")
        self.succeed("redo")
        self.assertEqual(self.versions("action"), ["Redo Add Rule", "Undo Add Rule", "Add Rule", None])
        self.assertIn("  Undo Add Rule  ", self.succeed("history").out.decode().splitlines()[1])

    def test_what_another_program_wrote_is_a_version_once_we_write(self):
        self.add()
        self.sandbox.write(self.sandbox.user_file, SECOND)
        self.succeed("delete", "allow", "prefix", "/b", "any", "r")
        self.assertEqual(self.versions("program"), ["quorvanectl", None, "quorvanectl", None])

    def test_journals_are_kept_by_the_real_path_of_the_rules_file(self):
        self.add()
        link = self.sandbox.path("link")
        os.symlink(self.sandbox.root, link)
        self.assertEqual(self.succeed("--root", link, "history", "--json").values("version"), [2, 1])
        self.assertEqual(self.succeed("--root", self.sandbox.path("other"), "history").out, b"")

    def test_a_closed_output_is_a_failure(self):
        self.add()
        with open("/dev/full", "w") as full:
            self.fail_with(3, "history", stdout=full)


class Show(HistoryTest):
    def test_says_what_a_version_changed_as_a_difference_does(self):
        self.add()
        self.sandbox.write(self.sandbox.user_file, FIRST.replace(b'"" "" "0"', b'"tag" "" "7"'))
        self.add("/c")
        self.assertEqual(self.changes(1), [("added", "/a", None)])
        self.assertEqual(self.changes(2), [("added", "/b", None)])
        self.assertEqual(self.changes(3), [("removed", "/b", None), ("changed", "/a", {"tag": "", "created": 0})])
        keys = ["change", "kind", "policyClass", "policyType", "path", "processName", "tag", "constraint",
                "operations", "flags", "created", "before"]
        self.assertEqual(self.succeed("history", "show", "--json", "4").keys(), [keys])
        self.assertEqual(self.succeed("history", "show", "3").out.decode(),
                         'removed: allow prefix "/b" "any" r "" "" "0"\n'
                         'changed: allow prefix "/a" "any" r "tag" "" "7": tag set to "tag", '
                         'creation time changed from none to 1970-01-01 00:00:07 UTC\n'
                         '1 rule removed, 1 changed\n')

    def test_the_option_may_stand_before_or_behind(self):
        self.add()
        self.assertEqual(self.succeed("history", "--json", "show", "2").out,
                         self.succeed("history", "show", "2", "--json").out)

    def test_a_version_that_is_not_there_is_a_failure(self):
        self.fail_with(3, "history", "show", "1")
        self.add()
        for number in ("0", "3", "9223372036854775807"):
            with self.subTest(number=number):
                self.assertIn("no version " + number, self.fail_with(3, "history", "show", number).err)

    def test_what_is_no_number_is_a_usage_error(self):
        for number in ("", "x", "1.5", "9223372036854775808"):
            with self.subTest(number=number):
                self.fail_with(2, "history", "show", number)
                self.fail_with(2, "restore", number)
        self.fail_with(2, "history", "show")
        self.fail_with(2, "restore")


class Restore(HistoryTest):
    def test_brings_back_the_very_bytes_whoever_wrote_them(self):
        odd = b"; a comment\r\n\tallow   prefix /a any r\n\nset nothing 1\n"
        self.sandbox.write(self.sandbox.user_file, odd)
        self.add()
        self.assertEqual(self.succeed("restore", "1").out, b"")
        self.assertEqual(self.written(), odd)
        self.assertEqual(self.versions("action"), ["Restore Version 1", "Add Rule", None])
        self.assertEqual(self.changes(3), [("removed", "/b", None)])

    def test_is_undone_like_any_action(self):
        self.add()
        self.succeed("restore", "1")
        self.succeed("undo")
        self.assertEqual(self.written(), FIRST + SECOND)

    def test_a_version_that_is_not_there_changes_nothing(self):
        self.fail_with(3, "restore", "1")
        self.add()
        self.assertIn("no version 7", self.fail_with(3, "restore", "7").err)
        self.assertEqual(self.written(), FIRST + SECOND)

    def test_helps_where_the_file_can_no_longer_be_read(self):
        self.add()
        self.sandbox.write(self.sandbox.user_file, b"\xff\xfe")
        self.assertEqual(self.run_program("restore", "2").status, 0)
        self.assertEqual(self.written(), FIRST + SECOND)
        self.assertEqual(read(self.sandbox.user_file + ".unread"), b"\xff\xfe")

    def test_helps_where_the_file_is_gone(self):
        self.add()
        os.remove(self.sandbox.user_file)
        self.assertEqual(self.run_program("restore", "2").status, 0)
        self.assertEqual(self.written(), FIRST + SECOND)


class Undo(HistoryTest):
    def test_takes_back_and_does_again_across_processes(self):
        self.add("/b")
        self.succeed("delete", "allow", "prefix", "/a", "any", "r")
        self.assertEqual(self.succeed("undo").out, b"Undone: Delete Rule\n")
        self.assertEqual(self.written(), FIRST + SECOND)
        self.assertEqual(self.succeed("undo").out, b"Undone: Add Rule\n")
        self.assertEqual(self.written(), FIRST)
        self.assertEqual(self.succeed("redo").out, b"Done again: Add Rule\n")
        self.assertEqual(self.written(), FIRST + SECOND)
        self.succeed("redo")
        self.assertEqual(self.written(), SECOND)
        self.assertEqual(len(self.versions()), 7)  # each is a version of its own

    def test_with_nothing_to_do_is_a_failure_that_changes_nothing(self):
        self.assertIn("nothing to undo", self.fail_with(3, "undo").err)
        self.assertIn("nothing to redo", self.fail_with(3, "redo").err)
        self.add()
        self.fail_with(3, "redo")
        self.succeed("undo")
        self.fail_with(3, "undo")
        self.assertEqual(self.written(), FIRST)

    def test_never_takes_back_what_another_program_did(self):
        self.add()
        self.sandbox.write(self.sandbox.user_file, FIRST + SECOND + SECOND.replace(b"/b", b"/c"))
        self.succeed("undo")
        self.assertEqual(self.written(), FIRST + SECOND.replace(b"/b", b"/c"))
        self.fail_with(3, "undo")

    def test_goes_on_to_the_action_before_where_there_is_nothing_left_to_take_back(self):
        self.add("/b")
        self.add("/c")
        self.sandbox.write(self.sandbox.user_file, FIRST + SECOND)  # another program has taken /c away
        self.succeed("undo")
        self.assertEqual(self.written(), FIRST + SECOND)
        self.succeed("undo")
        self.assertEqual(self.written(), FIRST)

    def test_a_new_action_ends_what_can_be_done_again(self):
        self.add("/b")
        self.succeed("undo")
        self.add("/c")
        self.fail_with(3, "redo")

    def test_many_at_once_take_back_an_action_each(self):
        paths = [f"/{number:02}" for number in range(16)]
        for path in paths:
            self.add(path)
        for command, left in (("undo", ["/a"]), ("redo", ["/a"] + paths)):
            with self.subTest(command=command):
                with ThreadPoolExecutor(len(paths)) as threads:
                    results = list(threads.map(
                        lambda _, command=command: self.run_program("--lock-timeout", "60", command), paths))
                self.assertEqual([result.status for result in results], [0] * len(paths))
                self.assertEqual(sorted(self.listed()), sorted(left))
                self.fail_with(3, command)

    def test_tells_where_a_rule_stays_for_what_another_program_did_with_it(self):
        self.succeed("set", "--set-tag", "ours", "--all")
        self.sandbox.write(self.sandbox.user_file, FIRST.replace(b'""', b'"theirs"', 1))
        for command, tag in (("undo", ""), ("redo", "ours")):
            with self.subTest(command=command):
                result = self.run_program(command)
                self.assertEqual(result.status, 0)
                self.assertIn(f'both sides changed the tag: "theirs" is kept, not "{tag}"', result.err)
                self.assertEqual(self.listed(key="tag"), ["theirs"])

    def test_brings_back_a_rule_that_the_action_has_lost_behind_a_cut_line(self):
        self.run_program("add", "watch", "path", "/\u00e9", "any", "r")  # stands before the other kind
        self.assertEqual(self.listed(), ["/\u00e9"])
        self.assertEqual(self.succeed("undo").out, b"Undone: Add Rule\n")
        self.assertEqual(self.written(), FIRST)

    def test_takes_back_an_action_that_has_cut_the_file_within_a_letter(self):
        self.add("/b")
        result = self.run_program("add", "allow", "path", "/c", "any", "r", "--constraint", "\u6f22" * 6 + "a")
        self.assertEqual(result.status, 0)
        self.assertIn("no program reads any of its rules", result.err)
        self.assertEqual(self.run_program("list", "--json").out, b"")
        cut = self.written()
        result = self.run_program("undo")
        self.assertEqual((result.status, result.out, self.written()), (0, b"Undone: Add Rule\n", FIRST + SECOND))
        self.assertEqual(read(self.sandbox.user_file + ".unread"), cut)
        self.assertIn(".unread", result.err)

    def test_takes_back_nothing_where_that_would_damage_another_rule(self):
        self.add("/b")
        foreign = FIRST + SECOND + 'allow prefix "/\u00e9" "any" r "" "" "0"\n'.encode()
        for more in (b"", SECOND.replace(b"/b", b"/c")):
            with self.subTest(more=more):
                self.sandbox.write(self.sandbox.user_file, foreign + more)
                self.assertIn("wholeLines=true", self.fail_with(3, "undo").err)
                self.assertEqual(self.written(), foreign + more)
        self.sandbox.write(self.sandbox.user_file, foreign[:-1])  # cut already, and the last
        self.assertEqual(self.run_program("undo").status, 0)
        self.assertEqual(self.written(), foreign.replace(SECOND, b"")[:-1])

    def test_a_file_that_cannot_be_read_whole_stays(self):
        self.add()
        self.sandbox.write(self.sandbox.user_file, b"\xff")
        for command in ("undo", "redo"):
            with self.subTest(command=command):
                self.fail_with(3, command)
                self.assertEqual(self.written(), b"\xff")


class UnusableJournal(HistoryTest):
    def damage(self):
        journal, = self.journals()
        with open(journal, "r+b") as file:
            file.write(b"no data base at all " * 20)

    def test_a_damaged_one_is_told_and_set_aside(self):
        self.add()
        self.damage()
        self.assertIn("damaged", self.fail_with(3, "history").err)
        self.fail_with(3, "history", "show", "1")

    def test_a_damaged_one_is_told_by_whichever_command_finds_it(self):
        for command in (["undo"], ["redo"], ["restore", "1"], ["history", "show", "1"]):
            with self.subTest(command=command):
                self.add()
                self.damage()
                self.assertIn("The history was damaged", self.fail_with(3, *command).err)

    def test_a_damaged_one_stops_no_edit(self):
        self.add()
        self.damage()
        result = self.run_program("add", "allow", "prefix", "/c", "any", "r")
        self.assertEqual(result.status, 0)
        self.assertIn("damaged", result.err)
        self.assertEqual(self.listed(), ["/a", "/b", "/c"])

    def test_one_of_a_newer_version_is_left_alone_and_told(self):
        self.add()
        journal, = self.journals()
        with sqlite3.connect(journal) as database:
            database.execute("PRAGMA user_version = 2")
        database.close()
        before = read(journal)
        for command in (["history"], ["history", "show", "1"], ["restore", "1"], ["undo"], ["redo"]):
            with self.subTest(command=command):
                self.fail_with(3, *command)
        result = self.run_program("add", "allow", "prefix", "/c", "any", "r")
        self.assertEqual((result.status, self.listed()), (0, ["/a", "/b", "/c"]))
        self.assertIn("The history of the rules cannot be kept", result.err)
        self.assertEqual(read(journal), before)

    def test_a_state_folder_that_is_no_folder_is_told(self):
        state = self.sandbox.new_file("state", "")
        environment = {**self.environment(), "XDG_STATE_HOME": state}
        result = self.run_program("add", "allow", "prefix", "/b", "any", "r", environment=environment)
        self.assertEqual((result.status, self.written()), (0, FIRST + SECOND))
        self.assertIn("The history of the rules cannot be kept", result.err)
        self.fail_with(3, "undo", environment=environment)

    def test_it_is_as_secret_as_the_rules(self):
        self.add()
        journal, = self.journals()
        self.assertEqual(stat.S_IMODE(os.stat(journal).st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(os.stat(os.path.dirname(journal)).st_mode), 0o700)


class Lock(HistoryTest):
    """A lock that another program holds."""

    def setUp(self):
        super().setUp()
        self.other = open(self.sandbox.user_file)
        self.addCleanup(self.other.close)
        fcntl.flock(self.other, fcntl.LOCK_EX)

    def test_a_writer_gives_up_after_the_time_and_changes_nothing(self):
        for seconds in ("0", "0.05", "0.0"):
            with self.subTest(seconds=seconds):
                result = self.fail_with(1, "--lock-timeout", seconds, "add", "allow", "prefix", "/b", "any", "r")
                self.assertIn("Another program is writing the rules file", result.err)
                self.assertEqual(self.written(), FIRST)

    def test_newer_commands_give_up_likewise(self):
        fcntl.flock(self.other, fcntl.LOCK_UN)
        self.add()
        fcntl.flock(self.other, fcntl.LOCK_EX)
        for command in (["undo"], ["restore", "1"], ["remove", "--all"],
                        ["set", "--set-tag", "t", "--all"]):
            with self.subTest(command=command):
                self.fail_with(3, "--lock-timeout", "0", *command)
                self.assertEqual(self.written(), FIRST + SECOND)
        self.assertEqual(self.versions(), [2, 1])

    def test_a_reader_reads_all_the_same_after_the_time(self):
        for seconds in ("0", "0.05"):
            with self.subTest(seconds=seconds):
                self.assertEqual(self.succeed("--lock-timeout=" + seconds, "list", "--json").values("path"), ["/a"])

    def test_what_is_no_time_is_a_usage_error(self):
        for seconds in ("", "-1", "x", "1e3", "nan", "inf", "1s", "0x1"):
            with self.subTest(seconds=seconds):
                self.fail_with(2, "--lock-timeout=" + seconds, "list")

    def test_a_very_long_time_is_one(self):
        fcntl.flock(self.other, fcntl.LOCK_UN)
        self.succeed("--lock-timeout", "9" * 300, "list")
