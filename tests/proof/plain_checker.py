#!/usr/bin/env python3
"""Checks a proof of latbox-all as a stranger would, plain and slow: plain_checker.py PROOF P.opt

Written from docs/proof.md (and docs/formats.md, for the program) alone, without a look at the search or at the other
checker, so that each finds what the other overlooks. Names and order are those of the document.
"""

import pathlib
import re
import sys
from collections import namedtuple
from collections.abc import Callable
from fractions import Fraction
from math import ceil, floor, gcd, lcm

INF = float("inf")
PRIME = 2147483647
Vector = list[int]
Row = list[Fraction]
Malformed = ValueError


# A line of `derive`: upper, lower or nothing; x, r or nothing, and its number; q, Q; the terms.
STEP = r"(?:(upper|lower)|class) (?:([xr])(\d+)|0) (-?\d+)(?(1)| (-?\d+))((?: r\d+ -?\d+)*)"
Level = namedtuple("Level", "number divisor main sides")


class Refused(Exception):
    """A proof that does not prove."""


def require(condition: object, reason: str, *values: object) -> None:
    if not condition:
        raise Refused(reason % values)


def dot(a: list, b: list):
    return sum(x * y for x, y in zip(a, b))


class Program:
    """A .opt file: what is feasible, and the norms of what is."""

    def __init__(self, text: str) -> None:
        # A slash directly behind a digit belongs to the number. Thresholds do not count.
        plain = re.sub(r"(?<![0-9])(//[^\n]*|/\*.*?\*/)", " ", text, flags=re.DOTALL)
        plain = re.sub(r"=\s*\[[^\]]*\]", " ", plain, count=1)
        self.tokens = ["", *re.findall(r"[\[\]=]|[^\s\[\]=]+", plain)[::-1]]
        self.dt, self.at, self.ag, self.bg = self.item(), self.item(self.item), self.item(self.item), self.item()
        self.au, self.lu, self.ru, dx, self.lx, self.rx = self.item(self.item), *(self.item() for _ in range(5))
        pairs = [(self.dt, self.at), (self.bg, self.ag), (self.lu, self.au), (self.ru, self.au)]
        pairs += [(row, self.rx) for row in [dx, self.lx, *self.at, *self.ag, *self.au]]
        finite = [a for row in [*self.at, *self.ag, *self.au, self.bg, dx] for a in row]
        sides, ends = [*zip(self.lu, self.ru)], [*zip(self.lx, self.rx)]
        fit = self.rx and all(len(a) == len(b) for a, b in pairs) and all(low <= high for low, high in sides + ends)
        whole = all(d % 1 == 0 and d <= 10000 for d in dx) and INF not in map(abs, finite)
        if not fit or not whole or (-INF, INF) in sides or (INF, INF) in ends or (-INF, -INF) in ends:
            raise Malformed("the program is none")
        self.scale = [10 ** max(int(d), 0) for d in dx]

    def item(self, element: Callable | None = None) -> list:
        """A vector, or, of such items, a matrix."""
        if self.tokens.pop() != "[":
            raise Malformed("the program has no bracket where one is due")
        values = []
        while self.tokens[-1] != "]":
            values.append(element() if element else self.number(self.tokens.pop()))
        return values if self.tokens.pop() else []

    @staticmethod
    def number(token: str) -> Fraction | float:
        """Whole, decimal, fraction, mixed number, inf."""
        if token in ("inf", "-inf"):
            return float(token)
        unsigned = r"(\d+/0*[1-9]\d*|\d*[.,]\d*[1-9]\d*|\d+)"
        form = re.fullmatch(r"([+-]?)(?:(\d+):(?=\d+/))?" + unsigned, token, re.ASCII)
        if not form:
            raise Malformed("the program has no number %s" % token)
        value = int(form[2] or 0) + Fraction(form[3].replace(",", "."))
        return -value if form[1] == "-" else value

    def feasible(self, x: Row) -> bool:
        rows = [*zip(self.ag, self.bg, self.bg), *zip(self.au, self.lu, self.ru)]
        return (all((a * s).denominator == 1 and l <= a <= r for a, s, l, r in zip(x, self.scale, self.lx, self.rx))
                and all(low <= dot(row, x) <= high for row, low, high in rows))

    def norms(self, x: Row) -> tuple[Fraction, Fraction]:
        """T and S."""
        values = [(dot(row, x), d) for row, d in zip(self.at, self.dt)]
        slack = Fraction(sum(abs(value - d) for value, d in values if abs(d) != INF))
        return slack + sum(value if d < 0 else -value for value, d in values if abs(d) == INF), slack


class Proof:
    """The file. Each line is matched as a whole; rationals are in lowest terms."""

    def __init__(self, text: str) -> None:
        self.lines, self.at = [" ".join(re.split("[ \t]+", line.strip(" \t"))) for line in text.split("\n")], 0
        self.next("latbox-proof 1")
        verdict = self.next(r"verdict (?:(none)|(all) (\d+)|(optimum)( RATIONAL RATIONAL)(?: (\d+))?)")
        self.kind = verdict[1] or verdict[2] or verdict[4]
        self.norms = self.rationals(verdict[5] or "")
        self.count = int(verdict[3] or verdict[6]) if verdict[3] or verdict[6] else None
        self.point = self.rationals(self.next("point((?: RATIONAL)*)")[1]) if self.norms else None
        self.searches = [Search(self)]
        while self.lines[self.at:self.at + 1] != ["end"]:
            self.searches.append(Search(self))
        if self.lines[self.at:] != ["end", ""]:
            raise Malformed("line %d: more behind the end, or no line end" % (self.at + 1))

    def next(self, pattern: str) -> re.Match[str]:
        self.at += 1
        pattern = pattern.replace("RATIONAL", r"-?\d+(?:/\d+)?").replace("NUMBERS", r"((?: -?\d+)*)")
        match = re.fullmatch(pattern, self.lines[self.at - 1], re.ASCII) if self.at <= len(self.lines) else None
        if not match:
            raise Malformed("line %d does not follow the grammar" % self.at)
        return match

    def vectors(self, word: str, count: int) -> list[Vector]:
        return [numbers(self.next(word + "NUMBERS")[1]) for _ in range(count)]

    def rationals(self, text: str) -> Row:
        parts = [[*map(int, word.split("/"))] for word in text.split()]
        if any(len(part) == 2 and (part[1] < 2 or gcd(*part) != 1) for part in parts):
            raise Malformed("line %d: not in lowest terms" % self.at)
        return [Fraction(*part) for part in parts]


def numbers(text: str) -> Vector:
    return [int(word) for word in text.split()]


class Search:
    def __init__(self, file: Proof) -> None:
        self.goal = file.next("search (points|better|slack|equal)")[1]
        rows = [file.next("(norm|distance|linear$)NUMBERS") for _ in range(int(file.next(r"objective (\d+)")[1]))]
        self.objective = [(row[1], numbers(row[2])) for row in rows]
        self.steps = [file.next(STEP) for _ in range(int(file.next(r"derive (\d+)")[1]))]
        sizes = file.next(r"contradiction|lattice (\d+) (\d+) (\d+)")
        self.contradiction = sizes[1] is None
        if not self.contradiction:
            rank, *self.sizes = map(int, sizes.groups())
            self.equations = numbers(file.next(r"equations((?: \d+)*)")[1])
            self.coordinates = numbers(file.next(r"coordinates((?: \d+)*)")[1])
            [self.point] = file.vectors("point", 1)
            self.basis, self.dual = file.vectors("basis", rank), file.vectors("dual", rank)
            [self.constant] = file.vectors("constant", 1)
            found = (file.next(r"level (\d+) (-?\d+) (\d+)NUMBERS") for _ in range(rank))
            self.levels = [Level(int(m[1]), int(m[2]), numbers(m[4]), file.vectors("side", int(m[3]))) for m in found][::-1]
            walk = file.next(r"walk nodes (\d+) points (\d+)")
            self.nodes, self.points, self.walk_line = int(walk[1]), int(walk[2]), file.at


class Form:
    """A variable, a row or 0, times a factor: coefficients of the z_j, and a range, open where an end is infinite."""

    def __init__(self, coefficients: Row, factor: int, low: Fraction | float, high: Fraction | float) -> None:
        if low == INF or high == -INF:
            coefficients, low, high = [a * 0 for a in coefficients], Fraction(1), Fraction(0)
        self.coefficients = [int(a * factor) for a in coefficients]
        self.low = low if low == -INF else ceil(low * factor)
        self.high = high if high == INF else floor(high * factor)

    def fixed(self) -> bool:
        return self.low == self.high

    def to_class(self, rest: int, modulus: int) -> None:
        """Moves the ends inwards to numbers that are rest by this modulus."""
        self.low = self.low if self.low == -INF else self.low + (rest - self.low) % modulus
        self.high = self.high if self.high == INF else self.high - (self.high - rest) % modulus


def common_denominator(values: Row) -> int:
    return lcm(*(a.denominator for a in values))


class System:
    """Variables and rows of one search, with their present ranges."""

    def __init__(self, program: Program, search: Search, norms: Row) -> None:
        def of_z(row: Row) -> Row:
            return [a / s for a, s in zip(row, self.scale)]

        self.scale, self.goal = program.scale, search.goal
        units = [[Fraction(i == j) for i in range(len(program.rx))] for j in range(len(program.rx))]
        self.zero = Form(units[0], 0, Fraction(0), Fraction(0))
        self.variables = [Form(of_z(unit), *ends) for unit, *ends in zip(units, self.scale, program.lx, program.rx)]
        rows = [*zip(program.ag, program.bg, program.bg), *zip(program.au, program.lu, program.ru)]
        self.rows = [Form(of_z(row), common_denominator(of_z(row)), low, high) for row, low, high in rows]
        self.targets = [(of_z(row), d) for row, d in zip(program.at, program.dt)]
        self.c = common_denominator([a for row, d in self.targets for a in [*row, d] if abs(a) != INF])
        require(common_denominator([self.c * t for t in norms]) == 1, "no point has these norms")
        self.rows += [self.objective(kind, signs, norms) for kind, signs in search.objective]

    def objective(self, kind: str, signs: Vector, norms: Row) -> Form:
        require(kind == "norm" and self.goal == "better" or self.goal in ("slack", "equal"), "no row for %s", self.goal)
        linear = [(1 if d < 0 else -1, row, 0) for row, d in self.targets if abs(d) == INF]
        wanted = [(row, d) for row, d in self.targets if abs(d) != INF]
        require(len(signs) == (kind != "linear") * len(wanted) and {*signs} <= {-1, 0, 1}, "wrong signs")
        parts = [(s, row, d) for s, (row, d) in zip(signs, wanted)] + linear * (kind != "distance")
        total = [sum((s * row[j] for s, row, _ in parts), Fraction(0)) for j in range(len(self.variables))]
        norm = {"norm": norms[0], "distance": norms[1], "linear": norms[0] - norms[1]}[kind]
        side, unit = norm + sum(s * d for s, _, d in parts), Fraction(1, self.c)
        if kind == "linear":
            return Form(total, self.c, *((side, side) if self.goal == "equal" else (side + unit, INF)))
        return Form(total, self.c, -INF, side - unit * (self.goal == ("better" if kind == "norm" else "slack")))

    def named(self, kind: str, number: int) -> Form:
        forms = self.variables if kind == "x" else self.rows
        require(kind == "0" or 1 <= number <= len(forms), "there is no %s%d", kind, number)
        return self.zero if kind == "0" else forms[number - 1]

    def contradicted(self, steps: list[re.Match[str]]) -> bool:
        """Whether the ranges are a contradiction, or become one by the steps."""
        forms = [*self.variables, *self.rows, self.zero]
        return any(f.low > f.high for f in forms) or any(
            self.step(step) or any(f.low > f.high for f in forms) for step in steps)

    def step(self, step: re.Match[str]) -> bool:
        """Whether the step shows a contradiction that no range shows."""
        f, q, modulus = self.named(step[2] or "0", int(step[3] or 0)), int(step[4]), int(step[5] or 1)
        terms = [(self.named("r", int(row)), int(y)) for row, y in re.findall(r"r(\d+) (-?\d+)", step[6])]
        require(q > 0 and modulus > 0, "a step by 0 or less")
        require(len({row for row, _ in terms}) == len(terms), "a row stands twice in a step")
        c = [q * a - sum(y * r.coefficients[j] for r, y in terms) for j, a in enumerate(f.coefficients)]
        parts = terms + list(zip(self.variables, c))
        if step[1]:
            up = step[1] == "upper"
            ends = [(a, form.high if (a > 0) == up else form.low) for form, a in parts if a]
            require(INF not in [abs(end) for _, end in ends], "a step takes an end that is not there")
            bound = sum(a * end for a, end in ends)
            f.high = min(f.high, bound // q) if up else f.high
            f.low = f.low if up else max(f.low, -(-bound // q))
            return False
        require(all(row.fixed() for row, _ in terms), "a class by a row that has a range")
        require(all(z.fixed() or a % modulus == 0 for z, a in zip(self.variables, c)), "the class is not known")
        rest, g = sum(a * form.low for form, a in parts if form.fixed()), gcd(q, modulus)
        if rest % g == 0:
            f.to_class(rest // g * pow(q // g, -1, modulus // g), modulus // g)
        return rest % g != 0


def rank_modulo_prime(matrix: list[Vector], columns: int) -> int:
    rows, rank = [[a % PRIME for a in row] for row in matrix], 0
    for column in range(columns):
        if pivot := next((row for row in rows if row[column]), None):
            rows.remove(pivot)
            inverse, rank = pow(pivot[column], -1, PRIME), rank + 1
            rows = [[(a - row[column] * inverse * b) % PRIME for a, b in zip(row, pivot)] for row in rows]
    return rank


class Walk:
    """The lattice of one search, its cuts, and the walk."""

    def __init__(self, system: System, search: Search, counts: Callable[[Row], bool]) -> None:
        """counts(x) tells whether the search counts x."""
        self.search, self.counts, self.system, self.nodes, self.points = search, counts, system, 0, 0
        require(search.sizes == [len(search.equations), len(search.coordinates)], "other numbers of rows than told")
        require(search.sizes == [len({*search.equations}), len({*search.coordinates})], "a row stands twice")
        self.free = [j for j, z in enumerate(system.variables) if not z.fixed()]
        equations = [system.named("r", number) for number in search.equations]
        coordinates = [system.named("r", number) for number in search.coordinates]
        columns = [system.variables[j] for j in self.free] + coordinates
        require(all(abs(end) != INF for column in columns for end in (column.low, column.high)), "an open column")
        vectors = [search.point, search.constant, *search.basis, *search.dual]
        vectors += [vector for level in search.levels for vector in (level.main, *level.sides)]
        require(all(len(vector) == len(columns) for vector in vectors), "a vector without a number for each column")
        self.require_conditions(equations, coordinates, len(columns))
        self.find_ends(columns)

    def require_conditions(self, equations: list[Form], coordinates: list[Form], columns: int) -> None:
        require(all(row.fixed() for row in equations), "an equation with a range")
        x0, basis, dual, matrix = self.search.point, self.search.basis, self.search.dual, []
        for i, row in enumerate(equations + coordinates, -len(equations)):
            matrix.append([row.coefficients[j] for j in self.free] + [-(i == own) for own in range(len(coordinates))])
            side = -sum(a * z.low for a, z in zip(row.coefficients, self.system.variables) if z.fixed())
            require(dot(matrix[-1], x0) == side + (row.low if i < 0 else 0), "A x0 is not b")
            require(not any(dot(matrix[-1], k) for k in basis), "A K is not 0")
        require(all(dot(d, k) == (i == j) for i, d in enumerate(dual) for j, k in enumerate(basis)), "D K is not I")
        require(rank_modulo_prime(matrix, columns) >= columns - len(basis), "the basis may be a part of the kernel")
        require(not any(dot(self.search.constant, k) for k in basis), "the constant is not constant")
        for t, level in enumerate(self.search.levels):
            require(level.number == t and level.divisor > 0, "level %d: another is due, or no divisor", level.number)
            require(not any(dot(g, k) for g in [level.main, *level.sides] for k in basis[:t]), "level %d: no cut", t)
            require(dot(level.main, basis[t]) > 0, "level %d: the main vector leads nowhere", t)

    def find_ends(self, columns: list[Form]) -> None:
        """Classes, reach and widths of the columns, and whether they leave anything."""
        self.possible, x0 = True, self.search.point
        for c, column in enumerate(columns):
            modulus = gcd(*(k[c] for k in self.search.basis))
            if modulus:
                column.to_class(x0[c], modulus)
            self.possible &= column.low <= column.high and (modulus > 0 or column.low <= x0[c] <= column.high)
            if not modulus:
                column.low = column.high = x0[c]
        self.ends = [(column.low, column.high) for column in columns]
        self.reach = []
        for d in self.search.dual:
            parts = [(a * low, a * high) for a, (low, high) in zip(d, self.ends)]
            self.reach.append((sum(map(min, parts)) - dot(d, x0), sum(map(max, parts)) - dot(d, x0)))

    def run(self, most: int) -> None:
        """Counts nodes and points, refused if there are more nodes than these."""
        self.most = most
        if self.possible:
            u = [2 * x - low - high for x, (low, high) in zip(self.search.point, self.ends)]
            start = [1024 * a for a in self.search.constant]
            self.descend(len(self.search.basis), u, start, dot(start, u))

    def descend(self, t: int, u: Vector, w: Vector, v: int) -> None:
        """A node of level t: u is 2 v - l - h for the point with the rows that are chosen, w and v are its W and V."""
        if t == 0:
            self.leaf(u)
            return
        t -= 1
        level, k, (alpha, beta) = self.search.levels[t], self.search.basis[t], self.reach[t]
        start, slope = dot(level.main, u), 2 * dot(level.main, k)
        down, up = min(-start // slope, beta), max(-start // slope + 1, alpha)
        while down >= alpha or up <= beta:
            upwards = down < alpha or up <= beta and 2 * start + (up + down) * slope <= 0
            chosen, up, down = (up, up + 1, down) if upwards else (down, up, down - 1)
            self.nodes += 1
            require(self.nodes <= self.most, "more than %d nodes", self.most)
            p = start + chosen * slope
            a = (2048 * p + level.divisor) // (2 * level.divisor)
            here = [x + 2 * chosen * y for x, y in zip(u, k)]
            sums, value = [x + a * y for x, y in zip(w, level.main)], v + a * p
            sides = [(dot(g, here), g, dot(g, k)) for g in level.sides]
            closed = self.refuted([(p, level.main, 1), (value, sums, a), *sides])
            alpha, beta = INF if -1 in closed else alpha, -INF if 1 in closed else beta
            if not closed:
                self.descend(t, here, sums, value)

    def refuted(self, tests: list[tuple[int, Vector, int]]) -> set[int]:
        """The directions that the first test closes which refutes the candidate; none: it stands."""
        for value, g, x in tests:
            if abs(value) > sum(abs(a) * (high - low) for a, (low, high) in zip(g, self.ends)):
                x = -x if value < 0 else x
                return {1} if x > 0 else {-1} if x < 0 else {1, -1}
        return set()

    def leaf(self, u: Vector) -> None:
        values = [(a + low + high) // 2 for a, (low, high) in zip(u, self.ends)]
        z = {**{j: form.low for j, form in enumerate(self.system.variables)}, **dict(zip(self.free, values))}
        if all(low <= value <= high for value, (low, high) in zip(values, self.ends)):
            self.points += self.counts([Fraction(z[j], s) for j, s in enumerate(self.system.scale)])


def verdict(program: Program, proof: Proof, compare: Callable[[Search, Walk, int], None]) -> str:
    """What the proof proves, if compare accepts each walk and the number of points that is wanted. Raises Refused."""
    def counts(goal: str, x: Row) -> bool:
        (t, s), (target, slack) = program.norms(x), norms or [0, 0]
        return program.feasible(x) and {"points": True, "better": t < target, "slack": t == target and s < slack,
                                        "equal": [t, s] == norms}[goal]

    count, norms, goals = proof.count, proof.norms, {"points": proof.count or 0}
    require(count != 0, "a count of 0")
    if proof.point is not None:
        require(program.dt and len(proof.point) == len(program.rx), "no targets, or a point of another length")
        require(program.feasible(proof.point) and program.norms(proof.point) == tuple(norms), "the point or its norms")
        linear = any(any(row) for row, d in zip(program.at, program.dt) if abs(d) == INF)
        goals = {"better": 0, **({"slack": 0} if norms[1] and linear else {}), **({"equal": count} if count else {})}
    require([search.goal for search in proof.searches] == list(goals), "the searches are not %s", list(goals))
    for search in proof.searches:
        system = System(program, search, norms)
        contradiction = system.contradicted(search.steps)
        right = search.contradiction == contradiction and (not contradiction or goals[search.goal] == 0)
        require(right, "%s: contradiction is %s", search.goal, contradiction)
        if not contradiction:
            compare(search, Walk(system, search, lambda x: counts(search.goal, x)), goals[search.goal])
    told = [*norms[:1], *[norm for norm in norms[1:] if norm]] if norms else [count] if count else []
    return " ".join(map(str, [proof.kind, *told])) + (", %d points" % count if norms and count else "")


def compare(search: Search, walk: Walk, wanted: int) -> None:
    walk.run(search.nodes)
    require(walk.nodes == search.nodes, "%s: %d nodes, not %d", search.goal, walk.nodes, search.nodes)
    require(walk.points == search.points == wanted, "%s: %d points, not %d", search.goal, walk.points, wanted)


def main(arguments: list[str]) -> int:
    sys.set_int_max_str_digits(0)
    sys.setrecursionlimit(10**6)
    try:
        proof, program = (pathlib.Path(path).read_bytes().decode("latin-1") for path in arguments[1:])
        print("proof: " + verdict(Program(program), Proof(proof), compare))
    except Refused as reason:
        print("proof: refused: %s" % reason)
        return 1
    except (Malformed, OSError) as reason:
        print("%s: %s" % (arguments[0], reason), file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
