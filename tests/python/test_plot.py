"""The picture of a run: well-formed whatever the log, and its points are those that the log tells."""

import argparse
import itertools
import json
import math
import os
import random
import re
import xml.etree.ElementTree as ElementTree

import support
import checker
import harness
from latbox import json_log, picture, plot, run_log
from support import ROOT

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


def panel_of(points):
    found = picture.Panel("a panel")
    found.add("a series", "one", points)
    return found


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
        self.assertEqual(plot.best_so_far([(1, 5), (2, 7), (3, 4)]), [(1, 5), (2, 5), (3, 4)])


RESUMED = """<< latbox v2.2.2 +++ PID: 9 >>

T(bestTarget) = 10, S(bestTarget) = 0 -- { 6 sec(s) }
Total iterations: 1
Total running time: 0 sec(s)
T(bestTarget) = 10, S(bestTarget) = 0 -- { 6 sec(s) }
T(bestTarget) = 8, S(bestTarget) = 0 -- { 1 sec(s) }
T(bestTarget) = 5, S(bestTarget) = 0 -- { 9 sec(s) }
Total iterations: 2
Total running time: 2 sec(s)
T(bestTarget) = 5, S(bestTarget) = 0 -- { 1 sec(s) }
Total iterations: 3
Total running time: 3 sec(s) -- Program end
"""


class ResumedTest(harness.Case):
    """A run that goes on from the files of another is told the times of that one's points, too."""

    def test_old_times_are_no_elapsed_time(self):
        run = run_log.read_run(RESUMED)
        self.assertEqual((run.last_second, run.seconds.at(math.inf)), (3, 4))
        self.assertEqual([run.seconds.at(line) for line in (6, 9, 12)], [1, 2, 3])

    def test_what_the_run_brought_with_it_is_no_find(self):
        self.assertEqual(values(plot.finds(run_log.read_run(RESUMED))), [8, 5])
        self.assertEqual(values(plot.finds(run_log.read_run(LOG))), [12.5, 10, -3])

    def test_a_run_that_was_killed(self):
        """The times of its finds are all that is known behind the last running time, but for the first."""
        run = run_log.read_run(RESUMED.split("Total iterations: 2")[0])
        self.assertEqual(run.last_second, 9)
        run = run_log.read_run(RESUMED.split("Total iterations: 1")[0])
        self.assertEqual(run.last_second, 0)

    def test_title(self):
        texts = Picture(plot.svg(run_log.read_run(RESUMED), "time")).texts()
        self.assertIn("3 iterations, 3 s, best target 5, slack 0 throughout", texts)


class DrawingTest(harness.Case):
    def picture(self, log, axis="time"):
        return Picture(plot.svg(run_log.read_run(log), axis))

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
            top, bottom = picture.HEAD + 4, picture.HEAD + picture.PANEL - 4
            heights = list(dict.fromkeys(y for _, y in corners))
            self.assertEqual(len(heights), 3)
            self.assertAlmostEqual(heights[0], top, 1)
            self.assertAlmostEqual(heights[1], top + (bottom - top) * 2.5 / 15.5, delta=0.06)
            self.assertAlmostEqual(heights[2], bottom, 1)
            self.assertEqual(corners[-1][0], picture.WIDTH - picture.RIGHT)
            self.assertEqual(sorted(corners), sorted(corners, key=lambda corner: corner[0]))

    def test_x_of_an_iteration(self):
        """The first report stands behind half of the iterations, so its target is half-way across."""
        run = run_log.read_run(LOG)
        place, high, _, marks = plot.iteration_axis(run)
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
        self.assertEqual(picture.ticks(0, 10, 4), [0, 2.5, 5, 7.5, 10])
        self.assertEqual(picture.ticks(-973, 0, 4), [-750, -500, -250, 0])
        self.assertEqual(picture.ticks(0, 2, 8, True), [0, 1, 2])
        self.assertEqual(picture.power_text(-12), "10\u207b\u00b9\u00b2")

    def test_the_length_axis_has_marks_enough(self):
        """At least three that are told apart, whatever the span."""
        for low, high in itertools.product((1e-9, 0.02, 1, 2.1e13, 7.7e99), (1.01, 1.5, 2, 3.1, 7, 40, 1e4, 1e9, 1e40, 1e150)):
            panel = picture.Panel("lengths", log=True)
            panel.add("a", "one", [(0, low), (1, low * high)])
            scale = picture.Scale(panel, 0)
            texts = [text for _, text in scale.marks]
            self.assertTrue(3 <= len(texts) <= 9, (low, high, texts))
            self.assertEqual(len(set(texts)), len(texts))
            heights = [scale.pixel_of_mark(mark) for mark, _ in scale.marks]
            self.assertTrue(all(0 <= y <= picture.PANEL for y in heights), (low, high))
            self.assertTrue(all(a - b > 5 for a, b in zip(heights, heights[1:])), (low, high, heights))

    def test_the_marks_say_where_they_stand(self):
        panel = picture.Panel("lengths", log=True)
        panel.add("a", "one", [(0, 2.1e13), (1, 6.2e13)])
        for mark, text in picture.Scale(panel, 0).marks:
            factor, _, exponent = text.partition("\u00d710")
            self.assertEqual(exponent, "\u00b9\u00b3")
            self.assertAlmostEqual(math.log10(float(factor)) + 13, mark)

    def test_finds_are_marked(self):
        drawn = self.picture(LOG)
        places = [(float(e.get("cx")), float(e.get("cy"))) for e in drawn.root.iter(SVG + "circle")]
        corners = steps(drawn.paths("one")[0])
        self.assertEqual(len(places), 3)
        self.assertLessEqual(set(places), set(corners))

    def test_a_long_log_stays_small(self):
        source = random.Random(3)
        blocks = [block(iteration=i, time="%d sec(s)" % i, pairwise=i * i, vector="[ %d 1 ]" % source.randint(1, 10**9),
                        target=str(source.randint(-10**6, 0)), broken=source.randint(0, 50)) for i in range(1, 3000)]
        text = plot.svg(run_log.read_run(HEAD + "".join(blocks) + END), "time")
        self.assertLess(len(text), GREATEST_SIZE)
        Picture(text)

    def test_thinning_keeps_the_extremes(self):
        pixels = [(i / 50, (i * 37) % 101) for i in range(1000)]
        kept = picture.thin(pixels)
        self.assertLess(len(kept), len(pixels) / 10)
        self.assertLessEqual(set(kept), set(pixels))
        self.assertEqual((min(y for _, y in kept), max(y for _, y in kept)), (0, 100))
        self.assertEqual((kept[0], kept[-1]), (pixels[0], pixels[-1]))


EVENTS = [
    {"event": "start", "time": 0.0, "model": "models/m.lp", "sense": "max", "variables": 10, "rows": 3},
    {"event": "point", "time": 0.5, "objective": "1/2", "by": "search", "values": {}},
    {"event": "bound", "time": 1.0, "bound": 900},
    {"event": "progress", "time": 2.0, "best": 0.5, "bound": 800, "share": 0.25, "nodes": 1000, "violated": 3, "iteration": 7},
    {"event": "point", "time": 3.0, "objective": 600, "by": "complete", "values": {}},
    {"event": "point", "time": 3.0, "objective": 300, "by": "search", "values": {}},
    {"event": "progress", "time": 4.0, "best": None, "bound": None, "share": 0.5, "nodes": None},
    {"event": "end", "time": 5.0, "status": "optimal", "objective": 600, "bound": 600, "points": 3},
]
JSON = "".join(json.dumps(event) + "\n" for event in EVENTS)


class JsonTest(harness.Case):
    """The JSON lines of latbox-solve."""

    def test_series(self):
        run = json_log.read_run(JSON)
        self.assertEqual((run.name, run.sense, run.status), ("models/m.lp", "max", "optimal"))
        self.assertEqual(values(run.best), [0.5, 600])
        self.assertEqual(run.finds, [(1, 0.5), (4, 600)])
        self.assertEqual(run.bound, [(2, 900), (3, 800), (7, 600)])
        self.assertEqual(values(run.share), [25, 50])
        self.assertEqual(values(run.nodes), [1000])
        self.assertEqual(values(run.violated), [3])
        self.assertEqual(run.points, [(1, 1), (4, 2), (5, 3)])
        self.assertEqual([run.seconds.at(i) for i in range(8)], [0, 0.5, 1, 2, 3, 3, 4, 5])

    def test_panels(self):
        drawn = Picture(plot.svg(plot.read(JSON), "time"))
        for text in ("m.lp", "optimal, 5 s, best 600, bound 600, 3 point(s)", "best value", "proven bound",
                     "best value and proven bound (greater is better)", "share of the complete search, in percent",
                     "nodes of the complete search", "violation of the nearest point", "time in seconds"):
            self.assertIn(text, drawn.texts())
        # Time is exact: the second point at 3 of 5 seconds.
        x = picture.LEFT + (picture.WIDTH - picture.LEFT - picture.RIGHT) * 3 / 5
        self.assertIn(x, [float(e.get("cx")) for e in drawn.root.iter(SVG + "circle")])
        self.assertIn("iteration", Picture(plot.svg(plot.read(JSON), "iteration")).texts())

    def test_no_objective(self):
        """Points are counted then."""
        events = [dict(event, objective=None, best=None, bound=None) for event in EVENTS]
        texts = Picture(plot.svg(plot.read("\n".join(map(json.dumps, events))), "time")).texts()
        self.assertIn("points found", texts)
        self.assertNotIn("best value", texts)

    def test_the_last_run(self):
        self.assertEqual(values(plot.read(JSON + JSON.replace("600", "700")).best), [0.5, 700])

    def test_damage(self):
        source = random.Random(5)
        letters = '{}[]",:0123456789eE+-.\n\x00nulltrueNaNInfinity/'
        for _ in range(400):
            text = list(JSON)
            for _ in range(source.randint(1, 30)):
                text[source.randrange(1, len(text))] = source.choice(letters)
            run = plot.read("".join(text)[:source.choice((len(text), source.randrange(len(text))))])
            if not run.empty():
                Picture(picture.xml_text(plot.svg(run, "time")))

    def test_numbers(self):
        for value, found in ((3, 3), (2.5, 2.5), ("7/2", 3.5), ("-3", -3), (None, None), (True, None), ("x", None),
                             ("1/0", None), (10**400, None), ([], None)):
            self.assertEqual(json_log.number(value), found)


class DamageTest(harness.Case):
    """A log that is cut, mixed up or filled with garbage gives a picture of what is left, or the word that there is
    nothing."""

    def plot(self, log):
        run = run_log.read_run(log)
        if not run.empty():
            for axis in ("time", "iteration"):
                Picture(picture.xml_text(plot.svg(run, axis)))

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

    def test_one_value_of_many_digits(self):
        """1 more and 1 less were the same float, and the scale had no length."""
        for value in ("1" + "0" * 17, "-" + "9" * 40, "1e7", 12345):
            text = json.dumps({"event": "point", "time": 1, "objective": value}) + "\n"
            marks = Picture(plot.svg(plot.read(text), "time")).texts()
            scale = picture.Scale(panel_of([(0.0, float(value))]), 0)
            self.assertGreaterEqual(len({mark for _, mark in scale.marks}), picture.FEWEST_MARKS, value)
            self.assertTrue(all(mark in marks for _, mark in scale.marks), marks)

    def test_a_name_with_the_characters_of_xml(self):
        log = LOG.replace("birds & bees", "<b>\"&amp;'\x07</b>")
        drawn = Picture(picture.xml_text(plot.svg(run_log.read_run(log), "time")))
        self.assertIn("b>", drawn.texts())  # behind the last slash, as a path has it


class CommandTest(support.ToolsCase):
    def plot(self, *arguments, status=0):
        return self.tool("latbox-plot", *arguments, status=status)

    def test_nothing_to_draw(self):
        self.write("empty.log", "")
        self.write("other.log", b"\x00\xff some other text\n")
        for name in ("empty.log", "other.log"):
            result = self.plot(name, status=1)
            self.assertEqual(result.err, name + ": no report of a run in it; run latbox with --verb=2, or "
                             "latbox-solve with --json=FILE\n")
            self.assertEqual(result.out, "")
        self.assertEqual(self.plot("none.log", status=1).err, "none.log: No such file or directory\n")

    def test_a_port_in_other_digits(self):
        with self.assertRaises(argparse.ArgumentTypeError):
            plot.port("\u0663")
        self.assertEqual(plot.port("8080"), 8080)

    def test_the_log_is_not_written_over(self):
        """The picture took its place, and the log was gone."""
        self.write("run.log", LOG)
        done = self.tool("latbox-plot", "run.log", "./run.log", status=2)
        self.assertTrue(done.err.endswith("error: ./run.log: that is the log\n"), done.err)
        self.assertEqual(self.read("run.log"), LOG)

    def test_json_lines_and_files(self):
        self.write("run.jsonl", JSON)
        self.plot("run.jsonl", "run.svg")
        self.assertIn("optimal, 5 s", self.read("run.svg"))
        self.write("short.jsonl", JSON.replace('"iteration"', '"steps"'))
        self.assertEqual(self.plot("--x=iteration", "short.jsonl", status=1).err,
                         "short.jsonl: it tells no iterations; leave out --x=iteration\n")

    def test_a_resumed_run(self):
        """Its title says the time of this run, as its log does."""
        self.run_example("diet", "--iters=30", "--verb=1")
        with open(self.path("diet.sol"), encoding="utf-8") as file:
            old = re.sub(r"\| 0 \| \d+ \| --", "| 0 | 77 | --", file.read())
        self.write("diet.sol", old)
        self.remove("diet.lat")
        result = self.run_solver("--iters=3", "--verb=1", "diet.opt")
        self.assertIn("{ 1:17 min(s):sec(s) == 77 secs }", result.out)
        self.assertLess(run_log.read_run(result.out).last_second, 70)

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
            self.assertEqual(plot.best_so_far(run.target)[-1][1], best)
            self.assertEqual((run.last_iteration, os.path.basename(run.name)), (30, "diet"))
            drawn = Picture(self.plot("run.log").out)
            self.assertIn("best target (smaller is better)", drawn.texts())
            basis = "length: first basis vector, best inhomogeneous vector" in drawn.texts()
            self.assertEqual(basis, "--verb=2" in options)
            self.assertEqual("vectors in the collections" in drawn.texts(), "--sieve=1" in options)
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
        self.assertIn(picture.STYLE, text)
        self.assertIn("prefers-color-scheme: dark", text)


if __name__ == "__main__":
    harness.main()
