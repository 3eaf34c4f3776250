"""xarray's ways of indexing over arrays that take integers and slices.

xarray has an adapter for this. Up to 2023.01, which Debian 12 has, it takes wrong lines for negative steps that divide
the length, and fails for empty lists; what reads images takes negative steps by itself.
"""

from __future__ import annotations

from typing import Any, Callable

import numpy as np
from xarray.core import indexing

__all__ = ["indexed"]


def indexed(key: Any, shape: tuple[int, ...], read: Callable[[tuple[Any, ...]], Any]) -> Any:
    """What an indexer of xarray's selects.

    Parameters
    ----------
    key : xarray.core.indexing.ExplicitIndexer
        Integers, slices with any step, and arrays of indices, which select one axis each, or points together.
    shape : tuple of int
        Of the whole array.
    read : callable
        Gives what integers and slices select. Of arrays of indices all between the least and the greatest is read.
    """
    basic: list[Any] = []
    after: list[Any] = []
    for part, length in zip(key.tuple, shape):
        if isinstance(part, slice):
            basic.append(part)
            after.append(slice(None))
        elif isinstance(part, np.ndarray):
            indices = np.where(part < 0, part + length, part)
            first, stop = (indices.min(), indices.max() + 1) if indices.size else (0, 0)
            if first < 0 or stop > length:
                raise IndexError(f"an index is out of bounds for an axis with size {length}")
            basic.append(slice(int(first), int(stop)))
            after.append(indices - first)
        else:
            basic.append(int(part))
    values = read(tuple(basic))
    if not any(isinstance(part, np.ndarray) for part in after):
        return values
    again = (
        indexing.VectorizedIndexer if isinstance(key, indexing.VectorizedIndexer) else indexing.OuterIndexer
    )
    return indexing.NumpyIndexingAdapter(values)[again(tuple(after))]
