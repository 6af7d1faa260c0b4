#!/usr/bin/env python3
"""Generates what follows from share/zeb/zeb.json.

    generate.py pages [--check]      docs/reference/: one page for each interface, and an index
    generate.py tests <folder>       the C++ tables of tests/description/

With --check nothing is written: every page that is missing, different or left over is named, and
the exit status is 1 if there is any.
"""

import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
from description import ROOT, Description  # noqa: E402
from reference_pages import pages  # noqa: E402
from test_tables import test_tables  # noqa: E402

PAGES = ROOT / "docs/reference"


def write(folder, texts):
    """Writes the texts; a file that is right already keeps its time stamp."""
    folder.mkdir(parents=True, exist_ok=True)
    for name, text in texts.items():
        path = folder / name
        if not path.exists() or path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")


def differences(folder, texts):
    """One line for each file of the folder that is not what was generated."""
    there = {path.name for path in folder.glob("*.md")}
    for name, text in texts.items():
        if name not in there:
            yield f"{name} is missing"
        elif (folder / name).read_text(encoding="utf-8") != text:
            yield f"{name} is not what share/zeb/zeb.json says"
    for name in sorted(there - set(texts)):
        yield f"{name} describes nothing"


def main(arguments):
    description = Description.read()
    match arguments:
        case ["pages"]:
            texts = pages(description)
            write(PAGES, texts)
            for name in sorted({path.name for path in PAGES.glob("*.md")} - set(texts)):
                (PAGES / name).unlink()
        case ["pages", "--check"]:
            faults = list(differences(PAGES, pages(description)))
            for fault in faults:
                print(f"docs/reference/: {fault}")
            if faults:
                print("Run tools/generate.py pages.")
            return 1 if faults else 0
        case ["tests", folder]:
            write(Path(folder), test_tables(description))
        case _:
            print(__doc__, file=sys.stderr)
            return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
