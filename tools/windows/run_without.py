#!/usr/bin/env python3
"""Runs a file of unittest tests without some of them: run_without.py FILE PROGRAM SOURCE_FOLDER [TEST...]."""

import runpy
import sys
import unittest

FILE, PROGRAM, SOURCE, *SKIPPED = sys.argv[1:]
sys.argv = [FILE, PROGRAM, SOURCE]
names = runpy.run_path(FILE, run_name="tests")
suite = unittest.TestSuite()
for case in (value for value in names.values() if isinstance(value, type) and issubclass(value, unittest.TestCase)):
    for test in unittest.defaultTestLoader.getTestCaseNames(case):
        if test not in SKIPPED:
            suite.addTest(case(test))
result = unittest.TextTestRunner(verbosity=1).run(suite)
sys.exit(not result.wasSuccessful() or result.testsRun == 0)
