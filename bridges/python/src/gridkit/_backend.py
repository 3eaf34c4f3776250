"""The engine `gridkit` of xarray: products as datasets that are read when they are used.

Found by xarray through the package's entry point: ``xarray.open_dataset(path, engine="gridkit", group="HH")``.
"""

from __future__ import annotations

import os
from typing import Any, Iterable, Iterator, Optional, Union

import numpy as np
import xarray
from xarray.backends import BackendArray, BackendEntrypoint
from xarray.core import indexing

from gridkit._errors import MissingError
from gridkit._image import Image
from gridkit._indexing import indexed
from gridkit._product import PathLike, Product, open

__all__ = ["GridkitBackend", "LazyImage", "preferred_lines"]

_CHUNK_BYTES = 32 << 20

_SAMPLES = {"long_name": "complex samples", "units": "1"}
_AMPLITUDES = {"long_name": "detected amplitudes", "units": "1"}
_PARTS = {"real": "real part of the samples", "imag": "imaginary part of the samples"}
_AZIMUTH_TIME = {"standard_name": "time", "long_name": "zero-Doppler azimuth time, UTC"}
_SLANT_RANGE_TIME = {"long_name": "two-way slant range time", "units": "s"}
_GROUND_RANGE = {"long_name": "ground range from the first sample", "units": "m"}


class LazyImage(BackendArray):  # type: ignore[misc]
    """An image as xarray wants it, or one part of complex samples."""

    def __init__(self, image: Image, part: Optional[str] = None) -> None:
        self.image = image
        self.part = part
        self.shape = image.shape
        self.dtype = image.dtype if part is None else np.dtype(np.float32)

    def __getitem__(self, key: Any) -> Any:
        return indexed(key, self.shape, self._read)

    def _read(self, key: tuple[Any, ...]) -> Any:
        # Dask reads chunks on threads of its own.
        values = self.image.take(key, threads=1)
        return values if self.part is None else np.ascontiguousarray(getattr(values, self.part))


def preferred_lines(image: Image) -> int:
    """Lines of a chunk of about 32 MiB that takes whole lines, as they lie in the file."""
    line_bytes = image.shape[1] * image.dtype.itemsize
    return max(1, min(image.shape[0], _CHUNK_BYTES // line_bytes))


class GridkitBackend(BackendEntrypoint):  # type: ignore[misc]
    """Opens products for xarray."""

    description = "Raster products of radar satellites, through gridkit"
    open_dataset_parameters = ("filename_or_obj", "drop_variables", "group", "split_complex")

    def open_dataset(
        self,
        filename_or_obj: PathLike,
        *,
        drop_variables: Union[str, Iterable[str], None] = None,
        group: Optional[str] = None,
        split_complex: bool = False,
    ) -> xarray.Dataset:
        """Opens a product.

        Parameters
        ----------
        filename_or_obj : path-like
            The annotation, or the folder that it stands in.
        drop_variables : str or iterable of str, optional
            Variables that are left out.
        group : str, optional
            An image, by its name or polarisation. Not needed for products of one image; without it those of several
            give what is common to them, and their groups in the attribute ``groups``.
        split_complex : bool
            Whether complex samples come as ``samples_real`` and ``samples_imag``, which netCDF can hold.

        Returns
        -------
        xarray.Dataset
            ``samples``, and ``beta0`` where the product is calibrated. Closing it closes the product.
        """
        product = open(filename_or_obj)
        try:
            dropped = {drop_variables} if isinstance(drop_variables, str) else set(drop_variables or ())
            dataset = _dataset(product, group, split_complex).drop_vars(dropped, errors="ignore")
        except BaseException:
            product.close()
            raise
        dataset.set_close(product.close)
        return dataset

    def guess_can_open(self, filename_or_obj: Any) -> bool:
        """Whether it is an annotation, or a folder with one: looks at the first bytes of an XML file, never raises."""
        try:
            path = os.fsdecode(filename_or_obj)
            files = [path]
            if os.path.isdir(path):
                files = [f.path for f in os.scandir(path) if f.name.lower().endswith(".xml")]
            return any(_looks_like_annotation(file) for file in files if file.lower().endswith(".xml"))
        except (OSError, TypeError, ValueError):
            return False


def _looks_like_annotation(path: str) -> bool:
    if not os.path.isfile(path):
        return False
    descriptor = os.open(path, os.O_RDONLY | os.O_CLOEXEC)
    try:
        return b"<level1Product" in os.read(descriptor, 4096)
    finally:
        os.close(descriptor)


def _dataset(product: Product, group: Optional[str], split_complex: bool) -> xarray.Dataset:
    common = dict(_attributes(product.info))
    if group is None and len(product.images) != 1:
        common["groups"] = list(product.images)
        return xarray.Dataset(coords=_orbit(product), attrs=common)

    samples = product.samples(group)
    dims, coords, grid = _coordinates(product, samples)
    found = {}
    if samples.dtype.kind != "c":
        found["samples"] = _variable(dims, LazyImage(samples), {**_AMPLITUDES, **grid})
    elif split_complex:
        for part, words in _PARTS.items():
            attributes = {"long_name": words, "units": "1", **grid}
            found[f"samples_{part}"] = _variable(dims, LazyImage(samples, part), attributes)
    else:
        found["samples"] = _variable(dims, LazyImage(samples), {**_SAMPLES, **grid})
    for quantity, words in product.quantities(samples.name).items():
        image = getattr(product, quantity)(samples.name)
        found[quantity] = _variable(dims, LazyImage(image), {"long_name": words, "units": "1", **grid})
    common["polarisation"] = samples.polarisation
    return xarray.Dataset(found, coords, common)


def _variable(dims: tuple[str, str], lazy: LazyImage, attributes: dict[str, Any]) -> xarray.Variable:
    chunks = dict(zip(dims, (preferred_lines(lazy.image), lazy.shape[1])))
    return xarray.Variable(
        dims, indexing.LazilyIndexedArray(lazy), dict(attributes), {"preferred_chunks": chunks}
    )


def _coordinates(product: Product, image: Image) -> tuple[tuple[str, str], dict[str, Any], dict[str, str]]:
    """Names of the dimensions, their coordinates, and the attributes of variables that lie on a map."""
    lines, samples = np.arange(image.shape[0]), np.arange(image.shape[1])
    try:
        geometry = product.geometry
    except MissingError:
        return ("line", "sample"), {"line": lines, "sample": samples}, {}
    if geometry.is_map:
        return _map(product, image)
    coords: dict[str, Any] = {"line": lines, "sample": samples}
    coords["azimuth_time"] = ("line", product.azimuth_time(lines), dict(_AZIMUTH_TIME))
    if geometry.is_ground_range:
        coords["ground_range"] = ("sample", samples * geometry.sample_spacing, dict(_GROUND_RANGE))
    else:
        coords["slant_range_time"] = ("sample", product.slant_range_time(0, samples), dict(_SLANT_RANGE_TIME))
    return ("line", "sample"), {**coords, **_orbit(product)}, {}


def _map(product: Product, image: Image) -> tuple[tuple[str, str], dict[str, Any], dict[str, str]]:
    """Coordinates of pixel centres on the map, and the grid mapping as CF and rioxarray have it."""
    placed = product.map
    left, upper = placed.upper_left
    width, height = placed.pixel_size
    x = left + (np.arange(image.shape[1]) + 0.5) * width
    y = upper + (np.arange(image.shape[0]) + 0.5) * height
    reference = {
        "crs_wkt": placed.wkt,
        "spatial_ref": placed.wkt,
        "GeoTransform": " ".join(repr(float(n)) for n in (left, width, 0, upper, 0, height)),
    }
    coords = {
        "y": ("y", y, {"standard_name": "projection_y_coordinate", "units": "m", "axis": "Y"}),
        "x": ("x", x, {"standard_name": "projection_x_coordinate", "units": "m", "axis": "X"}),
        "spatial_ref": ((), 0, reference),
    }
    return ("y", "x"), coords, {"grid_mapping": "spatial_ref"}


def _orbit(product: Product) -> dict[str, Any]:
    """The state vectors as coordinates; none for a map."""
    try:
        vectors = product.state_vectors
    except MissingError:
        return {}
    dims = ("state_vector", "axis")
    return {
        "state_vector_time": ("state_vector", vectors.time, {"long_name": "time of the state vector, UTC"}),
        "position": (dims, vectors.position, {"long_name": "position, Earth-fixed", "units": "m"}),
        "velocity": (dims, vectors.velocity, {"long_name": "velocity, Earth-fixed", "units": "m s-1"}),
    }


def _attributes(info: dict[str, Any], prefix: str = "") -> Iterator[tuple[str, Any]]:
    """What is known of a product as numbers, texts and flat lists of either, which every file format takes.

    The words of a path are joined by underscores; of lists of objects each member becomes a list. What is not known is
    left out.
    """
    for key, value in info.items():
        name = prefix + key
        if prefix == "" and key in ("layers", "data"):
            continue
        if isinstance(value, dict):
            yield from _attributes(value, name + "_")
        elif isinstance(value, list):
            if value and all(isinstance(element, dict) for element in value):
                columns = {k: [element.get(k) for element in value] for k in value[0]}
                yield from _attributes(columns, name + "_")
            else:
                flat = list(_scalars(value))
                # Lists of one kind alone can be written.
                if flat and len({isinstance(element, str) for element in flat}) == 1:
                    yield name, flat
        elif value is not None:
            yield name, int(value) if isinstance(value, bool) else value


def _scalars(values: list[Any]) -> Iterator[Any]:
    for value in values:
        if isinstance(value, list):
            yield from _scalars(value)
        elif isinstance(value, (str, int, float)):
            yield value
