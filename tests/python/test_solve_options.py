"""The options of latbox-solve: what each takes, what it refuses, and the exact words."""

from __future__ import annotations

import os
import tempfile
import unittest
from fractions import Fraction

import support  # noqa: F401
import harness

from latbox.errors import UsageError
from latbox.front import options
from latbox.solving.settings import Gap

TIME = "a time above 0 is wanted, as 20, 0.5 or 2m (s, m, h, d)"
MEMORY = "an amount of memory of 128M or more is wanted, as 4G or 500M (K, M, G, T)"
NUMBER = "a number is wanted, as 12, -2.5 or 7/3"
GAP = "a number of 0 or more is wanted, as 5 or 0.1%"
POINTS = "a number of points, 1 or more, or all is wanted"
DIGITS = "a number of digits from 0 to 18 is wanted"
THREADS = "a number of threads from 1 to 1024 is wanted"
PORT = "a port of this machine is wanted, a number up to 65535"
WHOLE = "a whole number from 0 to 2^63 - 1 is wanted"
FILE = "the name of a file is wanted"
ENGINE = "auto, search or complete is wanted"
FORMAT = "opt, lp, mps, fixed-mps or free-mps is wanted"

GOOD = {
    "time": {"20": 20, "0.5": 0.5, ".5": 0.5, "2m": 120, "1.5h": 5400, "1d": 86400, "3s": 3, "5.": 5},
    "solutions": {"1": 1, "12": 12, "all": 0},
    "target": {"5": 5, "-2.5": Fraction(-5, 2), "7/3": Fraction(7, 3), "1e3": 1000, "+1": 1, "-1/2": Fraction(-1, 2)},
    "gap": {"0": Gap(Fraction(0)), "5": Gap(Fraction(5)), "1%": Gap(Fraction(1, 100), True),
            "0.1%": Gap(Fraction(1, 1000), True), "1/3": Gap(Fraction(1, 3))},
    "engine": {"auto": "auto", "search": "search", "complete": "complete"},
    "digits": {"0": 0, "18": 18},
    "format": {name: name for name in ("opt", "lp", "mps", "fixed-mps", "free-mps")},
    "threads": {"1": 1, "1024": 1024},
    "seed": {"0": 0, "9223372036854775807": 2**63 - 1},
    "memory": {"4G": 4 << 30, "500M": 500 << 20, "1.5GB": 3 << 29, "131072K": 128 << 20, "1T": 1 << 40},
    "output": {"o.txt": "o.txt"}, "check": {"o.txt": "o.txt"}, "proof": {"dir": "dir"}, "json": {"-": "-", "f": "f"},
    "log": {"l": "l"}, "view": {"0": 0, "8080": 8080, "65535": 65535},
}
BAD = {
    "time": (TIME, ["0", "-1", "x", "", "1e3", "2x", "1h30m", "inf", "nan", "0.0", "2 m", "\u0663", "1_0"]),
    "solutions": (POINTS, ["0", "-1", "1.5", "ALL", "", "1e3", "1000000000000000000000"]),
    "target": (NUMBER, ["x", "", "1/0", "inf", "nan", "1:1/2", "1e99999", "0x10", "1 2", "1_000"]),
    "gap": (GAP, ["-1", "%", "x%", "", "1%%", "-0.5%", "1/0", "nan"]),
    "engine": (ENGINE, ["both", "", "Auto"]),
    "digits": (DIGITS, ["-1", "19", "", "1.5", "x"]),
    "format": (FORMAT, ["xls", "", "LP"]),
    "threads": (THREADS, ["0", "-1", "1025", "", "1.5", "x"]),
    "seed": (WHOLE, ["-1", "", "x", "1.5", "9223372036854775808"]),
    "memory": (MEMORY, ["4", "4g", "", "127M", "-1G", "G", "4 G", "9999999T"]),
    "output": (FILE, [""]), "check": (FILE, [""]), "proof": (FILE, [""]), "json": (FILE, [""]), "log": (FILE, [""]),
    "view": (PORT, ["", "-1", "65536", "x", "80 80"]),
}
# Their value stands behind "=" alone, or is left out.
OPTIONAL = {"view": 0}
SWITCHES = {"all-values", "quiet", "zero-exit", "help", "version"}


class OptionsTest(unittest.TestCase):
    def refused(self, *arguments: str) -> str:
        with self.assertRaises(UsageError) as caught:
            options.parse(arguments)
        return str(caught.exception)

    def test_the_lists_name_every_option(self) -> None:
        names = {option.name for option in options.TABLE}
        self.assertEqual(set(GOOD) | SWITCHES | {"options"}, names)
        self.assertEqual(set(GOOD), set(BAD))
        self.assertEqual({option.name for option in options.TABLE if not option.value}, SWITCHES)

    def test_each_option_has_its_attribute(self) -> None:
        self.assertEqual({option.key for option in options.TABLE} | {"model"}, set(vars(options.Options())))

    def test_good_values_in_both_forms(self) -> None:
        for name, values in GOOD.items():
            for text, value in values.items():
                for arguments in ([f"--{name}={text}", "m.lp"], ["m.lp", f"--{name}", text])[: 1 if name in OPTIONAL else 2]:
                    parsed = options.parse(arguments)
                    self.assertEqual(getattr(parsed, name.replace("-", "_")), value, arguments)
                    self.assertEqual(parsed.model, "m.lp")

    def test_bad_values(self) -> None:
        for name, (wanted, texts) in BAD.items():
            for text in texts:
                for arguments in ([f"--{name}={text}", "m.lp"], ["m.lp", f"--{name}", text])[: 1 if name in OPTIONAL else 2]:
                    self.assertEqual(self.refused(*arguments), f"--{name}={text}: {wanted}")

    def test_values_that_may_be_left_out(self) -> None:
        for name, value in OPTIONAL.items():
            for arguments in (["--" + name, "m.lp"], ["m.lp", "--" + name]):
                parsed = options.parse(arguments)
                self.assertEqual((getattr(parsed, name), parsed.model), (value, "m.lp"))
            self.assertIn("\n  --%s[=" % name, options.usage())
        self.assertEqual({option.name for option in options.TABLE if option.default is not None}, set(OPTIONAL))
        self.assertIsNone(options.parse(["m.lp"]).view)
        self.assertEqual(self.refused("--view", "--check=p", "m"), "--view: there is no run to watch with --check")

    def test_switches(self) -> None:
        for name in SWITCHES:
            self.assertTrue(getattr(options.parse(["--" + name, "m.lp"]), name.replace("-", "_")))
            self.assertEqual(self.refused(f"--{name}=1", "m.lp"), f"--{name}=1: it stands without a value")
        self.assertTrue(options.parse(["-h"]).help)

    def test_what_is_no_option(self) -> None:
        for text, near in (("--tim=3", "time"), ("--rtime=0.5", "time"), ("--solution", "solutions"), ("---time=3", "time"),
                           ("--Time=3", "time"), ("--no-quiet", "quiet"), ("-t", ""), ("-quiet", "quiet"), ("-time=3", "time"), ("--iters=1e3", "")):
            guess = "is --%s meant? " % near if near else ""
            self.assertEqual(self.refused(text, "m.lp"), "%s: unknown option; %s--help shows them" % (text, guess))
        self.assertEqual(self.refused("--time=3", "--time", "4", "m.lp"), "--time: it was given before")
        self.assertEqual(self.refused("m.lp", "--time"), "--time: a value is wanted, --time T")

    def test_models(self) -> None:
        self.assertEqual(self.refused(), "a model is wanted: latbox-solve [options] MODEL")
        self.assertEqual(self.refused("a.lp", "b.lp"), "b.lp: one model is wanted, and a.lp was given")
        self.assertEqual(options.parse(["-"]).model, "-")
        self.assertEqual(options.parse(["--", "--time"]).model, "--time")
        self.assertEqual(options.parse(["--target", "-3", "m.lp"]).target, -3)

    def test_standard_output_is_for_json_alone(self) -> None:
        for name in ("output", "check", "proof", "log", "options"):
            self.assertEqual(self.refused("--%s=-" % name, "m.lp"),
                             "--%s=-: the name of a file is wanted; - goes with --json alone" % name)

    def test_what_excludes_each_other(self) -> None:
        self.assertEqual(self.refused("--engine=search", "--solutions=all", "m"),
                         "--solutions=all: the search alone cannot know that it has them all; --engine=auto or complete is wanted")
        for name in ("target", "gap"):
            self.assertEqual(self.refused("--solutions=2", f"--{name}=2", "m"),
                             f"--{name}: it goes with one point, not with --solutions")
        self.assertEqual(self.refused("--solutions=2", "--proof=p", "m"),
                         "--proof: it goes with one point or all, not with --solutions=2")
        self.assertEqual(self.refused("--engine=search", "--proof=p", "m"),
                         "--proof: the search proves nothing; --engine=auto or complete is wanted")

    def test_usage_names_every_option(self) -> None:
        for option in options.TABLE:
            self.assertIn("\n  --%s" % option.name, options.usage())


class OptionsFileTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = os.path.join(folder.name, "o.conf")

    def parse(self, text: str, *arguments: str) -> options.Options:
        with open(self.path, "w", encoding="utf-8") as file:
            file.write(text)
        return options.parse([*arguments, "--options", self.path, "m.lp"])

    def test_lines(self) -> None:
        parsed = self.parse("# a comment\n\n time = 2m \nquiet\nsolutions=all\n")
        self.assertEqual((parsed.time, parsed.quiet, parsed.solutions), (120, True, 0))
        # As some editors leave it.
        self.assertEqual(self.parse("\ufefftime = 2m\r\nquiet\r\n").time, 120)
        self.assertEqual((self.parse("view\n").view, self.parse("view = 8080\n").view), (0, 8080))

    def test_the_command_line_goes_before(self) -> None:
        self.assertEqual(self.parse("time=5\nseed=7\n", "--time=3").time, 3)
        self.assertEqual(self.parse("time=5\nseed=7\n", "--time=3").seed, 7)

    def test_bad_lines(self) -> None:
        for text, message in (
                ("\ntime=x\n", "line 2: time=x: " + TIME), ("time\n", "line 1: time: a value is wanted, time=T"),
                ("quiet=1\n", "line 1: quiet=1: it stands without a value"),
                ("tim=3\n", "line 1: tim: unknown option; is time meant? key=value is wanted, the keys are those of --help"),
                ("--time=3\n", "line 1: --time: unknown option; is time meant? key=value is wanted, the keys are those of --help"),
                ("options=x\n", "line 1: options: unknown option; key=value is wanted, the keys are those of --help"),
                ("seed=1\nseed=2\n", "line 2: seed: it was given before")):
            with self.assertRaises(UsageError) as caught:
                self.parse(text)
            self.assertEqual(str(caught.exception), "%s, %s" % (self.path, message))
        with self.assertRaises(UsageError):  # also where the command line has given it
            self.parse("time=x\n", "--time=3")

    def test_no_file(self) -> None:
        with self.assertRaises(UsageError) as caught:
            options.parse(["--options=/nonexistent", "m.lp"])
        self.assertEqual(str(caught.exception), "--options=/nonexistent: No such file or directory")


if __name__ == "__main__":
    harness.main()
