"""The reader of .opt programs: their plain meaning, held against the reader of the tests, and what it refuses and where."""

from __future__ import annotations

import glob
import os
import re
import unittest
from fractions import Fraction

import support
import checker
import harness
from latbox.errors import ReadError
from latbox.models import INF, Model, opt

OPT = """[ -inf ]       // dt
[ [ 1 2 ] ]    // At
[ [ 1 1 ] ]
[ 3 ]
[ [ 2 1 ] ]    /* Au
over lines */
[ 1 ]
[ 8 ]
[ 0 0 ]
[ 0 0 ]
[ 4 4 ]
"""

NOT_READ: tuple[tuple[str, str, str], ...] = (
    # What is changed, into what, and what is said.
    ("[ -inf ]", "-inf", "line 1, column 1: dt: expected a vector, [ ... ], found '-inf'"),
    ("[ -inf ]", "[ -inf inf ]", "line 2, column 1: At: it has 1 row, and dt has 2 entries"),
    ("[ -inf ]", "[ -inf ] = [ ]", "line 1, column 12: kt: it has 0 entries, and dt has 1"),
    ("[ -inf ]", "[ -inf ] = 5", "line 1, column 12: kt: expected a vector, [ ... ], found '5'"),
    ("[ -inf ]", "[ -inf [ 3 ]", "line 1, column 8: dt: expected a number or ], found '['"),
    ("[ -inf ]", "[ -inf = 3 ]", "line 1, column 8: dt: expected a number or ], found '='"),
    ("[ [ 1 2 ] ]", "[ [ 1 ] [ 2 3 ] ]", "line 2, column 9: At: this row has 2 entries, the first has 1"),
    ("[ [ 1 2 ] ]", "[ 1 2 ]", "line 2, column 3: At: expected a row, [ ... ], or ], found '1'"),
    ("[ [ 1 2 ] ]", "[ [ 1 inf ] ]", "line 2, column 7: At: inf is not allowed here"),
    ("[ [ 1 2 ] ]", "[ [ -inf /* x */ 2 ] ]", "line 2, column 5: At: -inf is not allowed here"),
    ("[ [ 1 2 ] ]", "[ [ 1 2 ]", "line 3, column 3: At: expected a number or ], found '['"),
    ("[ [ 1 1 ] ]", "[ [ 1 1 ] [ 1 2 ] ]", "line 3, column 1: Ag: it has 2 rows, and bg has 1 entry"),
    ("[ [ 1 1 ] ]", "[ [ 1 1 1 ] ]", "line 3, column 1: Ag: it has 3 columns, and the program 2 variables"),
    ("[ 3 ]", "[ inf ]", "line 4, column 3: bg: inf is not allowed here"),
    ("[ [ 2 1 ] ]", "[ [ 2 ] ]", "line 5, column 1: Au: it has 1 column, and the program 2 variables"),
    ("[ 1 ]\n[ 8 ]", "[ ]\n[ 8 ]", "line 5, column 1: Au: it has 1 row, and lu has 0 entries"),
    ("[ 8 ]", "[ 8 9 ]", "line 5, column 1: Au: it has 1 row, and ru has 2 entries"),
    ("[ 8 ]", "[ 0 ]", "line 7, column 3: lu, ru: the sides of row u1 leave no value: 1 to 0"),
    ("[ 1 ]\n[ 8 ]", "[ -inf ]\n[ inf ]", "line 7, column 3: lu, ru: row u1 has no side"),
    ("[ 1 ]\n[ 8 ]", "[ inf ]\n[ inf ]", "line 7, column 3: lu, ru: the sides of row u1 leave no value: inf to inf"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 ]\n[ 0 0 ]", "line 9, column 1: dx: it has 1 entry, and the program 2 variables"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 1/2 ]\n[ 0 0 ]", "line 9, column 5: dx: 1/2 digits: a whole number from 0 to 10000 is wanted"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ -1 0 ]\n[ 0 0 ]", "line 9, column 3: dx: -1 digits: a whole number from 0 to 10000 is wanted"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 inf ]\n[ 0 0 ]", "line 9, column 5: dx: inf is not allowed here"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 10001 ]\n[ 0 0 ]",
     "line 9, column 5: dx: 10001 digits: a whole number from 0 to 10000 is wanted"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 0 ]\n[ 0 0 0 ]", "line 10, column 1: lx: it has 3 entries, and the program 2 variables"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 0 ]\n[ 0 5 ]", "line 10, column 5: lx, rx: the bounds of x2 leave no value: 5 to 4"),
    ("[ 0 0 ]\n[ 0 0 ]", "[ 0 0 ]\n[ 0 inf ]", "line 10, column 5: lx, rx: the bounds of x2 leave no value: inf to 4"),
    ("[ 4 4 ]", "[ 4 ]", "line 11, column 1: rx: it has 1 entry, and the program 2 variables"),
    ("[ 4 4 ]", "[ 4 4", "line 12, column 1: rx: expected a number or ], found the end of the file"),
    ("[ 4 4 ]", "", "line 12, column 1: rx: expected a vector, [ ... ], found the end of the file"),
    ("over lines */", "over lines", "line 5, column 16: this comment is not closed"),
)

# An element, and the hint of the message behind "is not a number".
NO_NUMBERS = (
    ("a", ""), ("INF", ""), ("1;", ""), ("-", ""), ("ix", ""), ("-inx", ""), ("+", ""), (",", ""), ("2:", ""), ("1/", ""),
    ("1/2/3", ""), ("1.2.3", ""), ("--1", ""), ("+inf", ""), ("2:3", ""), ("2:-1/3", ""), ("2:0.5", ""), ("\u0663", ""),
    ("1e3", ": write it without an exponent"), ("1.5e-7", ": write it without an exponent"),
    ("5.", ": write it without the point"), ("5.0", ": write it without the point"),
    ("1/0", ": its denominator is 0"), ("2:1/0", ": its denominator is 0"),
    ("2:01/3", ": the fraction of a mixed number is below 1 and begins with no 0"),
    ("2:7/3", ": the fraction of a mixed number is below 1 and begins with no 0"),
    ("5//five\n", ": leave a blank before a comment"), ("5/*five*/", ": leave a blank before a comment"),
    ("1" * 100001, ": it is longer than 100000 characters"),
)
NUMBERS = (("12", 12), ("-3", -3), ("+3", 3), ("007", 7), ("1.25", "5/4"), ("1,25", "5/4"), (".5", "1/2"), ("5.50", "11/2"),
           ("3/4", "3/4"), ("-6/8", "-3/4"), ("2:1/3", "7/3"), ("-2:1/3", "-7/3"), ("-0", 0), ("-.05", "-1/20"))


class NumberTest(unittest.TestCase):
    def test_numbers(self) -> None:
        for text, value in NUMBERS:
            self.assertEqual(opt.exact(text), Fraction(value), text)
        self.assertEqual(opt.exact("1" + "0" * 99999), 10**99999)

    def test_the_forms_of_the_document(self) -> None:
        with open(os.path.join(support.ROOT, "docs", "formats.md"), encoding="utf-8") as file:
            table = file.read().split("<!-- forms -->", 1)[1].split("\n\n`inf`", 1)[0]
        found = 0
        for examples, values in re.findall(r"^\| [a-z]+ \| (`.*`) \| (.*) \|$", table, re.MULTILINE):
            for text, value in zip(re.findall("`(.*?)`", examples), values.split(", "), strict=True):
                self.assertEqual(opt.exact(text), Fraction(value))
                found += 1
        self.assertEqual(found, 12)

    def test_what_is_no_number(self) -> None:
        for text, hint in NO_NUMBERS:
            with self.subTest(text[:20]), self.assertRaises(ReadError) as caught:
                opt.read_opt(OPT.replace("[ 1 2 ]", "[ 1 %s 2 ]" % text))
            self.assertRegex(str(caught.exception), r"^line 2, column 7: At: '.*' is not a number%s$" % re.escape(hint))


class RefusalTest(unittest.TestCase):
    def test_table(self) -> None:
        for old, new, message in NOT_READ:
            text = OPT.replace(old, new)
            with self.subTest(text), self.assertRaises(ReadError) as caught:
                opt.read_opt(text)
            self.assertEqual((OPT.count(old), str(caught.exception)), (1, message))

    def test_what_ends_early(self) -> None:
        end = OPT.rindex("]")
        for at in range(end + 1):
            self.assertRaises(ReadError, opt.read_opt, OPT[:at])
        opt.read_opt(OPT[:end + 1])

    def test_no_rows(self) -> None:
        with self.assertRaises(ReadError) as caught:
            opt.read_opt("[ ] [ ] [ ] [ ] [ ] [ ] [ ]\n[ 0 ] [ 0 ] [ 1 ]")
        self.assertEqual(str(caught.exception), "line 2, column 1: there is no row that tells the number of variables")


class MeaningTest(unittest.TestCase):
    def assert_meaning(self, text: str, model: Model) -> None:
        """Row for row what the reader of the tests finds in the text."""
        program = checker.Program(text)
        self.assertEqual([(v.name, v.integer, v.digits, v.lower, v.upper) for v in model.variables],
                         [("x%d" % (j + 1), True, int(program.dx[j]), program.lx[j], program.rx[j])
                          for j in range(program.n)])
        rows = [("g%d" % (i + 1), self.sparse(row), side, side) for i, (row, side) in enumerate(zip(program.ag, program.bg))]
        rows += [("u%d" % (i + 1), self.sparse(row), low, high)
                 for i, (row, low, high) in enumerate(zip(program.au, program.lu, program.ru))]
        self.assertEqual([(row.name, row.coefficients, row.lower, row.upper) for row in model.rows], rows)
        self.assertEqual([(goal.row.coefficients, goal.value) for goal in model.goals],
                         [(self.sparse(row), d) for row, d in zip(program.at, program.dt) if abs(d) != INF])

    def sparse(self, row: list[Fraction]) -> dict[int, Fraction]:
        return {j: a for j, a in enumerate(row) if a != 0}

    def test_all_examples(self) -> None:
        paths = glob.glob(os.path.join(support.ROOT, "examples", "*.opt"))
        self.assertGreater(len(paths), 40)
        for path in paths:
            with open(path, encoding="utf-8") as file:
                text = file.read()
            with self.subTest(path):
                self.assert_meaning(text, opt.read_opt(text))

    def test_one_target(self) -> None:
        for word, maximise in (("-inf", False), ("inf", True)):
            model = opt.read_opt(OPT.replace("[ -inf ]", "[ %s ]" % word))
            assert model.objective is not None
            self.assertEqual((model.maximise, model.objective.coefficients, model.constant), (maximise, {0: 1, 1: 2}, 0))

    def test_several_targets_are_one_objective(self) -> None:
        """Their norms are added: that of a maximised one is negated."""
        model = opt.read_opt(OPT.replace("[ -inf ]", "[ inf -inf inf ]").replace("[ [ 1 2 ] ]", "[ [ 1 2 ] [ 5 0 ] [ 0 1 ] ]"))
        assert model.objective is not None
        self.assertEqual((model.maximise, model.objective.coefficients, model.goals), (False, {0: 4, 1: -3}, []))

    def test_values_to_be_reached(self) -> None:
        model = opt.read_opt(OPT.replace("[ -inf ]", "[ 5 inf ]").replace("[ [ 1 2 ] ]", "[ [ 1 2 ] [ 5 0 ] ]"))
        assert model.objective is not None
        self.assertEqual((model.maximise, model.objective.coefficients), (False, {0: -5}))
        self.assertEqual([(goal.row.coefficients, goal.value) for goal in model.goals], [({0: 1, 1: 2}, 5)])

    def test_no_target(self) -> None:
        model = opt.read_opt(OPT.replace("[ -inf ]", "[ ]").replace("[ [ 1 2 ] ]", "[ ]"))
        self.assertEqual((model.objective, model.goals), (None, []))

    def test_thresholds_are_noted(self) -> None:
        model = opt.read_opt(OPT.replace("[ -inf ]", "[ -inf ] = [ 7 ]"))
        self.assertEqual([(note.message, note.place) for note in model.notes],
                         [("thresholds are left out: they only guide the search", (1, 12))])

    def test_blanks_and_comments(self) -> None:
        tight = re.sub(r"//[^\n]*|/\*.*?\*/", "", OPT, flags=re.DOTALL).split()
        text = " ".join(tight).replace("[ ", "[").replace(" ]", "]").replace("] [", "][") + "what follows is not read"
        self.assert_meaning(OPT, opt.read_opt(text))
        self.assert_meaning(OPT, opt.read_opt(" ".join(tight).replace(" ", " /**/// [\n\t\r\n ")))
        self.assert_meaning(OPT, opt.read_opt(OPT.replace("-inf", "-inf/* */").replace("[", "[//\n")))

    def test_places_of_rows_and_variables(self) -> None:
        model = opt.read_opt(OPT)
        self.assertEqual([row.place for row in model.rows], [(3, 3), (5, 3)])


if __name__ == "__main__":
    harness.main()
