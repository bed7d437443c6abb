"""The collection vantreal.quorvane, run by ansible itself on machines that are folders of this one."""

import json
import os
import shutil
import subprocess
import time
import unittest

from sandbox import Sandbox, login_name, read

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAM = os.environ["QUORVANE_PROGRAM"]
RULES = "vantreal.quorvane.rules"
HOME_RULE = {"class": "allow", "type": "prefix", "path": "/home/", "process": "any", "operations": "r", "tag": "team"}
HOME_LINE = 'allow prefix "/home/" "any" r "team" "" "0"\n'
OTHER_LINE = 'deny path "/x" "any" w "mine" "" "7"\n'
PRELOADED = f"LD_PRELOAD={os.path.join(os.path.dirname(PROGRAM), 'libfaulty_calls.so')}"
PATIENCE = 240


class Answer:
    """What a run of ansible came to: by host, and what it printed."""

    def __init__(self, done, folder):
        self.status, self.printed = done.returncode, done.stdout
        self.hosts = {}
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                self.hosts[name] = {**json.load(file), "failed": f"{name} | FAILED!" in self.printed}

    def difference(self):
        """The lines that go and come."""
        return [line for line in self.printed.splitlines() if line[:1] in "-+" and line[:3] not in ("---", "+++") and line]


class AnsibleTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.end)
        collection = self.sandbox.path("collections/ansible_collections/vantreal")
        os.makedirs(collection)
        os.symlink(os.path.join(SOURCE, "integrations", "ansible"), os.path.join(collection, "quorvane"))
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": self.sandbox.home, "LC_ALL": "C.UTF-8", "ANSIBLE_NOCOLOR": "1",
            "ANSIBLE_COLLECTIONS_PATH": self.sandbox.path("collections"), "ANSIBLE_HOST_KEY_CHECKING": "False",
            "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0", "PYTHONDONTWRITEBYTECODE": "1"}

    def machines(self, count=1, **more):
        """An inventory of so many hosts, each a folder of its own; their rules files."""
        hosts, files = {}, []
        for number in range(1, count + 1):
            root = self.sandbox.path(f"machine-{number}")
            folder = os.path.join(root, "Users/Shared/Quorvane")
            os.makedirs(folder)
            files.append(self.sandbox.write(os.path.join(folder, login_name() + ".quorvane.rc"), OTHER_LINE))
            hosts[f"machine-{number}"] = {
                "machine_root": root, "ansible_connection": "local", "ansible_python_interpreter": "/usr/bin/python3",
                "ansible_remote_tmp": os.path.join(root, "tmp"), **more}
        self.sandbox.write(self.sandbox.path("inventory.json"), json.dumps({"all": {"hosts": hosts}}))
        return files

    def module(self, module, *options, **arguments):
        """Runs the module on all machines; a folder in front of the product's is theirs."""
        results = self.sandbox.path(f"results-{time.monotonic_ns()}")
        os.mkdir(results)
        spelled = json.dumps({"executable": PROGRAM, "root": "{{ machine_root }}", **arguments})
        return Answer(self.run_tool("ansible", "-i", self.sandbox.path("inventory.json"), "all", "-m", module, "-a", spelled,
                                    "-t", results, "--forks", "10", *options), results)

    def run_tool(self, *command):
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False, timeout=PATIENCE)

    def one(self, module, *options, **arguments):
        answer = self.module(module, *options, **arguments)
        self.assertIn("machine-1", answer.hosts, answer.printed)
        return answer.hosts["machine-1"]


class Rules(AnsibleTest):
    def test_the_first_run_changes_and_the_second_leaves_the_very_file(self):
        file, = self.machines()
        first = self.one(RULES, rules=[HOME_RULE])
        self.assertEqual({key: first.get(key) for key in ("changed", "added", "removed", "altered", "unchanged")},
                         {"changed": True, "added": 1, "removed": 0, "altered": 0, "unchanged": 0}, first)
        self.assertEqual(read(file).decode(), OTHER_LINE + HOME_LINE)
        before = os.stat(file)
        second = self.one(RULES, rules=[HOME_RULE])
        self.assertEqual((second["changed"], second["unchanged"]), (False, 1))
        after = os.stat(file)
        self.assertEqual((after.st_ino, after.st_mtime_ns, after.st_ctime_ns),
                         (before.st_ino, before.st_mtime_ns, before.st_ctime_ns))

    def test_check_mode_writes_nothing_and_the_difference_names_the_rules(self):
        file, = self.machines()
        answer = self.module(RULES, "--check", "--diff", state="exact", tags=["mine"],
                             rules=[dict(HOME_RULE, tag="mine")])
        self.assertTrue(answer.hosts["machine-1"]["changed"])
        self.assertEqual(answer.difference(), ['-deny path "/x" "any" w "mine"', '+allow prefix "/home/" "any" r "mine"'])
        self.assertEqual(read(file).decode(), OTHER_LINE)

    def test_a_changed_tag_stands_on_both_sides_of_the_difference(self):
        self.machines()
        answer = self.module(RULES, "--diff", content='deny path "/x" "any" w "ours" "" "7"\n')
        self.assertEqual(answer.hosts["machine-1"]["altered"], 1)
        self.assertEqual(answer.difference(), ['-deny path "/x" "any" w "mine"', '+deny path "/x" "any" w "ours"'])

    def test_exact_removes_the_tags_other_rules_and_no_others(self):
        file, = self.machines()
        self.one(RULES, rules=[HOME_RULE, dict(HOME_RULE, path="/old/")])
        self.one(RULES, state="exact", tags=["team"], rules=[HOME_RULE])
        self.assertEqual(read(file).decode(), OTHER_LINE + HOME_LINE)

    def test_exact_with_nothing_needs_to_be_allowed(self):
        file, = self.machines()
        self.assertTrue(self.one(RULES, state="exact", tags=["mine"], rules=[])["failed"])
        self.assertEqual(read(file).decode(), OTHER_LINE)
        self.assertEqual(self.one(RULES, state="exact", tags=["mine"], rules=[], allow_empty=True)["removed"], 1)
        self.assertEqual(read(file), b"")

    def test_absent_removes_them_whatever_their_tag(self):
        file, = self.machines()
        self.one(RULES, rules=[HOME_RULE])
        self.assertEqual(self.one(RULES, state="absent", rules=[dict(HOME_RULE, tag="other")])["removed"], 1)
        self.assertEqual(read(file).decode(), OTHER_LINE)

    def test_rules_come_from_a_file_of_the_machine(self):
        file, = self.machines()
        given = self.sandbox.write(self.sandbox.path("given.quorv"), HOME_LINE)
        self.assertTrue(self.one(RULES, src=given)["changed"])
        self.assertEqual(read(file).decode(), OTHER_LINE + HOME_LINE)

    def test_what_makes_no_sense_is_refused_with_the_reason(self):
        file, = self.machines()
        for arguments, reason in [
                ({}, "one of the following is required: rules, content, src"),
                ({"rules": [HOME_RULE], "content": ""}, "mutually exclusive"),
                ({"rules": [dict(HOME_RULE, operations="rz")]}, "operations must be letters out of rwcmx"),
                ({"rules": [dict(HOME_RULE, operations="")]}, "operations must be letters out of rwcmx"),
                ({"rules": [dict(HOME_RULE, **{"class": "watch", "constraint": "T"})]}, "a watch rule has no constraint"),
                ({"rules": [HOME_RULE], "state": "exact"}, "state is exact but all of the following are missing: tags"),
                ({"rules": [HOME_RULE], "tags": ["t"]}, "the state is present"),
                ({"rules": [dict(HOME_RULE, path='/"')]}, "quote"),
                ({"content": "allow nonsense\n"}, "1")]:
            with self.subTest(arguments=arguments):
                told = self.one(RULES, **arguments)
                self.assertTrue(told["failed"], told)
                self.assertIn(reason, told["msg"])
        self.assertEqual(read(file).decode(), OTHER_LINE)

    def test_a_machine_that_fails_fails_alone(self):
        files = self.machines(3)
        os.remove(files[1])
        os.mkdir(files[1])
        answer = self.module(RULES, rules=[HOME_RULE])
        self.assertNotEqual(answer.status, 0)
        self.assertEqual([answer.hosts[f"machine-{number}"]["failed"] for number in (1, 2, 3)],
                         [False, True, False])
        self.assertIn("directory", answer.hosts["machine-2"]["msg"].lower())
        self.assertEqual([read(file).decode() for file in (files[0], files[2])], [OTHER_LINE + HOME_LINE] * 2)

    def test_a_machine_that_dies_in_mid_write_recovers_on_the_next_run(self):
        files = self.machines(2)
        dying = self.sandbox.write(self.sandbox.path("dying"), [
            "#!/bin/sh", 'case "$*" in *machine-1*) [ -e "$0.died" ] || fault=write:%d:cut ;; esac' % self.write_of_the_rules(),
            ': > "$0.died"', f'exec env {PRELOADED} QUORVANE_FAULT="$fault" {PROGRAM} "$@"'])
        os.chmod(dying, 0o755)

        first = self.module(RULES, "--forks", "1", rules=[HOME_RULE], executable=dying)
        self.assertEqual([first.hosts[f"machine-{number}"]["failed"] for number in (1, 2)], [True, False], first.printed)
        self.assertNotIn(read(files[0]).decode(), (OTHER_LINE, OTHER_LINE + HOME_LINE))

        second = self.module(RULES, rules=[HOME_RULE], executable=dying)
        self.assertEqual(second.status, 0, second.printed)
        self.assertIn("it has been completed", second.printed)
        self.assertEqual([read(file).decode() for file in files], [OTHER_LINE + HOME_LINE] * 2)
        third = self.module(RULES, rules=[HOME_RULE], executable=dying)
        self.assertEqual({host["changed"] for host in third.hosts.values()}, {False})
        self.assertNotIn("completed", third.printed)

    def write_of_the_rules(self):
        """Which of the writes of such a run is that of the rules file: the one of which a half leaves a cut file."""
        for number in range(1, 200):
            scratch = Sandbox()
            self.addCleanup(scratch.end)
            scratch.write(scratch.user_file, OTHER_LINE)
            given = scratch.new_file("given.quorv", HOME_LINE)
            subprocess.run(["env", *PRELOADED.split(), f"QUORVANE_FAULT=write:{number}:cut", PROGRAM, "--root", scratch.root,
                            "apply", given], env={**self.environment, "HOME": scratch.home}, check=False, capture_output=True)
            if read(scratch.user_file).decode() not in (OTHER_LINE, OTHER_LINE + HOME_LINE):
                return number
        self.fail("no write is that of the rules file")

    def test_fifty_machines_take_the_rules_at_once(self):
        files = self.machines(50)
        answer = self.module(RULES, rules=[HOME_RULE])
        self.assertEqual(answer.status, 0, answer.printed)
        self.assertEqual({read(file).decode() for file in files}, {OTHER_LINE + HOME_LINE})

    def test_letters_beyond_ascii_arrive(self):
        file, = self.machines()
        told = self.one(RULES, rules=[dict(HOME_RULE, path="/höme/")])
        self.assertTrue(told["failed"])
        self.assertIn("whole", told["msg"])
        self.assertEqual(read(file).decode(), OTHER_LINE)


class Facts(AnsibleTest):
    def test_are_the_rules_as_the_other_module_takes_them(self):
        file, = self.machines()
        self.one(RULES, rules=[dict(HOME_RULE, constraint="TEAM")])
        facts = self.one("vantreal.quorvane.rules_facts", tags=["team"])
        self.assertEqual(facts["ansible_facts"]["quorvane_rules"], [dict(HOME_RULE, constraint="TEAM")])
        self.assertFalse(facts["changed"])
        again = self.one(RULES, rules=facts["ansible_facts"]["quorvane_rules"])
        self.assertEqual((again["changed"], again["unchanged"]), (False, 1))

    def test_leave_out_the_systems_rules_unless_asked(self):
        self.machines()
        system = self.sandbox.path("machine-1/Library/Application Support/Quorvane")
        os.makedirs(system)
        self.sandbox.write(os.path.join(system, "quorvane.rc"), ["allow prefix /s any r"])
        paths = [[rule["path"] for rule in self.one("vantreal.quorvane.rules_facts", system=asked)["ansible_facts"]
                  ["quorvane_rules"]] for asked in (False, True)]
        self.assertEqual([sorted(each) for each in paths], [["/x"], ["/s", "/x"]])


class Role(AnsibleTest):
    PLAY = [{"hosts": "all", "gather_facts": True, "roles": [{
        "role": "vantreal.quorvane.configuration", "quorvane_package": "", "quorvane_whole_lines": True,
        "quorvane_executable": PROGRAM, "quorvane_root": "{{ machine_root }}", "quorvane_rules": [HOME_RULE]}]}]

    def play(self):
        playbook = self.sandbox.write(self.sandbox.path("play.json"), json.dumps(self.PLAY))
        done = self.run_tool("ansible-playbook", "-i", self.sandbox.path("inventory.json"), playbook)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def test_sets_settings_and_rules_and_keeps_what_else_is_there(self):
        file, = self.machines()
        settings = os.path.join(self.sandbox.home, ".config/quorvane/settings.ini")
        os.makedirs(os.path.dirname(settings))
        self.sandbox.write(settings, "; mine\n[rules]\nother=1\nwholeLines=false\n")
        self.assertRegex(self.play(), r"machine-1 .*changed=[1-9]")
        text = read(settings).decode()
        self.assertIn("; mine\n[rules]\n", text)
        for line in ("other=1\n", "wholeLines=true\n", "days=7\n", "bytes=1073741824\n"):
            self.assertIn(line, text)
        self.assertLess(text.index("[history]"), text.index("days=7"))
        self.assertEqual(read(file).decode(), OTHER_LINE + HOME_LINE)
        self.assertRegex(self.play(), r"machine-1 .*changed=0")


class Documentation(AnsibleTest):
    def test_is_shown_for_every_module(self):
        for module in (RULES, "vantreal.quorvane.rules_facts"):
            done = self.run_tool("ansible-doc", "-t", "module", module)
            self.assertEqual(done.returncode, 0, done.stdout)
            self.assertIn("EXAMPLES:", done.stdout)

    def test_the_example_is_a_play_that_ansible_reads(self):
        examples = os.path.join(SOURCE, "integrations/ansible/examples")
        done = self.run_tool("ansible-playbook", "-i", os.path.join(examples, "inventory.yml"), "--syntax-check",
                             os.path.join(examples, "site.yml"))
        self.assertEqual(done.returncode, 0, done.stdout)


@unittest.skipUnless(os.geteuid() == 0 and shutil.which("sshd", path="/usr/sbin"), "needs root and an ssh server")
class Ssh(AnsibleTest):
    """Once over the real thing."""

    def serve(self):
        os.makedirs("/run/sshd", exist_ok=True)
        for name in ("host", "user"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.sandbox.path(name)], check=True)
        shutil.copy(self.sandbox.path("user.pub"), self.sandbox.path("authorized"))
        configuration = self.sandbox.write(self.sandbox.path("sshd_config"), [
            f"HostKey {self.sandbox.path('host')}", f"AuthorizedKeysFile {self.sandbox.path('authorized')}",
            "PermitRootLogin prohibit-password", "StrictModes no", "UsePAM no", "PidFile none",
            f"SetEnv HOME={self.sandbox.home} ASAN_OPTIONS=detect_leaks=0"])
        # One connection for each start of the server, which so needs no port of the machine.
        return f"/usr/sbin/sshd -i -f {configuration}"

    def test_a_run_over_ssh_changes_and_the_next_does_not(self):
        file, = self.machines(
            ansible_connection="ssh", ansible_host="machine-1", ansible_user="root",
            ansible_ssh_private_key_file=self.sandbox.path("user"),
            ansible_ssh_common_args=f"-o ProxyCommand='{self.serve()}' -o UserKnownHostsFile=/dev/null "
                                    "-o StrictHostKeyChecking=no -o ControlMaster=no")
        told = [self.one(RULES, rules=[HOME_RULE]) for _ in range(2)]
        self.assertEqual([each.get("changed") for each in told], [True, False], told)
        self.assertEqual(read(file).decode(), OTHER_LINE + HOME_LINE)
