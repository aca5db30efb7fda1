"""Pictures: a clip in a notebook, and its angles over time."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, List, Optional

import numpy as np

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
    for column in columns:
        (line,) = ax.plot(clip.times, angles.values[:, column], label=angles.names[column])
        low, high = angles.limits[column]
        if np.isfinite(low) and np.isfinite(high):
            ax.axhspan(low, high, color=line.get_color(), alpha=0.1, linewidth=0)
    ax.set_xlabel("seconds")
    ax.set_ylabel("degrees" if angles.units[columns[0]] == "deg" else angles.units[columns[0]])
    ax.set_title(clip.name)
    ax.legend()
    return ax


def columns_of(clip: Clip, joints: List[Joint]) -> List[int]:
    """The angles of the joints, as columns of Clip.angles(); where there are none, the lengths."""
    angles = clip.angles(degrees=True)
    if not len(angles.values):
        raise ValueError("the file has no values of degrees of freedom: use rotations(form='euler')")
    wanted = [clip._index(joint) for joint in joints]
    listed = [column for joint in wanted for column in np.flatnonzero(angles.joints == joint)]
    turns = [column for column in listed if angles.units[column] == "deg"]
    if not listed:
        raise ValueError(f"{', '.join(str(clip.names[joint]) for joint in wanted)}: no degrees of freedom")
    return [int(column) for column in turns or listed]
