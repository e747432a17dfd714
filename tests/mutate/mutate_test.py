"""The logic of `./run mutate`: which changes are made, which tests are asked, what their outcome is."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import accepted
import confinement
import cpp_tokens
import mutants
import programs
import switches
import workspace


def changed(text, kind=None):
    """All texts that one change makes of a text."""
    return [text[:mutant.start] + mutant.replacement + text[mutant.end:]
            for mutant in mutants.Source("a.cpp", text).mutants()
            if kind is None or mutant.kind == kind]


class Tokens(unittest.TestCase):
    def test_comments_strings_and_directives_are_no_code(self):
        text = '#if 1\n// a == 2\n/* 3 */ { f("4 < 5", R"x(6 ) 7)x", L"\\"8"); }\n'
        self.assertEqual([token.text for token in cpp_tokens.tokens(text) if token.kind == "number"],
                         [])
        call = text[text.index("f("):text.index(" }")]
        self.assertEqual(changed(text), [text.replace(call, "{}")])

    def test_a_digit_separator_begins_no_character(self):
        kinds = [(token.kind, token.text) for token in cpp_tokens.tokens("x = 1'000'000; c = 'a';")]
        self.assertIn(("number", "1'000'000"), kinds)
        self.assertIn(("char", "'a'"), kinds)

    def test_brackets_find_their_partners(self):
        self.assertEqual(cpp_tokens.partners(cpp_tokens.tokens("f(a[1], {2})")), {1: 10, 3: 5, 7: 9})


class Changes(unittest.TestCase):
    def test_numbers_move_by_one_in_their_own_notation(self):
        for before, after in (("0", "1"), ("7u", "8u"), ("0x1F", "0x20"), ("0700", "0701"),
                              ("1.5", "2.5"), ("1'000", "1001"), ("2.0F", "3.0F")):
            self.assertEqual(changed(f"a = {before};"), [f"a = {after};"])

    def test_truth_values_and_characters(self):
        self.assertEqual(changed("a = true;"), ["a = false;"])
        self.assertEqual(changed("a = L'/';"), ["a = L'x';"])
        self.assertEqual(changed("a = 'x';"), ["a = 'y';"])

    def test_comparisons_change_at_their_border(self):
        self.assertEqual(changed("b = a < c;"), ["b = a <= c;"])
        self.assertEqual(changed("b = a >= c;"), ["b = a > c;"])
        self.assertEqual(changed("b = a == c;"), ["b = a != c;"])

    def test_brackets_of_templates_and_pointers_are_no_operators(self):
        self.assertEqual(changed("std::vector<int*> a;"), [])
        self.assertEqual(changed("const char* a = b;"), [])

    def test_a_condition_is_negated_and_one_that_declares_is_not(self):
        self.assertEqual(changed("if (a) b = c;", "condition"), ["if (!(a)) b = c;"])
        self.assertEqual(changed("if (auto a = c; a > d) b = c;", "condition"),
                         ["if (auto a = c; !(a > d)) b = c;"])
        self.assertEqual(changed("if (const auto a = c) b = c;", "condition"), [])
        self.assertEqual(changed("if constexpr (a) b = c;", "condition"), [])
        self.assertEqual(changed("while (true) b = c;"), [])

    def test_conditions_are_joined_the_other_way_and_lose_a_not(self):
        self.assertEqual(changed("b = a && c;"), ["b = a || c;"])
        self.assertEqual(changed("b = !a;"), ["b = a;"])

    def test_arithmetic(self):
        self.assertEqual(changed("b = a + c;"), ["b = a - c;"])
        self.assertEqual(changed("b += a;"), ["b -= a;"])
        self.assertEqual(changed('b = a + "c";'), [])

    def test_the_steps_of_a_loop_stay(self):
        self.assertEqual(changed("for (int i = a; i != b; ++i) c = d;"),
                         ["for (int i = a; i == b; ++i) c = d;"])

    def test_a_truth_value_is_returned_the_other_way_and_others_by_default(self):
        self.assertEqual(changed("return a == b;", "return"), ["return !(a == b);"])
        self.assertEqual(changed("return f(a);", "return"), ["return {};"])
        self.assertEqual(changed("return {};") + changed("return;"), [])
        self.assertEqual(changed("return true;"), ["return false;"])

    def test_a_call_is_left_out_where_it_is_a_statement(self):
        self.assertEqual(changed("{ a.b()->c(d); }"), ["{ {} }"])
        self.assertEqual(changed("if (a) b();", "call"), ["if (a) {}"])
        self.assertEqual(changed("{ const int a = b(c); }"), [])
        self.assertEqual(changed("{ Thing a(c); }"), [])  # declares
        self.assertEqual(changed("{ throw A(c); }"), [])

    def test_what_writes_a_log_or_only_moves_memory_stays(self):
        for text in ("{ WriteLog(a + 1); }", "{ a.reserve(b + 1); }", "static_assert(a == 1);",
                     "{ host.Trace(!a); }"):
            self.assertEqual(changed(text), [])

    def test_sizes_of_buffers_stay_and_other_powers_of_two_do_not(self):
        self.assertEqual(changed("std::array<char, 4096> a;"), [])
        self.assertEqual(changed("char buffer[4096];"), [])
        self.assertEqual(changed("int a = 4096;"), ["int a = 4097;"])
        self.assertEqual(changed("buffer[3] = a;"), ["buffer[4] = a;"])

    def test_a_change_knows_its_line_before_and_after(self):
        mutant, = mutants.Source("a.cpp", "int f() {\n  b  = a <\n      c;\n}\n").mutants()
        self.assertEqual((mutant.line, mutant.before, mutant.after), (2, "b = a <", "b = a <="))

    def test_the_same_seed_draws_the_same_and_each_line_once(self):
        source = mutants.Source("a.cpp", "".join(f"a{i} = b + {i};\n" for i in range(50)))
        first = list(mutants.draw([source], 3))
        self.assertEqual(first, list(mutants.draw([source], 3)))
        self.assertNotEqual(first, list(mutants.draw([source], 4)))
        self.assertEqual(sorted(mutant.line for mutant in first), list(range(1, 51)))

    def test_a_line_is_changed_in_the_same_way_whatever_else_is_drawn(self):
        text = "a = b + 1 == c && !d;\n"
        alone, = mutants.draw([mutants.Source("a.cpp", text)], 3)
        others = [mutants.Source(f"{name}.cpp", text) for name in "abcdef"]
        self.assertIn(alone, list(mutants.draw(others, 3)))


def with_switches(text, kind=None):
    """The text with switches of as many of its changes as don't meet, and the numbers of those."""
    source = mutants.Source("a.cpp", text)
    found = [mutant for mutant in source.mutants() if kind in (None, mutant.kind)]
    numbered = dict(enumerate(found, 1))
    texts, put = switches.put_in({"a.cpp": source}, numbered, dict.fromkeys(numbered, 0))
    return texts.get("a.cpp", text), sorted(put)


def squeezed(text):
    return re.sub(r"\s", "", text.replace("::rastrel_change::", ""))


class Switches(unittest.TestCase):
    def assert_switched(self, text, wanted, kind=None):
        function = "void f() " if text.startswith("{") else ""
        made, _ = with_switches(function + text, kind)
        self.assertEqual(squeezed(made), squeezed(function + wanted))

    def test_a_condition_is_asked_both_ways(self):
        self.assert_switched("{ if (a < b) c; }",
                             "{ if (Is(1) ? static_cast<bool>(a <= b) : static_cast<bool>(a < b)) c; }",
                             "comparison")

    def test_statements_stand_twice(self):
        self.assert_switched("{ a(); }", "{ { if (Is(1)) { {} } else { a(); } } }")
        self.assert_switched("{ if (a()) b += c; else d; }",
                             "{ if (a()) { if (Is(1)) { b -= c; } else { b += c; } } else d; }",
                             "arithmetic")
        self.assert_switched("{ return a; }", "{ { if (Is(1)) { return {}; } return a; } }")

    def test_a_value_stands_twice(self):
        self.assert_switched("{ int a = 1; }", "{ int a = (IsNow(1) ? (2) : (1)); }")
        self.assert_switched("{ const A a(b, 1); }", "{ const A a(b, (IsNow(1) ? (2) : (1))); }")

    def test_a_constant_of_the_compilers_is_computed_at_the_start(self):
        self.assert_switched("constexpr int A = 1;", "const int A = (IsNow(1) ? (2) : (1));")
        self.assert_switched("class A { static constexpr int B = 1; };",
                             "class A { static inline const int B = (IsNow(1) ? (2) : (1)); };")

    def test_a_change_in_a_lambda_stays_in_it(self):
        self.assert_switched("{ f([&](int a) { return a + b; }); }",
                             "{ f([&](int a) { { if (Is(1)) { return a - b; } return a + b; } }); }",
                             "arithmetic")

    def test_lines_stay_where_they_are(self):
        text = "void f() {\n  f(a +\n    b);\n  g(1);\n}\n"
        made, put = with_switches(text)
        self.assertEqual(made.count("\n"), text.count("\n"))
        self.assertEqual(made.splitlines()[3].strip()[0], "{")
        self.assertTrue(put)

    def test_of_changes_that_meet_one_has_a_switch(self):
        _, put = with_switches("void f() { f(a + b); }")
        self.assertEqual(len(put), 1)

    def test_a_switch_does_as_its_change_does(self):
        program = """#include <stdio.h>
constexpr int First = 3;
static int Scaled(int a) {
  for (int i = 0; i < a; ++i) {
    if (i == 2 && a > 1) continue;
    a += i * 2;
    if (a >= 40) break;
  }
  const auto half = [&](int b) -> int { return b / 2 + First; };
  switch (a % 4) {
    case 1: return half(a);
    default: break;
  }
  return a > 9 ? a - 1 : half(a + 1);
}
int main() {
  int sum = 0;
  for (int i = First; i <= 9; ++i) sum = sum * 3 + Scaled(i);
  printf("%d\\n", sum);
}
"""
        source = mutants.Source("a.cpp", program)
        changes = [mutant for mutant in source.mutants() if mutant.kind != "call" and mutant.line > 1]
        with tempfile.TemporaryDirectory() as place:
            folder = pathlib.Path(place)
            compared = 0
            header = switches.write_header(folder)
            rest = dict(enumerate(changes, 1))
            while rest:  # of changes that meet, one a round
                texts, put = switches.put_in({"a.cpp": source}, rest, dict.fromkeys(rest, 0))
                if not put:
                    break
                path = folder / "switched.cpp"
                path.write_text(switches.with_header(texts["a.cpp"], header, path))
                switched = self.compiled(path)
                self.assertIsNotNone(switched)
                self.assertEqual(self.output(switched, {}), self.output(self.plain(folder, program), {}))
                for number in put:
                    mutant = rest.pop(number)
                    changed_text = (program[:mutant.start] + mutant.replacement + program[mutant.end:])
                    alone = self.plain(folder, changed_text)
                    if alone is None:
                        continue
                    compared += 1
                    self.assertEqual(self.output(switched, {switches.VARIABLE: str(number)}),
                                     self.output(alone, {}), mutant)
            self.assertGreater(compared, 20)

    def plain(self, folder, text):
        path = folder / "plain.cpp"
        path.write_text(text)
        return self.compiled(path)

    def compiled(self, path):
        made = path.with_suffix("")
        ended = subprocess.run(["c++", "-std=c++20", "-w", "-o", str(made), str(path)], check=False)
        return made if ended.returncode == 0 else None

    def output(self, program, variables):
        ended = subprocess.run(["timeout", "5", str(program)], env={**os.environ, **variables}, check=False,
                               capture_output=True, text=True)
        return ended.returncode, ended.stdout


class Tests(unittest.TestCase):
    def test_a_source_has_the_tests_of_its_folder_or_of_the_next_above(self):
        folders = ["cli", "cli/sheet", "platform/os", "printing/rip", "printing/spool"]
        for file, wanted in (("cli/sheet/a.cpp", ["cli/sheet"]), ("cli/new/a.cpp", ["cli"]),
                             ("rastrel/platform/os/a.cpp", ["platform/os"]),
                             ("rastrel/printing/a.cpp", ["printing/rip", "printing/spool"]),
                             ("rastrel/unknown/a.cpp", []), ("a.cpp", [])):
            self.assertEqual(programs.folders_for(file, folders), wanted, file)

    def test_programs_are_found_among_the_targets(self):
        lines = ["tests/tests_cli_sheet: CXX_EXECUTABLE_LINKER__tests_cli_sheet_Debug",
                 "tests_cli_sheet: phony", "bin/rastrel: CXX_EXECUTABLE_LINKER__rastrel_cli_Debug"]
        found = programs.programs_of(lines, ["cli", "cli/sheet"], pathlib.Path("/tree"))
        self.assertEqual([(test.folder, test.targets, test.command) for test in found],
                         [("cli/sheet", ["tests/tests_cli_sheet"], ["/tree/tests/tests_cli_sheet"])])

    def test_commands_are_read_with_what_they_need_and_their_environment(self):
        text = ('add_test([=[cli.a]=] "python3" "-B" "/src/a b.py" "/tree/bin/rastrel")\n'
                'set_tests_properties([=[cli.a]=] PROPERTIES  ENVIRONMENT "A=b=c;D=e" TIMEOUT "6")\n')
        test, = programs.commands_of("cli", text, "/tree", {"bin/rastrel"})
        self.assertEqual(test.command, ["python3", "-B", "/src/a b.py", "/tree/bin/rastrel"])
        self.assertEqual(test.targets, ["bin/rastrel"])
        self.assertEqual(test.environment, {"A": "b=c", "D": "e"})

    def test_the_sources_of_a_joined_one_are_found(self):
        with tempfile.TemporaryDirectory() as place:
            joined = pathlib.Path(place) / "Unity" / "unity_0_cxx.cxx"
            joined.parent.mkdir()
            joined.write_text('/* made */\n\n#include "/src/a.cpp"\n\n#include "/src/b.cpp"\n')
            self.assertEqual(programs.sources_joined_in(str(joined)), ["/src/a.cpp", "/src/b.cpp"])
        self.assertEqual(programs.sources_joined_in("Unity/../x/Unity/unity_0_cxx.cxx.o"), [])
        self.assertEqual(programs.sources_joined_in("/src/a.cpp"), [])

    def test_the_failing_test_is_named_and_a_crash_is_the_open_tests(self):
        passed = "[ RUN      ] A.one\n[       OK ] A.one (1 ms)\n"
        failed = "[ RUN      ] A.two\nwrong\n[  FAILED  ] A.two (1 ms)\n"
        self.assertEqual(programs.first_failure(passed + failed), "A.two")
        self.assertEqual(programs.first_failure(passed + "[ RUN      ] A.two\n"), "A.two")
        self.assertEqual(programs.first_failure(passed), "")
        self.assertEqual(programs.all_failures(failed + "[  FAILED  ] 1 test, listed below:\n"
                                               "[  FAILED  ] A.two\n"), ["A.two"])


    def test_a_test_may_take_longer_than_without_a_change_but_not_for_ever(self):
        for seconds, limit in ((0.1, 30), (20, 80), (100, 200)):
            self.assertEqual(programs.time_limit(seconds), limit)


class Confinement(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.tree = pathlib.Path(place.name).resolve() / "tree"
        self.tree.mkdir()
        try:
            confinement.require(self.tree)
        except confinement.Unavailable as reason:
            self.skipTest(f"no namespaces here: {reason}")

    def run_shell(self, script, limit=20):
        return confinement.run(self.tree, ["sh", "-c", script], limit)

    def test_a_program_writes_in_the_tree_and_nowhere_else(self):
        outside = self.tree.parent / "outside"
        ended = self.run_shell(f"echo a >made; echo b >{outside}; echo c >/tmp/c && cat /tmp/c")
        self.assertEqual((ended.status, ended.output.splitlines()[-1]), (0, "c"))
        self.assertEqual((self.tree / "made").read_text(), "a\n")
        self.assertFalse(outside.exists())
        self.assertFalse(pathlib.Path("/tmp/c").exists())

    def test_a_program_can_signal_no_other_process(self):
        self.assertNotEqual(self.run_shell(f"kill -0 {os.getpid()}").status, 0)

    def test_orphans_are_no_children_of_the_program(self):
        script = 'sh -c "sleep 3 & exit 0"; read found </proc/$$/task/$$/children; echo "<$found>"; exit 4'
        ended = self.run_shell(script)
        self.assertEqual((ended.status, ended.output.strip()), (4, "<>"))

    def test_what_takes_too_long_ends_with_all_that_it_started(self):
        ended = self.run_shell("setsid sh -c 'sleep 2; touch late' & sleep 60", limit=0.5)
        self.assertIsNone(ended.status)
        self.assertLess(ended.seconds, 20)
        self.assertNotEqual(self.run_shell("sleep 3; test -e late").status, 0)

    def test_a_program_without_the_environment_finds_the_number_of_the_change(self):
        (self.tree / "change").mkdir()
        command = ["env", "-i", "sh", "-c", f"cat {self.tree}/change/number"]
        ended = confinement.run(self.tree, command, 20, {**os.environ, switches.VARIABLE: "17"})
        self.assertEqual((ended.status, ended.output.strip()), (0, "17"))
        self.assertEqual(list((self.tree / "change").iterdir()), [])

    def test_memory_has_a_limit(self):
        self.assertEqual(self.run_shell("ulimit -v").output.strip(), str(confinement.MEMORY_LIMIT))


class Accepted(unittest.TestCase):
    LINE = "a.cpp: b = a < c;  =>  b = a <= c;  # a is never c\n"

    def test_an_entry_has_a_reason(self):
        self.assertEqual(accepted.read(self.LINE),
                         ({("a.cpp", "b = a < c;", "b = a <= c;")}, []))
        entries, faults = accepted.read(self.LINE.split("  #")[0])
        self.assertEqual((entries, len(faults)), (set(), 1))

    def test_an_entry_without_its_line_is_void(self):
        entries, _ = accepted.read(self.LINE)
        with tempfile.TemporaryDirectory() as place:
            root = pathlib.Path(place)
            self.assertEqual(len(accepted.void(entries, root, mutants.Source)), 1)
            (root / "a.cpp").write_text("{ b = a < c;\n}", encoding="utf-8")
            self.assertEqual(len(accepted.void(entries, root, mutants.Source)), 1)
            (root / "a.cpp").write_text("{\n  b = a < c;\n}", encoding="utf-8")
            self.assertEqual(accepted.void(entries, root, mutants.Source), [])

    def test_the_table_can_be_read(self):
        text = (pathlib.Path(__file__).parent / "accepted.txt").read_text(encoding="utf-8")
        self.assertEqual(accepted.read(text)[1], [])


class Copy(unittest.TestCase):
    def test_a_change_is_made_in_the_copy_alone_and_undone(self):
        with tempfile.TemporaryDirectory() as place:
            root = pathlib.Path(place).resolve()
            (root / "a.cpp").write_text("a = b < c;\n", encoding="utf-8")
            work = workspace.Workspace(root, 1)
            work.copy.mkdir(parents=True)
            workspace.synchronize(root, work.copy)
            mutant, = mutants.Source("a.cpp", "a = b < c;\n").mutants()
            work.change(mutant)
            self.assertEqual((work.copy / "a.cpp").read_text(), "a = b <= c;\n")
            self.assertEqual((root / "a.cpp").read_text(), "a = b < c;\n")
            work.restore(mutant)
            self.assertEqual((work.copy / "a.cpp").read_text(), "a = b < c;\n")

    def test_an_interrupted_change_and_files_that_are_gone_are_undone_by_the_next_run(self):
        with tempfile.TemporaryDirectory() as place:
            root = pathlib.Path(place).resolve()
            (root / "a.cpp").write_text("a;\n", encoding="utf-8")
            copy = root / "build" / "mutate"
            (copy / "build").mkdir(parents=True)
            (copy / "build" / "kept").touch()
            (copy / "gone.cpp").touch()
            (copy / "a.cpp").write_text("b;\n", encoding="utf-8")
            workspace.synchronize(root, copy)
            self.assertEqual(sorted(path.name for path in copy.rglob("*") if path.is_file()),
                             ["a.cpp", "kept"])
            self.assertEqual((copy / "a.cpp").read_text(), "a;\n")
            before = (copy / "a.cpp").stat().st_mtime_ns
            workspace.synchronize(root, copy)
            self.assertEqual((copy / "a.cpp").stat().st_mtime_ns, before)


if __name__ == "__main__":
    unittest.main()
