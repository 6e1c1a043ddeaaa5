"""The columns of this solver: its defaults, unpruned blocks of 30, and the best options that were found for a family."""

from fnmatch import fnmatch

DEFAULTS = ""
UNPRUNED = "--eprune=0 --beta=30"
# By the pattern of the program's name; the first that fits counts.
BEST = [
    ("knap_*_box", DEFAULTS),
    ("knap_*", "--scale=1"),
    ("sts_13", "--pairLimit=11"),
    ("ms*", UNPRUNED),
]


def best_options(name):
    return next((options for pattern, options in BEST if fnmatch(name, pattern)), DEFAULTS)


def columns_for(name):
    """The option texts to be measured for a program, each once."""
    return list(dict.fromkeys([DEFAULTS, UNPRUNED, best_options(name)]))
