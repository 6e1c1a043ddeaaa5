"""Magic squares: all of order 3, one after the other, or one that has given cells.

x[i, j, k] is 1 if the number k stands in cell i, j. Each cell has a number, each number has a cell, and rows, columns and the two
diagonals have the same sum.

    python3 magic_squares.py [ORDER [ROW COLUMN NUMBER]...]
    python3 magic_squares.py 4  1 1 16  1 2 3  4 4 1

Rows and columns count from 1. With order 3 it brings all squares, else one. Order 4 takes more than a minute without given cells, and
seconds with the three above.
"""

import sys
from itertools import product

import latbox


def magic_model(n, given=()):
    """A latbox.Model; given: triples (i, j, k) of cells that hold their number already."""
    cells, numbers = list(product(range(n), repeat=2)), range(1, n * n + 1)
    position = {entry: p for p, entry in enumerate(product(range(n), range(n), numbers))}
    rows, sides = [], []

    def equation(terms, side):
        row = [0] * len(position)
        for entry, factor in terms:
            row[position[entry]] = factor
        rows.append(row)
        sides.append(side)

    for i, j in cells:
        equation([((i, j, k), 1) for k in numbers], 1)
    for k in numbers:
        equation([((i, j, k), 1) for i, j in cells], 1)
    lines = [[(i, j) for j in range(n)] for i in range(n)] + [[(i, j) for i in range(n)] for j in range(n)]
    lines += [[(i, i) for i in range(n)], [(i, n - 1 - i) for i in range(n)]]
    for line in lines:
        equation([((i, j, k), k) for i, j in line for k in numbers], n * (n * n + 1) // 2)
    lower = [int(entry in given) for entry in position]
    return latbox.matrix_model(rows, sides, lower, 1)


def square(n, x):
    """Its rows. The values of a cell follow one another."""
    cells = [x[c:c + n * n].index(1) + 1 for c in range(0, n**4, n * n)]
    return [cells[i:i + n] for i in range(0, n * n, n)]


def squares(n, given):
    """All of order 3, one at most of a larger order, in five minutes."""
    model = magic_model(n, given)
    found = model.solutions() if n <= 3 else model.solve(time=300).points
    for x in found:
        yield square(n, x)


def main(n=3, *given):
    count = 0
    for rows in squares(n, [(i - 1, j - 1, k) for i, j, k in zip(*[iter(given)] * 3)]):
        print("\n".join(" ".join("%2d" % k for k in row) for row in rows), end="\n\n")
        count += 1
    print("%d square%s" % (count, "s" * (count != 1)))


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
