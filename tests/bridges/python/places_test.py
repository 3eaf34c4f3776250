"""Places and times are the command line's, for arrays of any shape."""
import gridkit
import numpy
import pytest
from conftest import LINES, SAMPLES, gridkit_says
from numpy.testing import assert_allclose, assert_array_equal


@pytest.mark.parametrize("kind", ["ssc", "mgd", "gec"])
def test_there_and_back(kind, request):
    with gridkit.open(request.getfixturevalue(kind)) as product:
        line, sample = numpy.mgrid[0:300:50, 0:260:40]
        latitude, longitude, height = product.locate(line, sample)
        assert latitude.shape == longitude.shape == height.shape == line.shape
        again = product.find(latitude, longitude, height)
        assert_allclose(again[0], line, atol=1e-3)
        assert_allclose(again[1], sample, atol=1e-3)


def test_are_the_command_lines(ssc):
    with gridkit.open(ssc) as product:
        for line, sample in ((0, 0), (LINES - 1, 10.5)):
            latitude, longitude, _ = product.locate(line, sample, 750)
            told = gridkit_says("locate", "--json", ssc, line, sample, "--height", 750)
            text = str(told)
            assert repr(float(latitude)) in text and repr(float(longitude)) in text


def test_arguments_broadcast(ssc):
    with gridkit.open(ssc) as product:
        found = product.locate(numpy.arange(4)[:, None], [1, 2, 3], height=[[0.0]])
        assert all(part.shape == (4, 3) for part in found)
        one = product.locate(2, 3, 0)
        assert [numpy.ndim(part) for part in one] == [0, 0, 0]
        assert found[0][2, 2] == one[0] and found[1][2, 2] == one[1] and one[2] == 0
        assert product.locate([], [])[0].shape == (0,)
        assert_array_equal(product.locate(0, 0)[2], product.geometry.average_height)
        with pytest.raises(ValueError):
            product.locate([1, 2], [1, 2, 3])


def test_what_has_no_place_is_not_a_number(ssc):
    with gridkit.open(ssc) as product:
        latitude, longitude, _ = product.locate([0, numpy.nan], [0, 0])
        assert numpy.isfinite(latitude[0]) and numpy.isnan(latitude[1]) and numpy.isnan(longitude[1])


def test_the_rational_model_is_the_command_lines(ssc, gec):
    with gridkit.open(ssc) as product:
        found, told = product.rpc(), gridkit_says("locate", "--rpc", "--json", ssc)
        told.pop("delays", None)  # GDAL has no name for it
        assert sorted(found) == sorted(told)
        for name, value in told.items():
            assert_allclose(found[name], value, rtol=1e-9, atol=1e-9, err_msg=name)
    with gridkit.open(gec) as product, pytest.raises(gridkit.MissingError):
        product.rpc()


def test_times_are_the_annotations(ssc):
    with gridkit.open(ssc) as product:
        tree = product.annotation
        start = tree.findtext(".//sceneInfo/start/timeUTC")
        stop = tree.findtext(".//sceneInfo/stop/timeUTC")
        first, last = product.azimuth_time([0, LINES - 1])
        assert first.dtype == numpy.dtype("M8[ns]")
        # The annotation tells microseconds.
        assert abs(first - numpy.datetime64(start.rstrip("Z"), "ns")) <= numpy.timedelta64(1000, "ns")
        assert abs(last - numpy.datetime64(stop.rstrip("Z"), "ns")) <= numpy.timedelta64(1000, "ns")
        near = float(tree.findtext(".//sceneInfo/rangeTime/firstPixel"))
        far = float(tree.findtext(".//sceneInfo/rangeTime/lastPixel"))
        assert_allclose(product.slant_range_time(0, [0, SAMPLES - 1]), [near, far], rtol=0, atol=1e-13)


def test_the_orbit_is_the_annotations(ssc, gec):
    with gridkit.open(ssc) as product:
        vectors = product.state_vectors
        told = product.annotation.findall(".//stateVec")
        assert vectors.time.shape == (len(told),) and vectors.position.shape == vectors.velocity.shape == (
            len(told),
            3,
        )
        for i, vector in enumerate(told):
            assert_array_equal(vectors.position[i], [float(vector.findtext(f"pos{axis}")) for axis in "XYZ"])
            assert_array_equal(vectors.velocity[i], [float(vector.findtext(f"vel{axis}")) for axis in "XYZ"])
            moment = numpy.datetime64(vector.findtext("timeUTC").rstrip("Z"), "ns")
            assert abs(vectors.time[i] - moment) <= numpy.timedelta64(1000, "ns")
    with gridkit.open(gec) as product, pytest.raises(gridkit.MissingError):
        product.state_vectors
