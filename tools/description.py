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
        self.procedures = {**self.callbacks, data["lookUp"]["name"]: data["lookUp"]}

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


def camel_case(words):
    """given-back is givenBack."""
    first, *others = words.split("-")
    return first + "".join(word.capitalize() for word in others)


def declared(c_type, name):
    """The C declaration of `name`; the type alone for an empty name."""
    if "(*)" in c_type:
        return c_type.replace("(*)", f"(*{name})")
    return f"{c_type}{name}" if c_type.endswith("*") else f"{c_type} {name}".rstrip()


def function_type(entry):
    """The pointer type of a described function."""
    parameters = ", ".join(parameter["type"] for parameter in entry["parameters"]) or "void"
    return f"{entry['result']['type']} (*)({parameters})"


# The fundamental types, as signature.hpp writes them.
FUNDAMENTAL = {
    "void": "void", "char": "i8", "float": "f32", "double": "f64",
    "int8_t": "i8", "int16_t": "i16", "int32_t": "i32", "int64_t": "i64",
    "uint8_t": "u8", "uint16_t": "u16", "uint32_t": "u32", "uint64_t": "u64",
}


def type_text(description, c_type):
    """A type as zeb::sdk::signatureOf writes it: structs by their names."""
    c_type = c_type.strip()
    if "(*)" in c_type:
        result, arguments = c_type.split("(*)")
        types = [part.strip() for part in arguments.strip()[1:-1].split(",")]
        called = function_text(description, result, [] if types == ["void"] else types)
        return f"*({called})"
    if c_type.endswith("*"):
        return "*" + type_text(description, c_type[:-1])
    if c_type.endswith("*const"):
        return "const " + type_text(description, c_type[:-len("const")])
    if c_type.startswith("const "):
        return "const " + type_text(description, c_type[len("const "):])
    if c_type == "ZEBProc":
        return "*(void())"
    called = description.procedures.get(c_type)
    if called is not None:
        return "*(" + signature_text(description, called) + ")"
    return FUNDAMENTAL.get(c_type, c_type)


def function_text(description, result, types):
    arguments = ",".join(type_text(description, c_type) for c_type in types)
    return f"{type_text(description, result)}({arguments})"


def signature_text(description, entry):
    """A described function as zeb::sdk::signatureOf writes its type."""
    return function_text(description, entry["result"]["type"],
                         [parameter["type"] for parameter in entry["parameters"]])
