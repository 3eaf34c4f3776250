"""What can go wrong, as exceptions and one warning."""

from __future__ import annotations

from typing import Any, Optional

__all__ = [
    "ChangedError",
    "ClosedError",
    "DescriptionError",
    "Error",
    "ImageError",
    "InternalError",
    "MissingError",
    "MissingLinesWarning",
    "NotRecognisedError",
    "PluginError",
    "ProductNotFoundError",
]


class Error(Exception):
    """A product, or a part of it, cannot be used; the root of all that this package raises of its own.

    Wrong use, such as a window outside the image, raises `ValueError`, `TypeError` or `IndexError` instead.

    Attributes
    ----------
    path : str or None
        The file concerned, where one is known.
    element : str or None
        The element of the annotation, such as ``/level1Product/productInfo``.
    line : int or None
        The line of the annotation, counted from 1.
    code : int or None
        The library's number of the error: a ``gridkit_Code`` of ``gridkit/gridkit.h``.
    """

    def __init__(
        self,
        message: str,
        path: Optional[str] = None,
        element: Optional[str] = None,
        line: Optional[int] = None,
        code: Optional[int] = None,
    ) -> None:
        super().__init__(message)
        self.message = message
        self.path = path
        self.element = element
        self.line = line
        self.code = code

    def __str__(self) -> str:
        return self.message

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (self.message, self.path, self.element, self.line, self.code)


class ProductNotFoundError(Error, FileNotFoundError):
    """The path leads to no product, or to several."""


class NotRecognisedError(Error, ValueError):
    """The file is of no format that is known."""


class DescriptionError(Error, ValueError):
    """The annotation is at fault; see `element` and `line`."""


class ImageError(Error, OSError):
    """An image file is missing, at fault, or cannot be read."""


class MissingError(Error, LookupError):
    """The product has nothing of the kind: no such data, no calibration, no place on Earth."""


class PluginError(Error, ImportError):
    """No format plug-in could be loaded."""


class InternalError(Error, RuntimeError):
    """An error of the library itself, which should not happen."""


class ClosedError(Error, ValueError):
    """The product was closed."""


class ChangedError(Error):
    """A file of the product is not the one it was when the product was opened first."""


class MissingLinesWarning(UserWarning):
    """An image file ends before the window does: what is missing reads as NaN, or 0 of integers."""
