"""Products and pictures for the eye: PNG files, and the view of notebooks."""

from __future__ import annotations

import base64
import html
import struct
import zlib
from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

from gridkit._errors import Error

if TYPE_CHECKING:
    from gridkit._product import Product

__all__ = ["page_of", "png"]

_LONGEST_SIDE = 400


def png(picture: npt.ArrayLike) -> bytes:
    """A grey picture as the bytes of a PNG file.

    Parameters
    ----------
    picture : array-like of uint8, shape (height, width)
        0 is black, 255 white.

    Examples
    --------
    >>> gridkit.png(product.quicklook())[1:4]
    b'PNG'
    """
    greys = np.asarray(picture)
    if greys.dtype != np.uint8 or greys.ndim != 2 or not greys.size:
        raise ValueError(f"a picture is a two-dimensional array of uint8, not {greys.ndim} of {greys.dtype}")
    height, width = greys.shape

    def part(kind: bytes, content: bytes) -> bytes:
        checked = kind + content
        return struct.pack(">I", len(content)) + checked + struct.pack(">I", zlib.crc32(checked))

    # Every line begins with the number of its filter; 0 is none.
    lines = np.zeros((height, width + 1), np.uint8)
    lines[:, 1:] = greys
    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    parts = part(b"IHDR", header), part(b"IDAT", zlib.compress(lines.tobytes())), part(b"IEND", b"")
    return b"\x89PNG\r\n\x1a\n" + b"".join(parts)


def page_of(product: Product) -> str:
    """What the product is, its images and layers as tables, and a picture of its first layer."""
    facts = "".join(_row("th", name, value) for name, value in _facts(product))
    images = "".join(_row("td", i.name, _size(i.lines, i.samples)) for i in product._images)
    layers = "".join(_row("td", i.name, _size(i.lines, i.samples)) for i in product._layers)
    return (
        "<div><strong>gridkit.Product</strong>"
        "<div style='display:flex;gap:1.5em;align-items:flex-start'>"
        f"{_picture(product)}<div style='min-width:0;overflow-wrap:anywhere'><table>{facts}</table>"
        f"<strong>Images</strong><table>{images}</table>"
        f"<strong>Layers</strong><table>{layers}</table></div></div></div>"
    )


def _facts(product: Product) -> list[tuple[str, str]]:
    """What `info` tells beside the images and layers, a row for each of its members that is known."""
    rows = []
    for key, value in product.info.items():
        if key not in ("layers", "data") and value not in (None, [], {}):
            rows.append((key, _words(value)))
    return rows


def _words(value: Any) -> str:
    if isinstance(value, dict):
        return "; ".join(f"{k} {_words(v)}" for k, v in value.items() if v is not None)
    if isinstance(value, list):
        return ", ".join(_words(element) for element in value)
    return f"{value:.8g}" if isinstance(value, float) else str(value)


def _picture(product: Product) -> str:
    try:
        picture = product.quicklook(longest=_LONGEST_SIDE)
    except (Error, ValueError) as refusal:  # the rest is worth showing all the same
        return f"<em>{html.escape(str(refusal))}</em>"
    encoded = base64.b64encode(png(picture)).decode()
    return f"<img alt='{html.escape(product.layers[0])}' src='data:image/png;base64,{encoded}'>"


def _row(kind: str, name: str, value: str) -> str:
    style = " style='text-align:left;vertical-align:top;padding-right:1em'"
    return f"<tr><{kind}{style}>{html.escape(name)}</{kind}><td{style}>{html.escape(value)}</td></tr>"


def _size(lines: int, samples: int) -> str:
    return f"{lines} lines x {samples} samples"
