#!/usr/bin/env python3
"""Fires console commands at a run as fast as it takes them: python3 console_fire.py BINARY SECONDS [options] file.opt

Meant for a build with the thread sanitizer, whose warnings come on standard error. STATUS, SET of every parameter, STOP,
RUN and HELP go in a random order (the seed is fixed) for so many seconds; then the run is terminated. The exit status is
0 if the run was still alive by then, ended with its report and status 0, and printed nothing on standard error but the
unknown keys that were asked for.
"""

import os
import random
import signal
import subprocess
import sys
import threading
import time

# Values that differ in kind and that each parameter takes; those that would end the run or stall a block are left out.
SETTINGS = {
    "verb": ("0", "1", "2"), "consistency": ("0", "1"), "eenum": ("0", "1"), "beta": ("2", "3", "10", "20"),
    "eprune": ("0", "1", "2", "3"), "btime": ("1", "2"), "deep": ("0", "1"), "collectLimit": ("1", "10", "100"),
    "pair": ("0", "1"), "pairLimit": ("2", "10"), "sieve": ("0", "1"), "sample": ("0", "1"),
    "sampleLimit": ("5", "50"), "scale": ("0", "1"), "translate": ("0", "1"), "reinsert": ("0", "1"),
    "variate": ("0", "1"), "rtime": ("100000", "200000"), "iters": ("-1",), "sol": ("0", "-1"),
    "snorm": ("-1", "1/3", "-4/3", "inf"), "tnorm": ("-inf", "1/3", "-7"), "no such key": ("1",),
}


STOP_INTERVAL = 3  # seconds between two salvos of STOP and RUN


def commands(draw):
    while True:
        kind = draw.random()
        if kind < 0.2:
            yield "STATUS"
        elif kind < 0.4:
            yield "RUN"
        elif kind < 0.41:
            yield "HELP"
        else:
            key = draw.choice(sorted(SETTINGS))
            yield "SET %s=%s" % (key, draw.choice(SETTINGS[key]))


def keep(pipe, pieces, limit=1 << 24):
    """Reads a pipe to its end and keeps the first and the last of it."""
    size = 0
    while piece := os.read(pipe.fileno(), 65536):
        size += len(piece)
        if size > limit:
            del pieces[1:-1]
        pieces.append(piece)


def fire(process, seconds):
    """How many commands the run has taken."""
    draw = random.Random(1)
    begin = time.monotonic()
    count = stops = 0
    lines = commands(draw)
    while (now := time.monotonic()) < begin + seconds and process.poll() is None:
        batch = [next(lines) for _ in range(50)]
        # The solver looks once a second whether a stop is over: more of them, and it would do nothing else but stand.
        if now > begin + STOP_INTERVAL * stops:
            stops += 1
            batch += ["STOP", "STATUS", "RUN"] * draw.randint(1, 100)
        process.stdin.write("".join(line + "\n" for line in batch).encode())
        process.stdin.flush()
        count += len(batch)
    return count


def main(arguments):
    if len(arguments) < 4:
        sys.exit(__doc__)
    binary, seconds, options = arguments[1], float(arguments[2]), arguments[3:]
    process = subprocess.Popen([binary, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    out, err = [], []
    readers = [threading.Thread(target=keep, args=pair) for pair in ((process.stdout, out), (process.stderr, err))]
    for reader in readers:
        reader.start()
    count = 0
    try:
        count = fire(process, seconds)
    except BrokenPipeError:
        pass
    alive = process.poll() is None
    process.send_signal(signal.SIGTERM)
    status = process.wait()
    for reader in readers:
        reader.join()
    report = b"".join(out).endswith(b" -- Program end\n")
    rest = b"".join(err).decode(errors="replace").replace("\n*** No such setting: no such key\n", "")
    sys.stderr.write(rest)
    print("%d commands, alive to the end: %s, report: %s, exit status: %d, sanitizer warnings: %d" %
          (count, alive, report, status, rest.count("WARNING: ThreadSanitizer")))
    print("\n".join(b"".join(out).decode(errors="replace").splitlines()[-3:]))
    return 0 if alive and report and status == 0 and not rest else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
