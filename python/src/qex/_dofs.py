"""Degrees of freedom."""

from __future__ import annotations

from typing import List, NamedTuple

import numpy as np
import numpy.typing as npt

from ._arguments import Floats, Ints, as_float_type
from ._base import ClipBase

NO_VALUES = "the clip has no values of degrees of freedom: its file has none, or mirror() lost them"


class Angles(NamedTuple):
    """The degrees of freedom that a motion's file has.

    values: shape (frames, degrees of freedom): radians, or degrees, turns beyond a half included; lengths in the clip's unit
    names: "left_shin.rx": joint by joint, each joint's in the order in which they are applied
    units: "rad", "deg" or the clip's unit of length, of each
    limits: shape (degrees of freedom, 2): lower and upper limit of each; -inf and inf where there is none
    joints: index of the joint of each
    """

    values: Floats
    names: List[str]
    units: List[str]
    limits: Floats
    joints: Ints


class DegreesOfFreedom(ClipBase):
    """The values that a clip's file has."""

    __slots__ = ()

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
        kind, core, turns = as_float_type(dtype), self._raw, self._are_turns()
        dofs, values, limits = core.dofs, core.dof_values, core.dof_limits
        if not values.size:
            values = np.zeros((0, len(dofs)), np.float32)
        if not degrees:
            factors = np.where(turns, np.pi / 180, 1.0)
            values = values * factors
            limits = limits * factors[:, None]
        names = self.names
        return Angles(
            values=values.astype(kind, copy=False),
            names=[f"{names[joint]}.{word}" for joint, word in dofs],
            units=[("deg" if degrees else "rad") if turn else self.units for turn in turns],
            limits=limits.astype(kind),
            joints=np.array([joint for joint, _ in dofs], dtype=np.int32),
        )

    def limit_violations(self, *, degrees: bool = False) -> npt.NDArray[np.void]:
        """The values of degrees of freedom that pass a limit: records of frame, dof (index into the names of angles()), value and excess.

        The excess is how far the value is beyond the limit, below the lower one negative; units as of angles(). A value within
        1e-6 degrees, or a ten-millionth of the limit, of a limit is at it: that is rounding. ValueError if the clip has limits but no values, as after mirror().

        >>> clip.limit_violations().dtype.names, len(clip.limit_violations())
        (('frame', 'dof', 'value', 'excess'), 0)
        """
        core = self._raw
        if not core.dof_values.size and core.dofs:
            raise ValueError(NO_VALUES)
        frames, dofs, excess = core.limit_violations()
        result = np.empty(len(frames), dtype=[("frame", np.int64), ("dof", np.int32), ("value", np.float32), ("excess", np.float32)])
        factors = np.where(self._are_turns() & (not degrees), np.pi / 180, 1.0)[dofs]
        result["frame"], result["dof"], result["excess"] = frames, dofs, excess * factors
        result["value"] = core.dof_values[frames, dofs] * factors if len(frames) else 0
        return result

    def _are_turns(self) -> npt.NDArray[np.bool_]:
        """True for the degrees of freedom that are angles."""
        return np.array([word.startswith("r") for _, word in self._raw.dofs], dtype=bool)
