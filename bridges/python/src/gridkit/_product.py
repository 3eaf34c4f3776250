"""Products that are open."""

from __future__ import annotations

import html
import os
import xml.etree.ElementTree as ElementTree
from types import TracebackType
from typing import Any, NamedTuple, Optional, Sequence, Union

import numpy as np
import numpy.typing as npt

from gridkit import _border
from gridkit._errors import ChangedError, ClosedError, DescriptionError, Error, ImageError, MissingError
from gridkit._image import Image, Source

__all__ = ["Product", "StateVectors", "open"]

Doubles = npt.NDArray[np.float64]
PathLike = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

_QUANTITIES = {
    "beta0": "radar brightness",
    "sigma0": "backscatter an area on the ground",
    "gamma0": "backscatter an area across the line of sight",
}

# m/s
_SPEED_OF_LIGHT = 299792458.0


class StateVectors(NamedTuple):
    """The orbit of a product, as its annotation tells it.

    Attributes
    ----------
    time : numpy.ndarray of datetime64[ns], shape (n,)
        UTC.
    position : numpy.ndarray of float64, shape (n, 3)
        Metres, Earth-fixed (WGS 84).
    velocity : numpy.ndarray of float64, shape (n, 3)
        Metres a second, in the same frame.
    """

    time: npt.NDArray[np.datetime64]
    position: Doubles
    velocity: Doubles


class _FileStamp(NamedTuple):
    """By which a file is known to be the same in another process."""

    path: str
    size: int
    modified: int  # ns

    @classmethod
    def of(cls, path: str) -> _FileStamp:
        try:
            found = os.stat(path)
        except OSError:
            return cls(path, -1, 0)
        return cls(path, found.st_size, found.st_mtime_ns)


class _Recipe(NamedTuple):
    """All that it takes to open a product again."""

    path: str
    plugin_folders: tuple[str, ...]
    stamps: tuple[_FileStamp, ...]


def open(path: PathLike, *, plugin_folders: Sequence[PathLike] = ()) -> Product:
    """Opens a product.

    Parameters
    ----------
    path : path-like
        The product's annotation, or the folder that it stands in.
    plugin_folders : sequence of path-like, optional
        Where format plug-ins are looked for. By default those that the environment's ``GRIDKIT_PLUGINS`` names, else
        the folder ``gridkit`` beside the library.

    Returns
    -------
    Product
        A context manager.

    Raises
    ------
    Error
        `ProductNotFoundError`, `NotRecognisedError`, `DescriptionError` with the element and line at fault,
        `ImageError`, `PluginError`.

    Examples
    --------
    >>> with gridkit.open(ssc) as product:
    ...     product.samples("HH").shape
    (300, 260)
    """
    where = os.path.abspath(os.fsdecode(path))
    return Product(where, tuple(os.path.abspath(os.fsdecode(folder)) for folder in plugin_folders))


class Product:
    """An open product: what is known of it, its images, and where their pixels lie.

    Made by `gridkit.open`. A context manager; it closes with its block, by `close`, or with the last
    reference to it and to its images. It may be used by any number of threads at once.

    A product survives `fork` and pickling: the other process opens it anew by its path, and raises `ChangedError`
    where one of its files is no longer what it was.

    Attributes
    ----------
    path : str
        Of the annotation.
    """

    def __init__(
        self, path: str, plugin_folders: tuple[str, ...] = (), recipe: Optional[_Recipe] = None
    ) -> None:
        self._closed = True  # until it is open
        handle = _border.Handle(path, plugin_folders)
        self.path = handle.annotation_path()
        self._handle = handle
        self._recipe = recipe or _Recipe(
            path, plugin_folders, tuple(_FileStamp.of(file) for file in handle.files())
        )
        self._layers = handle.layers()
        try:
            self._images = handle.images()
            self._refusal: Optional[Error] = None
        except (DescriptionError, ImageError) as refusal:  # told when samples are asked for
            self._images = []
            self._refusal = refusal
        self._annotation: Optional[ElementTree.ElementTree] = None
        self._closed = False

    # ---- Life ----

    def close(self) -> None:
        """Closes the product. Reads that still run end as they would have; closing again does nothing."""
        self._closed = True
        self._handle.close()

    @property
    def closed(self) -> bool:
        """Whether the product was closed."""
        return self._closed

    def __enter__(self) -> Product:
        self._open_handle()
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def __reduce__(self) -> tuple[Any, ...]:
        self._open_handle()
        return _opened_again, self._recipe

    def _open_handle(self) -> _border.Handle:
        """The handle, opened anew in a process that was forked since."""
        if self._closed:
            raise ClosedError(f"{self.path} was closed; open it again", path=self.path)
        handle = self._handle
        if handle.process != os.getpid():
            _refuse_changes(self._recipe)
            handle = self._handle = _border.Handle(self._recipe.path, self._recipe.plugin_folders)
        return handle

    def __repr__(self) -> str:
        return f"<gridkit.Product {self.path!r}{', closed' if self._closed else ''}>"

    # ---- What it is ----

    @property
    def info(self) -> dict[str, Any]:
        """What the product is and what is in it, as ``gridkit info --json`` tells it.

        A new dict each time, except that ``warnings`` is without what that program finds by comparing image files with the
        annotation.
        """
        return self._open_handle().info()

    @property
    def layers(self) -> tuple[str, ...]:
        """Names of the plug-in's layers, in its order."""
        return tuple(layer.name for layer in self._layers)

    @property
    def images(self) -> tuple[str, ...]:
        """Names that `samples` takes, such as ``"HH"``, or ``"HH_B2"`` for the second burst of an image."""
        return tuple(image.name for image in self._images)

    @property
    def polarisations(self) -> tuple[str, ...]:
        """Polarisations of the images, in the product's order."""
        return tuple(dict.fromkeys(image.polarisation for image in self._images))

    def data(self, name: str) -> dict[str, Any]:
        """Data beside the pixels, as ``gridkit data --json`` tells them.

        Parameters
        ----------
        name : str
            One of ``info["data"]``.

        Returns
        -------
        dict
            ``name``, ``type``, ``dictionary``, ``size`` and, decoded by that dictionary, ``value``.

        Raises
        ------
        MissingError
            There are no such data.
        """
        return self._open_handle().data(name)

    @property
    def annotation(self) -> ElementTree.ElementTree:
        """The annotation's tree; the same one each time."""
        self._open_handle()
        if self._annotation is None:
            try:
                self._annotation = ElementTree.parse(self.path)
            except (OSError, ElementTree.ParseError) as fault:
                line = fault.position[0] if isinstance(fault, ElementTree.ParseError) else None
                raise DescriptionError(f"{self.path}: {fault}", self.path, line=line) from fault
        return self._annotation

    def quicklook(self, layer: Optional[str] = None, longest: int = 1024) -> npt.NDArray[np.uint8]:
        """A small picture for the eye, as ``gridkit quicklook`` makes it.

        Parameters
        ----------
        layer : str, optional
            One of `layers`; the first by default.
        longest : int
            Pixels of the longer side, 16 to 8192. Pixels are square on the ground where the product can be placed.

        Returns
        -------
        numpy.ndarray of uint8
            0 where there is no data, else 1 (dark) to 255 (bright); of phases once around the circle.

        Raises
        ------
        ValueError
            There is no such layer, or such a size.
        Error
            The layer cannot be read.
        """
        handle = self._open_handle()
        if layer is None and self._layers:
            layer = self._layers[0].name
        return handle.quicklook(self._layer_facts(layer).number, longest)

    def _repr_html_(self) -> str:
        from gridkit._page import page_of

        return html.escape(repr(self)) if self._closed else page_of(self)

    # ---- Images ----

    def samples(self, name: Optional[str] = None) -> Image:
        """The samples of an image: complex64 of complex products, uint16 amplitudes of detected ones.

        Parameters
        ----------
        name : str, optional
            One of `images`, or a polarisation that has one image; not needed where there is one image.

        Raises
        ------
        ValueError
            There is no such image, or several.
        MissingError
            The product's format hands out layers alone.
        """
        facts = self._find(name)
        forms: tuple[tuple[np.dtype[Any], int], ...]
        if facts.is_complex:
            forms = (np.dtype(np.complex64), _border.COMPLEX_FLOAT), (facts.native, _border.NATIVE)
        else:
            forms = (facts.native, _border.NATIVE), (np.dtype(np.float32), _border.MAGNITUDE)
        return Image(self, Source("samples", {"name": facts.name}, facts, _border.Quantity(), forms))

    def layer(self, name: str) -> Image:
        """A layer's pixels as the plug-in gives them: uint16, or int16 of phases (65536 make a turn).

        Parameters
        ----------
        name : str
            One of `layers`.

        Raises
        ------
        ValueError
            There is no such layer.
        """
        self._open_handle()
        facts = self._layer_facts(name)
        forms = ((facts.native, _border.NATIVE),)
        return Image(self, Source("layer", {"name": name}, facts, _border.Quantity(), forms))

    def _layer_facts(self, name: Optional[str]) -> _border.LayerFacts:
        for facts in self._layers:
            if facts.name != name:
                continue
            if facts.lines < 1 or facts.samples < 1:
                raise DescriptionError(
                    f"{self.path}: the layer {name} has {facts.lines} lines of {facts.samples} samples; "
                    "a product's annotation must tell at least one of each",
                    self.path,
                )
            return facts
        raise ValueError(f"{self.path} has no layer {name!r}; it has {_listed(self.layers)}")

    def beta0(
        self, name: Optional[str] = None, *, decibels: bool = False, subtract_noise: bool = False
    ) -> Image:
        """Radar brightness of an image, float32: the calibration factor times the samples' power.

        Parameters
        ----------
        name : str, optional
            As of `samples`.
        decibels : bool
            Whether as ``10 log10`` of it, which is minus infinity for 0.
        subtract_noise : bool
            Whether without the instrument's noise, as the annotation tells it. Then powers may be negative, and
            decibels NaN.

        Raises
        ------
        ValueError
            There is no such image, or several.
        MissingError
            The product does not calibrate it; when it is read, also where it tells no noise.
        """
        return self._measured("beta0", name, _border.BETA0, decibels, subtract_noise)

    def sigma0(
        self, name: Optional[str] = None, *, decibels: bool = False, subtract_noise: bool = False
    ) -> Image:
        """Backscatter an area on the ground, float32: radar brightness times the sine of the incidence angle.

        Parameters and errors are those of `beta0`.
        """
        return self._measured("sigma0", name, _border.SIGMA0, decibels, subtract_noise)

    def gamma0(
        self, name: Optional[str] = None, *, decibels: bool = False, subtract_noise: bool = False
    ) -> Image:
        """Backscatter an area across the line of sight, float32: radar brightness times the tangent of the incidence angle.

        Parameters and errors are those of `beta0`.
        """
        return self._measured("gamma0", name, _border.GAMMA0, decibels, subtract_noise)

    def quantities(self, name: Optional[str] = None) -> dict[str, str]:
        """The methods that can measure an image of this product, each with what it measures.

        Without a calibration factor there is none, without angles of incidence `beta0` alone. Each is tried on one
        sample.

        >>> product.quantities("HH")["beta0"]
        'radar brightness'
        """
        facts = self._find(name)
        if not facts.calibration_factor:
            return {}
        found = {}
        for method, words in _QUANTITIES.items():
            try:
                getattr(self, method)(facts.name)[0, 0]
            except MissingError:
                continue
            found[method] = words
        return found

    def _measured(
        self, method: str, name: Optional[str], quantity: int, decibels: bool, subtract_noise: bool
    ) -> Image:
        facts = self._find(name)
        if not facts.calibration_factor:
            raise MissingError(f"{self.path} tells no calibration factor of {facts.name}", self.path)
        forms = ((np.dtype(np.float32), _border.DECIBELS if decibels else _border.POWER),)
        told: dict[str, Any] = {"name": facts.name}
        told.update({"decibels": True} if decibels else {})
        told.update({"subtract_noise": True} if subtract_noise else {})
        return Image(self, Source(method, told, facts, _border.Quantity(quantity, subtract_noise), forms))

    def _find(self, name: Optional[str]) -> _border.ImageFacts:
        self._open_handle()
        if self._refusal is not None:
            raise self._refusal
        if not self._images:
            raise MissingError(f"{self.path} is of a format that hands out layers alone", self.path)
        found = [image for image in self._images if name is None or image.name == name]
        if not found:
            found = [image for image in self._images if image.polarisation == name]
        if len(found) == 1:
            return found[0]
        if found:
            raise ValueError(f"{self.path} has several images; name one of {_listed(i.name for i in found)}")
        raise ValueError(f"{self.path} has no image {name!r}; it has {_listed(self.images)}")

    # ---- Places and times ----

    def locate(
        self,
        line: npt.ArrayLike,
        sample: npt.ArrayLike,
        height: Optional[npt.ArrayLike] = None,
        delays: bool = True,
    ) -> tuple[Doubles, Doubles, Doubles]:
        """Where pixels lie on Earth.

        Parameters
        ----------
        line, sample : array-like of float
            Counted from 0, whole numbers at the centres of pixels; they need not be whole nor inside the image.
        height : array-like of float, optional
            Where their sights end, metres above the WGS 84 ellipsoid; the scene's average height by default.
        delays : bool
            Whether the signal delays that the product's geolocation grid tells, where there is one, are corrected.

        Returns
        -------
        latitude, longitude, height : numpy.ndarray of float64
            Degrees on WGS 84 and metres, of the shape to which the arguments broadcast; NaN where a pixel has no place.

        Raises
        ------
        MissingError
            The product publishes neither a sensor model nor map data.
        """
        shape, (lines, samples, heights) = _broadcast(line, sample, height)
        assert lines is not None and samples is not None
        found = self._open_handle().locate(lines, samples, heights, delays)
        return found[0].reshape(shape)[()], found[1].reshape(shape)[()], found[2].reshape(shape)[()]

    def find(
        self,
        lat: npt.ArrayLike,
        lon: npt.ArrayLike,
        height: Optional[npt.ArrayLike] = None,
        delays: bool = True,
    ) -> tuple[Doubles, Doubles]:
        """Where in the image places on Earth are seen; the way back from `locate`.

        Parameters
        ----------
        lat, lon : array-like of float
            Degrees on WGS 84.
        height : array-like of float, optional
            Metres above the ellipsoid; the scene's average height by default.
        delays : bool
            As of `locate`.

        Returns
        -------
        line, sample : numpy.ndarray of float64
            Also outside the image; NaN where a place is not seen.
        """
        shape, (latitudes, longitudes, heights) = _broadcast(lat, lon, height)
        assert latitudes is not None and longitudes is not None
        line, sample = self._open_handle().find(latitudes, longitudes, heights, delays)
        return line.reshape(shape)[()], sample.reshape(shape)[()]

    def rpc(self) -> dict[str, Any]:
        """A rational model of the geometry, by GDAL's names of the domain RPC.

        Returns
        -------
        dict
            ``LINE_OFF`` to ``SAMP_DEN_COEFF`` (lists of 20), ``MIN_HEIGHT`` and ``MAX_HEIGHT`` for which it was made,
            and ``ERR_LINE`` and ``ERR_SAMP``, its largest errors in pixels on a grid that the fit has not seen.

        Raises
        ------
        MissingError
            A map has none, nor an image where such a model cannot be made.
        """
        return self._open_handle().rational_model()

    @property
    def geometry(self) -> _border.Geometry:
        """How pixels are placed: by a map or by an orbit, with the scene's day, average height and ellipsoid."""
        return self._open_handle().geometry()

    @property
    def map(self) -> _border.Map:
        """The map that the images lie on. Raises `MissingError` for radar geometry."""
        return self._open_handle().map()

    @property
    def state_vectors(self) -> StateVectors:
        """The orbit. Raises `MissingError` for a map."""
        handle = self._open_handle()
        geometry = handle.geometry()
        time, position, velocity = handle.state_vectors(geometry.state_vector_count)
        return StateVectors(_moments(geometry, time), position, velocity)

    def azimuth_time(self, line: npt.ArrayLike, sample: npt.ArrayLike = 0) -> npt.NDArray[np.datetime64]:
        """When pixels were abeam of the satellite (zero Doppler), as datetime64[ns], UTC.

        Without the corrections of `locate`. The arguments broadcast. Raises `MissingError` for a map.
        """
        shape, (lines, samples, _) = _broadcast(line, sample, None)
        assert lines is not None and samples is not None
        handle = self._open_handle()
        time, _ = handle.radar_coordinates(lines, samples)
        return _moments(handle.geometry(), time).reshape(shape)

    def slant_range_time(self, line: npt.ArrayLike, sample: npt.ArrayLike) -> Doubles:
        """How long the signal travelled to pixels and back, in seconds: twice the slant range over the speed of light.

        Without the corrections of `locate`. The arguments broadcast. Raises `MissingError` for a map.
        """
        shape, (lines, samples, _) = _broadcast(line, sample, None)
        assert lines is not None and samples is not None
        _, slant_range = self._open_handle().radar_coordinates(lines, samples)
        return (slant_range * (2 / _SPEED_OF_LIGHT)).reshape(shape)[()]


def _listed(names: Any) -> str:
    return ", ".join(names) or "none"


def _broadcast(*given: Optional[npt.ArrayLike]) -> tuple[tuple[int, ...], tuple[Optional[Doubles], ...]]:
    """The shape to which arrays broadcast, and each as doubles of that shape, flat; None stays None."""
    arrays = [None if a is None else np.asarray(a, np.float64) for a in given]
    shape = np.broadcast_shapes(*(a.shape for a in arrays if a is not None))
    return shape, tuple(
        None if a is None else np.ascontiguousarray(np.broadcast_to(a, shape)).ravel() for a in arrays
    )


def _moments(geometry: _border.Geometry, seconds: Doubles) -> npt.NDArray[np.datetime64]:
    """Seconds of the geometry's day as moments."""
    nanoseconds = np.full(seconds.shape, np.datetime64("NaT", "ns"))
    told = np.isfinite(seconds)
    nanoseconds[told] = geometry.day + np.rint(seconds[told] * 1e9).astype("timedelta64[ns]")
    return nanoseconds


def _refuse_changes(recipe: _Recipe) -> None:
    for stamp in recipe.stamps:
        if _FileStamp.of(stamp.path) != stamp:
            raise ChangedError(
                f"{stamp.path} has changed since its product was opened; open the product anew",
                path=stamp.path,
            )


def _opened_again(path: str, plugin_folders: tuple[str, ...], stamps: tuple[_FileStamp, ...]) -> Product:
    """The product of a pickle."""
    recipe = _Recipe(path, plugin_folders, stamps)
    _refuse_changes(recipe)
    return Product(path, plugin_folders, recipe)
