#!/usr/bin/env python3
"""latbox-all: verdicts, files, options and errors; random programs against exhaustive search."""

import json
import os
import random
import resource
import signal
import subprocess
from fractions import Fraction

import checker
import complete_random
import harness
from programs import opt

# 3 x + 5 y = 14 within 0..4 has one point, (3, 1); with 7 and bounds 0..2 there is none.
ONE = opt(ag=[[3, 5]], bg=[14], rx=[4, 4])
NOTHING = opt(ag=[[3, 5]], bg=[7], rx=[2, 2])
NINE = opt(au=[[1, 1]], lu=[1], ru=[3], rx=[4, 4])
# The best value is 0.1; x = 0, y = 1.
SMALLEST = opt(dt=["-inf"], at=[["2/5", "1/10"]], au=[[1, 1]], lu=[1], ru=[2], rx=[2, 3])
# More points than anybody waits for.
ENDLESS = opt(au=[[7, 3, 9, 4, 6, 2] * 5], lu=[60], ru=[900], rx=[9] * 30)


class Case(harness.Case):
    def setUp(self):
        super().setUp()
        self.binary = harness.latbox_all()
        if not os.path.exists(self.binary):
            self.skipTest("latbox-all is not built (GMP or libfplll is not installed)")

    def run_all(self, text, *options, name="p.opt"):
        self.write(name, text)
        return self.run_plain(*options, name)

    def run_plain(self, *arguments):
        done = subprocess.run([self.binary, *arguments], cwd=self.folder, timeout=harness.LIMIT, capture_output=True,
                              text=True, check=False)
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def listed(self, name="p"):
        """The points of NAME.all, each checked against NAME.opt, twice."""
        text = self.read(name + ".all")
        program = checker.Program(self.read(name + ".opt"))
        for star in checker.read_stars(text):
            self.assertIsNone(program.violation(star.x))
            self.assertEqual((star.target_norm, star.slack_norm), program.norms(star.x))
        done = self.run_latbox_check("--quiet", name + ".opt", name + ".all")
        self.assertEqual((done.status, done.err), (0, ""), done.out)
        return [star.x for star in checker.read_stars(text)]

    def assert_verdict(self, result, verdict, status, before=""):
        self.assertEqual((result.out, result.status), (before + "verdict: %s\n" % verdict, status), result.err)

    def assert_refused(self, result, message):
        self.assertEqual((result.status, result.out, result.err), (2, "", "latbox-all: %s\n" % message))


class BestTest(Case):
    """--best=FILE: what others have found."""

    def test_it_is_verified_and_used(self):
        self.write("known.sol", "[ 0 1 ] | 77 |\n")
        result = self.run_all(SMALLEST, "--best=known.sol", "--threads=1")
        self.assert_verdict(result, "optimum 1/10", 10)
        self.assertEqual(self.listed(), [[0, 1]])
        self.assertFalse(self.exists("p.all.resume"))

    def test_what_is_no_point_is_not_believed(self):
        self.write("known.sol", "[ 0 0 ] | -5 |\n[ 9 9 ]\nhello\n[ 0 1")
        self.assert_verdict(self.run_all(SMALLEST, "--best=known.sol"), "optimum 1/10", 10)
        self.write("known.sol", "[ 0 0 ]\n")
        self.assert_verdict(self.run_all(NOTHING, "--best=known.sol", "--resume=0"), "none", 20)

    def test_a_file_that_is_not_there(self):
        self.assert_verdict(self.run_all(SMALLEST, "--best=none.sol"), "optimum 1/10", 10)
        self.assert_verdict(self.run_all(NINE, "--best=none.sol", name="q.opt"), "all 9", 10)

    def test_it_comes_while_a_search_runs(self):
        """The deviation from a market split that has a point, which nobody finds in the time of a test: once it is told,
        the run ends with it."""
        draw = random.Random(1)
        rows, columns = 9, 80
        split = [[draw.randrange(100) for _ in range(columns)] for _ in range(rows)]
        point = [draw.randrange(2) for _ in range(columns)]
        ag = [row + [v for k in range(rows) for v in ((1, -1) if k == i else (0, 0))] for i, row in enumerate(split)]
        n = columns + 2 * rows
        self.write("p.opt", opt(dt=["-inf"], at=[[0] * columns + [1] * 2 * rows], ag=ag,
                                bg=[sum(a * x for a, x in zip(row, point)) for row in split],
                                rx=[1] * columns + [5000] * 2 * rows, lx=[0] * n))
        session = harness.Session([self.binary, "--best=known.sol", "--threads=1", "p.opt"], self.folder)
        self.addCleanup(session.close)
        session.wait_for("nodes", "err")
        self.write("draft.sol", "[ %s ]\n" % " ".join(map(str, point + [0] * 2 * rows)))
        os.rename(self.path("draft.sol"), self.path("known.sol"))
        self.assertEqual(session.wait(), 10)
        self.assertEqual(session.out, "verdict: optimum 0\n")
        self.assertEqual(self.listed(), [point + [0] * 2 * rows])


class VerdictTest(Case):
    def test_all_points(self):
        self.assert_verdict(self.run_all(ONE), "all 1", 10)
        self.assertEqual(self.listed(), [[3, 1]])
        self.assert_verdict(self.run_all(NINE), "all 9", 10)
        self.assertEqual(len(set(map(tuple, self.listed()))), 9)

    def test_none(self):
        self.assert_verdict(self.run_all(NOTHING), "none", 20)
        self.assertEqual(self.read("p.all"), "")

    def test_optimum(self):
        self.assert_verdict(self.run_all(SMALLEST), "optimum 1/10", 10)
        self.assertEqual(self.listed(), [[0, 1]])
        self.assert_verdict(self.run_all(SMALLEST.replace("-inf", "inf")), "optimum -4/5", 10)
        self.assertEqual(self.listed(), [[2, 0]])

    def test_all_points_where_there_are_targets(self):
        self.assert_verdict(self.run_all(SMALLEST, "--all=1"), "all 5", 10)
        self.assertEqual(len(self.listed()), 5)

    def test_ties(self):
        text = opt(dt=["-inf"], at=[[1, 1]], au=[[1, 1]], lu=[2], ru=[4], rx=[4, 4])
        self.assert_verdict(self.run_all(text, "--ties=1"), "optimum 2", 10, "best points: 3\n")
        self.assertEqual(sorted(self.listed()), [[0, 2], [1, 1], [2, 0]])

    def test_the_slack_norm_decides_between_equal_target_norms(self):
        # x + |x - 4| is 4 for all x in 0..4; the distance alone is least at 4.
        text = opt(dt=["-inf", 4], at=[[1], [1]], rx=[4])
        self.assert_verdict(self.run_all(text), "optimum 4", 10)
        self.assertEqual(self.listed(), [[4]])
        text = opt(dt=["-inf", 6], at=[[1], [1]], rx=[4])
        self.assert_verdict(self.run_all(text), "optimum 6 2", 10)

    def test_an_optimum_far_from_the_first_points(self):
        # Ranges of 10^10 units and more, of the target norm and of the slack norm.
        text = opt(dt=["-inf"], at=[[7, 11, 13]], ag=[[101, 103, 107]], bg=[10**11 + 7], rx=[10**9] * 3)
        self.assert_verdict(self.run_all(text), "optimum 6930693163", 10)
        self.assertEqual(len(self.listed()), 1)
        text = opt(dt=["-inf", 10**12], at=[[1], [1]], rx=[10**12])
        self.assert_verdict(self.run_all(text), "optimum %d" % 10**12, 10)
        self.assertEqual(self.listed(), [[10**12]])

    def test_count_writes_no_file(self):
        self.assert_verdict(self.run_all(NINE, "--count=1"), "all 9", 10)
        self.assertFalse(self.exists("p.all"))

    def test_first_and_limit(self):
        self.assert_verdict(self.run_all(NINE, "--first=1"), "found 1", 11)
        self.assertEqual(len(self.listed()), 1)
        self.assert_verdict(self.run_all(NINE, "--limit=4"), "found 4", 11)
        self.assertEqual(len(self.listed()), 4)
        self.assert_verdict(self.run_all(NINE, "--limit=9"), "found 9", 11)
        self.assert_verdict(self.run_all(NOTHING, "--first=1"), "none", 20)

    def test_a_limit_that_all_points_reach_leaves_nothing(self):
        for text, count in ((ONE, 1), (NINE, 9)):
            self.assert_verdict(self.run_all(text, "--limit=%d" % count, "--resume=0"), "found %d" % count, 11)
            self.assert_verdict(self.run_all(text), "all %d" % count, 10)
            self.assertEqual(len(self.listed()), count)

    def test_coefficients_beyond_the_range_of_double(self):
        rows = [10 ** 200 // 7 + k * k for k in (1, 5, 8)]
        side = sum(a * x for a, x in zip(rows, (2, 7, 4)))
        self.assert_verdict(self.run_all(opt(ag=[rows], bg=[side], rx=[9] * 3)), "all 1", 10)
        self.assertEqual(self.listed(), [[2, 7, 4]])

    def test_an_existing_file_is_kept(self):
        self.write("p.all", "somebody's\n")
        self.assert_verdict(self.run_all(ONE), "all 1", 10)
        self.assertEqual(self.read("p.all.old"), "somebody's\n")

    def test_out(self):
        self.assert_verdict(self.run_all(ONE, "--out=here.txt"), "all 1", 10)
        self.assertTrue(self.exists("here.txt"))
        self.assertFalse(self.exists("p.all"))

    def test_a_name_that_would_end_a_line_or_a_field(self):
        name = "a|b\n[ 3 1 ]\r|"
        self.assert_verdict(self.run_all(ONE, "--out=" + name), "all 1", 10)
        done = self.run_latbox_check("--quiet", "p.opt", name)
        self.assertEqual((done.status, done.err), (0, ""), done.out)
        self.assertEqual(self.read(name).count("|"), 5)

    def test_the_program_itself_is_never_moved_or_written_over(self):
        for name, out in (("p.all", None), ("p.tmp", "p"), ("p.old", "p")):
            self.write("p", "something that stood there")
            result = self.run_all(ONE, *([] if out is None else ["--out=" + out]), name=name)
            self.assert_refused(result, "--out=%s: points are not written over a program or a file of the solver"
                                % (out or name))
            self.assertEqual(self.read(name), ONE)
            self.assertEqual(self.read("p"), "something that stood there")
        os.mkdir(self.path("folder.all"))
        self.assertEqual(self.run_all(ONE, name="folder.opt").status, 2)
        self.assertTrue(os.path.isdir(self.path("folder.all")))

    def test_a_run_that_ends_with_a_usage_error_leaves_the_files(self):
        open_program = "[ -inf ] [ [ 1 0 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ -inf -inf ] [ inf inf ]"
        self.write("p.all", "kept")
        result = self.run_all(open_program)
        self.assertEqual((result.status, result.out), (2, ""), result.err)
        self.assertEqual(self.read("p.all"), "kept")
        self.assertFalse(self.exists("p.all.old"))

    def test_latbox_starts_from_the_file(self):
        self.assert_verdict(self.run_all(NINE), "all 9", 10)
        os.rename(self.path("p.all"), self.path("p.sol"))
        self.assertEqual(self.run_solver("--iters=0", "p.opt").status, 0)
        self.assertEqual(len(self.stars("p")), 9)

    def test_the_order_of_targets_with_values_is_that_of_the_solver(self):
        # latbox-check compares value by value; the first two targets change places with the last ones.
        text = opt(dt=[3, 1, "-inf", "inf"], at=[[1, 0], [2, 1], [0, 5], [7, 1]], rx=[4, 4])
        self.assertEqual(self.run_all(text, "--all=1").status, 10)
        self.assertEqual(len(self.listed()), 25)


class SparseTest(Case):
    """Hundreds of rows of two variables each: a lattice of rank 50 in 650 coordinates, which linear programs do without."""

    def setUp(self):
        super().setUp()
        draw = random.Random(2)
        self.edges = draw.sample([(i, j) for j in range(50) for i in range(j)], 600)

    def text(self, **more):
        rows = [[int(k in edge) for k in range(50)] for edge in self.edges]
        return opt(au=rows + [[1] * 50], lu=["-inf"] * 600 + [more.pop("least", 0)], ru=[1] * 600 + [50], rx=[1] * 50, **more)

    def largest(self, chosen=(), left=range(50)):
        """Of all sets of nodes without an edge: how many nodes one has."""
        best = len(chosen)
        for place, node in enumerate(left):
            free = [k for k in left[place + 1:] if (node, k) not in self.known]
            if len(chosen) + 1 + len(free) > best:
                best = max(best, self.largest((*chosen, node), free))
        return best

    def test_the_largest_set_without_an_edge(self):
        self.known = set(self.edges)
        most = self.largest()
        told = []
        for threads in (1, 2):
            result = self.run_all(self.text(dt=["inf"], at=[[1] * 50]), "--threads=%d" % threads, "--resume=0")
            self.assert_verdict(result, "optimum -%d" % most, 10)
            told += self.listed()
        self.assertEqual(told[0], told[1])
        self.assertEqual(sum(told[0]), most)
        self.assert_verdict(self.run_all(self.text(least=most), "--first=1", "--resume=0"), "found 1", 11)
        self.assertEqual(sum(self.listed()[0]), most)
        self.assert_verdict(self.run_all(self.text(least=most + 1), "--resume=0"), "none", 20)


class BoundsTest(Case):
    def test_rows_close_infinite_bounds(self):
        # Neither row bounds a variable alone; together they do.
        text = opt(au=[[1, 1], [1, -1]], lu=[0, 0], ru=[4, 2], lx=["-inf", "-inf"], rx=["inf", "inf"])
        self.assert_verdict(self.run_all(text), "all 8", 10)
        self.assertEqual(len(self.listed()), 8)

    def test_a_known_point_closes_infinite_bounds(self):
        text = opt(dt=["-inf"], at=[[1, 1]], ag=[[3, -5]], bg=[7], rx=["inf", "inf"])
        self.assert_verdict(self.run_all(text), "optimum 5", 10)
        self.assertEqual(self.listed(), [[4, 1]])

    def test_an_open_program_has_the_best_point_that_can_be(self):
        # A wanted value that is reached; an odd distance, which is 1 at least; a target and a distance.
        for targets, verdict, points in ((dict(dt=[1], at=[[1, -3]]), "optimum 0", None),
                                         (dict(dt=[1], at=[[2, -4]]), "optimum 1 1", None),
                                         (dict(dt=["-inf", 3], at=[[1, 0], [-1, 1]]), "optimum 0", [[0, 3]]),
                                         (dict(dt=["-inf"], at=[[1, 0]]), "optimum 0", None)):
            with self.subTest(targets):
                self.assert_verdict(self.run_all(opt(**targets, rx=["inf", "inf"])), verdict, 10)
                found = self.listed()
                self.assertEqual(found if points else len(found), points or 1)
        # All of them are not told.
        text = opt(dt=[1], at=[[1, -3]], rx=["inf", "inf"])
        self.assert_refused(self.run_all(text, "--ties=1"), "these variables need finite bounds: x1, x2")

    def test_what_stays_open_is_named(self):
        text = opt(ag=[[3, -5, 0]], bg=[7], rx=["inf", "inf", 1])
        self.assert_refused(self.run_all(text), "these variables need finite bounds: x1, x2")
        self.assertFalse(self.exists("p.all"))
        text = opt(dt=["inf"], at=[[1, 1]], ag=[[3, -5]], bg=[7], rx=["inf", "inf"])
        self.assert_refused(self.run_all(text), "these variables need finite bounds: x1, x2")

    def test_none_whatever_the_bounds(self):
        text = opt(au=[[1, -1], [1, -1]], lu=["-inf", 4], ru=[3, "inf"], rx=["inf", "inf"])
        self.assert_verdict(self.run_all(text), "none", 20)
        self.assert_verdict(self.run_all(opt(ag=[[4, 6]], bg=[7], lx=["-inf"] * 2, rx=["inf"] * 2)), "none", 20)
        # Each equation has whole solutions; the sum of both is even on the left.
        both = dict(ag=[[1, 1, 2], [1, -1, 4]], bg=[0, 1], lx=["-inf"] * 3, rx=["inf"] * 3)
        self.assert_verdict(self.run_all(opt(**both)), "none", 20)
        for options in (["--first=1"], ["--ties=1"], ["--all=1"], []):
            self.assert_verdict(self.run_all(opt(dt=["-inf"], at=[[1, 1, 0]], **both), *options), "none", 20)


class OptionsTest(Case):
    def test_help_and_version(self):
        for form in ("--help", "--help=1"):
            result = self.run_plain(form)
            self.assertEqual((result.status, result.err), (0, ""))
            self.assertTrue(result.out.startswith("usage: latbox-all "))
        for form in ("--version", "--version=1"):
            self.assertRegex(self.run_plain(form).out, r"^latbox-all v\d+\.\d+\.\d+\nGMP [\d.]+, fplll [\d.]+\n$")

    def test_refused(self):
        wants = "a whole number, 0 or more, is wanted"
        seconds = "a number of seconds, 0 or more, is wanted"
        for arguments, message in (
                (["--fast=1"], "--fast=1: unknown option; --help shows them"),
                (["-q"], "-q: unknown option; --help shows them"),
                (["--all=1", "--all=1"], "--all=1: --all was given before"),
                (["--all"], "--all: a value is wanted, --all=..."),
                (["--all=yes"], "--all=yes: 0 or 1 is wanted"),
                (["--limit=-1"], "--limit=-1: " + wants),
                (["--limit=99999999999999999999"], "--limit=99999999999999999999: " + wants),
                (["--threads=two"], "--threads=two: " + wants),
                (["--rtime=abc"], "--rtime=abc: " + seconds),
                (["--rtime=1e3"], "--rtime=1e3: " + seconds),
                (["--rtime=-1"], "--rtime=-1: " + seconds),
                (["--resume=2"], "--resume=2: 0 or 1 is wanted"),
                (["--first=1", "--ties=1"], "--first and --ties exclude each other"),
                (["--first=1", "--limit=2"], "--first and --limit exclude each other"),
                (["--first=1", "--count=1"], "--first and --count exclude each other"),
                (["--all=1", "--ties=1"], "--all and --ties exclude each other"),
                (["q.opt"], "p.opt: one file is wanted, and q.opt was given"),
                (["--out=p.opt"], "--out=p.opt: points are not written over a program or a file of the solver"),
                (["--out=p.sol"], "--out=p.sol: points are not written over a program or a file of the solver"),
                (["--out=/dev/null"], "--out=/dev/null: is there and is no regular file"),
                (["--out=p.lat"], "--out=p.lat: points are not written over a program or a file of the solver")):
            with self.subTest(arguments):
                self.assert_refused(self.run_all(ONE, *arguments), message)
        self.assert_refused(self.run_plain(), "a file is wanted: latbox-all [--key=value ...] FILE.opt")

    def test_errors_of_a_file_have_their_place(self):
        self.assert_refused(self.run_all("[ ] [ ]\n[ [ 1 a ] ]"), "p.opt:2:7: 'a' is not a number")
        self.assert_refused(self.run_all(ONE.replace("14", "5.0")),
                            "p.opt:7:3: '5.0' has no digit other than zero behind the point")
        self.assert_refused(self.run_plain("missing.opt"), "missing.opt: No such file or directory")


class StopTest(Case):
    def start_endless(self, *options):
        self.write("p.opt", ENDLESS)
        process = subprocess.Popen([self.binary, *options, "p.opt"], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def assert_stopped_with_points(self, process):
        out, _ = process.communicate(timeout=harness.LIMIT)
        self.assertRegex(out, r"^verdict: found [1-9]\d*\n$")
        self.assertEqual(process.returncode, 11)
        self.assertEqual("verdict: found %d\n" % len(self.listed()), out)

    def test_signals(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            if self.exists("p.all"):
                self.remove("p.all")
            process = self.start_endless("--quiet=1")
            harness.wait_until(lambda: self.exists("p.all") and self.read("p.all"), "the first points")
            process.send_signal(number)
            self.assert_stopped_with_points(process)

    def test_time(self):
        for seconds in harness.growing(0.1):
            process = self.start_endless("--rtime=%g" % seconds)
            if process.wait(harness.LIMIT) != 12:
                break
        self.assert_stopped_with_points(process)

    def test_progress(self):
        process = self.start_endless("--count=1")
        line = r"^\d+ s: .* nodes, .* points"
        self.assertRegex(process.stderr.readline(), r"^estimate: \S+ nodes, \S+ years, \S+ points\n$")
        self.assertRegex(process.stderr.readline(), r"^this search will not end in 5 years; ")
        self.assertRegex(process.stderr.readline(), line)
        process.send_signal(signal.SIGUSR1)
        self.assertRegex(process.stderr.readline(), line)
        process.send_signal(signal.SIGTERM)
        self.assertRegex(process.communicate(timeout=harness.LIMIT)[0], r"^verdict: found ")

    def test_a_full_disk_is_a_failure(self):
        self.write("p.opt", ENDLESS)
        # A limit on the size of files stands in for the disk; Python ignores its signal, and so does what it starts.
        done = subprocess.run([self.binary, "--quiet=1", "p.opt"], cwd=self.folder, timeout=harness.LIMIT, capture_output=True,
                              text=True, check=False, restore_signals=False,
                              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000)))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", "latbox-all: p.all: File too large\n"))


class ExamplesTest(Case):
    def example(self, name):
        """Its text: a run beside it would leave a checkpoint there."""
        with open(os.path.join(harness.Settings.examples, name + ".opt"), encoding="utf-8") as file:
            return file.read()

    def test_counts_and_optima(self):
        """What exhaustive search has found of the examples that it can take, and counts known from elsewhere."""
        with open(os.path.join(harness.Settings.examples, "expected.json"), encoding="utf-8") as file:
            known = {name: row for name, row in json.load(file).items() if row.get("points") is not None}
        self.assertGreater(len(known), 10)
        for name, row in known.items():
            with self.subTest(name):
                text = self.example(name)
                result = self.run_all(text, "--all=1", "--count=1", "--quiet=1")
                self.assert_verdict(result, "all %d" % row["points"], 10)
                if checker.Program(text).dt:
                    result = self.run_all(text, "--quiet=1", "--resume=0")
                    best = complete_random.mixed(Fraction(row["best"]))
                    self.assertTrue(result.out.startswith("verdict: optimum %s" % best), result.out)

    def test_counts_of_designs(self):
        for name, count in (("triples_9", 840), ("queens_8", 92), ("steiner_5_6_12", 2), ("quadruples_16", 4)):
            self.assert_verdict(self.run_all(self.example(name), "--count=1", "--quiet=1"), "all %d" % count, 10)


class KnapsackTest(Case):
    """Knapsacks that the bounds of the linear relaxation make easy; without them none of these ends in time."""

    def program(self, name):
        with open(os.path.join(os.path.dirname(harness.Settings.examples), "bench", "instances", name + ".opt"),
                  encoding="utf-8") as file:
            return file.read()

    def test_equality_knapsacks(self):
        """The right side is the Frobenius number plus 1; the number itself has no representation."""
        for name, side, points in (("cuww1", 89643482, 1), ("cuww3", 58925135, 2), ("prob1", 33367336, None)):
            for form in ("", "_box"):
                with self.subTest(name + form):
                    text = self.program("knap_%s_Fp1%s" % (name, form))
                    self.assert_verdict(self.run_all(text, "--first=1", "--quiet=1"), "found 1", 11)
                    if points is not None:
                        self.assert_verdict(self.run_all(text, "--quiet=1"), "all %d" % points, 10)
                        self.assertEqual(len(self.listed()), points)
                    self.assertEqual(text.count(str(side)), 1)
                    none = text.replace(str(side), str(side - 1))
                    self.assert_verdict(self.run_all(none, "--quiet=1"), "none", 20)

    def test_zero_one_knapsacks(self):
        for name, best in (("mkp_n20_s1", -827), ("mkp_n30_s1", -1165)):
            self.assert_verdict(self.run_all(self.program(name), "--quiet=1"), "optimum %d" % best, 10)
            self.assertEqual(len(self.listed()), 1)


if __name__ == "__main__":
    harness.main()
