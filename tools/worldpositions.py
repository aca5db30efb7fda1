#!/usr/bin/env python3
"""Computes where every bone of an ASF skeleton starts and ends in some frames of an AMC motion: forward kinematics, straight from the
definition of the formats, without the library. The tests compare the library's results with the files that it wrote for samples/.

usage: worldpositions.py SKELETON.asf MOTION.amc [--every N] > MOTION.world.json

Writes {"frames": {"1": {"bone": {"start": [x, y, z], "end": [x, y, z]}}}} for the first frame of the motion and every Nth (default 20)
after it, in the skeleton's unit of length. The root starts and ends at one point.

A bone's axis is a frame in world axes at rest. Its degrees of freedom are rotations about that frame's axes, the first listed first,
and translations along them; both move the bone and everything below it, relative to its parent. At rest a bone runs from the end of its
parent along its direction, which is given in world axes.
"""
import argparse
import json
import math
import sys

IDENTITY = ((1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0))


def rotation(axis, radians):
    """About axis 0, 1 or 2, as a matrix of three rows."""
    j, k = (axis + 1) % 3, (axis + 2) % 3
    rows = [list(row) for row in IDENTITY]
    rows[j][j] = rows[k][k] = math.cos(radians)
    rows[k][j] = math.sin(radians)
    rows[j][k] = -rows[k][j]
    return rows


def product(a, b):
    return [[math.fsum(a[i][k] * b[k][j] for k in range(3)) for j in range(3)] for i in range(3)]


def transposed(m):
    return [list(column) for column in zip(*m)]


def turned(m, v):
    return [math.fsum(m[i][k] * v[k] for k in range(3)) for i in range(3)]


def total(a, b):
    return [x + y for x, y in zip(a, b)]


class Bone:
    def __init__(self, name):
        self.name, self.dofs, self.children = name, [], []
        self.axis, self.vector = IDENTITY, [0.0, 0.0, 0.0]

    def pose(self, values, angle_unit):
        """Rotation and displacement relative to the parent, in world axes at rest."""
        turn, shift = IDENTITY, [0.0, 0.0, 0.0]
        for word, value in zip(self.dofs, values):
            axis = "xyz".index(word[1])
            if word[0] == "r":
                turn = product(rotation(axis, value * angle_unit), turn)
            else:
                shift[axis] += value
        return product(product(self.axis, turn), transposed(self.axis)), turned(self.axis, shift)


def axis_frame(words):
    """From three angles in degrees, about x, y and z, and the order in which they are applied."""
    frame = IDENTITY
    for letter in words[3].lower():
        axis = "xyz".index(letter)
        frame = product(rotation(axis, math.radians(float(words[axis]))), frame)
    return frame


def read_lines(path):
    """The words of each line that has any, without comments."""
    with open(path, encoding="utf-8") as file:
        for line in file:
            words = line.split("#")[0].replace("(", " ").replace(")", " ").replace(",", " ").split()
            if words:
                yield words


def read_skeleton(path):
    """The root, and all bones by name."""
    root = Bone("root")
    bones, section, bone = {"root": root}, "", None
    for word, *rest in read_lines(path):
        word = word if section == ":hierarchy" and word in bones else word.lower()
        if word.startswith(":"):
            section = word
        elif section == ":root" and word == "order":
            root.dofs = [dof.lower() for dof in rest]
        elif section == ":root" and word in ("position", "orientation") and any(float(number) for number in rest):
            sys.exit("%s: a %s of the root other than zero is not supported" % (path, word))
        elif section == ":bonedata" and word == "name":
            bone = bones[rest[0]] = Bone(rest[0])
        elif section == ":bonedata" and word == "direction":
            direction = [float(number) for number in rest]
        elif section == ":bonedata" and word == "length":
            bone.vector = [float(rest[0]) * number / math.hypot(*direction) for number in direction]
        elif section == ":bonedata" and word == "axis":
            bone.axis = axis_frame(rest)
        elif section == ":bonedata" and word == "dof":
            bone.dofs = [dof.lower() for dof in rest]
        elif section == ":hierarchy" and word in bones:
            bones[word].children += [bones[name] for name in rest]
    return root, bones


def read_motion(path):
    """(frame number, values by bone name) of each frame, and the unit of angles in radians."""
    frames, angle_unit = [], math.radians(1.0)
    for word, *rest in read_lines(path):
        if word.upper() == ":RADIANS":
            angle_unit = 1.0
        elif not rest and word.lstrip("-").isdigit():
            frames.append((int(word), {}))
        elif not word.startswith(":"):
            frames[-1][1][word] = [float(number) for number in rest]
    return frames, angle_unit


def world_positions(root, values, angle_unit):
    result = {}
    turn, shift = root.pose(values.get("root", []), angle_unit)
    result["root"] = {"start": shift, "end": shift}
    waiting = [(child, turn, shift) for child in root.children]
    while waiting:
        bone, parent_turn, parent_end = waiting.pop()
        turn, shift = bone.pose(values.get(bone.name, []), angle_unit)
        start = total(parent_end, turned(parent_turn, shift))
        turn = product(parent_turn, turn)
        end = total(start, turned(turn, bone.vector))
        result[bone.name] = {"start": start, "end": end}
        waiting += [(child, turn, end) for child in bone.children]
    return result


def text_of(frames):
    """One line for each bone; 9 decimals are ten times finer than single precision."""
    blocks = []
    for number, bones in frames:
        lines = []
        for name in sorted(bones):
            points = ['"%s": [%s]' % (key, ", ".join("%.9f" % c for c in bones[name][key])) for key in ("start", "end")]
            lines.append("%s: {%s}" % (json.dumps(name), ", ".join(points)))
        blocks.append('"%d": {\n%s\n}' % (number, ",\n".join(lines)))
    return '{"frames": {\n%s\n}}\n' % ",\n".join(blocks)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0])
    parser.add_argument("skeleton")
    parser.add_argument("motion")
    parser.add_argument("--every", type=int, default=20)
    arguments = parser.parse_args()
    root, bones = read_skeleton(arguments.skeleton)
    frames, angle_unit = read_motion(arguments.motion)
    unknown = {name for _, values in frames for name in values} - bones.keys()
    if unknown:
        sys.exit("%s: no such bones in the skeleton: %s" % (arguments.motion, ", ".join(sorted(unknown))))
    sys.stdout.write(text_of([(number, world_positions(root, values, angle_unit)) for number, values in frames[::arguments.every]]))


if __name__ == "__main__":
    main()
