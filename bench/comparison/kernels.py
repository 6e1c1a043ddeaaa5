"""The kernels beside the libraries that are known for them: one run of each benchmark program, as a table of ratios.

The libraries are linked into the benchmark programs where they were installed at the time of the build, so both sides of
a row are measured in the same process. CPU time, the median of several repetitions.
"""

import json
import os
import subprocess

import machine

REPETITIONS = 5
# Seconds of each repetition.
SHORTEST = 0.1


def basis(title, ours, theirs, library):
    return (title, ours, theirs, library, None)


# (title, our benchmark, theirs, library, the counter that is compared in place of the time)
ROWS = {
    "lattice_bench": [
        basis("LLL, equations of a 6 x 50 market split, rank 51", "BM_LllKernelMatrix", "BM_PeerKernelMatrix", "fplll"),
        basis("the same", "BM_LllKernelMatrix", "BM_NtlKernelMatrix", "NTL"),
        basis("LLL, kernel of the same, rank 45", "BM_LllKernelLattice", "BM_PeerKernelLattice", "fplll"),
        basis("the same", "BM_LllKernelLattice", "BM_NtlKernelLattice", "NTL"),
    ],
    "enumeration_bench": [
        basis("BKZ 20 without pruning, kernel of 6 x 50", "BM_Bkz20<dbl_t>/6/50", "BM_PeerBkz20/6/50", "fplll"),
        basis("the same", "BM_Bkz20<dbl_t>/6/50", "BM_NtlBkz20/6/50", "NTL"),
        basis("the same, exact", "BM_Bkz20<QQ>/6/50", "BM_PeerBkz20/6/50", "fplll"),
        basis("BKZ 20 without pruning, kernel of 4 x 30", "BM_Bkz20<dbl_t>/4/30", "BM_PeerBkz20/4/30", "fplll"),
        basis("the same", "BM_Bkz20<dbl_t>/4/30", "BM_NtlBkz20/4/30", "NTL"),
        ("enumeration, nodes a second, block of 20", "BM_Nodes<dbl_t>/20", "BM_PeerNodes/20", "fplll", "nodes_per_second"),
        ("enumeration, nodes a second, block of 30", "BM_Nodes<dbl_t>/30", "BM_PeerNodes/30", "fplll", "nodes_per_second"),
        ("enumeration, nodes a second, block of 45", "BM_Nodes<dbl_t>/45", None, "", "nodes_per_second"),
        ("the same, exact", "BM_Nodes<QQ>/45", None, "", "nodes_per_second"),
    ],
    "numbers_bench": [
        basis("integers of 9 digits, sum", "zzAddDigits/9", "gmpAddDigits/9", "GMP"),
        basis("integers of 9 digits, product", "zzMulDigits/9", "gmpMulDigits/9", "GMP"),
        basis("integers of 18 digits, sum", "zzAddDigits/18", "gmpAddDigits/18", "GMP"),
        basis("integers of 18 digits, product", "zzMulDigits/18", "gmpMulDigits/18", "GMP"),
        basis("integers of 100 digits, sum", "zzAddDigits/100", "gmpAddDigits/100", "GMP"),
        basis("integers of 100 digits, product", "zzMulDigits/100", "gmpMulDigits/100", "GMP"),
        basis("integers of 400 digits, product", "zzMulDigits/400", "gmpMulDigits/400", "GMP"),
        basis("fractions of 15 bits, sum", "qqAddFractions/15", "gmpAddFractions/15", "GMP"),
        basis("fractions of 15 bits, product", "qqMulFractions/15", "gmpMulFractions/15", "GMP"),
        basis("fractions of 29 bits, sum", "qqAddFractions/29", "gmpAddFractions/29", "GMP"),
        basis("fractions of 29 bits, product", "qqMulFractions/29", "gmpMulFractions/29", "GMP"),
        basis("fractions of 25 digits, sum", "qqAddFractions/-25", "gmpAddFractions/-25", "GMP"),
        basis("fractions of 25 digits, product", "qqMulFractions/-25", "gmpMulFractions/-25", "GMP"),
        basis("fractions of 100 digits, sum", "qqAddFractions/-100", "gmpAddFractions/-100", "GMP"),
        basis("fractions of 100 digits, product", "qqMulFractions/-100", "gmpMulFractions/-100", "GMP"),
    ],
}

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def command(path, rows):
    names = {name for row in rows for name in row[1:3] if name}
    # In a filter the brackets of a template are plain characters, and a name must fit as a whole.
    wanted = "|".join("^%s(/manual_time)?$" % name for name in sorted(names))
    return [path, "--benchmark_format=json", "--benchmark_filter=" + wanted,
            "--benchmark_min_time=%g" % SHORTEST, "--benchmark_repetitions=%d" % REPETITIONS,
            "--benchmark_report_aggregates_only=true"]


def medians(report):
    """Name -> (nanoseconds, counters). Where a benchmark times itself, by CPU time too, its own figure counts."""
    found = {}
    for entry in report["benchmarks"]:
        if entry.get("aggregate_name") != "median":
            continue
        name = entry["run_name"]
        own = name.endswith("/manual_time")
        time = entry["real_time" if own else "cpu_time"] * NANOSECONDS[entry["time_unit"]]
        found[name.removesuffix("/manual_time")] = (time, entry)
    return found


def figures(found, name, counter):
    if name not in found:
        return None
    time, entry = found[name]
    return entry[counter] if counter else time


def shown(value, counter):
    if value is None:
        return ""
    if counter:
        return "%.3g million" % (value / 1e6)
    unit = next(u for u in ("s", "ms", "us", "ns") if value >= NANOSECONDS[u] or u == "ns")
    return "%.3g %s" % (value / NANOSECONDS[unit], unit)


def lines(rows, found, versions):
    for title, ours, theirs, library, counter in rows:
        a, b = figures(found, ours, counter), figures(found, theirs, counter)
        if a is None:
            continue
        ratio = "%.2f" % ((b / a) if counter else (a / b)) if b else ""
        peer = " ".join([library, versions.get(library, "")]).strip() if b else ""
        yield "| %s | %s | %s | %s | %s |" % (title, shown(a, counter), shown(b, counter), peer, ratio)


def table(folder):
    """Of the programs in the folder; one that is not built is left out."""
    told = ["| kernel | latbox | library | which | ratio |", "| --- | --- | --- | --- | --- |"]
    for program, rows in ROWS.items():
        path = os.path.join(folder, program)
        if not os.path.exists(path):
            continue
        out = subprocess.run(command(path, rows), capture_output=True, text=True, check=True).stdout
        report = json.loads(out)
        told += lines(rows, medians(report), report["context"])
    if len(told) == 2:
        raise SystemExit("no benchmark programs in %s: cmake --preset release and ninja -C build/release" % folder)
    head = "Measured on %s. Machine: %s. Median of %d." % (machine.today(), machine.described(), REPETITIONS)
    return head + "\n\n" + "\n".join(told)
