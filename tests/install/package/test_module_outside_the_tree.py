#!/usr/bin/env python3
"""Builds a module in a folder outside the tree, with nothing but the installed package, and reads what it reports.
The same module does not link without a platform layer."""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

MODULE = "pump"


def run(*command, **settings):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False, **settings)


def must(*command, **settings):
    done = run(*command, **settings)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def expect(what, actual, wanted):
    if actual != wanted:
        sys.exit(f"{what} is {actual!r}, not {wanted!r}")


def check_event(path):
    event = json.loads(path.read_text(encoding="utf-8"))
    expect("the module", event["ModuleName"], MODULE)
    expect("the event's type", event["EventType"], 2)
    expect("the event's state", event["State"], 1)
    expect("the keywords", event["KeywordName"], "Maintenance;Firmware")
    description = json.loads(event["Description"])
    expect("the languages", sorted(description), ["lang_de", "lang_en", "lang_fr"])
    if not all(description.values()):
        sys.exit(f"a text is empty: {description}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--prefix", type=Path, required=True)
    parser.add_argument("--consumer", type=Path, required=True)
    parser.add_argument("--data-root", required=True)
    parser.add_argument("settings", nargs="*", help="settings of CMake")
    arguments = parser.parse_args()

    spool = Path(arguments.data_root, "var/EventToFileData")
    spool.mkdir(parents=True, exist_ok=True)
    name = f"module-outside-{os.getpid()}"
    spooled = spool / f"{name}.event.json"

    with tempfile.TemporaryDirectory(prefix="a module outside ") as folder:
        source = Path(folder, "pump")
        build = Path(folder, "build")
        shutil.copytree(arguments.consumer, source)
        must(arguments.cmake, "-G", "Ninja", "-S", source, "-B", build,
             f"-DCMAKE_PREFIX_PATH={arguments.prefix}", *arguments.settings)
        must(arguments.cmake, "--build", build)
        try:
            output = must(build / "pump", name, timeout=60)
            if not spooled.is_file():
                sys.exit(f"no {spooled.name} in {spool}; the module said:\n{output}")
            expect("what the module says", output, "")
            check_event(spooled)
        finally:
            spooled.unlink(missing_ok=True)

        alone = run(arguments.cmake, "--build", build, "--target", "pump_alone", env={**os.environ, "LC_ALL": "C"})
        if alone.returncode == 0:
            sys.exit("a module links without a platform layer")
        if not re.search(r"undefined reference to `[^']*(DBusConnectorBase|TextManager)", alone.stdout):
            sys.exit(f"linking without a platform layer fails for another reason:\n{alone.stdout}")
    print("built, run, and refused without a platform layer")


if __name__ == "__main__":
    main()
