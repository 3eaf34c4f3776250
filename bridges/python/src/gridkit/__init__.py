"""Raster products of radar satellites, opened through gridkit's format plug-ins.

A product is opened by the path of its annotation, or of the folder it stands in:

>>> product = gridkit.open(ssc)
>>> product.polarisations
('HH',)

Its images are arrays that are read when they are sliced, by numpy's rules:

>>> image = product.samples("HH")
>>> image
<gridkit.Image samples('HH'): 300 lines x 260 samples, complex64>
>>> image[100:200:2, ::-1].shape
(50, 260)
>>> product.beta0("HH")[0, 0].dtype
dtype('float32')

Pixels have places on Earth, and places have pixels:

>>> latitude, longitude, height = product.locate([0, 299], 130)
>>> line, sample = product.find(latitude, longitude, height)
>>> numpy.allclose(line, [0, 299], atol=1e-3) and numpy.allclose(sample, 130, atol=1e-3)
True
>>> product.close()

`Product` tells what else there is: `info`, `data`, `annotation`, `state_vectors`, `rpc` and the plug-in's own layers.
Whatever is wrong with a product is a `gridkit.Error`, with the file, the element and the line where they are known. With
xarray installed, ``xarray.open_dataset(path, engine="gridkit")`` gives the same lazily as a dataset.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from gridkit import _border
from gridkit._errors import (
    ChangedError,
    ClosedError,
    DescriptionError,
    Error,
    ImageError,
    InternalError,
    MissingError,
    MissingLinesWarning,
    NotRecognisedError,
    PluginError,
    ProductNotFoundError,
)
from gridkit._image import Image
from gridkit._page import png
from gridkit._product import Product, StateVectors, open

if TYPE_CHECKING:
    from gridkit._stack import open_stack

__version__ = _border.version()

__all__ = [
    "ChangedError",
    "ClosedError",
    "DescriptionError",
    "Error",
    "Image",
    "ImageError",
    "InternalError",
    "MissingError",
    "MissingLinesWarning",
    "NotRecognisedError",
    "PluginError",
    "Product",
    "ProductNotFoundError",
    "StateVectors",
    "open",
    "open_stack",
    "png",
]


def __getattr__(name: str) -> Any:
    # xarray is optional, and importing it takes longer than all else here.
    if name == "open_stack":
        from gridkit._stack import open_stack

        return open_stack
    raise AttributeError(f"module 'gridkit' has no attribute {name!r}")
