#!/usr/bin/env python3
"""Checks share/zeb/zeb.json against its schema, against itself and against the headers.

    check_description.py [<repository>]

What the compiler proves is not repeated here: tests/description/ compiles a static assertion for
each type, row and member. This check looks at what no compiler sees: that every name in the file
leads somewhere, that every function type of the headers is described, and that the names of the
parameters and the tags about threads are those of the headers.

Prints one line for each fault, and exits with 1 if there is any.
"""

import json
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))
from description import Description  # noqa: E402

# ---- The file against its schema.


def schema_faults(data, schema):
    import jsonschema  # Debian's python3-jsonschema

    jsonschema.Draft7Validator.check_schema(schema)
    for error in jsonschema.Draft7Validator(schema).iter_errors(data):
        place = "/".join(str(step) for step in error.absolute_path)
        yield f"{place or 'the file'}: {error.message}"


# ---- The file against itself.


def parameter_faults(description, entry, parameter):
    names = {other["name"] for other in entry["parameters"]}
    is_pointer = description.is_pointer(parameter["type"])
    for key in ("null", "ownership"):
        if is_pointer != (key in parameter):
            yield f"{'lacks' if is_pointer else 'has no use for'} \"{key}\""
    if parameter["direction"] != "in" and not parameter["type"].endswith("*"):
        yield "is an out parameter, but no pointer"
    if "onFailure" in parameter and parameter["direction"] != "out":
        yield "has \"onFailure\", but is no out parameter"
    for key in ("nullRequires", "unlessNull"):
        for name in set(parameter.get(key, [])) - names:
            yield f"\"{key}\" names {name}, which is no parameter"
    ended_by = parameter.get("endedBy")
    ending = [other for other in entry["parameters"] if other["name"] == ended_by]
    if ended_by and not any(description.is_procedure(other["type"]) for other in ending):
        yield f"\"endedBy\" names {ended_by}, which is no procedure"


def handle_faults(description, part):
    kind = part.get("handle")
    if kind is None:
        if part.get("ownership") in ("reference", "unreferenced"):
            yield "is handed out, but has no \"handle\""
    elif kind not in description.handles or part.get("addedAs", kind) not in description.handles:
        yield f"\"handle\" names {kind}, which is no kind of handle"
    elif part["type"].rstrip("* ") != description.handles[kind]["type"]:
        yield f"is of another type than the handle {kind}"


def entry_faults(description, entry):
    """The faults of a proc, an export or the look-up function."""
    for tag in set(entry["threads"]) - set(description.data["threadTags"]):
        yield f"the tag {tag} means nothing"
    yield from (f"the result {fault}" for fault in handle_faults(description, entry["result"]))
    for parameter in entry["parameters"]:
        faults = [*parameter_faults(description, entry, parameter),
                  *handle_faults(description, parameter)]
        yield from (f"{parameter['name']} {fault}" for fault in faults)
        refuses = parameter.get("null") == "answers-error"
        if refuses and entry["result"]["convention"] != "error":
            yield f"{parameter['name']} is refused with an error, which the proc does not answer"


def repeated(names):
    names = list(names)
    return sorted({name for name in names if names.count(name) > 1})


def inner_faults(description):
    data = description.data
    for handle in data["handles"]:
        for key in ("addReference", "release"):
            if key in handle and description.proc(handle[key]) is None:
                yield f"handle {handle['kind']}: there is no {handle[key]}"
    for entry in [data["lookUp"], *data["exports"]]:
        yield from (f"{entry['name']}: {fault}" for fault in entry_faults(description, entry))
    for interface, proc in description.procs():
        place = f"{interface['name']}/{proc['member']}"
        yield from (f"{place}: {fault}" for fault in entry_faults(description, proc))
    rows = [f"{interface['name']}/{proc['method']}/{proc['proc']}"
            for interface, proc in description.procs()]
    versions = [f"{interface['name']}/{proc['method']} version {proc['version']}"
                for interface, proc in description.procs()]
    for name in repeated(rows) + repeated(versions):
        yield f"{name} is described twice"


# ---- The file against the headers.

TOKEN = re.compile(
    r"/\*.*?\*/"
    r"|^#(?:\\\n|[^\n])*"
    r"|^typedef\s+[^;{]*\(\*\w+\)\([^;]*\);"
    r"|^ZEB_EXPORT\s[^;]*;"
    r"|\n\n", re.DOTALL | re.MULTILINE)
TYPE = re.compile(r"typedef\s+.*?\(\*(\w+)\)\((.*)\);$", re.DOTALL)
EXPORT = re.compile(r"ZEB_EXPORT\s.*?(\w+)\((.*)\);$", re.DOTALL)
CALLER_TAGS = {"any-thread", "frame-thread", "one-owner"}


def parameter_names(arguments):
    """The names in a parameter list; None for a list without names."""
    arguments = re.sub(r"\(\*(\w+)\)\([^()]*\)", r" \1", arguments)
    if arguments.strip() == "void":
        return []
    names = [re.fullmatch(r".*[\s*](\w+)", part.strip(), re.DOTALL)
             for part in arguments.split(",")]
    return [name.group(1) for name in names] if all(names) else None


def declared_functions(text):
    """(name, parameter names, tags of the comment above it) of each declaration in a header."""
    tags = set()
    for token in TOKEN.findall(text):
        if token.startswith("/*"):
            tags = set(re.findall(r"\[([a-z-]+)\]", token)) or tags
        elif token == "\n\n":
            tags = set()
        elif not token.startswith("#"):
            name, arguments = (TYPE.match(token) or EXPORT.match(token)).groups()
            yield name, parameter_names(arguments), tags


def described_functions(description):
    """The described entries by the name that the headers declare them under."""
    data = description.data
    entries = {entry["name"]: entry for entry in [data["lookUp"], *data["callbacks"]]}
    for entry in data["exports"]:
        entries[entry["name"]] = entry
        entries[entry["functionType"]] = None
    for _, proc in description.procs():
        entries[proc["proc"]] = proc
    return entries


def function_faults(entry, names, tags):
    described = [parameter["name"] for parameter in entry["parameters"]]
    if names is not None and names != described:
        yield f"its parameters are {', '.join(names)} in the header"
    threads = set(entry.get("threads", []))
    if not tags or not threads:
        return
    if tags & CALLER_TAGS - threads or ("calls-host" in tags) != ("calls-host" in threads):
        yield f"its tags are {', '.join(sorted(tags))} in the header"


def header_faults(description, include):
    described = described_functions(description)
    declared = set()
    for header in sorted(include.glob("zeb/*.h")):
        for name, names, tags in declared_functions(header.read_text(encoding="utf-8")):
            declared.add(name)
            if name not in described:
                yield f"{name} of {header.name} is not described"
            elif described[name] is not None:
                yield from (f"{name}: {fault}" for fault in
                            function_faults(described[name], names, tags))
    for header in {part["header"] for part in description.data["interfaces"]}:
        if not (include / header).exists():
            yield f"there is no header {header}"


def check(root):
    """Every fault of a repository's description."""
    share = Path(root) / "share/zeb"
    data = json.loads((share / "zeb.json").read_text(encoding="utf-8"))
    schema = json.loads((share / "zeb.schema.json").read_text(encoding="utf-8"))
    faults = list(schema_faults(data, schema))
    if faults:  # what is shaped otherwise cannot be walked
        return faults
    description = Description(data)
    return [*inner_faults(description), *header_faults(description, Path(root) / "include")]


def main(arguments):
    root = arguments[0] if arguments else Path(__file__).resolve().parents[1]
    faults = check(root)
    for fault in faults:
        print(f"share/zeb/zeb.json: {fault}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
