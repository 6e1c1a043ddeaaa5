"""Runs the real binary in a folder of its own, with time limits, and talks to it while it runs."""

import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import checker

# A run that hangs is the failure; the limit is generous because the machine may be busy.
LIMIT = 240
# For scripts that try a thousand programs, which takes a busy machine minutes.
HOPELESS = 1700


class Settings:
    binary = None
    examples = None


def main():
    """Entry of every test file: python3 test_x.py BINARY EXAMPLES_DIR [unittest options]"""
    if len(sys.argv) < 3:
        sys.exit("usage: %s BINARY EXAMPLES_DIR" % sys.argv[0])
    Settings.binary = os.path.abspath(sys.argv[1])
    Settings.examples = os.path.abspath(sys.argv[2])
    unittest.main(argv=[sys.argv[0]] + sys.argv[3:], verbosity=2)


def latbox_check():
    """The checker that is built beside the solver where GMP is installed."""
    return os.path.join(os.path.dirname(Settings.binary), "latbox-check")


def latbox_all():
    """The complete search, which is built beside the solver where GMP and libfplll are installed."""
    return os.path.join(os.path.dirname(Settings.binary), "latbox-all")


def address_sanitizer():
    """Whether the solver is built with it: its shadow memory leaves no room for limits of the address space."""
    with open(Settings.binary, "rb") as file:
        return b"__asan_init" in file.read()


def failure_text(message):
    return "\n*** FAIL: %s\n" % message


class Result:
    def __init__(self, status, out, err):
        self.status = status
        self.out = out
        self.err = err

    def body(self):
        """Standard output behind the banner line."""
        return self.out.split("\n", 1)[1] if "\n" in self.out else ""


class Case(unittest.TestCase):
    """A test with a folder of its own, in which programs are written and run."""

    maxDiff = None
    # Thousands of short runs write more than a disk takes: their folder is in memory where that is possible.
    in_memory = False

    def setUp(self):
        memory = "/dev/shm" if self.in_memory and os.access("/dev/shm", os.W_OK) else None
        self.folder = tempfile.mkdtemp(prefix="latbox", dir=memory)
        self.addCleanup(shutil.rmtree, self.folder, True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        data = content if isinstance(content, bytes) else content.encode()
        with open(self.path(name), "wb") as file:
            file.write(data)

    def write_program(self, name, text):
        """Something that can be run, in the place of a program; its path."""
        self.write(name, text)
        os.chmod(self.path(name), 0o755)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return file.read()

    def read_bytes(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def exists(self, name):
        return os.path.exists(self.path(name))

    def remove(self, name):
        os.remove(self.path(name))

    def age(self, name, seconds):
        """Sets the file's modification time to so many seconds ago."""
        then = time.time() - seconds
        os.utime(self.path(name), (then, then))

    def run_solver(self, *arguments, stdin=b"", limit=LIMIT, prepare=None):
        """`prepare` is called in the new process before the solver starts, to set limits and the like."""
        done = subprocess.run([Settings.binary, *arguments], cwd=self.folder, input=stdin, timeout=limit,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, preexec_fn=prepare)
        return Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def start(self, *arguments, prepare=None):
        session = Session([Settings.binary, *arguments], self.folder, prepare)
        self.addCleanup(session.close)
        return session

    def stop_in_time(self, seconds, *options):
        """A run of prog.opt that was stopped before its time was up; that time, `seconds` or more; how late the run is."""
        for limit in growing(seconds):
            session = self.start("--sol=0", "--rtime=%d" % limit, *options, "prog.opt")
            lateness = Lateness(session.process)
            try:
                session.wait_for("Solutions found: ")
                session.ask("STOP\n", "> Status: stopped\n")
                return session, limit, lateness
            except (AssertionError, BrokenPipeError):
                # The time was up before.
                self.assertEqual(session.wait(), 0)
        raise AssertionError("it was never stopped")

    def stars(self, name="prog"):
        """The stars of NAME.sol, each checked against NAME.opt, twice; none if there is no file.

        The text is read once: a solver that still runs may put another in its place meanwhile.
        """
        if not self.exists(name + ".sol"):
            return []
        text = self.read(name + ".sol")
        program = checker.Program(self.read(name + ".opt"))
        stars = checker.read_stars(text)
        for star, reason in checker.verdicts(program, stars):
            self.assertIsNone(reason, "wrong star %s in %s" % (star.x, name))
        self.assert_holds_by_latbox_check(name, text)
        return stars

    def assert_holds_by_latbox_check(self, name, text):
        if not os.path.exists(latbox_check()):
            print("%s: its solutions are checked by checker.py alone, latbox-check is not built" % self.id())
            return
        done = self.run_latbox_check(name + ".opt", "/dev/stdin", stdin=text.encode())
        self.assertEqual((done.status, done.err), (0, ""), done.out)

    def run_latbox_check(self, *arguments, stdin=b"", limit=LIMIT, prepare=None):
        done = subprocess.run([latbox_check(), *arguments], cwd=self.folder, input=stdin, timeout=limit,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, preexec_fn=prepare)
        return Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def assert_fails(self, result, message, before=""):
        """Exit status 1, and standard error holds exactly the failure (behind `before`)."""
        self.assertEqual(result.err, before + failure_text(message))
        self.assertEqual(result.status, 1)

    def assert_ends_well(self, result):
        self.assertEqual(result.err, "")
        self.assertEqual(result.status, 0)


class ScriptCase(Case):
    """Scripts of the folder `scripts` that try many programs, several at once, and print what they found."""

    in_memory = True
    scripts = None

    def start(self, script, *arguments):
        process = subprocess.Popen([sys.executable, os.path.join(self.scripts, script), *map(str, arguments)], cwd=self.folder,
                                   text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def output(self, process):
        return process.communicate(timeout=HOPELESS)[0]


class Session:
    """A running solver: its two outputs are collected by threads, so that tests wait for text and never for time."""

    def __init__(self, command, folder, prepare=None):
        self.process = subprocess.Popen(command, cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, preexec_fn=prepare)
        self.changed = threading.Condition()
        self.text = {"out": "", "err": ""}
        self.ended = set()
        self.threads = [self._follow("out", self.process.stdout), self._follow("err", self.process.stderr)]

    def _follow(self, name, pipe):
        thread = threading.Thread(target=self._collect, args=(name, pipe), daemon=True)
        thread.start()
        return thread

    def _collect(self, name, pipe):
        while True:
            piece = os.read(pipe.fileno(), 65536)
            with self.changed:
                if not piece:
                    self.ended.add(name)
                self.text[name] += piece.decode(errors="replace")
                self.changed.notify_all()
            if not piece:
                return

    @property
    def out(self):
        with self.changed:
            return self.text["out"]

    @property
    def err(self):
        with self.changed:
            return self.text["err"]

    def wait_for(self, pattern, stream="out", after=0, limit=LIMIT):
        """Waits until the regular expression matches behind position `after`; returns the position behind the match."""
        end = time.monotonic() + limit
        expression = re.compile(pattern)
        with self.changed:
            while True:
                match = expression.search(self.text[stream], after)
                if match:
                    return match.end()
                left = end - time.monotonic()
                if stream in self.ended or left <= 0:
                    raise AssertionError("%r never came; %s ends with:\n%s" %
                                         (pattern, stream, self.text[stream][-2000:]))
                self.changed.wait(left)

    def send(self, text):
        self.process.stdin.write(text.encode())
        self.process.stdin.flush()

    def ask(self, text, pattern, stream="out"):
        """Sends a line and waits for an answer that was not there before."""
        with self.changed:
            after = len(self.text[stream])
        self.send(text)
        return self.wait_for(pattern, stream, after)

    def running(self):
        return self.process.poll() is None

    def kill(self, number=signal.SIGKILL):
        self.process.send_signal(number)

    def wait(self, limit=LIMIT):
        """The exit status, after both outputs have been read to their end."""
        status = self.process.wait(limit)
        for thread in self.threads:
            thread.join(limit)
        return status

    def close(self):
        if self.running():
            self.process.kill()
        self.process.wait()
        for thread in self.threads:
            thread.join(LIMIT)
        for pipe in (self.process.stdin, self.process.stdout, self.process.stderr):
            try:
                pipe.close()
            except BrokenPipeError:
                pass


def growing(seconds):
    """Times for a run that must have got somewhere when its time is up: the first is enough unless the machine is busy."""
    while seconds < LIMIT:
        yield seconds
        seconds *= 2


class Lateness:
    """From now to the end of a process that is waited for: the seconds that it would have taken by itself.

    Those by the clock count while it computes or the machine has nothing to do, and not while others have its processors. No other
    child may end meanwhile.
    """

    def __init__(self, process, threads=1):
        self.threads = threads
        # What the process has used before is no lateness; only with its end it comes among what children have used.
        self.used = children_cpu() + cpu_seconds(process.pid)
        self.idle = idle_seconds()

    def seconds(self):
        """Once it has been waited for."""
        return max((children_cpu() - self.used) / self.threads, idle_seconds() - self.idle)


TICK = os.sysconf("SC_CLK_TCK")


def children_cpu():
    """Of those that have been waited for."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def cpu_seconds(pid):
    with open("/proc/%d/stat" % pid, encoding="utf-8") as file:
        return sum(map(int, file.read().rpartition(")")[2].split()[11:13])) / TICK


def idle_seconds():
    """Of the machine, since its start, for each of its processors."""
    with open("/proc/stat", encoding="ascii") as file:
        return sum(map(int, file.readline().split()[4:6])) / TICK / os.cpu_count()


def wait_until(condition, what, limit=LIMIT):
    """Polls a condition that no text announces (a file that appears)."""
    end = time.monotonic() + limit
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("never happened: " + what)
        time.sleep(0.01)
