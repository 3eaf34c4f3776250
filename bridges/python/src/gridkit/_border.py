"""The border to the library: the one module that knows the functions of gridkit/gridkit.h.

Everything here takes and gives Python's and numpy's own types. The library's functions run without the interpreter's
lock, on any number of threads.
"""

from __future__ import annotations

import json
import os
import weakref
from typing import Any, Callable, NamedTuple, NoReturn, Optional, Sequence

import numpy as np
import numpy.typing as npt

from gridkit import _errors
from gridkit._cffi import ffi, lib
from gridkit._slicing import Axis

Doubles = npt.NDArray[np.float64]

# Forms of samples and the quantities that powers measure, by the names that this package gives them.
NATIVE: int = lib.gridkit_Native
COMPLEX_FLOAT: int = lib.gridkit_ComplexFloat
MAGNITUDE: int = lib.gridkit_Magnitude
POWER: int = lib.gridkit_Power
DECIBELS: int = lib.gridkit_Decibels
INTENSITY: int = lib.gridkit_Intensity
BETA0: int = lib.gridkit_Beta0
SIGMA0: int = lib.gridkit_Sigma0
GAMMA0: int = lib.gridkit_Gamma0
EVERY_PROCESSOR = -1

_NATIVE_TYPES = {
    lib.gridkit_ComplexInt16: np.dtype([("real", np.int16), ("imag", np.int16)]),
    lib.gridkit_ComplexHalf: np.dtype([("real", np.float16), ("imag", np.float16)]),
    lib.gridkit_Uint16: np.dtype(np.uint16),
}
_LAYER_TYPES = {"u16": np.dtype(np.uint16), "s16": np.dtype(np.int16)}

_ERRORS: dict[int, type[Exception]] = {
    lib.gridkit_NotRecognised: _errors.NotRecognisedError,
    lib.gridkit_BadDescription: _errors.DescriptionError,
    lib.gridkit_BadImage: _errors.ImageError,
    lib.gridkit_CutShort: _errors.ImageError,
    lib.gridkit_CannotRead: _errors.ImageError,
    lib.gridkit_OurFault: _errors.InternalError,
    lib.gridkit_NotFound: _errors.ProductNotFoundError,
    lib.gridkit_NotThere: _errors.MissingError,
    lib.gridkit_NoPlugin: _errors.PluginError,
}


class Quantity(NamedTuple):
    """What powers measure."""

    number: int = INTENSITY
    subtract_noise: bool = False


class ImageFacts(NamedTuple):
    """An image of a product, as `gridkit_image` describes it."""

    number: int
    name: str
    polarisation: str
    file: str
    lines: int
    samples: int
    native: np.dtype[Any]
    burst: Optional[int]
    first_line_utc: str
    calibration_factor: float

    @property
    def is_complex(self) -> bool:
        return self.native.names is not None


class LayerFacts(NamedTuple):
    """A layer of a product, as `gridkit_layer` describes it."""

    number: int
    name: str
    lines: int
    samples: int
    native: np.dtype[Any]


class Geometry(NamedTuple):
    """How a product's pixels are placed.

    Attributes
    ----------
    is_map : bool
        By a map; what only an orbit gives is 0, False or NaT then.
    is_ground_range : bool
        Samples are equally spaced in ground range, not in slant range.
    looks_right : bool
    day : numpy.datetime64
        The midnight from which the library counts times.
    average_height : float
        Of the scene, metres above the ellipsoid.
    semimajor, semiminor : float
        Of the ellipsoid, metres.
    state_vector_count : int
    sample_spacing : float
        Metres in slant range, or in ground range.
    """

    is_map: bool
    is_ground_range: bool
    looks_right: bool
    day: np.datetime64
    average_height: float
    semimajor: float
    semiminor: float
    state_vector_count: int
    sample_spacing: float


class Map(NamedTuple):
    """The map that a product lies on.

    Attributes
    ----------
    upper_left : (float, float)
        x and y of the first pixel's outer corner, metres.
    pixel_size : (float, float)
        How far x grows from a sample to the next, and y from a line to the next: negative with north up.
    wkt : str
        The projection as well-known text.
    """

    upper_left: tuple[float, float]
    pixel_size: tuple[float, float]
    wkt: str


class Missing(NamedTuple):
    """What a read did not find: from this line and sample of the window on, and why."""

    line: int
    sample: int
    message: str


def _text(chars: Any) -> str:
    return str(ffi.string(chars).decode("utf-8", "replace"))


def _path(chars: Any) -> str:
    return os.fsdecode(ffi.string(chars))


def _raise(code: int, error: Any) -> NoReturn:
    """Raises what an error tells. It is freed."""
    try:
        message = _text(lib.gridkit_error_message(error)) or "the library gave no reason"
        path = _path(lib.gridkit_error_path(error)) or None
        element = _text(lib.gridkit_error_element(error)) or None
        line = lib.gridkit_error_line(error) or None
    finally:
        lib.gridkit_error_free(error)
    if code == lib.gridkit_NoMemory:
        raise MemoryError(message)
    if code == lib.gridkit_WrongUse:
        raise ValueError(message)
    raise _ERRORS.get(code, _errors.Error)(message, path, element, line, code)


def _call(function: Callable[..., int], *arguments: Any) -> None:
    """Calls a function whose last argument is an error's address, which is added here."""
    error = ffi.new("gridkit_error **")
    code = function(*arguments, error)
    if code != lib.gridkit_Done:
        _raise(code, error[0])


def _struct(name: str, **members: Any) -> Any:
    """A new struct that begins with its size; members that are not told are 0."""
    made = ffi.new(name + " *", members)
    made.size = ffi.sizeof(name)
    return made


def _taken_text(function: Callable[..., int], *arguments: Any) -> str:
    """The text that a function gives by an address."""
    text = ffi.new("char **")
    _call(function, *arguments, text)
    try:
        return _text(text[0])
    finally:
        lib.gridkit_free(text[0])


def version() -> str:
    """The library's version."""
    return _text(lib.gridkit_version())


def _close(product: Any, process: int) -> None:
    # What a forked process inherits is its parent's to close.
    if os.getpid() == process:
        lib.gridkit_close(product)


class Handle:
    """An open product of the library. Closed by `close`, or with its last reference."""

    def __init__(self, path: str, plugin_folders: Sequence[str] = ()) -> None:
        folders = [ffi.new("char[]", os.fsencode(folder)) for folder in plugin_folders]
        array = ffi.new("char *[]", folders)
        options = _struct(
            "gridkit_open_options",
            plugin_folders=ffi.cast("const char *const *", array) if folders else ffi.NULL,
            plugin_folder_count=len(folders),
        )
        product = ffi.new("gridkit_product **")
        encoded = os.fsencode(path)
        if b"\0" in encoded:
            raise ValueError("a path cannot hold a null character")
        _call(lib.gridkit_open, encoded, options, product)
        self._product = product[0]
        self.process = os.getpid()
        self.close: Callable[[], None] = weakref.finalize(self, _close, self._product, self.process)

    # ---- What describes ----

    def annotation_path(self) -> str:
        path = ffi.new("char **")
        _call(lib.gridkit_annotation_path, self._product, path)
        try:
            return _path(path[0])
        finally:
            lib.gridkit_free(path[0])

    def files(self) -> list[str]:
        """The annotation first, then the image files."""
        paths, count = ffi.new("char ***"), ffi.new("size_t *")
        _call(lib.gridkit_files, self._product, paths, count)
        try:
            return [_path(paths[0][i]) for i in range(count[0])]
        finally:
            lib.gridkit_free(paths[0])

    def info(self) -> dict[str, Any]:
        return dict(json.loads(_taken_text(lib.gridkit_describe, self._product)))

    def data(self, name: str) -> dict[str, Any]:
        return dict(json.loads(_taken_text(lib.gridkit_data, self._product, name.encode())))

    def images(self) -> list[ImageFacts]:
        count = ffi.new("int32_t *")
        try:
            _call(lib.gridkit_image_count, self._product, count)
        except _errors.MissingError:  # a format that hands out layers alone
            return []
        return [self._image(number) for number in range(count[0])]

    def _image(self, number: int) -> ImageFacts:
        image = _struct("gridkit_image")
        _call(lib.gridkit_get_image, self._product, number, image)
        return ImageFacts(
            number,
            _text(image.name),
            _text(image.polarisation),
            _path(image.file),
            image.lines,
            image.samples,
            _NATIVE_TYPES[image.sample_type],
            image.burst or None,
            _text(image.first_line_utc),
            image.calibration_factor,
        )

    def layers(self) -> list[LayerFacts]:
        count = ffi.new("int32_t *")
        _call(lib.gridkit_layer_count, self._product, count)
        return [self._layer(number) for number in range(count[0])]

    def _layer(self, number: int) -> LayerFacts:
        layer = _struct("gridkit_layer")
        _call(lib.gridkit_get_layer, self._product, number, layer)
        pixel = _text(layer.pixel_type)
        native = _LAYER_TYPES.get(pixel, np.dtype(np.uint16))
        return LayerFacts(number, _text(layer.name), layer.height, layer.width, native)

    # ---- What measures ----

    def read_samples(
        self,
        number: int,
        lines: Axis,
        samples: Axis,
        target: npt.NDArray[Any],
        form: int,
        quantity: Quantity,
        threads: int,
    ) -> Optional[Missing]:
        """Reads a window of an image into an array of its shape; gives what the file does not have."""
        options = _struct(
            "gridkit_read_options",
            form=form,
            quantity=quantity.number,
            subtract_noise=lib.gridkit_Yes if quantity.subtract_noise else lib.gridkit_No,
            threads=threads,
        )
        return self._read(lib.gridkit_read_samples, number, lines, samples, target, options)

    def read_layer(
        self, number: int, lines: Axis, samples: Axis, target: npt.NDArray[Any], threads: int
    ) -> Optional[Missing]:
        """The same of a layer."""
        options = _struct("gridkit_read_options", threads=threads)
        return self._read(lib.gridkit_read_layer, number, lines, samples, target, options)

    def _read(
        self,
        function: Callable[..., int],
        number: int,
        lines: Axis,
        samples: Axis,
        array: npt.NDArray[Any],
        options: Any,
    ) -> Optional[Missing]:
        window = _struct(
            "gridkit_window",
            line=lines.first,
            sample=samples.first,
            lines=lines.length,
            samples=samples.length,
            line_step=lines.step,
            sample_step=samples.step,
        )
        target = _struct(
            "gridkit_target",
            data=ffi.cast("void *", array.__array_interface__["data"][0]),
            line_stride=array.strides[0],
            sample_stride=array.strides[1],
        )
        delivered, error = _struct("gridkit_delivered"), ffi.new("gridkit_error **")
        code = function(self._product, number, window, target, options, delivered, error)
        if code == lib.gridkit_Done:
            return None
        if code != lib.gridkit_CutShort:
            _raise(code, error[0])
        message = _text(lib.gridkit_error_message(error[0]))
        lib.gridkit_error_free(error[0])
        return Missing(delivered.lines, delivered.samples, message)

    def quicklook(self, number: int, longest: int) -> npt.NDArray[np.uint8]:
        """A small picture of a layer: 0 where there is no data, else 1 to 255."""
        picture = _struct("gridkit_picture")
        _call(lib.gridkit_quicklook, self._product, number, longest, picture)
        try:
            numbers = ffi.buffer(picture.numbers, picture.width * picture.height)[:]
        finally:
            lib.gridkit_free(picture.numbers)
        return np.frombuffer(bytearray(numbers), np.uint8).reshape(picture.height, picture.width)

    # ---- Places ----

    def geometry(self) -> Geometry:
        told = _struct("gridkit_geometry")
        _call(lib.gridkit_get_geometry, self._product, told)
        day = np.datetime64("NaT", "ns")
        if told.year:
            day = np.datetime64(f"{told.year:04d}-{told.month:02d}-{told.day:02d}", "ns")
        return Geometry(
            told.kind == lib.gridkit_MapGeometry,
            bool(told.is_ground_range),
            told.look_side == lib.gridkit_LookRight,
            day,
            told.average_height,
            told.semimajor,
            told.semiminor,
            told.state_vector_count,
            told.sample_spacing,
        )

    def map(self) -> Map:
        told, wkt = _struct("gridkit_map"), ffi.new("char **")
        _call(lib.gridkit_get_map, self._product, told, wkt)
        try:
            text = _text(wkt[0])
        finally:
            lib.gridkit_free(wkt[0])
        return Map((told.upper_left_x, told.upper_left_y), (told.pixel_width, told.pixel_height), text)

    def state_vectors(self, count: int) -> tuple[Doubles, Doubles, Doubles]:
        """Seconds of the geometry's day, positions and velocities."""
        times, positions, velocities = np.empty(count), np.empty((count, 3)), np.empty((count, 3))
        _call(lib.gridkit_state_vectors, self._product, count, *map(_doubles, (times, positions, velocities)))
        return times, positions, velocities

    def locate(
        self, line: Doubles, sample: Doubles, height: Optional[Doubles], delays: bool
    ) -> tuple[Doubles, Doubles, Doubles]:
        """Latitudes, longitudes and heights of pixels; all arrays are of one size, without gaps."""
        latitude, longitude, taken = (np.empty_like(line) for _ in range(3))
        _call(
            lib.gridkit_locate,
            self._product,
            _place_options(delays),
            line.size,
            *map(_doubles, (line, sample, height, latitude, longitude, taken)),
            ffi.NULL,
        )
        return latitude, longitude, taken

    def find(
        self, latitude: Doubles, longitude: Doubles, height: Optional[Doubles], delays: bool
    ) -> tuple[Doubles, Doubles]:
        """Lines and samples at which places are seen."""
        line, sample = np.empty_like(latitude), np.empty_like(latitude)
        _call(
            lib.gridkit_find,
            self._product,
            _place_options(delays),
            latitude.size,
            *map(_doubles, (latitude, longitude, height, line, sample)),
            ffi.NULL,
        )
        return line, sample

    def radar_coordinates(self, line: Doubles, sample: Doubles) -> tuple[Doubles, Doubles]:
        """Zero-Doppler times, in seconds of the geometry's day, and slant ranges in metres."""
        time, slant_range = np.empty_like(line), np.empty_like(line)
        _call(
            lib.gridkit_radar_coordinates,
            self._product,
            line.size,
            *map(_doubles, (line, sample, time, slant_range)),
            ffi.NULL,
        )
        return time, slant_range

    def rational_model(self) -> dict[str, Any]:
        """By GDAL's names of the domain RPC."""
        model = _struct("gridkit_rational_model")
        _call(lib.gridkit_fit_rational, self._product, ffi.NULL, model)
        named: dict[str, Any] = {}
        for name, member in _RATIONAL_NAMES.items():
            value = getattr(model, member)
            named[name] = value if isinstance(value, float) else list(value)
        return named


_RATIONAL_NAMES = {
    "LINE_OFF": "line_offset",
    "SAMP_OFF": "sample_offset",
    "LAT_OFF": "latitude_offset",
    "LONG_OFF": "longitude_offset",
    "HEIGHT_OFF": "height_offset",
    "LINE_SCALE": "line_scale",
    "SAMP_SCALE": "sample_scale",
    "LAT_SCALE": "latitude_scale",
    "LONG_SCALE": "longitude_scale",
    "HEIGHT_SCALE": "height_scale",
    "LINE_NUM_COEFF": "line_numerator",
    "LINE_DEN_COEFF": "line_denominator",
    "SAMP_NUM_COEFF": "sample_numerator",
    "SAMP_DEN_COEFF": "sample_denominator",
    "ERR_LINE": "largest_line_error",
    "ERR_SAMP": "largest_sample_error",
    "MIN_HEIGHT": "lowest_height",
    "MAX_HEIGHT": "highest_height",
}


def _doubles(array: Optional[Doubles]) -> Any:
    if array is None:
        return ffi.NULL
    return ffi.cast("double *", array.__array_interface__["data"][0])


def _place_options(delays: bool) -> Any:
    return _struct(
        "gridkit_place_options",
        delays=lib.gridkit_Yes if delays else lib.gridkit_No,
        threads=EVERY_PROCESSOR,
    )
