"""The picture of a run: well-formed whatever the log, and its points are those that the log tells."""

import os
import random
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

import checker
import harness

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
TOOLS = os.path.join(ROOT, "tools")
sys.path.insert(0, TOOLS)
sys.dont_write_bytecode = True

import plot_run  # noqa: E402
import run_log  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"
GREATEST_SIZE = 60_000

BLOCK = """
------------------------- Some statistics --------------------------

Total iterations: %(iteration)d
Total running time: %(time)s

Basis substitutions (triv / ntriv): ( 1 / 2 )
Non-trivial basis extensions: 0

Sampling basis extensions: 3

Sampling collections: %(sampling)d

Pairwise collections: %(pairwise)d

Sieveable in/homogenous vectors: (%(inhomogeneous)d, %(homogeneous)d)

Best inhomogenous vector: 
[ 3 4 0 1 ] -- { 0 sec(s) } -- { [len,f,fs,fm,fc,tn] = 26 0 inf 2 %(broken)d 7 }

Best vector: 
[ 3 4 1:1/2 1 ] -- { 0 sec(s) } -- T(bestTarget) = 99, S(bestTarget) = 98 -- { 0 sec(s) }

B[1]: 
%(vector)s

Inhomogenous improvements: 11
Target improvements: 1

T(bestTarget) = %(target)s, S(bestTarget) = %(slack)s -- { %(found)s }

--------------------------------------------------------------------

"""
HEAD = """<< latbox v2.2.2 +++ PID: 7 >>

|-> Checking trivial solutions ...
T(bestTarget) = 12:1/2, S(bestTarget) = 0 -- { 0 sec(s) }
|    |-> Lattice was regenerated ==> Re-Looping ...
|-> BKZ enumeration ( beta = 20, deep = 0 ) ... 
|    |-> Switching to extended precision
"""
END = """

Got signal: Terminated

************************** Terminated **************************

T(bestTarget) = -3, S(bestTarget) = 2.5 -- { 1:05 min(s):sec(s) == 65 secs }

The following file contains the results: 

	some/where/birds & bees.sol

Total iterations: 2
Total running time: 1:10 min(s):sec(s) == 70 secs -- Program end
"""


def block(**values):
    known = {"iteration": 1, "time": "5 sec(s)", "sampling": 40, "pairwise": 20, "inhomogeneous": 6, "homogeneous": 100,
             "broken": 3, "vector": "[ 3 -4 0 ]", "target": "10", "slack": "4", "found": "4 sec(s)"}
    return BLOCK % dict(known, **values)


LOG = (HEAD + block() + "|-> Shuffling base vectors ( 2 shuffle(s) ) ...\n" +
       block(iteration=2, time="1:05 min(s):sec(s) == 65 secs", sampling=50, pairwise=20, inhomogeneous=7, broken=1,
             vector="[ 0 5:1/2 0 ]", target="-3", slack="2.5", found="1:05 min(s):sec(s) == 65 secs") + END)


def values(series):
    return [value for _, value in series]


class Picture:
    """A parsed SVG."""

    def __init__(self, text):
        self.root = ElementTree.fromstring(text)

    def texts(self):
        return [element.text for element in self.root.iter(SVG + "text")]

    def paths(self, style):
        return [element.get("d") for element in self.root.iter(SVG + "path") if element.get("class") == style]


def steps(path):
    """The corners of a path of M, H, V and L."""
    x = y = None
    found = []
    for kind, numbers in re.findall(r"([MHVL])([-0-9. ]+)", path):
        numbers = [float(word) for word in numbers.split()]
        if kind in "ML":
            x, y = numbers
        elif kind == "H":
            x = numbers[0]
        else:
            y = numbers[0]
        found.append((x, y))
    return found


class ReadingTest(harness.Case):
    def test_series(self):
        run = run_log.read_run(LOG)
        self.assertEqual(values(run.target), [12.5, 10, -3, -3])
        self.assertEqual(values(run.slack), [0, 4, 2.5, 2.5])
        self.assertEqual(values(run.inhomogeneous), [6, 7])
        self.assertEqual(values(run.homogeneous), [100, 100])
        self.assertEqual(values(run.counts["pairwise"]), [20, 20])
        self.assertEqual(values(run.counts["sampling"]), [40, 50])
        self.assertEqual(values(run.first_length), [5, 5.5])
        self.assertEqual(values(run.best_length), [26**0.5] * 2)
        self.assertEqual(values(run.broken), [3, 1])
        self.assertEqual({key: len(lines) for key, lines in run.events.items()},
                         {"regenerated": 1, "extended": 1, "shuffled": 1})
        self.assertEqual((run.name, run.last_iteration, run.last_second), ("some/where/birds & bees", 2, 70))

    def test_times(self):
        for text, seconds in (("0 sec(s)", 0), ("59 sec(s)", 59), ("1:00 min(s):sec(s) == 60 secs", 60),
                              ("1:01:01 hour(s):min(s):sec(s) == 3661 secs", 3661), ("", None), ("1 sec", None)):
            self.assertEqual(run_log.seconds(text), seconds, text)

    def test_numbers(self):
        for text, value in (("-3", -3), ("2.5", 2.5), ("1e+20", 1e20), ("-2:1/4", -2.25), ("3/4", 0.75), ("inf", None),
                            ("nan", None), ("x", None), ("1/0", None), ("1e400", None), ("9" * 5000, None)):
            self.assertEqual(run_log.number(text), value, text)

    def test_time_grows_evenly_between_the_lines_that_tell_it(self):
        marks = run_log.Marks()
        marks.add(9, 10)
        marks.add(12, 4)  # a time that is older than the last says nothing
        marks.add(19, 30)
        marks.end(29, 1)
        self.assertEqual([marks.at(line) for line in (-1, 4, 9, 14, 19, 24, 29, 99)], [0, 5, 10, 20, 30, 30.5, 31, 31])

    def test_the_last_run_of_a_log_that_says_anything(self):
        self.assertEqual(values(run_log.read_run(LOG + LOG.replace("= 12:1/2", "= 77")).target)[0], 77)
        self.assertEqual(values(run_log.read_run(LOG + "<< latbox v2.2.2 +++ PID: 8 >>\n").target)[0], 12.5)

    def test_best_so_far(self):
        self.assertEqual(plot_run.best_so_far([(1, 5), (2, 7), (3, 4)]), [(1, 5), (2, 5), (3, 4)])


class DrawingTest(harness.Case):
    def picture(self, log, axis="time"):
        return Picture(plot_run.svg(run_log.read_run(log), axis))

    def test_panels(self):
        texts = self.picture(LOG).texts()
        for title in ("birds & bees", "2 iterations, 70 s, best target \u22123", "best target (smaller is better)",
                      "slack of the best point", "bounds that the best inhomogeneous vector breaks",
                      "vectors in the collections", "vectors collected since the start",
                      "length: first basis vector, best inhomogeneous vector", "time in seconds", "homogeneous",
                      "sampling", "regenerated", "extended", "shuffled"):
            self.assertIn(title, texts)
        self.assertIn("iteration", self.picture(LOG, "iteration").texts())

    def test_known_points(self):
        """The target falls from 12.5 to 10 and -3: the greatest at the top, the least at the bottom, 10 in between."""
        for axis in ("time", "iteration"):
            corners = steps(self.picture(LOG, axis).paths("one")[0])
            top, bottom = plot_run.HEAD + 4, plot_run.HEAD + plot_run.PANEL - 4
            heights = list(dict.fromkeys(y for _, y in corners))
            self.assertEqual(len(heights), 3)
            self.assertAlmostEqual(heights[0], top, 1)
            self.assertAlmostEqual(heights[1], top + (bottom - top) * 2.5 / 15.5, delta=0.06)
            self.assertAlmostEqual(heights[2], bottom, 1)
            self.assertEqual(corners[-1][0], plot_run.WIDTH - plot_run.RIGHT)
            self.assertEqual(sorted(corners), sorted(corners, key=lambda corner: corner[0]))

    def test_x_of_an_iteration(self):
        """The first report stands behind half of the iterations, so its target is half-way across."""
        run = run_log.read_run(LOG)
        place, high, _, marks = plot_run.iteration_axis(run)
        line = LOG.split("\n").index("Total iterations: 1")
        self.assertEqual((place(line), high), (1, 2))
        self.assertEqual([text for _, text in marks], ["0", "1", "2"])

    def test_units_of_time(self):
        for seconds, label in ((20, "time in seconds"), (200, "time in minutes"), (50000, "time in hours")):
            log = LOG.replace("== 70 secs", "== %d secs" % seconds)
            self.assertIn(label, self.picture(log).texts())

    def test_a_target_that_gets_worse_is_shown_beside_the_best(self):
        self.assertNotIn("as reported", self.picture(LOG).texts())
        worse = self.picture(LOG.replace("T(bestTarget) = 10,", "T(bestTarget) = 20,"))
        self.assertIn("as reported", worse.texts())
        self.assertEqual(len(worse.paths("faint")), 2)  # the line and its key

    def test_verb_1(self):
        """Without vectors there is nothing of the basis, and the rest is there."""
        log = re.sub(r"Best inhomogenous vector.*?B\[1\]: \n.*?\n", "", LOG, flags=re.DOTALL)
        texts = self.picture(log).texts()
        self.assertIn("best target (smaller is better)", texts)
        self.assertNotIn("length: first basis vector, best inhomogeneous vector", texts)

    def test_no_targets(self):
        log = re.sub(r"T\(bestTarget\).*\n", "\nSolutions found: 3\n", LOG)
        texts = self.picture(log).texts()
        self.assertIn("solutions found", texts)
        self.assertNotIn("best target (smaller is better)", texts)

    def test_ticks(self):
        self.assertEqual(plot_run.ticks(0, 10, 4), [0, 2.5, 5, 7.5, 10])
        self.assertEqual(plot_run.ticks(-973, 0, 4), [-750, -500, -250, 0])
        self.assertEqual(plot_run.ticks(0, 2, 8, True), [0, 1, 2])
        self.assertEqual(plot_run.power_text(-12), "10\u207b\u00b9\u00b2")

    def test_a_long_log_stays_small(self):
        source = random.Random(3)
        blocks = [block(iteration=i, time="%d sec(s)" % i, pairwise=i * i, vector="[ %d 1 ]" % source.randint(1, 10**9),
                        target=str(source.randint(-10**6, 0)), broken=source.randint(0, 50)) for i in range(1, 3000)]
        text = plot_run.svg(run_log.read_run(HEAD + "".join(blocks) + END), "time")
        self.assertLess(len(text), GREATEST_SIZE)
        Picture(text)

    def test_thinning_keeps_the_extremes(self):
        pixels = [(i / 50, (i * 37) % 101) for i in range(1000)]
        kept = plot_run.thin(pixels)
        self.assertLess(len(kept), len(pixels) / 10)
        self.assertLessEqual(set(kept), set(pixels))
        self.assertEqual((min(y for _, y in kept), max(y for _, y in kept)), (0, 100))
        self.assertEqual((kept[0], kept[-1]), (pixels[0], pixels[-1]))


class DamageTest(harness.Case):
    """A log that is cut, mixed up or filled with garbage gives a picture of what is left, or the word that there is
    nothing."""

    def plot(self, log):
        run = run_log.read_run(log)
        if not run.empty():
            for axis in ("time", "iteration"):
                Picture(plot_run.xml_text(plot_run.svg(run, axis)))

    def test_cut_anywhere(self):
        for at in range(0, len(LOG), 7):
            self.plot(LOG[:at])
            self.plot(LOG[at:])

    def test_lines_lost_doubled_and_mixed(self):
        source = random.Random(1)
        lines = LOG.split("\n")
        for _ in range(100):
            self.plot("\n".join(source.choice(lines) for _ in lines))
            self.plot("\n".join(line for line in lines if source.random() < 0.6))

    def test_characters_changed(self):
        source = random.Random(2)
        letters = "0123456789-.:/e[](){}<&>\x00\x1b\t \n\u20acinf"
        for _ in range(300):
            log = list(LOG)
            for _ in range(source.randint(1, 60)):
                log[source.randrange(len(log))] = source.choice(letters)
            self.plot("".join(log))

    def test_numbers_beyond_all_bounds(self):
        for number in ("9" * 17, "9" * 40, "9" * 400, "1e308", "-1e308", "1e-320", "inf", "-inf", "nan", "0"):
            for old in ("= 10,", "= 4 --", "iterations: 1\n", "collections: 20", "(6, 100)", "5 sec(s)", "= 26 0",
                        "2 3 7", "[ 3 -4 0 ]", "== 70 secs"):
                self.assertIn(old, LOG)
                self.plot(LOG.replace(old, re.sub("[0-9]+", number, old)))

    def test_a_name_with_the_characters_of_xml(self):
        log = LOG.replace("birds & bees", "<b>\"&amp;'\x07</b>")
        picture = Picture(plot_run.xml_text(plot_run.svg(run_log.read_run(log), "time")))
        self.assertIn("b>", picture.texts())  # behind the last slash, as a path has it


class CommandTest(harness.Case):
    def plot(self, *arguments, status=0):
        done = subprocess.run([sys.executable, os.path.join(TOOLS, "plot_run.py"), *arguments], cwd=self.folder,
                              check=False, timeout=harness.LIMIT, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, status, done.stderr.decode())
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def test_nothing_to_draw(self):
        self.write("empty.log", "")
        self.write("other.log", b"\x00\xff some other text\n")
        for name in ("empty.log", "other.log"):
            result = self.plot(name, status=1)
            self.assertEqual(result.err, name + ": no report of a run in it; run the solver with --verb=2\n")
            self.assertEqual(result.out, "")
        self.assertIn("No such file", self.plot("none.log", status=1).err)

    def run_example(self, name, *options):
        with open(os.path.join(harness.Settings.examples, name + ".opt"), "rb") as file:
            self.write(name + ".opt", file.read())
        result = self.run_solver(*options, name + ".opt")
        self.assert_ends_well(result)
        self.write("run.log", result.out)
        return run_log.read_run(result.out)

    def test_real_runs(self):
        """The best target of the picture is that of the best solution in the file."""
        for options in (("--verb=1",), ("--verb=2", "--sieve=1", "--sample=1"), ()):
            run = self.run_example("diet", "--iters=30", *options)
            best = checker.read_stars(self.read("diet.sol"))[0].target_norm
            self.assertEqual(plot_run.best_so_far(run.target)[-1][1], best)
            self.assertEqual((run.last_iteration, os.path.basename(run.name)), (30, "diet"))
            picture = Picture(self.plot("run.log").out)
            self.assertIn("best target (smaller is better)", picture.texts())
            basis = "length: first basis vector, best inhomogeneous vector" in picture.texts()
            self.assertEqual(basis, "--verb=2" in options)
            self.assertEqual("vectors in the collections" in picture.texts(), "--sieve=1" in options)
            for name in ("diet.sol", "diet.lat"):
                if self.exists(name):
                    self.remove(name)

    def test_a_real_run_without_targets(self):
        run = self.run_example("market_split", "--verb=2", "--sol=1", "--rtime=50")
        self.assertEqual(values(run.counts["solutions"])[-1], 1)
        self.assertIn("solutions found", Picture(self.plot("--x=iteration", "run.log").out).texts())

    def test_the_picture_in_the_documents(self):
        with open(os.path.join(ROOT, "docs", "run.svg"), encoding="utf-8") as file:
            text = file.read()
        self.assertLess(len(text.encode()), GREATEST_SIZE)
        self.assertIn("best target (smaller is better)", Picture(text).texts())
        # Drawn by the script as it is now, not by one of last year.
        self.assertIn(plot_run.STYLE, text)
        self.assertIn("prefers-color-scheme: dark", text)


if __name__ == "__main__":
    harness.main()
