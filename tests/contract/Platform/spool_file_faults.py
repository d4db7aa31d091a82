#!/usr/bin/env python3
"""Makes the writing of spool files fail, and looks at what is left.

usage: spool_file_faults.py CASE WRITER [--preload LIBRARY] [--kills N] [--attempts N]

What has to hold in every case: what was reported as written is there, complete; what was reported
as failed has left what stood there before, and nothing for a new name; never half a file.
Exit code 77: this machine does not allow to make the fault.
"""

import argparse
import json
import mmap
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

FAILED, WRITTEN, RUNNING = 1, 2, 3
ENDING = ".event.json"
DEADLINE_S = 60


class CheckFailed(Exception):
    pass


def check(condition, *message):
    if not condition:
        raise CheckFailed(" ".join(str(part) for part in message))


def skip(*reason):
    print("SKIP:", *reason)
    sys.exit(77)


class Run:
    """One run of the writer, in a folder of its own or in a given one."""

    def __init__(self, writer, scratch, attempts, names, padding=200, folder=None):
        self.names = names
        self.attempts = attempts
        self.folder = folder or tempfile.mkdtemp(dir=scratch)
        handle, self.notes_path = tempfile.mkstemp(dir=scratch)
        os.ftruncate(handle, attempts)
        self.notes = mmap.mmap(handle, attempts)
        os.close(handle)
        self.command = [writer, self.folder, self.notes_path, str(attempts), str(names),
                        str(padding)]

    def run(self, prefix=(), **arguments):
        done = subprocess.run([*prefix, *self.command], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=DEADLINE_S, check=False, **arguments)
        check(done.returncode == 0, "the writer ended with", done.returncode, done.stderr.decode())
        return self

    def all_notes(self):
        return list(self.notes[:])

    def count(self, note):
        return self.all_notes().count(note)

    def close(self):
        self.notes.close()
        os.unlink(self.notes_path)
        shutil.rmtree(self.folder, ignore_errors=True)


def read_event(folder, name):
    """The number of the attempt that wrote the file; fails for anything but a complete event."""
    with open(os.path.join(folder, name), "rb") as file:
        content = file.read()
    try:
        event = json.loads(content)
    except ValueError:
        raise CheckFailed("torn file", name, content[:80]) from None
    check(event.get("zEnd") == "complete", "incomplete event", name, content[:80])
    return event["attempt"]


def check_folder(run, *, may_leave_strays=False, may_replace_on_failure=False):
    """Compares the folder with what the writer was told."""
    entries = set(os.listdir(run.folder))
    expected = set()
    notes = run.all_notes()
    for name_number in range(run.names):
        name = f"{name_number}{ENDING}"
        tries = range(name_number, run.attempts, run.names)
        written = [attempt for attempt in tries if notes[attempt] == WRITTEN]
        running = [attempt for attempt in tries if notes[attempt] == RUNNING]
        failed = [attempt for attempt in tries if notes[attempt] == FAILED]
        allowed = written[-1:] + running
        if may_replace_on_failure and written:
            allowed += failed
        if name in entries:
            expected.add(name)
            found = read_event(run.folder, name)
            check(found in allowed, "file", name, "holds attempt", found, "and not", allowed)
        else:
            check(not written, "file", name, "was written and is not there")
    strays = entries - expected
    for stray in strays:
        check(not stray.endswith(ENDING), "a stray looks like an event:", stray)
        read_event(run.folder, stray)
    check(may_leave_strays or not strays, "strays:", strays)
    return len(strays)


def in_own_mounts(case):
    """Runs this script again where it may mount; returns only there."""
    if os.environ.get("SPOOL_FILE_FAULTS_OWN_MOUNTS") == "1":
        return
    probe = subprocess.run(["unshare", "-rm", "mount", "-t", "tmpfs", "tmpfs", "/mnt"],
                           stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
    if probe.returncode != 0:
        skip(case, "needs mounts of its own:", probe.stderr.decode().strip())
    environment = dict(os.environ, SPOOL_FILE_FAULTS_OWN_MOUNTS="1")
    done = subprocess.run(["unshare", "-rm", sys.executable, *sys.argv], env=environment,
                          check=False)
    sys.exit(done.returncode)


def mount_tmpfs(scratch, options):
    folder = tempfile.mkdtemp(dir=scratch)
    subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True)
    return folder


def case_full_disk(writer, scratch):
    in_own_mounts("a full disk")
    for size, padding in (("64k", 3000), ("64k", 30000), ("16k", 9000), ("4k", 5000)):
        folder = mount_tmpfs(scratch, f"size={size}")
        run = Run(writer, scratch, 60, 40, padding, folder).run()
        check_folder(run)
        check(run.count(FAILED) > 0, "the disk did not fill up with", size, padding)
        check(run.count(WRITTEN) > 0 or size == "4k", "nothing was written at all")
        subprocess.run(["umount", folder], check=True)
        run.close()


def case_no_inodes(writer, scratch):
    in_own_mounts("a disk without inodes")
    folder = mount_tmpfs(scratch, "size=4m,nr_inodes=12")
    run = Run(writer, scratch, 60, 30, 200, folder).run()
    check_folder(run)
    check(run.count(FAILED) > 0 and run.count(WRITTEN) > 0, run.all_notes())


def case_read_only(writer, scratch):
    in_own_mounts("a disk that turns read-only")
    folder = mount_tmpfs(scratch, "size=4m")
    Run(writer, scratch, 2, 2, 200, folder).run()
    before = {name: read_event(folder, name) for name in os.listdir(folder)}
    subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
    run = Run(writer, scratch, 6, 3, 200, folder).run()
    check(run.count(FAILED) == 6, "not all failed:", run.all_notes())
    after = {name: read_event(folder, name) for name in os.listdir(folder)}
    check(before == after and len(after) == 2, "the folder has changed", before, after)


def case_no_right(writer, scratch):
    folder = tempfile.mkdtemp(dir=scratch)
    Run(writer, scratch, 2, 2, 200, folder).run()
    os.chmod(folder, 0o555)
    prefix = ()
    if os.geteuid() == 0:
        # Rights bind this user only without these two capabilities.
        prefix = ("setpriv", "--bounding-set", "-dac_override,-dac_read_search")
        probe = subprocess.run([*prefix, "true"], stderr=subprocess.PIPE, check=False)
        if probe.returncode != 0:
            skip("cannot give rights up:", probe.stderr.decode().strip())
    run = Run(writer, scratch, 6, 3, 200, folder).run(prefix)
    check(run.count(FAILED) == 6, "not all failed:", run.all_notes())
    check(sorted(os.listdir(folder)) == [f"0{ENDING}", f"1{ENDING}"], os.listdir(folder))
    check([read_event(folder, f"{number}{ENDING}") for number in (0, 1)] == [0, 1],
          "the folder has changed")
    os.chmod(folder, 0o755)


def case_size_limit(writer, scratch):
    import resource
    for limit in (0, 1, 100, 4096):
        # The signal that comes with the limit keeps its deadly default.
        run = Run(writer, scratch, 8, 4, 5000).run(
            preexec_fn=lambda size=limit: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size)))
        check(run.count(FAILED) == 8, "not all failed:", run.all_notes())
        check_folder(run)
        run.close()
    run = Run(writer, scratch, 8, 4, 200).run(
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096)))
    check(run.count(WRITTEN) == 8, "not all written:", run.all_notes())
    check_folder(run)


def case_short_writes(writer, scratch, preload):
    environment = dict(os.environ)
    environment["LD_PRELOAD"] = preload
    run = Run(writer, scratch, 6, 3, 500).run(env=environment)
    check(run.count(WRITTEN) == 6, "not all written:", run.all_notes())
    check_folder(run)


def case_kill(writer, scratch, kills):
    """Half of the kills strike the memory and half the disk, each half new names and old ones in turn."""
    source = random.Random(20260314)
    disk_folder = tempfile.mkdtemp(dir=".")
    memory_folder = tempfile.mkdtemp(dir="/dev/shm") if os.path.isdir("/dev/shm") else scratch
    try:
        for title, folder in (("memory", memory_folder), ("disk", disk_folder)):
            for names in (100000, 3):
                struck, strays = kill_often(writer, folder, names, kills // 4, source)
                print(f"{title}, {'new names' if names > 3 else 'three names again and again'}:",
                      f"{kills // 4} kills, {struck} in the middle of a write, 0 torn, {strays} strays",
                      flush=True)
                check(struck > 0, "no kill struck a write:", title, names)
                check(strays == 0 or names == 3, "strays for new names:", title)
    finally:
        shutil.rmtree(memory_folder, ignore_errors=True)
        shutil.rmtree(disk_folder, ignore_errors=True)


def kill_often(writer, scratch, names, goal, source):
    struck = strays = 0
    for _ in range(goal):
        run = Run(writer, scratch, 100000, names)
        process = subprocess.Popen(run.command)
        wanted = source.randrange(1, 40)
        deadline = time.monotonic() + DEADLINE_S
        while run.notes[wanted] == 0:
            check(process.poll() is None and time.monotonic() < deadline, "the writer does not run")
        moment = time.monotonic() + source.random() * 0.0005
        while time.monotonic() < moment:
            pass
        process.send_signal(signal.SIGKILL)
        process.wait(DEADLINE_S)
        tried = run.attempts - run.count(0)
        struck += run.count(RUNNING)
        run.attempts = tried
        run.names = min(names, tried)
        strays += check_folder(run, may_leave_strays=names < tried)
        run.close()
    return struck, strays


# No room, a broken disk, no right, a disk turned read-only, too many open files, no quota left.
ERRORS = ("ENOSPC", "EIO", "EACCES", "EROFS", "EMFILE", "EDQUOT")
CALLS = "openat,write,fdatasync,fsync,linkat,rename,renameat,renameat2,close"


def trace(run, *injections):
    """Runs the writer with system calls that fail; gives the names of the calls it made."""
    log = run.notes_path + ".trace"
    options = [part for injection in injections for part in ("-e", "inject=" + injection)]
    # The search for leaks cannot work in a process that is traced.
    environment = dict(os.environ)
    environment["ASAN_OPTIONS"] = environment.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
    run.run(["strace", "-f", "-qq", "-o", log, "-e", "trace=" + CALLS, *options], env=environment)
    with open(log, encoding="utf-8", errors="replace") as file:
        lines = [line for line in file if re.match(r"\d+ +\w+\(", line)]
    os.unlink(log)
    return lines


def call_numbers(run, lines):
    """For each kind of call the numbers, as strace counts, of those that wrote files."""
    begin = next(index for index, line in enumerate(lines) if run.folder in line)
    counts, numbers = {}, {}
    for index, line in enumerate(lines):
        name = re.match(r"\d+ +(\w+)\(", line).group(1)
        counts[name] = counts.get(name, 0) + 1
        if index >= begin:
            numbers.setdefault(name, []).append(counts[name])
    return numbers


def require_strace(scratch):
    if shutil.which("strace") is None:
        skip("strace is not installed")
    probe = subprocess.run(["strace", "-qq", "-o", os.path.join(scratch, "probe"), "true"],
                           stderr=subprocess.PIPE, check=False)
    if probe.returncode != 0:
        skip("strace may not trace here:", probe.stderr.decode().strip())


def inject_everywhere(writer, scratch, attempts, roads, first_needed):
    """Each call of the writer fails once, with each error."""
    base = Run(writer, scratch, attempts, attempts - 1)
    numbers = call_numbers(base, trace(base, *roads))
    check_folder(base)
    check(base.count(WRITTEN) == attempts, "not all written without a fault:", base.all_notes())
    base.close()
    check(set(first_needed) <= set(numbers), "calls that were never made:", numbers)
    fixed = {road.split(":")[0] for road in roads}
    unnoticed = {}
    runs = failures = 0
    for call, whens in numbers.items():
        for when in whens if call not in fixed else []:
            for error in ERRORS:
                run = Run(writer, scratch, attempts, attempts - 1)
                trace(run, *roads, f"{call}:error={error}:when={when}")
                check(RUNNING not in run.all_notes() and 0 not in run.all_notes(), "not finished")
                try:
                    check_folder(run, may_replace_on_failure=call == "fsync")
                except CheckFailed as failure:
                    raise CheckFailed(call, when, error, run.all_notes(), failure) from None
                runs += 1
                failures += run.count(FAILED)
                if run.count(FAILED) != 1:
                    unnoticed.setdefault(call, []).append(when)
                run.close()
    print("runs with one failing call:", runs, "- writes reported as failed:", failures)
    # Only the folder was read: closing it can lose nothing. The file is closed just as often.
    check(set(unnoticed) <= {"close"}, "faults that nobody was told of:", unnoticed)
    check(2 * len(unnoticed["close"]) == len(numbers["close"]) * len(ERRORS), "closing the file:", unnoticed)


def case_failing_calls(writer, scratch, attempts):
    require_strace(scratch)
    inject_everywhere(writer, scratch, attempts, (),
                      ("openat", "write", "fdatasync", "fsync", "linkat", "close", "renameat"))


def first_unnamed_open(writer, scratch):
    run = Run(writer, scratch, 1, 1)
    when = call_numbers(run, trace(run))["openat"][1]
    run.close()
    return when


def case_failing_calls_without_unnamed_files(writer, scratch, attempts):
    require_strace(scratch)
    when = first_unnamed_open(writer, scratch)
    # Folder, unnamed file (refused), temporary file: every third call.
    inject_everywhere(writer, scratch, attempts, (f"openat:error=EOPNOTSUPP:when={when}+3",),
                      ("write", "fdatasync", "fsync", "renameat2", "renameat", "close"))


def case_order_of_calls(writer, scratch):
    """What was reported as written was on the disk by then: the data before the name, and then the name."""
    require_strace(scratch)
    run = Run(writer, scratch, 6, 3)
    unsynced, names, published = set(), {}, 0
    for line in trace(run):
        if (opened := re.search(r"openat\(\S+ .*O_(?:TMPFILE|CREAT).* = (\d+)", line)):
            unsynced.add(opened[1])
        elif (synced := re.search(r" (?:fdatasync|fsync)\((\d+)\) += 0", line)):
            unsynced.discard(synced[1])
            names = {name: folder for name, folder in names.items() if folder != synced[1]}
        elif (written := re.search(r" write\((\d+)", line)):
            unsynced.add(written[1])
        elif (linked := re.search(r'linkat\(.*/fd/(\d+)", (\d+), "([^"]+)".* = 0', line)):
            check(linked[1] not in unsynced, "a name before the data:", line)
            names[linked[3]] = linked[2]
        elif (renamed := re.search(r'renameat\(\d+, "([^"]+)", (\d+), "([^"]+)"\) += 0', line)):
            check(renamed[1] in names, "a name before the data:", line)
            names[renamed[3]] = renamed[2]
        if "linkat" in line or "renameat" in line:
            published += f'{ENDING}"' in line and " = 0" in line
        # The next event begins: the last one must have got its name for good.
        check(not (names and run.folder in line), "a name that is not on the disk:", line)
    check(published == 6 and not names, published, "names given, not on the disk:", names)
    check_folder(run)


def case_no_proc(writer, scratch):
    require_strace(scratch)
    run = Run(writer, scratch, 6, 3)
    trace(run, "linkat:error=ENOENT")
    check(run.count(WRITTEN) == 6, "not all written:", run.all_notes())
    check_folder(run)


def case_interrupted_calls(writer, scratch):
    require_strace(scratch)
    base = Run(writer, scratch, 4, 3)
    numbers = call_numbers(base, trace(base))
    for call in ("openat", "write", "fdatasync", "fsync", "close"):
        for when in numbers[call]:
            run = Run(writer, scratch, 4, 3)
            trace(run, f"{call}:error=EINTR:when={when}")
            check(run.count(WRITTEN) == 4, call, when, "not all written:", run.all_notes())
            check_folder(run)
            run.close()


def case_folder_without_sync(writer, scratch):
    require_strace(scratch)
    run = Run(writer, scratch, 4, 3)
    trace(run, "fsync:error=EINVAL")
    check(run.count(WRITTEN) == 4, "not all written:", run.all_notes())
    check_folder(run)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("case")
    parser.add_argument("writer")
    parser.add_argument("--preload")
    parser.add_argument("--kills", type=int, default=120)
    parser.add_argument("--attempts", type=int, default=4)
    arguments = vars(parser.parse_args())
    name, writer = arguments.pop("case"), arguments.pop("writer")
    case = globals().get("case_" + name.replace("-", "_"))
    if case is None:
        parser.error(f"unknown case {name}")
    wanted = case.__code__.co_varnames[2:case.__code__.co_argcount]
    scratch = tempfile.mkdtemp(prefix="spool-file-faults-")
    try:
        case(writer, scratch, *(arguments[argument] for argument in wanted))
    except CheckFailed as failure:
        sys.exit(f"FAIL: {failure}")
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


if __name__ == "__main__":
    main()
