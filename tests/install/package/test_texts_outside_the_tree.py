#!/usr/bin/env python3
"""A project outside the tree checks its texts with the installed package: the test passes, and fails when one
language loses a placeholder."""

import argparse
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def run(*command):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--ctest", required=True)
    parser.add_argument("--prefix", type=Path, required=True)
    parser.add_argument("--project", type=Path, required=True)
    parser.add_argument("settings", nargs="*", help="settings of CMake")
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="texts outside ") as folder:
        source = Path(folder, "pump")
        build = Path(folder, "build")
        shutil.copytree(arguments.project, source)
        done = run(arguments.cmake, "-G", "Ninja", "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={arguments.prefix}",
                   *arguments.settings)
        if done.returncode != 0:
            sys.exit(f"cannot be configured:\n{done.stdout}")
        done = run(arguments.ctest, "--test-dir", build, "-V", "--no-tests=error")
        if done.returncode != 0 or ": 0 errors, 0 warnings" not in done.stdout:
            sys.exit(f"good texts do not pass:\n{done.stdout}")

        german = source / "lang_de.ts"
        german.write_text(german.read_text(encoding="utf-8").replace("Pumpe %1", "Pumpe"), encoding="utf-8")
        done = run(arguments.ctest, "--test-dir", build, "--output-on-failure")
        if done.returncode == 0:
            sys.exit("texts without a placeholder pass")
        if "lang_de.ts:6: error: the placeholders of 'Pump/Runs' are none here, but %1 in lang_en" not in done.stdout:
            sys.exit(f"texts without a placeholder fail for another reason:\n{done.stdout}")
    print("good texts pass, others do not")


if __name__ == "__main__":
    main()
