"""The class Clip."""

from __future__ import annotations

import html
import operator
import warnings
from typing import Any, Callable, Dict, Iterable, Iterator, List, Optional, Sequence, Tuple, Type, Union

import numpy as np
import numpy.typing as npt

from . import _core
from ._arrays import CENTIMETRES, FORMS, Floats, Ints, as_float_type, choose, euler_order, is_double, rotation_order, to_bytes, whole
from ._building import core_of_arrays, put_together, take_apart
from ._dofs import Angles, angles_of, violations_of
from ._messages import Message
from ._plot import plot_angles
from ._save import Path, draw, save

Joint = Union[str, int]


class Clip:
    """A motion as arrays: joints, and the transform of each in every frame.

    It does not change: steps such as ``clip[::4]`` or ``clip.resample(30)`` give a new one. Arrays whose numbers the clip keeps are
    read-only views, which keep those numbers alive; computed ones are the caller's own. Frames count from 0. Lengths are in ``units``;
    with ``up == "y"`` x is to the figure's left at rest, y up and z forward, with ``"z"`` x is to its left, y backward and z up.

    Made by ``qex.load()`` and ``Clip.from_arrays()``.
    """

    __slots__ = {
        "_raw": "The library's clip, in the unit and axes of this one.",
        "name": "Name of the take, or of its file without folder and ending.",
        "units": 'Unit of all lengths: "cm", "m" or "in".',
        "up": 'The axis that points up: "y" or "z".',
        "skeleton": "Path of the file that the skeleton was read from; None for a clip of arrays.",
        "_messages": "Those of reading the file.",
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
        cls,
        core: _core.Clip,
        *,
        name: str,
        units: str = "cm",
        up: str = "y",
        skeleton: Optional[str] = None,
        messages: Sequence[Message] = (),
    ) -> Clip:
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

    def _with(self, core: _core.Clip, **changed: str) -> Clip:
        """A clip of another core, else as this one."""
        words: Dict[str, Any] = {"name": self.name, "units": self.units, "up": self.up, **changed}
        return type(self)._make(core, skeleton=self.skeleton, messages=self._messages, **words)

    # What it is

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

    # Transforms

    def positions(self, *, dtype: npt.DTypeLike = np.float32) -> Floats:
        """Position of every joint in the world, in the clip's unit; shape (frames, joints, 3).

        >>> clip.positions()[0, clip.names.index("left_foot")].round(2)
        array([ 6.52,  7.33, 32.43], dtype=float32)
        """
        kind = as_float_type(dtype)
        return self._raw.positions(is_double(kind)).astype(kind, copy=False)

    def translations(self, *, dtype: npt.DTypeLike = np.float32) -> Floats:
        """Position of every joint relative to its parent, in the parent's axes and the clip's unit; of a root, in the world. Shape
        (frames, joints, 3).

        >>> bool(np.all(clip.translations()[:, 1:] == clip.rest_positions[1:]))     # Only the root moves.
        True
        """
        kind = as_float_type(dtype)
        return self._raw.translations().astype(kind, copy=False)

    def scalings(self, *, dtype: npt.DTypeLike = np.float32) -> Floats:
        """Scale factors of every joint along its own axes; shape (frames, joints, 3).

        >>> bool(np.all(clip.scalings() == 1))
        True
        """
        return self._raw.scalings().astype(as_float_type(dtype), copy=False)

    def rotations(
        self,
        space: str = "local",
        form: str = "quat",
        order: Optional[str] = None,
        *,
        degrees: bool = False,
        dtype: npt.DTypeLike = np.float32,
    ) -> Floats:
        """Rotation of every joint; shape (frames, joints, ...).

        space: "local", relative to the parent, or "world"
        form: what a rotation is as numbers:
            "quat": (4,), order "wxyz" or "xyzw". From frame to frame the nearer one of q and -q
            "matrix": (3, 3), which turns column vectors
            "6d": (6,), the first two columns of the matrix, one after the other
            "axis_angle": (3,), the axis times the angle, which is 0 to half a turn
            "euler": (3,), the angles in the order of the letters: "xyz" about fixed axes, "XYZ" about those that move along, and so on,
                as SciPy has them. They do not jump from frame to frame, so any of them may go beyond what SciPy gives
        order: of "quat" ("wxyz" unless it is given) and "euler" ("xyz")
        degrees: of "axis_angle" and "euler", else radians

        ``rotations()`` is a read-only view; every other form is a copy. Rotations in the world leave scaling out.

        >>> clip.rotations("world", "matrix").shape
        (241, 35, 3, 3)
        >>> clip.rotations(form="euler", order="ZXY", degrees=True)[0, clip.names.index("left_shin")].round(1)
        array([ 0. , 11.1,  0. ], dtype=float32)
        """
        kind = as_float_type(dtype)
        is_world = choose("space", space, ["local", "world"]) == "world"
        choose("form", form, FORMS)
        order = rotation_order(form, order)
        if form == "quat" and not is_world and kind == np.float32:
            stored = self._raw.quaternions
            return stored if order == "wxyz" else stored.take([1, 2, 3, 0], axis=-1)
        word, columns = euler_order(order) if form == "euler" else ("", [])
        result = self._raw.rotations(is_world, form, word, is_double(kind))
        if form == "euler" and columns != [0, 1, 2]:
            result = result.take(columns, axis=-1)
        if order == "xyzw":
            result = result.take([1, 2, 3, 0], axis=-1)
        if form == "euler" and not degrees:
            result *= np.pi / 180
        if form == "axis_angle" and degrees:
            result *= 180 / np.pi
        return result.astype(kind, copy=False)

    def velocities(self, *, dtype: npt.DTypeLike = np.float32) -> Floats:
        """Velocity of every joint in the world, in the clip's unit a second; shape (frames, joints, 3).

        From the frames before and after; in the first and the last frame between it and its neighbour.

        >>> clip.velocities()[:, 0].mean(axis=0).round(1)     # Of the root: forward along z.
        array([ -0.4,   0.9, 129. ], dtype=float32)
        """
        kind = as_float_type(dtype)
        return self._raw.velocities(is_double(kind)).astype(kind, copy=False)

    def angular_velocities(self, *, dtype: npt.DTypeLike = np.float32) -> Floats:
        """Angular velocity of every joint about the axes of the world, radians a second; shape (frames, joints, 3).

        From the rotation between the frames before and after, along the shorter arc.

        >>> abs(clip.angular_velocities()[:, clip.names.index("left_shin")]).max(axis=0).round(1)
        array([8.4, 0.4, 0.7], dtype=float32)
        """
        kind = as_float_type(dtype)
        return self._raw.angular_velocities(is_double(kind)).astype(kind, copy=False)

    # Degrees of freedom

    def angles(self, *, degrees: bool = False, dtype: npt.DTypeLike = np.float32) -> Angles:
        """The degrees of freedom that the file has, with names, units and limits: of AMC and BVH. There are no frames where there are no
        values: in GLB and glTF, and after mirror().

        Angles are the file's own numbers, turns beyond a half included, and with ``degrees=True`` in single precision a read-only view of
        them; lengths are in the clip's unit. They stay those of the file's axes whatever ``up`` is.

        >>> angles = clip.angles(degrees=True)
        >>> knee = angles.names.index("left_shin.rx")
        >>> angles.values[:, knee].max().round(1), angles.limits[knee]
        (68.6, array([ -5., 150.], dtype=float32))
        """
        return angles_of(self, degrees, as_float_type(dtype))

    def limit_violations(self, *, degrees: bool = False) -> npt.NDArray[np.void]:
        """The values of degrees of freedom that pass a limit: records of frame, dof (index into the names of angles()), value and excess.

        The excess is how far the value is beyond the limit, below the lower one negative; units as of angles(). Up to 1e-6 degrees or
        a ten-millionth of the limit beyond it is rounding, and none. ValueError if the clip has limits but no values, as after mirror().

        >>> clip.limit_violations().dtype.names, len(clip.limit_violations())
        (('frame', 'dof', 'value', 'excess'), 0)
        """
        return violations_of(self._raw, degrees)

    def plot(self, *joints: Joint, ax: Optional[Any] = None) -> Any:
        """Draws the angles of joints over time, in degrees, with their limits as bands; returns matplotlib's axes.

        joints: names or indices, or single degrees of freedom: "left_shin.rx"
        ax: the axes to draw in; else new ones

        >>> import matplotlib; matplotlib.use("agg")
        >>> clip.plot("left_shin", "right_shin").get_ylabel()
        'degrees'
        """
        if not joints:
            raise TypeError("plot() needs a joint: clip.plot(\"lfemur\")")
        return plot_angles(self, list(joints), ax)

    # Steps to other clips

    def __getitem__(self, frames: Union[int, slice]) -> Clip:
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

    def __iter__(self) -> Iterator[Clip]:
        """Each frame as a clip."""
        return (self[frame] for frame in range(len(self)))

    def resample(self, fps: float) -> Clip:
        """The motion at another rate: rotations along the shorter arc between frames, the rest linear.

        >>> len(clip.resample(30))
        61
        """
        return self._with(_core.resample(self._raw, float(fps)))

    def joints(self, joints: Union[Joint, Iterable[Joint]]) -> Clip:
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

    def to(self, *, up: Optional[str] = None, units: Optional[str] = None) -> Clip:
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

    def scale(self, factor: float) -> Clip:
        """All lengths times a factor: the figure and its path.

        >>> bool(np.all(clip.scale(0.5).rest_positions == clip.rest_positions / 2))
        True
        """
        return self._with(_core.scale(self._raw, float(factor)))

    def _step(self, step: Callable[[_core.Clip], _core.Clip]) -> Clip:
        """A step of the library, which has y up."""
        if self.up == "y":
            return self._with(step(self._raw))
        return self._with(_core.make_z_up(step(_core.make_y_up(self._raw))))

    def in_place(self, *, keep_turn: bool = True) -> Clip:
        """The first root's path on the ground taken out: it stays above its position in the first frame. Its turn about the vertical stays,
        unless keep_turn is false. Roots lose their degrees of freedom.

        >>> path = clip.in_place().positions()[:, 0, [0, 2]]
        >>> bool(np.ptp(path, axis=0).max() < 1e-4)
        True
        """
        return self._step(lambda core: _core.in_place(core, keep_turn))

    def start_at_origin(self) -> Clip:
        """Turned and moved so that the first root starts above the origin and faces forward. Roots lose their degrees of freedom.

        >>> bool(abs(clip.start_at_origin().positions()[0, 0, [0, 2]]).max() < 1e-4)
        True
        """
        return self._step(_core.start_at_origin)

    def mirror(self, pairs: Optional[Sequence[Tuple[Joint, Joint]]] = None) -> Clip:
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
        return self._step(lambda core: _core.mirror(core, other))

    # From arrays and back

    @classmethod
    def from_arrays(
        cls,
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
    ) -> Clip:
        """A clip of arrays, such as those that a model made.

        names: of the joints, parents before their children
        parents: (joints,), -1 for roots
        rest: (joints, 3), position of each joint relative to its parent at rest
        rotations: (frames, joints, 4), unit quaternions of each joint relative to its parent, in the order of order
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
        core = core_of_arrays(names, parents, rest, rotations, root_positions, fps, translations, rest_rotations, order)
        return cls._make(core, name=name, units=units, up=up)

    def save(
        self,
        *paths: Path,
        skeleton: Optional[Path] = None,
        order: str = "xyz",
        mesh: bool = True,
        preset: Optional[str] = None,
        write_rate: bool = False,
    ) -> None:
        """Writes files, all of them or none: .bvh, .glb, .gltf, .asf, .amc, .npz (arrays) and .csv (positions).

        They have the clip's unit and up axis, but for GLB and glTF, which have metres and y up. BVH does not say its unit, and neither do
        BVH, ASF and AMC which axis is up: load() has source_units= and source_up= for such files. What the writer warns of is a
        UserWarning.

        skeleton: the ASF file of an AMC file that is written alone; else the one that the clip was read with. With an ASF file beside
            it, an AMC file is that one's motion
        order: of BVH's rotations, letters as for rotations(): "ZXY" writes Zrotation Xrotation Yrotation
        mesh: GLB and glTF with a mesh that shows the bones
        preset: "motion-imitation": the arrays of .npz as training code for simulated characters reads them
        write_rate: the rate of an AMC file as a keyword, which some programs do not accept, instead of a comment

        >>> import tempfile; folder = tempfile.TemporaryDirectory()
        >>> clip.save(folder.name + "/walk.bvh", folder.name + "/walk.glb")
        >>> len(qex.load(folder.name + "/walk.glb"))
        241
        >>> folder.cleanup()
        """
        if not paths:
            raise TypeError("save() needs a path")
        save(self, list(paths), skeleton, order, mesh, preset, write_rate)

    def _repr_html_(self) -> str:
        """The picture of asf draw, for notebooks."""
        return f"<figure>{draw(self)}<figcaption>{html.escape(repr(self))}</figcaption></figure>"

    def __copy__(self) -> Clip:
        return self

    def __deepcopy__(self, _: Dict[int, Any]) -> Clip:
        return self

    def __reduce__(self) -> Tuple[Any, ...]:
        words = {key: getattr(self, key) for key in ("name", "units", "up", "skeleton")}
        return restore, (take_apart(self._raw), words, [tuple(message) for message in self._messages], type(self))


def restore(parts: Dict[str, Any], words: Dict[str, Any], messages: List[Any], kind: Type[Clip] = Clip) -> Clip:
    """What __reduce__() took apart."""
    return kind._make(put_together(parts), messages=[Message(*message) for message in messages], **words)
