"""What the solver asks of a program is kept by the writer: finite sides, equations where the sides are equal, a box from 0."""

from fractions import Fraction

import support
import checker
import harness
from latbox.errors import PlacedError
from support import ToolsCase, converted, program_points, reader


class ProgramFormTest(ToolsCase):
    """What the solver asks of a program is kept: finite sides, equations where the sides are equal, a box from 0."""

    def program(self, rows, bounds):
        text = "min x + y\nst\n %s\nbounds\n %s\ngeneral\n x y\nend\n" % (rows, bounds)
        return checker.Program(converted(reader("lp"), text))

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
        with self.assertRaisesRegex(PlacedError, "row c cannot hold: it has no value from 3 to 3"):
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
        program = converted(reader("lp"), text)
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
        self.assertEqual(set(program_points(converted(reader("lp"), text))), {(0,), (1,), (2,)})

    def test_an_objective_that_is_constant_is_no_target(self):
        text = "min 0 x + 4\nst\n c: x >= 1\nbounds\n x <= 2\ngeneral\n x\nend\n"
        program = converted(reader("lp"), text)
        self.assertEqual(checker.Program(program).dt, [])
        self.assertEqual(program_points(program), {(1,): 4, (2,): 4})

    def test_a_continuous_variable_that_is_fixed(self):
        text = "min x + y\nst\n c: x + y >= 1\nbounds\n x <= 2\n y = 0.125\ngeneral\n x\nend\n"
        self.assertEqual(program_points(converted(reader("lp"), text)),
                         {(k, Fraction(1, 8)): k + Fraction(1, 8) for k in (1, 2)})

    def test_no_variables(self):
        with self.assertRaisesRegex(PlacedError, "no variables"):
            converted(reader("lp"), "min\nst\nend\n")


if __name__ == "__main__":
    harness.main()
