"""The comparison of two builds says "same" of one build, and names what differs where a run comes out otherwise."""

import os
import stat
import subprocess
import sys

import harness

SCRIPT = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "scripts",
                      "same_results.py")


class SameResultsTest(harness.Case):
    def compare(self, new):
        done = subprocess.run(
            [sys.executable, SCRIPT, harness.Settings.binary, new, "--programs", "examples/two_sided.opt", "--iters", "2",
             "--keep", self.path("kept")],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=harness.LIMIT, check=False)
        return done.returncode, done.stdout.decode()

    def altered(self, text):
        """A solver that runs the real one and then edits the files that it left, by sed."""
        path = self.path("altered")
        self.write("altered", '#!/bin/sh\n"%s" "$@"\nstatus=$?\nsed -i "%s" p.sol p.lat\nexit $status\n'
                   % (harness.Settings.binary, text))
        os.chmod(path, os.stat(path).st_mode | stat.S_IXUSR)
        return path

    def test_a_build_is_the_same_as_itself(self):
        status, out = self.compare(harness.Settings.binary)
        self.assertEqual((status, out), (0, "2 same, 0 differs, 0 left out\n"))

    def test_times_do_not_count(self):
        status, out = self.compare(self.altered("s/ | [0-9]* | --help/ | 77 | --help/"))
        self.assertEqual((status, out), (0, "2 same, 0 differs, 0 left out\n"))

    def test_another_solution_is_named(self):
        status, out = self.compare(self.altered("s/^\\[ [0-9]*/[ 99/"))
        self.assertEqual(status, 1)
        self.assertIn("two_sided (defaults): ", out)
        self.assertIn("p.sol, line 1:", out)


if __name__ == "__main__":
    harness.main()
