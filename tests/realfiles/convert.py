"""Runs `asf`, and reads what it wrote with the readers of this folder."""
import os
import re
import subprocess

import acclaimfile
import bvhfile
import gltffile

TIMEOUT = 600  # Seconds for one call.


class Run:
    def __init__(self, program, *arguments):
        self.arguments = arguments
        result = subprocess.run([program, *arguments], capture_output=True, text=True, errors="replace", timeout=TIMEOUT, check=False)
        self.status, self.out, self.err = result.returncode, result.stdout, result.stderr

    def complaints(self):
        """A status other than success, with the last messages."""
        if self.status == 0:
            return []
        return [f"asf {' '.join(self.arguments)} exits with {self.status}: {' / '.join((self.out + self.err).splitlines()[-3:])}"]


def unique(names):
    """Names as the writers make them unique."""
    used, result = set(), []
    for name in names:
        made, number = name, 2
        while made in used:
            made, number = f"{name}_{number}", number + 1
        used.add(made)
        result.append(made)
    return result


def take_names(source):
    """What {name} becomes for each take."""
    return unique([re.sub(r"[/\0]", "_", name) or "take" for name in source.names])


class Source:
    """Inputs of a conversion, and their figure."""

    def __init__(self, inputs, figure, names):
        self.inputs = inputs
        self.figure = figure
        self.names = names


def stem(path):
    return os.path.splitext(os.path.basename(path))[0]


def read_source(inputs):
    """Reads a BVH or glTF file, or a skeleton with its motions."""
    kind = os.path.splitext(inputs[0])[1].lower()
    if kind == ".asf":
        figure = acclaimfile.read(inputs[0], inputs[1:])
        return Source(inputs, figure, [stem(path) for path in inputs[1:]])
    if kind == ".bvh":
        figure = bvhfile.read(inputs[0])
        return Source(inputs, figure, [stem(inputs[0])] if figure.takes else [])
    figure = gltffile.read(inputs[0])
    return Source(inputs, figure, unique([take.name for take in figure.takes]))


def unwritten(files):
    return [f"{os.path.basename(file)} was not written" for file in files if not os.path.exists(file)]


def to_bvh(program, source, folder):
    """Results: for each take of the source, or for the rest pose, a figure and its take; files; complaints."""
    run = Run(program, "convert", "-q", *source.inputs, "-o", os.path.join(folder, "{name}.bvh"))
    # A rest pose is one file, of any name.
    names = take_names(source) if source.names else [stem(file) for file in sorted(os.listdir(folder))[:1]]
    files = [os.path.join(folder, name + ".bvh") for name in names or ["rest"]]
    complaints = run.complaints() or unwritten(files)
    if complaints:
        return [], files, complaints
    figures = [bvhfile.read(file) for file in files]
    return [(figure, figure.takes[0] if figure.takes else None) for figure in figures], files, []


def to_gltf(program, source, folder, name="out.glb"):
    file = os.path.join(folder, name)
    run = Run(program, "convert", "-q", *source.inputs, "-o", file)
    complaints = run.complaints() or unwritten([file])
    if complaints:
        return [], [file], complaints
    figure = gltffile.read(file)
    names = [take.name for take in figure.takes]
    if source.names and names != source.names:
        complaints = [f"takes {', '.join(names)}, not {', '.join(source.names)}"]
    by_name = dict(zip(names, figure.takes))
    # A rest pose that came by way of a format that always has a motion is one.
    rest = [(figure, figure.takes[0] if figure.takes else None)]
    return [(figure, by_name.get(name)) for name in source.names] or rest, [file], complaints


def to_acclaim(program, source, folder):
    skeleton = os.path.join(folder, "out.asf")
    motions = [os.path.join(folder, name + ".amc") for name in take_names(source)] if source.names else []
    outputs = ["-o", skeleton, "-o", os.path.join(folder, "{name}.amc")] if motions else ["-o", skeleton]
    run = Run(program, "convert", "-q", *source.inputs, *outputs)
    complaints = run.complaints() or unwritten([skeleton, *motions])
    if complaints:
        return [], [skeleton, *motions], complaints
    figure = acclaimfile.read(skeleton, motions)
    return [(figure, take) for take in figure.takes] or [(figure, None)], [skeleton, *motions], []
