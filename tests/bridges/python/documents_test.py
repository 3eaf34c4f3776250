"""Every example in the package's own documents and in docs/python.md gives what it shows."""
import doctest
import importlib
import pkgutil
from pathlib import Path

import gridkit
import numpy
import pytest
import xarray

ROOT = Path(__file__).resolve().parents[3]
OPTIONS = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE


@pytest.fixture
def names(ssc, tmp_path, monkeypatch):
    """What the examples take as given: the annotation of a product, and an empty folder to work in."""
    monkeypatch.chdir(tmp_path)
    with gridkit.open(ssc) as product:
        yield {"gridkit": gridkit, "numpy": numpy, "xarray": xarray, "ssc": ssc, "product": product}


MODULES = [module.name for module in pkgutil.iter_modules(gridkit.__path__) if module.name != "_cffi"]


@pytest.mark.parametrize("module", ["", *MODULES])
def test_examples_of_the_docstrings(module, names):
    examined = importlib.import_module(f"gridkit.{module}".rstrip("."))
    failed, _ = doctest.testmod(examined, extraglobs=names, optionflags=OPTIONS)
    assert failed == 0


def test_there_are_examples_in_the_docstrings():
    found = [test for test in doctest.DocTestFinder().find(gridkit) if test.examples]
    assert found


def test_examples_of_the_page(names):
    page = ROOT / "docs/python.md"
    # Lines outside the blocks become empty ones, so that line numbers are the page's.
    lines, inside = [], False
    for line in page.read_text().split("\n"):
        inside = (line == "```python") or (inside and line != "```")
        lines.append(line if inside and line != "```python" else "")
    examples = doctest.DocTestParser().get_doctest("\n".join(lines), names, page.name, str(page), 0)
    assert len(examples.examples) > 10
    result = doctest.DocTestRunner(optionflags=OPTIONS).run(examples)
    assert result.failed == 0
