"""The machine on which the benchmarks run: a private bus with the limits of a system bus, somebody who takes the
events, and the programs that measure."""

import asyncio
import json
import os
import re
import signal
import statistics
import subprocess
import sys
import threading
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "support"))
# The common texts are not looked at here, but the device asks for their folder.
os.environ.setdefault("EVENTLISTHANDLER_TEXTS", "")

import device  # noqa: E402: found through the path above

# A benchmark takes longer than a test, and a stopped daemon holds some of them up on purpose.
device.DEADLINE_S = 900


class Machine(device.Device):
    """A bus, and what runs on it. Either start_sink() or start_list() gives the service's name an owner."""

    def __init__(self, build):
        super().__init__()
        self.build = Path(build).resolve()
        self.programs_folder = self.build / "benchmarks"
        self.sink = None
        for variable in ("QT_LOGGING_RULES", "QT_MESSAGE_PATTERN", "QDBUS_DEBUG", "DBUS_SESSION_BUS_ADDRESS"):
            self.environment.pop(variable, None)
        # Events of every benchmark carry the same offset, and asking for it costs what it costs on a device.
        self.environment["TZ"] = "Europe/Berlin"

    def texts_of(self, languages):
        return self.programs_folder / "texts" / str(languages)

    def start_sink(self):
        self.sink = self.start(self.programs_folder / "event_sink", device.CENTRAL_SERVICE)
        self.sink.wait_for("ready")

    def start_list(self, *arguments):
        """The real service, without bounds that a benchmark would hit."""
        self.spool.mkdir(parents=True, exist_ok=True)
        self.service = self.start(self.build / "service" / "eventlistd", "--database",
                                  self.folder / "eventlist.sqlite", "--spool", f"{self.spool}/", "--texts", self.texts,
                                  "--sender-rate", 10**9, "--sender-burst", 10**9, "--max-bytes", 2**40, *arguments)
        self.service.wait_for("eventlistd: ready", "err")

    def stop_list(self):
        self.service.stop()
        self.service = None

    def bench(self, name, *words, prefix=(), without=()):
        """Runs a benchmark to its end, without some variables of the environment, and returns its results."""
        done = subprocess.run([str(word) for word in (*prefix, self.programs_folder / name, *words)],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False,
                              timeout=device.DEADLINE_S, preexec_fn=device.die_with_parent,
                              env={key: value for key, value in self.environment.items() if key not in without})
        if done.returncode != 0:
            raise RuntimeError(f"{name} {' '.join(map(str, words))} ended with {done.returncode}: {done.stderr}")
        return results_in(done.stdout)

    def count(self, name, *words):
        """Instructions of all threads, phase by phase, without what the measurement itself costs. Phases of one name
        count together."""
        folder = self.folder / "callgrind"
        folder.mkdir(exist_ok=True)
        for old in folder.iterdir():
            old.unlink()
        self.bench(name, *words, prefix=("valgrind", "--tool=callgrind", "-q", f"--callgrind-out-file={folder}/out"))
        phases = {}
        for path in folder.iterdir():
            text = path.read_text(encoding="utf-8", errors="replace")
            trigger = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
            if trigger:
                instructions = int(re.search(r"^summary: (\d+)", text, re.MULTILINE)[1])
                phases.setdefault(trigger[1], []).append(instructions)
        phases.pop("between", None)
        empty = statistics.mean(phases.pop("empty"))
        return {name: sum(counts) - empty * len(counts) for name, counts in phases.items()}

    def resident_mib(self, process_id):
        status = Path(f"/proc/{process_id}/status").read_text(encoding="utf-8")
        return {key: int(re.search(rf"^{key}:\s+(\d+) kB", status, re.MULTILINE)[1]) / 1024
                for key in ("VmRSS", "VmHWM")}


class FarBus:
    """A way to the bus on which each byte takes its time."""

    def __init__(self, machine, delay_s):
        self.path = machine.folder / "far"
        self.near = str(machine.folder / "bus")
        self.delay_s = delay_s
        self.loop = asyncio.new_event_loop()
        self.thread = threading.Thread(target=self.loop.run_forever, daemon=True)

    @property
    def address(self):
        return f"unix:path={self.path}"

    def __enter__(self):
        self.thread.start()
        server = asyncio.start_unix_server(self.relay, str(self.path))
        asyncio.run_coroutine_threadsafe(server, self.loop).result()
        return self

    def __exit__(self, *_):
        async def end():
            others = asyncio.all_tasks() - {asyncio.current_task()}
            for task in others:
                task.cancel()
            await asyncio.gather(*others, return_exceptions=True)
        asyncio.run_coroutine_threadsafe(end(), self.loop).result()
        self.loop.call_soon_threadsafe(self.loop.stop)
        self.thread.join()

    async def relay(self, reader, writer):
        near_reader, near_writer = await asyncio.open_unix_connection(self.near)
        await asyncio.gather(self.carry(reader, near_writer), self.carry(near_reader, writer))

    async def carry(self, reader, writer):
        while data := await reader.read(65536):
            self.loop.call_later(self.delay_s, writer.write, data)
        self.loop.call_later(self.delay_s, writer.close)


def results_in(output):
    return [json.loads(line) for line in output.splitlines() if line.startswith("{")]


def freeze(program):
    os.kill(program.process.pid, signal.SIGSTOP)


def thaw(program):
    os.kill(program.process.pid, signal.SIGCONT)


class Spread:
    """Several measurements of one thing."""

    def __init__(self, values):
        self.values = sorted(values)

    @property
    def median(self):
        return statistics.median(self.values)

    def quantile(self, share):
        return self.values[round((len(self.values) - 1) * share)]

    def text(self, form="{:.2f}"):
        """The median, and between which values four of five measurements lie."""
        if len(self.values) < 3:
            return form.format(self.median)
        low, high = (form.format(self.quantile(share)) for share in (0.1, 0.9))
        return f"{form.format(self.median)} ({low} to {high})"
