"""Pictures: a clip in a notebook, and its angles over time."""

from __future__ import annotations

import html
from typing import Any, List, Optional, Sequence

import numpy as np

from . import _core
from ._base import Joint
from ._dofs import NO_VALUES, DegreesOfFreedom
from ._save import target_of


class Pictures(DegreesOfFreedom):
    """Pictures of a clip."""

    __slots__ = ()

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
        angles = self.angles(degrees=True)
        columns = self._columns(joints)
        if ax is None:
            try:
                from matplotlib import pyplot
            except ImportError as error:
                raise ImportError("plot() needs matplotlib: pip install matplotlib") from error
            ax = pyplot.subplots()[1]
        lines = [ax.plot(self.times, angles.values[:, column], label=angles.names[column])[0] for column in columns]
        bottom, top = ax.get_ylim()  # Where a band without a limit ends.
        for line, (low, high) in zip(lines, angles.limits[columns]):
            if np.isfinite(low) or np.isfinite(high):
                ends = low if np.isfinite(low) else min(bottom, high), high if np.isfinite(high) else max(top, low)
                ax.axhspan(*ends, color=line.get_color(), alpha=0.1, linewidth=0)
        ax.set_xlabel("seconds")
        ax.set_ylabel("degrees" if angles.units[columns[0]] == "deg" else angles.units[columns[0]])
        ax.set_title(self.name)
        ax.legend()
        return ax

    def _columns(self, joints: Sequence[Joint]) -> List[int]:
        """The angles of the joints, as columns of angles(); where there are none, the lengths."""
        angles = self.angles(degrees=True)
        if not len(angles.values):
            raise ValueError(NO_VALUES + "; rotations(form='euler') has angles")
        listed: List[int] = []
        for joint in joints:
            if isinstance(joint, str) and joint in angles.names:
                found = [angles.names.index(joint)]
            else:
                found = np.flatnonzero(angles.joints == self._indices([joint])[0]).tolist()
            if not found:
                raise ValueError(f"{joint} has no degrees of freedom")
            listed += found
        return [column for column in listed if angles.units[column] == "deg"] or listed

    def _repr_html_(self) -> str:
        """The picture of asf draw, for notebooks."""
        return f"<figure>{_core.draw(self._raw, target_of(self))}<figcaption>{html.escape(repr(self))}</figcaption></figure>"
