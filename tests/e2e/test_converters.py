"""The converters: the program has the points of the model, the way back finds them, and what cannot be stated is
refused with its line."""

import csv
import io
import itertools
import json
import os
import random
import re
import shutil
import subprocess
import sys
import unittest
from fractions import Fraction

import checker
import harness
import models

TOOLS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools")
sys.path.insert(0, TOOLS)
sys.dont_write_bytecode = True

import lp_to_opt  # noqa: E402
import model as tools_model  # noqa: E402
import mps_to_opt  # noqa: E402
import name_map  # noqa: E402
import opt_writer  # noqa: E402

REACH = 4


def program_points(text):
    """{point in the model's coordinates: objective or None} of a program's text."""
    names = name_map.read_map(text)
    program = checker.Program(text)
    grids = [models.grid(int(d), low, high) for d, low, high in zip(program.dx, program.lx, program.rx)]
    found = {}
    for x in itertools.product(*grids):
        if program.violation(x) is None:
            value = None
            if names.objective:
                value = names.objective[1] + (checker.dot(program.at[0], x) if program.at else 0)
            found[tuple(column.original(v) for column, v in zip(names.columns, x))] = value
    return found


def converted(read, text, digits=None):
    return opt_writer.opt_text(read(text), "drawn", digits)


def mps_reader(fields):
    return lambda text: mps_to_opt.read_mps(text, fields)


class ToolsCase(harness.Case):
    def tool(self, name, *arguments, status=0):
        done = subprocess.run([sys.executable, os.path.join(TOOLS, name), *arguments], cwd=self.folder, check=False,
                              timeout=harness.LIMIT, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def example(self, name):
        shutil.copy(os.path.join(TOOLS, "examples", name), self.folder)


class RandomModelTest(ToolsCase):
    """All points and objective values of the model, and no others, are those of the program."""

    def compare(self, drawn, text, read, digits=None):
        expected = drawn.points(REACH)
        try:
            program = converted(read, text, digits)
        except tools_model.Refusal as refusal:
            self.assertRegex(str(refusal), "cannot hold|leave no", text)
            self.assertEqual(expected, {}, text)
            return 0
        # Not assertEqual, which would take minutes to print the difference.
        self.assertTrue(program_points(program) == expected, text + program)
        self.assert_form(checker.Program(program))
        return 1

    def assert_form(self, program):
        self.assertTrue(all(low == 0 for low in program.lx))
        for low, high in zip(program.lu, program.ru):
            self.assertLess(low, high)
            self.assertNotIn(checker.INF, (abs(low), abs(high)))

    def run_models(self, count, digits, text_of, read):
        kept = 0
        for seed in range(count):
            source = random.Random(seed)
            drawn = models.draw(source, digits)
            if not drawn.rows and drawn.objective is None:
                continue
            kept += self.compare(drawn, text_of(drawn, source), read, digits)
        # Most models must get through, or the comparison would say little.
        self.assertGreater(kept, count // 3)

    def test_mps_free(self):
        self.run_models(150, None, lambda drawn, source: models.Mps(drawn, source, False).text(),
                        mps_reader(mps_to_opt.free_fields))

    def test_mps_fixed(self):
        self.run_models(150, None, lambda drawn, source: models.Mps(drawn, source, True).text(),
                        mps_reader(mps_to_opt.fixed_fields))

    def test_mps_with_digits(self):
        self.run_models(80, 1, lambda drawn, source: models.Mps(drawn, source, False).text(),
                        mps_reader(mps_to_opt.free_fields))

    def test_lp(self):
        self.run_models(150, None, lambda drawn, source: models.Lp(drawn, source).text(), lp_to_opt.read_lp)

    def test_lp_with_digits(self):
        self.run_models(80, 1, lambda drawn, source: models.Lp(drawn, source).text(), lp_to_opt.read_lp)

    def test_the_comparison_sees_a_wrong_coefficient(self):
        source = random.Random(7)
        drawn = models.Model([("x", None, 0, 3)], [("r", [2], -models.INF, 4)], [1], False, 0)
        text = models.Mps(drawn, source, False).text().replace("r 2", "r 3")
        self.assertNotEqual(program_points(converted(mps_reader(mps_to_opt.free_fields), text)), drawn.points(REACH))


@unittest.skipUnless(shutil.which("glpsol"), "glpsol is not installed")
class PeerTest(ToolsCase):
    """Another reader of the same files finds the same optimum."""

    def peer_optimum(self, option, name, maximise):
        command = ["glpsol", option, name, "-o", "out"] + ["--max"] * maximise
        subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.PIPE, timeout=harness.LIMIT)
        text = self.read("out")
        if "INTEGER OPTIMAL" not in text:
            return None
        return float(re.search(r"^Objective: .* = (\S+)", text, re.MULTILINE).group(1))

    def own_optimum(self, text, maximise):
        values = program_points(text).values()
        return (max if maximise else min)(values, default=None)

    def compare(self, seeds, option, text_of, read):
        met = 0
        for seed in seeds:
            source = random.Random(seed)
            drawn = models.draw(source, plain=True)
            text = text_of(drawn, source)
            try:
                own = self.own_optimum(converted(read, text), drawn.maximise)
            except tools_model.Refusal:
                own = None
            self.write("model", text)
            peer = self.peer_optimum(option, "model", drawn.maximise and option != "--lp")
            self.assertEqual(own is None, peer is None, text)
            if own is not None:
                self.assertAlmostEqual(float(own), peer, 6, text)
                met += 1
        self.assertGreater(met, 5)

    def test_free_mps(self):
        self.compare(range(1000, 1025), "--freemps", lambda d, s: models.Mps(d, s, False, False).text(),
                     mps_reader(mps_to_opt.free_fields))

    def test_fixed_mps(self):
        self.compare(range(1100, 1125), "--mps", lambda d, s: models.Mps(d, s, True, False).text(),
                     mps_reader(mps_to_opt.fixed_fields))

    def test_lp(self):
        self.compare(range(1200, 1225), "--lp", self.peer_lp, lp_to_opt.read_lp)

    def test_what_the_peer_writes(self):
        """The peer reads a model and writes it in all three forms; each is read here as the model."""
        for seed in range(1300, 1312):
            source = random.Random(seed)
            drawn = models.draw(source, plain=True)
            self.write("model", self.peer_lp(drawn, source))
            command = ["glpsol", "--lp", "model", "--check", "--wmps", "fixed", "--wfreemps", "free", "--wlp", "lp"]
            subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.PIPE, timeout=harness.LIMIT)
            for name, read in (("fixed", mps_reader(mps_to_opt.fixed_fields)), ("lp", lp_to_opt.read_lp),
                               ("free", mps_reader(mps_to_opt.free_fields))):
                text = self.read(name)
                names = [variable.name for variable in read(text).variables]
                # The peer may change the order of the variables.
                order = [names.index(name) for name, _, _, _ in drawn.variables]
                try:
                    points = program_points(converted(read, text))
                except tools_model.Refusal as refusal:
                    self.assertRegex(str(refusal), "cannot hold|leave no", text)
                    points = {}
                points = {tuple(x[i] for i in order): value for x, value in points.items()}
                self.assertTrue(points == drawn.points(REACH), text)

    def peer_lp(self, drawn, source):
        """In the words that the peer knows, and without the row that asks for nothing."""
        lines = models.Lp(drawn, source).text().replace("minimise", "minimize")
        return re.sub(r" all: .*?>= -inf\n", "", lines, flags=re.DOTALL)


MPS = """NAME T
ROWS
 N COST
 L R1
 G R2
COLUMNS
 M1 'MARKER' 'INTORG'
 X COST 1 R1 1
 Y COST 1 R1 1
 Y R2 1
 M2 'MARKER' 'INTEND'
RHS
 RHS R1 4 R2 1
BOUNDS
 UP BND X 3
 UP BND Y 3
ENDATA
"""

MPS_REFUSED = (
    # what is changed, into what, the line, what is said
    ("NAME T", "", None, None),
    ("M1 'MARKER' 'INTORG'", "M1 'MARKER' 'INTEND'", 7, "INTEND stands twice"),
    (" M2 'MARKER' 'INTEND'\n", "", 16, "INTORG without INTEND"),
    ("'MARKER' 'INTORG'", "'MARKER' 'SOSORG'", 7, "only INTORG"),
    (" N COST", " Q COST", 3, "unknown type of row"),
    (" G R2", " G R1", 5, "row R1 stands twice"),
    (" G R2", " G R2 R3", 5, "a type and a name"),
    ("X COST 1 R1 1", "X COST 1 R1", 8, "one or two pairs"),
    ("X COST 1 R1 1", "X COST 1 R9 1", 8, "unknown row 'R9'"),
    ("X COST 1 R1 1", "X COST 1 R1 nan", 8, "not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 inf", 8, "not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 1e99999999", 8, "exponent"),
    ("X COST 1 R1 1", "X COST 1 COST 1", 8, "stands twice in row COST"),
    (" Y R2 1\n", " Y R1 2\n", 10, "stands twice in row R1"),
    (" Y R2 1\n", " X R2 1\n", 10, "variable X stands twice"),
    ("RHS R1 4 R2 1", "RHS R1 4 R1 1", 13, "two right-hand sides"),
    ("RHS R1 4 R2 1", "RHS R1 4\n RHS2 R2 1", 14, "a second set in RHS"),
    ("RHS R1 4 R2 1", "RHS R1 4 R2 x", 13, "not a number"),
    ("RHS R1 4 R2 1", "RHS R2 9", 5, "its greatest value is 3, and it asks for 9"),
    ("RHS R1 4 R2 1", "RHS R1 -1", 4, "its least value is 0, and it asks for -1"),
    ("BOUNDS\n", "RANGES\n RNG COST 1\nBOUNDS\n", 15, "cannot have a range"),
    ("BOUNDS\n", "RANGES\n RNG R1 1 R1 2\nBOUNDS\n", 15, "two ranges"),
    ("UP BND X 3", "UP BND Z 3", 15, "unknown column 'Z'"),
    ("UP BND X 3", "ZZ BND X 3", 15, "unknown type of bound"),
    ("UP BND X 3", "SC BND X 3", 15, "semicontinuous"),
    ("UP BND X 3", "UP BND X 3 4", 15, "a set, a column and a value"),
    ("UP BND X 3", "UP BND X 3\n UP BND X 4", 16, "two bounds of type UP"),
    ("UP BND X 3", "UP OTHER X 3", 16, "a second set in BOUNDS"),
    ("UP BND X 3", "UP BND X 3\n LO BND X 4", 16, "leave no value"),
    ("UP BND X 3", "UP BND X 0.7\n LO BND X 0.2", 16, "leave no whole number"),
    ("UP BND X 3", "FX BND X 0.5", 15, "leave no whole number"),
    ("UP BND X 3", "LO BND X inf", 15, "leave no value"),
    ("UP BND Y 3", "PL BND Y", 5, None),
    ("UP BND X 3\n UP BND Y 3", "FR BND X\n FR BND Y", 4, "no least value to close it"),
    ("RHS\n", "QUADOBJ\n", 12, "quadratic objective"),
    ("RHS\n", "SOS\n", 12, "special ordered sets"),
    ("RHS\n", "INDICATORS\n", 12, "indicator"),
    ("RHS\n", "FOO\n", 12, "unknown section FOO"),
    ("RHS\n", "ROWS\n", 12, "section ROWS stands twice"),
    ("NAME T\n", "NAME T\nOBJSENSE\n UP\n", 3, "no sense"),
    ("NAME T\n", "NAME T\nOBJNAME\n R1\n", 19, "is no free row"),
    ("NAME T\n", "NAME T\n X 1\n", 2, "outside of all sections"),
    ("ENDATA\n", "", 17, "without ENDATA"),
    (" M1 'MARKER' 'INTORG'\n", " M1 'MARKER' 'INTORG'\n M2 'MARKER' 'INTEND'\n Z COST 1\n"
     " M3 'MARKER' 'INTORG'\n", 9, "variable Z is continuous"),
)

LP = """Minimize
 cost: x + 2 y
Subject To
 c1: x + y <= 4
 c2: y >= 1
Bounds
 x <= 3
 y <= 3
General
 x y
End
"""

LP_REFUSED = (
    ("Minimize\n", "", 1, "must begin with"),
    ("End\n", "", 11, "without End"),
    ("End\n", "End\n x\n", 12, "behind End"),
    ("x + 2 y", "x + [ y ^ 2 ] / 2", 2, "quadratic"),
    ("x + 2 y", "x + y ^ 2", 2, "quadratic"),
    ("x + 2 y", "x + 2 3 y", 2, "expected a sign or Subject To, found 3"),
    ("x + 2 y", "x + 2 y +", 2, "expected a term"),
    ("x + 2 y", "x + 1e99999999 y", 2, "exponent"),
    ("x + 2 y", "x + ? * y", 2, "expected"),
    ("c2: y >= 1", "c1: y >= 1", 5, "row c1 stands twice"),
    ("c2: y >= 1", "c2: y >= nan", 5, "expected a number, found nan"),
    ("c2: y >= 1", "c2: y = inf", 5, "equals an infinity"),
    ("c2: y >= 1", "c2: y >= x", 5, "expected a number, found x"),
    ("c2: y >= 1", "c2: y >= 2 x", 5, "expected the end of the row"),
    ("c2: y >= 1", "c2: y", 5, "expected <=, >= or ="),
    ("c2: y >= 1", "c2: 1 <= y >= 2", 5, "do not go together"),
    ("c2: y >= 1", "c2: 3 <= y <= 2", 5, "its sides are 3 and 2"),
    ("c2: y >= 1", "c2: x = 1 -> y >= 1", 5, "indicator"),
    ("c2: y >= 1", "c2: y >= 9", 5, "its greatest value is 3"),
    ("c2: y >= 1", "c2: 0 y >= 9", 5, "its greatest value is 0"),
    ("x <= 3", "z <= 3", 7, "unknown variable z"),
    ("x <= 3", "x <= -3", 7, "leave no value"),
    ("x <= 3", "x", 8, "expected <=, >=, = or free"),
    ("x <= 3", "0.2 <= x <= 0.7", 7, "leave no whole number"),
    ("General\n x y", "General\n x z", 10, "unknown variable z"),
    ("General\n x y", "General\n x", 8, "variable y is continuous"),
    ("General\n x y", "Semi-continuous\n x y", 9, "semicontinuous"),
    ("General\n x y", "SOS2\n s1: x : 1", 9, "special ordered sets"),
    ("Bounds\n", "Lazy Constraints\n", 6, "lazy rows"),
    ("Bounds\n", "General Constraints\n", 6, "general constraints"),
    ("Bounds\n", "st\n", 6, "a second section of rows"),
    (" y <= 3\n", " y free\n", 5, None),
    (" y <= 3\n", " y >= -inf\n", 5, None),
    (" c2: y >= 1\nBounds\n x <= 3\n y <= 3\n", " c2: y - x >= 1\nBounds\n x free\n y free\n", 4, "no least value"),
)


class RefusalTest(ToolsCase):
    def assert_table(self, table, good, read):
        for old, new, line, reason in table:
            self.assertEqual(good.count(old), 1, old)
            text = good.replace(old, new)
            if reason is None:
                converted(read, text)  # the rows give what the bounds lack
                continue
            with self.assertRaises(tools_model.Refusal, msg=text) as caught:
                converted(read, text)
            self.assertIn(reason, str(caught.exception), text)
            self.assertEqual(caught.exception.line, line, text + str(caught.exception))

    def test_mps(self):
        self.assert_table(MPS_REFUSED, MPS, mps_reader(mps_to_opt.free_fields))

    def test_lp(self):
        self.assert_table(LP_REFUSED, LP, lp_to_opt.read_lp)

    def test_command_line(self):
        """Exit status 1, the file and the line on standard error, and no output file."""
        self.write("bad.mps", MPS.replace("UP BND X 3", "SC BND X 3"))
        result = self.tool("mps_to_opt.py", "bad.mps", "bad.opt", status=1)
        self.assertEqual(result.err,
                         "bad.mps, line 15: SC: a semicontinuous variable cannot be stated in a .opt file\n")
        self.assertEqual(result.out, "")
        self.assertFalse(self.exists("bad.opt"))
        self.assertIn("No such file", self.tool("lp_to_opt.py", "none.lp", status=1).err)
        self.write("bad.lp", b"\x00\xff\xfe")
        self.assertIn("must begin with", self.tool("lp_to_opt.py", "bad.lp", status=1).err)
        self.write("empty.mps", "")
        self.assertIn("without ENDATA", self.tool("mps_to_opt.py", "empty.mps", status=1).err)

    def test_empty_names_of_fixed_lines(self):
        for old, new, line in ((" G  R2\n", " G  \n", 5), ("    Y         R2 ", "              R2 ", 10)):
            text = fixed(MPS)
            self.assertIn(old, text)
            with self.assertRaises(tools_model.Refusal) as caught:
                mps_to_opt.read_mps(text.replace(old, new, 1), mps_to_opt.fixed_fields)
            self.assertIn("empty name", str(caught.exception))
            self.assertEqual(caught.exception.line, line)

    def test_text_between_fixed_fields(self):
        text = fixed(MPS).replace("    X         COST      1", "    X         COST      1" + " " * 11 + "7")
        with self.assertRaisesRegex(tools_model.Refusal, "between the fields"):
            mps_to_opt.read_mps(text, mps_to_opt.fixed_fields)


def fixed(text):
    """A free text in the columns of the fixed form."""
    lines, section = [], ""
    for line in text.split("\n"):
        if not line.startswith(" "):
            section = line
            lines.append(line)
            continue
        words = line.split()
        kind = words.pop(0) if section in ("ROWS", "BOUNDS") else ""
        if "'MARKER'" in words:
            words.insert(2, "")
        lines.append((" %-2s %-8s  %-8s  %-12s   %-8s  %-12s" % tuple([kind] + (words + [""] * 5)[:5])).rstrip())
    return "\n".join(lines)


class GarbageTest(ToolsCase):
    """Whatever the text, a reader makes a model or refuses; nothing else comes out of it."""

    def assert_read_or_refused(self, read, text):
        try:
            converted(read, text)
        except tools_model.Refusal:
            pass

    def mutants(self, text, seed, count):
        source = random.Random(seed)
        words = text.split(" ") + ["inf", "-", "1e30", "nan", "<=", ":", "\n", "\n ", "", "'MARKER'", "\\", "[", "\t",
                                   "\x00", "free"]
        for _ in range(count):
            mutant = text.split(" ")
            for _ in range(source.randint(1, 4)):
                at = source.randrange(len(mutant))
                mutant[at:at + source.randint(0, 2)] = [source.choice(words) for _ in range(source.randint(0, 2))]
            yield " ".join(mutant)
            at = source.randrange(len(text))
            yield text[:at] + source.choice("\n -+.:=<[1eE\u00e9\x00") + text[at + source.randint(0, 3):]

    def test_mps(self):
        for text, fields in ((MPS, mps_to_opt.free_fields), (fixed(MPS), mps_to_opt.fixed_fields)):
            for mutant in self.mutants(text, 1, 400):
                self.assert_read_or_refused(mps_reader(fields), mutant)

    def test_lp(self):
        for mutant in self.mutants(LP, 2, 800):
            self.assert_read_or_refused(lp_to_opt.read_lp, mutant)

    def test_cut_anywhere(self):
        """A file without its end is refused: half a model is another model."""
        for text, read in ((MPS, mps_reader(mps_to_opt.free_fields)), (LP, lp_to_opt.read_lp)):
            for at in range(len(text) - 2):
                self.assertRaises(tools_model.Refusal, converted, read, text[:at])

    def test_names_in_any_encoding(self):
        """Bytes pass through, whatever they mean."""
        name = b"x\xe9\xff\xc3\xa4"
        self.write("m.mps", MPS.encode().replace(b"X ", name + b" "))
        self.tool("mps_to_opt.py", "m.mps", "m.opt")
        self.assertIn(b"//@ variable 0 1 " + name + b"\n", self.read_bytes("m.opt"))
        self.assert_ends_well(self.run_solver("--iters=3", "m.opt"))
        done = subprocess.run([sys.executable, os.path.join(TOOLS, "sol_to_names.py"), "m.opt"], cwd=self.folder,
                              check=True, stdout=subprocess.PIPE, timeout=harness.LIMIT)
        self.assertIn(name, done.stdout)


class MpsDialectTest(ToolsCase):
    """What the forms leave open, and what is done here."""

    def points(self, old, new):
        self.assertEqual(MPS.count(old), 1)
        return program_points(converted(mps_reader(mps_to_opt.free_fields), MPS.replace(old, new)))

    def ranges(self, points):
        return [(min(x), max(x)) for x in zip(*points)]

    def test_fixed_and_free_are_the_same(self):
        free = mps_to_opt.read_mps(MPS, mps_to_opt.free_fields)
        columns = mps_to_opt.read_mps(fixed(MPS), mps_to_opt.fixed_fields)
        self.assertEqual(opt_writer.opt_text(free, "m"), opt_writer.opt_text(columns, "m"))

    def test_kinds_of_bounds(self):
        for kind, low, high in (("LO BND X 2", 2, 4), ("UP BND X 2", 0, 2), ("FX BND X 2", 2, 2), ("BV BND X", 0, 1),
                                ("BV BND X 1", 0, 1), ("LI BND X 2", 2, 4), ("UI BND X 2", 0, 2),
                                ("PL BND X", 0, 3), ("UP BND X 1e30", 0, 3),
                                ("LO BND X -2\n UP BND X -1", -2, -1), ("LO BND X 0.5\n UP BND X 2.5", 1, 2)):
            points = self.points("UP BND X 3", kind)
            self.assertEqual(self.ranges(points)[0], (low, min(high, 3)), kind)

    def test_bounds_without_a_set(self):
        for kind, low, high in (("BV X", 0, 1), ("BV X 1", 0, 1), ("FR X", -3, 4), ("MI X\n UP X 3", -3, 3)):
            text = MPS.replace("UP BND X 3", kind).replace("UP BND Y", "UP Y")
            text = text.replace("BOUNDS\n", "RANGES\n RNG R1 4\nBOUNDS\n")
            points = program_points(converted(mps_reader(mps_to_opt.free_fields), text))
            self.assertEqual(self.ranges(points)[0], (low, min(high, 3)), kind)

    def test_bounds_that_reach_below(self):
        old = "RHS\n RHS R1 4 R2 1\nBOUNDS\n UP BND X 3"
        for kind in ("UP BND X -1", "MI BND X\n UP BND X -1", "FR BND X\n UP BND X -1"):
            new = "RHS\n RHS R1 2 R2 1\nRANGES\n RNG R1 7\nBOUNDS\n " + kind
            self.assertEqual(self.ranges(self.points(old, new))[0], (-8, -1), kind)

    def test_a_negative_upper_bound_is_noted(self):
        self.write("m.mps", MPS.replace("UP BND X 3", "UP BND X -1").replace("BOUNDS", "RANGES\n RNG R1 9\nBOUNDS"))
        result = self.tool("mps_to_opt.py", "m.mps")
        self.assertEqual(result.err, "m.mps, line 17: note: X has a negative upper bound and no lower one before it: "
                                     "taken as not bounded below\n")

    def test_marker_columns_without_bounds(self):
        self.write("m.mps", MPS.replace(" UP BND X 3\n", ""))
        for option, high in (("--marker-bounds=1", 1), ("--marker-bounds=inf", 3)):
            result = self.tool("mps_to_opt.py", option, "m.mps")
            self.assertIn("1 integer column(s) without a bound, the first is X", result.err)
            self.assertEqual(self.ranges(program_points(result.out))[0], (0, high))

    def test_ranges(self):
        table = (("L", 4, 2, 2, 4), ("L", 4, -2, 2, 4), ("G", 2, 3, 2, 5), ("G", 2, -3, 2, 5), ("E", 3, 1, 3, 4),
                 ("E", 3, -1, 2, 3), ("E", 3, 0, 3, 3))
        for kind, right, width, low, high in table:
            text = (MPS.replace(" L R1", " %s R1" % kind).replace("RHS R1 4", "RHS R1 %d" % right)
                    .replace("BOUNDS\n", "RANGES\n RNG R1 %d\nBOUNDS\n" % width))
            points = program_points(converted(mps_reader(mps_to_opt.free_fields), text))
            sums = [x + y for x, y in points]
            self.assertEqual((min(sums), max(sums)), (low, high), (kind, width))

    def test_sense_and_constant(self):
        for head in ("OBJSENSE\n MAX\n", "OBJSENSE MAXIMIZE\n", "OBJSENSE\n maximise\n"):
            text = head + MPS.replace("RHS R1 4 R2 1", "RHS R1 4 R2 1\n RHS COST -2.5")
            program = converted(mps_reader(mps_to_opt.free_fields), text)
            self.assertEqual(checker.Program(program).dt, [checker.INF])
            self.assertEqual(set(program_points(program).values()), {Fraction(k, 2) for k in (7, 9, 11, 13)})
        self.assertEqual(checker.Program(converted(mps_reader(mps_to_opt.free_fields), MPS)).dt, [-checker.INF])

    def test_objname_and_other_free_rows(self):
        text = "OBJNAME\n SECOND\n" + MPS.replace(" L R1\n", " N SECOND\n L R1\n").replace("X COST 1", "X SECOND 7")
        program = converted(mps_reader(mps_to_opt.free_fields), text)
        self.assertEqual(checker.Program(program).at, [[7, 0]])
        self.assertIn("// row COST has no sides and is left out\n", program)

    def test_names_with_blanks(self):
        text = fixed(MPS).replace("X      ", "MY X   ")
        self.write("m.mps", text)
        columns = [column.name for column in name_map.read_map(self.tool("mps_to_opt.py", "m.mps").out).columns]
        self.assertEqual(columns, ["MY X", "Y"])
        self.assertIn("one or two pairs", self.tool("mps_to_opt.py", "--free", "m.mps", status=1).err)

    def test_comments_of_fixed_lines(self):
        text = fixed(MPS).replace("    Y         R2        1", "    Y         R2        1" + " " * 14 + "$ a remark")
        self.assertIn("$", text)
        mps_to_opt.read_mps(text, mps_to_opt.fixed_fields)

    def test_exact_numbers(self):
        text = MPS.replace("X COST 1 R1 1", "X COST 1.00000000000000000001 R1 12345678901234567890.5")
        text = text.replace("RHS R1 4", "RHS R1 2D19").replace("Y COST 1 R1 1", "Y COST -.25e-1")
        program = checker.Program(converted(mps_reader(mps_to_opt.free_fields), text))
        self.assertEqual(program.at, [[1 + Fraction(1, 10**20), Fraction(-1, 40)]])
        self.assertEqual(program.au[0], [12345678901234567890 + Fraction(1, 2), 0])
        # The greatest value of the row that is not above 2e19.
        self.assertEqual(program.ru[0], 12345678901234567890 + Fraction(1, 2))


class LpDialectTest(ToolsCase):
    def points(self, text):
        return program_points(converted(lp_to_opt.read_lp, text))

    def test_sections_on_one_line_and_any_case(self):
        text = "MAX x st x<=3.5 END".replace(" st", "\nST").replace(" END", "\ngen x\nEND\n")
        self.assertEqual(self.points(text), {(k,): k for k in range(4)})

    def test_relations_and_sides(self):
        for row, low, high in (("x <= 2", 0, 2), ("x =< 2", 0, 2), ("x < 2", 0, 2), ("x >= 2", 2, 3), ("x => 2", 2, 3),
                               ("x > 2", 2, 3), ("x = 2", 2, 2), ("2 >= x", 0, 2), ("2 <= x", 2, 3),
                               ("1 <= x <= 2", 1, 2), ("2 >= x >= 1", 1, 2), ("-inf <= x <= 2", 0, 2),
                               ("x + 1 <= 3", 0, 2), ("- x >= - 2", 0, 2),
                               ("x + x <= 5", 0, 2), ("x <= + 2", 0, 2), ("x >= -infinity", 0, 3), ("2x<=4", 0, 2),
                               ("-2 <= -x <= -1", 1, 2), ("- - x <= 2", 0, 2)):
            text = "min\n x\nst\n c: %s\nbounds\n x <= 3\ngeneral\n x\nend\n" % row
            self.assertEqual(set(self.points(text)), {(k,) for k in range(low, high + 1)}, row)

    def test_rows_may_lack_labels(self):
        text = "min x + y\nst\n R2: x <= 2\n y <= 1\n 1 <= x + y\n x - y >= 0\nint\n x y\nend\n"
        model = lp_to_opt.read_lp(text)
        self.assertEqual([row.name for row in model.rows], ["R2", "R3", "R4", "R5"])
        self.assertEqual(set(self.points(text)), {(1, 0), (2, 0), (1, 1), (2, 1)})

    def test_bounds(self):
        for lines, low, high in (("x <= 2", 0, 2), ("-2 <= x <= 2", -2, 2), ("2 >= x >= -2", -2, 2), ("x = 1", 1, 1),
                                 ("x free\n x <= 1", -5, 1), ("x >= -3\n x <= -1", -3, -1), ("-inf <= x <= 1", -5, 1),
                                 ("x <= 1e20", 0, 5), ("-3 <= x", -3, 5), ("1.5 <= x <= 3.5", 2, 3), ("x FREE", -5, 5)):
            text = "min\nst\n c: -5 <= x <= 5\nbounds\n %s\ngeneral\n x\nend\n" % lines
            self.assertEqual(set(self.points(text)), {(k,) for k in range(low, high + 1)}, lines)

    def test_binary_keeps_a_fixed_variable(self):
        text = "min\nst\n c: x + y <= 5\nbounds\n x = 1\n y <= 9\nbinary\n x y\nend\n"
        self.assertEqual(set(self.points(text)), {(1, 0), (1, 1)})

    def test_objective_constant_and_comments(self):
        text = "\\ head\nmax 2 x - 3 \\ more \\ more\n + 0.5\nst\n x <= 1\ninteger\n x\nend \\ done\n"
        self.assertEqual(self.points(text), {(0,): Fraction(-5, 2), (1,): Fraction(-1, 2)})

    def test_odd_names(self):
        text = "min a*/b\nst\n c: x[1] + a!b <= 1\ngeneral\n x[1] a!b\nend\n".replace("a*/b", "a!b")
        names = [column.name for column in name_map.read_map(converted(lp_to_opt.read_lp, text)).columns]
        self.assertEqual(names, ["a!b", "x[1]"])


class ProgramFormTest(ToolsCase):
    """What the solver asks of a program is kept: finite sides, equations where the sides are equal, a box from 0."""

    def program(self, rows, bounds):
        text = "min x + y\nst\n %s\nbounds\n %s\ngeneral\n x y\nend\n" % (rows, bounds)
        return checker.Program(converted(lp_to_opt.read_lp, text))

    def test_one_side_is_closed_by_the_activity(self):
        program = self.program("c: 2 x - 3 y <= 4", "-1 <= x <= 5\n 2 <= y <= 4")
        self.assertEqual((program.lu, program.ru), ([-14 + 8], [4 + 8]))
        self.assertEqual((program.lx, program.rx), ([0, 0], [6, 2]))

    def test_equal_sides_are_an_equation(self):
        """Closing may make the sides equal; so may the model, with two sides or a range of 0."""
        for rows in ("c: x + y >= 7", "c: 7 <= x + y <= 7"):
            program = self.program("d: x - y = 1\n " + rows, "x <= 4\n y <= 3")
            self.assertEqual((program.bg, program.au), ([1, 7], []))

    def test_sides_that_the_grid_makes_equal(self):
        """The solver would find them equal after its own rounding, and end."""
        program = self.program("c: 1 <= 2 x + 4 y <= 3\n d: 0.5 <= 0.25 x + y <= 0.6", "x <= 4\n y <= 3")
        self.assertEqual((program.bg, program.au), ([2, Fraction(1, 2)], []))

    def test_sides_move_to_values_of_the_row(self):
        program = self.program("c: 3 <= 2 x + 4 y <= 9", "1 <= x <= 4\n y <= 3")
        self.assertEqual((program.lu, program.ru), ([2], [6]))
        with self.assertRaisesRegex(tools_model.Refusal, "row c cannot hold: it has no value from 3 to 3"):
            self.program("c: 2 x + 4 y = 3", "1 <= x <= 4\n y <= 3")

    def test_a_row_of_fixed_variables_is_left_out(self):
        program = self.program("c: x >= 1\n d: x + y >= 3", "x = 2\n y <= 3")
        self.assertEqual((program.au, program.lu, program.ru), ([[1, 1]], [1], [3]))

    def test_missing_bounds_come_from_rows(self):
        program = self.program("c: x + 2 y <= 7\n d: x - y >= -1", "x >= 1")
        self.assertEqual(program.rx, [6, 3])

    def test_a_free_variable_stays_free(self):
        program = self.program("c: x + y = 3", "x free\n y free")
        self.assertEqual((program.lx, program.rx), ([-checker.INF] * 2, [checker.INF] * 2))

    def test_a_variable_with_an_upper_bound_only_is_counted_downwards(self):
        text = "min x + y\nst\n c: x + y = 3\nbounds\n -inf <= x <= 5\n y free\ngeneral\n x y\nend\n"
        program = converted(lp_to_opt.read_lp, text)
        self.assertIn("//@ variable 5 -1 x\n", program)
        self.assertEqual(checker.Program(program).ag, [[-1, 1]])
        # y = 3 - x gets its lower bound -2 from the row, and is counted from there.
        self.assertIn("//@ variable -2 1 y\n", program)
        self.assertEqual(checker.Program(program).bg, [0])

    def test_no_rows(self):
        """The number of variables stands in the rows, so there is one in any case."""
        program = self.program("", "x <= 1\n y <= 1")
        self.assertEqual(program.ag, [])
        text = "min\nst\n c: 0 x >= -1\nbounds\n x <= 2\ngeneral\n x\nend\n"
        self.assertEqual(set(program_points(converted(lp_to_opt.read_lp, text))), {(0,), (1,), (2,)})

    def test_an_objective_that_is_constant_is_no_target(self):
        text = "min 0 x + 4\nst\n c: x >= 1\nbounds\n x <= 2\ngeneral\n x\nend\n"
        program = converted(lp_to_opt.read_lp, text)
        self.assertEqual(checker.Program(program).dt, [])
        self.assertEqual(program_points(program), {(1,): 4, (2,): 4})

    def test_a_continuous_variable_that_is_fixed(self):
        text = "min x + y\nst\n c: x + y >= 1\nbounds\n x <= 2\n y = 0.125\ngeneral\n x\nend\n"
        self.assertEqual(program_points(converted(lp_to_opt.read_lp, text)),
                         {(k, Fraction(1, 8)): k + Fraction(1, 8) for k in (1, 2)})

    def test_no_variables(self):
        with self.assertRaisesRegex(tools_model.Refusal, "no variables"):
            converted(lp_to_opt.read_lp, "min\nst\nend\n")


SOLUTIONS = """[ 1 0 ] | -1 | [ 1 ] | 0 | 3 | --verb=0 | 2.2.2
[ 0 2:1/4 ] | 5 | [ 5 ] | 0 | 75 | --verb=0 | 2.2.2
"""
PROGRAM = """// converted from x
//@ map 1
//@ problem MY PROBLEM
//@ objective max -7/2 COST
//@ variable 5 -1 A "quoted, name"
//@ variable 1/2 1 B

[ inf ]
[
  [ 2 -1/2 ] // COST
]
[ ]
"""


class NamesTest(ToolsCase):
    def setUp(self):
        super().setUp()
        self.write("p.opt", PROGRAM)
        self.write("p.sol", SOLUTIONS)

    def test_table(self):
        self.assertEqual(self.tool("sol_to_names.py", "p.opt").out, """\
Solution 1: COST = -1.5 (maximise), found after 3 s
  A "quoted, name"  4
  B                 0.5

Solution 2: COST = -4.625 (maximise), found after 75 s
  A "quoted, name"  5
  B                 2.75

2 solution(s)
""")

    def test_json(self):
        self.assertEqual(json.loads(self.tool("sol_to_names.py", "--json", "p.opt").out), {
            "problem": "MY PROBLEM", "objective": "COST", "sense": "max", "solutions": [
                {"objective": -1.5, "seconds": 3, "values": {"A \"quoted, name\"": 4, "B": 0.5}},
                {"objective": -4.625, "seconds": 75, "values": {"A \"quoted, name\"": 5, "B": 2.75}}]})

    def test_csv(self):
        self.assertEqual(list(csv.reader(io.StringIO(self.tool("sol_to_names.py", "--csv", "p.opt").out))),
                         [["solution", "objective", "seconds", "A \"quoted, name\"", "B"],
                          ["1", "-1.5", "3", "4", "0.5"], ["2", "-4.625", "75", "5", "2.75"]])

    def test_first_and_another_file(self):
        self.write("other", SOLUTIONS.replace("[ 1 0 ]", "[ 5 -1/2 ]"))
        result = self.tool("sol_to_names.py", "--first=1", "--nonzero", "p.opt", "other")
        self.assertEqual(result.out, "Solution 1: COST = 6.75 (maximise), found after 3 s\n\n1 solution(s)\n")

    def test_no_solutions(self):
        self.remove("p.sol")
        self.assertEqual(self.tool("sol_to_names.py", "p.opt").out, "0 solution(s)\n")
        self.assertEqual(json.loads(self.tool("sol_to_names.py", "--json", "p.opt").out)["solutions"], [])
        self.tool("sol_to_names.py", "p.opt", "none.sol", status=1)

    def test_numbers_that_no_float_holds(self):
        self.write("p.sol", "[ 123456789012345678901234567890 0 ] | 0 | [ 0 ] | 0 | 0 | p | 2.2.2\n")
        self.assertIn(": -123456789012345678901234567885,", self.tool("sol_to_names.py", "--json", "p.opt").out)

    def test_damage(self):
        for name, old, new, reason in (
                ("p.sol", "[ 1 0 ]", "[ 1 0", "p.sol, line 1: this is no line"),
                ("p.sol", "[ 1 0 ]", "[ 1 0/0 ]", "line 1"),
                ("p.sol", "[ 0 2:1/4 ]", "[ 0 ]", "p.sol, line 2: the solution has 1 values"),
                ("p.sol", "| 75 |", "| x |", "line 2"), ("p.opt", "//@ map 1\n", "", "there is no map of names"),
                ("p.opt", "map 1", "map 2", "has version 2"), ("p.opt", "variable 5", "variable five", "p.opt, line 5"),
                ("p.opt", "objective max", "objective most", "p.opt, line 4"),
                ("p.opt", "//@ variable 5", "//@ oddity 5", "p.opt, line 5"), ("p.opt", "2 -1/2", "2 x", "damaged"),
                ("p.opt", "[ inf ]", "inf", "does not begin")):
            self.setUp()
            self.write(name, self.read(name).replace(old, new))
            self.assertIn(reason, self.tool("sol_to_names.py", "p.opt", status=1).err)


class EndToEndTest(ToolsCase):
    """Convert, solve, map back, and hold the answer against the model."""

    def solve(self, name, *options):
        self.assert_ends_well(self.run_solver("--rtime=50", "--sol=1", *options, name + ".opt"))
        self.stars(name)
        return json.loads(self.tool("sol_to_names.py", "--json", name + ".opt").out, parse_float=Fraction)["solutions"]

    def test_random_models(self):
        """Every answer is a point of the model; with an objective the best one is asked for."""
        solved = 0
        for seed in range(2000, 2024):
            source = random.Random(seed)
            drawn = models.draw(source)
            points = drawn.points(REACH)
            self.write("m.lp", models.Lp(drawn, source).text())
            self.write("m.mps", models.Mps(drawn, source, False).text())
            if not points or not drawn.rows:
                continue
            for tool, name in (("lp_to_opt.py", "m.lp"), ("mps_to_opt.py", "m.mps")):
                self.tool(tool, name, "m.opt")
                self.check_answers(drawn, points)
                self.remove("m.lat") if self.exists("m.lat") else None
                self.remove("m.sol")
                solved += 1
        self.assertGreater(solved, 12)

    def check_answers(self, drawn, points):
        options = []
        if drawn.objective is not None and any(drawn.objective):
            best = (max if drawn.maximise else min)(points.values())
            constant = name_map.read_map(self.read("m.opt")).objective[1]
            norm = (best - constant) * (-1 if drawn.maximise else 1)
            options = ["--snorm=0", "--tnorm=" + models.decimal(norm)]
        answers = self.solve("m", *options)
        self.assertTrue(answers)
        for answer in answers:
            point = tuple(Fraction(answer["values"]["x%d" % j]) for j in range(len(drawn.variables)))
            self.assertIn(point, points)
            self.assertEqual(answer["objective"], points[point])
        if options:
            self.assertEqual(answers[0]["objective"], best)

    def test_examples(self):
        """The optima were found by trying all points of the models."""
        for tool, name, options, norm, best in (
                ("mps_to_opt.py", "workshop.mps", (), "-194.5", Fraction("207.25")),
                ("mps_to_opt.py", "signs.mps", (), "-20", -26), ("lp_to_opt.py", "shifts.lp", (), "540", 552),
                ("lp_to_opt.py", "mixture.lp", ("--digits=1",), "-35.98", Fraction("37.58"))):
            self.example(name)
            opt = name.split(".")[0]
            self.tool(tool, *options, name, opt + ".opt")
            values = program_points(self.read(opt + ".opt")).values() if opt != "workshop" else [best]
            self.assertEqual((max if norm.startswith("-") and opt != "signs" else min)(values), best)
            self.assertEqual(self.solve(opt, "--snorm=0", "--tnorm=" + norm)[0]["objective"], best)

    def test_workshop_by_all_points(self):
        best = max(Fraction("7.5") * a + Fraction("4.25") * b + 9 * c + 3 * d - 8 * made + 5
                   for a in range(13) for b in range(-1, 26) for c in range(10) for d in range(4, 17) for made in (0, 1)
                   if -2 <= a - c <= 1 and b >= 10 * made and 2 * a + b + 3 * c >= 20
                   and 280 <= 12 * a + 8 * b + 18 * c + 5 * d <= 360)
        self.assertEqual(best, Fraction("207.25"))


if __name__ == "__main__":
    harness.main()
