#!/usr/bin/env python3
"""Fails when an event, a call, a connector or a provider's event has become dearer: limits.py BUILD-FOLDER

Instructions are counted, so that a busy machine makes no difference; only the ratio to the bare call counts, so that
another compiler or another QtDBus makes little.
"""

import sys
from dataclasses import dataclass
from pathlib import Path

import cost

# A figure that is above its limit is counted once more before it is believed.
ATTEMPTS = 2


@dataclass
class Limit:
    promised: float
    # From run to run the figures differ by about 2 %, because the two threads share out their work anew each time, and
    # the build of the tests has its asserts on.
    margin: float = 0.05

    def is_kept(self, value):
        return value <= self.promised * (1 + self.margin)


EVENT_LIMITS = {2: Limit(1.15), 10: Limit(1.35), 30: Limit(1.65)}
# Nearly all of it is the same code on both sides.
CALL_LIMIT = Limit(1.03, 0.02)
CONNECTOR_LIMIT = Limit(10000)
HEAP_LIMIT = Limit(512, 0)
PROVIDER_LIMIT = Limit(0.8)


def event_figures(build):
    counts = cost.event_instructions(build, 100, senders="library,bare")
    ratios = cost.ratios_to(counts, "library", "bare")
    return [(f"event on the bus road / bare call, {languages} languages", ratio, EVENT_LIMITS[languages])
            for languages, ratio in zip(EVENT_LIMITS, ratios)]


def call_figures(build):
    return [("asyncCallHelper / bare asyncCall", cost.call_ratio(build, 300), CALL_LIMIT)]


def connector_figures(build):
    instructions, heap_bytes = cost.connector_counts(build, (100, 1000))
    return [("instructions per further connector", max(instructions["connector"]), CONNECTOR_LIMIT),
            ("heap per further connector", max(heap_bytes["connector"]), HEAP_LIMIT)]


def provider_figures(build):
    counts = cost.provider_counts(build, 20, 50)
    return [("provider / conversion by the letter, 20 arguments", counts["provider"] / counts["letter"], PROVIDER_LIMIT)]


def is_kept(measure, build):
    for _ in range(ATTEMPTS):
        figures = measure(build)
        for what, value, limit in figures:
            print(f"{what}: {value:,.3f}, promised {limit.promised:,}, allowed {limit.margin:.0%} more", flush=True)
        if all(limit.is_kept(value) for _, value, limit in figures):
            return True
    return False


def main():
    build = Path(sys.argv[1])
    broken = [measure.__name__ for measure in (event_figures, call_figures, connector_figures, provider_figures)
              if not is_kept(measure, build)]
    if broken:
        print(f"Dearer than the limit allows: {', '.join(broken)}. scripts/benchmark tells more.")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
