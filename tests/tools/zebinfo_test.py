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
        elif code < 0x20 or 0x7F <= code < 0xA0 or 0x202A <= code <= 0x202E or (
                0x2066 <= code <= 0x2069):
            out += "".join(f"\\x{byte:02x}" for byte in character.encode())
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

    def test_shows_versions_and_signatures_in_both_forms(self):
        arguments = ["--module", module("replacing")]
        document = self.document(*arguments)
        table = sections(self.succeed(*arguments))

        def version(proc):
            older = " older" if proc["older"] else ""
            return {"own": f"{proc['version']}{older}",
                    "replaced": f"{proc['version']}{older} replaced",
                    "not described": "not described", None: "-"}[proc["standing"]]

        self.assertEqual(
            [tuple(row[column] for column in [*LISTED, "version", "since", "signature"])
             for row in table["Procs"]],
            [(shown(interface), shown(method), shown(proc["name"]), version(proc),
              proc["since"] or "-", proc["publishedSignature"] or "")
             for interface, method, proc in rows_of_procs(document)
             if proc["signatureOf"] is None])
        self.assertEqual(
            [tuple(row[column] for column in [*LISTED, "version", "since"])
             for row in table["Missing procs"]],
            [(it["interface"], it["method"], it["name"],
              f"{it['version']}{' older' if it['older'] else ''}", it["since"])
             for it in document["missing"]])

    def test_knows_every_proc_of_the_library(self):
        document = self.document()
        self.assertEqual(document["missing"], [])
        self.assertNotIn("Missing procs", self.succeed())
        for interface, method, proc in rows_of_procs(document):
            self.assertEqual(proc["standing"], "own", (interface, method))
            self.assertIn("(", proc["signature"])

    def test_tells_older_versions(self):
        described = {proc["name"]: proc for interface, method, proc
                     in rows_of_procs(self.document())
                     if (interface, method) == ("ZEBContainerInterface", "GetMethod")}
        self.assertEqual(
            [(proc["version"], proc["older"], proc["since"]) for proc in described.values()],
            [(1, True, "4.0"), (2, True, "4.0"), (3, False, "4.0")])

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
        self.assertEqual(nulls, [{
            "name": None, "address": "0x0", "file": None, "fileOffset": 0, "standing": None,
            "version": None, "older": None, "since": None, "signature": None,
            "publishedSignature": None, "signatureOf": None}])

    def replaced(self):
        """What the replacing module changes: {(interface, method, proc): proc}."""
        file = module("replacing")
        return {(interface, method, proc["name"]): proc for interface, method, proc
                in rows_of_procs(self.document("--module", file)) if proc["file"] == file}

    def test_tells_whose_a_proc_of_the_librarys_interface_is(self):
        own = self.replaced()
        replaced = own["ZEBProgressInterface", "AddRef", "ZEBProgressAddRefProc"]
        self.assertEqual((replaced["standing"], replaced["version"], replaced["signature"]),
                         ("replaced", 1, "void(*ZEBProgress)"))
        unknown = own["ZEBProgressInterface", "AddRef", "TestProgressProc"]
        self.assertEqual((unknown["standing"], unknown["version"], unknown["signature"]),
                         ("not described", None, None))
        guarded = own["TestInterface", "Guarded", "TestGuardedProc"]
        self.assertEqual((guarded["standing"], guarded["version"]), (None, None))

    def test_tells_which_of_the_librarys_procs_are_missing(self):
        document = self.document("--module", module("replacing"))
        missing = {(it["interface"], it["name"]) for it in document["missing"]}
        self.assertEqual({interface for interface, _ in missing},
                         {"ZEBMemDbgInterface", "ZEBProgressInterface"})
        self.assertIn(("ZEBProgressInterface", "ZEBProgressReleaseProc"), missing)
        self.assertNotIn(("ZEBProgressInterface", "ZEBProgressAddRefProc"), missing)

    def test_folds_a_signature_into_its_proc(self):
        own = self.replaced()
        texts = {name: (proc["publishedSignature"], proc["signatureOf"])
                 for (interface, _, name), proc in own.items() if interface == "TestInterface"}
        self.assertEqual(texts, {
            "TestGuardedProc": ("void(i32)", None),
            "TestGuardedProc#signature": (None, "TestGuardedProc"),
            "TestSilentProc": (None, None),
            "TestSilentProc#signature": (None, None),
            "TestNullProc": (None, None),
            "TestLonelyProc#signature": ("void(i32)", None),
            "TestLonelyProc#signature#signature": (None, "TestLonelyProc#signature"),
        })
        listed = [row["proc"] for row in sections(
            self.succeed("--module", module("replacing")))["Procs"]
            if row["interface"] == "TestInterface"]
        self.assertEqual(listed, ["TestGuardedProc", "TestLonelyProc#signature", "TestNullProc",
                                  "TestNullProc#signature", "TestSilentProc",
                                  "TestSilentProc#signature"])

    def test_does_not_take_a_strangers_text_for_a_procs_signature(self):
        rows = {row["proc"]: row for row in sections(
            self.succeed("--module", module("replacing")))["Procs"]
            if row["interface"] == "ZEBStringInterface" and row["method"] == "AddRef"}
        self.assertEqual(rows["ZEBAddRefStringAtomProc"]["signature"], "")
        self.assertIn("replacing", rows["ZEBAddRefStringAtomProc#signature"]["published by"])

    def test_prints_nothing_that_commands_a_terminal(self):
        table = self.succeed("--module", module("replacing"))
        self.assertRegex(table, r"TestControls +\\xc2\\x9b\[2J +\\xe2\\x80\\xae ")

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

    # --- --describe -----------------------------------------------------------------------------

    def described(self, name):
        """(the text, the functions of the JSON)"""
        document = json.loads(self.succeed("--describe", name, "--json"))
        self.assertEqual(document["schema"], 1)
        functions = [proc for interface in document["interfaces"] for proc in interface["procs"]]
        return self.succeed("--describe", name), functions + document["exports"]

    def test_describes_ownership_threads_and_failure(self):
        name = "ZEBErrorInterface/NewError/ZEBNewErrorProc"
        text, [proc] = self.described(name)
        self.assertIn(f"\n{name}  version 1, since 4.0\n", text)
        self.assertRegex(text, r"\n  threads +any-thread, calls-host\n")
        self.assertRegex(text, r"\n  answers +ZEBErrorObject \*, reference\n")
        self.assertRegex(text, r"\n  given back +ZEBErrorInterface/Release\n")
        self.assertRegex(text, r"\n  info +void \* +in +allowed +consumed, ended by infoDelete ")
        self.assertEqual(proc["threads"], ["any-thread", "calls-host"])
        self.assertEqual(proc["result"]["givenBackWith"], "ZEBErrorInterface/Release")
        info = proc["parameters"][3]
        self.assertEqual((info["name"], info["null"], info["ownership"], info["endedBy"]),
                         ("info", "allowed", "consumed", "infoDelete"))

    def test_describes_the_same_in_both_forms(self):
        for name in [it["name"] for it in self.document()["interfaces"]] + ["ZEBInitialize4"]:
            text, functions = self.described(name)
            self.assertNotEqual(functions, [])
            at = 0
            for function in functions:
                at = text.index(function["declaration"], at)
                for part in (function["summary"], function["signature"],
                             ", ".join(function["threads"])):
                    at = text.index(part, at)
                for parameter in function["parameters"]:
                    # By its row: the name may be part of another text.
                    row = re.compile(rf"^  {parameter['name']} +{re.escape(parameter['type'])} +"
                                     rf"{parameter['direction']} +{parameter['null'] or '-'} +"
                                     rf"{parameter['ownership']}", re.MULTILINE)
                    found = row.search(text, at)
                    self.assertIsNotNone(found, (function["name"], parameter))
                    at = found.end()

    def test_describes_all_versions_of_a_method(self):
        _, procs = self.described("ZEBContainerInterface/GetMethod")
        self.assertEqual({proc["name"]: proc["older"] for proc in procs},
                         {"ZEBGetMethodProc": True, "ZEBGetMethodV2Proc": True,
                          "ZEBGetMethodV3Proc": False})

    def test_describes_what_the_library_serves(self):
        for interface in self.document()["interfaces"]:
            _, procs = self.described(interface["name"])
            self.assertEqual(
                sorted((proc["method"], proc["name"], proc["signature"]) for proc in procs),
                sorted((method["name"], proc["name"], proc["signature"])
                       for method in interface["methods"] for proc in method["procs"]))

    def test_refuses_what_is_not_described(self):
        for name in ("Nothing", "ZEBStringInterface/Nothing", "ZEBGetCStringProc", "/",
                     "ZEBStringInterface/AddRef/ZEBGetCStringProc"):
            out = self.fail_with(1, f'zebinfo: "{name}" is not described\n', "--describe", name)
            self.assertEqual(out, "")
        self.fail_with(2, "a name is wanted", "--describe", "")

    def test_refuses_to_describe_and_to_start_at_once(self):
        for other in (["--module", module("plain")], ["--library", LIBRARY], ["--atoms"],
                      ["--exists", "A/B/C"]):
            self.fail_with(2, "--describe", "--describe", "ZEB", *other)

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
