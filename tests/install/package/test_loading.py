#!/usr/bin/env python3
"""Loads the installed library at run time: it needs a platform layer in the global scope of its process."""

import argparse
import subprocess
import sys
from pathlib import Path

LOAD = """
import ctypes, sys
for path, mode in zip(sys.argv[1::2], sys.argv[2::2]):
    ctypes.CDLL(path, mode=getattr(ctypes, mode))
"""


def load(*libraries):
    return subprocess.run([sys.executable, "-c", LOAD, *map(str, libraries)], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)


def expect_loaded(case, *libraries):
    done = load(*libraries)
    if done.returncode != 0:
        sys.exit(f"{case}: does not load:\n{done.stdout}")


def expect_refused(case, *libraries):
    done = load(*libraries)
    if done.returncode == 0:
        sys.exit(f"{case}: loads")
    if "undefined symbol" not in done.stdout:
        sys.exit(f"{case}: fails for another reason:\n{done.stdout}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--libraries", type=Path, required=True)
    folder = parser.parse_args().libraries
    library = folder / "libEventlistHandler.so.1"
    platform = folder / "libEventlistHandlerPlatform.so.1"

    expect_refused("alone", library, "RTLD_LOCAL")
    expect_refused("platform out of sight", platform, "RTLD_LOCAL", library, "RTLD_LOCAL")
    expect_loaded("platform in the global scope", platform, "RTLD_GLOBAL", library, "RTLD_LOCAL")
    print("loads beside a platform layer in the global scope, and only there")


if __name__ == "__main__":
    main()
