#!/usr/bin/env python3
"""Checks that every include runs downward through the house.

    check_floors.py [<repository>]

A room is a folder of src/ and stands on a floor. The rules:

  floors     a room includes only rooms on its own floor or below
  cycles     no two rooms include each other, on one floor either, and no file includes itself
             through others
  private    a header in <room>/detail/ is included by its own room and that room's tests only
  contract   include/ includes nothing of src/, and the C headers nothing of the C++ SDK; the
             contract tests, the examples and the tools see public headers only
  readable   every quoted include in src/ and include/ names a file that exists, by its path from
             src/, from include/ or from the including file's own folder

Prints one line for each arrow that breaks a rule, and exits with 1 if there is any.
"""

import os
import re
import sys
from pathlib import Path

FLOORS = {
    "util": 0, "platform": 0, "base": 0,
    "memory": 1,
    "atoms": 2,
    "registry": 3,
    "errors": 4, "events": 4,
    "container": 5, "buffers": 5,
    "streams": 6, "cache": 6, "filters": 6, "inspect": 6,
    "frame": 7,
}

SOURCES = {".h", ".hpp", ".inc", ".c", ".cpp"}
COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)
INCLUDE = re.compile(r"^[ \t]*#[ \t]*include[ \t]*(.*?)[ \t]*$", re.MULTILINE)


def includes(text):
    """The operands of the #include lines outside comments, such as '"base/list.h"'."""

    def blank(match):
        kept = match.group(0)
        return kept if kept.startswith('"') else re.sub(r"[^\n]", " ", kept)

    return INCLUDE.findall(COMMENT_OR_TEXT.sub(blank, text))


class Tree:
    """The first-party files of a repository, each with the files that it includes."""

    def __init__(self, root):
        self.root = root
        self.faults = []
        self.arrows = {}
        for top in ("src", "include", "tests", "examples", "tools"):
            for path in sorted((root / top).rglob("*")):
                if path.suffix in SOURCES:
                    self.arrows[path.relative_to(root)] = []
        for path in self.arrows:
            for operand in includes((root / path).read_text(encoding="utf-8")):
                self.follow(path, operand)

    def fault(self, path, message):
        self.faults.append(f"{path}: {message}")

    def follow(self, path, operand):
        strict = path.parts[0] in ("src", "include")
        name = operand[1:-1]
        if not re.fullmatch(r'"[^"]+"|<[^>]+>', operand):
            if strict:
                self.fault(path, f"cannot read what #include {operand} names")
            return
        for folder in (path.parent, Path("src"), Path("include")):
            target = Path(os.path.normpath(folder / name))
            if target in self.arrows:
                self.arrows[path].append(target)
                return
        if strict and operand.startswith('"'):
            self.fault(path, f"{operand} names no file of src/ or include/")


def room(path):
    """The room that a file of src/ belongs to, else None."""
    return path.parts[1] if path.parts[0] == "src" and len(path.parts) > 2 else None


def tested_room(path):
    return path.parts[1] if path.parts[0] == "tests" and len(path.parts) > 2 else None


def check_rooms_have_floors(tree):
    for path in tree.arrows:
        if path.parts[0] == "src" and room(path) not in FLOORS:
            tree.fault(path, "stands in no room that has a floor")


def check_arrow(tree, path, target):
    here, there = room(path), room(target)
    if here in FLOORS and there in FLOORS and FLOORS[here] < FLOORS[there]:
        tree.fault(path, f"floor {FLOORS[here]} includes {target} on floor {FLOORS[there]}")
    if there and "detail" in target.parts and there not in (here, tested_room(path)):
        tree.fault(path, f"includes {target}, which is private to {there}")
    if there and path.parts[0] in ("include", "examples", "tools"):
        tree.fault(path, f"includes {target}, which is not public")
    if there and tested_room(path) == "contract":
        tree.fault(path, f"a contract test includes {target}, which is not public")
    if path.parts[0] == "include" and path.suffix == ".h" and "sdk" in target.parts:
        tree.fault(path, f"a C header includes {target} of the C++ SDK")


def find_cycle(graph):
    """One cycle of a graph {node: iterable of nodes}, as a list that ends where it began."""
    done = set()

    def walk(node, trail):
        if node in trail:
            return trail[trail.index(node):] + [node]
        if node in done:
            return None
        for follower in graph.get(node, ()):
            found = walk(follower, trail + [node])
            if found:
                return found
        done.add(node)
        return None

    for start in graph:
        found = walk(start, [])
        if found:
            return found
    return None


def check_cycles(tree):
    rooms = {}
    for path, targets in tree.arrows.items():
        for target in targets:
            if room(path) and room(target) and room(path) != room(target):
                rooms.setdefault(room(path), []).append(room(target))
    for kind, graph in (("files", tree.arrows), ("rooms", rooms)):
        cycle = find_cycle(graph)
        if cycle:
            tree.faults.append(f"a cycle of {kind}: " + " -> ".join(map(str, cycle)))


def check(root):
    """The faults of the repository at `root`, one line each."""
    tree = Tree(Path(root))
    check_rooms_have_floors(tree)
    for path, targets in tree.arrows.items():
        for target in targets:
            check_arrow(tree, path, target)
    check_cycles(tree)
    if not any(path.parts[0] == "src" for path in tree.arrows):
        tree.faults.append(f"{root}: there is no src/ to check")
    return tree.faults


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent
    faults = check(root)
    for line in faults:
        print(line)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
