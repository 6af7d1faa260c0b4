#!/usr/bin/env python3
"""make_files.py FOLDER: makes the files that the tests copy. The same on each run."""

import gzip
import random
import shutil
import sys
from pathlib import Path


def contents():
    """What is copied both ways: name and bytes."""
    numbers = random.Random(20)
    yield "empty", b""
    yield "one_byte", b"x"
    lines = (f"line {i}: {numbers.randrange(10**6)}\n" for i in range(250000))
    yield "several_mb", "".join(lines).encode()
    yield "binary", bytes(range(256)) * 64 + numbers.randbytes(1 << 20) + bytes(100000)


def packed(data):
    return gzip.compress(data, mtime=0)


def damaged(text):
    """Compressed files that must be refused: name and bytes."""
    whole = packed(text)
    middle = len(whole) // 2
    yield "truncated.gz", whole[:middle]
    yield "no_trailer.gz", whole[:-8]
    yield "flipped.gz", whole[:middle] + bytes([whole[middle] ^ 0x55]) + whole[middle + 1:]
    yield "wrong_checksum.gz", whole[:-8] + bytes([whole[-8] ^ 1]) + whole[-7:]
    yield "plain.gz", text
    yield "nothing.gz", b""


def main(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, data in contents():
        (folder / name).write_bytes(data)
        (folder / f"{name}.gz").write_bytes(packed(data))
    text = (folder / "several_mb").read_bytes()
    for name, data in damaged(text):
        (folder / name).write_bytes(data)
    # A hole: it takes no room.
    with (folder / "three_gib").open("wb") as hole:
        hole.truncate(3 << 30)
    # What two runs of gzip have appended to each other.
    (folder / "two_members.gz").write_bytes(packed(b"tick ") + packed(b"tock"))
    (folder / "two_members").write_bytes(b"tick tock")


if __name__ == "__main__":
    main(Path(sys.argv[1]))
