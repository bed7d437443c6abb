import os
import shutil

from quorvanectl import PROGRAM, CommandTest
from sandbox import Sandbox, read

NOBODY = 65534
IS_ROOT = os.getuid() == 0


class RulesFile(CommandTest):
    def test_is_read_instead_of_the_users_configuration(self):
        self.sandbox.write_user("allow prefix /user any r")
        self.sandbox.write_system("quorvane.rc", "allow prefix /system any r")
        file = self.sandbox.new_file("other.quorv", ["allow prefix /other any r us C 5"])
        rules = self.succeed("list", "--json", "--system", file).objects()
        self.assertEqual([(rule["path"], rule["tag"], rule["flags"], rule["system"], rule["created"])
                          for rule in rules], [("/other", "us", 0, False, 5)])

    def test_is_labelled_as_a_system_file_on_demand(self):
        file = self.sandbox.new_file("other.rc", ["allow prefix /other any r us C 5", "watch prefix /w any r su"])
        rules = self.succeed("list", "--json", "--system", "--label-system", file).objects()
        self.assertEqual([(rule["path"], rule["tag"], rule["flags"], rule["system"], rule["ruleState"])
                          for rule in rules], [("/w", "", 3, True, 1), ("/other", "", 3, True, 1)])
        self.assertEqual(self.succeed("list", "--json", "--label-system", file).out, b"")

    def test_every_line_end_of_unicode_ends_a_line(self):
        ends = ["\n", "\r", "\r\n", "\v", "\f", "\u0085", "\u2028", "\u2029"]
        lines = [f"allow prefix /{number} any r{end}" for number, end in enumerate(ends)]
        file = self.sandbox.new_file("ends", "".join(lines) + "allow prefix /last any r")
        self.assertEqual(self.listed(file), [f"/{number}" for number in range(len(ends))] + ["/last"])

    def test_text_after_a_nul_byte_is_not_read(self):
        file = self.sandbox.new_file("nul",
                                     b"allow prefix /a any r\nallow prefix /b any rw\0x\nallow prefix /c any r\n")
        result = self.run_program("list", "--json", file)
        self.assertEqual([(rule["path"], rule["operations"]) for rule in result.objects()], [("/a", 1), ("/b", 3)])
        self.assertEqual(result.status, 0)
        self.assertIn("NUL byte", result.err)

    def test_a_byte_order_mark_is_an_ordinary_character(self):
        file = self.sandbox.new_file("mark", "\ufeffallow prefix /a any r\nallow prefix /b any r\n")
        self.assertEqual(self.listed(file, key="policyClass"), [4, 0])

    def test_quotes_and_blanks_split_a_line_as_the_format_has_it(self):
        for line, tokens in [
                ('watch prefix "/a b" "" r', ("/a b", "", 1, "")),
                ('watch prefix "/a  b" any r "t"', ("/a  b", "any", 1, "t")),
                ('watch   prefix  /a   any  r', ("/a", "any", 1, "")),
                ('watch prefix"/a" any r t', ("/a", "any", 1, "t")),
                ('watch prefix /a any r "one two', ("/a", "any", 1, "two")),
                ('watch prefix "/a " "b" r', ("", "/a b", 1, "")),
        ]:
            with self.subTest(line=line):
                file = self.sandbox.new_file("line", [line])
                rules = self.succeed("list", "--json", file).objects()
                self.assertEqual([(rule["path"], rule["processName"], rule["operations"], rule["tag"])
                                  for rule in rules], [tokens])

    def test_an_empty_file_has_no_rows(self):
        self.assertEqual(self.succeed("list", "--json", self.sandbox.new_file("empty")).out, b"")

    def test_a_missing_file_is_a_failure_of_every_command(self):
        missing, no_folder = self.sandbox.path("missing"), self.sandbox.new_file("file") + "/missing"
        for file in (missing, no_folder, ""):
            for command in (["list"], ["list", "--json"], ["list", "--label-system"], ["check"], ["import"],
                            ["export", self.sandbox.path("out")]):
                with self.subTest(command=command, file=file):
                    result = self.fail_with(1, *command, file)
                    self.assertIn(f"file '{file}'", result.err)
                    self.assertNotIn(b"{", result.out)

    def test_a_file_that_is_not_utf_8_has_no_rows(self):
        for name, contents in [("latin", b"allow prefix /a\xe9 any r\n"),
                               ("overlong", b"allow prefix /\xc0\xaf any r\n"),
                               ("surrogate", b"allow prefix /\xed\xa0\x80 any r\n"),
                               ("cut", b"allow prefix /a any r \xe2\x82")]:
            with self.subTest(name=name):
                self.assertEqual(self.run_program("list", "--json", self.sandbox.new_file(name, contents)).out, b"")

    def test_a_folder_is_a_failure(self):
        result = self.fail_with(1, "list", "--json", self.sandbox.home)
        self.assertIn(f"Failed to read() file '{self.sandbox.home}': Is a directory (21)", result.err)
        self.assertEqual(result.out, b"")

    def test_a_symbolic_link_is_a_failure(self):
        link = self.sandbox.path("link")
        os.symlink(self.sandbox.new_file("real", ["allow prefix /a any r"]), link)
        result = self.fail_with(1, "list", "--json", link)
        self.assertIn(f"Failed to open file '{link}' for reading: Too many levels of symbolic links (40)", result.err)
        self.assertEqual(result.out, b"")

    def test_a_link_among_the_folders_of_the_path_is_followed(self):
        self.sandbox.new_file("home/rules", ["allow prefix /a any r"])
        os.symlink(self.sandbox.home, self.sandbox.path("folder"))
        self.assertEqual(self.listed(self.sandbox.path("folder/rules")), ["/a"])

    def test_a_pipe_is_not_waited_for(self):
        pipe = self.sandbox.path("pipe")
        os.mkfifo(pipe)
        self.assertEqual(self.run_program("list", "--json", pipe).out, b"")

    def test_a_very_long_line_is_read_whole(self):
        path = "/" + "x" * 10_000_000
        file = self.sandbox.new_file("long", [f'allow prefix "{path}" any r', "allow prefix /next any r"])
        self.assertEqual([len(found) for found in self.listed(file)], [len(path), len("/next")])

    def test_a_million_empty_lines_are_skipped(self):
        file = self.sandbox.new_file("empty lines", b"\n" * 1_000_000 + b"allow prefix /a any r")
        self.assertEqual(self.listed(file), ["/a"])


class CurrentUsersFile(CommandTest):
    def test_a_failure_of_the_last_system_file_is_told_and_the_rest_is_printed(self):
        self.sandbox.write_user("allow prefix /user any r")
        os.mkdir(self.sandbox.system_file("exec.rc"))
        result = self.fail_with(1, "list", "--json")
        self.assertIn("exec.rc", result.err)
        self.assertEqual(result.values("path"), ["/user"])

    def test_an_unreadable_users_file_is_told_although_system_files_follow(self):
        self.sandbox.write_system("exec.rc", "allow prefix /exec any r")
        os.mkdir(self.sandbox.user_file)
        for command in (["check"], ["export", self.sandbox.path("out")]):
            with self.subTest(command=command[0]):
                result = self.fail_with(1, *command)
                self.assertIn(self.sandbox.user_file, result.err)

    def test_an_unreadable_users_file_is_a_failure_and_the_rest_is_printed(self):
        self.sandbox.write_system("exec.rc", "allow prefix /exec any r")
        os.mkdir(self.sandbox.user_file)
        result = self.run_program("list", "--json", "--system")
        self.assertEqual((result.status, result.values("path")), (1, ["/exec"]))
        self.assertIn(self.sandbox.user_file, result.err)

    def test_missing_folders_are_no_failure(self):
        shutil.rmtree(self.sandbox.root)
        self.assertEqual(self.succeed("list", "--json", "--system").out, b"")


class Root(CommandTest):
    def test_the_option_goes_before_the_variable(self):
        other = Sandbox()
        self.addCleanup(other.end)
        self.sandbox.write_user("allow prefix /variable any r")
        other.write_user("allow prefix /option any r")
        self.assertEqual(self.listed(), ["/variable"])
        self.assertEqual(self.succeed("--root", other.root, "list", "--json").values("path"), ["/option"])
        self.assertEqual(self.succeed("--root=" + other.root + "/", "list", "--json").values("path"), ["/option"])

    def test_is_never_put_in_front_of_a_rules_path(self):
        self.sandbox.write(self.sandbox.path("root/there"), "")
        self.sandbox.write_user("allow path /there/is/no/such/file any r")
        self.assertEqual(self.listed(), ["/there/is/no/such/file"])
        os.makedirs(self.sandbox.path("root/quorvane-test-nowhere"))
        self.sandbox.write_user("allow path /quorvane-test-nowhere any r")
        self.assertEqual(self.run_program("check").status, 1)


class Permissions(CommandTest):
    """Root may read everything, so root looks at closed files as somebody else."""

    def setUp(self):
        self.sandbox = Sandbox(NOBODY if IS_ROOT else None)
        self.addCleanup(self.sandbox.end)
        self.program = self.sandbox.path("quorvanectl")
        shutil.copy(PROGRAM, self.program)  # the build folder may be closed to others
        os.chmod(self.program, 0o755)

    def run_without_privileges(self, *arguments):
        somebody = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if IS_ROOT else {}
        return self.run_program(*arguments, program=self.program, **somebody)

    def test_a_file_without_read_permission_is_a_failure(self):
        file = self.sandbox.new_file("closed", ["allow prefix /a any r"])
        os.chmod(file, 0)
        result = self.run_without_privileges("list", "--json", file)
        self.assertEqual((result.status, result.out), (1, b""))
        self.assertIn(f"Failed to open file '{file}' for reading: Permission denied (13)", result.err)

    def test_a_users_file_without_read_permission_is_never_overwritten(self):
        self.sandbox.write_user("allow prefix /a any r")
        for command in ("add", "delete"):
            with self.subTest(command=command):
                os.chmod(self.sandbox.user_file, 0o222)  # writing alone would be allowed
                result = self.run_without_privileges(command, "allow", "prefix", "/a", "any", "r")
                self.assertEqual(result.status, 1)
                self.assertIn("Permission denied", result.err)
                os.chmod(self.sandbox.user_file, 0o666)
                self.assertEqual(read(self.sandbox.user_file), b"allow prefix /a any r\n")

    def test_a_users_file_without_write_permission_stays_as_it_is(self):
        self.sandbox.write_user("allow prefix /a any r")
        os.chmod(self.sandbox.user_file, 0o444)
        result = self.run_without_privileges("add", "allow", "prefix", "/b", "any", "r")
        self.assertEqual(result.status, 1)
        self.assertIn(f"Failed to open file '{self.sandbox.user_file}' for writing: Permission denied (13)",
                      result.err)
        self.assertEqual(read(self.sandbox.user_file), b"allow prefix /a any r\n")
