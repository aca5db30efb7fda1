"""Reading files."""

from __future__ import annotations

import os
import warnings
from typing import BinaryIO, List, NamedTuple, Optional, Tuple, Union

from . import _core
from ._arguments import CENTIMETRES, Path, choose, name_of_file, rate, to_bytes, whole
from ._clip import Clip
from ._messages import Error, Message, from_core

Source = Union[Path, bytes, BinaryIO]

FORMATS = ["asf", "amc", "bvh", "glb", "gltf"]


def own_name(file: BinaryIO) -> Optional[str]:
    """The path of a file object that is an open file, and not a part of an archive; None for others."""
    try:
        name = file.name
        if isinstance(name, str) and os.path.samestat(os.fstat(file.fileno()), os.stat(name)):
            return os.path.join(".", name)
    except (AttributeError, OSError, ValueError):
        pass
    return None


class Space(NamedTuple):
    """An up axis and a unit; None: not given."""

    up: Optional[str]
    units: Optional[str]

    def check(self, prefix: str) -> Space:
        """Itself, if the words are known; else ValueError."""
        if self.up is not None:
            choose(prefix + "up", self.up, ["y", "z"])
        if self.units is not None:
            choose(prefix + "units", self.units, list(CENTIMETRES))
        return self


def name_of(source: Source, base_dir: Optional[Path]) -> Tuple[bytes, Optional[bytes]]:
    """The name of a source, and its bytes if they are not in the file of that name."""
    if isinstance(source, str) and (len(source) > 4096 or "\n" in source):
        raise ValueError("this text is no path: give the contents of a file as bytes")
    if isinstance(source, (str, os.PathLike)):
        if base_dir is not None:
            raise ValueError("base_dir= is for bytes and file objects: a path says where it is")
        return name_of_file(source), None
    name = "<bytes>"  # Without a folder, it has no other files.
    if not isinstance(source, (bytes, bytearray, memoryview)):
        if not hasattr(source, "read"):
            raise TypeError(f"expected a path, bytes or a binary file object, not {type(source).__name__}")
        name = own_name(source) or "<file>"
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
    base_dir: Optional[Path],
    source_fps: Optional[float],
    allow_unmatched: bool,
) -> Tuple[_core.Source, str]:
    """What is read, and its name as messages show it."""
    source = _core.Source()
    name, source.contents = name_of(path, base_dir)
    source.path = name
    if skeleton is not None:
        source.skeleton, source.skeleton_contents = name_of(skeleton, None)
    if format is not None:
        if not isinstance(format, str):
            raise TypeError(f"format is a word, not {type(format).__name__}")
        if format.lower().lstrip(".") not in FORMATS:
            raise ValueError(f"format={format!r}: expected one of {', '.join(map(repr, FORMATS))}")
        source.format = format.lower().lstrip(".").encode()
    source.source_fps = 0.0 if source_fps is None else rate("source_fps", source_fps)
    source.allow_unmatched = allow_unmatched
    return source, os.fsdecode(name)


def set_motion(source: _core.Source, fps: Optional[float], keep_good_frames: bool, remove_dummies: bool) -> None:
    """How the source's motion is read."""
    source.fps = 0.0 if fps is None else rate("fps", fps)
    source.keep_good_frames, source.remove_dummies = keep_good_frames, remove_dummies


def read(source: _core.Source, shown: str, to: Space, own: Space) -> Tuple[List[Clip], int]:
    """The clips of a source, and how many takes it has. Warns of what the file lacks (to the caller's caller).

    to, own: up axis and unit of the clips, and of the file's numbers
    """
    clips, takes, skeleton, format, raw = _core.load(source)
    messages = from_core(raw)
    if clips is None:
        raise Error(messages)
    if os.path.exists(skeleton):
        skeleton = os.path.abspath(skeleton)  # The current folder may change.
    if own.units is not None and format != "bvh":
        raise ValueError(f"source_units= is for BVH: {shown} says what its lengths are in")
    if source.source_fps and format != "amc":
        warnings.warn(f"source_fps= is for AMC files, and not used for {shown}", UserWarning, stacklevel=3)
    warn_of(messages, shown, any(is_default for _, _, is_default in clips) and not source.source_fps)
    stem = os.path.splitext(os.path.basename(skeleton))[0]
    made = [
        Clip._make(core, name=name or stem, units=own.units or "cm", up=own.up or "y", skeleton=skeleton, messages=messages)
        for core, name, _ in clips
    ]
    return [clip.to(up=to.up or "y", units=to.units or "cm") for clip in made], takes


def warn_of(messages: List[Message], shown: str, is_default_rate: bool) -> None:
    """Warns of the first problem of a file, and of a rate that it does not say (to the caller of the caller's caller)."""
    warned = [message for message in messages if message.severity != "note"]
    if warned:
        more = f", and {len(warned) - 1} more in the clip's messages" if len(warned) > 1 else ""
        warnings.warn(f"{warned[0]}{more}", UserWarning, stacklevel=4)
    if is_default_rate:
        warnings.warn(f"{shown} does not say its frame rate, which counts as 120 a second: give source_fps=", UserWarning, stacklevel=4)


def load(
    path: Source,
    skeleton: Optional[Source] = None,
    *,
    fps: Optional[float] = None,
    source_fps: Optional[float] = None,
    take: Optional[Union[str, int]] = None,
    up: Optional[str] = None,
    units: Optional[str] = None,
    source_up: Optional[str] = None,
    source_units: Optional[str] = None,
    format: Optional[str] = None,
    base_dir: Optional[Path] = None,
    allow_unmatched: bool = False,
    keep_good_frames: bool = False,
    remove_dummies: bool = False,
) -> Clip:
    """The motion of a file: AMC with its skeleton, BVH, GLB or glTF. Of an ASF file alone, the rest pose in one frame.

    path: a path, bytes, or a file object opened for bytes
    skeleton: the ASF file of an AMC motion; else it is searched for in the motion's folder: the one that the motion's header names, the
        one whose name begins the motion's (01.asf for 01_01.amc), or the only one
    fps: the rate wanted, frames a second; else that of the file
    source_fps: the rate of an AMC file, whatever it says. One that does not say its rate counts as 120 frames a second, with a warning.
    take: which take, by name or index from 0; else the first, with a warning if there are more
    up: "y" or "z": the axis that points up in the clip; else "y". The axes of joints turn, too
    units: of lengths in the clip: "cm", "m" or "in"; else centimetres
    source_up: "z" for a file whose figure stands along z, such as one that save() made of a clip with z up
    source_units: what the numbers of a BVH file are in, which does not say it; the other formats do
    format: "asf", "amc", "bvh", "glb" or "gltf", if the contents do not show it
    base_dir: for bytes and file objects, where their skeleton or buffers are; else that is the folder of the file object
    allow_unmatched: read an AMC motion of another skeleton, for the bones that both have
    keep_good_frames: after an error in a motion, the frames before it
    remove_dummies: leave out bones of no length that only other programs need

    What the file is warned of is in the clip's messages; a UserWarning has the first.

    >>> qex.load("samples/walk.amc", fps=30, units="m", up="z")
    <qex.Clip 'walk': 35 joints, 61 frames, 30 a second, m, z up>
    """
    to, own = Space(up, units).check(""), Space(source_up, source_units).check("source_")
    source, shown = make_source(path, skeleton, format, base_dir, source_fps, allow_unmatched)
    set_motion(source, fps, keep_good_frames, remove_dummies)
    if isinstance(take, str):
        source.take = to_bytes(take)
    index = None if take is None or isinstance(take, str) else whole("take", take)
    source.first_only = index is None
    clips, takes = read(source, shown, to, own)
    if take is None and takes > 1:
        warnings.warn(f"{shown} has {takes} takes: this is the first, qex.load_all gives all", UserWarning, stacklevel=2)
    if index is not None and not -len(clips) <= index < len(clips):
        raise IndexError(f"take={index}: {shown} has the takes 0 to {len(clips) - 1}")
    return clips[index or 0]


def load_all(
    path: Source,
    skeleton: Optional[Source] = None,
    *,
    fps: Optional[float] = None,
    source_fps: Optional[float] = None,
    up: Optional[str] = None,
    units: Optional[str] = None,
    source_up: Optional[str] = None,
    source_units: Optional[str] = None,
    format: Optional[str] = None,
    base_dir: Optional[Path] = None,
    allow_unmatched: bool = False,
    keep_good_frames: bool = False,
    remove_dummies: bool = False,
) -> List[Clip]:
    """All takes of a file, in its order; arguments as for load().

    >>> [clip.name for clip in qex.load_all("samples/walk.amc")]
    ['walk']
    """
    to, own = Space(up, units).check(""), Space(source_up, source_units).check("source_")
    source, shown = make_source(path, skeleton, format, base_dir, source_fps, allow_unmatched)
    set_motion(source, fps, keep_good_frames, remove_dummies)
    return read(source, shown, to, own)[0]
