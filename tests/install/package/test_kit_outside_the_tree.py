#!/usr/bin/env python3
"""Builds the tests of a module in a folder outside the tree, with the installed test kit, and runs them beside the
installed service. A module that does not ask for the kit does not need what the kit needs."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def run(*command, **settings):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False, **settings)


def must(*command, **settings):
    done = run(*command, **settings)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--prefix", type=Path, required=True)
    parser.add_argument("--consumer", type=Path, required=True)
    parser.add_argument("settings", nargs="*", help="settings of CMake")
    arguments = parser.parse_args()

    environment = {name: value for name, value in os.environ.items()
                   if name not in ("EVENTLISTHANDLER_EVENTLISTD", "EVENTLISTHANDLER_TEXTS")}
    environment["PATH"] = f"{arguments.prefix}/bin:{environment['PATH']}"
    with tempfile.TemporaryDirectory(prefix="tests of a module ") as folder:
        source = Path(folder, "source")
        build = Path(folder, "build")
        shutil.copytree(arguments.consumer, source)
        settings = (f"-DCMAKE_PREFIX_PATH={arguments.prefix}", *arguments.settings)
        must(arguments.cmake, "-G", "Ninja", "-S", source, "-B", build, *settings)
        must(arguments.cmake, "--build", build)
        said = must(build / "pump_test", env=environment, timeout=120)
        if "[  PASSED  ] 2 tests." not in said:
            sys.exit(f"not two tests were run:\n{said}")

        (source / "CMakeLists.txt").write_text("""cmake_minimum_required(VERSION 3.22)
project(lean LANGUAGES CXX)
find_package(EventlistHandler 1.0 REQUIRED)
if(TARGET EventlistHandler::TestSupport OR TARGET Qt5::Test)
    message(FATAL_ERROR "the kit comes unasked")
endif()
""", encoding="utf-8")
        must(arguments.cmake, "-G", "Ninja", "-S", source, "-B", Path(folder, "lean"), *settings)
    print("built and run with the installed kit; nothing of it comes unasked")


if __name__ == "__main__":
    main()
