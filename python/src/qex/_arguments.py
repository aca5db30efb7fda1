"""Arguments: checked, and as the library takes them."""

from __future__ import annotations

import operator
import os
from typing import Any, List, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

Path = Union[str, "os.PathLike[str]"]
Floats = npt.NDArray[np.floating[Any]]
Ints = npt.NDArray[np.int32]

CENTIMETRES = {"cm": 1.0, "m": 100.0, "in": 2.54}
FORMS = ["quat", "matrix", "6d", "axis_angle", "euler"]
AXES = "xyz"


def to_bytes(text: str) -> bytes:
    """A text as files have it: UTF-8, and the bytes that were none."""
    return text.encode("utf-8", "surrogateescape")


def name_of_file(path: Path) -> bytes:
    """The path as the library takes it, for which "-" alone is standard input or output."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("embedded null byte in a path")
    return os.path.join(b".", name) if name == b"-" else name


def rate(what: str, number: float) -> float:
    """The number, if it is a rate; else ValueError."""
    if isinstance(number, str) or not 1e-3 <= float(number) <= 1e6:
        raise ValueError(f"{what}={number!r}: expected 0.001 to 1,000,000 frames a second")
    return float(number)


def whole(what: str, number: Any) -> int:
    """The number, if it is a whole one; else TypeError."""
    if isinstance(number, (bool, np.bool_)) or not hasattr(number, "__index__"):
        raise TypeError(f"{what}={number!r}: expected a whole number")
    return operator.index(number)


def choose(what: str, word: str, words: List[str]) -> str:
    """The word, if it is one of the words; else ValueError."""
    if word not in words:
        raise ValueError(f"{what}={word!r}: expected one of {', '.join(map(repr, words))}")
    return word


def as_float_type(dtype: npt.DTypeLike) -> np.dtype[Any]:
    """The type, if its numbers have fractions; else TypeError."""
    kind = np.dtype(dtype)
    if kind.kind != "f":
        raise TypeError(f"dtype={kind.name}: expected a floating-point type")
    return kind


def is_double(dtype: np.dtype[Any]) -> bool:
    """Whether numbers of the type are computed in double precision."""
    return bool(dtype != np.float32)


def euler_order(order: str) -> Tuple[str, List[int]]:
    """Letters as SciPy has them, as the library's order and, for each letter, the index of its angle in the library's triple.

    Lower case turns about fixed axes, one after the other: the library's order. Capitals turn about the axes that move along, which is
    the same as about fixed axes from the last letter to the first. The library sorts angles by axis, unless one is repeated.
    """
    letters = order.lower()
    is_order = len(order) == 3 and set(letters) <= set(AXES) and letters[0] != letters[1] != letters[2]
    if not is_order or order not in (letters, letters.upper()):
        raise ValueError(f"order={order!r}: expected three letters, 'xyz' about fixed axes or 'XYZ' about moving ones, none twice in a row")
    fixed = letters if order == letters else letters[::-1]
    columns = [0, 1, 2] if fixed[0] == fixed[2] else [AXES.index(letter) for letter in fixed]
    return fixed.upper(), columns if order == letters else columns[::-1]


def rotation_order(form: str, order: Optional[str]) -> str:
    """The order that a form has if none is given, or the given one if the form has orders."""
    if form == "quat":
        return choose("order", "wxyz" if order is None else order, ["wxyz", "xyzw"])
    if form == "euler":
        return "xyz" if order is None else order
    if order is not None:
        raise ValueError(f"order={order!r}: a {form!r} has no order")
    return ""
