#!/usr/bin/env python3
"""Doxygen's input filter for the public headers (Doxyfile: INPUT_FILTER).

The headers' /// comments are plain text laid out for a reader of the header:
aligned columns, paths such as C:\\WINDOWS, printf formats, <placeholders>.
Doxygen would read much of that as commands or markup, so each comment is
shown as written: its first sentence becomes the brief description (with
Doxygen's special characters escaped) and the whole text a \\verbatim block.
Lines that start with a command (\\file, \\name, @{, @}) stay commands. The
line count is kept, so Doxygen's warnings name the header's own lines.
"""
import re
import sys

DOC = re.compile(r"^(\s*)///(?!<)( ?)(.*)$")
TRAILING = re.compile(r"^(.*///<\s?)(.*)$")
COMMAND = re.compile(r"^(\\file|\\name)")


def escape(text):
    return re.sub(r'([\\@&$#<>%"])', r"\\\1", text)


def first_sentence(lines):
    text = " ".join(line.strip() for line in lines if line.strip())
    m = re.match(r"^(.*?[.])(\s|$)", text)
    return m.group(1) if m else text


def render(block):
    """block: list of (indent, text) of one /// comment."""
    commands = []
    while block and COMMAND.match(block[0][1]):
        commands.append(block.pop(0))
    # One C-style block, so that the verbatim text carries no /// marks; a
    # \\file or \\name heads it and takes no brief.
    out = [f"{indent}/** {text}" for indent, text in commands]
    if not block:
        out[-1] += " */"
        return out
    texts = [t for _, t in block]
    brief = "" if commands else f"\\brief {escape(first_sentence(texts))} \\details "
    for k, (indent, text) in enumerate(block):
        line = f"{indent}{'' if commands else '/** '}{brief}\\verbatim {text}" if k == 0 else text
        if k == len(block) - 1:
            line += " \\endverbatim */"
        out.append(line)
    return out


def main(path):
    with open(path, encoding="utf-8") as f:
        lines = f.read().split("\n")
    out, block = [], []
    for line in lines + [""]:
        m = DOC.match(line)
        if m and m.group(3).strip() in ("@{", "@}"):  # a member group's bounds
            if block:
                out.extend(render(block))
                block = []
            out.append(f"{m.group(1)}/** {m.group(3).strip()} */")
            continue
        if m and not (COMMAND.match(m.group(3)) and block):
            block.append((m.group(1), m.group(3)))
            continue
        if block:
            out.extend(render(block))
            block = []
        if m:  # a command after a comment: a block of its own
            block.append((m.group(1), m.group(3)))
            continue
        t = TRAILING.match(line)
        out.append(f"{t.group(1)}{escape(t.group(2))}" if t else line)
    sys.stdout.write("\n".join(out[:-1]))


if __name__ == "__main__":
    main(sys.argv[1])
