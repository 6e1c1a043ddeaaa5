"""The text of a `.opt` file, from its parts."""

MINIMISE = "-inf"
MAXIMISE = "inf"


def text(comment, upper, equations=(), inequations=(), targets=()):
    """The whole file.

    `equations` are (row, right-hand side), `inequations` (row, low, high), `targets` (kind or value, row). All variables
    are whole numbers between 0 and `upper`.
    """
    zeros = [0] * len(upper)
    return "\n".join([
        "/* " + comment.strip() + " */\n",
        vector([kind for kind, _ in targets]), matrix([row for _, row in targets]),
        matrix([row for row, _ in equations]), vector([side for _, side in equations]),
        matrix([row for row, _, _ in inequations]),
        vector([low for _, low, _ in inequations]), vector([high for _, _, high in inequations]),
        vector(zeros), vector(zeros), vector(upper), ""])


def vector(values):
    return "[ " + "".join("%s " % value for value in values) + "]"


def matrix(rows):
    return "[ ]" if not rows else "[\n" + "".join("  %s\n" % vector(row) for row in rows) + "]"
