#!/usr/bin/python
# Copyright: Vantreal
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: rules_facts
short_description: Read a user's rules of file access
description:
  - Reads the rules of the user who is logged in on the host as facts.
version_added: 0.1.0
author: Vantreal (@vantreal)
options:
  system:
    description: Includes the rules of the system.
    type: bool
    default: false
  filter:
    description: Only rules that hold this text in path, process or tag.
    type: str
  src:
    description: A rules file on the host to read in place of the user's rules.
    type: path
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
    description: Changes nothing in any mode.
    support: full
  facts:
    description: Sets C(quorvane_rules).
    support: full
seealso:
  - module: vantreal.quorvane.rules
"""

EXAMPLES = r"""
- name: Which rules deny anything
  vantreal.quorvane.rules_facts:

- ansible.builtin.debug:
    msg: "{{ quorvane_rules | selectattr('policyClass', 'equalto', 1) | map(attribute='path') }}"
"""

RETURN = r"""
ansible_facts:
  description: The rules.
  returned: success
  type: dict
  contains:
    quorvane_rules:
      description: The objects that C(quorvanectl list --json) prints, in its order.
      type: list
      elements: dict
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.vantreal.quorvane.plugins.module_utils.quorvanectl import COMMON_ARGUMENTS, run


def main():
    module = AnsibleModule(
        argument_spec=dict(
            COMMON_ARGUMENTS,
            system={"type": "bool", "default": False},
            filter={"type": "str"},
            src={"type": "path"},
        ),
        supports_check_mode=True,
    )
    arguments = ["list", "--json"]
    if module.params["system"]:
        arguments.append("--system")
    if module.params["filter"]:
        arguments += ["--filter", module.params["filter"]]
    if module.params["src"]:
        arguments.append(module.params["src"])
    rules, complaints = run(module, arguments)
    for complaint in complaints:
        module.warn(complaint)
    module.exit_json(changed=False, ansible_facts={"quorvane_rules": rules})


if __name__ == "__main__":
    main()
