"""Subset sum: which of the given numbers add up to the given sum?

One equation, a 0/1 variable for each number. With numbers of about as many bits as there are of them (density 1) the problem is at
its hardest, and a lattice still finds the subset.

    python3 subset_sum.py [COUNT BITS SEED]
"""

import random
import sys

import latbox


def main(count=32, bits=32, seed=7):
    draw = random.Random(seed)
    numbers = [draw.getrandbits(bits) for _ in range(count)]
    total = sum(draw.sample(numbers, count // 2))

    result = latbox.solve([numbers], [total], 0, 1, time=60)
    print("%d numbers of %d bits: %s" % (count, bits, result.status))
    if result.x is not None:
        chosen = [number for number, taken in zip(numbers, result.x) if taken]
        print(" + ".join(map(str, chosen)), "=", sum(chosen))
        assert sum(chosen) == total


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
