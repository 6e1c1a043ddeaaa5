"""Installed into a prefix that is then moved, and as a Debian package: everything is there, nothing else is, and it runs
from there. Run on a whole build: the pages and latbox-check are installed from it."""

import gzip
import os
import pty
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

import documents as documents_reader
import farm_support
import harness


def root():
    return os.path.dirname(harness.Settings.examples)


def build():
    return os.path.dirname(harness.Settings.binary)


def cached(name):
    """A variable of the build's cache; empty if it is not there."""
    with open(os.path.join(build(), "CMakeCache.txt"), encoding="utf-8") as file:
        match = re.search(r"^%s:[A-Z]+=(.*)$" % name, file.read(), re.MULTILINE)
    return match.group(1) if match else ""


def has_checker():
    """Whether this build makes latbox-check, whose page is then among the others."""
    return os.path.exists(os.path.join(build(), "packaging", "latbox-check.1"))


def has_all():
    """The same of latbox-all."""
    return os.path.exists(os.path.join(build(), "packaging", "latbox-all.1"))


def has_engine():
    """Whether latbox-farm can run here."""
    return has_all() and farm_support.has_engine()


def programs():
    return ["latbox"] + ["latbox-check"] * has_checker() + ["latbox-all"] * has_all() + tools()


def tools():
    """The commands of the Python package."""
    return sorted(os.listdir(os.path.join(root(), "python", "bin")))


def package_files():
    """Those of the Python package, as the tree has them, and the one that is written at installation."""
    folder = os.path.join(root(), "python", "latbox")
    found = {name for name in files_below(folder) if os.path.splitext(name)[1] in (".py", ".html", ".css", ".js", ".svg") or name == "py.typed"}
    return {"lib/python3/dist-packages/latbox/" + name for name in found | {"build_info.py"}}


def need_build():
    if not os.path.exists(os.path.join(build(), "CMakeCache.txt")):
        raise unittest.SkipTest("no build folder around the binary")


def need_tools(*names):
    for name in names:
        if shutil.which(name) is None:
            raise unittest.SkipTest("%s is not installed" % name)


def run(*command, statuses=(0,), **keywords):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                          timeout=harness.LIMIT, check=False, text=True, **keywords)
    if done.returncode not in statuses:
        raise AssertionError("%s: status %d\n%s" % (" ".join(command), done.returncode, done.stdout))
    return done.stdout


def files_below(folder):
    return {os.path.relpath(os.path.join(path, name), folder) for path, _, names in os.walk(folder) for name in names}


def documents():
    """What belongs below share/doc/latbox, as the tree has it."""
    found = {name for name in ("README.md", "LICENSE", "CHANGELOG.md", "CONTRIBUTING.md")
             if os.path.exists(os.path.join(root(), name))}
    for folder in ("docs", "examples"):
        found |= {os.path.join(folder, name) for name in files_below(os.path.join(root(), folder))
                  if os.path.splitext(name)[1] in (".md", ".svg", ".png", ".opt", ".lp", ".mps", ".json", ".py", ".sh")}
    return found


def programs_and_pages():
    return ({"bin/" + name for name in programs()} | {"share/man/man1/%s.1" % name for name in programs()} |
            {"share/bash-completion/completions/" + name for name in programs()} | jobs() | package_files())


def jobs():
    """The program that workers of a farm get, where the archives of its libraries were there."""
    return {"libexec/latbox/latbox-job"} if os.path.exists(os.path.join(build(), "latbox-job")) else set()


def environment(prefix, **more):
    return dict(os.environ, PATH=os.path.join(prefix, "bin") + os.pathsep + os.environ["PATH"], LC_ALL="C.UTF-8",
                MANWIDTH="80", PYTHONDONTWRITEBYTECODE="1", **more)


class PrefixCase(harness.Case):
    """Installed once for all tests of a class, into a folder with a blank in its name, and moved afterwards."""

    @classmethod
    def setUpClass(cls):
        need_build()
        need_tools("cmake")
        outside = tempfile.mkdtemp(prefix="latbox install ")
        cls.addClassCleanup(shutil.rmtree, outside, True)
        run("cmake", "--install", build(), "--prefix", os.path.join(outside, "first"))
        cls.prefix = os.path.join(outside, "moved")
        os.rename(os.path.join(outside, "first"), cls.prefix)

    def installed(self, *path):
        return os.path.join(self.prefix, *path)

    def installed_text(self, *path):
        with open(self.installed(*path), encoding="utf-8") as file:
            return file.read()

    def pages(self):
        folder = self.installed("share/man/man1")
        return [os.path.join(folder, name) for name in sorted(os.listdir(folder))]

    def run_installed(self, *arguments):
        done = subprocess.run(["latbox", *arguments], cwd=self.folder, env=environment(self.prefix), timeout=harness.LIMIT,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())


class PrefixTest(PrefixCase):
    def test_everything_and_nothing_else(self):
        expected = programs_and_pages() | {"share/doc/latbox/" + name for name in documents()}
        self.assertEqual(files_below(self.prefix), expected)

    def test_an_example_runs_in_another_folder(self):
        shutil.copy(self.installed("share/doc/latbox/examples/hundred_fowls.opt"), self.folder)
        result = self.run_installed("hundred_fowls.opt")
        self.assert_ends_well(result)
        self.assertIn("\nSolutions found: 1\n", result.out)
        self.assertEqual(len(self.stars("hundred_fowls")), 1)

    def test_the_usage_names_the_command(self):
        self.assertTrue(self.run_installed("--help=1").body().startswith("Usage: latbox [options] file.opt|file.lat\n"))

    def test_the_checker_runs(self):
        if not has_checker():
            self.skipTest("this build has no latbox-check")
        shutil.copy(self.installed("share/doc/latbox/examples/hundred_fowls.opt"), self.folder)
        self.assert_ends_well(self.run_installed("hundred_fowls.opt"))
        run("latbox-check", "hundred_fowls.opt", cwd=self.folder, env=environment(self.prefix))

    def test_latbox_all_runs_and_has_the_version_of_the_house(self):
        if not has_all():
            self.skipTest("this build has no latbox-all")
        shutil.copy(self.installed("share/doc/latbox/examples/hundred_fowls.opt"), self.folder)
        shown = run("latbox-all", "hundred_fowls.opt", cwd=self.folder, env=environment(self.prefix), statuses=(10,))
        self.assertTrue(shown.endswith("verdict: all 4\n"), shown)
        self.assertEqual(run("latbox-all", "--version", env=environment(self.prefix)).split("\n")[0],
                         "latbox-all v%s" % cached("CMAKE_PROJECT_VERSION"))

    def test_links_of_all_documents_hold(self):
        """None leads out of what is installed."""
        folder = self.installed("share/doc/latbox")
        found = 0
        for name in sorted(name for name in files_below(folder) if name.endswith(".md")):
            text = self.installed_text("share/doc/latbox", name)
            for link in documents_reader.links(text):
                path, _, anchor = link.partition("#")
                if "://" in link or link.startswith("mailto:"):
                    continue
                target = os.path.normpath(os.path.join(folder, os.path.dirname(name), path)) if path else os.path.join(folder, name)
                with self.subTest(document=name, link=link):
                    self.assertTrue(os.path.exists(target))
                    self.assertTrue(target == folder or target.startswith(folder + os.sep))
                    if anchor and target.endswith(".md"):
                        self.assertIn(anchor, documents_reader.anchors(self.installed_text(target)))
                found += 1
        self.assertGreater(found, 50)

    def test_the_package_is_found(self):
        folder = self.installed("lib/python3/dist-packages")
        shown = run(sys.executable, "-c", "import latbox.models, latbox.version as v; print(latbox.__file__, v.version())",
                    env=dict(os.environ, PYTHONPATH=folder, PYTHONDONTWRITEBYTECODE="1"), cwd=self.folder)
        self.assertEqual(shown, "%s %s\n" % (os.path.join(folder, "latbox", "__init__.py"), cached("CMAKE_PROJECT_VERSION")))
        with open(os.path.join(root(), "python", "pyproject.toml"), encoding="utf-8") as file:
            self.assertIn('\nversion = "%s"\n' % cached("CMAKE_PROJECT_VERSION"), file.read())

    def test_the_tools_run_and_have_the_version_of_the_house(self):
        for name in ("latbox-convert", "latbox-names", "latbox-plot"):
            self.assertEqual(run(name, "--version", env=environment(self.prefix)),
                             "%s %s\n" % (name, cached("CMAKE_PROJECT_VERSION")))
        shutil.copy(self.installed("share/doc/latbox/examples/models/shifts.lp"), self.folder)
        if has_all():
            shown = run("latbox-solve", "--quiet", "shifts.lp", cwd=self.folder, env=environment(self.prefix), statuses=(10,))
            self.assertTrue(shown.startswith("status: optimal\nobjective: 552\n"), shown)
        run("latbox-convert", "shifts.lp", "shifts.opt", cwd=self.folder, env=environment(self.prefix))
        self.assert_ends_well(self.run_installed("--snorm=0", "--tnorm=540", "--rtime=50", "shifts.opt"))
        shown = run("latbox-names", "--first=1", "shifts.opt", cwd=self.folder, env=environment(self.prefix))
        self.assertTrue(shown.startswith("Solution 1: cost = 552 (minimise)"), shown)


class ManualTest(PrefixCase):
    def test_no_warning_of_groff(self):
        need_tools("groff")
        for page in self.pages():
            self.assertEqual(run("groff", "-man", "-Tutf8", "-ww", "-z", page), "")

    def test_no_warning_of_man(self):
        need_tools("man", "groff")
        for page in self.pages():
            done = subprocess.run(["man", "--warnings", "-P", "cat", "-l", page], env=environment(self.prefix), check=False,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=harness.LIMIT, text=True)
            self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_no_warning_of_mandoc(self):
        need_tools("mandoc")
        for page in self.pages():
            self.assertEqual(run("mandoc", "-Tlint", "-Wwarning", page), "")

    def test_man_finds_it_by_the_search_path(self):
        need_tools("man")
        variables = environment(self.prefix)
        variables.pop("MANPATH", None)
        self.assertEqual(run("man", "-w", "latbox", env=variables).strip(), self.installed("share/man/man1/latbox.1"))

    def test_sections(self):
        sections = re.findall(r"^\.SH (.*)$", self.installed_text("share/man/man1/latbox.1"), re.MULTILINE)
        self.assertEqual(sections, ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "CONSOLE", "FILES", "EXIT STATUS",
                                    "SIGNALS", "EXAMPLES", "SEE ALSO"])

    def test_options_are_those_of_the_usage(self):
        usage = re.findall(r"^  --(\w+) \|.*\[ Default: (.*) \]$", self.run_installed("--help=1").out, re.MULTILINE)
        page = self.installed_text("share/man/man1/latbox.1").replace("\\-", "-")
        self.assertEqual(re.findall(r"^\.BI --(\w+)= ", page, re.MULTILINE), [key for key, _ in usage])
        self.assertEqual(re.findall(r"Default: \\fB(.*?)\\fR\.$", page, re.MULTILINE), [value for _, value in usage])

    def test_options_of_the_checker_are_those_of_its_usage(self):
        if not has_checker():
            self.skipTest("this build has no latbox-check")
        usage = run("latbox-check", "--help", env=environment(self.prefix))
        page = self.installed_text("share/man/man1/latbox-check.1").replace("\\-", "-")
        self.assertEqual(re.findall(r"^\.TP\n\.B (--\w+)(?:=.*)?$", page, re.MULTILINE),
                         re.findall(r"^  (--\w+)", usage, re.MULTILINE))

    def test_options_of_the_tools_are_those_of_their_usage(self):
        for name in ("latbox-convert", "latbox-names", "latbox-plot"):
            usage = run(name, "--help", env=environment(self.prefix))
            page = self.installed_text("share/man/man1/%s.1" % name).replace("\\-", "-")
            told = re.findall(r"^\.TP\n\.B\w* .*?(--[a-z-]+)", page, re.MULTILINE)
            self.assertEqual(sorted(told), sorted(set(re.findall(r"^  (?:-h, )?(--[a-z-]+)", usage, re.MULTILINE))), name)

    def test_options_of_latbox_solve_are_those_of_its_usage(self):
        usage = run("latbox-solve", "--help", env=environment(self.prefix))
        page = self.installed_text("share/man/man1/latbox-solve.1").replace("\\-", "-")
        told = re.findall(r"^\.TP\n\.BI? (--[a-z-]+)(?:\[?= (\S+))?(?: \])?\n(.*)$", page, re.MULTILINE)
        shown = re.findall(r"^  (--[a-z-]+)(?:(?: |\[=)([^\s\]]+)\]?)? +(\S.*)$", usage, re.MULTILINE)
        self.assertEqual([(key, value, re.sub(r"\\f[BR]", "`", text)) for key, value, text in told], shown)
        self.assertGreater(len(shown), 15)

    def test_statuses_of_latbox_solve_are_those_of_its_document(self):
        page = self.installed_text("share/man/man1/latbox-solve.1").replace("\\-", "-")
        told = re.findall(r'^\.B "status: (\w+)"\nExit status (\d+): (.*)\.$', page, re.MULTILINE)
        document = self.installed_text("share/doc/latbox/docs/solve.md")
        self.assertEqual(told, re.findall(r"^\| `(\w+)` \| \w+ \| (\d+) \| .* \| (.*) \|$", document, re.MULTILINE))
        self.assertEqual(len(told), 8)

    def usage_of_all(self):
        """What latbox-all says of itself: [(--key, whether a value is wanted, text)], and its verdicts with their status."""
        if not has_all():
            self.skipTest("this build has no latbox-all")
        usage = run("latbox-all", "--help", env=environment(self.prefix))
        options = re.findall(r"^  (--[a-z-]+)(=\w+)? +(\S.*)$", usage, re.MULTILINE)
        self.assertEqual(len(options), len(re.findall(r"^ +--", usage, re.MULTILINE)))
        return ([(key, value != "", text) for key, value, text in options],
                re.findall(r"^  (verdict: \w+).* status (\d+) ", usage, re.MULTILINE))

    def test_options_of_latbox_all_are_those_of_its_usage(self):
        options, _ = self.usage_of_all()
        page = self.installed_text("share/man/man1/latbox-all.1").replace("\\-", "-")
        told = re.findall(r"^\.TP\n\.BI? (--[a-z-]+)(= \w+)?\n(.*)$", page, re.MULTILINE)
        self.assertEqual([(key, value != "", text) for key, value, text in told], options)

    def test_verdicts_of_latbox_all_are_those_of_its_usage(self):
        _, verdicts = self.usage_of_all()
        page = self.installed_text("share/man/man1/latbox-all.1")
        told = re.findall(r'^\.TP\n\.BI? "?(verdict: \w+).*\nExit status (\d+)\.$', page, re.MULTILINE)
        self.assertEqual(told, verdicts)
        self.assertEqual(len(told), 5)

    def test_examples_run_as_printed(self):
        for page in self.pages():
            with open(page, encoding="utf-8") as file:
                commands = re.findall(r"^\$ (.*)$", file.read().replace("\\-", "-"), re.MULTILINE)
            self.assertTrue(commands)
            copy = self.path(os.path.basename(page))
            shutil.copytree(self.installed("share/doc/latbox/examples"), copy)
            for command in commands:
                proven = re.search(r"(^|& )latbox-(all|solve|farm) ", command) and "--check" not in command
                if (command.startswith("latbox-solve ") and not has_all()) or ("latbox-farm " in command and not has_engine()):
                    continue
                run("sh", "-c", command, cwd=copy, env=environment(self.prefix), statuses=(10,) if proven else (0,))


class OptionsPageTest(harness.Case):
    def test_the_page_in_the_tree_is_the_one_of_the_build(self):
        need_build()
        with open(os.path.join(build(), "packaging", "options.md"), encoding="utf-8") as file:
            made = file.read()
        with open(os.path.join(root(), "docs", "options.md"), encoding="utf-8") as file:
            kept = file.read()
        self.assertEqual(kept, made, "build the target update_options_page")


class Shell:
    """An interactive bash in a terminal, so that completion is asked for as a user does, by the tabulator."""

    def __init__(self, folder, variables):
        self.text = ""
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"],
                       dict(variables, TERM="dumb", PS1="ready> ", INPUTRC="/dev/null", HISTFILE="/dev/null"))

    def type(self, text):
        self.text = ""
        os.write(self.terminal, text.encode())

    def wait_for(self, part):
        end = time.monotonic() + harness.LIMIT
        while part not in self.text:
            if time.monotonic() > end:
                raise AssertionError("%r never came: %r" % (part, self.text))
            self.text += os.read(self.terminal, 4096).decode(errors="replace")

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.pid, 0)


class CompletionTest(PrefixCase):
    def setUp(self):
        super().setUp()
        need_tools("bash")
        self.script = self.installed("share/bash-completion/completions/latbox")
        for name in ("prog one.opt", "prog.sol", "prog.all", "notes.txt"):
            self.write(name, "")
        os.mkdir(self.path("more.d"))

    def complete(self, line, breaks=" \t\n\"'><=;|&(:", script=None, point=None):
        """What the function offers for the last word of the line; the words are as bash breaks them."""
        words = [word for word in re.split(r"[ ]|(=)" if "=" in breaks else r"[ ]", line) if word is not None]
        last = "" if words[-1] == "=" else words[-1]
        code = ('. "$1"; COMP_LINE=$2; COMP_POINT=${#2}; COMP_WORDBREAKS=$3; COMP_WORDS=($2); '
                'COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "$5" x "$4"; [ ${#COMPREPLY[@]} = 0 ] || '
                'printf "%s\\n" "${COMPREPLY[@]}"')
        name = os.path.basename(script or self.script)
        return run("bash", "-c", code, "bash", script or self.script, line, breaks, last,
                   "_" + name.replace("-", "_"), cwd=self.folder).splitlines()

    def test_every_option(self):
        usage = re.findall(r"^  --(\w+) \|", self.run_installed("--help=1").out, re.MULTILINE)
        self.assertEqual(self.complete("latbox --"), ["--%s=" % key for key in usage])
        self.assertEqual(self.complete("latbox -"), ["--%s=" % key for key in usage])

    def test_part_of_a_key(self):
        self.assertEqual(self.complete("latbox --be"), ["--beta=", "--bench="])
        self.assertEqual(self.complete("latbox --sol=0 --co"), ["--consistency=", "--collectLimit="])
        self.assertEqual(self.complete("latbox --nosuch"), [])

    def test_values(self):
        self.assertEqual(self.complete("latbox --eprune="), ["0", "1", "2", "3"])
        self.assertEqual(self.complete("latbox --tnorm=-"), ["-inf"])
        self.assertEqual(self.complete("latbox --beta="), [])
        self.assertEqual(self.complete("latbox --deep=", breaks=" \t\n"), ["--deep=0", "--deep=1"])

    def test_programs_and_folders(self):
        self.assertEqual(self.complete("latbox "), ["more.d", "prog one.opt"])
        self.assertEqual(self.complete("latbox --sol=0 p"), ["prog one.opt"])

    def test_the_checker_takes_a_program_then_solutions(self):
        if not has_checker():
            self.skipTest("this build has no latbox-check")
        script = self.installed("share/bash-completion/completions/latbox-check")
        self.assertEqual(self.complete("latbox-check p", script=script), ["prog one.opt"])
        self.assertEqual(self.complete("latbox-check --quiet p", script=script), ["prog one.opt"])
        self.assertEqual(self.complete("latbox-check a.opt p", script=script), ["prog.sol", "prog.all"])
        usage = run("latbox-check", "--help", env=environment(self.prefix))
        self.assertEqual(self.complete("latbox-check --", script=script),
                         re.findall(r"^  (--\w+=?)", usage, re.MULTILINE))
        self.assertEqual(self.complete("latbox-check --proof=no", script=script), ["notes.txt"])
        self.assertEqual(self.complete("latbox-check --join=no", script=script, breaks=" \t\n"), ["--join=notes.txt"])
        self.assertEqual(self.complete("latbox-check --proof=notes.txt p", script=script), ["prog one.opt"])
        self.assertEqual(self.complete("latbox-check --part=", script=script), [])

    def test_the_tools(self):
        for name in ("m.lp", "m.mps.gz", "run.log", "run.jsonl"):
            self.write(name, "")
        for name in ("latbox-convert", "latbox-names", "latbox-plot"):
            script = self.installed("share/bash-completion/completions/" + name)
            usage = run(name, "--help", env=environment(self.prefix))
            offered = self.complete(name + " --", script=script)
            self.assertEqual(sorted(word.rstrip("=") for word in offered),
                             sorted(set(re.findall(r"^  (?:-h, )?(--[a-z-]+)", usage, re.MULTILINE))))
        for line, expected in (("latbox-convert m", ["more.d", "m.lp", "m.mps.gz"]), ("latbox-names prog", ["prog one.opt",
                               "prog.sol", "prog.all"]), ("latbox-plot r", ["run.log", "run.jsonl"]),
                               ("latbox-plot --x=", ["time", "iteration"]), ("latbox-convert --format=f", ["fixed-mps", "free-mps"]),
                               ("latbox-convert --marker", ["--marker-bounds="])):
            script = self.installed("share/bash-completion/completions/" + line.split()[0])
            self.assertEqual(self.complete(line, script=script), expected)
            if "=" in line:
                key = line.split()[1].split("=")[0]
                self.assertEqual(self.complete(line, breaks=" \t\n", script=script), ["%s=%s" % (key, v) for v in expected])

    def complete_solve(self, line, **keywords):
        return self.complete(line, script=self.installed("share/bash-completion/completions/latbox-solve"), **keywords)

    def test_every_option_of_latbox_solve(self):
        usage = run("latbox-solve", "--help", env=environment(self.prefix))
        keys = [key + "=" * bool(value) for key, value in re.findall(r"^  (--[a-z-]+)(?:\[=\w+\])?( \S+)?  ", usage, re.MULTILINE)]
        self.assertIn("--zero-exit", keys)
        self.assertEqual(self.complete_solve("latbox-solve --"), keys)
        self.assertEqual(self.complete_solve("latbox-solve -"), keys)
        self.assertEqual(self.complete_solve("latbox-solve --time 20 --se"), ["--seed="])
        self.assertEqual(self.complete_solve("latbox-solve --nosuch"), [])

    def test_values_and_files_of_latbox_solve(self):
        for name in ("m.lp", "m.mps.gz"):
            self.write(name, "")
        engines = ["auto", "search", "complete"]
        for begin, offered in (("--engine", engines), ("--solutions", ["all"]), ("--time", []), ("--proof", ["more.d"])):
            self.assertEqual(self.complete_solve("latbox-solve %s=" % begin), offered)
            self.assertEqual(self.complete_solve("latbox-solve %s " % begin), offered)
            self.assertEqual(self.complete_solve("latbox-solve %s=" % begin, breaks=" \t\n"),
                             ["%s=%s" % (begin, value) for value in offered])
        for line in ("--format=f", "--format f"):
            self.assertEqual(self.complete_solve("latbox-solve " + line), ["fixed-mps", "free-mps"])
        for line in ("--output=no", "--json no", "--check=no"):
            self.assertEqual(self.complete_solve("latbox-solve " + line), ["notes.txt"])
        self.assertEqual(self.complete_solve("latbox-solve "), ["more.d", "m.lp", "m.mps.gz", "prog one.opt"])
        self.assertEqual(self.complete_solve("latbox-solve --time 20 m"), ["more.d", "m.lp", "m.mps.gz"])
        self.assertEqual(self.complete_solve("latbox-solve --quiet --time=20 m.l"), ["m.lp"])

    def test_options_values_and_files_of_latbox_farm(self):
        script = self.installed("share/bash-completion/completions/latbox-farm")
        usage = run("latbox-farm", "--help", env=environment(self.prefix))
        keys = [key + "=" * bool(value) for key, value in re.findall(r"^  (--[a-z-]+)( \S+)?  ", usage, re.MULTILINE)]
        self.assertIn("--pieces=", keys)
        self.assertEqual(self.complete("latbox-farm --", script=script), keys)
        for line, offered in (("--ties=", ["0", "1"]), ("--jobs=", ["more.d"]), ("--pieces=", []), ("--password no", ["notes.txt"]),
                              ("", ["more.d", "prog one.opt"])):
            self.assertEqual(self.complete("latbox-farm " + line, script=script), offered)

    def complete_all(self, line, **keywords):
        if not has_all():
            self.skipTest("this build has no latbox-all")
        script = self.installed("share/bash-completion/completions/latbox-all")
        return self.complete(line, script=script, **keywords)

    def test_every_option_of_latbox_all(self):
        offered = self.complete_all("latbox-all -")
        usage = run("latbox-all", "--help", env=environment(self.prefix))
        self.assertEqual(offered, [key + ("=" if value else "") for key, value in
                                   re.findall(r"^  (--[a-z-]+)(=\w+)?", usage, re.MULTILINE)])
        self.assertEqual(self.complete_all("latbox-all --"), offered)

    def test_values_and_files_of_latbox_all(self):
        self.assertEqual(self.complete_all("latbox-all --re"), ["--resume="])
        self.assertEqual(self.complete_all("latbox-all --first="), ["0", "1"])
        self.assertEqual(self.complete_all("latbox-all --resume=", breaks=" \t\n"), ["--resume=0", "--resume=1"])
        self.assertEqual(self.complete_all("latbox-all --limit="), [])
        self.assertEqual(self.complete_all("latbox-all --out=no"), ["notes.txt"])
        self.assertEqual(self.complete_all("latbox-all --out=no", breaks=" \t\n"), ["--out=notes.txt"])
        self.assertEqual(self.complete_all("latbox-all --count=1 p"), ["prog one.opt"])
        self.assertEqual(self.complete_all("latbox-all "), ["more.d", "prog one.opt"])

    def test_in_a_terminal(self):
        shell = Shell(self.folder, environment(self.prefix, SCRIPT=self.script))
        self.addCleanup(shell.close)
        shell.wait_for("ready> ")
        for typed, completed in ((". \"$SCRIPT\"\r", "ready> "), ("latbox --bet\t7", "--beta=7"),
                                 ("\x15latbox --tnorm=\t7", "--tnorm=-inf 7"), ("\x15latbox pro\t7", "prog\\ one.opt 7")):
            shell.type(typed)
            shell.wait_for(completed)


class PackageTest(harness.Case):
    @classmethod
    def setUpClass(cls):
        need_build()
        need_tools("cpack", "dpkg-deb", "dpkg", "gzip")
        if cached("LATBOX_SANITIZE"):
            raise unittest.SkipTest("a build with sanitizers is not packed")
        outside = tempfile.mkdtemp(prefix="latbox")
        cls.addClassCleanup(shutil.rmtree, outside, True)
        run("cpack", "-G", "DEB", "--config", os.path.join(build(), "CPackConfig.cmake"), "-B", outside, cwd=outside)
        packages = [name for name in os.listdir(outside) if name.endswith(".deb")]
        architecture = run("dpkg", "--print-architecture").strip()
        assert packages == ["latbox_%s_%s.deb" % (cached("CMAKE_PROJECT_VERSION"), architecture)], packages
        cls.package = os.path.join(outside, packages[0])
        cls.unpacked = os.path.join(outside, "unpacked")
        run("dpkg-deb", "-x", cls.package, cls.unpacked)

    def field(self, name):
        return run("dpkg-deb", "-f", self.package, name).strip()

    def test_what_it_says_of_itself(self):
        for name, value in (("Package", "latbox"), ("Version", cached("CMAKE_PROJECT_VERSION")), ("Section", "math"),
                            ("Priority", "optional"), ("Maintainer", "latbox developers <latbox@localhost>")):
            self.assertEqual(self.field(name), value)
        self.assertEqual(self.field("Provides"), "python3-latbox")
        self.assertEqual(self.field("Recommends"), "coop-computing-tools, python3-workqueue")
        self.assertTrue(self.field("Description").startswith("solver for small, hard integer programs"))

    def test_bytecode_comes_and_goes_with_it(self):
        for script, command in (("postinst", "py3compile -p latbox"), ("prerm", "py3clean -p latbox")):
            self.assertIn("\n  %s\n" % command, run("dpkg-deb", "-I", self.package, script))
        control = self.path("control")
        run("dpkg-deb", "-e", self.package, control)
        self.assertEqual({name for name in os.listdir(control) if os.access(os.path.join(control, name), os.X_OK)},
                         {"postinst", "prerm"})

    def test_what_it_depends_on(self):
        need_tools("dpkg-shlibdeps", "file")
        depends = self.field("Depends")
        self.assertRegex(depends, r"\blibc6 \(>= ")
        self.assertRegex(depends, r"\blibstdc\+\+6 \(>= ")
        self.assertRegex(depends, r"\bpython3 \(>= 3\.11\)")
        self.assertNotRegex(depends, "gtest|benchmark")
        # Those of latbox-check and latbox-all alone.
        self.assertEqual(bool(re.search(r"\blibgmp10\b", depends)), has_checker() or has_all())
        self.assertEqual(bool(re.search(r"\blibfplll\d", depends)), has_all())

    def test_everything_and_nothing_else(self):
        lines = run("dpkg-deb", "-c", self.package).splitlines()
        self.assertEqual([line for line in lines if " root/root " not in line], [])
        pages = {name + ".gz" if "/man1/" in name else name for name in programs_and_pages()}
        rest = (documents() - {"LICENSE"}) | {"copyright", "changelog.gz"}
        expected = {"usr/" + name for name in pages} | {"usr/share/doc/latbox/" + name for name in rest}
        self.assertEqual(files_below(self.unpacked), expected)
        self.assertEqual({line.split()[-1][2:] for line in lines if line.startswith("-")}, expected)

    def test_compressed_pages_hold_the_pages(self):
        for name in programs():
            with gzip.open(os.path.join(self.unpacked, "usr/share/man/man1", name + ".1.gz"), "rb") as file:
                packed = file.read()
            with open(os.path.join(build(), "packaging", name + ".1"), "rb") as file:
                self.assertEqual(packed, file.read())

    def test_it_runs(self):
        shutil.copy(os.path.join(self.unpacked, "usr/share/doc/latbox/examples/hundred_fowls.opt"), self.folder)
        run(os.path.join(self.unpacked, "usr/bin/latbox"), "hundred_fowls.opt", cwd=self.folder)
        self.assertEqual(len(self.stars("hundred_fowls")), 1)

    def test_the_module_runs_with_the_engines_of_the_package(self):
        """As Python finds it below /usr; -I keeps that of the tree away."""
        if not has_all():
            self.skipTest("this build has no latbox-all")
        code = ("import sys; sys.path.insert(0, %r); import latbox; from latbox.solving import binaries\n"
                "print(latbox.solve([[3, 5]], [19], 0, 9).x, binaries.find('latbox'))" %
                os.path.join(self.unpacked, "usr/lib/python3/dist-packages"))
        variables = {key: value for key, value in os.environ.items() if key != "LATBOX_BIN_DIR"}
        self.assertEqual(run(sys.executable, "-I", "-B", "-c", code, env=variables),
                         "Point(3, 2) %s\n" % os.path.join(self.unpacked, "usr/bin/latbox"))


class DocumentTest(harness.Case):
    def test_the_commands_of_the_document(self):
        """In a copy of the tree, with a home of its own. The build itself is only asked for what it would do; from there
        on the build under test takes its place."""
        need_build()
        need_tools("bash", "cmake", "ninja", "cpack", "dpkg-deb", "dpkg", "gzip")
        if cached("LATBOX_SANITIZE"):
            self.skipTest("a build with sanitizers is not installed")
        copy = self.path("tree")
        shutil.copytree(root(), copy, ignore=shutil.ignore_patterns("build", ".git", "__pycache__", "*.sol", "*.lat"))
        with open(os.path.join(root(), "docs", "install.md"), encoding="utf-8") as file:
            commands = re.findall(r"^    \$ (.*)$", file.read(), re.MULTILINE)
        self.assertTrue(commands[1].startswith("cmake --build "))
        has_manual = shutil.which("man") is not None
        commands = [command for command in commands if has_manual or not command.startswith("man ")]
        commands[1] += ' -- -n && rm -r build/release && ln -s "$BUILD" build/release'
        os.mkdir(self.path("home"))
        out = run("bash", "-e", "-c", "\n".join(commands), cwd=copy,
                  env=dict(os.environ, HOME=self.path("home"), BUILD=build(), LC_ALL="C.UTF-8"))
        self.assertEqual(out.count("\nSolutions found: 1\n"), 2 * 2)
        self.assertEqual("\nSYNOPSIS\n" in out, has_manual)


if __name__ == "__main__":
    harness.main()
