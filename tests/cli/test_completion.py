import os
import pty
import re
import select
import shutil
import subprocess
import unittest

from quorvanectl import PROGRAM, CommandTest

SHELLS = ("bash", "zsh", "fish")
RULES = ['allow prefix /Users/ann/ /bin/sh rwc "work at home"', "watch path /etc/hosts any r work",
         'deny suffix .x "/bin/cat (-u) via /bin/sh" r play']


class Scripts(CommandTest):
    def help_of(self, *command):
        return self.succeed(*command, "--help").out.decode()

    def test_each_script_names_every_command_and_option(self):
        commands = re.findall(r"^  ([a-z-]+) ", self.help_of().partition("Subcommands:")[2], re.M)
        options = set(re.findall(r"--([a-z-]+)", self.help_of()))
        for command in commands:
            options |= set(re.findall(r"^  (?:-.,)?--([a-z-]+)", self.help_of(command), re.M))
        for shell in SHELLS:
            script = self.succeed("completion", shell).out.decode()
            named = set(re.findall(r"(?m)^complete.* -l ([a-z-]+)" if shell == "fish" else r"'--([a-z-]+):", script))
            self.assertEqual(named, options, shell)
            for command in commands:
                self.assertRegex(script, rf"(-a |'){command}[ :]", shell)

    def test_an_unknown_shell_is_a_usage_error(self):
        for arguments in ([], ["tcsh"], ["bash", "zsh"], ["--values", "tags"], ["bash", "--values", "rules"]):
            self.fail_with(2, "completion", *arguments)

    def test_no_help_tells_of_what_only_the_scripts_use(self):
        self.assertNotIn("--values", self.help_of("completion"))
        self.sandbox.write_user(*RULES)
        self.assertEqual(self.succeed("completion", "zsh", "--values", "programs").out, b"/bin/cat\n/bin/sh\nany\n")


class ShellTest(CommandTest):
    """What a real shell offers. Each subclass asks one."""

    shell = None

    def setUp(self):
        super().setUp()
        self.sandbox.write_user(*RULES)
        self.work = self.sandbox.path("work")
        os.makedirs(os.path.join(self.work, "folder"))
        for name in ("a.quorv", "b file.quorv"):
            self.sandbox.write(os.path.join(self.work, name), [])
        binaries = self.sandbox.path("bin")
        os.mkdir(binaries)
        os.symlink(PROGRAM, os.path.join(binaries, "quorvanectl"))
        self.path = binaries + ":" + os.environ["PATH"]
        self.script = self.sandbox.write(self.sandbox.path("script"), self.succeed("completion", self.shell).out)

    def run_shell(self, *arguments):
        done = subprocess.run([shutil.which(self.shell), *arguments], cwd=self.work, timeout=120,
                              env={**self.environment(), "PATH": self.path}, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""), arguments)
        return done.stdout.splitlines()

    def offered(self, *words):
        """What is offered for the last word."""
        raise NotImplementedError

    def check_offers(self):
        self.assertIn("check", self.offered(""))
        self.assertEqual(self.offered("che"), ["check"])
        self.assertEqual(self.offered("completion", ""), ["bash", "fish", "zsh"])
        self.assertEqual(self.offered("list", "--la"), ["--label-system"])
        self.assertEqual(self.offered("list", "--sort", "pol"), ["policyClass", "policyType"])
        self.assertEqual(self.offered("add", "de"), ["deny"])
        self.assertEqual(self.offered("add", "deny", "p"), ["path", "prefix"])
        self.assertEqual(self.offered("--root", self.sandbox.root, "check", "a"), ["a.quorv"])
        self.assertEqual(self.offered("check", "x", "y", "a"), ["a.quorv"])
        self.assertEqual(self.offered("add", "deny", "path", "/e"), ["/etc/hosts"])
        self.assertEqual(self.offered("add", "deny", "path", "/x", "any", "r", "--tag", "pl"), ["play"])

    def check_present_rules(self):
        """Of the store that --root names."""
        other = self.sandbox.path("other")
        shutil.copytree(self.sandbox.root, other)
        self.sandbox.write_user("allow path /here any r elsewhere")
        tags = ["add", "deny", "path", "/x", "any", "r", "--tag"]
        self.assertEqual(self.offered(*tags, ""), ["elsewhere"])
        self.assertEqual(self.offered("--root", other, *tags, "pl"), ["play"])


@unittest.skipUnless(shutil.which("bash"), "no bash")
class Bash(ShellTest):
    shell = "bash"

    def offered(self, *words):
        line = " ".join(["quorvanectl", *words])
        quoted = " ".join("'" + word + "'" for word in ["quorvanectl", *words])
        previous = words[-2] if len(words) > 1 else "quorvanectl"
        return sorted(self.run_shell("--norc", "-c", f"""
            source '{self.script}'
            COMP_WORDS=({quoted}) COMP_CWORD={len(words)} COMP_LINE='{line}' COMP_POINT={len(line)}
            _quorvanectl quorvanectl '{words[-1]}' '{previous}'
            [[ ${{#COMPREPLY[@]}} == 0 ]] || printf '%s\\n' "${{COMPREPLY[@]}}" """))

    def test_it_offers_commands_options_and_values(self):
        self.check_offers()

    def test_it_offers_what_the_present_rules_name(self):
        self.check_present_rules()

    def test_blanks_in_a_value_are_quoted_as_the_shell_needs_it(self):
        words = ("add", "deny", "path", "/x", "any", "r", "--tag")
        self.assertEqual(self.offered(*words, "wor"), ["work", "work\\ at\\ home"])

    def test_a_value_behind_an_equals_sign_is_completed(self):
        self.assertEqual(self.offered("list", "--sort", "=", "pat"), ["path"])
        self.assertEqual(self.offered("check", "--only", "="),
                         sorted("all redundant invalid missing unwritable joined overlap unproven".split()))


@unittest.skipUnless(shutil.which("zsh"), "no zsh")
class Zsh(ShellTest):
    shell = "zsh"

    def setUp(self):
        """A shell in a terminal: Tab completes, Control-X shows the line and empties it."""
        super().setUp()
        self.sandbox.new_file(".zshrc", f"""
            autoload -U compinit
            compinit -u -D
            source '{self.script}'
            bindkey '^I' complete-word
            show() {{ print -r -- "<<$BUFFER>>"; BUFFER= }}
            zle -N show
            bindkey '^X' show
            PROMPT='ready '
            """)
        self.terminal, inside = pty.openpty()
        shell = subprocess.Popen(["zsh", "-i"], stdin=inside, stdout=inside, stderr=inside, cwd=self.work,
                                 start_new_session=True,
                                 env={**self.environment(), "PATH": self.path, "TERM": "dumb",
                                      "ZDOTDIR": self.sandbox.path("")})
        os.close(inside)
        self.addCleanup(lambda: (shell.kill(), shell.wait(), os.close(self.terminal)))
        self.read_until("ready ")

    def read_until(self, end):
        shown = ""
        while not shown.endswith(end):
            self.assertTrue(select.select([self.terminal], [], [], 60)[0], shown)
            shown += os.read(self.terminal, 1).decode(errors="replace")
        return shown

    def completed(self, line):
        os.write(self.terminal, f"quorvanectl {line}\t\x18".encode())
        return self.read_until(">>").rpartition("<<quorvanectl ")[2][:-2]

    def test_it_completes_commands_options_and_values(self):
        for typed, line in [("che", "check "), ("completion z", "completion zsh "),
                            ("list --la", "list --label-system "), ("list --sort seq", "list --sort sequence "),
                            ("list --sort=seq", "list --sort=sequence "), ("add de", "add deny "),
                            ("add deny pr", "add deny prefix "), ("check a", "check a.quorv "),
                            ("check x y a", "check x y a.quorv "), ("check --target fo", "check --target folder/"),
                            ("add deny path /e", "add deny path /etc/hosts "),
                            ("add deny path /x any r --tag pl", "add deny path /x any r --tag play "),
                            ("add deny path /x any r --tag work\\ ",
                             "add deny path /x any r --tag work\\ at\\ home ")]:
            with self.subTest(typed=typed):
                self.assertEqual(self.completed(typed), line)

    def test_it_offers_the_rules_of_the_store_that_root_names(self):
        other = self.sandbox.path("other")
        shutil.copytree(self.sandbox.root, other)
        self.sandbox.write_user("allow path /here any r elsewhere")
        self.assertEqual(self.completed(f"--root {other} add deny path /x any r --tag pl"),
                         f"--root {other} add deny path /x any r --tag play ")


@unittest.skipUnless(shutil.which("fish"), "no fish")
class Fish(ShellTest):
    shell = "fish"

    def offered(self, *words):
        line = " ".join(["quorvanectl", *words])
        found = self.run_shell("--no-config", "-c", f"source '{self.script}'; complete -C '{line}'")
        return sorted(candidate.partition("\t")[0] for candidate in found)

    def test_it_offers_commands_options_and_values(self):
        self.check_offers()

    def test_it_offers_what_the_present_rules_name(self):
        self.check_present_rules()
