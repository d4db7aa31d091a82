"""The project's own files, found without any version control, so that a check also works on an unpacked archive."""

import argparse
import os
import re
from pathlib import Path

# Folders that are made and not written.
MADE = ("build", ".git", "__pycache__")

CODE = ("src", "platform", "service", "tools", "examples", "tests", "benchmarks", "fuzz")

CPP = (".h", ".cpp")


# A quote behind these parts the digits of a number.
DIGITS_BEFORE = re.compile(r"(?<!\w)\d[\w']*$")


def run_check(check, name, description):
    """The command line of a check: looks at the project, or at the folder of --root, and tells the problems that
    check(root) found. Returns the exit code."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    problems = check(parser.parse_args().root)
    for problem in problems:
        print(problem)
    print(f"{name}: {len(problems)} problems" if problems else f"{name}: clean")
    return 1 if problems else 0


def is_made(name):
    return name in MADE or name.startswith("build-")


def files(root, folders=None, suffixes=None):
    """All files below the given folders of root (default: all folders), sorted, as paths relative to root."""
    root = Path(root)
    found = []
    for start in [root / folder for folder in folders] if folders else [root]:
        for here, subfolders, names in os.walk(start):
            subfolders[:] = [name for name in subfolders if not is_made(name)]
            for name in names:
                path = Path(here) / name
                # In a second working tree .git is a file.
                wanted = name not in MADE and (suffixes is None or path.suffix in suffixes)
                if wanted and path.is_file():
                    found.append(path.relative_to(root))
    return sorted(found)


def without_comments_and_texts(source):
    """C++ source with comments and the insides of string literals blanked out; line numbers stay."""
    out = []
    position = 0
    end = len(source)

    def blank(text):
        return "".join("\n" if character == "\n" else " " for character in text)

    while position < end:
        two = source[position:position + 2]
        if two == "//":
            stop = source.find("\n", position)
            stop = end if stop < 0 else stop
            out.append(blank(source[position:stop]))
        elif two == "/*":
            stop = source.find("*/", position + 2)
            stop = end if stop < 0 else stop + 2
            out.append(blank(source[position:stop]))
        elif source.startswith('R"', position) and not (position and source[position - 1].isalnum()
                                                        and source[position - 1] not in "uUL8"):
            delimiter = source[position + 2:source.find("(", position)]
            stop = source.find(")" + delimiter + '"', position)
            stop = end if stop < 0 else stop + len(delimiter) + 2
            out.append('"' + blank(source[position + 1:stop - 1]) + '"')
        elif source[position] == '"' or (source[position] == "'"
                                         and not DIGITS_BEFORE.search(source[max(0, position - 40):position])):
            quote = source[position]
            stop = position + 1
            while stop < end and source[stop] not in (quote, "\n"):
                stop += 2 if source[stop] == "\\" else 1
            stop = min(stop + 1, end)
            out.append(quote + blank(source[position + 1:stop - 1]) + quote)
        else:
            stop = position + 1
            out.append(source[position])
        position = stop
    return "".join(out)
