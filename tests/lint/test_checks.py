#!/usr/bin/env python3
"""A check that finds nothing proves nothing: plants one fault at a time and wants to see it found."""

import json
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPTS = ROOT / "scripts"

HEADER = "#pragma once\n\nclass {name}\n{{\n}};\n"


class PlantedTree(unittest.TestCase):
    """A clean little project in a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="planted fault ")
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.write("cmake/layers.txt", "Definitions :\nEventWrite  : Definitions Platform\n")
        self.write("src/Definitions/Names.h", HEADER.format(name="Names"))
        self.write("src/EventWrite/Writer.h", HEADER.format(name="Writer"))
        self.write("src/EventWrite/Writer.cpp",
                   '#include "EventWrite/Writer.h"\n\n#include "Definitions/Names.h"\n\n#include <QString>\n')
        self.write("platform/api/Platform/Clock.h", HEADER.format(name="Clock"))
        shutil.copy(ROOT / ".clang-format", self.root)

    def write(self, path, text):
        target = self.root / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text, encoding="utf-8")

    def append(self, path, text):
        target = self.root / path
        self.write(path, target.read_text(encoding="utf-8") + text)

    def run_check(self, script, *arguments):
        done = subprocess.run([str(SCRIPTS / script), *map(str, arguments)], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        return done.returncode, done.stdout

    def expect_clean(self, script, *arguments):
        code, output = self.run_check(script, *arguments)
        self.assertEqual(code, 0, output)

    def expect_found(self, text, script, *arguments):
        code, output = self.run_check(script, *arguments)
        self.assertEqual(code, 1, output)
        self.assertIn(text, output)


class Layering(PlantedTree):
    def expect_fault(self, text):
        self.expect_found(text, "check_layering.py", "--root", self.root)

    def test_accepts_a_clean_tree(self):
        self.expect_clean("check_layering.py", "--root", self.root)

    def test_finds_an_edge_that_is_not_listed(self):
        self.append("src/Definitions/Names.h", '#include "EventWrite/Writer.h"\n')
        self.expect_fault("'Definitions' may not include 'EventWrite'")

    def test_finds_a_use_of_the_platform_that_is_not_listed(self):
        self.append("src/Definitions/Names.h", '#include "Platform/Clock.h"\n')
        self.expect_fault("'Definitions' may not include Platform")

    def test_finds_a_cycle_of_folders(self):
        self.write("cmake/layers.txt", "Definitions : EventWrite\nEventWrite : Definitions\n")
        self.expect_fault("cycle of folders")

    def test_finds_a_cycle_of_files(self):
        self.write("src/EventWrite/Other.h", '#pragma once\n#include "EventWrite/Writer.h"\nclass Other {};\n')
        self.append("src/EventWrite/Writer.h", '#include "EventWrite/Other.h"\n')
        self.expect_fault("cycle of files")

    def test_finds_a_relative_include(self):
        self.append("src/EventWrite/Writer.h", '#include "../Definitions/Names.h"\n')
        self.expect_fault("relative include")

    def test_finds_a_bare_include(self):
        self.write("src/EventWrite/Other.h", '#pragma once\n#include "Writer.h"\nclass Other {};\n')
        self.expect_fault("not the full path")

    def test_finds_a_folder_without_a_line(self):
        self.write("src/Gadgets/Gadget.h", HEADER.format(name="Gadget"))
        self.expect_fault("no line in cmake/layers.txt")

    def test_finds_a_file_with_another_name_than_its_class(self):
        self.write("src/EventWrite/Other.h", HEADER.format(name="Different"))
        self.expect_fault("declares no class 'Other'")

    def test_finds_a_source_without_its_header(self):
        self.write("src/EventWrite/Lonely.cpp", "int lonely();\n")
        self.expect_fault("no header 'Lonely.h'")

    def test_finds_a_long_file_without_a_reason(self):
        self.append("src/EventWrite/Writer.h", "\n" * 800)
        self.expect_fault("more than 800 need a reason")

    def test_finds_a_reason_that_is_not_needed(self):
        self.write("cmake/layering-exceptions.txt", "long src/EventWrite/Writer.h it was long\n")
        self.expect_fault("not needed any more")

    def test_finds_a_service_that_looks_into_the_library(self):
        self.write("service/core/Store.h", '#pragma once\n#include "Definitions/Names.h"\nclass Store {};\n')
        self.expect_fault("the service includes nothing of src/")

    def test_finds_a_stand_in_that_looks_into_the_library(self):
        self.write("platform/standin/Clock.cpp", '#include "Platform/Clock.h"\n\n#include "EventWrite/Writer.h"\n')
        self.expect_fault("platform/standin/ may not include 'EventWrite/Writer.h'")

    def test_finds_an_example_that_uses_a_private_part(self):
        self.write("src/EventWrite/detail/Part.h", HEADER.format(name="Part"))
        self.write("examples/main.cpp", '#include "EventWrite/detail/Part.h"\n')
        self.expect_fault("private part of the library")

    def test_finds_groups_out_of_order(self):
        self.write("src/EventWrite/Writer.cpp",
                   '#include "EventWrite/Writer.h"\n\n#include <vector>\n\n#include <QString>\n')
        self.expect_fault("(Qt) stands after standard")

    def test_finds_groups_without_a_blank_line_between(self):
        self.write("src/EventWrite/Writer.cpp", '#include "EventWrite/Writer.h"\n#include <QString>\n')
        self.expect_fault("a blank line is missing before 'QString'")

    def test_finds_an_own_header_that_is_not_first(self):
        self.write("src/EventWrite/Writer.cpp", '#include "Definitions/Names.h"\n\n#include "EventWrite/Writer.h"\n')
        self.expect_fault("the own header is the first include")


class Words(PlantedTree):
    def expect_fault(self, text):
        self.expect_found(text, "check_words.py", "--root", self.root)

    def expect_faulty_line(self, line, text):
        self.append("src/EventWrite/Writer.cpp", line + "\n")
        self.expect_fault(text)

    def test_accepts_a_clean_tree(self):
        self.append("src/EventWrite/Writer.cpp", "// Never a QDBusInterface: it blocks; sessionBus() is shared.\n"
                    'const char* text = "sleep(1)";\n')
        self.expect_clean("check_words.py", "--root", self.root)

    def test_finds_blind_waiting(self):
        self.expect_faulty_line("QTest::qWait(10);", "waits blindly")

    def test_finds_it_behind_a_quote_character_too(self):
        self.expect_faulty_line("if (unit == u'\"' || size > 1'000) { QTest::qWait(10); }", "waits blindly")

    def test_finds_sleep(self):
        self.expect_faulty_line("QThread::msleep(10);", "sleeps")

    def test_finds_sleep_in_a_script(self):
        self.write("tests/wait.py", "import time\ntime.sleep" "(1)\n")
        self.expect_fault("sleeps")

    def test_finds_hidden_quotes(self):
        self.expect_faulty_line("qWarning().noquote() << text;", "hides the quotes")

    def test_finds_shared_connections(self):
        self.expect_faulty_line("QDBusConnection::systemBus();", "cannot be replaced")

    def test_finds_the_blocking_proxy(self):
        self.expect_faulty_line("QDBusInterface proxy;", "blocks")

    def test_finds_unfinished_work(self):
        self.expect_faulty_line("// TO" "DO later", "unfinished")

    def test_finds_code_in_a_comment(self):
        self.expect_faulty_line("    // m_writer.write(event);", "commented-out code")

    def test_finds_a_silenced_check_without_a_reason(self):
        self.expect_faulty_line("int* p = 0;  // NOLINT", "NOLINT")

    def test_finds_a_paper(self):
        self.expect_faulty_line("// See Part" " 4.1.", "names a paper")

    def test_finds_a_paper_in_a_document(self):
        self.write("docs/wire.md", "As the" " specification says.\n")
        self.expect_fault("names a paper")

    def test_finds_a_ticket(self):
        self.write("CHANGELOG.md", "Mends issue" " #12.\n")
        self.expect_fault("names a ticket")

    def test_finds_a_host(self):
        self.write("README.md", "From https:" "//example.com/archive\n")
        self.expect_fault("names a host")

    def test_finds_a_folder_of_one_machine(self):
        self.write("docs/build.md", "cd /ho" "me/anna/project\n")
        self.expect_fault("names a folder of one machine")


class Format(PlantedTree):
    def test_accepts_a_clean_tree(self):
        self.expect_clean("check_format", "--root", self.root)

    def test_finds_another_layout(self):
        self.append("src/EventWrite/Writer.cpp", "int  f( ) { return 1;}\n")
        self.expect_found("Writer.cpp", "check_format", "--root", self.root)


class Tidy(PlantedTree):
    def plant(self, *bodies):
        """As Writer.cpp and further files of its folder, which are looked at together."""
        shutil.copy(ROOT / ".clang-tidy", self.root)
        commands = []
        for number, body in enumerate(bodies):
            name = f"src/EventWrite/{number or ''}Writer.cpp"
            self.write(name, body)
            commands.append({"directory": str(self.root), "command": f"ccache g++ -std=c++17 -o {number}.o -c {name}",
                             "file": str(self.root / name)})
        self.write("build/compile_commands.json", json.dumps(commands))

    def run_twice(self):
        return [self.run_check("check_tidy", self.root / "build", "--root", self.root) for _ in range(2)]

    def test_accepts_clean_code_also_from_its_memory(self):
        self.plant("int twice(int value)\n{\n    return 2 * value;\n}\n")
        for code, output in self.run_twice():
            self.assertEqual(code, 0, output)

    def test_finds_a_fault_each_time(self):
        self.plant("int* nothing()\n{\n    return 0;\n}\n")
        for code, output in self.run_twice():
            self.assertEqual(code, 1, output)
            self.assertIn("modernize-use-nullptr", output)

    CLEAN = "int once(int value)\n{\n    return value;\n}\n"

    def test_finds_a_fault_among_files_of_a_folder(self):
        self.plant(self.CLEAN, "int* nothing()\n{\n    return 0;\n}\n")
        for code, output in self.run_twice():
            self.assertEqual(code, 1, output)
            self.assertIn("modernize-use-nullptr", output)
            self.assertIn("1Writer.cpp:3:", output)

    def test_follows_the_paths_through_each_of_the_files_of_a_folder(self):
        self.plant(self.CLEAN, "int any(bool is)\n{\n    int* place = nullptr;\n    return is ? *place : 0;\n}\n")
        for code, output in self.run_twice():
            self.assertEqual(code, 1, output)
            self.assertIn("clang-analyzer-core.NullDereference", output)

    def test_lets_files_of_a_folder_have_the_same_names_inside(self):
        inside = "namespace\n{\nint value()\n{\n    return %d;\n}\n} // namespace\nint %s()\n{\n    return value();\n}\n"
        self.plant(inside % (1, "first"), inside % (2, "second"))
        for code, output in self.run_twice():
            self.assertEqual(code, 0, output)

    def test_refuses_a_build_of_another_tree(self):
        self.write("build/compile_commands.json", "[]")
        code, output = self.run_check("check_tidy", self.root / "build", "--root", self.root)
        self.assertEqual(code, 1, output)


class Symbols(PlantedTree):
    """The library is a few lines of C++; the linker is the real one."""

    def setUp(self):
        super().setUp()
        self.write("platform/api/Platform/Clock.h",
                   "#pragma once\n#define PLATFORM_EXPORT __attribute__((visibility(\"default\")))\n"
                   "class PLATFORM_EXPORT Clock\n{\npublic:\n    int now();\n};\n")
        self.write("src/Common/DBusTools/DBusConnectorBase.h", HEADER.format(name="DBusConnectorBase"))
        self.write("exported.txt", "Writer\nRecord   no symbols\n")

    SHOWN = "struct __attribute__((visibility(\"default\"))) Writer { int write(); };\n" \
            "int Writer::write() { return Clock().now(); }\n"

    def build(self, source, *flags, soname="libEventlistHandler.so.1"):
        self.write("library.cpp", '#include "Platform/Clock.h"\n' + source)
        subprocess.run(["g++", "-shared", "-fPIC", "-fvisibility=hidden", "-I", self.root / "platform/api",
                        "-o", self.root / "library.so", self.root / "library.cpp", f"-Wl,-soname,{soname}",
                        *(flags or ["-Wl,-z,nodelete"])], check=True)

    def arguments(self):
        return (self.root / "library.so", "--root", self.root, "--exported", self.root / "exported.txt")

    def expect_fault(self, text):
        self.expect_found(text, "check_symbols.py", *self.arguments())

    def test_accepts_a_clean_library(self):
        self.build(self.SHOWN)
        self.expect_clean("check_symbols.py", *self.arguments())

    def test_finds_another_link_dependency(self):
        self.build(self.SHOWN, "-Wl,-z,nodelete", "-Wl,--no-as-needed", "-ldbus-1")
        self.expect_fault("links libdbus-1")

    def test_finds_a_symbol_of_nobody(self):
        self.build(self.SHOWN + "int missing();\n__attribute__((visibility(\"default\"))) "
                   "int Writer_use() { return missing(); }\n")
        self.expect_fault("needs 'missing()'")

    def test_finds_a_platform_layer_that_was_linked_in(self):
        self.build(self.SHOWN + "int Clock::now() { return 1; }\n")
        self.expect_fault("needs nothing of the platform layer")

    def test_finds_a_class_that_is_not_listed(self):
        self.build(self.SHOWN + "struct __attribute__((visibility(\"default\"))) Secret { void tell(); };\n"
                   "void Secret::tell() {}\n")
        self.expect_fault("shows 'Secret::tell()'")

    def test_finds_a_listed_class_that_is_hidden(self):
        self.build("struct Writer { int write(); };\nint Writer::write() { return Clock().now(); }\n"
                   "__attribute__((visibility(\"default\"))) int use() { return Writer().write(); }\n")
        self.expect_fault("does not show 'Writer'")

    def test_finds_another_soname(self):
        self.build(self.SHOWN, soname="libEventlistHandler.so.2")
        self.expect_fault("its soname")

    def test_finds_a_library_that_may_be_unloaded(self):
        self.build(self.SHOWN, "-Wl,--as-needed")
        self.expect_fault("may be unloaded")


class TestMap(PlantedTree):
    """One test, one row, one situation, one warning."""

    def setUp(self):
        super().setUp()
        self.write("src/EventWrite/Writer.cpp", '#include "EventWrite/Writer.h"\n\nvoid write(const QString& path)\n{\n'
                   '    qWarning() << "Can\'t write" << path\n        << "at "\n           "all";\n}\n')
        self.write("tests/unit/EventWrite/CMakeLists.txt", "eventlisthandler_add_test(tst_Writer KIND unit)\n")
        self.write("tests/unit/EventWrite/tst_Writer.cpp",
                   "class tst_Writer\n{\nprivate Q_SLOTS:\n    void init();\n    void warns_data();\n    void warns();\n"
                   'private:\n    void help();\n};\n    QTest::newRow("a full disk") << 1;\n')
        self.write("docs/test-map.md", "## Writer\n\nTests: `unit/EventWrite/tst_Writer`\n\n| What must hold | Test |\n"
                   "|---|---|\n| It warns | `warns`, `warns:a full disk` |\n")
        self.write("docs/failure-handbook.md", "### It cannot write\n\n- Lost: the event\n"
                   "- Warned: `Can't write <path> at all`\n- To do: nothing\n"
                   "- Shown by: `unit/EventWrite/tst_Writer::warns`\n")

    def replace(self, path, old, new):
        text = (self.root / path).read_text(encoding="utf-8")
        self.assertIn(old, text)
        self.write(path, text.replace(old, new))

    def expect_fault(self, text):
        self.expect_found(text, "check_test_map.py", "--root", self.root)

    def test_accepts_a_clean_tree(self):
        self.expect_clean("check_test_map.py", "--root", self.root)

    def test_finds_a_function_that_is_not_there(self):
        self.replace("docs/test-map.md", "`warns`", "`shouts`")
        self.expect_fault("there is no test function 'shouts'")

    def test_finds_a_function_that_is_no_test(self):
        self.replace("docs/test-map.md", "`warns`", "`help`")
        self.expect_fault("there is no test function 'help'")

    def test_finds_a_data_row_that_is_not_there(self):
        self.replace("docs/test-map.md", "a full disk", "an empty disk")
        self.expect_fault("'warns' has no data row 'an empty disk'")

    def test_finds_a_row_without_a_test(self):
        self.append("docs/test-map.md", "| It never sleeps | |\n")
        self.expect_fault("a row names what must hold, and its tests")

    def test_finds_a_file_that_is_not_there(self):
        self.replace("docs/test-map.md", "tst_Writer", "tst_Reader")
        self.expect_fault("'unit/EventWrite/tst_Reader' there is no such test")

    def test_finds_a_test_that_is_not_registered(self):
        self.write("tests/unit/EventWrite/CMakeLists.txt", "eventlisthandler_add_test(tst_Other KIND unit)\n")
        self.expect_fault("'unit/EventWrite/tst_Writer' is not registered in CMake")

    def test_finds_a_warning_that_nobody_gives(self):
        self.replace("docs/failure-handbook.md", "at all`", "any more`")
        self.expect_fault("no source says 'any more'")

    def test_finds_a_warning_of_the_library_that_is_missing(self):
        self.append("src/EventWrite/Writer.cpp", 'void read()\n{\n    qWarning() << "Can\'t read";\n}\n')
        self.expect_fault("the handbook does not quote 'Can't read'")

    def test_finds_a_situation_without_all_answers(self):
        self.replace("docs/failure-handbook.md", "- To do: nothing\n", "")
        self.expect_fault("'It cannot write' does not answer")

    def test_finds_a_situation_whose_test_is_not_there(self):
        self.replace("docs/failure-handbook.md", "::warns", "::shouts")
        self.expect_fault("there is no test function 'unit/EventWrite/tst_Writer::shouts'")


if __name__ == "__main__":
    unittest.main()
