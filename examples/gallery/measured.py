"""What was measured for each program: CPU seconds on a 2-core machine of 2026. The options stand in expected.json.

None for a peer: no answer within 10 CPU seconds. "wrong": its answer does not satisfy the program exactly.
"""

from typing import NamedTuple


class Row(NamedTuple):
    field: str
    known: str
    found: str
    latbox: float
    glpsol: object
    cbc: object


MEASURED = {
    "market_split_6x50": Row("market split", "made around a solution", "a solution", 0.23, None, None),
    "market_split_windows": Row("market split, inequations", "made around a solution", "a solution", 0.01, None, 2.46),
    "market_split_deviation": Row("market split, optimised", "optimum 4", "4", 0.01, 0.09, 0.49),
    "subset_sum_40": Row("subset sum, density 1", "made around a solution", "a solution", 0.33, None, None),
    "partition_40": Row("number partitioning", "perfect ones expected", "a perfect one", 0.03, None, None),
    "coin_problem": Row("coin problem", "Frobenius number + 1", "a solution", 0.9, 0.01, 0.00),
    "equality_knapsack": Row("equality knapsack", "Frobenius number + 1", "a solution", 0.03, None, 1.24),
    "design_7_33_8_10": Row("t-design", "exists (1995)", "a design", 0.06, 0.32, 0.99),
    "design_6_33_8_36": Row("t-design", "exists (1984)", "a design", 0.09, 0.18, 1.51),
    "steiner_5_6_12": Row("Steiner system", "2 solutions", "one of them", 0.21, 0.00, 0.01),
    "quadruples_16": Row("Steiner system", "exists (1960)", "a system", 0.14, 0.00, 0.02),
    "cyclic_triples_31": Row("Steiner triples", "80 up to isomorphism", "a system", 0.09, 0.00, 0.01),
    "difference_family_37_4": Row("difference family", "12 solutions", "one of them", 0.00, 0.00, 0.01),
    "triples_9": Row("Steiner triples", "840 solutions", "a system", 0.02, 0.00, 0.01),
    "triples_13": Row("Steiner triples", "1197504000 solutions", "a system", 3.21, 0.02, 0.01),
    "code_24_7_10": Row("code", "distance 10 is the best", "a code", 0.40, 0.06, 0.03),
    "code_20_5_12": Row("code", "distance 12 is the best", "a code", 0.02, 0.00, 0.01),
    "diophantine_system": Row("Diophantine system", "made around a solution", "a solution", 0.01, None, None),
    "signs_48": Row("Prouhet-Tarry-Escott", "48 is the least length (1997)", "a solution", 0.06, None, None),
    "signs_96": Row("Prouhet-Tarry-Escott", "96 is the least length (1997)", "a solution", 2.36, None, None),
    "tarry_escott_8": Row("Prouhet-Tarry-Escott, ideal", "1 solution", "it", 0.05, 0.04, 0.07),
    "unit_fractions": Row("Egyptian fraction", "3 solutions", "one of them", 0.00, 0.00, 0.01),
    "temperament": Row("approximation, optimised", "optimum 269", "269", 0.00, 0.00, 0.01),
    "approximation": Row("approximation", "some 16 expected", "a solution", 0.00, None, None),
    "integer_relation": Row("integer relation", "minimal polynomial known", "it", 0.00, "wrong", None),
    "magic_square_4": Row("magic square", "384 solutions", "a square", 0.63, 0.00, 0.01),
    "langford_12": Row("pairing", "216288 solutions", "a pairing", 1.65, 0.00, 0.01),
    "queens_8": Row("queens", "92 solutions", "a solution", 0.07, 0.00, 0.01),
    "cutting": Row("cutting stock", "optimum 30", "30", 0.00, 0.00, 0.01),
    "scheduling": Row("scheduling", "optimum 344", "344", 0.00, 0.00, 0.02),
    "scheduling_16": Row("scheduling", "optimum 497", "497", 6.05, 0.06, 0.26),
}


def peer(value):
    if value is None:
        return "none in 10 s"
    return "a wrong answer" if value == "wrong" else "%.2f s" % value


def sentence(name, options):
    """The last paragraph of a program's comment."""
    row = MEASURED[name]
    return "CPU time on a 2-core machine of 2026: latbox%s found %s in %.2f s; glpsol: %s; cbc: %s." % (
        " " + " ".join(options) if options else "", row.found, row.latbox, peer(row.glpsol), peer(row.cbc))


def table_line(name, program, options):
    """The row of README.md."""
    row = MEASURED[name]
    cells = ["[%s](%s.opt)" % (name, name), row.field,
             "%d x %d" % (len(program.equations) + len(program.inequations), len(program.upper)), row.known,
             " ".join("`%s`" % option for option in options), row.found, "%.2f s" % row.latbox, peer(row.glpsol),
             peer(row.cbc)]
    return "| " + " | ".join(cells) + " |"
