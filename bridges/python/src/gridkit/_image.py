"""Images that are read when they are sliced."""

from __future__ import annotations

import operator
import warnings
from typing import TYPE_CHECKING, Any, NamedTuple, Optional, Union

import numpy as np
import numpy.typing as npt

from gridkit import _border
from gridkit._errors import MissingLinesWarning
from gridkit._slicing import Axis, Selection, select

if TYPE_CHECKING:
    from gridkit._product import Product

__all__ = ["Image"]

# From this size on a read is shared by every processor; below, starting threads would cost more than it saves.
_SHARED_BYTES = 4 << 20


class Source(NamedTuple):
    """Where an image's values come from, and how to ask for them again in another process."""

    method: str  # of Product, that gives the image
    arguments: dict[str, Any]
    facts: Union[_border.ImageFacts, _border.LayerFacts]
    quantity: _border.Quantity
    # Forms of samples by the type that they give, the image's own first; of a layer its pixels alone.
    forms: tuple[tuple[np.dtype[Any], int], ...]


class Image:
    """An image of an open product: an array of lines and samples that is read when it is sliced.

    ``image[lines, samples]`` takes what numpy's basic indexing takes (integers, slices with any step,
    ``...``, ``None``) and gives a new array, or a number for two integers; nothing is read that is not asked for.
    ``numpy.asarray(image)`` reads all of it. Any number of threads may read at once.

    The image holds its product open; reading after the product's `close` raises `ClosedError`. It pickles as its
    product does.

    Attributes
    ----------
    name : str
        Name of the image or the layer.
    polarisation : str or None
        Such as ``"HH"``; None of a layer.
    shape : tuple of int
        Lines and samples.
    dtype : numpy.dtype
        Of what slicing gives, in this machine's byte order.

    Warns
    -----
    MissingLinesWarning
        Where the image file ends early. What is missing is NaN, or 0 of integers.
    """

    ndim = 2

    def __init__(self, product: Product, source: Source) -> None:
        self._product = product
        self._source = source
        facts = source.facts
        self.name = facts.name
        self.polarisation = facts.polarisation if isinstance(facts, _border.ImageFacts) else None
        self.shape = (facts.lines, facts.samples)
        self.dtype = source.forms[0][0]

    @property
    def size(self) -> int:
        """Number of samples."""
        return self.shape[0] * self.shape[1]

    @property
    def nbytes(self) -> int:
        """Bytes of all samples in `dtype`."""
        return self.size * self.dtype.itemsize

    @property
    def product(self) -> Product:
        """The product that the image is of."""
        return self._product

    @property
    def first_line_time(self) -> np.datetime64:
        """When the first line was seen, UTC; NaT where that is not known."""
        told = getattr(self._source.facts, "first_line_utc", "")
        return np.datetime64(told.rstrip("Z") or "NaT", "ns")

    def __len__(self) -> int:
        return self.shape[0]

    def __repr__(self) -> str:
        words = "".join(f", {k}={v!r}" for k, v in self._source.arguments.items() if k != "name")
        return (
            f"<gridkit.Image {self._source.method}({self.name!r}{words}): "
            f"{self.shape[0]} lines x {self.shape[1]} samples, {self.dtype}>"
        )

    def __reduce__(self) -> tuple[Any, ...]:
        return _image_of, (self._product, self._source.method, self._source.arguments)

    def __getitem__(self, key: Any) -> Any:
        return self.take(key)

    def __array__(self, dtype: npt.DTypeLike = None, copy: Optional[bool] = None) -> npt.NDArray[Any]:
        if copy is False:
            raise ValueError("an image has to be read, so it cannot become an array without a copy")
        whole = self.take(...)
        return np.asarray(whole, dtype) if dtype is not None else np.asarray(whole)

    def take(self, key: Any, threads: Optional[int] = None) -> Any:
        """What ``image[key]`` gives, read by that many threads.

        Parameters
        ----------
        key : int, slice, Ellipsis, None or a tuple of these
            As numpy's basic indexing has it.
        threads : int, optional
            That read: 1 is the calling one alone, -1 one a processor. By default as the size asks for.

        Returns
        -------
        numpy.ndarray or a numpy scalar
        """
        selection = select(key, self.shape)
        plain = np.empty((selection.lines.length, selection.samples.length), self.dtype)
        self._read_into(plain, selection, threads)
        result = plain.reshape(selection.shape)
        return result[()] if not selection.shape else result

    def _read_into(self, target: npt.NDArray[Any], selection: Selection, threads: Optional[int] = 1) -> None:
        """Reads what a key takes into an array of its lines and samples, of the image's own type."""
        self._fill(target, selection.lines, selection.samples, self._source.forms[0][1], threads)

    def read(
        self,
        line: int,
        sample: int,
        lines: int,
        samples: int,
        step: Union[int, tuple[int, int]] = 1,
        out: Optional[npt.NDArray[Any]] = None,
        dtype: npt.DTypeLike = None,
    ) -> npt.NDArray[Any]:
        """Reads a window.

        Parameters
        ----------
        line, sample : int
            The window's first line and sample, counted from 0.
        lines, samples : int
            How many lines and samples the result has; all that they take must lie in the image.
        step : int or (int, int)
            From one line, and one sample, to the next that is taken; at least 1.
        out : numpy.ndarray of shape (lines, samples), optional
            Where they go, with any strides; they are read straight into it where it has the type that is read.
        dtype : dtype-like, optional
            The type to read; that of `out`, or the image's own, by default. Complex samples come as complex64 or
            wider, or as they are in the file: ``[("real", "i2"), ("imag", "i2")]``, of 32-bit products "f2" in place
            of "i2". Other values come in every type that holds them all.

        Returns
        -------
        numpy.ndarray of shape (lines, samples)
            `out`, where it was given.

        Raises
        ------
        IndexError
            A window that leaves the image.
        ValueError, TypeError
            An `out` of another shape, that cannot be written, or a type that would lose something.
        Error
            A file that cannot be read.
        """
        line_step, sample_step = (step, step) if not isinstance(step, tuple) else step
        rows = _axis(line, lines, line_step, self.shape[0], "line")
        columns = _axis(sample, samples, sample_step, self.shape[1], "sample")
        shape = (rows.length, columns.length)
        if out is not None:
            if not isinstance(out, np.ndarray):
                raise TypeError(f"out must be a numpy array, not {type(out).__name__}")
            if out.shape != shape:
                raise ValueError(f"out has the shape {out.shape}, the window {shape}")
            if not out.flags.writeable:
                raise ValueError("out cannot be written")
        wanted = np.dtype(dtype) if dtype is not None else self.dtype if out is None else out.dtype
        read, form = self._form_for(wanted)
        if out is None:
            plain = np.empty(shape, read)
            self._fill(plain, rows, columns, form, None)
            return plain if wanted == read else plain.astype(wanted)
        if not np.can_cast(wanted, out.dtype, "safe"):
            raise TypeError(f"out is of the type {out.dtype}, which does not hold all of {wanted}")
        if out.dtype == read and out.flags.aligned:
            self._fill(out, rows, columns, form, None)
        else:
            plain = np.empty(shape, read)
            self._fill(plain, rows, columns, form, None)
            out[...] = plain
        return out

    def _form_for(self, wanted: np.dtype[Any]) -> tuple[np.dtype[Any], int]:
        """The type to read, and its form, for a type that holds all of it."""
        native = wanted.newbyteorder("=")
        for exact in self._source.forms:
            if exact[0] == native:
                return exact
        for wider in self._source.forms:
            if wider[0].names is None and native.names is None and np.can_cast(wider[0], native, "safe"):
                return wider
        raise TypeError(f"{self.name} cannot be read as {wanted} without loss; its own type is {self.dtype}")

    def _fill(
        self, target: npt.NDArray[Any], lines: Axis, samples: Axis, form: int, threads: Optional[int]
    ) -> None:
        """Reads a window into an array; nothing is opened or read for an empty one."""
        handle = self._product._open_handle()
        if target.size == 0:
            return
        if threads is None:
            threads = _border.EVERY_PROCESSOR if target.nbytes >= _SHARED_BYTES else 1
        view = target[:: -1 if lines.reversed else 1, :: -1 if samples.reversed else 1]
        number = self._source.facts.number
        if isinstance(self._source.facts, _border.LayerFacts):
            missing = handle.read_layer(number, lines, samples, view, threads)
        else:
            missing = handle.read_samples(number, lines, samples, view, form, self._source.quantity, threads)
        if missing is not None:
            nothing = np.nan if view.dtype.kind in "fc" else 0
            view[missing.line : missing.line + 1, missing.sample :] = nothing
            view[missing.line + 1 :] = nothing
            warnings.warn(missing.message, MissingLinesWarning, stacklevel=4)


def _axis(first: int, count: int, step: int, length: int, word: str) -> Axis:
    first, count, step = operator.index(first), operator.index(count), operator.index(step)
    if count < 0:
        raise ValueError(f"the number of {word}s is {count}; it must not be negative")
    if step < 1:
        raise ValueError(f"the step from {word} to {word} is {step}; it must be at least 1")
    last = first + max(count - 1, 0) * step
    if first < 0 or (last >= length if count else first > length):
        raise IndexError(
            f"{word}s {first} to {last} leave the image, which has the {word}s 0 to {length - 1}"
        )
    return Axis(first, step, count, False)


def _image_of(product: Product, method: str, arguments: dict[str, Any]) -> Image:
    image: Image = getattr(product, method)(**arguments)
    return image
