#!/usr/bin/env python3
"""The engine of latbox-farm: what comes first, with a real worker of one core."""

import os
import subprocess
import unittest

import farm_support
import harness

# All tasks are there before the worker is.
SUBMITS = """
import os, sys
sys.path.insert(0, sys.argv[1])
from latbox.farm.engine import Engine, Task
engine = Engine(None, "password", 5)
print(engine.port, flush=True)
for piece in range(1, 7):
    engine.submit(Task(piece, "true > out", {}, {}, "out", "out%d" % piece, piece == 6))
print("submitted", flush=True)
while not engine.is_empty:
    if outcome := engine.wait(1):
        print(outcome.task.piece, outcome.reason, flush=True)
engine.dismiss()
"""


@unittest.skipUnless(farm_support.has_engine(), "the engine is not installed: coop-computing-tools, python3-workqueue")
class OrderTest(harness.Case):
    def test_first_what_is_done_once_more_then_in_the_order_of_submission(self):
        self.write("password", "secret\n")
        python = os.path.join(os.path.dirname(harness.Settings.examples), "python")
        with subprocess.Popen([farm_support.PYTHON, "-c", SUBMITS, python], cwd=self.folder, stdout=subprocess.PIPE, text=True) as farm:
            self.addCleanup(farm.kill)
            port = int(farm.stdout.readline())
            self.assertEqual(farm.stdout.readline(), "submitted\n")
            worker = farm_support.Worker(self.path("worker"), self.path("password"), port)
            self.addCleanup(worker.kill)
            lines, _ = farm.communicate(timeout=harness.LIMIT)
        self.assertEqual(lines, "6 \n1 \n2 \n3 \n4 \n5 \n")


if __name__ == "__main__":
    harness.main()
