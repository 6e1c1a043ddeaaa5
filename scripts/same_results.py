#!/usr/bin/env python3
"""Whether two builds of the solver find the same, bit for bit.

    scripts/same_results.py OLD NEW [--programs PATTERN ...] [--iters N] [--jobs N] [--keep DIR]

Runs both on every program of examples/ and bench/instances/, by defaults and with every heuristic on, for a fixed number of
iterations, each in a folder of its own, and compares what they leave and print: the .lat file but for its seconds, the
.sol file but for its times and the order of lines that only times decide, both outputs but for process ids and times. A
program that the old build does not end in time is run for one iteration, and left out, with a word, where that is too long
too. What the old build gave is kept in DIR, by the content of the binary, and read from there the next time.

Exit status 0: all the same; 1: some differ, each named with the first line that does; 2: unusable arguments.
"""
from __future__ import annotations

import argparse
import concurrent.futures
import hashlib
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CONFIGURATIONS = {
    "defaults": [],
    "all on": ["--sieve=1", "--sample=1", "--scale=1", "--translate=1", "--deep=1", "--consistency=1"],
}
LIMIT = 60.0  # seconds for a run

TIME = re.compile(r"(?:\d+:)?\d+:\d+ (?:hour\(s\):)?min\(s\):sec\(s\) == \d+ secs|-?\d+ sec\(s\)")
PID = re.compile(r"PID: \d+")


def without_times(text: str) -> list[str]:
    return [PID.sub("PID", TIME.sub("TIME", line)) for line in text.splitlines()]


def stars(text: str) -> list[str]:
    """Lines of a .sol file without the time of discovery."""
    lines = []
    for line in text.splitlines():
        fields = line.split(" | ")
        if len(fields) > 4:
            del fields[4]
        lines.append(" | ".join(fields))
    return sorted(lines)


def basis(text: str) -> list[str]:
    """Lines of a .lat file without the seconds, the last line that is a number."""
    lines = text.splitlines()
    numbers = [i for i, line in enumerate(lines) if re.fullmatch(r"-?\d+", line)]
    if numbers:
        del lines[numbers[-1]]
    return lines


def run(binary: Path, program: Path, options: list[str], iterations: int) -> dict[str, list[str]] | None:
    """What the run leaves and prints; None where it does not end in time."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder) / "p.opt"
        shutil.copy(program, copy)
        # Under one name, since the banner shows it.
        command = ["latbox", "--sol=0", "--verb=2", f"--iters={iterations}", *options, "p.opt"]
        try:
            done = subprocess.run(command, executable=str(binary), cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  timeout=LIMIT, check=False)
        except subprocess.TimeoutExpired:
            return None
        result = {
            "status": [str(done.returncode)],
            "stdout": without_times(done.stdout),
            "stderr": without_times(done.stderr),
        }
        for name, form in (("p.sol", stars), ("p.lat", basis)):
            path = Path(folder) / name
            result[name] = form(path.read_text(encoding="utf-8")) if path.exists() else ["no file"]
        return result


class Store:
    """What the old build gave, by its content, the program and the options."""

    def __init__(self, folder: Path, binary: Path) -> None:
        self.folder = folder
        self.folder.mkdir(parents=True, exist_ok=True)
        self.binary = binary
        self.digest = hashlib.sha256(binary.read_bytes()).hexdigest()

    def get(self, program: Path, options: list[str], iterations: int) -> dict[str, list[str]] | None:
        key = self.digest + program.read_text(encoding="utf-8") + " ".join(options) + str(iterations)
        path = self.folder / (hashlib.sha256(key.encode()).hexdigest() + ".json")
        if path.exists():
            return json.loads(path.read_text(encoding="utf-8"))
        result = run(self.binary, program, options, iterations)
        path.write_text(json.dumps(result), encoding="utf-8")
        return result


def first_difference(old: dict[str, list[str]], new: dict[str, list[str]]) -> str:
    for name, lines in old.items():
        other = new[name]
        if lines == other:
            continue
        for number, (a, b) in enumerate(zip(lines, other), 1):
            if a != b:
                return f"{name}, line {number}:\n    old: {a[:300]}\n    new: {b[:300]}"
        return f"{name}: {len(lines)} lines before, {len(other)} now"
    return ""


def compare(store: Store, new: Path, program: Path, name: str, iterations: int) -> tuple[str, str]:
    """A verdict (same, differs, left out) and its line."""
    label = f"{program.stem} ({name})"
    options = CONFIGURATIONS[name]
    for count in dict.fromkeys((iterations, 1)):
        old = store.get(program, options, count)
        if old is None:
            continue
        fresh = run(new, program, options, count)
        if fresh is None:
            return "differs", f"{label}: the new build does not end in {LIMIT:.0f} s"
        difference = first_difference(old, fresh)
        return ("differs", f"{label}: {difference}") if difference else ("same", label)
    return "left out", f"{label}: one iteration of the old build takes more than {LIMIT:.0f} s"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("old", type=Path)
    parser.add_argument("new", type=Path)
    parser.add_argument("--programs", nargs="*", default=["examples/**/*.opt", "bench/instances/*.opt"])
    parser.add_argument("--iters", type=int, default=5)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep", type=Path, default=ROOT / "build" / "same_results")
    arguments = parser.parse_args()
    for binary in (arguments.old, arguments.new):
        if not binary.is_file():
            parser.error(f"no such binary: {binary}")
    programs = sorted({path for pattern in arguments.programs for path in ROOT.glob(pattern)})
    store = Store(arguments.keep, arguments.old.resolve())
    verdicts: dict[str, int] = {"same": 0, "differs": 0, "left out": 0}
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        runs = [pool.submit(compare, store, arguments.new.resolve(), program, name, arguments.iters)
                for program in programs for name in CONFIGURATIONS]
        for done in concurrent.futures.as_completed(runs):
            verdict, line = done.result()
            verdicts[verdict] += 1
            if verdict != "same":
                print(f"{verdict}: {line}", flush=True)
    print(", ".join(f"{count} {verdict}" for verdict, count in verdicts.items()))
    return 1 if verdicts["differs"] else 0


if __name__ == "__main__":
    sys.exit(main())
