#!/usr/bin/env python3
"""Makes the annotation classes of the three schema versions from the tables.

    generate.py TABLES OUTPUT

Three steps: load the tables, check and resolve them, emit C++. Only files whose content changed are
written, so an unchanged table rebuilds nothing. A fault in a table ends the run with its file and line.
"""
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
from generator import emit, model, tables  # noqa: E402


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        schema = tables.load(Path(sys.argv[1]))
        versions = model.resolve_all(schema, tables.VERSIONS)
    except tables.TableError as error:
        sys.exit(str(error))
    emit.write_all(versions, schema, Path(sys.argv[2]))


if __name__ == "__main__":
    main()
