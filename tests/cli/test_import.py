import hashlib
import os
import resource
import signal

from quorvanectl import CommandTest
from sandbox import read


class Import(CommandTest):
    def setUp(self):
        super().setUp()
        self.fail_safe = os.path.join(self.sandbox.shared, "failsafe.rc")
        self.marker = self.fail_safe + ".strict"

    def exchange(self, *lines, name="Photo Tools,2.quorv"):
        return self.sandbox.new_file(name, lines)

    def written(self):
        return read(self.sandbox.user_file).decode()

    def suggest(self):
        self.sandbox.write(self.fail_safe, ["allow path /suggested any r"])
        self.sandbox.write(self.marker, "")

    def suggestions(self):
        return os.path.exists(self.fail_safe), os.path.exists(self.marker)

    def assert_refused(self, *arguments, saying):
        """An import that has to fail and to leave everything alone."""
        self.suggest()
        before = read(self.sandbox.user_file) if os.path.exists(self.sandbox.user_file) else None
        result = self.fail_with(1, "import", *arguments)
        self.assertIn(saying, result.err)
        self.assertEqual(result.out, b"")
        after = read(self.sandbox.user_file) if os.path.exists(self.sandbox.user_file) else None
        self.assertEqual((after, self.suggestions()), (before, (True, True)))

    def test_adds_every_rule_and_tells_how_many(self):
        self.sandbox.write_user("allow prefix /b /bin/b r T C 9")
        result = self.succeed("import", self.exchange("deny suffix .x any xr work C 7", "watch prefix /w any r"))
        self.assertEqual(result.out, b"Successfully imported 2 rules\n")
        self.assertEqual(self.written(), 'watch prefix "/w" "any" r "Photo Tools"\n'
                                         'deny suffix ".x" "any" rx "work" "C" "7"\n'
                                         'allow prefix "/b" "/bin/b" r "T" "C" "9"\n')

    def test_json_tells_apart_what_was_there(self):
        self.sandbox.write_user("allow prefix /b any r")
        file = self.exchange("allow prefix /b any r", "allow prefix /c any r", "watch path /w any r")
        result = self.succeed("import", "--json", file)
        self.assertEqual(result.out, b'{"imported":3,"added":2}\n')
        self.assertEqual(self.succeed("import", file, "--json").objects(), [{"imported": 3, "added": 0}])

    def test_rules_that_are_all_there_are_a_success_and_change_nothing(self):
        self.sandbox.write_user('allow path "/a" "any" r "" "" "0"')
        before = self.written()
        self.assertEqual(self.succeed("import", self.exchange("allow path /a any r")).out,
                         b"Successfully imported 1 rules\n")
        self.assertEqual(self.written(), before)

    def test_the_files_name_is_the_tag_of_rules_without_one(self):
        for name, tag in (("Tools.quorv", "Tools"), ("a,b,c.quorv", "a"), ("plain", "plain")):
            with self.subTest(name=name):
                self.sandbox.write_user()
                self.succeed("import", self.exchange("allow path /a any r", "allow path /b any r own", name=name))
                self.assertEqual([row["tag"] for row in self.succeed("list", "--json").objects()], [tag, "own"])

    def test_a_relative_file_is_found_and_names_the_tag(self):
        self.exchange("allow path /a any r", name="Tools.quorv")
        self.succeed("import", "Tools.quorv", cwd=self.sandbox.folder)
        self.assertIn('"Tools"', self.written())

    def test_the_fail_safe_file_gives_no_tag_and_is_gone_afterwards(self):
        self.suggest()
        self.succeed("import", self.fail_safe)
        self.assertEqual(self.written(), 'allow path "/suggested" "any" r "" "" "0"\n')
        self.assertEqual(self.suggestions(), (False, False))

    def test_every_import_drops_the_suggestions(self):
        self.suggest()
        self.succeed("import", self.exchange("allow path /a any r"))
        self.assertEqual(self.suggestions(), (False, False))

    def test_binds_rules_to_their_programs(self):
        program = self.sandbox.new_file("program", "#!/bin/sh\n")
        digest = hashlib.sha256(read(program)).hexdigest()
        self.succeed("import", self.exchange(f"allow path /a {program} r", f"allow path /b {program} r t KEPT",
                                             "allow path /c /bin/sh r", "allow path /d /nonexistent r",
                                             f'allow path /e "any via {program}" r'))
        bound = {row["path"]: row["constraint"] for row in self.succeed("list", "--json").objects()}
        self.assertEqual(bound, {"/a": digest, "/b": "KEPT", "/c": "", "/d": "", "/e": digest})

    def test_binds_rules_to_the_programs_of_the_target(self):
        target = self.sandbox.path("target")
        os.makedirs(target + "/opt")
        with open(target + "/opt/tool", "wb") as file:
            file.write(b"tool")
        exchange = self.exchange("allow path /a /opt/tool r")
        self.fail_with(1, "import", "--target", self.sandbox.path("missing"), exchange)
        self.succeed("import", "--target", target, exchange)
        self.assertEqual(self.listed(key="constraint"), [hashlib.sha256(b"tool").hexdigest()])
        self.sandbox.write_user()
        self.succeed("import", "--no-target", exchange)
        self.assertEqual(self.listed(key="constraint"), [""])

    def test_system_rules_are_duplicates_but_never_written(self):
        self.sandbox.write_system("quorvane.rc", "allow path /a any r", "allow path /s any r")
        result = self.succeed("import", "--json", self.exchange("allow path /a any r", "allow path /b any r"))
        self.assertEqual(result.objects(), [{"imported": 2, "added": 1}])
        self.assertEqual(self.written(), 'allow path "/b" "any" r "Photo Tools" "" "0"\n')

    def test_a_file_without_rules_fails_after_the_file_was_written_and_suggestions_dropped(self):
        for lines in ((), ("; a comment", "no rule")):
            with self.subTest(lines=lines):
                self.suggest()
                self.sandbox.write_user("; a comment", "allow path /a any r")
                result = self.fail_with(1, "import", self.exchange(*lines))
                self.assertIn("Found no rules to import", result.err)
                self.assertEqual(result.out, b"")
                self.assertEqual(self.written(), 'allow path "/a" "any" r "" "" "0"\n')
                self.assertEqual(self.suggestions(), (False, False))

    def test_json_tells_of_a_file_without_rules_too(self):
        result = self.fail_with(1, "import", "--json", self.exchange())
        self.assertEqual(result.objects(), [{"imported": 0, "added": 0}])

    def test_a_file_that_is_missing_or_unreadable_changes_nothing(self):
        self.sandbox.write_user("; a comment", "allow path /a any r")
        os.symlink(self.exchange("allow path /b any r"), self.sandbox.path("link.quorv"))
        os.mkdir(self.sandbox.path("folder.quorv"))
        os.mkfifo(self.sandbox.path("pipe.quorv"))
        for name, saying in (("missing.quorv", "there is no file"), ("link.quorv", "Failed to open file"),
                             ("folder.quorv", "Failed to read() file"), ("pipe.quorv", "is a pipe")):
            with self.subTest(name=name):
                self.assert_refused(self.sandbox.path(name), saying=saying)

    def test_a_file_that_is_no_text_changes_nothing(self):
        self.sandbox.write_user("; a comment")
        for contents, saying in ((b"allow path /b any r\n\xff\n", "not valid UTF-8"),
                                 (b"allow path /b any r\n\0allow path /c any r\n", "NUL byte")):
            with self.subTest(contents=contents):
                self.assert_refused(self.sandbox.new_file("broken.quorv", contents), saying=saying)

    def test_refuses_to_lose_rules_of_the_users_file_that_were_not_read(self):
        file = self.exchange("allow path /b any r")
        self.sandbox.write(self.sandbox.user_file, b"allow path /a any r\n\xff\n")
        self.assert_refused(file, saying="nothing was written")
        os.remove(self.sandbox.user_file)
        os.symlink(self.sandbox.new_file("elsewhere", ["allow path /a any r"]), self.sandbox.user_file)
        self.assert_refused(file, saying="nothing was written")

    def test_a_file_that_cannot_be_written_is_a_failure(self):
        def no_room():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))

        result = self.run_program("import", self.exchange("allow path /b any r"), preexec_fn=no_room,
                                  restore_signals=False)
        self.assertEqual((result.status, result.out), (1, b""))
        self.assertIn("Failed write() operation", result.err)

    def test_warns_of_what_will_not_read_back(self):
        result = self.run_program("import", self.exchange("allow path /é any r", "allow path /b any r",
                                                          name="Werkzeuge für Fotos.quorv"))
        self.assertEqual((result.status, result.out), (0, b"Successfully imported 2 rules\n"))
        self.assertIn("warning: 2 of the rules added do not read back", result.err)

    def test_a_dry_run_tells_what_would_be_added_and_changes_nothing(self):
        self.sandbox.write_user("allow path /a any r")
        self.suggest()
        before = os.stat(self.sandbox.user_file)
        file = self.exchange("allow path /a any r", "watch path /w any r", "deny path /b any w t C 7")
        self.assertEqual(self.succeed("import", "--dry-run", file).out.decode(),
                         'added: watch path "/w" "any" r "Photo Tools"\n'
                         'added: deny path "/b" "any" w "t" "C" "7"\n'
                         '2 rules added; nothing was written\n')
        result = self.succeed("import", "--dry-run", "--json", file)
        added = {"change": "added", "kind": "watch", "policyClass": 2, "policyType": 1, "path": "/w",
                 "processName": "any", "tag": "Photo Tools", "constraint": None, "operations": 1, "flags": 0,
                 "created": None, "before": None}
        self.assertEqual(result.objects()[0], added)
        self.assertEqual(result.keys()[0], list(added))
        self.assertEqual(result.objects()[2],
                         {"added": 2, "removed": 0, "changed": 0, "unchanged": 1, "written": False})
        self.assertEqual(result.keys()[2], ["added", "removed", "changed", "unchanged", "written"])
        after = os.stat(self.sandbox.user_file)
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns))
        self.assertEqual(self.suggestions(), (True, True))
        self.assertEqual(self.succeed("history").out, b"")

    def test_a_dry_run_that_finds_no_rules_succeeds(self):
        self.assertEqual(self.succeed("import", "--dry-run", self.exchange()).out,
                         b"no rule changed; nothing was written\n")

    def test_a_dry_run_of_what_cannot_be_read_fails(self):
        self.assert_refused("--dry-run", self.sandbox.path("missing.quorv"), saying="there is no file")

    def test_tells_of_other_rules_that_the_write_cuts(self):
        self.sandbox.write_user("allow path /caf\u00e9s any r")
        result = self.run_program("import", self.exchange("allow path /b any r"))
        self.assertEqual(result.status, 0)
        self.assertIn("1 rule does not come back from the rules file as written", result.err)

    def test_needs_a_file(self):
        self.assertIn("FILE is required", self.fail_with(2, "import").err)

    def test_help_tells_of_the_tag_and_the_keys(self):
        help_text = self.succeed("import", "--help").out.decode()
        for word in ("tag", '"imported"', '"added"', "fail-safe"):
            self.assertIn(word, help_text)
