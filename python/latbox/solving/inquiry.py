"""What the complete engine is asked, one question after the other, and what its verdicts say of the model.

Most models take one question: for the best point, for a point, for all of them. The N best points are asked for level by level
(levels.py); where there are best points without end, near one that is known; and where the engine cannot begin, for what can still be
had. A verdict is held against the points that are known: of two statements that contradict each other nobody believes one.
"""

from __future__ import annotations

from dataclasses import dataclass
from enum import Enum
from fractions import Fraction

from ..errors import InternalError
from ..models.model import INF
from . import checking, exact, levels, proof, statuses, unbounded
from .complete_engine import Task
from .finds import Finds
from .program import Program, Target
from .settings import ALL, Settings
from .statement import Statement


class Mode(Enum):
    """What the complete engine is asked for."""

    BEST = "the best point"
    FIRST = "a point, for there is no objective"
    LIST = "all points, or so many without objective"
    LEVELS = "the best points, level by level"
    NEAR = "so many points near a best one, for there are best ones without end"
    RESCUE = "any point at all, for the rest is open or without end"


@dataclass
class Question:
    program: Program
    task: Task  # for one thread


class Inquiry:
    """Knows which question is open, and what is proven so far; begin() comes first. Points come to it by `finds`, which others
    fill."""

    def __init__(self, finds: Finds, settings: Settings) -> None:
        self.bound: Fraction | None = None  # no point has a better objective: proven
        self.open_note = ""  # that the engine could not come to an end, and why
        self._finds = finds
        self._settings = settings
        self._mode = Mode.BEST
        self._good = 0  # of the points so many are proven to be the best ones
        self._near: list[int] = []  # distances within which points are yet to be looked for

    def begin(self, statement: Statement) -> None:
        self._statement = statement
        self._program = statement.program

    @property
    def is_optimising(self) -> bool:
        """Two points of the program can differ in the objective."""
        return bool(self._program.targets)

    # ------------------------------------------------------------- questions

    def first(self) -> Question:
        if self._settings.solutions == 1:
            return self._ask(Mode.BEST if self.is_optimising else Mode.FIRST)
        is_listing = self._settings.solutions == ALL or not levels.has_levels(self._program)
        return self._ask(Mode.LIST if is_listing else Mode.LEVELS)

    def rescue(self) -> Question:
        """Any point of the model."""
        return self._ask(Mode.RESCUE)

    def _ask(self, mode: Mode, program: Program | None = None) -> Question:
        self._mode = mode
        program = program or self._program
        task = Task(seed=self._settings.seed)
        if mode is Mode.LIST:
            task.all = self.is_optimising
            task.limit = 0 if self.is_optimising else self._settings.solutions
        elif mode is Mode.LEVELS:
            task.ties = True
            # One more than the best, by which a list that was cut off is told from a run that was.
            task.limit = max(2, self._settings.solutions - self._good)
        elif mode is Mode.NEAR:
            task.limit = self._settings.solutions
        elif mode is not Mode.BEST:
            task.first = True
            program = unbounded.any_point(program)
        if self._settings.proof is not None and mode in (Mode.BEST, Mode.FIRST, Mode.LIST):
            program = with_proof(self._settings.proof, task, program)
        return Question(program, task)

    # ------------------------------------------------------------- what is proven

    def take_least(self, norm: Fraction) -> bool:
        """No target norm of the program that was asked about is below this one; true if that is more than was known."""
        if self._mode is not Mode.BEST:
            return False
        value = self._statement.objective(norm)
        if self.bound is not None and not checking.is_better(self._statement.model, self.bound, value):
            return False
        self.bound = value
        return True

    def heard(self, word: str, rest: str) -> str | Question | None:
        """Of a verdict: the status that it proves, or the next question; None if it says nothing, or another engine goes on.

        Throws InternalError where it cannot be true."""
        best = self._finds.best
        if self._mode is Mode.LEVELS:
            return self._heard_of_level(word, rest)
        if word == "none":
            require(best is None, "there is no point", "one is known")
            return statuses.INFEASIBLE
        if word == "optimum" and not self.is_optimising:
            return statuses.OPTIMAL
        if self._mode is Mode.NEAR:
            return self._heard_of_near()
        if word == "optimum":
            return self._heard_of_optimum(rest)
        if word == "all":
            require(int(rest) == self._finds.count, "there are %s points" % rest, "%d are known" % self._finds.count)
            # The N best of several targets are taken from a list of all points.
            return statuses.OPTIMAL if 0 < self._settings.solutions < self._finds.count else statuses.ALL
        if word == "found" and not self.is_optimising and best is not None:
            if self._settings.solutions == 1 or self.has_enough():
                return statuses.OPTIMAL
            if self._mode is Mode.RESCUE and self._settings.solutions != ALL:
                return self._look_near()
        return None

    def has_enough(self) -> bool:
        """So many points without objective as are wanted."""
        return 1 < self._settings.solutions <= self._finds.count and not self.is_optimising

    def _heard_of_optimum(self, rest: str) -> str | Question | None:
        objective = self._statement.objective(exact.number(rest.split()[0]))
        known = self._finds.objective
        require(objective == known, "the optimum is %s" % objective, "the best point has %s" % known)
        self.bound = objective
        if self._settings.solutions == 1:
            return statuses.OPTIMAL
        if self._settings.solutions != ALL and levels.has_levels(self._program):
            return self._look_near()
        return None

    # ------------------------------------------------------------- levels

    def _heard_of_level(self, word: str, rest: str) -> str | Question | None:
        """All points of the level are known, or as many as are wanted."""
        if word == "none":
            return statuses.ALL if self._finds.best is not None else statuses.INFEASIBLE
        if word == "found":  # cut off: more ties than are wanted
            return statuses.OPTIMAL
        if word != "optimum":
            return None
        worst = exact.number(rest.split()[0])
        # What was met on the way to this level may be worse than it.
        objectives = (checking.objective_of(self._statement.model, x) for x in self._finds.all)
        self._good = sum(self._statement.norm(objective) <= worst for objective in objectives)
        if self._good >= self._settings.solutions:
            return statuses.OPTIMAL
        return self._ask(Mode.LEVELS, levels.worse_than(self._program, worst))

    # ------------------------------------------------------------- points without end

    def at_open(self, columns: list[int]) -> Question | None:
        """The engine cannot begin, for nothing bounds these columns; it may still find a point."""
        if not columns or self._mode in (Mode.RESCUE, Mode.NEAR):
            return None
        names = self._statement.names(columns)
        self.open_note = "nothing bounds %s: the complete search cannot come to an end" % ", ".join(names)
        if self._settings.solutions != 1 and self.is_optimising and self._mode is not Mode.BEST:
            return self._ask(Mode.BEST)
        if self._finds.best is None:
            return self.rescue()
        if self._mode is Mode.LIST and self._settings.solutions != ALL:
            return self._look_near()
        return None

    def _look_near(self) -> Question:
        """There is a best point, and so many were not to be had level by level: there are best ones without end, so that each box
        around it that is large enough has as many as are wanted."""
        self._near = levels.DISTANCES[:]
        return self._look_farther()

    def _look_farther(self) -> Question:
        assert self._finds.best is not None
        around = self._statement.columns(self._finds.best)
        return self._ask(Mode.NEAR, levels.near(self._program, around, self._near.pop(0)))

    def _heard_of_near(self) -> str | Question | None:
        best = [x for x in self._finds.all if self._finds.objective_of(x) == self._finds.objective]
        if len(best) >= self._settings.solutions:
            return statuses.OPTIMAL
        return self._look_farther() if self._near else None


def with_proof(folder: str, task: Task, program: Program) -> Program:
    """Of one point there is nothing to be proven but that there is one or none: a target that is 0 everywhere says so."""
    task.proof = proof.folder(folder)
    if not task.first:
        return program
    task.first = False
    return Program(program.columns, program.conditions, [Target({}, -INF)])


def require(holds: bool, says: str, known: str) -> None:
    if not holds:
        raise InternalError("latbox-all says that %s, and %s" % (says, known))
