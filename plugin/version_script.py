#!/usr/bin/env python3
"""Makes the linker's version script from the list of exports.

    version_script.py EXPORTS OUTPUT
"""
import sys
from pathlib import Path


def main():
    functions, patterns = [], []
    for line in Path(sys.argv[1]).read_text(encoding="utf-8").splitlines():
        if not line or line.startswith("#"):
            continue
        kind, _, pattern = line.partition(" ")
        if kind == "c++":
            patterns.append(pattern)
        else:
            functions.append(line)
    lines = ["{", "  global:"] + [f"    {name};" for name in functions]
    lines += ['    extern "C++" {'] + [f"      {pattern};" for pattern in patterns] + ["    };"]
    lines += ["  local: *;", "};"]
    Path(sys.argv[2]).write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
