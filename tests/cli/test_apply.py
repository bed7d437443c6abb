import json
import os
import subprocess

from quorvanectl import CommandTest, PROGRAM
from sandbox import read

DIFF_KEYS = ["change", "kind", "policyClass", "policyType", "path", "processName", "tag", "constraint", "operations",
             "flags", "created", "before"]
SUMMARY_KEYS = ["added", "removed", "changed", "unchanged", "written"]
RULE = {"kind": "policy", "policyClass": 0, "policyType": 1, "path": "/a", "processName": "any", "operations": 1}
WATCH = {"kind": "watch", "policyClass": 2, "policyType": 0, "path": "/w", "processName": "any", "operations": 2}


def line_of(path, tag="", created=0, constraint=""):
    return f'allow path "{path}" "any" r "{tag}" "{constraint}" "{created}"\n'


class ApplyTest(CommandTest):
    def written(self):
        return read(self.sandbox.user_file).decode()

    def state(self):
        if not os.path.exists(self.sandbox.user_file):
            return None
        status = os.stat(self.sandbox.user_file)
        return read(self.sandbox.user_file), status.st_ino, status.st_mtime_ns, status.st_ctime_ns

    def file(self, *lines):
        return self.sandbox.new_file("rules", [line if isinstance(line, (str, bytes)) else json.dumps(line)
                                               for line in lines])

    def summary(self, *arguments):
        return self.succeed("apply", "--json", *arguments).objects()[-1]

    def whole_lines(self):
        folder = os.path.join(self.sandbox.home, ".config/quorvane")
        os.makedirs(folder, exist_ok=True)
        self.sandbox.write(os.path.join(folder, "settings.ini"), ["[rules]", "wholeLines=true"])

    def refuse(self, *arguments, saying=""):
        """A command that has to fail and to leave the user's file as it is."""
        before = self.state()
        result = self.fail_with(3, "apply", *arguments)
        self.assertIn(saying, result.err)
        self.assertEqual(result.out, b"")
        self.assertEqual(self.state(), before)


class Apply(ApplyTest):
    def test_makes_the_rules_hold_those_of_a_rules_file(self):
        self.sandbox.write_user(line_of("/a", "old", 5).strip(), line_of("/mine").strip())
        file = self.file("; team", "", line_of("/a", "new", 7, "").strip(), "watch prefix /w any w t",
                         line_of("/b", "t", 9, "TEAM").strip())
        result = self.succeed("apply", "--json", file)
        self.assertEqual(result.keys(), [DIFF_KEYS] * 3 + [SUMMARY_KEYS])
        self.assertEqual([(found["change"], found["path"], found["before"]) for found in result.objects()[:-1]],
                         [("added", "/w", None), ("added", "/b", None),
                          ("changed", "/a", {"tag": "old", "created": 5})])
        self.assertEqual(list(result.objects()[-1].values()), [2, 0, 1, 0, True])
        self.assertEqual(self.written(), 'watch prefix "/w" "any" w "t"\n' + line_of("/a", "new", 7) + line_of("/mine")
                         + line_of("/b", "t", 9, "TEAM"))

    def test_doing_it_again_changes_nothing(self):
        file = self.file(line_of("/a", "t", 5).strip(), "watch suffix .w any r")
        self.succeed("apply", file)
        before = self.state()
        self.assertEqual(self.succeed("apply", "--json", file).objects(),
                         [{"added": 0, "removed": 0, "changed": 0, "unchanged": 2, "written": False}])
        self.assertEqual(self.succeed("apply", file).out, b"no rule changed; nothing was written\n")
        self.assertEqual(self.state(), before)

    def test_a_dry_run_tells_and_writes_nothing(self):
        self.sandbox.write_user(line_of("/a").strip())
        before = self.state()
        result = self.succeed("apply", "--dry-run", "--json", self.file(line_of("/b").strip()))
        self.assertEqual([found.get("path") for found in result.objects()], ["/b", None])
        self.assertEqual(result.objects()[-1]["written"], False)
        self.assertEqual(self.state(), before)
        self.assertIn(b"added: allow path", self.succeed("apply", "--dry-run", self.file(line_of("/b").strip())).out)

    def test_a_dry_run_makes_no_file(self):
        self.succeed("apply", "--dry-run", self.file(line_of("/b").strip()))
        self.assertIsNone(self.state())

    def test_takes_objects_as_list_prints_them(self):
        self.sandbox.write_user(line_of("/a", "t", 2**63 + 5 - 2**64).strip(), "watch prefix /w any rwcmx u",
                                'deny suffix ".x y" "/bin/a via any" x "t" "TEAM" "7"')
        listed = self.succeed("list", "--json").out
        before = self.written()
        os.remove(self.sandbox.user_file)
        self.assertEqual(self.summary(self.sandbox.new_file("rules", listed))["added"], 3)
        self.assertEqual(sorted(self.written().splitlines()), sorted(
            ['watch prefix "/w" "any" rwcmx "u"', 'deny suffix ".x y" "/bin/a via any" x "t" "TEAM" "7"',
             line_of("/a", "t", 2**63 + 5 - 2**64).strip()]))
        self.assertEqual(self.summary(self.sandbox.new_file("rules", listed))["written"], False)
        self.assertIn("/w", before)

    def test_without_tag_and_time_a_rule_keeps_its_own(self):
        self.sandbox.write_user(line_of("/a", "mine", 5).strip())
        self.assertEqual(self.summary(self.file(RULE, {**RULE, "path": "/b"}, WATCH)),
                         {"added": 2, "removed": 0, "changed": 0, "unchanged": 1, "written": True})
        self.assertEqual(self.written(),
                         'watch prefix "/w" "any" w ""\n' + line_of("/a", "mine", 5) + line_of("/b"))
        self.assertEqual(self.summary(self.file({**RULE, "tag": None, "created": None, "constraint": None})),
                         {"added": 0, "removed": 0, "changed": 0, "unchanged": 1, "written": False})
        self.assertEqual(self.summary(self.file({**RULE, "tag": ""}))["changed"], 1)
        self.assertIn(line_of("/a", "", 5), self.written())

    def test_a_constraint_that_is_not_given_is_none(self):
        self.sandbox.write_user(line_of("/a", constraint="TEAM").strip())
        self.assertEqual(self.summary(self.file(RULE))["added"], 1)

    def test_unknown_keys_are_ignored_whatever_they_hold(self):
        deep = "[" * 100_000 + "]" * 100_000
        text = json.dumps({**RULE, "row": -1, "else": {"path": [1, {"tag": 2}]}})[:-1] + f', "deep": {deep}}}'
        self.assertEqual(self.summary(self.sandbox.new_file("rules", text))["added"], 1)

    def test_texts_of_json_may_hold_what_ends_a_line_elsewhere(self):
        objects = [json.dumps({**RULE, "path": path, "note": "a\u0085b\u2028c\u2029d"}, ensure_ascii=False)
                   for path in ("/a", "/b")]
        for between in ("\n", "\r\n", "\r"):
            with self.subTest(between=between):
                self.sandbox.write_user()
                text = between.join(objects).encode()
                self.assertEqual(self.summary(self.sandbox.new_file("rules", text))["added"], 2)

    def test_reads_standard_input_and_pipes(self):
        result = self.run_program("apply", "--json", "-", stdin=None, input=json.dumps(RULE).encode())
        self.assertEqual((result.status, result.objects()[-1]["added"]), (0, 1))
        file = self.file({**RULE, "path": "/b"})
        result = self.run_program("-c", '"$0" apply <(cat "$1")', PROGRAM, file, program="/bin/bash")
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertEqual(self.listed(), ["/a", "/b"])

    def test_knows_json_by_its_first_byte(self):
        for before in ("\ufeff", " \n\t\r\n", "\ufeff \n"):
            with self.subTest(before=before):
                text = before + json.dumps(RULE) + "\r\n\n  \n"
                self.succeed("apply", self.sandbox.new_file("rules", text))
                self.succeed("apply", self.sandbox.new_file("rules", "\ufeff" + line_of("/a")))

    def test_options_are_skipped_and_told(self):
        result = self.run_program("apply", self.file("set policy.global.exec 1", line_of("/a").strip(), "set a b c d e"))
        self.assertEqual(result.status, 0)
        self.assertIn("line 1", result.err)
        self.assertIn("line 3", result.err)
        self.assertEqual(self.listed(), ["/a"])

    def test_a_rule_that_stands_there_twice_is_folded_when_tag_and_time_agree(self):
        self.assertEqual(self.summary(self.file(line_of("/a", "t", 5).strip(), line_of("/a", "t", 5).strip()))["added"], 1)
        self.refuse(self.file(line_of("/a", "t", 5).strip(), line_of("/a", "u", 5).strip()), saying="line 2")
        self.refuse(self.file({**RULE, "created": 5}, {**RULE, "created": 6}), saying="creation time")

    def test_other_programs_changes_are_merged(self):
        self.sandbox.write_user(line_of("/a").strip())
        self.succeed("apply", self.file(line_of("/b").strip()))
        self.sandbox.write_user(line_of("/c").strip())
        self.succeed("apply", self.file(line_of("/b").strip()))
        self.assertEqual(sorted(self.listed()), ["/b", "/c"])

    def test_system_rules_are_left_alone(self):
        self.sandbox.write_system("quorvane.rc", "allow path /a any r u")
        self.assertEqual(self.summary(self.file(RULE))["added"] + self.summary("--absent", self.file(RULE))["removed"], 2)

    def test_many_at_once_lose_nothing(self):
        files = [self.sandbox.new_file(f"rules{number}", line_of(f"/{number}")) for number in range(12)]
        running = [subprocess.Popen([PROGRAM, "apply", file], env=self.environment(), stdout=subprocess.DEVNULL,
                                    stderr=subprocess.PIPE) for file in files]
        for process in running:
            _, err = process.communicate(timeout=120)
            self.assertEqual(process.returncode, 0, err)
        self.assertEqual(sorted(self.listed()), sorted(f"/{number}" for number in range(12)))


class Prune(ApplyTest):
    def test_removes_other_rules_of_the_tag(self):
        self.sandbox.write_user(line_of("/a", "team").strip(), line_of("/b", "team").strip(), line_of("/c", "x").strip(),
                                line_of("/d", "mine").strip())
        self.assertEqual(self.summary("--prune-tag", "team", "--prune-tag", "x", self.file(line_of("/a", "team").strip())),
                         {"added": 0, "removed": 2, "changed": 0, "unchanged": 1, "written": True})
        self.assertEqual(self.listed(), ["/a", "/d"])

    def test_an_empty_file_prunes_only_when_that_is_allowed(self):
        self.sandbox.write_user(line_of("/a", "team").strip())
        for lines in ([], ["; nothing"], ["set a 1"]):
            self.refuse("--prune-tag", "team", self.file(*lines))
        self.assertEqual(self.summary("--prune-tag", "team", "--allow-empty", self.file())["removed"], 1)
        self.assertEqual(self.summary(self.file()), {"added": 0, "removed": 0, "changed": 0, "unchanged": 0,
                                                     "written": False})

    def test_neither_goes_with_absent_nor_with_an_empty_tag(self):
        file = self.file(RULE)
        for arguments in (["--absent", "--prune-tag", "t", file], ["--prune-tag", "", file], ["--prune-tag=", file], [],
                          [file, file], ["--prune-tag"]):
            self.fail_with(2, "apply", *arguments)
            self.assertIsNone(self.state())


class Absent(ApplyTest):
    def test_removes_equal_rules_whatever_their_tag(self):
        self.sandbox.write_user(line_of("/a", "t", 5).strip(), line_of("/b").strip(), "watch prefix /w any w")
        self.assertEqual(self.summary("--absent", self.file(RULE, WATCH, {**RULE, "path": "/no"})),
                         {"added": 0, "removed": 2, "changed": 0, "unchanged": 1, "written": True})
        self.assertEqual(self.listed(), ["/b"])
        before = self.state()
        self.assertEqual(self.summary("--absent", self.file(RULE))["written"], False)
        self.assertEqual(self.state(), before)


class BadInput(ApplyTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user(line_of("/mine").strip())

    def test_json_that_is_no_rule_names_file_line_and_what_was_expected(self):
        for wrong, saying in (
                ({"kind": "x"}, '"policy" or "watch"'), ({"kind": 1}, "a string"), ({"kind": None}, "null"),
                ({"policyClass": 2}, "from 0 to 1"), ({"policyClass": "0"}, "whole number"), ({"policyClass": 0.0}, "whole"),
                ({"policyType": 3}, "from 0 to 2"), ({"policyType": True}, "a boolean"), ({"path": 5}, "a string"),
                ({"path": ["/a"]}, "an array"), ({"processName": {"a": 1}}, "an object"), ({"operations": 0}, "from 1"),
                ({"operations": 32}, "to 31"), ({"operations": -1}, "negative"), ({"created": -1}, "negative"),
                ({"created": 2**64}, "too large"), ({"created": "1"}, "a string"), ({"tag": 1}, "a string"),
                ({"constraint": False}, "a string"), ({**WATCH, "policyClass": 0}, 'expected 2 for "policyClass"'),
                ({**WATCH, "constraint": "T"}, "watch rule"), ({**WATCH, "created": 1}, '"created"')):
            with self.subTest(wrong=wrong):
                file = self.file("", RULE, {**RULE, "path": "/b", **wrong})
                self.refuse(file, saying=f"'{file}', line 3: expected")
                self.refuse(file, saying=saying)

    def test_required_keys_are_required(self):
        for key in RULE:
            self.refuse(self.file({name: value for name, value in RULE.items() if name != key}), saying=f'"{key}"')

    def test_what_is_no_json_object_on_its_line_is_an_error(self):
        whole = json.dumps(RULE)
        for text in (whole[:-1], whole + "x", whole + whole, whole + "\n5", whole + '\n"text"', whole + "\n[]",
                     whole + "\nnull", whole[:-1] + ', "path": "/b"}', whole[:-1] + ', "x": 1, "x": 2}', "{",
                     "{" + whole + "}", whole[:-1] + ', "created": 1e999}', whole.replace("/a", "\\ud800"),
                     whole + "\n" + "{" * 100_000, '{"a":' * 100_000, whole.replace(",", ",\n"), "[" + whole + "]", "[]"):
            with self.subTest(text=text[:200]):
                self.refuse(self.sandbox.new_file("rules", text))

    def test_a_list_is_told_apart(self):
        self.refuse(self.file([RULE]), saying="one JSON object a line")

    def test_a_rules_file_may_hold_nothing_else(self):
        for wrong, saying in (("permit path /a any r", "allow, deny or watch"), ("allow folder /a any r", "prefix, path or"),
                              ("allow path /a any", "operations"), ("allow path /a any rq", "letters out of rwcmx"),
                              ("allow path /a any -", "rwcmx"), ('allow path /a any ""', "rwcmx"), ("prose", "allow, deny"),
                              (" ; no comment", "allow, deny"), ('"', "expected"),
                              ('allow path "/\u00e4" any r "allow path "/b" any r', "rescue")):
            with self.subTest(wrong=wrong):
                file = self.file(line_of("/x").strip(), "; \r", wrong)
                self.refuse(file, saying=f"'{file}', line 3: expected")
                self.refuse(file, saying=saying)

    def test_rules_that_a_rules_file_cannot_hold_are_refused(self):
        for wrong in ({"path": 'a"b'}, {"processName": '"'}, {"constraint": 'a"b'}, {"path": "/a "}, {"tag": "t "},
                      {"path": "/a\nb"}, {"tag": "a\u2028b"}, {"path": "/a\0"}, {"constraint": "\x0b"}):
            with self.subTest(wrong=wrong):
                self.refuse(self.file({**RULE, **wrong}), saying="cannot hold")

    def test_quotes_in_a_tag_are_left_out_as_the_format_does(self):
        file = self.file({**RULE, "tag": 'a "b"'})
        self.assertEqual(self.summary(file)["added"], 1)
        self.assertEqual(self.summary(file)["written"], False)
        self.assertIn(line_of("/a", "a b"), self.written())

    def test_letters_beyond_ascii_need_whole_lines(self):
        file = self.file({**RULE, "path": "/\u00e4"})
        self.refuse(file, saying="wholeLines=true")
        self.whole_lines()
        self.assertEqual(self.summary(file)["added"], 1)
        self.assertIn(line_of("/\u00e4"), self.written())

    def test_no_rule_is_damaged_that_the_command_did_not_come_to_change(self):
        self.whole_lines()
        self.succeed("apply", self.file({**RULE, "path": "/\u00e4"}, {**RULE, "path": "/b"}))
        os.remove(os.path.join(self.sandbox.home, ".config/quorvane/settings.ini"))
        self.refuse(self.file({**RULE, "path": "/c"}), saying="wholeLines=true")
        self.refuse("--absent", self.file({**RULE, "path": "/b"}), saying="wholeLines=true")
        self.assertEqual(self.summary(self.file({**RULE, "path": "/b"}))["written"], False)
        self.assertEqual(self.summary("--absent", self.file({**RULE, "path": "/\u00e4"}))["removed"], 1)

    def test_no_rule_is_lost_behind_one_that_is_cut_already(self):
        cut = line_of("/\u00e4")[:-1]
        for present in (cut + line_of("/joined") + line_of("/b"), line_of("/b") + cut):
            with self.subTest(present=present):
                self.sandbox.write(self.sandbox.user_file, present)
                self.refuse(self.file(RULE), saying="wholeLines=true")
        self.assertEqual(self.run_program("apply", self.file(WATCH)).status, 0)  # stands before them
        self.assertEqual(self.listed(), ["/w", "/b", "/\u00e4"])

    def test_a_rule_that_is_cut_already_keeps_no_command_from_writing(self):
        self.run_program("add", "allow", "path", "/\u00e4", "any", "r")
        result = self.run_program("apply", "--json", "--absent", self.file({**RULE, "path": "/mine"}))
        self.assertEqual((result.status, result.objects()[-1]["removed"]), (0, 1), result.err)

    def test_what_cannot_be_read_is_a_failure(self):
        pipe = self.sandbox.path("pipe")
        os.mkfifo(pipe)
        for bad in (self.sandbox.path("missing"), self.sandbox.folder, "/dev/null", "/dev/zero", pipe, "",
                    self.sandbox.new_file("latin", b"allow path /\xe4 any r\n"), self.sandbox.new_file("nul", b"; \0\n")):
            with self.subTest(bad=bad):
                self.refuse(bad)
                self.refuse("--dry-run", bad)

    def test_a_users_file_that_cannot_be_read_whole_is_not_written(self):
        self.sandbox.write(self.sandbox.user_file, b"allow path /a any r\n\0")
        self.refuse(self.file(RULE))

    def test_a_line_of_ten_megabytes_is_a_rule_or_told(self):
        long_path = "/" + "x" * 10_000_000
        self.assertEqual(self.summary(self.file({**RULE, "path": long_path}))["added"], 1)
        self.refuse(self.file("y" * 10_000_000), saying="line 1")

    def test_a_file_that_cannot_be_written_is_a_failure(self):
        folder = os.path.dirname(self.sandbox.user_file)
        os.remove(self.sandbox.user_file)
        os.rmdir(folder)
        self.sandbox.write(folder, "no folder")
        self.fail_with(3, "apply", self.file(RULE))
        self.assertEqual(read(folder), b"no folder")

    def test_an_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            self.fail_with(3, "apply", self.file(RULE), stdout=full)
