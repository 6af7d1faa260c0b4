#!/usr/bin/env python3
"""doxygen_filter.py <file>: the file as Doxygen wants to read it, line for line.

The headers' comments are plain ones. Here they become Doxygen's, under these rules:

- A file's first comment is the file's.
- A comment with code on the line below it belongs to that code, and so does one that ends a line of
  code. In a C header it belongs to every declaration of an unbroken run, as a reader takes it. A
  comment followed by an empty line, a heading (--- so ---) and whatever stands in a function's body
  stay plain.
- What a comment names has to be there: each ZEB... name and each header becomes an explicit link,
  which Doxygen refuses when it leads nowhere.
- Lists, tables and examples in comments are set as such; everything else in them is plain text.
- What follows from the declaration alone is said here and not in every header: the structs of procs
  and their members, the rows, the interfaces' names; what is deleted, moved or overridden; an overload
  right after one that has a comment; read, which throws what tryRead answers.

A Markdown page passes through too: links to what is not on the pages of the documentation become
plain text, and the titles of the guide's files leave the fences.
"""

import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
TOKEN = re.compile(
    r"`[^`]*`"                                      # code
    r"|\"[^\"\s]*\""                                # a text or a registered name
    r"|\[(?:any-thread|one-owner|frame-thread|calls-host)\]"
    r"|\b(?:zeb/)?(?:sdk/)?\w+\.(?:hpp|h)\b"        # a header
    r"|\bZEB\w*_\.\.\.|\bZEB\w+|\bZeb\w+"           # a name of the interface
    r"|[\\@<>#%&*$]"                                # what Doxygen or Markdown would take for theirs
)
FUNCTION = re.compile(r"^ *(?:\[\[nodiscard\]\] |static |inline |explicit )*"
                      r"(?:[\w:<>&*, ]+?[ &*])?(\w+)\(")
HEADING = re.compile(r"^(//|/\*) ---")
ROW = re.compile(r"^(\"[^\"]+\"|[^\s\"][^\"]{0,30}?)  +\S")
CODE = re.compile(r";( *//.*)?$|[{}]|-->")


# --- The text of a comment ----------------------------------------------------------------------

def token(match):
    text = match.group(0)
    if text[0] == "`":
        return text
    if text[0] == '"':
        return '"' + plain(text[1:-1]) + '"'
    if text[0] == "[":
        return f'@ref guide_threads "{text}"'
    if text.endswith((".h", ".hpp")):
        return f'@ref {text.split("/")[-1]} "{text}"'
    if text.startswith("ZEB") and not text.endswith(("...", "Interface")):
        return "#" + text
    return plain(text)


def plain(text):
    return re.sub(r"[\\@<>#%&*$]", r"\\\g<0>", text)


def prose(text):
    return TOKEN.sub(token, text)


def indent_of(line):
    return len(line) - len(line.lstrip(" "))


class Setting:
    """The text of one comment as Doxygen's, as many lines as before."""

    def __init__(self, lines):
        self.lines = lines
        self.done = []
        self.in_code = False
        self.row_indent = None  # of the list that goes on
        self.column = 0         # where the right side of that list begins

    def set(self):
        for i, line in enumerate(self.lines):
            self.done.append(self.line(i, line))
        if self.in_code:
            self.done[-1] += "\n@endcode"
        return self.done

    def line(self, i, line):
        if self.in_code:
            return self.code_line(i, line)
        if not line.strip():
            self.row_indent = None
            self.in_code = self.begins_code(i + 1)
            return "@code{.unparsed}" if self.in_code else ""
        if self.row_indent is None and self.begins_list(i):
            self.row_indent = indent_of(line)
            self.column = line.index("  ", self.row_indent)
            self.column += indent_of(line[self.column:])
        if self.row_indent is not None:
            return self.list_line(line)
        return prose(line.strip())

    def code_line(self, i, line):
        if line.strip():
            return line
        self.in_code = self.begins_code(i + 1)
        return "" if self.in_code else "@endcode"

    def list_line(self, line):
        depth = indent_of(line)
        if depth > self.row_indent:
            return "  " + prose(line.strip())
        if depth < self.row_indent:
            self.row_indent = None
            return prose(line.strip())
        label, text = line[:self.column].strip(), line[self.column:].strip()
        return f"- {prose(label)}: {prose(text)}" if text else f"- {prose(label)}"

    def begins_code(self, i):
        return i < len(self.lines) and indent_of(self.lines[i]) >= 2 and not self.begins_list(i)

    def begins_list(self, i):
        """Rows of a name, two blanks or more, and what it means."""
        rows = []
        for line in self.lines[i:]:
            if not line.strip():
                break
            rows.append(line)
        return bool(rows and ROW.match(rows[0].strip())
                    and not any(CODE.search(row) for row in rows))


def sentence(text):
    """What ends a line of code, as a sentence of its own."""
    text = text[0].upper() + text[1:] if not re.match(r"\w*[A-Z_(]", text) else text
    return text if text[-1] in ".!?:" else text + "."


# --- The lines of a file ------------------------------------------------------------------------

class Line:
    """One line: its code and its comment, and whether it begins within a function's body."""

    def __init__(self, text):
        self.text = text
        self.code = text
        self.comment = None   # the comment after the code, or the whole line
        self.opens = False    # a comment /* that ends on a later line
        self.inside = False   # within such a comment
        self.body = False
        self.directive = False
        self.depth = 0


def split_comment(text, inside):
    """The code of a line, its last comment with its marks, and whether that goes on below."""
    if inside:
        end = text.find("*/")
        if end < 0:
            return "", text, True
        return text[end + 2:], text[:end + 2], False
    code, i = "", 0
    while i < len(text):
        character = text[i]
        if character in "\"'" and not (character == "'" and i and text[i - 1].isalnum()):
            end = i + 1
            while end < len(text) and text[end] != character:
                end += 2 if text[end] == "\\" else 1
            code += text[i:end + 1]
            i = end + 1
        elif text.startswith("//", i):
            return code, text[i:], False
        elif text.startswith("/*", i):
            end = text.find("*/", i)
            if end < 0:
                return code, text[i:], True
            if not text[end + 2:].strip(" \\"):
                return code, text[i:end + 2], False
            code += text[i:end + 2]
            i = end + 2
        else:
            code += character
            i += 1
    return code, None, False


SCOPE = re.compile(r"(?:^|\s)(?:namespace|class|struct|union|enum)\b|extern \"C\"")


def kind_of(head):
    """What the brace after this text opens: a namespace ("file"), a class ("scope") or a body."""
    head = re.sub(r"^\s*template\s*<.*?>\s*(?=class|struct|union|requires|\[\[|\w)", "", head,
                  flags=re.DOTALL)
    if "requires" in head:
        head = re.sub(r"^.*\brequires\b.*?(?=\b(?:class|struct)\b|$)", "", head, flags=re.DOTALL)
    without_bases = re.sub(r"\[\[.*?\]\]|:.*", "", head, flags=re.DOTALL)
    if not SCOPE.search(head) or re.search(r"[()=]", without_bases):
        return "body"
    return "file" if re.search(r"\bnamespace\b|extern", head) else "scope"


def read(text):
    """The lines of a header, with what stands in a function's body marked."""
    lines = [Line(line) for line in text.split("\n")]
    inside = False
    continued = False
    scopes = []
    statement = ""
    for line in lines:
        line.body = "body" in scopes
        line.depth = len([scope for scope in scopes if scope != "file"])
        line.inside = inside
        line.code, line.comment, line.opens = split_comment(line.text, inside)
        inside = line.opens
        line.directive = continued or line.code.lstrip().startswith("#")
        if line.directive:
            continued = line.text.endswith("\\")
            continue
        bare = re.sub(r"\"(?:[^\"\\]|\\.)*\"|'(?:[^'\\]|\\.)'",
                      lambda found: '"C"' if found.group(0) == '"C"' else '""', line.code)
        for character in bare + "\n":
            if character == "{":
                scopes.append(kind_of(statement))
                statement = ""
            elif character == "}":
                if scopes:
                    scopes.pop()
                statement = ""
            elif character == ";":
                statement = ""
            else:
                statement += character
    return lines


# --- What the declarations say by themselves ----------------------------------------------------

NAME = r"(?P<name>\w+)"
SELF_EVIDENT = [
    (re.compile(rf"^\s*{NAME}\(const (?P=name)&( \w+)?\) = delete;"), "Cannot be copied."),
    (re.compile(rf"^\s*{NAME}& operator=\(const (?P=name)&( \w+)?\) = delete;"),
     "Cannot be assigned."),
    (re.compile(rf"^\s*{NAME}& operator=\((?P=name)&&( \w+)?\) = delete;"), "Cannot be assigned."),
    (re.compile(rf"^\s*{NAME}\((?P=name)&&( \w+)?\)"), "Takes over what the other one holds."),
    (re.compile(rf"^\s*{NAME}& operator=\((?P=name)&&( \w+)?\)"),
     "Takes over what the other one holds; what this one held ends with one of the two."),
    (re.compile(r"^\s*using Base = "), "The base class."),
    (re.compile(r"^\s*.*\) (?:const |noexcept )*override\b"), "As the base class has it."),
    (re.compile(r"^\s*\[\[nodiscard\]\] \w+ share\(\) const"),
     "A second owner of the same object."),
    (re.compile(r"^#define (?P<name>ZEB_\w+)_INTERFACE \""), "The name of the interface."),
    (re.compile(r"^#define (?P<name>ZEB_\w+)_OLDER_PROCS\("),
     "The interface's older procs, kept for clients built against them, as rows of member, method "
     "and proc. No struct has them; they are looked up one by one."),
    (re.compile(r"^#define (?P<name>ZEB_\w+)_PROCS\("),
     "The interface's procs, as rows of member, method and proc."),
    (re.compile(r"^typedef struct (?P<name>ZEB\w+)Procs \{"),
     "The procs of the interface, filled by #ZEBFetch{name}Procs."),
    (re.compile(r"^ZEB_SDK_OWN\(\w+, (?P<name>ZEB_\w+), (?P<procs>\w+)\)"),
     "The interface #{name}_INTERFACE; its procs are #{procs}."),
]


def self_evident(code):
    for pattern, text in SELF_EVIDENT:
        found = pattern.match(code)
        if found:
            values = {key: value for key, value in found.groupdict().items() if value}
            if "ZEBFetch" in text:
                values["name"] = values["name"][len("ZEB"):]
            return text.format(**values)
    return None


def members(text, comments):
    """The comments of the members that rows make: those of the procs' own types."""
    bare = text.replace("\\\n", " ")
    rows = {name: re.findall(r"X\((\w+), (\w+),\s+(\w+)\)", body)
            for name, body in re.findall(r"^#define (\w+)\(X\)(.*)$", bare, re.MULTILINE)}
    done = []
    for struct, name in re.findall(r"^typedef struct (\w+) \{\n  (\w+)\(ZEB_PROC_MEMBER\)", text,
                                   re.MULTILINE):
        for member, method, proc in rows[name]:
            done.append(f"/** @var {struct}::{member}\n{comments.get(proc, '')}\n\n"
                        f'Method "{method}", proc #{proc}. */')
    return done


# --- Headers ------------------------------------------------------------------------------------

def stripped(comment):
    """The text of a comment's line without its marks."""
    text = comment.strip()
    if text.endswith("\\"):
        text = text[:-1].rstrip()
    text = re.sub(r"^(//|/\*|\*(?!/)) ?", "", text)
    return re.sub(r" ?\*/$", "", text)


class Header:
    """A header whose comments become Doxygen's."""

    def __init__(self, text, in_c):
        self.text = text
        self.lines = read(text)
        self.in_c = in_c
        self.done = [line.text for line in self.lines]
        self.documented = set()  # the lines of code that have their comment
        self.comments = {}       # of the procs' types, by name
        self.appended = []       # what has no room where it belongs
        self.texts = {}          # of all declarations, by line

    def block_end(self, begin):
        """The line after the comment that begins here and stands on lines of its own."""
        if self.lines[begin].comment.lstrip().startswith("//"):
            end = begin
            while (end < len(self.lines) and self.lines[end].comment is not None
                   and not self.lines[end].code.strip(" \\")
                   and self.lines[end].comment.startswith("//")
                   and (end == begin or "NOLINT" not in self.lines[end].text
                        and "NOLINT" not in self.lines[begin].text)):
                end += 1
            return end
        end = begin
        while self.lines[end].opens:
            end += 1
        return end + 1

    def declaration_end(self, begin):
        """The last line of the declaration that begins here."""
        end = begin
        if self.lines[begin].directive:
            while self.lines[end].text.endswith("\\"):
                end += 1
            return end
        while end + 1 < len(self.lines) and not (
                self.lines[end].code.rstrip().endswith((";", "}"))
                and self.lines[end + 1].depth <= self.lines[begin].depth):
            end += 1
        return end

    def keep_comment(self, i, text):
        proc = re.match(r"typedef .*?\(\*(\w+)\)", self.lines[i].code)
        if proc:
            self.comments[proc.group(1)] = text.strip()

    def put_before(self, i, comment):
        """A comment for the declaration at line i, without a line of its own."""
        if not self.lines[i].directive:
            self.done[i] = f"/** {comment} */ {self.done[i]}"
        elif not self.done[i - 1].strip():
            self.done[i - 1] = f"/** {comment} */"
        else:
            name = re.match(r"#define (\w+)", self.lines[i].code).group(1)
            self.appended.append(f"/** @def {name}\n{comment} */")

    def write_comment(self, begin, end, prefix, addition=""):
        """Lines begin..end-1 hold one comment; writes it anew as Doxygen's."""
        texts = [stripped(self.lines[i].comment) for i in range(begin, end)]
        set_lines = Setting(texts).set()
        if addition:
            set_lines[0] = f"{addition} @details {set_lines[0]}"
        if prefix.endswith("<") and re.match(r"[a-z]+\b", set_lines[0]):
            set_lines[0] = set_lines[0][0].upper() + set_lines[0][1:]
        set_lines[0] = prefix + " " + set_lines[0]
        set_lines[-1] += " */"
        for i, text in zip(range(begin, end), set_lines):
            code = self.lines[i].code if not self.lines[i].inside else ""
            tail = " \\" if self.lines[i].text.endswith("\\") else ""
            self.done[i] = code + text + tail
        return texts

    def trailing(self, i):
        """The comment that ends this line of code, if it is one to be shown."""
        line = self.lines[i]
        if (line.comment is None or line.inside or not line.code.strip() or line.body
                or line.code.strip() == "\\" or line.comment.startswith("// NOLINT")
                or line.code.lstrip().startswith(("}", "#endif", "#include", "#else"))):
            return None
        end = i + 1
        while self.lines[end - 1].opens:
            end += 1
        return " ".join(stripped(self.lines[k].comment) for k in range(i, end)).strip(), end

    def document(self, begin, comment_end, target):
        """Gives the comment begin..comment_end-1 to the declaration at target and to its run."""
        own = self.in_c and self.lines[target].depth == 0 and self.trailing(target)
        addition = ""
        if own:
            addition = sentence(prose(own[0]))
            self.drop_trailing(target, own[1])
        texts = self.write_comment(begin, comment_end, "/**", addition)
        self.documented.add(target)
        self.texts[target] = "\n".join(Setting(texts).set())
        self.keep_comment(target, self.texts[target])
        if not self.in_c or self.lines[target].depth:
            return
        following = self.declaration_end(target) + 1
        while self.continues_run(target, following):
            own = self.trailing(following)
            addition = ""
            if own:
                addition = sentence(prose(own[0])) + " @details "
                self.drop_trailing(following, own[1])
            comment = addition + "\n".join(Setting(texts).set()).strip()
            self.keep_comment(following, comment)
            self.put_before(following, comment)
            self.documented.add(following)
            following = self.declaration_end(following) + 1

    def continues_run(self, first, i):
        if i >= len(self.lines):
            return False
        code = self.lines[i].code.lstrip()
        if self.lines[i].directive != self.lines[first].directive:
            return False
        return code.startswith(("typedef ", "#define ", "ZEB_EXPORT "))

    def drop_trailing(self, begin, end):
        for i in range(begin, end):
            self.done[i] = self.lines[i].code if not self.lines[i].inside else ""
            self.lines[i].comment = None

    def filtered(self):
        i = 0
        first = True
        while i < len(self.lines):
            line = self.lines[i]
            if line.comment is None or line.inside:
                i += 1
                continue
            if line.code.strip(" \\"):
                found = self.trailing(i)
                if found and i not in self.documented or found and line.depth:
                    self.write_comment(i, found[1], "/**<")
                    self.documented.add(i)
                i = found[1] if found else i + 1
                continue
            end = self.block_end(i)
            if first:
                self.write_comment(i, end, "/**")
                self.done[end - 1] = self.done[end - 1].removesuffix("*/") + "@file */"
                first = False
            elif not HEADING.match(line.comment) and not line.body and "NOLINT" not in line.text:
                target = end
                while target < len(self.lines) and "NOLINT" in self.lines[target].text and \
                        not self.lines[target].code.strip():
                    target += 1
                if self.is_declaration(target):
                    self.document(i, end, target)
            i = end
        self.complete()
        if self.in_c:
            self.appended += members(self.text, self.comments)
        return "\n".join(self.done + self.appended) + "\n"

    def complete(self):
        """What the declarations say by themselves, and what Doxygen needs to understand them."""
        documented = {self.function_name(i) for i in self.documented}
        ends_at = None
        overloaded, shared = None, ""  # the function that this run of lines began with
        for i, line in enumerate(self.lines):
            if line.code.startswith("ZEB_DEFINE_FETCH("):
                ends_at = ")"
            if ends_at and line.code.rstrip().endswith(ends_at):
                self.done[i] += ";"  # without it Doxygen loses its way behind the macro
                ends_at = None
            if not line.text.strip():
                overloaded = None
            if line.body or line.inside:
                continue
            if i in self.documented:
                overloaded, shared = self.function_name(i), self.texts.get(i)
                continue
            code = line.code
            if code.rstrip().endswith(","):
                code = code.rstrip() + " " + self.lines[i + 1].code.lstrip()
            if self.in_c or not self.begins_declaration(i):
                text = self_evident(line.code) if self.in_c else None
            else:
                text = self_evident(code) or self.in_both_forms(i, documented)
                if overloaded and self.function_name(i) == overloaded:
                    text = text or shared
            if text:
                self.put_before(i, text)

    def begins_declaration(self, i):
        before = self.lines[i - 1].code.strip()
        return not before.startswith(("template", "requires")) and not before.endswith(",")

    def function_name(self, i):
        """The name of the function that is declared from line i on, or none."""
        while self.lines[i].code.lstrip().startswith(("template ", "requires ")):
            i += 1
        found = FUNCTION.match(self.lines[i].code)
        return found.group(1) if found else None

    def in_both_forms(self, i, documented):
        """read throws what tryRead answers: whichever has no comment is explained by the other."""
        name = self.function_name(i)
        if not name:
            return None
        attempt = "try" + name[0].upper() + name[1:]
        if attempt in documented:
            return f"As {attempt}(), but throws the error as Failure."
        throwing = name[3:4].lower() + name[4:]
        if re.match(r"try[A-Z]", name) and throwing in documented:
            return f"As {throwing}(), but answers the error instead of throwing it."
        return None

    def is_declaration(self, i):
        if i >= len(self.lines):
            return False
        code = self.lines[i].code.strip()
        if not code or re.match(r"\}|static_assert|friend [^(]*;|public:|private:", code):
            return False
        return not code.startswith("#") or code.startswith("#define ") and self.lines[i].directive


# --- Pages --------------------------------------------------------------------------------------

def page(path, text):
    """A Markdown page: what Doxygen would not find, or not understand."""
    text = re.sub(r"^<!--.*?-->\n", "", text)
    text = re.sub(r"^# (.*)$", lambda found: f"# {found.group(1)} {{#{name_of(path)}}}", text,
                  count=1, flags=re.MULTILINE)
    parts = re.split(r"^(```.*?^```$)", text, flags=re.MULTILINE | re.DOTALL)
    return "".join(fenced(part) if part.startswith("```") else linked(part, path)
                   for part in parts)


def name_of(path):
    """The page's name among the pages: guide_threads for docs/guide/threads.md."""
    if path.resolve() == TOP / "README.md":
        return "mainpage"
    name = path.resolve().relative_to(TOP).with_suffix("").as_posix()
    return re.sub(r"\W", "_", name.removeprefix("docs/").removeprefix("include/"))


def fenced(block):
    """A fence that says what Doxygen knows: a language it can colour, and no title."""
    head, rest = block.split("\n", 1)
    found = re.match(r"```(\w*)(?: title=(\S+))?", head)
    language = {"c": "c", "cpp": "cpp"}.get(found.group(1), "unparsed")
    title = f"`{found.group(2)}`:\n\n" if found.group(2) else ""
    return f"{title}```{{.{language}}}\n{rest}"


def linked(text, path):
    def link(match):
        label, target = match.groups()
        if "://" in target:
            return match.group(0)
        file = (path.parent / target.split("#")[0]).resolve()
        if is_shown(file) or not file.exists():
            name = "index" if file == TOP / "README.md" else name_of(file)
            return f'@ref {name} "{label}"'
        return label
    return re.sub(r"\[([^\]]+)\]\(([^)\s]+)\)", link, text)


def is_shown(file):
    """Is this file one of the pages? docs/Doxyfile names the same folders."""
    if file.suffix != ".md":
        return False
    place = file.relative_to(TOP).as_posix()
    return place == "README.md" or place.startswith(("docs/guide/", "docs/reference/", "include/"))


def main():
    path = pathlib.Path(sys.argv[1]).resolve()
    text = path.read_text(encoding="utf-8")
    if path.suffix == ".md":
        sys.stdout.write(page(path, text))
    else:
        sys.stdout.write(Header(text.rstrip("\n"), path.suffix == ".h").filtered())


main()
