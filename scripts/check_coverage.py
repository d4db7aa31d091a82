#!/usr/bin/env python3
"""Judges a coverage report: every line and every branch of src/ is reached, or stands in the list of exceptions.

The list holds blocks: the path of a file in brackets, lines of that file as they stand there without their indentation,
and a reason, a line that begins with "reason:". Each line of a block that holds code has something that is not
reached; a block that does not stand in its file exactly once, or is reached, is a fault."""

import argparse
import re
import sys
from collections import defaultdict
from pathlib import Path


def read_lcov(text, root):
    """For each file of src/: how often each line ran, and for each line how often each of its branches was taken."""
    lines = defaultdict(lambda: defaultdict(int))
    branches = defaultdict(lambda: defaultdict(int))
    # The library is compiled with paths that begin at src/, so that a report may put any folder in front of them.
    sources = {f"/{path.relative_to(root / 'src')}": path.relative_to(root) for path in (root / "src").rglob("*.*")}
    path = None
    for record in text.splitlines():
        tag, _, rest = record.partition(":")
        if tag == "SF":
            path = next((source for ending, source in sources.items() if rest.endswith(ending)), None)
        elif path is None:
            continue
        elif tag == "DA":
            number, count = rest.split(",")[:2]
            lines[path][int(number)] += int(count)
        elif tag == "BRDA":
            number, _, branch, taken = rest.split(",")
            # Templates stand in headers: what one of their instances does counts for all.
            branch = int(branch) % 2 if path.suffix == ".h" else int(branch)
            branches[path][(int(number), branch)] += 0 if taken == "-" else int(taken)
    return lines, branches


class Exceptions:
    def __init__(self, path):
        self.path = path
        self.problems = []
        self.blocks = []  # (file, lines, line in the list)
        file = None
        block = []
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            line = line.strip()
            if not line or line.startswith("#"):
                continue
            head = re.fullmatch(r"\[(.+)\]", line)
            if head:
                self.expect(not block, number, "a block without a reason")
                file, block = Path(head[1]), []
            elif line.startswith("reason:"):
                self.expect(bool(block) and file is not None and len(line.split()) > 3, number,
                            "a reason without a block, or of a word or two")
                self.blocks.append((file, block, number))
                block = []
            else:
                block.append(line)
        self.expect(not block, 0, "a block without a reason")

    def expect(self, condition, number, text):
        if not condition:
            self.problems.append(f"{self.path}:{number}: {text}")

    def excepted_lines(self, root, unreached, coded):
        """The line numbers of each file that a block excepts."""
        excepted = defaultdict(set)
        for file, block, number in self.blocks:
            source = [line.strip() for line in (root / file).read_text(encoding="utf-8").splitlines()] \
                if (root / file).is_file() else []
            starts = [start for start in range(len(source)) if source[start:start + len(block)] == block]
            self.expect(len(starts) == 1, number, f"stands {len(starts)} times in {file}")
            if len(starts) != 1:
                continue
            for line in range(starts[0] + 1, starts[0] + 1 + len(block)):
                self.expect(line not in coded[file] or line in unreached[file], number,
                            f"is reached: {file}:{line}: {source[line - 1]}")
                excepted[file].add(line)
        return excepted


def judge(lines, branches, exceptions, root):
    unreached = defaultdict(lambda: defaultdict(list))
    for path, counts in lines.items():
        for number, count in counts.items():
            if count == 0:
                unreached[path][number].append("not reached")
    for path, counts in branches.items():
        for (number, branch), count in counts.items():
            if count == 0 and "not reached" not in unreached[path][number]:
                way = "false" if branch % 2 else "true"
                unreached[path][number].append(f"condition {branch // 2 + 1} never {way}")
        unreached[path] = defaultdict(list, {number: what for number, what in unreached[path].items() if what})
    excepted = exceptions.excepted_lines(root, unreached, lines)
    problems = list(exceptions.problems)
    for path in sorted(unreached):
        source = (root / path).read_text(encoding="utf-8").splitlines()
        for number in sorted(set(unreached[path]) - excepted[path]):
            problems.append(f"{path}:{number}: {', '.join(unreached[path][number])}: {source[number - 1].strip()}")
    return problems


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    parser.add_argument("--lcov", type=Path, required=True)
    parser.add_argument("--exceptions", type=Path, required=True)
    arguments = parser.parse_args()
    root = arguments.root.resolve()
    lines, branches = read_lcov(arguments.lcov.read_text(encoding="utf-8"), root)
    if not lines:
        print("coverage: the report says nothing about src/")
        return 1
    problems = judge(lines, branches, Exceptions(arguments.exceptions), root)
    for problem in problems:
        print(problem)
    counts = [count for file in lines.values() for count in file.values()]
    ways = [count for file in branches.values() for count in file.values()]
    print(f"coverage: {sum(map(bool, counts))} of {len(counts)} lines, {sum(map(bool, ways))} of {len(ways)} branches "
          f"of {len(lines)} files, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
