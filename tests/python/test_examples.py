"""The scripts in examples/python run as they are printed, in seconds, and what they print is true."""

from __future__ import annotations

import os
import re
import subprocess
import sys
from itertools import product

import support
import harness

FOLDER = os.path.join(support.ROOT, "examples", "python")
SECONDS = harness.LIMIT  # of a busy machine; they take one to three


def scripts() -> list[str]:
    return sorted(name for name in os.listdir(FOLDER) if name.endswith(".py"))


class ExamplesTest(harness.Case):
    def run_script(self, name: str, *arguments: object) -> list[str]:
        """The lines that it prints."""
        environment = {**os.environ, "PYTHONPATH": support.PACKAGE, "PYTHONDONTWRITEBYTECODE": "1",
                       "LATBOX_BIN_DIR": os.path.dirname(harness.Settings.binary)}
        done = subprocess.run([sys.executable, os.path.join(FOLDER, name), *map(str, arguments)], cwd=self.folder, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment,
                              timeout=SECONDS, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(os.listdir(self.folder), [])
        return done.stdout.splitlines()

    def test_each_has_a_test_and_a_row(self) -> None:
        with open(os.path.join(FOLDER, "README.md"), encoding="utf-8") as file:
            listed = re.findall(r"^\| \[(\w+\.py)\]\(\1\) \|", file.read(), re.MULTILINE)
        self.assertEqual(sorted(listed), scripts())
        tested = {name[len("test_"):] + ".py" for name in dir(self) if name.startswith("test_")}
        self.assertLessEqual(set(scripts()), tested)

    def test_market_split(self) -> None:
        lines = self.run_script("market_split.py")
        self.assertEqual(lines[0], "exact split: infeasible")
        self.assertRegex(lines[1], r"^nearest split: optimal, off by [1-9]\d*$")
        self.assert_split(lines)
        # Small enough to try all of them.
        lines = self.run_script("market_split.py", 3, 13, 5)
        self.assert_split(lines)
        self.assertEqual(int(lines[1].split()[-1]), self.least_deviation(3, 13, 5))
        lines = self.run_script("market_split.py", 1, 12, 1)
        self.assertEqual(lines[0], "exact split: optimal")
        self.assertRegex(lines[2], r"^product 0: ")

    def assert_split(self, lines: list[str]) -> None:
        """The products' lines add up to the deviation."""
        pairs = [tuple(map(int, match.groups())) for match in (re.match(r"product \d+: (\d+) of (\d+)$", line) for line in lines)
                 if match]
        self.assertEqual(len(pairs), 3)
        self.assertEqual(sum(abs(sold - total // 2) for sold, total in pairs), int(lines[1].split()[-1]))

    def least_deviation(self, products: int, customers: int, seed: int) -> int:
        sys.path.insert(0, FOLDER)
        self.addCleanup(sys.path.remove, FOLDER)
        from market_split import market

        demand = market(products, customers, seed)
        return min(sum(abs(sum(a * x for a, x in zip(row, split)) - sum(row) // 2) for row in demand)
                   for split in product((0, 1), repeat=customers))

    def test_subset_sum(self) -> None:
        lines = self.run_script("subset_sum.py")
        self.assertEqual(lines[0], "32 numbers of 32 bits: optimal")
        terms, _, total = lines[1].partition(" = ")
        self.assertEqual(sum(map(int, terms.split(" + "))), int(total))
        self.assertGreater(int(total), 2**32)

    def test_magic_squares(self) -> None:
        lines = self.run_script("magic_squares.py")
        self.assertEqual(lines[-1], "8 squares")
        squares = [[[int(k) for k in row.split()] for row in lines[i:i + 3]] for i in range(0, 32, 4)]
        self.assertEqual(len({str(square) for square in squares}), 8)
        for square in squares:
            self.assertEqual(sorted(sum(square, [])), list(range(1, 10)))
            sums = {sum(row) for row in square} | {sum(column) for column in zip(*square)}
            sums |= {sum(square[i][i] for i in range(3)), sum(square[i][2 - i] for i in range(3))}
            self.assertEqual(sums, {15})
        lines = self.run_script("magic_squares.py", 3, 1, 1, 2)
        self.assertEqual(lines[-1], "2 squares")
        self.assertEqual(self.run_script("magic_squares.py", 3, 1, 1, 5)[-1], "0 squares")

    def test_designs(self) -> None:
        """The script tests each design itself, subset by subset."""
        lines = self.run_script("designs.py")
        self.assertEqual(lines[0], "5-(12, 6, 1): 16 equations, 20 orbits of blocks")
        matrix = [[int(entry) for entry in line.split()] for line in lines[1:17]]
        self.assertEqual(lines[17], "all: %d designs" % self.exact_covers(matrix))
        self.assertTrue(all(line.startswith("132 blocks, ") for line in lines[18:]))

    def exact_covers(self, matrix: list[list[int]]) -> int:
        """The number of 0/1 points at which each row is 1."""
        columns = list(zip(*matrix))

        def count(j: int, left: tuple[int, ...]) -> int:
            if min(left) < 0:
                return 0
            if j == len(columns):
                return int(not any(left))
            return count(j + 1, left) + count(j + 1, tuple(a - b for a, b in zip(left, columns[j])))

        return count(0, (1,) * len(matrix))

    def test_code(self) -> None:
        lines = self.run_script("code.py")
        self.assertEqual(lines[0], "25 orbits, status optimal")
        self.assertEqual(lines[-1], "length 20, dimension 5, distance 12")
        rows = [[int(entry) for entry in line.split()] for line in lines[1:-1]]
        words = {tuple(sum(a * x for a, x in zip(word, column)) % 3 for column in zip(*rows)) for word in product(range(3), repeat=5)}
        self.assertEqual({len(word) for word in words}, {20})
        self.assertEqual((len(words), sorted(sum(x != 0 for x in word) for word in words)[:2]), (3**5, [0, 12]))


if __name__ == "__main__":
    harness.main()
