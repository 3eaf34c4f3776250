"""Makes a C++ header of the page's static files: text, script and style, and the table of units.

    embed.py FOLDER HEADER
"""
import base64
import hashlib
import re
import sys
from pathlib import Path

CHUNK = 4000  # characters of a literal; compilers promise 65,536 for a whole one, joined ones included


def literal(text):
    """A text as C++ literals, one below the other."""
    pieces = [text[i:i + CHUNK] for i in range(0, len(text), CHUNK)] or [""]
    lines = []
    for piece in pieces:
        escaped = piece.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
        lines.append('    "' + "".join(c if ord(c) < 128 else octal(c) for c in escaped) + '"')
    return "\n".join(lines)


def octal(character):
    return "".join(f"\\{byte:03o}" for byte in character.encode())


def digest(text):
    return "sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()


def units(text):
    rows = [line.split("\t") for line in text.splitlines() if line and not line.startswith("#")][1:]
    for row in rows:
        if len(row) != 2 or not re.fullmatch(r"[\w/]+", row[0]) or not row[1]:
            sys.exit(f"units.tsv: not a path and a unit: {row}")
    paths = [row[0] for row in rows]
    if len(set(paths)) != len(paths):
        sys.exit("units.tsv: a path stands twice")
    return rows


def main(folder, header):
    page, style, script = ((folder / name).read_text() for name in
                           ("page.html", "page.css", "page.js"))
    if "</script" in script or "</style" in style:
        sys.exit("a script or style must not hold its own end tag")
    rows = units((folder / "units.tsv").read_text())
    table = "\n".join(f"    {{{literal(path).strip()}, {literal(unit).strip()}}}," for path, unit in rows)
    content = f"""// Made by tools/gridkit/report/embed.py from the files beside it; do not edit.
#pragma once

#include <string_view>

namespace report::assets {{

inline constexpr std::string_view page_html =
{literal(page)};
inline constexpr std::string_view page_css =
{literal(style)};
inline constexpr std::string_view page_js =
{literal(script)};

// What a Content-Security-Policy knows the two by.
inline constexpr std::string_view style_digest = "{digest(style)}";
inline constexpr std::string_view script_digest = "{digest(script)}";

// The end of an element's path, and its unit.
struct PathUnit {{
  std::string_view path;
  std::string_view unit;
}};
inline constexpr PathUnit path_units[] = {{
{table}
}};

}}  // namespace report::assets
"""
    if not header.exists() or header.read_text() != content:
        header.parent.mkdir(parents=True, exist_ok=True)
        header.write_text(content)


main(Path(sys.argv[1]), Path(sys.argv[2]))
