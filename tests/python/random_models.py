"""Random small models as .opt, LP and MPS: the same status and objective from each, equal to what exhaustive search finds.

    python3 tests/python/random_models.py FIRST COUNT [RECORD]

With a record the same command goes on where it was stopped. Every model is solved from each of its texts by both engines
together; every fifth one also by the search alone, which may say less, but nothing else.
"""

import itertools
import os
import random
import sys
from fractions import Fraction

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "python"))

import model_texts
from model_texts import INF, Plain

from latbox.models import read_text
from latbox.solving import checking
from latbox.solving.events import End
from latbox.solving.portfolio import Portfolio
from latbox.solving.settings import Settings

LARGEST_BOX = 3000
FORMATS = {"opt": model_texts.opt, "lp": model_texts.lp, "mps": model_texts.mps}


def random_model(seed):
    draw = random.Random(seed)
    n = draw.randint(1, 5)
    plain = Plain(maximise=draw.random() < 0.5)
    while True:
        plain.lower = [draw.choice([0, 0, 0, -1, -3, 1, 2, -7]) for _ in range(n)]
        plain.upper = [low + draw.choice([0, 1, 1, 1, 2, 3, 5, 9]) for low in plain.lower]
        if box(plain) <= LARGEST_BOX:
            break
    scale = draw.choice([1, 1, 1, 1, 2, 10, Fraction(1, 100)])
    most = draw.choice([1, 3, 9, 50, 10**7])

    def coefficients():
        return [draw.randint(-most, most) * Fraction(scale) if draw.random() < 0.8 else 0 for _ in range(n)]

    if draw.random() < 0.75:
        plain.c = coefficients()
        if draw.random() < 0.3:
            plain.constant = Fraction(draw.randint(-20, 20), draw.choice([1, 2, 4]))
    inside = [draw.randint(low, high) for low, high in zip(plain.lower, plain.upper)]
    for _ in range(draw.choice([0, 1, 1, 2, 2, 3, 4])):
        a = coefficients()
        value = sum(x * y for x, y in zip(a, inside)) + draw.choice([0, 0, 0, 0, 1, -1, 2]) * Fraction(scale)
        room = abs(draw.randint(0, 2 * most) * Fraction(scale))
        low, high = draw.choice([(value, value), (value, INF), (-INF, value), (value - room, value + room)])
        plain.rows.append((a, low, high))
    open_some_bounds(draw, plain)
    return plain


def open_some_bounds(draw, plain):
    """Some bounds move into rows of their own, so that the box is implied and not stated."""
    for j in range(plain.size()):
        unit = [int(i == j) for i in range(plain.size())]
        if draw.random() < 0.1:
            plain.rows.append((unit, -INF, plain.upper[j]))
            plain.upper[j] = INF
        if draw.random() < 0.1:
            plain.rows.append((unit, plain.lower[j], INF))
            plain.lower[j] = -INF


def box(plain):
    size = 1
    for low, high in zip(plain.lower, plain.upper):
        size *= high - low + 1
    return size


def stated_box(plain):
    """The ranges, those included that stand as rows of one variable."""
    lower, upper = list(plain.lower), list(plain.upper)
    for a, low, high in plain.rows:
        places = [j for j, value in enumerate(a) if value]
        if len(places) == 1 and a[places[0]] == 1:
            j = places[0]
            lower[j], upper[j] = max(lower[j], low), min(upper[j], high)
    return [range(int(-(-Fraction(low) // 1)), int(Fraction(high) // 1) + 1) for low, high in zip(lower, upper)]


def exhaustive(plain):
    """(status, objective, number of points)."""
    best, count = None, 0
    for x in itertools.product(*stated_box(plain)):
        if all(low <= sum(a * v for a, v in zip(row, x)) <= high for row, low, high in plain.rows):
            count += 1
            value = sum(c * v for c, v in zip(plain.c, x))
            if best is None or (value > best if plain.maximise else value < best):
                best = value
    if best is None:
        return "infeasible", None, 0
    return "optimal", best, count


def answer(model, **settings):
    for event in Portfolio(model, Settings(**settings)).events():
        if isinstance(event, End):
            return event


def wrong(seed):
    """What is wrong with the answers to the model of this seed; None if nothing is."""
    plain = random_model(seed)
    status, objective, count = exhaustive(plain)
    for form, write in FORMATS.items():
        text = write(plain)
        model = read_text(text, form)
        expected = objective if objective is None or form == "opt" else objective + plain.constant
        # A text may leave out an objective that is 0.
        silence = [] if any(plain.c) or (plain.constant and form != "opt") else [None]
        end = answer(model, threads=1, time=60)
        if end.status != status or end.objective not in [expected] + silence:
            return "%s: %s %s, and it is %s %s" % (form, end.status, end.objective, status, expected)
        if end.x is not None and checking.fault(model, end.x):
            return "%s: %s" % (form, checking.fault(model, end.x))
        if seed % 5 == 0:
            found = search_alone(model, status, expected)
            if found:
                return "%s, search: %s" % (form, found)
    if seed % 7 == 0:
        end = answer(model, threads=1, solutions=0, time=60)
        if (end.status, end.count) != ("all" if count else "infeasible", count):
            return "all: %s %d, and there are %d" % (end.status, end.count, count)
    return None


def search_alone(model, status, objective):
    end = answer(model, engine="search", threads=1, time=0.3, seed=3)
    if end.status == "infeasible" and status != "infeasible":
        return "infeasible, and it is not"
    if end.x is None:
        return None
    if status == "infeasible":
        return "a point, and there is none"
    if None not in (objective, end.objective) and checking.is_better(model, end.objective, objective):
        return "%s, and the optimum is %s" % (end.objective, objective)
    return None


def main(judge):
    """Prints what is wrong with the models of the seeds that the command line asks for; the exit status."""
    first, count = int(sys.argv[1]), int(sys.argv[2])
    record = sys.argv[3] if len(sys.argv) > 3 else None
    begin = first
    if record and os.path.exists(record):
        with open(record, encoding="ascii") as file:
            begin = max(first, int(file.read() or first))
    faults = 0
    for seed in range(begin, first + count):
        found = judge(seed)
        if found:
            faults += 1
            print("seed %d: %s" % (seed, found), flush=True)
        if record:
            with open(record + ".tmp", "w", encoding="ascii") as file:
                file.write(str(seed + 1))
            os.replace(record + ".tmp", record)
    print("models %d to %d: %d wrong" % (begin, first + count - 1, faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(wrong))
