"""Shows that each check of this folder notices the fault that it is there for."""

import os
import pathlib
import sys
import tempfile
import unittest

import documentation_examples
import documentation_links
import documented_interface
import exported_symbols
import failure_form
import file_sizes
import folder_guides
import foreign_work
import headers_compile_alone
import host_guide
import house
import include_rules
import job_road
import output_files
import path_encoding
import removals
import shown_text
import sources
import system_headers
import tests_are_built
import tests_end
import words


class Tree(unittest.TestCase):
    """A small source tree to look at."""

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.root = pathlib.Path(place.name)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


class Removals(Tree):
    def test_a_call_that_removes_is_a_fault_outside_its_folder_unless_it_is_named(self):
        self.write("rastrel/platform/os/tree.cpp", "bool a = ::rmdir(path) == 0;\n")
        for call, line in (("remove_all", "std::filesystem::remove_all(path, error);"),
                           ("remove", "fs::remove(path);"), ("remove", "::remove(path);"),
                           ("unlink", "if (unlink(path) != 0) return;"),
                           ("unlinkat", "::unlinkat(parent, name, 0);"), ("rmdir", "rmdir (path);")):
            self.write("cli/a.cpp", line + "\n")
            self.assertEqual(len(removals.check(self.root, set())), 1, line)
            self.assertEqual(removals.check(self.root, {("cli/a.cpp", call)}), [], line)

    def test_other_names_comments_and_texts_are_no_calls(self):
        self.write("cli/a.cpp", '// rmdir(path) fails\nlist.remove(1);\nSay("unlink(2)");\n'
                   "RemoveTree(path);\nos::remove_prefix(1);\n")
        self.assertEqual(removals.check(self.root, set()), [])

    def test_a_line_that_stands_for_nothing_is_a_fault(self):
        self.assertEqual(removals.check(self.root, {("cli/gone.cpp", "unlink")}),
                         ["removals.txt: cli/gone.cpp has no unlink any more"])


class OutputFiles(Tree):
    def test_a_call_that_makes_or_names_a_file_is_a_fault_in_a_command_unless_it_is_named(self):
        self.write("rastrel/platform/os/file.cpp", "::rename(a, b);\n")
        for call, line in (("ofstream", "std::ofstream file(path);"), ("fopen", "std::fopen(path, mode);"),
                           ("O_CREAT", "::open(path, O_WRONLY | O_CREAT, 0666);"),
                           ("CreateForWriting", "auto f = os::CreateForWriting(path);"),
                           ("copy_file", "fs::copy_file(a, b, error);"), ("copy", "fs::copy(a, b);"),
                           ("rename", "std::filesystem::rename(a, b);"), ("rename", "::rename(a, b);"),
                           ("CopyTreeInto", "os::CopyTreeInto(a, b);")):
            self.write("cli/a.cpp", line + "\n")
            self.assertEqual(len(output_files.check(self.root, set())), 1, line)
            self.assertEqual(output_files.check(self.root, {("cli/a.cpp", call)}), [], line)

    def test_readers_other_names_comments_and_texts_are_no_calls(self):
        self.write("cli/a.cpp", '#include <fstream>\n// std::ofstream of old\nstd::ifstream in(path);\n'
                   'Say("fopen");\nstd::ranges::copy(a, b);\nlist.rename(1);\n'
                   "OutputFile::Create(path);\nReplaceFile(path, text);\n")
        self.assertEqual(output_files.check(self.root, set()), [])

    def test_a_line_that_stands_for_nothing_is_a_fault(self):
        self.assertEqual(output_files.check(self.root, {("cli/gone.cpp", "ofstream")}),
                         ["output_files.txt: cli/gone.cpp has no ofstream any more"])


class TestsEnd(Tree):
    def test_a_test_without_a_limit_is_a_fault(self):
        self.write("tests/CMakeLists.txt", "add_test(NAME a.b COMMAND x)\n"
                   "add_test(NAME a.c\n COMMAND $<TARGET_FILE:x> --way ${way})\n"
                   "set_tests_properties(a.c PROPERTIES PROCESSORS 2 TIMEOUT 60)\n"
                   "gtest_discover_tests(one PROPERTIES LABELS x)\n"
                   "gtest_discover_tests(two PROPERTIES TIMEOUT 60)\n")
        self.assertEqual(tests_end.check(self.root),
                         ["tests/CMakeLists.txt: a.b has no TIMEOUT",
                          "tests/CMakeLists.txt: one has no TIMEOUT"])

    def test_a_wait_that_only_its_condition_ends_is_a_fault(self):
        for number, loop in enumerate((
                "while (!Has(name)) usleep(1000);", "while (stage == 0) std::this_thread::yield();",
                "while (!Ends()) {\n  Look();\n  std::this_thread::sleep_for(1ms);\n}",
                "while (!reader.Lost())\n  if (Write() < 0) ::usleep(1);")):
            self.write("tests/a.cpp", "#include <x>\n\n" + loop + "\n")
            self.assertEqual([fault.split(": ")[0] for fault in tests_end.check(self.root)],
                             ["tests/a.cpp:3"], number)

    def test_a_wait_with_a_limit_and_a_loop_that_does_not_rest_are_none(self):
        self.write("tests/a.cpp", "for (int n = 0; n < 9 && !Has(name); ++n) usleep(1000);\n"
                   "while (!Has(name) && Clock::now() < limit) usleep(1000);\n"
                   "while (!over) std::this_thread::yield();\n"
                   "while (Read(line)) lines.push_back(line);\nusleep(1);\n"
                   "// while (true) usleep(1);\n")
        self.assertEqual(tests_end.check(self.root), [])


class PathEncoding(Tree):
    def test_a_path_that_is_widened_by_the_locale_is_a_fault(self):
        self.write("tests/a.cpp", "std::wstring a = path.wstring();\n")
        self.write("cli/b.cpp", "auto b = entry->generic_wstring ();\n")
        self.assertEqual([fault.split(":")[0] for fault in path_encoding.check(self.root)],
                         ["cli/b.cpp", "tests/a.cpp"])

    def test_wide_text_and_comments_are_none(self):
        self.write("cli/a.cpp", "std::wstring a = std::wstring();  // path.wstring()\n")
        self.assertEqual(path_encoding.check(self.root), [])


class ShownText(Tree):
    def test_each_way_around_the_cleaning_functions_is_a_fault_unless_it_is_named(self):
        self.write("rastrel/platform/os/file.cpp", "WriteWithoutSignal(STDERR_FILENO, a, b);\n")
        self.write("cli/console/standard_streams.cpp", "os::WriteWithoutSignal(a, b, c);\n")
        for call, line in (("cout", "std::cout << name;"), ("wcerr", "std::wcerr<<name;"),
                           ("printf", 'printf("%s", name);'), ("fprintf", 'std::fprintf(file, "x");'),
                           ("puts", "::puts(name);"), ("fputs", "fputs(name, stderr);"),
                           ("perror", "perror (name);"), ("dprintf", 'dprintf(2, "x");'),
                           ("println", 'std::println("{}", name);'), ("fwrite", "fwrite(a, b, c, d);"),
                           ("write", "::write(2, name, size);"), ("STDERR_FILENO", "f(STDERR_FILENO);"),
                           ("WriteAll", "os::WriteAll(1, name);"),
                           ("WriteAll", "os::WriteAll(os::StandardHandle(stream), name);"),
                           ("WriteToStandardError", "os::WriteToStandardError(name);"),
                           ("WriteWithoutSignal", "os::WriteWithoutSignal(a, b, c);"),
                           ("WriteOutLines", "WriteOutLines(name);"),
                           ("WriteErrorLines", "WriteErrorLines(name);"),
                           ("WriteOutData", "WriteOutData(name);"),
                           ("WriteOutControl", "WriteOutControl(name);"),
                           ("/dev/tty", 'open("/dev/tty", O_WRONLY);')):
            self.write("cli/a.cpp", line + "\n")
            self.assertEqual(len(shown_text.check(self.root, set())), 1, line)
            self.assertEqual(shown_text.check(self.root, {("cli/a.cpp", call)}), [], line)

    def test_cleaning_functions_other_names_comments_and_texts_are_fine(self):
        self.write("cli/a.cpp", '// std::cout << name, or "/dev/tty"\nWriteOutLine(name);\n'
                   'WriteOutRow({name});\nWriteErrorLine("printf(name)");\nlog.Printf(name);\n'
                   "std::snprintf(a, b, c);\nfile.write(data, 5);\nos::WriteAll(file, text);\n"
                   "list.puts(name);\n")
        self.assertEqual(shown_text.check(self.root, set()), [])

    def test_a_line_that_stands_for_nothing_is_a_fault(self):
        self.assertEqual(shown_text.check(self.root, {("cli/gone.cpp", "WriteOutData")}),
                         ["shown_text.txt: cli/gone.cpp has no WriteOutData any more"])


class IncludeRules(Tree):
    RULES = {"rastrel": ["*"], "rastrel/low": [], "rastrel/high": ["rastrel/low"], "cli": ["*"]}

    def test_an_arrow_upward_is_a_fault(self):
        self.write("rastrel/low/a.cpp", '#include "rastrel/high/b.h"\n')
        self.assertEqual(include_rules.check(self.root, self.RULES),
                         ["rastrel/low/a.cpp:1: rastrel/low may not include rastrel/high/b.h"])

    def test_an_arrow_downward_and_the_own_folder_are_fine(self):
        self.write("rastrel/high/a.cpp",
                   '#include "rastrel/high/a.h"\n#include "rastrel/low/b.h"\n'
                   '#include "rastrel/export.h"\n#include <string>\n')
        self.assertEqual(include_rules.check(self.root, self.RULES), [])

    def test_a_folder_that_the_table_does_not_name_is_a_fault(self):
        self.write("rastrel/new/a.cpp", "")
        self.assertEqual(len(include_rules.check(self.root, self.RULES)), 1)

    def test_an_include_that_is_not_written_from_the_root_is_a_fault(self):
        self.write("rastrel/high/a.cpp", '#include "a.h"\n')
        self.assertEqual(len(include_rules.check(self.root, self.RULES)), 1)

    def test_a_source_that_does_not_begin_with_its_own_header_is_a_fault(self):
        self.write("rastrel/high/a.h", "")
        self.write("rastrel/high/a.cpp", '#include <string>\n#include "rastrel/high/a.h"\n')
        self.assertEqual(include_rules.check(self.root, self.RULES),
                         ["rastrel/high/a.cpp: does not include rastrel/high/a.h first"])

    def test_a_header_that_a_folder_keeps_for_itself_is_a_fault_elsewhere(self):
        open_headers = {"rastrel/low": ["rastrel/low/open.h"]}
        for name in ("rastrel/low/open.h", "rastrel/low/inner.h"):
            self.write(name, "")
        self.write("rastrel/low/a.cpp", '#include "rastrel/low/inner.h"\n')
        self.write("rastrel/high/a.cpp", '#include "rastrel/low/open.h"\n')
        self.assertEqual(include_rules.check(self.root, self.RULES, open_headers), [])
        self.write("cli/a.cpp", '#include "rastrel/low/inner.h"\n')
        self.assertEqual(include_rules.check(self.root, self.RULES, open_headers),
                         ["cli/a.cpp:1: rastrel/low/inner.h is not open to other folders"])

    def test_a_test_reaches_a_header_that_its_folder_keeps_for_itself(self):
        self.write("rastrel/low/open.h", "")
        self.write("tests/a_test.cpp", '#include "rastrel/low/inner.h"\n')
        self.assertEqual(include_rules.check(self.root, self.RULES | {"tests": ["*"]},
                                             {"rastrel/low": ["rastrel/low/open.h"]}), [])

    def test_an_open_header_that_is_not_there_is_a_fault(self):
        self.assertEqual(include_rules.check(self.root, self.RULES,
                                             {"rastrel/low": ["rastrel/low/open.h"]}),
                         ["rastrel/low/open.h: open to other folders, and not there"])

    def test_the_table_tells_rules_and_open_headers_apart(self):
        self.write("table.txt", "a : b c  # why\na = a/open.h\nb :\n")
        self.assertEqual(include_rules.read_rules(self.root / "table.txt"),
                         {"a": ["b", "c"], "b": []})
        self.assertEqual(include_rules.read_open_headers(self.root / "table.txt"), {"a": ["a/open.h"]})

    def test_a_circle_in_the_table_is_a_fault(self):
        rules = {"rastrel/a": ["rastrel/b"], "rastrel/b": ["rastrel/a"]}
        self.assertEqual(len(include_rules.check(self.root, rules)), 2)


class House(Tree):
    RULES = {"rastrel/platform/os": [], "rastrel/job": ["rastrel/platform/os"], "cli": ["*"]}
    PAGE = "Before.\n" + house.BEGIN + "\nold\n" + house.END + "\nAfter.\n"

    def setUp(self):
        super().setUp()
        self.write("rastrel/rastrel.h", "")
        self.write("rastrel/platform/os/a.h", "")
        self.write("rastrel/job/a.h", '#include "rastrel/platform/os/a.h"\n')
        self.write("cli/a.cpp", '#include "rastrel/job/a.h"\n#include "rastrel/platform/os/a.h"\n')

    def test_an_arrow_that_follows_from_others_is_left_out(self):
        self.assertEqual(house.reduced(house.joined(house.arrows(self.root))),
                         {("cli",): {("rastrel/job",)},
                          ("rastrel/job",): {("rastrel/platform/os",)},
                          ("rastrel/platform/os",): set()})

    def test_folders_that_include_each_other_are_one_room(self):
        self.write("rastrel/platform/os/b.h", '#include "rastrel/job/a.h"\n')
        self.assertEqual(house.joined(house.arrows(self.root)),
                         {("cli",): {("rastrel/job", "rastrel/platform/os")},
                          ("rastrel/job", "rastrel/platform/os"): set()})

    def test_a_picture_before_a_new_arrow_is_a_fault(self):
        page, drawing = house.with_table(self.PAGE, self.RULES), house.picture(self.root)
        self.assertEqual(house.check(self.root, page, drawing, self.RULES), [])
        self.write("cli/tool/b.cpp", '#include "rastrel/job/a.h"\n')
        self.assertEqual(len(house.check(self.root, page, drawing, self.RULES)), 2)

    def test_a_table_that_differs_from_the_rules_is_a_fault(self):
        page, drawing = house.with_table(self.PAGE, self.RULES), house.picture(self.root)
        rules = dict(self.RULES, **{"rastrel/new": []})
        self.assertEqual(house.check(self.root, page, drawing, rules)[0],
                         "docs/architecture.md: its table is not that of include_rules.txt")


class JobRoad(Tree):
    TABLE = ("## A job's road\n\n| step | where | function | file |\n|---|---|---|---|\n"
             "| 1 | host | `Job::Print` | `rastrel/a.cpp` |\n"
             "| 2 | child | `main` | `children/b.cpp` |\n\n## Next\n| 3 | x | `No` | `no.cpp` |\n")

    def check(self, first, second="int main() {\n}\n"):
        self.write("rastrel/a.cpp", first)
        self.write("children/b.cpp", second)
        return job_road.check(self.root, self.TABLE, 2)

    def test_steps_that_are_where_the_table_says_are_fine(self):
        self.assertEqual(self.check("bool Job::Print(int (*call)()) const {\n}\n"), [])

    def test_a_call_a_declaration_or_another_class_is_no_definition(self):
        for text in ("void F() {\n  Job::Print();\n}\n", "bool Job::Print();\n",
                     "bool OtherJob::Print() {\n}\n", "// bool Job::Print() {\n"):
            self.assertEqual(self.check(text), [
                "docs/architecture.md: step 1: rastrel/a.cpp does not define Job::Print"])

    def test_a_missing_file_and_a_missing_step_are_faults(self):
        self.write("rastrel/a.cpp", "bool Job::Print() {\n}\n")
        self.assertEqual(job_road.check(self.root, self.TABLE, 3), [
            "docs/architecture.md: a job's road has not the steps 1 to 3",
            "docs/architecture.md: step 2: there is no children/b.cpp"])


class FolderGuides(Tree):
    GUIDE = "# A\n**What lives here.** B\n**What it may touch.** C\n**Where to begin.** D\n"

    def test_a_short_guide_with_the_three_things_is_fine(self):
        self.write("rastrel/README.md", self.GUIDE)
        self.write(".git/a", "")
        self.write("build-own/a", "")
        self.assertEqual(folder_guides.check(self.root), [])

    def test_a_folder_without_one_or_with_a_long_or_a_poor_one_is_a_fault(self):
        self.write("cli/main.cpp", "")
        self.write("host/README.md", self.GUIDE + "\n" * 22)
        self.write("rastrel/README.md", self.GUIDE.replace("Where", "There"))
        self.assertEqual(folder_guides.check(self.root), [
            "cli: no README.md", "host/README.md: 26 lines, more than 25",
            "rastrel/README.md: does not say **Where to begin.**"])


class Words(Tree):
    def found(self, text):
        self.write("rastrel/a.cpp", text)
        return {word: count for word, count in words.count(self.root).items() if count}

    def test_identifiers_are_counted_and_quoted_texts_are_not(self):
        self.assertEqual(self.found('int kLimit = Most(MostPages, "MostBytes kNo colour");\n'
                                    "char c = 'k'; auto t = R\"(kRaw)\"; int colourOf, kept, k;\n"),
                         {"k-prefix": 1, "Most": 1, "colour": 1})

    def test_comments_are_read_across_lines(self):
        self.assertEqual(self.found("// Says what\n// it was, and the colour. What next? kNone\n"
                                    "int a;  /* what the nameless file has */\n"),
                         {"comment-what": 2, "comment-colour": 1, "comment-nameless": 1})

    def test_old_words_for_saying_and_for_order_are_counted_in_comments_alone(self):
        self.assertEqual(self.found("// It tells in words that told is told.\nint words, behind;\n"
                                    "// A tab stands behind it and understands \"behindhand\".\n"),
                         {"comment-tells": 3, "comment-words": 1, "comment-stands": 1,
                          "comment-behind": 1})

    def test_more_than_the_table_allows_is_a_fault_and_so_is_a_word_that_it_lacks(self):
        self.assertEqual(words.check({"Most": 2}, {"Most": 2}), [])
        self.assertEqual(len(words.check({"Most": 3}, {"Most": 2})), 1)
        self.assertEqual(len(words.check({"Most": 0}, {})), 1)
        self.assertEqual(len(words.check({"Most": 0}, {"Most": 0, "Mots": 0})), 1)

    def test_a_maximum_is_lowered_and_never_raised(self):
        self.assertEqual(words.lowered("# Most 9\nMost   5\nShelf  1\n", {"Most": 3, "Shelf": 4}),
                         "# Most 9\nMost   3\nShelf  1\n")


class SystemHeaders(Tree):
    def test_a_system_header_in_the_library_is_a_fault(self):
        self.write("rastrel/job/a.cpp", "#include <unistd.h>\n")
        self.assertEqual(system_headers.check(self.root, set()),
                         ["rastrel/job/a.cpp:1: <unistd.h> outside rastrel/platform"])

    def test_the_platform_may_and_so_may_a_folder_that_the_table_names(self):
        self.write("rastrel/platform/os/a.cpp", "#include <unistd.h>\n")
        self.write("children/a.cpp", "#include <png.h>\n#include <vector>\n")
        self.assertEqual(system_headers.check(self.root, {("children", "png.h")}), [])

    def test_a_named_header_is_allowed_in_its_folder_only(self):
        self.write("rastrel/job/a.cpp", "#include <png.h>\n")
        self.assertEqual(len(system_headers.check(self.root, {("children", "png.h")})), 1)

    def test_a_header_that_one_file_may_see_is_a_fault_in_its_neighbour(self):
        self.write("rastrel/imports/a.cpp", "#include <png.h>\n")
        self.write("rastrel/imports/b.cpp", "#include <png.h>\n")
        self.assertEqual(system_headers.check(self.root, {("rastrel/imports/a.cpp", "png.h")}),
                         ["rastrel/imports/b.cpp:1: <png.h> outside rastrel/platform"])


class ForeignWork(Tree):
    NAMED = {"start": {"rastrel/start.cpp"}, "draw": {"host/draw.cpp"}}

    def setUp(self):
        super().setUp()
        self.write("rastrel/start.cpp", "pid_t p = os::Calls().fork();\n")
        self.write("host/draw.cpp", "#include <png.h>\n")

    def test_the_files_of_the_table_may(self):
        self.assertEqual(foreign_work.check(self.root, self.NAMED), [])

    def test_each_way_to_start_a_program_is_a_fault_elsewhere(self):
        for call in ("fork()", "::vfork()", "_Fork()", "::posix_spawn(&p, a, b, c, d, e)",
                     "execve(a, b, c)", "::execlp(a, b)", "std::system(a)", "system (a)", "popen(a, b)",
                     "os::Spawn(request)", "GuardedProcess::Start(r, g)",
                     "clone(a, b, c, d)", "Calls().clone(a, b, c, d)",
                     "x.spawn = ::posix_spawnp"):
            self.write("cli/a.cpp", f"\nauto r = {call};\n")
            faults = foreign_work.check(self.root, self.NAMED)
            self.assertEqual(len(faults), 1, call)
            self.assertTrue(faults[0].startswith("cli/a.cpp:2: starts a program"), faults)

    def test_comments_quoted_texts_and_other_names_are_passed_over(self):
        self.write("cli/a.cpp", '// fork() and system()\n/* execve()\n */ f("popen(x)", "a \\" fork()");\n'
                                "file_system(a); b.clone(); c->system(); forked(d); OpenSystem(e);\n")
        self.assertEqual(foreign_work.check(self.root, self.NAMED), [])

    def test_a_library_for_foreign_pictures_is_a_fault_elsewhere(self):
        for header in ("poppler.h", "poppler/cpp/poppler-document.h", "librsvg/rsvg.h", "png.h", "tiffio.h",
                       "jpeglib.h", "gdk-pixbuf/gdk-pixbuf.h"):
            self.write("cli/a.cpp", f"#include <string>\n#  include <{header}>\n")
            faults = foreign_work.check(self.root, self.NAMED)
            self.assertEqual(len(faults), 1, header)
            self.assertIn("reads foreign pictures", faults[0])

    def test_a_line_that_names_a_file_for_nothing_is_a_fault(self):
        named = {"start": self.NAMED["start"] | {"cli/gone.cpp"}, "draw": self.NAMED["draw"]}
        self.assertEqual(foreign_work.check(self.root, named),
                         ["cli/gone.cpp: the table names it for nothing (start)"])


class HeadersCompileAlone(Tree):
    COMPILER = os.environ.get("CXX", "c++").split()

    def test_a_header_that_leans_on_its_includer_is_a_fault(self):
        self.write("rastrel/a.h", "#pragma once\ninline std::string Text() { return {}; }\n")
        self.write("rastrel/b.h", "#pragma once\ninline int Number() { return 1; }\n")
        faults = headers_compile_alone.check(str(self.root), self.COMPILER,
                                             ["rastrel/a.h", "rastrel/b.h"])
        self.assertEqual(len(faults), 1)
        self.assertIn("rastrel/a.h", faults[0])

    def test_a_header_without_a_guard_is_a_fault(self):
        self.write("rastrel/a.h", "struct Twice {};\n")
        self.write("rastrel/a.cpp", '#include "rastrel/a.h"\n')
        self.assertEqual(len(headers_compile_alone.check(str(self.root), self.COMPILER,
                                                         ["rastrel/a.h"])), 1)


class FileSizes(Tree):
    def test_a_file_over_the_limit_is_a_fault_and_one_at_it_is_not(self):
        self.write("rastrel/a.cpp", "//\n" * 600)
        self.write("rastrel/b.cpp", "//\n" * 601)
        self.assertEqual(file_sizes.check(self.root, ("rastrel",)),
                         ["rastrel/b.cpp: 601 lines, more than 600"])


class TestsAreBuilt(Tree):
    def test_a_test_that_is_not_compiled_is_a_fault(self):
        self.write("tests/a_test.cpp", "")
        self.write("tests/b_test.cpp", "")
        compiled = {str((self.root / "tests/a_test.cpp").resolve())}
        self.assertEqual(tests_are_built.check(self.root, compiled), ["tests/b_test.cpp: not built"])

    def test_a_test_that_is_joined_with_others_is_compiled(self):
        for name in ("a", "b", "c"):
            self.write(f"tests/{name}_test.cpp", "")
        joined = "".join(f'#include "{self.root}/tests/{name}_test.cpp"\n' for name in ("a", "b"))
        self.write("build/x.dir/Unity/unity_0_cxx.cxx", joined)
        commands = [{"directory": str(self.root / "build"), "file": "x.dir/Unity/unity_0_cxx.cxx"}]
        self.assertEqual(tests_are_built.check(self.root, tests_are_built.compiled_sources(commands)),
                         ["tests/c_test.cpp: not built"])


class ExportedSymbols(unittest.TestCase):
    def test_all_that_belongs_to_a_class_of_the_interface_is_fine(self):
        symbols = ["CFile::Open(wchar_t const*, unsigned int)", "vtable for CFile",
                   "typeinfo name for CFile", "non-virtual thunk to CFile::~CFile()",
                   "CFile::Name[abi:cxx11]() const", "void CFile::Get<unsigned char>(unsigned char&)",
                   "operator<<(CArchive&, COleDateTime const&)"]
        self.assertEqual(exported_symbols.check(symbols, ["CFile", "operator<<"]), [])

    def test_a_name_of_the_inside_is_a_fault(self):
        self.assertEqual(len(exported_symbols.check(
            ["CFile::Close()", "rastrel::os::ToNative(std::basic_string_view)", "vtable for Inner",
             "CFileInner::Do()"], ["CFile"])), 3)

    def test_a_missing_part_of_the_interface_is_a_fault(self):
        self.assertEqual(exported_symbols.check(["CFile::Close()"], ["CFile", "TestPrint"]),
                         ["TestPrint: part of the interface, and not exported"])


class HostGuide(unittest.TestCase):
    HEADERS = {"host/store.h": "class Store {\n virtual ~Store();\n  virtual int AddFont(int type) = 0;\n"
                               "  [[nodiscard]] virtual std::vector<int> ListFonts();\n"
                               "  // virtual int Gone();\n};\n"}

    def test_each_operation_that_is_named_is_fine(self):
        self.assertEqual(host_guide.check(self.HEADERS, "`AddFont` and `ListFonts()`"), [])

    def test_an_operation_that_is_not_named_as_code_is_a_fault(self):
        self.assertEqual(host_guide.check(self.HEADERS, "`AddFont` and ListFonts"),
                         ["host/store.h: docs/host.md does not name ListFonts"])

    def test_a_name_that_no_header_has_is_a_fault(self):
        self.assertEqual(host_guide.check(self.HEADERS, "`AddFont`, `ListFonts`, `DropFont`"),
                         ["docs/host.md: no header has DropFont"])


class DocumentedInterface(unittest.TestCase):
    def undocumented(self, text):
        return [line for line, _ in documented_interface.undocumented(text)]

    def test_functions_and_classes_without_a_comment_are_listed(self):
        self.assertEqual(self.undocumented("int One();\n\n/// Said.\nint Two();\n"), [1])
        self.assertEqual(self.undocumented("class One {\n public:\n  int Two();\n};\n"), [1, 3])

    def test_a_block_shares_the_comment_above_it_up_to_an_empty_line(self):
        self.assertEqual(self.undocumented("/// Said.\nint A();\nint B();\n\nint C();\n"), [5])

    def test_a_comment_at_the_end_of_a_line_counts_for_that_line_alone(self):
        self.assertEqual(self.undocumented("int a;  ///< said\nint b;\n"), [2])

    def test_private_members_bodies_and_macros_are_passed_over(self):
        self.assertEqual(self.undocumented(
            "#define M(x) int x();\n/// Said.\nclass One {\n  int m_A = 0;\n public:\n"
            "  /// Said.\n  int B() { int c = 1; return c; }\n\n private:\n  void D();\n};\n"), [])

    def test_what_needs_no_words_is_left_out(self):
        self.assertEqual(self.undocumented(
            "/// Said.\nstruct One {\n\n  ~One();\n\n  One(const One&) = delete;\n\n"
            "  int Two() override;\n};\n"), [])


class DocumentationExamples(Tree):
    def check(self, text):
        self.write("README.md", text)
        self.write("examples/a.ps", "%!PS\n")
        return documentation_examples.check(self.root, self.root, HeadersCompileAlone.COMPILER)

    def test_a_failing_example_is_a_fault(self):
        faults, count = self.check("```sh example\ntest -f examples/a.ps\n```\n"
                                   "```sh example\nfalse\ntrue\n```\n")
        self.assertEqual((len(faults), count), (1, 2))
        self.assertIn("README.md:4", faults[0])

    def test_an_unmarked_block_is_a_fault_and_a_reason_is_asked_for(self):
        faults, count = self.check("```sh\ntrue\n```\n```sh by-hand:\ntrue\n```\n"
                                   "```sh by-hand: needs a printer\nfalse\n```\n```text\nno\n```\n")
        self.assertEqual((len(faults), count), (2, 0))

    def test_an_example_that_does_not_compile_is_a_fault(self):
        faults, count = self.check("```cpp example\nint f();\n```\n```cpp example\nint f(;\n```\n")
        self.assertEqual((len(faults), count), (1, 2))


class FailureForm(Tree):
    def test_an_optional_or_a_variant_of_a_failure_is_a_fault(self):
        self.write("pages/a.h", "std::optional<Failure> A();\nstd::optional<int> B();\n")
        self.write("cli/b.cpp", "\nstd::variant<std::string, rastrel::Failure> c;\n")
        self.write("host/c.h", "Expected<void> A();\nExpected<std::optional<int>> B();\n")
        self.assertEqual(failure_form.check(self.root, set()),
                         ["cli/b.cpp:2: a failure as variant<std::string, rastrel::Failure>; "
                          "return rastrel::Expected",
                          "pages/a.h:1: a failure as optional<Failure>; return rastrel::Expected"])

    def test_an_operation_of_the_system_returns_no_boolean_and_sets_no_errno(self):
        self.write("rastrel/platform/os/a.h",
                   "/// One.\n[[nodiscard]] bool MakeOne();\n"
                   "/// Two. Minus 1\n/// with errno set.\nHANDLE Two(int a,\n  int b);\n"
                   "long Read(char* bytes);\n")
        self.assertEqual([fault.split(":")[1].split()[0]
                          for fault in failure_form.check(self.root, set())],
                         ["MakeOne", "Two", "Read"])

    def test_questions_and_what_the_table_names_are_fine(self):
        self.write("rastrel/platform/os/a.h",
                   "class A {\n  [[nodiscard]] bool IsOpen() const;\n};\nbool Exists(int path);\n"
                   "bool TryIt();\nExpected<void> MakeOne();\nint Count();\n")
        self.write("rastrel/job/b.h", "/// False with errno set.\nbool MakeOne();\n")
        self.assertEqual(failure_form.check(self.root, {"TryIt"}), [])
        self.assertEqual(failure_form.check(self.root, {"TryIt", "Gone"}),
                         ["failure_form.txt: there is no Gone"])


class DocumentationLinks(Tree):
    def test_a_link_to_nothing_and_a_page_outside_the_index_are_faults(self):
        self.write("README.md", "[a](docs/a.md) [b](docs/b.md#part) [c](https://example.org/c)\n")
        self.write("docs/a.md", "")
        self.write("docs/formats/README.md", "[one](one.md)\n")
        self.write("docs/formats/one.md", "")
        self.write("docs/formats/two.md", "")
        self.assertEqual(documentation_links.check(self.root),
                         ["README.md: there is no docs/b.md",
                          "docs/formats/two.md: not in the index of formats"])

    def test_a_page_that_a_source_names_must_be_there(self):
        self.write("rastrel/a.h", "/// docs/a.md has the format; docs/b.md tells more.\n")
        self.write("docs/a.md", "")
        self.assertEqual(documentation_links.check(self.root), ["rastrel/a.h: there is no docs/b.md"])


class PublicHeaders(Tree):
    def test_they_are_what_the_umbrella_reaches(self):
        self.write("rastrel/rastrel.h", '#include "rastrel/job/a.h"\n')
        self.write("rastrel/job/a.h", '#include "rastrel/job/b.h"\n#include <string>\n')
        self.write("rastrel/job/b.h", '#include "rastrel/job/a.h"\n')
        self.write("rastrel/job/inner.h", "")
        self.assertEqual(sources.public_headers(self.root),
                         ["rastrel/job/a.h", "rastrel/job/b.h", "rastrel/rastrel.h"])


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    unittest.main()
