"""Reading share/zeb/zeb.json, for the tools that check it and that generate from it."""

import json
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
DESCRIPTION = ROOT / "share/zeb/zeb.json"
SCHEMA = ROOT / "share/zeb/zeb.schema.json"


class Description:
    """The file, with what it names looked up."""

    def __init__(self, data):
        self.data = data
        self.interfaces = data["interfaces"]
        self.callbacks = {entry["name"]: entry for entry in data["callbacks"]}
        self.handles = {entry["kind"]: entry for entry in data["handles"]}
        self.structs = {entry["name"]: entry for entry in data["structs"]}

    @staticmethod
    def read(path=DESCRIPTION):
        return Description(json.loads(Path(path).read_text(encoding="utf-8")))

    def procs(self):
        """Every proc with its interface, in the order of the file."""
        for interface in self.interfaces:
            for proc in interface["procs"]:
                yield interface, proc

    def proc(self, name):
        """The newest proc of "Interface/Method", with its interface; None if there is none."""
        interface_name, method = name.split("/")
        found = None
        for interface, proc in self.procs():
            if (interface["name"], proc["method"]) != (interface_name, method):
                continue
            if found is None or proc["version"] > found[1]["version"]:
                found = (interface, proc)
        return found

    def is_procedure(self, c_type):
        return c_type in self.callbacks or c_type == "ZEBProc" or "(*)" in c_type

    def is_pointer(self, c_type):
        return c_type.endswith("*") or self.is_procedure(c_type)


def declared(c_type, name):
    """The C declaration of `name`; the type alone for an empty name."""
    if "(*)" in c_type:
        return c_type.replace("(*)", f"(*{name})")
    return f"{c_type}{name}" if c_type.endswith("*") else f"{c_type} {name}".rstrip()


def function_type(entry):
    """The pointer type of a described function."""
    parameters = ", ".join(parameter["type"] for parameter in entry["parameters"]) or "void"
    return f"{entry['result']['type']} (*)({parameters})"
