import os

from quorvanectl import CommandTest

KEYS = ["change", "kind", "policyClass", "policyType", "path", "processName", "tag", "constraint", "operations", "flags",
        "created", "before"]


class Diff(CommandTest):
    def diff(self, before, after, *options, status=1):
        result = self.run_program("diff", *options, self.sandbox.new_file("a", before),
                                  self.sandbox.new_file("b", after))
        self.assertEqual((result.status, result.err), (status, ""))
        return result

    def test_files_with_the_same_rules_do_not_differ(self):
        rules = ["allow prefix /a any r t", "watch path /w any w"]
        self.assertEqual(self.diff(rules, rules, status=0).out, b"")
        self.assertEqual(self.diff(rules, ["; comment", *reversed(rules), rules[0]], "--json", status=0).out, b"")

    def test_what_comes_goes_and_changes_is_told_in_this_order(self):
        result = self.diff(["allow prefix /gone any r", "deny path /c any r old TEAM 5"],
                           ["deny path /c any r new TEAM 7", "watch suffix .new any w"])
        self.assertEqual(result.out.decode().splitlines(), [
            'added: watch suffix ".new" "any" w ""',
            'removed: allow prefix "/gone" "any" r "" "" "0"',
            'changed: deny path "/c" "any" r "new" "TEAM" "7": tag changed from "old" to "new", creation time changed '
            'from 1970-01-01 00:00:05 UTC to 1970-01-01 00:00:07 UTC'])

    def test_json_has_the_rule_and_what_was_before(self):
        result = self.diff(["deny path /c any r old TEAM 5", "allow prefix /gone any rw"],
                           ["deny path /c any r new TEAM 5", "watch suffix .new any w t"], "--json")
        self.assertEqual(result.keys(), [KEYS] * 3)
        self.assertEqual([list(found.values()) for found in result.objects()], [
            ["added", "watch", 2, 2, ".new", "any", "t", None, 2, 0, None, None],
            ["removed", "policy", 0, 0, "/gone", "any", "", "", 3, 0, 0, None],
            ["changed", "policy", 1, 1, "/c", "any", "new", "TEAM", 1, 0, 5, {"tag": "old"}]])

    def test_before_holds_only_what_differs(self):
        result = self.diff(["deny path /c any r t T 5"], ["deny path /c any r u T 6"], "--json")
        self.assertEqual(result.keys()[0][-1], "before")
        self.assertEqual(list(result.objects()[0]["before"].items()), [("tag", "t"), ("created", 5)])

    def test_of_equal_rules_the_first_one_counts(self):
        self.diff(["allow path /a any r t"], ["allow path /a any r t", "allow path /a any r u"], status=0)

    def test_control_characters_reach_no_terminal(self):
        self.assertIn(b"\\x1b[31m", self.diff([], ["allow path /\x1b[31m any r"]).out)

    def test_files_may_come_through_links_and_pipes(self):
        file = self.sandbox.new_file("a", ["allow path /a any r"])
        os.symlink(file, self.sandbox.path("link"))
        self.succeed("diff", file, self.sandbox.path("link"))
        read_end, write_end = os.pipe()
        os.write(write_end, b"allow path /b any r\n")
        os.close(write_end)
        result = self.run_program("diff", "--json", file, f"/dev/fd/{read_end}", pass_fds=[read_end])
        os.close(read_end)
        self.assertEqual((result.status, result.values("path")), (1, ["/b", "/a"]))

    def test_a_pipe_is_read_to_its_end(self):
        lines = b"".join(b"allow path /%d any r\n" % number for number in range(20000))
        file = self.sandbox.new_file("a", lines)
        result = self.run_program("-c", f'cat "{file}" | "$0" diff "$1" /dev/stdin', os.environ["QUORVANE_PROGRAM"], file,
                                  program="/bin/bash")
        self.assertEqual((result.status, result.err), (0, ""))
        result = self.run_program("-c", '"$0" diff "$1" <(head -c 100000 "$1"; tail -c +100001 "$1")',
                                  os.environ["QUORVANE_PROGRAM"], file, program="/bin/bash")
        self.assertEqual((result.status, result.err), (0, ""))

    def test_what_is_no_rules_file_is_a_failure(self):
        good = self.sandbox.new_file("good", ["allow path /a any r"])
        pipe = self.sandbox.path("pipe")
        os.mkfifo(pipe)
        for bad in (self.sandbox.path("missing"), self.sandbox.folder, "/dev/zero", "/dev/null", pipe,
                    self.sandbox.new_file("latin", b"allow path /\xe4 any r\n"),
                    self.sandbox.new_file("nul", b"allow path /a any r\n\0"), good + "/below", ""):
            with self.subTest(bad=bad):
                self.assertEqual(self.fail_with(3, "diff", good, bad).out, b"")
                self.assertEqual(self.fail_with(3, "diff", bad, good).out, b"")

    def test_text_from_a_pipe_must_be_text_too(self):
        good = self.sandbox.new_file("good", [])
        for bytes_ in ("\\377", "a\\0b"):
            result = self.run_program("-c", f"printf '{bytes_}' | \"$0\" diff \"$1\" /dev/stdin",
                                      os.environ["QUORVANE_PROGRAM"], good, program="/bin/bash")
            self.assertEqual(result.status, 3)
            self.assertIn("/dev/stdin", result.err)

    def test_an_output_that_cannot_be_written_is_a_failure(self):
        a, b = self.sandbox.new_file("a", []), self.sandbox.new_file("b", ["allow path /a any r"])
        with open("/dev/full", "wb") as full:
            self.fail_with(3, "diff", a, b, stdout=full)

    def test_two_files_are_needed(self):
        for arguments in (["diff"], ["diff", "a"], ["diff", "a", "b", "c"]):
            self.fail_with(2, *arguments)
