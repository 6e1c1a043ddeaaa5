"""Random small models of the kinds that random_models.py does not make, by settings that it does not use, against exhaustive search.

    python3 tests/python/random_kinds.py FIRST COUNT [RECORD]

Semi-integer columns; free columns that chains of equations tie to the others; columns that nothing bounds; columns on a decimal grid;
and the N best points, gaps, targets, one engine alone. Each is solved from its LP and its MPS text in turn. The record is that of
random_models.py.
"""

import itertools
import os
import random
import sys
from fractions import Fraction

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "python"))

import model_texts
import random_models
from model_texts import INF, Plain

from latbox.models import read_text
from latbox.models.tied import with_tied_on_grids
from latbox.solving import checking
from latbox.solving.settings import Gap

LIMIT = 60  # seconds that no model needs
NEAR = 6  # of columns that nothing bounds exhaustive search looks at so many values to either side


def random_model(seed):
    """(model, values of its own columns, chains): chains give the values of the free columns behind them."""
    draw = random.Random(seed)
    n = draw.randint(1, 3)
    plain = Plain(maximise=draw.random() < 0.5)
    values = []
    for _ in range(n):
        low = draw.choice([0, 0, -1, -3, 1, 2, -6])
        high = low + draw.choice([0, 1, 2, 3, 4])
        # Some readers take an upper end of 0 for none.
        plain.semi.append(high != 0 and draw.random() < 0.4)
        plain.lower.append(low)
        plain.upper.append(high)
        values.append(sorted({*range(low, high + 1), *([0] if plain.semi[-1] else [])}))
    chains = []
    for _ in range(draw.choice([0, 0, 1, 2, 3])):
        chains.append(([draw.randint(-3, 3) for _ in plain.lower], draw.randint(-9, 9)))
        plain.lower.append(-INF)
        plain.upper.append(INF)
        plain.semi.append(False)
    size = len(plain.lower)
    for k, (a, constant) in enumerate(chains):
        row = [-x for x in a] + [0] * (size - len(a))
        row[n + k] = 1
        plain.rows.append((row, constant, constant))
    inside = completed([draw.choice(own) for own in values], chains)
    for _ in range(draw.choice([0, 1, 1, 2])):
        a = [draw.choice([0, 0, *range(-5, 6)]) for _ in range(size)]
        value = sum(x * y for x, y in zip(a, inside)) + draw.choice([0, 0, 0, 1, -1])
        room = draw.randint(0, 9)
        plain.rows.append((a, *draw.choice([(value, value), (value, INF), (-INF, value), (value - room, value + room)])))
    if draw.random() < 0.8:
        plain.c = [draw.randint(-7, 7) for _ in range(size)]
        plain.constant = Fraction(draw.choice([0, 0, 5, -3]), draw.choice([1, 2]))
    return plain, values, chains


def completed(x, chains):
    """With the columns that the chains tie to the others."""
    x = list(x)
    for a, constant in chains:
        x.append(constant + sum(b * v for b, v in zip(a, x)))
    return x


def objectives(plain, points):
    """Of those that the rows admit, best first."""
    found = []
    for x in points:
        if all(low <= sum(a * v for a, v in zip(row, x)) <= high for row, low, high in plain.rows):
            found.append(plain.constant + sum(c * v for c, v in zip(plain.c, x)))
    return sorted(found, reverse=plain.maximise)


def read(plain, seed):
    return read_text(*((model_texts.lp(plain), "lp") if seed % 2 else (model_texts.mps(plain), "mps")))


def wrong(seed):
    """What is wrong with the answers to the model of this seed; None if nothing is."""
    return {0: wrong_open, 1: wrong_grid}.get(seed % 6, wrong_closed)(seed)


# ----------------------------------------------------------------- columns with ends


def wrong_closed(seed):
    plain, values, chains = random_model(seed)
    best = objectives(plain, (completed(x, chains) for x in itertools.product(*values)))
    model = read(plain, seed // 6)
    draw = random.Random(-seed)
    for judge in draw.sample((wrong_best, wrong_several, wrong_all, wrong_gap, wrong_target), 2):
        found = judge(model, plain, best, draw)
        if found:
            return "%s: %s" % (judge.__name__, found)
    return None


def ended(model, **settings):
    """The answer, and what is wrong with its points."""
    end = random_models.answer(model, threads=1, time=LIMIT, **settings)
    faults = [checking.fault(model, x) for x in end.points]
    if any(faults) or len({tuple(x) for x in end.points}) < len(end.points):
        return end, "points that are none, or twice: %s" % end.points
    return end, None


def wrong_best(model, plain, best, draw):
    end, fault = ended(model, engine=draw.choice(["auto", "complete"]), seed=draw.choice([0, 5]))
    if end.status != ("optimal" if best else "infeasible"):
        return fault or end.status
    return fault or (None if not best or end.objective in (best[0], None) else "%s for %s" % (end.objective, best[0]))


def wrong_several(model, plain, best, draw):
    count = draw.choice([2, 3, 5, 30])
    end, fault = ended(model, solutions=count)
    if fault or not best:
        return fault or (None if end.status == "infeasible" else end.status)
    if end.status not in (["optimal"] if count < len(best) else ["all"] if count > len(best) else ["optimal", "all"]):
        return "%s with %d of %d" % (end.status, count, len(best))
    told = [checking.objective_of(model, x) for x in end.points]
    if len(told) != min(count, len(best)) or (told != best[:count] and plain.c):
        return "%s for %s" % (told, best[:count])
    return None


def wrong_all(model, plain, best, draw):
    end, fault = ended(model, solutions=0)
    if fault or (end.status, end.count) == ("all" if best else "infeasible", len(best)):
        return fault
    return "%s %d, and there are %d" % (end.status, end.count, len(best))


def wrong_gap(model, plain, best, draw):
    gap = Gap(Fraction(draw.choice([0, 1, 5, 20])), False) if draw.random() < 0.5 else Gap(Fraction(draw.choice([1, 10, 50]), 100), True)
    end, fault = ended(model, gap=gap)
    if fault or not best:
        return fault or (None if end.status == "infeasible" else end.status)
    if end.status == "optimal" and end.objective in (best[0], None):
        return None
    if end.status != "feasible" or not gap.holds(end.objective, best[0]) or checking.is_better(model, best[0], end.bound):
        return "%s %s, bound %s, and the best is %s" % (end.status, end.objective, end.bound, best[0])
    return None


def wrong_target(model, plain, best, draw):
    target = Fraction(draw.choice([best[0], best[-1], best[0] + 1, best[0] - 1])) if best else Fraction(0)
    end, fault = ended(model, target=target)
    if fault or not best:
        return fault or (None if end.status == "infeasible" else end.status)
    if end.status == "optimal" and end.objective in (best[0], None):
        return None
    if end.status != "feasible" or checking.is_better(model, target, end.objective):
        return "%s %s, target %s, and the best is %s" % (end.status, end.objective, target, best[0])
    return None


# ----------------------------------------------------------------- columns on a grid


def wrong_grid(seed):
    """The closed model with a column made continuous: its best point on the grid, and never more than feasible unless an equation ties
    it to a grid of its own."""
    plain, values, chains = random_model(seed)
    plain.continuous = 0
    own = values[0]
    model = read(plain, seed // 6)
    # Readers take columns in the order in which they appear.
    tied = next(v for v in with_tied_on_grids(model).variables if v.name == model_texts.name(0))
    step = 10 ** (tied.digits if tied.integer else 1)
    values[0] = sorted({Fraction(k, step) for k in range(step * plain.lower[0], step * plain.upper[0] + 1)} | set(own))
    best = objectives(plain, (x for x in (completed(x, chains) for x in itertools.product(*values))
                              if all(Fraction(v).denominator == 1 for v in x[1:])))
    end, fault = ended(model, digits=1)
    exact = tied.integer or plain.lower[0] == plain.upper[0] and not plain.semi[0]
    if fault or end.status not in ((["optimal"] if best else ["infeasible"]) if exact else ["feasible"] if best else ["unknown"]):
        return fault or end.status
    if (end.bound is not None and not exact) or (best and end.objective not in (best[0], None)):
        return "%s, bound %s, and the best is %s" % (end.objective, end.bound, best[0])
    return None


# ----------------------------------------------------------------- columns without ends


def wrong_open(seed):
    """What is said must not contradict what lies near 0; with a ray the whole of it is checked."""
    draw = random.Random(seed)
    n = draw.randint(1, 3)
    plain = Plain(maximise=draw.random() < 0.5, c=[draw.randint(-3, 3) for _ in range(n)] if draw.random() < 0.8 else [])
    for _ in range(n):
        low = draw.choice([0, 0, -INF, -2])
        plain.lower.append(low)
        plain.upper.append(draw.choice([INF, INF, 4]))
    for _ in range(draw.choice([0, 1, 1, 2])):
        side = draw.randint(-9, 9)
        plain.rows.append(([draw.randint(-4, 4) for _ in range(n)], *draw.choice([(side, side), (side, INF), (-INF, side)])))
    ranges = [range(max(int(max(low, -NEAR)), -NEAR), int(min(high, NEAR)) + 1) for low, high in zip(plain.lower, plain.upper)]
    best = objectives(plain, itertools.product(*ranges))
    model = read(plain, seed // 6)
    count = draw.choice([1, 1, 3, 0])
    end, fault = ended(model, solutions=count)
    if fault:
        return fault
    if end.status == "infeasible":
        return "infeasible, and there are points" if best else None
    if end.status == "unbounded":
        return checking.ray_fault(model, end.ray)
    if end.status in ("optimal", "all"):
        if end.status == "all" and len(best) > end.count:
            return "all %d, and there are %d" % (end.count, len(best))
        told = [checking.objective_of(model, x) for x in end.points]
        better = [x != y and checking.is_better(model, x, y) for x, y in zip(best, told)]
        return "%s, and there are %s" % (told, best[:count]) if any(better) and plain.c else None
    if end.status == "feasible" and count == 0:
        return None if end.notes else "feasible without a word"
    return "%s %s" % (end.status, end.notes)


if __name__ == "__main__":
    sys.exit(random_models.main(wrong))
