"""The pages of the documents, and what stands in them."""
import re
import sys
from pathlib import Path
from typing import NamedTuple

BUILD, FOLDER, ROOT = (Path(argument).resolve() for argument in sys.argv[1:4])
PAGES = [ROOT / "README.md", *sorted((ROOT / "docs").rglob("*.md"))]
COMMAND_PAGES = sorted((ROOT / "docs/commands").glob("*.md"))


def name_of(page):
    return str(page.relative_to(ROOT))


class Fence(NamedTuple):
    language: str
    line: int  # of the first line within
    lines: list


class Shown(NamedTuple):
    """A command and what the page says that it prints."""
    command: str
    line: int
    output: list


def fences(page):
    found, lines = [], page.read_text().split("\n")
    i = 0
    while i < len(lines):
        opening = re.match(r"```(.*)$", lines[i])
        i += 1
        if not opening:
            continue
        start = i
        while lines[i] != "```":
            i += 1
        found.append(Fence(opening[1].strip(), start + 1, lines[start:i]))
        i += 1
    return found


def shown_commands(page, language="console"):
    """Those of the page's blocks in that language, in order. A line that ends with a backslash goes on in the next."""
    found = []
    for fence in fences(page):
        if fence.language != language:
            continue
        if not fence.lines[0].startswith("$ "):
            raise AssertionError(f"{name_of(page)}:{fence.line}: a console block begins with a command")
        for number, line in enumerate(fence.lines, fence.line):
            if found and not found[-1].output and found[-1].command.endswith("\\"):
                found[-1] = found[-1]._replace(command=f"{found[-1].command}\n{line}")
            elif line.startswith("$ "):
                found.append(Shown(line[2:], number, []))
            else:
                found[-1].output.append(line)
    return found


def differs(expected, printed):
    """Why printed lines are not the expected ones, or None. `...` stands for any number of lines."""
    parts, part = [], []
    for line in expected:
        if line.strip() == "...":
            parts.append(part)
            part = []
        else:
            part.append(line)
    parts.append(part)
    if len(parts) == 1:
        return None if expected == printed else "not these lines"
    first, *middle, last = parts
    if printed[:len(first)] != first:
        return "the first lines differ"
    at = len(first)
    for part in middle:
        places = (i for i in range(at, len(printed) - len(part) + 1) if printed[i:i + len(part)] == part)
        place = next(places, None)
        if place is None:
            return f"nowhere found: {part}"
        at = place + len(part)
    if len(printed) - len(last) < at or printed[len(printed) - len(last):] != last:
        return "the last lines differ"
    return None
