"""Builds the package for pip, against a library that is built or installed.

The library is the one of the build in this source tree, build/release, where there is one, else the system's.
GRIDKIT_INCLUDE and GRIDKIT_LIB name the folders of another: of gridkit/gridkit.h, and of libgridkit.so with the plug-ins in
gridkit/ beside it.
"""
import os
import re
import sys
from pathlib import Path

from setuptools import setup

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(HERE))


def folders():
    """The headers' folder, and the library's, or None where the linker knows it."""
    library = os.environ.get("GRIDKIT_LIB")
    if library is None and (ROOT / "build/release/lib/libgridkit.so").exists():
        library = ROOT / "build/release/lib"
    include = os.environ.get("GRIDKIT_INCLUDE")
    for candidate in (
        [include] if include else [ROOT / "platform", "/usr/include/gridkit", "/usr/local/include/gridkit"]
    ):
        if (Path(candidate) / "gridkit/gridkit.h").exists():
            return Path(candidate), library and Path(library).resolve()
    sys.exit(
        "gridkit/gridkit.h is not there: build the project or install libgridkit-dev, or name its folder in GRIDKIT_INCLUDE"
    )


def border():
    """For cffi_modules: the builder of gridkit._cffi."""
    from border_build import make_border

    include, library = folders()
    where = [str(library)] if library else []
    return make_border(
        include / "gridkit/gridkit.h",
        include_dirs=[str(include)],
        libraries=["gridkit"],
        library_dirs=where,
        runtime_library_dirs=where,
    )


def version():
    text = (folders()[0] / "gridkit/gridkit.h").read_text()
    return ".".join(
        re.search(rf"GRIDKIT_VERSION_{part} (\d+)", text)[1] for part in ("MAJOR", "MINOR", "PATCH")
    )


if __name__ == "__main__":
    setup(version=version(), cffi_modules=["setup.py:border"])
