"""What happens while a model is solved, in the order in which it happens: one Start, then points, bounds, progress and what was
asked of the run meanwhile, one End. Times are those of work: they stand still while the run is paused."""

from __future__ import annotations

from dataclasses import dataclass, field
from fractions import Fraction
from typing import Union

Point = list[Fraction]


@dataclass
class Start:
    """The engines begin."""

    rank: int  # of the lattice; an estimate from the rows as they are
    kind: str  # of program, as the table of the search's options names it
    searches: int  # processes of the search
    threads: int  # of the complete engine; 0: it does not run
    limit: float | None = None  # seconds that it may take
    began: float = 0.0  # when, in seconds since 1970
    options: dict[str, int] = field(default_factory=dict)  # of the search, as it begins: those that can be set


@dataclass
class Found:
    """A point that has been checked. With an objective it is better than those before, unless more than one is wanted."""

    x: Point
    objective: Fraction | None
    seconds: float
    letter: str  # who found it: S, T, ... the search under its first, second, ... seed; C the complete engine; P presolve


@dataclass
class Bound:
    """No point has a better objective: proven."""

    value: Fraction
    seconds: float


@dataclass
class Progress:
    """None: not known."""

    seconds: float
    objective: Fraction | None = None
    bound: Fraction | None = None
    points: int = 0
    iteration: int | None = None
    violated: int | None = None
    nodes: float | None = None
    share: float | None = None
    left: str | None = None
    left_seconds: float | None = None  # the same as a number, whatever the run was paused
    rate: float | None = None  # nodes a second, of late
    basis: float | None = None  # length of the shortest first vector of the bases
    collected: int | None = None  # vectors, since the start of the search
    idle: int | None = None  # iterations without a nearer point
    paused: float = 0.0  # seconds so far, which are not in `seconds`


@dataclass
class Action:
    """Somebody asked this of the run, and it is done: an action of steering.py, key and value with SET."""

    action: str
    seconds: float
    key: str | None = None
    value: int | None = None


@dataclass
class Setting:
    """The search has taken a value: told by its console."""

    key: str
    value: str
    seconds: float


@dataclass
class End:
    """The answer. `points` holds what was asked for, best first; `x` and `objective` belong to the first of them."""

    status: str
    x: Point | None
    objective: Fraction | None
    bound: Fraction | None
    points: list[Point]
    count: int
    seconds: float
    ray: Point | None = None
    notes: list[str] = field(default_factory=list)


Event = Union[Start, Found, Bound, Progress, Action, Setting, End]
