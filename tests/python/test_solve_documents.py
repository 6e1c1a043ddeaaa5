"""The tables of docs/solve.md and docs/quickstart.md are those of the code."""

from __future__ import annotations

import os
import re
import unittest

import support
import harness

from latbox.front import options
from latbox.solving import statuses, tuning


def table(mark: str, document: str = "solve.md") -> list[list[str]]:
    """The cells of the table between `<!-- mark -->` and its end, without the head."""
    with open(os.path.join(support.ROOT, "docs", document), encoding="utf-8") as file:
        text = file.read()
    part = text[text.index("<!-- %s -->" % mark) : text.index("<!-- %s: end -->" % mark)]
    rows = [[cell.strip() for cell in line.strip("|\n").split(" |")] for line in part.splitlines() if line.startswith("|")]
    return rows[2:]


class DocumentsTest(unittest.TestCase):
    def test_statuses(self) -> None:
        rows = [["`%s`" % s.name, "yes" if s.has_point else "no", str(s.exit_status), "%d, %d" % s.pulp, s.meaning]
                for s in statuses.TABLE]
        self.assertEqual(table("statuses"), rows)

    def test_exit_statuses(self) -> None:
        """Of the quickstart: one row for each, with the answers that have it; a point is named where it makes the difference."""
        answers: dict[int, list[str]] = {}
        for status in statuses.TABLE:
            both = sum(other.name == status.name for other in statuses.TABLE) > 1
            words = (" with a point" if status.has_point else " without a point") if both else ""
            answers.setdefault(status.exit_status, []).append("`%s`%s" % (status.name, words))
        rows = [[str(number), ", ".join(names)] for number, names in answers.items()]
        self.assertEqual(table("exits", "quickstart.md")[:-2], rows)
        self.assertEqual([row[0] for row in table("exits", "quickstart.md")[-2:]], [str(statuses.FAILURE), str(statuses.USAGE)])

    def test_options(self) -> None:
        self.assertEqual([row[0] for row in table("options")], ["`--%s`" % option.name for option in options.TABLE])
        for row, option in zip(table("options"), options.TABLE):
            self.assertEqual(bool(row[1]), bool(option.value), row)
            for text in re.findall(r"`([^`]+)`", row[1]):
                if option.take is not None and option.value and text not in ("N",):
                    option.take(text)  # what it shows is taken

    def test_tuning(self) -> None:
        rows = []
        for row in tuning.TABLE:
            words = " ".join("--%s=%d" % item for item in row.options.items())
            rows.append([row.kind, "any" if row.most_rank is None else "to %d" % row.most_rank, "`%s`" % words if words else "the defaults"])
        self.assertEqual([[kind, rank, words] for kind, _, rank, words, *_ in table("tuning")], rows)


if __name__ == "__main__":
    harness.main()
