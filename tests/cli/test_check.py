import hashlib
import os

from quorvanectl import CommandTest


class Check(CommandTest):
    def findings(self, *arguments):
        """Of each finding, the path of its rule and its kind."""
        result = self.run_program("check", "--json", *arguments)
        objects = result.objects()
        self.assertEqual((result.status, result.err), (1 if objects else 0, ""))
        return [(found["rule"].split('"')[1], found["finding"]) for found in objects]

    def test_a_faultless_file_passes_in_silence(self):
        self.sandbox.write_user("allow prefix / any r", "deny suffix .txt any w", "watch path /etc any r")
        self.assertEqual(self.succeed("check").out, b"")
        self.assertEqual(self.succeed("check", "--json").out, b"")

    def test_an_empty_and_a_missing_configuration_pass(self):
        self.assertEqual(self.findings(), [])
        self.sandbox.write_user()
        self.assertEqual(self.findings(), [])

    def test_a_redundant_rule_names_the_rule_that_covers_it(self):
        self.sandbox.write_user("allow suffix .b any r", "allow prefix / any rwc tag", "allow path /etc any rw")
        self.assertEqual(self.findings(), [("/etc", "redundant")])
        found = self.run_program("check", "--json").objects()[0]
        self.assertEqual(found["rule"], 'allow path "/etc" "any" rw "" "" "0"')
        self.assertEqual(found["coveredBy"], 'allow prefix "/" "any" rwc "tag" "" "0"')
        self.assertEqual(found["row"], 2)
        self.assertIn(found["coveredBy"], self.run_program("check").out.decode())

    def test_rules_cover_one_another_only_as_they_should(self):
        for why, covering, covered, is_redundant in [
                ("the path any covers all paths, whatever its type", "allow suffix any any rwcmx",
                 "allow path /etc any x", True),
                ("an empty path covers all paths", 'allow path "" any r', "allow suffix .x any r", True),
                ("an operation is missing", "allow prefix / any rw", "allow path /etc any rx", False),
                ("another class", "deny prefix / any r", "allow path /etc any r", False),
                ("another constraint", "allow prefix / any r t C", "allow path /etc any r", False),
                ("another application", "allow prefix / /bin/sh r", "allow path /etc any r", False),
                ("no prefix", "allow path / any r", "allow path /etc any r", False),
                ("capitals differ", "allow prefix /ETC any r", "allow suffix /etc any r", False),
                ("watch rules cover nothing", "watch prefix / any r", "watch path /etc any r", False)]:
            with self.subTest(why=why):
                self.sandbox.write_user(covering, covered)
                redundant = [kind for _, kind in self.findings() if kind == "redundant"]
                self.assertEqual(redundant, ["redundant"] if is_redundant else [])

    def test_a_system_rule_can_cover_a_users_rule_but_is_not_reported_itself(self):
        self.sandbox.write_user("allow path /etc any r")
        self.sandbox.write_system("quorvane.rc", "allow prefix / any r", "allow path /nowhere any r",
                                  "deny path /é any -")
        self.assertEqual(self.findings(), [("/etc", "redundant")])

    def test_a_missing_path_is_found(self):
        self.sandbox.write_user("allow path /no/such/file any r", "allow prefix /no/such/folder/ any r",
                                "deny path ~/none any r", "watch path /no/such/watched any r",
                                "allow path /etc/hosts/x any r")
        self.assertEqual(sorted(self.findings()), [
            ("/etc/hosts/x", "missing"), ("/no/such/file", "missing"), ("/no/such/folder/", "missing"),
            ("/no/such/watched", "missing"), ("~/none", "missing")])

    def test_what_names_no_file_is_not_missing(self):
        os.mkdir(os.path.join(self.sandbox.home, "Documents"))
        self.sandbox.write_user("allow path ~/Documents any r", "allow suffix /no/such any r",
                                "allow path /dev/none any r",
                                "allow path relative/none any r", "allow path :NVRAM/none any r",
                                "allow path ~none any r",
                                "allow path :other any r", "allow path any any x")
        self.assertNotIn("missing", [kind for _, kind in self.findings()])

    def test_rules_that_do_not_read_back_are_found(self):
        self.sandbox.write_user("allow suffix .é any r", "allow suffix .a any r 日", "allow suffix .b any r tág",
                                "watch suffix .c any - w", "deny suffix .d any -",
                                "allow suffix .e any r t cönstraint")
        self.assertEqual(sorted(self.findings()),
                         sorted((path, "unwritable") for path in (".é", ".a", ".b", ".c", ".d", ".e")))

    def test_a_program_that_fails_its_check_is_found_with_the_reason(self):
        program = self.sandbox.new_file("program", b"contents")
        digest = hashlib.sha256(b"contents").hexdigest()
        self.sandbox.write_user(f'allow suffix .1 {program} r "" {digest}',
                                f'allow suffix .2 {program} r "" {digest.upper()}',
                                f'allow suffix .3 {program} r "" TEAM123456',
                                f'allow suffix .4 {program} r "" APPLE_PF_BINARY',
                                "allow suffix .5 /no/such/program r",
                                f'allow suffix .6 "{program} via /no/such/program" r',
                                f'allow suffix .7 "{program} via any" r',
                                'allow suffix .8 "any via /no/such/program" r',
                                "watch suffix .9 /no/such/program r")
        found = self.run_program("check", "--json").objects()
        self.assertEqual(sorted((one["rule"].split('"')[1], one["finding"], one["reason"]) for one in found), [
            (".2", "invalid", "does not match its constraint"), (".3", "invalid", "does not match its constraint"),
            (".5", "invalid", "program not found"), (".6", "invalid", "parent program not found")])
        self.assertIn("Nothing exists at the path of the parent program.", self.run_program("check").out.decode())

    def test_one_rule_can_have_every_finding(self):
        self.sandbox.write_user('allow prefix "" /no/such/program rwcmx', "allow path /né /no/such/program -")
        self.assertEqual(self.findings(), [("", "invalid"), ("/né", "redundant"), ("/né", "invalid"),
                                           ("/né", "missing"), ("/né", "unwritable")])

    def test_a_class_unknown_to_the_product_reads_back(self):
        self.sandbox.write_user("permit folder .x any r")
        self.assertEqual(self.findings(), [])

    def test_checks_a_file_instead_of_the_configuration(self):
        self.sandbox.write_user("allow path /no/such/file any r")
        self.assertEqual(self.findings(self.sandbox.new_file("good", ["allow suffix .x any r"])), [])
        self.assertEqual(self.findings(self.sandbox.new_file("bad", ["deny path /nowhere any r"])),
                         [("/nowhere", "missing")])

    def test_a_file_that_could_not_be_read_never_passes(self):
        link = self.sandbox.path("link")
        os.symlink(self.sandbox.new_file("good", ["allow suffix .x any r"]), link)
        not_utf8 = self.sandbox.new_file("latin", b"allow suffix .\xe9 any r\n")
        for file in (self.sandbox.path("missing"), self.sandbox.home, link, not_utf8):
            with self.subTest(file=file):
                self.assertIn(file, self.fail_with(1, "check", file).err)

    def test_prints_a_rule_without_control_characters(self):
        self.sandbox.write_user("allow path /no\x1b[31m any r")
        self.assertNotIn(b"\x1b", self.run_program("check").out)
