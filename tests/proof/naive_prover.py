"""Proofs without a search: a kernel by integer elimination, cuts that are coordinates, counts by walking.

Written from docs/proof.md alone, as plain_checker.py is. It leaves much to chance, so that each kind of line that the
document knows occurs, also those for which a good prover has no use. Two checkers are tried with what it writes, and with
what is made of it.
"""

import random
import re
from fractions import Fraction
from math import gcd
from types import SimpleNamespace

import plain_checker
from plain_checker import INF, Form, Program, STEP, Refused, System, Vector, Walk, dot

# A walk that is longer is given up.
MOST_NODES = 5000
ROUNDS = 4


class GivenUp(Exception):
    """An open variable, or a walk that is too long."""


def prove(text: str, kind: str, points: set[tuple[Fraction, ...]], pick: random.Random) -> str:
    """A proof of `none`, `all`, `optimum` or `ties`, if these are all points. Raises GivenUp."""
    program = Program(text)
    lines = ["latbox-proof 1"]
    norms = []
    if not points:
        lines.append("verdict none")
        goals = ["points"]
    elif kind == "all":
        lines.append("verdict all %d" % len(points))
        goals = ["points"]
    else:
        norms = list(min(map(program.norms, points)))
        best = [x for x in points if list(program.norms(x)) == norms]
        count = [len(best)] if kind == "ties" else []
        lines.append("verdict optimum " + words([*norms, *count]))
        lines.append("point " + words(pick.choice(sorted(best))))
        linear = any(any(row) for row, d in zip(program.at, program.dt) if abs(d) == INF)
        goals = ["better"] + ["slack"] * (norms[1] != 0 and linear) + ["equal"] * len(count)
    for goal in goals:
        lines += searched(program, goal, norms, pick)
    return "\n".join([*lines, "end"]) + "\n"


def words(values) -> str:
    return " ".join(map(str, values))


def searched(program: Program, goal: str, norms: list[Fraction], pick: random.Random) -> list[str]:
    """The lines of one search; if a walk with odd cuts is too long, one with plain ones."""
    state = pick.getrandbits(32)
    for odd in (True, False):
        try:
            return SearchProof(program, goal, norms, random.Random(state), odd).lines
        except Refused as reason:
            if odd or "more than" not in str(reason):
                raise GivenUp from reason
    raise GivenUp


class SearchProof:
    def __init__(self, program: Program, goal: str, norms: list[Fraction], pick: random.Random, odd: bool) -> None:
        self.pick, self.odd = pick, odd
        objective = self.objective(program, goal)
        parsed = [(line.split()[0], [int(word) for word in line.split()[1:]]) for line in objective]
        self.search = SimpleNamespace(goal=goal, objective=parsed)
        self.system = System(program, self.search, norms)
        self.steps: list[str] = []
        ending = None if self.derive() else self.lattice()
        if ending:
            walk = Walk(self.system, self.search, lambda x: self.counts(program, goal, norms, x))
            walk.run(MOST_NODES)
            ending.append("walk nodes %d points %d" % (walk.nodes, walk.points))
        self.lines = ["search " + goal, "objective %d" % len(objective), *objective, "derive %d" % len(self.steps), *self.steps,
                      *(ending or ["contradiction"])]

    @staticmethod
    def counts(program: Program, goal: str, norms: list[Fraction], x: list[Fraction]) -> bool:
        if not program.feasible(x):
            return False
        t, s = program.norms(x)
        return {"points": True, "better": [t] < norms[:1], "slack": [t] == norms[:1] and [s] < norms[1:],
                "equal": [t, s] == norms}[goal]

    def objective(self, program: Program, goal: str) -> list[str]:
        if goal == "points":
            return []
        valued = sum(abs(d) != INF for d in program.dt)
        kinds = {"better": ["norm"], "slack": ["norm", "distance", "linear"], "equal": ["norm", "distance", "linear"]}[goal]
        lines = []
        for _ in range(self.pick.randint(0, 3)):
            kind = self.pick.choice(kinds)
            signs = [self.pick.choice([-1, 1, 1, 0]) for _ in range(valued if kind != "linear" else 0)]
            lines.append(words([kind, *signs]))
        return lines

    # Derived ranges

    def derive(self) -> bool:
        """Whether there is a contradiction."""
        if self.system.contradicted([]):
            return True
        must = any(abs(end) == INF for z in self.system.variables for end in (z.low, z.high))
        for _ in range(self.pick.choice([0, 1, ROUNDS]) if not must else 10 * ROUNDS):
            before = len(self.steps)
            for number, row in enumerate(self.system.rows, 1):
                if self.by_row(number, row):
                    return True
            if before == len(self.steps):
                break
        if any(abs(end) == INF for z in self.system.variables for end in (z.low, z.high)):
            raise GivenUp
        return False

    def by_row(self, number: int, row: Form) -> bool:
        """Steps for the row's variables and for the row; whether they contradict."""
        for j, a in enumerate(row.coefficients):
            if a:
                q, y = abs(a), 1 if a > 0 else -1
                others = [b for i, b in enumerate(row.coefficients) if i != j and not self.system.variables[i].fixed()]
                tail = " r%d %d" % (number, y)
                tries = ["upper x%d %d" % (j + 1, q) + tail, "lower x%d %d" % (j + 1, q) + tail]
                if row.fixed() and gcd(*others):
                    tries.append("class x%d %d %d" % (j + 1, q, gcd(*others)) + tail)
                if any(self.try_step(line) for line in tries):
                    return True
        common = gcd(*(a for a, z in zip(row.coefficients, self.system.variables) if not z.fixed()))
        tries = ["upper r%d 1" % number, "lower r%d 1" % number]
        if common > 1:
            tries.append("class r%d 1 %d" % (number, common))
        return any(self.try_step(line) for line in tries)

    def try_step(self, line: str) -> bool:
        """Takes a step that changes something, and sometimes one that does not; whether there is a contradiction."""
        step = re.fullmatch(STEP, line)
        before = self.ends()
        try:
            contradiction = self.system.contradicted([step])
        except Refused:
            return False
        if contradiction or self.ends() != before or self.pick.random() < 0.02:
            self.steps.append(line)
        return contradiction

    def ends(self) -> list[tuple]:
        return [(form.low, form.high) for form in [*self.system.variables, *self.system.rows]]

    # The lattice

    def lattice(self) -> list[str] | None:
        """The lines, and what they say, in self.search; None: a last step contradicts."""
        rows, variables = self.system.rows, self.system.variables
        numbers = range(1, len(rows) + 1)
        free = [j for j, z in enumerate(variables) if not z.fixed()]
        equations = [i for i in numbers if rows[i - 1].fixed()]
        coordinates = [i for i in numbers if abs(rows[i - 1].low) != INF and abs(rows[i - 1].high) != INF
                       and (i not in equations or self.pick.random() < 0.1) and self.pick.random() < 0.6]
        self.pick.shuffle(equations)
        self.pick.shuffle(coordinates)
        matrix, sides = [], []
        for place, i in enumerate([*equations, *coordinates], -len(equations)):
            row = rows[i - 1]
            matrix.append([row.coefficients[j] for j in free] + [-(place == own) for own in range(len(coordinates))])
            taken = sum(a * z.low for a, z in zip(row.coefficients, variables) if z.fixed())
            sides.append((row.low if place < 0 else 0) - taken)
        columns = len(free) + len(coordinates)
        solution = Hermite(matrix, sides, columns)
        if solution.witness:
            return self.no_solution(solution.witness, equations)
        basis, dual = solution.basis, solution.dual
        pivots = echelon(basis, dual, columns, self.pick)
        search = self.search
        search.sizes, search.equations, search.coordinates = [len(equations), len(coordinates)], equations, coordinates
        search.point, search.basis, search.dual = solution.point, basis, dual
        search.constant = [0] * columns
        if matrix and self.pick.random() < 0.5:
            factor = self.pick.randint(-3, 3)
            search.constant = [factor * a for a in self.pick.choice(matrix)]
        search.levels = [self.level(t, pivots[t], matrix) for t in range(len(basis))]
        lines = ["lattice %d %d %d" % (len(basis), len(equations), len(coordinates)),
                 words(["equations", *equations]), words(["coordinates", *coordinates]), words(["point", *search.point])]
        lines += [words(["basis", *k]) for k in basis] + [words(["dual", *d]) for d in dual]
        lines.append(words(["constant", *search.constant]))
        for level in reversed(search.levels):
            lines.append(words(["level", level.number, level.divisor, len(level.sides), *level.main]))
            lines += [words(["side", *g]) for g in level.sides]
        return lines

    def level(self, t: int, pivot: int, matrix: list[Vector]) -> SimpleNamespace:
        """The pivot's column as the main vector, or a row of the dual, or either with a row of the system."""
        basis, dual, pick = self.search.basis, self.search.dual, self.pick
        columns = len(dual[t])
        main = [int(c == pivot) for c in range(columns)]
        style = pick.random() if self.odd else 1
        if style < 0.3:
            main = list(dual[t])
        if style < 0.5 and matrix:
            factor, row = pick.randint(-2, 2), pick.choice(matrix)
            main = [a + factor * b for a, b in zip(main, row)]
        known = [c for c in range(columns) if not any(k[c] for k in basis[:t])]
        sides = [[int(c == own) * pick.choice([1, -1, 3]) for c in range(columns)] for own in known if pick.random() < 0.4]
        if pick.random() < 0.2:
            sides.append(list(dual[t]))
        divisor = pick.randint(1, 1 + dot(main, main) * pick.choice([1, 9, 99]))
        return SimpleNamespace(number=t, main=main, sides=sides, divisor=divisor)

    def no_solution(self, witness: list[Fraction], equations: list[int]) -> None:
        """The last step: y A whole and y b not, or y A = 0 and y b not 0."""
        common = plain_checker.lcm(*(y.denominator for y in witness))
        terms = [(i, int(y * common)) for i, y in zip(equations, witness) if y]
        total = sum(y * self.system.rows[i - 1].low for i, y in terms)
        tail = "".join(" r%d %d" % term for term in terms)
        if common > 1 and self.try_step("class 0 1 %d" % common + tail):
            return
        line = ("upper" if total < 0 else "lower") + " 0 1" + tail
        if not self.try_step(line):
            raise GivenUp


class Hermite:
    """A x = b in whole numbers: a point, the kernel and its dual; or a witness that there is no x."""

    def __init__(self, matrix: list[Vector], sides: Vector, columns: int) -> None:
        # Columns of the transformation, and rows of its inverse.
        u = [[int(i == j) for i in range(columns)] for j in range(columns)]
        inverse = [list(row) for row in u]
        rank = 0
        pivots: list[list[Fraction]] = []
        chosen: list[int] = []
        self.witness: list[Fraction] | None = None
        values: Vector = []
        for i, row in enumerate(matrix):
            while True:
                entries = [(abs(e), c) for c in range(rank, columns) if (e := dot(row, u[c]))]
                if len(entries) < 2:
                    break
                _, least = min(entries)
                for _, c in entries:
                    if c != least:
                        add(u, inverse, c, least, -(dot(row, u[c]) // dot(row, u[least])))
            known = [Fraction(dot(row, u[c])) for c in range(rank)]
            # Its combination with the rows before that sees none of the chosen columns.
            witness = [Fraction(int(j == i)) for j in range(len(matrix))]
            for t in reversed(range(rank)):
                factor = known[t] / pivots[t][t]
                known = [a - factor * b for a, b in zip(known, pivots[t] + [Fraction(0)] * rank)]
                witness[chosen[t]] -= factor
            rest = sum(y * b for y, b in zip(witness, sides))
            if not entries:
                if rest:
                    self.witness = witness
                    return
                continue
            c = entries[0][1]
            u[c], u[rank], inverse[c], inverse[rank] = u[rank], u[c], inverse[rank], inverse[c]
            pivot = dot(row, u[rank])
            if (rest / pivot).denominator != 1:
                self.witness = [y / pivot for y in witness]
                return
            values.append(int(rest / pivot))
            pivots.append([Fraction(dot(row, u[t])) for t in range(rank + 1)])
            chosen.append(i)
            rank += 1
        self.point = [sum(t * u[r][c] for r, t in enumerate(values)) for c in range(columns)]
        self.basis, self.dual = u[rank:], inverse[rank:]


def add(basis: list[Vector], dual: list[Vector], to: int, what: int, factor: int) -> None:
    """Adds a multiple of a vector to another, and keeps the products with the dual."""
    basis[to] = [a + factor * b for a, b in zip(basis[to], basis[what])]
    dual[what] = [a - factor * b for a, b in zip(dual[what], dual[to])]


def echelon(basis: list[Vector], dual: list[Vector], columns: int, pick: random.Random) -> list[int]:
    """For each row from the last one on a column, positive there, in which all rows before are 0."""
    pivots = [0] * len(basis)
    order = list(range(columns))
    if pick.random() < 0.5:
        pick.shuffle(order)
    for t in reversed(range(len(basis))):
        c = next(c for c in order if any(k[c] for k in basis[:t + 1]))
        while len(rows := [i for i in range(t + 1) if basis[i][c]]) > 1:
            least = min(rows, key=lambda i: abs(basis[i][c]))
            for i in rows:
                if i != least:
                    add(basis, dual, i, least, -(basis[i][c] // basis[least][c]))
        for vectors in (basis, dual):
            vectors[rows[0]], vectors[t] = vectors[t], vectors[rows[0]]
            if vectors is basis:
                sign = 1 if basis[t][c] > 0 else -1
            vectors[t] = [sign * a for a in vectors[t]]
        pivots[t] = c
    for t in reversed(range(len(basis))):
        for i in range(t + 1, len(basis)):
            add(basis, dual, i, t, -(basis[i][pivots[t]] // basis[t][pivots[t]]))
    return pivots
