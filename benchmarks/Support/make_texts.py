#!/usr/bin/env python3
"""Makes the language files of the benchmarks: make_texts.py LRELEASE FOLDER

FOLDER gets one folder for each number of languages ("1", "2", ...), with compiled files "lang_xx.qm". A text has
about 200 bytes and as many placeholders as its name says.
"""

import shutil
import subprocess
import sys
from pathlib import Path

LANGUAGES = ("de en fr es it nl pl pt sv da fi cs sk hu ro bg el tr uk hr sl et lv lt ga mt nb is sq sr").split()
LANGUAGE_COUNTS = (1, 2, 5, 10, 20, 30)
ARGUMENT_COUNTS = (0, 1, 2, 5, 10, 20)
TEXT_BYTES = 200
FILLER = "Die gemessene Größe liegt außerhalb des zulässigen Bereichs; bitte prüfen Sie Zulauf und Ventile. "


def text(language, arguments):
    head = f"[{language}] " + " ".join(f"%{number}" for number in range(1, arguments + 1)) + " "
    filler = (FILLER * 3).encode("utf-8")[:TEXT_BYTES - len(head)]
    return head + filler.decode("utf-8", "ignore")


def language_file(language):
    texts = {f"Benchmark/Arguments{count}": text(language, count) for count in ARGUMENT_COUNTS}
    texts["Benchmark/Pump3"] = f"Pumpe 3 ({language})"
    messages = "".join(f'<message id="{name}"><source>x</source><translation>{value}</translation></message>'
                       for name, value in texts.items())
    return f'<?xml version="1.0" encoding="utf-8"?><!DOCTYPE TS><TS version="2.1"><context><name></name>{messages}' \
           "</context></TS>"


def main():
    lrelease, folder = sys.argv[1], Path(sys.argv[2])
    sources = folder / "sources"
    sources.mkdir(parents=True, exist_ok=True)
    for language in LANGUAGES:
        source = sources / f"lang_{language}.ts"
        source.write_text(language_file(language), encoding="utf-8")
        subprocess.run([lrelease, "-silent", "-idbased", "-nounfinished", source, "-qm", source.with_suffix(".qm")],
                       check=True)
    for count in LANGUAGE_COUNTS:
        (folder / str(count)).mkdir(exist_ok=True)
        for language in LANGUAGES[:count]:
            shutil.copy(sources / f"lang_{language}.qm", folder / str(count))


main()
