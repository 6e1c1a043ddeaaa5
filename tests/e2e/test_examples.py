"""Every program in examples/ is run as its row in expected.json says, and every result is checked exactly.

`reach` is what a run must bring, `aim` (where it differs) what the complete search is expected to bring: the row is
raised when it does. `points` is the count of feasible points, null where exhaustive search cannot count them; then
`known` says what `best` rests on. Rows with `slow` run with LATBOX_SLOW=1 only.
"""

import glob
import json
import os
import shutil
from fractions import Fraction

import checker
import exhaustive
import harness

# A busy machine or a sanitizer makes seconds minutes.
PATIENCE = 500


def table():
    with open(os.path.join(harness.Settings.examples, "expected.json"), encoding="utf-8") as file:
        return json.load(file)


def is_left_out(row):
    return row.get("slow", False) and not os.environ.get("LATBOX_SLOW")


def program_text(name):
    with open(os.path.join(harness.Settings.examples, name + ".opt"), encoding="utf-8") as file:
        return file.read()


class TableTest(harness.Case):
    def test_every_example_has_its_row(self):
        files = glob.glob(os.path.join(harness.Settings.examples, "*.opt"))
        names = {os.path.splitext(os.path.basename(path))[0] for path in files}
        self.assertEqual(names, set(table()))
        self.assertGreaterEqual(len(names), 44)

    def test_what_cannot_be_counted_says_what_it_rests_on(self):
        for name, row in table().items():
            self.assertEqual(row["points"] is None, bool(row.get("known")), name)

    def test_the_figures_are_those_of_exhaustive_search(self):
        for name, row in table().items():
            if row["points"] is None:
                continue
            with self.subTest(name):
                self.assertEqual(exhaustive.solve_text(program_text(name)), (row["points"], Fraction(row["best"])))


class ExamplesTest(harness.Case):
    def test_every_example(self):
        for name, row in table().items():
            if is_left_out(row):
                continue
            with self.subTest(name):
                self.run_example(name, row)

    def run_example(self, name, row):
        shutil.copy(os.path.join(harness.Settings.examples, name + ".opt"), self.folder)
        result = self.run_solver(*row["options"], name + ".opt", limit=PATIENCE)
        self.assert_ends_well(result)
        program = checker.Program(self.read(name + ".opt"))
        norms = [program.norms(star.x)[0] for star in self.stars(name)]
        self.assertTrue(norms, "no feasible point found")
        if row["reach"] == "optimum":
            self.assertEqual(min(norms), Fraction(row["best"]))

    def test_the_answers_are_among_the_four(self):
        shutil.copy(os.path.join(harness.Settings.examples, "hundred_fowls.opt"), self.folder)
        self.assert_ends_well(self.run_solver("--sol=4", "--iters=20", "hundred_fowls.opt"))
        self.assertLessEqual({tuple(star.x) for star in self.stars("hundred_fowls")},
                             {(0, 25, 75), (4, 18, 78), (8, 11, 81), (12, 4, 84)})


if __name__ == "__main__":
    harness.main()
