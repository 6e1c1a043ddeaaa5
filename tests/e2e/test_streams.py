"""Standard input, output and error that are closed, full, blocked or gone: the run goes on and keeps what it finds."""

import array
import fcntl
import os
import pty
import re
import resource
import signal
import subprocess
import termios

import harness
import programs

BROKEN_PIPE = "*** Standard output: Broken pipe\n"


def close_all():
    for descriptor in (0, 1, 2):
        os.close(descriptor)


def ignore_hangup():
    signal.signal(signal.SIGHUP, signal.SIG_IGN)


class StreamCase(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)

    def launch(self, *arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
               prepare=None):
        process = subprocess.Popen([harness.Settings.binary, *arguments, "prog.opt"], cwd=self.folder, stdin=stdin,
                                   stdout=stdout, stderr=stderr, preexec_fn=prepare)
        self.addCleanup(self.end, process)
        return process

    def end(self, process):
        if process.poll() is None:
            process.kill()
        process.wait()
        for pipe in (process.stdin, process.stdout, process.stderr):
            if pipe:
                pipe.close()

    def wait_for_solutions(self):
        harness.wait_until(lambda: self.exists("prog.sol"), "a .sol file")


class ClosedTest(StreamCase):
    def test_what_is_closed_is_the_null_device(self):
        # Symptom: the program was read through the number of the closed input, and the console read it away.
        process = self.launch("--sol=0", stdin=None, stdout=None, stderr=None, prepare=close_all)
        self.wait_for_solutions()
        for descriptor in (0, 1, 2):
            self.assertEqual(os.readlink("/proc/%d/fd/%d" % (process.pid, descriptor)), os.devnull)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(harness.LIMIT), 0)
        self.assertTrue(self.stars())

    def test_each_alone(self):
        self.write("prog.opt", programs.SMALL)
        for descriptor in (0, 1, 2):
            process = self.launch("--sol=0", "--iters=3", "--verb=2", prepare=lambda: os.close(descriptor))
            out, err = process.communicate(timeout=harness.LIMIT)
            self.assertEqual(process.returncode, 0)
            self.assertEqual(err, b"")
            self.assertEqual(out.endswith(b" -- Program end\n"), descriptor != 1)
            self.assertTrue(self.stars())
            self.assertTrue(self.read("prog.lat").endswith("lrtu\n"))
            self.assertTrue(self.read("prog.lat").startswith("[\n"))
            self.remove("prog.sol")
            self.remove("prog.lat")

    def test_a_failure_without_standard_error(self):
        self.write("prog.opt", "[")
        self.assertEqual(self.launch(prepare=close_all).wait(harness.LIMIT), 1)
        self.assertEqual(os.listdir(self.folder), ["prog.opt"])


class UnwritableTest(StreamCase):
    def test_a_reader_that_leaves(self):
        # Symptom: the run ended without a word, its solution not yet written.
        for options in (("--verb=0",), ("--verb=2",)):
            process = self.launch("--sol=0", "--iters=30", *options)
            self.assertTrue(process.stdout.readline().startswith(b"<< "))
            process.stdout.close()
            process.stdout = None
            err = process.communicate(timeout=harness.LIMIT)[1]
            self.assertEqual(process.returncode, 0)
            self.assertEqual(err.decode(), BROKEN_PIPE)
            self.assertTrue(self.stars())
            self.remove("prog.sol")

    def test_a_run_without_a_reader_ends_by_a_signal(self):
        process = self.launch("--sol=0", "--verb=2")
        process.stdout.close()
        process.stdout = None
        self.assertEqual(process.stderr.readline().decode(), BROKEN_PIPE)
        self.wait_for_solutions()
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(harness.LIMIT), 0)
        self.assertEqual(process.stderr.read(), b"")
        self.assertTrue(self.stars())

    def test_a_full_device(self):
        with open("/dev/full", "wb") as full:
            process = self.launch("--sol=0", "--iters=30", "--verb=2", stdout=full)
            err = process.communicate(timeout=harness.LIMIT)[1]
            self.assertEqual(process.returncode, 0)
            self.assertEqual(err.decode(), "*** Standard output: No space left on device\n")
            self.assertTrue(self.stars())
            process = self.launch("--sol=0", "--iters=3", stdout=full, stderr=full)
            self.assertEqual(process.wait(harness.LIMIT), 0)
            self.write("prog.opt", "[")
            process = self.launch("--sol=0", "--iters=3", stdout=full, stderr=full)
            self.assertEqual(process.wait(harness.LIMIT), 1)

    def test_a_log_goes_on_when_there_is_room_again(self):
        # Symptom: after one failed write nothing was printed any more, not even the final report.
        with open(self.path("log"), "wb") as log:
            process = self.launch("--sol=0", "--verb=1", stdout=log,
                                  prepare=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                                     (0, resource.RLIM_INFINITY)))
            self.assertEqual(process.stderr.readline().decode(), "*** Standard output: File too large\n")
            resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
            harness.wait_until(lambda: "Solutions found: " in self.read("log"), "a report in the log")
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(harness.LIMIT), 0)
        self.assertTrue(self.read("log").endswith(" -- Program end\n"))
        self.assertTrue(self.stars())

    def test_a_slow_reader_gets_everything(self):
        """Also through a pipe that somebody has made non-blocking."""
        for flags in (0, os.O_NONBLOCK):
            reading, writing = os.pipe()
            fcntl.fcntl(writing, fcntl.F_SETPIPE_SZ, 4096)
            fcntl.fcntl(writing, fcntl.F_SETFL, flags)
            process = self.launch("--sol=0", "--iters=20", "--verb=2", stdout=writing)
            os.close(writing)
            harness.wait_until(lambda: pending(reading) > 2048, "a pipe that fills up")
            with os.fdopen(reading, "rb") as pipe:
                out = pipe.read().decode()
            self.assertEqual(process.communicate(timeout=harness.LIMIT)[1], b"")
            self.assertEqual(process.returncode, 0)
            self.assertEqual([int(n) for n in re.findall(r"--\n\nTotal iterations: (\d+)\n", out)],
                             list(range(1, 21)))
            self.assertTrue(out.endswith(" -- Program end\n"))


def pending(descriptor):
    count = array.array("i", [0])
    fcntl.ioctl(descriptor, termios.FIONREAD, count)
    return count[0]


class HangupTest(StreamCase):
    def test_a_hangup_ends_the_run_and_leaves_whole_files(self):
        # Whoever runs the tests under nohup hands the ignored signal down.
        session = self.start("--sol=0", "prog.opt", prepare=lambda: signal.signal(signal.SIGHUP, signal.SIG_DFL))
        session.wait_for("Solutions found: ")
        session.kill(signal.SIGHUP)
        self.assertEqual(session.wait(), -signal.SIGHUP)
        before = {tuple(star.x) for star in self.stars()}
        self.assertTrue(before)
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "prog.opt"))
        self.assertLessEqual(before, {tuple(star.x) for star in self.stars()})

    def test_a_run_that_ignores_it_outlives_its_terminal(self):
        master, terminal = pty.openpty()
        process = self.launch("--sol=0", "--verb=1", stdin=terminal, stdout=terminal, stderr=subprocess.PIPE,
                              prepare=lambda: (ignore_hangup(), os.setsid()))
        os.close(terminal)
        self.wait_for_solutions()
        os.close(master)
        self.assertEqual(process.stderr.readline(), b"*** Standard output: Input/output error\n")
        os.remove(self.path("prog.sol"))
        # What it knows is written again in the next iteration.
        self.wait_for_solutions()
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(harness.LIMIT), 0)
        self.assertTrue(self.stars())


class ConsoleInputTest(StreamCase):
    def resident(self, session):
        with open("/proc/%d/status" % session.process.pid, encoding="ascii") as status:
            return int(re.search(r"VmRSS:\s+(\d+) kB", status.read()).group(1))

    def test_garbage_fills_no_memory(self):
        session = self.start("--sol=0", "prog.opt")
        session.wait_for("Solutions found: ")
        session.ask("STOP\n", "> Status: stopped\n")
        before = self.resident(session)
        for garbage in (b"x" * (10 << 20), b"\0" * (10 << 20), b"hello\n" * 200000, b"\n" * 300000,
                        b"SET verb\n" * 50000, bytes(range(256)) * 4000):
            session.process.stdin.write(garbage + b"\n")
            session.ask("STATUS\n", "> Status: stopped\n")
        # One line of the greatest length that is kept, and what the allocator rounds it up to.
        self.assertLess(self.resident(session) - before, 8 << 10)
        self.assertEqual(session.err, "")
        session.kill(signal.SIGTERM)
        self.assertEqual(session.wait(), 0)

    def test_unknown_keys_by_the_thousand(self):
        session = self.start("--sol=0", "prog.opt")
        session.wait_for("Solutions found: ")
        session.send("SET a=b\n" * 3000)
        session.ask("STATUS\n", "> Status: running\n")
        harness.wait_until(lambda: len(session.err) >= 3000 * len("\n*** No such setting: a\n"), "all answers")
        self.assertEqual(session.err, "\n*** No such setting: a\n" * 3000)

    def test_a_folder_as_input(self):
        folder = os.open(self.folder, os.O_RDONLY)
        process = self.launch("--sol=0", "--iters=3", stdin=folder)
        os.close(folder)
        out, err = process.communicate(timeout=harness.LIMIT)
        self.assertEqual((process.returncode, err), (0, b""))
        self.assertTrue(out.endswith(b" -- Program end\n"))


class SilenceTest(StreamCase):
    """At verb 0 there is the banner, each summary that changed, and the final report; nothing else."""

    BANNER = r"<< latbox v2\.2\.2 \+\+\+ PID: \d+ >>\n"
    SUMMARY = (r"(\nT\(bestTarget\) = \S+, S\(bestTarget\) = \S+( -- \{ \d+ sec\(s\) \})?\n)?"
               r"(\nSolutions found: \d+\n)?(\n\{ The first solution/s was/were found after: (\d+ sec\(s\) )+\}\n)?")
    END = (r"\n?\nGot signal: Terminated\n\n\*{26} Terminated \*{26}\n" + SUMMARY +
           r"(\nThe following file contains the results: \n\n\tprog\.sol\n)?"
           r"\nTotal iterations: \d+\nTotal running time: \d+ sec\(s\) -- Program end\n")

    def test_every_option(self):
        everything = ("--pair=1", "--sieve=1", "--sample=1", "--scale=1", "--translate=1", "--reinsert=1", "--variate=1",
                      "--consistency=1", "--deep=1")
        for program in (programs.ENDLESS, programs.LONG_TARGET, programs.NOTHING, programs.market_split(2, 10, 1)):
            self.write("prog.opt", program)
            for options in ((), everything, ("--eenum=0",), ("--bench=1", *everything), ("--snorm=1/3", *everything)):
                with self.subTest(options=options):
                    result = self.run_solver("--sol=0", "--iters=6", *options, "prog.opt")
                    self.assert_ends_well(result)
                    self.assertRegex(result.out, r"\A%s(%s)*%s\Z" % (self.BANNER, self.SUMMARY, self.END))
            for name in ("prog.sol", "prog.lat"):
                if self.exists(name):
                    self.remove(name)


if __name__ == "__main__":
    harness.main()
