"""Reads BVH by the format's public definition: joints with an offset, channels applied in the order of the file."""
import re

import numpy

from figure import Figure, FileError, Joint, Take, frames_of, rotations, snap_rate, text_of, translations

CHANNELS = {"xposition": 0, "yposition": 1, "zposition": 2, "xrotation": 3, "yrotation": 4, "zrotation": 5}


class Hierarchy:
    """The joints, their offsets and the channels of a frame's values, in order."""

    def __init__(self):
        self.joints = []
        self.offsets = []
        self.channels = []  # For each joint: codes of CHANNELS.
        self.open = []

    def add(self, name, is_end):
        self.joints.append(Joint(name, self.open[-1] if self.open else -1, is_end))
        self.offsets.append([0.0, 0.0, 0.0])
        self.channels.append([])
        self.open.append(len(self.joints) - 1)


def read_statement(hierarchy, word, tokens):
    """Reads one statement; `tokens` are after its first word. The number of tokens that were used."""
    if word in ("{", "}"):
        if word == "}":
            hierarchy.open.pop()
        return 0
    if word == "offset":
        hierarchy.offsets[hierarchy.open[-1]] = [float(token) for token in tokens[:3]]
        return 3
    if word == "channels":
        count = int(tokens[0])
        hierarchy.channels[hierarchy.open[-1]] += [CHANNELS[token.lower()] for token in tokens[1 : count + 1]]
        return count + 1
    raise FileError(f"unknown word {word}")


def read_hierarchy(text):
    hierarchy = Hierarchy()
    for line in text.split("\n"):
        opened = re.match(r"\s*(ROOT|JOINT|End\b)\s*([^{]*)", line, re.IGNORECASE)
        if opened:
            is_end = opened[1].lower() == "end"
            name = hierarchy.joints[hierarchy.open[-1]].name + "_End" if is_end else " ".join(opened[2].split())
            hierarchy.add(name, is_end)
            line = line[opened.end() :]
        tokens = re.sub(r"([{}])", r" \1 ", line).split()
        while tokens:
            word = tokens.pop(0).lower()
            if word != "hierarchy":
                del tokens[: read_statement(hierarchy, word, tokens)]
    return hierarchy


def local_matrices(hierarchy, values):
    """Local matrices of frames (frames, channels); of the rest pose if there are no channels in `values`."""
    result = numpy.zeros((len(values), len(hierarchy.joints), 4, 4))
    column = 0
    for index, (offset, channels) in enumerate(zip(hierarchy.offsets, hierarchy.channels)):
        # A position channel replaces the offset on its axis.
        places = numpy.tile(numpy.array(offset), (len(values), 1))
        rotation = numpy.eye(4)
        for code in channels if values.shape[1] > 0 else []:
            if code < 3:
                places[:, code] = values[:, column]
            else:
                rotation = rotation @ rotations(code - 3, values[:, column])
            column += 1
        result[:, index] = translations(places) @ rotation
    return result


def read(path):
    text = text_of(path)
    parts = re.split(r"^\s*MOTION\b", text, maxsplit=1, flags=re.MULTILINE | re.IGNORECASE)
    hierarchy = read_hierarchy(parts[0])
    rest = local_matrices(hierarchy, numpy.zeros((1, 0)))
    count = sum(len(channels) for channels in hierarchy.channels)
    header = re.match(r"\s*Frames\s*:?\s*\S+\s+Frame\s+Time\s*:?\s*(\S+)", parts[1], re.IGNORECASE) if len(parts) > 1 else None
    if header is None or count == 0:
        return Figure(hierarchy.joints, rest, [])
    values = numpy.array(parts[1][header.end() :].split(), dtype=float)
    # The values say how many frames there are, the header may be wrong.
    if len(values) % count != 0:
        raise FileError("the last frame is incomplete")
    values = values.reshape(-1, count)
    if len(values) == 0:
        return Figure(hierarchy.joints, rest, [])
    frame_time = float(header[1])
    rate = snap_rate(1 / frame_time if frame_time > 0 else 120)
    times = numpy.arange(len(values)) / rate
    take = Take("", times, rate, lambda at: local_matrices(hierarchy, values[frames_of(at, times)]))
    return Figure(hierarchy.joints, rest, [take])
