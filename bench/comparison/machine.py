"""On what was measured, in words."""

import datetime
import os
import re


def described():
    return "%s, %d cores, %d GiB of memory, Linux %s" % (processor(), os.cpu_count(), memory(), os.uname().release)


def processor():
    match = re.search(r"model name\s*: (.*)", contents("/proc/cpuinfo"))
    return match.group(1) if match else os.uname().machine


def memory():
    match = re.search(r"MemTotal: +(\d+) kB", contents("/proc/meminfo"))
    return round(int(match.group(1)) / 2**20) if match else 0


def contents(path):
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except OSError:
        return ""


def load():
    """Processes that wanted a processor in the last minute, on average."""
    return round(os.getloadavg()[0], 1)


def today():
    return datetime.date.today().isoformat()
