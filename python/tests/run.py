#!/usr/bin/env python3
"""Runs the tests of the package: 77, which means skipped, where numpy is missing.

PHOTRAK names the program. An interpreter without numpy hands over to the system's.
"""

import importlib.util
import os
import sys
import unittest

SYSTEM = "/usr/bin/python3"
here = os.path.dirname(os.path.abspath(__file__))

if importlib.util.find_spec("numpy") is None:
    if os.path.exists(SYSTEM) and not os.environ.get("PHOTRAK_PYTHON_TRIED"):
        os.environ["PHOTRAK_PYTHON_TRIED"] = "1"
        os.execv(SYSTEM, [SYSTEM, os.path.abspath(__file__), *sys.argv[1:]])
    print("numpy is missing (Debian: python3-numpy): skipped")
    sys.exit(77)

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(here))
suite = unittest.defaultTestLoader.discover(here, pattern="test_*.py")
result = unittest.TextTestRunner(verbosity=2).run(suite)
sys.exit(0 if result.wasSuccessful() else 1)
