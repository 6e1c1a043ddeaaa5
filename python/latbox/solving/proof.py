"""The folder of a proof: the program, with the map of its names as comments, and the proof of the verdict.

The proof speaks of the program. That the program says what the model says is translation, which is tested and not proven: the map
tells which column is which variable, so that both can be read side by side.
"""

from __future__ import annotations

import os
from contextlib import suppress

from .program import comment
from .statement import Statement

PROGRAM, PROOF = "program.opt", "program.proof"
# Why there may be none.
SPEAKS, RAY = "the point speaks for itself", "point and ray speak for themselves"
NOTHING, OPEN = "nothing had to be searched", "the complete search has not come to its end"
UNFINISHED = "it was not finished when the run ended"


def folder(path: str) -> str:
    """The folder is there, without what an earlier run has left, which would be taken for this one's; the path of the proof in
    it. Throws OSError."""
    os.makedirs(path, exist_ok=True)
    for name in (PROGRAM, PROOF):
        with suppress(FileNotFoundError):
            os.remove(os.path.join(path, name))
    return os.path.abspath(os.path.join(path, PROOF))


def missing(reason: str) -> str:
    return "no proof is written: " + reason


def note(path: str) -> str:
    """How the proof is checked, for the user; empty where there is none."""
    program, proven = os.path.join(path, PROGRAM), os.path.join(path, PROOF)
    return "latbox-check --proof=%s %s checks the proof" % (proven, program) if os.path.exists(proven) else ""


def name_map(statement: Statement) -> str:
    """Comment lines: columns and their variables; variables that are fixed and their values."""
    names = {column: statement.model.variables[j].name for j, column in statement.column_of.items()}
    lines = ["model %s" % statement.model.name] if statement.model.name else []
    lines.append("objective = %s (target norm + %s)" % ("-1" if statement.model.maximise else "1", statement.constant))
    for column in range(len(statement.program.columns)):
        lines.append("x%d = %s" % (column + 1, names.get(column, "switch of a semi variable")))
    lines += ["%s = %s" % (statement.model.variables[j].name, value) for j, value in statement.fixed.items()]
    return "".join("// %s\n" % comment(line) for line in lines)
