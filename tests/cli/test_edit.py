import os
import resource
import signal

from quorvanectl import CommandTest
from sandbox import Sandbox, read


class EditTest(CommandTest):
    def written(self):
        return read(self.sandbox.user_file).decode()

    def assert_untouched(self, status, *command, saying=""):
        """A command that has to fail and to leave the user's file alone."""
        before = read(self.sandbox.user_file), os.stat(self.sandbox.user_file).st_mtime_ns
        result = self.fail_with(status, *command)
        self.assertIn(saying, result.err)
        self.assertEqual((read(self.sandbox.user_file), os.stat(self.sandbox.user_file).st_mtime_ns), before)


class Add(EditTest):
    def test_writes_each_class_and_type_in_its_own_form(self):
        for arguments, line in [
                (["allow", "prefix", "/a b", "any", "rwcmx"], 'allow prefix "/a b" "any" rwcmx "" "" "0"\n'),
                (["deny", "path", "/x", "/bin/sh via any", "xr", "--tag", "my tag", "--constraint", "TEAM"],
                 'deny path "/x" "/bin/sh via any" rx "my tag" "TEAM" "0"\n'),
                (["watch", "suffix", ".plist", "any", "w", "--tag", "t"], 'watch suffix ".plist" "any" w "t"\n'),
                (["watch", "prefix", "/w", "any", "mcm"], 'watch prefix "/w" "any" cm ""\n'),
                (["allow", "suffix", "", "any", "r"], 'allow suffix "" "any" r "" "" "0"\n'),
                (["allow", "path", "--", "-x", "any", "r"], 'allow path "-x" "any" r "" "" "0"\n'),
        ]:
            with self.subTest(arguments=arguments):
                self.sandbox.write_user()
                self.assertEqual(self.succeed("add", *arguments).out, b"")
                self.assertEqual(self.written(), line)

    def test_keeps_the_users_other_rules_and_writes_no_system_rule(self):
        self.sandbox.write_user("; comment", "allow prefix /b /bin/b r T C 9", "watch prefix /w any r T")
        self.sandbox.write_system("quorvane.rc", "allow prefix /s any r u")
        self.succeed("add", "deny", "prefix", "/a", "/bin/a", "r")
        self.assertEqual(self.written(), 'watch prefix "/w" "any" r "T"\n'
                                         'deny prefix "/a" "/bin/a" r "" "" "0"\n'
                                         'allow prefix "/b" "/bin/b" r "T" "C" "9"\n')

    def test_an_equal_rule_is_added_once_more(self):
        for rule_class, line in (("watch", 'watch prefix "/a" "any" r ""\n'),
                                 ("allow", 'allow prefix "/a" "any" r "" "" "0"\n')):
            with self.subTest(rule_class=rule_class):
                self.sandbox.write_user()
                self.succeed("add", rule_class, "prefix", "/a", "any", "r")
                self.succeed("add", rule_class, "prefix", "/a", "any", "r")
                self.assertEqual(self.written(), line * 2)
                self.assertEqual(self.listed(), ["/a"])  # reading drops the second one

    def test_a_tags_double_quotes_are_left_out(self):
        self.succeed("add", "allow", "prefix", "/a", "any", "r", "--tag", 'say "hi"')
        self.assertEqual(self.listed(key="tag"), ["say hi"])

    def test_makes_the_file_when_there_is_none(self):
        self.succeed("add", "allow", "prefix", "/a", "any", "r")
        self.assertEqual(os.stat(self.sandbox.user_file).st_mode & 0o7777, 0o640)

    def test_rewrites_the_file_in_place(self):
        self.sandbox.write_user("; " + "x" * 10_000)
        os.chmod(self.sandbox.user_file, 0o666)
        before = os.stat(self.sandbox.user_file).st_ino
        self.succeed("add", "allow", "prefix", "/a", "any", "r")
        after = os.stat(self.sandbox.user_file)
        self.assertEqual((after.st_ino, after.st_mode & 0o7777, after.st_size), (before, 0o640, 36))

    def test_writes_below_the_root_that_is_given(self):
        other = Sandbox()
        self.addCleanup(other.end)
        self.succeed("--root", other.root, "add", "allow", "prefix", "/a", "any", "r")
        self.assertEqual((os.path.exists(self.sandbox.user_file), os.path.exists(other.user_file)), (False, True))

    def test_warns_of_what_will_not_read_back(self):
        for arguments in (["/é", "any", "r"], ['/a"b', "any", "r"], ["/a", 'an"y', "r"], ["/a ", "any", "r"],
                          ["/a", "any", ""], ["/a", "any", "r", "--tag", "日"],
                          ["/a", "any", "r", "--constraint", 'A"B'],
                          ["/a\nb", "any", "r"], ["/a\u2028b", "any", "r"]):
            with self.subTest(arguments=arguments):
                self.sandbox.write_user()
                result = self.run_program("add", "allow", "prefix", *arguments)
                self.assertEqual(result.status, 0)
                self.assertIn("does not read back", result.err)
                self.assertNotEqual(self.written(), "")

    def test_does_not_warn_of_a_quoted_tag_or_of_blanks_inside(self):
        self.succeed("add", "allow", "prefix", " /a  b", " any", "r", "--tag", '"t"')

    def test_the_end_of_a_line_beyond_ascii_is_not_written(self):
        self.run_program("add", "allow", "prefix", "/😀é", "any", "r")
        whole = 'allow prefix "/😀é" "any" r "" "" "0"\n'
        self.assertEqual(read(self.sandbox.user_file), whole.encode()[:len(whole) + 1])


class OtherRules(EditTest):
    """Rules with letters beyond ASCII that a write cuts though it is about others."""

    WHOLE = 'allow prefix "/caf\u00e9s" "any" r "" "" "0"\n'

    def setUp(self):
        super().setUp()
        self.sandbox.write(self.sandbox.user_file, self.WHOLE + 'allow prefix "/a" "any" r "" "" "0"\n')

    def test_are_cut_which_add_and_delete_tell(self):
        for command in (["add", "allow", "prefix", "/b", "any", "r"],
                        ["delete", "allow", "prefix", "/a", "any", "r"]):
            with self.subTest(command=command):
                result = self.run_program(*command)
                self.assertEqual(result.status, 0)
                self.assertIn("1 rule does not come back from the rules file as written", result.err)
                self.succeed("restore", "1")

    def test_a_rule_given_that_is_cut_is_told_once(self):
        self.sandbox.write_user()
        result = self.run_program("add", "allow", "prefix", "/\u00e9", "any", "r")
        self.assertEqual(len(result.err.splitlines()), 1, result.err)

    def test_stay_whole_with_whole_lines(self):
        settings = os.path.join(self.sandbox.home, ".config/quorvane/settings.ini")
        os.makedirs(os.path.dirname(settings))
        self.sandbox.write(settings, "[rules]\nwholeLines=true\n")
        self.succeed("add", "allow", "prefix", "/\u00e9", "any", "r")
        self.assertEqual(self.listed(), ["/caf\u00e9s", "/a", "/\u00e9"])


class Delete(EditTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user("allow prefix /a any r first C 9", "watch prefix /a any r first",
                                "allow prefix /a any r second D")

    def test_removes_the_equal_rule_whatever_its_tag_and_age(self):
        self.assertEqual(self.succeed("delete", "allow", "prefix", "/a", "any", "r", "--constraint", "C").out, b"")
        self.assertEqual(self.written(), 'watch prefix "/a" "any" r "first"\n'
                                         'allow prefix "/a" "any" r "second" "D" "0"\n')

    def test_removes_a_watch_rule(self):
        self.succeed("delete", "watch", "prefix", "/a", "any", "r")
        self.assertEqual(self.listed(key="kind"), ["policy", "policy"])

    def test_the_letters_of_the_operations_may_stand_in_any_order(self):
        self.sandbox.write_user("deny suffix .x any xmcwr", "watch path /w any wr")
        self.succeed("delete", "deny", "suffix", ".x", "any", "wcrxm")
        self.succeed("delete", "watch", "path", "/w", "any", "rw")
        self.assertEqual(self.written(), "")

    def test_a_rule_that_differs_in_any_compared_field_is_not_equal(self):
        for arguments in (["allow", "prefix", "/a", "any", "r"],
                          ["deny", "prefix", "/a", "any", "r", "--constraint", "C"],
                          ["allow", "path", "/a", "any", "r", "--constraint", "C"],
                          ["allow", "prefix", "/A", "any", "r", "--constraint", "C"],
                          ["allow", "prefix", "/a", "Any", "r", "--constraint", "C"],
                          ["allow", "prefix", "/a", "any", "rw", "--constraint", "C"],
                          ["allow", "prefix", "/a", "any", "r", "--constraint", "c"],
                          ["watch", "prefix", "/a", "any", "w"],
                          ["watch", "path", "/a", "any", "r"], ["watch", "prefix", "/b", "any", "r"]):
            with self.subTest(arguments=arguments):
                self.assert_untouched(1, "delete", *arguments)

    def test_of_doubled_lines_nothing_is_left(self):
        self.sandbox.write_user("allow prefix /a any r one", "allow prefix /a any r two", "allow prefix /b any r")
        self.succeed("delete", "allow", "prefix", "/a", "any", "r")
        self.assertEqual(self.listed(), ["/b"])

    def test_a_system_rule_is_not_deleted(self):
        self.sandbox.write_system("quorvane.rc", "allow prefix /s any r", "watch prefix /s any r")
        self.assert_untouched(1, "delete", "allow", "prefix", "/s", "any", "r")
        self.assert_untouched(1, "delete", "watch", "prefix", "/s", "any", "r")

    def test_a_machine_without_rules_has_nothing_to_delete(self):
        os.remove(self.sandbox.user_file)
        self.fail_with(1, "delete", "allow", "prefix", "/a", "any", "r")
        self.assertFalse(os.path.exists(self.sandbox.user_file))


class UnusableFile(EditTest):
    """Whatever could not be read is not written over."""

    COMMANDS = (["add", "allow", "prefix", "/a", "any", "r"], ["delete", "allow", "prefix", "/a", "any", "r"],
                ["add", "watch", "prefix", "/a", "any", "r"], ["delete", "watch", "prefix", "/a", "any", "r"])
    RULES = b"allow prefix /a any r\nwatch prefix /a any r\n"

    def test_text_that_is_not_utf_8_stays(self):
        self.sandbox.write(self.sandbox.user_file, self.RULES + b"allow prefix /\xff any r\n")
        for command in self.COMMANDS:
            with self.subTest(command=command):
                self.assert_untouched(1, *command, saying=self.sandbox.user_file)

    def test_text_behind_a_nul_byte_stays(self):
        self.sandbox.write(self.sandbox.user_file, self.RULES + b"\0allow prefix /precious any r\n")
        for command in self.COMMANDS:
            with self.subTest(command=command):
                self.assert_untouched(1, *command, saying=self.sandbox.user_file)

    def test_a_symbolic_link_and_its_target_stay(self):
        target = self.sandbox.new_file("target", self.RULES)
        os.symlink(target, self.sandbox.user_file)
        for command in self.COMMANDS:
            with self.subTest(command=command):
                self.assert_untouched(1, *command, saying="Too many levels of symbolic links (40)")
                self.assertTrue(os.path.islink(self.sandbox.user_file))

    def test_a_dangling_link_is_not_written_through(self):
        target = self.sandbox.path("target")
        os.symlink(target, self.sandbox.user_file)
        self.fail_with(1, *self.COMMANDS[0])
        self.assertFalse(os.path.exists(target))

    def test_a_folder_is_told(self):
        os.mkdir(self.sandbox.user_file)
        for command in self.COMMANDS:
            with self.subTest(command=command):
                self.assertIn(self.sandbox.user_file, self.fail_with(1, *command).err)

    def test_a_missing_folder_is_told(self):
        os.rmdir(self.sandbox.shared)
        result = self.fail_with(1, *self.COMMANDS[0])
        self.assertIn(f"Failed to open file '{self.sandbox.user_file}' for writing: No such file or directory (2)",
                      result.err)

    def test_a_failed_write_is_told(self):
        def no_room():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))

        result = self.run_program(*self.COMMANDS[0], preexec_fn=no_room, restore_signals=False)
        self.assertEqual(result.status, 1)
        self.assertIn(f"Failed write() operation on file '{self.sandbox.user_file}' File too large (27)", result.err)

    def test_a_system_file_that_cannot_be_read_is_no_reason_not_to_write(self):
        os.mkdir(self.sandbox.system_file("exec.rc"))
        self.run_program(*self.COMMANDS[0])
        self.assertEqual(self.written(), 'allow prefix "/a" "any" r "" "" "0"\n')
