#!/usr/bin/env python3
"""Checks docs/test-map.md and docs/failure-handbook.md: every test that they name exists and is registered, every
warning that the handbook quotes stands in the sources, and every warning of the library stands in the handbook."""

import re
import sys
from pathlib import Path

from project_files import run_check

MAP = Path("docs/test-map.md")
HANDBOOK = Path("docs/failure-handbook.md")
KINDS = ("unit", "bus", "contract", "install")
CODE_SPAN = re.compile(r"`([^`]+)`")
# Where a warning may come from that the handbook quotes.
WARNING_TREES = ("src", "platform/standin", "service")
# Each situation of the handbook answers these questions, in this order.
QUESTIONS = ("Lost:", "Warned:", "To do:", "Shown by:")


def string_literals(source):
    """The string literals of C++ code, each with its position; neighbours are joined as the compiler joins them."""
    literal = r'"(?:[^"\\\n]|\\.)*"'
    for found in re.finditer(rf"{literal}(?:\s+{literal})*", source):
        pieces = re.findall(literal, found.group(0))
        yield found.start(), "".join(piece[1:-1].replace('\\"', '"') for piece in pieces)


def slots_of(source):
    """The test functions of a QtTest program: what its private slots declare, without the data and the set up."""
    names = set()
    for section in re.findall(r"private Q_SLOTS:(.*?)(?:^private:|^public:|^protected:|^};)", source,
                              re.MULTILINE | re.DOTALL):
        names.update(re.findall(r"\bvoid\s+(\w+)\s*\(", section))
    special = {"init", "cleanup", "initTestCase", "cleanupTestCase"}
    return {name for name in names - special if not name.endswith("_data")}


class TestFile:
    def __init__(self, root, name):
        self.problem = None
        self.functions = set()
        self.source = ""
        kind, _, rest = name.partition("/")
        folder, _, base = rest.rpartition("/")
        found = [root / "tests" / f"{name}{suffix}" for suffix in (".cpp", ".py")
                 if (root / "tests" / f"{name}{suffix}").is_file()]
        if kind not in KINDS or not found:
            self.problem = "there is no such test"
            return
        self.source = found[0].read_text(encoding="utf-8")
        # A list of tests in CMake may leave the common beginning of their names out.
        registered = (root / "tests" / kind / folder / "CMakeLists.txt").read_text(encoding="utf-8")
        if not any(re.search(rf"(?<!\w){re.escape(word)}(?!\w)", registered) for word in (base, base.split("_")[-1])):
            self.problem = "is not registered in CMake"
        elif found[0].suffix == ".cpp":
            self.functions = slots_of(self.source)
        else:
            self.functions = set(re.findall(r"^\s+def (test_\w+)\(", self.source, re.MULTILINE))
            # A script that makes one fault for each case has the cases in its list of tests.
            self.functions |= set(re.findall(r"(?<![\w-])([a-z]+(?:-[a-z]+)+|kill)(?![\w-])", registered))


class Checker:
    def __init__(self, root):
        self.root = root
        self.problems = []
        self.files = {}

    def report(self, path, line, text):
        self.problems.append(f"{path}:{line}: {text}")

    def test_file(self, path, line, name):
        if name not in self.files:
            self.files[name] = TestFile(self.root, name)
        file = self.files[name]
        if file.problem:
            self.report(path, line, f"'{name}' {file.problem}")
            return None
        return file

    def check_test(self, path, line, test, files_of_section):
        """A test reads function, function:data row, or with its file in front: kind/Folder/file::function."""
        name, _, function = test.rpartition("::")
        files = [self.test_file(path, line, name)] if name else files_of_section
        function, _, row = function.partition(":")
        files = [file for file in files if file and function in file.functions]
        if not files:
            if not name or self.files[name].problem is None:
                self.report(path, line, f"there is no test function '{test}'")
        elif row and not any(f'"{row}"' in file.source for file in files):
            self.report(path, line, f"'{function}' has no data row '{row}'")

    def check_map(self):
        lines = (self.root / MAP).read_text(encoding="utf-8").splitlines()
        files_of_section = []
        for number, line in enumerate(lines, 1):
            if line.startswith("#"):
                files_of_section = []
            elif line.startswith("Tests:"):
                names = CODE_SPAN.findall(line)
                files_of_section = [self.test_file(MAP, number, name) for name in names]
            elif line.startswith("| ") and not line.startswith("| What must hold"):
                cells = line.strip("| ").split(" | ")
                tests = CODE_SPAN.findall(cells[-1])
                if len(cells) != 2 or not tests:
                    self.report(MAP, number, "a row names what must hold, and its tests")
                for test in tests:
                    self.check_test(MAP, number, test, files_of_section)

    def sources(self, trees):
        for tree in trees:
            for path in sorted((self.root / tree).rglob("*")):
                if path.suffix in (".cpp", ".h"):
                    yield path, path.read_text(encoding="utf-8")

    def heads_of_library(self):
        """How each warning of the library begins, with the place where it stands."""
        for path, source in self.sources(["src"]):
            literals = dict(string_literals(source))
            for found in re.finditer(r"qWarning\(\)\s*<<\s*", source):
                if found.end() in literals:
                    yield path.relative_to(self.root), literals[found.end()].strip()

    def check_quotation(self, line, quotation, literals):
        # Values stand in angle brackets, texts among them in quotes too.
        for piece in re.split(r'"?<[^>]*>"?', quotation):
            piece = piece.strip()
            if piece and not any(piece in literal for literal in literals):
                self.report(HANDBOOK, line, f"no source says '{piece}'")

    def check_handbook(self):
        text = (self.root / HANDBOOK).read_text(encoding="utf-8")
        literals = {literal for _, source in self.sources(WARNING_TREES) for _, literal in string_literals(source)}
        quotations = []
        for found in re.finditer(r"^### (.*)\n((?:(?!#).*\n?)*)", text, re.MULTILINE):
            line = text.count("\n", 0, found.start()) + 1
            answers = re.findall(r"^- (\w[\w ]*:)((?:.*\n?)(?:^  .*\n?)*)", found[2], re.MULTILINE)
            if tuple(question for question, _ in answers) != QUESTIONS:
                self.report(HANDBOOK, line, f"'{found[1]}' does not answer {' '.join(QUESTIONS)}")
                continue
            answers = {question: " ".join(answer.split()) for question, answer in answers}
            quoted = CODE_SPAN.findall(answers["Warned:"])
            quotations += quoted
            for quotation in quoted:
                self.check_quotation(line, quotation, literals)
            tests = CODE_SPAN.findall(answers["Shown by:"])
            if not tests:
                self.report(HANDBOOK, line, f"'{found[1]}' names no test")
            for test in tests:
                self.check_test(HANDBOOK, line, test, [])
        for path, head in self.heads_of_library():
            if not any(head in quotation for quotation in quotations):
                self.report(path, 1, f"the handbook does not quote '{head}'")

    def run(self):
        self.check_map()
        self.check_handbook()
        return self.problems


if __name__ == "__main__":
    sys.exit(run_check(lambda root: Checker(root).run(), "test map", __doc__))
