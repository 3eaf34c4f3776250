"""The package as it is found: by PYTHONPATH from the build, and installed by pip without network."""
import os
import shutil
import subprocess
import sys
from pathlib import Path

import gridkit
from conftest import BUILD

ROOT = Path(__file__).resolve().parents[3]
PACKAGE = ROOT / "bridges/python"
PROGRAM = """
import sys, xarray
import gridkit
with xarray.open_dataset(sys.argv[1], engine="gridkit") as dataset:
    print(gridkit.__file__, gridkit.__version__, dataset.samples.dtype, abs(dataset.samples.values).max() > 0)
"""


def run(*command, **options):
    done = subprocess.run([str(c) for c in command], capture_output=True, text=True, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_works_from_the_build_with_nothing_else_set(ssc, tmp_path):
    environment = {"PYTHONPATH": str(BUILD / "python"), "PATH": "/usr/bin:/bin"}
    said = run(sys.executable, "-c", PROGRAM, ssc, env=environment, cwd=tmp_path)
    assert said == f"{BUILD}/python/gridkit/__init__.py {gridkit.__version__} complex64 True\n"


def test_installs_into_a_clean_environment(ssc, tmp_path):
    # A copy, so that the source tree stays as it is.
    source = tmp_path / "source"
    shutil.copytree(PACKAGE, source, ignore=shutil.ignore_patterns("build", "*.egg-info", "__pycache__"))
    run(sys.executable, "-m", "venv", "--system-site-packages", tmp_path / "venv")
    python = tmp_path / "venv/bin/python"
    environment = {
        "PATH": "/usr/bin:/bin",
        "HOME": str(tmp_path),
        "PIP_NO_INDEX": "1",
        "PIP_NO_BUILD_ISOLATION": "0",
        "GRIDKIT_INCLUDE": str(ROOT / "platform"),
        "GRIDKIT_LIB": str(BUILD / "lib"),
    }
    run(python, "-m", "pip", "install", "--no-build-isolation", "--no-deps", source, env=environment)
    del environment["GRIDKIT_INCLUDE"], environment["GRIDKIT_LIB"]
    said = run(python, "-c", PROGRAM, ssc, env=environment, cwd=tmp_path)
    site = tmp_path / f"venv/lib/python{sys.version_info[0]}.{sys.version_info[1]}/site-packages"
    assert said == f"{site}/gridkit/__init__.py {gridkit.__version__} complex64 True\n"
    for file in ("py.typed", "_cffi.pyi"):
        assert (site / "gridkit" / file).exists()


def test_the_build_has_the_files_that_pip_installs():
    built = {
        file.name for file in (BUILD / "python/gridkit").iterdir() if file.suffix in (".py", ".pyi", ".typed")
    }
    assert built == {file.name for file in (PACKAGE / "src/gridkit").iterdir() if file.is_file()}


def test_both_ways_name_the_same_engine():
    told = next((BUILD / "python").glob("*.dist-info")) / "entry_points.txt"
    line = "gridkit = gridkit._backend:GridkitBackend"
    assert line in told.read_text()
    assert line.replace(" = ", ' = "') + '"' in (PACKAGE / "pyproject.toml").read_text()


def test_only_one_module_knows_the_border():
    for file in (PACKAGE / "src/gridkit").glob("*.py"):
        if file.name != "_border.py":
            assert "_cffi" not in file.read_text(), file.name


def test_names_nothing_that_the_library_lacks():
    exported = run("nm", "-D", "--defined-only", BUILD / "lib/libgridkit.so")
    header = (ROOT / "platform/gridkit/gridkit.h").read_text()
    sys.path.insert(0, str(PACKAGE))
    from border_build import declarations
    import re

    declared = set(re.findall(r"(gridkit_\w+)\(", declarations(header))) - {"gridkit_progress"}
    assert declared
    for name in declared:
        assert f" T {name}" in exported, name
    assert os.path.exists(gridkit.__file__)
