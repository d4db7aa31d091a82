"""How cost grows: with producers, languages, arguments and source tags, and with the connectors that hear a change."""

from cost import google_benchmark
from machine import Machine, Spread
from results import Plot, Table

SENDERS = ("library", "straightforward", "bare")


def events_per_second(values_ns):
    return Spread(1e9 / value for value in values_ns)


def series(machine, option, values, quick, languages=2, senders=SENDERS):
    """For each value of an option: wall and processor time of one event, sender by sender."""
    rounds, events = (3, 100) if quick else (15, 400)
    measured = {}
    for value in values:
        texts = machine.texts_of(value if option == "languages" else languages)
        words = [] if option == "languages" else [f"--{option}", value]
        results = machine.bench("bench_EventHandler", "--texts", texts, "--senders", ",".join(senders), "--events",
                                events, "--rounds", rounds, *words)
        measured[value] = {result["name"]: result for result in results}
    return measured


def as_table(title, option, measured):
    rows = []
    for value, results in measured.items():
        library = results["library"]
        ratios = [Spread(a / b for a, b in zip(results[name]["cpuNs"], results["bare"]["cpuNs"])).median
                  for name in ("library", "straightforward") if name in results]
        rows.append([f"{value:,}", events_per_second(library["wallNs"]).text("{:,.0f}"),
                     Spread(ns / 1000 for ns in library["cpuNs"]).text("{:.0f}"),
                     " / ".join(f"{ratio:.2f}" for ratio in ratios)])
    return Table(title, [option, "events a second, until the service has them", "µs of the sender's processor",
                         "library / straightforward to the bare call"], rows)


def as_plot(name, title, option, measured, logarithmic=""):
    curves = {}
    for value, results in measured.items():
        for sender, result in results.items():
            curves.setdefault(sender, []).append([value, Spread(ns / 1000 for ns in result["cpuNs"]).median])
    return Plot(name, title, option, "µs of the sender's processor for an event", curves, logarithmic)


def growth(build, quick):
    tables, plots = [], []
    with Machine(build) as machine:
        machine.start_sink()
        for option, name, values, logarithmic in (
                ("languages", "languages", (1, 2, 5, 10, 20, 30), ""),
                ("arguments", "arguments", (0, 1, 2, 5, 10, 20), ""),
                ("source-tags", "source tags", (0, 1, 10, 100), ""),
                ("producers", "producers", (1, 10, 100, 1000), "x")):
            measured = series(machine, option, values, quick)
            tables.append(as_table(f"Events against {name}, two languages unless said otherwise", name, measured))
            if option != "source-tags":
                plots.append(as_plot(name, f"An event against the number of {name}", name, measured, logarithmic))
    return [], tables, plots


def change_signal(build, quick):
    changes = 20 if quick else 100
    rows, curve = [], []
    with Machine(build) as machine:
        machine.start_sink()
        for connectors in (1, 10, 100, 1000):
            result = machine.bench("bench_EventlistHandlerDBusConnectorRead", "changes", connectors, changes)[0]
            cpu, wall = (Spread(ns / 1000 for ns in result[kind]) for kind in ("cpuNs", "wallNs"))
            rows.append([f"{connectors:,}", wall.text("{:,.0f}"), cpu.text("{:,.0f}"), f"{cpu.median / connectors:.1f}"])
            curve.append([connectors, cpu.median])
    return [], [Table("One change of the list, told to many connectors of one process",
                      ["connectors", "µs until the last has heard", "µs of the processor", "each"], rows)], \
        [Plot("changes", "A change signal to many connectors of one process", "connectors", "µs of the processor",
              {"all connectors": curve}, "xy")]


def public_steps(build, quick):
    with Machine(build) as machine:
        times = google_benchmark(machine, "bench_EventlistHandlerConvenienceFunctions",
                                 f"--benchmark_repetitions={1 if quick else 5}", "--benchmark_min_time=0.05")
    rows = {}
    for case, values in times.items():
        name, languages, arguments = case.split("/")
        rows.setdefault((int(languages), int(arguments)), {})[name] = Spread(ns / 1000 for ns in values).text("{:.1f}")
    return [], [Table("The public steps that make a description: µs of the processor",
                      ["languages", "arguments", "generateMetaData", "generateDescriptionTextlist"],
                      [[*key, row["generateMetaData"], row["generateDescriptionTextlist"]]
                       for key, row in rows.items()])], []
