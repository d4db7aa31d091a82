#!/usr/bin/env python3
"""Reads the installed man pages and lets bash complete command lines of the installed tool."""

import argparse
import os
import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]

COMPLETE = """
source /usr/share/bash-completion/bash_completion
source "$1"
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
COMP_LINE="$*"
COMP_POINT=${#COMP_LINE}
_eventlist
printf '%s\\n' "${COMPREPLY[@]}"
"""


def run(*command, **settings):
    return subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False, **settings)


class Manual(unittest.TestCase):
    prefix = None

    def page(self, name):
        return self.prefix / "share/man" / f"man{name[-1]}" / name

    def test_every_page_is_sound_and_names_itself(self):
        for name in ("eventlist.1", "eventlistd.8", "eventlisthandler.7"):
            with self.subTest(name):
                done = subprocess.run(["groff", "-man", "-Kutf8", "-Tutf8", "-ww", self.page(name)], check=False,
                                      capture_output=True, text=True)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                # Bold is a letter over itself.
                lines = [line.lower() for line in re.sub(".\b", "", done.stdout).splitlines()]
                self.assertTrue(lines[lines.index("name") + 1].startswith(f"       {name[:-2]} "), lines)

    def test_the_page_of_the_tool_says_what_the_tool_says(self):
        done = run(ROOT / "scripts/update-man-page", "--check", self.prefix / "bin/eventlist")
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_the_page_of_the_service_has_its_options_and_no_other(self):
        said = run(self.prefix / "bin/eventlistd", "--help").stdout
        options = set(re.findall(r"(?m)^ .*?(--[a-z-]+)", said)) - {"--help-all"}
        self.assertGreater(len(options), 10)
        text = self.page("eventlistd.8").read_text(encoding="utf-8").replace("\\-", "-")
        shown = set(re.findall(r"(?m)^\.TP\n\.BR? .*?(--[a-z-]+)", text))
        self.assertEqual(shown, options)

    def test_the_pages_name_this_version(self):
        version = run(self.prefix / "bin/eventlist", "--version").stdout.split()[1]
        for name in ("eventlist.1", "eventlistd.8", "eventlisthandler.7"):
            self.assertIn(f'"EventlistHandler {version}"', self.page(name).read_text(encoding="utf-8"))


class Completion(unittest.TestCase):
    prefix = None

    def complete(self, *words):
        path = f"{self.prefix / 'bin'}:{os.environ['PATH']}"
        completion = self.prefix / "share/bash-completion/completions/eventlist"
        done = run("bash", "-c", COMPLETE, "bash", completion, "eventlist", *words, env={**os.environ, "PATH": path})
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout.split()

    def test_offers_the_commands_that_the_tool_has(self):
        said = run(self.prefix / "bin/eventlist", "--help").stdout
        commands = re.search(r"Commands:\n(.*?)\n\n", said, re.DOTALL)[1]
        first_words = {line.split()[0] for line in commands.splitlines()}
        self.assertIn("list", first_words)
        self.assertEqual(set(self.complete("")), first_words)
        self.assertEqual(self.complete("fol"), ["follow"])

    def test_offers_the_options_of_the_command(self):
        self.assertEqual(self.complete("list", "--sin"), ["--since"])
        self.assertEqual(self.complete("list", "--type", "alarm", "--k"), ["--keyword"])
        self.assertEqual(self.complete("types", "--sin"), [])

    def test_offers_the_words_of_an_option(self):
        self.assertEqual(self.complete("list", "--type", "f"), ["fault"])
        self.assertEqual(self.complete("log", "--state", "o"), ["on", "off"])


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--prefix", type=Path, required=True)
    Manual.prefix = Completion.prefix = parser.parse_args().prefix
    unittest.main(argv=[__file__, "-v"])
