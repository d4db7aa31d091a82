#!/usr/bin/env python3
"""Measures the rows that are asked for and writes the document; scripts/benchmark builds everything and calls this."""

import argparse
import json
import os
import platform
import re
import subprocess
import sys
import time
from pathlib import Path

import cost
import document
import eventlist
import growth
from results import Result

# In the order of the document.
ROWS = {
    "bus-instructions": cost.bus_instructions,
    "bus-cpu": cost.bus_cpu,
    "system-calls": cost.system_calls,
    "round-trips": cost.round_trips,
    "connectors": cost.connectors,
    "standstill": cost.standstill,
    "spool": cost.spool,
    "async-call": cost.async_call,
    "provider": cost.provider,
    "other-platforms": cost.other_platforms,
    "growth": growth.growth,
    "change-signal": growth.change_signal,
    "public-steps": growth.public_steps,
    "service": eventlist.service,
}


def machine_text():
    """What these figures are figures of."""
    information = Path("/proc/cpuinfo").read_text(encoding="utf-8")
    model = re.search(r"^model name\s*: (.*)$", information, re.MULTILINE)
    system = re.search(r'^PRETTY_NAME="(.*)"$', Path("/etc/os-release").read_text(encoding="utf-8"), re.MULTILINE)
    compiler = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()[0]
    return f"{model[1] if model else platform.machine()}, {os.cpu_count()} processors, {system[1] if system else ''}, " \
           f"Linux {platform.release().split('-')[0]}, {compiler}"


def measure(name, build, quick):
    begin, load = time.monotonic(), os.getloadavg()[0]
    print(f"-- {name}", flush=True)
    figures, tables, *plots = ROWS[name](build, quick)
    result = Result(name, f"{time.strftime('%Y-%m-%d %H:%M')}, load {load:.1f} before", figures, tables,
                    plots[0] if plots else [])
    for figure in figures:
        print(f"{figure.what}: {figure.today}" + (f" (must: {figure.must})" if figure.must else "") +
              ("" if figure.is_met in (True, None) else "  MISSED"))
    for table in tables:
        print(table.text())
    print(f"   {time.monotonic() - begin:.0f} s", flush=True)
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--only", choices=ROWS, metavar="ROW", action="append")
    parser.add_argument("--output", type=Path)
    options = parser.parse_args()

    # What was measured before stays, so that one row can be measured anew.
    kept = options.build / ("results-quick.json" if options.quick else "results.json")
    stored = json.loads(kept.read_text(encoding="utf-8")) if kept.exists() else {}
    failed = []
    for name in options.only or ROWS:
        try:
            stored[name] = measure(name, options.build, options.quick).to_json()
        except (RuntimeError, AssertionError, OSError, subprocess.SubprocessError) as problem:
            print(f"{name} FAILED: {problem}", file=sys.stderr)
            failed.append(name)
        kept.write_text(json.dumps(stored), encoding="utf-8")
    if options.output:
        results = [Result.from_json(stored[name]) for name in ROWS if name in stored]
        document.write(options.output, results, machine_text(), options.quick)
        print(f"written: {options.output}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
