#!/usr/bin/env python3
"""A producer that lives longer than main() writes its spool files before, in and after it."""

import json
import os
import subprocess
import sys
from pathlib import Path


def main():
    program, spool = sys.argv[1], Path(os.environ["EVENTLISTHANDLER_SPOOL"])
    for file in spool.glob("*.event.json"):
        file.unlink()
    done = subprocess.run([program], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, timeout=60)
    if done.returncode != 0:
        sys.exit(f"exit code {done.returncode}: {done.stdout}")
    events = []
    for number in range(3):
        file = spool / f"logEvent{number}.event.json"
        if not file.exists():
            sys.exit(f"{file.name} is missing: {done.stdout}")
        events.append(json.loads(file.read_text(encoding="utf-8"))["EventId"])
        file.unlink()
    if events != ["before main", "in main", "after main"]:
        sys.exit(f"the events are {events}")
    print("three events of a producer that outlives main()")


if __name__ == "__main__":
    main()
