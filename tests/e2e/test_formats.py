"""Every row of the tables of errors in docs/formats.md. They are the tables of this test: the two cannot part.

A table is announced by `<!-- errors: KIND -->` before it, that of the forms of numbers by `<!-- forms -->`. A cell is a text in back quotes, `\\|` is a bar, an empty
failure means that the input is read. `<N digits>` stands for so many digits.
"""

import os
import re

import checker
import documents
import harness

ITEMS = ("dt", "At", "Ag", "bg", "Au", "lu", "ru", "dx", "lx", "rx")
LAT_LINES = ("basis [", "row 1", "row 2", "row 3", "basis", "lbnd", "ubnd", "c", "R", "lx", "rx", "targets", "bounds",
             "seconds")
READERS = ("model/opt_reader.cpp", "program/sol_file.cpp", "program/lat_file.cpp", "program/file_items.cpp",
           "lib/scanner.cpp", "numbers/element_text.cpp", "numbers/vector.cpp", "numbers/matrix.cpp", "numbers/qq_text.cpp")
# No file leads to these: arithmetic and shapes of vectors and matrices, a broken invariant, exponents of the command line.
NOT_OF_FILES = ("Matrix: invalid size", "Array: index", "multiplication dimension", "vector-matrix",
                "Vector: dimension mismatch", "Matrix: dimension mismatch", "Matrix: row swap",
                "non-quadratic", "sol2star", "QQ: exponent out of range")
KINDS = {"forms": 4, "element": 23, "opt": 36, "ends": 10, "sol": 27, "lat": 34, "lat ends": 11}


def document():
    path = os.path.join(os.path.dirname(harness.Settings.examples), "docs", "formats.md")
    with open(path, encoding="utf-8") as file:
        return file.read()


def cell(text):
    text = text.strip().replace("\\|", "|")
    text = text[1:-1] if len(text) > 1 and text[0] == text[-1] == "`" else text
    return re.sub(r"<(\d+) digits>", lambda found: "7" * int(found.group(1)), text)


def rows(kind):
    """The rows of all tables of this kind, as lists of cells."""
    found = []
    for table in re.findall(r"<!-- (?:errors: )?%s -->\n\n\|.*\n\|[-|]+\n((?:\|.*\n)*)" % kind, document()):
        found += [[cell(part) for part in re.split(r"(?<!\\)\|", line)[1:-1]] for line in table.splitlines()]
    return found


def example(name):
    return next(block for block in documents.blocks(document()) if block.mark == "file" and block.argument == name)


class FormatsTest(harness.Case):
    def check(self, failure, content, name="prog.opt"):
        """The run's failure is this one, or there is none, and the file is as it was."""
        result = self.run_solver("--iters=1", "--sol=0", "prog.opt")
        if not failure:
            self.assert_ends_well(result)
            return
        self.assertTrue(result.err.endswith(harness.failure_text(failure)), result.err)
        self.assertEqual(result.err.count("*** "), 1)
        self.assertEqual(result.status, 1)
        self.assertEqual(self.read(name), content)

    def refuse_program(self, items, failure):
        content = "\n".join(items) + "\n"
        self.write("prog.opt", content)
        for name in ("prog.sol", "prog.lat"):
            if self.exists(name):
                self.remove(name)
        self.check(failure, content)

    def program(self):
        lines = [line.split("//")[0].strip() for line in example("small.opt").lines]
        self.assertEqual(len(lines), len(ITEMS))
        return lines

    def replaced(self, lines, names, wanted, text):
        """The lines with those of the wanted names replaced by the text, which stands in the first one's place."""
        places = [names.index(name) for name in wanted]
        lines = list(lines)
        for place in places:
            lines[place] = ""
        lines[places[0]] = text
        return lines

    def test_no_table_is_missed(self):
        self.assertEqual({kind: len(rows(kind)) for kind in KINDS}, KINDS)

    def test_no_message_is_missed(self):
        text = " ".join(document().split())
        for name in READERS:
            with open(os.path.join(os.path.dirname(harness.Settings.examples), "src", name), encoding="utf-8") as file:
                messages = re.findall(r'(?:fail|throw ReadException)\(\s*"([^"]*)"', file.read())
            self.assertTrue(messages, name)
            for message in messages:
                with self.subTest(source=name, message=message):
                    self.assertTrue(any(m in message for m in NOT_OF_FILES) or " ".join(message.split()) in text)

    def test_forms_of_numbers(self):
        """As the coefficient of a variable that is fixed at 1: the target value is the number."""
        for form, texts, values in rows("forms"):
            for text, value in zip(texts.split("`, `"), values.split(", "), strict=True):
                with self.subTest(form=form, text=text):
                    self.write("prog.opt", "[ -inf ] [ [ %s 0 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 1 0 ] [ 1 1 ]\n" % text)
                    self.assert_ends_well(self.run_solver("--iters=1", "prog.opt"))
                    self.assertEqual(self.stars()[0].targets, [checker.number(value)])
                    self.remove("prog.sol")
                    self.remove("prog.lat")

    def test_elements(self):
        for element, failure in rows("element"):
            with self.subTest(element[:30]):
                self.refuse_program(self.replaced(self.program(), ITEMS, ["At"], "[ [ 1 %s ] ]" % element), failure)

    def test_programs(self):
        for names, text, failure in rows("opt"):
            with self.subTest(item=names, text=text):
                self.refuse_program(self.replaced(self.program(), ITEMS, names.split(), text), failure)

    def test_programs_that_end(self):
        for name, failure in rows("ends"):
            with self.subTest(name):
                count = 0 if name == "nothing" else ITEMS.index(name) + 1
                self.refuse_program(self.program()[:count], failure)

    def test_solutions(self):
        self.write("prog.opt", example("nine_points.opt").text())
        for line, failure in rows("sol"):
            with self.subTest(line[:60]):
                self.write("prog.sol", line + "\n")
                self.check(failure, line + "\n", "prog.sol")

    def lattice(self):
        self.write("prog.opt", example("nine_points.opt").text())
        self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))
        lines = [line for line in self.read("prog.lat").split("\n") if line and not line.startswith("//")]
        self.assertEqual(len(lines), len(LAT_LINES))
        return lines

    def refuse_lattice(self, lines, failure):
        content = "\n".join(lines) + "\n"
        self.write("prog.lat", content)
        self.check(failure, content, "prog.lat")

    def test_lattices(self):
        lines = self.lattice()
        for name, text, failure in rows("lat"):
            wanted = [name] if name in LAT_LINES else name.split()
            with self.subTest(item=name, text=text[:60]):
                self.refuse_lattice(self.replaced(lines, LAT_LINES, wanted, text), failure)

    def test_lattices_that_end(self):
        lines = self.lattice()
        for name, failure in rows("lat ends"):
            with self.subTest(name):
                self.refuse_lattice(lines[:0 if name == "nothing" else LAT_LINES.index(name) + 1], failure)


if __name__ == "__main__":
    harness.main()
