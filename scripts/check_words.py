#!/usr/bin/env python3
"""Checks for words that do not belong into this project: calls that are known to fail us, unfinished work, and
references to papers and machines that a reader does not have."""

import re
import sys

from project_files import CODE, CPP, files, run_check, without_comments_and_texts

# In C++ code, outside of comments and texts.
CPP_CODE = (
    (r"QTest::qWait\b", "waits blindly: wait for a condition"),
    (r"(?<![\w.])(u|nano)?sleep\s*\(|\bsleep_(for|until)\b|QThread::(m|u)?sleep\b|QTest::qSleep\b",
     "sleeps: wait for a condition"),
    (r"\bnoquote\s*\(", "hides the quotes that every warning has"),
    (r"\b(session|system)Bus\s*\(", "a connection that cannot be replaced: connectToBus with a name of its own"),
    (r"\bQDBusInterface\b", "asks the remote side for its description and blocks"),
)
# In Python and shell files of the code folders. A pause below 50 ms is the step of a loop that asks for its condition,
# a random one the moment at which a test strikes.
SCRIPT_CODE = ((r"\btime\.sleep\s*\((?!0\.0[0-4]\d*\)|\w+\.uniform\()|^\s*sleep\s+[0-9]", "sleeps: wait for a condition"),)
# Everywhere, written in pieces, so that this file passes its own check.
UNFINISHED = ((r"\b(TO" r"DO|FIX" r"ME|HA" r"CK)\b|(//|#)\s*X" r"XX\b", "unfinished work"),)
EVERYWHERE = (
    (r"\bParts? \d+(\.\d+)?\b", "names a paper that the reader does not have"),
    (r"\bthe\s+specification\b|\bspec\b(?!ial)(?=[ .](md|says|asks|demands|requires))|\bspec" r"\.md\b",
     "names a paper that the reader does not have"),
    (r"\b[Ii]ssue ?#?\d+\b|\bissue #", "names a ticket"),
    (r"(?<![\w.}])/(home|root|Users|work|workspace)/\w+", "names a folder of one machine"),
    (r"\b(deb|security|registry|index|proxy|packages|repo|mirrors?|crates|static)\.[a-z0-9-]+\.(org|com|io|net|dev|in)\b",
     "names a host of packages"),
)
URL = re.compile(r"\bhttps?://(?P<host>[A-Za-z0-9.-]+)")
# Names of formats, which nobody fetches.
URLS_OF_FORMATS = ("www.debian.org", "www.freedesktop.org", "www.w3.org", "json-schema.org", "127.0.0.1", "localhost")

# A comment that is a statement. Words of a sentence rarely end like this.
COMMENTED_OUT = re.compile(r"^\s*//(?!/)\s*(?!.*\b(is|are|the|a|an|in|of|not)\b)"
                           r"(#\s*include\b.*|[\w:<>*&.\->\[\]() ,=!\"'+]+;|[\w:]+\(.*\)\s*\{?|\}|\{|"
                           r"(if|for|while|switch)\s*\(.*|return\b.*;)\s*$")

TEXT = (".h", ".cpp", ".py", ".md", ".txt", ".cmake", ".in", ".json", ".ts", ".xml", ".sh", ".conf", ".yml", "")


def script_like(path):
    return path.suffix in (".py", ".sh", "")


def match_lines(path, lines, patterns, problems):
    for number, line in enumerate(lines, 1):
        for pattern, reason in patterns:
            found = re.search(pattern, line)
            if found:
                problems.append(f"{path}:{number}: '{found.group(0).strip()}': {reason}")


def check_cpp(path, source, problems):
    lines = source.splitlines()
    match_lines(path, without_comments_and_texts(source).splitlines(), CPP_CODE, problems)
    for number, line in enumerate(lines, 1):
        if COMMENTED_OUT.match(line):
            problems.append(f"{path}:{number}: '{line.strip()}': commented-out code")
        if re.match(r"^\s*(//|/\*)\s*([-=*#~/])\2{5,}", line):
            problems.append(f"{path}:{number}: a banner line")
        if "NOLINT" in line and not re.search(r"NOLINT(NEXTLINE|BEGIN|END)?\([\w.,\- ]+\)\s*:?\s*\S", line):
            problems.append(f"{path}:{number}: NOLINT without the name of its check and a reason")


def check(root):
    problems = []
    for path in files(root):
        if path.suffix not in TEXT and path.name not in ("run", "test"):
            continue
        try:
            source = (root / path).read_text(encoding="utf-8")
        except UnicodeDecodeError:
            continue  # a corpus or another binary
        lines = source.splitlines()
        match_lines(path, lines, EVERYWHERE, problems)
        match_lines(path, lines, UNFINISHED, problems)
        for number, line in enumerate(lines, 1):
            for url in URL.finditer(line):
                if url["host"] not in URLS_OF_FORMATS:
                    problems.append(f"{path}:{number}: '{url.group(0)}': names a host")
        if path.parts[0] not in CODE:
            continue
        if path.suffix in CPP:
            check_cpp(path, source, problems)
        elif script_like(path):
            match_lines(path, lines, SCRIPT_CODE, problems)
    return problems


if __name__ == "__main__":
    sys.exit(run_check(check, "words", __doc__))
