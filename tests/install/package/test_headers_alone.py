#!/usr/bin/env python3
"""Compiles each installed header alone, twice in one unit, under strict warnings and Qt's strictest settings."""

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


def compile_alone(compiler, flags, folder, header):
    include = f'#include "{header}"\n'
    done = subprocess.run([compiler, *flags, f"-I{folder}", "-x", "c++", "-"], input=include + include,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return header, done.returncode, done.stdout


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--headers", type=Path, required=True, help="the installed include root")
    parser.add_argument("--without", default="", help="a folder that is left out")
    arguments = parser.parse_args()

    headers = sorted(str(path.relative_to(arguments.headers)) for path in arguments.headers.rglob("*.h")
                     if path.parent.name != arguments.without)
    if not headers:
        sys.exit(f"no header below {arguments.headers}")
    flags = FLAGS + qt_flags()
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for header, code, output in pool.map(
                lambda header: compile_alone(arguments.compiler, flags, arguments.headers, header), headers):
            if code != 0:
                failed += 1
                print(f"{header} does not compile alone:\n{output}")
    print(f"{len(headers)} headers, {failed} that do not stand alone")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
