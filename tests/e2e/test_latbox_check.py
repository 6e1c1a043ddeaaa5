"""latbox-check: hand-written and damaged files, the solver's own files, and the two checkers against each other."""

import os
import random
import resource
import subprocess

import checker
import harness
import programs
from programs import opt

# 3 x + 5 y = 14 within 0..4 has one solution, (3, 1).
ONE = opt(ag=[[3, 5]], bg=[14], rx=[4, 4])
GOOD = "[ 3 1 ] | 0 | [ ] | 0 | 0 | --verb=0 | 2.2.2\n"
WRONG = "[ 4 1 ] | 0 | [ ] | 0 | 0 | --verb=0 | 2.2.2\n"


class Case(harness.Case):
    def setUp(self):
        super().setUp()
        if not os.path.exists(harness.latbox_check()):
            self.skipTest("latbox-check is not built (GMP is not installed)")

    def check(self, sol, text=ONE, *arguments):
        self.write("prog.opt", text)
        self.write("prog.sol", sol)
        return self.run_latbox_check("prog.opt", *arguments)


class VerdictTest(Case):
    def test_all_well(self):
        result = self.check(GOOD)
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertEqual(result.out, "solution 1: ok, target norm 0, slack norm 0\nprog.sol: 1 solution, all well\n")

    def test_wrong(self):
        result = self.check(GOOD + WRONG)
        self.assertEqual((result.status, result.err), (1, ""))
        self.assertEqual(result.out, "solution 1: ok, target norm 0, slack norm 0\n"
                                     "solution 2: wrong (line 2): equation 1 gives 17, not 14\n"
                                     "prog.sol: 1 of 2 solutions wrong\n")

    def test_quiet(self):
        self.assertEqual(self.check(GOOD + WRONG, ONE, "--quiet").out, "prog.sol: 1 of 2 solutions wrong\n")

    def test_unreadable(self):
        result = self.check(GOOD + "[ 3 1 ] | zero | [ ] | 0 | 0 | p\n")
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertEqual(result.err, "latbox-check: prog.sol: line 2, column 11: expected a number, found 'z'\n")
        result = self.check(GOOD, ONE.replace("14", "1.4.1"))
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertEqual(result.err, "latbox-check: prog.opt: line 7, column 3: '1.4.1' is not a number\n")

    def test_no_file_of_solutions(self):
        self.write("prog.opt", ONE)
        result = self.run_latbox_check("prog.opt")
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertEqual(result.out, "prog.sol does not exist: no solutions to check\n")
        result = self.run_latbox_check("prog.opt", "prog.sol")
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertEqual(result.err, "latbox-check: prog.sol: No such file or directory\n")

    def test_the_version_is_the_solver_s(self):
        version = self.run_solver("--help=1").out.split(" +++ ")[0].split()[-1]
        self.assertEqual(self.run_latbox_check("--version").out, "latbox-check %s\n" % version)

    def test_the_help_names_all_options(self):
        result = self.run_latbox_check("--help")
        self.assertEqual(result.status, 0)
        for option in ("--proof=FILE", "--threads=N", "--part=K/N", "--join=FILE", "--quiet", "--help", "--version"):
            self.assertIn("\n  %s " % option, result.out)

    def test_a_closed_output(self):
        self.write("prog.opt", ONE)
        self.write("prog.sol", GOOD)
        with open("/dev/full", "wb") as full:
            done = subprocess.run([harness.latbox_check(), "prog.opt"], cwd=self.folder, stdout=full,
                                  stderr=subprocess.PIPE, timeout=harness.LIMIT, check=False)
        self.assertEqual((done.returncode, done.stderr), (2, b"latbox-check: the output cannot be written\n"))


class RepeatedTest(Case):
    """Points are compared, not texts."""

    def test_written_in_another_way(self):
        result = self.check(GOOD + GOOD.replace("3", "6/2").replace("1 ]", "+01 ]") + GOOD.replace("3", "30e-1"))
        self.assertEqual(result.status, 1)
        self.assertEqual(result.out, "solution 1: ok, target norm 0, slack norm 0\n"
                                     "solution 2: wrong (line 2): the same as solution 1\n"
                                     "solution 3: wrong (line 3): the same as solution 1\n"
                                     "prog.sol: 2 of 3 solutions wrong\n")

    def test_random_files(self):
        """The earliest of equal points is named, by a program that has all points of its box."""
        draw = random.Random(8)
        text = opt(au=[[0, 0]], lu=[0], ru=[0], dx=[0, 1], rx=[5, 1])
        for _ in range(30):
            points = [(draw.randrange(6), draw.randrange(11)) for _ in range(draw.randrange(80))]
            sol = "".join("[ %d %d/10 ] | 0 | [ ] | 0 | 0 | p\n" % point for point in points)
            wanted = [": ok, target norm 0, slack norm 0" if points.index(point) == i else
                      ": wrong (line %d): the same as solution %d" % (i + 1, points.index(point) + 1)
                      for i, point in enumerate(points)]
            lines = self.check(sol, text).out.splitlines()
            self.assertEqual([line for line in lines if line.startswith("solution")],
                             ["solution %d%s" % (i + 1, text) for i, text in enumerate(wanted)])


class TornTest(Case):
    """A last line that breaks off, as a kill leaves it in a file to which lines are appended."""

    def test_every_length(self):
        for length in range(len(GOOD)):
            result = self.check(GOOD + WRONG[:length])
            self.assertEqual(result.err, "")
            if length == 0:
                verdict, status = "1 solution, all well", 0
            elif length < WRONG.index(" --verb"):
                verdict, status = "1 solution, all well; line 2 is torn, and no solution", 0
            else:
                verdict, status = "1 of 2 solutions wrong", 1
            self.assertEqual((result.out.splitlines()[-1], result.status), ("prog.sol: " + verdict, status), length)

    def test_only_the_last_line_may_be_torn(self):
        result = self.check(GOOD[:9] + "\n" + GOOD)
        self.assertEqual((result.status, result.out), (2, ""))
        self.assertEqual(result.err, "latbox-check: prog.sol: line 1, column 10: expected a number, found the end\n")


class LargeTest(Case):
    """Files of the kind that latbox-all writes: neither text nor numbers of the lines are kept."""

    LINES = 100000
    VARIABLES = 60
    # The process without a file needs 8 MB, the text of the lines alone 14 MB, their numbers 300 MB.
    MEMORY = 20 << 20

    def setUp(self):
        super().setUp()
        if harness.address_sanitizer():
            self.skipTest("no limit of the address space under the address sanitizer")
        self.program = opt(au=[[1] * self.VARIABLES], lu=[0], ru=[self.VARIABLES], rx=[1] * self.VARIABLES)

    def line(self, i):
        """Line i, from 1, holds i in binary; a 2 in the first place makes it wrong."""
        first = "2" if i % 3 == 0 else "0"
        return "[ %s %s ] | 0 | [ ] | 0 | 0 | p\n" % (first, " ".join(format(i, "0%db" % (self.VARIABLES - 1))))

    def limited(self, *arguments, **keys):
        limits = (self.MEMORY, self.MEMORY)
        return self.run_latbox_check(*arguments, prepare=lambda: resource.setrlimit(resource.RLIMIT_AS, limits), **keys)

    def text(self):
        """Every third line is wrong; at the end the second and the last line stand once more."""
        lines = [self.line(i) for i in range(1, self.LINES + 1)]
        return "".join(lines + [lines[1], lines[-1]])

    def verdict(self):
        return "%d of %d solutions wrong\n" % (self.LINES // 3 + 2, self.LINES + 2)

    def test_memory_is_bounded_and_every_line_is_told(self):
        self.write("prog.opt", self.program)
        self.write("prog.sol", self.text())
        result = self.limited("prog.opt")
        self.assertEqual((result.status, result.err), (1, ""))
        lines = result.out.splitlines(True)
        self.assertEqual(lines[-1], "prog.sol: " + self.verdict())
        for i, line in enumerate(lines[:self.LINES], 1):
            self.assertEqual(line, "solution %d: wrong (line %d): x1 = 2 is outside 0 .. 1\n" % (i, i) if i % 3 == 0 else
                             "solution %d: ok, target norm 0, slack norm 0\n" % i)
        self.assertEqual(lines[self.LINES:-1],
                         ["solution %d: wrong (line %d): the same as solution %d\n" % (i, i, same)
                          for i, same in ((self.LINES + 1, 2), (self.LINES + 2, self.LINES))])

    def test_many_repetitions(self):
        self.write("prog.opt", self.program)
        self.write("prog.sol", "".join(self.line(1 + i % 1000) for i in range(self.LINES)))
        result = self.limited("--quiet", "prog.opt")
        # A third of the first thousand is wrong, and all lines behind them.
        self.assertEqual((result.status, result.err, result.out),
                         (1, "", "prog.sol: %d of %d solutions wrong\n" % (self.LINES - 1000 + 333, self.LINES)))

    def test_through_a_pipe(self):
        self.write("prog.opt", self.program)
        result = self.limited("--quiet", "prog.opt", "/dev/stdin", stdin=self.text().encode())
        self.assertEqual((result.status, result.err, result.out), (1, "", "/dev/stdin: " + self.verdict()))


class SolverTest(Case):
    """What the solver writes, where its rules lead it away from the program as written."""

    def solve_and_check(self, text):
        self.write("prog.opt", text)
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=20", "prog.opt"))
        return self.run_latbox_check("prog.opt")

    def test_another_box(self):
        # x1 - x2 = 6 with lower bounds -4: the solver's own box reaches to 8.
        result = self.solve_and_check(opt(ag=[[1, -1]], bg=[6], lx=[-4, -4], rx=[4, 4]))
        self.assertIn("warning: lower bounds that are not 0 make the solver search another box: "
                      "x1 within -4 .. 8 instead of -4 .. 4", result.out)
        outside = [star for star in checker.read_stars(self.read("prog.sol")) if max(star.x) > 4]
        self.assertTrue(outside)
        self.assertEqual(result.status, 1)
        self.assertEqual(result.out.count(" is outside -4 .. 4 (its lower bound is not 0, so the solver searches "
                                          "within -4 .. 8)\n"), len(outside))

    def test_equal_sides_beside_an_equation(self):
        result = self.solve_and_check(opt(ag=[[1, 1]], bg=[4], au=[[1, 0]], lu=[1], ru=[1], rx=[4, 4]))
        self.assertIn("warning: inequations with equal sides take the place of other rows in the solver, which then "
                      "heeds these no more: equation 1 by inequation 1", result.out)
        self.assertEqual(result.status, 1)
        self.assertIn("(inequation 1, with equal sides, took its place in the solver)\n", result.out)

    def test_targets_with_a_value(self):
        draw = random.Random(3)
        for seed in range(15):
            rows = [[draw.randint(-5, 9) for _ in range(3)] for _ in range(draw.randint(1, 4))]
            dt = [draw.choice(("inf", "-inf", draw.randint(-5, 40))) for _ in rows]
            text = opt(dt=dt, at=rows, rx=[3, 4, 5])
            with self.subTest(seed=seed, dt=dt):
                for name in ("prog.sol", "prog.lat"):
                    if self.exists(name):
                        self.remove(name)
                result = self.solve_and_check(text)
                self.assertEqual((result.status, result.err), (0, ""), result.out)

    def test_long_numbers_and_digits(self):
        for text in (opt(dt=["-inf"], at=[["1/3", "1/7"]], ag=[["1/3", "2/3"]], bg=[4], rx=[12, 12]),
                     opt(dt=["inf"], at=[[10**30, 10**30 + 1]], au=[[3, 5]], lu=[2], ru=[14], rx=[4, 4]),
                     opt(dt=["-inf"], at=[["0.1", "-0.3"]], au=[[3, 5]], lu=[2], ru=[14], dx=[1, 2], rx=[4, 4])):
            with self.subTest(text):
                result = self.solve_and_check(text)
                self.assertEqual((result.status, result.err), (0, ""), result.out)
                self.assertIn("solution 1: ok", result.out)
            for name in ("prog.sol", "prog.lat"):
                self.remove(name)


class Draft:
    """A random program and a file of solutions for it, most of them with something that is wrong by one."""

    def __init__(self, seed):
        self.draw = random.Random(seed)
        self.n = self.draw.randint(1, 4)
        self.dx = [self.draw.choice((0, 0, 0, 1, 2)) for _ in range(self.n)]
        self.lx = [self.draw.choice((0, 0, -2, 1, "-inf", "1/2")) for _ in range(self.n)]
        self.rx = [self.draw.choice((3, 5, "7/2", "inf")) for _ in range(self.n)]
        self.planted = [self.value(i) for i in range(self.n)]
        self.text = self.program()
        self.program = checker.Program(self.text)
        self.lines = [self.line() for _ in range(6)]

    def value(self, i):
        """Within every box that the bounds above can make."""
        step = 10 ** self.dx[i]
        return checker.Fraction(self.draw.randint(1 * step, 3 * step), step)

    def row(self):
        return [self.draw.choice((0, 1, -1, 3, 7, checker.Fraction(1, 3), checker.Fraction(-5, 4)))
                for _ in range(self.n)]

    def program(self):
        ag, au, at = ([self.row() for _ in range(self.draw.randint(0, 2))] for _ in range(3))
        au = au or [self.row()]
        sides = [(value - self.draw.randint(0, 1), value + self.draw.randint(0, 1))
                 for value in (checker.dot(row, self.planted) for row in au)]
        return opt(dt=[self.draw.choice(("inf", "-inf")) for _ in at], at=at, ag=ag,
                   bg=[checker.dot(row, self.planted) for row in ag], au=au, lu=[low for low, _ in sides],
                   ru=[self.draw.choice((high, "inf")) for _, high in sides], dx=self.dx, lx=self.lx, rx=self.rx)

    def line(self):
        x = list(self.planted)
        if self.draw.random() < 0.5:
            place = self.draw.randrange(self.n)
            x[place] += self.draw.choice((-1, 1)) * checker.Fraction(1, 10 ** self.draw.choice((0, 1, 2, 3)))
        target, slack = self.program.norms(x)
        values = [checker.dot(row, x) for row in self.program.at]
        fields = [target, slack, *values]
        if self.draw.random() < 0.3:
            fields[self.draw.randrange(len(fields))] += self.draw.choice((-1, 1))
        target, slack, *values = fields
        if self.draw.random() < 0.1:
            self.draw.choice((x, values)).append(1)
        return "%s | %s | %s | %s | %d | p" % (programs.vector(x), target, programs.vector(values), slack,
                                               self.draw.randint(-1, 9))


class AgreementTest(Case):
    def test_both_checkers_agree(self):
        wrong = right = 0
        for seed in range(200):
            draft = Draft(seed)
            result = self.check("\n".join(draft.lines) + "\n", draft.text)
            reasons = [reason for _, reason in checker.verdicts(draft.program, checker.read_stars(self.read("prog.sol")))]
            lines = [line for line in result.out.splitlines() if line.startswith("solution ")]
            self.assertEqual(result.err, "")
            self.assertEqual([": ok" in line for line in lines], [reason is None for reason in reasons],
                             (seed, draft.text, result.out, reasons))
            self.assertEqual(result.status, 1 if any(reasons) else 0)
            wrong += sum(reason is not None for reason in reasons)
            right += sum(reason is None for reason in reasons)
        # The drafts must not be all of one kind.
        self.assertGreater(min(wrong, right), 150)


class GarbageTest(Case):
    """Whatever stands in the files, an exit status of the three and a reason."""

    def assert_clear(self, result):
        self.assertIn(result.status, (0, 1, 2))
        if result.status == 2:
            self.assertRegex(result.err, r"\Alatbox-check: prog\.(opt|sol): line \d+, column \d+: [^\n]+\n\Z")
            self.assertEqual(result.out, "")
        else:
            self.assertEqual(result.err, "")

    def test_bytes_out_of_place(self):
        draw = random.Random(5)
        refused = 0
        for _ in range(300):
            files = [ONE.encode(), (GOOD + WRONG).encode()]
            which = draw.randrange(2)
            data = bytearray(files[which])
            for _ in range(draw.randint(1, 3)):
                data[draw.randrange(len(data))] = draw.choice((draw.randrange(256), ord("["), ord("/"), ord("9"), 0))
            files[which] = bytes(data)
            result = self.check(files[1], files[0])
            self.assert_clear(result)
            refused += result.status == 2
        self.assertGreater(refused, 100)

    def test_binary_and_empty_files(self):
        for junk in (b"", b"\x7fELF\x00\xff", b"\x00" * 1000, b"[" * 100000, b"hello\n", b"/*", b"[ 1e999999999 ]"):
            with self.subTest(junk[:20]):
                self.write("prog.opt", junk)
                result = self.run_latbox_check("prog.opt")
                self.assertEqual(result.status, 2)
                self.assert_clear(result)
                if junk:
                    result = self.check(junk)
                    self.assertEqual(result.status, 2)
                    self.assert_clear(result)

    def test_large_files_are_read_in_seconds(self):
        n = 300
        rows = [[(i * j) % 1000 for j in range(n)] for i in range(n)]
        x = [j % 2 for j in range(n)]
        text = opt(ag=rows, bg=[sum(a * b for a, b in zip(row, x)) for row in rows], rx=[1] * n)
        result = self.check("%s | 0 | [ ] | 0 | 0 | p\n" % programs.vector(x), text)
        self.assertEqual((result.status, result.err), (0, ""))


if __name__ == "__main__":
    harness.main()
