"""The operator's console, through a pipe and through a terminal."""

import os
import pty
import re
import signal
import subprocess
import time

import harness
import programs

MARK = "> Status: "


class PipeTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)

    def running_session(self, *options):
        """A session that has printed a first result, so that it is in the middle of its iterations."""
        session = self.start("--sol=0", *options, "prog.opt")
        session.wait_for("Solutions found: ")
        return session

    def test_status_stop_and_run(self):
        session = self.running_session()
        session.ask("STATUS\n", MARK + "running\n")
        session.ask("STOP\n", MARK + "stopped\n")
        session.ask("STATUS\n", MARK + "stopped\n")
        session.ask("RUN\n", MARK + "running\n")
        session.ask("STATUS\n", MARK + "running\n")
        self.assertTrue(session.running())

    def test_lines_are_trimmed(self):
        session = self.running_session()
        session.ask("  STOP \t \r\n", MARK + "stopped\n")
        session.ask("\t\v\fRUN\n", MARK + "running\n")

    def test_other_lines_get_no_answer(self):
        session = self.running_session()
        before = len(session.out)
        ignored = ("status", "Stop", "STATUS now", "STATUSSTATUS", "", "   ", "help", "SET", "SET ", "SET verb",
                   "SETverb=2", "set verb=2", "QUIT", "a" * 100000, "SET " + "b" * 100000, "\x00\xff")
        session.process.stdin.write("".join(line + "\n" for line in ignored).encode("latin-1"))
        session.ask("STATUS\n", MARK + "running\n")
        # The run may have more solutions to report meanwhile.
        self.assertEqual(re.findall("^> .*", session.out[before:], re.M), [MARK + "running"])
        self.assertEqual(session.err, "")

    def test_set(self):
        session = self.running_session()
        session.ask("SET beta=30\n", "> Setting: beta = 30\n")
        session.ask("SET \t snorm=1/2\n", "> Setting: snorm = 1/2\n")
        session.ask("SET pairLimit=\n", "> Setting: pairLimit = \n")
        out = session.ask("HELP\n", r"  --help \| Display this help information\. \[ Default: 0 \]\n")
        session.wait_for(r"  --tnorm \| [^\n]+ \[ Default: -inf \]\n\n", after=out)

    def test_set_takes_every_parameter(self):
        session = self.running_session()
        values = {"help": "0", "verb": "0", "consistency": "0", "eenum": "0", "beta": "12", "eprune": "2", "btime": "7",
                  "deep": "0", "collectLimit": "50", "pair": "0", "pairLimit": "3", "sieve": "0", "sample": "0",
                  "sampleLimit": "9", "scale": "0", "translate": "0", "reinsert": "0", "variate": "0", "rtime": "100000",
                  "iters": "-1", "sol": "0", "bench": "0.5", "snorm": "-4/3", "tnorm": "-inf"}
        # Of two equal solutions the one with the smaller parameters stays; the last setting makes them the smallest.
        for key, value in sorted(values.items(), key=lambda item: item[0] == "eenum"):
            if key == "eenum":
                session.ask("SET bench=0\n", "> Setting: bench = 0\n")
            session.ask("SET %s=%s\n" % (key, value), "> Setting: %s = %s\n" % (key, re.escape(value)))
        # What was set is what the next lines of the file are written with.
        expected = " ".join("--%s=%s" % option for option in {**values, "bench": "0"}.items())
        harness.wait_until(lambda: expected in self.read("prog.sol"), "the parameters in the .sol file")
        self.assertEqual(session.err, "")

    def test_set_reaches_a_stopped_run(self):
        session = self.running_session()
        session.ask("STOP\n", MARK + "stopped\n")
        session.ask("SET verb=1\n", "> Setting: verb = 1\n")
        session.ask("RUN\n", "- Some statistics -")

    def test_set_while_stars_are_read(self):
        # Symptom: the setting was answered, and gone when the stars had been read.
        points = [(a, b, c) for a in range(31) for b in range(31) for c in range(31) if 20 <= a + b + c <= 60]
        self.write("prog.opt", programs.opt(au=[[1, 1, 1]], lu=[20], ru=[60], rx=[30] * 3))
        # The first is no solution, which is told while thousands are still to come.
        self.write("prog.sol", "".join("[ %d %d %d ] | 0 | [ ] | 0 | 1 | p | 2.2.2\n" % point
                                       for point in [(0, 0, 0)] + points[:12000]))
        session = self.start("--sol=0", "--verb=2", "prog.opt")
        session.wait_for("Star-Vector is neither a solution nor a feasible vector\n")
        at = session.ask("SET verb=1\n", "> Setting: verb = 1\n")
        session.wait_for("- Some statistics -", after=at)
        at = session.wait_for("\nNo primary improvement since|\nTotal iterations: 2\n", after=at)
        # With verb 2 there would be progress lines, and the vectors would stand in the block.
        self.assertNotIn("B[1]: ", session.out)
        self.assertTrue(session.running())

    def test_a_line_without_an_end_and_garbage(self):
        session = self.running_session()
        before = len(session.out)
        garbage = bytes(range(1, 256)).replace(b"\n", b"") * 100
        for line in (b"x" * 10**7, b"SET beta=" + b"3" * 10**7, b"STOP" + b" " * 10**7, b"\0" * 10**5, b"STOP\0", garbage):
            session.process.stdin.write(line + b"\n")
        session.ask("STATUS\n", MARK + "running\n")
        # The run may have more solutions to report meanwhile.
        self.assertEqual(re.findall("^> .*", session.out[before:], re.M), [MARK + "running"])
        self.assertEqual(session.err, "")

    def test_the_last_line_needs_no_end(self):
        session = self.running_session()
        session.process.stdin.write(b"STATUS")
        session.process.stdin.close()
        session.process.stdin = open(os.devnull, "wb")
        session.wait_for(MARK + "running\n")
        self.assertTrue(session.running())

    def test_a_value_that_is_no_number_does_not_end_the_run(self):
        session = self.running_session()
        for value in ("x", "", "1/0", "5.", "1:7/3", "ix", "1e999999999", "9" * 100000, "inf", "-inf"):
            for key in ("snorm", "tnorm", "beta", "bench", "pair"):
                session.ask("SET %s=%s\n" % (key, value), "> Setting: %s = %s\n" % (key, re.escape(value)))
        session.ask("STATUS\n", MARK + "running\n")
        self.assertEqual(session.err, "")

    def test_a_number_that_is_too_long_does_not_end_the_run(self):
        # Symptom: in extended precision the run ended with "QQ: number is too long".
        session = self.running_session("--snorm=1/3")
        session.ask("SET tnorm=%s\n" % ("9" * 100001), "> Setting: tnorm = 9{100001}\n")
        session.ask("STATUS\n", MARK + "running\n")
        self.assertEqual(session.err, "")

    def test_unknown_keys(self):
        session = self.running_session()
        session.ask("SET a=b=c\n", r"\n\*\*\* No such setting: a=b\n", "err")
        session.ask("SET nosuch=1\n", r"\n\*\*\* No such setting: nosuch\n", "err")
        session.ask("SET gui=1\n", r"\n\*\*\* No such setting: gui\n", "err")
        session.ask("SET =1\n", r"\n\*\*\* No such setting: \n", "err")
        session.ask("SET  beta =1\n", r"\n\*\*\* No such setting: beta \n", "err")
        session.ask("STATUS\n", MARK + "running\n")

    def test_the_report_grows_with_verb(self):
        session = self.running_session()
        session.ask("SET verb=1\n", "> Setting: verb = 1\n")
        session.wait_for("- Some statistics -")
        session.ask("SET verb=0\n", "> Setting: verb = 0\n")

    def test_a_set_limit_ends_the_run(self):
        session = self.running_session("--verb=1")
        session.ask("STOP\n", MARK + "stopped\n")
        self.wait_for_silence(session)
        last = int(re.findall(r"Total iterations: (\d+)\n", session.out)[-1])
        # The iteration that found the stop counts, and no step of it ran; so the next to report is the one behind it.
        session.ask("SET iters=%d\n" % (last + 2), "> Setting: iters = ")
        session.ask("RUN\n", MARK + "running\n")
        self.assertEqual(session.wait(), 0)
        reported = [int(number) for number in re.findall(r"Total iterations: (\d+)\n", session.out)]
        self.assertEqual(reported[reported.index(last):], [last, last + 2, last + 2])

    def test_stop_stops_and_run_goes_on(self):
        session = self.running_session("--verb=1")
        session.ask("STOP\n", MARK + "stopped\n")
        # The step in progress runs to its end; then nothing more is printed until RUN.
        quiet = self.wait_for_silence(session)
        before = self.stars()
        session.ask("RUN\n", "- Some statistics -")
        self.assertGreater(len(session.out), quiet)
        session.kill(signal.SIGTERM)
        self.assertEqual(session.wait(), 0)
        points = {tuple(star.x) for star in self.stars()}
        self.assertLessEqual({tuple(star.x) for star in before}, points)

    def wait_for_silence(self, session):
        """The length of the output once it has not grown for a second in which no thread was about to work; fails if it never stops."""
        end = time.monotonic() + harness.LIMIT
        length, looks = -1, 0
        while looks < 10:
            self.assertLess(time.monotonic(), end, "the run does not stop")
            looks = looks + 1 if length == len(session.out) and sleeps(session.process.pid) else 0
            length = len(session.out)
            time.sleep(0.1)
        return length

    def test_a_signal_ends_a_stopped_run(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            session = self.running_session()
            session.ask("STOP\n", MARK + "stopped\n")
            session.kill(number)
            self.assertEqual(session.wait(), 0)
            self.assertTrue(session.out.endswith(" -- Program end\n"))

    def test_the_time_limit_ends_a_stopped_run(self):
        session, _, _ = self.stop_in_time(3)
        self.assertEqual(session.wait(), 0)
        self.assertIn("\nGot signal: Terminated\n", session.out)

    def test_commands_that_are_there_from_the_start(self):
        self.write("prog.opt", programs.SMALL)
        result = self.run_solver("--sol=0", "--iters=3", "prog.opt", stdin=b"HELP\nSTATUS\nSET beta=7")
        self.assert_ends_well(result)
        self.assertEqual(result.out.count("\nTotal iterations: 3\n"), 1)

    def test_input_closed_at_once(self):
        self.write("prog.opt", programs.SMALL)
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=3", "prog.opt"))
        with open(os.devnull, "rb") as nothing:
            done = subprocess.run([harness.Settings.binary, "prog.opt"], cwd=self.folder, stdin=nothing,
                                  stdout=subprocess.PIPE, timeout=harness.LIMIT, check=False)
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.endswith(b" -- Program end\n"))

    def test_input_closed_while_running(self):
        session = self.running_session()
        session.process.stdin.close()
        session.process.stdin = open(os.devnull, "wb")
        session.kill(signal.SIGINT)
        self.assertEqual(session.wait(), 0)
        self.assertIn("\nGot signal: Interrupt\n", session.out)

    def test_a_second_signal_does_nothing_more(self):
        for _ in range(20):
            session = self.running_session()
            for number in (signal.SIGINT, signal.SIGINT, signal.SIGTERM, signal.SIGINT):
                session.kill(number)
            self.assertEqual(session.wait(), 0)
            self.assertEqual(session.out.count("Got signal: "), 1)
            self.assertEqual(session.out.count(" -- Program end\n"), 1)
            self.assertEqual(session.err, "")
            self.stars()


def sleeps(pid):
    """Whether all its threads do: one that waits for a processor does not."""
    for thread in os.listdir("/proc/%d/task" % pid):
        with open("/proc/%d/task/%s/stat" % (pid, thread), encoding="utf-8") as file:
            if file.read().rpartition(")")[2].split()[0] != "S":
                return False
    return True


class Terminal:
    """The solver as foreground job of a terminal of its own."""

    def __init__(self, folder, *arguments):
        self.text = ""
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            os.execv(harness.Settings.binary, [harness.Settings.binary, *arguments])

    def read_more(self):
        try:
            piece = os.read(self.master, 65536)
        except OSError:
            piece = b""
        self.text += piece.decode(errors="replace").replace("\r\n", "\n")
        return bool(piece)

    def wait_for(self, text):
        while text not in self.text:
            if not self.read_more():
                raise AssertionError("%r never came:\n%s" % (text, self.text))

    def send(self, data):
        os.write(self.master, data)

    def wait(self):
        while self.read_more():
            pass
        status = os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])
        self.pid = 0
        return status

    def close(self):
        if self.pid:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
        os.close(self.master)


class TerminalTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)
        # A terminal has no time limit of its own; the alarm ends a test that hangs.
        signal.alarm(harness.LIMIT)
        self.addCleanup(signal.alarm, 0)
        self.terminal = Terminal(self.folder, "--sol=0", "prog.opt")
        self.addCleanup(self.terminal.close)

    def test_commands_and_ctrl_c(self):
        self.terminal.wait_for("Solutions found: ")
        self.terminal.send(b"STATUS\n")
        self.terminal.wait_for(MARK + "running\n")
        self.terminal.send(b"STOP\n")
        self.terminal.wait_for(MARK + "stopped\n")
        self.terminal.send(b"\x03\x03\x03")
        self.assertEqual(self.terminal.wait(), 0)
        self.assertEqual(self.terminal.text.count("Got signal: Interrupt\n"), 1)
        self.assertTrue(self.terminal.text.endswith(" -- Program end\n"))

    def ask(self, line, answer):
        """The terminal echoes the line; the answer follows it."""
        self.terminal.text = ""
        self.terminal.send(line.encode() + b"\n")
        self.terminal.wait_for(answer)

    def test_every_command(self):
        self.terminal.wait_for("Solutions found: ")
        self.ask("STATUS", "\n" + MARK + "running\n")
        self.ask("  STOP  ", "\n" + MARK + "stopped\n")
        self.ask("STATUS", "\n" + MARK + "stopped\n")
        self.ask("RUN", "\n" + MARK + "running\n")
        self.ask("SET snorm=1/3", "\n> Setting: snorm = 1/3\n")
        self.ask("SET a=b=c", "\n\n*** No such setting: a=b\n")
        self.ask("HELP", " [ Default: -inf ]\n\n")
        self.ask("SET verb=1", "- Some statistics -")
        self.terminal.send(b"\x03")
        self.assertEqual(self.terminal.wait(), 0)

    def test_other_lines_get_no_answer(self):
        self.terminal.wait_for("Solutions found: ")
        lines = ("status", "SET", "SETverb=2", "SET verb", "stop now", "")
        self.ask("\n".join(lines + ("STATUS",)), MARK + "running\n")
        self.assertEqual(self.terminal.text.count("> "), 1)
        self.assertNotIn("***", self.terminal.text)

    def test_end_of_input_leaves_the_run_alone(self):
        self.terminal.wait_for("Solutions found: ")
        self.terminal.send(b"\x04")
        self.terminal.send(b"\x03")
        self.assertEqual(self.terminal.wait(), 0)
        self.assertIn("Got signal: Interrupt\n", self.terminal.text)


if __name__ == "__main__":
    harness.main()
