#!/usr/bin/env python3
"""Writes walker.asf and walk.amc: a made-up human figure, and two seconds of it walking; and walk.bvh, the same with fewer frames.

    python3 samples/make_walk.py [FOLDER]        (default: the folder of this script)

The walk starts from the feet. Each rolls over its heel, lies flat, and rolls over its ball, so that a planted foot does not slide. The
pelvis bobs, sways and turns above; hips and knees follow from feet and pelvis. Arms swing opposite to the legs.
World axes: x to the figure's left, y up, z forward. The script's lengths are in centimetres, the files' in units of CENTIMETRES_PER_UNIT.
"""

import math
import os
import sys

LENGTH_UNIT = 0.45
CENTIMETRES_PER_UNIT = 2.54 / LENGTH_UNIT
FRAMES_PER_SECOND = 120
FRAME_COUNT = 241           # two seconds, both ends included
BVH_STEP = 4                # every fourth of them in walk.bvh
CYCLE_SECONDS = 1.05        # one stride: left heel strike to left heel strike
STRIDE = 136.0              # centimetres per cycle

# ---- rotations: 3 x 3, row major -----------------------------------------------------------------------------------------


def rotation(axis, degrees):
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    if axis == "x":
        return ((1, 0, 0), (0, c, -s), (0, s, c))
    if axis == "y":
        return ((c, 0, s), (0, 1, 0), (-s, 0, c))
    return ((c, -s, 0), (s, c, 0), (0, 0, 1))


def multiply(*matrices):
    result = matrices[0]
    for m in matrices[1:]:
        result = tuple(tuple(sum(result[i][k] * m[k][j] for k in range(3)) for j in range(3)) for i in range(3))
    return result


def transpose(m):
    """The inverse of a rotation."""
    return tuple(zip(*m))


def apply(m, v):
    return tuple(sum(m[i][k] * v[k] for k in range(3)) for i in range(3))


def from_angles(x, y, z):
    """x is applied first."""
    return multiply(rotation("z", z), rotation("y", y), rotation("x", x))


def to_angles(m):
    """The inverse of from_angles, except at y = +-90 degrees."""
    y = math.asin(max(-1.0, min(1.0, -m[2][0])))
    return (math.degrees(math.atan2(m[2][1], m[2][2])), math.degrees(y), math.degrees(math.atan2(m[1][0], m[0][0])))


def add(a, b, factor=1.0):
    return tuple(p + q * factor for p, q in zip(a, b))


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def unit(v):
    length = math.sqrt(dot(v, v))
    return tuple(c / length for c in v)


# ---- the figure ----------------------------------------------------------------------------------------------------------


class Bone:
    def __init__(self, name, parent, direction, length, axis, limits):
        self.name, self.parent, self.length, self.axis, self.limits = name, parent, length, axis, limits
        self.direction = unit(direction)
        self.frame = from_angles(*axis)


LEG_SPLAY = 6.0
TOE_OUT = 7.0


def side_bones(side, s):
    """One side's leg and arm; s is 1 for left, -1 for right. Limits of y and z mirror with the side."""

    def mirrored(low, high):
        return (low, high) if s > 0 else (-high, -low)

    splay, out = math.radians(LEG_SPLAY), math.radians(TOE_OUT)
    down = (s * math.sin(splay), -math.cos(splay), 0)
    ahead = (s * math.sin(out), 0, math.cos(out))
    leg_axis, foot_axis, arm_axis = (0, 0, s * LEG_SPLAY), (0, s * TOE_OUT, 0), (0, 0, -s * 90)
    arm = (s, 0, 0)
    return [
        Bone(side + "_hip", "root", (s * 0.72, -0.62, 0.05), 12.4, (0, 0, 0), {}),
        Bone(side + "_thigh", side + "_hip", down, 42.1, leg_axis,
             {"rx": (-125, 30), "ry": mirrored(-45, 45), "rz": mirrored(-30, 50)}),
        Bone(side + "_shin", side + "_thigh", down, 41.6, leg_axis, {"rx": (-5, 150)}),
        Bone(side + "_foot", side + "_shin", add((0, -0.42, 0), ahead, 0.91), 14.8, foot_axis,
             {"rx": (-35, 55), "ry": mirrored(-25, 25), "rz": mirrored(-25, 25)}),
        Bone(side + "_toes", side + "_foot", ahead, 6.4, foot_axis, {"rx": (-70, 35)}),
        Bone(side + "_collar", "chest", (s * 0.95, 0.28, -0.04), 17.2, (0, 0, 0),
             {"ry": mirrored(-25, 25), "rz": mirrored(-15, 35)}),
        Bone(side + "_upper_arm", side + "_collar", arm, 28.6, (0, 0, 0),
             {"rx": (-100, 100), "ry": mirrored(-120, 60), "rz": mirrored(-95, 95)}),
        Bone(side + "_forearm", side + "_upper_arm", arm, 25.3, arm_axis, {"rx": (-5, 150), "ry": mirrored(-90, 90)}),
        Bone(side + "_hand", side + "_forearm", arm, 8.9, arm_axis, {"rx": (-70, 80), "rz": mirrored(-25, 35)}),
        Bone(side + "_fingers", side + "_hand", arm, 8.2, arm_axis, {"rx": (-20, 100)}),
        Bone(side + "_thumb", side + "_forearm", (s * 0.72, -0.10, 0.69), 8.5, arm_axis, {"rx": (-45, 45), "rz": mirrored(-45, 45)}),
    ]


SPINE_LIMITS = {"rx": (-25, 45), "ry": (-35, 35), "rz": (-30, 30)}
BONES = side_bones("left", 1) + side_bones("right", -1) + [
    Bone("waist", "root", (0, 0.996, -0.09), 12.6, (0, 0, 0), SPINE_LIMITS),
    Bone("ribs", "waist", (0, 0.999, -0.03), 13.1, (0, 0, 0), SPINE_LIMITS),
    Bone("chest", "ribs", (0, 0.999, 0.02), 14.9, (0, 0, 0), SPINE_LIMITS),
    Bone("neck", "chest", (0, 0.985, 0.17), 10.7, (0, 0, 0), {"rx": (-60, 70), "ry": (-80, 80), "rz": (-45, 45)}),
    Bone("head", "neck", (0, 0.998, 0.06), 18.3, (0, 0, 0), {"rx": (-35, 35), "ry": (-40, 40), "rz": (-25, 25)}),
]
BY_NAME = {bone.name: bone for bone in BONES}

# ---- the gait ------------------------------------------------------------------------------------------------------------

ANKLE_HEIGHT = BY_NAME["left_foot"].length * -BY_NAME["left_foot"].direction[1]
HEEL_BEHIND_ANKLE = 4.5
BALL_AHEAD_OF_ANKLE = BY_NAME["left_foot"].length * math.hypot(BY_NAME["left_foot"].direction[0], BY_NAME["left_foot"].direction[2])
FOOT_TRACK = 6.8            # centimetres from each ankle to the midline
FLAT, HEEL_OFF, TOE_OFF = 0.11, 0.36, 0.63      # fractions of the cycle; 0 is the heel strike
STRIKE_PITCH, TOE_OFF_PITCH = -19.0, 58.0       # degrees about the left axis: positive is heel up


def smooth(t):
    t = max(0.0, min(1.0, t))
    return t * t * t * (t * (6 * t - 15) + 10)


def stance_foot(phase):
    """Pitch of the foot, and offset of its ankle, forward and up, from the ground point below the ankle of the flat foot."""
    if phase < FLAT:
        pitch = STRIKE_PITCH * (1 - smooth(phase / FLAT))
        pivot = -HEEL_BEHIND_ANKLE
    else:
        pitch = TOE_OFF_PITCH * smooth(0.5 * (phase - HEEL_OFF) / (TOE_OFF - HEEL_OFF)) / smooth(0.5)
        pivot = BALL_AHEAD_OF_ANKLE
    c, s = math.cos(math.radians(pitch)), math.sin(math.radians(pitch))
    behind = -pivot
    return pitch, pivot + c * behind + s * ANKLE_HEIGHT, -s * behind + c * ANKLE_HEIGHT


def swing_foot(phase):
    """As stance_foot, relative to where the foot stood; ends one stride ahead. A cubic Hermite curve, and a lift of up to 6.4 cm."""
    step = 1e-4
    start, before = stance_foot(TOE_OFF), stance_foot(TOE_OFF - step)
    end, after = stance_foot(0.0), stance_foot(step)
    span = 1 - TOE_OFF
    t = (phase - TOE_OFF) / span
    h = (2 * t**3 - 3 * t**2 + 1, t**3 - 2 * t**2 + t, -2 * t**3 + 3 * t**2, t**3 - t**2)
    ends = ((start[0], end[0]), (start[1], end[1] + STRIDE), (start[2], end[2]))
    speeds = [((start[i] - before[i]) / step * span, (after[i] - end[i]) / step * span) for i in range(3)]
    pitch, ahead, above = (h[0] * a + h[1] * va + h[2] * b + h[3] * vb for (a, b), (va, vb) in zip(ends, speeds))
    return pitch, ahead, above + 6.4 * 6.75 * t * (1 - t) ** 2 * min(1.0, 6 * t)


def foot_at(side, cycle):
    """Pitch, ankle position and toe angle of a foot; `cycle` is the time in cycles."""
    s, offset = (1, 0.0) if side == "left" else (-1, 0.5)
    steps = math.floor(cycle - offset)
    phase = cycle - offset - steps
    pitch, ahead, above = stance_foot(phase) if phase <= TOE_OFF else swing_foot(phase)
    out = math.radians(TOE_OUT)
    footprint = (steps + offset) * STRIDE + 0.255 * STRIDE
    toes = -max(0.0, pitch) * (1.0 if phase <= TOE_OFF else 1 - smooth((phase - TOE_OFF) / 0.2))
    lateral = s * (FOOT_TRACK + math.sin(out) * (ahead if phase <= TOE_OFF else ahead * (1 - smooth((phase - TOE_OFF) / (1 - TOE_OFF)))))
    return pitch, (lateral, above, footprint + (math.cos(out) * ahead if phase <= TOE_OFF else swing_ahead(phase, ahead, out))), toes


def swing_ahead(phase, ahead, out):
    """Forward offset of a swinging foot: blends from the toe-out direction at its footprint to that at the next, a stride ahead."""
    t = smooth((phase - TOE_OFF) / (1 - TOE_OFF))
    landed = ahead - STRIDE
    return (1 - t) * math.cos(out) * ahead + t * (STRIDE + math.cos(out) * landed)


def pelvis_at(cycle):
    """Position and angles of the root."""
    wave = 2 * math.pi * cycle
    position = (1.9 * math.sin(wave - 0.45), 94.1 - 1.8 * math.cos(2 * wave - 0.75), STRIDE * cycle + 1.1 * math.sin(2 * wave + 0.4))
    return position, (3.5 + 0.8 * math.cos(2 * wave), -5.0 * math.cos(wave), 3.2 * math.sin(wave - 0.2))


# ---- one frame -----------------------------------------------------------------------------------------------------------


class Pose:
    """Angles of every bone, its rotation relative to its parent in world axes at rest, and the resulting world rotations."""

    def __init__(self, position, angles):
        self.position, self.angles = position, {"root": angles}
        self.local = {"root": from_angles(*angles)}
        self.world = dict(self.local)

    def turn(self, name, x=0.0, y=0.0, z=0.0):
        bone = BY_NAME[name]
        values = {"rx": x, "ry": y, "rz": z}
        kept = {word: values[word] for word in bone.limits}
        self.angles[name] = tuple(kept.values())
        self.local[name] = multiply(bone.frame, from_angles(*(kept.get(w, 0.0) for w in ("rx", "ry", "rz"))), transpose(bone.frame))
        self.world[name] = multiply(self.world[bone.parent], self.local[name])

    def aim(self, name, frame):
        """Turns a bone so that its world axes become `frame`."""
        bone = BY_NAME[name]
        self.turn(name, *to_angles(multiply(transpose(bone.frame), transpose(self.world[bone.parent]), frame)))

    def vector(self, name):
        bone = BY_NAME[name]
        return tuple(bone.length * c for c in apply(self.world[name], bone.direction))


def pose_leg(pose, side, cycle):
    s = 1 if side == "left" else -1
    pitch, ankle, toes = foot_at(side, cycle)
    thigh, shin = BY_NAME[side + "_thigh"].length, BY_NAME[side + "_shin"].length
    pose.turn(side + "_hip")
    hip = add(pose.position, pose.vector(side + "_hip"))
    reach = add(ankle, hip, -1)
    distance = min(math.sqrt(dot(reach, reach)), 0.9995 * (thigh + shin))
    along = unit(reach)
    hinge = apply(rotation("y", 0.6 * s * TOE_OUT), (1, 0, 0))
    hinge = unit(add(hinge, along, -dot(hinge, along)))
    ahead = cross(hinge, tuple(-c for c in along))
    at_hip = math.acos((thigh**2 + distance**2 - shin**2) / (2 * thigh * distance))
    at_knee = math.acos((thigh**2 + shin**2 - distance**2) / (2 * thigh * shin))
    up = unit(add(tuple(-math.cos(at_hip) * c for c in along), ahead, -math.sin(at_hip)))
    pose.aim(side + "_thigh", tuple(zip(hinge, up, cross(hinge, up))))
    pose.turn(side + "_shin", x=180 - math.degrees(at_knee))
    pose.aim(side + "_foot", multiply(rotation("y", s * TOE_OUT), rotation("x", pitch)))
    pose.turn(side + "_toes", x=toes)


def pose_arm(pose, side, cycle):
    s, opposite = (1, 0.5) if side == "left" else (-1, 0.0)
    wave = 2 * math.pi * (cycle - opposite)
    pose.turn(side + "_collar", y=s * -1.5 * math.cos(wave), z=s * -2.0)
    swing = multiply(rotation("x", 4 - 23 * math.cos(wave - 0.25)), rotation("z", -s * 79))
    pose.turn(side + "_upper_arm", *to_angles(swing))
    pose.turn(side + "_forearm", x=22 + 11 * math.cos(wave - 0.6), y=s * 20)
    pose.turn(side + "_hand", x=6 + 4 * math.cos(wave - 1.0), z=s * 2)
    pose.turn(side + "_fingers", x=24)
    pose.turn(side + "_thumb", x=10, z=s * -8)


def pose_at(seconds):
    cycle = seconds / CYCLE_SECONDS
    position, (tilt, turn, list_) = pelvis_at(cycle)
    pose = Pose(position, (tilt, turn, list_))
    for side in ("left", "right"):
        pose_leg(pose, side, cycle)
    for name, share in (("waist", 0.55), ("ribs", 0.55), ("chest", 0.5)):
        pose.turn(name, x=-0.3 * tilt * share, y=-turn * share * 1.1, z=-list_ * share)
    pose.turn("neck", x=-2 - 0.3 * tilt, y=0.35 * turn, z=0.3 * list_)
    pose.turn("head", x=1.0, y=0.3 * turn, z=0.2 * list_)
    for side in ("left", "right"):
        pose_arm(pose, side, cycle)
    return pose


# ---- the files -----------------------------------------------------------------------------------------------------------


def number(value):
    text = "%.4f" % value
    text = text.rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


def numbers(values):
    return " ".join(number(v) for v in values)


def bone_record(index, bone):
    lines = ["  begin", "     id %d" % index, "     name " + bone.name, "     direction " + " ".join("%.6g" % c for c in bone.direction),
             "     length " + number(bone.length / CENTIMETRES_PER_UNIT), "     axis %s XYZ" % numbers(bone.axis)]
    if bone.limits:
        lines.append("    dof " + " ".join(bone.limits))
        for i, (low, high) in enumerate(bone.limits.values()):
            lines.append("    %s(%.1f %.1f)" % ("limits " if i == 0 else "       ", low, high))
    return lines + ["  end"]


def skeleton_text():
    lines = ["# A walking figure, written by make_walk.py", ":version 1.10", ":name walker", ":units", "  mass 1.0", "  length %g" % LENGTH_UNIT,
             "  angle deg", ":documentation", "   A figure of 167 cm, arms out, for trying things on.", ":root", "   order TX TY TZ RX RY RZ",
             "   axis XYZ", "   position 0 0 0", "   orientation 0 0 0", ":bonedata"]
    for index, bone in enumerate(BONES, 1):
        lines += bone_record(index, bone)
    lines += [":hierarchy", "  begin"]
    for parent in ["root"] + [bone.name for bone in BONES]:
        children = [bone.name for bone in BONES if bone.parent == parent]
        if children:
            lines.append("    " + " ".join([parent] + children))
    return "\n".join(lines + ["  end"]) + "\n"


def motion_text():
    lines = ["#!OML:ASF walker.asf", "# A walk of %g cm a second, written by make_walk.py" % (STRIDE / CYCLE_SECONDS), ":FULLY-SPECIFIED", ":DEGREES",
             ":SAMPLES-PER-SECOND %d" % FRAMES_PER_SECOND]
    for frame in range(FRAME_COUNT):
        pose = pose_at(frame / FRAMES_PER_SECOND)
        lines.append(str(frame + 1))
        lines.append("root " + numbers([c / CENTIMETRES_PER_UNIT for c in pose.position]) + " " + numbers(pose.angles["root"]))
        lines += [bone.name + " " + numbers(pose.angles[bone.name]) for bone in BONES if bone.limits]
    return "\n".join(lines) + "\n"


def bvh_joint(name, indent):
    """The lines of a joint, and the names of the joints in their order. A joint is a bone's start, at the end of its parent."""
    parent = BY_NAME.get(BY_NAME[name].parent) if name in BY_NAME else None
    offset = [parent.length * c for c in parent.direction] if parent else (0, 0, 0)
    lines = [("JOINT " if name in BY_NAME else "ROOT ") + name, "{", "  OFFSET " + numbers(offset),
             "  CHANNELS 3 Zrotation Yrotation Xrotation" if name in BY_NAME else
             "  CHANNELS 6 Xposition Yposition Zposition Zrotation Yrotation Xrotation"]
    lines, names = [indent + line for line in lines], [name]
    for child in [bone.name for bone in BONES if bone.parent == name]:
        child_lines, child_names = bvh_joint(child, indent + "  ")
        lines += child_lines
        names += child_names
    if len(names) == 1:
        end = [BY_NAME[name].length * c for c in BY_NAME[name].direction]
        lines += [indent + line for line in ("  End Site", "  {", "    OFFSET " + numbers(end), "  }")]
    return lines + [indent + "}"], names


def bvh_text():
    lines, names = bvh_joint("root", "")
    frames = range(0, FRAME_COUNT, BVH_STEP)
    lines = ["HIERARCHY"] + lines + ["MOTION", "Frames: %d" % len(frames), "Frame Time: %.7g" % (BVH_STEP / FRAMES_PER_SECOND)]
    for frame in frames:
        pose = pose_at(frame / FRAMES_PER_SECOND)
        values = list(pose.position)
        for name in names:
            values += reversed(to_angles(pose.local[name]))
        lines.append(numbers(values))
    return "\n".join(lines) + "\n"


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name, text in (("walker.asf", skeleton_text()), ("walk.amc", motion_text()), ("walk.bvh", bvh_text())):
        with open(os.path.join(folder, name), "w", newline="\n") as target:
            target.write(text)


if __name__ == "__main__":
    main()
