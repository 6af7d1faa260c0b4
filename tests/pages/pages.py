"""What happens to each block of each page, so that none goes stale.

A block is named by its page, its heading and its language; a second one of the same name takes
a number. Every block of the pages is here, but for those that whole folders have in common.
"""

import pathlib
import re
import subprocess

TOP = pathlib.Path(__file__).resolve().parent.parent.parent

# These folders' blocks have tests of their own.
FOLDERS = {
    "docs/guide": "run_page.py does every page: files, commands and what they print",
    "docs/reference": "generated from share/zeb/zeb.json, which is compared with the headers",
}

# Compiled and run by tests/headers, which takes them by heading and language.
PROGRAMS = [("README.md", heading, language) for heading, language in re.findall(
    r'^readme_program\("([^"]+)" (\w+) ',
    (TOP / "tests/headers/CMakeLists.txt").read_text(encoding="utf-8"), re.MULTILINE)]

# Shown, not run.
SHOWN = {
    ("README.md", "libzeb", ""): "a picture",
    ("README.md", "Try it", "sh"): "the targets that run this test; their names are checked",
    ("docs/architecture.md", "Architecture", ""): "a picture",
    ("examples/copy/README.md", "Copy: a file from stream to stream, one of which a module brings",
     "text"): "a synopsis; the commands further down are run",
    ("examples/copy/README.md", "How it works", ""): "a picture",
    ("examples/thumbnails/README.md", "How it works", ""): "a picture",
    ("bench/README.md", "The benchmarks", "sh"):
        "measuring takes minutes; gate-bench builds and runs both programs shortly",
    ("bench/README.md", "What the cache saves", "sh"): "as above",
}

# Run by run_commands.py, in this order. {build} is the build that is tested, {prefix} where that is
# installed to; both stand here for what a reader has.
BUILT = [("cmake --preset release && cmake --build --preset release\n", ""),
         ("cmake --preset release\n", ""),
         ("cmake --build --preset release ", "cmake --build {build} "),
         ("build/release/", "{build}/"),
         ("build/release ", "{build} ")]
COMMANDS = {
    ("README.md", "Use it in a project", "sh"): BUILT + [("/usr/local", "{prefix}")],
    ("README.md", "Look into it", "sh"): BUILT + [
        ("MyInterface/MyMethod/MyProc", "ZEBStringInterface/AddRef/ZEBAddRefStringAtomProc")],
    ("tools/zebinfo/README.md", "zebinfo", "sh"): [
        ("./digest.so", "./my_module.so"), ("zebinfo  ", "{prefix}/bin/zebinfo  "),
        ("zebinfo --", "{prefix}/bin/zebinfo --")],
    ("examples/hosting/README.md", "Run it", "sh"): BUILT,
    ("examples/hosting/README.md", "Run it", "sh", 2): BUILT,
    ("examples/copy/README.md", "Run it", "sh"): BUILT,
    ("examples/copy/README.md", "Run it", "sh", 2): BUILT,
    ("examples/thumbnails/README.md", "Thumbnails: pictures kept in the cache, written through "
     "filters", "sh"): [
         ("thumbnails FOLDER...", "{build}/examples/thumbnails/thumbnails Pictures")],
    ("examples/thumbnails/README.md", "Run it", "sh"): BUILT,
    ("examples/thumbnails/README.md", "Run it", "sh", 2): BUILT + [("~/Pictures", "Pictures")],
}

# Checked by run_commands.py, each in its own way.
CHECKED = {
    ("README.md", "Use it in a project", "cmake"): "in a project with the page's host and module",
    ("tools/zebinfo/README.md", "The JSON", ""): "names every member of what --json prints",
    ("examples/thumbnails/README.md", "What it prints", ""): "printed by the run before it",
}


class Block:
    def __init__(self, page, heading, language, number, text):
        self.name = (page, heading, language) + ((number,) if number > 1 else ())
        self.page = page
        self.text = text


def pages(top=TOP):
    """Every tracked page; where there is no repository, every page that is not built."""
    listed = subprocess.run(["git", "-C", str(top), "ls-files", "-z", "*.md"],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    names = [name for name in listed.stdout.decode().split("\0") if name]
    if not names:
        names = [path.relative_to(top).as_posix() for path in top.rglob("*.md")]
    return sorted(name for name in names if not name.startswith("build/") and (top / name).exists())


def blocks(page, top=TOP):
    """The fenced blocks of a page, in order."""
    heading, language, text = "", None, []
    seen, done = {}, []
    for line in (top / page).read_text(encoding="utf-8").split("\n"):
        fence = re.match(r"^ *```(.*)$", line)
        if language is None and fence:
            language, text = fence.group(1).strip(), []
        elif fence:
            key = (heading, language)
            seen[key] = seen.get(key, 0) + 1
            done.append(Block(page, heading, language, seen[key], "\n".join(text) + "\n"))
            language = None
        elif language is not None:
            text.append(line)
        elif line.startswith("#"):
            heading = line.lstrip("#").strip()
    if language is not None:
        raise ValueError(f"{page}: a fence is not closed")
    return done


def indented(page, top=TOP):
    """The lines of blocks that are marked by indentation alone, which no test would find."""
    fenced, before, done = False, "", []
    for number, line in enumerate((top / page).read_text(encoding="utf-8").split("\n"), 1):
        if re.match(r"^ *```", line):
            fenced = not fenced
        elif not fenced and line.startswith("    ") and not before.strip():
            done.append(number)
        before = line
    return done
