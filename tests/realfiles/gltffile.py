"""Reads the nodes, skins and animations of glTF 2.0 by the format's public definition."""
import base64
import json
import os
import struct
import urllib.parse

import numpy

from figure import Figure, FileError, Joint, Take

CENTIMETRES = 100.0
COMPONENTS = {"SCALAR": 1, "VEC2": 2, "VEC3": 3, "VEC4": 4, "MAT2": 4, "MAT3": 9, "MAT4": 16}
TYPES = {5120: "i1", 5121: "u1", 5122: "<i2", 5123: "<u2", 5125: "<u4", 5126: "<f4"}
PATHS = ("translation", "rotation", "scale")
REST = {"translation": (0.0, 0.0, 0.0), "rotation": (0.0, 0.0, 0.0, 1.0), "scale": (1.0, 1.0, 1.0)}


class Model:
    """The file's JSON and buffers."""

    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        self.folder = os.path.dirname(path)
        chunks = {}
        if data[:4] == b"glTF":
            start = 12
            while start + 8 <= len(data):
                length, kind = struct.unpack_from("<I4s", data, start)
                chunks.setdefault(kind, data[start + 8 : start + 8 + length])
                start += 8 + length
            data = chunks[b"JSON"]
        self.json = json.loads(data.decode("utf-8-sig"))
        self.buffers = [self.buffer(entry, chunks.get(b"BIN\0")) for entry in self.json.get("buffers", [])]

    def buffer(self, entry, binary):
        uri = entry.get("uri")
        if uri is None:
            return binary
        if uri.startswith("data:"):
            return base64.b64decode(uri.split(",", 1)[1])
        path = os.path.join(self.folder, urllib.parse.unquote(uri))
        if not os.path.exists(path):
            return None
        with open(path, "rb") as file:
            return file.read()

    def numbers(self, view, offset, kind, components, count):
        """Numbers (count, components) of a buffer view, with their type in the file."""
        entry = self.json["bufferViews"][view]
        data = self.buffers[entry["buffer"]]
        if data is None:
            raise FileError("a buffer is missing")
        item = numpy.dtype(TYPES[kind])
        stride = entry.get("byteStride") or item.itemsize * components
        start = entry.get("byteOffset", 0) + offset
        return numpy.ndarray((count, components), item, data, start, (stride, item.itemsize)).copy()

    def accessor(self, index):
        """An accessor's values (count, components) as doubles."""
        entry = self.json["accessors"][index]
        kind, components, count = entry["componentType"], COMPONENTS[entry["type"]], entry["count"]
        if "bufferView" in entry:
            values = self.numbers(entry["bufferView"], entry.get("byteOffset", 0), kind, components, count)
        else:
            values = numpy.zeros((count, components), TYPES[kind])
        if "sparse" in entry:
            sparse = entry["sparse"]
            at, into = sparse["indices"], sparse["values"]
            rows = self.numbers(at["bufferView"], at.get("byteOffset", 0), at["componentType"], 1, sparse["count"])[:, 0]
            values[rows] = self.numbers(into["bufferView"], into.get("byteOffset", 0), kind, components, sparse["count"])
        result = values.astype(float)
        if entry.get("normalized"):
            result = numpy.maximum(result / numpy.iinfo(values.dtype).max, -1.0)
        return result


class Channel:
    """Keys of one property of one node."""

    def __init__(self, model, sampler, path):
        self.times = model.accessor(sampler["input"])[:, 0]
        self.values = model.accessor(sampler["output"])
        self.kind = sampler.get("interpolation", "LINEAR")
        self.is_rotation = path == "rotation"

    def key(self, index, part=1):
        return self.values[3 * index + part] if self.kind == "CUBICSPLINE" else self.values[index]

    def at(self, time):
        last = len(self.times) - 1
        # Times are in single precision: a time that close to a key means the key.
        slack = 1e-6 + 2.4e-7 * abs(time)
        index = int(numpy.searchsorted(self.times, time + slack, side="right")) - 1
        if index < 0:
            return self.key(0)
        if index >= last or self.kind == "STEP" or time <= self.times[index]:
            return self.key(index)
        span = self.times[index + 1] - self.times[index]
        return self.between(index, (time - self.times[index]) / span, span)

    def between(self, index, s, span):
        first, second = self.key(index), self.key(index + 1)
        if self.kind == "CUBICSPLINE":
            leaving, arriving = self.key(index, 2), self.key(index + 1, 0)
            return (
                (2 * s**3 - 3 * s**2 + 1) * first
                + span * (s**3 - 2 * s**2 + s) * leaving
                + (3 * s**2 - 2 * s**3) * second
                + span * (s**3 - s**2) * arriving
            )
        if not self.is_rotation:
            return first + s * (second - first)
        first, second = first / (numpy.linalg.norm(first) or 1.0), second / (numpy.linalg.norm(second) or 1.0)
        cosine = float(first @ second)
        second, cosine = (-second, -cosine) if cosine < 0 else (second, cosine)
        angle = numpy.arctan2(numpy.linalg.norm(second - cosine * first), cosine)
        if angle < 1e-6:
            return first + s * (second - first)
        return (numpy.sin((1 - s) * angle) * first + numpy.sin(s * angle) * second) / numpy.sin(angle)


def rotation_matrices(quaternions):
    lengths = numpy.linalg.norm(quaternions, axis=1, keepdims=True)
    x, y, z, w = (quaternions / numpy.where(lengths > 0, lengths, 1.0)).T
    rows = [[1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)],
            [2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)],
            [2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)]]  # fmt: skip
    return numpy.moveaxis(numpy.array(rows), 2, 0)


class Nodes:
    """The nodes of the file's scene, parents first."""

    def __init__(self, model):
        self.model = model
        self.nodes = model.json.get("nodes", [])
        scenes = model.json.get("scenes", [])
        if scenes:
            roots = scenes[model.json.get("scene", 0)].get("nodes", [])
        else:
            children = {child for node in self.nodes for child in node.get("children", [])}
            roots = [index for index in range(len(self.nodes)) if index not in children]
        self.order, self.parents = [], {}
        todo = [(root, None) for root in reversed(roots)]
        while todo:
            node, parent = todo.pop()
            self.parents[node] = parent
            self.order.append(node)
            todo.extend((child, node) for child in reversed(self.nodes[node].get("children", [])))

    def joints(self):
        index_of, joints = {node: index for index, node in enumerate(self.order)}, []
        wanted = self.wanted()
        for node in self.order:
            parent = self.parents[node]
            joints.append(Joint(self.nodes[node].get("name") or f"node_{node}", -1 if parent is None else index_of[parent]))
            joints[-1].is_wanted = node in wanted
        return joints

    def wanted(self):
        """Nodes that are animated or a skin's joints, with their ancestors; all that hold no skinned mesh when there are none."""
        found = {joint for skin in self.model.json.get("skins", []) for joint in skin.get("joints", [])}
        for animation in self.model.json.get("animations", []):
            found |= {channel["target"].get("node") for channel in animation["channels"] if channel["target"].get("path") in PATHS}
        found = {node for node in found if node in self.parents}
        if not found:
            return {node for node in self.order if "skin" not in self.nodes[node]}
        for node in list(found):
            while self.parents[node] is not None:
                node = self.parents[node]
                found.add(node)
        return found

    def local_matrices(self, channels, times):
        result = numpy.zeros((len(times), len(self.order), 4, 4))
        for index, node in enumerate(self.order):
            result[:, index] = self.node_matrices(node, channels, times)
        return result

    def node_matrices(self, node, channels, times):
        entry = self.nodes[node]
        tracks = [channels.get((node, path)) for path in PATHS]
        if "matrix" in entry and not any(tracks):
            matrix = numpy.array(entry["matrix"], dtype=float).reshape(4, 4).T.copy()
            matrix[:3, 3] *= CENTIMETRES
            return numpy.tile(matrix, (len(times), 1, 1))
        values = []
        for path, track in zip(PATHS, tracks):
            values.append(numpy.array([entry.get(path, REST[path]) if track is None else track.at(time) for time in times], dtype=float))
        result = numpy.zeros((len(times), 4, 4))
        result[:, :3, :3] = rotation_matrices(values[1]) * values[2][:, None, :]
        result[:, :3, 3] = values[0] * CENTIMETRES
        result[:, 3, 3] = 1.0
        return result


def read_channels(model, animation, nodes):
    channels = {}
    for entry in animation["channels"]:
        target = (entry["target"].get("node"), entry["target"].get("path"))
        if target[0] in nodes.parents and target[1] in PATHS and target not in channels:
            channels[target] = Channel(model, animation["samplers"][entry["sampler"]], target[1])
    return channels


def take_of(nodes, name, channels):
    times = numpy.unique(numpy.concatenate([channel.times for channel in channels.values()]))
    return Take(name, times, None, lambda at: nodes.local_matrices(channels, at))


def read(path):
    model = Model(path)
    nodes = Nodes(model)
    takes = []
    for number, animation in enumerate(model.json.get("animations", []), 1):
        channels = read_channels(model, animation, nodes)
        if channels:
            takes.append(take_of(nodes, animation.get("name") or f"Take {number}", channels))
    return Figure(nodes.joints(), nodes.local_matrices({}, [0.0]), takes)
