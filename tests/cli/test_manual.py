import os
import re
import subprocess

from quorvanectl import CommandTest

MANUAL = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "docs/man")
RULES = ["watch path /w any r", "allow prefix /a /bin/sh rwc tag"]


def page(name):
    with open(os.path.join(MANUAL, name)) as file:
        return file.read()


def documented_options(text):
    return set(re.findall(r"Fl Fl ([a-z-]+)", text))


class Manual(CommandTest):
    """The manual pages tell what the program does."""

    def help_of(self, *command):
        return self.succeed(*command, "--help").out.decode()

    def commands(self):
        return re.findall(r"^  ([a-z-]+) ", self.help_of().partition("Subcommands:")[2], re.M)

    def test_it_describes_every_command_and_no_other(self):
        text = page("quorvanectl.1")
        synopsis = text.partition(".Sh SYNOPSIS")[2].partition(".Sh DESCRIPTION")[0]
        commands = sorted(self.commands())
        self.assertEqual(sorted(re.findall(r"(?m)^\.Ic ([a-z-]+)$", synopsis)), commands)
        self.assertEqual(sorted(re.findall(r"(?m)^\.It Ic ([a-z-]+)$", text)), commands)

    def test_the_formatter_finds_nothing_to_complain_of(self):
        for name in sorted(os.listdir(MANUAL)):
            lint = subprocess.run(["mandoc", "-T", "lint", os.path.join(MANUAL, name)], capture_output=True, text=True)
            # Whether the pages it refers to are installed is the machine's affair.
            self.assertEqual([line for line in lint.stdout.splitlines() if "manual not found" not in line], [])

    def test_every_quote_ends_before_the_next_begins(self):
        text = subprocess.run(["mandoc", "-T", "utf8", os.path.join(MANUAL, "quorvanectl.1")], capture_output=True,
                              text=True, check=True).stdout
        quotes = re.sub("[^\u2018\u2019]", "", text)
        self.assertGreater(len(quotes), 20)
        self.assertEqual(quotes.replace("\u2018\u2019", ""), "")

    def test_no_sentence_stands_there_twice(self):
        text = page("quorvanectl.1").partition(".Sh DESCRIPTION")[2]
        lines = [line for line in text.splitlines() if len(line) > 30 and not line.startswith(".")]
        self.assertEqual(sorted(set(lines)), sorted(lines))
        json = text.partition(".Ss JSON")[2].partition(".Sh ")[0]
        described = re.findall(r"(?:^|\.Pp\n)\.Ic (\w+)\n", json)
        self.assertEqual(sorted(set(described)), sorted(described))

    def test_it_describes_every_option_and_no_other(self):
        offered = set(re.findall(r"--([a-z-]+)", self.help_of()))
        for command in self.commands():
            offered |= set(re.findall(r"^  (?:-h,)?--([a-z-]+)", self.help_of(command), re.M))
        self.assertEqual(documented_options(page("quorvanectl.1")), offered)

    def test_every_documented_sort_key_is_one(self):
        keys = re.search(r"The keys are\n\.Cm (.*)\nand\n\.Cm (\w+)", page("quorvanectl.1"))
        keys = [*keys[1].split(" , "), keys[2]]
        self.assertEqual(len(keys), 11)
        file = self.sandbox.new_file("rules", RULES)
        for key in keys:
            self.succeed("list", "--sort", key, file)

    def test_it_names_the_keys_of_json_in_their_order(self):
        self.sandbox.write_user(*RULES)
        self.sandbox.write_preferences(policy_global_exec=1)
        program = self.sandbox.new_file("program", "x")
        described = page("quorvanectl.1").partition(".Ss JSON")[2].partition(".Sh ENVIRONMENT")[0]
        for command in (["list"], ["options"], ["check"], ["import", self.sandbox.user_file],
                        ["codesign", program], ["codesign", "--pid", "1"]):
            part = re.search(rf"(?ms)^\.Ic {command[0]}\n(.*?)(\.Pp|\Z)", described)[1]
            named = [key for key in re.findall(r"^\.Ql (\w+)", part, re.M)]
            printed = self.run_program(*command, "--json").keys()
            self.assertTrue(printed, command)
            for keys in printed:
                self.assertEqual([key for key in named if key in keys], keys, command)

    def test_each_line_of_the_example_of_a_users_file_is_the_rule_it_looks_like(self):
        text = page("quorvane-rules.5").partition("A user's file:")[2]
        lines = re.search(r"(?s)\.Bd -literal.*?\n(.*?)\.Ed", text)[1].splitlines()
        file = self.sandbox.new_file("rules", lines)
        rules = sorted(self.succeed("list", "--json", file).objects(), key=lambda rule: rule["sequence"])
        self.assertEqual([[rule["policyClass"], rule["path"], rule["processName"], rule["tag"], rule["constraint"],
                           rule["created"]] for rule in rules], [
            [0, "/Users/ann/Notes/", "/Applications/Notes.app/Contents/MacOS/Notes", "work", "", 0],
            [0, "/etc/hosts", "any", "", "", 0],
            [1, ".key", "any via /usr/bin/ssh", "keys", "", 0],
            [0, "~/Backup/", "/bin/sh via /usr/sbin/cron", "", "APPLE_PF_BINARY", 1478000000],
            [2, ".plist", "/usr/bin/defaults", "prefs", None, None],
        ])

    def test_the_example_of_a_system_file_sets_an_option_and_denies(self):
        text = page("quorvane-rules.5").partition("In the main file of the system:")[2]
        lines = re.search(r"(?s)\.Bd -literal.*?\n(.*?)\.Ed", text)[1].splitlines()
        self.sandbox.write_system("quorvane.rc", *lines)
        self.assertEqual(self.succeed("options").out, b"policy.global.webcam 2\n")
        rule, = self.succeed("list", "--json", "--system").objects()
        self.assertEqual((rule["path"], rule["flags"], rule["tag"]), ("/System/", 1, ""))

    def test_the_limits_named_are_found_by_check(self):
        for path, process, operations in (("/caf\u00e9", "any", "r"), ("/a", 'a"b', "r"), ("/a ", "any", "r"),
                                          ("/a", "any", "")):
            with self.subTest(path=path, process=process):
                added = self.run_program("add", "allow", "suffix", path, process, operations)
                self.assertIn("does not read back", added.err)
                os.remove(self.sandbox.user_file)
