"""Steps from clip to clip."""

from __future__ import annotations

import operator
import warnings
from typing import Callable, Iterable, Iterator, List, Optional, Sequence, Tuple, TypeVar, Union

import numpy as np

from . import _core
from ._arguments import CENTIMETRES, choose, rate
from ._base import ClipBase, Joint

AnyClip = TypeVar("AnyClip", bound="Steps")


class Steps(ClipBase):
    """Steps to other clips."""

    __slots__ = ()

    def __getitem__(self: AnyClip, frames: Union[int, slice]) -> AnyClip:
        """The frames of a slice, backwards too; for a number, that frame alone.

        >>> clip[100:200:4]
        <qex.Clip 'walk': 35 joints, 25 frames, 30 a second, cm, y up>
        >>> len(clip[::-1]), len(clip[-1])
        (241, 1)
        """
        if not isinstance(frames, slice):
            index = operator.index(frames)
            if not -len(self) <= index < len(self):
                raise IndexError(f"frame {index}: there are {len(self)}")
            return self._with(_core.cut(self._raw, index % len(self), index % len(self), 1))
        chosen = range(len(self))[frames]
        if not chosen:
            raise ValueError("the slice has no frames, and a clip has at least one")
        core = _core.cut(self._raw, min(chosen), max(chosen), min(abs(chosen.step), len(self)))
        return self._with(core if chosen.step > 0 else _core.reverse(core))

    def __iter__(self: AnyClip) -> Iterator[AnyClip]:
        """Each frame as a clip."""
        return (self[frame] for frame in range(len(self)))

    def resample(self: AnyClip, fps: float) -> AnyClip:
        """The motion at another rate: rotations along the shorter arc between frames, the rest linear.

        >>> len(clip.resample(30))
        61
        """
        return self._with(_core.resample(self._raw, rate("fps", fps)))

    def joints(self: AnyClip, joints: Union[Joint, Iterable[Joint]]) -> AnyClip:
        """Only these joints, by names, indices or a mask, in the clip's order. Each keeps its transform in the world, and is
        relative to its nearest ancestor that stays.

        >>> clip.joints(["left_foot", "right_foot"]).parents
        array([-1, -1], dtype=int32)
        """
        listed: List[Joint] = [joints] if isinstance(joints, (str, int, np.integer)) else list(joints)
        mask = np.asarray(listed)
        if mask.dtype == bool:
            if mask.shape != (len(self.names),):
                raise ValueError(f"a mask of joints has shape {mask.shape}, not ({len(self.names)},)")
            listed = np.flatnonzero(mask).tolist()
        chosen = self._indices(listed)
        if not chosen:
            raise ValueError("no joints were chosen")
        return self._with(_core.select(self._raw, sorted(set(chosen))))

    def to(self: AnyClip, *, up: Optional[str] = None, units: Optional[str] = None) -> AnyClip:
        """With another axis up or in another unit.

        With z up, (x, y, z) becomes (x, -z, y) for the axes of joints too: a joint without rotation stays without.

        >>> clip.to(up="z", units="m").positions()[0, 0].round(3)
        array([-0.008, -0.004,  0.928], dtype=float32)
        """
        core = self._raw
        up = self.up if up is None else choose("up", up, ["y", "z"])
        units = self.units if units is None else choose("units", units, list(CENTIMETRES))
        if up != self.up:
            core = _core.make_z_up(core) if up == "z" else _core.make_y_up(core)
        if units != self.units:
            core = _core.scale(core, CENTIMETRES[self.units] / CENTIMETRES[units])
        return self._with(core, up=up, units=units)

    def scale(self: AnyClip, factor: float) -> AnyClip:
        """All lengths times a factor: the figure and its path.

        >>> bool(np.all(clip.scale(0.5).rest_positions == clip.rest_positions / 2))
        True
        """
        if not 0 < factor <= 1e9:
            raise ValueError(f"factor={factor!r}: expected above 0, and at most 1e9")
        return self._with(_core.scale(self._raw, float(factor)))

    def _step(self: AnyClip, step: Callable[[_core.Clip], _core.Clip]) -> AnyClip:
        """A step of the library, which has y up."""
        if self.up == "y":
            return self._with(step(self._raw))
        return self._with(_core.make_z_up(step(_core.make_y_up(self._raw))))

    def in_place(self: AnyClip, *, keep_turn: bool = True) -> AnyClip:
        """The first root's path on the ground taken out: it stays above its position in the first frame. Its turn about the vertical stays,
        unless keep_turn is false. Roots lose their degrees of freedom.

        >>> path = clip.in_place().positions()[:, 0, [0, 2]]
        >>> bool(np.ptp(path, axis=0).max() < 1e-4)
        True
        """
        return self._step(lambda core: _core.in_place(core, keep_turn))

    def start_at_origin(self: AnyClip) -> AnyClip:
        """Turned and moved so that the first root starts above the origin and faces forward. Roots lose their degrees of freedom.

        >>> bool(abs(clip.start_at_origin().positions()[0, 0, [0, 2]]).max() < 1e-4)
        True
        """
        return self._step(_core.start_at_origin)

    def mirror(self: AnyClip, pairs: Optional[Sequence[Tuple[Joint, Joint]]] = None) -> AnyClip:
        """Left and right exchanged.

        pairs: joints that change sides with each other; else those whose names differ in left and right. Values of degrees of freedom
            are lost.

        >>> left, right = (clip.names.index(name) for name in ("left_foot", "right_foot"))
        >>> bool(abs(clip.positions()[:, left] * [-1, 1, 1] - clip.mirror().positions()[:, right]).max() < 1e-3)
        True
        """
        other, itself = _core.mirror_pairs(self._raw), list(range(len(self.names)))
        if pairs is None and other == itself:
            warnings.warn("no names differ in left and right: no joints change sides, give pairs=", UserWarning, stacklevel=2)
        if pairs is not None:
            other = itself
            indices = self._indices(joint for one, two in pairs for joint in (one, two))
            for one, two in zip(indices[::2], indices[1::2]):
                other[one], other[two] = two, one
            if any(other[pair] != joint for joint, pair in enumerate(other)):
                raise ValueError("pairs: a joint has two others")
        return self._step(lambda core: _core.mirror(core, other))
