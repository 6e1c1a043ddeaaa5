"""Command line, usage, exit status and the words with which a run ends."""

import re
import signal

import harness
import programs

OPTIONS = (("help", "0"), ("verb", "0"), ("consistency", "0"), ("eenum", "1"), ("beta", "20"), ("eprune", "3"),
           ("btime", "0"), ("deep", "0"), ("collectLimit", "100"), ("pair", "1"), ("pairLimit", "10"), ("sieve", "0"),
           ("sample", "0"), ("sampleLimit", "1000"), ("scale", "0"), ("translate", "0"), ("reinsert", "1"),
           ("variate", "1"), ("rtime", "0"), ("iters", "-1"), ("sol", "1"), ("bench", "0"), ("snorm", "-1"),
           ("tnorm", "-inf"))

SHORT_USAGE = "Usage: latbox %s file.opt|file.lat\n" % " ".join("--%s=%s" % option for option in OPTIONS)

BANNER = r"<< latbox v2\.2\.2 \+\+\+ PID: \d+ >>\n"

REPORT = (r"\nGot signal: Terminated\n\n"
          r"\*{26} Terminated \*{26}\n"
          r"%s"
          r"\nTotal iterations: %s\nTotal running time: \d+ sec\(s\) -- Program end\n\Z")


def with_options(**changes):
    text = SHORT_USAGE
    for key, value in changes.items():
        text = re.sub("--%s=\\S*" % key, "--%s=%s" % (key, value), text)
    return text


class UsageTest(harness.Case):
    def assert_usage(self, result, text):
        self.assert_ends_well(result)
        self.assertEqual(result.body(), text)

    def test_no_argument(self):
        self.assert_usage(self.run_solver(), SHORT_USAGE)

    def test_empty_argument(self):
        self.assert_usage(self.run_solver(""), SHORT_USAGE)

    def test_the_usage_shows_what_was_set(self):
        self.assert_usage(self.run_solver("--beta=30", "---pair=0", "-snorm=1/3"),
                          with_options(beta="30", pair="0", snorm="1/3"))

    def test_an_empty_value_is_left_out(self):
        result = self.run_solver("--sol=")
        self.assert_usage(result, SHORT_USAGE.replace(" --sol=1", ""))

    def test_the_first_equals_sign_splits(self):
        self.assert_usage(self.run_solver("--sol=a=b"), with_options(sol="a=b"))

    def test_btime_follows_rtime(self):
        for given, btime in ((("--rtime=10", "--btime=100"), "10"), (("--rtime=10", "--btime=5"), "5"),
                             (("--rtime=10",), "10")):
            self.assert_usage(self.run_solver(*given), with_options(rtime="10", btime=btime))

    def test_verb_prints_an_empty_line_first(self):
        self.assert_usage(self.run_solver("--verb=1"), "\n" + with_options(verb="1"))

    def test_help_shows_every_option_in_its_order(self):
        for arguments in (("--help=1",), ("--help=1", "missing.opt"), ("--help=inf",)):
            result = self.run_solver(*arguments)
            self.assert_ends_well(result)
            lines = result.body().split("\n")
            self.assertEqual(lines[:3], ["Usage: latbox [options] file.opt|file.lat", "", "Options:"])
            self.assertEqual(lines[3 + len(OPTIONS):], ["", ""])
            for (key, default), line in zip(OPTIONS, lines[3:]):
                self.assertTrue(line.startswith("  --%s | " % key), line)
                self.assertTrue(line.endswith(" [ Default: %s ]" % default), line)

    def test_help_texts(self):
        out = self.run_solver("--help=1").out
        for line in ("  --help | Display this help information. [ Default: 0 ]\n",
                     "  --eprune | The enumeration trees can be pruned, which will speed up the enumeration. To enable "
                     "moderate pruning use 1 - if you prefer more aggressive pruning, then use 2 or 3 (see: also "
                     "--eenum, --beta). [ Default: 3 ]\n",
                     "  --btime | This defines a bound for the maximum time (in seconds) to spent, when ennumerating a "
                     "block of lattice vectors (see also: --beta, eenum). [ Default: 0 ]\n",
                     "  --sample | To enable a algorithm, which samples random (but probably short) vectors and "
                     "collects them  within the sets containing good vectors (see also: --sampleLimit, "
                     "--collectLimit). [ Default: 0 ]\n"):
            self.assertIn(line, out)

    def test_help_0_has_no_effect(self):
        self.assert_usage(self.run_solver("--help=0"), SHORT_USAGE)


class RefusedTest(harness.Case):
    def test_malformed_parameters(self):
        for argument, text in (("--help", "help"), ("-", ""), ("--", ""), ("-v", "v")):
            result = self.run_solver(argument, "prog.opt")
            self.assert_fails(result, "Malformed parameter: " + text)
            self.assertRegex(result.out, r"\A" + BANNER + r"\Z")

    def test_unknown_parameters(self):
        for argument, key in (("--nosuch=1", "nosuch"), ("--gui=1", "gui"), ("--Verb=1", "Verb"), ("--=1", "")):
            self.assert_fails(self.run_solver(argument, "prog.opt"), "No such parameter: " + key)

    def test_missing_file(self):
        self.assert_fails(self.run_solver("missing.opt"), "Could not read opt file: missing.opt")

    def test_the_extension_is_not_looked_at(self):
        self.assert_fails(self.run_solver("missing.lat"), "Could not read opt file: missing.opt")
        self.assert_fails(self.run_solver("missing"), "Could not read opt file: missing.opt")

    def test_a_folder_with_a_point_and_a_name_without_one(self):
        self.assert_fails(self.run_solver("dir.d/prob"), "Could not read opt file: dir.opt")

    def test_the_last_input_counts(self):
        self.write("prog.opt", programs.SMALL)
        self.assert_fails(self.run_solver("--iters=0", "prog.opt", "other.opt"), "Could not read opt file: other.opt")

    def test_a_value_that_is_no_number_is_0(self):
        self.write("prog.opt", programs.SMALL)
        result = self.run_solver("--iters=x", "prog.opt")
        self.assert_ends_well(result)
        self.assertRegex(result.out, r"\A" + BANNER + r"\Z")


    def test_numbers_that_cannot_be(self):
        for argument, message in (("--tnorm=1/0", "QQ: division by zero1"), ("--snorm=5.", "QQ: parse error1"),
                                  ("--snorm=1:7/3", "QQ: malformed number2")):
            self.assert_fails(self.run_solver(argument), message)

    def test_absurd_values_end_at_once(self):
        for argument in ("--snorm=1e999999999", "--tnorm=1e-999999999", "--snorm=" + "9" * 50000, "--beta=" + "9" * 50000,
                         "--bench=1e999999999"):
            self.assertIn(self.run_solver(argument, limit=10).status, (0, 1), argument)


class EndTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.SMALL)

    def test_end_by_solution(self):
        result = self.run_solver("prog.opt")
        self.assert_ends_well(result)
        found = "\nSolutions found: 1\n\n{ The first solution/s was/were found after: 0 sec(s) }\n"
        summary = re.escape(found).replace("0", r"\d+")
        place = "\nThe following file contains the results: \n\n\tprog.sol\n"
        self.assertRegex(result.out, r"\A" + BANNER + summary + "\n" + REPORT % (summary + place, r"\d+"))

    def test_end_by_iterations(self):
        result = self.run_solver("--sol=0", "--iters=3", "prog.opt")
        self.assert_ends_well(result)
        self.assertRegex(result.out, "\nTotal iterations: 3\n")
        self.assertTrue(result.out.endswith(" -- Program end\n"))

    def test_a_benchmark_with_an_infinite_factor_leaves_files_that_are_read_again(self):
        # Symptom: the times had 19 digits, and each later run ended with "QQ: parse error1".
        for factor in ("inf", "-inf", "1e30"):
            self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "--bench=" + factor, "prog.opt"))
            self.assertTrue(self.stars())
            self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "prog.opt"))

    def test_a_line_end_in_a_value_leaves_files_that_are_read_again(self):
        # Symptom: it cut the line of a solution in two, and each later run ended with "Vector: bad input".
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "--beta=20\n7", "prog.opt"))
        self.assertIn(" --beta=20 7 --eprune=3 ", self.read("prog.sol"))
        self.assertTrue(self.stars())
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "prog.opt"))

    def test_each_iteration_reports_at_verb_1(self):
        result = self.run_solver("--sol=0", "--iters=3", "--verb=1", "prog.opt")
        self.assert_ends_well(result)
        head = "------------------------- Some statistics --------------------------\n\nTotal iterations: "
        self.assertEqual([piece[:1] for piece in result.out.split(head)[1:]], ["1", "2", "3"])
        self.assertTrue(result.body().startswith("\n"))

    def test_no_solution_no_file_named(self):
        self.write("prog.opt", programs.NOTHING)
        result = self.run_solver("--iters=2", "prog.opt")
        self.assert_ends_well(result)
        self.assertFalse(self.exists("prog.sol"))
        self.assertRegex(result.out, r"\A" + BANNER + r"\n" + REPORT % ("", "2"))

    def test_end_by_time(self):
        self.write("prog.opt", programs.ENDLESS)
        result = self.run_solver("--sol=0", "--rtime=1", "prog.opt")
        self.assert_ends_well(result)
        self.assertRegex(result.out, r"\nGot signal: Terminated\n")

    def test_signals_end_with_the_report(self):
        self.write("prog.opt", programs.ENDLESS)
        for number, text in ((signal.SIGTERM, "Terminated"), (signal.SIGINT, "Interrupt")):
            session = self.start("--sol=0", "prog.opt")
            session.wait_for("Solutions found: ")
            session.kill(number)
            self.assertEqual(session.wait(), 0)
            self.assertEqual(session.err, "")
            self.assertIn("\nGot signal: %s\n\n%s Terminated %s\n" % (text, "*" * 26, "*" * 26), session.out)
            self.assertIn("\nThe following file contains the results: \n\n\tprog.sol\n", session.out)
            self.assertTrue(session.out.endswith(" -- Program end\n"))


if __name__ == "__main__":
    harness.main()
