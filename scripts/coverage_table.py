#!/usr/bin/env python3
"""The figures of a gcovr summary as a table, by folder: python3 coverage_table.py summary.json"""

import json
import os
import sys
from collections import defaultdict

COUNTERS = ("line_covered", "line_total", "branch_covered", "branch_total")


def by_folder(summary):
    totals = defaultdict(lambda: [0] * len(COUNTERS))
    for file in summary["files"]:
        for folder in (os.path.dirname(file["filename"]), "all"):
            totals[folder] = [total + file[counter] for total, counter in zip(totals[folder], COUNTERS)]
    return totals


def percent(part, whole):
    return "%.1f %%" % (100 * part / whole) if whole else "-"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        totals = by_folder(json.load(file))
    print("| Folder | Lines | Reached | Branches | Reached |\n|---|---|---|---|---|")
    for folder in sorted(totals, key=lambda name: (name == "all", name)):
        lines, all_lines, branches, all_branches = totals[folder]
        print("| %s | %d | %s | %d | %s |" % (folder, all_lines, percent(lines, all_lines), all_branches,
                                               percent(branches, all_branches)))


if __name__ == "__main__":
    main()
