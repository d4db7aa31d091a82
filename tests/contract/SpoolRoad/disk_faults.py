#!/usr/bin/env python3
"""Lets the disk of the spool folder fail under a module, and looks at what the module says and leaves.

usage: disk_faults.py CASE MODULE SPOOL-FOLDER

In every case: each event that is lost is told in two warnings, in their order, and nothing else is said; what lay in
the folder stays as it was; nothing is torn. The first event after the fault is written.
Exit code 77: this machine does not allow to make the fault.
"""

import json
import os
import select
import subprocess
import sys
import tempfile

from spool_file_faults import DEADLINE_S, ENDING, CheckFailed, check, in_own_mounts

# Longer than two pages, so that a disk can fill up in the middle of a file.
PADDING = "x" * 2500
TEXTS = {"lang_de": f"Übertemperatur %1 {PADDING}", "lang_en": f"Over-temperature %1 {PADDING}"}
ALARM = "alarm" + ENDING


def description(number):
    """The description of an event as it lies in its file."""
    texts = {language: text.replace("%1", str(number)) for language, text in TEXTS.items()}
    return json.dumps(texts, ensure_ascii=False, separators=(",", ":"))


def warnings(number):
    quoted = description(number).replace("\\", "\\\\").replace('"', '\\"')
    return ("Can't write jsonObject to file\n"
            "Can't write event to file. ModuleName: \"PumpControl\" "
            f'Description: QVariant(QString, "{quoted}")\n')


class Module:
    """The module, and what it said about the event that it has just logged."""

    def __init__(self, program):
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen([program, *TEXTS.values()], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=self.errors)
        self.read_until = 0

    def log(self, command, number):
        """Whether the event was written, which the module says by saying nothing."""
        self.process.stdin.write(f"{command} {number}\n".encode())
        self.process.stdin.flush()
        readable, _, _ = select.select([self.process.stdout], [], [], DEADLINE_S)
        check(readable and self.process.stdout.readline() == b"done\n", "the module hangs or has ended")
        said = os.pread(self.errors.fileno(), 1 << 20, self.read_until)
        self.read_until += len(said)
        check(said.decode() in ("", warnings(number)), "of event", number, "the module said", said.decode())
        return not said

    def end(self):
        self.process.stdin.close()
        check(self.process.wait(DEADLINE_S) == 0, "the module ended with", self.process.returncode)
        check(os.fstat(self.errors.fileno()).st_size == self.read_until, "the module said something in the end")

    def kill(self):
        self.process.kill()
        self.process.wait()


class Case:
    def __init__(self, module, spool, options):
        self.module = module
        self.spool = spool
        self.number = 0
        self.numbered_files = 0
        subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", spool], check=True)

    def change_disk(self, options):
        subprocess.run(["mount", "-o", "remount," + options, self.spool], check=True)

    def contents(self):
        found = {}
        for name in os.listdir(self.spool):
            with open(os.path.join(self.spool, name), "rb") as file:
                found[name] = file.read()
        return found

    def log(self, command):
        """Logs the next event; gives the name of its file when it was written."""
        before = self.contents()
        self.number += 1
        name = ALARM
        if command == "event":
            name = f"logEvent{self.numbered_files}{ENDING}"
            self.numbered_files += 1
        is_written = self.module.log(command, self.number)
        after = self.contents()
        if not is_written:
            check(after == before, "a lost event has changed the folder from", sorted(before), "to", sorted(after))
            return None
        check(json.loads(after.get(name, b"{}")).get("Description") == description(self.number),
              "event", self.number, "is not in", name)
        before[name] = after[name]
        check(after == before, "event", self.number, "has changed more than", name, sorted(after))
        return name

    def must_write(self, *commands):
        for command in commands:
            check(self.log(command) is not None, "event", self.number, "was lost:", command)

    def must_lose(self, *commands):
        for command in commands:
            check(self.log(command) is None, "event", self.number, "was written:", command)

    def write_until_one_is_lost(self):
        written = 0
        while self.log("event") is not None:
            written += 1
            check(written < 100, "the disk does not fill up")
        check(written > 0, "nothing was written before the fault")

    def finish(self):
        """After the fault everything is written, also what takes the place of an older file."""
        self.must_write("event", "alarm on", "event", "alarm off")
        self.module.end()
        print(self.number, "events,", len(self.contents()), "files")


def case_full_disk(program, spool):
    case = Case(program, spool, "size=64k")
    case.must_write("alarm on")
    case.write_until_one_is_lost()
    # The alarm would take the place of a file: that one stays, and the new state is told once only.
    case.must_lose("event", "alarm off", "event")
    # The service takes one file away, and there is room for one.
    os.unlink(os.path.join(spool, "logEvent0" + ENDING))
    case.must_write("event")
    case.must_lose("event")
    case.change_disk("size=1m")
    case.finish()


def case_no_inodes(program, spool):
    case = Case(program, spool, "size=4m,nr_inodes=8")
    case.must_write("alarm on")
    case.write_until_one_is_lost()
    case.must_lose("event", "alarm off", "event")
    os.unlink(os.path.join(spool, "logEvent0" + ENDING))
    case.must_write("event")
    case.must_lose("event")
    case.change_disk("nr_inodes=100")
    case.finish()


def case_read_only(program, spool):
    case = Case(program, spool, "size=4m")
    case.must_write("alarm on", "event")
    case.change_disk("ro")
    case.must_lose("event", "alarm off", "event")
    case.change_disk("rw")
    case.finish()


def main():
    name, program, spool = sys.argv[1:]
    run = {"full-disk": case_full_disk, "no-inodes": case_no_inodes, "read-only": case_read_only}[name]
    os.makedirs(spool, exist_ok=True)
    in_own_mounts(f"the fault {name}")
    module = Module(program)
    try:
        run(module, spool)
    except CheckFailed as failure:
        sys.exit(f"FAIL: {failure}")
    finally:
        module.kill()


if __name__ == "__main__":
    main()
