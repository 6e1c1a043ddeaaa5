"""What an answer may say, in one table: the status, its exit status, its meaning, and what PuLP calls it.

The programs, the manual page, the documents and the Python interface take it from here.
"""

from __future__ import annotations

from typing import NamedTuple


class Status(NamedTuple):
    name: str
    has_point: bool
    exit_status: int
    pulp: tuple[int, int]  # PuLP's status and sol_status
    meaning: str


OPTIMAL, ALL, INFEASIBLE = "optimal", "all", "infeasible"
FEASIBLE, UNKNOWN, INTERRUPTED, UNBOUNDED = "feasible", "unknown", "interrupted", "unbounded"

TABLE = [
    Status(OPTIMAL, True, 10, (1, 1), "what was asked for, and proven: the best point, or the best ones; without an "
                                      "objective every point is as good as another"),
    Status(ALL, True, 10, (1, 1), "all points there are, and proven that there are no others"),
    Status(FEASIBLE, True, 11, (1, 2), "a point is known; whether there is a better one is open"),
    Status(INTERRUPTED, True, 11, (1, 2), "stopped by the user; a point is known"),
    Status(UNKNOWN, False, 12, (0, 0), "no point is known, nor is it proven that there is none"),
    Status(INTERRUPTED, False, 12, (0, 0), "stopped by the user before a point was known"),
    Status(UNBOUNDED, True, 13, (-2, -2), "from the point shown the ray shown leads to better and better points, without end"),
    Status(INFEASIBLE, False, 20, (-1, -1), "there is no point: proven"),
]

# Ends that are no answer.
FAILURE = 1
USAGE = 2


def status_of(name: str, has_point: bool) -> Status:
    """The row of the table."""
    for status in TABLE:
        if status.name == name and (status.has_point == has_point or name in (UNBOUNDED,)):
            return status
    raise KeyError((name, has_point))


def exit_status(name: str, has_point: bool, zero: bool = False) -> int:
    """The exit status of an answer; 0 for each of them with `zero`."""
    return 0 if zero else status_of(name, has_point).exit_status
