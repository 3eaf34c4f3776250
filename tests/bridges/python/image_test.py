"""Images give what stands in their files, wherever and however they are sliced."""
import os
import threading
import warnings

import gridkit
import numpy
import pytest
from conftest import LINES, SAMPLES, cosar, simulate
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from numpy.testing import assert_allclose, assert_array_equal

around = st.integers(-320, 320)
slices = st.builds(
    slice, st.none() | around, st.none() | around, st.none() | st.integers(-40, 40).filter(bool)
)
keys = st.tuples(slices | st.integers(-LINES, LINES - 1), slices | st.integers(-SAMPLES, SAMPLES - 1))
unhurried = settings(
    max_examples=150, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture]
)


@pytest.fixture(scope="module")
def product(ssc):
    with gridkit.open(ssc) as opened:
        yield opened


@pytest.fixture(scope="module")
def truth(ssc):
    return cosar(ssc)


@unhurried
@given(key=keys)
def test_samples_are_the_files(product, truth, key):
    found = product.samples("HH")[key]
    assert_array_equal(found, truth[key])
    assert type(found) is type(truth[key]) and found.dtype == truth.dtype


def test_tells_what_it_is_without_reading(product):
    image = product.samples("HH")
    assert (image.shape, image.dtype, image.ndim) == ((LINES, SAMPLES), numpy.complex64, 2)
    assert (image.size, image.nbytes, len(image)) == (LINES * SAMPLES, 8 * LINES * SAMPLES, LINES)
    assert repr(image) == f"<gridkit.Image samples('HH'): {LINES} lines x {SAMPLES} samples, complex64>"


def test_becomes_an_array(product, truth):
    image = product.samples("HH")
    assert_array_equal(numpy.asarray(image), truth)
    assert numpy.asarray(image, numpy.complex128).dtype == numpy.complex128
    assert_array_equal(abs(truth), numpy.abs(image[...]))
    assert_array_equal(image[None, ..., 3], truth[None, ..., 3])


def test_reads_every_half_of_a_product_of_floats():
    annotation = simulate("half", "--sample-type", "half")
    file = next((annotation.parent / "IMAGEDATA").iterdir())
    records = numpy.memmap(file, ">f2", "r", shape=(LINES + 4, SAMPLES + 2, 2))[4:, 2:]
    with gridkit.open(annotation) as opened:
        image = opened.samples()
        assert_array_equal(
            image[:].view(numpy.float32).reshape(LINES, SAMPLES, 2), records.astype(numpy.float32)
        )
        pairs = image.read(0, 0, LINES, SAMPLES, dtype=[("real", "f2"), ("imag", "f2")])
        assert_array_equal(pairs["imag"], records[..., 1])


def test_reads_a_window_with_steps(product, truth):
    found = product.samples("HH").read(7, 3, 20, 30, step=(5, 2))
    assert_array_equal(found, truth[7 : 7 + 20 * 5 : 5, 3 : 3 + 30 * 2 : 2])
    assert product.samples("HH").read(0, 0, 0, 5).shape == (0, 5)


@pytest.mark.parametrize(
    "window", [(-1, 0, 1, 1), (0, 0, LINES + 1, 1), (0, SAMPLES, 1, 1), (0, 250, 1, 11), (299, 0, 2, 1)]
)
def test_refuses_windows_that_leave_the_image(product, window):
    with pytest.raises(IndexError, match="leave the image"):
        product.samples("HH").read(*window)


def test_reads_into_arrays_of_any_strides(product, truth):
    image, expected = product.samples("HH"), truth[10:60, 20:90]
    room = numpy.full((120, 200), -1, numpy.complex64)
    for out in (room[:50, :70], room[20:120:2, 5:145:2], room[99:49:-1, 80:10:-1], room.T[3:53, 1:71]):
        room[...] = -1
        assert image.read(10, 20, 50, 70, out=out) is out
        assert_array_equal(out, expected)
        assert (room == -1).sum() == room.size - out.size


def test_reads_as_other_types_that_hold_all(product, truth):
    image = product.samples("HH")
    for kind in (numpy.complex128, ">c8", numpy.clongdouble):
        found = image.read(1, 2, 3, 4, dtype=kind)
        assert found.dtype == kind
        assert_array_equal(found, truth[1:4, 2:6])
        out = numpy.empty((3, 4), kind)
        assert_array_equal(image.read(1, 2, 3, 4, out=out), truth[1:4, 2:6])
    pairs = image.read(1, 2, 3, 4, dtype=[("real", "i2"), ("imag", "i2")])
    assert_array_equal(pairs["real"] + 1j * pairs["imag"], truth[1:4, 2:6])


def test_refuses_what_does_not_fit(product):
    image = product.samples("HH")
    for kind in (numpy.float32, numpy.int16, "S4"):
        with pytest.raises(TypeError, match="without loss"):
            image.read(0, 0, 2, 2, dtype=kind)
    with pytest.raises(ValueError, match="shape"):
        image.read(0, 0, 2, 2, out=numpy.empty((2, 3), numpy.complex64))
    fixed = numpy.empty((2, 2), numpy.complex64)
    fixed.flags.writeable = False
    with pytest.raises(ValueError, match="cannot be written"):
        image.read(0, 0, 2, 2, out=fixed)
    with pytest.raises(TypeError):
        image.read(0, 0, 2, 2, out=[[0, 0], [0, 0]])
    with pytest.raises(ValueError, match="at least 1"):
        image.read(0, 0, 2, 2, step=0)
    with pytest.raises(TypeError):
        image.read(0.5, 0, 2, 2)


def test_brightness_is_the_factor_times_the_power(product, truth):
    factor = product.data(":TSX_Beta0")["value"]["calibration_factor"]
    power = factor * (truth.real.astype(float) ** 2 + truth.imag.astype(float) ** 2)
    assert_allclose(product.beta0("HH")[...], power, rtol=1e-6)
    assert_allclose(product.beta0()[::-7, 5], power[::-7, 5], rtol=1e-6)
    with numpy.errstate(divide="ignore"):
        assert_allclose(product.beta0("HH", decibels=True)[...], 10 * numpy.log10(power), rtol=1e-5)


def test_layers_are_the_plug_ins_own_pixels(product, truth):
    magnitude, phase = (product.layer(name) for name in product.layers)
    assert (magnitude.dtype, phase.dtype) == (numpy.uint16, numpy.int16)
    moduli = numpy.sqrt(truth.real**2 + truth.imag**2).astype(numpy.uint16)
    assert_array_equal(magnitude[::3, ::-2], moduli[::3, ::-2])
    # 65536 make a turn; on the axes it is 0.
    off = (truth.real != 0) & (truth.imag != 0)
    turns = numpy.angle(truth[off]) / (2 * numpy.pi) * 65536
    assert_allclose(phase[...][off], turns, rtol=0, atol=1.01)
    assert not phase[...][~off].any()


def test_detected_images_are_amplitudes(mgd):
    with gridkit.open(mgd) as opened:
        image, layer = opened.samples("HH"), opened.layer(opened.layers[0])
        assert image.dtype == layer.dtype == numpy.uint16
        assert_array_equal(image[3:200:7], layer[3:200:7])
        assert image.read(0, 0, 2, 2, dtype=numpy.float32).dtype == numpy.float32


def test_what_a_cut_file_lacks_is_nan_and_a_warning(copied, truth):
    file = next((copied.parent / "IMAGEDATA").iterdir())
    whole, part = 200, 57
    with gridkit.open(copied) as opened:
        os.truncate(file, 4 * ((4 + whole) * (2 + SAMPLES) + 2 + part))
        with pytest.warns(gridkit.MissingLinesWarning, match=file.name):
            found = opened.samples("HH")[...]
        assert_array_equal(found[:whole], truth[:whole])
        assert_array_equal(found[whole, :part], truth[whole, :part])
        assert numpy.isnan(found[whole, part:]).all() and numpy.isnan(found[whole + 1 :]).all()
        with pytest.warns(gridkit.MissingLinesWarning):
            pairs = opened.samples("HH").read(250, 0, 2, 2, dtype=[("real", "i2"), ("imag", "i2")])
        assert not pairs["real"].any()
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            assert_array_equal(opened.samples("HH")[:whole], truth[:whole])


def test_any_number_of_threads_may_read(product, truth):
    found = {}

    def read(number):
        found[number] = product.samples("HH")[number::4]

    threads = [threading.Thread(target=read, args=(n,)) for n in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for number in range(4):
        assert_array_equal(found[number], truth[number::4])


def test_bursts_are_images_of_their_own():
    with gridkit.open(simulate("bursts", "--bursts", "3")) as opened:
        assert opened.images == ("HH_B1", "HH_B2", "HH_B3") and opened.polarisations == ("HH",)
        with pytest.raises(ValueError, match="several images; name one of HH_B1, HH_B2, HH_B3"):
            opened.samples("HH")
        assert opened.samples("HH_B2")[0, 0].dtype == numpy.complex64
