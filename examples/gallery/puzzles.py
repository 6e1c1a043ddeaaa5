"""Magic squares, pairings and other exact covers."""

from gallery import opt


def cover(comment, choices, wanted, extra=()):
    """Exact cover: `choices` are sets of the `wanted` things, each of which is in exactly one chosen set."""
    rows = [([int(thing in choice) for choice in choices], 1) for thing in wanted]
    return opt.text(comment, [1] * len(choices), rows + list(extra))


def magic_square():
    """Order 4, associative: opposite cells add up to 17. One variable for each cell of the upper half and value."""
    n, top = 4, 16
    half = [(r, c) for r in range(n // 2) for c in range(n)]
    choices = [((r, c), v) for r, c in half for v in range(1, top + 1)]
    sets = [{cell, ("pair", min(v, top + 1 - v))} for cell, v in choices]
    wanted = half + [("pair", v) for v in range(1, top // 2 + 1)]
    lines = []
    for r in range(n // 2):
        lines.append(([v if cell[0] == r else 0 for cell, v in choices], n * (top + 1) // 2))
    for c in range(n // 2):
        # The lower half of the column is that of the opposite column, turned.
        lines.append(([(v if cell[1] == c else -v if cell[1] == n - 1 - c else 0) for cell, v in choices], 0))
    return cover("", sets, wanted, lines)


def langford(n):
    choices = [{("number", k), ("place", i), ("place", i + k + 1)} for k in range(1, n + 1) for i in range(2 * n - k - 1)]
    return cover("", choices, [("number", k) for k in range(1, n + 1)] + [("place", i) for i in range(2 * n)])


def sudoku(givens):
    """The candidates that the givens leave."""
    def things(r, c, v):
        return {("cell", r, c), ("row", r, v), ("column", c, v), ("box", r // 3 * 3 + c // 3, v)}
    taken = set()
    for at, digit in enumerate(givens):
        if digit != ".":
            taken |= things(at // 9, at % 9, int(digit))
    choices = [things(r, c, v) for r in range(9) for c in range(9) for v in range(1, 10)]
    choices = [choice for choice in choices if not choice & taken]
    wanted = sorted(set().union(*choices))
    return cover("", choices, wanted)


def queens(n):
    cells = [(r, c) for r in range(n) for c in range(n)]
    rows = [([int(cell[k] == i) for cell in cells], 1) for k in (0, 1) for i in range(n)]
    windows = []
    for sign in (1, -1):
        for d in range(-2 * n, 2 * n):
            row = [int(r + sign * c == d) for r, c in cells]
            if sum(row) > 1:
                windows.append((row, 0, 1))
    return opt.text("", [1] * (n * n), rows, windows)


PROGRAMS = {
    "magic_square_4": magic_square,
    "langford_8": lambda: langford(8),
    "langford_11": lambda: langford(11),
    "sudoku": lambda: sudoku("8..........36......7..9.2...5...7.......457.....1...3...1....68..85...1..9....4.."),
    "queens_8": lambda: queens(8),
}
