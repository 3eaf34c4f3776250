"""Makes the border between Python and the library: gridkit._cffi, from the C header itself.

    border_build.py HEADER OUTPUT.c      writes the module's C source, for CMake

setup.py takes `make_border` from here. The declarations are those of gridkit/gridkit.h, read at each build, so that
names, types and numbers are the compiler's own and nothing is written down twice.
"""
import re
import sys
from pathlib import Path

import cffi


def declarations(header):
    """What cffi can read of the header: no comments, no preprocessor, but the numbers of the version."""
    text = re.sub(r"//[^\n]*", "", header)
    text = re.sub(r"\\\n", " ", text)
    numbers = re.findall(r"^#define (GRIDKIT_VERSION_(?:MAJOR|MINOR|PATCH)) \d+$", text, re.M)
    text = re.sub(r"^#ifdef __cplusplus\n.*?^#endif\n", "", text, flags=re.M | re.S)
    text = re.sub(r"^#[^\n]*\n", "", text, flags=re.M)
    text = re.sub(r"\bGRIDKIT_API\b", "", text)
    return "".join(f"#define {name} ...\n" for name in numbers) + text


def make_border(header, **how):
    """The builder of gridkit._cffi; `how` goes to the compiler."""
    builder = cffi.FFI()
    builder.cdef(declarations(Path(header).read_text()))
    builder.set_source("gridkit._cffi", '#include "gridkit/gridkit.h"', **how)
    return builder


if __name__ == "__main__":
    make_border(sys.argv[1]).emit_c_code(sys.argv[2])
