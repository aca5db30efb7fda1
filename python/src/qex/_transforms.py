"""Positions, rotations and velocities of joints."""

from __future__ import annotations

from typing import Optional

import numpy as np
import numpy.typing as npt

from ._arguments import FORMS, Floats, as_float_type, choose, euler_order, is_double, rotation_order
from ._base import ClipBase


class Transforms(ClipBase):
    """The transforms of a clip's joints in every frame."""

    __slots__ = ()

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
