#!/usr/bin/env python3
"""latbox-farm with the real engine on the loopback: workers and the manager die, and points, verdict and proof are as without."""

import os
import re
import stat
import subprocess
import unittest

import farm_support
import harness
from farm_support import FarmCase
from programs import opt
from test_complete import NINE, NOTHING, ONE, SMALLEST


class PlainTest(FarmCase):
    def farm(self, text, *options, workers=1):
        self.write("p.opt", text)
        farm = self.begin("--pieces=10", *options)
        for _ in range(workers):
            self.hire()
        status = farm.wait()
        return harness.Result(status, farm.out, farm.err)

    def test_small_programs(self):
        for name, text in (("one", ONE), ("none", NOTHING), ("nine", NINE), ("best", SMALLEST)):
            with self.subTest(name):
                alone = self.run_all(text, "--quiet=1")
                points = sorted(self.listed())
                result = self.farm(text, "--jobs=%s.jobs" % name)


if __name__ == "__main__":
    harness.main()
