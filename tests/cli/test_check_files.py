import hashlib
import json
import os
import subprocess
import unittest
from urllib.parse import unquote

from macho import adhoc_program
from quorvanectl import CommandTest

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
VALIDATOR = os.path.join(SOURCE, "build/real-programs/sarif-multitool/Sarif.Multitool")
KINDS = ["redundant", "invalid", "missing", "unwritable", "joined", "overlap", "unproven"]
JOINED = 'allow path "/é" "any" r "" "" "0allow suffix ".b" "any" r "" "" "0"'
EVERYTHING = ['allow prefix "" /no/such/program rwcmx', "allow path /né /no/such/program -",
              "deny path /né /no/such/program w", JOINED]


class CheckTest(CommandTest):
    def check(self, *arguments):
        result = self.run_program("check", "--json", *arguments)
        objects = result.objects()
        self.assertEqual((result.status, result.err), (1 if objects else 0, ""), arguments)
        return objects

    def kinds(self, *arguments):
        return [found["finding"] for found in self.check(*arguments)]


class Kinds(CheckTest):
    def test_only_takes_kinds_and_tells_them_in_their_order(self):
        file = self.sandbox.new_file("rules", EVERYTHING)
        self.assertEqual(sorted(set(self.kinds("--only", "all", file))), sorted(set(KINDS) - {"unproven"}))
        places = [(found["row"], KINDS.index(found["finding"]))
                  for found in self.check("--only", "missing,redundant", file)]
        self.assertEqual(places, sorted(places))
        self.assertEqual(len(set(places)), 4)
        self.assertEqual(self.kinds("--only=joined", file), ["joined"])

    def test_overlaps_are_looked_for_on_request_alone(self):
        file = self.sandbox.new_file("rules", ["allow prefix /etc/ any rw", "deny path /etc/hosts /bin/sh w",
                                               "deny path /etc/hosts any x"])
        self.assertEqual(self.kinds(file), [])
        found, = self.check("--only", "overlap", file)
        self.assertEqual((found["row"], found["rule"].split('"')[1]), (2, "/etc/hosts"))
        self.assertEqual(found["coveredBy"], 'allow prefix "/etc/" "any" rw "" "" "0"')

    def test_skip_leaves_out_of_the_usual_ones(self):
        file = self.sandbox.new_file("rules", EVERYTHING)
        self.assertEqual(set(self.kinds("--skip", "missing,redundant", file)), {"invalid", "unwritable", "joined"})

    def test_words_that_are_no_kinds_are_usage_errors(self):
        for arguments in (["--only", "none"], ["--only", ""], ["--only", "missing,"], ["--skip", "all"],
                          ["--skip", ""], ["--skip", "Missing"], ["--only", "missing", "--skip", "joined"],
                          ["--json", "--sarif"]):
            with self.subTest(arguments=arguments):
                self.fail_with(2, "check", *arguments)

    def test_a_joined_line_is_told_last_without_a_row(self):
        file = self.sandbox.new_file("rules", ("; comment\n" + JOINED + "\nallow path /no/such any r\n").encode())
        *_, last = self.check(file)
        self.assertEqual(last, {"row": None, "finding": "joined", "rule": JOINED, "coveredBy": None, "reason": None,
                                "file": file})
        self.assertIn("line 2:", self.run_program("check", "--only", "joined", file).out.decode())

    def test_joined_works_on_bytes(self):
        file = self.sandbox.new_file("rules", b'allow path "/\xc3" "any" r "" "" "0allow path "/b" "any" r\n')
        result = self.fail_with(1, "check", "--json", file)
        self.assertEqual([found["finding"] for found in result.objects()], ["joined"])
        self.assertIn("not valid UTF-8", result.err)

    def test_a_team_that_nobody_signed_is_invalid_and_so_not_unproven(self):
        program = self.sandbox.new_file("program", adhoc_program(team="TEAM123456"))
        self.sandbox.write_user(f'allow suffix .x {program} r "" TEAM123456')
        self.assertEqual(self.kinds(), ["invalid"])


class Places(CheckTest):
    def setUp(self):
        super().setUp()
        self.volume = self.sandbox.path("volume")
        for folder in ("bin", "etc"):
            os.makedirs(os.path.join(self.volume, folder))
        self.sandbox.new_file("volume/bin/tool", b"tool")
        self.sandbox.new_file("volume/etc/hosts", b"")
        os.symlink("/bin/tool", self.sandbox.path("volume/link"))
        os.symlink(self.sandbox.new_file("outside", b""), self.sandbox.path("volume/away"))
        digest = hashlib.sha256(b"tool").hexdigest()
        self.sandbox.write_user(
            f'allow path /etc/hosts /link r "" {digest}', "allow path /etc/passwd /bin/tool r",
            "allow path ~/none /bin/sh r", "allow path /away any r", "allow prefix / any rw")

    def test_programs_and_paths_are_looked_up_in_the_target(self):
        self.assertEqual([(found["rule"].split('"')[1], found["finding"])
                          for found in self.check("--target", self.volume, "--skip", "redundant")],
                         [("/away", "missing"), ("~/none", "invalid"), ("/etc/passwd", "missing")])

    def test_without_a_target_nothing_is_missing(self):
        self.assertEqual(self.kinds("--no-target"), ["redundant"])
        self.assertEqual(self.kinds("--no-target", "--only", "all"), ["redundant"])
        self.assertEqual(self.kinds("--no-target", "--skip", "missing"), ["redundant"])

    def test_a_kind_that_cannot_be_found_is_a_usage_error(self):
        for kind in ("invalid", "missing", "unproven", "joined,missing"):
            self.fail_with(2, "check", "--no-target", "--only", kind)
        self.fail_with(2, "check", "--no-target", "--target", self.volume)

    def test_a_target_that_is_no_folder_is_a_failure(self):
        for target in (self.sandbox.path("none"), self.sandbox.user_file, ""):
            self.assertIn(target, self.fail_with(1, "check", "--target", target).err)
            self.fail_with(1, "list", "--target", target)

    def test_the_list_asks_the_same_place(self):
        valid = dict(zip(self.listed(), self.listed("--target", self.volume, key="valid")))
        self.assertEqual(valid, {"/etc/hosts": True, "/etc/passwd": True, "~/none": False, "/away": True, "/": True})
        self.assertEqual(set(self.listed("--no-target", key="valid")), {None})
        shown = self.succeed("list", "--no-target").out.decode()
        self.assertNotIn("not found", shown)
        self.assertIn("program not found", self.succeed("list", "--target", self.volume).out.decode())

    def test_a_watch_rule_is_valid_wherever_it_is_looked_up(self):
        self.sandbox.write_user("watch path /w any r")
        self.assertEqual(self.listed("--target", self.volume, key="valid"), [True])


class ManyFiles(CheckTest):
    def test_findings_come_in_the_order_of_the_files(self):
        files = [self.sandbox.new_file(f"{number}.quorv", [f"allow path /none/{number} any r",
                                                            "allow suffix .x /no/program r"])
                 for number in range(300)]
        found = self.check(*reversed(files))
        self.assertEqual([one["file"] for one in found], [file for file in reversed(files) for _ in range(2)])
        self.assertEqual([one["row"] for one in found], [0, 1] * 300)
        self.assertIn(files[7] + ": row 0:", self.run_program("check", *files).out.decode())

    def test_the_key_of_the_file_is_as_it_was_given(self):
        os.mkdir(self.sandbox.path("folder"))
        self.sandbox.new_file("folder/rules", ["allow path /none any r"])
        result = self.run_program("check", "--json", "folder/../folder/rules", cwd=self.sandbox.path(""))
        self.assertEqual(result.keys(), [["row", "finding", "rule", "coveredBy", "reason", "file"]])
        self.assertEqual(result.values("file"), ["folder/../folder/rules"])
        self.sandbox.write_user("allow path /none any r")
        self.assertEqual(self.run_program("check", "--json").values("file"), [None])

    def test_files_that_cannot_be_read_are_told_and_the_others_checked(self):
        good = self.sandbox.new_file("good", ["allow suffix .x any r"])
        bad = self.sandbox.new_file("bad", ["allow path /none any r"])
        missing = self.sandbox.path("missing")
        latin = self.sandbox.new_file("latin", b"allow suffix .\xe9 any r\n")
        result = self.fail_with(1, "check", "--json", missing, bad, self.sandbox.home, latin, good)
        self.assertEqual(result.values("file"), [bad])
        told = result.err.splitlines()
        self.assertEqual([len(told)] + [file in line for file, line in zip((missing, self.sandbox.home, latin), told)],
                         [3, True, True, True])
        self.fail_with(1, "check", good, missing)

    def test_a_device_or_a_pipe_never_passes(self):
        pipe = self.sandbox.path("pipe")
        os.mkfifo(pipe)
        for file, reason in (("/dev/zero", "is no regular file"), ("/dev/null", "is no regular file"), (pipe, "is a pipe")):
            self.assertIn(f"'{file}' {reason}", self.fail_with(1, "check", "--no-target", file).err)

    def test_a_file_is_checked_as_often_as_it_is_named(self):
        file = self.sandbox.new_file("bad", ["allow path /none any r"])
        self.assertEqual(len(self.check(file, file)), 2)


class Sarif(CheckTest):
    def log(self, *arguments, status=1, **more):
        result = self.run_program("check", "--sarif", *arguments, **more)
        self.assertEqual(result.status, status, result.err)
        log = json.loads(result.out)
        self.assertEqual((log["version"], len(log["runs"])), ("2.1.0", 1))
        self.assertIn("sarif-2.1.0", log["$schema"])
        run, = log["runs"]
        self.assert_structure(run)
        return run

    def assert_structure(self, run):
        driver = run["tool"]["driver"]
        self.assertEqual(driver["name"], "quorvanectl")
        self.assertEqual([rule["id"] for rule in driver["rules"]], KINDS)
        levels = {}
        for rule in driver["rules"]:
            levels[rule["id"]] = rule["defaultConfiguration"]["level"]
            for text in ("shortDescription", "fullDescription", "help"):
                self.assertTrue(rule[text]["text"])
        self.assertEqual({kind for kind, level in levels.items() if level == "error"},
                         {"unwritable", "joined", "invalid"})
        self.assertEqual(set(levels.values()), {"error", "warning"})
        self.assertIsInstance(run["results"], list)
        for result in run["results"]:
            self.assertEqual(KINDS[result["ruleIndex"]], result["ruleId"])
            self.assertEqual(result["level"], levels[result["ruleId"]])
            self.assertTrue(result["message"]["text"])
            place, = result["locations"]
            self.assertGreaterEqual(place["physicalLocation"]["region"]["startLine"], 1)
            self.assertTrue(place["physicalLocation"]["artifactLocation"]["uri"])
        self.assertEqual(len(run["invocations"]), 1)
        for notification in run["invocations"][0]["toolExecutionNotifications"]:
            self.assertEqual(notification["level"], "error")
            self.assertTrue(notification["message"]["text"])

    def places(self, run):
        places = [result["locations"][0]["physicalLocation"] for result in run["results"]]
        return [(result["ruleId"], place["artifactLocation"]["uri"], place["region"]["startLine"])
                for result, place in zip(run["results"], places)]

    def test_a_result_names_file_and_line(self):
        file = self.sandbox.new_file("rules", "; first\r\n\r\nallow path /b any r\nallow path /a any r\x0b"
                                              f"watch path /w any r\n{JOINED}\n".encode())
        self.assertEqual(self.places(self.log("--skip", "unwritable", file)), [
            ("missing", "file://" + file, 4), ("missing", "file://" + file, 3), ("missing", "file://" + file, 4),
            ("missing", "file://" + file, 5), ("joined", "file://" + file, 5)])

    def test_a_relative_file_is_a_relative_reference(self):
        os.mkdir(self.sandbox.path("a folder"))
        self.sandbox.new_file("a folder/50%: é.quorv", ["allow path /none any r"])
        run = self.log("a folder/50%: é.quorv", cwd=self.sandbox.path(""))
        (_, address, _), = self.places(run)
        self.assertEqual(address, "a%20folder/50%25%3A%20%C3%A9.quorv")
        self.assertEqual(unquote(address), "a folder/50%: é.quorv")

    def test_without_findings_the_results_are_an_empty_list(self):
        run = self.log(self.sandbox.new_file("good", ["allow suffix .x any r"]), status=0)
        self.assertEqual(run["results"], [])
        self.assertEqual(run["invocations"], [{"executionSuccessful": True, "toolExecutionNotifications": []}])

    def test_a_file_that_cannot_be_read_is_a_notification(self):
        missing = self.sandbox.path("missing")
        run = self.log(missing, self.sandbox.new_file("bad", ["allow path /none any r"]), missing)
        self.assertEqual(len(run["results"]), 1)
        invocation, = run["invocations"]
        self.assertFalse(invocation["executionSuccessful"])
        self.assertEqual([missing in told["message"]["text"] for told in invocation["toolExecutionNotifications"]],
                         [True, True])

    def test_the_users_configuration_has_its_own_file(self):
        self.sandbox.write_user("allow path /none any r")
        self.assertEqual(self.places(self.log()), [("missing", "file://" + self.sandbox.user_file, 1)])


@unittest.skipUnless(os.environ.get("QUORVANE_REAL_PROGRAMS") == "1" and os.path.exists(VALIDATOR),
                     "./test --real-programs fetches the validator of review logs, where the network has it")
class RealValidator(CommandTest):
    """What those who define the format say of our logs."""

    def errors_in(self, log):
        file = self.sandbox.new_file("log.sarif", log)
        report = self.sandbox.path("report.sarif")
        done = subprocess.run([VALIDATOR, "validate", file, "--level", "Error", "--output", report, "--log", "ForceOverwrite"],
                              env={**self.environment(), "DOTNET_SYSTEM_GLOBALIZATION_INVARIANT": "1"}, cwd=self.sandbox.folder,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=120)
        self.assertIn("Analysis completed successfully.", done.stdout)
        with open(report, encoding="utf-8-sig") as written:
            return [result["ruleId"] for result in json.load(written)["runs"][0]["results"]]

    def test_finds_no_error_in_a_log(self):
        os.mkdir(self.sandbox.path("a folder"))
        bad = self.sandbox.new_file("a folder/50%: é.quorv", [
            "allow prefix /a /gone r", "allow path /a/b /gone r", "deny path /a/b /gone r", "allow path /é any r",
            'allow path "/b" "any" r "" "" "1allow path "/c" "any" r "" "" "2"'])
        log = self.run_program("check", "--sarif", "--only", "all", bad, self.sandbox.path("missing")).out
        self.assertEqual(self.errors_in(log), [])
        self.assertNotEqual(self.errors_in(log.replace(b'"startLine":1', b'"startLine":0')), [])

    def test_finds_no_error_in_a_log_without_findings(self):
        good = self.sandbox.new_file("good.quorv", ["allow path /a any r"])
        self.assertEqual(self.errors_in(self.succeed("check", "--sarif", "--no-target", good).out), [])
