"""Run inside Blender: runs a Python expression, as --python-expr does, and prints what it made.

blender --background --factory-startup --python blender_recipe.py -- EXPRESSION

Prints a line "result" with the rate, the last frame, and the height of the first armature in frame 1.
"""

import builtins
import sys

import bpy
import io_anim_bvh.import_bvh


def open_any(file, mode="r", *arguments, **named):
    """open() without the mode 'U', which the add-on uses and newer versions of Python reject."""
    return builtins.open(file, mode.replace("U", ""), *arguments, **named)


io_anim_bvh.import_bvh.open = open_any
exec(sys.argv[-1])
scene = bpy.context.scene
scene.frame_set(1)
armature = next(item for item in bpy.data.objects if item.type == "ARMATURE")
heights = [(armature.matrix_world @ bone.head).z for bone in armature.pose.bones]
print("result", scene.render.fps / scene.render.fps_base, scene.frame_end, max(heights) - min(heights))
