"""The desk: latbox-all at work in the folder of the pieces, one call at a time, in the order in which they were asked for.

Nothing waits for a call: `work` looks whether it has ended, and starts the next. A call dies with the farm.
"""

from __future__ import annotations

import select
from collections import deque
from collections.abc import Callable
from dataclasses import dataclass, field

from ..errors import EngineError
from ..solving import binaries
from ..solving.process import Process


@dataclass(frozen=True)
class Answer:
    status: int
    out: list[str]
    err: str


@dataclass
class _Call:
    arguments: list[str]
    then: Callable[[Answer], None]
    tell: Callable[[str], None] | None  # gets the lines of standard error while it works
    out: list[str] = field(default_factory=list)


class Desk:
    def __init__(self, folder: str) -> None:
        # The static one begins in a fourth of the time, and the calls are many and short.
        self._program = binaries.job_program()
        self._folder = folder
        self._calls: deque[_Call] = deque()
        self._process: Process | None = None

    def ask(self, arguments: list[str], then: Callable[[Answer], None], tell: Callable[[str], None] | None = None) -> None:
        """`then` is called by work() once the call has ended; it may ask again."""
        self._calls.append(_Call(arguments, then, tell))

    @property
    def backlog(self) -> int:
        return len(self._calls)

    def work(self) -> None:
        """Takes in what has ended, and starts what is next. Throws EngineError where a call was ended by a signal."""
        while self._calls:
            call = self._calls[0]
            if self._process is None:
                self._process = Process([self._program, *call.arguments], self._folder)
            status = self._process.status()
            out, err = self._process.read()
            call.out += filter(None, out)
            for line in filter(None, err):
                if call.tell is not None:
                    call.tell(line)
            if status is None:
                return
            answer = Answer(status, call.out, self._process.words.strip())
            self._process.stop()
            self._process = None
            self._calls.popleft()
            if status < 0:
                raise EngineError("latbox-all %s was ended by signal %d" % (" ".join(call.arguments), -status))
            call.then(answer)

    def wait(self, seconds: float) -> bool:
        """Until the call at work has something to say, or this time is over; whether it has."""
        if self._process is None:
            return False
        pipes = self._process.pipes()
        if not pipes:  # it has closed them, and is about to end
            return self._process.wait(seconds)
        return bool(select.select(pipes, [], [], seconds)[0])

    def stop(self) -> None:
        """The call at work is gone when this returns, and those that wait are forgotten."""
        self._calls.clear()
        if self._process is not None:
            self._process.stop()
            self._process = None
