#!/usr/bin/env python3
"""spoil.py SAMPLES FOLDER: makes a folder of pictures most of which are damaged, out of good ones."""

import shutil
import sys
from pathlib import Path


def spoiled(samples):
    """Name and bytes of each file."""
    jpeg = (samples / "hills.jpg").read_bytes()
    ppm = (samples / "small.ppm").read_bytes()
    middle = len(jpeg) // 2
    yield "good.jpg", jpeg
    yield "good.ppm", ppm
    yield "cut.jpg", jpeg[:middle]
    yield "cut.ppm", ppm[:-1]
    yield "text.jpg", b"this is no picture\n"
    yield "text.ppm", b"this is no picture\n"
    yield "nothing.jpg", b""
    yield "huge.ppm", b"P6 4294967295 4294967295 255\n"
    # The picture goes on where a marker says that something else begins.
    yield "marker.jpg", jpeg[:middle] + b"\xff\xc4\x00\x02" + jpeg[middle:]


def main(samples, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, data in spoiled(samples):
        (folder / name).write_bytes(data)
    (folder / "no picture.txt").write_text("nor called one\n")
    (folder / "folder.jpg").mkdir()


if __name__ == "__main__":
    main(Path(sys.argv[1]), Path(sys.argv[2]))
