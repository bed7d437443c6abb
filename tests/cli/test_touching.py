import os

from quorvanectl import PROGRAM, CommandTest


class Touching(CommandTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user("allow prefix /a/ /bin/sh r", "deny path /a/b.txt any wx", "watch suffix .txt any r",
                                'allow prefix any "any ancestor /bin/x" c', "allow path /a/ /bin/sh r",
                                'allow prefix "" "/bin/sh via /bin/cron" m')
        self.sandbox.write_system("quorvane.rc", "allow prefix / /bin/s r")

    def touching(self, *arguments):
        return sorted(self.succeed("touching", "--json", *arguments).values("path"))

    def test_prints_rules_whose_text_covers_the_path(self):
        self.assertEqual(self.touching("/a/b.txt"), ["", ".txt", "/a/", "/a/b.txt", "any"])
        self.assertEqual(self.touching("/a"), ["", "any"])
        self.assertEqual(self.touching("/a/"), ["", "/a/", "/a/", "any"])
        self.assertEqual(self.touching("--system", "/a"), ["", "/", "any"])

    def test_the_process_may_be_the_whole_string_or_the_program(self):
        self.assertEqual(self.touching("--process", "/bin/sh", "/a/b.txt"), ["", ".txt", "/a/", "/a/b.txt", "any"])
        self.assertEqual(self.touching("--process", "/bin/sh via /bin/cron", "/a/b.txt"),
                         ["", ".txt", "/a/b.txt", "any"])
        self.assertEqual(self.touching("--process", "/bin/cat", "/a/b.txt"), [".txt", "/a/b.txt", "any"])

    def test_one_of_the_operations_is_enough(self):
        self.assertEqual(self.touching("--ops", "rx", "/a/b.txt"), [".txt", "/a/", "/a/b.txt"])
        self.assertEqual(self.touching("--ops", "", "/a/b.txt"), [])
        self.fail_with(2, "touching", "--ops", "q", "/a")

    def test_objects_are_those_of_list(self):
        listed = {row["row"]: row for row in self.succeed("list", "--json").objects()}
        result = self.succeed("touching", "--json", "/a/b.txt")
        for row in result.objects():
            self.assertEqual(row, listed[row["row"]])
        self.assertEqual(result.keys()[0], self.succeed("list", "--json").keys()[0])

    def test_of_a_file(self):
        file = self.sandbox.new_file("rules", ["allow prefix /x any r", "allow prefix /y any r"])
        self.assertEqual(self.touching("/x/1", file), ["/x"])

    def test_of_a_link_or_of_a_pipe_that_is_read_to_its_end(self):
        file = self.sandbox.new_file("rules", ["allow prefix /x any r", "allow prefix /y any r"])
        link = self.sandbox.path("link")
        os.symlink(file, link)
        self.assertEqual(self.touching("/x/1", link), ["/x"])
        script = f"{PROGRAM} touching --json /y <(cat '{file}')"
        result = self.run_program("-c", script, program="bash")
        self.assertEqual((result.status, result.values("path")), (0, ["/y"]))

    def test_what_cannot_be_read_is_a_failure(self):
        os.mkfifo(self.sandbox.path("pipe"))
        for file in (self.sandbox.path("missing"), self.sandbox.home, "/dev/zero", self.sandbox.path("pipe"),
                     self.sandbox.new_file("latin", b"allow prefix /\xe9 any r\n"),
                     self.sandbox.new_file("nul", b"allow prefix /a any r\n\0")):
            with self.subTest(file=file):
                self.fail_with(3, "touching", "/a", file)
        self.fail_with(3, "touching", "--target", self.sandbox.path("missing"), "/a")
        self.sandbox.write(self.sandbox.user_file, b"\xff")
        self.fail_with(3, "touching", "/a")

    def test_nothing_found_is_a_success(self):
        os.remove(self.sandbox.user_file)
        self.assertEqual(self.succeed("touching", "--json", "/a").out, b"")

    def test_needs_a_path(self):
        self.fail_with(2, "touching")
