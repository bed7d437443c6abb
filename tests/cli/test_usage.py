import os

from quorvanectl import CommandTest
from sandbox import Sandbox

RULE = ["allow", "prefix", "/a", "any", "r"]


class Usage(CommandTest):
    def assert_usage_error(self, *arguments):
        result = self.fail_with(2, *arguments)
        self.assertEqual(result.out, b"")
        self.assertFalse(os.path.exists(self.sandbox.user_file))

    def test_wrong_arguments_are_told_with_status_2(self):
        for arguments in ([], ["lst"], ["list", "--jsn"], ["list", "a", "b"], ["list", "--filter"],
                          ["list", "--sort"],
                          ["options", "file"], ["export"], ["export", "a", "b", "c"], ["--root"],
                          ["list", "--label-system"], ["add"], ["add", *RULE[:4]], ["add", *RULE, "x"],
                          ["delete", *RULE, "--tag", "t"], ["check", "--system"], ["options", "--system"]):
            with self.subTest(arguments=arguments):
                self.assert_usage_error(*arguments)

    def test_an_option_that_is_unknown_is_named_also_where_an_argument_is_missing_for_it(self):
        self.assertIn("unknown option '-x'", self.fail_with(2, "add", "allow", "path", "-x", "any", "r").err)
        self.assertIn("unknown option '--all'", self.fail_with(2, "diff", "--all", "a").err)
        self.assertIn("B is required", self.fail_with(2, "diff", "a").err)

    def test_wrong_words_of_a_rule_are_usage_errors(self):
        for place, word in [(0, "Allow"), (0, "permit"), (0, ""), (1, "PREFIX"), (1, "folder"), (4, "rq"), (4, "R"),
                            (4, "r w")]:
            for command in ("add", "delete"):
                with self.subTest(command=command, word=word):
                    self.assert_usage_error(command, *RULE[:place], word, *RULE[place + 1:])

    def test_arguments_that_are_not_utf_8_are_usage_errors(self):
        for arguments in (["list", "--filter", b"\xff"], ["add", *RULE[:2], b"/caf\xe9", *RULE[3:]], [b"\xc0\xaf"],
                          ["add", *RULE, "--tag", b"\xed\xa0\x80"], ["list", b"/tmp/\xff"],
                          ["--root", b"\xfe", "list"]):
            with self.subTest(arguments=arguments):
                self.assert_usage_error(*arguments)

    def test_an_empty_value_after_an_equals_sign_is_a_value(self):
        file = self.sandbox.new_file("rules", ["allow prefix /a any r"])
        self.assertEqual(self.listed("--filter=", file), ["/a"])
        self.succeed("add", "allow", "prefix", "--tag=", "--constraint=", "/b", "any", "r")
        self.assertEqual(self.listed(), ["/b"])

    def test_the_root_option_stands_before_the_command(self):
        other = Sandbox()
        self.addCleanup(other.end)
        other.write_user("allow prefix /other any r")
        self.assertEqual(self.succeed("--root", other.root, "list", "--json").values("path"), ["/other"])

    def test_an_empty_root_in_the_environment_is_no_root(self):
        environment = {**self.environment(), "QUORVANE_ROOT": ""}
        self.sandbox.write_user("allow prefix /sandboxed any r")
        self.assertNotIn("/sandboxed", self.run_program("list", "--json", environment=environment).values("path"))
