"""Degrees of freedom."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, List, NamedTuple

import numpy as np
import numpy.typing as npt

from . import _core
from ._arrays import Floats, Ints

if TYPE_CHECKING:
    from ._clip import Clip


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


def is_turn(core: _core.Clip) -> npt.NDArray[np.bool_]:
    """True for the degrees of freedom that are angles."""
    return np.array([word.startswith("r") for _, word in core.dofs], dtype=bool)


def angles_of(clip: Clip, degrees: bool, kind: np.dtype[Any]) -> Angles:
    """Clip.angles()."""
    core = clip._raw
    dofs, turns = core.dofs, is_turn(core)
    values, limits = core.dof_values, core.dof_limits
    if not values.size:
        values = np.zeros((0, len(dofs)), np.float32)
    if not degrees:
        factors = np.where(turns, np.pi / 180, 1.0)
        values = values * factors
        limits = limits * factors[:, None]
    names = clip.names
    return Angles(
        values=values.astype(kind, copy=False),
        names=[f"{names[joint]}.{word}" for joint, word in dofs],
        units=[("deg" if degrees else "rad") if turn else clip.units for turn in turns],
        limits=limits.astype(kind),
        joints=np.array([joint for joint, _ in dofs], dtype=np.int32),
    )


def violations_of(core: _core.Clip, degrees: bool) -> npt.NDArray[np.void]:
    """Clip.limit_violations()."""
    if not core.dof_values.size and core.dofs:
        raise ValueError(NO_VALUES)
    frames, dofs, excess = core.limit_violations()
    result = np.empty(len(frames), dtype=[("frame", np.int64), ("dof", np.int32), ("value", np.float32), ("excess", np.float32)])
    factors = np.where(is_turn(core) & (not degrees), np.pi / 180, 1.0)[dofs]
    result["frame"], result["dof"], result["excess"] = frames, dofs, excess * factors
    result["value"] = core.dof_values[frames, dofs] * factors if len(frames) else 0
    return result
