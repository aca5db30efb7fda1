"""Reading files."""

from __future__ import annotations

import os
import warnings
from typing import BinaryIO, List, Optional, Tuple, Union

from . import _core
from ._arrays import to_bytes
from ._clip import Clip
from ._messages import Error, Message, from_core
from ._save import name_of_file

Source = Union[str, "os.PathLike[str]", bytes, BinaryIO]

FORMATS = ["asf", "amc", "bvh", "glb", "gltf"]


def name_of(source: Source, base_dir: Optional[Union[str, "os.PathLike[str]"]]) -> Tuple[bytes, Optional[bytes]]:
    """The name of a source, and its bytes if they are not in the file of that name."""
    if isinstance(source, (str, os.PathLike)):
        if base_dir is not None:
            raise ValueError("base_dir= is for bytes and file objects: a path says where it is")
        return name_of_file(source), None
    name = "<bytes>"  # Without a folder: it has no other files.
    if not isinstance(source, (bytes, bytearray, memoryview)):
        if not hasattr(source, "read"):
            raise TypeError(f"expected a path, bytes or a binary file object, not {type(source).__name__}")
        name = source.name if isinstance(getattr(source, "name", None), str) else "<file>"
        source = source.read()
        if not isinstance(source, bytes):
            raise TypeError("expected a file object opened for bytes: open(path, 'rb')")
    if base_dir is not None:
        name = os.path.join(os.fspath(base_dir), os.path.basename(name))
    return os.fsencode(name), bytes(source)


def make_source(
    path: Source,
    skeleton: Optional[Source],
    format: Optional[str],
    base_dir: Optional[Union[str, "os.PathLike[str]"]],
    source_fps: Optional[float],
    allow_unmatched: bool,
) -> _core.Source:
    source = _core.Source()
    source.path, source.contents = name_of(path, base_dir)
    if skeleton is not None:
        source.skeleton, source.skeleton_contents = name_of(skeleton, None)
    if format is not None:
        if format.lower().lstrip(".") not in FORMATS:
            raise ValueError(f"format={format!r}: expected one of {', '.join(map(repr, FORMATS))}")
        source.format = format.lower().lstrip(".").encode()
    source.source_fps = positive("source_fps", source_fps)
    source.allow_unmatched = allow_unmatched
    return source


def positive(what: str, number: Optional[float]) -> float:
    """The number, which is a rate; 0 for None."""
    if number is None:
        return 0.0
    if not 1e-3 <= float(number) <= 1e6:
        raise ValueError(f"{what}={number!r}: expected 0.001 to 1,000,000 frames a second")
    return float(number)


def read(source: _core.Source, up: Optional[str], units: Optional[str], given_rate: bool) -> Tuple[List[Clip], int, List[Message]]:
    """The clips of a source, and how many takes it has. Warns of a rate that the file does not say (to the caller's caller)."""
    clips, takes, skeleton, raw = _core.load(source)
    messages = from_core(raw)
    if clips is None:
        raise Error(messages)
    result = []
    for core, name, is_default_rate in clips:
        clip = Clip._make(core, name=name or os.path.splitext(os.path.basename(skeleton))[0], skeleton=skeleton, messages=messages)
        result.append(clip.to(up=up, units=units))
        if is_default_rate and not given_rate:
            warnings.warn(
                f"{os.fsdecode(source.path)} does not say its frame rate, which counts as 120 a second: give source_fps=",
                UserWarning,
                stacklevel=3,
            )
    return result, takes, messages


def load(
    path: Source,
    skeleton: Optional[Source] = None,
    *,
    fps: Optional[float] = None,
    source_fps: Optional[float] = None,
    take: Optional[Union[str, int]] = None,
    up: Optional[str] = None,
    units: Optional[str] = None,
    format: Optional[str] = None,
    base_dir: Optional[Union[str, "os.PathLike[str]"]] = None,
    allow_unmatched: bool = False,
    keep_good_frames: bool = False,
    remove_dummies: bool = False,
) -> Clip:
    """The motion of a file: AMC with its skeleton, BVH, GLB or glTF. Of an ASF file alone, the rest pose in one frame.

    path: a path, bytes, or a file object opened for bytes
    skeleton: the ASF file of an AMC motion; else it is searched for in the motion's folder: the one that the motion's header names, the
        one whose name begins the motion's (01.asf for 01_01.amc), or the only one
    fps: the rate wanted, frames a second; else that of the file
    source_fps: the rate of an AMC file that does not say its own. Such a file counts as 120 frames a second, with a warning.
    take: which take, by name or index from 0; else the first, with a warning if there are more
    up: "y" or "z". Files are read as y up; with "z" every axis turns, those of joints too
    units: of lengths: "cm", "m" or "in"; else centimetres
    format: "asf", "amc", "bvh", "glb" or "gltf", if the contents do not show it
    base_dir: for bytes and file objects, where their skeleton or buffers are
    allow_unmatched: read an AMC motion of another skeleton, for the bones that both have
    keep_good_frames: after an error in a motion, the frames before it
    remove_dummies: leave out bones of no length that only other programs need

    >>> qex.load("samples/walk.amc", fps=30, units="m", up="z")
    <qex.Clip 'walk': 35 joints, 61 frames, 30 a second, m, z up>
    """
    source = make_source(path, skeleton, format, base_dir, source_fps, allow_unmatched)
    source.fps, source.keep_good_frames, source.remove_dummies = positive("fps", fps), keep_good_frames, remove_dummies
    source.first_only = not isinstance(take, int)
    if isinstance(take, str):
        source.take = to_bytes(take)
    clips, takes, _ = read(source, up, units, source_fps is not None)
    if take is None and takes > 1:
        warnings.warn(f"{os.fsdecode(source.path)} has {takes} takes: this is the first, qex.load_all gives all", UserWarning, stacklevel=2)
    if not isinstance(take, int):
        return clips[0]
    if not -len(clips) <= take < len(clips):
        raise IndexError(f"take={take}: there are {len(clips)} takes")
    return clips[take]


def load_all(
    path: Source,
    skeleton: Optional[Source] = None,
    *,
    fps: Optional[float] = None,
    source_fps: Optional[float] = None,
    up: Optional[str] = None,
    units: Optional[str] = None,
    format: Optional[str] = None,
    base_dir: Optional[Union[str, "os.PathLike[str]"]] = None,
    allow_unmatched: bool = False,
    keep_good_frames: bool = False,
    remove_dummies: bool = False,
) -> List[Clip]:
    """All takes of a file, in its order; arguments as for load().

    >>> [clip.name for clip in qex.load_all("samples/walk.amc")]
    ['walk']
    """
    source = make_source(path, skeleton, format, base_dir, source_fps, allow_unmatched)
    source.fps, source.keep_good_frames, source.remove_dummies = positive("fps", fps), keep_good_frames, remove_dummies
    return read(source, up, units, source_fps is not None)[0]
