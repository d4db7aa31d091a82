#!/usr/bin/env python3
"""Compiles each installed header, twice in one unit, under strict warnings and Qt's strictest settings: alone, or, as a
second compiler's opinion that costs a fraction, all of them in one unit."""

import argparse
import concurrent.futures
import os
import subprocess
import sys
from pathlib import Path

FLAGS = ["-std=c++17", "-fsyntax-only", "-fPIC", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Werror",
         "-DQT_NO_KEYWORDS", "-DQT_NO_FOREACH", "-DQT_NO_CAST_FROM_ASCII", "-DQT_NO_CAST_TO_ASCII",
         "-DQT_DISABLE_DEPRECATED_BEFORE=0x050f00"]


def qt_flags():
    words = subprocess.run(["pkg-config", "--cflags", "Qt5Core", "Qt5DBus", "Qt5Test"], check=True, capture_output=True,
                           text=True).stdout.split()
    # Qt's own headers are not what is looked at.
    return ["-isystem" + word[2:] if word.startswith("-I") else word for word in words]


def compile_unit(compiler, flags, folder, headers):
    includes = "".join(f'#include "{header}"\n' for header in headers)
    done = subprocess.run([compiler, *flags, f"-I{folder}", "-x", "c++", "-"], input=includes + includes,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return headers, done.returncode, done.stdout


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--headers", type=Path, required=True, help="the installed include root")
    parser.add_argument("--together", action="store_true", help="all headers in one unit")
    arguments = parser.parse_args()

    headers = sorted(str(path.relative_to(arguments.headers)) for path in arguments.headers.rglob("*.h"))
    if not headers:
        sys.exit(f"no header below {arguments.headers}")
    flags = FLAGS + qt_flags()
    units = [headers] if arguments.together else [[header] for header in headers]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for unit, code, output in pool.map(
                lambda unit: compile_unit(arguments.compiler, flags, arguments.headers, unit), units):
            if code != 0:
                failed += 1
                print(f"{' '.join(unit)}: does not compile:\n{output}")
    print(f"{len(headers)} headers in {len(units)} units, {failed} that do not compile")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
