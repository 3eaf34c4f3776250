"""numpy's basic indexing of an image, as arithmetic."""

from __future__ import annotations

import operator
from typing import Any, NamedTuple

__all__ = ["Axis", "Selection", "select"]


class Axis(NamedTuple):
    """What an index takes of one axis, in rising order.

    `first`, `step` (at least 1) and `length` name the indices; `reversed` tells that the caller wants them from
    the last to the first.
    """

    first: int
    step: int
    length: int
    reversed: bool


class Selection(NamedTuple):
    """What a key takes of an image: lines, samples, and the shape that the result has."""

    lines: Axis
    samples: Axis
    shape: tuple[int, ...]


def _axis_of_slice(key: slice, length: int) -> Axis:
    start, stop, step = key.indices(length)
    count = len(range(start, stop, step))
    if count == 0:
        return Axis(0, 1, 0, False)
    if step > 0:
        return Axis(start, step, count, False)
    return Axis(start + (count - 1) * step, -step, count, True)


def _axis_of_index(key: int, length: int, axis: int) -> Axis:
    index = key + length if key < 0 else key
    if not 0 <= index < length:
        raise IndexError(f"index {key} is out of bounds for axis {axis} with size {length}")
    return Axis(index, 1, 1, False)


def select(key: Any, shape: tuple[int, int]) -> Selection:
    """What ``image[key]`` takes of an image of that shape.

    Parameters
    ----------
    key : int, slice, Ellipsis, None or a tuple of these
        As numpy's basic indexing has it.
    shape : tuple of int
        Lines and samples of the image.

    Raises
    ------
    IndexError
        An index outside the image, or more of them than two.
    TypeError
        Index arrays and masks: what they take has no regular form.
    """
    keys = list(key) if isinstance(key, tuple) else [key]
    ellipses = [i for i, k in enumerate(keys) if k is Ellipsis]
    if len(ellipses) > 1:
        raise IndexError("an index can only have a single ellipsis ('...')")
    used = sum(1 for k in keys if k is not None and k is not Ellipsis)
    if used > 2:
        raise IndexError(f"too many indices: the image has 2 dimensions, but {used} were indexed")
    at = ellipses[0] if ellipses else len(keys)
    keys[at : at + 1] = [slice(None)] * (2 - used)

    axes: list[Axis] = []
    result: list[int] = []
    for k in keys:
        if k is None:
            result.append(1)
        elif isinstance(k, slice):
            axes.append(_axis_of_slice(k, shape[len(axes)]))
            result.append(axes[-1].length)
        else:
            axes.append(_axis_of_index(_whole(k), shape[len(axes)], len(axes)))
    return Selection(axes[0], axes[1], tuple(result))


def _whole(key: Any) -> int:
    if not isinstance(key, bool) and getattr(getattr(key, "dtype", None), "kind", "") != "b":
        try:
            return operator.index(key)
        except TypeError:
            pass
    raise TypeError(
        f"an image is indexed by integers, slices, '...' and None, not by {type(key).__name__}; "
        "read the part of it that is wanted, as with [:], and index the result"
    )
