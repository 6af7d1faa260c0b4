#!/usr/bin/env python3
"""Generates what follows from share/zeb/zeb.json.

    generate.py pages [--check]      docs/reference/: one page for each interface, and an index
    generate.py headers [--check]    the tables of include/zeb/sdk/description.hpp
    generate.py tests <folder>       the C++ tables of tests/description/

With --check nothing is written: every file that is missing, different or left over is named, and
the exit status is 1 if there is any.
"""

import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
from description import ROOT, Description  # noqa: E402
from description_header import headers  # noqa: E402
from reference_pages import pages  # noqa: E402
from test_tables import test_tables  # noqa: E402

PAGES = ROOT / "docs/reference"
HEADERS = ROOT / "include/zeb/sdk"
GENERATED_HEADERS = "*_tables.hpp"  # of HEADERS, the others are written by hand


def write(folder, texts):
    """Writes the texts; a file that is right already keeps its time stamp."""
    folder.mkdir(parents=True, exist_ok=True)
    for name, text in texts.items():
        path = folder / name
        if not path.exists() or path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")


def replace(folder, texts, pattern):
    """Writes the texts and removes what else there is of the pattern."""
    write(folder, texts)
    for name in sorted({path.name for path in folder.glob(pattern)} - set(texts)):
        (folder / name).unlink()


def differences(folder, texts, pattern="*.md"):
    """One line for each file of the folder that is not what was generated."""
    there = {path.name for path in folder.glob(pattern)}
    for name, text in texts.items():
        if name not in there:
            yield f"{name} is missing"
        elif (folder / name).read_text(encoding="utf-8") != text:
            yield f"{name} is not what share/zeb/zeb.json says"
    for name in sorted(there - set(texts)):
        yield f"{name} describes nothing"


def report(kind, folder, faults):
    """Prints the faults; the exit status."""
    for fault in faults:
        print(f"{folder.relative_to(ROOT)}/: {fault}")
    if faults:
        print(f"Run tools/generate.py {kind}.")
    return 1 if faults else 0


def main(arguments):
    description = Description.read()
    match arguments:
        case ["pages"]:
            texts = pages(description)
            replace(PAGES, texts, "*.md")
        case ["pages", "--check"]:
            return report("pages", PAGES, list(differences(PAGES, pages(description))))
        case ["headers"]:
            replace(HEADERS, headers(description), GENERATED_HEADERS)
        case ["headers", "--check"]:
            faults = differences(HEADERS, headers(description), GENERATED_HEADERS)
            return report("headers", HEADERS, list(faults))
        case ["tests", folder]:
            write(Path(folder), test_tables(description))
        case _:
            print(__doc__, file=sys.stderr)
            return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
