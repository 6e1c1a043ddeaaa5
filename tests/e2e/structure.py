"""The structure of a tree of C++ sources: which file includes which, how long files are, how many members classes have.

Reads texts, knows no compiler: enough of the language for sources as clang-format lays them out, without macros that open
or close a brace.
"""

import os
import posixpath
import re
from collections.abc import Iterator

# From the bottom to the top. A file in the folder itself, main.cpp, stands above them all.
LAYERS = ("lib", "numbers", "params", "model", "lattice", "program", "heuristics", "driver")
# The same of the programs beside the solver, whose rooms follow the way of what they read.
CHECK = ("numbers", "files", "judging", "proof")
COMPLETE = ("program", "linear", "lattice", "tree", "files", "solving", "proof", "vipr", "run", "jobs")

HEADER_LINES = 300
SOURCE_LINES = 500
# The header on which nearly everything depends has a limit of its own.
FILE_LINES = {"lattice/lattice.h": 249}
MEMBERS = 20
# A program as its file tells it, and a switch for every option.
MANY_MEMBERS = {"Tessik", "Params"}

# A tree: path below the folder of the sources, with slashes, and text.
Tree = dict[str, str]


def read_tree(folder: str, prefix: str = "") -> Tree:
    """`prefix`: what stands before a path where a file of the tree includes it, with its slash."""
    tree = {}
    for path, _, names in os.walk(folder):
        for name in names:
            if name.endswith((".h", ".cpp")):
                full = os.path.join(path, name)
                with open(full, encoding="utf-8") as file:
                    # Such a path is one of the tree, never one beside the file.
                    text = file.read().replace('#include "' + prefix, "#include <") if prefix else file.read()
                    tree[os.path.relpath(full, folder).replace(os.sep, "/")] = text
    return tree


def is_header(path: str) -> bool:
    return path.endswith(".h")


# Comments, strings, numbers with their separators, characters, words, operators that hold an angle, and single signs.
TOKENS = re.compile(r"""//[^\n]* | /\*.*?\*/
                    | R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)" | "(?:\\.|[^"\\\n])*"
                    | \d[\w.']* | '(?:\\.|[^'\\\n])+'
                    | [^\W\d]\w* | -> | <=> | <= | >= | << | :: | \S""", re.DOTALL | re.VERBOSE)
DIRECTIVE = re.compile(r"^[ \t]*\#(?:\\\n|[^\n])*", re.MULTILINE)
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include\b[ \t]*(?P<open>["<]?)(?P<name>[^">\n]*)', re.MULTILINE)


def without_comments(text: str) -> str:
    return TOKENS.sub(lambda match: " " if match[0].startswith(("//", "/*")) else match[0], text)


# Includes


def includes(tree: Tree, path: str) -> Iterator[tuple[str, bool]]:
    """What the file includes of the tree, as a path of the tree; False beside what is written as if it were of the tree
    and is not there."""
    for match in INCLUDE.finditer(without_comments(tree[path])):
        name = match["name"]
        beside = posixpath.normpath(posixpath.join(posixpath.dirname(path), name))
        below = posixpath.normpath(name)
        if match["open"] == '"' and beside in tree:
            yield beside, True
        elif match["open"] and below in tree:
            yield below, True
        elif match["open"] != "<":
            yield name, False


def layer(path: str, layers: tuple[str, ...]) -> int | None:
    folder, slash, _ = path.partition("/")
    if not slash:
        return len(layers)
    return layers.index(folder) if folder in layers else None


def upward_includes(tree: Tree, layers: tuple[str, ...] = LAYERS) -> list[str]:
    found = []
    for path in sorted(tree):
        own = layer(path, layers)
        if own is None:
            found.append("%s: its folder is no layer" % path)
            continue
        for name, known in includes(tree, path):
            if not known:
                found.append("%s includes %s, which is not in the tree" % (path, name))
            else:
                other = layer(name, layers)
                if other is not None and other > own:
                    found.append("%s includes %s, a layer above" % (path, name))
    return found


def include_cycles(tree: Tree) -> list[str]:
    """Every include that closes a cycle, with the cycle."""
    found = []
    done: set[str] = set()
    road: list[str] = []

    def visit(path: str) -> None:
        if path in road:
            found.append(" > ".join(road[road.index(path):] + [path]))
        elif path not in done:
            road.append(path)
            for name, known in includes(tree, path):
                if known:
                    visit(name)
            road.pop()
            done.add(path)

    for start in sorted(tree):
        visit(start)
    return found


# Lengths and first lines


def line_limit(path: str) -> int:
    return FILE_LINES.get(path, HEADER_LINES if is_header(path) else SOURCE_LINES)


def long_files(tree: Tree) -> list[str]:
    return ["%s: %d lines, at most %d" % (path, len(text.splitlines()), line_limit(path))
            for path, text in sorted(tree.items()) if len(text.splitlines()) > line_limit(path)]


def without_introduction(tree: Tree) -> list[str]:
    """Files that do not say what they are: neither do they open with a comment, nor have they a header that does."""
    return [path for path, text in sorted(tree.items())
            if not text.startswith("//") and
            (is_header(path) or not tree.get(path.removesuffix(".cpp") + ".h", "").startswith("//"))]


# Classes

CLASS_KEYS = {"class", "struct", "union"}
ACCESS = {"public", "protected", "private"}
CLOSING = {"(": ")", "[": "]", "{": "}"}
# What a declaration with data members never begins with or holds.
NO_DATA = {"using", "typedef", "friend", "static", "static_assert", "template", "operator", "extern", "namespace"}
# A group behind these is no parameter list.
NO_PARAMETERS = {"alignas", "decltype", "noexcept", "explicit", "requires", "__attribute__"}


class Classes:
    """The classes of a text and how many data members each declares itself, static ones and base classes aside.

    Function bodies and initialisers are passed over, with the classes in them. The members of a union or struct without
    a name belong to the class around it. A declaration is gathered as its head: its tokens, in which a group of brackets
    is one token, "()", "[]", "{}" or "<>", and "(*)" the first part of a pointer to a function.
    """

    def __init__(self, text: str) -> None:
        code = DIRECTIVE.sub("", without_comments(text))
        self.tokens = [match[0] for match in TOKENS.finditer(code)]
        self.at = 0
        self.found: list[tuple[str, int]] = []
        while self.at < len(self.tokens):
            self._scope()

    def _peek(self) -> str:
        return self.tokens[self.at] if self.at < len(self.tokens) else ""

    def _scope(self) -> int:
        """Up to the brace that closes the scope, or the end; returns how many data members stand directly in it."""
        members = 0
        while self._peek() not in ("}", ""):
            members += self._declaration()
        self.at += 1
        return members

    def _declaration(self) -> int:
        head: list[str] = []
        if self._peek() in ACCESS:
            self.at += 2
        while self._peek() not in (";", "}", ""):
            token = self._peek()
            if token == "{":
                kind = kind_of(head)
                if kind == "namespace":
                    self.at += 1
                    self._scope()
                    return 0
                if kind == "class":
                    self.at += 1
                    inner = self._class_body(head)
                    if inner:
                        return inner
                else:
                    self._group()
                    if kind == "function" and self._peek() not in (",", "{", "catch"):
                        return 0
                head = [word for word in head if word in NO_DATA or kind not in ("class", "enum")] + ["{}"]
            elif token in CLOSING:
                pointer = self.tokens[self.at + 1:self.at + 2] in (["*"], ["&"])
                self._group()
                head.append("(*)" if token == "(" and pointer and kind_of(head) != "function" else token + CLOSING[token])
            elif token == "<" and (end := self._angle_end()) is not None and head[-1:] != ["operator"]:
                head.append("<>")
                self.at = end
            else:
                head.append(token)
                self.at += 1
        if self._peek() == ";":
            self.at += 1
        return data_members(head)

    def _class_body(self, head: list[str]) -> int:
        """What counts for the scope around it: the members, if neither the class nor an object of it has a name."""
        name = class_name(head)
        slot = len(self.found)
        members = self._scope()
        if not name and self._peek() == ";":
            return members
        self.found.insert(slot, (name or "(no name)", members))
        return 0

    def _group(self) -> None:
        """Passes over a group of brackets."""
        self.at = self._group_end(self.at)

    def _group_end(self, at: int) -> int:
        closing = [CLOSING[self.tokens[at]]]
        while closing:
            at += 1
            if at >= len(self.tokens):
                return at
            if self.tokens[at] == closing[-1]:
                closing.pop()
            elif self.tokens[at] in CLOSING:
                closing.append(CLOSING[self.tokens[at]])
        return at + 1

    def _angle_end(self) -> int | None:
        """The position behind the angle that closes the one here; None where it is a sign of comparison."""
        at = self.at
        depth = 0
        while at < len(self.tokens) and self.tokens[at] not in (";", ")", "]", "}"):
            if self.tokens[at] in CLOSING:
                at = self._group_end(at)
                continue
            depth += (self.tokens[at] == "<") - (self.tokens[at] == ">")
            at += 1
            if depth == 0:
                return at
        return None


def plain(head: list[str]) -> list[str]:
    """Without attributes and array bounds, without what a template begins with, without groups that are no parameters."""
    kept: list[str] = []
    for token in head:
        if token == "[]" or (token == "()" and kept and kept[-1] in NO_PARAMETERS):
            continue
        if token == "<>" and kept == ["template"]:
            continue
        kept.append(token)
    return kept


def before_value(head: list[str]) -> list[str]:
    """What stands before the initialiser."""
    ends = [head.index(sign) for sign in ("=", "{}") if sign in head]
    return head[:min(ends)] if ends else head


def is_function(head: list[str]) -> bool:
    declared = before_value(head)
    parameters = declared.index("()") if "()" in declared else 0
    return "operator" in head or (parameters > 0 and "(*)" not in declared[:parameters])


def kind_of(head: list[str]) -> str:
    """What the brace behind the head opens."""
    head = plain(head)
    if "namespace" in head or (head[:1] == ["extern"] and len(head) == 2):
        return "namespace"
    if is_function(head):
        return "function"
    if "=" in head:
        return "value"
    if "enum" in head:
        return "enum"
    return "class" if CLASS_KEYS & set(head) else "value"


def class_name(head: list[str]) -> str:
    head = plain(head)
    key = max(head.index(word) for word in CLASS_KEYS if word in head)
    name = ""
    for token in head[key + 1:]:
        if token in (":", "final"):
            break
        if token not in NO_PARAMETERS | {"::", "<>"}:
            name = token
    return name


def data_members(head: list[str]) -> int:
    """How many data members a declaration in a class makes, which ends by a semicolon."""
    head = plain(head)
    declared = before_value(head[1:] if head[:1] == ["{}"] else head)
    if NO_DATA & set(declared) or is_function(declared) or not declared:
        return 0
    if head[0] in CLASS_KEYS | {"enum"} and len(declared) <= 2 + (declared[1:2] == ["class"]) or head[0] == "enum":
        return 0
    return 1 + head.count(",")


def large_classes(tree: Tree) -> list[str]:
    return ["%s: %s has %d data members, at most %d" % (path, name, members, MEMBERS)
            for path, text in sorted(tree.items()) for name, members in Classes(text).found
            if members > MEMBERS and name not in MANY_MEMBERS]
