"""What scripts/run-tests makes of CTest's output: check_run_tests.py RUN_TESTS"""

import os
import subprocess
import sys
import tempfile
import unittest

RUN_TESTS = os.path.abspath(sys.argv.pop(1))
DOTS = "." * 300
CTEST = f"""#!/bin/sh
[ "$*" = "--preset debug -R x" ] || exit 1
cat <<'END'
Test project /somewhere
        Start   1: quick
  1/102 Test   #1: quick {DOTS}   Passed    0.01 sec
        Start   2: broken
  2/102 Test   #2: broken {DOTS}***Failed    0.20 sec
expected 1, got 2

        Start   3: endless
100/102 Test   #3: endless {DOTS}   Passed   12.50 sec
101/102 Test #101: a test {DOTS}   Passed    0.50 sec
102/102 Test #102: hangs {DOTS}***Timeout 300.00 sec

98% tests passed, 2 tests failed out of 102

Total Test time (real) = 313.21 sec
END
exit 8
"""


class RunTests(unittest.TestCase):
    def test_it_prints_what_matters_and_ends_as_ctest_does(self):
        with tempfile.TemporaryDirectory() as directory:
            with open(os.path.join(directory, "ctest"), "w") as file:
                file.write(CTEST)
            os.chmod(file.name, 0o755)
            result = subprocess.run([sys.executable, "-B", RUN_TESTS, "debug", "-R", "x"], capture_output=True,
                                    text=True, env={**os.environ, "PATH": directory + ":" + os.environ["PATH"]})
        self.assertEqual(result.returncode, 8)
        self.assertEqual(result.stdout, "Failed: broken\n"
                                        "expected 1, got 2\n"
                                        "100 of 102 tests\n"
                                        "Timeout: hangs\n"
                                        "98% tests passed, 2 tests failed out of 102\n"
                                        "\n"
                                        "5 tests; those that took longest:\n"
                                        "   300.0 s  hangs\n"
                                        "    12.5 s  endless\n"
                                        "     0.5 s  a test\n"
                                        "     0.2 s  broken\n"
                                        "     0.0 s  quick\n")


if __name__ == "__main__":
    unittest.main()
