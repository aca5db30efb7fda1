"""Several clips as one."""

from __future__ import annotations

from typing import Iterable

import numpy as np

from . import _core
from ._arguments import whole
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
    first, blend = listed[0], whole("blend", blend)
    if not 0 <= blend <= min(map(len, listed)):
        raise ValueError(f"blend={blend}: expected 0 to {min(map(len, listed))}, the frames of the shortest clip")
    for clip in listed:
        if clip.names != first.names or not np.array_equal(clip.parents, first.parents):
            raise ValueError("clips to join need the same joints")
        if clip._raw.step != first._raw.step:
            raise ValueError(f"clips to join need the same rate: {clip.fps} and {first.fps}, see resample()")
    parts = [clip.to(up=first.up, units=first.units)._raw for clip in listed]
    # Two by two, so that not every step copies all before it, where no frame is part of two blends.
    while len(parts) > 2 and min(map(len, listed)) >= 2 * blend:
        joined = [_core.join(one, other, blend) for one, other in zip(parts[::2], parts[1::2])]
        parts = joined + parts[2 * len(joined) :]
    core = parts[0]
    for part in parts[1:]:
        core = _core.join(core, part, blend)
    return first._with(core)
