"""The rules of the tree: includes lead downward and in no circle, files and classes stay small, a file says what it is.

The rules are in structure.py. The other half of the tests is that each of them says no.
"""

import os
import unittest

import harness
import structure


def folder(name: str) -> str:
    return os.path.join(os.path.dirname(harness.Settings.examples), name)


def sources() -> structure.Tree:
    return structure.read_tree(folder("src"))


class StructureCase(unittest.TestCase):
    maxDiff = None

    def assert_none(self, violations: list[str]) -> None:
        self.assertEqual(violations, [], "\n" + "\n".join(violations))


class TreeTest(StructureCase):
    def test_the_tree_is_read(self) -> None:
        tree = sources()
        self.assertIn("main.cpp", tree)
        for layer in structure.LAYERS:
            self.assertTrue([path for path in tree if path.startswith(layer + "/")], layer)
        counted = {name for text in tree.values() for name, _ in structure.Classes(text).found}
        self.assertLessEqual(structure.MANY_MEMBERS | {"Lattice", "YLattice"}, counted)

    def test_files_include_only_their_own_layer_and_those_below(self) -> None:
        self.assert_none(structure.upward_includes(sources()))

    def test_includes_make_no_cycle(self) -> None:
        self.assert_none(structure.include_cycles(sources()))

    def test_files_are_not_long(self) -> None:
        self.assert_none(structure.long_files(sources()))

    def test_classes_have_few_data_members(self) -> None:
        self.assert_none(structure.large_classes(sources()))

    def test_files_say_what_they_are(self) -> None:
        self.assert_none(structure.without_introduction(sources()))


class HousesTest(StructureCase):
    """The programs beside the solver."""

    HOUSES = {"check": structure.CHECK, "complete": structure.COMPLETE}

    def tree(self, house: str) -> structure.Tree:
        return structure.read_tree(folder(house), house + "/")

    def test_the_trees_are_read(self) -> None:
        for house, rooms in self.HOUSES.items():
            self.assertEqual({path.partition("/")[0] for path in self.tree(house) if "/" in path}, set(rooms))
        self.assertIn(("lattice/kernel.h", True), list(structure.includes(self.tree("complete"), "lattice/kernel.cpp")))

    def test_files_include_only_their_own_room_and_those_before(self) -> None:
        for house, rooms in self.HOUSES.items():
            self.assert_none(structure.upward_includes(self.tree(house), rooms))

    def test_includes_make_no_cycle(self) -> None:
        for house in self.HOUSES:
            self.assert_none(structure.include_cycles(self.tree(house)))

    def test_files_are_not_long(self) -> None:
        for house in self.HOUSES:
            self.assert_none(structure.long_files(self.tree(house)))

    def test_files_say_what_they_are(self) -> None:
        for house in self.HOUSES:
            self.assert_none(structure.without_introduction(self.tree(house)))


class IncludeTest(unittest.TestCase):
    """Small trees: what is refused, and what is not."""

    def upward(self, path: str, line: str) -> list[str]:
        tree = {"lib/set.h": "", "lib/os/clock.h": "", "lattice/lattice.h": "", "driver/run.h": "", "main.cpp": ""}
        return structure.upward_includes({**tree, path: line + "\n"})

    def test_every_layer_above_is_refused(self) -> None:
        for above in range(1, len(structure.LAYERS)):
            for below in range(above):
                source = structure.LAYERS[below] + "/a.cpp"
                header = structure.LAYERS[above] + "/b.h"
                tree = {source: '#include "%s"\n' % header, header: ""}
                self.assertEqual(structure.upward_includes(tree), ["%s includes %s, a layer above" % (source, header)])

    def test_every_layer_below_and_the_own_one_may_be_included(self) -> None:
        for own in range(len(structure.LAYERS)):
            for other in range(own + 1):
                source = structure.LAYERS[own] + "/a.h"
                header = structure.LAYERS[other] + "/b.h"
                self.assertEqual(structure.upward_includes({source: '#include "%s"\n' % header, header: ""}), [])

    def test_main_includes_all_and_is_included_by_none(self) -> None:
        self.assertEqual(self.upward("main.cpp", '#include "driver/run.h"'), [])
        self.assertEqual(self.upward("driver/run.cpp", '#include "main.cpp"'),
                         ["driver/run.cpp includes main.cpp, a layer above"])

    def test_every_way_to_write_it(self) -> None:
        for line in ('#include "lattice/lattice.h"', '  #  include  "lattice/lattice.h" // why',
                     '#include <lattice/lattice.h>', '#include"lattice/lattice.h"', '#include "../lattice/lattice.h"',
                     '#include "../lib/../lattice/lattice.h"', '/* */\n#include "lattice/lattice.h"',
                     '/* */ #include "lattice/lattice.h"', '#ifdef X\n#include "lattice/lattice.h"\n#endif'):
            with self.subTest(line):
                self.assertEqual(self.upward("lib/array.h", line),
                                 ["lib/array.h includes lattice/lattice.h, a layer above"])

    def test_a_folder_below_belongs_to_its_layer(self) -> None:
        self.assertEqual(self.upward("lib/os/file.h", '#include "driver/run.h"'),
                         ["lib/os/file.h includes driver/run.h, a layer above"])
        self.assertEqual(self.upward("lib/set.h", '#include "lib/os/clock.h"'), [])

    def test_beside_the_file_comes_first(self) -> None:
        self.assertEqual(self.upward("lib/os/file.cpp", '#include "clock.h"'), [])

    def test_what_is_not_in_the_tree(self) -> None:
        self.assertEqual(self.upward("driver/run.cpp", '#include "lib/none.h"'),
                         ["driver/run.cpp includes lib/none.h, which is not in the tree"])
        self.assertTrue(self.upward("driver/run.cpp", "#include HEADER"))
        self.assertEqual(self.upward("driver/run.cpp", "#include <vector>"), [])

    def test_a_comment_includes_nothing(self) -> None:
        self.assertEqual(self.upward("lib/a.h", '// #include "driver/run.h"'), [])
        self.assertEqual(self.upward("lib/a.h", '/*\n#include "driver/run.h"\n*/'), [])

    def test_a_folder_that_is_no_layer(self) -> None:
        self.assertEqual(self.upward("extras/a.h", ""), ["extras/a.h: its folder is no layer"])

    def test_a_cycle_of_two(self) -> None:
        tree = {"lib/a.h": '#include "lib/b.h"\n', "lib/b.h": '#include "a.h"\n', "lib/c.h": '#include "lib/a.h"\n'}
        self.assertEqual(structure.include_cycles(tree), ["lib/a.h > lib/b.h > lib/a.h"])

    def test_a_long_cycle_and_one_in_itself(self) -> None:
        tree = {"lib/%d.h" % i: '#include "lib/%d.h"\n' % ((i + 1) % 9) for i in range(9)}
        self.assertEqual(len(structure.include_cycles(tree)), 1)
        self.assertEqual(structure.include_cycles({"lib/a.h": '#include "lib/a.h"\n'}), ["lib/a.h > lib/a.h"])

    def test_two_ways_to_one_header_are_no_cycle(self) -> None:
        tree = {"lib/a.h": '#include "lib/b.h"\n#include "lib/c.h"\n', "lib/b.h": '#include "lib/c.h"\n', "lib/c.h": ""}
        self.assertEqual(structure.include_cycles(tree), [])


class LengthTest(unittest.TestCase):
    def assert_limit(self, path: str, limit: int) -> None:
        self.assertEqual(structure.long_files({path: "x\n" * limit}), [])
        self.assertEqual(structure.long_files({path: "x\n" * (limit + 1)}),
                         ["%s: %d lines, at most %d" % (path, limit + 1, limit)])

    def test_limits(self) -> None:
        self.assert_limit("lib/array.h", 300)
        self.assert_limit("lib/array.cpp", 500)
        self.assert_limit("lattice/lattice.h", 249)
        self.assert_limit("main.cpp", 500)

    def test_introductions(self) -> None:
        tree = {"lib/a.h": "// What it is.\n", "lib/a.cpp": '#include "lib/a.h"\n', "lib/b.cpp": "// What it is.\n"}
        self.assertEqual(structure.without_introduction(tree), [])
        tree = {"lib/a.h": "#pragma once\n// Later.\n", "lib/a.cpp": '#include "lib/a.h"\n', "lib/b.cpp": "int b;\n"}
        self.assertEqual(structure.without_introduction(tree), ["lib/a.cpp", "lib/a.h", "lib/b.cpp"])


# A declaration in a class, and how many data members it makes.
DECLARATIONS = {
    "int a;": 1,
    "int a, b, *c;": 3,
    "long a = 0, b{1}, c[2] = {1, 2};": 3,
    "unsigned a : 3, b : 4;": 2,
    "T R = T(0);": 1,
    "Map<K, V> map;": 1,
    "std::map<std::string, std::vector<std::pair<int, long>>> map, other;": 2,
    "std::atomic<bool> on{false};": 1,
    "std::function<void(int, long)> call;": 1,
    "std::function<int(int)> call = [](int x) { return x; };": 1,
    "void (*handler)(int, long) = nullptr;": 1,
    "decltype(f(1)) a;": 1,
    "alignas(64) mutable int a;": 1,
    "[[maybe_unused]] const int& a;": 1,
    "std::array<int, (3 > 2)> a, b;": 2,
    "bool less = 1 < 2;": 1,
    "struct Other other;": 1,
    "struct { int x, y; } point;": 1,
    "struct Point { int x, y; } first, second;": 2,
    "enum Colour { red, green } colour;": 1,
    "union { int a; float b; };": 2,
    "private: int a;": 1,
    "int a;  // int b;": 1,
    "/* int b; */ int a;": 1,
    "char a = ';', b = '{';": 2,
    'std::string text = "};int a;";': 1,
    'std::string text = R"(};" int a;)";': 1,
    "int a = 1'000'000;": 1,
    ";": 0,
    "static int a;": 0,
    "static constexpr int a = 1, b = 2;": 0,
    "inline static std::map<int, int> a{};": 0,
    "using A = int;": 0,
    "typedef struct { int x; } A;": 0,
    "static struct { int x; } shared;": 0,
    "friend class Other;": 0,
    "friend bool operator==(const A&, const A&) = default;": 0,
    "class Other;": 0,
    "enum class Colour { red, green };": 0,
    "enum class Colour : int;": 0,
    "struct Point { int x, y; };": 0,
    "static_assert(sizeof(int) == 4);": 0,
    "void f();": 0,
    "void f(int a, int b = 1) const;": 0,
    "int f(std::vector<int> a = {}) { int b; return b; }": 0,
    "A() : a(1), b{2} { int c; }": 0,
    "A() : a{1}, b{2} {}": 0,
    "A() = default;": 0,
    "virtual ~A() = 0;": 0,
    "A& operator=(const A&) = delete;": 0,
    "bool operator<(const A& other) const { return a < other.a; }": 0,
    "explicit operator bool() const { return true; }": 0,
    "void operator()(int) const;": 0,
    "template <class U> U f(U u) { U v = u; return v; }": 0,
    "template <class U = Map<int, int>> struct Inner { U a; };": 0,
    "template <class U> requires std::integral<U> void f(U u);": 0,
    "auto f() -> Map<int, int> { return {}; }": 0,
    "void f() noexcept(true);": 0,
    "#define M int a; \\\n int b;\n": 0,
}


class ClassTest(unittest.TestCase):
    def count(self, text: str, name: str = "A") -> int:
        counts = [members for found, members in structure.Classes(text).found if found == name]
        self.assertEqual(len(counts), 1, text)
        return counts[0]

    def test_every_declaration_alone(self) -> None:
        for declaration, members in DECLARATIONS.items():
            with self.subTest(declaration):
                self.assertEqual(self.count("class A {\n%s\n};" % declaration), members)

    def test_every_declaration_between_others(self) -> None:
        for declaration, members in DECLARATIONS.items():
            with self.subTest(declaration):
                self.assertEqual(self.count("class A {\nint p;\n%s\nint q;\n};\nint r;" % declaration), members + 2)

    def test_every_head(self) -> None:
        for head in ("struct A", "class A final", "class A : public B<int, C>, D", "template <class T, int n = 2> class A",
                     "template <> struct A<int>", "struct alignas(16) A", "class [[nodiscard]] A", "struct B<T>::A",
                     "template <class T> requires std::integral<T> struct A"):
            with self.subTest(head):
                self.assertEqual(self.count(head + " { int a, b; };"), 2)

    def test_scopes_around(self) -> None:
        for around in ("namespace x { %s }", "namespace { %s }", "namespace x::y { int f() { return 1; } %s }",
                       'extern "C" { %s }', "class B { %s };", "int a = 0; int b{1}; void f(); %s"):
            with self.subTest(around):
                self.assertEqual(self.count(around % "struct A { int a, b; };"), 2)

    def test_nested_classes_count_for_themselves(self) -> None:
        text = "class A { struct Inner { int a, b, c; void f() { int d; } }; Inner inner; };"
        self.assertEqual((self.count(text), self.count(text, "Inner")), (1, 3))

    def test_the_limit(self) -> None:
        lines = ["  long member%d = 0;\n" % i for i in range(structure.MEMBERS + 1)]
        tree = {"lib/a.h": "class A {\n public:\n  A();\n%s};\n" % "".join(lines[1:])}
        self.assertEqual(structure.large_classes(tree), [])
        tree = {"lib/a.h": "class A {\n public:\n  A();\n%s};\n" % "".join(lines)}
        self.assertEqual(structure.large_classes(tree), ["lib/a.h: A has 21 data members, at most 20"])
        for name in structure.MANY_MEMBERS:
            self.assertEqual(structure.large_classes({"lib/a.h": "struct %s {\n%s};\n" % (name, "".join(lines))}), [])


if __name__ == "__main__":
    harness.main()
