"""Work Queue, the engine of the farm, behind one small class. No other file knows it.

Workers dial in; each gets the files of a task, keeps those that do not change, runs one command and sends one file back.
The engine sends the task of a worker that is lost to another one by itself.

Measured on the loopback, two cores, two workers: 1,000 empty tasks take 2.1 s with eight outstanding, 8.2 s with 32 and 10.8 s
with all, 6.2 s of them in the manager: tasks that wait for a free core cost the engine a look each time. So `room` keeps those
that can run at once, and a few more.
"""

from __future__ import annotations

import os
import time
from dataclasses import dataclass
from typing import Any

from ..errors import EngineError, UsageError

MISSING = ("the module work_queue is missing: Debian has it in the package python3-workqueue, for /usr/bin/python3, and the workers "
           "in coop-computing-tools")
# Where the engine is at home, and how far a free port is looked for.
PORTS = (9123, 9999)
# Tasks that wait here while each core has one: enough that none waits for the next.
WAITING = 8
# Seconds: the engine counts them in 32 bits, and adds them up.
LONGEST = 10**9
# What the engine would take from the environment, and nobody has asked for: a name goes to a catalog.
LEAKS = ("WORK_QUEUE_NAME", "WORK_QUEUE_PORT", "WORK_QUEUE_LOW_PORT", "WORK_QUEUE_HIGH_PORT", "CATALOG_HOST", "CATALOG_PORT")


@dataclass(frozen=True)
class Task:
    """A command for a worker."""

    piece: int
    command: str
    files: dict[str, str]  # name at the worker, which keeps it -> path here
    texts: dict[str, str]  # name at the worker -> content, for this task alone
    output: str  # name at the worker
    arrival: str  # path here
    is_second: bool = False  # done once more, to be compared


@dataclass(frozen=True)
class Outcome:
    task: Task
    host: str  # the worker's machine, as the worker names it
    worker: str  # address and port
    reason: str  # why there is no output; "" where there is


@dataclass(frozen=True)
class Crew:
    workers: int
    cores: int
    lost: int  # since the start: gone without having been sent away


class Engine:
    """Listens as soon as it is there. Throws EngineError where the module is missing or the port is taken."""

    def __init__(self, port: int | None, password: str, silence: float) -> None:
        try:
            import work_queue
        except ImportError:
            raise EngineError(MISSING) from None
        for leak in LEAKS:
            os.environ.pop(leak, None)
        self._api: Any = work_queue
        try:
            self._queue: Any = work_queue.WorkQueue(port=port if port is not None else PORTS)
        except Exception:  # it has no class of its own
            raise EngineError("port %d is taken; --port=P takes another one" % port if port is not None else
                              "no port from %d to %d is free" % PORTS) from None
        if not self._queue.specify_password_file(password):
            raise UsageError("--password=%s: it cannot be read" % password)
        # A worker that stands still is asked after the first half, and lost at the end of the second.
        half = min(max(1, round(silence / 2)), LONGEST)
        self._queue.specify_keepalive_interval(half)
        self._queue.specify_keepalive_timeout(half)
        self._open: dict[int, Task] = {}
        self._submitted = 0
        self._blocked: dict[str, float] = {}  # until when

    @property
    def port(self) -> int:
        return int(self._queue.port)

    def advertise(self, name: str, catalog: str) -> None:
        """The name goes to this catalog, and to no other."""
        host, _, port = catalog.partition(":")
        self._queue.specify_catalog_server(host, int(port or 9097))
        self._queue.specify_name(name)

    def crew(self) -> Crew:
        stats = self._queue.stats
        return Crew(int(stats.workers_connected), int(stats.total_cores), int(stats.workers_removed - stats.workers_released))

    def room(self, crew: Crew) -> int:
        """So many more tasks are of use to these, beside those that are done once more."""
        return max(0, crew.cores + WAITING - sum(not task.is_second for task in self._open.values()))

    @property
    def is_empty(self) -> bool:
        return not self._open

    def submit(self, task: Task) -> None:
        sent = self._api.Task(task.command)
        for name, path in task.files.items():
            sent.specify_input_file(path, name, cache=True)
        for name, text in task.texts.items():
            sent.specify_buffer(text, name, cache=False)
        sent.specify_output_file(task.arrival, task.output, cache=False)
        sent.specify_cores(1)
        # By itself the engine takes the last one first, and the first ones, which are the largest, would be done at the very end.
        self._submitted += 1
        sent.specify_priority(-self._submitted)
        if task.is_second:
            # Before all others, for it was sent when the right worker was idle; and where several are, not to the same one each time.
            sent.specify_priority(1)
            sent.specify_algorithm(self._api.WORK_QUEUE_SCHEDULE_RAND)
        self._open[self._queue.submit(sent)] = task

    def wait(self, seconds: int) -> Outcome | None:
        """The next that has ended, if any has within this time; also what is no success."""
        self._forgive()
        ended = self._queue.wait(seconds)
        return self._outcome(ended) if ended else None

    def _outcome(self, ended: Any) -> Outcome:
        task = self._open.pop(ended.id)
        reason = ""
        if ended.result != self._api.WORK_QUEUE_RESULT_SUCCESS:
            reason = "the engine says %s" % ended.result_str
        elif ended.return_status != 0:
            reason = "exit status %d" % ended.return_status
        if reason and (words := (ended.output or "").strip()):
            reason += ": " + words[-500:]
        return Outcome(task, str(ended.hostname or "?"), str(ended.host or "?"), reason)

    def block(self, host: str, seconds: int) -> None:
        """For so long no task goes to workers of this machine. The engine's own way to say how long takes no number from Python."""
        self._queue.block_host(host)
        self._blocked[host] = time.monotonic() + seconds

    def _forgive(self) -> None:
        now = time.monotonic()
        for host in [host for host, end in self._blocked.items() if end <= now]:
            del self._blocked[host]
            self._queue.unblock_host(host)

    def dismiss(self) -> None:
        """The workers may go: the work is done."""
        self._queue.shutdown_workers(0)
