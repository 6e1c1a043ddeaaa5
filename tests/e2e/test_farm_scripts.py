#!/usr/bin/env python3
"""A folder of pieces without a farm: by GNU parallel, and as an array of Slurm."""

import os
import shutil
import subprocess
import unittest

import farm_support
import harness
from complete_kills import TASKS
from farm_support import load_tests, points_of  # noqa: F401
from test_complete import Case

# Fails where it is told to; else it is the program.
FAILING = """#!/bin/sh
for word; do
  if [ -e "$FAILING$word" ]; then exit 3; fi
done
exec %s "$@"
"""


def script(name):
    return os.path.join(harness.Settings.examples, "machines", name)


class ScriptsTest(Case):
    def setUp(self):
        super().setUp()
        self.write("p.opt", TASKS[0].text)
        self.run_plain("--quiet=1", "--out=alone.all", "p.opt")
        result = self.run_plain("--quiet=1", "--split=6", "--jobs=jobs", "p.opt")
        self.assertEqual(result.out, "split: 6 pieces, 1 to 6\n", result.err)
        os.mkdir(self.path("bin"))
        self.write_program("bin/latbox-all", FAILING % self.binary)

    def run_script(self, name, *arguments, **variables):
        environment = {**os.environ, "PATH": self.path("bin") + os.pathsep + os.environ["PATH"], "FAILING": self.path("fail"), **variables}
        return subprocess.run([script(name), *arguments], cwd=self.folder, env=environment, timeout=harness.LIMIT, capture_output=True,
                              text=True, check=False)

    def assert_joined(self):
        result = self.run_plain("--quiet=1", "--join=1", "--jobs=jobs", "--out=p.all")
        self.assertEqual((result.status, result.out), (10, "verdict: all 236\n"), result.err)
        self.assertEqual(points_of(self.read("p.all")), points_of(self.read("alone.all")))

    @unittest.skipUnless(shutil.which("parallel"), "GNU parallel is not installed (Debian: parallel)")
    def test_parallel(self):
        self.write("fail--job=3", "")
        done = self.run_script("parallel.sh", "jobs", "--will-cite", "-j2")
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertFalse(self.exists("jobs/3.result"))
        missing = self.run_plain("--quiet=1", "--join=1", "--jobs=jobs", "--out=p.all")
        self.assertEqual(missing.status, 1)
        self.assertIn("piece 3 has no result", missing.err)
        self.remove("fail--job=3")
        before = self.read("jobs/joblog").splitlines()
        done = self.run_script("parallel.sh", "jobs", "--will-cite", "-j2")
        self.assertEqual(done.returncode, 0, done.stderr)
        again = self.read("jobs/joblog").splitlines()[len(before) :]
        self.assertEqual(len(again), 1)
        self.assertIn("--job=3 ", again[0])
        self.assert_joined()

    def test_an_array_of_slurm(self):
        for task in range(1, 4):
            for first in ((), ("4",)):
                done = self.run_script("slurm_pieces.sh", "jobs", *first, SLURM_ARRAY_TASK_ID=str(task))
                self.assertEqual(done.returncode, 0, done.stderr)
        self.assert_joined()

    @unittest.skipUnless(farm_support.has_engine(), "the engine is not installed (Debian: coop-computing-tools)")
    def test_workers_of_slurm(self):
        """The options are those of the worker; the farm is not there."""
        self.write("word", "x\n")
        self.write_program("bin/work_queue_worker", '#!/bin/sh\nexec %s "$@" --connect-timeout=1\n' % shutil.which("work_queue_worker"))
        done = self.run_script("slurm_workers.sh", "word", "127.0.0.1", "1", TMPDIR=self.folder)
        self.assertNotIn("Use: ", done.stdout + done.stderr)
        self.assertNotIn("unrecognized option", done.stdout + done.stderr)


if __name__ == "__main__":
    harness.main()
