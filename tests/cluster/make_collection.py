#!/usr/bin/env python3
"""Writes a collection of made-up motions, always the same one: samples/walk.amc cut and varied, for skeletons of many sizes.

    python3 tests/cluster/make_collection.py FOLDER MOTIONS BROKEN

Each ten motions have a folder with their skeleton. BROKEN of them, spread over the collection, cannot be converted; their names, relative
to FOLDER, are printed, one a line.
"""

import os
import re
import sys

SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "samples")
MOTIONS_PER_FOLDER = 10
FRAMES = 960


def read_walk():
    """Header lines, and the lines of each frame without its number."""
    with open(os.path.join(SAMPLES, "walk.amc"), encoding="ascii") as file:
        lines = file.read().splitlines()
    numbers = [i for i, line in enumerate(lines) if line.isdigit()]
    ends = numbers[1:] + [len(lines)]
    return lines[:numbers[0]], [lines[begin + 1:end] for begin, end in zip(numbers, ends)]


def skeleton_text(number):
    """The skeleton in another size: from 0.36 to 0.54 units an inch."""
    with open(os.path.join(SAMPLES, "walker.asf"), encoding="ascii") as file:
        text = file.read()
    return re.sub(r"(?m)^(\s*length) 0\.45$", rf"\1 {0.36 + number % 19 * 0.01:.2f}", text, count=1)


def motion_lines(header, frames, number):
    """A part of the walk, there and back again, beginning at another frame and turned by another angle for each number."""
    there_and_back = frames + frames[-2:0:-1]
    lines = list(header)
    for i in range(FRAMES):
        frame = there_and_back[(7 * number + i) % len(there_and_back)]
        root = frame[0].split()
        root[5] = f"{float(root[5]) + number % 360 - 180:.4f}"
        lines += [str(i + 1), " ".join(root)] + frame[1:]
    return lines


def break_motion(lines, kind):
    """Each kind is something that readers must not accept."""
    if kind == 0:
        lines[len(lines) // 2] = "left_thigh -32.0x1 7.9472 -8.6617"
    elif kind == 1:
        del lines[5:]
    elif kind == 2:
        lines.clear()
    else:
        lines[len(lines) // 2] = "left_thigh 1"
    return lines


def main():
    folder, motions, broken = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    header, frames = read_walk()
    chosen = [(2 * i + 1) * motions // (2 * broken) for i in range(broken)]
    for number in range(motions):
        subject = f"{number // MOTIONS_PER_FOLDER + 1:03d}"
        name = f"{subject}/{subject}_{number % MOTIONS_PER_FOLDER + 1:02d}.amc"
        os.makedirs(os.path.join(folder, subject), exist_ok=True)
        if number % MOTIONS_PER_FOLDER == 0:
            with open(os.path.join(folder, subject, subject + ".asf"), "w", encoding="ascii") as file:
                file.write(skeleton_text(number // MOTIONS_PER_FOLDER))
        lines = motion_lines(header, frames, number)
        if number in chosen:
            lines = break_motion(lines, chosen.index(number) % 4)
            print(name)
        with open(os.path.join(folder, name), "w", encoding="ascii") as file:
            file.writelines(line + "\n" for line in lines)


main()
