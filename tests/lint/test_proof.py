#!/usr/bin/env python3
"""The campaigns that ask whether the tests bite, on samples that are known to the last line: scripts/coverage and
scripts/mutate say what they should about code that no test reaches and about faults that no test notices."""

import importlib.machinery
import importlib.util
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))
import mutation  # pylint: disable=wrong-import-position

LOADER = importlib.machinery.SourceFileLoader("mutate", str(SCRIPTS / "mutate"))
mutate = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutate", LOADER))
LOADER.exec_module(mutate)

# Two numbers are left out, and a size below 0 counts as none: that is what no test below looks at.
SAMPLE = """
int count(const int* numbers, int size)
{
    if (size < 0)
    {
        return 0;
    }
    int found = 0;
    for (int i = 0; i < size; ++i)
    {
        if (numbers[i] == 7 || numbers[i] == 9)
        {
            continue;
        }
        ++found;
    }
    return found;
}
"""
TEST_OF_SAMPLE = """
int main()
{
    const int numbers[] = {1, 7, 9, 7, 2, 3};
    return count(numbers, 5) == 2 && count(numbers, 1) == 1 ? 0 : 1;
}
"""


class Mutants(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="mutants ")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        text, cls.mutants = mutation.instrument(SAMPLE, "src/Sample/Sample.cpp", 1)
        cls.source = cls.folder / "sample.cpp"
        cls.source.write_text(text + TEST_OF_SAMPLE, encoding="utf-8")
        cls.program = cls.folder / "sample"
        subprocess.run(["g++", "-std=c++17", "-I", SCRIPTS, "-o", cls.program, cls.source], check=True)

    def sample(self, command=None):
        return mutate.Test({"name": "unit/Sample/sample", "command": [str(word) for word in command or [self.program]]})

    def test_without_a_chosen_mutant_the_code_is_the_original(self):
        self.assertIsNone(self.sample().run(10))

    def test_every_kind_of_fault_has_its_place(self):
        self.assertEqual([(mutant.line, mutant.kind) for mutant in self.mutants], [
            (4, "other comparison than <"), (4, "1 for 0"), (6, "no return"), (6, "1 for 0"),
            (8, "1 for 0"), (9, "1 for 0"), (9, "other comparison than <"),
            (11, "other comparison than =="), (11, "other operator than ||"), (11, "other comparison than =="),
            (13, "no continue"), (15, "no statement")])

    def test_only_what_nobody_looks_at_survives(self):
        survivors = [mutant for mutant in self.mutants if self.sample().run(10, MUTATION=str(mutant.number)) is None]
        self.assertEqual([(mutant.line, mutant.kind) for mutant in survivors], [
            (4, "other comparison than <"), (4, "1 for 0"), (6, "no return"), (6, "1 for 0")])

    def test_the_trace_names_what_a_test_comes_past(self):
        trace = self.folder / "trace"
        self.sample().run(10, MUTATION_TRACE=str(trace))
        passed = set(map(int, trace.read_text().split()))
        self.assertEqual([mutant.line for mutant in self.mutants if mutant.number not in passed], [6, 6])

    def test_texts_negations_and_conditions_are_mutated_too(self):
        source = ('void f(bool isOn)\n{\n    if (isOn)\n    {\n        log("on", !isOn && isOff(), true);\n    }\n'
                  "    m_name = name;\n    const QString name = other;\n}\n")
        _, mutants = mutation.instrument(source, "src/Sample/Sample.cpp", 1)
        self.assertEqual([mutant.kind for mutant in mutants],
                         ["opposite condition", "no statement", "empty text", "no !", "other operator than &&",
                          "not true", "no statement"])

    def test_a_first_failure_ends_the_test(self):
        waits = ["sh", "-c", "echo 'FAIL!  : tst_X::fails() no'; exec sleep 60"]
        self.assertEqual(self.sample(waits).run(30), "fails")

    def test_a_test_without_end_is_ended(self):
        self.assertEqual(self.sample(["sleep", "60"]).run(0.2), "time")

    def test_a_survivor_needs_a_reason(self):
        lost = self.mutants[1]
        problems, score = mutate.judge(self.mutants, [lost], {})
        self.assertEqual(len(problems), 2, problems)
        self.assertIn("survives without a reason: src/Sample/Sample.cpp: 1 for 0 1: if (size < 0)", problems[0])
        self.assertIn("below 95 %", problems[1])
        self.assertAlmostEqual(score, 100.0 * 11 / 12)

    def test_a_reason_is_read_from_the_lines_below(self):
        listed = self.folder / "survivors.txt"
        listed.write_text(f"# known\n{mutate.describe(self.mutants[1])}\n    Nobody gives\n    such a size.\n")
        reasons = mutate.read_reasons(listed)
        self.assertEqual(reasons, {mutate.describe(self.mutants[1]): "Nobody gives such a size."})
        self.assertEqual(mutate.judge(self.mutants * 2, [self.mutants[1]], reasons)[0], [])

    def test_a_listed_mutant_that_is_noticed_is_a_fault(self):
        problems, _ = mutate.judge(self.mutants, [], {mutate.describe(self.mutants[1]): "old"})
        self.assertEqual(problems, ["does not survive any more: src/Sample/Sample.cpp: 1 for 0 1: if (size < 0)"])


class Coverage(unittest.TestCase):
    """A report about a file of six lines, of which the condition in line 2 is never true."""

    SOURCE = "bool f(bool isOn)\n{\n    if (isOn)\n        return true;\n    return false;\n}\n"
    REACHED = ("SF:/elsewhere/build/Sample/Sample.cpp\nDA:1,1\nDA:2,1\nDA:3,1\nBRDA:3,0,0,0\nBRDA:3,0,1,1\n"
               "DA:4,0\nDA:5,1\nDA:6,1\nend_of_record\n")

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="coverage ")
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "src/Sample").mkdir(parents=True)
        (self.root / "src/Sample/Sample.cpp").write_text(self.SOURCE, encoding="utf-8")

    def check(self, report, exceptions=""):
        (self.root / "report.lcov").write_text(report, encoding="utf-8")
        (self.root / "exceptions.txt").write_text(exceptions, encoding="utf-8")
        done = subprocess.run([SCRIPTS / "check_coverage.py", "--root", self.root, "--lcov", self.root / "report.lcov",
                               "--exceptions", self.root / "exceptions.txt"], stdout=subprocess.PIPE, text=True,
                              check=False)
        return done.returncode, done.stdout

    def expect(self, code, text, report, exceptions=""):
        found, output = self.check(report, exceptions)
        self.assertEqual(found, code, output)
        self.assertIn(text, output)

    LISTED = "[src/Sample/Sample.cpp]\nif (isOn)\nreturn true;\nreason: nobody switches it on\n"

    def test_accepts_what_is_reached(self):
        self.expect(0, "6 of 6 lines, 2 of 2 branches of 1 files",
                    self.REACHED.replace("DA:4,0", "DA:4,1").replace("0,0,0\n", "0,0,1\n"))

    def test_finds_a_line_and_a_branch(self):
        self.expect(1, "src/Sample/Sample.cpp:3: condition 1 never true: if (isOn)", self.REACHED)
        self.expect(1, "src/Sample/Sample.cpp:4: not reached: return true;", self.REACHED)

    def test_accepts_what_is_listed(self):
        self.expect(0, "0 problems", self.REACHED, self.LISTED)

    def test_finds_a_listed_line_that_is_reached(self):
        self.expect(1, "is reached: src/Sample/Sample.cpp:4", self.REACHED.replace("DA:4,0", "DA:4,1"), self.LISTED)

    def test_finds_a_block_that_is_not_there(self):
        self.expect(1, "stands 0 times", self.REACHED, self.LISTED.replace("return true", "return 1"))

    def test_finds_a_block_without_a_reason(self):
        self.expect(1, "a block without a reason", self.REACHED, self.LISTED.partition("reason")[0])

    def test_a_report_about_nothing_is_a_fault(self):
        self.expect(1, "says nothing about src/", "SF:/elsewhere/tests/unit/tst_X.cpp\nDA:1,1\n")

    def test_instances_of_a_template_count_together(self):
        (self.root / "src/Sample/Sample.h").write_text(self.SOURCE, encoding="utf-8")
        self.expect(0, "2 of 2 branches", "SF:/elsewhere/build/Sample/Sample.h\nDA:3,2\nBRDA:3,0,0,1\nBRDA:3,0,1,0\n"
                    "BRDA:3,1,2,0\nBRDA:3,1,3,1\n")


if __name__ == "__main__":
    unittest.main()
