#!/usr/bin/env python3
"""Plants a fault in a page and looks whether run_document.py finds it."""

import argparse
import subprocess
import sys
import tempfile
from pathlib import Path

RUNNER = Path(__file__).parent / "run_document.py"

# Name, page, what has to be said; nothing for a page that is right.
PAGES = (
    ("a right page", """
[here](page.md)
```cpp file=folder/a.txt
int a;
```
```sh
cat folder/a.txt; echo 'one two'
```
```text output
int a;
one …
```
```cpp fragment
#include <QString>
const QString name = "text";
```
- a list

    that goes on
""", None),
    ("a command that fails", "```sh\ntrue\nfalse\ntrue\n```\n", "1: the block ends with 1"),
    ("a later command of a pipe", "```sh\nfalse | true\n```\n", "1: the block ends with 1"),
    ("another output", "```sh\necho one\n```\n```text output\ntwo\n```\n", "4: 'two' is not in the output"),
    ("another order", "```sh\necho one\necho two\n```\n```text output\ntwo\none\n```\n", "'one' is not in the output"),
    ("a fragment that does not compile", "```cpp fragment\nint a = nothing;\n```\n", "the fragments do not compile"),
    ("code that nobody looks at", "```cpp\nint a;\n```\n", "1: cpp: neither a file nor a fragment"),
    ("a block without a fence", "text\n\n    ./run\n", "3: a block without a fence"),
    ("no reason", "```sh not-run=\nfalse\n```\n", "1: no reason why this is not run"),
    ("no JSON", "```json\n{\n```\n", "1: Expecting"),
    ("JSON that the schema refuses", "```json schema=description\n{\"lang_en\": 1}\n```\n", "1: 1 is not of type 'string'"),
    ("a dead link", "[there](nowhere.md)\n", "1: the link to nowhere.md leads nowhere"),
)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--prefix", required=True)
    parser.add_argument("--schemas", required=True)
    arguments = parser.parse_args()
    wrong = 0
    for name, text, expected in PAGES:
        with tempfile.TemporaryDirectory() as folder:
            page = Path(folder, "page.md")
            page.write_text(text, encoding="utf-8")
            done = subprocess.run([sys.executable, RUNNER, "--page", page, "--prefix", arguments.prefix, "--schemas",
                                   arguments.schemas, "--spool", Path(folder, "spool"), "--folder",
                                   Path(folder, "session")], capture_output=True, text=True, check=False)
        is_right = done.returncode == 0 if expected is None else done.returncode == 1 and expected in done.stdout
        if not is_right:
            wrong += 1
            print(f"{name}: ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    print(f"{len(PAGES)} pages, {wrong} of them judged wrongly")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
