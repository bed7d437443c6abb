import os
import shutil
import subprocess

from quorvanectl import CommandTest, PROGRAM
from sandbox import read

GIT_FOLDER = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))),
                          "integrations/git")
A, B, C, D = ('allow prefix "/%s" "any" r "" "" "0"\n' % name for name in "abcd")
LINES = ["*.quorv merge=quorvane diff=quorvane", "*.quorvane.rc merge=quorvane diff=quorvane"]


def tagged(line, tag):
    return line.replace('r ""', 'r "%s"' % tag)


class GitTest(CommandTest):
    def setUp(self):
        super().setUp()
        programs = self.sandbox.path("bin")
        os.mkdir(programs)
        os.symlink(PROGRAM, os.path.join(programs, "quorvanectl"))
        self.variables = {**super().environment(), "PATH": f"{programs}:{os.environ['PATH']}", "GIT_CONFIG_NOSYSTEM": "1",
                          "GIT_AUTHOR_NAME": "t", "GIT_AUTHOR_EMAIL": "t@t", "GIT_COMMITTER_NAME": "t",
                          "GIT_COMMITTER_EMAIL": "t@t"}
        self.repository = self.sandbox.path("repository")
        subprocess.run(["git", "init", "-q", "-b", "main", self.repository], env=self.variables, check=True)
        self.attributes = os.path.join(self.repository, ".git/info/attributes")

    def environment(self):
        return self.variables

    def git(self, *arguments, status=0):
        done = subprocess.run(["git", *arguments], cwd=self.repository, env=self.variables, capture_output=True, text=True)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout + done.stderr

    def set_up(self, *options):
        return self.succeed("git-setup", *options, cwd=self.repository)

    def commit(self, name, text):
        self.sandbox.write(os.path.join(self.repository, name), text)
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "change")

    def branch(self, name, file, text):
        """Makes the branch `name` from the first commit, with that file."""
        self.git("checkout", "-q", "-b", name, "start")
        self.commit(file, text)

    def content(self, name="team.quorv"):
        return read(os.path.join(self.repository, name)).decode()

    def start(self, text, name="team.quorv"):
        self.commit(name, text)
        self.git("branch", "start")


class GitMerge(GitTest):
    def setUp(self):
        super().setUp()
        self.set_up()

    def merge(self, base, ours, theirs, status=0):
        self.start(base)
        self.branch("theirs", "team.quorv", theirs)
        self.branch("ours", "team.quorv", ours)
        return self.git("merge", "-q", "--no-edit", "theirs", status=status)

    def test_what_both_sides_add_in_one_place_is_merged(self):
        self.merge("; team\n" + A, "; team\n" + A + B, "; team\n" + A + "; c\n" + C)
        self.assertEqual(self.content(), "; team\n" + A + "; c\n" + C + B)
        self.assertEqual(self.git("status", "--porcelain"), "")

    def test_a_tag_that_both_have_set_is_a_conflict_with_ours_in_the_file(self):
        told = self.merge(A + B, tagged(A, "ours") + B, tagged(A, "theirs") + B + C, status=1)
        self.assertIn("conflict: both sides changed the tag", told)
        self.assertEqual(self.content(), tagged(A, "ours") + B + C)
        self.assertIn("UU team.quorv", self.git("status", "--porcelain"))

    def test_a_file_that_one_side_has_renamed_is_merged(self):
        self.start(A + B + C + D)
        self.branch("theirs", "team.quorv", A + B + C + tagged(D, "new"))
        self.git("checkout", "-q", "-b", "ours", "start")
        self.git("mv", "team.quorv", "other.quorv")
        self.git("commit", "-q", "-m", "rename")
        self.git("merge", "-q", "--no-edit", "theirs")
        self.assertEqual(self.content("other.quorv"), A + B + C + tagged(D, "new"))

    def test_a_file_that_both_add_is_merged_without_a_base(self):
        self.start("nothing\n", "readme")
        self.branch("theirs", "mine.quorvane.rc", tagged(A, "t") + C)
        self.branch("ours", "mine.quorvane.rc", tagged(A, "t") + B)
        self.git("merge", "-q", "--no-edit", "theirs")
        self.assertEqual(self.content("mine.quorvane.rc"), tagged(A, "t") + C + B)

    def test_a_rebase_merges_as_well(self):
        self.start(A)
        self.branch("theirs", "team.quorv", A + C)
        self.branch("ours", "team.quorv", A + B)
        self.git("rebase", "-q", "theirs")
        self.assertEqual(self.content(), A + B + C)

    def test_differences_show_rules(self):
        self.start(A)
        self.commit("team.quorv", A + B)
        told = self.git("diff", "start")
        self.assertIn("Application", told)
        self.assertRegex(told, r"(?m)^\+1 +Allow +Prefix +r +Any.* /b$")


class GitSetup(GitTest):
    def settings(self):
        done = subprocess.run(["git", "config", "--get-regexp", "quorvane"], cwd=self.repository, env=self.variables,
                              capture_output=True, text=True)
        return done.stdout.splitlines()

    def test_doing_it_again_changes_nothing(self):
        self.set_up()
        before = self.settings(), read(self.attributes)
        self.assertEqual(len(before[0]), 3)
        self.set_up()
        self.assertEqual((self.settings(), read(self.attributes)), before)

    def test_what_was_there_stays_and_what_was_put_there_goes_again(self):
        self.sandbox.write(self.attributes, "*.bin -text")
        self.git("config", "merge.quorvane.recursive", "binary")
        self.set_up()
        self.assertEqual(read(self.attributes).decode().splitlines(), ["*.bin -text", *LINES])
        self.set_up("--remove")
        self.assertEqual(read(self.attributes), b"*.bin -text\n")
        self.assertEqual(self.settings(), ["merge.quorvane.recursive binary"])
        self.set_up("--remove")

    def test_the_user_may_have_it_everywhere(self):
        attributes = os.path.join(self.sandbox.home, ".config/git/attributes")
        self.set_up("--global")
        self.assertEqual(read(attributes).decode().splitlines(), LINES)
        self.assertEqual(self.git("config", "--global", "merge.quorvane.driver"), "quorvanectl merge %O %A %B\n")
        self.assertEqual(self.git("check-attr", "merge", "x.quorv"), "x.quorv: merge: quorvane\n")
        self.set_up("--global", "--remove")
        self.assertEqual((read(attributes), self.settings()), (b"", []))

    def test_the_users_attributes_may_lie_elsewhere(self):
        file = self.sandbox.new_file("attributes", "*.x text\n")
        os.symlink(file, self.sandbox.path("link"))
        self.git("config", "--global", "core.attributesFile", self.sandbox.path("link"))
        self.set_up("--global")
        self.assertEqual(read(file).decode().splitlines(), ["*.x text", *LINES])
        self.assertTrue(os.path.islink(self.sandbox.path("link")))

    def test_outside_of_a_repository_it_fails(self):
        self.assertIn("not a git repository", self.fail_with(3, "git-setup", cwd=self.sandbox.home).err)

    def test_without_git_it_fails(self):
        variables = {**self.variables, "PATH": self.sandbox.path("bin")}
        result = self.run_program("git-setup", cwd=self.repository, environment=variables)
        self.assertEqual(result.status, 3)
        self.assertIn("cannot run git", result.err)

    def test_it_takes_no_files(self):
        self.fail_with(2, "git-setup", "file", cwd=self.repository)


class Integration(GitTest):
    def test_the_attributes_of_a_repository_are_those_that_setting_up_writes(self):
        lines = read(os.path.join(GIT_FOLDER, "gitattributes")).decode().splitlines()
        self.assertEqual([line for line in lines if not line.startswith("#")], LINES)

    def test_the_hook_keeps_what_is_no_rule_out_of_a_commit(self):
        shutil.copy(os.path.join(GIT_FOLDER, "pre-commit"), os.path.join(self.repository, ".git/hooks/pre-commit"))
        self.commit("a b.quorv", A)
        self.sandbox.write(os.path.join(self.repository, "it's.quorv"), "<<<<<<< ours\n" + A)
        self.sandbox.write(os.path.join(self.repository, "notes"), "<<<<<<< ours\n")
        self.git("add", "-A")
        self.sandbox.write(os.path.join(self.repository, "it's.quorv"), A)  # only what is added counts
        told = self.git("commit", "-q", "-m", "change", status=1)
        self.assertIn("it's.quorv is not committed like this", told)
        self.assertIn("line 1: expected", told)
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "change")
        self.assertFalse(os.path.exists(self.sandbox.user_file))
