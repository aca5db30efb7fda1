#!/usr/bin/env python3
"""Writes robot.asf and robot_pick.amc: a made-up robot arm on a rail, and a second of it moving.

    python3 samples/robot/make_robot.py [FOLDER]        (default: the folder of this script)

Unlike the walker it uses what few figures do: every order of the rotations, oblique axes, translations of bones, an unusual order at the
root. World axes: y up. Lengths are in inches, as in the files.
"""

import math
import os
import sys

FRAMES_PER_SECOND = 60
FRAME_COUNT = 61        # one second, both ends included
ROOT_ORDER = "TX TY TZ RY RX RZ"

# Name, parent, direction, length, axis (degrees, x first), degrees of freedom.
BONES = [
    ("rail", "root", (0, 1, 0), 6, (0, 0, 0), "tx tz"),
    ("turret", "rail", (0.1, 1, 0), 14, (0, 35, 0), "ry"),
    ("shoulder", "turret", (0.3, 0.9, 0.2), 26, (10, 20, 30), "rx ry rz"),
    ("elbow", "shoulder", (0.7, 0.1, 0.6), 22, (-40, 15, 60), "ry rz rx"),
    ("bracket", "elbow", (0, -1, 0.2), 3, (5, 50, -20), ""),
    ("lamp", "bracket", (0.1, -0.8, 0.3), 4, (25, -45, 80), "rz rx ry"),
    ("wrist", "elbow", (0.8, -0.5, 0.2), 9, (70, -35, 110), "rz ry rx"),
    ("hand", "wrist", (0.6, -0.7, -0.3), 5, (120, 40, -75), "rx rz ry"),
    ("gripper", "hand", (0.2, -1, 0), 4, (-15, 60, 140), "ty ry rx rz tz"),
    ("left_finger", "gripper", (0.4, -0.9, 0.1), 3, (0, -25, 15), "rz"),
    ("right_finger", "gripper", (-0.4, -0.9, 0.1), 3, (0, 25, -15), "tx rx"),
]


def number(value):
    text = ("%.4f" % value).rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


def numbers(values):
    return " ".join(number(value) for value in values)


def bone_record(index, name, direction, length, axis, dofs):
    lines = ["  begin", "    id %d" % index, "    name " + name,
             "    direction " + " ".join("%.6g" % (c / math.hypot(*direction)) for c in direction),
             "    length " + number(length), "    axis %s XYZ" % numbers(axis)]
    if dofs:
        lines.append("    dof " + dofs)
        lines.append("    limits " + " ".join("(-20 20)" if dof[0] == "t" else "(-90 90)" for dof in dofs.split()))
    return lines + ["  end"]


def skeleton_text():
    lines = ["# A robot arm, written by make_robot.py", ":version 1.10", ":name robot", ":units", "  mass 1.0", "  length 1.0", "  angle deg",
             ":documentation", "   An arm on a rail, with every order of rotations.", ":root", "  order " + ROOT_ORDER, "  axis XYZ",
             "  position 0 0 0", "  orientation 0 0 0", ":bonedata"]
    for index, (name, _, direction, length, axis, dofs) in enumerate(BONES, 1):
        lines += bone_record(index, name, direction, length, axis, dofs)
    lines += [":hierarchy", "  begin"]
    for parent in ["root"] + [bone[0] for bone in BONES]:
        children = [bone[0] for bone in BONES if bone[1] == parent]
        if children:
            lines.append("    " + " ".join([parent] + children))
    return "\n".join(lines + ["  end"]) + "\n"


def values_at(index, dofs, seconds):
    """Every degree of freedom swings with a phase and a speed of its own: up to 55 degrees, or 5 inches."""
    result = []
    for slot, dof in enumerate(dofs.lower().split()):
        size = 5.0 if dof[0] == "t" else 55.0
        result.append(size * math.sin(2 * math.pi * (0.7 + 0.1 * slot) * seconds + 1.7 * index + 0.9 * slot))
    return result


def motion_text():
    lines = ["# The robot arm in motion, written by make_robot.py", ":FULLY-SPECIFIED", ":DEGREES",
             ":SAMPLES-PER-SECOND %d" % FRAMES_PER_SECOND]
    for frame in range(FRAME_COUNT):
        lines.append(str(frame + 1))
        for index, (name, dofs) in enumerate([("root", ROOT_ORDER)] + [(bone[0], bone[5]) for bone in BONES]):
            if dofs:
                lines.append(name + " " + numbers(values_at(index, dofs, frame / FRAMES_PER_SECOND)))
    return "\n".join(lines) + "\n"


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name, text in (("robot.asf", skeleton_text()), ("robot_pick.amc", motion_text())):
        with open(os.path.join(folder, name), "w", newline="\n", encoding="utf-8") as target:
            target.write(text)


if __name__ == "__main__":
    main()
