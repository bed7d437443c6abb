"""The collection for Ansible, on hosts that are folders of this machine."""

import json
import os
import subprocess

from quorvanectl import CommandTest, PROGRAM
from sandbox import login_name, read

COLLECTIONS = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))),
                           "integrations/ansible")
PLAYBOOKS = os.path.join(COLLECTIONS, "ansible_collections/vantreal/quorvane/playbooks")
HOSTS = int(os.environ.get("QUORVANE_TEST_HOSTS", "3"))  # 50 take a minute
TEAM = 'allow prefix "/team" "any" r "team" "" "7"\n'
MINE = 'allow prefix "/mine" "any" r "mine" "" "0"\n'
OLD = 'allow prefix "/old" "any" r "team" "" "0"\n'


class AnsibleTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.hosts = [f"host{number}" for number in range(HOSTS)]
        hosts = {}
        for host in self.hosts:
            os.makedirs(os.path.dirname(self.user_file(host)))
            os.makedirs(self.home(host))
            hosts[host] = {"quorvane_root": self.sandbox.path(host), "quorvane_executable": PROGRAM,
                           "my_environment": {"HOME": self.home(host), "QUORVANE_ROOT": ""}}
        self.inventory = self.sandbox.new_file("inventory.json", json.dumps({"all": {
            "hosts": hosts, "vars": {"ansible_connection": "local", "ansible_python_interpreter": "/usr/bin/python3"}}}))

    def home(self, host):
        return self.sandbox.path(f"{host}/home")

    def user_file(self, host):
        return self.sandbox.path(f"{host}/Users/Shared/Quorvane/{login_name()}.quorvane.rc")

    def environment(self):
        return {**super().environment(), "ANSIBLE_COLLECTIONS_PATH": COLLECTIONS, "ANSIBLE_COLLECTIONS_PATHS": COLLECTIONS,
                "ANSIBLE_LOCAL_TEMP": self.sandbox.path("local"), "ANSIBLE_REMOTE_TEMP": self.sandbox.path("remote"),
                "ANSIBLE_STDOUT_CALLBACK": "json", "ANSIBLE_FORKS": "10", "ANSIBLE_RETRY_FILES_ENABLED": "0",
                "ANSIBLE_DEPRECATION_WARNINGS": "0", "LC_ALL": "C.UTF-8", "ANSIBLE_NOCOWS": "1"}

    def play(self, *tasks, options=(), status=0, play=None):
        """What each host answers to the last task; `play` adds to the play."""
        book = self.sandbox.new_file("book.yml", json.dumps([{
            "hosts": "all", "gather_facts": False, "environment": "{{ my_environment }}", "tasks": list(tasks),
            **(play or {})}]))
        done = subprocess.run(["ansible-playbook", "-i", self.inventory, *options, book], env=self.environment(),
                              capture_output=True, text=True, timeout=600)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        answer = json.loads(done.stdout[done.stdout.index("{"):])
        return answer["plays"][0]["tasks"][-1]["hosts"]

    def rules(self, **arguments):
        return {"vantreal.quorvane.rules": {"root": "{{ quorvane_root }}", "executable": PROGRAM, **arguments}}


class Rules(AnsibleTest):
    def test_the_first_run_changes_and_the_second_does_not(self):
        rule = {"rule_class": "allow", "type": "prefix", "path": "/team", "process": "any", "operations": "r",
                "tag": "team", "created": 7}
        watch = {"rule_class": "watch", "type": "suffix", "path": ".x", "process": "any", "operations": "wr"}
        for host in self.hosts:
            self.sandbox.write(self.user_file(host), MINE + OLD)
        task = self.rules(rules=[rule, watch], state="exact", tags=["team"])
        untouched = self.play(task, options=["--check", "--diff"])
        for host in self.hosts:
            self.assertEqual(read(self.user_file(host)).decode(), MINE + OLD)
            self.assertTrue(untouched[host]["changed"])
            self.assertEqual(untouched[host]["diff"]["before"], OLD)
            self.assertEqual(untouched[host]["diff"]["after"], 'watch suffix ".x" "any" rw ""\n' + TEAM)
        first = self.play(task)
        states = {}
        for host in self.hosts:
            self.assertEqual([first[host][key] for key in ("changed", "added", "removed", "changed_rules", "unchanged")],
                             [True, 2, 1, 0, 0])
            self.assertEqual(read(self.user_file(host)).decode(), 'watch suffix ".x" "any" rw ""\n' + MINE + TEAM)
            states[host] = os.stat(self.user_file(host))
        second = self.play(task)
        for host in self.hosts:
            self.assertEqual([second[host][key] for key in ("changed", "unchanged", "changes")], [False, 2, []])
            self.assertEqual(os.stat(self.user_file(host)), states[host])

    def test_a_host_that_fails_fails_alone(self):
        self.sandbox.write(self.user_file("host0"), b"allow path /a any r\n\0")
        file = self.sandbox.new_file("team.quorv", TEAM)
        answers = self.play(self.rules(src=file), status=2)
        self.assertIn("NUL", answers["host0"]["msg"])
        for host in self.hosts[1:]:
            self.assertEqual((answers[host]["changed"], read(self.user_file(host)).decode()), (True, TEAM))
        gone = self.play(self.rules(src=file, state="absent"), status=2)
        self.assertEqual(gone["host1"]["removed"], 1)

    def test_facts_are_the_rules(self):
        for host in self.hosts:
            self.sandbox.write(self.user_file(host), MINE + TEAM)
        answers = self.play({"vantreal.quorvane.rules_facts": {"root": "{{ quorvane_root }}", "executable": PROGRAM,
                                                               "filter": "team"}},
                            {"ansible.builtin.debug": {"msg": "{{ quorvane_rules | map(attribute='path') }}"}})
        self.assertEqual(answers["host0"]["msg"], ["/team"])

    def test_arguments_are_checked(self):
        rule = {"rule_class": "allow", "type": "prefix", "path": "/a", "process": "any", "operations": "r"}
        for wrong, saying in (({}, "src, rules"), ({"src": "a", "rules": []}, "mutually exclusive"),
                              ({"rules": [{**rule, "operations": "q"}]}, "letters out of"),
                              ({"rules": [rule], "state": "exact"}, "tags are needed")):
            answers = self.play(self.rules(**wrong), status=2, options=["--limit", "host0"])
            self.assertIn(saying, answers["host0"]["msg"])


class Role(AnsibleTest):
    def test_the_example_brings_a_file_to_its_hosts(self):
        team = self.sandbox.new_file("team.quorv", TEAM + 'allow prefix "/\u00e4" "any" r "team" "" "0"\n')
        variables = {"quorvane_rules_file": team, "quorvane_tags": ["team"], "quorvane_whole_lines": True}
        play = {"roles": ["vantreal.quorvane.rules"], "vars": variables}
        limit = ["--limit", "host0"]
        first = self.play(play=play, options=limit)
        self.assertTrue(first["host0"].get("skipped"))  # the last task is for a list
        self.assertEqual(read(self.user_file("host0")).decode(), read(team).decode())
        self.assertEqual(read(os.path.join(self.home("host0"), ".config/quorvane/settings.ini")),
                         b"[rules]\nwholeLines=true\n")

    def test_the_playbooks_are_playbooks(self):
        done = subprocess.run(["ansible-playbook", "-i", os.path.join(PLAYBOOKS, "inventory.yml"), "--syntax-check",
                               os.path.join(PLAYBOOKS, "rules.yml")], env=self.environment(), capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_the_documentation_is_shown(self):
        for module in ("rules", "rules_facts"):
            done = subprocess.run(["ansible-doc", f"vantreal.quorvane.{module}"], env=self.environment(),
                                  capture_output=True, text=True)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertIn("executable", done.stdout)
