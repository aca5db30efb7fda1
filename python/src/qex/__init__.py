"""Motion capture as NumPy arrays: ASF and AMC, BVH, GLB and glTF.

>>> clip = qex.load("samples/walk.amc")
>>> clip
<qex.Clip 'walk': 35 joints, 241 frames, 120 a second, cm, y up>
>>> clip.positions().shape          # of every joint in the world, in every frame
(241, 35, 3)
>>> clip.rotations(form="euler", order="ZYX", degrees=True).dtype
dtype('float32')

A clip does not change: every step gives a new one.
"""

from ._check import check
from ._clip import Clip
from ._dofs import Angles
from ._files import load, load_all
from ._messages import Error, Message
from ._join import join
from ._version import __version__

__all__ = ["Angles", "Clip", "Error", "Message", "__version__", "check", "join", "load", "load_all"]
