"""The options of the commands in bench/: --key=value for each attribute of an object, by the type of what it holds."""

import sys


def take(settings, arguments, usage):
    """Sets the attributes. A flag stands alone; a list takes an option each time that it is given. Anything else ends the
    process with `usage`."""
    for argument in arguments:
        key, equals, value = argument.partition("=")
        name = key[2:].replace("-", "_")
        known = getattr(settings, name, None) if key.startswith("--") else None
        if known is None or isinstance(known, bool) != (equals == ""):
            sys.exit("Unknown: %s\n\n%s" % (argument, usage))
        if isinstance(known, list):
            known.append(value)
        else:
            setattr(settings, name, True if isinstance(known, bool) else type(known)(value))
