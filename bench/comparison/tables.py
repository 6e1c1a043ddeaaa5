"""The measured cells as markdown, and the marked places of a page that they are written to.

A place is what stands between "<!-- NAME: written by COMMAND -->" and "<!-- NAME: end -->".
"""

import re

from columns import DEFAULTS, UNPRUNED, best_options

SOLVER = "latbox"
PEERS = ("glpsol", "cbc")

# (program, CPU seconds, the optimum that is to be reached)
AIMS = [
    ("ms_3x20_s1", 1, None), ("ms_4x30_s1", 1, None), ("ms_5x40_s1", 10, None), ("ms_6x50_s1", 120, None),
    ("sts_7", 10, None), ("sts_9", 10, None), ("sts_13", 10, None), ("km_2_31_3_1_Z31", 10, None),
    ("km_3_10_4_1_Z10", 10, None), ("km_7_33_8_10_PGL2_32", 10, None), ("ss_n30_b30", 10, None),
    ("msh_4x30_s1", 5, None), ("mkp_n20_s1", 120, "827"), ("mkp_n30_s1", 120, "1165"), ("msopt_3x20_half", 120, "1"),
]


def seconds(value):
    return "%.2f s" % value if value < 9.95 else "%.0f s" % value


def column_of(options):
    return (SOLVER + " " + options).strip()


def title_of(options):
    return "`%s`" % options if options else "defaults"


def lines_of(head, rows):
    return "\n".join("| " + " | ".join(cells) + " |" for cells in [head, ["---"] * len(head), *rows])


# ----------------------------------------------------------------- one cell in words


def words(cell, optimum=None, solvable=False):
    """`optimum`: the proven value of the program, or None. `solvable`: some column has a point that was verified."""
    if cell is None:
        return "not measured"
    cpu, status = seconds(cell["cpu"]), cell["status"]
    if status in ("solved", "proven"):
        return found(cell, optimum)
    return {
        "wrong": "**wrong** after " + cpu,
        "unchecked": "%s at %s, unverified" % (cell["value"], seconds(cell["at"])),
        "refuted": "claims that there is no solution, %s: %s" % (cpu, "**wrong**" if solvable else "unverified"),
        "none": "none in " + cpu,
        "ended": "ended after %s: %s" % (cpu, cell["note"] or "nothing"),
        "left out": "not stated",
    }[status]


def found(cell, optimum):
    if cell["value"] is None:
        return "%s, verified" % seconds(cell["at"])
    text = "%s at %s" % (cell["value"], seconds(cell["at"]))
    if cell["status"] == "proven":
        return "%s, proven after %s, verified" % (text, seconds(cell["cpu"]))
    if optimum not in (None, cell["value"]):
        text += ", optimum is %s" % optimum
    return text + ", verified"


# ----------------------------------------------------------------- the tables


def row(cells, instance, columns):
    of_program = [cells.get(instance.name, column) for column in columns]
    solvable = any(cell and cell["status"] in ("solved", "proven") for cell in of_program)
    return [words(cell, cells.optimum(instance.name), solvable) for cell in of_program]


def head_of(instance):
    program = instance.program
    return [instance.name, "%d x %d" % (len(program.ag) + len(program.au), program.n)]


def plain_table(cells, instances, options, peers):
    """One column for each of the options, and the peers by name."""
    columns = [column_of(o) for o in options] + list(peers)
    head = ["program", "rows x variables", *(title_of(o) for o in options), *peers]
    return lines_of(head, [head_of(i) + row(cells, i, columns) for i in instances])


def comparison(cells, instances):
    head = ["program", "rows x variables", *PEERS, "defaults", "`%s`" % UNPRUNED, "best options"]
    rows = []
    for instance in instances:
        best = best_options(instance.name)
        told = row(cells, instance, [*PEERS, column_of(DEFAULTS), column_of(UNPRUNED), column_of(best)])
        rows.append(head_of(instance) + told[:-1] + ["%s: %s" % (title_of(best), told[-1])])
    return "%s\n\n%s" % (circumstances(cells), lines_of(head, rows))


def circumstances(cells):
    facts, loads = cells.facts, [c["load"] for c in cells.cells.values() if "load" in c]
    tools = ["latbox (SHA-256 %s..)" % facts.get(SOLVER, "unknown")]
    tools += ["%s %s" % (peer, facts[peer]) for peer in PEERS if peer in facts]
    text = "Measured on %s with %s. Machine: %s" % (facts.get("date"), ", ".join(tools), facts.get("machine"))
    if loads:
        text += "; while a cell was measured, between %.1f and %.1f processes wanted a processor" % (min(loads), max(loads))
    return "%s. Limit: %s of CPU a run." % (text, seconds(facts.get("limit", 0)))


def aims(cells):
    rows = []
    for name, limit, optimum in AIMS:
        options = list(dict.fromkeys([DEFAULTS, best_options(name), UNPRUNED]))
        told = [(o, cells.get(name, column_of(o))) for o in options]
        met = next((o for o, cell in told if meets(cell, limit, optimum)), None)
        aim = "below %d s" % limit if optimum is None else "optimum %s" % optimum
        rows.append([name, aim, words(told[0][1]), words(cells.get(name, column_of(best_options(name)))),
                     "not met" if met is None else "met by " + title_of(met)])
    return lines_of(["program", "aim", "defaults", "best options", "verdict"], rows)


def meets(cell, limit, optimum):
    return (cell is not None and cell["status"] in ("solved", "proven") and cell["at"] < limit and
            optimum in (None, cell["value"]))


# ----------------------------------------------------------------- the page


def rewrite(path, sections, command="bench/compare"):
    """Puts each text in its place. A page without the place is an error: the text would be lost silently."""
    with open(path, encoding="utf-8") as file:
        page = file.read()
    for name, text in sections.items():
        begin, end = "<!-- %s: written by %s -->" % (name, command), "<!-- %s: end -->" % name
        place = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
        if not place.search(page):
            raise SystemExit("%s has no place for %s" % (path, name))
        page = place.sub(lambda _, b=begin, t=text, e=end: "%s\n\n%s\n\n%s" % (b, t, e), page)
    with open(path, "w", encoding="utf-8") as file:
        file.write(page)
