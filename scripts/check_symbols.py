#!/usr/bin/env python3
"""Checks what the built library needs and what it shows.

Needs: Qt5Core, Qt5DBus and the runtime of C and C++ as link dependencies; every other symbol that is missing in it
is one of the platform layer, which the process that loads the library brings along.
Shows: the classes of cmake/exported-classes.txt, all of them and no other."""

import argparse
import re
import subprocess
import sys
from pathlib import Path

NEEDED = re.compile(r"^(libQt5Core|libQt5DBus|libstdc\+\+|libm|libgcc_s|libc|libpthread|ld-linux[\w-]*)\.so(\.\d+)*$")
NEEDED_BY_SANITIZERS = re.compile(r"^lib(asan|ubsan|tsan)\.so")
# What a demangled name may begin with before the class it belongs to.
PREFIX = re.compile(r"^(vtable for |typeinfo name for |typeinfo for |VTT for |construction vtable for |"
                    r"guard variable for |(non-)?virtual thunk to |covariant return thunk to )")
CLASS = re.compile(r"\b(?:class|struct|namespace)\s+(?:PLATFORM_EXPORT\s+)?(?P<name>\w+)\s*(?:final\s*)?[:{]")
FUNCTION = re.compile(r"^(?:PLATFORM_EXPORT|extern)[^;{(]*?\b(?P<name>\w+)\s*\(", re.MULTILINE)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def dynamic_symbols(library):
    """(type, mangled name, has a version) of every dynamic symbol."""
    symbols = []
    for line in run("nm", "-D", str(library)).splitlines():
        words = line.split()
        kind, name = words[-2], words[-1]
        symbols.append((kind, name.split("@")[0], "@" in name))
    return symbols


def demangled(names):
    if not names:
        return {}
    answer = subprocess.run(["c++filt"], input="\n".join(names) + "\n", check=True, capture_output=True, text=True)
    return dict(zip(names, answer.stdout.splitlines()))


def owner(name):
    """The outermost class, namespace or free function of a demangled symbol."""
    name = PREFIX.sub("", name)
    # A template instantiation as a symbol shows its return type first.
    depth = 0
    start = 0
    for position, character in enumerate(name):
        if character == "<":
            depth += 1
        elif character == ">":
            depth -= 1
        elif character == "(" and depth == 0:
            break
        elif character == " " and depth == 0 and not name[start:].startswith("operator"):
            start = position + 1
    return re.match(r"[~\w]*", name[start:]).group(0)


def belongs_to(readable, names):
    """Whether a symbol is of one of these classes or functions; an operator belongs to the classes it works on."""
    name = owner(readable)
    if name.startswith("operator"):
        return bool(names.intersection(re.findall(r"\w+", readable)))
    return name in names


def platform_names(root):
    names = set()
    headers = sorted((root / "platform/api/Platform").glob("*.h"))
    headers.append(root / "src/Common/DBusTools/DBusConnectorBase.h")
    for header in headers:
        source = re.sub(r"//[^\n]*", "", header.read_text(encoding="utf-8"))
        names.update(match["name"] for match in CLASS.finditer(source))
        names.update(match["name"] for match in FUNCTION.finditer(source))
    return names


def read_exported(path):
    wanted = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        words = line.split("#")[0].split(maxsplit=1)
        if words:
            wanted[words[0]] = len(words) < 2
    return wanted


def check_needed(library, sanitized, problems):
    text = run("readelf", "-dW", str(library))
    for name in re.findall(r"\(NEEDED\).*\[(.*)\]", text):
        if not NEEDED.match(name) and not (sanitized and NEEDED_BY_SANITIZERS.match(name)):
            problems.append(f"links {name}")
    soname = re.findall(r"\(SONAME\).*\[(.*)\]", text)
    if soname != ["libEventlistHandler.so.1"]:
        problems.append(f"its soname is {soname}, not libEventlistHandler.so.1")
    if "NODELETE" not in text:
        problems.append("may be unloaded: literals that a module keeps would vanish (-z nodelete is missing)")


def check_undefined(symbols, platform, sanitized, problems):
    names = [name for kind, name, versioned in symbols if kind == "U" and not versioned]
    count = 0
    for name, readable in demangled(names).items():
        if sanitized and re.match(r"__(asan|ubsan|tsan|sanitizer)_", name):
            continue
        if not belongs_to(readable, platform):
            problems.append(f"needs '{readable}', which is no name of the platform layer")
        count += 1
    if count == 0:
        problems.append("needs nothing of the platform layer: was it linked in?")
    return count


def check_defined(symbols, wanted, platform, problems):
    kinds = {name: kind for kind, name, versioned in symbols if kind in "TDBRVWui" and not versioned}
    shown = {}
    for name, readable in demangled(list(kinds)).items():
        # Templates and inline functions of the platform's headers are compiled in wherever they are used.
        if kinds[name] not in "VWu" or not belongs_to(readable, platform):
            shown.setdefault(owner(readable), readable)
    for name, readable in sorted(shown.items()):
        # The standard library keeps the visibility of its templates, whatever is asked for.
        if name not in wanted and name not in ("std", "__gnu_cxx"):
            problems.append(f"shows '{readable}', which is not in exported-classes.txt")
    for name, has_symbols in wanted.items():
        if has_symbols and name not in shown:
            problems.append(f"does not show '{name}'")


def main():
    root = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("library", type=Path)
    parser.add_argument("--exported", type=Path, default=root / "cmake/exported-classes.txt")
    parser.add_argument("--root", type=Path, default=root)
    parser.add_argument("--sanitized", action="store_true", help="the library was built with sanitizers")
    arguments = parser.parse_args()

    problems = []
    symbols = dynamic_symbols(arguments.library)
    check_needed(arguments.library, arguments.sanitized, problems)
    platform = platform_names(arguments.root)
    count = check_undefined(symbols, platform, arguments.sanitized, problems)
    wanted = read_exported(arguments.exported)
    check_defined(symbols, wanted, platform, problems)
    for problem in problems:
        print(f"{arguments.library.name} {problem}")
    print(f"symbols: {len(problems)} problems" if problems else
          f"symbols: clean, {len(wanted)} names shown, {count} symbols of the platform layer open")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
