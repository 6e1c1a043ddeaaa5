"""Bad files: each is refused with its message and exit status 1, at once, and no file that was there is touched."""

import os
import random

import harness
import programs
from programs import opt

# Refusals take milliseconds; the limit leaves room for a busy machine, and a hang fails.
SOON = 60

BEHIND = " [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]"
HEAD = "[ ] [ ] [ [ 1 1 ] ] [ 2 ]"

# (name, content of the .opt file, message)
REFUSED = (
    # Truncated behind each item and within it.
    ("empty", "", "Matrix: bad stream"),
    ("blanks", " \n\t\r\n", "Matrix: bad stream"),
    ("only dt", "[ ]", "Matrix: bad stream"),
    ("only dt and At", "[ ] [ ]", "Vector: bad stream"),
    ("bg missing", "[ ] [ ] [ [ 1 1 ] ]", "The row count of Ag (1) differs with the dimension of bg (0)"),
    ("Au missing", HEAD, "Vector: bad stream"),
    ("lu missing", HEAD + " [ ]", "Vector: bad stream"),
    ("ru missing", HEAD + " [ ] [ ]", "Vector: bad stream"),
    ("dx missing", HEAD + " [ ] [ ] [ ]", "Vector: bad stream"),
    ("lx missing", HEAD + " [ ] [ ] [ ] [ 0 0 ]", "Vector: bad stream"),
    ("rx missing", HEAD + " [ ] [ ] [ ] [ 0 0 ] [ 0 0 ]", "recheck sdim case and the usage of n (eg. in opt2lat)"),
    ("end in a vector", HEAD + " [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4", "Vector: bad input"),
    ("end behind [", "[", "Vector: bad input"),
    ("end in a row", "[ ] [ ] [ [ 1 1", "Vector: bad input"),
    ("end in a matrix", "[ ] [ ] [ [ 1 1 ]", "Matrix: bad input"),
    ("end behind the [ of a matrix", "[ ] [", "Matrix: bad input"),
    ("kt cut off", "[ -inf ] =", "The dimensions of the target properties (kt, dt) differ (0, 1)"),
    # Comments.
    ("open comment", "/* and so it goes", "Comment is not terminated"),
    ("line comment without a line end", "[ ] // no line end", None),
    ("open comment in a vector", "[ /* ]", "Comment is not terminated"),
    ("open comment in a matrix", "[ ] [ [ 1 1 ] /* ]", "Comment is not terminated"),
    # Junk.
    ("words", "hello, world\n", "Dimension error -- n == 0"),
    ("binary", b"\x7fELF\x02\x01\x01\x00\x00\xff\xfe[\x00]" * 50, "Dimension error -- n == 0"),
    ("only empty items", "[ ] [ ] [ ] [ ] [ ] [ ] [ ] [ ] [ ] [ ]", "Dimension error -- n == 0"),
    ("a letter", "[ a ]", "Vector: bad input"),
    ("a comma between elements", "[ -inf , ]", "QQ: parse error1"),
    ("ix", "[ ix ]", "Vector: bad input2"),
    ("inx", "[ -inx ]", "Vector: bad input3"),
    ("a row without [", "[ ] [ ] [ 1 1 ] [ 2 ]" + BEHIND, "Matrix: bad input"),
    ("point without digits", "[ 5. ]", "QQ: parse error1"),
    ("point and zero", "[ 5.0 ]", "QQ: parse error1"),
    ("division by zero", "[ 1/0 ]", "QQ: division by zero1"),
    ("mixed number, zero behind :", "[ 1:05/10 ]", "QQ: malformed number1"),
    ("mixed number, improper", "[ 1:7/3 ]", "QQ: malformed number2"),
    ("an exponent", "[ 1e3 ]", "Vector: bad input"),
    ("a NUL between items", "[ ]\0" + HEAD[3:] + BEHIND, "Dimension error -- n == 0"),
    ("a NUL in a number", "[ ] [ ] [ [ 1\0 1 ] ] [ 2 ]" + BEHIND, "Vector: bad input"),
    ("a byte order mark", "\ufeff" + HEAD + BEHIND, "Dimension error -- n == 0"),
    ("UTF-16", (HEAD + BEHIND).encode("utf-16"), "Dimension error -- n == 0"),
    ("a blank that is none", "[\u00a0] " + HEAD + BEHIND, "Vector: bad input"),
    ("Latin-1", b"[ \xe4 ]", "Vector: bad input"),
    ("nan", opt(ag=[[1, "nan"]], bg=[2], rx=[4, 4]), "Vector: bad input"),
    ("infinity", opt(ag=[[1, 1]], bg=[2], rx=["infinity", 4]), "Vector: bad input3"),
    ("hexadecimal", opt(ag=[[1, "0x10"]], bg=[2], rx=[4, 4]), "Vector: bad input"),
    # Brackets that do not pair.
    ("a bracket too many behind a matrix", "[ ] [ ] [ [ 1 1 ] ] ] [ 2 ]" + BEHIND,
     "The row count of Ag (1) differs with the dimension of bg (0)"),
    ("a bracket too few behind a matrix", "[ ] [ ] [ [ 1 1 ] [ 2 ]" + BEHIND, "Matrix: bad input"),
    ("a matrix in a matrix", "[ ] [ ] [ [ [ 1 1 ] ] ] [ 2 ]" + BEHIND, "Vector: bad input"),
    ("a vector without brackets", HEAD + BEHIND[:-7] + "4 4", "recheck sdim case and the usage of n (eg. in opt2lat)"),
    # Dimensions.
    ("a shorter row", opt(ag=[[1, 1, 1], [1, 1]], bg=[2, 2], rx=[4, 4, 4]), "Array: index out of range"),
    ("two numbers that touch", opt(ag=[["1-1"]], bg=[2], rx=[4, 4]), "The dimension of rx has to be > 0 and < A_{t,u,g}.MN"),
    ("kt and dt", "[ -inf ] = [ 1 2 ]", "The dimensions of the target properties (kt, dt) differ (2, 1)"),
    ("At and dt", "[ -inf inf ] [ [ 1 1 ] ]", "The row count of At (1) differs with the dimension of dt (2)"),
    ("Ag and bg", "[ ] [ ] [ [ 1 1 ] ] [ 2 3 ]", "The row count of Ag (1) differs with the dimension of bg (2)"),
    ("a longer row", "[ ] [ ] [ [ 1 1 ] [ 1 1 1 ] ]", "Matrix row dimension mismatch"),
    ("columns of Ag", "[ -inf ] [ [ 1 1 ] ] [ [ 1 1 1 ] ] [ 2 ]" + BEHIND,
     "The column count of Ag (3) is not right ( != 2 )"),
    ("columns of Au", "[ -inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 ] ] [ 0 ] [ 1 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]",
     "The column count of Au (1) is not right ( != 2 )"),
    ("Au and lu", "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ ] [ 2 ]",
     "The row count of Au ( 1) differs with the dimension of lu / ru ( 0)"),
    ("lu and ru", "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 2 3 ]", "The dimensions of lu (1) and ru (2) differ"),
    ("rx too short", opt(ag=[[1, 1]], bg=[2], dx=[0, 0], lx=[0, 0], rx=[4]),
     "recheck sdim case and the usage of n (eg. in opt2lat)"),
    ("rx too long", opt(ag=[[1, 1]], bg=[2], dx=[0, 0], lx=[0, 0], rx=[4, 4, 4]),
     "The dimension of rx has to be > 0 and < A_{t,u,g}.MN"),
    ("lx too short", opt(ag=[[1, 1]], bg=[2], dx=[0, 0], lx=[0], rx=[4, 4]),
     "The dimensions of the solution properties (lx, rx, dx) differ (1, 2, 2)"),
    ("dx too long", opt(ag=[[1, 1]], bg=[2], dx=[0, 0, 0], lx=[0, 0], rx=[4, 4]),
     "The dimensions of the solution properties (lx, rx, dx) differ (2, 2, 3)"),
    # Infinities and crossed bounds.
    ("inf in At", opt(dt=["-inf"], at=[[1, "inf"]], rx=[4, 4]), "+-inf not allowed in At"),
    ("inf in bg", opt(ag=[["inf", 1]], bg=["-inf"], rx=[4, 4]), "+-inf not allowed in bg"),
    ("inf in Ag", opt(ag=[["inf", 1]], bg=[2], rx=[4, 4]), "+-inf not allowed in Ag"),
    ("inf in Au", opt(au=[[1, "-inf"]], lu=[0], ru=[1], rx=[4, 4]), "+-inf not allowed in Au"),
    ("lu above ru", opt(au=[[1, 1]], lu=[2], ru=[1], rx=[4, 4]), "ru has to be >= lu in each of its components"),
    ("useless row", opt(au=[[1, 1]], lu=["-inf"], ru=["inf"], rx=[4, 4]),
     "Useless inequation -inf <= ... <= inf found"),
    ("lx above rx", opt(ag=[[1, 1]], bg=[2], lx=[0, 5], rx=[4, 4]), "rx has to be >= lx in each of its components"),
    ("lx inf", opt(ag=[[1, 1]], bg=[2], lx=[0, "inf"], rx=[4, "inf"]),
     "rx has to be >= lx in each of its components"),
    ("rx -inf", opt(ag=[[1, 1]], bg=[2], lx=[0, "-inf"], rx=[4, "-inf"]),
     "rx has to be >= lx in each of its components"),
    # Programs that read well and have no solution.
    ("lu and ru inf", opt(au=[[1, 1]], lu=["inf"], ru=["inf"], rx=[4, 4]),
     "Unfulfillable infinite inequation detected --> NO SOLUTIONS!"),
    ("odd equation", opt(ag=[[2, 2]], bg=[3], rx=[4, 4]), "The equation system has no integer solution :("),
    # Absurd sizes.
    ("a million digits", opt(ag=[["7" * 10**6, 1]], bg=[2], rx=[4, 4]), None),
    ("a fraction of a million digits", opt(ag=[["1/" + "7" * 10**6, 1]], bg=[2], rx=[4, 4]), None),
    ("a million brackets", "[ " * 10**6, "Vector: bad input"),
    ("a million slashes", "[ " + "/" * 10**6, None),
    ("a million signs", "[ " + "-" * 10**6, None),
    ("a million colons", "[ 1" + ":" * 10**6 + " ]", None),
    ("a million points", "[ " + ".1" * 10**6 + " ]", None),
    ("a million rows", "[ ] [ ] [ " + "[ ] " * 10**6, "Matrix: bad input"),
    ("digits inf", opt(ag=[[1, 1]], bg=[2], dx=["inf", 0], rx=[4, 4]), None),
    ("digits 10^12", opt(ag=[[1, 1]], bg=[2], dx=[10**12, 0], rx=[4, 4]), None),
)


class Untouched(harness.Case):
    """Runs in a folder where .sol and .lat are there before, and must be the same bytes afterwards."""

    SOL = b"[ 1 1 ] | 0 | [ ] | 0 | 77 | --verb=0 | 2.2.2\n"
    LAT = b"something that was here before\n"

    def put(self, content):
        self.write("prog.opt", content)
        self.write("prog.sol", self.SOL)
        self.write("prog.lat", self.LAT)
        # An old lattice is not read, only replaced, once a new one has been generated.
        self.age("prog.lat", 1000)

    def assert_untouched(self):
        self.assertEqual(self.read_bytes("prog.sol"), self.SOL)
        self.assertEqual(self.read_bytes("prog.lat"), self.LAT)

    def refuse(self, message, before=""):
        result = self.run_solver("--iters=1", "prog.opt", limit=SOON)
        if message is None:
            self.assertRegex(result.err, r"\A\n\*\*\* FAIL: [^\n]+\n\Z")
            self.assertEqual(result.status, 1)
        else:
            self.assert_fails(result, message, before)
        self.assert_untouched()


class OptFileTest(Untouched):
    def test_refused(self):
        for name, content, message in REFUSED:
            with self.subTest(name):
                self.put(content)
                self.refuse(message)

    def test_every_truncation_is_refused(self):
        text = programs.TARGET
        for length in range(len(text) - 2):
            with self.subTest(length=length):
                self.put(text[:length])
                self.refuse(None)

    def test_no_solution_says_where(self):
        self.put(opt(au=[[1, 1]], lu=[9], ru=[12], rx=[4, 4]))
        self.refuse("Unfulfillable inequality detected --> NO SOLUTIONS!",
                    "prog.opt: Inequality #1, this->lu = 9, this->ru = 8\n")
        self.put(opt(ag=[[1, 1]], bg=[9], rx=[4, 4]))
        self.refuse("Unfulfillable equality detected --> NO SOLUTIONS!",
                    "prog.opt: Equality #1, lg = 0, this->bg = 9, rg = 8\n")

    def test_bounds_that_cross_on_the_grid(self):
        self.put(opt(ag=[[1, 1]], bg=[2], lx=["1/3", 0], rx=["2/3", 4]))
        result = self.run_solver("--iters=1", "prog.opt", limit=SOON)
        self.assertTrue(result.err.endswith(
            harness.failure_text("Unfulfillable inequality detected --> NO SOLUTIONS!")), result.err)
        self.assertEqual(result.status, 1)
        self.assert_untouched()

    def test_a_corner_that_breaks_a_half_infinite_row(self):
        # A rule of this design: nothing guards the trivial solutions against such a row.
        self.write("prog.opt", opt(ag=[[1, 1, 1]], bg=[5], au=[[1, -1, 0]], lu=[1], ru=["inf"], rx=[4, 4, 4]))
        self.assert_fails(self.run_solver("--iters=1", "prog.opt"), "slack variable insonsistency, s should be >= 0")

    def test_what_is_no_readable_file(self):
        os.mkdir(self.path("folder.opt"))
        self.write("plain", "")
        self.assert_fails(self.run_solver("folder.opt"), "Could not read opt file: folder.opt")
        self.assert_fails(self.run_solver("plain/prog.opt"), "Could not read opt file: plain/prog.opt")
        self.write("prog.opt", programs.SMALL)
        os.chmod(self.path("prog.opt"), 0)
        if not os.access(self.path("prog.opt"), os.R_OK):
            self.assert_fails(self.run_solver("prog.opt"), "Could not read opt file: prog.opt")

    def test_random_bytes_never_crash(self):
        draw = random.Random(5)
        alphabet = b"[]=/*-+.:,infe0123456789 \n\t\x00\xff"
        for round_number in range(60):
            self.put(bytes(draw.choice(alphabet) for _ in range(draw.randrange(400))))
            with self.subTest(round_number):
                self.refuse(None)

    def test_text_behind_the_last_item_is_ignored(self):
        for tail in ("hello [ 1", "/* open", "// open", "\x00"):
            self.write("prog.opt", programs.SMALL + tail)
            self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))

    def test_forms_of_numbers_and_comments(self):
        self.write("prog.opt", "/*1*/ [ ]//2\n[/*3*/]\t[ [+1 -1.5 -3:1/2 1,25]\r\n ] [-.5] []\n[] [ /**/ ] "
                   "[0 0 0 0] [0 //\n0 0 0] [4 4 4 4]")
        self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))

    def test_very_long_numbers_are_read(self):
        number = "7" * 2000
        self.write("prog.opt", opt(au=[[number, number]], lu=[0], ru=[number], rx=[1, 1]))
        self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))


class SolFileTest(harness.Case):
    GOOD = "[ 1 1 ] | 0 | [ ] | 0 | 77 | --verb=0 | 2.2.2\n"

    def run_with(self, sol):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.sol", sol)
        return self.run_solver("--sol=0", "--iters=1", "prog.opt", limit=SOON)

    def refuse(self, sol, message):
        result = self.run_with(sol)
        if message is None:
            self.assertRegex(result.err, r"\A\n\*\*\* FAIL: [^\n]+\n\Z")
            self.assertEqual(result.status, 1)
        else:
            self.assert_fails(result, message)
        self.assertEqual(self.read_bytes("prog.sol"), sol if isinstance(sol, bytes) else sol.encode())

    def test_damaged_vectors(self):
        for sol, message in (("[ 1 a ] | 0 | [ ] | 0 | 77 | p\n", "Vector: bad input"),
                             ("[ 1 ix ] | 0 | [ ] | 0 | 77 | p\n", "Vector: bad input2"),
                             ("[ 1 inx ] | 0 | [ ] | 0 | 77 | p\n", "Vector: bad input3"),
                             ("[ 1 1", "Vector: bad input"),
                             ("[ 1 1 ] | 0 | [ 1", "Vector: bad input"),
                             ("[ 1 1 // ] | 0 | [ ] | 0 | 77 | p\n", "Vector: bad input"),
                             ("[ 1 1 /* ] | 0 | [ ] | 0 | 77 | p\n", "Comment is not terminated")):
            with self.subTest(sol):
                self.refuse(sol, message)
                self.refuse(self.GOOD + sol, message)

    def test_lines_of_another_kind(self):
        for sol in ("[ 1\0 1 ] | 0 | [ ] | 0 | 77 | p\n", self.GOOD + "\0\n", "\ufeff" + self.GOOD, self.GOOD + "hello",
                    "[ 1 1 ] ] | 0 | [ ] | 0 | 77 | p\n", "[ [ 1 1 ] ] | 0 | [ ] | 0 | 77 | p\n",
                    "[ 1 1 ] | 0 | [ ] | 0 | " + "9" * 20 + " | p\n", "[ 1 1 ] | nan | [ ] | 0 | 77 | p\n",
                    self.GOOD.encode("utf-16"), self.GOOD * 1000 + self.GOOD[:20]):
            with self.subTest(sol[:60]):
                self.refuse(sol, None)

    def test_equal_lines_become_one_and_the_earlier_time_stays(self):
        for sol in (self.GOOD * 3, self.GOOD.replace("77", "99") + self.GOOD, self.GOOD + self.GOOD.replace("77", "99")):
            self.assert_ends_well(self.run_with(sol))
            self.assertEqual([star.time for star in self.stars() if star.x == [1, 1]], [77])

    def test_what_stands_behind_the_time_is_only_text(self):
        for tail in (b"\xff\xfe | 2.2.2\n", b"p\0q | 2.2.2\n", b"p | 2.2.2 | more | more\n", b"p | 2.2.2\r\n", b"p"):
            self.assert_ends_well(self.run_with(b"[ 1 1 ] | 0 | [ ] | 0 | 77 | " + tail))
            self.assertIn(b"[ 1 1 ] | 0 | [ ] | 0 | 77 | ", self.read_bytes("prog.sol"))

    def test_absurd_dimensions_are_dropped(self):
        self.assert_ends_well(self.run_with("[ " + "1 " * 200000 + "] | 0 | [ ] | 0 | 77 | p\n" + self.GOOD))
        self.assertEqual([star.time for star in self.stars() if star.x == [1, 1]], [77])

    def test_lines_that_end_early(self):
        for sol in ("[ 1 1 ]\n", "[ 1 1 ] | \n", "[ 1 1 ] | 0\n", "[ 1 1 ] | 0 | [ ] | \n", "[ 1 1 ] | 0 | [ ] | 0 | \n"):
            with self.subTest(sol):
                self.refuse(sol, None)

    def test_junk(self):
        for sol in ("hello\n", b"\x00\xff\x7fELF\n", "[ 1 1 ] x 0\n"):
            with self.subTest(sol):
                self.refuse(sol, None)

    def test_stars_that_do_not_fit_are_dropped(self):
        for vector in ("[ 9 9 ]", "[ 4 4 ]", "[ 0.5 1 ]", "[ 1 ]", "[ 1 1 1 ]", "[ ]", ""):
            with self.subTest(vector):
                result = self.run_with("%s | 0 | [ ] | 0 | 77 | p\n" % vector + self.GOOD)
                self.assert_ends_well(result)
                stars = self.stars()
                self.assertIn((1, 1), [tuple(star.x) for star in stars])
                self.assertEqual([star.time for star in stars if star.x == [1, 1]], [77])

    def test_dropping_is_said_at_verb_2(self):
        self.write("prog.opt", programs.SMALL)
        for vector, message in (("[ 4 4 ]", "Star-Vector is neither a solution nor a feasible vector"),
                                ("[ 0.5 1 ]", "Star-Vector is not part of the lattice"),
                                ("[ 1 1 1 ]", "Star-Vector is not part of the lattice")):
            self.write("prog.sol", "%s | 0 | [ ] | 0 | 77 | p\n" % vector)
            result = self.run_solver("--sol=0", "--iters=1", "--verb=2", "prog.opt")
            self.assert_ends_well(result)
            self.assertIn(message, result.out)
            self.assertNotIn("Star-Vector", self.run_with("%s | 0 | [ ] | 0 | 77 | p\n" % vector).out)

    def test_blank_lines_are_skipped(self):
        self.assert_ends_well(self.run_with("\n \n" + self.GOOD + "\n"))
        self.assertEqual([star.time for star in self.stars() if star.x == [1, 1]], [77])

    def test_a_folder_in_its_place_is_no_file(self):
        self.write("prog.opt", programs.SMALL)
        os.mkdir(self.path("prog.sol"))
        result = self.run_solver("--sol=0", "--iters=2", "prog.opt")
        self.assertEqual(result.status, 0)
        self.assertEqual(result.err.count("*** "), 1)
        self.assertIn("prog.sol", result.err)


class LatFileTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.SMALL)
        self.good = programs.SMALL_LATTICE % 5

    def refuse(self, lat, message):
        self.write("prog.lat", lat)
        before = self.read_bytes("prog.lat")
        result = self.run_solver("--iters=1", "prog.opt", limit=SOON)
        if message is None:
            self.assertRegex(result.err, r"\A\n\*\*\* FAIL: [^\n]+\n\Z")
            self.assertEqual(result.status, 1)
        else:
            self.assert_fails(result, message)
        self.assertEqual(self.read_bytes("prog.lat"), before)
        self.assertFalse(self.exists("prog.sol"))

    def test_refused(self):
        for name, old, new, message in (
                ("letter in the basis", "[ 4 2 0 0 ]", "[ 4 x 0 0 ]", "Vector: bad input"),
                ("longer row", "[ 4 2 0 0 ]", "[ 4 2 0 0 0 ]", "Matrix row dimension mismatch"),
                ("no row", "[ 4 2 0 0 ]", "4 2 0 0", "Matrix: bad input"),
                ("lbnd short", "[ -4 -4 -4 1 ]", "[ -4 -4 1 ]", "check vector dimensions are incorrect"),
                ("ubnd long", "[ 4 4 4 1 ]", "[ 4 4 4 4 1 ]", "check vector dimensions are incorrect"),
                ("c short", "[ 2 1 1 1 ]", "[ 2 1 1 ]", "c vector dimension mismatch"),
                ("c no vector", "[ 2 1 1 1 ]", "2 1 1 1", "c vector dimension mismatch"),
                ("lx long", "[ 0 0 ]", "[ 0 0 0 ]", None),
                ("rx short", "[ 4 4 ]", "[ 4 ]", None),
                ("no R", "\n4\n", "\nx\n", None),
                ("R negative", "\n4\n", "\n-4\n", "Vector: bad input"),
                ("c zero", "[ 2 1 1 1 ]", "[ 0 1 1 1 ]", "Vector: bad input"),
                ("tu neither 0 nor 1", "\n0\n", "\n2\n", "Vector: bad input"),
                ("tu without its bounds", "\n0\n", "\n1\n", "Vector: bad input"),
                ("bounds of tu without brackets", "(-inf, inf)", "-inf, inf", "Vector: bad input"),
                ("infinite entry", "[ 4 2 0 0 ]", "[ 4 inf 0 0 ]", "Vector: bad input"),
                ("absurd seconds", "\n5\n", "\n" + "9" * 20 + "\n", "QQ: parse error1"),
                ("a bracket too many", "[\n[", "[\n[\n[", "Vector: bad input"),
                ("a byte order mark", "[\n[", "\ufeff[\n[", "Matrix: bad input"),
                ("a NUL", "[ 4 2 0 0 ]", "[ 4 2\0 0 0 ]", "Vector: bad input")):
            with self.subTest(name):
                self.assertIn(old, self.good)
                self.refuse(self.good.replace(old, new, 1), message)

    def test_text_behind_the_seconds_is_ignored(self):
        for tail in ("hello ] ]", "/* open", "\0", self.good):
            self.write("prog.lat", self.good + tail)
            self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))

    def test_more_targets_than_columns(self):
        self.write("prog.opt", opt(dt=["-inf"] * 5, at=[[1, 1]] * 5, rx=[4, 4]))
        self.refuse("[\n[ 1 2 ]\n]\n", "target dimension > lattice dimension")

    def test_every_truncation_is_refused(self):
        end = self.good.index("(-inf, inf)")
        for length in range(end):
            with self.subTest(length=length):
                self.refuse(self.good[:length], None)

    def test_junk(self):
        for lat in ("hello\n", b"\x7fELF\x00\xff", "/* open", "[ ] [ ] [ ]"):
            with self.subTest(lat):
                self.refuse(lat, None)

    def test_a_folder_in_its_place_is_no_file(self):
        os.mkdir(self.path("prog.lat"))
        result = self.run_solver("--iters=2", "prog.opt")
        self.assertEqual(result.status, 0)
        self.assertEqual(result.err.count("*** "), 1)
        self.assertIn("prog.lat", result.err)
        self.assertTrue(self.stars())


if __name__ == "__main__":
    harness.main()
