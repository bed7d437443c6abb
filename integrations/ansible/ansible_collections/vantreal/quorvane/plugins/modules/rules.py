#!/usr/bin/python
# Copyright: Vantreal
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: rules
short_description: Make a user's rules of file access hold given rules
description:
  - Makes the rules of the user who is logged in on the host hold the given ones, hold none of them, or hold no other
    ones with the same tags.
  - Rules are told apart by what they allow, deny or watch; tag and creation time are brought to what is given. Doing
    it again changes nothing, and other rules are left alone.
  - A write that was cut short on the host before is completed first.
version_added: 0.1.0
author: Vantreal (@vantreal)
options:
  state:
    description:
      - C(present) adds rules that are missing and brings tags and creation times to what is given.
      - C(absent) removes the given rules.
      - C(exact) is C(present), and removes other rules whose tag is one of I(tags).
    type: str
    choices: [present, absent, exact]
    default: present
  src:
    description:
      - A file of rules on the host, either a rules file or JSON with one object a line.
      - One of I(src) and I(rules) is required.
    type: path
  rules:
    description: The rules themselves.
    type: list
    elements: dict
    suboptions:
      rule_class:
        description: What the rule does.
        type: str
        choices: [allow, deny, watch]
        required: true
      type:
        description: How I(path) is compared.
        type: str
        choices: [prefix, path, suffix]
        required: true
      path:
        description: The path that the rule is about.
        type: str
        required: true
      process:
        description: The process that the rule is about.
        type: str
        required: true
      operations:
        description: Letters out of C(rwcmx).
        type: str
        required: true
      tag:
        description: A label. Without it a rule keeps its own.
        type: str
      constraint:
        description: What the program's code must carry; not for a watch rule.
        type: str
      created:
        description: When the rule was made, in seconds since 1970. Without it a rule keeps its own.
        type: int
  tags:
    description: For I(state=exact), the tags whose other rules are removed.
    type: list
    elements: str
    default: []
  allow_empty:
    description: With I(state=exact), removes all rules with these tags when no rule is given.
    type: bool
    default: false
  root:
    description: A folder to put in front of the product's own locations.
    type: path
  lock_timeout:
    description: How many seconds to wait for another program that writes the rules.
    type: float
    default: 5.0
  executable:
    description: The program C(quorvanectl), by name or path.
    type: path
    default: quorvanectl
attributes:
  check_mode:
    description: Tells what would change, and changes nothing.
    support: full
  diff_mode:
    description: Shows the rules that come, go and change.
    support: full
seealso:
  - module: vantreal.quorvane.rules_facts
"""

EXAMPLES = r"""
- name: The rules of the team, and no others with its tag
  vantreal.quorvane.rules:
    state: exact
    src: /etc/quorvane/team.quorv
    tags: [team]

- name: An editor may write notes
  vantreal.quorvane.rules:
    rules:
      - {rule_class: allow, type: prefix, path: ~/Notes/, process: /usr/bin/vi, operations: rwc, tag: notes}
"""

RETURN = r"""
added:
  description: How many rules were added.
  type: int
  returned: success
removed:
  description: How many rules were removed.
  type: int
  returned: success
changed_rules:
  description: How many rules got another tag or creation time.
  type: int
  returned: success
unchanged:
  description: How many of the given rules needed nothing.
  type: int
  returned: success
changes:
  description: The objects that C(quorvanectl apply --json) prints, one for each rule that comes, goes or changes.
  type: list
  elements: dict
  returned: success
"""

import json

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.vantreal.quorvane.plugins.module_utils.quorvanectl import COMMON_ARGUMENTS, run

CLASSES = ("allow", "deny", "watch")
TYPES = ("prefix", "path", "suffix")
LETTERS = "rwcmx"

RULE_ARGUMENTS = {
    "rule_class": {"type": "str", "choices": list(CLASSES), "required": True},
    "type": {"type": "str", "choices": list(TYPES), "required": True},
    "path": {"type": "str", "required": True},
    "process": {"type": "str", "required": True},
    "operations": {"type": "str", "required": True},
    "tag": {"type": "str"},
    "constraint": {"type": "str"},
    "created": {"type": "int"},
}


def object_of(module, rule):
    """A rule as quorvanectl reads it."""
    if not rule["operations"] or set(rule["operations"]) - set(LETTERS):
        module.fail_json(msg="operations must be letters out of %s, not %r" % (LETTERS, rule["operations"]))
    return {
        "kind": "watch" if rule["rule_class"] == "watch" else "policy",
        "policyClass": CLASSES.index(rule["rule_class"]),
        "policyType": TYPES.index(rule["type"]),
        "path": rule["path"],
        "processName": rule["process"],
        "tag": rule["tag"],
        "constraint": rule["constraint"],
        "operations": sum(1 << LETTERS.index(letter) for letter in set(rule["operations"])),
        "created": rule["created"],
    }


def line_of(rule):
    """An object that quorvanectl has printed, as a line for people."""
    letters = "".join(letter for place, letter in enumerate(LETTERS) if rule["operations"] >> place & 1)
    words = [CLASSES[rule["policyClass"]], TYPES[rule["policyType"]]]
    quoted = ['"%s"' % rule["path"], '"%s"' % rule["processName"], letters, '"%s"' % rule["tag"]]
    if rule["kind"] == "policy":
        quoted += ['"%s"' % rule["constraint"], '"%d"' % rule["created"]]
    return " ".join(words + quoted) + "\n"


def difference_of(changes):
    """The rules that the changes are about, before and after them."""
    before = [line_of(dict(rule, **(rule["before"] or {}))) for rule in changes if rule["change"] != "added"]
    after = [line_of(rule) for rule in changes if rule["change"] != "removed"]
    return {"before": "".join(before), "after": "".join(after), "before_header": "rules", "after_header": "rules"}


def main():
    module = AnsibleModule(
        argument_spec=dict(
            COMMON_ARGUMENTS,
            state={"type": "str", "choices": ["present", "absent", "exact"], "default": "present"},
            src={"type": "path"},
            rules={"type": "list", "elements": "dict", "options": RULE_ARGUMENTS},
            tags={"type": "list", "elements": "str", "default": []},
            allow_empty={"type": "bool", "default": False},
        ),
        mutually_exclusive=[("src", "rules")],
        required_one_of=[("src", "rules")],
        supports_check_mode=True,
    )
    state, tags = module.params["state"], module.params["tags"]
    if (state == "exact") != bool(tags):
        module.fail_json(msg="tags are needed by state=exact, and by no other")
    arguments = ["apply", "--json"]
    if module.check_mode:
        arguments.append("--dry-run")
    if state == "absent":
        arguments.append("--absent")
    for tag in tags:
        arguments += ["--prune-tag", tag]
    if module.params["allow_empty"]:
        arguments.append("--allow-empty")
    if module.params["src"]:
        objects, complaints = run(module, arguments + [module.params["src"]])
    else:
        lines = [json.dumps(object_of(module, rule)) + "\n" for rule in module.params["rules"]]
        objects, complaints = run(module, arguments + ["-"], data="".join(lines), binary_data=True)
    counts, changes = objects[-1], objects[:-1]
    for complaint in complaints:
        module.warn(complaint)
    result = {"changed": bool(changes), "changes": changes, "added": counts["added"], "removed": counts["removed"],
              "changed_rules": counts["changed"], "unchanged": counts["unchanged"]}
    if module._diff:
        result["diff"] = difference_of(changes)
    module.exit_json(**result)


if __name__ == "__main__":
    main()
