#!/usr/bin/env python3
"""Compares what the clip layer computes with SciPy and NumPy.

usage: cliporacle_test.py WRITECLIPS SKELETON.asf MOTION.amc

WRITECLIPS writes the arrays of its clips and its results; everything else is computed here from the arrays alone.
"""
import pathlib
import subprocess
import sys
import tempfile

import numpy
from scipy.spatial.transform import Rotation, Slerp

TOLERANCE = 1e-6     # Radians; lengths as a fraction of the largest.
AMBIGUOUS = 1e-4     # Radians from half a turn, where both ways are as short.
EULER_ORDERS = [a + b + c for a in "xyz" for b in "xyz" if b != a for c in "xyz" if c != b]


def from_wxyz(numbers):
    return Rotation.from_quat(numbers[..., [1, 2, 3, 0]])


class Clip:
    def __init__(self, folder):
        self.folder = folder
        self.parents = self.read("parents")[0, :, 0].astype(int)
        self.step = self.read("step").item()
        self.rotations = self.read("frame_rotations")
        self.translations = self.read("frame_translations")
        self.scalings = self.read("frame_scalings")
        self.frames, self.joints = self.rotations.shape[:2]

    def read(self, name):
        return numpy.load(self.folder / (name + ".npy"))

    def local(self):
        """Rotations relative to the parents, frame by frame."""
        return [from_wxyz(frame) for frame in self.rotations]

    def world(self):
        """World rotations, without scaling, and places."""
        places = numpy.zeros((self.frames, self.joints, 3))
        images = numpy.zeros((self.frames, self.joints, 3, 3))
        turns = [None] * self.joints
        for joint, parent in enumerate(self.parents):
            turn = from_wxyz(self.rotations[:, joint])
            matrix = turn.as_matrix() * self.scalings[:, joint, None, :]
            place = self.translations[:, joint]
            if parent >= 0:
                turn = turns[parent] * turn
                place = places[:, parent] + numpy.einsum("fij,fj->fi", images[:, parent], place)
                matrix = images[:, parent] @ matrix
            turns[joint], images[:, joint], places[:, joint] = turn, matrix, place
        quaternions = numpy.stack([turn.as_quat() for turn in turns], axis=1)
        return [Rotation.from_quat(frame) for frame in quaternions], places


class Checks:
    def __init__(self, name):
        self.name, self.worst, self.failed = name, {}, False

    def at_most(self, what, number, limit):
        number = float(number)
        self.worst[what] = max(number, self.worst.get(what, 0.0))
        if not number <= limit:
            self.failed = True
            print(f"{self.name}: {what}: {number:.3g} is more than {limit:.3g}")

    def rotations(self, what, results, expected):
        self.at_most(what, max((result * right.inv()).magnitude().max() for result, right in zip(results, expected)), TOLERANCE)

    def numbers(self, what, results, expected):
        extent = max(1.0, numpy.abs(expected).max())
        self.at_most(what, numpy.abs(results - expected).max() / extent, TOLERANCE)


def check_forms(clip, checks, space, expected):
    quaternions = clip.read(space + "_quaternion")
    checks.rotations("quaternions", [from_wxyz(frame) for frame in quaternions], expected)
    checks.at_most("jumps of quaternions", -(quaternions[1:] * quaternions[:-1]).sum(axis=2).min(initial=0.0), 1e-12)
    checks.at_most("first w below 0", -quaternions[0, :, 0].min(), 1e-12)
    matrices = numpy.stack([frame.as_matrix() for frame in expected])
    checks.numbers("matrices", clip.read(space + "_matrix").reshape(matrices.shape), matrices)
    columns = numpy.concatenate([matrices[..., 0], matrices[..., 1]], axis=2)
    checks.numbers("six", clip.read(space + "_six"), columns)
    vectors = clip.read(space + "_axis_angle")
    checks.rotations("axes and angles", [Rotation.from_rotvec(frame) for frame in vectors], expected)
    lengths = numpy.linalg.norm(vectors, axis=2)
    checks.at_most("angle above pi", lengths.max() - numpy.pi, 1e-12)
    right = numpy.stack([frame.as_rotvec() for frame in expected])
    clear = lengths < numpy.pi - AMBIGUOUS
    checks.numbers("axes times angles", vectors[clear], right[clear])
    if space == "local":  # World rotations lose digits in the products.
        relative = numpy.linalg.norm(vectors - right, axis=2) / numpy.maximum(numpy.linalg.norm(right, axis=2), 1e-30)
        checks.at_most("axes times angles, of the angle", relative[clear].max(initial=0.0), TOLERANCE)


def in_turns_nearest(angles, near):
    return angles + 360.0 * numpy.round((near - angles) / 360.0)


def check_continuity(clip, checks, order, sequence, expected):
    """Of the triples of a rotation, each is the nearest to the one before; without a lock, a small turn changes the angles little."""
    repeats = order[0] == order[2]
    last = numpy.concatenate([numpy.zeros((1, clip.joints, 3)), sequence[:-1]])
    middle = -sequence[..., 1] if repeats else 180.0 - sequence[..., 1]
    flipped = numpy.stack([sequence[..., 0] + 180.0, middle, sequence[..., 2] + 180.0], axis=2)
    distance = ((sequence - last) ** 2).sum(axis=2)
    for other in (sequence, flipped):
        nearest = ((in_turns_nearest(other, last) - last) ** 2).sum(axis=2)
        checks.at_most("Euler angles of " + order + " farther than others", (distance - nearest).max(), 1e-6)
    from_lock = numpy.abs((numpy.sin if repeats else numpy.cos)(numpy.radians(sequence[..., 1])))
    for frame in range(1, clip.frames):
        turn = numpy.degrees((expected[frame] * expected[frame - 1].inv()).magnitude())
        free = (from_lock[frame] > 0.3) & (from_lock[frame - 1] > 0.3) & (turn < 5.0)
        change = numpy.abs(sequence[frame] - sequence[frame - 1]).max(axis=1)
        checks.at_most("change of Euler angles of " + order, (change - 5.0 * turn)[free].max(initial=0.0), 1e-4)


def check_euler(clip, checks, space, expected):
    for order in EULER_ORDERS:
        angles = clip.read(f"{space}_euler_{order}")
        # By axis, but in order of application if an axis repeats.
        sequence = angles if order[0] == order[2] else angles[..., ["xyz".index(axis) for axis in order]]
        results = [Rotation.from_euler(order, frame, degrees=True) for frame in sequence]
        checks.rotations("Euler angles of " + order, results, expected)
        check_continuity(clip, checks, order, sequence, expected)


def check_between(clip, checks, name):
    """Poses at any times: rotations by Slerp, the rest linear, held beyond the ends."""
    times = clip.read(name + "_times")[:, 0, 0]
    rotations, last = clip.read(name + "_rotations"), clip.frames - 1
    position = numpy.clip(times / clip.step, 0.0, last)
    before = numpy.minimum(numpy.floor(position).astype(int), max(0, last - 1))
    part = position - before
    after = numpy.minimum(before + 1, last)
    for joint in range(clip.joints):
        for row, (one, other) in enumerate(zip(clip.rotations[before, joint], clip.rotations[after, joint])):
            result = from_wxyz(rotations[row, joint])
            ends = from_wxyz(numpy.array([one, other]))
            turn = (ends[1] * ends[0].inv()).magnitude()
            if turn < numpy.pi - AMBIGUOUS:
                right = Slerp([0.0, 1.0], ends)(part[row])
                checks.at_most(name + ": rotations", (result * right.inv()).magnitude(), TOLERANCE)
            else:
                way = numpy.array([(result * ends[0].inv()).magnitude(), (result * ends[1].inv()).magnitude()])
                checks.at_most(name + ": half turns", numpy.abs(way - turn * numpy.array([part[row], 1 - part[row]])).max(), TOLERANCE)
    for what, numbers in (("translations", clip.translations), ("scalings", clip.scalings)):
        right = numbers[before] + part[:, None, None] * (numbers[after] - numbers[before])
        checks.numbers(name + ": " + what, clip.read(name + "_" + what), right)


def check_velocities(clip, checks, turns, places):
    velocities = numpy.gradient(places, clip.step, axis=0) if clip.frames > 1 else 0.0 * places
    checks.numbers("velocities", clip.read("velocities"), velocities)
    results = clip.read("angular_velocities")
    for frame in range(clip.frames):
        before, after = max(0, frame - 1), min(clip.frames - 1, frame + 1)
        seconds = max(1, after - before) * clip.step
        right = turns[after] * turns[before].inv()
        checks.rotations("angular velocities", [Rotation.from_rotvec(results[frame] * seconds)], [right])
        checks.at_most("turn above pi", numpy.linalg.norm(results[frame] * seconds, axis=1).max() - numpy.pi, 1e-9)
        clear = right.magnitude() < numpy.pi - AMBIGUOUS
        if clear.any():
            checks.numbers("angular velocities as vectors", results[frame][clear] * seconds, right.as_rotvec()[clear])


def check(folder):
    clip, checks = Clip(folder), Checks(folder.name)
    turns, places = clip.world()
    checks.numbers("positions", clip.read("positions"), places)
    for space, expected in (("local", clip.local()), ("world", turns)):
        check_forms(clip, checks, space, expected)
        check_euler(clip, checks, space, expected)
    for name in ("sample", "resampled"):
        check_between(clip, checks, name)
    check_velocities(clip, checks, turns, places)
    largest = max(checks.worst, key=lambda what: checks.worst[what] if "farther" not in what and "change" not in what else 0.0)
    print(f"{folder.name}: {clip.frames} frames, {clip.joints} joints: at most {checks.worst[largest]:.2g} ({largest})")
    return checks.failed


def main():
    program, *files = sys.argv[1:]
    with tempfile.TemporaryDirectory() as name:
        subprocess.run([program, name, *files], check=True)
        folders = sorted(pathlib.Path(name).iterdir())
        if len(folders) != 9:
            sys.exit(f"{len(folders)} clips")
        sys.exit(1 if sum([check(folder) for folder in folders]) else 0)


if __name__ == "__main__":
    main()
