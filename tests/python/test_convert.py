"""latbox-convert: the program has the points of the model, and the way back finds them."""

import gzip
import json
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import unittest
from fractions import Fraction

import support
import checker
import harness
import models as drawn_models
from latbox.errors import PlacedError
from latbox.models import name_map
from test_lp import LP
from test_mps import MPS
from support import PACKAGE, ToolsCase, converted, program_points, reader

REACH = 4


class RandomModelTest(ToolsCase):
    """All points and objective values of the model, and no others, are those of the program."""

    def compare(self, drawn, text, read, digits=None):
        expected = drawn.points(REACH)
        try:
            program = converted(read, text, digits)
        except PlacedError as refusal:
            self.assertRegex(str(refusal), "cannot hold|leave no", text)
            self.assertEqual(expected, {}, text)
            return 0
        # Not assertEqual, which would take minutes to print the difference.
        self.assertTrue(program_points(program) == expected, text + program)
        self.assert_form(checker.Program(program))
        return 1

    def assert_form(self, program):
        self.assertTrue(all(low == 0 for low in program.lx))
        for low, high in zip(program.lu, program.ru):
            self.assertLess(low, high)
            self.assertNotIn(checker.INF, (abs(low), abs(high)))

    def run_models(self, count, digits, text_of, read):
        kept = 0
        for seed in range(count):
            source = random.Random(seed)
            drawn = drawn_models.draw(source, digits)
            if not drawn.rows and drawn.objective is None:
                continue
            kept += self.compare(drawn, text_of(drawn, source), read, digits)
        # Most models must get through, or the comparison would say little.
        self.assertGreater(kept, count // 3)

    def test_mps_free(self):
        self.run_models(150, None, lambda drawn, source: drawn_models.Mps(drawn, source, False).text(),
                        reader("free-mps"))

    def test_mps_fixed(self):
        self.run_models(150, None, lambda drawn, source: drawn_models.Mps(drawn, source, True).text(),
                        reader("fixed-mps"))

    def test_mps_with_digits(self):
        self.run_models(80, 1, lambda drawn, source: drawn_models.Mps(drawn, source, False).text(),
                        reader("free-mps"))

    def test_lp(self):
        self.run_models(150, None, lambda drawn, source: drawn_models.Lp(drawn, source).text(), reader("lp"))

    def test_lp_with_digits(self):
        self.run_models(80, 1, lambda drawn, source: drawn_models.Lp(drawn, source).text(), reader("lp"))

    def test_the_comparison_sees_a_wrong_coefficient(self):
        source = random.Random(7)
        drawn = drawn_models.Model([("x", None, 0, 3)], [("r", [2], -drawn_models.INF, 4)], [1], False, 0)
        text = drawn_models.Mps(drawn, source, False).text().replace("r 2", "r 3")
        self.assertNotEqual(program_points(converted(reader("free-mps"), text)), drawn.points(REACH))


@unittest.skipUnless(shutil.which("glpsol"), "glpsol is not installed")
class PeerTest(ToolsCase):
    """Another reader of the same files finds the same optimum."""

    def peer_optimum(self, option, name, maximise):
        command = ["glpsol", option, name, "-o", "out"] + ["--max"] * maximise
        subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.PIPE, timeout=harness.LIMIT)
        text = self.read("out")
        if "INTEGER OPTIMAL" not in text:
            return None
        return float(re.search(r"^Objective: .* = (\S+)", text, re.MULTILINE).group(1))

    def own_optimum(self, text, maximise):
        values = program_points(text).values()
        return (max if maximise else min)(values, default=None)

    def compare(self, seeds, option, text_of, read):
        met = 0
        for seed in seeds:
            source = random.Random(seed)
            drawn = drawn_models.draw(source, plain=True)
            text = text_of(drawn, source)
            try:
                own = self.own_optimum(converted(read, text), drawn.maximise)
            except PlacedError:
                own = None
            self.write("model", text)
            peer = self.peer_optimum(option, "model", drawn.maximise and option != "--lp")
            self.assertEqual(own is None, peer is None, text)
            if own is not None:
                self.assertAlmostEqual(float(own), peer, 6, text)
                met += 1
        self.assertGreater(met, 5)

    def test_free_mps(self):
        self.compare(range(1000, 1025), "--freemps", lambda d, s: drawn_models.Mps(d, s, False, False).text(),
                     reader("free-mps"))

    def test_fixed_mps(self):
        self.compare(range(1100, 1125), "--mps", lambda d, s: drawn_models.Mps(d, s, True, False).text(),
                     reader("fixed-mps"))

    def test_lp(self):
        self.compare(range(1200, 1225), "--lp", self.peer_lp, reader("lp"))

    def test_what_the_peer_writes(self):
        """The peer reads a model and writes it in all three forms; each is read here as the model."""
        for seed in range(1300, 1312):
            source = random.Random(seed)
            drawn = drawn_models.draw(source, plain=True)
            self.write("model", self.peer_lp(drawn, source))
            command = ["glpsol", "--lp", "model", "--check", "--wmps", "fixed", "--wfreemps", "free", "--wlp", "lp"]
            subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.PIPE, timeout=harness.LIMIT)
            for name, read in (("fixed", reader("fixed-mps")), ("lp", reader("lp")),
                               ("free", reader("free-mps"))):
                text = self.read(name)
                names = [variable.name for variable in read(text).variables]
                # The peer may change the order of the variables.
                order = [names.index(name) for name, _, _, _ in drawn.variables]
                try:
                    points = program_points(converted(read, text))
                except PlacedError as refusal:
                    self.assertRegex(str(refusal), "cannot hold|leave no", text)
                    points = {}
                points = {tuple(x[i] for i in order): value for x, value in points.items()}
                self.assertTrue(points == drawn.points(REACH), text)

    def peer_lp(self, drawn, source):
        """In the words that the peer knows, and without the row that asks for nothing."""
        lines = drawn_models.Lp(drawn, source).text().replace("minimise", "minimize")
        return re.sub(r" all: .*?>= -inf\n", "", lines, flags=re.DOTALL)


class EndToEndTest(ToolsCase):
    """Convert, solve, map back, and hold the answer against the model."""

    def solve(self, name, *options):
        self.assert_ends_well(self.run_solver("--rtime=50", "--sol=1", *options, name + ".opt"))
        self.stars(name)
        return json.loads(self.tool("latbox-names", "--json", name + ".opt").out, parse_float=Fraction)["solutions"]

    def test_random_models(self):
        """Every answer is a point of the model; with an objective the best one is asked for."""
        solved = 0
        for seed in range(2000, 2024):
            source = random.Random(seed)
            drawn = drawn_models.draw(source)
            points = drawn.points(REACH)
            self.write("m.lp", drawn_models.Lp(drawn, source).text())
            self.write("m.mps", drawn_models.Mps(drawn, source, False).text())
            if not points or not drawn.rows:
                continue
            for tool, name in (("latbox-convert", "m.lp"), ("latbox-convert", "m.mps")):
                self.tool(tool, name, "m.opt")
                self.check_answers(drawn, points)
                self.remove("m.lat") if self.exists("m.lat") else None
                self.remove("m.sol")
                solved += 1
        self.assertGreater(solved, 12)

    def check_answers(self, drawn, points):
        options = []
        if drawn.objective is not None and any(drawn.objective):
            best = (max if drawn.maximise else min)(points.values())
            constant = name_map.read_map(self.read("m.opt")).objective[1]
            norm = (best - constant) * (-1 if drawn.maximise else 1)
            options = ["--snorm=0", "--tnorm=" + drawn_models.decimal(norm)]
        answers = self.solve("m", *options)
        self.assertTrue(answers)
        for answer in answers:
            point = tuple(Fraction(answer["values"]["x%d" % j]) for j in range(len(drawn.variables)))
            self.assertIn(point, points)
            self.assertEqual(answer["objective"], points[point])
        if options:
            self.assertEqual(answers[0]["objective"], best)

    def test_examples(self):
        """The optima were found by trying all points of the models."""
        for tool, name, options, norm, best in (
                ("latbox-convert", "workshop.mps", (), "-194.5", Fraction("207.25")),
                ("latbox-convert", "signs.mps", (), "-20", -26), ("latbox-convert", "shifts.lp", (), "540", 552),
                ("latbox-convert", "mixture.lp", ("--digits=1",), "-35.98", Fraction("37.58"))):
            self.example(name)
            opt = name.split(".")[0]
            self.tool(tool, *options, name, opt + ".opt")
            values = program_points(self.read(opt + ".opt")).values() if opt != "workshop" else [best]
            self.assertEqual((max if norm.startswith("-") and opt != "signs" else min)(values), best)
            self.assertEqual(self.solve(opt, "--snorm=0", "--tnorm=" + norm)[0]["objective"], best)

    def test_workshop_by_all_points(self):
        best = max(Fraction("7.5") * a + Fraction("4.25") * b + 9 * c + 3 * d - 8 * made + 5
                   for a in range(13) for b in range(-1, 26) for c in range(10) for d in range(4, 17) for made in (0, 1)
                   if -2 <= a - c <= 1 and b >= 10 * made and 2 * a + b + 3 * c >= 20
                   and 280 <= 12 * a + 8 * b + 18 * c + 5 * d <= 360)
        self.assertEqual(best, Fraction("207.25"))


def files_of_at_most(size):
    """A disk that is full after so many bytes."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class CommandTest(ToolsCase):
    """Exit status, messages and files of the command."""

    def test_a_model_that_is_refused(self):
        """The file and the place on standard error, and no output file."""
        self.write("bad.mps", MPS.replace("UP BND X 3", "SC BND X 3"))
        result = self.tool("latbox-convert", "bad.mps", "bad.opt", status=1)
        self.assertEqual(result.err, "bad.mps, line 15, column 9: X is semicontinuous, which cannot be stated in a .opt "
                                     "file\n")
        self.assertEqual(result.out, "")
        self.assertFalse(self.exists("bad.opt"))

    def test_files_that_are_none(self):
        self.assertEqual(self.tool("latbox-convert", "none.lp", status=1).err,
                         "none.lp: No such file or directory\n")
        self.write("bad.lp", b"\x00\xff\xfe")
        self.assertEqual(self.tool("latbox-convert", "bad.lp", status=1).err,
                         "bad.lp, line 1, column 1: the file must begin with Minimize or Maximize\n")
        self.write("empty.mps", "")
        self.assertEqual(self.tool("latbox-convert", "empty.mps", status=1).err,
                         "empty.mps, line 1: the file ends without ENDATA\n")

    def test_a_wrong_command_line(self):
        self.write("m.lp", LP)
        self.write("m.txt", LP)
        for arguments, reason in (((), "the following arguments are required: MODEL"),
                                  (("m.txt",), "m.txt: its name does not end in .opt, .lp or .mps"),
                                  (("-",), "say --format=opt|lp|mps"), (("--fixed", "m.lp"), "are for MPS models"),
                                  (("--digits=19", "m.lp"), "argument --digits: '19': a number of digits from 0 to 18 is wanted"),
                                  (("--digits=x", "m.lp"), "argument --digits: 'x': a number of digits from 0 to 18 is wanted"), (("--dig=1", "m.lp"), "unrecognized"),
                                  (("--format=xls", "m.lp"), "argument --format: invalid choice")):
            self.assertIn(reason, self.tool("latbox-convert", *arguments, status=2).err, arguments)

    def test_format_and_standard_input(self):
        self.write("m.lp", LP)
        self.write("m.txt", LP)
        known = self.tool("latbox-convert", "m.lp").out
        self.assertEqual(self.tool("latbox-convert", "--format=lp", "m.txt").out, known.replace("m.lp", "m.txt"))
        self.write("workshop", MPS)
        self.assertEqual(self.tool("latbox-convert", "--free", "workshop").out,
                         self.tool("latbox-convert", "--format=mps", "workshop").out)
        piped = self.tool("latbox-convert", "--format=lp", "-", stdin=gzip.compress(LP.encode())).out
        self.assertEqual(piped, known.replace("m.lp", "standard input"))

    def test_a_program_again(self):
        """A .opt file by its plain meaning, closed and from 0 on: its bounds are those of the box then."""
        self.write("p.opt", "[ inf ] [ [ 1 2 ] ] [ ] [ ] [ [ 1 1 ] ] [ -inf ] [ 3 ] [ 0 1 ] [ -2 0.5 ] [ 2 1 ]\n")
        text = self.tool("latbox-convert", "p.opt").out
        self.assertEqual(max(program_points(text).values()), 4)
        self.assertIn("//@ variable -2 1 x1\n//@ variable 1/2 1 x2\n", text)
        self.write("p.opt", "[ 3 ] [ [ 1 2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 2 1 ]\n")
        self.assertEqual(self.tool("latbox-convert", "p.opt", status=1).err,
                         "p.opt, line 1, column 9: a value to be reached: such a program is the solver's own and is not "
                         "rewritten\n")

    def test_numbers_of_ten_thousand_digits(self):
        self.write("m.lp", LP.replace("2 y", "1" * 10000 + " y"))
        self.assertIn(" " + "1" * 10000 + " ", self.tool("latbox-convert", "m.lp").out)

    def test_an_output_that_cannot_be_written(self):
        """Status 1 and the reason; a file that was there stays as it was."""
        self.write("m.lp", LP)
        self.write("m.opt", "old")
        self.assertEqual(self.tool("latbox-convert", "m.lp", "/dev/full", status=1).err,
                         "/dev/full: No space left on device\n")
        self.assertEqual(self.tool("latbox-convert", "m.lp", "none/m.opt", status=1).err, "none/m.opt: No such file or directory\n")
        command = [sys.executable, os.path.join(PACKAGE, "bin", "latbox-convert"), "m.lp"]
        with open("/dev/full", "wb") as full:
            done = subprocess.run(command, cwd=self.folder, stdout=full, stderr=subprocess.PIPE, check=False,
                                  timeout=harness.LIMIT)
        self.assertEqual((done.returncode, done.stderr), (1, b"standard output: No space left on device\n"))
        done = subprocess.run(command + ["m.opt"], cwd=self.folder, stderr=subprocess.PIPE, check=False,
                              timeout=harness.LIMIT, preexec_fn=lambda: files_of_at_most(16))
        self.assertEqual((done.returncode, done.stderr), (1, b"m.opt: File too large\n"))
        self.assertEqual(self.read("m.opt"), "old")
        self.assertEqual(sorted(os.listdir(self.folder)), ["m.lp", "m.opt"])

    def test_no_standard_output(self):
        """It was an AttributeError of Python, in each of the small commands."""
        self.write("m.lp", LP)
        self.write("j", '{"event": "start", "time": 0, "model": "m"}\n')
        self.tool("latbox-convert", "m.lp", "m.opt")
        for name, file in (("latbox-convert", "m.lp"), ("latbox-names", "m.opt"), ("latbox-plot", "j")):
            done = subprocess.run([sys.executable, os.path.join(PACKAGE, "bin", name), file], cwd=self.folder, stderr=subprocess.PIPE,
                                  check=False, timeout=harness.LIMIT, preexec_fn=lambda: os.close(1))
            self.assertEqual((done.returncode, done.stderr), (1, b"standard output: Bad file descriptor\n"))

    def test_a_reader_that_goes_away(self):
        self.write("m.lp", LP)
        read, write = os.pipe()
        os.close(read)
        done = subprocess.run([sys.executable, os.path.join(PACKAGE, "bin", "latbox-convert"), "m.lp"], cwd=self.folder,
                              stdout=write, stderr=subprocess.PIPE, check=False, timeout=harness.LIMIT)
        os.close(write)
        self.assertEqual((done.returncode, done.stderr), (1, b""))

    def test_version_and_help(self):
        self.assertRegex(self.tool("latbox-convert", "--version").out, r"^latbox-convert [0-9.]+\n\Z")
        self.assertIn("--marker-bounds", self.tool("latbox-convert", "--help").out)

    def test_the_model_is_not_written_over(self):
        """The program took its place, and the model was gone."""
        self.write("m.lp", LP)
        os.symlink("m.lp", self.path("other.opt"))
        os.link(self.path("m.lp"), self.path("third.opt"))
        for name in ("m.lp", "./m.lp", "other.opt", "third.opt"):
            done = self.tool("latbox-convert", "m.lp", name, status=2)
            self.assertTrue(done.err.endswith("error: %s: that is the model\n" % name), done.err)
            self.assertEqual(self.read("m.lp"), LP)

    def test_a_name_of_two_lines(self):
        """Its second line stood in the program, outside of the comment."""
        self.write("two\nlines.lp", LP)
        self.tool("latbox-convert", "two\nlines.lp", "two.opt")
        program = self.read("two.opt")
        self.assertEqual(program.split("\n")[0], "// converted from two lines.lp")
        self.tool("latbox-convert", "two.opt")

    def test_names_in_any_encoding(self):
        """Bytes pass through, whatever they mean."""
        name = b"x\xe9\xff\xc3\xa4"
        self.write("m.mps", MPS.encode().replace(b"X ", name + b" "))
        self.tool("latbox-convert", "m.mps", "m.opt")
        self.assertIn(b"//@ variable 0 1 " + name + b"\n", self.read_bytes("m.opt"))
        self.assert_ends_well(self.run_solver("--iters=3", "m.opt"))
        self.assertIn(name, self.tool("latbox-names", "m.opt").out.encode(errors="surrogateescape"))
        self.write("m.mps", MPS.encode().replace(b"UP BND X", b"UP BND " + name))
        self.assertIn("unknown column 'x\\udce9", self.tool("latbox-convert", "m.mps", status=1).err)


if __name__ == "__main__":
    harness.main()
