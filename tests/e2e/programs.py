"""Small programs that several tests share."""

import random


def vector(values):
    return "[ %s]" % "".join("%s " % value for value in values)


def matrix(rows):
    return "[\n%s]" % "".join(vector(row) + "\n" for row in rows)


def opt(dt=(), at=(), ag=(), bg=(), au=(), lu=(), ru=(), dx=None, lx=None, rx=()):
    """The text of a program; digits and lower bounds are 0 unless given."""
    zeros = [0] * len(rx)
    items = [vector(dt), matrix(at), matrix(ag), vector(bg), matrix(au), vector(lu), vector(ru),
             vector(zeros if dx is None else dx), vector(zeros if lx is None else lx), vector(rx)]
    return "\n".join(items) + "\n"


# Two variables in 0..4 with 1 <= x1 + x2 <= 3: nine solutions, a lattice that can be written down by hand, and neither a
# corner of the box nor its centre among the solutions.
SMALL = opt(au=[[1, 1]], lu=[1], ru=[3], rx=[4, 4])

# The lattice of SMALL: columns are the inequation, x1, x2 and the inhomogeneous coordinate.
SMALL_LATTICE = """[
[ -8 -4 -4 1 ]
[ 4 2 0 0 ]
[ 4 0 2 0 ]
]

[ -4 -4 -4 1 ]
[ 4 4 4 1 ]

[ 2 1 1 1 ]
4

[ 0 0 ]
[ 4 4 ]

0
(-inf, inf)

%s

// B -- l, r -- c, R -- lx, rx, fx -- tu, At, dt, lrtu
"""

# A target that takes several improvements, so that lattices are regenerated on the way.
TARGET = opt(dt=["-inf"], at=[[5, 9, 4, 11]], au=[[3, 7, 2, 8], [2, 4, 3, 9]], lu=[30, 25], ru=[36, 33], rx=[6, 6, 6, 6])

# Many solutions, and a run that with --sol=0 never ends by itself.
ENDLESS = opt(au=[[7, 3, 9, 4, 6, 2], [2, 8, 3, 6, 5, 7], [4, 4, 1, 9, 2, 5]], lu=[60, 65, 50], ru=[64, 70, 56], rx=[5] * 6)

# 3 x + 5 y = 7 has whole solutions, none of them within 0..2; preparation cannot tell.
NOTHING = opt(ag=[[3, 5]], bg=[7], rx=[2, 2])

# As TARGET, with more variables and wider boxes: the improvements come over a longer time.
LONG_TARGET = opt(dt=["-inf"], at=[[5, 9, 4, 11, 7, 13, 6, 3]], au=[[3, 7, 2, 8, 5, 9, 1, 4], [2, 4, 3, 9, 8, 1, 6, 5]],
                  lu=[300, 250], ru=[340, 290], rx=[30] * 8)


def market_split(rows, columns, seed):
    """A hard system of equations in 0/1 variables (Cornuejols and Dawande, 1998)."""
    draw = random.Random(seed)
    ag = [[draw.randrange(100) for _ in range(columns)] for _ in range(rows)]
    return opt(ag=ag, bg=[sum(row) // 2 for row in ag], rx=[1] * columns)


def knapsacks(rows, columns, digits, seed):
    """Two-sided inequations with long coefficients: a reduction that takes long."""
    draw = random.Random(seed)
    au = [[draw.randrange(10**digits) for _ in range(columns)] for _ in range(rows)]
    middle = [sum(row) // 2 for row in au]
    return opt(au=au, lu=[m - 1 for m in middle], ru=[m + 1 for m in middle], rx=[1] * columns)


def equations(rows, columns, digits, seed):
    """Equations with long coefficients and a known solution in a wide box."""
    draw = random.Random(seed)
    ag = [[draw.randrange(10**digits) for _ in range(columns)] for _ in range(rows)]
    x = [draw.randrange(100) for _ in range(columns)]
    return opt(ag=ag, bg=[sum(a * b for a, b in zip(row, x)) for row in ag], rx=[100] * columns)
