#!/usr/bin/env python3
"""Writes the measured part of docs/performance.md from the benchmark's results.

The part between the two markers is replaced; everything else on the page, the reasons why rows miss
their goal above all, is written by hand and stays. Rows that miss without a written reason, and
reasons whose row does not miss, are named on standard error.
"""

import argparse
import json
import platform
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BEGIN = "<!-- measured: begin; written by tools/performance_page.py -->"
END = "<!-- measured: end -->"
REASONS = "## Rows that miss their goal, and why"

NEW_PAGE = f"""# Performance

What the library's operations cost, and what the same work costs elsewhere. `bench/README.md` tells
what each row does; `make bench` measures anew and rewrites the tables below.

{BEGIN}
{END}

{REASONS}

| case | reason |
| --- | --- |
"""

PEER_PACKAGES = {
    "libabsl-dev": "Abseil",
    "libglib2.0-dev": "GLib",
    "libboost-dev": "Boost",
    "libtbb-dev": "oneTBB",
    "libjemalloc-dev": "jemalloc",
    "libmimalloc-dev": "mimalloc",
    "libsdl2-dev": "SDL",
    "libssl-dev": "OpenSSL",
    "libleveldb-dev": "LevelDB",
    "librocksdb-dev": "RocksDB",
    "libcrypto++-dev": "Crypto++",
    "libc6": "glibc",
    "libstdc++6": "libstdc++",
    "libbenchmark-dev": "Google Benchmark",
}


def output_of(*command):
    """What a command prints, or None when it fails or is not there."""
    try:
        done = subprocess.run(command, capture_output=True, text=True, check=True)
    except (OSError, subprocess.CalledProcessError):
        return None
    return done.stdout.strip()


def first_match(path, pattern):
    try:
        found = re.search(pattern, Path(path).read_text(), re.MULTILINE)
    except OSError:
        return None
    return found.group(1) if found else None


def compiler(build):
    command = first_match(build / "CMakeCache.txt", r"^CMAKE_CXX_COMPILER:[A-Z]+=(.+)$")
    version = output_of(command, "--version") if command else None
    flags = first_match(build / "CMakeCache.txt", r"^CMAKE_CXX_FLAGS_RELEASE:[A-Z]+=(.*)$")
    if not version:
        return "unknown"
    return f"{version.splitlines()[0]}, `{flags}`" if flags else version.splitlines()[0]


def packages():
    versions = []
    for package, name in PEER_PACKAGES.items():
        version = output_of("dpkg-query", "-W", "-f", "${Version}", package)
        versions.append(f"{name} {version}" if version else f"{name} not installed")
    return ", ".join(versions)


def machine(build):
    cores = len(re.findall(r"^processor", Path("/proc/cpuinfo").read_text(), re.MULTILINE))
    rows = {
        "processor": first_match("/proc/cpuinfo", r"^model name\s*:\s*(.+)$") or platform.machine(),
        "cores": cores,
        "system": first_match("/etc/os-release", r'^PRETTY_NAME="?([^"\n]+)') or platform.system(),
        "compiler": compiler(build),
        "packages": packages(),
    }
    return "\n".join(["| machine | |", "| --- | --- |"] +
                     [f"| {name} | {value} |" for name, value in rows.items()])


def number(value):
    if value is None:
        return ""
    if value < 10:
        return f"{value:.2f}"
    return f"{value:.1f}" if value < 1000 else f"{value:.0f}"


def title(row):
    return row["case"] if row["threads"] == 1 else f"{row['case']}, {row['threads']} threads"


def best_peer(row):
    """The time of the fastest peer that the goal speaks of."""
    names = row["against"] or row["peers"].keys()
    return min(row["peers"][name] for name in names if name in row["peers"])


def met(row):
    """Whether the goal is met; None where there is none to meet."""
    if row["limit"] is None:
        return None
    if row["goal"] == "time":
        return row["ours"] <= row["limit"]
    if row["goal"] == "difference":
        return row["ours"] - best_peer(row) <= row["limit"]
    return row["ratio"] <= row["limit"]


def limit(row):
    if row["limit"] is None:
        return ""
    if row["goal"] == "time":
        return f"{row['limit']:g} {row['unit']}"
    names = ", ".join(row["against"])
    most = (f"+{row['limit']:g} {row['unit']}" if row["goal"] == "difference"
            else f"{row['limit']:.2f}")
    return most + (f" ({names})" if names else "")


def table(rows):
    verdicts = {True: "met", False: "**missed**", None: ""}
    lines = ["| case | ours | peers | ratio | limit | |", "| --- | ---: | --- | ---: | ---: | --- |"]
    for row in rows:
        peers = ", ".join(f"{name} {number(value)}"
                          for name, value in sorted(row["peers"].items(), key=lambda peer: peer[1]))
        lines.append(f"| {title(row)} | {number(row['ours'])} {row['unit']} | {peers} "
                     f"| {number(row['ratio'])} | {limit(row)} | {verdicts[met(row)]} |")
    return "\n".join(lines)


def measured_part(results, build):
    areas = list(dict.fromkeys(row["area"] for row in results))
    parts = [
        machine(build),
        "Medians, ours and the peers interleaved in one process, threads pinned. A time is wall time\n"
        "per operation of one thread, also where two threads work at once. The ratio is ours divided\n"
        "by the fastest peer that the limit speaks of.",
    ]
    for area in areas:
        rows = [row for row in results if row["area"] == area]
        parts.append(f"### {area[0].upper()}{area[1:]}\n\n{table(rows)}")
    return "\n\n".join(parts)


def with_measured_part(page, part):
    before, begin, rest = page.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"docs/performance.md lacks the markers {BEGIN} and {END}")
    return f"{before}{BEGIN}\n\n{part}\n\n{END}{after}"


def written_reasons(page):
    """The first cells of the table of reasons."""
    _, _, section = page.partition(REASONS)
    rows = re.findall(r"^\| (.+?) \|", section, re.MULTILINE)
    return [row for row in rows if row not in ("case", "---")]


def compare_with_reasons(results, page):
    reasons = written_reasons(page)
    missed = [f"{row['area']}: {title(row)}" for row in results if met(row) is False]
    for row in missed:
        if row not in reasons:
            print(f"misses its goal, no reason is written: {row}", file=sys.stderr)
    for reason in reasons:
        if reason not in missed:
            print(f"a reason is written, but this run met the goal: {reason}", file=sys.stderr)


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--build", type=Path, default=ROOT / "build/release",
                           help="the build folder (default: build/release)")
    arguments.add_argument("--results", type=Path,
                           help="the results (default: bench/results.json in the build folder)")
    arguments.add_argument("--page", type=Path, default=ROOT / "docs/performance.md",
                           help="the page (default: docs/performance.md)")
    options = arguments.parse_args()

    results = json.loads((options.results or options.build / "bench/results.json").read_text())
    page = options.page.read_text() if options.page.exists() else NEW_PAGE
    page = with_measured_part(page, measured_part(results, options.build))
    options.page.parent.mkdir(parents=True, exist_ok=True)
    options.page.write_text(page)
    compare_with_reasons(results, page)


if __name__ == "__main__":
    main()
