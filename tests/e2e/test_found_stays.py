"""A solution that was shown is in the file at the end, also if the step that found it was repeated in exact arithmetic.

The lattice of this program leaves standard precision in almost every step, so that the report of the best target goes
back now and then; the run is ended at such a moment.
"""

import re
import signal

import harness

KNAPSACK = """[ inf ]
[
  [ 72 58 64 50 61 57 67 73 68 50 72 67 79 41 74 51 62 77 72 62 51 59 76 67 69 79 57 53 60 82 ]
]
[
]
[ ]
[
  [ 75 11 78 47 93 81 66 64 95 43 29 58 63 53 42 47 96 57 55 25 52 90 44 93 84 65 27 25 58 18 ]
  [ 55 79 52 8 49 28 67 81 94 33 91 33 67 40 93 38 26 89 38 51 31 49 52 45 40 45 15 50 50 72 ]
  [ 35 78 61 50 18 100 46 47 38 8 74 87 68 44 39 8 59 45 94 10 24 14 98 55 31 49 62 32 20 60 ]
  [ 88 9 76 60 52 31 34 41 51 32 63 81 59 5 98 77 58 64 91 75 68 77 76 29 59 89 89 47 62 77 ]
  [ 38 29 50 11 18 36 76 100 21 78 25 75 71 13 80 38 61 30 8 75 75 6 91 74 73 98 96 77 71 94 ]
]
[ 0 0 0 0 0 ]
[ 867 780 727 909 844 ]
[ 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ]
[ 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ]
[ 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 ]
"""
TARGET = re.compile(r"^T\(bestTarget\) = (\S+),", re.MULTILINE)


class FoundStaysTest(harness.Case):
    def test_the_best_that_was_shown_is_in_the_file(self):
        self.write("prog.opt", KNAPSACK)
        session = self.start("--verb=2", "--sieve=1", "--sample=1", "--iters=60", "prog.opt")
        at = 0
        while True:
            try:
                at = session.wait_for(r"\nT\(bestTarget\) = \S+,", after=at)
            except AssertionError:
                break  # the run ended by itself, and its report never went back
            shown = [float(value) for value in TARGET.findall(session.out[:at])]
            if shown[-1] > min(shown):
                session.kill(signal.SIGTERM)
                break
        self.assertEqual(session.wait(), 0)
        best = min(float(value) for value in TARGET.findall(session.out))
        self.assertEqual(self.stars()[0].target_norm, best)


if __name__ == "__main__":
    harness.main()
