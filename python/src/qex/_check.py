"""Checking files."""

from __future__ import annotations

from typing import List, Optional

from . import _core
from ._arguments import Path
from ._files import Source, make_source
from ._messages import Message, from_core


def check(
    path: Source,
    skeleton: Optional[Source] = None,
    *,
    source_fps: Optional[float] = None,
    format: Optional[str] = None,
    base_dir: Optional[Path] = None,
    allow_unmatched: bool = False,
    limits: bool = True,
) -> List[Message]:
    """Every problem in a file, as asf check finds them, by line; arguments as for load(). A file that cannot be read has an error among
    them: this raises nothing for it.

    limits: warn of values outside the skeleton's limits

    >>> [message for message in qex.check("samples/walk.amc") if message.severity == "error"]
    []
    >>> print(qex.check(b":version 1.10\\n:nmae x\\n:root\\n  order TX", format="asf")[0])
    <bytes>:2: warning: Ignoring unknown keyword (:nmae x)
    """
    source, _ = make_source(path, skeleton, format, base_dir, source_fps, allow_unmatched)
    source.limits = limits
    return from_core(_core.check(source))
