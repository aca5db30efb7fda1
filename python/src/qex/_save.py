"""Writing a clip to files, and drawing it."""

from __future__ import annotations

import os
import warnings
from typing import TYPE_CHECKING, List, Optional, Union

from . import _core
from ._arrays import CENTIMETRES, choose, euler_order, to_bytes
from ._messages import Error, from_core

if TYPE_CHECKING:
    from ._clip import Clip

Path = Union[str, "os.PathLike[str]"]

PRESETS = ["motion-imitation"]


def target_of(clip: Clip) -> _core.Target:
    """What the library needs to know of a clip to write or draw it."""
    target = _core.Target()
    target.name = to_bytes(clip.name)
    target.unit = CENTIMETRES[clip.units]
    target.is_z_up = clip.up == "z"
    return target


def draw(clip: Clip) -> str:
    """The clip as SVG: some poses from the front; "" if it cannot be drawn."""
    return _core.draw(clip._raw, target_of(clip))


def save(
    clip: Clip, paths: List[Path], skeleton: Optional[Path], order: str, mesh: bool, preset: Optional[str], write_rate: bool
) -> None:
    """Clip.save()."""
    target = target_of(clip)
    names = [name_of_file(path) for path in paths]
    target.paths = names
    target.order = bvh_order(order).encode()
    target.mesh, target.write_rate = mesh, write_rate
    target.is_for_imitation = preset is not None and bool(choose("preset", preset, PRESETS))
    endings = {os.path.splitext(path)[1].lower() for path in names}
    if b".amc" in endings and b".asf" not in endings:
        own = clip.skeleton if clip.skeleton and clip.skeleton.lower().endswith(".asf") else None
        if clip.up == "z":
            raise ValueError("an AMC file alone has the axes of its skeleton, y up: to(up='y') first")
        if skeleton is None and own is None:
            raise ValueError("an AMC file needs a skeleton: save('x.asf', 'x.amc'), or skeleton='existing.asf'")
        target.skeleton = name_of_file(skeleton or own or "")
    elif skeleton is not None:
        raise ValueError("skeleton= is for an AMC file alone")
    written, raw = _core.save(clip._raw, target)
    messages = from_core(raw)
    if not written and not any(message.severity == "error" for message in messages):
        raise BrokenPipeError("the reader of a pipe closed it")
    if not written:
        raise Error(messages)
    for message in messages:
        if message.severity == "warning":
            warnings.warn(f"{message.path}: {message.text}", UserWarning, stacklevel=3)


def bvh_order(order: str) -> str:
    """The letters of rotations() as the library's order, without a repeated axis."""
    word = euler_order(order)[0]
    if word[0] == word[2]:
        raise ValueError(f"order={order!r}: BVH has three different axes")
    return word


def name_of_file(path: Path) -> bytes:
    """The path as the library takes it, for which "-" alone is standard input or output."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("embedded null byte in a path")
    return os.path.join(b".", name) if name == b"-" else name
