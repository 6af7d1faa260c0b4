#!/usr/bin/env python3
"""Writes the measured part of docs/cache_policy.md from the results of cache_policy.

The part between the two markers is replaced; everything else on the page is written by hand and
stays.
"""

import argparse
import json
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BEGIN = "<!-- measured: begin; written by tools/cache_policy_page.py -->"
END = "<!-- measured: end -->"

OURS = "libzeb"
TO_BEAT = "LRU"
BEST = "GDSF"


def percent(share):
    return f"{share * 100:.1f}"


def by_policy(cell):
    return {outcome["policy"]: outcome for outcome in cell["outcomes"]}


def met(cell):
    outcomes = by_policy(cell)
    return outcomes[OURS]["saved"] > outcomes[TO_BEAT]["saved"]


def row(cell):
    outcomes = by_policy(cell)
    shares = " | ".join(f"{percent(outcome['saved'])} ({percent(outcome['hits'])})"
                        for outcome in cell["outcomes"])
    distance = (outcomes[OURS]["saved"] - outcomes[BEST]["saved"]) * 100
    verdict = "met" if met(cell) else "**missed**"
    return f"| {cell['workload']} | {cell['percent']} % | {shares} | {distance:+.1f} | {verdict} |"


def measured_part(cells):
    policies = [outcome["policy"] for outcome in cells[0]["outcomes"]]
    requests = ", ".join(f"{count:,}" for count in sorted({cell["requests"] for cell in cells}))
    lines = [
        f"Share of cost saved (share of requests that hit), in percent, over {requests} requests.",
        f"The goal is to save more than {TO_BEAT}.",
        "",
        f"| workload | cache | {' | '.join(policies)} | to {BEST} | |",
        "| --- | ---: |" + " ---: |" * (len(policies) + 1) + " --- |",
    ]
    return "\n".join(lines + [row(cell) for cell in cells])


def with_measured_part(page, part):
    before, begin, rest = page.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"docs/cache_policy.md lacks the markers {BEGIN} and {END}")
    return f"{before}{BEGIN}\n\n{part}\n\n{END}{after}"


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--results", type=Path,
                           default=ROOT / "build/release/bench/cache_policy.json",
                           help="the results (default: those of the release build)")
    arguments.add_argument("--page", type=Path, default=ROOT / "docs/cache_policy.md",
                           help="the page (default: docs/cache_policy.md)")
    options = arguments.parse_args()

    cells = json.loads(options.results.read_text())
    options.page.write_text(with_measured_part(options.page.read_text(), measured_part(cells)))
    missed = [cell for cell in cells if not met(cell)]
    for cell in missed:
        print(f"saves no more than {TO_BEAT}: {cell['workload']}, {cell['percent']} %",
              file=sys.stderr)


if __name__ == "__main__":
    main()
