"""From a motion to training arrays, and from a model's output to files: python3 learn.py walk.amc out.bvh out.glb"""

import sys

import numpy as np
import qex

clip = qex.load(sys.argv[1], fps=30, units="m", up="z").in_place()
features = np.concatenate(
    [clip.rotations(form="6d"), clip.positions(), clip.velocities(), clip.angular_velocities()], axis=-1
)  # (frames, joints, 15)
print(features.shape, "from", clip)

rotations = clip.rotations()[::-1]  # What a model gave: here the motion backwards.
root = clip.positions()[::-1, 0]
made = qex.Clip.from_arrays(clip.names, clip.parents, clip.rest_positions, rotations, root, clip.fps, units="m", up="z")
made.save(*sys.argv[2:])
