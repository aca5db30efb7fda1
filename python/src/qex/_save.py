"""Writing a clip to files."""

from __future__ import annotations

import os
import warnings
from typing import Optional

from . import _core
from ._arguments import CENTIMETRES, Path, choose, euler_order, name_of_file, to_bytes
from ._base import ClipBase
from ._messages import Error, from_core

PRESETS = ["motion-imitation"]


def target_of(clip: ClipBase) -> _core.Target:
    """What the library needs to know of a clip to write or draw it."""
    target = _core.Target()
    target.name = to_bytes(clip.name)
    target.unit = CENTIMETRES[clip.units]
    target.is_z_up = clip.up == "z"
    return target


def bvh_order(order: str) -> str:
    """The letters of rotations() as the library's order, without a repeated axis."""
    word = euler_order(order)[0]
    if word[0] == word[2]:
        raise ValueError(f"order={order!r}: BVH has three different axes")
    return word


class Saving(ClipBase):
    """Writing a clip to files."""

    __slots__ = ()

    def save(
        self,
        *paths: Path,
        skeleton: Optional[Path] = None,
        order: str = "xyz",
        mesh: bool = True,
        preset: Optional[str] = None,
        write_rate: bool = False,
    ) -> None:
        """Writes files, all of them or none: .bvh, .glb, .gltf, .asf, .amc, .npz (arrays) and .csv (positions).

        They have the clip's unit and up axis, but for GLB and glTF, which have metres and y up. BVH does not say its unit, and neither do
        BVH, ASF and AMC which axis is up: load() has source_units= and source_up= for such files. What the writer warns of is a
        UserWarning.

        skeleton: the ASF file of an AMC file that is written alone; else the one that the clip was read with. With an ASF file beside
            it, an AMC file is that one's motion
        order: of BVH's rotations, letters as for rotations(): "ZXY" writes Zrotation Xrotation Yrotation
        mesh: GLB and glTF with a mesh that shows the bones
        preset: "motion-imitation": the arrays of .npz as training code for simulated characters reads them
        write_rate: the rate of an AMC file as a keyword, which some programs do not accept, instead of a comment

        >>> import tempfile; folder = tempfile.TemporaryDirectory()
        >>> clip.save(folder.name + "/walk.bvh", folder.name + "/walk.glb")
        >>> len(qex.load(folder.name + "/walk.glb"))
        241
        >>> folder.cleanup()
        """
        if not paths:
            raise TypeError("save() needs a path")
        target = target_of(self)
        names = [name_of_file(path) for path in paths]
        target.paths = names
        target.order = bvh_order(order).encode()
        target.mesh, target.write_rate = mesh, write_rate
        target.is_for_imitation = preset is not None and bool(choose("preset", preset, PRESETS))
        endings = {os.path.splitext(path)[1].lower() for path in names}
        if b".amc" in endings and b".asf" not in endings:
            own = self.skeleton if self.skeleton and self.skeleton.lower().endswith(".asf") else None
            if self.up == "z":
                raise ValueError("an AMC file alone has the axes of its skeleton, y up: to(up='y') first")
            if skeleton is None and own is None:
                raise ValueError("an AMC file needs a skeleton: save('x.asf', 'x.amc'), or skeleton='existing.asf'")
            target.skeleton = name_of_file(skeleton or own or "")
        elif skeleton is not None:
            raise ValueError("skeleton= is for an AMC file alone")
        written, raw = _core.save(self._raw, target)
        messages = from_core(raw)
        if not written and not any(message.severity == "error" for message in messages):
            raise BrokenPipeError("the reader of a pipe closed it")
        if not written:
            raise Error(messages)
        for message in messages:
            if message.severity == "warning":
                warnings.warn(f"{message.path}: {message.text}", UserWarning, stacklevel=2)
