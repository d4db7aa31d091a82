#!/usr/bin/env python3
"""Lets the disk of the spool folder fail under a module, and looks at what the module says and leaves.

usage: disk_faults.py CASE MODULE SPOOL-FOLDER [what the case needs further]

In every case: each event that is lost is told in two warnings, in their order, and nothing else is said; what lay in
the folder stays as it was; nothing is torn. The first event after the fault is written.
Exit code 77: this machine does not allow to make the fault.
"""

import json
import os
import random
import select
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time

from spool_file_faults import (CALLS, DEADLINE_S, ENDING, ERRORS, CheckFailed, check, in_own_mounts,
                               require_strace)

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


def is_event(content, number):
    return json.loads(content).get("Description") == description(number)


class Module:
    """The module, and what it said about the event that it has just logged."""

    def __init__(self, program, prefix=()):
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen([*prefix, program, *TEXTS.values()], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
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
    def __init__(self, module, spool, options=None):
        self.module = module
        self.spool = spool
        self.number = 0
        self.numbered_files = 0
        if options is not None:
            subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", spool], check=True)

    def change_disk(self, options):
        subprocess.run(["mount", "-o", "remount," + options, self.spool], check=True)

    def contents(self):
        found = {}
        for name in os.listdir(self.spool):
            with open(os.path.join(self.spool, name), "rb") as file:
                found[name] = file.read()
        return found

    def log(self, command, *, may_replace_on_failure=False):
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
            if may_replace_on_failure and name in before:
                check(is_event(after.get(name, b"{}"), self.number), "event", self.number, "is half there")
                before[name] = after[name]
            check(after == before, "a lost event has changed the folder from", sorted(before), "to", sorted(after))
            return None
        check(is_event(after.get(name, b"{}"), self.number), "event", self.number, "is not in", name)
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


def empty(folder):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)


LOGGED = ("event", "alarm on", "event", "alarm off")


def traced_run(program, spool, scratch, injection=None):
    """Logs one event after the other, while a call of the module fails. Gives the lines of the trace, and how many
    events were lost."""
    empty(spool)
    log = os.path.join(scratch, "trace")
    # Not -f: only the thread that writes is disturbed.
    prefix = ["strace", "-y", "-qq", "-o", log, "-e", "trace=" + CALLS]
    os.environ["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
    module = Module(program, prefix + (["-e", "inject=" + injection] if injection else []))
    try:
        case = Case(module, spool)
        is_late = (injection or "").startswith("fsync")
        lost = sum(case.log(command, may_replace_on_failure=is_late) is None for command in LOGGED)
        module.end()
    finally:
        module.kill()
    with open(log, encoding="utf-8", errors="replace") as file:
        return file.read().splitlines(), lost


def case_failing_calls(program, spool, scratch, errors_per_call):
    """Each call that the module makes for its files fails once, with so many errors, each error in its turn."""
    require_strace(scratch)
    lines, lost = traced_run(program, spool, scratch)
    check(lost == 0, "events lost without a fault:", lost)
    begin = next(index for index, line in enumerate(lines) if "O_TMPFILE" in line) - 1
    counts, told, untold = {}, 0, {}
    for index, line in enumerate(lines):
        call = line.partition("(")[0]
        counts[call] = counts.get(call, 0) + 1
        # Only what concerns the spool folder: neither the standard output nor a thread that is woken.
        if index < begin or spool.rstrip("/") not in line:
            continue
        for shift in range(int(errors_per_call)):
            error = ERRORS[(index + shift) % len(ERRORS)]
            _, lost = traced_run(program, spool, scratch, f"{call}:error={error}:when={counts[call]}")
            check(lost <= 1, "one failing", call, "has cost events:", lost)
            told += lost
            untold[call] = untold.get(call, 0) + (lost == 0)
    # Only a folder that was read: closing it can lose nothing. The file is closed just as often.
    check({call for call, count in untold.items() if count > 0} <= {"close"}, "faults that nobody was told of:", untold)
    print("failing calls:", sum(untold.values()) + told, "- events lost, each told twice:", told)


def kill_in_storms(program, spool, kills, source):
    number = 0
    for _ in range(kills):
        module = Module(program)
        module.process.stdin.write(f"storm {number}\n".encode())
        module.process.stdin.flush()
        number += 100000
        before = os.stat(spool).st_mtime_ns
        deadline = time.monotonic() + DEADLINE_S
        while os.stat(spool).st_mtime_ns == before:
            check(time.monotonic() < deadline and module.process.poll() is None, "the module does not write")
        moment = time.monotonic() + source.random() * 0.02
        while time.monotonic() < moment:
            pass
        module.kill()
        said = os.pread(module.errors.fileno(), 1 << 20, 0)
        check(said == b"", "the module said", said)


def numbers_in(texts):
    return sorted(int(json.loads(text)["lang_en"].split()[1]) for text in texts)


def case_kill(program, spool, scratch, service, texts, kills):
    """A module is killed in the middle of its files, again and again; then the service takes what lies there."""
    empty(spool)
    kill_in_storms(program, spool, int(kills), random.Random(17))
    events, strays = {}, []
    for name in os.listdir(spool):
        path = os.path.join(spool, name)
        with open(path, "rb") as file:
            entry = json.loads(file.read())
        check(len(entry) == 13, "half an event:", name, sorted(entry))
        if name.endswith(ENDING):
            events[name] = entry["Description"]
        else:
            strays.append(name)
            os.utime(path, (0, 0))
    check(len(events) > 1, "nothing was written")
    database = os.path.join(scratch, "list.sqlite")
    with subprocess.Popen([service, "--database", database, "--spool", spool, "--texts", texts],
                          stderr=subprocess.DEVNULL) as process:
        deadline = time.monotonic() + DEADLINE_S
        while [name for name in os.listdir(spool) if name not in ("claimed", "rejected")]:
            check(time.monotonic() < deadline and process.poll() is None, "left over:", os.listdir(spool))
        process.terminate()
    check(os.listdir(os.path.join(spool, "rejected")) == [], "the service has rejected files")
    with sqlite3.connect(database) as stored:
        rows = stored.execute("SELECT description FROM content JOIN event USING(id) WHERE module = 'PumpControl'")
        check(numbers_in(row[0] for row in rows) == numbers_in(events.values()), "the list is not what was written")
    stored.close()
    print(kills, "kills,", len(events), "files, 0 torn, all in the list once;", len(strays),
          "strays, all removed by the service")


def main():
    name, program, spool, *further = sys.argv[1:]
    os.makedirs(spool, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="disk-faults-") as scratch:
        try:
            if name in ("failing-calls", "kill"):
                {"failing-calls": case_failing_calls, "kill": case_kill}[name](program, spool, scratch, *further)
                return
            in_own_mounts(f"the fault {name}")
            module = Module(program)
            try:
                {"full-disk": case_full_disk, "no-inodes": case_no_inodes, "read-only": case_read_only}[name](
                    module, spool)
            finally:
                module.kill()
        except CheckFailed as failure:
            sys.exit(f"FAIL: {failure}")


if __name__ == "__main__":
    main()
