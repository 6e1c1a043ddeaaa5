"""What can be asked of a run while it goes on, and the options of the search that take another value then.

The options are those of latbox's console that steer how it searches. The others are the front's: what the engine prints (verb, help),
when it ends (rtime, iters, sol, snorm, tnorm) and what it reads (bench) hangs together with how it is read here.
"""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass
from typing import Protocol

PAUSE, GO_ON, STOP, SET = "pause", "go on", "stop", "set"
ACTIONS = (PAUSE, GO_ON, STOP, SET)


@dataclass(frozen=True)
class Order:
    """One thing that is asked; key and value go with SET."""

    action: str
    key: str = ""
    value: int = 0


class Steering(Protocol):
    """Whence orders come. The run never waits for them."""

    def fileno(self) -> int:
        """Readable when there may be orders; -1: none come any more."""

    def orders(self) -> list[Order]:
        """Those that have come since the last call; it does not wait."""


@dataclass(frozen=True)
class SearchOption:
    key: str
    default: int
    least: int
    most: int  # 1 and least 0: a switch
    text: str
    from_when: str  # a value counts

    def takes(self, value: int) -> bool:
        return self.least <= value <= self.most


AT_ONCE, NEXT_TURN = "at once", "from the step's next turn on"
MOST = 10**9  # no option means anything beyond it

TABLE = [
    SearchOption("beta", 20, 2, 1000, "vectors in a block of the reduction; more is stronger, at exponential cost", "from the next reduction on"),
    SearchOption("eprune", 3, 0, 3, "pruning of the enumeration; 0 looks at every branch, 3 at the fewest", "from the next block on"),
    SearchOption("btime", 0, 0, MOST, "seconds for the enumeration of a block at most; 0 is no limit", AT_ONCE),
    SearchOption("eenum", 1, 0, 1, "reduction block by block with enumeration; without it one sweep of plain reduction", NEXT_TURN),
    SearchOption("deep", 0, 0, 1, "short vectors go back several places at once; better bases for more time", AT_ONCE),
    SearchOption("pair", 1, 0, 1, "recombine the vectors collected, two by two", NEXT_TURN),
    SearchOption("pairLimit", 10, 0, MOST, "vectors of each collection that are recombined; costs its square", NEXT_TURN),
    SearchOption("collectLimit", 100, 0, MOST, "vectors in each collection at most; 0 is no limit", "at the next vector that is collected"),
    SearchOption("sieve", 0, 0, 1, "sieve the collections until nothing gets better", NEXT_TURN),
    SearchOption("sample", 0, 0, 1, "draw random short vectors; pays where the rank is far beyond beta", NEXT_TURN),
    SearchOption("sampleLimit", 1000, 0, MOST, "vectors drawn in a turn at most", NEXT_TURN),
    SearchOption("scale", 0, 0, 1, "weigh coordinates that leave their bounds more", NEXT_TURN),
    SearchOption("translate", 0, 0, 1, "move the centre of coordinates that leave their bounds", NEXT_TURN),
    SearchOption("reinsert", 1, 0, 1, "put the best vectors back after an iteration without progress", NEXT_TURN),
    SearchOption("variate", 1, 0, 1, "sort or shuffle the basis after an iteration without progress", NEXT_TURN),
    SearchOption("consistency", 0, 0, 1, "record and check every transformation; costs time", AT_ONCE),
]
BY_KEY = {option.key: option for option in TABLE}


def present(options: Mapping[str, object]) -> dict[str, int]:
    """The values with which a search begins that is given these options; one that is no whole number is told as the default."""
    given = {key: value for key, value in options.items() if isinstance(value, int)}
    return {option.key: int(given.get(option.key, option.default)) for option in TABLE}
