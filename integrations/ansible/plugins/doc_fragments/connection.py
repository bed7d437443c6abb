# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type


class ModuleDocFragment(object):
    """The options of every module: which quorvanectl, and where."""

    DOCUMENTATION = r"""
options:
  executable:
    description: The program C(quorvanectl) of the managed machine.
    type: path
    default: quorvanectl
  root:
    description: A folder to put in front of the product's own locations.
    type: path
"""
