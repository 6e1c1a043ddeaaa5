"""Folders of pieces that somebody has written by hand: every digest is right, and what they say is whatever the hand says."""

import re

import farm_liars

HEAD = "head "


class Forger:
    """Of a folder that latbox-all has made."""

    def __init__(self, folder):
        self.folder = folder

    def read(self, name):
        with open("%s/%s" % (self.folder, name), encoding="ascii") as file:
            return file.read()

    def write(self, name, text):
        with open("%s/%s" % (self.folder, name), "w", encoding="ascii") as file:
            file.write(text)

    def bodies(self):
        """The lines of the manifest, without their digests."""
        return [line.rsplit(" ", 1)[0] for line in self.read("manifest").splitlines() if line.startswith("piece ")]

    def write_manifest(self, bodies, change=lambda head: head):
        """With these lines; `change` makes another head of what stands there."""
        text = self.read("manifest")
        head = change(text[: text.index("\n" + HEAD) + 1])
        digest = farm_liars.digest(head)
        lines = ["%s %s\n" % (body, farm_liars.digest(digest + body)) for body in bodies]
        self.write("manifest", head + HEAD + digest + "\n" + "".join(lines))

    def result(self, number, *lines):
        """The text of one of this piece."""
        (entry,) = re.findall(r"^piece %d .* (\S+)$" % number, self.read("manifest"), re.MULTILINE)
        return farm_liars.sealed(["latbox-all result 1", "piece %d %s" % (number, entry), *lines])


def changed(bodies, draw):
    """The same lines with one error, which is not always one."""
    bodies = list(bodies)
    place = draw.randrange(len(bodies))
    number, parent, nodes, *prefixes = bodies[place].split()[1:]
    which = draw.randrange(len(prefixes))
    kind = draw.choice(("drop line", "drop prefix", "double", "move", "number", "side", "deeper", "parent"))
    if kind == "drop line":
        del bodies[place]
        return bodies
    if kind == "drop prefix" and len(prefixes) > 1:
        del prefixes[which]
    elif kind == "double":
        prefixes.append(prefixes[which])
    elif kind == "move":
        other = draw.randrange(len(bodies))
        bodies[other] += " " + prefixes.pop(which)
        if other == place or not prefixes:
            return bodies
    elif kind == "number":
        numbers = list(re.finditer(r"-?[0-9]+", prefixes[which]))
        if numbers:
            match = draw.choice(numbers)
            value = int(match[0]) + draw.choice((-1, 1, 2, 10**6, 10**40, -10**400))
            prefixes[which] = prefixes[which][: match.start()] + str(value) + prefixes[which][match.end() :]
    elif kind == "side":
        prefixes[which] = re.sub(r"[<>]-?[0-9]+", "", prefixes[which], count=1)
    elif kind == "deeper":
        prefixes[which] = prefixes[which].replace("*", "0,*")
    elif kind == "parent":
        parent = str(draw.randrange(1, len(bodies) + 2))
    bodies[place] = " ".join(["piece", number, parent, nodes, *prefixes])
    return bodies
