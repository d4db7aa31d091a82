#!/usr/bin/env python3
"""The check of the binary interface sees what breaks modules, and moves its baseline only with a word about it."""

import argparse
import subprocess
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).resolve().parents[2] / "scripts/check_abi.py"
HEADER = """#pragma once
class Pump
{
public:
    virtual ~Pump();
    virtual int speed() const;
    virtual int pressure() const;

private:
    int m_speed = 0;
};
"""
SOURCE = """#include "Pump.h"
Pump::~Pump() = default;
int Pump::speed() const { return m_speed; }
int Pump::pressure() const { return 0; }
"""
CHANGES = "# Changes\n\n## Unreleased\n\n### ABI\n\n- soname 1.\n"


class CheckAbi(unittest.TestCase):
    compiler = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.changelog = self.folder / "CHANGELOG.md"
        self.changelog.write_text(CHANGES, encoding="utf-8")
        (self.folder / "abi").mkdir()
        self.build(HEADER, SOURCE)
        code, said = self.check("--update")
        if code == 77:
            self.skipTest(said)
        self.assertEqual(code, 0, said)

    def build(self, header, source, soname="libPump.so.1"):
        (self.folder / "Pump.h").write_text(header, encoding="utf-8")
        (self.folder / "Pump.cpp").write_text(source, encoding="utf-8")
        subprocess.run([self.compiler, "-std=c++17", "-g", "-fPIC", "-shared", f"-Wl,-soname,{soname}", "Pump.cpp",
                        "-o", "libPump.so"], cwd=self.folder, check=True)

    def check(self, *options):
        done = subprocess.run([CHECK, "libPump.so", "--folder", "abi", "--headers", ".", "--changelog", "CHANGELOG.md",
                               *options], cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False)
        return done.returncode, done.stdout

    def expect_difference(self, *words):
        code, said = self.check()
        self.assertEqual(code, 1, said)
        for word in words:
            self.assertIn(word, said)

    def test_the_same_library_built_elsewhere_passes(self):
        self.build("// moved a line down\n" + HEADER, SOURCE.replace("return 0", "return 7"))
        self.assertEqual(self.check(), (0, "ABI: as the baseline\n"))

    def test_a_new_field_a_moved_function_and_one_that_has_gone_are_seen(self):
        self.build(HEADER.replace("int m_speed", "int m_pressure = 0;\n    int m_speed"), SOURCE)
        self.expect_difference("m_pressure")
        lines = HEADER.split("\n")
        lines[5], lines[6] = lines[6], lines[5]
        self.build("\n".join(lines), SOURCE)
        self.expect_difference("vtable")
        self.build(HEADER.replace("    virtual int pressure() const;\n", ""),
                   SOURCE.replace("int Pump::pressure() const { return 0; }\n", ""))
        self.expect_difference("Removed", "pressure")

    def test_a_new_function_needs_a_line_in_the_change_log(self):
        self.build(HEADER.replace("private:", "    void stop();\n\nprivate:"), SOURCE + "void Pump::stop() {}\n")
        self.expect_difference("Added", "stop")
        code, said = self.check("--update")
        self.assertEqual(code, 1)
        self.assertIn("write a new line under '### ABI'", said)
        self.changelog.write_text(CHANGES.replace("- soname 1.", "- `Pump::stop` is new.\n- soname 1."),
                                  encoding="utf-8")
        self.assertEqual(self.check("--update")[0], 0)
        self.assertEqual(self.check(), (0, "ABI: as the baseline\n"))
        self.changelog.write_text(CHANGES, encoding="utf-8")
        code, said = self.check()
        self.assertEqual((code, said), (1, "ABI: CHANGELOG.md has lost the line of the baseline: "
                                           "`Pump::stop` is new.\n"))

    def test_what_breaks_modules_needs_another_soname(self):
        self.changelog.write_text(CHANGES.replace("- soname 1.", "- no pressure.\n- soname 1."), encoding="utf-8")
        header = HEADER.replace("    virtual int pressure() const;\n", "")
        source = SOURCE.replace("int Pump::pressure() const { return 0; }\n", "")
        self.build(header, source)
        code, said = self.check("--update")
        self.assertEqual(code, 1)
        self.assertIn("needs another soname", said)
        self.build(header, source, "libPump.so.2")
        self.assertEqual(self.check("--update")[0], 0)
        self.assertEqual(self.check()[0], 0)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--compiler", required=True)
    CheckAbi.compiler = parser.parse_args().compiler
    unittest.main(argv=[__file__, "-v"])
