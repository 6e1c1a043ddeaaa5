"""The reader of MPS models: what it takes, what it refuses and where, and what it does where readers differ."""

import os
import re
import shutil
import subprocess
import sys
import unittest
from fractions import Fraction

import support
import checker
import harness
from latbox.errors import ModelError, ReadError
from latbox.models import INF, Model, Row, name_map, opt_writer, read_model, read_text
from latbox.names import decimal
from support import ToolsCase, converted, program_points, reader

SAMPLES = "/usr/share/coin/Data/Sample"
PEER_EXAMPLES = "/usr/share/doc/glpk-utils/examples"

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

NOT_READ: tuple[tuple[str, str, str], ...] = (
    # What is changed, into what, and what is said.
    ("M1 'MARKER' 'INTORG'", "M1 'MARKER' 'INTEND'", "line 7, column 14: marker INTEND stands twice"),
    ("'MARKER' 'INTORG'", "'MARKER' 'SOSORG'", "line 7, column 14: marker SOSORG: only INTORG and INTEND are read"),
    (" N COST", " Q COST", "line 3, column 2: unknown type of row 'Q'"),
    (" G R2", " G R1", "line 5, column 4: row R1 stands twice"),
    (" G R2", " G R2 R3", "line 5: a line of ROWS has a type and a name"),
    ("X COST 1 R1 1", "X COST 1 R1", "line 8: a line of COLUMNS has a column and one or two pairs of row and value"),
    ("X COST 1 R1 1", "X COST 1 R9 1", "line 8, column 11: unknown row 'R9'"),
    ("X COST 1 R1 1", "X COST 1 R1 nan", "line 8, column 14: 'nan' is not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 inf", "line 8, column 14: 'inf' is not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 1e99999999", "line 8, column 14: the exponent of '1e99999999' is beyond 4000"),
    ("X COST 1 R1 1", "X COST 1 COST 1", "line 8, column 11: column X stands twice in row COST"),
    (" Y R2 1\n", " Y R1 2\n", "line 10, column 4: column Y stands twice in row R1"),
    (" Y R2 1\n", " X R2 1\n", "line 10, column 2: variable X stands twice"),
    ("RHS R1 4 R2 1", "RHS R1 4 R1 1", "line 13, column 11: row R1 has two right-hand sides"),
    ("RHS R1 4 R2 1", "RHS R1 4\n RHS2 R2 1", "line 14, column 2: a second set in RHS, 'RHS2' beside 'RHS': leave one"),
    ("RHS R1 4 R2 1", "RHS R1 4 R2 x", "line 13, column 14: 'x' is not a number"),
    ("BOUNDS\n", "RANGES\n RNG COST 1\nBOUNDS\n", "line 15, column 6: row COST is free and cannot have a range"),
    ("BOUNDS\n", "RANGES\n RNG R1 1 R1 2\nBOUNDS\n", "line 15, column 11: row R1 has two ranges"),
    ("UP BND X 3", "UP BND Z 3", "line 15, column 9: unknown column 'Z'"),
    ("UP BND X 3", "ZZ BND X 3", "line 15, column 2: unknown type of bound 'ZZ'"),
    ("UP BND X 3", "UP BND X 3 4", "line 15: a bound of type UP has a set, a column and a value"),
    ("UP BND X 3", "UP BND X 3\n UP BND X 4", "line 16, column 2: column X has two bounds of type UP"),
    ("UP BND X 3", "UP OTHER X 3", "line 16, column 5: a second set in BOUNDS, 'BND' beside 'OTHER': leave one"),
    ("RHS\n", "QUADOBJ\n", "line 12, column 1: section QUADOBJ is not read: a quadratic objective"),
    ("RHS\n", "SOS\n", "line 12, column 1: section SOS is not read: special ordered sets"),
    ("RHS\n", "INDICATORS\n", "line 12, column 1: section INDICATORS is not read: indicator rows"),
    ("RHS\n", "FOO\n", "line 12, column 1: unknown section FOO"),
    ("RHS\n", "ROWS\n", "line 12, column 1: section ROWS stands twice"),
    ("NAME T\n", "NAME T\nOBJSENSE\n UP\n", "line 3, column 2: 'UP' is no sense of an objective"),
    ("NAME T\n", "NAME T\nOBJNAME\n R1\n", "line 3, column 2: OBJNAME R1 is no free row"),
    ("NAME T\n", "NAME T\n X 1\n", "line 2: a data line outside of all sections"),
    ("ENDATA\n", "", "line 17: the file ends without ENDATA"),
    ("X COST 1 R1 1", "X COST 1 R1 0x1", "line 8, column 14: '0x1' is not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 .", "line 8, column 14: '.' is not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 1_0", "line 8, column 14: '1_0' is not a number"),
    ("X COST 1 R1 1", "X COST 1 R1 \u0663", "line 8, column 14: '\u0663' is not a number"),
    ("RHS R1 4 R2 1", "RHS", "line 13: a line of RHS has a set and one or two pairs of row and value"),
    ("RHS R1 4 R2 1", "RHS R1 4 R2 1 9", "line 13: a line of RHS has a set and one or two pairs of row and value"),
    ("UP BND X 3", "FR A BND X 3", "line 15: a bound of type FR has a set and a column"),
    ("UP BND X 3", "UP BND X high", "line 15, column 11: 'high' is not a number"),
    ("UP BND X 3", "UP X", "line 15: a bound of type UP has a set, a column and a value"),
    ("ROWS\n", "COLUMNS\nROWS\n", "line 2, column 1: section COLUMNS before ROWS"),
    ("COLUMNS\n", "BOUNDS\nCOLUMNS\n", "line 6, column 1: section BOUNDS before COLUMNS"),
    ("NAME T\n", "NAME T\nOBJSENSE MAX\nOBJSENS\n MIN\n", "line 4, column 2: a second sense of the objective"),
    ("NAME T\n", "*SENSE:Maximize\nNAME T\nOBJSENSE\n MIN\n",
     "line 1, column 1: the comment and OBJSENSE say different senses of the objective"),
    ("NAME T\n", "NAME T\nLAZYCONS\n", "line 2, column 1: section LAZYCONS is not read: lazy rows"),
    (" X COST 1 R1 1\n", " X COST 1 R1 1\n M3 'MARKER' 'INTORG'\n", "line 9, column 14: marker INTORG stands twice"),
    ("COLUMNS\n M1", "RHS\n M1", "line 6, column 1: section RHS before COLUMNS"),
)

NOT_STATED: tuple[tuple[str, str, str], ...] = (
    # These are models, and cannot be programs.
    ("RHS R1 4 R2 1", "RHS R2 9",
     "line 5, column 4: row R2 cannot hold: its greatest value is 3, and it asks for 9 at least"),
    ("RHS R1 4 R2 1", "RHS R1 -1",
     "line 4, column 4: row R1 cannot hold: its least value is 0, and it asks for -1 at most"),
    ("UP BND X 3", "SC BND X 3", "line 15, column 9: X is semicontinuous, which cannot be stated in a .opt file"),
    ("UP BND X 3", "UP BND X 3\n LO BND X 4", "line 16, column 9: the bounds of X leave no value: 4 to 3"),
    ("UP BND X 3", "UP BND X 0.7\n LO BND X 0.2",
     "line 16, column 9: the bounds of X leave no whole number: 1/5 to 7/10"),
    ("UP BND X 3", "FX BND X 0.5", "line 15, column 9: the bounds of X leave no whole number: 1/2 to 1/2"),
    ("UP BND X 3", "LO BND X inf", "line 15, column 9: the bounds of X leave no value: inf to inf"),
    ("UP BND X 3\n UP BND Y 3", "FR BND X\n FR BND Y",
     "line 4, column 4: row R1 has one side only, and the bounds of its variables allow no least "
     "value to close it: bound the variables, or the row on both sides"),
    (" M1 'MARKER' 'INTORG'\n", " M1 'MARKER' 'INTORG'\n M2 'MARKER' 'INTEND'\n Z COST 1\n M3 'MARKER' 'INTORG'\n",
     "line 9, column 2: variable Z is continuous: declare it integer, or ask for a decimal grid with --digits=N"),
)


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


class MpsDialectTest(ToolsCase):
    """What the forms leave open, and what is done here."""

    def points(self, old, new):
        self.assertEqual(MPS.count(old), 1)
        return program_points(converted(reader("free-mps"), MPS.replace(old, new)))

    def ranges(self, points):
        return [(min(x), max(x)) for x in zip(*points)]

    def test_fixed_and_free_are_the_same(self):
        free = read_text(MPS, "free-mps")
        columns = read_text(fixed(MPS), "fixed-mps")
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
            points = program_points(converted(reader("free-mps"), text))
            self.assertEqual(self.ranges(points)[0], (low, min(high, 3)), kind)

    def test_a_column_that_is_called_like_a_number(self):
        """Set and column, or column and value: `SC Y 1` was taken for a bound of the column 1."""
        text = MPS.replace("X ", "1 ").replace(" UP BND 1 3\n UP BND Y 3\n", " %s\n")
        for line in ("SC Y 1", "SI Y 1", "BV Y 1", "FR Y 1", "MI Y 1"):
            with self.assertRaises(ReadError) as caught:
                read_text(text % line, "free-mps")
            self.assertEqual(str(caught.exception), "line 15, column 5: Y may be a set or a column here, and 1 a column or a value: name the set")
        for line, found in (("SC BND Y 1", [("1", 0, 1, False), ("Y", 0, 1, True)]), ("SC BND 1", [("1", 0, INF, True), ("Y", 0, 1, False)]),
                            ("UP Y 2", [("1", 0, 1, False), ("Y", 0, 2, False)]), ("MI Y 7", [("1", 0, 1, False), ("Y", -INF, INF, False)]),
                            ("MI S 1\n MI S Y", [("1", -INF, INF, False), ("Y", -INF, INF, False)])):
            model = read_text(text % line, "free-mps")
            self.assertEqual([(v.name, v.lower, v.upper, v.semi) for v in model.variables], found, line)
        # The columns of the fixed form tell which is which.
        model = read_text(fixed(text % "MI Y 1"), "mps")
        self.assertEqual([variable.lower for variable in model.variables], [-INF, 0])

    def test_bounds_that_reach_below(self):
        old = "RHS\n RHS R1 4 R2 1\nBOUNDS\n UP BND X 3"
        for kind in ("UP BND X -1", "MI BND X\n UP BND X -1", "FR BND X\n UP BND X -1"):
            new = "RHS\n RHS R1 2 R2 1\nRANGES\n RNG R1 7\nBOUNDS\n " + kind
            self.assertEqual(self.ranges(self.points(old, new))[0], (-8, -1), kind)

    def test_a_negative_upper_bound_is_noted(self):
        self.write("m.mps", MPS.replace("UP BND X 3", "UP BND X -1").replace("BOUNDS", "RANGES\n RNG R1 9\nBOUNDS"))
        result = self.tool("latbox-convert", "m.mps")
        self.assertEqual(result.err, "m.mps, line 17: note: X has a negative upper bound and no lower one before it: "
                                     "taken as not bounded below\n")

    def test_a_bound_that_another_one_had_said_is_noted(self):
        """Two of one type are refused; of two types the last one counts, as everywhere."""
        def notes(bounds):
            self.write("m.mps", MPS.replace(" UP BND X 3\n", "".join(" %s\n" % bound for bound in bounds)))
            return self.tool("latbox-convert", "m.mps").err

        said = "m.mps, line 16: note: X has a bound of type %s behind one of type %s: the last one counts\n"
        self.assertEqual(notes(["UP BND X 3", "FX BND X 2"]), said % ("FX", "UP"))
        self.assertEqual(notes(["FX BND X 2", "UP BND X 3"]), said % ("UP", "FX"))
        self.assertEqual(notes(["BV BND X", "LO BND X -1"]), said % ("LO", "BV"))
        # Ends of their own, or the same one.
        for bounds in (["LO BND X 1", "UP BND X 3"], ["UP BND X 3", "LI BND X 1"], ["UP BND X 3", "UI BND X 3"]):
            self.assertEqual(notes(bounds), "", bounds)

    def test_marker_columns_without_bounds(self):
        self.write("m.mps", MPS.replace(" UP BND X 3\n", ""))
        for option, high in (("--marker-bounds=1", 1), ("--marker-bounds=inf", 3)):
            result = self.tool("latbox-convert", option, "m.mps")
            self.assertIn("1 integer column(s) without a bound, the first is X: taken as 0 to %s; a line in BOUNDS says otherwise, "
                          "PL for no upper one\n" % option.rpartition("=")[2], result.err)
            self.assertEqual(self.ranges(program_points(result.out))[0], (0, high))

    def test_ranges(self):
        table = (("L", 4, 2, 2, 4), ("L", 4, -2, 2, 4), ("G", 2, 3, 2, 5), ("G", 2, -3, 2, 5), ("E", 3, 1, 3, 4),
                 ("E", 3, -1, 2, 3), ("E", 3, 0, 3, 3))
        for kind, right, width, low, high in table:
            text = (MPS.replace(" L R1", " %s R1" % kind).replace("RHS R1 4", "RHS R1 %d" % right)
                    .replace("BOUNDS\n", "RANGES\n RNG R1 %d\nBOUNDS\n" % width))
            points = program_points(converted(reader("free-mps"), text))
            sums = [x + y for x, y in points]
            self.assertEqual((min(sums), max(sums)), (low, high), (kind, width))

    def test_sense_and_constant(self):
        for head in ("OBJSENSE\n MAX\n", "OBJSENSE MAXIMIZE\n", "OBJSENSE\n maximise\n"):
            text = head + MPS.replace("RHS R1 4 R2 1", "RHS R1 4 R2 1\n RHS COST -2.5")
            program = converted(reader("free-mps"), text)
            self.assertEqual(checker.Program(program).dt, [checker.INF])
            self.assertEqual(set(program_points(program).values()), {Fraction(k, 2) for k in (7, 9, 11, 13)})
        self.assertEqual(checker.Program(converted(reader("free-mps"), MPS)).dt, [-checker.INF])

    def test_a_constant_is_noted(self):
        """Readers differ in its sign, and nothing told."""
        notes = {side: [(note.message, note.place) for note in read_text(MPS.replace("R2 1\nB", "R2 1\n RHS COST %s\nB" % side), "mps").notes]
                 for side in ("5", "-5", "0")}
        self.assertEqual(notes["5"], [("the right-hand side of the objective is its constant, negated; some readers do not negate it", (3, 4))])
        self.assertEqual((notes["-5"], notes["0"]), (notes["5"], []))

    def test_objname_and_other_free_rows(self):
        text = "OBJNAME\n SECOND\n" + MPS.replace(" L R1\n", " N SECOND\n L R1\n").replace("X COST 1", "X SECOND 7")
        program = converted(reader("free-mps"), text)
        self.assertEqual(checker.Program(program).at, [[7, 0]])
        self.assertIn("// row COST has no sides and is left out\n", program)

    def test_names_with_blanks(self):
        text = fixed(MPS).replace("X      ", "MY X   ")
        self.write("m.mps", text)
        columns = [column.name for column in name_map.read_map(self.tool("latbox-convert", "m.mps").out).columns]
        self.assertEqual(columns, ["MY X", "Y"])
        self.assertIn("one or two pairs", self.tool("latbox-convert", "--free", "m.mps", status=1).err)

    def test_comments_of_fixed_lines(self):
        text = fixed(MPS).replace("    Y         R2        1", "    Y         R2        1" + " " * 14 + "$ a remark")
        self.assertIn("$", text)
        read_text(text, "fixed-mps")

    def test_exact_numbers(self):
        text = MPS.replace("X COST 1 R1 1", "X COST 1.00000000000000000001 R1 12345678901234567890.5")
        text = text.replace("RHS R1 4", "RHS R1 2D19").replace("Y COST 1 R1 1", "Y COST -.25e-1")
        program = checker.Program(converted(reader("free-mps"), text))
        self.assertEqual(program.at, [[1 + Fraction(1, 10**20), Fraction(-1, 40)]])
        self.assertEqual(program.au[0], [12345678901234567890 + Fraction(1, 2), 0])
        # The greatest value of the row that is not above 2e19.
        self.assertEqual(program.ru[0], 12345678901234567890 + Fraction(1, 2))


# The dialects that other readers take: a text, and what is read of it.
OPEN_MARKER = """* a small problem whose marker stays open
NAME          open
ROWS
 N  R1001
 L  R1006
 G  ROWA
COLUMNS
    C0        R1001        12.000000
    SET00001  'MARKER'                 'INTORG'
    C1045     R1001       155.000000
    C1045     R1006       161.000000
    C1047     R1006      -120.000000
    C1047     ROWA          1.000000
RHS
    RHS       R1006        -5.000000
    RHS       ROWA          0.627000
BOUNDS
 BV ONE       C1045         1.000000
ENDATA
"""
# Remarks behind names and values, and names that are left blank where they repeat.
REMARKS = """* comments with a dollar sign
NAME          PLAN
ROWS
 N  COST      $ Cost                   $
 G  MIN.BF    $ Butterfat              lbs
 L  MAX.BF
COLUMNS
* Cream (40%)
    I 1       COST           27.9
              MIN.BF           .40     $ a remark here
              MAX.BF           .40
    I 2       COST           10.3      MIN.BF        .38
RHS
    RHS       MIN.BF        100
              MAX.BF        160
BOUNDS
 UP BND       I 1           8.5        $ as much as there is
 LO           I 2           1.5
ENDATA
"""
SEMI = """NAME T
ROWS
 N COST
 G R1
COLUMNS
 A COST 1 R1 1
 M 'MARKER' 'INTORG'
 B COST 1 R1 1
 M 'MARKER' 'INTEND'
 C COST 1 R1 1
RHS
 RHS R1 4
BOUNDS
 SC BND A 3.5
 LO BND B 2
 SC BND B 9
 SI BND C 7
ENDATA
"""


class FieldDialectTest(ToolsCase):
    """What other readers take of the forms of lines."""

    def kinds(self, model):
        return [(v.name, v.integer, v.semi, v.lower, v.upper) for v in model.variables]

    def test_a_marker_that_stays_open(self) -> None:
        model = read_text(OPEN_MARKER, "mps")
        self.assertEqual(self.kinds(model), [("C0", False, False, 0, INF), ("C1045", True, False, 0, 1),
                                             ("C1047", True, False, 0, 1)])
        self.assertEqual([(note.message, note.place) for note in model.notes], [
            ("marker INTORG without INTEND: all columns behind it are integer", (9, 40)),
            ("1 integer column(s) without a bound, the first is C1047: taken as 0 to 1; a line in BOUNDS says otherwise, PL for no upper one", (12, 5))])

    def test_remarks_and_blank_names(self) -> None:
        for form in ("mps", "fixed-mps"):
            model = read_text(REMARKS, form)
            self.assertEqual(self.kinds(model), [("I 1", False, False, 0, Fraction("8.5")),
                                                 ("I 2", False, False, Fraction("1.5"), INF)])
            self.assertEqual([(row.name, row.coefficients, row.lower, row.upper) for row in model.rows],
                             [("MIN.BF", {0: Fraction("0.4"), 1: Fraction("0.38")}, 100, INF),
                              ("MAX.BF", {0: Fraction("0.4")}, -INF, 160)])

    def test_remarks_in_free_form(self) -> None:
        text = MPS.replace(" L R1\n", " L R1 $ first\n").replace("Y R2 1\n", "Y R2 1 $ of Y\n")
        text = text.replace("UP BND X 3", "UP BND X 3 $3").replace("RHS R1 4 R2 1", "RHS R1 4 $ R2 1")
        model = read_text(text, "free-mps")
        self.assertEqual([(row.lower, row.upper) for row in model.rows], [(-INF, 4), (0, INF)])

    def test_names_that_begin_like_remarks(self) -> None:
        """A row or column with just that name is meant, in both forms."""
        for form, text in (("free-mps", MPS), ("fixed-mps", fixed(MPS))):
            text = text.replace("R2", "$2").replace("X ", "$X")
            if form == "free-mps":
                text = text.replace("$X", "$X ")
            model = read_text(text, form)
            self.assertEqual([(row.name, row.coefficients) for row in model.rows], [("R1", {0: 1, 1: 1}), ("$2", {1: 1})])
            self.assertEqual([variable.upper for variable in model.variables], [3, 3])

    def test_semicontinuous_and_semi_integer_columns(self) -> None:
        self.assertEqual(self.kinds(read_text(SEMI, "mps")), [
            ("A", False, True, 0, Fraction("3.5")), ("B", True, True, 2, 9), ("C", True, True, 0, 7)])
        self.assertEqual(self.kinds(read_text(SEMI.replace("SC BND A 3.5", "SC BND A"), "mps"))[0], ("A", False, True, 0, INF))
        self.assertEqual(self.kinds(read_text(SEMI.replace("3.5", "1e30"), "mps"))[0], ("A", False, True, 0, INF))

    def test_senses(self) -> None:
        for head, maximise in (("", False), ("OBJSENSE\n    MAX\n", True), ("OBJSENSE\n    MAXIMIZE\n", True),
                               ("OBJSENSE MAX\n", True), ("OBJSENSE MIN\n", False), ("OBJSENSE\nMAX\n", True),
                               ("OBJSENS\n Max\n", True), ("*SENSE:Maximize\n", True), ("*SENSE:Minimize\n", False),
                               ("* sense: max\n", True), ("*SENSE:Maximize\nOBJSENSE\n MAX\n", True),
                               ("* the SENSE:Maximize\n", False)):
            self.assertEqual(read_text(head + MPS, "mps").maximise, maximise, head)
        self.assertEqual([note.message for note in read_text("*SENSE:Maximize\n" + MPS, "mps").notes],
                         ["the comment says the sense of the objective: maximise"])
        # Behind the rows it is a comment like any other.
        self.assertFalse(read_text(MPS.replace("RHS\n", "*SENSE:Maximize\nRHS\n", 1), "mps").maximise)

    def test_sides_from_1e20_on_are_none(self) -> None:
        """As bounds are; a row that is left without a side asks for nothing."""
        for kind, right, width, sides in (
                ("L", "1e20", None, None), ("G", "-1e30", None, None), ("L", "-1e20", None, (-INF, -INF)),
                ("L", "5", "1e20", (-INF, 5)), ("G", "5", "1e30", (5, INF)), ("E", "5", "-1e20", (-INF, 5)),
                ("E", "5", "1e20", (5, INF)), ("L", "9.9e19", None, (-INF, 99 * 10**18))):
            text = MPS.replace(" L R1", " %s R1" % kind).replace("RHS R1 4", "RHS R1 " + right)
            if width:
                text = text.replace("BOUNDS\n", "RANGES\n RNG R1 %s\nBOUNDS\n" % width)
            model = read_text(text, "mps")
            found = [(row.lower, row.upper) for row in model.rows if row.name == "R1"]
            self.assertEqual((found, model.left_out), ([sides] if sides else [], [] if sides else ["R1"]), text)
        with self.assertRaises(ReadError) as caught:
            read_text(MPS.replace(" L R1", " E R1").replace("RHS R1 4", "RHS R1 1e20"), "mps")
        self.assertEqual(str(caught.exception), "line 4, column 4: row R1 equals an infinity")

    def test_long_numbers_that_are_written_out_are_numbers(self) -> None:
        """A row with a side of thirty digits was left out, and the point then broke it."""
        long = 123456789012345678901234567890
        for kind, right, width, sides in (
                ("L", str(long), None, (-INF, long)), ("E", str(long), None, (long, long)), ("G", "-%d.5" % long, None, (-long - Fraction(1, 2), INF)),
                ("E", "5", str(-long), (5 - long, 5)), ("L", "9" * 400, None, (-INF, int("9" * 400))),
                ("L", "1" + "0" * 20, None, None), ("L", "1000000000000000019884624838656", None, None), ("G", "-1" + "0" * 30 + ".000", None, None),
                ("L", str(int(sys.float_info.max)), None, None), ("L", "1" + "0" * 29 + "1", None, (-INF, 10**30 + 1))):
            text = MPS.replace(" L R1", " %s R1" % kind).replace("RHS R1 4", "RHS R1 " + right)
            if width:
                text = text.replace("BOUNDS\n", "RANGES\n RNG R1 %s\nBOUNDS\n" % width)
            model = read_text(text, "mps")
            self.assertEqual([(row.lower, row.upper) for row in model.rows if row.name == "R1"], [sides] if sides else [], text)
            self.assertEqual(len(model.notes), int(sides is not None), text)

    def test_the_name_may_say_free(self) -> None:
        for head, name in (("NAME T FREE", "T"), ("NAME FREE", ""), ("NAME T U", "T U"), ("NAME FREEDOM", "FREEDOM")):
            self.assertEqual(read_text(MPS.replace("NAME T", head), "mps").name, name)

    def test_the_error_of_the_form_that_got_further(self) -> None:
        for text, message in ((REMARKS.replace(".38", ".3.8"), "line 12, column 54: '.3.8' is not a number"),
                              (MPS.replace("UP BND Y 3", "UP BND Y 3 3 3"),
                               "line 16: a bound of type UP has a set, a column and a value")):
            with self.assertRaises(ReadError) as caught:
                read_text(text, "mps")
            self.assertEqual(str(caught.exception), message)

    def test_fixed_lines(self) -> None:
        for old, new, message in (
                ("    X         COST      1", "    X         COST      1" + " " * 11 + "7",
                 "line 8, column 37: there is text between the fields of a fixed line"),
                (" G  R2\n", " G  \n", "line 5, column 5: a row has an empty name"),
                ("    Y         COST", "              C0ST", "line 9, column 15: unknown row 'C0ST'"),
                ("    X         COST", "              COST", "line 8, column 5: a variable has an empty name")):
            text = fixed(MPS)
            self.assertEqual(text.count(old), 1, old)
            with self.assertRaises(ReadError) as caught:
                read_text(text.replace(old, new), "fixed-mps")
            self.assertEqual(str(caught.exception), message)


def plain_lp(model: Model) -> str:
    """A model without constant as LP text: every row once for each side, every bound, names by number."""

    def terms(row):
        return " ".join("%s %s v%d\n" % ("-" if a < 0 else "+", decimal(abs(a)), j) for j, a in row.coefficients.items()) or "0 v0"

    lines = ["Maximize" if model.maximise else "Minimize", "o: " + terms(model.objective or Row("o")), "Subject To"]
    for i, row in enumerate(model.rows):
        if row.lower == row.upper:
            lines.append("r%d: %s = %s" % (i, terms(row), decimal(row.lower)))
            continue
        lines += ["%s%d: %s %s %s" % (name, i, terms(row), relation, decimal(side))
                  for name, relation, side in (("l", ">=", row.lower), ("u", "<=", row.upper)) if abs(side) != INF]
    lines.append("Bounds")
    lines += ["%s <= v%d <= %s" % ("-inf" if v.lower == -INF else decimal(v.lower), j,
                                   "+inf" if v.upper == INF else decimal(v.upper)) for j, v in enumerate(model.variables)]
    lines += ["Generals"] + ["v%d" % j for j, v in enumerate(model.variables) if v.integer]
    return "\n".join(lines + ["End"]) + "\n"


@unittest.skipUnless(os.path.isdir(SAMPLES) and os.path.isdir(PEER_EXAMPLES), "the samples are not installed")
class SampleTest(ToolsCase):
    """Models of other packages, where they are installed: sizes as those packages tell them."""

    def test_all_that_are_linear_are_read(self) -> None:
        sizes = {"tp3": (3, 3), "tp4": (6, 4), "tp5": (6, 4), "nw460": (9, 2), "p0033": (33, 16), "lseu": (89, 28)}
        for name, size in sizes.items():
            model = read_model(os.path.join(SAMPLES, name + ".mps"))
            self.assertEqual((len(model.variables), len(model.rows)), size, name)

    @unittest.skipUnless(shutil.which("glpsol"), "glpsol is not installed")
    def test_another_reader_finds_the_same_in_them(self) -> None:
        """What was read, written down again in the plainest form, has the optimum that the peer finds in the file itself."""
        for folder, names in ((SAMPLES, ("tp3", "tp4", "tp5", "nw460", "p0033", "exmip1", "afiro", "brandy", "finnis", "pack1")),
                              (PEER_EXAMPLES, ("alloy", "furnace", "icecream", "plan", "samp1", "samp2"))):
            for name in names:
                path = os.path.join(folder, name + ".mps")
                self.write("again.lp", plain_lp(read_model(path)))
                self.assertEqual(self.optimum("--lp", "again.lp"), self.optimum("--mps", path), name)

    def optimum(self, *arguments: str) -> tuple[str, str]:
        subprocess.run(["glpsol", *arguments, "-o", "out"], cwd=self.folder, check=True, stdout=subprocess.PIPE,
                       timeout=harness.LIMIT)
        found = [re.search(pattern, self.read("out"), re.MULTILINE) for pattern in (r"^Status: +(.*)$", r"^Objective: .* = (\S+)")]
        return tuple(match.group(1) for match in found if match)

    def test_the_examples_of_the_peer(self) -> None:
        """Their heads tell rows, with the objective, and columns."""
        for name in ("alloy", "furnace", "icecream", "murtagh"):
            path = os.path.join(PEER_EXAMPLES, name + ".mps")
            with open(path, encoding="utf-8") as file:
                head = dict(re.findall(r"^\*(ROWS|COLUMNS): +(\d+)", file.read(), re.MULTILINE))
            model = read_model(path)
            self.assertEqual((len(model.rows) + 1, len(model.variables)), (int(head["ROWS"]), int(head["COLUMNS"])), name)


class RefusalTest(ToolsCase):
    def test_what_is_not_read(self) -> None:
        for old, new, message in NOT_READ:
            text = MPS.replace(old, new)
            with self.subTest(text), self.assertRaises(ReadError) as caught:
                read_text(text, "free-mps")
            self.assertEqual((MPS.count(old), str(caught.exception)), (1, message))

    def test_what_cannot_be_a_program(self) -> None:
        for old, new, message in NOT_STATED:
            text = MPS.replace(old, new)
            model = read_text(text, "free-mps")
            with self.subTest(text), self.assertRaises(ModelError) as caught:
                opt_writer.opt_text(model, "m")
            self.assertEqual((MPS.count(old), str(caught.exception)), (1, message))


if __name__ == "__main__":
    harness.main()
