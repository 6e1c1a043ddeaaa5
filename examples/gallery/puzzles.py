"""Magic squares, pairings and queens: exact covers."""

from gallery.opt import Program


def cover(about, choices, wanted, extra=()):
    """`choices` are sets of the `wanted` things, each of which is in exactly one chosen set."""
    rows = [([int(thing in choice) for choice in choices], 1) for thing in wanted]
    return Program(about, [1] * len(choices), rows + list(extra))


def magic_square_4():
    n, top = 4, 16
    half = [(r, c) for r in range(n // 2) for c in range(n)]
    choices = [(cell, v) for cell in half for v in range(1, top + 1)]
    wanted = half + [("pair", v) for v in range(1, top // 2 + 1)]
    lines = [([v if r == line else 0 for (r, _), v in choices], n * (top + 1) // 2) for line in range(n // 2)]
    # The lower half of a column is the upper half of the opposite column, turned.
    for line in range(n // 2):
        lines.append(([v * ((c == line) - (c == n - 1 - line)) for (_, c), v in choices], 0))
    return cover("""
        A magic square of order 4 with the numbers 1 to 16, associative: opposite cells add up to 17.

        One variable for each of the eight cells of the upper half and each number, in the order of the cells. Each cell has one
        number, and of two numbers v and 17 - v just one is in the upper half; then come two rows with sum 34 and two columns; the other
        lines follow by symmetry. Of the 880 magic squares of order 4 (Frenicle, 1693) 48 are associative, which is 384
        solutions with turned and mirrored ones.""",
                 [{cell, ("pair", min(v, top + 1 - v))} for cell, v in choices], wanted, lines)


def langford_12():
    n = 12
    choices = [{("number", k), i, i + k + 1} for k in range(1, n + 1) for i in range(2 * n - k - 1)]
    return cover("""
        Langford's pairing of order 12: the numbers 1 to 12, each twice, in a row of 24 such that between the two k there are
        just k others.

        One variable for each number and place of its first copy. Pairings exist if n or n + 1 is divisible by 4; there are 108144 of order
        12, a mirrored one not counted, so 216288 solutions.""",
                 choices, [("number", k) for k in range(1, n + 1)] + list(range(2 * n)))


def queens_8():
    n = 8
    cells = [(r, c) for r in range(n) for c in range(n)]
    equations = [([int(cell[k] == i) for cell in cells], 1) for k in (0, 1) for i in range(n)]
    diagonals = [[int(r + sign * c == d) for r, c in cells] for sign in (1, -1) for d in range(-n, 2 * n)]
    return Program("""
        Eight queens on a chessboard, none of which attacks another: an exact cover of rows and columns, with diagonals that hold
        at most one queen.

        One variable for each square, row by row. There are 92 solutions. A teaching example more than a hard one.""",
                   [1] * (n * n), equations, [(row, 0, 1) for row in diagonals if sum(row) > 1])


PROGRAMS = {"magic_square_4": magic_square_4, "langford_12": langford_12, "queens_8": queens_8}
