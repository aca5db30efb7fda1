"""Run inside Blender: imports motion files and writes the positions of the bones' heads.

blender --background --factory-startup --python blender_heads.py -- JOBS.json OUT.json

JOBS.json: [{"file": path of a .bvh or .glb, "fps": frames a second, "frames": [frame, counted from 0, ...]}, ...]
OUT.json:  [{"frame": {"bone": [x, y, z]}}, ...], in the axes and units of the file.
"""

import builtins
import json
import sys

import bpy
import io_anim_bvh.import_bvh
import numpy


def open_any(file, mode="r", *arguments, **named):
    """open() without the mode 'U', which the add-on uses and newer versions of Python reject."""
    return builtins.open(file, mode.replace("U", ""), *arguments, **named)


io_anim_bvh.import_bvh.open = open_any
numpy.bool = bool  # Used by the glTF add-on, removed in newer versions of numpy.


def import_file(job):
    """The imported armature, and Blender's number for the file's first frame."""
    bpy.ops.wm.read_factory_settings(use_empty=True)
    bpy.context.scene.render.fps = job["fps"]
    if job["file"].endswith(".bvh"):
        bpy.ops.import_anim.bvh(filepath=job["file"], frame_start=1)
        first = 1
    else:
        bpy.ops.import_scene.gltf(filepath=job["file"])
        first = 0
    return next(item for item in bpy.data.objects if item.type == "ARMATURE"), first


def heads(armature, frame):
    bpy.context.scene.frame_set(frame)
    result = {}
    for bone in armature.pose.bones:
        x, y, z = armature.matrix_world @ bone.head
        result[bone.name] = [x, z, -y]  # Blender has z up; the files have y up.
    return result


def main():
    jobs_path, out_path = sys.argv[sys.argv.index("--") + 1:]
    with open(jobs_path, encoding="utf-8") as jobs_file:
        jobs = json.load(jobs_file)
    results = []
    for job in jobs:
        armature, first = import_file(job)
        results.append({str(frame): heads(armature, first + frame) for frame in job["frames"]})
    with open(out_path, "w", encoding="utf-8") as out_file:
        json.dump(results, out_file)


main()
