#!/usr/bin/env python3
"""Checks who includes whom: the edges of cmake/layers.txt, full paths, order of includes, one class for each file."""

import re
import sys
from pathlib import Path

from project_files import CPP, files, run_check, without_comments_and_texts

LONGEST_FILE = 800
INCLUDE = re.compile(r'^\s*#\s*include\s+(?P<mark>["<])(?P<path>[^">]+)[">]')
CLASS = re.compile(r"^[ \t]*(?P<kind>class|struct|namespace|enum)\s+(?:class\s+)?(?:[A-Z_]+_EXPORT\s+)?(?P<name>\w+)\s*"
                   r"(?:final\s*)?(?::(?!:)[^;{]*)?\{", re.MULTILINE)
CONDITION = re.compile(r"^\s*#\s*(?P<word>if|ifdef|ifndef|endif)\b")

# Where an include of each tree may lead, first the tree's own root. A path that leads nowhere is not full.
INCLUDE_ROOTS = (
    ("src", ("src", "platform/api")),
    ("platform/api", ("platform/api",)),
    ("platform/standin", ("platform/standin", "platform/api", "src")),
    ("service", ("service", "platform/api", "platform/standin")),
    ("tools", ("tools", "src", "platform/api")),
    ("examples", ("examples", "src", "platform/api", "tests/support")),
    ("benchmarks", ("benchmarks", "tests", "src", "platform/api")),
    ("fuzz", ("fuzz", "tests", "tests/support", "src", "platform/api", "service")),
    ("tests", ("tests", "tests/support", "tests/unit", "tests/bus", "tests/contract", "src", "platform/api",
               "platform/standin", "service", "tools")),
)
# What of src/ a tree may see; a tree that is missing here sees all of it.
VISIBLE_OF_SRC = {"platform/api": (), "platform/standin": ("Common/DBusTools/",), "service": ()}
# Users of the library see what is installed.
PUBLIC_ONLY = ("tools", "examples", "tests/install")
# A class of the platform layer is declared in api/ and implemented in standin/; DBusConnectorBase lies in src/.
HEADER_ROOTS_OF_STANDIN = ("platform/standin", "platform/api/Platform", "src/Common/DBusTools")

OWN, LIBRARY, PLATFORM, QT, STANDARD = range(5)
GROUP_NAMES = ("own header", "own library", "Platform", "Qt", "standard")
# Libraries of others stand where the platform stands.
FOREIGN = ("dbus/",)


class Checker:
    def __init__(self, root):
        self.root = root
        self.problems = []
        self.layers = self.read_layers()
        self.exceptions = self.read_exceptions()
        self.used_exceptions = set()
        self.graph = {}

    def report(self, path, line, text):
        self.problems.append(f"{path}:{line}: {text}")

    def read_layers(self):
        layers = {}
        path = Path("cmake/layers.txt")
        for number, line in enumerate((self.root / path).read_text(encoding="utf-8").splitlines(), 1):
            line = line.split("#")[0].strip()
            if not line:
                continue
            folder, colon, allowed = line.partition(":")
            if not colon:
                self.report(path, number, "a line reads 'folder : folders'")
                continue
            layers[folder.strip()] = allowed.split()
        for folder, allowed in layers.items():
            for other in allowed:
                if other != "Platform" and other not in layers:
                    self.report(path, 1, f"'{folder}' may include '{other}', which has no line")
        self.find_cycle(path, layers, "folders")
        return layers

    def read_exceptions(self):
        exceptions = {}
        path = Path("cmake/layering-exceptions.txt")
        if not (self.root / path).exists():
            return exceptions
        for number, line in enumerate((self.root / path).read_text(encoding="utf-8").splitlines(), 1):
            words = line.split("#")[0].split(maxsplit=2)
            if not words:
                continue
            if len(words) < 3:
                self.report(path, number, "a line reads 'rule file reason'")
                continue
            exceptions[(words[0], words[1])] = number
        return exceptions

    def is_excepted(self, rule, path):
        key = (rule, str(path))
        if key in self.exceptions:
            self.used_exceptions.add(key)
            return True
        return False

    def find_cycle(self, where, edges, kind):
        done = set()

        def visit(node, road):
            if node in road:
                cycle = road[road.index(node):] + [node]
                self.report(where, 1, f"cycle of {kind}: {' -> '.join(map(str, cycle))}")
                return True
            if node in done:
                return False
            done.add(node)
            return any(visit(other, road + [node]) for other in edges.get(node, ()))

        for node in sorted(edges, key=str):
            if visit(node, []):
                return

    def layer_of(self, path_in_src):
        """The line of layers.txt that a file below src/ belongs to; detail/ belongs to its folder."""
        folder = str(Path(path_in_src).parent)
        while folder != ".":
            if folder in self.layers:
                return folder
            folder = str(Path(folder).parent)
        return None

    def check_tree(self, tree, roots):
        for path in files(self.root, [tree], CPP):
            source = (self.root / path).read_text(encoding="utf-8")
            lines = source.splitlines()
            if len(lines) > LONGEST_FILE and not self.is_excepted("long", path):
                self.report(path, 1, f"{len(lines)} lines; more than {LONGEST_FILE} need a reason in "
                                     "cmake/layering-exceptions.txt")
            includes = self.read_includes(lines)
            if tree == "src" and self.layer_of(path.relative_to("src")) is None:
                self.report(path, 1, "its folder has no line in cmake/layers.txt")
            for number, mark, included, conditional, blank_before in includes:
                self.check_include(tree, roots, path, number, mark, included)
            self.check_order(tree, path, includes)
            if tree not in ("tests", "benchmarks", "fuzz"):
                self.check_names(tree, path, source, includes)

    @staticmethod
    def read_includes(lines):
        includes = []
        depth = 0
        blank_before = True
        for number, line in enumerate(lines, 1):
            condition = CONDITION.match(line)
            if condition:
                depth += -1 if condition["word"] == "endif" else 1
            match = INCLUDE.match(line)
            if match:
                includes.append((number, match["mark"], match["path"], depth > 0, blank_before))
            blank_before = not line.strip()
        return includes

    def resolve(self, roots, included):
        """The file that an include with full path means, or None."""
        for root in roots:
            if (self.root / root / included).is_file():
                return Path(root) / included
        return None

    def check_include(self, tree, roots, path, number, mark, included):
        if included.startswith(("./", "../")) or "/../" in included or "/./" in included:
            self.report(path, number, f"relative include '{included}'")
            return
        target = self.resolve(roots, included)
        if mark == "<":
            if target is not None:
                self.report(path, number, f"'{included}' is ours and stands in double quotes")
            return
        if included.endswith(".moc"):
            if included != path.stem + ".moc":
                self.report(path, number, f"'{included}' is the meta-object code of another file")
            return
        if target is None:
            if (self.root / path.parent / included).is_file():
                self.report(path, number, f"'{included}' is not the full path from the include root")
            elif tree == "service" and (self.root / "src" / included).is_file():
                self.report(path, number, f"the service includes nothing of src/, here '{included}'")
            else:
                self.report(path, number, f"'{included}' is in none of {', '.join(roots)}")
            return
        self.graph.setdefault(path, []).append(target)
        if target.parts[0] == "src":
            self.check_use_of_src(tree, path, number, target.relative_to("src"))
        elif tree == "src" and "Platform" not in self.layers.get(self.layer_of(path.relative_to("src")), ["Platform"]):
            self.report(path, number, f"'{self.layer_of(path.relative_to('src'))}' may not include Platform")

    def check_use_of_src(self, tree, path, number, target):
        allowed = VISIBLE_OF_SRC.get(tree)
        if allowed is not None and not str(target).startswith(tuple(allowed) or ("\0",)):
            self.report(path, number, f"{tree}/ may not include '{target}' of src/")
        if str(path).startswith(PUBLIC_ONLY) and "detail" in target.parts:
            self.report(path, number, f"'{target}' is a private part of the library")
        if tree != "src":
            return
        source = self.layer_of(path.relative_to("src"))
        wanted = self.layer_of(target)
        if source and wanted and source != wanted and wanted not in self.layers[source]:
            self.report(path, number, f"'{source}' may not include '{wanted}' ({target})")
        if "detail" in target.parts and "detail" not in path.parts and path.suffix == ".h":
            self.report(path, number, f"a public header may not include the private part '{target}'")
        if "detail" in target.parts and source != wanted:
            self.report(path, number, f"'{target}' is a private part of another folder")

    @staticmethod
    def group_of(path, mark, included):
        if mark == '"':
            if path.suffix == ".cpp" and Path(included).stem == path.stem and included.endswith(".h"):
                return OWN
            return PLATFORM if included.startswith("Platform/") else LIBRARY
        if included.startswith(FOREIGN):
            return PLATFORM
        return QT if re.match(r"(Qt[A-Z]\w*/)?Q[A-Za-z]", included) else STANDARD

    def check_order(self, tree, path, includes):
        last = None
        for number, mark, included, conditional, blank_before in includes:
            if conditional or included.endswith(".moc"):
                continue
            group = self.group_of(path, mark, included)
            # A test begins with what it tests, of whichever library that is; its own helpers come after.
            is_free = tree in ("tests", "benchmarks", "fuzz") and {group, last} <= {LIBRARY, PLATFORM}
            if last is not None and group < last and not is_free:
                self.report(path, number, f"'{included}' ({GROUP_NAMES[group]}) stands after {GROUP_NAMES[last]}")
            elif last is not None and group != last and not blank_before:
                self.report(path, number, f"a blank line is missing before '{included}' ({GROUP_NAMES[group]})")
            last = group if last is None or is_free else max(last, group)

    def check_names(self, tree, path, source, includes):
        name = path.stem
        if path.suffix == ".h":
            found = list(CLASS.finditer(without_comments_and_texts(source)))
            classes = [match["name"] for match in found if match["kind"] in ("class", "struct")]
            # Elsewhere a header may hold free functions only, or records that belong together.
            is_strict = tree in ("src", "platform/api") or len(classes) == 1
            is_named = any(match["name"] == name for match in found)
            if is_strict and not is_named and not self.is_excepted("no-class", path):
                self.report(path, 1, f"declares no class '{name}'")
            if not source.lstrip().startswith("#pragma once"):
                self.report(path, 1, "a header begins with #pragma once")
            return
        if name == "main" or tree == "examples":
            return
        folders = [path.parent]
        if tree == "platform/standin":
            folders += [Path(folder) for folder in HEADER_ROOTS_OF_STANDIN]
        if any((self.root / folder / f"{name}.h").is_file() for folder in folders):
            if not includes or Path(includes[0][2]).name != f"{name}.h":
                self.report(path, 1, "the own header is the first include")
        elif not self.is_excepted("no-header", path):
            self.report(path, 1, f"there is no header '{name}.h' for it")

    def run(self):
        for tree, roots in INCLUDE_ROOTS:
            if (self.root / tree).is_dir():
                self.check_tree(tree, roots)
        self.find_cycle("src", self.graph, "files")
        for key, number in self.exceptions.items():
            if key not in self.used_exceptions:
                self.report("cmake/layering-exceptions.txt", number, f"'{' '.join(key)}' is not needed any more")
        return self.problems


if __name__ == "__main__":
    sys.exit(run_check(lambda root: Checker(root).run(), "layering", __doc__))
