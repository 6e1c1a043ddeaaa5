"""A full disk, a folder that takes no files, too little memory: the run says so, and loses nothing that it has found."""

import os
import re
import resource
import subprocess

import checker
import harness
import programs

NOBODY = 65534

LOST_HEAD = "\nSolutions that could not be written to prog.sol:\n"


def file_size_limit(size):
    """No file may get longer; the limit can be raised again, as a disk is cleared."""
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))


def memory_limit(size):
    return lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size))


def as_nobody():
    if os.geteuid() == 0:
        os.setgroups([])
        os.setgid(NOBODY)
        os.setuid(NOBODY)


class FaultCase(harness.Case):
    def leftovers(self):
        return sorted(set(os.listdir(self.folder)) - {"prog.opt", "prog.lat", "prog.sol"})

    def points_of(self, text):
        """The points of the lines of a .sol file, each checked against the program."""
        stars = checker.read_stars(text)
        for star, reason in checker.verdicts(checker.Program(self.read("prog.opt")), stars):
            self.assertIsNone(reason)
        return {tuple(star.x) for star in stars}

    def assert_lost_nothing(self, err, warnings):
        """Standard error: the warnings, then the lines that the .sol file should have."""
        head, lines = err.split(LOST_HEAD)
        self.assertEqual(sorted(head.splitlines()), sorted(warnings))
        self.assertTrue(self.points_of(lines))


class FullDiskTest(FaultCase):
    LAT_WARNING = "*** prog.lat: File too large"
    SOL_WARNING = "*** prog.sol: File too large"
    SOL_WARNING_PATTERN = re.escape(SOL_WARNING + "\n")

    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)

    def raise_limit(self, session):
        resource.prlimit(session.process.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))

    def lower_limit(self, session, size):
        resource.prlimit(session.process.pid, resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))

    def test_no_file_can_be_written(self):
        for program in (programs.ENDLESS, programs.LONG_TARGET):
            for iterations in ("3", "40"):
                self.write("prog.opt", program)
                result = self.run_solver("--sol=0", "--iters=" + iterations, "prog.opt", prepare=file_size_limit(0))
                self.assertEqual(result.status, 0)
                self.assertTrue(result.out.endswith(" -- Program end\n"))
                self.assertNotIn("The following file contains the results", result.out)
                self.assert_lost_nothing(result.err, [self.LAT_WARNING, self.SOL_WARNING])
                self.assertFalse(self.exists("prog.sol"))
                self.assertFalse(self.exists("prog.lat"))
                self.assertEqual(self.leftovers(), [])

    def test_the_only_solution_is_shown_where_it_cannot_be_written(self):
        result = self.run_solver("prog.opt", prepare=file_size_limit(0))
        self.assertEqual(result.status, 0)
        self.assert_lost_nothing(result.err, [self.LAT_WARNING, self.SOL_WARNING])

    def test_old_files_stay_whole(self):
        for program in (programs.ENDLESS, programs.LONG_TARGET):
            self.write("prog.opt", program)
            self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "prog.opt"))
            sol, lat = self.read_bytes("prog.sol"), self.read_bytes("prog.lat")
            # A lattice that is older than its program is generated and written anew.
            self.age("prog.lat", 1000)
            # Room for the first block alone, not for the file.
            result = self.run_solver("--sol=0", "--iters=40", "--beta=10", "prog.opt", prepare=file_size_limit(64))
            self.assertEqual(result.status, 0)
            self.assert_lost_nothing(result.err, [self.LAT_WARNING, self.SOL_WARNING])
            self.assertEqual(self.read_bytes("prog.sol"), sol)
            self.assertEqual(self.read_bytes("prog.lat"), lat)
            self.assertEqual(self.leftovers(), [])
            known = self.points_of(sol.decode())
            lost = self.points_of(result.err.split(LOST_HEAD)[1])
            if program == programs.ENDLESS:
                self.assertLessEqual(known, lost)

    def test_room_that_comes_back_is_used(self):
        session = self.start("--sol=0", "prog.opt")
        session.wait_for("Solutions found: ")
        before = self.points_of(self.read("prog.sol"))
        self.lower_limit(session, 64)
        # Of two equal solutions the one with the smaller parameters stays, so the file has to change.
        session.ask("SET beta=10\n", "> Setting: beta = 10\n")
        told = session.wait_for(self.SOL_WARNING_PATTERN, "err")
        self.assertLessEqual(before, self.points_of(self.read("prog.sol")))
        self.assertNotIn("--beta=10", self.read("prog.sol"))
        # Nothing new is needed for the next try.
        self.raise_limit(session)
        harness.wait_until(lambda: "--beta=10" in self.read("prog.sol"), "the write behind the failed one")
        # A second time is told, too.
        self.lower_limit(session, 64)
        session.ask("SET beta=1\n", "> Setting: beta = 1\n")
        told = session.wait_for(self.SOL_WARNING_PATTERN, "err", told)
        session.kill(harness.signal.SIGTERM)
        self.assertEqual(session.wait(), 0)
        self.assertLessEqual(before, self.points_of(self.read("prog.sol")))
        # The second failure may have come before the new setting, by a find.
        self.assertRegex(session.err[session.err.index(LOST_HEAD):], "--beta=10? ")

    def test_a_signal_tries_once_more(self):
        session = self.start("--sol=0", "prog.opt", prepare=file_size_limit(0))
        session.wait_for(self.SOL_WARNING_PATTERN, "err")
        session.ask("STOP\n", "> Status: stopped\n")
        self.raise_limit(session)
        session.kill(harness.signal.SIGINT)
        self.assertEqual(session.wait(), 0)
        self.assertNotIn(LOST_HEAD, session.err)
        self.assertIn("\nThe following file contains the results: \n\n\tprog.sol\n", session.out)
        self.assertTrue(self.stars())

    def test_a_failure_keeps_what_was_found(self):
        # The failure is one of the design: the centre of the box is a solution, a corner breaks a half-infinite row.
        self.write("prog.opt", programs.opt(ag=[[1, 1, 1]], bg=[5], au=[[1, -1, 0]], lu=[1], ru=["inf"], rx=[4, 4, 4]))
        self.write("prog.sol", "[ 3 1 1 ] | 0 | [ ] | 0 | 77 | --verb=0 | 2.2.2\n")
        before = self.read_bytes("prog.sol")
        result = self.run_solver("--iters=1", "prog.opt", prepare=file_size_limit(0))
        self.assertEqual(result.status, 1)
        self.assertIn(harness.failure_text("slack variable insonsistency, s should be >= 0"), result.err)
        self.assertEqual(self.read_bytes("prog.sol"), before)

    def test_a_small_disk(self):
        disk = self.path("disk")
        os.mkdir(disk)
        made = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16k", "none", disk], stderr=subprocess.DEVNULL,
                              check=False)
        if made.returncode != 0:
            self.skipTest("this user may not mount a file system")
        self.addCleanup(subprocess.run, ["umount", "-l", disk], check=False)
        self.folder = disk
        self.write("prog.opt", programs.ENDLESS)
        session = self.start("--sol=0", "prog.opt")
        session.wait_for(r"\*\*\* prog\.sol: No space left on device\n", "err")
        session.wait_for("Solutions found: ")
        self.assertTrue(self.points_of(self.read("prog.sol")))
        self.assertTrue(self.read("prog.lat").endswith("lrtu\n"))
        made = subprocess.run(["mount", "-o", "remount,size=10m", disk], check=False)
        self.assertEqual(made.returncode, 0)
        found = int(re.findall("Solutions found: ([0-9]+)\n", session.out)[-1])
        harness.wait_until(lambda: len(self.points_of(self.read("prog.sol"))) >= found, "the write behind the failed one")
        session.kill(harness.signal.SIGTERM)
        self.assertEqual(session.wait(), 0)
        self.assertNotIn(LOST_HEAD, session.err)
        self.assertEqual(self.leftovers(), [])


class FolderTest(FaultCase):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)
        self.addCleanup(os.chmod, self.folder, 0o700)

    def as_user(self, *arguments, prepare=None):
        """A run of a user for whom permissions count, which they do not for root."""

        def both():
            if prepare:
                prepare()
            as_nobody()
        try:
            return self.run_solver(*arguments, prepare=both)
        except (PermissionError, subprocess.SubprocessError):
            return self.skipTest("another user may not run this binary")

    def test_a_folder_that_takes_no_files(self):
        os.chmod(self.folder, 0o555)
        result = self.as_user("--sol=0", "--iters=10", "prog.opt")
        self.assertEqual(result.status, 0)
        self.assert_lost_nothing(result.err,
                                 ["*** prog.lat: Permission denied", "*** prog.sol: Permission denied"])
        self.assertEqual(os.listdir(self.folder), ["prog.opt"])

    def test_files_in_it_that_may_be_written(self):
        for name in ("prog.sol", "prog.lat"):
            self.write(name, "")
            self.age(name, 1000)
            os.chmod(self.path(name), 0o666)
        os.chmod(self.folder, 0o555)
        self.assert_ends_well(self.as_user("--sol=0", "--iters=10", "prog.opt"))
        self.assertTrue(self.stars())
        self.assertTrue(self.read("prog.lat").endswith("lrtu\n"))
        # Written in place, and still whole when the room does not suffice.
        sol = self.read_bytes("prog.sol")
        # Of two equal solutions the one with the smaller parameters stays, here in longer lines.
        result = self.as_user("--sol=0", "--iters=10", "--beta=10000000000", "prog.opt",
                              prepare=file_size_limit(len(sol)))
        self.assertEqual(result.status, 0)
        self.assert_lost_nothing(result.err, ["*** prog.sol: File too large"])
        self.assertEqual(self.read_bytes("prog.sol"), sol)

    def test_write_protected_files(self):
        os.chmod(self.folder, 0o777)
        old = b"[ 9 9 9 9 9 9 ] | 0 | [ ] | 0 | 77 | --verb=0 | 2.2.2\n"
        self.write("prog.sol", old)
        os.chmod(self.path("prog.sol"), 0o444)
        result = self.as_user("--sol=0", "--iters=10", "prog.opt")
        self.assertEqual(result.status, 0)
        self.assert_lost_nothing(result.err, ["*** prog.sol: Permission denied"])
        self.assertEqual(self.read_bytes("prog.sol"), old)

    def test_folders_in_the_place_of_files(self):
        os.mkdir(self.path("prog.sol"))
        os.mkdir(self.path("prog.lat"))
        result = self.run_solver("--sol=0", "--iters=10", "prog.opt")
        self.assertEqual(result.status, 0)
        self.assert_lost_nothing(result.err, ["*** prog.lat: Is a directory", "*** prog.sol: Is a directory"])

    def test_pipes_in_the_place_of_files(self):
        # Nobody reads or writes the other end; waiting for it would be for ever.
        os.mkfifo(self.path("prog.sol"))
        os.mkfifo(self.path("prog.lat"))
        result = self.run_solver("--sol=0", "--iters=10", "prog.opt")
        self.assertEqual(result.status, 0)
        self.assert_lost_nothing(result.err, ["*** prog.lat: No such device or address",
                                              "*** prog.sol: No such device or address"])

    def test_programs_that_cannot_be_read(self):
        os.chmod(self.folder, 0o755)
        os.mkfifo(self.path("pipe.opt"))
        os.mkdir(self.path("folder.opt"))
        self.write("secret.opt", programs.ENDLESS)
        os.chmod(self.path("secret.opt"), 0)
        os.symlink("nowhere", self.path("link.opt"))
        os.symlink("loop.opt", self.path("loop.opt"))
        for name in ("pipe", "folder", "secret", "link", "loop", "missing", "/dev/null", "n" * 300):
            self.assert_fails(self.as_user(name + ".opt"), "Could not read opt file: %s.opt" % name)


class MemoryTest(FaultCase):
    """Each reader with too little memory for its file: an end with a word, and the files as they were."""

    LIMIT = 60 << 20
    SOL = b"[ 1 1 ] | 0 | [ ] | 0 | 77 | --verb=0 | 2.2.2\n"

    def setUp(self):
        super().setUp()
        if harness.address_sanitizer():
            self.skipTest("the address sanitizer takes more memory than the limits leave")

    def assert_out_of_memory(self, *names):
        before = [self.read_bytes(name) for name in names]
        result = self.run_solver("--sol=0", "--iters=1", "prog.opt", prepare=memory_limit(self.LIMIT))
        self.assert_fails(result, "Out of memory")
        self.assertEqual([self.read_bytes(name) for name in names], before)
        self.assertEqual(self.leftovers(), [])

    def test_the_program(self):
        row = "[ " + "1 " * 1000 + "]\n"
        self.write("prog.opt", "[ ] [ ] [ ] [ ] [\n" + row * 1000)
        self.write("prog.sol", self.SOL)
        self.assert_out_of_memory("prog.opt", "prog.sol")

    def test_one_long_number(self):
        self.write("prog.opt", "[ " + "7" * (48 << 20))
        self.assert_out_of_memory()

    def test_the_solutions(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.lat", programs.SMALL_LATTICE % 5)
        self.write("prog.sol", self.SOL * 200000)
        self.assert_out_of_memory("prog.sol", "prog.lat")

    def test_one_long_line_of_solutions(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.lat", programs.SMALL_LATTICE % 5)
        self.write("prog.sol", self.SOL + b"[ 1 2 ] | 0 | [ ] | 0 | 78 | " + b"x" * (20 << 20) + b"\n")
        self.assert_out_of_memory("prog.sol", "prog.lat")

    def test_the_lattice(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.lat", "[\n" + ("[ " + "1 " * 1000 + "]\n") * 5000)
        self.write("prog.sol", self.SOL)
        self.assert_out_of_memory("prog.sol", "prog.lat")

    def test_any_limit_ends_with_a_word_or_goes_on(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.sol", self.SOL * 2000)
        before = self.read_bytes("prog.sol")
        ends = set()
        for limit in range(24, 88, 8):
            with self.subTest(limit=limit):
                self.write("prog.sol", before)
                result = self.run_solver("--sol=0", "--iters=1", "prog.opt", prepare=memory_limit(limit << 20))
                ends.add(result.status)
                if result.status == 0:
                    self.assertIn((1, 1), {tuple(star.x) for star in self.stars()})
                    continue
                self.assertEqual(result.status, 1)
                self.assertRegex(result.err, r"\A\n\*\*\* FAIL: (Out of memory|Thread could not be started)\n\Z")
                self.assertEqual(self.read_bytes("prog.sol"), before)
        self.assertEqual(ends, {0, 1})


class DocumentTest(harness.Case):
    """Each row of docs/faults.md names a test that is there."""

    HERE = os.path.dirname(os.path.abspath(__file__))

    def test_every_row_is_held_by_a_test(self):
        with open(os.path.join(self.HERE, "..", "..", "docs", "faults.md"), encoding="utf-8") as document:
            rows = [line for line in document if line.startswith("|") and not re.match(r"\|(---| Fault )", line)]
        self.assertGreater(len(rows), 20)
        for row in rows:
            with self.subTest(row):
                names = re.search(r"\| `([^`]+)` \|$", row).group(1).split()
                folder = self.HERE if len(names) == 2 else os.path.join(self.HERE, "..", "..")
                with open(os.path.join(folder, names[0]), encoding="utf-8") as file:
                    text = file.read()
                for name in names[1].split(".") if len(names) == 2 else ():
                    self.assertRegex(text, r"(?m)^ *(class|def) %s\(" % name)


if __name__ == "__main__":
    harness.main()
