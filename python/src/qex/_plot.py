"""Pictures: a clip in a notebook, and its angles over time."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, List, Optional

import numpy as np

from ._dofs import NO_VALUES

if TYPE_CHECKING:
    from ._clip import Clip, Joint


def plot_angles(clip: Clip, joints: List[Joint], ax: Optional[Any]) -> Any:
    """A matplotlib axes with the angles of joints over time, their limits as bands."""
    angles = clip.angles(degrees=True)
    columns = columns_of(clip, joints)
    if ax is None:
        try:
            from matplotlib import pyplot
        except ImportError as error:
            raise ImportError("plot() needs matplotlib: pip install matplotlib") from error
        ax = pyplot.subplots()[1]
    lines = [ax.plot(clip.times, angles.values[:, column], label=angles.names[column])[0] for column in columns]
    bottom, top = ax.get_ylim()  # Where a band without a limit ends.
    for line, (low, high) in zip(lines, angles.limits[columns]):
        if np.isfinite(low) or np.isfinite(high):
            ends = low if np.isfinite(low) else min(bottom, high), high if np.isfinite(high) else max(top, low)
            ax.axhspan(*ends, color=line.get_color(), alpha=0.1, linewidth=0)
    ax.set_xlabel("seconds")
    ax.set_ylabel("degrees" if angles.units[columns[0]] == "deg" else angles.units[columns[0]])
    ax.set_title(clip.name)
    ax.legend()
    return ax


def columns_of(clip: Clip, joints: List[Joint]) -> List[int]:
    """The angles of the joints, as columns of Clip.angles(); where there are none, the lengths."""
    angles = clip.angles(degrees=True)
    if not len(angles.values):
        raise ValueError(NO_VALUES + "; rotations(form='euler') has angles")
    listed: List[int] = []
    for joint in joints:
        if isinstance(joint, str) and joint in angles.names:
            found = [angles.names.index(joint)]
        else:
            found = np.flatnonzero(angles.joints == clip._indices([joint])[0]).tolist()
        if not found:
            raise ValueError(f"{joint} has no degrees of freedom")
        listed += found
    return [column for column in listed if angles.units[column] == "deg"] or listed
