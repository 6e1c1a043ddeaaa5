"""Market split: which customers go to the first of two offices, so that both sell half of each product?

There is one equation for each product and a 0/1 variable for each customer. Few rows and many columns make such equations hard:
branch and bound learns next to nothing from their relaxation. Where no split is exact, the nearest one is wanted, with a shortfall
and an excess for each product; both verdicts are proven.

    python3 market_split.py [PRODUCTS CUSTOMERS SEED]
"""

import random
import sys

import latbox


def market(products, customers, seed):
    """demand[i][j]: what customer j buys of product i."""
    draw = random.Random(seed)
    return [[draw.randrange(100) for _ in range(customers)] for _ in range(products)]


def exact_split(demand):
    halves = [sum(row) // 2 for row in demand]
    return latbox.solve(demand, halves, 0, 1)


def nearest_split(demand):
    """The sum of all shortfalls and excesses is least."""
    products, customers = len(demand), len(demand[0])
    rows = [row + [int(k == i) for k in range(products)] + [-int(k == i) for k in range(products)] for i, row in enumerate(demand)]
    halves = [sum(row) // 2 for row in demand]
    upper = [1] * customers + 2 * [sum(map(sum, demand))] * products
    return latbox.solve(rows, halves, 0, upper, objective=[0] * customers + [1] * 2 * products)


def main(products=3, customers=20, seed=1):
    demand = market(products, customers, seed)
    result = exact_split(demand)
    print("exact split:", result.status)
    if result.status == "infeasible":
        result = nearest_split(demand)
        print("nearest split: %s, off by %s" % (result.status, result.objective))
    if result.x is not None:
        first = [j for j in range(customers) if result.x[j]]
        print("first office: customers", *first)
        for i, row in enumerate(demand):
            print("product %d: %d of %d" % (i, sum(row[j] for j in first), sum(row)))


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
