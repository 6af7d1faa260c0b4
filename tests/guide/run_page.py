#!/usr/bin/env python3
"""run_page.py <page.md> <prefix> <folder>: does what a page of the guide tells its reader to do.

Files are the fenced blocks with a title (```cpp title=host.cpp). The commands of every ```sh block
are run in the folder, in order, with libzeb found under <prefix>; a ```text block after them is what
they must print, word for word. A page without commands, or whose commands print nothing that the
page promises, is a failure: it would test nothing.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

FENCE = re.compile(r"^```(\w+)(?: title=(\S+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def run(commands, folder, environment):
    done = subprocess.run(["bash", "-euo", "pipefail", "-c", commands], cwd=folder,
                          env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, timeout=300, check=False)
    if done.returncode != 0:
        sys.exit(f"$ {commands}\n{done.stdout}\nexit status {done.returncode}")
    return done.stdout


def main():
    page, prefix, folder = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    environment = dict(os.environ, CMAKE_PREFIX_PATH=str(prefix), LC_ALL="C.UTF-8",
                       PKG_CONFIG_PATH=str(prefix / "lib/pkgconfig"),
                       LD_LIBRARY_PATH=str(prefix / "lib"),
                       PATH=f"{prefix / 'bin'}{os.pathsep}{os.environ['PATH']}", CMAKE_GENERATOR="Ninja")
    checked = 0
    printed = None
    for language, title, text in FENCE.findall(page.read_text(encoding="utf-8")):
        if title:
            (folder / title).write_text(text, encoding="utf-8")
        elif language == "sh":
            printed = run(text, folder, environment)
        elif language == "text" and printed is not None:
            if printed != text:
                sys.exit(f"the page promises\n{text}\nand the commands print\n{printed}")
            checked += 1
            printed = None
    if checked == 0:
        sys.exit("nothing on this page was checked")
    print(f"{checked} outputs as the page promises")


main()
