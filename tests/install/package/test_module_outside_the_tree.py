#!/usr/bin/env python3
"""Builds a module in a folder outside the tree, with nothing but the installed package, and reads what it reports:
once with CMake, once with pkg-config.
The same module, built for release, names the place of each warning about a bus that is missing.
The same module does not link without a platform layer."""

import argparse
import json
import os
import re
import shlex
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


def expect_place_of_warnings(pump):
    """A release build leaves the places of a module's own warnings out. Those of the connectors, which are compiled
    into the module or the library, have theirs: each refused call warns twice, in its function."""
    with tempfile.TemporaryDirectory() as folder:
        output = must(pump, timeout=60, env={
            **os.environ, "QT_MESSAGE_PATTERN": "%{file}|%{function}|%{message}",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={folder}/no-bus"})
    lines = [line.split("|", 2) for line in output.splitlines()]
    expect("the number of warnings", len(lines), 5)
    for first, second, target in ((lines[0], lines[1], "EventlistHandler"), (lines[2], lines[3], "Valves")):
        expect("the second warning", second, first)
        expect("the file", first[0], "Common/DBusTools/DBusConnectorBase.h")
        if "DBusConnectorBase::" not in first[1]:
            sys.exit(f"no function of the connector: {first[1]!r}")
        if not re.search(rf"cannot be reached: .*\b{target}\b", first[2]):
            sys.exit(f"another warning than that of {target}: {first[2]!r}")
    expect("the module's own warning", lines[4], ["unknown", "unknown", "pump: the valve stays as it is"])


def build_with_pkg_config(arguments, source, program):
    environment = {**os.environ, "PKG_CONFIG_PATH": str(arguments.prefix / arguments.libdir / "pkgconfig")}
    names = ("eventlisthandler", "eventlisthandler-platform")
    flags = must("pkg-config", "--cflags", "--libs", *names, env=environment)
    texts = must("pkg-config", "--variable=textdir", names[1], env=environment).strip()
    must(*shlex.split(arguments.compiler), "-std=c++17", "-fPIC", source, "-o", program, f'-DPUMP_TEXT_FOLDER="{texts}"',
         *shlex.split(flags))
    expect("the version", must("pkg-config", "--modversion", *names, env=environment).split(), [arguments.version] * 2)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--prefix", type=Path, required=True)
    parser.add_argument("--consumer", type=Path, required=True)
    parser.add_argument("--data-root", required=True)
    parser.add_argument("--libdir", required=True)
    parser.add_argument("--compiler", required=True, help="with its flags")
    parser.add_argument("--version", required=True)
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
        by_pkg_config = Path(folder, "by_pkg_config")
        build_with_pkg_config(arguments, source / "main.cpp", by_pkg_config)
        for pump in (build / "pump", by_pkg_config):
            try:
                output = must(pump, name, timeout=60, env={
                    **os.environ, "LD_LIBRARY_PATH": str(arguments.prefix / arguments.libdir)})
                if not spooled.is_file():
                    sys.exit(f"no {spooled.name} in {spool}; the module said:\n{output}")
                expect("what the module says", output, "")
                check_event(spooled)
            finally:
                spooled.unlink(missing_ok=True)

        release = Path(folder, "release")
        must(arguments.cmake, "-G", "Ninja", "-S", source, "-B", release,
             f"-DCMAKE_PREFIX_PATH={arguments.prefix}", *arguments.settings, "-DCMAKE_BUILD_TYPE=Release")
        must(arguments.cmake, "--build", release)
        expect_place_of_warnings(release / "pump")

        alone = run(arguments.cmake, "--build", build, "--target", "pump_alone", env={**os.environ, "LC_ALL": "C"})
        if alone.returncode == 0:
            sys.exit("a module links without a platform layer")
        if not re.search(r"undefined reference to `[^']*(DBusConnectorBase|TextManager)", alone.stdout):
            sys.exit(f"linking without a platform layer fails for another reason:\n{alone.stdout}")
    print("built and run with CMake and with pkg-config, built for release, run without a bus, and refused without a platform layer")


if __name__ == "__main__":
    main()
