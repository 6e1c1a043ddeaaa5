"""Random programs for latbox-all whose points another program can list: from its number alone each time the same text.

A program is drawn until it is of the kind that its number asks for (no point, one, many; a search of some size or a
small one), or its tries are used up.
"""

import contextlib
import itertools
import random
from fractions import Fraction

import checker
from complete_count import INF, MOST_TRIED, TooMany, Whole, propagated, rank_of, solved_points, tried_points
from programs import opt

KINDS = ("none", "one", "many")
# A search of at least this rank is not small.
RANK = 4
TRIES = 40


class Candidate:
    """A program with its points, as tuples of fractions, and the rank of its search."""

    def __init__(self, text, listing):
        self.text = text
        self.program = checker.Program(text)
        self.whole = Whole(self.program)
        self.rank = rank_of(self.whole)
        self.listing = listing
        self.points = None

    def list(self, most=None):
        """Whether these are all points, if at most so many are wanted. Raises TooMany."""
        found = list(itertools.islice(self.listing(self.whole), None if most is None else most + 1))
        self.points = set(map(self.whole.x, found))
        return most is None or len(found) <= most

    def is_of(self, kind, large):
        """Whether it is, at the least cost; if so, its points are listed."""
        if (self.rank >= RANK) != large:
            return False
        return self.list({"none": 0, "one": 1}.get(kind)) and self.kind == kind

    @property
    def kind(self):
        return KINDS[min(len(self.points), 2)]


def text_of(value):
    if value in (INF, -INF):
        return "inf" if value > 0 else "-inf"
    value = Fraction(value)
    return str(value.numerator) if value.denominator == 1 else "%d/%d" % (value.numerator, value.denominator)


def shown(rows):
    return [[text_of(a) for a in row] for row in rows]


def line(values):
    return [text_of(value) for value in values]


def drawn(number, draw, listing):
    """The first candidate that is what the number asks for, or the last one whose points can be listed; None: there is
    none."""
    pick = random.Random(number)
    kind = KINDS[number % 3]
    large = number // 3 % 2 == 1
    candidates = []
    for _ in range(TRIES):
        candidates.append(Candidate(draw(pick, number, kind, large).text(), listing))
        with contextlib.suppress(TooMany):
            if candidates[-1].is_of(kind, large):
                return candidates[-1]
    for candidate in reversed(candidates):
        with contextlib.suppress(TooMany):
            candidate.list()
            return candidate
    return None


def ordinary(number):
    """Programs of all kinds in small boxes; every tenth has long coefficients."""
    return drawn(number, Ordinary, tried_points)


def long(number):
    """Coefficients of 20 to 60 digits, boxes of up to 10^6 steps."""
    while True:
        candidate = drawn(number, Long, lambda whole: solved_points(whole, Long.MOST_POINTS))
        if candidate:
            return candidate
        number += 1000003


class Ordinary:
    """All is drawn at random; the box holds few enough points to try all."""

    def __init__(self, pick, number, kind, large):
        self.random = pick
        self.kind = kind
        self.n = pick.randint(5, 10) if large else pick.randint(1, 8)
        self.planted = kind != "none" or pick.random() < 0.2
        self.size = pick.choice([2, 5, 9, 40])
        self.fractions = pick.random() < 0.2
        # Coefficients that no floating-point number holds: 20 to 60 digits.
        if number % 10 == 9:
            self.size = 10 ** pick.randint(20, 60)
        self.dx = [pick.choice([0, 0, 0, 0, 0, 1]) if self.n <= 5 else 0 for _ in range(self.n)]
        self.boxes()

    def boxes(self):
        pick = self.random
        budget = MOST_TRIED
        self.lx, self.rx, self.grid = [], [], []
        for digits in self.dx:
            scale = 10 ** digits
            width = pick.randint(0, 9) if self.n <= 4 else pick.choice([1, 1, 1, 2, 3])
            if pick.random() < 0.05:
                width = 0
            width = min(width, budget - 1)
            budget //= width + 1
            low = pick.choice([0, 0, 0, pick.randint(-6, 6)])
            self.grid.append([Fraction(low + k, scale) for k in range(width + 1)])
            loose = pick.random() < 0.1
            self.lx.append(Fraction(low, scale) - (Fraction(1, 3 * scale) if loose else 0))
            self.rx.append(Fraction(low + width, scale) + (Fraction(1, 3 * scale) if loose else 0))
        self.point = [pick.choice(values) for values in self.grid]

    def coefficient(self):
        pick = self.random
        if pick.random() < 0.25:
            return Fraction(0)
        value = Fraction(pick.randint(-self.size, self.size) if pick.random() < 0.6 else pick.randint(1, self.size))
        return value / pick.choice([1, 2, 3, 10]) if self.fractions else value

    def row(self):
        return [self.coefficient() for _ in range(self.n)]

    def value(self, row):
        return sum((a * x for a, x in zip(row, self.point)), Fraction(0))

    def side(self, row):
        """The row's value at the planted point, or somewhere near."""
        return self.value(row) + (0 if self.planted else self.random.randint(-self.size, self.size))

    def counts(self):
        """How many equations, inequations, targets."""
        pick = self.random
        equations = pick.choice([0, 0, 1, 1, 2, 3]) if self.n > 1 else pick.choice([0, 0, 1])
        inequations = pick.choice([0, 1, 2, 3])
        targets = pick.choice([0, 0, 1, 1, 2, 3])
        return (equations, inequations, targets) if equations + inequations + targets else (1, 0, 0)

    def inequation(self, row):
        """Two sides around the planted point, or one."""
        pick = self.random
        middle = self.side(row)
        # A single point has little room.
        room = 2 * self.size if self.kind == "many" else pick.choice([0, self.size // 4, 2 * self.size])
        low = middle - Fraction(pick.randint(0, room), pick.choice([1, 1, 2]))
        high = middle + pick.randint(0, room)
        kind = pick.random()
        if kind < 0.25:
            low = -INF
        elif kind < 0.5:
            high = INF
        elif kind < 0.6:
            low = high = middle
        return low, high

    def text(self):
        pick = self.random
        equations, inequations, targets = self.counts()
        ag = [self.row() for _ in range(equations)]
        bg = [self.side(row) for row in ag]
        if ag and pick.random() < 0.15:
            factor = pick.choice([2, 3, -1])
            ag.append([factor * a for a in ag[0]])
            bg.append(factor * bg[0] + (pick.random() < 0.2))
        au = [self.row() for _ in range(inequations)]
        sides = [self.inequation(row) for row in au]
        at = [self.row() for _ in range(targets)]
        dt = [pick.choice([-INF, INF, self.value(row) + pick.randint(-4, 4)]) for row in at]
        parts = dict(dt=line(dt), at=shown(at), ag=shown(ag), bg=line(bg), au=shown(au),
                     lu=line(low for low, _ in sides), ru=line(high for _, high in sides), dx=self.dx)
        text = opt(**parts, lx=line(self.lx), rx=line(self.rx))
        return self.opened(text, parts) if pick.random() < 0.15 else text

    def opened(self, text, parts):
        """The program with an infinite bound or several that the rows close again, if they do."""
        lx = [-INF if self.random.random() < 0.3 else low for low in self.lx]
        rx = [INF if self.random.random() < 0.3 else high for high in self.rx]
        opened = opt(**parts, lx=line(lx), rx=line(rx))
        box = propagated(Whole(checker.Program(opened)))
        if box is None:
            return opened
        tried = 1
        for low, high in box:
            tried *= high - low + 1
        return opened if tried <= MOST_TRIED else text


class Long:
    """Two wide variables and some that are narrow, so that all values of these can be tried.

    Rows of random long numbers leave hardly ever more than the planted point. So most rows are long multiples of short
    ones, alone, or with another short row added: then both must hold, unless the box is wide enough for an exchange.
    """

    MOST_POINTS = 2000

    def __init__(self, pick, _, kind, large):
        self.random = pick
        self.kind = kind
        self.narrow = pick.randint(3, 5) if large else pick.randint(0, 4)
        self.n = self.narrow + pick.choice([1, 2, 2])
        self.planted = kind != "none" or pick.random() < 0.3
        self.lx, self.rx = [], []
        for j in range(self.n):
            width = pick.randint(1, 3) if j < self.narrow else pick.choice([10**3, 10**5, 10**6]) - pick.randint(0, 500)
            low = pick.choice([0, 0, -width // 2, pick.randint(-10**6, 10**6)])
            self.lx.append(low)
            self.rx.append(low + width)
        self.point = [pick.randint(low, high) for low, high in zip(self.lx, self.rx)]

    def length(self):
        """A number of 20 to 60 digits."""
        return self.random.randint(1, 9) * 10 ** self.random.randint(19, 59) + self.random.randint(0, 10**19)

    def short(self):
        return [self.random.choice([0, 1, 1, self.random.randint(-9, 9), self.random.randint(-999, 999)])
                for _ in range(self.n)]

    def row(self):
        pick = self.random
        style = pick.random()
        if style < 0.25:
            size = self.length()
            return [pick.randint(-size, size) for _ in range(self.n)]
        first, factor = self.short(), self.length()
        if style < 0.6:
            return [factor * a for a in first]
        return [factor * a + b for a, b in zip(first, self.short())]

    def value(self, row):
        return sum(a * x for a, x in zip(row, self.point))

    def side(self, row):
        if self.planted:
            return self.value(row)
        return self.value(row) + self.random.choice([1, -1, row[-1], max(row) // 2])

    def inequation(self, row):
        pick = self.random
        size = max(map(abs, row))
        room = size * pick.choice([0, 1, 3, 30]) // pick.choice([1, 2, 7])
        middle = self.side(row)
        low, high = middle - pick.randint(0, room), middle + pick.randint(0, room)
        kind = pick.random()
        return (-INF, high) if kind < 0.2 else (low, INF) if kind < 0.4 else (low, high)

    def text(self):
        pick = self.random
        ag = [self.row() for _ in range(pick.choice([0, 1, 1, 1, 2]) if self.n > 1 else 0)]
        au = [self.row() for _ in range(pick.choice([0, 1, 1, 2]) if ag else pick.choice([1, 2, 3]))]
        sides = [self.inequation(row) for row in au]
        at = [self.row() for _ in range(pick.choice([0, 0, 1, 1, 2, 3]))]
        dt = [pick.choice([-INF, INF, self.value(row) + pick.choice([0, 1, max(row) // 3])]) for row in at]
        return opt(dt=line(dt), at=shown(at), ag=shown(ag), bg=line(self.side(row) for row in ag), au=shown(au),
                   lu=line(low for low, _ in sides), ru=line(high for _, high in sides), dx=[0] * self.n,
                   lx=line(self.lx), rx=line(self.rx))
