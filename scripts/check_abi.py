#!/usr/bin/env python3
"""Compares the binary interface of the built library with the stored baseline, cmake/abi/libEventlistHandler.abi.

The soname is a promise: a module that was built against this library runs with every later one of the same soname. So
every difference, a new function as well, is a decision. It is written down as a line under "### ABI" in CHANGELOG.md,
newest on top, and then the baseline is moved with --update. What takes something away, or changes what is there, asks
for another soname.

Ends with 0 when nothing differs, 1 when something does, 77 when the library cannot be compared."""

import argparse
import platform
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CANNOT_COMPARE = 77
# The exit code of abidiff is made of these.
ERROR, WRONG_USAGE, INCOMPATIBLE = 1, 2, 8
# Nothing about the machine, nothing that every build gives anew, and of types outside of our headers their names only.
OPTIONS = ("--drop-private-types", "--drop-undefined-syms", "--exported-interfaces-only", "--no-corpus-path",
           "--no-comp-dir-path", "--no-show-locs", "--no-elf-needed", "--no-parameter-names", "--type-id-style", "hash")


def run(*command):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)


def newest_entry(changelog):
    """The uppermost line under a head "ABI", with its continuation; empty without one."""
    found = re.search(r"^### ABI\n+- (.*(?:\n  .*)*)", changelog.read_text(encoding="utf-8"), re.MULTILINE)
    return " ".join(found[1].split()) if found else ""


class Baseline:
    def __init__(self, folder, headers):
        self.file = folder / "libEventlistHandler.abi"
        self.entry_file = folder / "entry.txt"
        suppressions = folder / "suppressions.ini"
        self.options = ("--headers-dir", headers, *(("--suppressions", suppressions) if suppressions.exists() else ()))

    def entry(self):
        return self.entry_file.read_text(encoding="utf-8").strip() if self.entry_file.exists() else ""

    def describe(self, library, file):
        done = run("abidw", *OPTIONS, *self.options, "--out-file", file, library)
        if done.returncode != 0:
            sys.exit(f"abidw: {done.stdout}")

    def compare(self, library):
        """What abidiff says about the two descriptions, both made in the same way."""
        with tempfile.TemporaryDirectory() as folder:
            new = Path(folder, self.file.name)
            self.describe(library, new)
            done = run("abidiff", self.file, new)
        # A negative one is a signal.
        if done.returncode < 0 or done.returncode & (ERROR | WRONG_USAGE):
            sys.exit(f"abidiff ended with {done.returncode}: {done.stdout}")
        return done

    def write(self, library, entry):
        self.describe(library, self.file)
        self.entry_file.write_text(entry + "\n", encoding="utf-8")


def reason_not_to_compare(library):
    if platform.machine() != "x86_64":
        return f"the baseline is of x86_64, this is {platform.machine()}"
    if ".debug_info" not in run("readelf", "-SW", library).stdout:
        return f"{library.name} has no debug information"
    return None


def update(baseline, library, changelog):
    entry = newest_entry(changelog)
    if baseline.file.exists():
        done = baseline.compare(library)
        if done.returncode == 0:
            print("ABI: nothing differs, the baseline stays")
            return 0
        print(done.stdout)
        if done.returncode & INCOMPATIBLE and "SONAME changed" not in done.stdout:
            print("ABI: modules that are built would not run with this any more: it needs another soname")
            return 1
        if not entry or entry == baseline.entry():
            print(f"ABI: write a new line under '### ABI' on top of {changelog.name}, then call this again")
            return 1
    baseline.write(library, entry)
    print(f"ABI: the baseline is moved; its line in {changelog.name}: {entry}")
    return 0


def check(baseline, library, changelog):
    done = baseline.compare(library)
    if done.returncode != 0:
        print(done.stdout)
        print("ABI: differs from the baseline; `scripts/check_abi.py --help` tells what to do")
        return 1
    text = " ".join(changelog.read_text(encoding="utf-8").split())
    if baseline.entry() not in text:
        print(f"ABI: {changelog.name} has lost the line of the baseline: {baseline.entry()}")
        return 1
    print("ABI: as the baseline")
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("library", type=Path, help="the built library, with debug information")
    parser.add_argument("--update", action="store_true", help="move the baseline to this library")
    parser.add_argument("--folder", type=Path, default=ROOT / "cmake/abi", help="where the baseline lies")
    parser.add_argument("--headers", type=Path, default=ROOT / "src", help="types of other headers are not looked into")
    parser.add_argument("--changelog", type=Path, default=ROOT / "CHANGELOG.md")
    arguments = parser.parse_args()
    library = arguments.library.resolve()
    reason = reason_not_to_compare(library)
    if reason:
        print("skipped:", reason)
        return CANNOT_COMPARE
    baseline = Baseline(arguments.folder, arguments.headers)
    act = update if arguments.update else check
    return act(baseline, library, arguments.changelog)


if __name__ == "__main__":
    sys.exit(main())
