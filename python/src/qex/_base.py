"""What a clip is: its joints and frames, and what makes one of another."""

from __future__ import annotations

from typing import Any, Dict, Iterable, List, Optional, Sequence, Tuple, Type, TypeVar, Union

import numpy as np
import numpy.typing as npt

from . import _core
from ._arguments import Floats, Ints, to_bytes, whole
from ._messages import Message

Joint = Union[str, int]
AnyClip = TypeVar("AnyClip", bound="ClipBase")


class ClipBase:
    """The joints and frames of a clip. Clip has what is made of them."""

    __slots__ = {
        "_raw": "The library's clip, in the unit and axes of this one.",
        "name": "Name of the take, or of its file without folder and ending.",
        "units": 'Unit of all lengths: "cm", "m" or "in".',
        "up": 'The axis that points up: "y" or "z".',
        "skeleton": "Path of the file that the skeleton was read from; None for a clip of arrays.",
        "_messages": "The messages of reading its file.",
        "__weakref__": "",
    }

    _raw: _core.Clip
    name: str
    units: str
    up: str
    skeleton: Optional[str]
    _messages: Tuple[Message, ...]

    def __init__(self) -> None:
        raise TypeError("clips come from qex.load() and qex.Clip.from_arrays()")

    @classmethod
    def _make(
        cls: Type[AnyClip],
        core: _core.Clip,
        *,
        name: str,
        units: str = "cm",
        up: str = "y",
        skeleton: Optional[str] = None,
        messages: Sequence[Message] = (),
    ) -> AnyClip:
        clip = cls.__new__(cls)
        clip._set("_raw", core)
        for key, value in (("name", name), ("units", units), ("up", up), ("skeleton", skeleton), ("_messages", tuple(messages))):
            clip._set(key, value)
        return clip

    def _set(self, key: str, value: object) -> None:
        object.__setattr__(self, key, value)

    def __delattr__(self, key: str) -> None:
        raise AttributeError(f"a clip does not change: {key} cannot be deleted")

    def __setattr__(self, key: str, value: object) -> None:
        raise AttributeError(f"a clip does not change: {key} cannot be set")

    def _with(self: AnyClip, core: _core.Clip, **changed: str) -> AnyClip:
        """A clip of another core, else as this one."""
        words: Dict[str, Any] = {"name": self.name, "units": self.units, "up": self.up, **changed}
        return type(self)._make(core, skeleton=self.skeleton, messages=self._messages, **words)

    def __repr__(self) -> str:
        frames = f"{self.frame_count} frame" + ("s" if self.frame_count != 1 else "")
        return f"<qex.Clip {self.name!r}: {len(self.names)} joints, {frames}, {self.fps:.6g} a second, {self.units}, {self.up} up>"

    def __len__(self) -> int:
        """The number of frames."""
        return self.frame_count

    @property
    def names(self) -> List[str]:
        """Names of the joints, parents before their children.

        >>> clip.names[:4]
        ['root', 'left_hip', 'left_thigh', 'left_shin']
        """
        return self._raw.names

    @property
    def parents(self) -> Ints:
        """Index of each joint's parent, -1 for a root; shape (joints,).

        >>> clip.parents[:4]
        array([-1,  0,  1,  2], dtype=int32)
        """
        return self._raw.parents

    @property
    def is_end(self) -> npt.NDArray[np.bool_]:
        """True for the end of a leaf bone, which does not move by itself; shape (joints,).

        >>> [name for name, is_end in zip(clip.names, clip.is_end) if is_end][:2]
        ['left_toes_End', 'right_toes_End']
        """
        return self._raw.is_end

    @property
    def frame_count(self) -> int:
        """The number of frames.

        >>> clip.frame_count == len(clip) == 241
        True
        """
        return self._raw.frame_count

    @property
    def fps(self) -> float:
        """Frames a second. A rate within 0.01 % of a common one counts as that, 29.97 as 30000/1001; and the time of a frame is a whole
        number of 1/705,600,000 s: 17 becomes 17.0000001.

        >>> clip.fps, clip[::4].fps
        (120.0, 30.0)
        """
        return self._raw.fps

    @property
    def times(self) -> npt.NDArray[np.float64]:
        """Seconds of each frame since the first; shape (frames,).

        >>> clip.times[[0, 1, -1]].round(4)
        array([0.    , 0.0083, 2.    ])
        """
        return np.arange(self.frame_count) * self._raw.step

    @property
    def messages(self) -> List[Message]:
        """The notes and warnings of reading the file.

        >>> print(clip.messages[0])
        samples/walk.amc: note: using skeleton samples/walker.asf (named in the header)
        """
        return list(self._messages)

    @property
    def rest_positions(self) -> Floats:
        """Position of each joint relative to its parent at rest, in the parent's axes and the clip's unit; of a root, in the world.
        Shape (joints, 3).

        >>> clip.rest_positions[clip.names.index("left_thigh"), 0].round(2)
        9.38
        """
        return self._raw.rest_translations

    @property
    def rest_rotations(self) -> Floats:
        """Rotation of each joint relative to its parent at rest; shape (joints, 4), quaternions w, x, y, z.

        >>> clip.rest_rotations[0]
        array([1., 0., 0., 0.], dtype=float32)
        """
        return self._raw.rest_quaternions

    @property
    def moving_joints(self) -> Ints:
        """Indices of the joints whose position relative to their parent is not always that at rest, ascending.

        >>> clip.moving_joints
        array([0], dtype=int32)
        """
        return self._raw.moving_joints

    @property
    def moving_translations(self) -> Floats:
        """The translations of the joints of moving_joints, in the clip's unit, as they are stored: a read-only view of shape
        (frames, moving joints, 3).

        >>> clip.moving_translations.shape
        (241, 1, 3)
        """
        return self._raw.moving_translations

    def _indices(self, joints: Iterable[Joint]) -> List[int]:
        """The indices of joints; of several of one name, the first."""
        names = self.names
        by_name = {name: index for index, name in reversed(list(enumerate(names)))}
        found = []
        for joint in joints:
            if isinstance(joint, str):
                if joint not in by_name:
                    raise KeyError(f"no joint {joint}{_core.did_you_mean(to_bytes(joint), self._raw)}")
                found.append(by_name[joint])
                continue
            index = whole("a joint", joint)
            if not -len(names) <= index < len(names):
                raise IndexError(f"joint {index}: there are {len(names)}")
            found.append(index % len(names))
        return found
