"""Reads the code blocks, links and paths of a document. The convention is told in CONTRIBUTING.md.

A block of code is one of

  commands   it begins with a line `$ command`; what stands behind a command, up to the next one, is what it prints
  a file     marked `<!-- file: NAME -->`: the commands behind it find it under that name
  not run    marked `<!-- not run: REASON -->`
  text       anything else in which no line looks like a command
"""

import re

MARK = re.compile(r"<!--\s*(not run|file):\s*(.*?)\s*-->")
FENCE = re.compile(r"^(\s*)(```+|~~~+)\s*(\S*)")
PROMPT = "$ "
SHELLS = ("sh", "bash", "shell", "console")
# First words that nobody writes but to run them.
PROGRAMS = set("""apt apt-cache apt-get bash cat cd clang clang-format cmake cp cpack ctest curl docker dpkg env export
g++ gcov git glpsol cbc latbox latbox-all latbox-check latbox-convert latbox-names
latbox-plot latbox-solve ls make man mkdir nice ninja perf pip printf python3 rm sh sudo time
valgrind""".split())
# What would change the tree that is being tested, or the machine.
BUILDERS = set("apt apt-get cmake cpack dpkg git ninja sudo su".split())
PATHS = re.compile(r"^(\./|\.\./|~/|build/|scripts/|python/bin/|\.ci/)\S+")


class Block:
    def __init__(self, line, language, lines, kind, argument):
        self.line = line
        self.language = language
        self.lines = lines
        self.mark = kind
        self.argument = argument

    def text(self):
        return "\n".join(self.lines) + "\n"

    def commands(self):
        """(line number, command, printed lines) of each command; a backslash at the end continues it."""
        found = []
        continued = False
        for number, line in enumerate(self.lines, self.line):
            if continued:
                found[-1][1] += "\n" + line
            elif line.startswith(PROMPT):
                found.append([number, line[len(PROMPT):], []])
            else:
                found[-1][2].append(line)
                continue
            continued = line.endswith("\\")
        return [(number, command, without_blank_ends(printed)) for number, command, printed in found]

    def kind(self):
        """'commands', 'file', 'not run', 'text', or the reason why it is none of them, behind 'error: '."""
        prompts = [line.startswith(PROMPT) for line in self.lines]
        if self.mark == "not run":
            return "not run" if self.argument else "error: the reason is missing"
        if self.mark == "file":
            return "file" if is_inside(self.argument) else "error: no name of a file within the tree"
        if prompts and prompts[0]:
            return next(("error: builds or installs, and is not marked: " + command
                         for _, command, _ in self.commands() if first_word(command) in BUILDERS), "commands")
        if any(prompts):
            return "error: text before the first command"
        if self.language in SHELLS:
            return "error: commands without a prompt"
        for line in self.lines:
            if looks_like_a_command(line):
                return "error: neither a prompt nor a mark, and a command: " + line.strip()
        return "text"


def is_inside(name):
    return bool(re.fullmatch(r"[\w.-]+(/[\w.-]+)*", name)) and ".." not in name.split("/")


def without_blank_ends(lines):
    while lines and not lines[-1].strip():
        lines = lines[:-1]
    while lines and not lines[0].strip():
        lines = lines[1:]
    return lines


def without_settings(line):
    """The words of a command behind its NAME=value."""
    words = line.split()
    while words and re.match(r"^[A-Z_]+=\S*$", words[0]):
        words = words[1:]
    return words


def first_word(command):
    return (without_settings(command) or [""])[0]


def looks_like_a_command(line):
    words = without_settings(line)
    # A bare word alone on its line is more often a heading or a key.
    return bool(words) and (bool(PATHS.match(words[0])) or len(words) > 1 and words[0] in PROGRAMS)


def mark_of(line):
    """The mark on the line, as (kind, argument), or (None, "")."""
    found = MARK.search(line)
    return (found.group(1), found.group(2)) if found else (None, "")


def without_indent(lines, width):
    return [line[width:] if line[:width].isspace() or not line[:width] else line for line in lines]


def blocks(text):
    """All fenced and indented blocks of a document."""
    lines = text.split("\n")
    found = []
    mark = (None, "")
    at = 0
    while at < len(lines):
        line = lines[at]
        fence = FENCE.match(line)
        if fence:
            end = next((i for i in range(at + 1, len(lines)) if lines[i].strip() == fence.group(2)), len(lines))
            content = without_indent(lines[at + 1:end], len(fence.group(1)))
            found.append(Block(at + 2, fence.group(3), content, *mark))
            mark = (None, "")
            at = end + 1
        elif line.startswith("    ") and line.strip() and (at == 0 or not lines[at - 1].strip()):
            end = at
            while end < len(lines) and (lines[end].startswith("    ") or not lines[end].strip()):
                end += 1
            content = without_blank_ends(without_indent(lines[at:end], 4))
            found.append(Block(at + 1, "", content, *mark))
            mark = (None, "")
            at = end
        else:
            if line.strip():
                mark = mark_of(line)
            at += 1
    return found


def prose(text):
    """The document without its blocks."""
    lines = text.split("\n")
    for block in blocks(text):
        for number in range(block.line - 1, block.line - 1 + len(block.lines)):
            lines[number] = ""
    return "\n".join(lines)


def links(text):
    return re.findall(r"\[[^\]]*\]\(([^()\s]+)\)", re.sub(r"`[^`\n]*`", "", prose(text)))


def named_paths(text):
    """Paths of the tree that the prose names as code; NAME stands for any."""
    found = re.findall(r"`((?:src|tests|bench|docs|examples|scripts|python|check|fuzz)/[\w./-]*)`", prose(text))
    found = [path for path in found if "NAME" not in path]
    return [path for path in found if path.endswith(("/", ".md", ".py", ".cpp", ".h", ".opt", ".sh", ".json", ".txt"))]


def anchors(text):
    """The names of the headings as links use them."""
    names = set()
    for heading in re.findall(r"^#+\s+(.*?)\s*$", prose(text), re.MULTILINE):
        plain = re.sub(r"[^\w\- ]", "", heading.lower())
        names.add(plain.replace(" ", "-"))
    return names


DURATION = re.compile(r"\d+ sec\(s\)|[\d:]+ (hour\(s\):)?min\(s\):sec\(s\) == \d+ secs")


def normal(line):
    """A line without what differs from run to run: process ids, times, blanks at the end."""
    line = re.sub(r"PID: \d+", "PID: 0", line.rstrip())
    line = DURATION.sub("0 sec(s)", line)
    line = re.sub(r"\| \d+ \| --", "| 0 | --", line)
    return re.sub(r"\bin \d+\.\d+ ?s\b", "in 0 s", line)


def pattern(line):
    """The regular expression of a line of a document, in which `...` stands for anything."""
    return ".*".join(re.escape(piece) for piece in normal(line).split("..."))


def printed_as_shown(shown, printed):
    """Whether the lines that a document shows are those that were printed; a line `...` stands for any lines.
    Blank lines count only within: neither end of the output."""
    pieces = ["(?:[^\n]*\n)*?" if line.strip() == "..." else pattern(line) + "\n" for line in without_blank_ends(shown)]
    lines = without_blank_ends([normal(line) for line in printed])
    return re.fullmatch("".join(pieces), "".join(line + "\n" for line in lines)) is not None
