"""Products as xarray's datasets: lazy, in chunks, on threads and processes, to Zarr and netCDF and back."""
import pickle
import sys

import dask
import gridkit
import numpy
import pytest
import xarray
from conftest import LINES, SAMPLES, cosar, simulate
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from numpy.testing import assert_allclose, assert_array_equal
from xarray.core import indexing

around = st.integers(-320, 320)
slices = st.builds(
    slice, st.none() | around, st.none() | around, st.none() | st.integers(-40, 40).filter(bool)
)
lists = st.lists(st.integers(0, 259), max_size=6)
unhurried = settings(
    max_examples=80, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture]
)


def is_lazy(variable):
    return (
        isinstance(variable.variable._data, indexing.ExplicitlyIndexed) and not variable.variable._in_memory
    )


@pytest.fixture(scope="module")
def opened(ssc):
    with xarray.open_dataset(ssc, engine="gridkit", cache=False) as dataset:
        yield dataset


@pytest.fixture(scope="module")
def truth(ssc):
    return cosar(ssc)


def test_radar_geometry_has_lines_and_samples(opened, ssc):
    assert dict(opened.sizes, state_vector=0) == {
        "line": LINES,
        "sample": SAMPLES,
        "axis": 3,
        "state_vector": 0,
    }
    assert list(opened.data_vars) == ["samples", "beta0", "sigma0", "gamma0"]
    assert opened.samples.dtype == numpy.complex64 and opened.beta0.dtype == numpy.float32
    assert opened.azimuth_time.dims == ("line",) and opened.azimuth_time.dtype == "M8[ns]"
    assert opened.slant_range_time.dims == ("sample",) and opened.slant_range_time.dtype == numpy.float64
    with gridkit.open(ssc) as product:
        assert_array_equal(opened.azimuth_time, product.azimuth_time(numpy.arange(LINES)))
        assert_array_equal(opened.slant_range_time, product.slant_range_time(0, numpy.arange(SAMPLES)))
        assert_array_equal(opened.position, product.state_vectors.position)
    assert opened.attrs["polarisation"] == "HH" and opened.attrs["satellite_mission"] == "TSX-1"
    assert (
        opened.attrs["calibration_polarisation"] == ["HH"]
        and len(opened.attrs["extent_corners_latitude"]) == 4
    )
    for value in opened.attrs.values():
        assert isinstance(value, (str, int, float, list)), value


def test_ground_range_products_have_ground_range(mgd):
    with xarray.open_dataset(mgd, engine="gridkit") as dataset, gridkit.open(mgd) as product:
        assert dataset.samples.dtype == numpy.uint16
        spacing = float(product.annotation.findtext(".//imageRaster/rowSpacing"))
        assert_allclose(dataset.ground_range, spacing * numpy.arange(SAMPLES), rtol=1e-6)


def test_maps_have_y_and_x_and_a_grid_mapping(gec):
    from osgeo import gdal, osr

    gdal.UseExceptions()
    with xarray.open_dataset(gec, engine="gridkit") as dataset:
        assert dataset.samples.dims == ("y", "x") and dataset.samples.attrs["grid_mapping"] == "spatial_ref"
        raster = gdal.Open(str(next((gec.parent / "IMAGEDATA").iterdir())))
        left, width, _, upper, _, height = raster.GetGeoTransform()
        assert_allclose(dataset.x, left + (numpy.arange(SAMPLES) + 0.5) * width)
        assert_allclose(dataset.y, upper + (numpy.arange(LINES) + 0.5) * height)
        told = osr.SpatialReference(wkt=dataset.spatial_ref.attrs["crs_wkt"])
        assert told.IsSame(raster.GetSpatialRef()) and told.GetAuthorityCode(None) == "32632"
        assert [float(n) for n in dataset.spatial_ref.attrs["GeoTransform"].split()] == [
            left,
            width,
            0,
            upper,
            0,
            height,
        ]


@unhurried
@given(
    line=slices | st.integers(-LINES, LINES - 1) | lists,
    sample=slices | st.integers(-SAMPLES, SAMPLES - 1) | lists,
)
def test_selections_stay_lazy_and_read_what_they_select(opened, truth, line, sample):
    chosen = opened.samples.isel(line=line, sample=sample)
    assert is_lazy(chosen)
    expected = xarray.DataArray(truth, dims=("line", "sample")).isel(line=line, sample=sample)
    assert_array_equal(chosen.values, expected.values)


def test_points_are_selected(opened, truth):
    lines, samples = xarray.DataArray([5, 200, 5], dims="point"), xarray.DataArray([7, 8, 9], dims="point")
    assert_array_equal(opened.samples.isel(line=lines, sample=samples), truth[[5, 200, 5], [7, 8, 9]])


def test_groups_are_images(dual):
    with xarray.open_dataset(dual, engine="gridkit") as root:
        assert not root.data_vars and root.attrs["groups"] == ["HH", "VV"] and "position" in root.coords
    for number, name in enumerate(("HH", "VV")):
        with xarray.open_dataset(dual, engine="gridkit", group=name) as dataset:
            assert dataset.attrs["polarisation"] == name
            assert_array_equal(dataset.samples, cosar(dual, number=number))
    with pytest.raises(ValueError, match="has no image 'HV'"):
        xarray.open_dataset(dual, engine="gridkit", group="HV")


def test_chunks_are_whole_lines_of_about_32_mebibytes():
    annotation = simulate("wide", "--empty-images", lines=2000, samples=9000)
    with xarray.open_dataset(annotation, engine="gridkit", chunks={}) as dataset:
        lines, samples = dataset.samples.chunks
        assert samples == (9000,) and lines[0] == (32 << 20) // (8 * 9000) and sum(lines) == 2000
        assert dataset.beta0.chunks[0][0] == (32 << 20) // (4 * 9000)


def test_threads_and_processes_read_chunks(ssc, truth):
    with xarray.open_dataset(ssc, engine="gridkit", chunks={"line": 64}) as dataset:
        for scheduler in ("threads", "processes", "synchronous"):
            with dask.config.set(scheduler=scheduler, num_workers=2):
                assert_array_equal(dataset.samples.values, truth)


def test_pickles_are_small(ssc, truth):
    with xarray.open_dataset(ssc, engine="gridkit") as dataset:
        packed = pickle.dumps(dataset.samples.variable)
        assert len(packed) < 4000
        assert_array_equal(pickle.loads(packed)[7], truth[7])


def test_goes_to_zarr_and_back(ssc, gec, tmp_path):
    for kind, annotation in (("ssc", ssc), ("gec", gec)):
        with xarray.open_dataset(annotation, engine="gridkit", chunks={}) as dataset:
            dataset.to_zarr(tmp_path / kind)
            # As an attribute, so that it is where the engine has it.
            with xarray.open_zarr(tmp_path / kind, chunks=None, decode_coords=False) as again:
                again = again.set_coords(list(dataset.coords))
                for variable in again.variables.values():
                    variable.attrs.pop("coordinates", None)
                again.attrs.pop("coordinates", None)
                xarray.testing.assert_identical(again.load(), dataset.load())


def test_goes_to_netcdf_and_back(ssc, gec, truth, tmp_path):
    for kind, annotation in (("ssc", ssc), ("gec", gec)):
        with xarray.open_dataset(annotation, engine="gridkit", split_complex=True) as dataset:
            dataset.to_netcdf(tmp_path / f"{kind}.nc", engine="netcdf4")
            with xarray.open_dataset(tmp_path / f"{kind}.nc", engine="netcdf4", decode_coords="all") as again:
                xarray.testing.assert_equal(again.load(), dataset.load())
                assert again.attrs.keys() == dataset.attrs.keys()
                if kind == "ssc":
                    assert_array_equal(again.samples_real + 1j * again.samples_imag, truth)


def test_closing_closes_the_product(ssc):
    dataset = xarray.open_dataset(ssc, engine="gridkit", cache=False)
    dataset.close()
    with pytest.raises(gridkit.ClosedError):
        dataset.samples.values


def test_guesses_annotations_alone_and_never_raises(ssc, tmp_path):
    from gridkit._backend import GridkitBackend

    guess = GridkitBackend().guess_can_open
    assert guess(ssc) and guess(str(ssc)) and guess(ssc.parent)
    other = tmp_path / "other.xml"
    other.write_text("<a/>")
    for path in (
        other,
        tmp_path,
        tmp_path / "missing.xml",
        "/dev/null",
        b"\x89HDF",
        3,
        None,
        object(),
        "a\0.xml",
    ):
        assert guess(path) is False
    with xarray.open_dataset(ssc) as dataset:
        assert "samples" in dataset


def test_drops_variables(ssc):
    with xarray.open_dataset(ssc, engine="gridkit", drop_variables=["gamma0", "sigma0"]) as dataset:
        assert list(dataset.data_vars) == ["samples", "beta0"]


def test_stacks_images_of_one_size(ssc, mgd):
    later = simulate("later", "--start", "2008-03-23T05:17:46.25", "--seed", "2")
    stack = gridkit.open_stack([ssc, later], "HH", quantity="samples")
    assert stack.dims == ("time", "line", "sample") and stack.shape == (2, LINES, SAMPLES) and is_lazy(stack)
    truth = numpy.stack([cosar(ssc), cosar(later)])
    assert_array_equal(stack.isel(time=1, line=7), truth[1, 7])
    assert_array_equal(stack[:, ::-3, 5], truth[:, ::-3, 5])
    assert_array_equal(stack.chunk({"line": 50}).values, truth)
    assert list(stack.time.values.astype("M8[D]").astype(str)) == ["2008-03-12", "2008-03-23"]
    stack.close()
    assert gridkit.open_stack([ssc], "HH").name == "beta0"
    with pytest.raises(ValueError, match="one size"):
        gridkit.open_stack([ssc, simulate("small", lines=200)], "HH")
    with pytest.raises(ValueError, match="has no 'colour'; it has samples, beta0"):
        gridkit.open_stack([ssc], "HH", quantity="colour")
    with pytest.raises(ValueError, match="one product at least"):
        gridkit.open_stack([], "HH")


def test_the_package_itself_does_not_need_xarray():
    import subprocess

    program = "import sys; sys.modules['xarray'] = None; sys.modules['dask'] = None; import gridkit; gridkit.open; print('good')"
    assert subprocess.run([sys.executable, "-c", program], capture_output=True, text=True).stdout == "good\n"
