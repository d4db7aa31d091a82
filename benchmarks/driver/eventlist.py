"""The reference service under load: how fast it stores, answers and starts, with how large a list."""

import sqlite3
import time

from machine import Machine, Spread
from results import Plot, Table

MODULE = "bench_EventlistHandlerDBusConnectorRead"


def newest(machine):
    """The service writes everything that came before a query; so its answer ends a burst."""
    return machine.bench(MODULE, "query", 1, 1)[0]


def send(machine, events, languages=2):
    """Events a second that are in the list, with a sender that costs next to nothing."""
    begin = time.monotonic()
    machine.bench("bench_EventHandler", "--texts", machine.texts_of(languages), "--senders", "sdbus", "--events", events,
                  "--real-service")
    newest(machine)
    return events / (time.monotonic() - begin)


def fill(path, rows):
    """Copies of an event, written past the service while it does not run."""
    with sqlite3.connect(path) as database:
        last = database.execute("SELECT max(id) FROM event").fetchone()[0]
        pattern = database.execute("SELECT max(id) FROM event WHERE module = 'PumpControl'").fetchone()[0]
        missing = rows - database.execute("SELECT count(*) FROM event").fetchone()[0]
        for table in ("event", "content"):
            columns = [row[1] for row in database.execute(f"PRAGMA table_info({table})") if row[1] != "id"]
            names = ",".join(columns)
            database.execute(
                f"WITH RECURSIVE number(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM number WHERE n < ?) "
                f"INSERT INTO {table}(id,{names}) SELECT ? + n,{names} FROM number CROSS JOIN "
                f"(SELECT {names} FROM {table} WHERE id = ?)", (missing, last, pattern))
        database.execute("UPDATE meta SET value = ? WHERE key = 'last_id'", (last + missing,))
    database.close()


def measure(machine, rows, quick):
    """The service with so many rows, from its start on."""
    fill(machine.folder / "eventlist.sqlite", rows)
    size = (machine.folder / "eventlist.sqlite").stat().st_size
    begin = time.monotonic()
    machine.start_list("--max-rows", 10 * rows)
    start_s = time.monotonic() - begin
    memory = [machine.resident_mib(machine.service.process.pid)["VmRSS"]]
    pages = [result["ms"] for result in machine.bench(MODULE, "query", 100, 5 if quick else 50)]
    whole = machine.bench(MODULE, "query", 0, 1)[0]
    memory.append(machine.resident_mib(machine.service.process.pid)["VmHWM"])
    stored = Spread(send(machine, 5000 if quick else 20000) for _ in range(1 if quick else 3))
    machine.stop_list()
    return {"start": start_s, "file": size / 2**20, "pages": Spread(pages), "whole": whole, "stored": stored,
            "memory": memory}


def service(build, quick):
    sizes = (1000, 10000) if quick else (10000, 100000, 1000000)
    measured = {}
    with Machine(build) as machine:
        machine.start_list()
        # So small that a million of them stays below the gibibyte to which the service bounds its list.
        send(machine, 1, languages=1)
        machine.stop_list()
        for rows in sizes:
            measured[rows] = measure(machine, rows, quick)
    table = Table("eventlistd with a list that is long already",
                  ["rows", "file MiB", "start-up s", "newest page of 100, ms", "events stored a second",
                   "resident MiB after start-up", "at most, after the queries"],
                  [[f"{rows:,}", f"{m['file']:.0f}", f"{m['start']:.2f}", m["pages"].text("{:.1f}"),
                    m["stored"].text("{:,.0f}"), f"{m['memory'][0]:.0f}", f"{m['memory'][1]:.0f}"]
                   for rows, m in measured.items()])
    queries = Table("The whole list in one query", ["rows in the list", "rows in the answer", "marked as truncated", "ms"],
                    [[f"{rows:,}", f"{m['whole']['rows']:,}", "yes" if m["whole"]["isTruncated"] else "no",
                      f"{m['whole']['ms']:,.0f}"] for rows, m in measured.items()])
    plot = Plot("list", "eventlistd against the rows of its list", "rows", "events stored a second",
                {"stored": [[rows, m["stored"].median] for rows, m in measured.items()]}, "x")
    return [], [table, queries], [plot]
