"""latbox as a solver of PuLP, the modelling library, which must be there (Debian: python3-pulp); the rest of latbox needs it not.

    import latbox.pulp

    prob.solve(latbox.pulp.LATBOX(timeLimit=20, threads=2, msg=True))

The problem goes over as it stands in memory, number by number, not by a file: names may hold what they like, ints are exact at
any length, and a float counts as the decimal that Python shows of it.
"""

from __future__ import annotations

import sys
from collections.abc import Callable
from fractions import Fraction
from typing import Any

from . import api, arrays, models
from .errors import EngineError, LatboxError, UsageError
from .front.progress import Display
from .models.model import INF, Row
from .solving import binaries, exact, statuses
from .solving.events import Event
from .solving.settings import AUTO

try:
    import pulp
except ImportError as missing:
    raise ImportError("latbox.pulp needs PuLP, which this Python does not find (Debian: python3-pulp)", name="pulp") from missing


class LATBOX(pulp.LpSolver):  # type: ignore[misc]
    """Solves PuLP problems of integer variables with both engines.

    mip: True; latbox knows no relaxation, and False is refused when it solves.
    msg: show on standard error what latbox-solve shows while it works.
    timeLimit: seconds; then the problem has its best point so far.
    gapRel, gapAbs: end within this part of max(1, |objective|), or this distance, of the proven bound; one of them.
    threads: of all engines together; None: one for each processor.
    digits: decimals of continuous variables, which are refused without; such a problem is never proven.
    engine, seed, memory: as of latbox.Model.solve().
    options: the lines of a command in other solvers; refused when it solves, for nobody would read them.

    The problem's status and sol_status: 1, 1 proven optimal; 1, 2 a point, nothing proven, also after Ctrl-C; -1, -1 proven
    infeasible; -2, -2 unbounded; 0, 0 nothing known. Variables get ints where they are whole, None where no point is known.
    `result` is the whole answer, exact: a latbox.Result, its points in the order of prob.variables().

    Solving raises PulpSolverError where the problem or a setting is refused or an engine breaks.
    """

    name = "LATBOX"

    def __init__(self, mip: bool = True, msg: bool = True, options: list[str] | None = None, timeLimit: float | None = None,
                 gapRel: float | None = None, gapAbs: float | None = None, threads: int | None = None, digits: int | None = None,
                 engine: str = AUTO, seed: int = 0, memory: int | None = None) -> None:
        super().__init__(mip=mip, msg=msg, options=options, timeLimit=timeLimit, gapRel=gapRel, gapAbs=gapAbs, threads=threads,
                         digits=digits, engine=engine, seed=seed, memory=memory)
        self.result: api.Result | None = None

    def available(self) -> bool:
        """Whether both engines are found."""
        try:
            return bool(binaries.find(binaries.SEARCH) and binaries.find(binaries.COMPLETE))
        except EngineError:
            return False

    def copy(self) -> LATBOX:
        return LATBOX(self.mip, self.msg, self.options, self.timeLimit, **self.optionsDict)

    def actualSolve(self, lp: Any) -> int:
        """Called by lp.solve(): solves it and returns the status."""
        try:
            return self._solve(lp)
        except LatboxError as error:
            raise pulp.PulpSolverError("LATBOX: %s" % error) from error

    def _solve(self, lp: Any) -> int:
        if not self.mip:
            raise UsageError("mip=False: it solves in whole numbers, and no relaxation")
        if self.options:
            raise UsageError("options=%r: it takes none; timeLimit, threads and the others are named" % (self.options,))
        lp.checkDuplicateVars()
        variables = list(lp.variables())
        model = model_of(lp, variables)
        self.result = api.Model(model).solve(on_event=self._teller(model), **self._settings())
        if self.msg:
            for line in last_lines(self.result):
                print(line, file=sys.stderr)
        for j, variable in enumerate(variables):
            variable.varValue = None if self.result.x is None else plain(self.result.x[j])
        status, sol_status = statuses.status_of(self.result.status, self.result.x is not None).pulp
        lp.assignStatus(status, sol_status)
        return status

    def _settings(self) -> dict[str, Any]:
        """Those of latbox.Model.solve()."""
        settings: dict[str, Any] = dict(self.optionsDict)
        relative, absolute = settings.pop("gapRel", None), settings.pop("gapAbs", None)
        if relative is not None and absolute is not None:
            raise UsageError("gapRel and gapAbs: one of them is wanted")
        if relative is not None:
            absolute = "%s%%" % (100 * arrays.exact("gapRel", relative))
        return {**settings, "gap": absolute, "time": self.timeLimit}

    def _teller(self, model: models.Model) -> Callable[[Event], None] | None:
        return Display(sys.stderr, model, model.name).tell if self.msg else None


def model_of(lp: Any, variables: list[Any]) -> models.Model:
    """The problem, its variables in the order given. Throws UsageError, ReadError."""
    model = models.Model(str(lp.name))
    positions = {id(variable): model.add_variable(variable.name) for variable in variables}
    for stated, variable in zip(variables, model.variables):
        variable.integer = stated.cat == pulp.LpInteger
        variable.lower = arrays.end_of("lowBound of " + stated.name, stated.lowBound, -INF)
        variable.upper = arrays.end_of("upBound of " + stated.name, stated.upBound, INF)

    def coefficients(expression: Any, name: str) -> dict[int, Fraction]:
        terms = ((positions[id(variable)], arrays.exact(name, factor)) for variable, factor in expression.items())
        return {position: factor for position, factor in terms if factor}

    for name, constraint in lp.constraints.items():
        side = -arrays.exact(name, constraint.constant)
        model.rows.append(Row(name, None, -INF if constraint.sense == pulp.LpConstraintLE else side,
                              INF if constraint.sense == pulp.LpConstraintGE else side, coefficients(constraint, name)))
    if lp.sos1 or lp.sos2:
        raise UsageError("special ordered sets are not taken")
    model.objective = Row("objective", None, coefficients=coefficients(lp.objective, "objective"))
    model.constant = arrays.exact("objective", lp.objective.constant)
    model.maximise = lp.sense == pulp.LpMaximize
    return model


def plain(value: arrays.Number) -> int | float:
    """As PuLP calculates with it."""
    return value if isinstance(value, int) else float(value)


def last_lines(result: api.Result) -> list[str]:
    lines = ["note: " + note for note in result.notes]
    known = "" if result.objective is None else ", objective %s" % exact.text(result.objective)
    return lines + ["status: %s%s, %.2f s" % (result.status, known, result.seconds)]
