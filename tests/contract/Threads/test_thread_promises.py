#!/usr/bin/python3
"""What the headers promise about threads, under the thread sanitizer, while the service and the bus are restarted."""

import argparse
import os
import subprocess
import sys

from device import DEADLINE_S, Device, wait_until

RACE = "WARNING: ThreadSanitizer: data race"


def environment():
    """A sanitizer that tells of every race."""
    return dict(os.environ, TSAN_OPTIONS=os.environ["TSAN_OPTIONS"] + " halt_on_error=0")


def expect_no_report(what, code, report):
    if "ThreadSanitizer" in report or code != 0:
        sys.exit(f"{what}: exit code {code}\n{report[:20000]}")


def check_values(program):
    done = subprocess.run([program, "values"], env=environment(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          text=True, check=False, timeout=10 * DEADLINE_S)
    expect_no_report("values", done.returncode, done.stderr)


def check_module(program, rounds):
    with Device() as device:
        device.start_service()
        module = device.start(program, "module", env=dict(environment(), DBUS_SYSTEM_BUS_ADDRESS=device.address))
        module.wait_for("running")

        def events_come():
            """The main thread of the module, and each of its threads, reach the service."""
            known = max((int(event["EventlistId"]) for event in device.events("--count", "1")), default=0)

            def all_told():
                module.type("x")
                module.read()
                new = {event["ModuleName"] for event in device.events("--from-id", str(known + 1))}
                return {"Watched", "Module0", "Module1", "Module2", "Module3"} <= new
            wait_until(all_told, "every thread has logged an event")

        events_come()
        for _ in range(rounds):
            device.kill_service()
            device.start_service()
            events_come()
            device.kill_bus()
            device.start_bus()
            device.wait_for_service()
            events_come()
        module.end_input()
        code = module.wait()
        # What is refused while the service is away gives warnings; those are not looked at here.
        expect_no_report("module", code, "\n".join(line for line in module.err.splitlines()
                                                   if not line.startswith(('"D-Bus interface', "Can't write"))))


def check_planted_race(program):
    done = subprocess.run([program, "race"], env=environment(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          text=True, check=False, timeout=10 * DEADLINE_S)
    if done.returncode == 0 or RACE not in done.stderr or "EventHandlerBaseClass::takeState" not in done.stderr:
        sys.exit(f"the planted race was not found: exit code {done.returncode}\n{done.stderr[:5000]}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--rounds", type=int, default=int(os.environ.get("THREAD_ROUNDS", "1")),
                        help="how often service and bus are restarted (default: $THREAD_ROUNDS, or once)")
    arguments = parser.parse_args()
    check_planted_race(arguments.program)
    check_values(arguments.program)
    check_module(arguments.program, arguments.rounds)
    print(f"no race in values and in a module with {arguments.rounds} restarts of service and bus; the planted one is found")


if __name__ == "__main__":
    main()
