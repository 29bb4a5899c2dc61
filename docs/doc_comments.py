#!/usr/bin/env python3
"""Doxygen input filter: reads the kit's plain // comments as documentation.

The kit's headers comment their names with ordinary // lines, the way the rest
of the code does; Doxygen reads only ///-style comments. Run on one header,
this filter shows Doxygen what a reader of the header sees:
  - the comment that opens a file describes the file's main type: the first
    class, struct or enum at namespace level without a comment of its own;
  - a comment block describes every declaration right below it, up to the next
    blank line, comment or access label (the headers comment a group of
    accessors once);
  - a trailing // comment after a member, field or enumerator describes it
    (rather than the block above).
Characters that Doxygen would read as commands or HTML are escaped outside
`code spans`. No line is added or removed, so a warning names the header's
own line.

  doc_comments.py HEADER      (writes the filtered header to standard output)
"""
import os
import re
import sys

FULL_LINE = re.compile(r"^(\s*)//(?!/)\s?(.*)$")
TRAILING = re.compile(r"^(\s*[^/\s#}].*?[;,{)}])(\s+)//(?!/)\s?(.*)$")
COMPOUND = re.compile(r"^\s*(?:template\s*<.*>\s*)?(class|struct|union|enum)\b(?:\s+class)?\s+(\w+)[^;]*$")
NAMESPACE = re.compile(r"^\s*namespace\s+([\w:]+)\s*\{")
SECTION = re.compile(r"^-{2,}.*-{2,}$")
ACCESS = re.compile(r"^\s*(public|protected|private)\s*:")
SPECIAL = re.compile(r"([\\@<>#&$%])")
LITERAL = re.compile(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'')


def escape(text):
    """Escapes Doxygen's special characters outside backtick code spans."""
    parts = text.split("`")
    for index in range(0, len(parts), 2):
        parts[index] = SPECIAL.sub(r"\\\1", parts[index])
    return "`".join(parts)


def code_of(line):
    """The line without string literals and trailing comment."""
    return LITERAL.sub('""', line).split("//")[0].rstrip()


def inline_doc(text):
    return "/** " + text.replace("*/", "* /") + " */ "


def opening_comment_length(lines):
    """How many lines the comment that opens the file takes."""
    length = 0
    while length < len(lines) and FULL_LINE.match(lines[length]):
        length += 1
    return length


def main_type(lines, file_name):
    """The kind and qualified name of the file's main type: the namespace-level
    type without a comment of its own that is named after the file, else the
    first such type; None when there is none."""
    candidates = []
    namespaces = []
    depth = 0
    for index, line in enumerate(lines):
        if FULL_LINE.match(line) or line.lstrip().startswith("#"):
            continue
        code = code_of(line)
        namespace = NAMESPACE.match(code)
        compound = COMPOUND.match(code)
        if compound and depth == len(namespaces) and not FULL_LINE.match(lines[index - 1]):
            candidates.append((compound.group(1), "::".join(namespaces + [compound.group(2)])))
        if namespace:
            namespaces.append(namespace.group(1))
        depth += code.count("{") - code.count("}")
        while len(namespaces) > depth:
            namespaces.pop()
    stem = os.path.splitext(file_name)[0].replace("_", "").lower()
    for kind, name in candidates:
        if name.split("::")[-1].lower() == stem:
            return kind, name
    return candidates[0] if candidates else None


def filtered(lines, file_name):
    out = []
    opening = opening_comment_length(lines)
    described = main_type(lines, file_name)
    if opening and described and opening < len(lines) and not lines[opening].strip():
        # The opening comment documents the main type; the blank line after
        # it says which.
        out = ["/// " + escape(FULL_LINE.match(line).group(2)) for line in lines[:opening]]
        out.append("/// \\%s %s" % described)
    else:
        out = list(lines[:opening])
        opening -= 1  # the line after the comment is ordinary code
    scopes = []  # per open brace: "declarations" (namespace, class) or "code"
    block = None  # the comment block documenting the declarations below it
    block_depth = 0
    documented = 0  # declarations the block has documented so far
    continuing = False  # the previous line left a declaration open
    previous_was_comment = False

    for line in lines[opening + 1:]:
        full = FULL_LINE.match(line)
        if full:
            indent, text = full.groups()
            if SECTION.match(text):
                # A section heading in the header, not documentation.
                block = None
                previous_was_comment = False
                out.append(line)
                continue
            if not previous_was_comment or block is None:
                block, block_depth, documented = [], len(scopes), 0
            block.append(escape(text))
            out.append(indent + "/// " + escape(text))
            previous_was_comment = True
            continue

        previous_was_comment = False
        stripped = line.strip()
        if not stripped or ACCESS.match(line):
            block = None
            out.append(line)
            continue
        if stripped.startswith("#"):
            out.append(line)
            continue

        code = code_of(line)
        starts = not continuing and not stripped.startswith(("}", ")", ":", ","))
        in_declarations = all(scope == "declarations" for scope in scopes)
        special = stripped.startswith("~") or "= delete" in code
        prefix = ""
        trailing = TRAILING.match(line)
        if block is not None and starts and len(scopes) == block_depth and in_declarations and not special:
            if documented > 0 and not trailing:
                prefix = inline_doc(" ".join(block))
            documented += 1

        if trailing:
            # Closed on its line, so that a comment on the next line stays apart.
            head, space, text = trailing.groups()
            line = head + space + "/**< " + escape(text).replace("*/", "* /") + " */"
        if prefix:
            indent = line[: len(line) - len(line.lstrip())]
            line = indent + prefix + line.lstrip()
        out.append(line)

        opens_scope = NAMESPACE.match(code) or (COMPOUND.match(code) and not code.lstrip().startswith("enum"))
        if COMPOUND.match(code) and "{" in code:
            block = None  # the block described the type, not its members
        for brace in re.findall(r"[{}]", code):
            if brace == "{":
                scopes.append("declarations" if opens_scope else "code")
                opens_scope = False
            elif scopes:
                scopes.pop()
        if block is not None and len(scopes) < block_depth:
            block = None
        continuing = not code.endswith((";", "{", "}"))
    return out


def main():
    with open(sys.argv[1], encoding="utf-8") as header:
        lines = header.read().split("\n")
    sys.stdout.write("\n".join(filtered(lines, os.path.basename(sys.argv[1]))))


if __name__ == "__main__":
    main()
