import json
import os
import re
import subprocess

from quorvanectl import PROGRAM, CommandTest

CI = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "integrations/ci")


class Pipelines(CommandTest):
    """The jobs for build machines, run as these run them: in a folder of rules, with the programs on the path."""

    def setUp(self):
        super().setUp()
        binaries = self.sandbox.path("bin")
        self.rules = self.sandbox.path("rules")
        for folder in (binaries, os.path.join(self.rules, "a team")):
            os.makedirs(folder)
        os.symlink(PROGRAM, os.path.join(binaries, "quorvanectl"))
        os.symlink(os.path.join(CI, "check-rules"), os.path.join(binaries, "check-rules"))
        self.path = binaries + ":" + os.environ["PATH"]
        self.write("a team/good.quorv", "allow path /on/another/machine /its/program r")
        self.write("notes.txt", "no rules")

    def write(self, name, *lines):
        self.sandbox.write(os.path.join(self.rules, name), lines)

    def run_job(self, command, **variables):
        return subprocess.run(["sh", "-c", command], cwd=self.rules, timeout=120, capture_output=True, text=True,
                              env={**self.environment(), "PATH": self.path, **variables}, stdin=subprocess.DEVNULL)

    def passes(self, command, **variables):
        done = self.run_job(command, **variables)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        return done

    def jobs(self):
        """The commands of the ready jobs."""
        found = []
        for name, pattern in (("github-actions.yml", r"(?m)^ +run: (.+)$"),
                              ("gitlab-ci.yml", r"(?m)^  script:\n    - (.+)$")):
            with open(os.path.join(CI, name), encoding="utf-8") as file:
                found += re.findall(pattern, file.read())
        self.assertEqual(len(found), 2)
        return found

    def test_each_job_passes_good_rules_and_fails_bad_ones(self):
        for command in self.jobs():
            self.passes(command)
        self.write("bad.quorvane.rc", "allow prefix /a any r", "allow path /a/b any r")
        for command in self.jobs():
            self.assertNotEqual(self.run_job(command).returncode, 0, command)

    def test_the_log_for_review_is_there_when_the_job_fails(self):
        self.write("bad.quorv", "allow prefix /a any r", "allow path /a/b any r")
        self.run_job(self.jobs()[0])
        with open(os.path.join(self.rules, "rules.sarif"), encoding="utf-8") as file:
            results = json.load(file)["runs"][0]["results"]
        self.assertEqual([result["ruleId"] for result in results], ["redundant"])

    def test_thousands_of_files_make_one_log_in_the_order_of_their_names(self):
        names = [f"{number:04}{'x' * 100}.quorv" for number in range(2000)]
        for name in reversed(names):
            self.write(name, "allow prefix /a any r")
        for name in (names[-1], names[0]):
            self.write(name, "allow prefix /a any r", "allow path /a/b any r")
        self.assertNotEqual(self.run_job(self.jobs()[0]).returncode, 0)
        with open(os.path.join(self.rules, "rules.sarif"), encoding="utf-8") as file:
            results = json.load(file)["runs"][0]["results"]
        self.assertEqual([result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"] for result in results],
                         ["./" + names[0], "./" + names[-1]])

    def test_a_folder_without_rules_passes_and_one_that_is_none_does_not(self):
        self.passes("mkdir empty && check-rules empty")
        self.assertEqual(self.run_job("check-rules none").returncode, 2)

    def test_the_options_can_be_chosen(self):
        self.write("bad.quorv", "allow prefix /a any r", "allow path /a/b any r")
        self.passes("check-rules", QUORVANE_CHECK="--no-target --only joined,unwritable")
        self.assertNotEqual(self.run_job("check-rules 'a team'", QUORVANE_CHECK="").returncode, 0)
