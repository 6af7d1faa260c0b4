#!/usr/bin/env python3
"""Plants faults in a description, in headers and in pages: the check and the generator find them."""

import copy
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
TOOLS = ROOT / "tools"
sys.path.insert(0, str(TOOLS))

try:
    import jsonschema  # noqa: F401
except ImportError:
    print("There is no python3-jsonschema here.", file=sys.stderr)
    sys.exit(1 if os.environ.get("ZEB_TOOLS_REQUIRED") else 77)

from check_description import check  # noqa: E402
from description import Description  # noqa: E402
from description_header import headers  # noqa: E402
from generate import GENERATED_HEADERS, differences, write  # noqa: E402
from reference_pages import pages  # noqa: E402
from test_tables import test_tables  # noqa: E402


class RepositoryTest(unittest.TestCase):
    """A copy of the description, its schema and its headers, to be spoiled."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for part in ("share/zeb", "include/zeb", "include/zeb/sdk"):
            for path in (ROOT / part).glob("*.*"):
                copied = self.root / part / path.name
                copied.parent.mkdir(parents=True, exist_ok=True)
                copied.write_text(path.read_text(encoding="utf-8"), encoding="utf-8")
        self.data = json.loads(self.file("share/zeb/zeb.json").read_text(encoding="utf-8"))

    def file(self, name):
        return self.root / name

    def proc(self, interface_name, member):
        for interface, proc in Description(self.data).procs():
            if (interface["name"], proc["member"]) == (interface_name, member):
                return proc
        raise KeyError(member)

    def faults(self):
        self.file("share/zeb/zeb.json").write_text(json.dumps(self.data), encoding="utf-8")
        return "\n".join(check(self.root))

    def spoil_header(self, name, old, new):
        path = self.file(f"include/zeb/{name}")
        text = path.read_text(encoding="utf-8")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new, 1), encoding="utf-8")


class CheckTest(RepositoryTest):
    def test_accepts_what_is_there(self):
        self.assertEqual(self.faults(), "")

    def test_finds_a_missing_member(self):
        del self.proc("ZEBStringInterface", "AddRef")["since"]
        self.assertIn("'since' is a required property", self.faults())

    def test_finds_an_unknown_word(self):
        self.proc("ZEBStringInterface", "AddRef")["threads"] = ["some-thread"]
        self.assertIn("'some-thread' is not one of", self.faults())

    def test_finds_a_member_that_the_schema_does_not_know(self):
        self.proc("ZEBStringInterface", "AddRef")["note"] = "planted"
        self.assertIn("'note' was unexpected", self.faults())

    def test_finds_a_pointer_without_a_rule_about_null(self):
        del self.proc("ZEBStringInterface", "AddRef")["parameters"][0]["null"]
        self.assertIn('AddRef: atom lacks "null"', self.faults())

    def test_finds_a_number_with_a_rule_about_null(self):
        self.proc("ZEBMemoryInterface", "Alloc")["parameters"][0]["null"] = "allowed"
        self.assertIn('Alloc: size has no use for "null"', self.faults())

    def test_finds_an_unknown_handle(self):
        self.proc("ZEBStringInterface", "AddRef")["parameters"][0]["handle"] = "planted"
        self.assertIn("names planted, which is no kind of handle", self.faults())

    def test_finds_a_handle_of_another_type(self):
        self.proc("ZEBStringInterface", "AddRef")["parameters"][0]["handle"] = "container"
        self.assertIn("atom is of another type than the handle container", self.faults())

    def test_finds_a_release_that_is_not_there(self):
        self.data["handles"][0]["release"] = "ZEBErrorInterface/Planted"
        self.assertIn("there is no ZEBErrorInterface/Planted", self.faults())

    def test_finds_an_end_that_is_no_procedure(self):
        self.proc("ZEBErrorInterface", "NewError")["parameters"][3]["endedBy"] = "id"
        self.assertIn('"endedBy" names id, which is no procedure', self.faults())

    def test_finds_an_error_that_the_proc_cannot_answer(self):
        self.proc("ZEBStringInterface", "AddRef")["parameters"][0]["null"] = "answers-error"
        self.assertIn("atom is refused with an error", self.faults())

    def test_finds_a_proc_that_is_described_twice(self):
        procs = self.data["interfaces"][0]["procs"]
        procs.append(copy.deepcopy(procs[0]))
        self.assertIn("is described twice", self.faults())

    def test_finds_a_proc_that_is_not_described(self):
        for interface in self.data["interfaces"]:
            interface["procs"] = [proc for proc in interface["procs"]
                                  if proc["proc"] != "ZEBGetCStringProc"]
        self.assertIn("ZEBGetCStringProc of atom.h is not described", self.faults())

    def test_finds_an_export_that_is_not_described(self):
        self.data["exports"] = [entry for entry in self.data["exports"]
                                if entry["name"] != "ZEBTerminate"]
        self.assertIn("ZEBTerminate of exports.h is not described", self.faults())

    def test_finds_a_parameter_of_another_name(self):
        self.spoil_header("memory.h", "(void *block, uint64_t size)", "(void *old, uint64_t size)")
        self.assertIn("ZEBMemReallocProc: its parameters are old, size in the header",
                      self.faults())

    def test_finds_another_tag(self):
        self.spoil_header("atom.h", "short. [any-thread]", "short. [frame-thread]")
        self.assertIn("ZEBNewStringAtomProc: its tags are frame-thread", self.faults())

    def test_finds_a_call_of_the_host_that_is_not_told(self):
        self.proc("ZEBErrorInterface", "Release")["threads"].remove("calls-host")
        self.assertIn("ZEBErrorReleaseProc: its tags are any-thread, calls-host", self.faults())


class PagesTest(RepositoryTest):
    def setUp(self):
        super().setUp()
        write(self.root / "pages", self.pages())

    def pages(self):
        return pages(Description(self.data))

    def differences(self):
        return "\n".join(differences(self.root / "pages", self.pages()))

    def test_are_accepted_as_generated(self):
        self.assertEqual(self.differences(), "")

    def test_differ_when_the_description_has_changed(self):
        self.proc("ZEBStringInterface", "AddRef")["description"] = "planted"
        self.assertEqual(self.differences(),
                         "ZEBStringInterface.md is not what share/zeb/zeb.json says")

    def test_differ_when_a_page_was_edited(self):
        self.file("pages/types.md").write_text("planted", encoding="utf-8")
        self.assertEqual(self.differences(), "types.md is not what share/zeb/zeb.json says")

    def test_differ_when_a_page_is_missing_or_left_over(self):
        self.file("pages/types.md").rename(self.file("pages/planted.md"))
        self.assertEqual(self.differences(),
                         "types.md is missing\nplanted.md describes nothing")

    def test_name_every_proc_and_parameter(self):
        texts = self.pages()
        for interface, proc in Description(self.data).procs():
            page = texts[f"{interface['name']}.md"]
            self.assertIn(f"(*{proc['proc']})(", page)
            for parameter in proc["parameters"]:
                self.assertIn(f"| `{parameter['name']}` |", page)


class HeaderTablesTest(RepositoryTest):
    """The check of the header that is generated: it lies among others that are not."""

    def differences(self):
        folder = self.root / "include/zeb/sdk"
        return "\n".join(
            differences(folder, headers(Description(self.data)), GENERATED_HEADERS))

    def test_are_accepted_as_generated(self):
        self.assertEqual(self.differences(), "")

    def test_differ_when_the_description_has_changed(self):
        self.proc("ZEBStringInterface", "AddRef")["threads"] = ["one-owner"]
        self.assertEqual(self.differences(),
                         "description_tables.hpp is not what share/zeb/zeb.json says")

    def test_differ_when_the_header_was_edited(self):
        self.spoil_header("sdk/description_tables.hpp", "NullRule::allowed", "NullRule::fails")
        self.assertEqual(self.differences(),
                         "description_tables.hpp is not what share/zeb/zeb.json says")

    def test_differ_when_the_header_is_missing_or_left_over(self):
        self.file("include/zeb/sdk/description_tables.hpp").rename(
            self.file("include/zeb/sdk/planted_tables.hpp"))
        self.assertEqual(self.differences(),
                         "description_tables.hpp is missing\nplanted_tables.hpp describes nothing")

    def test_name_every_proc_and_export(self):
        [text] = headers(Description(self.data)).values()
        for _, proc in Description(self.data).procs():
            self.assertIn(f'{{{{"{proc["proc"]}", ', text)
        for entry in self.data["exports"]:
            self.assertIn(f'{{"{entry["name"]}", ', text)

    def test_keep_quotes_and_backslashes(self):
        self.proc("ZEBStringInterface", "AddRef")["description"] = 'A "text" with a \\ in it.'
        [text] = headers(Description(self.data)).values()
        self.assertIn(r'"A \"text\" with a \\ in it."', text)


class AgreementTest(RepositoryTest):
    """What the compiler says to generated assertions."""

    ASSERTIONS = ""

    def complaints(self):
        write(self.root / "tables", test_tables(Description(self.data)))
        done = subprocess.run(
            [os.environ.get("CXX", "c++"), "-std=c++20", "-fsyntax-only",
             "-I", self.root / "include", self.root / "tables" / self.ASSERTIONS],
            capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode != 0, "error:" in done.stderr, done.stderr)
        return done.stderr

    def assert_refused(self, name):
        complaints = self.complaints()
        self.assertIn("static assertion failed", complaints.replace("static_assert failed",
                                                                    "static assertion failed"))
        self.assertIn(name, complaints)


class HeaderAgreementTest(AgreementTest):
    ASSERTIONS = "header_agreement.cpp"

    def test_is_compiled_as_it_is(self):
        self.assertEqual(self.complaints(), "")

    def test_refuses_another_parameter_type(self):
        self.proc("ZEBMemoryInterface", "Alloc")["parameters"][0]["type"] = "uint32_t"
        self.assert_refused("ZEBMemAllocProc")

    def test_refuses_another_result(self):
        self.data["callbacks"][0]["result"]["type"] = "char"
        self.assert_refused(self.data["callbacks"][0]["name"])

    def test_refuses_another_order(self):
        procs = self.data["interfaces"][1]["procs"]
        procs[2], procs[3] = procs[3], procs[2]
        self.assert_refused("ZEBMemoryProcs")

    def test_refuses_another_method_name(self):
        self.proc("ZEBMemoryInterface", "GetBlockSize")["method"] = "Planted"
        self.assert_refused("kRowsOf_ZEB_MEMORY_PROCS[3].methodName")

    def test_refuses_a_row_less(self):
        self.data["interfaces"][1]["procs"].pop()
        self.assert_refused("kRowsOf_ZEB_MEMORY_PROCS")

    def test_refuses_another_export(self):
        self.data["exports"][0]["result"]["type"] = "uint64_t"
        self.assert_refused("ZEBGetVersion")

    def test_refuses_another_constant(self):
        self.data["constants"][0]["value"] += 1
        self.assert_refused(self.data["constants"][0]["name"])

    def test_refuses_another_struct(self):
        self.data["structs"][0]["members"].reverse()
        self.assert_refused(self.data["structs"][0]["name"])


class TableAgreementTest(AgreementTest):
    """The header is generated before the description is spoiled: it says something else then."""

    ASSERTIONS = "table_agreement.cpp"

    def spoil_table(self, old, new):
        self.spoil_header("sdk/description_tables.hpp", old, new)

    def test_is_compiled_as_it_is(self):
        self.assertEqual(self.complaints(), "")

    def test_refuses_a_signature_that_the_type_has_not(self):
        self.spoil_table('"*ZEBString(*const i8)"', '"*ZEBString(*i8)"')
        self.assert_refused("kRowOf_ZEBStringInterface_NewStringAtom.signature")

    def test_refuses_a_signature_of_an_export(self):
        self.spoil_table('{"ZEBGetVersion", "u32()"', '{"ZEBGetVersion", "i32()"')
        self.assert_refused("kRowOf_ZEBGetVersion.signature")

    def test_refuses_another_ownership(self):
        self.proc("ZEBErrorInterface", "NewError")["parameters"][3]["ownership"] = "shared"
        self.assert_refused("kRowOf_ZEBErrorInterface_NewError.parameters[3].ownership")

    def test_refuses_another_rule_about_null(self):
        self.proc("ZEBStringInterface", "AddRef")["parameters"][0]["null"] = "fails"
        self.assert_refused("kRowOf_ZEBStringInterface_AddRef.parameters[0].null")

    def test_refuses_other_threads(self):
        self.proc("ZEBStringInterface", "AddRef")["threads"] = ["one-owner"]
        self.assert_refused("kRowOf_ZEBStringInterface_AddRef.threads")

    def test_refuses_another_version(self):
        self.proc("ZEBStringInterface", "AddRef")["version"] = 2
        self.assert_refused("kRowOf_ZEBStringInterface_AddRef.version")

    def test_refuses_a_proc_less(self):
        del self.data["interfaces"][5]["procs"][0]
        self.assert_refused("ZEBStringInterface")

    def test_refuses_another_interface_of_the_sdk(self):
        self.data["interfaces"][5]["sdkInterface"] = "Memory"
        self.assert_refused("zeb::sdk::Memory::kName")

    def test_wants_an_interface_of_the_sdk(self):
        del self.data["interfaces"][5]["sdkInterface"]
        self.assertIn("'sdkInterface' is a dependency of 'rows'", self.faults())


class GeneratorTest(RepositoryTest):
    def run_with_seed(self, seed):
        folder = self.root / f"tables{seed}"
        subprocess.run([sys.executable, TOOLS / "generate.py", "tests", folder], check=True,
                       env={**os.environ, "PYTHONHASHSEED": str(seed)})
        return {path.name: path.read_text(encoding="utf-8") for path in folder.iterdir()}

    def test_generates_the_same_every_time(self):
        first = self.run_with_seed(1)
        self.assertEqual(set(first),
                         {"header_agreement.cpp", "sweep_cases.cpp", "table_agreement.cpp"})
        self.assertEqual(first, self.run_with_seed(2))

    def test_leaves_what_is_right_alone(self):
        folder = self.root / "tables"
        tables = test_tables(Description(self.data))
        write(folder, tables)
        for path in folder.iterdir():
            os.utime(path, (1, 1))
        write(folder, tables)
        self.assertEqual({path.stat().st_mtime for path in folder.iterdir()}, {1})

    def test_refuses_other_arguments(self):
        for arguments in ([], ["pages", "planted"], ["headers", "planted"], ["tests"]):
            done = subprocess.run([sys.executable, TOOLS / "generate.py", *arguments],
                                  capture_output=True, check=False)
            self.assertEqual(done.returncode, 2)


if __name__ == "__main__":
    unittest.main()
