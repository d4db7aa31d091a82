#!/usr/bin/env python3
"""Prints a header as Doxygen has to see it.

In our headers one comment stands for all operations that follow it without an empty line; to Doxygen it belongs to
the first of them alone. So it is repeated for the others."""

import re
import sys
from pathlib import Path

NO_DECLARATION = re.compile(r"\s*(//|#|[{}]|public|protected|private|Q_|using |friend |template struct)")


def with_repeated_comments(lines):
    comment, block, is_open = [], [], False
    for line in lines:
        stripped = line.strip()
        if is_open:
            is_open = not stripped.endswith((";", "}"))
        elif stripped.startswith("///"):
            # A comment inside of a group begins a group of its own.
            block = block + [line] if block else [line]
        elif not stripped or NO_DECLARATION.match(line):
            comment, block = [], [] if not stripped else block
        else:
            if block:
                comment, block = block, []
            elif comment and "(" in line:
                yield from comment
            is_open = not stripped.endswith((";", "}")) and "///<" not in line
        yield line


def main():
    lines = Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()
    print("\n".join(with_repeated_comments(lines)))


if __name__ == "__main__":
    main()
