#!/usr/bin/env python3
"""run_commands.py <page> <build> <prefix> <folder>: runs the commands that a page shows.

What is run is what stands on the page, but for the substitutions of pages.py: a path of the
reader's becomes one of the test's. The files that the page takes for granted are made first. Every
command has to succeed.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True

import pages

PREAMBLE = """cmake_minimum_required(VERSION 3.25)
project(reader LANGUAGES C CXX)
add_executable(my_host host.c)
add_library(my_module MODULE module.c)
set_target_properties(my_module PROPERTIES PREFIX "")
"""
# Times, and sizes, in which the length of a path counts.
VARYING = re.compile(r"[\d.]+ (?:ns|us|ms|s)\b|\d{1,3}(?:,\d{3})+")


class Reader:
    """Somebody who does what a page says, in a folder of his own."""

    def __init__(self, page, build, prefix, folder):
        self.page = page
        self.build = build
        self.prefix = prefix
        self.folder = folder
        self.printed = ""
        self.environment = dict(os.environ, CMAKE_PREFIX_PATH=str(prefix), LC_ALL="C.UTF-8",
                                CMAKE_GENERATOR="Ninja")

    def run(self, commands):
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", commands], cwd=self.folder,
                              env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=300, check=False)
        print(f"$ {commands}\n{done.stdout}")
        if done.returncode != 0:
            sys.exit(f"exit status {done.returncode}")
        self.printed += done.stdout
        return done.stdout

    def make_what_is_taken_for_granted(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        for name in ("my-text.txt", "letter.txt"):
            shutil.copy(pages.TOP / "README.md", self.folder / name)
        module = self.build / "tests/tools/zebinfo_modules/publishing.so"
        shutil.copy(module, self.folder / "my_module.so")
        if "thumbnails" in self.page:
            self.run(f"{self.build}/examples/thumbnails/draw_samples Pictures")

    def commands(self, block):
        instead = dict(pages.COMMANDS[block.name])
        written = re.compile("|".join(map(re.escape, instead)))
        text = written.sub(lambda found: instead[found.group(0)].format(
            build=self.build, prefix=self.prefix), block.text)
        if not text.strip():
            sys.exit(f"{block.name}: the substitutions leave nothing to run")
        self.run(text)

    def project(self, block):
        """The lines of CMake in a project whose sources are the page's own."""
        shown = {found.name: found.text for found in pages.blocks("README.md")}
        (self.folder / "host.c").write_text(shown["README.md", "A host in twenty lines", "c"])
        (self.folder / "module.c").write_text(shown["README.md", "A module in twenty lines", "c"])
        (self.folder / "CMakeLists.txt").write_text(PREAMBLE + block.text)
        self.run("cmake -B made && cmake --build made && cp made/my_module.so .")
        if self.run("made/my_host") != "hello: one atom\n":
            sys.exit("the host of the page says something else")

    def json_members(self, block):
        """Each line that begins without a blank names a member, and none is left out."""
        told = json.loads(self.run(f"{self.prefix}/bin/zebinfo --json --atoms"))
        named = re.findall(r"^(\w+)", block.text, re.MULTILINE)
        if sorted(named) != sorted(told):
            sys.exit(f"the page names {sorted(named)}, --json prints {sorted(told)}")

    def output(self, block):
        """Each line was printed before, but for times, sizes and blanks."""
        def plain(text):
            return [VARYING.sub("...", line).split() for line in text.splitlines()]
        printed = plain(self.printed)
        for line in plain(block.text):
            if line not in printed:
                sys.exit(f"the page promises {line}, which nothing has printed")

    def do(self):
        own = {"README.md": self.project, "tools/zebinfo/README.md": self.json_members,
               "examples/thumbnails/README.md": self.output}
        self.make_what_is_taken_for_granted()
        done = 0
        for block in pages.blocks(self.page):
            if block.name in pages.COMMANDS:
                self.commands(block)
            elif block.name in pages.CHECKED:
                own[self.page](block)
            else:
                continue
            done += 1
        if done == 0:
            sys.exit(f"{self.page} shows nothing to run")


def main():
    build, prefix, folder = (pathlib.Path(argument).resolve() for argument in sys.argv[2:])
    Reader(sys.argv[1], build, prefix, folder).do()


main()
