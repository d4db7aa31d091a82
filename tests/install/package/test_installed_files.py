#!/usr/bin/env python3
"""Installs the build into a fresh prefix, whole and each component alone, and compares the files.

The prefix stays for the tests that work with the installed package."""

import argparse
import re
import shutil
import subprocess
import sys
from pathlib import Path


def install(cmake, build, prefix, component=None):
    shutil.rmtree(prefix, ignore_errors=True)
    command = [cmake, "--install", str(build), "--prefix", str(prefix)]
    if component:
        command += ["--component", component]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)} failed:\n{done.stdout}")
    return {str(path.relative_to(prefix)) for path in prefix.rglob("*") if not path.is_dir()}


def listed(cmake_file, variable):
    """The names in set(variable ...) of a CMake file."""
    found = re.search(rf"set\({variable}\s+([^)]*)\)", cmake_file.read_text(encoding="utf-8"))
    return found.group(1).split()


def expected_files(libdir, source):
    """File name patterns of each component. A pattern has to be met by one file, each file by one pattern."""
    package = f"{libdir}/cmake/EventlistHandler/EventlistHandler"
    headers = "include/EventlistHandler/"
    public = listed(source / "src/CMakeLists.txt", "public_headers")
    platform = listed(source / "platform/CMakeLists.txt", "api_headers")
    test_support = listed(source / "tests/support/CMakeLists.txt", "public_headers")
    texts = [path.stem for path in (source / "platform/standin/texts").glob("*.ts")]
    documents = ["README.md", "CHANGELOG.md",
                 *(path.relative_to(source) for folder in ("docs", "examples") for path in (source / folder).rglob("*")
                   if path.is_file() and not {"man", "Doxyfile", "__pycache__"}.intersection(path.parts))]
    interfaces = [path.name for path in (source / "service/interfaces").glob("*.xml")]
    return {
        "runtime": [rf"{libdir}/libEventlistHandler\.so\.1\.\d+\.\d+", rf"{libdir}/libEventlistHandler\.so\.1"],
        "development": [
            rf"{libdir}/libEventlistHandler\.so",
            rf"{package}Config\.cmake", rf"{package}ConfigVersion\.cmake",
            rf"{package}Targets\.cmake", rf"{package}Targets-\w+\.cmake", rf"{package}Texts\.cmake",
            r"share/dbus-1/interfaces/Interface\.Events\.xml",
            rf"{libdir}/pkgconfig/eventlisthandler\.pc", r"share/man/man7/eventlisthandler\.7",
            *(re.escape(headers + header) for header in public)],
        "platform": [
            rf"{libdir}/libEventlistHandlerPlatform\.so\.1\.\d+\.\d+", rf"{libdir}/libEventlistHandlerPlatform\.so\.1",
            *(rf"share/EventlistHandler/texts/{re.escape(text)}\.qm" for text in texts)],
        "platform-development": [
            rf"{libdir}/libEventlistHandlerPlatform\.so",
            rf"{libdir}/pkgconfig/eventlisthandler-platform\.pc",
            rf"{package}PlatformTargets\.cmake", rf"{package}PlatformTargets-\w+\.cmake",
            *(re.escape(f"{headers}Platform/{header}") for header in platform)],
        "service": [
            r"bin/eventlistd", r"share/man/man8/eventlistd\.8", r"lib/systemd/system/eventlistd\.service",
            r"lib/sysusers\.d/eventlistd\.conf", r"lib/tmpfiles\.d/eventlistd\.conf",
            r"share/dbus-1/system\.d/org\.eventlist\.EventlistHandler\.conf",
            r"share/dbus-1/system-services/org\.eventlist\.EventlistHandler\.service",
            *(rf"share/dbus-1/interfaces/{re.escape(name)}" for name in interfaces)],
        "tools": [
            r"bin/eventlist", r"share/man/man1/eventlist\.1", r"share/bash-completion/completions/eventlist"],
        "documentation": [re.escape(f"share/doc/EventlistHandler/{path}") for path in documents],
        "testsupport": [
            rf"{libdir}/libEventlistHandlerTestSupport\.a", r"share/EventlistHandler/dbusmock/eventlisthandler\.py",
            rf"{package}TestSupportTargets\.cmake", rf"{package}TestSupportTargets-\w+\.cmake",
            *(re.escape(headers + header) for header in test_support)],
    }


def compare(component, patterns, found, problems):
    for pattern in patterns:
        matches = [path for path in found if re.fullmatch(pattern, path)]
        if len(matches) != 1:
            problems.append(f"{component}: {len(matches)} files like {pattern}")
    for path in sorted(found):
        if not any(re.fullmatch(pattern, path) for pattern in patterns):
            problems.append(f"{component}: {path} is not expected")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--build", type=Path, required=True)
    parser.add_argument("--prefix", type=Path, required=True)
    parser.add_argument("--libdir", required=True)
    parser.add_argument("--source", type=Path, required=True)
    arguments = parser.parse_args()

    problems = []
    parts = set()
    for component, patterns in expected_files(arguments.libdir, arguments.source).items():
        folder = arguments.prefix.parent / "components" / component
        found = install(arguments.cmake, arguments.build, folder, component)
        compare(component, patterns, found, problems)
        parts |= found
    whole = install(arguments.cmake, arguments.build, arguments.prefix)
    for path in sorted(whole ^ parts):
        problems.append(f"{path} is in {'no component' if path in whole else 'a component only'}")
    for problem in problems:
        print(problem)
    print(f"{len(whole)} files installed, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
