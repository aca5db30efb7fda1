"""Compares two figures: which joint of the one is which of the other, and how far apart their places are."""
import re

import numpy

from figure import RATE_TOLERANCE

FRAMES = 12        # Compared in each take.
SURVEY_FRAMES = 60  # Looked at to see which joints move.
STILL = 1e-6       # Fraction of the extent below which a joint is at its parent's place, or does not move.
MAX_NAME = 50      # Of a bone in a skeleton file.


def bare(name):
    """The part of a name that every format can hold: without its prefix, and each special character as an underscore."""
    return re.sub(r"[^0-9A-Za-z\x80-\U0010ffff]", "_", name.rsplit(":", 1)[-1])[:MAX_NAME]


def spread(numbers, count):
    """At most `count` of the numbers, evenly spread, the first and the last included."""
    return [numbers[i] for i in sorted({round(i) for i in numpy.linspace(0, len(numbers) - 1, min(count, len(numbers)))})]


def optional_joints(source, result):
    """Joints that a result may lack: a skeleton file need not have a leaf that never moves, for its parent's bone ends there."""
    if source.takes or not result.has_fixed_root:
        return set()
    parents = {joint.parent for joint in source.joints if joint.is_wanted}
    return {index for index in range(len(source.joints)) if index not in parents}


class Pairing:
    """`of[i]`: the result's joint for joint i of the source, or -1."""

    def __init__(self, source, result):
        self.source, self.result = source.joints, result.joints
        self.optional = optional_joints(source, result)
        self.of = [-1] * len(self.source)
        self.taken = set()
        self.by_names(lambda name: name)
        roots = [index for index, joint in enumerate(self.source) if joint.parent < 0 and joint.is_wanted]
        if len(roots) == 1 and self.of[roots[0]] < 0 and 0 not in self.taken:
            self.pair(roots[0], 0)  # The root has a name of its own in some formats.
        self.by_names(bare)
        self.by_parents()

    def pair(self, index, found):
        self.of[index] = found
        self.taken.add(found)

    def by_names(self, form):
        names = {}
        for index, joint in enumerate(self.result):
            if index not in self.taken:
                names.setdefault(form(joint.name), []).append(index)
        for index, joint in enumerate(self.source):
            found = names.get(form(joint.name)) if self.of[index] < 0 and joint.is_wanted else None
            if found:
                self.pair(index, found.pop(0))

    def paired_parent(self, joints, index, is_paired):
        index = joints[index].parent
        while index >= 0 and not is_paired(index):
            index = joints[index].parent
        return index

    def by_parents(self):
        """What is left: in order, below the same parent."""
        left = {}
        has_added_root = sum(joint.parent < 0 and joint.is_wanted for joint in self.source) > 1 and self.result[-1].parent >= 0
        for index, joint in enumerate(self.result):
            if index not in self.taken and not joint.name.endswith("Dummy") and not (has_added_root and joint.parent < 0):
                parent = self.paired_parent(self.result, index, lambda one: one in self.taken)
                left.setdefault((parent, joint.is_end), []).append(index)
        for index, joint in enumerate(self.source):
            if self.of[index] < 0 and joint.is_wanted and index not in self.optional:
                parent = self.paired_parent(self.source, index, lambda one: self.of[one] >= 0)
                found = left.get((self.of[parent] if parent >= 0 else -1, joint.is_end))
                if found:
                    self.pair(index, found.pop(0))


class Survey:
    """What a source shows: how large it is, and which joints a result must have."""

    def __init__(self, figure):
        self.figure = figure
        poses = [(None, [0.0])] + [(take, spread(take.times, SURVEY_FRAMES)) for take in figure.takes]
        wanted = [index for index, joint in enumerate(figure.joints) if joint.is_wanted]
        places = numpy.concatenate([figure.places(take, times) for take, times in poses])
        self.extent = self.diagonal(places[:, wanted])
        self.required = []  # Joints that a result must have: they turn or move, and are not only another name for their parent's place.
        self.moving = set()  # Names of joints below a root that have a motion of their own.
        self.find_joints(poses, places)

    @staticmethod
    def diagonal(places):
        """The largest diagonal of a pose; of the whole path if the figure is a single place."""
        if places.shape[1] == 0:
            return 1.0
        poses = numpy.linalg.norm(places.max(axis=1) - places.min(axis=1), axis=1).max()
        flat = places.reshape(-1, 3)
        return poses or float(numpy.linalg.norm(flat.max(axis=0) - flat.min(axis=0))) or 1.0

    def find_joints(self, poses, places):
        takes = [take.evaluate(numpy.asarray(times, dtype=float)) for take, times in poses if take is not None]
        local = numpy.concatenate([self.figure.rest, *takes])
        still = STILL * self.extent
        for index, joint in enumerate(self.figure.joints):
            path = places[:, index]
            turns = numpy.ptp(local[:, index, :3, :3], axis=0).max() > STILL
            shifts = numpy.ptp(local[:, index, :3, 3], axis=0).max() > still
            moves = numpy.ptp(path, axis=0).max() > still or not takes
            is_apart = joint.parent < 0 or numpy.linalg.norm(path - places[:, joint.parent], axis=1).max() > still
            if joint.is_wanted and ((turns and not joint.is_end) or (moves and is_apart)):
                self.required.append(index)
            if joint.is_wanted and joint.parent >= 0 and (turns or shifts):
                self.moving.add(joint.name)


def missing(survey, pairing):
    """Complaints about joints that a result lacks."""
    names = [survey.figure.joints[i].name for i in survey.required if pairing.of[i] < 0 and i not in pairing.optional]
    return [f"{len(names)} joints are missing: {', '.join(names[:8])}"] if names else []


def step_of(take):
    """Seconds between two frames of a take."""
    if take.rate:
        return 1 / take.rate
    return (take.times[-1] - take.times[0]) / max(1, len(take.times) - 1)


def compare_times(source, result):
    """Complaints about the length of a take."""
    lengths = [take.times[-1] - take.times[0] for take in (source, result)]
    slack = 2 * RATE_TOLERANCE * lengths[0] + (1.01 * step_of(result) if source.rate is None else 1e-6 + 1e-6 * abs(result.times[-1]))
    if len(source.times) < 2 or abs(lengths[0] - lengths[1]) <= slack:
        return []
    return [f"lasts {lengths[1]:.6g} s, not {lengths[0]:.6g} s ({len(result.times)} and {len(source.times)} frames)"]


def matching_times(source, result, has_same_length):
    """Times of FRAMES frames in the source and in the result."""
    starts = source.times[0], result.times[0]
    lengths = [take.times[-1] - take.times[0] for take in (source, result)]
    stretch = lengths[1] / lengths[0] if lengths[0] > 0 and (source.rate is not None or not has_same_length) else 1.0
    if source.rate is not None:
        times = numpy.array(spread(source.times, FRAMES))
        return times, starts[1] + (times - starts[0]) * stretch
    times = numpy.array(spread(result.times, FRAMES))
    wanted = starts[0] + (times - starts[1]) / stretch
    # A key that is nearly on a frame is written as that frame.
    nearest = source.times[numpy.abs(source.times[None, :] - wanted[:, None]).argmin(axis=1)]
    return numpy.where(numpy.abs(nearest - wanted) <= 1.5e-3 * step_of(result) + 2.4e-7 * numpy.abs(wanted), nearest, wanted), times


def in_frame_of_root(figure, places):
    """Places relative to where the only root is at rest; the places themselves if there are several roots."""
    roots = [index for index, joint in enumerate(figure.joints) if joint.parent < 0 and joint.is_wanted]
    if len(roots) != 1:
        return places
    root = figure.globals(figure.rest)[0, roots[0]]
    return (places - root[:3, 3]) @ (root[:3, :3] / numpy.linalg.norm(root[:3, :3], axis=0))


def compare_places(survey, pairing, result, takes, tolerance):
    """Complaints about places of two takes, or of the rest poses if the source's take is None. Also the largest distance, in extents."""
    joints = [index for index, found in enumerate(pairing.of) if found >= 0]
    if not joints:
        return ["no joint is the same"], 1.0
    if takes[0] is not None and takes[1] is None:
        return ["the motion is missing"], 1.0
    complaints = compare_times(*takes) if takes[0] is not None else []
    still = [0.0], [0.0] if takes[1] is None else takes[1].times[:1]
    times = matching_times(*takes, not complaints) if takes[0] is not None else still
    one = survey.figure.places(takes[0], times[0])[:, joints]
    if takes[1] is None and result.has_fixed_root:
        one = in_frame_of_root(survey.figure, one)
    other = result.places(takes[1], times[1])[:, [pairing.of[index] for index in joints]]
    distances = numpy.linalg.norm(one - other, axis=2)
    # Single precision, which glTF and the curves hold, is coarser far from the origin.
    allowed = tolerance * survey.extent + 2.4e-7 * numpy.abs(one).max()
    frame, joint = numpy.unravel_index(distances.argmax(), distances.shape)
    largest = distances[frame, joint] / survey.extent
    if not distances.max() <= allowed:
        wrong = sorted({survey.figure.joints[joints[index]].name for index in numpy.nonzero((distances > allowed).any(axis=0))[0]})
        complaints.append(
            f"{survey.figure.joints[joints[joint]].name} is {largest:.2e} of the extent off at {times[0][frame]:.4g} s;"
            f" {len(wrong)} of {len(joints)} joints are off: {', '.join(wrong[:6])}"
        )
    return complaints, largest
