#!/usr/bin/env python3
"""Runs zebinfo as its user does: zebinfo_test.py <zebinfo> <library> <folder of the modules>.

The table is read back and compared with the JSON of a run with the same arguments.
"""

import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from itertools import zip_longest
from pathlib import Path

ZEBINFO, LIBRARY, MODULES = sys.argv[1:4]
LISTED = ["interface", "method", "proc"]


def run(*arguments, environment=None, **options):
    return subprocess.run([ZEBINFO, *arguments], capture_output=True, text=True,
                          errors="surrogateescape", env={**os.environ, **(environment or {})},
                          check=False, timeout=60, **options)


def module(name):
    return str(Path(MODULES, name + ".so"))


def shown(text):
    """A text of the JSON as the table prints it."""
    if text is None:
        return "(null)"
    out = ""
    for character in text:
        code = ord(character)
        if 0xDC80 <= code <= 0xDCFF:
            out += f"\\x{code - 0xDC00:02x}"
        elif code < 0x20 or code == 0x7F:
            out += f"\\x{code:02x}"
        else:
            out += "\\\\" if character == "\\" else character
    return out


def sections(table):
    """The sections of a table: {title: [row, ...]}, each row a {column: cell}."""
    found = {}
    for block in table.split("\n\n")[1:]:
        title, header, *rows = block.rstrip("\n").split("\n")
        columns = re.split(r" {2,}", header.strip())
        cells = [re.split(r" {2,}", row.strip()) for row in rows]
        found[title] = [dict(zip_longest(columns, row, fillvalue="")) for row in cells]
    return found


def rows_of_procs(document):
    for interface in document["interfaces"]:
        for method in interface["methods"]:
            for proc in method["procs"]:
                yield interface["name"], method["name"], proc


class ZebinfoTest(unittest.TestCase):
    def succeed(self, *arguments, **options):
        done = run(*arguments, **options)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def document(self, *arguments):
        return json.loads(self.succeed("--json", *arguments))

    def fail_with(self, status, message, *arguments, **options):
        done = run(*arguments, **options)
        self.assertEqual(done.returncode, status, done.stderr)
        self.assertIn(message, done.stderr)
        return done.stdout

    # --- the table and the JSON -----------------------------------------------------------------

    def test_names_version_and_file(self):
        table = self.succeed("--library", LIBRARY)
        self.assertRegex(table, r"\Alibzeb 4\.0  \S*libzeb\.so\S*\nchange counter 1\n")
        library = self.document("--library", LIBRARY)["library"]
        self.assertEqual((library["version"], library["changeCounter"]), ("4.0", 1))
        self.assertTrue(os.path.samefile(library["file"], LIBRARY))

    def test_takes_the_linked_library_by_default(self):
        self.assertTrue(os.path.samefile(self.document()["library"]["file"], LIBRARY))

    def test_carries_a_schema_version(self):
        self.assertEqual(self.document()["schema"], 1)

    def test_shows_the_same_in_both_forms(self):
        arguments = ["--atoms", "--module", module("publishing")]
        document = self.document(*arguments)
        table = sections(self.succeed(*arguments))
        self.assertEqual(list(table), ["Modules", "Procs", "Event counters", "Live objects",
                                       "Live atoms"])
        self.assertEqual([(row["file"], row["state"]) for row in table["Modules"]],
                         [(it["file"], "started") for it in document["modules"]])

        def published(proc):
            # The loader chooses another address in each run; the offset stays.
            if proc["file"] is None:
                return "(no file)"
            return f"{shown(proc['file'])} +{proc['fileOffset']:#x}"

        self.assertEqual(
            [tuple(row[column] for column in [*LISTED, "published by"])
             for row in table["Procs"]],
            [(shown(interface), shown(method), shown(proc["name"]), published(proc))
             for interface, method, proc in rows_of_procs(document)])
        self.assertEqual(
            [(row["total"], row["criticality"], row["counter"])
             for row in table["Event counters"]],
            [(str(it["total"]), str(it["criticality"]), shown(it["name"]))
             for it in document["counters"]])
        self.assertEqual(
            [(row["live"], row["kept"], row["objects"]) for row in table["Live objects"]],
            [(str(it["live"]), str(it["kept"]), it["kind"]) for it in document["objects"]])
        self.assertEqual(
            [(row["references"], row["atom"]) for row in table["Live atoms"]],
            [(str(it["references"]), shown(it["text"])) for it in document["atoms"]])

    def test_aligns_its_columns(self):
        block = self.succeed("--module", module("publishing")).split("\n\n")[2]
        title, header, *rows = block.rstrip("\n").split("\n")
        self.assertEqual(title, "Procs")
        for column in ("method", "proc"):
            at = header.index(column)
            for row in rows:
                self.assertRegex(row[at - 2:at + 1], r"\A  \S\Z", row)

    def test_shows_every_interface_with_its_publisher(self):
        document = self.document()
        names = [interface["name"] for interface in document["interfaces"]]
        self.assertEqual(names, sorted(names))
        for expected in ("ZEB", "ZEBCacheInterface", "ZEBContainerInterface", "ZEBErrorInterface", "ZEBEventInterface",
                         "ZEBInspectInterface", "ZEBMemDbgInterface", "ZEBMemoryInterface",
                         "ZEBProgressInterface", "ZEBSharedBuffInterface", "ZEBStringInterface"):
            self.assertIn(expected, names)
        for interface, method, proc in rows_of_procs(document):
            # The host's report procedure is zebinfo's own.
            owner = ZEBINFO if method == "ZEBReportError" else LIBRARY
            self.assertTrue(os.path.samefile(proc["file"], owner), (interface, method))

    def test_shows_all_versions_of_a_method(self):
        versions = [proc["name"] for interface, method, proc in rows_of_procs(self.document())
                    if (interface, method) == ("ZEBContainerInterface", "GetMethod")]
        self.assertEqual(versions, ["ZEBGetMethodProc", "ZEBGetMethodV2Proc", "ZEBGetMethodV3Proc"])

    def test_gives_addresses_that_agree_with_the_offsets(self):
        bases = {}
        for _, _, proc in rows_of_procs(self.document("--module", module("publishing"))):
            if proc["file"] is not None:
                base = int(proc["address"], 16) - proc["fileOffset"]
                bases.setdefault(proc["file"], set()).add(base)
        self.assertEqual(len(bases), 3)
        for file, found in bases.items():
            self.assertEqual(len(found), 1, file)

    def test_counts_the_librarys_events(self):
        counters = {it["name"]: it for it in self.document()["counters"]}
        allocated = counters["ZEB new string atom from char* did not find duplicate so allocated"]
        self.assertGreater(allocated["total"], 0)
        self.assertEqual(allocated["criticality"], 60)

    def test_shows_atoms_only_when_asked(self):
        self.assertNotIn("Live atoms", self.succeed())
        self.assertNotIn("atoms", self.document())
        texts = [atom["text"] for atom in self.document("--atoms")["atoms"]]
        self.assertIn("ZEBStringInterface", texts)
        self.assertEqual(texts, sorted(texts))

    # --- modules --------------------------------------------------------------------------------

    def test_shows_what_a_module_publishes(self):
        file = module("publishing")
        document = self.document("--module", file)
        self.assertEqual(document["modules"], [{"file": file, "started": True, "problem": None}])
        own = [(interface, method, proc["name"])
               for interface, method, proc in rows_of_procs(document) if proc["file"] == file]
        self.assertEqual(own, [
            (None, "of the null name", "P"),
            ("TestInterface", "Greet", "TestGreetProc"),
            ("TestInterface", "Greet", "TestGreetV2Proc"),
            ("TestInterface", "Gr\u00fc\u00df", "TestUmlautProc"),
            ("TestInterface", "control\n\"quoted\" back\\slash \x7f", "P"),
            ("TestInterface", "no UTF-8: \udcc0\udcaf \udced\udca0\udc80 \udcff", "P"),
        ])
        counter = document["counters"][0]
        self.assertEqual(counter, {"name": "things that the module counts", "total": 42,
                                   "criticality": 7})

    def test_shows_a_null_function_in_no_file(self):
        nulls = [proc for interface, method, proc
                 in rows_of_procs(self.document("--module", module("publishing")))
                 if (interface, method) == ("TestInterface", None)]
        self.assertEqual(nulls, [{"name": None, "address": "0x0", "file": None, "fileOffset": 0}])

    def test_prints_no_control_characters(self):
        table = self.succeed("--module", module("publishing"))
        self.assertRegex(table, r"  control\\x0a\"quoted\" back\\\\slash \\x7f  ")
        self.assertRegex(table, r"  no UTF-8: \\xc0\\xaf \\xed\\xa0\\x80 \\xff  ")

    def test_tells_which_of_several_modules_started(self):
        files = [module("publishing"), module("publishing_elsewhere")]
        done = run("--json", "--module", files[0], "--module", files[1])
        self.assertEqual(done.returncode, 4)
        self.assertEqual([it["file"] for it in json.loads(done.stdout)["modules"]], files)
        self.assertEqual([it["started"] for it in json.loads(done.stdout)["modules"]],
                         [True, False])

    def test_starts_a_module_by_other_entry_points(self):
        file = module("publishing_elsewhere")
        document = self.document("--start", "ElsewhereStart", "--stop", "ElsewhereStop",
                                 "--module", file)
        self.assertEqual(document["modules"], [{"file": file, "started": True, "problem": None}])

    def broken(self, file, problem):
        done = run("--json", "--module", file)
        self.assertEqual(done.returncode, 4)
        document = json.loads(done.stdout)
        [row] = document["modules"]
        self.assertFalse(row["started"])
        self.assertRegex(row["problem"], problem)
        self.assertEqual(done.stderr, f"zebinfo: {shown(file)}: {shown(row['problem'])}\n")
        self.assertIn("ZEB", [interface["name"] for interface in document["interfaces"]])
        table = self.fail_with(4, file, "--module", file)
        self.assertRegex(sections(table)["Modules"][0]["state"], problem)

    def test_tells_that_a_file_is_no_module(self):
        self.broken(module("plain"),
                    r"\Adoes not export ZEBModuleStart and ZEBModuleStop\Z")

    def test_tells_that_a_file_is_no_shared_object(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(b"this is a text" * 100)
            file.flush()
            self.broken(file.name, r"\Acannot be loaded: invalid ELF header\Z")

    def test_tells_that_a_module_is_missing(self):
        self.broken("./no-such-module.so", r"\Acannot be loaded: cannot open shared object file")

    def test_tells_why_a_module_does_not_start(self):
        self.broken(module("refusing"), r"\Arefused to start: no licence found\Z")

    def test_survives_an_exception_of_a_module(self):
        self.broken(module("throwing"), r"\Arefused to start: thrown by the module\Z")

    def test_tells_what_a_module_did_not_give_back(self):
        # The tool's own verdict is wanted here, not that of a leak sanitizer.
        options = os.environ.get("ASAN_OPTIONS", "")
        out = self.fail_with(5, "zebinfo: reported on stopping: string memory leak\n",
                             "--module", module("leaky"),
                             environment={"ASAN_OPTIONS": options + ":detect_leaks=0"})
        self.assertIn("Live objects", out)

    # --- --exists -------------------------------------------------------------------------------

    def test_finds_a_proc(self):
        out = self.succeed("--exists", "ZEBStringInterface/AddRef/ZEBAddRefStringAtomProc")
        self.assertEqual(out, "")

    def test_misses_a_proc_and_says_why(self):
        out = self.fail_with(
            1, "zebinfo: interface \"ZEBStringInterface\" has no method \"AddRefs\"; nearest: "
            "\"AddRef\"\n", "--exists", "ZEBStringInterface/AddRefs/ZEBAddRefStringAtomProc")
        self.assertEqual(out, "")

    def test_finds_a_proc_of_a_module_only_with_the_module(self):
        names = "TestInterface/Greet/TestGreetV2Proc"
        self.succeed("--module", module("publishing"), "--exists", names)
        self.fail_with(1, "there is no interface \"TestInterface\"", "--exists", names)

    def test_answers_with_the_modules_fault_first(self):
        self.fail_with(4, "does not export", "--module", module("plain"),
                       "--exists", "No/Such/Proc")

    def test_refuses_what_is_not_three_names(self):
        for names in ("ZEB", "ZEB/X", "ZEB/X/Y/Z", ""):
            self.fail_with(2, "three names separated by two slashes", "--exists", names)

    # --- the rest -------------------------------------------------------------------------------

    def test_refuses_a_missing_library(self):
        self.fail_with(3, "./no-such-library.so cannot be loaded: cannot open shared object file",
                       "--library", "./no-such-library.so")

    def test_refuses_another_library(self):
        file = module("plain")
        self.fail_with(3, f"{file} is not libzeb: it does not export ZEBGetVersion",
                       "--library", file)

    def test_refuses_an_unknown_option(self):
        self.fail_with(2, "--no-such-option", "--no-such-option")

    def test_refuses_json_without_anything_to_show(self):
        self.fail_with(2, "--exists", "--json", "--exists", "A/B/C")

    def test_tells_that_it_cannot_write(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = subprocess.run([ZEBINFO], stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual((done.returncode, done.stderr), (6, b"zebinfo: cannot write\n"))

    def test_lists_its_exit_statuses_in_the_help(self):
        text = self.succeed("--help")
        for status in range(7):
            self.assertRegex(text, rf"(?m)^  {status}  \S")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
