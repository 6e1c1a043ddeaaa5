"""The gallery's files are those of its generator, and the figures that its programs rest on follow from computation."""

import glob
import os
import subprocess
import sys
from math import gcd

import checker
import harness


def script():
    return os.path.join(harness.Settings.examples, "make_gallery.py")


def generate(argument):
    return subprocess.run([sys.executable, "-B", script(), argument], stdout=subprocess.PIPE, check=True).stdout.decode()


def example(name):
    with open(os.path.join(harness.Settings.examples, name), encoding="utf-8") as file:
        return file.read()


def program(name):
    return checker.Program(example(name + ".opt"))


class GeneratorTest(harness.Case):
    def test_committed_files_are_its_output(self):
        generate(self.folder)
        names = sorted(os.listdir(self.folder))
        self.assertGreaterEqual(len(names), 15)
        for name in names:
            with self.subTest(name):
                self.assertEqual(self.read(name), example(name))

    def test_the_table_holds_its_rows(self):
        page = example("README.md").splitlines()
        for line in generate("--table").splitlines():
            self.assertIn(line, page)


class PageTest(harness.Case):
    def test_every_program_is_in_the_table_and_begins_with_a_comment(self):
        page = example("README.md")
        for path in glob.glob(os.path.join(harness.Settings.examples, "*.opt")):
            name = os.path.basename(path)
            self.assertIn("(%s)" % name, page)
            self.assertTrue(example(name).startswith("/* "), name)


class FigureTest(harness.Case):
    """What the comments claim, recomputed from the files as they stand."""

    def test_no_smaller_number_of_steps_of_a_temperament_fits(self):
        p = program("temperament")
        scale = -p.au[0][1]
        values = [row[0] for row in p.au]
        highs = [high + value for high, value in zip(p.ru, values)]
        fits = [q for q in range(1, 271)
                if all(min(q * v % scale, -q * v % scale) <= high for v, high in zip(values, highs))]
        self.assertEqual(fits, [270])

    def test_coins_cannot_pay_one_less(self):
        for name in ("coin_problem", "equality_knapsack"):
            p = program(name)
            reach = residue_reach([int(a) for a in p.ag[0]])
            side = int(p.bg[0])
            self.assertEqual(max(reach) - len(reach), side - 1)
            self.assertLessEqual(reach[side % len(reach)], side)

    def test_the_minimal_polynomial_is_a_point(self):
        self.assertIsNone(program("integer_relation").violation([41, 4, 52, 34, 34, 40]))

    def test_tarrys_numbers_are_a_point(self):
        chosen = {2, 16, 21, 25} | {25 + v for v in (5, 14, 23, 24)}
        self.assertIsNone(program("tarry_escott_8").violation([int(v in chosen) for v in range(1, 51)]))


def residue_reach(coins):
    """Per residue of the first coin the least sum of the others in it, by going round each cycle twice."""
    least, *others = sorted(coins)
    reach = [0] + [sum(coins) ** 2] * (least - 1)
    for coin in others:
        for start in range(gcd(coin, least)):
            at = start
            for _ in range(2 * (least // gcd(coin, least))):
                onward = (at + coin) % least
                reach[onward] = min(reach[onward], reach[at] + coin)
                at = onward
    return reach


if __name__ == "__main__":
    harness.main()
