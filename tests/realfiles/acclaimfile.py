"""Reads Acclaim skeletons (ASF) and motion (AMC) by the format's public definition.

A bone starts where its parent ends, and ends at its direction times its length, turned by its own motion. Its motion is given in its axis
frame C: it turns by C R inverse(C), where R applies the rotations in the order of the bone's degrees of freedom.
"""
import re

import numpy

from figure import Figure, FileError, Joint, Take, frames_of, rotations, snap_rate, text_of, translations

CENTIMETRES_PER_INCH = 2.54
DEFAULT_RATE = 120

# Axes in the order in which they are applied. Four of the words do not mean their letters: docs/formats.md says so.
AXIS_WORDS = {"xyz": "xyz", "zyx": "zyx", "xzy": "yxz", "yxz": "xzy", "yzx": "zxy", "zxy": "yzx"}
DOFS = ("tx", "ty", "tz", "rx", "ry", "rz")


class Bone:
    def __init__(self, name):
        self.name = name
        self.direction = numpy.zeros(3)
        self.length = 0.0
        self.angles = [0.0, 0.0, 0.0]
        self.axes = "xyz"
        self.dofs = []
        self.parent = None
        self.children = []

    def axis_frame(self):
        frame = numpy.eye(4)
        for axis, angle in zip(self.axes, self.angles):
            frame = rotations("xyz".index(axis), angle) @ frame
        return frame

    def vector(self):
        length = numpy.linalg.norm(self.direction)
        return self.direction / length * self.length if length > 0 else self.direction


class Skeleton:
    def __init__(self):
        self.root = Bone("root")
        self.bones = {}
        self.length_factor = 1.0  # Centimetres per unit of length.
        self.angles_are_radians = False
        self.position = numpy.zeros(3)  # Of the root at rest: as written, whatever the unit of length.
        self.added_ends = set()  # Bones whose ends are no joints.

    def has_end(self, bone):
        return not bone.children and bone.length > 0 and bone.name not in self.added_ends


def lines_of(text):
    """Words of each line that has any, without comments."""
    for line in text.split("\n"):
        words = line.split("#")[0].split()
        if words:
            yield words


def read_axis(bone, words):
    bone.angles = [float(word) for word in words[:3]]
    bone.axes = AXIS_WORDS[words[3].lower()]


def read_units(skeleton, words):
    if words[0].lower() == "length" and float(words[1]) > 0:
        skeleton.length_factor = CENTIMETRES_PER_INCH / float(words[1])
    elif words[0].lower() == "angle":
        skeleton.angles_are_radians = words[1].lower().startswith("rad")


def read_root(skeleton, words):
    key, values = words[0].lower(), words[1:]
    if key == "order":
        skeleton.root.dofs = [word.lower() for word in values]
    elif key == "axis":
        skeleton.root.axes = AXIS_WORDS[values[0].lower()]
    elif key == "position":
        skeleton.position = numpy.array([float(value) for value in values[:3]])
    elif key == "orientation":
        skeleton.root.angles = [float(value) for value in values[:3]]


def read_documentation(skeleton, words):
    """What docs/formats.md says of ends that are no joints."""
    if words[0] == "added-end" and len(words) == 2:
        skeleton.added_ends.add(words[1])


def read_bone_line(bone, words, factor):
    key, values = words[0].lower(), words[1:]
    if key == "name":
        bone.name = values[0]
    elif key == "direction":
        bone.direction = numpy.array([float(value) for value in values[:3]])
    elif key == "length":
        bone.length = float(values[0]) * factor
    elif key == "axis":
        read_axis(bone, values)
    elif key == "dof":
        bone.dofs = [value.lower() for value in values]


def read_family(skeleton, words):
    # A bone may be called Root: the root itself has no other case than its file's.
    parent = skeleton.bones.get(words[0]) or (skeleton.root if words[0].lower() == "root" else skeleton.bones[words[0]])
    for name in words[1:]:
        child = skeleton.bones[name]
        if child.parent is None:
            child.parent = parent
            parent.children.append(child)


def read_skeleton(path):
    skeleton, section, bone = Skeleton(), "", None
    for words in lines_of(text_of(path)):
        first = words[0].lower()
        if first.startswith(":"):
            section = first
        elif section == ":units":
            read_units(skeleton, words)
        elif section == ":documentation":
            read_documentation(skeleton, words)
        elif section == ":root":
            read_root(skeleton, words)
        elif section == ":bonedata" and first == "begin":
            bone = Bone("")
        elif section == ":bonedata" and first == "end":
            skeleton.bones[bone.name] = bone
        elif section == ":bonedata":
            read_bone_line(bone, words, skeleton.length_factor)
        elif section == ":hierarchy" and first not in ("begin", "end"):
            read_family(skeleton, words)
    for bone in skeleton.bones.values():
        if bone.parent is None:
            bone.parent = skeleton.root
            skeleton.root.children.append(bone)
    return skeleton


def order_of(skeleton):
    """All bones, parents first."""
    result, todo = [], [skeleton.root]
    while todo:
        result.append(todo.pop())
        todo.extend(reversed(result[-1].children))
    return result


class Motion:
    """Values of every bone in every frame: {name: (frames, degrees of freedom)}."""

    def __init__(self):
        self.numbers = []
        self.values = {}
        self.rate = None
        self.radians = False


def read_motion(path, skeleton):
    text = text_of(path)
    motion = Motion()
    motion.radians = skeleton.angles_are_radians
    said = re.search(r"^\s*[#:]\s*samples-per-second\s+(\S+)", text, re.IGNORECASE | re.MULTILINE)
    motion.rate = snap_rate(float(said[1])) if said else None
    bones = {bone.name: bone for bone in order_of(skeleton)}
    current = {name: [0.0] * len(bone.dofs) for name, bone in bones.items()}
    frames = {}
    for words in lines_of(text):
        if words[0].startswith(":"):
            motion.radians = {":degrees": False, ":radians": True}.get(words[0].lower(), motion.radians)
        elif len(words) == 1 and re.fullmatch(r"[-+]?\d+", words[0]):
            # A bone that is missing in a frame keeps its last value.
            current = dict(current)
            frames[int(words[0])] = current
        elif words[0] in bones:
            values = [float(word) for word in words[1:]]
            if len(values) < len(bones[words[0]].dofs):
                raise FileError(f"{path}: {words[0]} lacks values")
            current[words[0]] = values[: len(bones[words[0]].dofs)]
    motion.numbers = sorted(frames)
    motion.values = {name: numpy.array([frames[number][name] for number in motion.numbers]) for name in bones if bones[name].dofs}
    return motion


def start_of(bone, skeleton, motion):
    """Where a bone starts in its parent's frame. A motion's own translations replace the root's position at rest, which stands between the
    root and its children as if it were the root's vector."""
    if bone.parent is skeleton.root:
        return skeleton.position
    if bone.parent is not None:
        return bone.parent.vector()
    is_moved = motion is not None and any(dof in DOFS[:3] for dof in skeleton.root.dofs)
    return numpy.zeros(3) if is_moved else skeleton.position


def local_matrices(skeleton, motion, rows):
    """Local matrices of the bones, each in the frame of its parent's turned bone; ends of leaves follow their bones."""
    result = []
    for bone in order_of(skeleton):
        frame = bone.axis_frame()
        start = translations(start_of(bone, skeleton, motion))
        moved = numpy.tile(numpy.eye(4), (len(rows), 1, 1))
        turned = moved.copy()
        for column, dof in enumerate(bone.dofs if motion is not None else []):
            values = motion.values[bone.name][rows, column]
            if dof in DOFS[3:]:
                turned = rotations(DOFS.index(dof) - 3, numpy.degrees(values) if motion.radians else values) @ turned
            elif dof in DOFS[:3]:
                moved[:, DOFS.index(dof), 3] += values * skeleton.length_factor
        place = translations((frame @ moved)[:, :3, 3])
        result.append(start @ place @ frame @ turned @ numpy.linalg.inv(frame))
        if skeleton.has_end(bone):
            result.append(numpy.tile(translations(bone.vector()), (len(rows), 1, 1)))
    return numpy.stack(result, axis=1)


def joints_of(skeleton):
    joints, index_of = [], {}
    for bone in order_of(skeleton):
        index_of[bone.name] = len(joints)
        joints.append(Joint(bone.name, index_of[bone.parent.name] if bone.parent is not None else -1))
        if skeleton.has_end(bone):
            joints.append(Joint(bone.name + "_End", len(joints) - 1, is_end=True))
    return joints


def has_frames(path):
    return re.search(r"^\s*\d+\s*$", text_of(path), re.MULTILINE) is not None


def take_of(skeleton, path, name):
    motion = read_motion(path, skeleton)
    rate = motion.rate or DEFAULT_RATE
    times = (numpy.array(motion.numbers, dtype=float) - motion.numbers[0]) / rate
    return Take(name, times, rate, lambda at: local_matrices(skeleton, motion, frames_of(at, times)))


def read(path, motions=(), names=()):
    """The figure of a skeleton and any number of motions."""
    skeleton = read_skeleton(path)
    rest = local_matrices(skeleton, None, numpy.zeros(1, dtype=int))
    takes = [take_of(skeleton, motion, name) for motion, name in zip(motions, names or motions)]
    figure = Figure(joints_of(skeleton), rest, takes)
    figure.has_fixed_root = True
    return figure
