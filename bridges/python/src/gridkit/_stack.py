"""Images of several products, one above the other."""

from __future__ import annotations

from typing import Any, Iterable

import numpy as np
import xarray
from xarray.backends import BackendArray
from xarray.core import indexing

from gridkit._backend import preferred_lines
from gridkit._image import Image
from gridkit._indexing import indexed
from gridkit._product import PathLike, Product, open
from gridkit._slicing import select

__all__ = ["open_stack"]


class LazyStack(BackendArray):  # type: ignore[misc]
    """Images of one shape as one array of times, lines and samples."""

    def __init__(self, images: list[Image]) -> None:
        self.images = images
        self.shape = (len(images), *images[0].shape)
        self.dtype = images[0].dtype

    def __getitem__(self, key: Any) -> Any:
        return indexed(key, self.shape, self._read)

    def _read(self, key: tuple[Any, ...]) -> Any:
        first, *rest = key
        selection = select(tuple(rest), self.images[0].shape)
        chosen = self.images[first] if isinstance(first, slice) else [self.images[first]]
        stacked = np.empty((len(chosen), selection.lines.length, selection.samples.length), self.dtype)
        for image, target in zip(chosen, stacked):
            image._read_into(target, selection)
        shape = selection.shape if not isinstance(first, slice) else (len(chosen), *selection.shape)
        result = stacked.reshape(shape)
        return result[()] if not shape else result


def open_stack(paths: Iterable[PathLike], polarisation: str, quantity: str = "beta0") -> xarray.DataArray:
    """Opens images of one size of several products as one lazy array.

    Parameters
    ----------
    paths : iterable of path-like
        The products, in the order that the array is to have.
    polarisation : str
        Name or polarisation of the image of each.
    quantity : str
        A method of `Product` that gives an image: ``"samples"``, ``"beta0"`` and what else there is.

    Returns
    -------
    xarray.DataArray of dims (time, line, sample)
        ``time`` is when each image's first line was seen (NaT where that is not known); ``product`` the annotations'
        paths. Lines of different products are those of the files: nothing is registered. Closing it closes them.

    Raises
    ------
    ValueError
        No product at all, another quantity, or images of different shapes.
    Error
        As `gridkit.open`.
    """
    products: list[Product] = []

    def close() -> None:
        for product in products:
            product.close()

    try:
        images = []
        for path in paths:
            products.append(open(path))
            known = ("samples", *products[-1].quantities(polarisation))
            if quantity not in known:
                raise ValueError(f"{products[-1].path} has no {quantity!r}; it has {', '.join(known)}")
            images.append(getattr(products[-1], quantity)(polarisation))
        if not images:
            raise ValueError("a stack needs one product at least")
        for image in images:
            if image.shape != images[0].shape or image.dtype != images[0].dtype:
                raise ValueError(
                    f"{image.product.path} has {image.shape[0]} lines of {image.shape[1]} samples, "
                    f"{images[0].product.path} {images[0].shape[0]} of {images[0].shape[1]}; "
                    "a stack needs images of one size"
                )
        chunks = {"time": 1, "line": preferred_lines(images[0]), "sample": images[0].shape[1]}
        variable = xarray.Variable(
            ("time", "line", "sample"),
            indexing.LazilyIndexedArray(LazyStack(images)),
            {"polarisation": images[0].polarisation},
            {"preferred_chunks": chunks},
        )
        coords = {
            "time": [image.first_line_time for image in images],
            "product": ("time", [image.product.path for image in images]),
        }
        # An array that is made of a variable alone would read it.
        array: xarray.DataArray = xarray.Dataset({quantity: variable}, coords)[quantity]
    except BaseException:
        close()
        raise
    array.set_close(close)
    return array
