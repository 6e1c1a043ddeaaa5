"""latbox-names: solutions by the names and in the coordinates of the model."""

import csv
import io
import json

import support
import checker
import harness
from support import ToolsCase

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
        self.assertEqual(self.tool("latbox-names", "p.opt").out, """\
Solution 1: COST = -1.5 (maximise), found after 3 s
  A "quoted, name"  4
  B                 0.5

Solution 2: COST = -4.625 (maximise), found after 75 s
  A "quoted, name"  5
  B                 2.75

2 solution(s)
""")

    def test_json(self):
        self.assertEqual(json.loads(self.tool("latbox-names", "--json", "p.opt").out), {
            "problem": "MY PROBLEM", "objective": "COST", "sense": "max", "solutions": [
                {"objective": -1.5, "seconds": 3, "values": {"A \"quoted, name\"": 4, "B": 0.5}},
                {"objective": -4.625, "seconds": 75, "values": {"A \"quoted, name\"": 5, "B": 2.75}}]})

    def test_csv(self):
        self.assertEqual(list(csv.reader(io.StringIO(self.tool("latbox-names", "--csv", "p.opt").out))),
                         [["solution", "objective", "seconds", "A \"quoted, name\"", "B"],
                          ["1", "-1.5", "3", "4", "0.5"], ["2", "-4.625", "75", "5", "2.75"]])

    def test_first_and_another_file(self):
        self.write("other", SOLUTIONS.replace("[ 1 0 ]", "[ 5 -1/2 ]"))
        result = self.tool("latbox-names", "--first=1", "--nonzero", "p.opt", "other")
        self.assertEqual(result.out, "Solution 1: COST = 6.75 (maximise), found after 3 s\n\n1 solution(s)\n")

    def test_standard_input_has_no_solutions_beside_it(self):
        """It said `0 solution(s)`."""
        done = self.tool("latbox-names", "-", status=2, stdin=PROGRAM.encode())
        self.assertTrue(done.err.endswith("error: PROGRAM.sol is wanted too: nothing lies beside standard input\n"), done.err)
        self.assertIn("2 solution(s)", self.tool("latbox-names", "-", "p.sol", stdin=PROGRAM.encode()).out)

    def test_no_solutions(self):
        self.remove("p.sol")
        self.assertEqual(self.tool("latbox-names", "p.opt").out, "0 solution(s)\n")
        self.assertEqual(json.loads(self.tool("latbox-names", "--json", "p.opt").out)["solutions"], [])
        self.tool("latbox-names", "p.opt", "none.sol", status=1)

    def test_numbers_that_no_float_holds(self):
        self.write("p.sol", "[ 123456789012345678901234567890 0 ] | 0 | [ 0 ] | 0 | 0 | p | 2.2.2\n")
        self.assertIn(": -123456789012345678901234567885,", self.tool("latbox-names", "--json", "p.opt").out)

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
            self.assertIn(reason, self.tool("latbox-names", "p.opt", status=1).err)


if __name__ == "__main__":
    harness.main()
