"""run_module.py TEST_MODULE.py PROGRAM [test names]: runs the tests of one module against PROGRAM."""

import importlib
import os
import sys
import unittest


def main():
    module_file, program = map(os.path.abspath, sys.argv[1:3])
    os.environ["QUORVANE_PROGRAM"] = program
    sys.path[:0] = [os.path.dirname(module_file), os.path.dirname(os.path.abspath(__file__))]
    module = importlib.import_module(os.path.splitext(os.path.basename(module_file))[0])
    result = unittest.main(module=module, argv=sys.argv[:1] + sys.argv[3:], exit=False, verbosity=2).result
    # A module whose tests were not found must not look like one whose tests passed.
    sys.exit(0 if result.wasSuccessful() and result.testsRun > 0 else 1)


if __name__ == "__main__":
    main()
