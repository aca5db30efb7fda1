"""A figure as the readers of this folder return it, and the mathematics that they share.

Places are in centimetres, world space. Rotations are in degrees and act on column vectors.
"""
import numpy

# Frames per second that files mean when they say something close to them.
COMMON_RATES = [10, 12, 15, 20, 24000 / 1001, 24, 25, 30000 / 1001, 30, 48, 50, 60000 / 1001, 60, 72, 75, 80, 90, 100, 120000 / 1001, 120,
                144, 150, 180, 200, 240, 300, 360, 480, 500, 600, 1000]  # fmt: skip
RATE_TOLERANCE = 1e-4


class FileError(Exception):
    """A file that breaks its format's rules."""


class Joint:
    """A named place of a figure. `parent` is an index into the figure's joints, or -1."""

    def __init__(self, name, parent, is_end=False):
        self.name = name
        self.parent = parent
        self.is_end = is_end  # The end of a leaf bone: it has a place, and no channels.
        self.is_wanted = True  # Whether a conversion must keep it; false for nodes of a scene that are no part of the figure.


class Take:
    """One motion of a figure. `times`: seconds of its frames, increasing. `rate`: frames per second; None if it has keys at any times."""

    def __init__(self, name, times, rate, evaluate):
        self.name = name
        self.times = times
        self.rate = rate
        self.evaluate = evaluate  # From an array of times to the local matrices (times, joints, 4, 4).


class Figure:
    """Joints, parents first, a rest pose and takes."""

    def __init__(self, joints, rest, takes):
        self.joints = joints
        self.rest = rest  # Local matrices (1, joints, 4, 4).
        self.takes = takes
        # Whether the format has no rest place and orientation of the root: only a motion moves it.
        self.has_fixed_root = False

    def globals(self, local):
        """World matrices (times, joints, 4, 4) of local ones."""
        world = local.copy()
        for index, joint in enumerate(self.joints):
            if joint.parent >= 0:
                world[:, index] = world[:, joint.parent] @ local[:, index]
        return world

    def places(self, take, times):
        """Places (times, joints, 3) of a take; those of the rest pose if it is None."""
        return self.globals(self.rest if take is None else take.evaluate(numpy.asarray(times, dtype=float)))[:, :, :3, 3]


def translations(offsets):
    """Matrices (…, 4, 4) of translations (…, 3)."""
    offsets = numpy.asarray(offsets, dtype=float)
    result = numpy.zeros(offsets.shape[:-1] + (4, 4))
    result[...] = numpy.eye(4)
    result[..., :3, 3] = offsets
    return result


def rotations(axis, degrees):
    """Matrices (…, 4, 4) of rotations about the axis 0, 1 or 2."""
    angles = numpy.radians(numpy.asarray(degrees, dtype=float))
    result = numpy.zeros(angles.shape + (4, 4))
    result[...] = numpy.eye(4)
    after, last = (axis + 1) % 3, (axis + 2) % 3
    result[..., after, after] = result[..., last, last] = numpy.cos(angles)
    result[..., last, after] = numpy.sin(angles)
    result[..., after, last] = -numpy.sin(angles)
    return result


def snap_rate(rate):
    """The common rate that a rate means, else itself."""
    nearest = min(COMMON_RATES, key=lambda common: abs(common - rate))
    return nearest if abs(nearest - rate) <= RATE_TOLERANCE * nearest else rate


def frames_of(times, frame_times):
    """Indices of the frames nearest to the times."""
    after = numpy.clip(numpy.searchsorted(frame_times, times), 1, max(1, len(frame_times) - 1))
    before = after - 1
    if len(frame_times) < 2:
        return numpy.zeros(len(times), dtype=int)
    return numpy.where(times - frame_times[before] < frame_times[after] - times, before, after)


def text_of(path):
    """A text file's contents, whatever its encoding and line ends, without a byte-order mark."""
    with open(path, encoding="utf-8-sig", errors="surrogateescape", newline=None) as file:
        return file.read()
