"""The options of latbox-farm: what each takes, what it refuses, and the exact words; its table in the document is that of the code."""

from __future__ import annotations

import os
import re
import unittest
from fractions import Fraction

import support
import harness

from latbox.errors import UsageError
from latbox.farm import options

TIME = "a time above 0 is wanted, as 20, 0.5 or 2m (s, m, h, d)"
SWITCH = "0 or 1 is wanted"
FILE = "the name of a file is wanted"

GOOD = {
    "port": {"1": 1, "9123": 9123, "65535": 65535},
    "pieces": {"1": 1, "10000000": 10**7},
    "jobs": {"d": "d"},
    "catalog": {"host": "host", "a.b-c:9097": "a.b-c:9097"},
    "password": {"f": "f"},
    "verify": {"0": 0, "1": 1, "0.05": Fraction(1, 20), "5%": Fraction(1, 20), "100%": 1, ".5": Fraction(1, 2)},
    "job-rtime": {"20": 20, "0.5": 0.5, "2m": 120},
    "silence": {"20": 20, "1h": 3600},
    "all": {"0": False, "1": True}, "ties": {"1": True}, "count": {"1": True}, "quiet": {"1": True},
    "out": {"o": "o"}, "proof": {"p": "p"},
    "threads": {"0": 0, "1024": 1024},
}
BAD = {
    "port": ("a port from 1 to 65535 is wanted", ["0", "65536", "-1", "x", "", "1.5"]),
    "pieces": ("a number of pieces from 1 to 10000000 is wanted", ["0", "10000001", "1e3", ""]),
    "jobs": ("the name of a folder is wanted", [""]),
    "catalog": ("the name of a host is wanted, with or without :PORT", ["", "a b", "host:", "host:x", "a/b", "host:0", "host:65536"]),
    "password": (FILE, [""]), "out": (FILE, [""]), "proof": (FILE, [""]),
    "verify": ("a share from 0 to 1 is wanted, as 0.05 or 5%", ["", "x", "-1", "1.1", "101%", "5%%", "1/2"]),
    "job-rtime": (TIME, ["0", "x", "", "-1"]), "silence": (TIME, ["0", "inf"]),
    "all": (SWITCH, ["", "2", "yes"]), "ties": (SWITCH, ["x"]), "count": (SWITCH, ["x"]), "quiet": (SWITCH, ["x"]),
    "threads": ("a number of threads from 0 to 1024 is wanted", ["-1", "1025", "x", ""]),
}
SWITCHES = {"help", "version"}


class OptionsTest(unittest.TestCase):
    def refused(self, *arguments: str) -> str:
        with self.assertRaises(UsageError) as caught:
            options.parse(arguments)
        return str(caught.exception)

    def test_every_option_is_here(self) -> None:
        names = {option.name for option in options.TABLE}
        self.assertEqual(names, set(GOOD) | SWITCHES)
        self.assertEqual(set(GOOD), set(BAD))
        self.assertEqual(names - set(vars(options.Options())), {"job-rtime"})

    def test_what_is_taken(self) -> None:
        for name, values in GOOD.items():
            for text, value in values.items():
                for arguments in (["--%s=%s" % (name, text), "p.opt"], ["p.opt", "--" + name, text]):
                    taken = options.parse(arguments)
                    self.assertEqual(getattr(taken, name.replace("-", "_")), value, arguments)
                    self.assertEqual(taken.program, "p.opt")

    def test_what_is_refused(self) -> None:
        for name, (wanted, values) in BAD.items():
            for text in values:
                self.assertEqual(self.refused("--%s=%s" % (name, text), "p.opt"), "--%s=%s: %s" % (name, text, wanted))

    def test_names(self) -> None:
        self.assertEqual(self.refused("--piece=3", "p.opt"), "--piece=3: unknown option; is --pieces meant? --help shows them")
        self.assertEqual(self.refused("--port", "1", "--port=2", "p.opt"), "--port: it was given before")
        self.assertEqual(self.refused("--port"), "--port: a value is wanted, --port P")
        self.assertEqual(self.refused("--help=1"), "--help=1: it stands without a value")
        self.assertEqual(self.refused(), "a program is wanted: latbox-farm [options] FILE.opt")
        self.assertEqual(self.refused("a.opt", "b.opt"), "b.opt: one program is wanted, and a.opt was given")
        self.assertEqual(self.refused("--out=./a.opt", "a.opt"), "--out=./a.opt: that is the program")
        for option in ("--out=a.sol", "--out=x/b.opt", "--proof=a.lat"):
            self.assertEqual(self.refused(option, "a.opt"), option + ": a program or a file of the solver is not written over")

    def test_what_stands_beside_the_program(self) -> None:
        taken = options.parse(["some/p.opt"])
        self.assertEqual((taken.jobs, taken.out), ("some/p.jobs", "some/p.all"))

    def test_the_table_of_the_document(self) -> None:
        with open(os.path.join(support.ROOT, "docs", "machines.md"), encoding="utf-8") as file:
            text = file.read()
        told = re.findall(r"^\| `--([a-z-]+)` \| ", text, re.MULTILINE)
        self.assertEqual(told, [option.name for option in options.TABLE])


if __name__ == "__main__":
    harness.main()
