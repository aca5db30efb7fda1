"""The class Clip."""

from __future__ import annotations

from ._building import Building
from ._pictures import Pictures
from ._save import Saving
from ._steps import Steps
from ._transforms import Transforms


class Clip(Transforms, Pictures, Steps, Saving, Building):
    """A motion as arrays: joints, and the transform of each in every frame.

    It does not change: steps such as ``clip[::4]`` or ``clip.resample(30)`` give a new one. Arrays whose numbers the clip keeps are
    read-only views, which keep those numbers alive; computed ones are the caller's own. Frames count from 0. Lengths are in ``units``;
    with ``up == "y"`` x is to the figure's left at rest, y up and z forward, with ``"z"`` x is to its left, y backward and z up.

    Made by ``qex.load()`` and ``Clip.from_arrays()``.
    """

    __slots__ = ()
