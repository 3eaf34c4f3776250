#!/usr/bin/env python3
"""Writes whole annotations: the smallest and the largest of each version.

    make_documents.py FOLDER        -> minimal-3.4.xml, maximal-3.4.xml, ...
"""
import sys
from pathlib import Path

import fragments


def main():
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    schema, versions = fragments.load()
    for version in versions:
        for kind in ("minimal", "maximal"):
            builder = fragments.Builder(schema, version, kind == "maximal")
            root = builder.element(version.classes["c_level1Product"], "level1Product")
            (folder / f"{kind}-{version.text}.xml").write_text(root.write(), encoding="utf-8")


if __name__ == "__main__":
    main()
