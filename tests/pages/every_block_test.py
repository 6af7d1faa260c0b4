#!/usr/bin/env python3
"""Every code block of every page is executed, compiled, or known not to be (pages.py)."""

import pathlib
import re
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True

import pages


def claimed():
    return [*pages.PROGRAMS, *pages.SHOWN, *pages.COMMANDS, *pages.CHECKED]


def loose_blocks(top=pages.TOP):
    """The blocks that nothing tests and no list explains."""
    return [block.name for page in pages.pages(top)
            if str(pathlib.PurePosixPath(page).parent) not in pages.FOLDERS
            for block in pages.blocks(page, top) if block.name not in claimed()]


class EveryBlock(unittest.TestCase):
    def test_is_tested_or_explained(self):
        self.assertEqual([], loose_blocks())

    def test_is_listed_only_once_and_only_if_it_is_there(self):
        there = {block.name for page in pages.pages() for block in pages.blocks(page)}
        self.assertEqual([], [name for name in claimed() if name not in there])
        self.assertEqual(len(claimed()), len(set(claimed())))

    def test_is_fenced(self):
        self.assertEqual([], [(page, pages.indented(page)) for page in pages.pages()
                              if pages.indented(page)])

    def test_of_the_guide_is_a_file_or_commands_or_their_output(self):
        guide = [page for page in pages.pages() if page.startswith("docs/guide/")]
        self.assertGreater(len(guide), 5)
        for page in guide:
            printed = False
            for block in pages.blocks(page):
                kind = block.name[2]
                with self.subTest(block.name):
                    self.assertRegex(kind, r"^(\w+ title=\S+|sh|text)$")
                    self.assertTrue(kind != "text" or printed, "no command has printed this")
                printed = kind == "sh" or kind != "text" and printed

    def test_that_the_headers_tests_compile_is_known(self):
        self.assertIn(("README.md", "A host in twenty lines", "c"), pages.PROGRAMS)


class EveryTarget(unittest.TestCase):
    def test_of_make_that_a_page_names_is_there(self):
        makefile = (pages.TOP / "Makefile").read_text(encoding="utf-8")
        targets = set(re.findall(r"^([a-z-]+):", makefile, re.MULTILINE))
        named = {target for page in pages.pages()
                 for target in re.findall(r"(?:^|`|\s)make ([a-z-]+)(?:`|  +#|$)",
                                          (pages.TOP / page).read_text(encoding="utf-8"),
                                          re.MULTILINE)}
        self.assertGreater(len(named), 5)
        self.assertEqual(set(), named - targets)


class Planted(unittest.TestCase):
    """A block that nobody knows of would be found."""

    def test_block_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            top = pathlib.Path(folder)
            (top / "NEW.md").write_text("# New\n\n```sh\nrm it\n```\n\n    run it\n",
                                        encoding="utf-8")
            self.assertEqual([("NEW.md", "New", "sh")], loose_blocks(top))
            self.assertEqual([7], pages.indented("NEW.md", top))

    def test_second_block_under_a_heading_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            top = pathlib.Path(folder)
            text = (pages.TOP / "README.md").read_text(encoding="utf-8")
            text = text.replace("## What is served", "```sh\nrm it\n```\n\n## What is served")
            (top / "README.md").write_text(text, encoding="utf-8")
            self.assertIn(("README.md", "Use it in a project", "sh", 2), loose_blocks(top))


if __name__ == "__main__":
    sys.exit(unittest.main())
