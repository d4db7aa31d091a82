"""What an event, a producer, a call and a file cost: the rows of the table that have a limit."""

import json
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

from machine import FarBus, Machine, Spread, freeze, thaw
from results import Figure, Table

LANGUAGES = (2, 10, 30)
# What a module author might take instead, all with the same ready-made bytes.
OTHER_ROADS = ("bare", "straightforward", "libdbus", "sdbus")


def joined(values, form="{:.2f}"):
    return " / ".join(form.format(value) for value in values)


def against(ratios, limits):
    return all(ratio <= limit for ratio, limit in zip(ratios, limits))


def event_instructions(build, events, program="bench_EventHandler", languages=LANGUAGES,
                       senders="library,straightforward,bare"):
    """Instructions of one event: for each number of languages, sender by sender."""
    counts = {}
    with Machine(build) as machine:
        machine.start_sink()
        for number in languages:
            phases = machine.count(program, "--texts", machine.texts_of(number), "--senders", senders, "--events", events)
            counts[number] = {sender: instructions / events for sender, instructions in phases.items()}
    return counts


def ratios_to(counts, name, base):
    return [count[name] / count[base] for count in counts.values()]


def bus_instructions(build, quick):
    counts = event_instructions(build, 50 if quick else 150)
    ratios = ratios_to(counts, "library", "bare")
    limits = (1.15, 1.35, 1.65)
    table = Table("Instructions of one event, all threads (callgrind)",
                  ["languages", "library", "straightforward", "bare call", "library / bare", "straightforward / bare"],
                  [[number, f"{count['library']:,.0f}", f"{count['straightforward']:,.0f}", f"{count['bare']:,.0f}",
                    f"{count['library'] / count['bare']:.2f}", f"{count['straightforward'] / count['bare']:.2f}"]
                   for number, count in counts.items()])
    return [Figure("event on the bus road / bare call, instructions of all threads; 2 / 10 / 30 languages",
                   joined(limits), joined(ratios), against(ratios, limits),
                   joined(ratios_to(counts, "straightforward", "bare")))], [table]


def bus_cpu(build, quick):
    rounds, events = (10, 50) if quick else (240, 200)
    ratios, straightforward, rows = [], [], []
    with Machine(build) as machine:
        machine.start_sink()
        for number in LANGUAGES:
            results = machine.bench("bench_EventHandler", "--texts", machine.texts_of(number), "--senders",
                                    ",".join(("library", *OTHER_ROADS)), "--events", events, "--rounds", rounds)
            cpu = {result["name"]: [value / 1000 for value in result["cpuNs"]] for result in results}
            to_bare = {name: Spread(a / b for a, b in zip(values, cpu["bare"])) for name, values in cpu.items()}
            ratios.append(to_bare["library"].median)
            straightforward.append(to_bare["straightforward"].median)
            rows += [[number, f"{results[0]['bytes']:,}", name, Spread(values).text("{:.0f}"), to_bare[name].text()]
                     for name, values in cpu.items()]
    limits = (1.25, 1.35, 1.60)
    return [Figure("the same, processor time of the sender, taking turns in one run", joined(limits), joined(ratios),
                   against(ratios, limits), joined(straightforward))], \
        [Table(f"Processor time of the sender for one event: median of {rounds} rounds, and between which values four "
               "of five rounds lie",
               ["languages", "bytes of text", "sender", "µs", "ratio to the bare call"], rows)]


def system_calls(build, quick):
    """By the difference of two runs, so that what a start needs does not count."""
    few, many = (50, 150) if quick else (100, 1100)
    per_event = {}
    with Machine(build) as machine:
        machine.start_sink()
        for sender in ("library", "straightforward", "bare"):
            lines = []
            for events in (few, many):
                trace = machine.folder / "trace"
                machine.bench("bench_EventHandler", "--texts", machine.texts_of(2), "--senders", sender, "--events",
                              events, without=("TZ",),
                              prefix=("strace", "-f", "-qq", "-e", "trace=%file,%desc", "-o", trace))
                # Whatever has to do with the time zone names its file.
                lines.append(sum("localtime" in line for line in trace.read_text(encoding="utf-8").splitlines()))
            per_event[sender] = (lines[1] - lines[0]) / (many - few)
    return [Figure("extra system calls per event with TZ unset", "1 a minute", f"{per_event['library']:.3f} an event",
                   per_event["library"] - per_event["bare"] < 0.01, f"{per_event['straightforward']:.2f} an event")], []


def round_trips(build, _quick):
    """With a bus that is far away, time tells the round trips."""
    round_trip_s, further = 0.1, 20
    with Machine(build) as machine:
        machine.start_sink()
        with FarBus(machine, round_trip_s / 2) as far:
            machine.environment["DBUS_SYSTEM_BUS_ADDRESS"] = far.address
            result = machine.bench("bench_DBusConnectorBase", "times", further + 1)[0]
    first, *later = (ns / 1e9 / round_trip_s for ns in result["wallNs"])
    return [Figure(f"blocking round trips: the first producer's connector / each of {further} further ones", "1 / 0",
                   f"{first:.1f} / {max(later):.1f}", round(first) <= 1 and round(max(later)) == 0)], []


def connector_counts(build, numbers):
    with Machine(build) as machine:
        machine.start_sink()
        phases = machine.count("bench_DBusConnectorBase", "connectors", *numbers)
        heap = machine.bench("bench_DBusConnectorBase", "connectors", *numbers)
    further = 50
    instructions = {kind: [phases[f"{kind} {number}"] / further for number in numbers]
                    for kind in ("connector", "producer")}
    heap_bytes = {kind: [result["heapBytes"] for result in heap if result["kind"] == kind]
                  for kind in ("connector", "producer")}
    return instructions, heap_bytes


def connectors(build, _quick):
    instructions, heap_bytes = connector_counts(build, (100, 1000, 3000))
    counts, heap = instructions["connector"], heap_bytes["connector"]
    return [Figure("instructions per further producer's connector, when 100 / 1000 / 3000 are there",
                   "flat, 10,000", joined(counts, "{:,.0f}"), max(counts) < 10000 and max(counts) < 2 * min(counts)),
            Figure("heap per further connector", "512 B", f"{max(heap)} B", max(heap) <= 512),
            Figure("a whole further producer, with its event writer: instructions, heap", "",
                   f"{joined(instructions['producer'], '{:,.0f}')}, {max(heap_bytes['producer'])} B")], []


def call_ratio(build, calls):
    with Machine(build) as machine:
        machine.start_sink()
        phases = machine.count("bench_DBusConnectorBase", "calls", calls)
    return phases["connector"] / phases["bare"]


def async_call(build, quick):
    ratio = call_ratio(build, 200 if quick else 500)
    return [Figure("asyncCallHelper / bare asyncCall, instructions with the answer", "1.03", f"{ratio:.3f}",
                   ratio <= 1.03)], []


def provider_counts(build, arguments, events):
    with Machine(build) as machine:
        machine.start_sink()
        phases = machine.count("bench_EventsDBusProviderBaseClass", machine.texts_of(2), arguments, events)
    return {name: instructions / events for name, instructions in phases.items()}


def provider(build, quick):
    counts = {arguments: provider_counts(build, arguments, 50 if quick else 100) for arguments in (0, 2, 20)}
    ratio = counts[20]["provider"] / counts[20]["letter"]
    return [Figure("provider, 20 arguments / conversion by the letter, instructions", "0.80", f"{ratio:.2f}",
                   ratio <= 0.8)], \
        [Table("A provider's event, from the dictionary to the bus, in two languages: instructions",
               ["arguments", "provider", "by the letter", "ratio"],
               [[arguments, f"{count['provider']:,.0f}", f"{count['letter']:,.0f}",
                 f"{count['provider'] / count['letter']:.2f}"] for arguments, count in counts.items()])]


class SpoolInMemory:
    """The compiled-in spool folder as a link to a folder in memory, for the time of a measurement."""

    def __init__(self, build):
        cache = (Path(build) / "CMakeCache.txt").read_text(encoding="utf-8")
        root = re.search(r"^EVENTLISTHANDLER_DATA_ROOT:\w+=(.*)$", cache, re.MULTILINE)[1]
        self.link = Path(root) / "var" / "EventToFileData"
        self.folder = None

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="spool-", dir="/dev/shm")
        self.link.parent.mkdir(parents=True, exist_ok=True)
        if self.link.is_symlink():
            self.link.unlink()
        elif self.link.exists():
            self.link.rmdir()
        self.link.symlink_to(self.folder)

    def __exit__(self, *_):
        self.link.unlink()
        shutil.rmtree(self.folder)


def google_benchmark(machine, name, *options):
    """Times of each repetition in nanoseconds of the processor, by the name of the case."""
    out = machine.folder / "google.json"
    done = subprocess.run([machine.programs_folder / name, machine.programs_folder / "texts",
                           f"--benchmark_out={out}", "--benchmark_out_format=json", *options],
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False,
                          env=machine.environment)
    runs = json.loads(out.read_text(encoding="utf-8"))["benchmarks"] if done.returncode == 0 else []
    if not runs or any(run.get("error_occurred") for run in runs):
        raise RuntimeError(f"{name} failed: {done.stderr}")
    times = {}
    for run in runs:
        if run["run_type"] == "iteration":
            times.setdefault(run["run_name"].split("/iterations")[0], []).append(run["cpu_time"])
    return times


def spool(build, quick):
    with Machine(build) as machine, SpoolInMemory(build):
        machine.start_sink()
        times = google_benchmark(machine, "bench_EventlistHandlerEventToFile",
                                 f"--benchmark_repetitions={3 if quick else 15}",
                                 "--benchmark_enable_random_interleaving=true")
    road, finished, made, bare = (
        {number: Spread(value / 1000 for value in times[f"{name}/{number}"]) for number in LANGUAGES}
        for name in ("fileRoad", "finishedObject", "metaDataObject", "bareSequence"))
    ratios = [road[number].median / bare[number].median for number in LANGUAGES]
    return [Figure("event on the file road (build, write, durable) / the bare durable sequence of the same bytes, in "
                   "memory, processor time; 2 / 10 / 30 languages", "1.60", joined(ratios), max(ratios) <= 1.6)], \
        [Table("An event on the file road: µs of the processor, median and between which values four of five "
               "repetitions lie. The platform's part is to write an object that is there already; a part of the rest is to "
               "make its metadata", ["languages", "file road", "the platform's part", "making the metadata object",
                                     "bare sequence", "file road / bare", "platform's part / bare"],
               [[number, *(spread[number].text("{:.0f}") for spread in (road, finished, made, bare)), f"{ratio:.2f}",
                 f"{finished[number].median / bare[number].median:.2f}"]
                for number, ratio in zip(LANGUAGES, ratios)])]


def stand_still(build, what, sender, events):
    with Machine(build) as machine:
        machine.start_sink()
        program = machine.start(machine.programs_folder / "bench_EventlistHandlerDBusConnectorWrite",
                                machine.texts_of(5), sender, events)
        program.wait_for("ready")
        stopped = machine.sink if what == "service" else machine.bus
        freeze(stopped)
        program.type("\n")
        program.wait_for("sent")
        program.type("\n")
        program.wait_for("made")
        held = {name: machine.resident_mib(process.process.pid)["VmRSS"]
                for name, process in (("sender", program), ("daemon", machine.bus))}
        thaw(stopped)
        program.type("\n")
        program.wait_for("}")
        if program.wait() != 0:
            raise RuntimeError(f"the sender failed: {program.err}")
        return dict(json.loads(program.lines()[-1]), **held)


def standstill(build, quick):
    events = 5000 if quick else 100000
    runs = {(what, sender): stand_still(build, what, sender, events)
            for what in ("service", "daemon") for sender in ("library", "bare")}
    ours = [runs[what, "library"] for what in ("service", "daemon")]
    new = max(run["newProducerMs"] for run in ours)
    worst = max(run["worstMs"] for run in ours)
    table = Table(f"{events:,} events while somebody stands still: how long the caller waits, in ms, and who holds them",
                  ["stopped", "sender", "median", "999 of 1000", "worst", "a new producer", "sender MiB", "daemon MiB"],
                  [[what, sender, f"{run['medianMs']:.3f}", f"{run['p999Ms']:.2f}", f"{run['worstMs']:.1f}",
                    f"{run['newProducerMs']:.2f}", f"{run['sender']:.0f}", f"{run['daemon']:.0f}"]
                   for (what, sender), run in runs.items()])
    return [Figure("new producer while the service is stopped and the daemon's limit is reached, or the daemon is "
                   "stopped", "100 ms, valid afterwards",
                   f"{new:.2f} ms, {'valid' if all(run['isValidAfterwards'] for run in ours) else 'NOT valid'}",
                   new < 100 and all(run["isValidAfterwards"] for run in ours), "25 s, never valid"),
            Figure(f"caller's worst logEvent in {events:,} with the service / the daemon stopped", "10 ms",
                   joined([run["worstMs"] for run in ours], "{:.1f}") + " ms", worst < 10)], [table]


def other_platforms(build, quick):
    """Beside the stand-in: the same event with other text and time services."""
    events = 50 if quick else 100
    languages = (10,) if quick else LANGUAGES
    programs = (("the stand-in", "bench_EventHandler"), ("answers from memory", "bench_EventHandler_Memory"),
                ("each text looked up each time", "bench_EventHandler_Plain"))
    rows = []
    for name, program in programs:
        counts = event_instructions(build, events, program, languages, "library,bare")
        rows.append([name, joined(ratios_to(counts, "library", "bare")),
                     joined([count["library"] - count["bare"] for count in counts.values()], "{:,.0f}")])
    return [], [Table(f"The same event with other text and time services; {joined(languages, '{}')} languages",
                      ["services of the platform", "library / bare call, instructions", "instructions above the bare call"],
                      rows)]
