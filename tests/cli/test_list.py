import hashlib
import json
import os
import time

from quorvanectl import CommandTest

KEYS = ["row", "kind", "policyClass", "policyType", "path", "processName", "tag", "constraint", "operations",
        "flags", "created", "sequence", "system", "ruleState", "applicationName", "applicationGroupIdentity",
        "redundant", "valid"]


class ListedRule(CommandTest):
    def only_rule(self, line, *arguments):
        self.sandbox.write_user(line)
        rules = self.succeed("list", "--json", *arguments).objects()
        self.assertEqual(len(rules), 1)
        return rules[0]

    def test_both_kinds_have_all_keys_in_the_same_order(self):
        self.sandbox.write_user('watch prefix "/w" "any" r "t"', 'allow prefix "/p" "any" r "t" "" "0"')
        self.assertEqual(self.succeed("list", "--json").keys(), [KEYS, KEYS])

    def test_a_policy_rule_shows_every_field(self):
        line = 'deny path "/etc/ho sts" "/bin/sh via /usr/sbin/cron" rwx "a  tag" "TEAM123456" "1478000000"'
        self.assertEqual(self.only_rule(line), {
            "row": 0, "kind": "policy", "policyClass": 1, "policyType": 1, "path": "/etc/ho sts",
            "processName": "/bin/sh via /usr/sbin/cron", "tag": "a  tag", "constraint": "TEAM123456",
            "operations": 19, "flags": 0, "created": 1478000000, "sequence": 0, "system": False, "ruleState": 0,
            "applicationName": "sh", "applicationGroupIdentity": "sh:/bin/sh:/usr/sbin/cron:TEAM123456",
            "redundant": False, "valid": False})

    def test_a_watch_rule_has_no_constraint_and_no_creation_time(self):
        self.assertEqual(self.only_rule('watch suffix ".plist" "/usr/bin/defaults" cm "prefs" "X" "12"'), {
            "row": 0, "kind": "watch", "policyClass": 2, "policyType": 2, "path": ".plist",
            "processName": "/usr/bin/defaults", "tag": "prefs", "constraint": None, "operations": 12, "flags": 0,
            "created": None, "sequence": 0, "system": False, "ruleState": 0, "applicationName": "defaults",
            "applicationGroupIdentity": "defaults:/usr/bin/defaults:(null):", "redundant": False, "valid": True})

    def test_a_rule_is_valid_while_its_program_is_there_and_matches(self):
        program = self.sandbox.new_file("program", b"contents")
        sha1 = hashlib.sha1(b"contents").hexdigest()
        for process, constraint, is_valid in [
                (program, "", True), (program, sha1, True), (program, sha1.upper(), False), (program, "TEAM", False),
                (program, "APPLE_PF_BINARY", True), ("/no/such", "", False), ("any", "TEAM", True),
                ("any ancestor /no/such", "", True), (program + " via any", "", True),
                (program + " via /no/such", "", False), (program + " via " + program, "", True)]:
            with self.subTest(process=process, constraint=constraint):
                rule = self.only_rule(f'allow prefix /p "{process}" r "" "{constraint}"')
                self.assertIs(rule["valid"], is_valid)

    def test_rules_that_follow_each_other_each_show_their_own_application(self):
        program = self.sandbox.new_file("program", b"contents")
        self.sandbox.write_user(f"watch path /1 {program} r", f"allow path /2 {program} r", f"allow path /3 {program} r",
                                f'allow path /4 {program} r "" TEAM', "allow path /5 /no/such r", "watch path /6 /no/such r")
        self.sandbox.write_system("quorvane.rc", "allow path /7 /no/such r")
        rows = self.succeed("list", "--json", "--system", "--sort", "path").objects()
        name = os.path.basename(program)
        self.assertEqual([(row["path"], row["applicationName"], row["applicationGroupIdentity"], row["valid"]) for row in rows], [
            ("/1", name, f"{name}:{program}:(null):", True), ("/2", name, f"{name}:{program}:(null):", True),
            ("/3", name, f"{name}:{program}:(null):", True), ("/4", name, f"{name}:{program}:(null):TEAM", False),
            ("/5", "such", "such:/no/such:(null):", False), ("/6", "such", "such:/no/such:(null):", True),
            ("/7", "such", "such:/no/such:(null):", True)])

    def test_system_rules_and_watch_rules_are_valid_without_a_program(self):
        self.sandbox.write_user("watch prefix /w /no/such r")
        self.sandbox.write_system("quorvane.rc", "allow prefix /p /no/such r")
        self.assertEqual(self.listed("--system", key="valid"), [True, True])

    def test_absent_fields_are_empty_not_null(self):
        rule = self.only_rule("allow prefix /p any r")
        self.assertEqual([rule[key] for key in ("tag", "constraint", "created", "flags")], ["", "", 0, 0])

    def test_unknown_words_have_the_code_4(self):
        rule = self.only_rule("permit folder /p any -")
        self.assertEqual([rule[key] for key in ("policyClass", "policyType", "operations")], [4, 4, 0])

    def test_the_creation_time_keeps_all_64_bits(self):
        for written, created in {
                "-1": 18446744073709551615,
                "-9223372036854775808": 9223372036854775808,
                "9223372036854775807": 9223372036854775807,
                "18446744073709551615": 9223372036854775807,
                "-99999999999999999999": 9223372036854775808,
                "  12x": 12,
                "+7": 7,
                "x12": 0,
        }.items():
            with self.subTest(written=written):
                rule = self.only_rule(f'allow prefix "/p" "any" r "" "" "{written}"')
                self.assertEqual(rule["created"], created)

    def test_a_rule_is_new_for_a_day(self):
        now = int(time.time())
        for created, state in {now - 60: 2, now - 86000: 2, now - 86500: 0, now + 86400: 0, 0: 0}.items():
            with self.subTest(age=now - created):
                self.assertEqual(self.only_rule(f'allow prefix /p any r "" "" "{created}"')["ruleState"], state)

    def test_process_strings_give_name_and_group(self):
        for process, name, group in [
                ("any", "Any Process", "Any Process:Any Process:(null):C"),
                ("any via any", "Any Process", "Any Process:Any Process:any:C"),
                ("any via login", "Any Process via login", "Any Process via login"),
                ("any via /usr/bin/login", "Any Process", "Any Process:Any Process:/usr/bin/login:C"),
                ("any ancestor /usr/bin/ssh", "Any Process with ancestor ssh",
                 "Any Process with ancestor /usr/bin/ssh"),
                ("/bin/sh via any", "sh", "sh:/bin/sh:any:C"),
                ("/usr/bin/tool (-x)", "tool (-x)", "tool (-x):/usr/bin/tool (-x):(null):C"),
                ("/", "/", "/:/:(null):C"),
                ("/bin/dir/", "dir", "dir:/bin/dir/:(null):C"),
        ]:
            with self.subTest(process=process):
                rule = self.only_rule(f'allow prefix "/p" "{process}" r "" "C"')
                self.assertEqual((rule["applicationName"], rule["applicationGroupIdentity"]), (name, group))

    def test_text_beyond_ascii_is_printed_as_it_is(self):
        self.sandbox.write_user('allow prefix "/Übung/😀" "/bin/é" r "日本"')
        self.assertIn("/Übung/😀".encode(), self.succeed("list", "--json").out)
        self.assertEqual(self.listed(key="tag"), ["日本"])

    def test_a_rule_covered_by_another_of_its_group_is_redundant(self):
        self.sandbox.write_user('allow prefix "/Users/" "/bin/p" rw', 'allow path "/Users/a/f" "/bin/p" r',
                                'allow path "/Users/a/f" "/bin/p" rx', 'deny path "/Users/a/f" "/bin/p" r',
                                'allow path "/Users/a/f" "/bin/q" r', 'allow path "/Users/a/f" "/bin/p" r "" "C"')
        rules = self.succeed("list", "--json").objects()
        self.assertEqual([(rule["sequence"], rule["redundant"]) for rule in rules if rule["redundant"]], [(1, True)])
        self.assertEqual(len(rules), 6)


class ListedRows(CommandTest):
    def test_watch_rules_come_first_and_then_the_groups_by_their_names(self):
        self.sandbox.write_user("allow prefix /1 /bin/b r", "watch prefix /2 /bin/z r", "allow prefix /3 /bin/A r",
                                "deny prefix /4 /bin/b r", "watch prefix /5 /bin/a r", "deny prefix /6 /bin/a r")
        self.assertEqual(self.listed(), ["/2", "/5", "/3", "/6", "/1", "/4"])
        self.assertEqual(self.listed(key="row"), [0, 1, 2, 3, 4, 5])
        self.assertEqual(self.listed(key="sequence"), [1, 4, 2, 5, 0, 3])

    def test_system_rules_are_rows_only_when_asked_for(self):
        self.sandbox.write_user("allow prefix /user any r us")
        self.sandbox.write_system("quorvane.rc", "allow prefix /system any r us", "watch prefix /seen any r s")
        self.assertEqual(self.listed(), ["/user"])
        rules = self.succeed("list", "--json", "--system").objects()
        self.assertEqual([(rule["row"], rule["path"], rule["system"], rule["ruleState"], rule["flags"], rule["tag"])
                          for rule in rules],
                         [(0, "/seen", True, 1, 2, ""), (1, "/user", False, 0, 0, "us"),
                          (2, "/system", True, 1, 3, "")])

    def test_files_are_read_in_a_fixed_order(self):
        self.sandbox.write_user("allow prefix /user any r")
        for name in ("exec", "startup", "webcam", "user", "quorvane", "paranoid"):
            self.sandbox.write_system(name + ".rc", f"allow prefix /{name}.rc any r")
        self.assertEqual(self.listed("--system", "--sort", "sequence"),
                         ["/user", "/quorvane.rc", "/user.rc", "/webcam.rc", "/startup.rc", "/exec.rc"])
        self.assertEqual(self.listed("--system", "--sort", "sequence", key="sequence"), [0, 1, 2, 3, 4, 5])

    def test_the_preferences_choose_the_system_files(self):
        self.sandbox.write_system("paranoid.rc", "set policy.global.exec 2", "allow prefix /paranoid any r")
        self.sandbox.write_system("quorvane.rc", "allow prefix /quorvane any r")
        self.sandbox.write_system("webcam.rc", "allow prefix /webcam any r")
        self.sandbox.write_system("exec.rc", "allow prefix /exec any r")
        for preferences, paths in [
                ({}, ["/quorvane", "/webcam", "/exec"]),
                ({"policy_global_paranoid": 1, "policy_global_webcam": 2}, ["/paranoid", "/exec"]),
                ({"policy_global_paranoid": 2, "policy_global_webcam": 1}, ["/quorvane", "/webcam", "/exec"]),
                ({"policy_global_paranoid": True, "policy_global_exec": "2nd"}, ["/paranoid", "/webcam"]),
        ]:
            with self.subTest(preferences=preferences):
                self.sandbox.write_preferences(**preferences)
                self.assertEqual(self.listed("--system", "--sort", "sequence"), paths)

    def test_without_preferences_the_lines_of_the_main_file_choose(self):
        self.sandbox.write_system("quorvane.rc", "set policy.global.exec 2", "allow prefix /quorvane any r")
        self.sandbox.write_system("exec.rc", "allow prefix /exec any r")
        self.assertEqual(self.listed("--system"), ["/quorvane"])

    def test_of_equal_rules_the_first_one_stays(self):
        self.sandbox.write_user("allow prefix /a any r one", "allow prefix /a any r two", "watch prefix /w any r one",
                                "watch prefix /w any r two", "allow prefix /b any r")
        self.sandbox.write_system("quorvane.rc", "allow prefix /a any r")
        rules = self.succeed("list", "--json", "--system").objects()
        self.assertEqual([(rule["path"], rule["tag"], rule["sequence"]) for rule in rules],
                         [("/w", "one", 2), ("/a", "one", 0), ("/b", "", 4)])

    def test_a_machine_without_any_file_has_no_rows(self):
        self.assertEqual(self.succeed("list", "--json", "--system").out, b"")

    def test_lines_that_are_no_rules_are_skipped(self):
        self.sandbox.write_user("; allow prefix /comment any r", "", "allow prefix /four any",
                                "allow\tprefix\t/t\tany\tr",
                                "set policy.global.paranoid 1", "allow prefix /rule any r")
        self.assertEqual(self.listed(), ["/rule"])

    def test_a_long_set_line_of_a_users_file_is_a_rule_of_unknown_class(self):
        self.sandbox.write_user("set prefix /a any r")
        self.assertEqual(self.listed(key="policyClass"), [4])


class Filter(CommandTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user('watch prefix "/Watched" "/bin/looker" r "WatchTag"',
                                'allow prefix "/Allowed" "/Applications/Safari.app/Contents/MacOS/Safari" r "Work"',
                                'deny suffix ".ÄRGER" "any" r "" "TEAM"')
        self.sandbox.write_system("quorvane.rc", "allow prefix /systemwide any r")

    def test_finds_paths_and_processes_of_both_kinds_whatever_the_case(self):
        for text, paths in [("SAFARI", ["/Allowed"]), ("watched", ["/Watched"]), ("LOOKER", ["/Watched"]),
                            ("ärger", [".ÄRGER"]), ("/", ["/Watched", "/Allowed"]), ("", 3)]:
            with self.subTest(text=text):
                found = self.listed("--filter", text)
                self.assertEqual(found if isinstance(paths, list) else len(found), paths)

    def test_finds_a_policy_rules_tag_but_not_a_watch_rules(self):
        self.assertEqual(self.listed("--filter", "work"), ["/Allowed"])
        self.assertEqual(self.listed("--filter", "watchtag"), [])

    def test_does_not_find_class_type_constraint_or_display_name(self):
        for text in ("deny", "suffix", "TEAM", "Any Process", "no such text"):
            with self.subTest(text=text):
                self.assertEqual(self.listed("--filter", text), [])

    def test_system_rules_are_found_only_when_they_are_shown(self):
        self.assertEqual(self.listed("--filter", "systemwide"), [])
        self.assertEqual(self.listed("--filter", "systemwide", "--system"), ["/systemwide"])

    def found_in(self, locale, text):
        environment = {**self.environment(), "LC_ALL": locale}
        return self.succeed("list", "--json", "--filter", text, environment=environment).values("path")

    def test_turkic_languages_keep_i_with_and_without_a_dot_apart(self):
        self.sandbox.write_user(*(f"allow path /{letter} any r" for letter in ("I", "\u0131", "\u0130", "i", "I\u0307")))
        for locale in ("tr_TR.UTF-8", "az_AZ.UTF-8"):
            for text in ("I", "\u0131"):
                with self.subTest(locale=locale, text=text):
                    self.assertEqual(self.found_in(locale, text), ["/I", "/\u0131"])
            for text in ("i", "\u0130", "I\u0307"):
                with self.subTest(locale=locale, text=text):
                    self.assertEqual(self.found_in(locale, text), ["/\u0130", "/i", "/I\u0307"])
        self.assertEqual(self.found_in("en_US.UTF-8", "I"), ["/I", "/\u0130", "/i", "/I\u0307"])
        self.assertEqual(self.found_in("en_US.UTF-8", "\u0131"), ["/\u0131"])

    def test_accents_over_i_fold_in_every_language(self):
        # Small letters of Lithuanian keep the dot below an accent; Turkic capitals have one already.
        for capital, small in (("\u00cc", "\u00ec"), ("I\u0300", "\u00ec"), ("\u0128", "i\u0303"),
                               ("\u012e\u0303", "\u012f\u0303"), ("J\u0301", "j\u0301")):
            self.sandbox.write_user(f"allow path /{capital} any r", f"deny path /{small} any r")
            for locale in ("lt_LT.UTF-8", "tr_TR.UTF-8", "C.UTF-8"):
                for text in (capital, small):
                    with self.subTest(locale=locale, text=text):
                        self.assertEqual(len(self.found_in(locale, text)), 2)

    def test_rows_are_numbered_after_filtering(self):
        self.assertEqual(self.listed("--filter", "safari", key="row"), [0])


class Table(CommandTest):
    def test_json_is_written_without_spaces_and_with_the_fewest_escapes(self):
        self.sandbox.write_user(r'allow path "/a\\b" "any" r "t	x" "" "0"', 'deny prefix "/é😀/" /bin/sh rw "\x7f" T "12"',
                                "watch suffix .x any r")
        for line in self.succeed("list", "--json").out.decode().splitlines():
            self.assertEqual(line, json.dumps(json.loads(line), ensure_ascii=False, separators=(",", ":")))

    def test_without_json_each_rule_is_one_line_in_the_same_order(self):
        self.sandbox.write_user("watch prefix /first any r", "allow prefix /second any r label",
                                "deny path /third any x")
        lines = self.succeed("list").out.decode().splitlines()[1:]
        self.assertEqual([line.split()[-1] for line in lines], ["/first", "/second", "/third"])
        self.assertIn("label", lines[1])

    def test_a_program_that_fails_its_check_is_marked_with_the_reason(self):
        self.sandbox.write_user("allow prefix /1 /bin/sh r", "allow prefix /2 /no/such r", "deny prefix /3 /no/such r")
        lines = self.succeed("list").out.decode().splitlines()[1:]
        self.assertEqual(["such, program not found" in line for line in lines], [False, True, True])

    def test_control_characters_never_reach_the_terminal(self):
        self.sandbox.write_user('allow prefix "/a\x1b[31m\tb" "any" r "t\x07"')
        out = self.succeed("list").out
        self.assertNotRegex(out, rb"[\x00-\x09\x0b-\x1f\x7f]")

    def test_every_file_that_cannot_be_read_is_reported_whatever_is_read_after_it(self):
        self.sandbox.write_user("allow prefix /u any r")
        self.sandbox.write_system("user.rc", "allow prefix /s any r")
        for unreadable in (self.sandbox.system_file("quorvane.rc"), self.sandbox.preferences_file):
            with self.subTest(unreadable):
                os.mkdir(unreadable)
                result = self.fail_with(1, "list", "--system")
                self.assertEqual(result.err.count(unreadable), 1, result.err)
                self.assertIn(b"/u", result.out)
                self.assertIn(b"/s", result.out)
                os.rmdir(unreadable)
