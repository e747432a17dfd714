"""Which sources a build joins: cmake/RastrelJoin.cmake, asked by a script.

usage: joined_sources_test.py ROOT CMAKE
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
CMAKE = sys.argv.pop(1)

SCRIPT = """cmake_policy(VERSION 3.25)
include({root}/cmake/RastrelJoin.cmake)
rastrel_group_sources("{sources}" groups)
message("${{groups}}")
"""


def local(text):
    return "namespace {\n\n" + text + "\n\n}  // namespace\n"


class JoinedSources(unittest.TestCase):
    def groups(self, *texts):
        """The group of each of the texts."""
        with tempfile.TemporaryDirectory(prefix="rastrel-join-") as place:
            files = []
            for number, text in enumerate(texts):
                files.append(pathlib.Path(place, f"{number}.cpp"))
                files[-1].write_text(text, encoding="utf-8")
            script = pathlib.Path(place, "script.cmake")
            script.write_text(SCRIPT.format(root=ROOT, sources=";".join(map(str, files))),
                              encoding="utf-8")
            ended = subprocess.run([CMAKE, "-P", str(script)], capture_output=True, text=True,
                                   check=False)
            self.assertEqual(ended.returncode, 0, ended.stderr)
            return [int(group) for group in ended.stderr.strip().split(";")]

    def apart(self, one, other):
        self.assertEqual(self.groups(one, other), [0, 1])
        self.assertEqual(self.groups(other, one), [0, 1])

    def together(self, one, other):
        self.assertEqual(self.groups(one, other), [0, 0])
        self.assertEqual(self.groups(other, one), [0, 0])

    def test_sources_with_nothing_in_common_are_joined(self):
        self.together(local("int Half(int value) { return value / 2; }"), "int Third(int value);\n")

    def test_two_local_functions_of_one_name_are_apart(self):
        self.apart(local("std::string Text() { return \"a\"; }"),
                   local("std::vector<int> Text(int count) {\n  return {count};\n}"))

    def test_a_local_name_and_what_it_would_hide_elsewhere_are_apart(self):
        for definition in ("constexpr int Limit = 3;", "constexpr int Limit{3};", "int Limit();",
                           "const std::string Limit(3, 'a');", "struct Limit {", "class Limit : public A {",
                           "enum class Limit { A };", "enum Limit { A };", "int Limit[3] = {};",
                           "using Limit = int;", "std::function<void(int)> Limit = nullptr;"):
            self.apart(local(definition), "int Twice() { return 2 * Limit; }\n")

    def test_names_that_are_local_without_a_namespace_count_as_well(self):
        for definition in ("static int Limit() { return 3; }", "constexpr int Limit = 3;",
                           "const int Limit = 3;", "#define Limit 3", "struct Limit;",
                           "namespace Limit = std::filesystem;"):
            self.apart(definition + "\n", "int Twice() { return 2 * Limit; }\n")

    def test_mentions_in_comments_and_of_members_do_not_count(self):
        self.together(local("constexpr int Limit = 3;"), "// Limit\nint Of(A& a) { return a.Limit; }\n")
        self.together(local("constexpr int Limit = 3;"), "  // A Limit\nint Of(A* a) { return a->Limit(); }\n")

    def test_the_same_alias_is_joined_and_another_of_its_name_is_not(self):
        self.together("namespace fs = std::filesystem;\n", "namespace fs = std::filesystem;\n")
        self.together(local("using Names = std::vector<int>;"), local("using Names = std::vector<int>;"))
        self.apart(local("using Names = std::vector<int>;"), local("using Names = std::vector<char>;"))

    def test_other_directives_keep_sources_apart_and_the_same_do_not(self):
        self.together("using namespace a;\n", "using namespace a;\n")
        self.apart("using namespace a;\n", "using namespace b;\n")
        self.apart("using namespace a;\n", "int x;\n")
        self.apart("using enum Color;\n", "int x;\n")

    def test_the_macros_of_tests_are_no_names(self):
        self.together(local("TEST(A, b) {}\nTEST_F(A, c) {}"), local("TEST(B, b) {}\nTEST_F(B, c) {}"))

    def test_brackets_and_semicolons_of_a_source_break_no_list(self):
        odd = "int {0}[] = {{1}};  // ]]; [[\nconst char* {0}Text = \"];[\\\\\";\n"
        self.assertEqual(self.groups(odd.format("First"), local("int Half();"), odd.format("Second"),
                                     local("int Half();")), [0, 0, 0, 1])

    def test_a_dozen_is_joined_and_one_more_is_not(self):
        for count, expected in ((11, [0] * 11), (12, [0] * 12), (13, [0] * 12 + [1])):
            self.assertEqual(self.groups(*(f"int F{number}();\n" for number in range(count))), expected)

    def test_the_first_group_that_a_source_fits_in_takes_it(self):
        clash = local("int Half();")
        self.assertEqual(self.groups(clash, clash, "int x;\n", clash), [0, 1, 0, 2])


if __name__ == "__main__":
    unittest.main()
