#!/usr/bin/env python3
"""Does what a document tells its reader to do, block by block, with the installed package.

Every fenced block says in its first line what becomes of it:

    ```cpp file=main.cpp        is written to this file of the page's folder
    ```cpp fragment             is compiled, as the body of a function; all fragments of a page make one file
    ```sh                       is run; the blocks of a page share one shell, in the page's folder
    ```sh not-run="reason"      is not run; the reason is listed
    ```text output              lines that the shell block before it must have written, in this order; an ellipsis
                                stands for anything
    ```json schema=spool-file   is checked against docs/schemas/spool-file.json
    ```text                     is a picture

Any language may have file=. A page with the comment "device" finds a bus and the central service running, as on a
device; the others begin with nothing. Links to files must lead somewhere."""

import argparse
import json
import os
import re
import select
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

import jsonschema

FENCE = re.compile(r"^(\s*)```+\s*(\w*)\s*(.*)$")
LINK = re.compile(r"(?<!!)\[[^\]]*\]\(([^)#\s]+)(#[^)]*)?\)")
MARKER = "@@block@@"
DEADLINE_S = 240
PRELUDE = r"""
set -eu -o pipefail
trap '[ ! -f bus ] || kill $(sed -n 2p bus) 2>/dev/null || true' EXIT
if [ -n "${IS_DEVICE:-}" ]; then
    dbus-daemon --session --fork --print-address=1 --print-pid=1 > bus
    DBUS_SYSTEM_BUS_ADDRESS=$(sed -n 1p bus)
    export DBUS_SYSTEM_BUS_ADDRESS
    mkdir -p "$SPOOL"
    eventlistd --database "$PWD/device.sqlite" --spool "$SPOOL" --texts "$PREFIX/share/EventlistHandler/texts" &
    gdbus wait --system --timeout 20 org.eventlist.EventlistHandler
fi
"""


@dataclass
class Block:
    line: int
    language: str
    options: dict
    text: str = ""
    lines: list = field(default_factory=list)

    def kind(self):
        for word in ("not-run", "file", "fragment", "output", "schema"):
            if word in self.options:
                return word
        return {"sh": "run", "text": "picture", "json": "json"}.get(self.language, "unmarked")


def blocks_of(text, problems):
    found, block, in_list = [], None, False
    previous = ""
    for number, line in enumerate(text.splitlines(), 1):
        fence = FENCE.match(line)
        if block is not None:
            if fence and not fence.group(2):
                block.text = "\n".join(block.lines) + "\n"
                found.append(block)
                block = None
            else:
                block.lines.append(line[block.options["indent"]:])
        elif fence:
            words = shlex.split(fence.group(3))
            options = dict((word.split("=", 1) + [""])[:2] for word in words)
            options["indent"] = len(fence.group(1))
            block = Block(number, fence.group(2) or "text", options)
        else:
            if re.match(r"\s*([-*]|\d+\.) ", line):
                in_list = True
            elif line.strip() and not line.startswith(" "):
                in_list = False
            if not previous.strip() and line.startswith("    ") and not in_list:
                problems.append(f"{number}: a block without a fence is looked at by nobody")
        previous = line
    return found


class Page:
    def __init__(self, arguments):
        self.arguments = arguments
        self.text = arguments.page.read_text(encoding="utf-8")
        self.problems = []
        self.not_run = []
        self.blocks = blocks_of(self.text, self.problems)
        self.folder = arguments.folder
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / ".blocks").mkdir(parents=True)

    def check(self):
        self.check_links()
        script = [PRELUDE]
        fragments = []
        shown = {}
        previous = None
        for index, block in enumerate(self.blocks):
            kind = block.kind()
            stored = self.folder / ".blocks" / str(index)
            stored.write_text(block.text, encoding="utf-8")
            if kind == "not-run":
                self.not_run.append(f"{block.line}: {block.options['not-run']}")
                if not block.options["not-run"]:
                    self.problems.append(f"{block.line}: no reason why this is not run")
            elif kind == "unmarked":
                self.problems.append(f"{block.line}: {block.language}: neither a file nor a fragment")
            elif kind == "fragment":
                fragments.append(block)
            elif kind == "output":
                shown.setdefault(previous, []).append(block)
            elif kind == "run":
                script += [f"echo '{MARKER}{index}'", f". '{stored}'"]
                previous = index
            if "file" in block.options:
                target = shlex.quote(block.options["file"])
                script += [f"mkdir -p \"$(dirname {target})\"", f"cp '{stored}' {target}"]
            if block.language == "json":
                self.check_json(block)
        if previous is not None:
            self.run(script, shown)
        self.compile(fragments)

    def check_links(self):
        for number, line in enumerate(self.text.splitlines(), 1):
            for target, _ in LINK.findall(line):
                if "://" not in target and not (self.arguments.page.parent / target).exists():
                    self.problems.append(f"{number}: the link to {target} leads nowhere")

    def check_json(self, block):
        try:
            content = json.loads(block.text)
            if "schema" in block.options:
                path = (self.arguments.schemas / f"{block.options['schema']}.json").resolve()
                schema = json.loads(path.read_text(encoding="utf-8"))
                resolver = jsonschema.RefResolver(path.as_uri(), schema)
                jsonschema.Draft7Validator(schema, resolver=resolver).validate(content)
        except (json.JSONDecodeError, jsonschema.ValidationError) as error:
            self.problems.append(f"{block.line}: {error}")

    def environment(self):
        values = dict(os.environ)
        values.pop("DBUS_SYSTEM_BUS_ADDRESS", None)
        prefix = self.arguments.prefix
        values.update(PATH=f"{prefix}/bin:/usr/bin:{values['PATH']}", PREFIX=str(prefix), CMAKE_PREFIX_PATH=str(prefix),
                      SPOOL=str(self.arguments.spool), CMAKE_GENERATOR="Ninja", LC_ALL="C.UTF-8", USER="anna")
        if shutil.which("ccache"):
            values["CMAKE_CXX_COMPILER_LAUNCHER"] = "ccache"
        if "<!-- device -->" in self.text:
            values["IS_DEVICE"] = "yes"
        return values

    def run(self, script, shown):
        (self.folder / ".script").write_text("\n".join(script) + "\n", encoding="utf-8")
        process = subprocess.Popen(["bash", ".script"], cwd=self.folder, env=self.environment(),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   text=True, start_new_session=True)
        # Whatever the page has started and not ended goes with its session.
        try:
            output = self.collect(process)
        finally:
            self.end(process)
        parts = output.split(MARKER)
        ran = {}
        for part in parts[1:]:
            number, _, said = part.partition("\n")
            ran[int(number)] = said
        if process.returncode != 0:
            last = list(ran)[-1] if ran else None
            where = self.blocks[last].line if last is not None else 0
            self.problems.append(f"{where}: the block ends with {process.returncode}:\n{output[-6000:]}")
            return
        for index, expected in shown.items():
            for block in expected:
                self.compare(block, ran.get(index, ""))

    def collect(self, process):
        """The output up to the end of the shell, which background processes outlive."""
        end = time.monotonic() + DEADLINE_S
        output = b""
        stream = process.stdout.fileno()
        while time.monotonic() < end:
            readable, _, _ = select.select([stream], [], [], 0.05)
            data = os.read(stream, 65536) if readable else b""
            output += data
            if not data and process.poll() is not None:
                return output.decode("utf-8", "replace")
        process.kill()
        process.wait()
        return output.decode("utf-8", "replace") + f"\nnot done after {DEADLINE_S} s"

    @staticmethod
    def end(process):
        try:
            os.killpg(process.pid, signal.SIGTERM)
        except ProcessLookupError:
            pass
        process.stdout.close()

    def compare(self, block, said):
        rest = said
        for line in block.text.splitlines():
            pattern = ".*?".join(re.escape(piece) for piece in line.strip().split("…"))
            found = re.search(r"(?m)^\s*" + pattern + r"\s*$", rest)
            if not found:
                self.problems.append(f"{block.line}: '{line.strip()}' is not in the output:\n{said[-3000:]}")
                return
            rest = rest[found.end():]

    def compile(self, fragments):
        if not fragments:
            return
        includes, bodies = [], []
        for block in fragments:
            lines = block.text.splitlines()
            includes += [line for line in lines if line.startswith("#include")]
            body = "\n".join("" if line.startswith("#include") else line for line in lines)
            bodies.append(f'void fragment{block.line}(const TextManager& texts, QObject* parent)\n{{\n'
                          f'(void)texts; (void)parent;\n#line {block.line + 1} "{self.arguments.page.name}"\n{body}\n}}\n')
        source = "\n".join(dict.fromkeys(includes + ['#include "Platform/TextManager.h"', "#include <QObject>"]))
        source += "\n\n" + "\n".join(bodies)
        flags = subprocess.run(["pkg-config", "--cflags", "Qt5Core", "Qt5DBus", "Qt5Test"], check=True,
                               capture_output=True, text=True).stdout.split()
        done = subprocess.run(["g++", "-std=c++17", "-fsyntax-only", "-fPIC", "-Wall", "-Wextra",
                               "-Wno-unused-variable", "-Werror", *flags,
                               f"-I{self.arguments.prefix}/include/EventlistHandler", "-x", "c++", "-"],
                              input=source, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if done.returncode != 0:
            self.problems.append(f"the fragments do not compile:\n{done.stdout}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--page", type=Path, required=True)
    parser.add_argument("--prefix", type=Path, required=True, help="the installed package")
    parser.add_argument("--schemas", type=Path, required=True)
    parser.add_argument("--spool", type=Path, required=True, help="the spool folder of the installed library")
    parser.add_argument("--folder", type=Path, required=True, help="made anew for the page")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="reader-") as folder:
        # What pkg-config prints goes through the shell's words, so a reader's prefix has no blank.
        prefix = Path(folder, "prefix")
        prefix.symlink_to(arguments.prefix.resolve())
        arguments.prefix = prefix
        page = Page(arguments)
        page.check()
    for line in page.not_run:
        print(f"{page.arguments.page.name}:{line} (not run)")
    for problem in page.problems:
        print(f"{page.arguments.page.name}:{problem}")
    print(f"{len(page.blocks)} blocks, {len(page.not_run)} not run, {len(page.problems)} problems")
    return 1 if page.problems else 0


if __name__ == "__main__":
    sys.exit(main())
