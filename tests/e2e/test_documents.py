"""Runs every command of every document of the tree, and compares what it prints where the document shows it."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

import documents
import harness

LEFT_OUT = ("build", "third_party")
# A command of a document that takes longer must be marked; a busy machine makes seconds minutes.
LIMIT = harness.LIMIT

# Documents whose commands another test runs, since they build and install.
OWN_TESTS = {"docs/install.md": "tests/e2e/test_install.py"}
# Programs that a tree may do without: their commands are left out where they are missing.
OPTIONAL = ("latbox-check", "latbox-all", "glpsol", "cbc", "dpkg", "dpkg-deb", "man", "clang")

STARTER = """#!/bin/sh
program=latbox
here=$(dirname "$(readlink -f "$0")")
if [ "${1-}" = solve ]; then shift; exec python3 "$here/python/bin/latbox-solve" "$@"; fi
if [ "${1-}" = all ]; then program=latbox-all; shift; fi
exec "$here/build/release/$program" "$@"
"""
# The exit statuses of latbox-all behind a verdict, and of latbox-solve behind a status. A pipe hides them.
VERDICTS = (10, 11, 12, 20)
STATUSES = (0, 10, 11, 12, 13, 20)


def root():
    return os.path.dirname(harness.Settings.examples)


def all_documents():
    found = []
    for folder, folders, files in os.walk(root()):
        folders[:] = sorted(name for name in folders if name not in LEFT_OUT and not name.startswith("."))
        found += [os.path.relpath(os.path.join(folder, name), root()) for name in sorted(files) if name.endswith(".md")]
    return found


def content(name):
    with open(os.path.join(root(), name), encoding="utf-8") as file:
        return file.read()


class Scratch:
    """A copy of the tree in which a document's commands run one after the other, as its reader would type them."""

    def __init__(self, folder):
        self.tree = os.path.join(folder, "tree")
        shutil.copytree(root(), self.tree, ignore=self._left_out)
        built = os.path.dirname(harness.Settings.binary)
        # The programs one by one: a command that builds must not find the build that is being tested.
        release = os.path.join(self.tree, "build", "release")
        self._link_programs(built, release)
        # The script would build, in the tree that is being tested; it has a test of its own.
        self._write("latbox.sh", STARTER)
        home = os.path.join(folder, "home")
        os.mkdir(home)
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", PYTHONDONTWRITEBYTECODE="1", HOME=home)
        # As an installation puts them.
        programs = os.path.join(folder, "bin")
        self._link_programs(built, programs)
        for name in os.listdir(os.path.join(self.tree, "python", "bin")):
            os.symlink(os.path.join(self.tree, "python", "bin", name), os.path.join(programs, name))
        self.environment["PATH"] = programs + os.pathsep + os.environ["PATH"]

    def _left_out(self, folder, names):
        top = os.path.samefile(folder, root())
        return [name for name in names if name == "__pycache__" or top and (name in LEFT_OUT or name.startswith("."))]

    def _write(self, name, text):
        path = os.path.join(self.tree, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        if text.startswith("#!"):
            os.chmod(path, 0o755)

    def _link_programs(self, built, folder):
        os.makedirs(folder)
        for name in ("latbox", "latbox-check", "latbox-all"):
            if os.access(os.path.join(built, name), os.X_OK):
                os.symlink(os.path.join(built, name), os.path.join(folder, name))

    def write(self, name, text):
        self._write(name, text)

    def has(self, program):
        place = os.path.join(self.tree, program) if "/" in program else program
        return shutil.which(place, path=self.environment["PATH"]) is not None

    def run(self, command):
        """(exit status, what was printed on both outputs)"""
        done = subprocess.run(["bash", "-c", command], cwd=self.tree, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=LIMIT, check=False)
        return done.returncode, done.stdout.decode(errors="replace")


def with_more_time(command):
    """The command; then, if it has a limit of time, with longer ones, for a machine that is too busy."""
    yield command
    limit = re.search(r"--time[ =]([0-9]+)\b", command)
    for factor in (4, 16) if limit else ():
        yield command[:limit.start(1)] + str(factor * int(limit[1])) + command[limit.end(1):]


class DocumentsTest(unittest.TestCase):
    maxDiff = None

    def test_every_block_is_of_a_known_kind(self):
        for name in sorted(set(all_documents()) - set(OWN_TESTS)):
            for block in documents.blocks(content(name)):
                with self.subTest(document=name, line=block.line):
                    kind = block.kind()
                    self.assertFalse(kind.startswith("error"), "%s:%d: %s" % (name, block.line, kind))

    def test_documents_with_a_test_of_their_own(self):
        for name, test in OWN_TESTS.items():
            if name in all_documents():
                self.assertIn(os.path.basename(name), content(test))

    def test_every_link_leads_somewhere(self):
        for name in all_documents():
            for link in documents.links(content(name)):
                if "://" in link or link.startswith("mailto:"):
                    continue
                path, _, anchor = link.partition("#")
                target = os.path.normpath(os.path.join(os.path.dirname(name), path)) if path else name
                with self.subTest(document=name, link=link):
                    self.assertTrue(os.path.exists(os.path.join(root(), target)))
                    if anchor and target.endswith(".md"):
                        self.assertIn(anchor, documents.anchors(content(target)))

    def test_every_path_that_is_named_exists(self):
        for name in all_documents():
            for path in documents.named_paths(content(name)):
                with self.subTest(document=name, path=path):
                    self.assertTrue(os.path.exists(os.path.join(root(), path)))

    def test_every_command(self):
        count = 0
        for name in sorted(set(all_documents()) - set(OWN_TESTS)):
            steps = [b for b in documents.blocks(content(name)) if b.kind() in ("commands", "file")]
            if not any(b.kind() == "commands" for b in steps):
                continue
            with tempfile.TemporaryDirectory(prefix="latbox") as folder:
                scratch = Scratch(folder)
                for block in steps:
                    count += self.follow(scratch, name, block)
        self.assertGreater(count, 0)

    def follow(self, scratch, name, block):
        if block.kind() == "file":
            scratch.write(block.argument, block.text())
            return 0
        for number, command, shown in block.commands():
            with self.subTest(document=name, line=number, command=command):
                self.run_command(scratch, command, shown)
        return len(block.commands())

    def run_command(self, scratch, command, shown):
        program = documents.first_word(command)
        if command.startswith(("./latbox.sh all ", "./latbox.sh solve ", "latbox-solve ")):
            program = "latbox-all"
        if os.path.basename(program) in OPTIONAL and not scratch.has(program):
            self.skipTest(program + " is not there")
        for limited in with_more_time(command):
            status, printed = scratch.run(limited)
            try:
                self.assert_as_shown(status, printed, shown)
                return
            except AssertionError as reason:
                failed = reason
        raise failed

    def assert_as_shown(self, status, printed, shown):
        # A document that shows a failure or a verdict means it.
        refused = any(line.startswith("*** FAIL") for line in shown)
        if shown and shown[-1].startswith("verdict: "):
            self.assertIn(status, VERDICTS, printed[-3000:])
        elif any(line.startswith("status: ") for line in shown):
            self.assertIn(status, STATUSES, printed[-3000:])
        elif not refused:
            self.assertEqual(status, 0, printed[-3000:])
        else:
            self.assertNotEqual(status, 0, printed[-3000:])
        if shown:
            self.assertTrue(documents.printed_as_shown(shown, printed.split("\n")),
                            "shown:\n%s\n\nprinted:\n%s" % ("\n".join(shown), printed[-6000:]))


    def test_the_options_of_the_readme(self):
        """Its table names all options, with the defaults that the usage shows."""
        done = subprocess.run([harness.Settings.binary, "--help=1"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=LIMIT, check=False)
        usage = re.findall(r"^  --(\w+) \| .* \[ Default: (\S+) \]$", done.stdout.decode(), re.MULTILINE)
        section = content("README.md").split("## Options", 1)[1].split("\n## ", 1)[0]
        listed = {"help": "0"}
        for keys, defaults in re.findall(r"^\| (`[^|]*`) \| ([^|]*) \|", section, re.MULTILINE):
            listed.update(zip(re.findall(r"`(\w+)`", keys), defaults.split(", "), strict=True))
        self.assertEqual(listed, dict(usage))


class ConventionTest(unittest.TestCase):
    """The reader of documents itself, so that a block that it misreads does not pass for one that was run."""

    def kinds(self, text):
        return [block.kind() for block in documents.blocks(text)]

    def test_commands(self):
        block, = documents.blocks("Text\n\n    $ one\n    1\n\n    2\n    $ two \\\n      more\n\nText\n")
        self.assertEqual(block.commands(), [(3, "one", ["1", "", "2"]), (7, "two \\\n  more", [])])
        block, = documents.blocks("```console\n$ one\n1\n```\n")
        self.assertEqual(block.commands(), [(2, "one", ["1"])])

    def test_marks(self):
        self.assertEqual(self.kinds("<!-- not run: takes an hour -->\n\n    ./x.sh all\n"), ["not run"])
        self.assertEqual(self.kinds("<!-- file: a/b.opt -->\n```opt\n[ ]\n```\n"), ["file"])
        # A mark belongs to the block right behind it.
        self.assertEqual(self.kinds("<!-- not run: x -->\nText\n\n    ./x.sh all\n")[0][:5], "error")

    def test_what_is_refused(self):
        for text in ("    ./x.sh all\n", "```sh\nx\n```\n", "    text\n    $ x\n", "<!-- not run: -->\n\n    x\n",
                     "    A=1 python3 x.py\n", "<!-- file: ../x -->\n\n    x\n", "```\ncmake --build .\n```\n",
                     "    $ CC=x cmake --build .\n"):
            with self.subTest(text):
                self.assertEqual([kind[:5] for kind in self.kinds(text)], ["error"])

    def test_text(self):
        self.assertEqual(self.kinds("    [ 1 2 ]\n\n```text\nwords\n```\n"), ["text", "text"])

    def test_output(self):
        same = documents.printed_as_shown
        self.assertTrue(same(["PID: 1", "a ... c"], ["PID: 77 ", "a b c", ""]))
        self.assertTrue(same(["a", "...", "b"], ["", "a", "x", "y", "b"]))
        self.assertTrue(same(["...", "after: 3 sec(s)"], ["x", "after: 1:07 min(s):sec(s) == 67 secs"]))
        self.assertFalse(same(["a"], ["a", "b"]))
        self.assertFalse(same(["a", "b"], ["a"]))
        self.assertFalse(same(["a ... c"], ["a b", "c"]))

    def test_more_time(self):
        self.assertEqual(list(with_more_time("x --time 2 m | y")), ["x --time 2 m | y", "x --time 8 m | y", "x --time 32 m | y"])
        self.assertEqual(list(with_more_time("x --times=2")), ["x --times=2"])

    def test_links_and_paths(self):
        text = "[a](b.md#c) `[no](link)` `tests/e2e/x.py`\n\n    [x](block)\n"
        self.assertEqual(documents.links(text), ["b.md#c"])
        self.assertEqual(documents.named_paths(text), ["tests/e2e/x.py"])
        self.assertIn("a-heading", documents.anchors("## A `heading`\n"))


if __name__ == "__main__":
    harness.main()
