"""Clips of arrays, and copies."""

from __future__ import annotations

from typing import Any, Dict, List, Optional, Sequence, Tuple, Type

import numpy as np
import numpy.typing as npt

from . import _core
from ._arguments import CENTIMETRES, choose, rate, to_bytes
from ._base import AnyClip, ClipBase
from ._messages import Message


def add_translations(
    arrays: _core.Arrays, root_positions: Optional[npt.ArrayLike], translations: Optional[npt.ArrayLike], frames: int
) -> None:
    """Those of all joints, or of the first root."""
    if translations is not None and root_positions is not None:
        raise ValueError("translations has the root's positions, too: give root_positions=None")
    if translations is not None:
        arrays.moving_joints = list(range(len(arrays.parents)))
        arrays.translations = shaped("translations", translations, (frames, len(arrays.parents), 3))
    elif root_positions is not None:
        if -1 not in arrays.parents:
            raise ValueError("parents has no root: -1")
        arrays.moving_joints = [arrays.parents.index(-1)]
        arrays.translations = shaped("root_positions", root_positions, (frames, 3))


def shaped(what: str, numbers: npt.ArrayLike, shape: Tuple[int, ...], dtype: npt.DTypeLike = np.float32) -> npt.NDArray[Any]:
    """The numbers as an array, which must have the shape."""
    array = np.asarray(numbers, dtype=dtype)
    if array.shape != shape:
        raise ValueError(f"{what} has shape {array.shape}, not {shape}")
    return array


STORED = [
    "names",
    "parents",
    "is_end",
    "rest_translations",
    "rest_quaternions",
    "rest_scalings",
    "quaternions",
    "moving_joints",
    "moving_translations",
    "scaled_joints",
    "moving_scalings",
    "dofs",
    "dof_limits",
    "dof_values",
    "step",
]


def take_apart(core: _core.Clip) -> Dict[str, Any]:
    """All that a core consists of."""
    return {key: getattr(core, key) for key in STORED}


def put_together(parts: Dict[str, Any]) -> _core.Clip:
    """The core that take_apart() took apart, to the last bit."""
    arrays = _core.Arrays()
    arrays.names = [to_bytes(name) for name in parts["names"]]
    arrays.dofs = dofs_of(parts)
    for key in ("parents", "is_end", "moving_joints", "scaled_joints"):
        setattr(arrays, key, parts[key].tolist())
    for key in ("rest_translations", "rest_quaternions", "rest_scalings", "quaternions", "dof_values"):
        setattr(arrays, key, parts[key])
    arrays.translations, arrays.scalings = parts["moving_translations"], parts["moving_scalings"]
    return _core.from_arrays(arrays, parts["step"], len(parts["quaternions"]))


def dofs_of(parts: Dict[str, Any]) -> List[Tuple[int, bytes, float, float]]:
    """Joint, word and limits of each degree of freedom."""
    return [(joint, word.encode(), float(low), float(high)) for (joint, word), (low, high) in zip(parts["dofs"], parts["dof_limits"])]


def restore(parts: Dict[str, Any], words: Dict[str, Any], messages: List[Any], kind: Type[AnyClip]) -> AnyClip:
    """What __reduce__() took apart."""
    return kind._make(put_together(parts), messages=[Message(*message) for message in messages], **words)


class Building(ClipBase):
    """Clips of arrays, and copies."""

    __slots__ = ()

    @classmethod
    def from_arrays(
        cls: Type[AnyClip],
        names: Sequence[str],
        parents: npt.ArrayLike,
        rest: npt.ArrayLike,
        rotations: npt.ArrayLike,
        root_positions: Optional[npt.ArrayLike],
        fps: float,
        *,
        translations: Optional[npt.ArrayLike] = None,
        rest_rotations: Optional[npt.ArrayLike] = None,
        order: str = "wxyz",
        units: str = "cm",
        up: str = "y",
        name: str = "motion",
    ) -> AnyClip:
        """A clip of arrays, such as those that a model made.

        names: of the joints, parents before their children
        parents: (joints,), -1 for roots
        rest: (joints, 3), position of each joint relative to its parent at rest
        rotations: (frames, joints, 4), unit quaternions of each joint relative to its parent
        root_positions: (frames, 3), of the first root in the world; None: it stays at rest
        fps: frames a second
        translations: (frames, joints, 3), instead of root_positions: of each joint relative to its parent
        rest_rotations: (joints, 4), of each joint relative to its parent at rest; None: none
        order: of quaternions, "wxyz" or "xyzw"
        units, up: what the numbers are in

        >>> turn = np.zeros((60, 2, 4)); turn[..., 0] = 1
        >>> qex.Clip.from_arrays(["hip", "knee"], [-1, 0], [[0, 90, 0], [0, -45, 0]], turn, np.zeros((60, 3)), 30)
        <qex.Clip 'motion': 2 joints, 60 frames, 30 a second, cm, y up>
        """
        choose("units", units, list(CENTIMETRES))
        choose("up", up, ["y", "z"])
        if isinstance(names, str):
            raise TypeError("names is one text: expected a list, a name for each joint")
        if not all(isinstance(name, str) for name in names):
            raise TypeError("names are texts, a name for each joint")
        joints = len(names)
        turns = np.asarray(rotations, dtype=np.float32)
        if turns.ndim != 3 or turns.shape[1:] != (joints, 4):
            raise ValueError(f"rotations has shape {turns.shape}, not (frames, {joints}, 4)")
        if not len(turns):
            raise ValueError("rotations has no frames")
        wxyz = [0, 1, 2, 3] if choose("order", order, ["wxyz", "xyzw"]) == "wxyz" else [3, 0, 1, 2]
        arrays = _core.Arrays()
        arrays.names = [to_bytes(name) for name in names]
        indices = shaped("parents", parents, (joints,), None).tolist()
        if not all(isinstance(parent, int) for parent in indices):
            raise TypeError("parents are indices: expected whole numbers")
        if not all(-1 <= parent < joints for parent in indices):
            raise ValueError(f"a parent does not come before its joint, as it is none of the {joints}")
        arrays.parents = indices
        arrays.rest_translations = shaped("rest", rest, (joints, 3))
        arrays.quaternions = turns[..., wxyz]
        if rest_rotations is not None:
            arrays.rest_quaternions = shaped("rest_rotations", rest_rotations, (joints, 4))[..., wxyz]
        add_translations(arrays, root_positions, translations, len(turns))
        core = _core.from_arrays(arrays, 1 / rate("fps", fps), len(turns))
        return cls._make(core, name=name, units=units, up=up)

    def __copy__(self: AnyClip) -> AnyClip:
        return self

    def __deepcopy__(self: AnyClip, _: Dict[int, Any]) -> AnyClip:
        return self

    def __reduce__(self) -> Tuple[Any, ...]:
        words = {key: getattr(self, key) for key in ("name", "units", "up", "skeleton")}
        return restore, (take_apart(self._raw), words, [tuple(message) for message in self._messages], type(self))
