"""An engine's process: it is read without waiting, and it dies with this one.

Three things make sure that no engine outlives who started it: PR_SET_PDEATHSIG kills it when the thread that started it
ends, by whatever, also by SIGKILL; stop() is called on each way out; and an engine that starts while its parent dies sees
that it has another parent. It has a process group of its own, so that Ctrl-C of a terminal comes to the front alone, which
then decides.
"""

from __future__ import annotations

import ctypes
import os
import resource
import signal
import subprocess
import time
from collections.abc import Callable
from typing import IO

from ..errors import EngineError

PR_SET_PDEATHSIG = 1
# Loaded before any fork: the new process must not import or allocate more than it needs.
_LIBC = ctypes.CDLL(None, use_errno=True)

# What is kept of an engine's last words, for the message if it breaks.
LAST_WORDS = 4000


class Process:
    """A running engine. Its standard output and standard error come as lines, as far as they are whole."""

    def __init__(self, arguments: list[str], folder: str, memory: int | None = None, log: Callable[[str], None] | None = None) -> None:
        """`memory`: bytes of address space that it may have; `log(line)` gets whatever it prints."""
        parent = os.getpid()

        def prepare() -> None:
            _LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)
            if os.getppid() != parent:
                os._exit(1)
            if memory is not None:
                resource.setrlimit(resource.RLIMIT_AS, (memory, memory))

        self.name = os.path.basename(arguments[0])
        self.words = ""
        self._log = log
        try:
            # In it SIGINT is as it was before Python took it, and nothing that this process ignores is ignored.
            self._popen = subprocess.Popen(arguments, cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                           stderr=subprocess.PIPE, preexec_fn=prepare, process_group=0)
        except (OSError, subprocess.SubprocessError) as error:
            raise EngineError("%s cannot be started: %s" % (arguments[0], error)) from None
        assert self._popen.stdin and self._popen.stdout and self._popen.stderr  # they are pipes
        self._in, self._out, self._err = self._popen.stdin, self._popen.stdout, self._popen.stderr
        for pipe in (self._in, self._out, self._err):
            os.set_blocking(pipe.fileno(), False)
        self._rests = {self._out: b"", self._err: b""}

    # ------------------------------------------------------------- reading

    def pipes(self) -> list[IO[bytes]]:
        """What to wait for; those that have ended are left out."""
        return list(self._rests)

    def read(self) -> tuple[list[str], list[str]]:
        """The lines that have come on standard output and standard error; all of them once status() is known."""
        return self._lines(self._out), self._lines(self._err)

    def _lines(self, pipe: IO[bytes]) -> list[str]:
        if pipe not in self._rests:
            return []
        data = self._rests[pipe]
        ended = False
        while True:
            try:
                piece = os.read(pipe.fileno(), 1 << 16)
            except BlockingIOError:
                break
            if not piece:
                ended = True
                break
            data += piece
        whole, cut, rest = data.rpartition(b"\n")
        if ended:
            del self._rests[pipe]
            whole, rest = data, b""
        else:
            self._rests[pipe] = rest
        text = whole.decode("utf-8", "replace")
        lines = text.split("\n") if cut or (ended and text) else []
        for line in lines:
            if self._log is not None and line:
                self._log("%s[%d]: %s" % (self.name, self._popen.pid, line))
        if pipe is self._err and text:
            self.words = (self.words + text + "\n")[-LAST_WORDS:]
        return lines

    def status(self) -> int | None:
        """Its exit status once it has ended; negative: by that signal."""
        return self._popen.poll()

    @property
    def pid(self) -> int:
        return self._popen.pid

    # ------------------------------------------------------------- telling it

    def write(self, text: str) -> None:
        """To its console. What it does not take at once is lost: nothing here depends on it."""
        try:
            os.write(self._in.fileno(), text.encode())
        except OSError:
            pass

    def pause(self) -> None:
        """All its threads stand still until go_on(). Stopping it works as ever; being asked to end it hears behind that."""
        if self._popen.poll() is None:
            self._popen.send_signal(signal.SIGSTOP)

    def go_on(self) -> None:
        if self._popen.poll() is None:
            self._popen.send_signal(signal.SIGCONT)

    def ask_to_end(self) -> None:
        if self._popen.poll() is None:
            self._popen.terminate()

    def wait(self, seconds: float) -> bool:
        """Whether it has ended within that time. Its pipes are drained meanwhile, lest it waits for us."""
        end = time.monotonic() + seconds
        while self._popen.poll() is None:
            if time.monotonic() >= end:
                return False
            time.sleep(0.002)
        return True

    def stop(self) -> None:
        """It is gone when this returns."""
        if self._popen.poll() is None:
            self._popen.kill()
        self._popen.wait()
        for pipe in (self._in, self._out, self._err):
            try:
                pipe.close()
            except OSError:
                pass
        self._rests.clear()
