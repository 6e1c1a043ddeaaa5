"""The reader of LP models: what it takes, what it refuses and where, and what it does where readers differ."""

from fractions import Fraction

import support
import checker
import harness
from latbox.errors import ModelError, ReadError
from latbox.models import INF, name_map, opt_writer, read_text
from support import ToolsCase, converted, program_points, reader

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

NOT_READ: tuple[tuple[str, str, str], ...] = (
    # What is changed, into what, and what is said.
    ("Minimize\n", "", "line 1, column 2: the file must begin with Minimize or Maximize"),
    ("End\n", "", "line 11: the file ends without End"),
    ("End\n", "End\n x\n", "line 12, column 2: there is text behind End"),
    ("x + 2 y", "x + [ y ^ 2 ] / 2", "line 2, column 12: quadratic terms are not read"),
    ("x + 2 y", "x + y ^ 2", "line 2, column 14: quadratic terms are not read"),
    ("x + 2 y", "x + 2 y + Inf", "line 2, column 18: an infinity is no term"),
    ("c2: y >= 1", "c2: 0 <= y - 2 infinity", "line 5, column 17: an infinity is no term"),
    ("x + 2 y", "x + 2 3 y", "line 2, column 14: expected a sign or Subject To, found 3"),
    ("x + 2 y", "x + 2 y +", "line 2, column 16: expected a term, found the end of the section"),
    ("x + 2 y", "x + 1e99999999 y", "line 2, column 12: the exponent of '1e99999999' is beyond 4000"),
    ("x + 2 y", "x + ? * y", "line 2, column 14: expected a sign or Subject To, found *"),
    ("c2: y >= 1", "c1: y >= 1", "line 5, column 2: row c1 stands twice"),
    ("c2: y >= 1", "c2: y >= nan", "line 5, column 11: expected a number, found nan"),
    ("c2: y >= 1", "c2: y = inf", "line 5, column 8: row c2 equals an infinity"),
    ("c2: y >= 1", "c2: y >= x", "line 5, column 11: expected a number, found x"),
    ("c2: y >= 1", "c2: y >= 2 x", "line 5, column 13: expected the end of the row, found x"),
    ("c2: y >= 1", "c2: y", "line 5, column 6: expected <=, >= or =, found the end of the section"),
    ("c2: y >= 1", "c2: 1 <= y >= 2", "line 5, column 13: row c2 has two sides that do not go together"),
    ("c2: y >= 1", "c2: x = 1 -> y >= 1", "line 5, column 12: indicator rows are not read"),
    ("x <= 3", "z <= 3", "line 7, column 2: unknown variable z: it stands in no row and not in the objective"),
    ("x <= 3", "x", "line 8, column 2: expected <=, >=, = or free, found y"),
    ("General\n x y", "General\n x z",
     "line 10, column 4: unknown variable z: it stands in no row and not in the objective"),
    ("General\n x y", "SOS2\n s1: x : 1", "line 9, column 1: special ordered sets are not read"),
    ("Bounds\n", "Lazy Constraints\n", "line 6, column 1: lazy rows are not read"),
    ("Bounds\n", "General Constraints\n", "line 6, column 1: general constraints are not read"),
    ("Bounds\n", "st\n", "line 6, column 1: a second section of rows"),
    ("Minimize\n", "Minimize\nMaximize\n", "line 2, column 1: a second objective"),
    ("End\n", "End\nst\nEnd\n", "line 12, column 1: there is text behind End"),
    ("Subject To", "Subject", "line 3, column 1: expected a sign or Subject To, found Subject"),
    ("x <= 3", "x == 3", "line 7, column 5: expected a number, found ="),
    ("x <= 3", "3 x <= 3", "line 7, column 4: expected <=, >= or =, found x"),
    ("x <= 3", "x >= 0 <= 3 <= 4", "line 7, column 9: expected a number, found <="),
    ("c2: y >= 1", "c2: y >= ", "line 5, column 8: expected a number, found the end of the section"),
    ("c2: y >= 1", "c2:: y >= 1 2", "line 5, column 14: expected the end of the row, found 2"),
    ("c2: y >= 1", ": y >= 1", "line 5, column 2: expected a term, found :"),
    ("c1: x + y <= 4", "c1: x + <= 4", "line 4, column 10: expected a term, found <="),
    ("General\n x y", "General\n x 3", "line 10, column 4: expected a variable, found 3"),
    ("General\n x y", "User cuts\n x y", "line 9, column 1: user cuts are not read"),
    ("General\n x y", "PWLObj\n x y", "line 9, column 1: a piecewise linear objective is not read"),
    ("Minimize", "Minimize multi-objectives", "line 2, column 2: expected a sign or Subject To, found cost"),
    ("x + 2 y", "x + 2 y \u0000", "line 2, column 16: expected a sign or Subject To, found \u0000"),
    ("x <= 3", "- x <= 3", "line 7, column 4: expected a number, found x"),
    ("x + 2 y", "2 * x + y", "line 2, column 10: expected a sign or Subject To, found *"),
    ("x + 2 y", "x + 2 * y", "line 2, column 14: expected a sign or Subject To, found *"),
    ("x <= 3", "1 <= x >= 3", "line 7, column 9: x has two bounds that do not go together"),
    ("x <= 3", "5 = x <= 9", "line 7, column 8: x has two bounds that do not go together"),
    ("x <= 3", "1 <= x = 3", "line 7, column 9: x has two bounds that do not go together"),
    ("x <= 3", "x = inf", "line 7, column 4: x equals an infinity"),
    ("x <= 3", "-inf = x", "line 7, column 2: x equals an infinity"),
    ("c1: x + y <= 4", "c1: \u2212x + y <= 4", "line 4, column 6: expected a term, found \u2212"),
    ("c1: x + y <= 4", "c1: x \u2013 y <= 4", "line 4, column 8: expected <=, >= or =, found \u2013"),
    ("c1: x + y <= 4", "c1: x\u2212y <= 4", "line 4, column 7: expected <=, >= or =, found \u2212"),
    ("c1: x + y <= 4", "c1: x + y\u22644", "line 4, column 11: expected <=, >= or =, found \u2264"),
    ("c1: x + y <= 4", "c1: 2\u00d7x + y <= 4", "line 4, column 7: expected <=, >= or =, found \u00d7"),
    ("x <= 3", "free x", "line 7, column 2: unknown variable free: it stands in no row and not in the objective"),
)

NOT_STATED: tuple[tuple[str, str, str], ...] = (
    # These are models, and cannot be programs.
    ("c2: y >= 1", "c2: 3 <= y <= 2", "line 5, column 2: row c2 cannot hold: its sides are 3 and 2"),
    ("c2: y >= 1", "c2: y >= 9",
     "line 5, column 2: row c2 cannot hold: its greatest value is 3, and it asks for 9 at least"),
    ("c2: y >= 1", "c2: 0 y >= 9",
     "line 5, column 2: row c2 cannot hold: its greatest value is 0, and it asks for 9 at least"),
    ("x <= 3", "x <= -3", "line 7, column 2: the bounds of x leave no value: 0 to -3"),
    ("x <= 3", "0.2 <= x <= 0.7", "line 7, column 9: the bounds of x leave no whole number: 1/5 to 7/10"),
    ("General\n x y", "General\n x",
     "line 8, column 2: variable y is continuous: declare it integer, or ask for a decimal grid with --digits=N"),
    ("General\n x y", "Semi-continuous\n x y",
     "line 7, column 2: x is semicontinuous, which cannot be stated in a .opt file"),
    (" c2: y >= 1\nBounds\n x <= 3\n y <= 3\n", " c2: y - x >= 1\nBounds\n x free\n y free\n",
     "line 4, column 2: row c1 has one side only, and the bounds of its variables allow no least "
     "value to close it: bound the variables, or the row on both sides"),
)


class LpDialectTest(ToolsCase):
    def points(self, text):
        return program_points(converted(reader("lp"), text))

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
        model = read_text(text, "lp")
        self.assertEqual([row.name for row in model.rows], ["R2", "R3", "R4", "R5"])
        self.assertEqual(set(self.points(text)), {(1, 0), (2, 0), (1, 1), (2, 1)})

    def test_a_label_that_comes_later_is_not_taken(self):
        """A row without a label was called R1, and then `R1:` stood twice."""
        model = read_text("min x + y\nst\n x <= 2\n y <= 1\n R1: x + y >= 1\n R3: x - y >= 0\n x + 2 y <= 3\nend\n", "lp")
        self.assertEqual([row.name for row in model.rows], ["R2", "R4", "R1", "R3", "R5"])

    def test_bounds(self):
        for lines, low, high in (("x <= 2", 0, 2), ("-2 <= x <= 2", -2, 2), ("2 >= x >= -2", -2, 2), ("x = 1", 1, 1),
                                 ("x free\n x <= 1", -5, 1), ("x >= -3\n x <= -1", -3, -1), ("-inf <= x <= 1", -5, 1),
                                 ("x <= 1e20", 0, 5), ("-3 <= x", -3, 5), ("1.5 <= x <= 3.5", 2, 3), ("x FREE", -5, 5)):
            text = "min\nst\n c: -5 <= x <= 5\nbounds\n %s\ngeneral\n x\nend\n" % lines
            self.assertEqual(set(self.points(text)), {(k,) for k in range(low, high + 1)}, lines)

    def test_long_numbers_that_are_written_out_are_numbers(self):
        """An equation between numbers of thirty digits was refused as one with an infinity, and an inequation left out."""
        long = 98765432109876543210987654321
        for row, lower, upper in (("= %d" % long, long, long), ("<= %d" % long, -INF, long), (">= -%d.25" % long, -long - Fraction(1, 4), INF)):
            model = read_text("min\n x\nst\n c: %d x %s\ngeneral\n x\nend\n" % (long, row), "lp")
            self.assertEqual([(r.lower, r.upper) for r in model.rows], [(lower, upper)])
            self.assertEqual([note.message for note in model.notes],
                             ["a side or bound of 1e20 or more that is written out is the number that it says, where other readers take "
                              "it for none"])
        model = read_text("min\n x\nst\n c: x <= 1%s\n d: x <= 1e25\nbounds\n x <= %s\ngeneral\n x\nend\n" %
                          ("0" * 20, int(1e30)), "lp")
        self.assertEqual((model.rows, model.variables[0].upper, model.notes), ([], INF, []))

    def test_binary_keeps_a_fixed_variable(self):
        text = "min\nst\n c: x + y <= 5\nbounds\n x = 1\n y <= 9\nbinary\n x y\nend\n"
        self.assertEqual(set(self.points(text)), {(1, 0), (1, 1)})

    def test_binary_counts_wherever_it_stands(self):
        """Bounds behind it took it back: `x <= 5` made x an integer from 0 to 5."""
        text = "max x + y\nst\n c: x + y <= 9\nbinary\n x y\nbounds\n x <= 5\n y = 0\nend\n"
        for given in (text, text.replace("x <= 5", "x free"), text.replace("binary\n x y\n", "").replace("end", "binary\n x y\nend")):
            self.assertEqual([(v.integer, v.lower, v.upper) for v in read_text(given, "lp").variables], [(True, 0, 1), (True, 0, 0)], given)

    def test_blanks_of_other_tongues_are_blanks(self):
        """What is copied from a page has blanks that do not break: they were part of the name, which made another variable of it."""
        text = "min\u00a0x +\u20092\u00a0y\nst\n\u00a0c: x\u3000+ y >= 1\nbounds\n x <=\u00a03\ngeneral\n x\u00a0y\nend\n"
        model = read_text(text, "lp")
        self.assertEqual([(v.name, v.integer, v.upper) for v in model.variables], [("x", True, 3), ("y", True, INF)])
        names = [v.name for v in read_text("min h\u00f6he + \u03b1 + l\u00b7l + x\u2032 + \u6570\nst\nend\n", "lp").variables]
        self.assertEqual(names, ["h\u00f6he", "\u03b1", "l\u00b7l", "x\u2032", "\u6570"])

    def test_objective_constant_and_comments(self):
        text = "\\ head\nmax 2 x - 3 \\ more \\ more\n + 0.5\nst\n x <= 1\ninteger\n x\nend \\ done\n"
        self.assertEqual(self.points(text), {(0,): Fraction(-5, 2), (1,): Fraction(-1, 2)})

    def test_odd_names(self):
        text = "min a*/b\nst\n c: x[1] + a!b <= 1\ngeneral\n x[1] a!b\nend\n".replace("a*/b", "a!b")
        names = [column.name for column in name_map.read_map(converted(reader("lp"), text)).columns]
        self.assertEqual(names, ["a!b", "x[1]"])


class KindsTest(ToolsCase):
    """What the sections say of a variable."""

    def kinds(self, text):
        return [(v.name, v.integer, v.semi, v.lower, v.upper) for v in read_text(text, "lp").variables]

    def test_kinds_of_variables(self) -> None:
        text = ("max a + b + c + d + e\nst\n r: a + b + c + d + e <= 9\nbounds\n 2 <= d <= 5\n e <= 7\n b free\n"
                "generals\n b d\nbinaries\n c\nsemi-continuous\n d e\nend\n")
        self.assertEqual(self.kinds(text), [("a", False, False, 0, INF), ("b", True, False, -INF, INF),
                                            ("c", True, False, 0, 1), ("d", True, True, 2, 5), ("e", False, True, 0, 7)])
        for word in ("semi", "semis", "Semi-Continuous"):
            self.assertEqual(self.kinds(text.replace("semi-continuous", word))[4], ("e", False, True, 0, 7))

    def test_every_word_of_every_section(self) -> None:
        for head in ("max", "maximize", "MAXIMISE", "maximum", "min", "Minimize", "minimise", "minimum"):
            for rows in ("st", "s.t.", "st.", "subject to", "Subject   To", "such that"):
                for kind in ("general", "generals", "gen", "integer", "integers", "int", "binary", "binaries", "bin"):
                    for bounds in ("bound", "bounds"):
                        model = read_text("%s x\n%s\n c: x <= 3\n%s\n x <= 1\n%s\n x\nend\n" %
                                          (head, rows, bounds, kind), "lp")
                        self.assertEqual((model.maximise, len(model.rows), model.variables[0].integer),
                                         (head.lower().startswith("max"), 1, True))

    def test_a_negative_upper_bound_is_noted(self) -> None:
        model = read_text(LP.replace("x <= 3", "x <= -3"), "lp")
        self.assertEqual([(note.message, note.place) for note in model.notes],
                         [("x has a negative upper bound and no lower one: its lower bound is 0, as the form says", (7, 2))])
        for bound in ("-inf <= x <= -3", "x >= -5\n x <= -3", "x free\n x <= -3", "x = -3", "x <= 3"):
            self.assertEqual(read_text(LP.replace("x <= 3", bound), "lp").notes, [], bound)

    def test_exact_numbers(self) -> None:
        text = LP.replace("2 y", "1.00000000000000000001 y").replace("<= 4", "<= 12345678901234567890.5e-3")
        model = read_text(text, "lp")
        assert model.objective is not None
        self.assertEqual(model.objective.coefficients[1], 1 + Fraction(1, 10**20))
        self.assertEqual(model.rows[0].upper, Fraction("12345678901234567.8905"))

    def test_terms_that_repeat(self) -> None:
        """Beside the short way that most terms take: variables that stand twice, signs in a row, constants."""
        for text, value, constant in (("2 x + 3 x", 5, 0), ("x - x", 0, 0), ("- 2 x - - 3 x", 1, 0), ("2 x + 3 - 4 + x", 3, -1),
                                      ("+ x + 2 x + 3 x", 6, 0), ("1.5 x - 0.5 x + 1e2", 1, 100)):
            model = read_text("min " + text + "\nst\nend\n", "lp")
            assert model.objective is not None
            self.assertEqual((model.objective.coefficients, model.constant), ({0: value}, constant), text)

    def test_what_writers_write(self) -> None:
        """Names and comments as other programs print them."""
        text = ("\\* workshop *\\\nMaximize\nOBJ: 3 x_(1,'a') + 2 y[2] - 0.5 z.1#\nSubject To\n_C1: x_(1,'a') + y[2] <= 4\n"
                "C_5.0_1.0: - z.1# + 2 y[2] >= -1.5\n\nBounds\n x_(1,'a') <= 3\n -inf <= z.1# <= 8\n y[2] free\nGenerals\n"
                "x_(1,'a')\nz.1#\nEnd\n\n\\* eof *\\\n")
        model = read_text(text, "lp")
        self.assertEqual([v.name for v in model.variables], ["x_(1,'a')", "y[2]", "z.1#"])
        self.assertEqual([(r.name, r.coefficients, r.lower, r.upper) for r in model.rows],
                         [("_C1", {0: 1, 1: 1}, -INF, 4), ("C_5.0_1.0", {2: -1, 1: 2}, Fraction("-1.5"), INF)])


class RefusalTest(ToolsCase):
    def test_what_is_not_read(self) -> None:
        for old, new, message in NOT_READ:
            text = LP.replace(old, new)
            with self.subTest(text), self.assertRaises(ReadError) as caught:
                read_text(text, "lp")
            self.assertEqual((LP.count(old), str(caught.exception)), (1, message))

    def test_what_cannot_be_a_program(self) -> None:
        for old, new, message in NOT_STATED:
            text = LP.replace(old, new)
            model = read_text(text, "lp")
            with self.subTest(text), self.assertRaises(ModelError) as caught:
                opt_writer.opt_text(model, "m")
            self.assertEqual((LP.count(old), str(caught.exception)), (1, message))


if __name__ == "__main__":
    harness.main()
