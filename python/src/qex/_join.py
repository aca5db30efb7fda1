"""Several clips as one."""

from __future__ import annotations

from typing import Iterable

from . import _core
from ._clip import Clip


def join(clips: Iterable[Clip], blend: int = 0) -> Clip:
    """The clips one after the other: same joints, same rate. The unit and the up axis are those of the first.

    blend: so many frames at the end of each fade into the start of the next

    >>> clip = qex.load("samples/walk.amc")
    >>> len(qex.join([clip[:100], clip[100:]])), len(qex.join([clip, clip], blend=20))
    (241, 462)
    """
    listed = list(clips)
    if not listed:
        raise ValueError("join needs at least one clip")
    if not all(isinstance(clip, Clip) for clip in listed):
        raise TypeError("join takes clips")
    first = listed[0]
    core = first._raw
    for clip in listed[1:]:
        core = _core.join(core, clip.to(up=first.up, units=first.units)._raw, int(blend))
    return first._with(core)
