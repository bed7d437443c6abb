import json
import os

import jsonschema

from macho import adhoc_program
from quorvanectl import CommandTest

FOLDER = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "docs/schema")
RULES = ['allow prefix /a /bin/sh rwc "a tag" "" 1478000000', "watch path /none any r", "deny suffix .é any x",
         "allow path /a/b /bin/sh r", "permit folder /x any r"]
JOINED = 'allow path "/é" "any" r "" "" "0allow suffix ".b" "any" r "" "" "0"'


def schema(name):
    with open(os.path.join(FOLDER, name + ".json"), encoding="utf-8") as file:
        return json.load(file)


class Schemas(CommandTest):
    """The published schemas say what is printed and read, key by key."""

    def holds(self, name, *command, more=()):
        """Each object printed is one of the schema, or of those in `more`; all keys of it are named."""
        described = [schema(one) for one in (name, *more)]
        result = self.run_program(*command)
        objects = result.objects()
        self.assertTrue(objects, (command, result.err))
        for found, keys in zip(objects, result.keys()):
            fitting = [one for one in described if jsonschema.Draft202012Validator(one).is_valid(found)]
            self.assertTrue(fitting, (command, found))
            self.assertEqual(keys, [key for key in fitting[0]["properties"] if key in keys], command)
        return objects

    def test_every_file_is_a_schema_that_names_what_it_requires(self):
        names = sorted(name[:-5] for name in os.listdir(FOLDER))
        self.assertEqual(names, ["apply", "check", "codesign", "diff", "history", "import", "list", "options",
                                 "rescue", "summary"])
        for name in names:
            found = schema(name)
            jsonschema.Draft202012Validator.check_schema(found)
            self.assertLessEqual(set(found["required"]), set(found["properties"]), name)

    def test_a_list_fits(self):
        file = self.sandbox.new_file("rules", RULES)
        self.assertEqual(len(self.holds("list", "list", "--json", file)), len(RULES))
        self.holds("list", "list", "--json", "--no-target", file)
        self.holds("list", "list", "--json", "--system", "--label-system", file)

    def test_options_and_imports_fit(self):
        self.sandbox.write_preferences(policy_global_exec=1)
        self.holds("options", "options", "--json")
        file = self.sandbox.new_file("rules", RULES)
        self.holds("diff", "import", "--dry-run", "--json", file, more=["summary"])
        self.holds("import", "import", "--json", file)

    def test_findings_fit(self):
        file = self.sandbox.new_file("rules", [*RULES, JOINED, "deny prefix /a any r"])
        found = self.holds("check", "check", "--json", "--only", "all", file)
        self.assertEqual({one["finding"] for one in found},
                         {"redundant", "missing", "unwritable", "joined", "overlap"})
        self.sandbox.write_user(*RULES)
        self.holds("check", "check", "--json")

    def test_code_signatures_fit(self):
        program = self.sandbox.new_file("program", adhoc_program())
        self.holds("codesign", "codesign", "--json", program, self.sandbox.path("missing"))
        self.holds("codesign", "codesign", "--json", "--pid", str(os.getpid()))

    def test_differences_and_versions_fit(self):
        old = self.sandbox.new_file("old", RULES)
        new = self.sandbox.new_file("new", ["allow prefix /a /bin/sh rwc other", "watch path /new any r"])
        changes = self.holds("diff", "diff", "--json", old, new)
        self.assertEqual({found["change"] for found in changes}, {"added", "removed", "changed"})
        self.sandbox.write_user("allow prefix /b any r")
        self.succeed("add", "allow", "path", "/x", "any", "r")
        self.assertEqual(len(self.holds("history", "history", "--json")), 2)
        self.holds("diff", "history", "show", "--json", "2")

    def test_rescued_rules_fit(self):
        found = self.holds("rescue", "rescue", "--json", self.sandbox.new_file("rules", [JOINED]))
        self.assertEqual([one["cut"] for one in found], [["created"], []])

    def test_a_listed_rule_is_one_that_apply_reads(self):
        file = self.sandbox.new_file("rules", RULES[:4])
        for found in self.succeed("list", "--json", file).objects():
            jsonschema.validate(found, schema("apply"))
        for wrong in ({"kind": "policy"}, {**found, "policyClass": 4}, {**found, "operations": "r"}):
            self.assertFalse(jsonschema.Draft202012Validator(schema("apply")).is_valid(wrong))
