"""What a run is asked for, beside the model."""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass, field
from fractions import Fraction

from .steering import Steering

AUTO, SEARCH, COMPLETE = "auto", "search", "complete"
ALL = 0  # solutions: all of them
LEAST_SHARE = 64 << 20  # bytes of address space, with which an engine can begin and has some to work with
LEAST_MEMORY = 2 * LEAST_SHARE  # of a run: one of each engine
MOST_THREADS = 1024


@dataclass
class Gap:
    """How far the best point may be from the bound: by an amount, or by a part of max(1, |objective|)."""

    value: Fraction
    relative: bool = False

    def holds(self, objective: Fraction, bound: Fraction) -> bool:
        scale = max(Fraction(1), abs(objective)) if self.relative else Fraction(1)
        return abs(objective - bound) <= self.value * scale


@dataclass
class Settings:
    engine: str = AUTO
    digits: int | None = None
    time: float | None = None  # seconds
    solutions: int = 1  # ALL, or so many
    target: Fraction | None = None
    gap: Gap | None = None
    seed: int = 0
    threads: int = 0  # 0: one for each processor
    memory: int | None = None  # bytes, of all engines together
    search_options: dict[str, object] = field(default_factory=dict)
    proof: str | None = None  # a folder
    log: Callable[[str], None] | None = None
    steering: Steering | None = None
