"""What the tests of latbox-farm share: the farm as it is started, real workers on the loopback, and their ends."""

import errno
import functools
import itertools
import os
import shutil
import signal
import socket
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor, as_completed
from dataclasses import dataclass

import harness
from test_complete import Case

PYTHON = "/usr/bin/python3"
WORKER = "work_queue_worker"
# Seconds after which a worker that does not answer is given up.
SILENCE = 2
# Farms at once: they mostly wait for time-outs, and two cores have them all done before these are over.
SCENES = 5


@functools.lru_cache
def has_engine():
    """The module for the Python of the system, and the worker."""
    if shutil.which(WORKER) is None or not os.access(PYTHON, os.X_OK):
        return False
    return subprocess.run([PYTHON, "-c", "import work_queue"], capture_output=True, check=False).returncode == 0


def command():
    return os.path.join(os.path.dirname(harness.Settings.examples), "python", "bin", "latbox-farm")


def children(process):
    """The processes that one has started and that are there yet: [(id, arguments)]."""
    found = []
    try:
        with open("/proc/%d/task/%d/children" % (process, process), encoding="ascii") as file:
            numbers = file.read().split()
        for number in numbers:
            with open("/proc/%s/cmdline" % number, "rb") as file:
                found.append((int(number), file.read().decode().split("\0")))
    except (FileNotFoundError, ProcessLookupError):
        pass
    return found


def descendants(process):
    found = []
    for child in children(process):
        found += [child, *descendants(child[0])]
    return found


class Record(unittest.TestResult):
    """What one test tells, to be told again to somebody else."""

    TOLD = ("startTest", "addSuccess", "addFailure", "addError", "addSkip", "addSubTest", "stopTest")

    def __init__(self):
        super().__init__()
        self.calls = []
        for name in self.TOLD:
            setattr(self, name, functools.partial(self._keep, name))

    def _keep(self, name, *arguments):
        self.calls.append((name, arguments))

    def tell(self, result):
        for name, arguments in self.calls:
            getattr(result, name)(*arguments)


class SideBySide(unittest.TestSuite):
    """Tests, each in a thread of its own, some at a time. Each has a folder of its own, and its farm a port."""

    def __init__(self, tests):
        super().__init__(itertools.chain.from_iterable(suite if isinstance(suite, unittest.TestSuite) else [suite] for suite in tests))

    def run(self, result, debug=False):
        del debug
        with ThreadPoolExecutor(SCENES) as pool:
            for ended in as_completed([pool.submit(self._record, test) for test in self]):
                ended.result().tell(result)
        return result

    @staticmethod
    def _record(test):
        record = Record()
        test.run(record)
        return record


def load_tests(_loader, tests, _pattern):
    """For a module of farms: unittest asks it for this."""
    return SideBySide(tests)


class Ear:
    """Hears what is sent to its port, as catalogs are told: by a datagram, or over a connection."""

    def __init__(self):
        while not self._has_port():
            self.close()
        self.port = self.datagrams.getsockname()[1]
        self.connections.listen()
        for listening in (self.datagrams, self.connections):
            listening.setblocking(False)

    def _has_port(self):
        """Whether the one that is free for datagrams is free for connections too."""
        self.datagrams = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.connections = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        self.datagrams.bind(("127.0.0.1", 0))
        try:
            self.connections.bind(self.datagrams.getsockname())
        except OSError as error:
            if error.errno != errno.EADDRINUSE:
                raise
            return False
        return True

    def heard(self):
        """All that has come by now."""
        found = b""
        try:
            while True:
                found += self.datagrams.recv(1 << 16)
        except BlockingIOError:
            pass
        try:
            while True:
                caller, _ = self.connections.accept()
                with caller:
                    caller.settimeout(5)
                    found += caller.recv(1 << 16) or b"a call"
        except BlockingIOError:
            return found

    def close(self):
        self.datagrams.close()
        self.connections.close()


# Each process of tests begins at another place.
ports = itertools.count(os.getpid() * 101)


def free_port():
    """One that nobody listens at, neither among those that a farm looks through nor among those that the system deals out."""
    while True:
        port = 10000 + next(ports) % 20000
        with socket.socket() as trial:
            try:
                trial.bind(("", port))
            except OSError:
                continue
        return port


@dataclass
class Alone:
    """What latbox-all says by itself."""

    status: int
    verdict: str
    points: list
    proof: bytes


class Worker:
    """One core, in a folder of its own."""

    def __init__(self, folder, password, port):
        os.makedirs(folder)
        self.folder = folder
        self.process = subprocess.Popen([WORKER, "--password=" + password, "--cores=1", "--memory=500", "--disk=500", "--workdir=" + folder,
                                         "--max-backoff=1", "--timeout=60", "127.0.0.1", str(port)], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        self.left = []

    def jobs(self):
        """Those of latbox-all that it has at work."""
        return [number for number, words in descendants(self.process.pid) if any(word.startswith("--job=") for word in words)]

    def stop_in_a_piece(self):
        """It stands still, and so does a piece of it."""

        def caught():
            if not self.jobs():
                return False
            self.process.send_signal(signal.SIGSTOP)
            self.left = self.jobs()
            if not self.left:
                self.process.send_signal(signal.SIGCONT)
            return self.left

        harness.wait_until(caught, "a piece at work")

    def go_on(self):
        self.process.send_signal(signal.SIGCONT)

    def kill(self):
        """By SIGKILL. What it has started would go on."""
        self.left += [number for number, _ in descendants(self.process.pid)]
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        for number in self.left:
            try:
                os.kill(number, signal.SIGKILL)
            except ProcessLookupError:
                pass
        self.left = []


def points_of(text):
    """The lines of a file of points, sorted, without times and parameters."""
    return sorted(line.rsplit("|", 2)[0] for line in text.splitlines())


class FarmCase(Case):
    def setUp(self):
        super().setUp()
        if not has_engine():
            self.skipTest("the engine is not installed (Debian: coop-computing-tools, python3-workqueue)")
        self.workers = []

    def begin(self, *options, program="p.opt", jobs="jobs", has_port=False, **environment):
        """The farm while it works, with a port that no other one has between two of its lives; `has_port`: it looks for one itself, or
        has one."""
        if not has_port and not self.exists(jobs + "/manager/port"):
            options = ("--port=%d" % free_port(), *options)
        variables = {"LATBOX_BIN_DIR": os.path.dirname(self.binary), "PYTHONDONTWRITEBYTECODE": "1", **environment}
        session = harness.Session(["/usr/bin/env", *("%s=%s" % item for item in variables.items()), command(), "--jobs=" + jobs,
                                   "--silence=%d" % SILENCE, *options, program], self.folder)
        self.addCleanup(session.close)
        return session

    def read_when(self, name):
        """A file that is about to be there, as a whole."""
        harness.wait_until(lambda: self.exists(name), name)
        return self.read(name)

    def hire(self, jobs="jobs", password=None):
        """A worker for the farm of that folder, which may be about to open."""
        port = self.read_when(jobs + "/manager/port").strip()
        folder = self.path("worker%d" % len(self.workers))
        worker = Worker(folder, password or self.path(jobs + "/manager/password"), port)
        self.workers.append(worker)
        self.addCleanup(worker.kill)
        return worker

    def alone(self, text, *options):
        """The same by latbox-all, at another place."""
        self.write("p.opt", text)
        os.mkdir(self.path("alone"))
        self.write("alone/p.opt", text)
        done = subprocess.run([self.binary, "--quiet=1", "--resume=0", *options, "p.opt"], cwd=self.path("alone"), timeout=harness.LIMIT,
                              capture_output=True, text=True, check=False)
        self.assertIn(done.returncode, (10, 20), done.stderr)
        return Alone(done.returncode, done.stdout, points_of(self.read("alone/p.all")) if self.exists("alone/p.all") else [],
                     self.read_bytes("alone/p.proof") if self.exists("alone/p.proof") else b"")

    def assert_same(self, alone, result):
        """Status, output, points and proof of a farm."""
        self.assertEqual((result.status, result.out), (alone.status, alone.verdict), result.err)
        self.assertEqual(points_of(self.read("p.all")), alone.points)
        self.assertEqual(self.read_bytes("p.proof") if self.exists("p.proof") else b"", alone.proof)

    def forget(self):
        """All that a run has left."""
        for name in ("alone", "jobs"):
            shutil.rmtree(self.path(name))
        os.remove(self.path("p.all"))

    def results(self, jobs="jobs"):
        return [name for name in os.listdir(self.path(jobs)) if name.endswith(".result")] if self.exists(jobs) else []

    def log(self, jobs="jobs"):
        return self.read(jobs + "/manager/log") if self.exists(jobs + "/manager/log") else ""
