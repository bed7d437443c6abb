import hashlib
import os

from quorvanectl import CommandTest
from sandbox import read

NUMBERS = ["added", "removed", "changed", "unchanged", "written"]


def line(path, process="any", tag="", constraint="", created=0, rule_class="allow", operations="r"):
    return f'{rule_class} prefix "{path}" "{process}" {operations} "{tag}" "{constraint}" "{created}"\n'


class ChangeTest(CommandTest):
    def write(self, *lines):
        self.sandbox.write(self.sandbox.user_file, "".join(lines))

    def written(self):
        return read(self.sandbox.user_file).decode()

    def numbers(self, *arguments):
        """Of the last object: added, removed, changed, unchanged, written."""
        result = self.succeed(*arguments, "--json")
        self.assertEqual(result.keys()[-1], NUMBERS)
        return tuple(result.objects()[-1].values())

    def assert_refused(self, *arguments, saying="", status=3):
        before = self.written(), os.stat(self.sandbox.user_file).st_mtime_ns
        result = self.fail_with(status, *arguments)
        self.assertIn(saying, result.err)
        self.assertEqual(result.out, b"")
        self.assertEqual((self.written(), os.stat(self.sandbox.user_file).st_mtime_ns), before)

    def assert_undone(self, before):
        self.succeed("undo")
        self.assertEqual(self.written(), before)


class Set(ChangeTest):
    def test_changes_all_chosen_rules_in_one_write(self):
        before = line("/a", tag="x", created=7) + line("/b", tag="x") + line("/c")
        self.write(before)
        self.assertEqual(self.numbers("set", "--set-tag", "new", "--set-class", "deny", "--set-ops", "wx",
                                      "--tag", "x"), (0, 0, 2, 0, True))
        after = (line("/a", tag="new", created=7, rule_class="deny", operations="wx")
                 + line("/b", tag="new", rule_class="deny", operations="wx") + line("/c"))
        self.assertEqual(self.written(), after)
        self.assertEqual(self.succeed("history", "--json").values("action")[0], "Change 2 Rules")
        self.assert_undone(before)

    def test_prints_each_rule_with_what_it_was(self):
        self.write(line("/a", tag="x"))
        changed, _ = self.succeed("set", "--json", "--set-tag", "y", "--set-ops", "+x", "--all").objects()
        self.assertEqual((changed["change"], changed["tag"], changed["operations"], changed["before"]),
                         ("changed", "y", 17, {"tag": "x", "operations": 1}))
        result = self.succeed("set", "--set-tag=", "--all")
        self.assertEqual(result.out.decode(), 'row 0: changed: allow prefix "/a" "any" rx "" "" "0": tag "y" removed\n'
                                              '1 rule changed\n')

    def test_operations_are_set_added_and_removed(self):
        for change, operations in ((["--set-ops", "cm"], "cm"), (["--set-ops", "+x"], "rwx"),
                                   (["--set-ops", "-w"], "r"), (["--set-ops=-w"], "r"), (["--set-ops=+"], "rw")):
            with self.subTest(change=change):
                self.write(line("/a", operations="rw"))
                self.succeed("set", *change, "--all")
                self.assertEqual(self.written(), line("/a", operations=operations))

    def test_a_rule_that_needs_nothing_leaves_file_and_history_alone(self):
        self.write("; a comment\n", line("/a", tag="x"))
        before = os.stat(self.sandbox.user_file)
        self.assertEqual(self.numbers("set", "--set-tag", "x", "--all"), (0, 0, 0, 1, False))
        self.assertEqual(self.numbers("set", "--set-tag", "y", "--tag", "none"), (0, 0, 0, 0, False))
        after = os.stat(self.sandbox.user_file)
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns))
        self.assertEqual(self.succeed("history").out, b"")

    def test_a_dry_run_tells_the_same_and_writes_nothing(self):
        self.write(line("/a"), line("/b"))
        before = os.stat(self.sandbox.user_file)
        self.assertEqual(self.numbers("set", "--dry-run", "--set-tag", "x", "--path", "/a"), (0, 0, 1, 0, False))
        after = os.stat(self.sandbox.user_file)
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns))
        self.assertEqual(self.succeed("history").out, b"")

    def test_rules_that_become_equal_are_folded(self):
        before = line("/a", tag="first") + line("/a", tag="second", operations="rw")
        self.write(before)
        result = self.succeed("set", "--json", "--set-ops", "rw", "--all")
        removed, numbers = result.objects()
        self.assertEqual((removed["change"], removed["tag"], removed["before"]), ("removed", "first", None))
        self.assertEqual(tuple(numbers.values()), (0, 1, 0, 1, True))
        self.assertEqual(self.written(), line("/a", tag="second", operations="rw"))
        self.assert_undone(before)

    def test_prints_the_rows_that_list_prints(self):
        self.write(line("/c"), line("/a", tag="first"), line("/a", tag="second", operations="rw"))
        result = self.succeed("set", "--dry-run", "--set-ops", "rw", "--sort", "path:desc", "--path", "/a")
        self.assertEqual(result.out.decode(), 'row 1: removed: allow prefix "/a" "any" r "first" "" "0"\n'
                                              '1 rule removed; nothing was written\n')
        result = self.succeed("remove", "--path", "/a", "--tag", "second")
        self.assertEqual(result.out.decode(), 'row 2: removed: allow prefix "/a" "any" rw "second" "" "0"\n'
                                              '1 rule removed\n')

    def test_the_earlier_row_stays_when_both_become_another(self):
        self.write(line("/a", tag="first"), line("/a", tag="second", operations="rw"))
        self.succeed("set", "--set-ops", "c", "--all", "--sort", "tag:desc")
        self.assertEqual(self.written(), line("/a", tag="second", operations="c"))

    def test_watch_rules_stay_watch_rules_and_have_no_constraint(self):
        watch = 'watch prefix "/w" "any" r ""\n'
        self.write(watch, line("/a"))
        self.assert_refused("set", "--set-class", "allow", "--all")
        self.assert_refused("set", "--set-class", "watch", "--path", "/a")
        self.assertEqual(self.numbers("set", "--set-class", "watch", "--path", "/w"), (0, 0, 0, 1, False))
        self.assertEqual(self.numbers("set", "--set-constraint", "TEAM", "--all"), (0, 0, 1, 1, True))
        self.assertEqual(self.written(), watch + line("/a", constraint="TEAM"))

    def test_refused_values_change_nothing(self):
        self.write(line("/a"), line("/b", operations="rw"))
        self.assert_refused("set", "--set-ops", "-r", "--all", saying="without operations")
        self.assert_refused("set", "--set-ops", "", "--all", saying="without operations")
        self.assert_refused("set", "--set-tag", "a\nb", "--all")
        self.assert_refused("set", "--set-tag", "blank ", "--all")
        self.assert_refused("set", "--set-constraint", 'a"b', "--all")
        self.assert_refused("set", "--dry-run", "--set-tag", "a\nb", "--all")
        self.assert_refused("set", "--set-tag", "\u00e9", "--all", saying="wholeLines=true")

    def test_letters_beyond_ascii_are_taken_with_whole_lines(self):
        settings = os.path.join(self.sandbox.home, ".config/quorvane/settings.ini")
        os.makedirs(os.path.dirname(settings))
        self.sandbox.write(settings, "[rules]\nwholeLines=true\n")
        self.write(line("/a"))
        self.succeed("set", "--set-tag", "\u00e9t\u00e9", "--all")
        self.assertEqual(self.written(), line("/a", tag="\u00e9t\u00e9"))

    def test_refuses_to_cut_another_rule(self):
        self.write(line("/caf\u00e9s"), line("/a"))
        self.assert_refused("set", "--set-tag", "t", "--path", "/a", saying="wholeLines=true")
        self.assert_refused("remove", "--path", "/a", saying="wholeLines=true")
        self.succeed("remove", "--path", "/caf\u00e9s")

    def test_a_last_rule_that_is_cut_already_keeps_no_other_from_changing(self):
        cut = line("/caf\u00e9s")[:-1]
        self.write(line("/a"), line("/b"), cut)
        for command, expected in ((["set", "--set-tag", "t", "--path", "/a"], line("/a", tag="t") + line("/b") + cut),
                                  (["remove", "--path", "/b"], line("/a", tag="t") + cut)):
            with self.subTest(command=command):
                self.assertEqual(self.run_program(*command).status, 0)
                self.assertEqual(self.written(), expected)
        self.write(cut, line("/joined"), line("/a"))
        self.assert_refused("set", "--set-tag", "t", "--path", "/a", saying="wholeLines=true")

    def test_auto_binds_as_an_import_does(self):
        program = self.sandbox.new_file("program", "#!/bin/sh\n")
        digest = hashlib.sha256(read(program)).hexdigest()
        self.write(line("/a", process=program, constraint="OLD"), line("/b", process="/nonexistent", constraint="KEPT"))
        result = self.run_program("set", "--json", "--set-constraint", "auto", "--all")
        self.assertEqual(result.status, 0)
        self.assertIn("/nonexistent", result.err)
        self.assertEqual(tuple(result.objects()[-1].values()), (0, 0, 1, 1, True))
        bound = {row["path"]: row["constraint"] for row in self.succeed("list", "--json").objects()}
        self.assertEqual(bound, {"/a": digest, "/b": "KEPT"})

    def test_auto_looks_where_the_target_says(self):
        target = self.sandbox.path("target")
        os.makedirs(target + "/opt")
        with open(target + "/opt/tool", "wb") as file:
            file.write(b"tool")
        self.write(line("/a", process="/opt/tool"))
        self.succeed("set", "--set-constraint", "auto", "--target", target, "--all")
        self.assertEqual(self.listed(key="constraint"), [hashlib.sha256(b"tool").hexdigest()])
        self.fail_with(3, "set", "--set-tag", "x", "--target", self.sandbox.path("missing"), "--all")

    def test_needs_something_to_set_and_a_selection(self):
        self.write(line("/a"))
        for arguments in (["--all"], ["--set-tag", "x"], ["--set-tag", "x", "--filter", ""],
                          ["--set-tag", "x", "--all", "--tag", "y"], ["--set-tag", "x", "--all", "--filter", "y"],
                          ["--set-tag", "x", "--all", "--row", "0"], ["--set-tag", "x", "--row", "1"],
                          ["--set-ops", "q", "--all"], ["--set-ops", "r+w", "--all"], ["--set-class", "x", "--all"],
                          ["--set-tag", "x", "--system", "--all"]):
            with self.subTest(arguments=arguments):
                self.assert_refused("set", *arguments, status=2)

    def test_rows_are_counted_as_list_does_without_system_rules(self):
        self.sandbox.write_system("quorvane.rc", "allow prefix /0 /bin/0 r")
        self.write(line("/a"), line("/b"), line("/c"))
        self.succeed("set", "--set-tag", "x", "--row", "0", "--sort", "path:desc")
        self.assertEqual(self.listed("--tag", "x"), ["/c"])
        self.succeed("set", "--set-tag", "y", "--all")
        self.assertEqual(self.listed("--tag", "y"), ["/a", "/b", "/c"])

    def test_what_could_not_be_read_or_written_is_a_failure(self):
        self.sandbox.write(self.sandbox.user_file, b"allow prefix /a any r\n\xff\n")
        for command in (["set", "--set-tag", "x", "--all"], ["remove", "--all"], ["move", "/a", "/b"]):
            with self.subTest(command=command):
                self.fail_with(3, *command)
                self.fail_with(3, *command, "--dry-run")
        self.assertEqual(read(self.sandbox.user_file), b"allow prefix /a any r\n\xff\n")

    def test_without_a_rules_file_there_is_nothing_to_change(self):
        for command in (["set", "--set-tag", "x", "--all"], ["remove", "--all"], ["move", "/a", "/b"]):
            with self.subTest(command=command):
                self.assertEqual(self.numbers(*command), (0, 0, 0, 0, False))
        self.assertFalse(os.path.exists(self.sandbox.user_file))


class Remove(ChangeTest):
    def test_removes_all_chosen_rules_in_one_write(self):
        before = line("/a", tag="x", created=7) + line("/b") + line("/c", tag="x")
        self.write(before)
        result = self.succeed("remove", "--json", "--tag", "x")
        self.assertEqual([found.get("path") for found in result.objects()], ["/a", "/c", None])
        self.assertEqual(result.objects()[0]["change"], "removed")
        self.assertEqual(tuple(result.objects()[-1].values()), (0, 2, 0, 0, True))
        self.assertEqual(self.written(), line("/b"))
        self.assert_undone(before)

    def test_all_is_every_user_rule(self):
        self.sandbox.write_system("quorvane.rc", "allow prefix /s any r")
        self.write(line("/a"), 'watch prefix "/w" "any" r ""\n')
        self.succeed("remove", "--all")
        self.assertEqual(self.listed("--system"), ["/s"])

    def test_needs_a_selection(self):
        self.write(line("/a"))
        self.assert_refused("remove", status=2)
        self.assert_refused("remove", "--filter=", status=2)
        self.assert_refused("remove", "--row", "1", status=2)
        self.assert_refused("remove", "--all", "--class", "allow", status=2)

    def test_a_filter_is_a_selection(self):
        self.write(line("/a"), line("/b"))
        self.succeed("remove", "--filter", "/a")
        self.assertEqual(self.written(), line("/b"))

    def test_a_redundant_rule_goes_only_while_one_that_stays_covers_it(self):
        self.write(line("", tag="one"), line("any", tag="two"), line("/tmp/"), line("/tmp/a"))
        self.assertEqual(self.numbers("remove", "--dry-run", "--finding", "redundant"), (0, 3, 0, 1, False))
        self.succeed("remove", "--finding", "redundant")
        self.assertEqual(self.written(), line("any", tag="two"))

    def test_of_chosen_rows_a_redundant_one_goes_while_any_rule_that_stays_covers_it(self):
        self.write(line("", tag="one"), line("any", tag="two"), line("/tmp/"))
        self.succeed("remove", "--finding", "redundant", "--tag", "two")
        self.assertEqual(self.written(), line("", tag="one") + line("/tmp/"))

    def test_rules_found_otherwise_go_anyway(self):
        self.write(line("/", tag="keep"), line("/nonexistent", tag="gone"), line("/tmp", tag="covered"))
        self.succeed("remove", "--finding", "missing", "--finding", "redundant")
        self.assertEqual(self.listed(key="tag"), ["keep"])

    def test_a_dry_run_writes_nothing(self):
        self.write(line("/a"))
        self.assertEqual(self.numbers("remove", "--dry-run", "--all"), (0, 1, 0, 0, False))
        self.assertEqual(self.written(), line("/a"))


class Move(ChangeTest):
    def test_moves_program_parent_and_ancestor(self):
        processes = ["/old", "/old (-x)", "/old via /p", "/p via /old", "any ancestor /old", "/older", "any"]
        before = "".join(sorted(line("/" + str(number), process=process, constraint="C")
                                for number, process in enumerate(processes)))
        self.write(before)
        self.succeed("set", "--set-tag", "t", "--all")  # written by us, and so in the order of the store
        before = self.written()
        self.assertEqual(self.numbers("move", "/old", "/new"), (0, 0, 5, 0, True))
        rows = {row["path"]: row for row in self.succeed("list", "--json").objects()}
        self.assertEqual([rows["/" + str(number)]["processName"] for number in range(len(processes))],
                         ["/new", "/new (-x)", "/new via /p", "/p via /new", "any ancestor /new", "/older", "any"])
        self.assertEqual({row["constraint"] for row in rows.values()}, {"C"})
        self.assert_undone(before)

    def test_folds_what_is_there_already(self):
        self.write(line("/a", process="/new", tag="mine"), line("/a", process="/old", tag="theirs"))
        self.assertEqual(self.numbers("move", "/old", "/new"), (0, 1, 0, 0, True))
        self.assertEqual(self.written(), line("/a", process="/new", tag="mine"))

    def test_a_program_without_rules_is_a_success_that_writes_nothing(self):
        self.write("; a comment\n", line("/a"))
        self.assertEqual(self.numbers("move", "/old", "/new"), (0, 0, 0, 0, False))
        self.assertEqual(self.written(), "; a comment\n" + line("/a"))

    def test_what_is_no_path_is_a_usage_error(self):
        self.write(line("/a"))
        for arguments in (["", "/new"], ["/old", ""], ["any", "/new"], ["/old", "any"], ["/old via /x", "/new"],
                          ["/old", "/new via /x"], ["/old"], []):
            with self.subTest(arguments=arguments):
                self.assert_refused("move", *arguments, status=2)

    def test_what_does_not_come_back_from_the_file_is_refused(self):
        self.write(line("/a", process="/old"))
        for new in ('/n"ew', "/new ", "/n\new", "/n\u00e9w"):
            with self.subTest(new=new):
                self.assert_refused("move", "/old", new)

    def test_a_dry_run_writes_nothing(self):
        self.write(line("/a", process="/old"))
        changed, _ = self.succeed("move", "--dry-run", "--json", "/old", "/new").objects()
        self.assertEqual((changed["processName"], changed["before"]), ("/new", {"processName": "/old"}))
        self.assertEqual(self.written(), line("/a", process="/old"))

    def test_system_rules_stay(self):
        self.sandbox.write_system("quorvane.rc", "allow prefix /s /old r")
        self.write(line("/a", process="/old"))
        self.succeed("move", "/old", "/new")
        self.assertEqual(self.succeed("list", "--json", "--system", "--program", "/old").values("path"), ["/s"])
