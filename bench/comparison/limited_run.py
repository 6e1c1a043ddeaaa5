"""A process under a limit of CPU time, its lines with the CPU time at which each came, and its end.

CPU time and not the clock: the machine may be busy with other work. The clock only ends a run that gets no processor.
"""

import ctypes
import os
import re
import signal
import subprocess
import threading
import time

CPU_TICK = os.sysconf("SC_CLK_TCK")
# A run that gets no processor must end too, after so many times its limit by the clock.
PATIENCE = 10
# Asked to end, a process may take so many seconds to write its files.
FAREWELL = 5
# Set when the comparison itself is to end: the runs that go on then tell nothing.
ending = threading.Event()


LIBC = ctypes.CDLL(None)
PR_SET_PDEATHSIG = 1


def die_with(parent):
    """Called in a new process: it is killed when its parent is, which has then no way to end it."""
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)
    if os.getppid() != parent:
        os.kill(os.getpid(), signal.SIGKILL)


class Cut(Exception):
    """The run was ended from outside."""


class LimitedRun:
    """After construction the process is gone: `lines` [(CPU seconds, text)], `cpu` in seconds with the processes that it
    has waited for, `seconds` by the clock, `resident` in KB at most (not below what this process has), `status`, `timed_out`.

    A process that is killed takes its runs with it; it must be the first thread that makes them.

    `enough`, if given, is asked for each line; where it says yes the run is ended, and that is no time-out.
    """

    def __init__(self, command, limit, enough=None, environment=None):
        parent = os.getpid()
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, text=True, errors="replace", env=environment,
                                        preexec_fn=lambda: die_with(parent))
        self.lines = []
        self.cpu = self.seconds = 0.0
        self.resident = 0
        self.enough = enough or (lambda line: False)
        self.has_enough = False
        self.reader = threading.Thread(target=self.follow)
        self.reader.start()
        try:
            self.timed_out = not self.wait(limit) and not self.has_enough
        except BaseException:
            if self.process.returncode is None:
                self.process.kill()
                self.process.wait()
            raise
        finally:
            self.reader.join()
            self.process.stdout.close()

    def follow(self):
        for line in self.process.stdout:
            self.lines.append((self.cpu_now(), line.rstrip("\n")))
            self.has_enough = self.has_enough or self.enough(line)

    def cpu_now(self):
        try:
            with open("/proc/%d/stat" % self.process.pid, encoding="utf-8") as file:
                fields = file.read().rsplit(")", 1)[1].split()
            return (int(fields[11]) + int(fields[12])) / CPU_TICK
        except (OSError, IndexError):
            return 0.0

    def wait(self, limit):
        """False if the limit ended the run. The end is asked for first, so that files are written."""
        start = time.monotonic()
        stop = None
        while True:
            if os.waitid(os.P_PID, self.process.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT):
                self.seconds = time.monotonic() - start
                # It stays in /proc until it is waited for: its last lines have their times first, however late they are read.
                self.reader.join()
                # Own system and user time in microseconds; /proc counts in ticks of ten milliseconds.
                _, status, usage = os.wait4(self.process.pid, 0)
                self.process.returncode = os.waitstatus_to_exitcode(status)
                if stop is None and -self.process.returncode in (signal.SIGTERM, signal.SIGINT, signal.SIGKILL):
                    raise Cut("ended by signal %d" % -self.process.returncode)
                # A signal from a terminal reaches both, and the run may end well by it.
                if ending.is_set():
                    raise Cut("the comparison ends")
                self.cpu = usage.ru_utime + usage.ru_stime
                self.resident = usage.ru_maxrss
                return stop is None
            now = time.monotonic()
            if ending.is_set():
                raise Cut("the comparison ends")
            over = self.has_enough or self.cpu_now() > limit or now - start > PATIENCE * limit
            if stop is None and over:
                self.process.send_signal(signal.SIGTERM)
                stop = now
            elif stop is not None and now - stop > FAREWELL:
                self.process.kill()
            time.sleep(0.01 if now - start < 2 else 0.02)

    @property
    def status(self):
        return self.process.returncode

    def improvements(self, pattern):
        """[(CPU seconds, value)] for each change of the value that the pattern finds in a line."""
        steps = []
        for cpu, line in self.lines:
            match = re.search(pattern, line)
            if match and (not steps or steps[-1][1] != match.group(1)):
                steps.append((cpu, match.group(1)))
        return steps
