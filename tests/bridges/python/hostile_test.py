"""Whatever the files hold, a product opens and reads, or a gridkit.Error says what is wrong; the interpreter lives."""
import os
import random
import shutil
import warnings
from pathlib import Path

import gridkit
import pytest
from conftest import SAMPLES
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

unhurried = settings(
    max_examples=120, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture]
)


def use(path):
    """Opens and uses all there is; gives the error, or None."""
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", gridkit.MissingLinesWarning)
            with gridkit.open(path) as product:
                product.info
                for name in product.images:
                    product.samples(name)[::50, ::50]
                for name in product.layers:
                    product.layer(name)[::50, ::50]
                product.locate([0, 1], [0, 1])
                product.find(48.0, 11.0, 0)
                product.state_vectors
                product.rpc()
    except gridkit.Error as error:
        assert str(error) and not isinstance(error, gridkit.InternalError)
        return error
    return None


@pytest.fixture(scope="module")
def victim(ssc, tmp_path_factory):
    """An SSC product whose files are damaged and mended again."""
    return Path(shutil.copytree(ssc.parent, tmp_path_factory.mktemp("victim") / "product")) / ssc.name


def damaged(file, change):
    whole = file.read_bytes()
    try:
        file.write_bytes(change(bytearray(whole)))
        return use(file if file.suffix == ".xml" else file.parent.parent)
    finally:
        file.write_bytes(whole)


@unhurried
@given(seed=st.integers(0, 2**32), count=st.integers(1, 12))
def test_bytes_of_the_annotation_that_changed(victim, seed, count):
    def change(content):
        chance = random.Random(seed)
        for _ in range(count):
            content[chance.randrange(len(content))] = chance.choice(b"0<>&\"'/ -9eN\0\xff")
        return content

    damaged(victim, change)


@unhurried
@given(part=st.floats(0, 0.999))
def test_an_annotation_that_ends_early(victim, part):
    error = damaged(victim, lambda content: content[: int(part * len(content))])
    assert error is not None


@unhurried
@given(
    number=st.sampled_from(["-1", "0", "1e400", "nan", "99999999999999999999", "2147483647", "-5", "x", ""]),
    seed=st.integers(0, 2**32),
)
def test_numbers_that_are_none(victim, number, seed):
    import re

    def change(content):
        places = list(re.finditer(rb">(-?[0-9][0-9.Ee+-]*)<", content))
        place = random.Random(seed).choice(places)
        content[place.start(1) : place.end(1)] = number.encode()
        return content

    damaged(victim, change)


@unhurried
@given(at=st.integers(0, 4 * 4 * (SAMPLES + 2) - 1), values=st.binary(min_size=1, max_size=8))
def test_headers_of_the_image_that_changed(victim, at, values):
    def change(content):
        content[at : at + len(values)] = values
        return content

    damaged(next((victim.parent / "IMAGEDATA").iterdir()), change)


@pytest.mark.parametrize("size", [0, 1, 27, 28, 1048, 1049, 5000])
def test_an_image_that_ends_early(victim, size):
    damaged(next((victim.parent / "IMAGEDATA").iterdir()), lambda content: content[:size])


def test_errors_tell_file_element_and_line(copied):
    text = copied.read_text()
    before, after = text.split("<orbitDirection>", 1)
    copied.write_text(f"{before}<orbitDirection>SIDEWAYS{after[after.index('<'):]}")
    with pytest.raises(gridkit.DescriptionError) as told:
        gridkit.open(copied)
    error = told.value
    assert error.path == str(copied)
    assert error.element.endswith("/orbitDirection") and error.line == before.count("\n") + 1
    assert isinstance(error, ValueError) and error.code == 3


@pytest.mark.parametrize(
    "name, content",
    [
        ("a.xml", b"<a/>"),
        ("a.txt", b"hello"),
        ("b.xml", b""),
        ("c.xml", bytes(100000)),
        (".xml", b"<level1Product>"),
    ],
)
def test_other_files_are_refused(tmp_path, name, content):
    file = tmp_path / name
    file.write_bytes(content)
    with pytest.raises(gridkit.Error) as told:
        gridkit.open(file)
    assert told.value.path == str(file)


def test_paths_that_lead_nowhere(tmp_path):
    for path in (
        tmp_path / "missing.xml",
        tmp_path,
        "/dev/null",
        str(tmp_path / ("x" * 5000)),
        b"\xff\xfe.xml",
    ):
        with pytest.raises(gridkit.Error):
            gridkit.open(path)
    with pytest.raises(gridkit.ProductNotFoundError) as told:
        gridkit.open(tmp_path / "missing.xml")
    assert isinstance(told.value, FileNotFoundError)
    for wrong in (None, 3, 1.5):
        with pytest.raises(TypeError):
            gridkit.open(wrong)
    with pytest.raises(ValueError, match="null"):
        gridkit.open("a\0b")


def test_no_plug_ins_are_told(ssc, tmp_path):
    with pytest.raises(gridkit.Error):
        gridkit.open(ssc, plugin_folders=[tmp_path])


def test_a_missing_image_is_told_and_the_rest_is_there(copied):
    shutil.rmtree(copied.parent / "IMAGEDATA")
    error = use(copied)
    assert isinstance(error, gridkit.Error) and os.path.basename(str(copied.parent)) in str(error)
