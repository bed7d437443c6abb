import os

from quorvanectl import CommandTest
from sandbox import read

RULES = ["watch prefix /w any r look", "deny prefix /a/ /bin/a r one", "allow path /a/ /bin/a r",
         'allow suffix .a "/bin/b via /bin/a" rw two', 'allow prefix /a/ "/bin/b (-x)" rw two']


class SelectionTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user(*RULES)
        self.sandbox.write_system("quorvane.rc", "allow prefix /s /bin/s r")
        self.by_sequence = ("--sort", "sequence")

    def rows(self, *arguments):
        return self.succeed("list", "--json", *self.by_sequence, *arguments).values("row")


class List(SelectionTest):
    def test_takes_rows_away_without_renumbering_the_others(self):
        for arguments, rows in [
                (["--class", "allow"], [2, 3, 4]), (["--class", "watch", "--class", "deny"], [0, 1]),
                (["--type", "path"], [2]), (["--tag", "two"], [3, 4]), (["--tag", ""], [2]), (["--tag="], [2]),
                (["--process", "/bin/b via /bin/a"], [3]), (["--program", "/bin/b"], [3, 4]),
                (["--path", "/a/"], [1, 2, 4]), (["--row", "4", "--row", "0"], [0, 4]),
                (["--class", "allow", "--path", "/a/"], [2, 4]), (["--tag", "none"], []),
                (["--system", "--program", "/bin/s"], [5]), (["--program", "/bin/s"], []),
                (["--filter", "/a/", "--tag", "two"], [2])]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.rows(*arguments), rows)

    def test_prints_the_same_numbers_for_people(self):
        lines = self.succeed("list", *self.by_sequence, "--tag", "two").out.decode().splitlines()
        self.assertEqual([line.split()[0] for line in lines], ["Row", "3", "4"])

    def test_chooses_by_finding(self):
        self.sandbox.write_user("allow prefix /tmp /nonexistent r", "allow path /nonexistent any r",
                                "allow prefix / any r", "allow prefix /tmp any r")
        self.assertEqual(self.rows("--finding", "invalid"), [0])
        self.assertEqual(self.rows("--finding", "missing"), [1])
        self.assertEqual(self.rows("--finding", "redundant"), [1, 3])
        self.assertEqual(self.rows("--finding", "redundant", "--finding", "invalid"), [0, 1, 3])
        self.assertEqual(self.rows("--finding", "redundant", "--type", "prefix"), [3])
        self.assertEqual(self.rows("--finding", "joined"), [])

    def test_looks_findings_up_where_the_target_says(self):
        target = self.sandbox.path("target")
        os.makedirs(target + "/nonexistent")
        self.sandbox.write_user("allow path /nonexistent any r", "allow path /etc any r")
        self.assertEqual(self.rows("--finding", "missing", "--target", target), [1])
        self.fail_with(1, "list", "--target", self.sandbox.path("nowhere"))
        self.fail_with(2, "list", "--no-target", "--finding", "missing")
        self.assertEqual(self.succeed("list", "--json", "--no-target").values("valid"), [None, None])

    def test_wrong_words_are_usage_errors(self):
        for arguments in (["--class", "permit"], ["--type", "folder"], ["--finding", "odd"], ["--finding", ""],
                          ["--row", "x"], ["--row", "5"], ["--row=-1"], ["--tag"], ["--filter", "/w", "--row", "1"]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(2, "list", *arguments).out, b"")

    def test_of_a_file_too(self):
        file = self.sandbox.new_file("rules", ["allow prefix /1 any r", "deny prefix /2 any r"])
        self.assertEqual(self.listed("--class", "deny", file), ["/2"])


class Export(SelectionTest):
    def exported(self, *arguments):
        out = self.sandbox.path("out.quorv")
        self.succeed("export", out, *arguments)
        file = self.sandbox.new_file("copy", read(out))
        return self.succeed("list", "--json", "--sort", "sequence", file).values("path")

    def test_writes_what_is_chosen_in_the_order_of_the_list(self):
        self.assertEqual(self.exported(*self.by_sequence, "--tag", "two"), [".a", "/a/"])
        self.assertEqual(self.exported("--sort", "sequence:desc", "--tag", "two"), ["/a/", ".a"])

    def test_rows_alone_come_in_the_order_given(self):
        self.assertEqual(self.exported(*self.by_sequence, "--row", "3", "--row", "0"), [".a", "/w"])
        self.assertEqual(self.exported(*self.by_sequence, "--row", "3", "--row", "0", "--class", "watch", "--class",
                                       "allow"), ["/w", ".a"])

    def test_what_chooses_nothing_writes_an_empty_file(self):
        self.assertEqual(self.exported("--tag", "none"), [])

    def test_the_filter_alone_chooses_nothing(self):
        self.assertEqual(len(self.exported("--filter", "/w")), 5)

    def test_a_row_that_is_not_there_writes_nothing(self):
        out = self.sandbox.new_file("precious", "precious")
        self.fail_with(2, "export", out, "--row", "5")
        self.assertEqual(read(out), b"precious")
