#!/usr/bin/python3
"""`eventlist texts check`: every rule finds its fault, names it word for word, and finds nothing in good texts."""

import json
import os
import subprocess
import unittest

from device import Device

FILE = """<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="{language}">
<context>
    <name></name>
{messages}</context>
</TS>
"""
MESSAGE_LINE = 6


def message(url, text, attributes="", form="{}"):
    """One message on one line, so that a test can tell its line."""
    return f'<message id="{url}"><source>s</source><translation{attributes}>{form.format(text)}</translation></message>\n'


class EventlistTexts(unittest.TestCase):
    def setUp(self):
        self.device = Device()
        self.addCleanup(self.device.__exit__)
        self.folder = self.device.folder
        self.write_good_texts()

    def write_texts(self, language, *messages, name=None):
        text = FILE.format(language=language, messages="".join(messages))
        (self.folder / f"lang_{name or language}.ts").write_text(text, encoding="utf-8")

    def write_good_texts(self):
        for language, text in (("de", "Pumpe %1 läuft, %2"), ("en", "pump %1 runs, %2"), ("fr", "%2, pompe %1")):
            self.write_texts(language, message("Pump/Runs", text), message("Pump/Name", f"name {language}"))

    def write_source(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")

    def check(self, *words):
        return self.device.eventlist("texts", "check", *(words or ["."]), cwd=self.folder)

    def expect(self, lines, *words, code=1):
        """The findings are exactly these, and the last line sums them up."""
        done = self.check(*words)
        *found, summary = done.stdout.splitlines()
        self.assertEqual((found, done.stderr, done.returncode), (lines, "", code))
        errors = sum(": error: " in line for line in lines)
        self.assertTrue(summary.endswith(f": {errors} errors, {len(lines) - errors} warnings"), summary)

    def test_finds_nothing_in_good_texts(self):
        done = self.check()
        self.assertEqual((done.returncode, done.stderr, done.stdout),
                         (0, "", "3 languages (lang_de, lang_en, lang_fr), 2 urls: 0 errors, 0 warnings\n"))

    def test_finds_a_url_that_one_language_lacks(self):
        self.write_texts("fr", message("Pump/Runs", "%1 %2"))
        self.expect(["./lang_fr.ts: error: 'Pump/Name' has no text in lang_fr [missing]"])

    def test_finds_placeholders_that_differ(self):
        self.write_texts("de", message("Pump/Runs", "Pumpe %1 läuft"), message("Pump/Name", "a %3"))
        self.expect(["./lang_de.ts:6: error: the placeholders of 'Pump/Runs' are %1 here, but %1, %2 in lang_en "
                     "[placeholders]",
                     "./lang_de.ts:7: error: the placeholders of 'Pump/Name' are %3 here, but none in lang_en "
                     "[placeholders]"])

    def test_compares_with_the_first_language_where_the_one_of_last_resort_has_no_text(self):
        (self.folder / "lang_en.ts").unlink()
        self.write_texts("fr", message("Pump/Runs", "%1"), message("Pump/Name", "n"))
        self.expect(["./lang_fr.ts:6: error: the placeholders of 'Pump/Runs' are %1 here, but %1, %2 in lang_de "
                     "[placeholders]"])

    def test_finds_placeholders_that_would_be_replaced_inside_of_others(self):
        for language in ("de", "en", "fr"):
            self.write_texts(language, message("Pump/Runs", "%1 %10"))
        self.expect([f"./lang_{language}.ts:6: error: in the text of 'Pump/Runs' the argument of %1 would also replace "
                     "a part of %10; choose another number [nested-placeholder]" for language in ("de", "en", "fr")])

    def test_finds_what_is_not_finished_once_and_not_as_missing(self):
        self.write_texts("de", message("Pump/Runs", "%1", ' type="unfinished"'), message("Pump/Name", "n"))
        self.expect(["./lang_de.ts:6: error: the translation of 'Pump/Runs' is not finished [unfinished]"])
        self.expect([], ".", "--allow", "unfinished", code=0)

    def test_finds_empty_texts(self):
        self.write_texts("de", message("Pump/Runs", "%1 %2"), message("Pump/Name", " "))
        self.expect(["./lang_de.ts:7: error: the text of 'Pump/Name' is empty [empty]"])

    def test_finds_ids_that_stand_twice_also_across_files(self):
        (self.folder / "more").mkdir()
        self.write_texts("de", message("Pump/Runs", "%1 %2"), message("Pump/Name", "n"), message("Pump/Runs", "x"))
        (self.folder / "more/lang_de.ts").write_text(FILE.format(language="de", messages=message("Pump/Name", "m")),
                                                     encoding="utf-8")
        self.expect(["./lang_de.ts:8: error: 'Pump/Runs' stands in this language already, ./lang_de.ts:6 [duplicate]",
                     "more/lang_de.ts:6: error: 'Pump/Name' stands in this language already, ./lang_de.ts:7 "
                     "[duplicate]"], ".", "more")

    def test_finds_messages_without_id_or_marked_as_gone_or_with_plural_forms(self):
        self.write_texts("de", message("Pump/Runs", "%1 %2"), message("", "x"), message("Pump/Old", "x", ' type="vanished"'),
                         message("Pump/Name", "n").replace("<message ", '<message numerus="yes" ').replace(
                             ">n<", "><numerusform>n</numerusform><numerusform>m</numerusform><"))
        self.expect(["./lang_de.ts:7: error: a message without an id [no-id]",
                     "./lang_de.ts:8: warning: 'Pump/Old' is marked as obsolete [gone]",
                     "./lang_de.ts:9: warning: 'Pump/Name' has forms for numbers; only the first is ever shown "
                     "[plural]"])

    def test_finds_a_file_of_another_language_than_its_name_says(self):
        self.write_texts("fr", message("Pump/Runs", "%1 %2"), message("Pump/Name", "n"), name="de")
        expected = ["./lang_de.ts: warning: the file says that its language is 'fr', its name says 'de' [language]"]
        self.expect(expected, code=0)
        self.expect(expected, ".", "--strict", code=1)

    def test_tells_what_cannot_be_read_and_where(self):
        text = FILE.format(language="de", messages=message("Pump/Runs", "%1 %2").replace("</message>", ""))
        (self.folder / "lang_de.ts").write_text(text, encoding="utf-8")
        done = self.check()
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stdout, r"\A\./lang_de\.ts:7: error: cannot be read: [^\n]+ \[unreadable\]\n")
        (self.folder / "lang_de.ts").write_text("<html/>", encoding="utf-8")
        self.expect(["./lang_de.ts:1: error: cannot be read: it is no file of Qt Linguist [unreadable]"])

    def test_finds_urls_that_are_used_and_not_defined_or_the_other_way_round(self):
        self.write_source("pump.cpp", '\n'.join((
            '#include "Pump/Header"',
            '// "Pump/InAComment"', '/* "Pump/InAComment"', '*/',
            'auto a = QStringLiteral("Pump/Runs");',
            'auto b = "Pump/" // joined',
            '    "Misspelt";',
            'auto c = R"(Pump/Raw)"; int d = 1\'000; char e = \'"\';',
            'auto f = "see Pump/Nothing here \\" "; auto g = "Other/Word";')))
        self.expect(["./lang_de.ts:7: warning: no source uses 'Pump/Name' [unused]",
                     "pump.cpp:6: error: 'Pump/Misspelt' is used here, but no language file has it [undefined]",
                     "pump.cpp:8: error: 'Pump/Raw' is used here, but no language file has it [undefined]"],
                    ".", "--source", "pump.cpp")
        self.expect(["./lang_de.ts:7: warning: no source uses 'Pump/Name' [unused]",
                     "pump.cpp:6: error: 'Pump/Misspelt' is used here, but no language file has it [undefined]",
                     "pump.cpp:9: error: 'Other/Word' is used here, but no language file has it [undefined]"],
                    ".", "--source", "pump.cpp", "--collection", "Other", "--ignore", "Pump/Ra*")

    def test_reads_each_language_of_sources_by_its_own_rules(self):
        self.write_source("a.py", "x = 'Pump/A'  # 'Pump/No'\ny = '''\nPump/No\n''' \nz = ('Pump/'\n     'B')\n")
        self.write_source("a.sh", "# Pump/No\necho \"'url': <'Pump/C'>\" $x/Pump/No Pump/No/ /Pump/No Pump/D\n")
        self.write_source("a.json", '{"url": "Pump/E"}')
        self.write_source("a.qml", "Text { url: 'Pump/F' // 'Pump/No'\n}")
        self.write_source("a.md", "Pump/No")
        (self.folder / "build").mkdir()
        self.write_source("build/CMakeCache.txt", "")
        self.write_source("build/a.py", "'Pump/No'")
        findings = json.loads(self.check(".", "--source", ".", "--json").stdout)["findings"]
        self.assertEqual([(finding["file"], finding["line"], finding["url"]) for finding in findings
                          if finding["rule"] == "undefined"],
                         [("./a.json", 1, "Pump/E"), ("./a.py", 1, "Pump/A"), ("./a.py", 5, "Pump/B"),
                          ("./a.qml", 1, "Pump/F"), ("./a.sh", 2, "Pump/C"), ("./a.sh", 2, "Pump/D")])

    def test_finds_compiled_files_that_are_missing_stale_or_made_without_ids(self):
        compiled = self.folder / "compiled"
        compiled.mkdir()

        def compile_text(language, *options):
            subprocess.run(["lrelease", "-silent", *options, self.folder / f"lang_{language}.ts", "-qm",
                            compiled / f"lang_{language}.qm"], check=True)
        for language in ("de", "en", "fr"):
            compile_text(language, "-idbased")
        self.expect([], ".", "--compiled", "compiled", code=0)
        (compiled / "lang_fr.qm").unlink()
        compile_text("en")
        self.write_texts("de", message("Pump/Runs", "%1 neu %2"), message("Pump/Name", "name de"), message("Pump/More", "x"))
        for language in ("en", "fr"):
            self.write_texts(language, message("Pump/Runs", "%1 %2"), message("Pump/Name", "n"), message("Pump/More", "x"))
        done = self.check(".", "--compiled", "compiled")
        lines = done.stdout.splitlines()
        self.assertEqual(done.returncode, 1)
        self.assertEqual(lines[:2], [
            "compiled/lang_de.qm: error: has no text of 'Pump/More'; compile it anew, with \"-idbased\" [stale]",
            "compiled/lang_de.qm: error: has another text of 'Pump/Runs' than its language file; compile it anew "
            "[stale]"])
        self.assertTrue(all("compiled/lang_en.qm: error: " in line for line in lines[2:-2]) and lines[2:-2], lines)
        self.assertEqual(lines[-2], "compiled/lang_fr.qm: error: is missing; make it with \"lrelease -idbased "
                                    "-nounfinished\" [stale]")

    def test_gives_programs_the_same_as_json(self):
        self.write_texts("fr", message("Pump/Runs", "%1 %2"))
        self.write_source("pump.py", "'Pump/Runs'")
        done = self.check(".", "--source", "pump.py", "--json")
        self.assertEqual((done.returncode, done.stderr), (1, ""))
        self.assertEqual(json.loads(done.stdout), {
            "languages": ["lang_de", "lang_en", "lang_fr"], "urls": 2, "used": 1, "errors": 1, "warnings": 1,
            "findings": [
                {"file": "./lang_de.ts", "line": 7, "severity": "warning", "rule": "unused", "url": "Pump/Name",
                 "text": "no source uses 'Pump/Name'"},
                {"file": "./lang_fr.ts", "line": 0, "severity": "error", "rule": "missing", "url": "Pump/Name",
                 "text": "'Pump/Name' has no text in lang_fr"}]})

    def test_shows_hostile_urls_escaped(self):
        self.write_texts("fr", message("Pump/Runs", "%1 %2"), message("Pump/Name", "n"), message("Pump/\u202e&#x9b;", "x"))
        for words in ([], ["--json"]):
            text = self.check(".", *words).stdout
            self.assertIn("Pump/\\u202e\\u009b", text)
            self.assertNotRegex(text, "[\x80-\x9f\u202e]")

    def test_fails_also_when_nobody_reads_to_the_end(self):
        self.write_texts("fr", message("Pump/Runs", "%1 %2"), *(message(f"Pump/Only{i}", "x" * 50) for i in range(3000)))
        program = self.device.start_eventlist("texts", "check", self.folder)
        program.process.stdout.read(10)
        program.process.stdout.close()
        self.assertEqual((program.wait(), program.err), (1, ""))

    def test_complains_about_a_wrong_command_line(self):
        (self.folder / "none").mkdir()
        for words, text in ((["none"], "there is no language file (*.ts) in 'none'"),
                            (["lang_de.qm"], "'lang_de.qm' is compiled: name its language file (*.ts), and its folder "
                                             "with --compiled"),
                            ([".", "--source", "nowhere"], "there is no source 'nowhere'"),
                            ([".", "--source", "none"], "there is no source in 'none'"),
                            ([".", "--compiled", "nowhere"], "there is no folder 'nowhere'"),
                            ([".", "--allow", "unused,alles"], "there is no rule 'alles'")):
            with self.subTest(words=words):
                done = self.check(*words)
                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (2, "", f"eventlist: {text}; see 'eventlist texts check --help'\n"))
        done = self.device.eventlist("texts", "check")
        self.assertEqual((done.returncode, done.stderr),
                         (2, "eventlist: name the language files, or the folder that holds them; see 'eventlist texts "
                             "check --help'\n"))

    def test_tells_which_files_are_none(self):
        self.write_source("large.py", "#" * (16 * 1024 * 1024 + 1))
        os.mkfifo(self.folder / "pipe.py")
        self.expect(["./large.py: error: cannot be read: it is larger than 16777216 bytes [unreadable]",
                     "nowhere.ts: error: cannot be read: No such file or directory [unreadable]",
                     "pipe.py: error: cannot be read: it is no regular file [unreadable]"],
                    ".", "nowhere.ts", "--source", ".", "--source", "pipe.py")


if __name__ == "__main__":
    unittest.main(verbosity=2)
