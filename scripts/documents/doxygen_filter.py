"""Shows the comments of a header to Doxygen: prints it with them in Doxygen's form.

    doxygen_filter.py HEADER

A comment right before a declaration, or behind it on its line, tells of that declaration; one that an empty
line follows tells of the header. Lines set in from the margin are tables and examples, shown as they stand.
"""
import re
import sys
from pathlib import Path


def marked(words):
    """Words that Doxygen would take for commands or links, made plain."""
    return re.sub(r"([\\@%#<>&])", r"\\\1", words) if "`" not in words else words


def block(lines, indent, about_header):
    """A comment of its own lines, given without slashes."""
    shown = [f"{indent}/// @file"] if about_header else []
    in_table = False
    for line in lines:
        is_table = line.startswith("   ") or (in_table and line.startswith("  "))
        if is_table != in_table:
            shown.append(f"{indent}///")
            in_table = is_table
        # Text set in by four spaces and more is shown as it stands.
        shown.append(f"{indent}///    {line}" if is_table else f"{indent}///{marked(line)}")
    return shown


def filtered(text):
    lines = text.split("\n")
    shown = []
    i = 0
    while i < len(lines):
        start = i
        while i < len(lines) and re.match(r"\s*//", lines[i]):
            i += 1
        if i > start:
            indent = re.match(r"\s*", lines[start]).group()
            words = [re.sub(r"^\s*//", "", line) for line in lines[start:i]]
            is_last = i == len(lines) or not lines[i].strip()
            shown += block(words, indent, about_header=is_last and not indent)
            continue
        behind = re.match(r'(.*[;,{)\w]\s*)//( .*)$', lines[i])
        if behind and '"' not in behind[2]:
            lines[i] = f"{behind[1]}///<{marked(behind[2])}"
        elif behind:
            lines[i] = f"{behind[1]}///<{behind[2]}"
        shown.append(lines[i])
        i += 1
    return "\n".join(shown)


if __name__ == "__main__":
    sys.stdout.write(filtered(Path(sys.argv[1]).read_text()))
