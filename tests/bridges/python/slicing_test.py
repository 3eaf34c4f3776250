"""The arithmetic of slices takes exactly what numpy's basic indexing takes, and gives what it gives."""
import numpy
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from gridkit._slicing import select

indices = st.integers(-12, 12)
bounds = st.none() | indices
slices = st.builds(slice, bounds, bounds, st.none() | indices.filter(bool))
keys = (
    st.lists(slices | indices | st.just(...) | st.none(), max_size=5).map(tuple)
    | slices
    | indices
    | st.just(...)
)


def taken(array, key):
    """What the arithmetic takes of an array, by rising slices alone."""
    lines, samples, shape = select(key, array.shape)
    part = array[
        lines.first : lines.first + lines.step * lines.length : lines.step,
        samples.first : samples.first + samples.step * samples.length : samples.step,
    ]
    part = part[:: -1 if lines.reversed else 1, :: -1 if samples.reversed else 1]
    assert part.shape == (lines.length, samples.length)
    return part.reshape(shape)


@settings(max_examples=600, deadline=None)
@given(keys, st.integers(1, 9), st.integers(1, 9))
def test_takes_what_numpy_takes(key, lines, samples):
    array = numpy.arange(lines * samples).reshape(lines, samples)
    try:
        expected = array[key]
    except IndexError:
        with pytest.raises(IndexError):
            select(key, array.shape)
        return
    numpy.testing.assert_array_equal(taken(array, key), expected)


@pytest.mark.parametrize(
    "key", [True, [0, 1], numpy.array([0, 1]), numpy.array([[True]]), numpy.True_, 1.0, "HH"]
)
def test_refuses_masks_and_index_arrays_in_words(key):
    with pytest.raises(TypeError, match="indexed by integers, slices"):
        select(key, (4, 4))


def test_takes_whole_numbers_of_every_kind():
    for two in (numpy.int16(2), numpy.uint64(2), numpy.array(2)):
        assert select((two, two), (4, 4)) == select((2, 2), (4, 4))


def test_says_which_index_is_out_of_bounds():
    with pytest.raises(IndexError, match="index 7 is out of bounds for axis 1 with size 5"):
        select((0, 7), (9, 5))
    with pytest.raises(ValueError, match="step"):
        select(slice(None, None, 0), (9, 5))
