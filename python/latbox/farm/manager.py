"""The farm at work: the search is cut, pieces go out, results come in, what overran is cut again, and all of it is joined.

What stands in the folder is the truth at every moment: a farm that was killed begins by asking latbox-all what is open there.
Nothing that a worker sends is believed by this code: latbox-all --take does, or does not.
"""

from __future__ import annotations

import math
import os
from collections.abc import Callable
from fractions import Fraction

from ..errors import EngineError, counted
from ..front.progress import clock
from ..solving import binaries
from . import pieces
from .desk import Answer, Desk
from .engine import Crew, Engine, Outcome, Task
from .folder import Folder
from .ledger import Ledger
from .progress import Display, State
from .trust import Trust
from .verifying import Verifying, claims

# A piece that fails so often would fail for ever.
MOST_FAILURES = 10
# What overran is cut into so many pieces, for as many cores.
PARTS = 8
# Seconds, as latbox-all reads them: 0 would be no limit.
LEAST_TIME = 0.001
# Results that may lie here untaken, for each core at work: who sends faster than they are taken waits.
BACKLOG = 2


class Manager:
    """Requires that the folder is entered. All calls throw EngineError where latbox-all fails."""

    def __init__(self, folder: Folder, engine: Engine, display: Display, job_rtime: float, verify: Fraction) -> None:
        self.is_stopped = False  # may be set at any moment: what is at work ends soon
        self._folder = folder
        self._engine = engine
        self._display = display
        self._job_rtime = job_rtime
        self._desk = Desk(folder.path)
        self._job_program = binaries.job_program()
        self._ledger = Ledger()
        self._trust = Trust()
        self._verifying = Verifying(verify)
        self._cuts: dict[int, int] = {}  # how often what a piece came from has overrun, since this farm has begun
        self._best: str | None = None
        self._lost = 0

    @property
    def points(self) -> int:
        """Those of the results that were taken."""
        return self._ledger.points

    # ------------------------------------------------------------- before and after

    def cut(self, arguments: list[str]) -> None:
        """The folder gets its pieces."""
        self._desk.ask(arguments, lambda answer: self._hear(len(pieces.cut(answer))), self._echo)
        self._settle()

    def _hear(self, pieces_cut: int) -> None:
        self._folder.log("cut into %d pieces" % pieces_cut)

    def _echo(self, line: str) -> None:
        """What a long call says. What is wrong is told when it has ended."""
        if not pieces.SAID.match(line):
            self._display.note(line)

    def join(self, arguments: list[str]) -> Answer | None:
        """What latbox-all makes of all pieces; None if it was stopped."""
        heard: list[Answer] = []
        self._desk.ask(arguments, heard.append, self._echo)
        self._settle()
        return heard[0] if heard else None

    def _settle(self) -> None:
        """Until the desk has done all that it was asked. Workers that dial in meanwhile are let in."""
        self._desk.work()
        while self._desk.backlog and not self.is_stopped:
            if not self._desk.wait(1.0):
                self._engine.wait(0)
            self._desk.work()

    def end(self) -> None:
        """Nothing that this farm has started goes on."""
        self._desk.stop()

    # ------------------------------------------------------------- the work

    def work(self) -> bool:
        """Until all pieces are done, or it is stopped; which of both."""
        self._folder.read_manifest()
        self._list(self._begin)
        self._settle()
        for piece, path in self._folder.left_arrivals():
            if self._ledger.is_open(piece):
                self._take(piece, path, None)
            else:
                remove(path)
        self._settle()
        while not self.is_stopped and not self.is_done:
            crew = self._engine.crew()
            self._display.tell(self._state(crew))
            self._miss(crew)
            self._send(crew)
            self._desk.work()
            if self._engine.is_empty:
                self._send_again(None)
            if self._engine.is_empty and self._desk.backlog:
                self._desk.wait(1.0)
            elif outcome := self._engine.wait(1):
                self._receive(outcome)
        self._display.tell(self._state(self._engine.crew()), at_once=True)
        return self.is_done

    @property
    def is_done(self) -> bool:
        return not self._ledger.open and not self._desk.backlog and not self._verifying.open

    def _state(self, crew: Crew) -> State:
        ledger = self._ledger
        return State(ledger.done, ledger.open, crew.workers, crew.cores, ledger.share, ledger.points, self._best,
                     self._verifying.open)

    def _list(self, then: Callable[[list[pieces.Standing]], None]) -> None:
        self._desk.ask(["--pieces=1", "--jobs=" + self._folder.path], lambda answer: then(pieces.listing(answer)))

    def _begin(self, standing: list[pieces.Standing]) -> None:
        for piece in standing:
            if piece.state == pieces.SPLIT:
                self._ledger.points += piece.points
            elif piece.state == pieces.PARTIAL:
                self._ledger.expect(piece.piece, piece.estimate)
                self._split(piece.piece, piece.points)
            elif piece.state == pieces.DONE:
                self._ledger.expect(piece.piece, piece.estimate)
                self._ledger.finish(piece.piece, piece.points)
            else:
                self._ledger.add(piece.piece, piece.estimate)

    # ------------------------------------------------------------- out

    def _send(self, crew: Crew) -> None:
        if self._desk.backlog > BACKLOG * max(1, crew.cores):
            return
        for _ in range(self._engine.room(crew)):
            piece = self._ledger.next()
            if piece is None:
                return
            self._engine.submit(self._task(piece))

    def _task(self, piece: int, is_second: bool = False) -> Task:
        folder = self._folder
        command = "./latbox-all --job=%d --jobs=jobs --threads=1 --quiet=1" % piece
        if not is_second:
            command += " --job-rtime=%.3f" % self._time_for(piece)
        files = {"jobs/" + name: path for name, path in folder.files().items()}
        texts = {"jobs/manifest": folder.manifest_of(piece)}
        if best := folder.best():
            texts["jobs/best"] = best
        return Task(piece, command, {"latbox-all": self._job_program, **files}, texts, "jobs/%d.result" % piece, folder.arrival(piece),
                    is_second)

    def _time_for(self, piece: int) -> float:
        """Seconds; twice as many for each time that it was cut: what comes to nothing in its time, on whatever machine, ends at last."""
        return max(LEAST_TIME, math.ldexp(self._job_rtime, self._cuts.get(piece, 0)))

    # ------------------------------------------------------------- in

    def _receive(self, outcome: Outcome) -> None:
        if outcome.task.is_second:
            self._compare(outcome)
        elif outcome.reason:
            self._fail(outcome.task.piece, outcome, outcome.reason)
        else:
            self._take(outcome.task.piece, outcome.task.arrival, outcome)
        self._send_again(outcome.worker)

    def _send_again(self, idle: str | None) -> None:
        for piece in self._verifying.release(idle):
            self._engine.submit(self._task(piece, True))

    def _take(self, piece: int, path: str, outcome: Outcome | None) -> None:
        """`outcome` is None where nobody knows any more who has sent it."""

        def then(answer: Answer) -> None:
            result = pieces.taken(answer)
            remove(path)
            if result is None:
                self._fail(piece, outcome, pieces.said(answer))
            elif self._ledger.is_open(piece):
                self._enter(piece, result, outcome)

        self._desk.ask(["--take=" + path, "--job=%d" % piece, "--jobs=" + self._folder.path], then)

    def _enter(self, piece: int, result: pieces.Taken, outcome: Outcome | None) -> None:
        if outcome is not None:
            self._trust.take(outcome.host)
        self._best = result.best or self._best
        if result.unfinished:
            self._split(piece, result.points)
        else:
            self._ledger.finish(piece, result.points)
            if outcome is not None and self._verifying.wants(piece) and self._folder.is_comparable(piece):
                self._verifying.begin(piece, outcome.worker)

    def _split(self, piece: int, points: int) -> None:
        """What its result in place has left open becomes pieces."""

        def then(answer: Answer) -> None:
            new = pieces.cut(answer)
            self._folder.log("piece %d has overrun, %d pieces more" % (piece, len(new)))
            self._folder.read_manifest()
            self._list(lambda standing: self._replace(piece, points, [other for other in standing if other.piece in new]))

        self._desk.ask(["--job=%d" % piece, "--split=%d" % PARTS, "--jobs=" + self._folder.path], then)

    def _replace(self, piece: int, points: int, children: list[pieces.Standing]) -> None:
        self._ledger.split(piece, points, sum(child.estimate for child in children))
        for child in children:
            self._cuts[child.piece] = self._cuts.get(piece, 0) + 1
            self._ledger.add(child.piece, child.estimate)

    # ------------------------------------------------------------- once more

    def _compare(self, outcome: Outcome) -> None:
        """A second result of a piece, with the one in place. It must be another worker's, where there is another one."""
        piece, path = outcome.task.piece, outcome.task.arrival
        first = self._verifying.first_worker(piece)
        if outcome.reason and self._verifying.fail(piece) >= MOST_FAILURES:
            raise EngineError("piece %d, done once more, has failed %d times, the last time: %s" % (piece, MOST_FAILURES, outcome.reason))
        if outcome.reason or (outcome.worker == first and self._engine.crew().workers > 1):
            remove(path)
            self._verifying.hold(piece)
            return
        if not self._folder.is_comparable(piece):  # a best point has become known meanwhile
            remove(path)
            self._verifying.agree(piece)
            return
        with open(path, encoding="utf-8", errors="replace") as mine, open(self._folder.result(piece), encoding="utf-8") as other:
            agree = claims(mine.read()) == claims(other.read())
        remove(path)
        if agree:
            self._verifying.agree(piece)
            return
        self._verifying.disagree(piece)
        self._tell("piece %d: %s and %s (%s) disagree about it; it is done anew" % (piece, first, outcome.worker, outcome.host))
        self._folder.drop_result(piece)
        self._ledger.reopen(piece)
        self._again(piece, "two workers disagree")

    # ------------------------------------------------------------- what goes wrong

    def _miss(self, crew: Crew) -> None:
        """Who has gone is told; the engine sends what they had to others."""
        if crew.lost > self._lost:
            self._tell("%s gone; what they had goes to others" % counted(crew.lost - self._lost, "worker"))
        self._lost = crew.lost

    def _fail(self, piece: int, outcome: Outcome | None, reason: str) -> None:
        """The piece goes out again, and whose fault it was is told."""
        if outcome is None:
            self._folder.log("piece %d, left by a farm that was killed, is not taken: %s" % (piece, reason))
            return
        self._tell("piece %d from %s (%s) is not taken: %s" % (piece, outcome.host, outcome.worker, reason))
        if seconds := self._trust.refuse(outcome.host):
            self._engine.block(outcome.host, seconds)
            self._tell("%s gets no pieces for %s: too many of its results were refused" % (outcome.host, clock(seconds)))
        self._again(piece, reason)

    def _again(self, piece: int, reason: str) -> None:
        if self._ledger.fail(piece) >= MOST_FAILURES:
            raise EngineError("piece %d has failed %d times, the last time: %s" % (piece, MOST_FAILURES, reason))

    def _tell(self, words: str) -> None:
        self._display.note(words)
        self._folder.log(words)


def remove(path: str) -> None:
    try:
        os.remove(path)
    except FileNotFoundError:
        pass
