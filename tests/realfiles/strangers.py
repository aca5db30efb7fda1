"""Checks what happens when a motion meets a skeleton that is not its own, and whether prefixes of names survive."""
import json
import os
import struct

import acclaimfile
import convert
import gltffile

PREFIX = "mixamorig:"
STRANGE_BONES = 12


def write_stranger(path, root_order=("tx", "ty", "tz", "rx", "ry", "rz")):
    """A skeleton whose bones have names that no figure has."""
    names = [f"stranger_{number}" for number in range(STRANGE_BONES)]
    bones = "".join(
        f"  begin\n    id {number}\n    name {name}\n    direction 0 1 0\n    length 1\n    axis 0 0 0 XYZ\n    dof rx ry rz\n"
        "    limits (-180 180)\n    (-180 180)\n    (-180 180)\n  end\n"
        for number, name in enumerate(names, 1)
    )
    family = "".join(f"    {parent} {child}\n" for parent, child in zip(["root", *names], names))
    with open(path, "w", encoding="ascii") as file:
        file.write(
            f":version 1.10\n:name stranger\n:units\n  mass 1.0\n  length 1.0\n  angle deg\n:root\n  order {' '.join(root_order)}\n  axis XYZ\n"
            f"  position 0 0 0\n  orientation 0 0 0\n:bonedata\n{bones}:hierarchy\n  begin\n{family}  end\n"
        )


def must_fail(run, output):
    """Complaints unless the call fails because of its input, says why, and writes nothing; with --allow-unmatched it must succeed."""
    complaints = []
    if run.status != 1:
        complaints.append(f"asf {' '.join(run.arguments)} exits with {run.status}, not 1")
    if "error:" not in run.err or "match" not in run.err:
        complaints.append(f"no error that says how many match: {run.err.strip()[-200:]}")
    if os.path.exists(output):
        complaints.append("the output was written")
    return complaints


def refused(program, folder, inputs, outputs):
    """Complaints unless a conversion is refused, and allowed on request."""
    output = os.path.join(folder, outputs[-1])
    arguments = ["convert", "-q", *inputs, *outputs[:-1], output]
    complaints = must_fail(convert.Run(program, *arguments), output)
    return complaints + convert.Run(program, *arguments, "--allow-unmatched").complaints()


def skeleton_of_another(program, source, folder):
    stranger = os.path.join(folder, "stranger.asf")
    write_stranger(stranger)
    take = ["--take", source.names[0]] if len(source.names) > 1 else []
    inputs = source.inputs if source.inputs[0].lower().endswith((".bvh", ".glb", ".gltf")) else source.inputs[:2]
    return refused(program, folder, [*inputs, *(take if len(inputs) == 1 else [])], ["--skeleton", stranger, "-o", "stranger.amc"])


def other_skeletons(own, root_order):
    """Skeletons of other makers in the data folders that have fewer than a third of the names, and roots of as many values."""
    found = []
    for variable in ("ASF_CORPUS_DIR", "ASF_OTHERS_DIR"):
        for folder, _, files in sorted(os.walk(os.environ.get(variable, os.devnull))):
            found += [os.path.join(folder, file) for file in sorted(files) if file.lower().endswith(".asf")]
    for path in found:
        skeleton = acclaimfile.read_skeleton(path)
        names = {bone for bone, entry in skeleton.bones.items() if entry.dofs}
        if names and len(skeleton.root.dofs) == len(root_order) and 3 * len(names & own) < min(len(names), len(own)):
            yield path


def motion_of_another(program, survey, source, folder):
    stranger = os.path.join(folder, "stranger.asf")
    root_order = acclaimfile.read_skeleton(source.inputs[0]).root.dofs
    write_stranger(stranger, root_order)
    complaints = []
    for number, path in enumerate([stranger, *list(other_skeletons(survey.moving, root_order))[:4]]):
        complaints += refused(program, folder, [path, source.inputs[1]], ["-o", f"foreign-{number}.bvh"])
    return complaints


def rename_nodes(file, output, rename):
    """Copies a GLB file with other names."""
    with open(file, "rb") as opened:
        data = opened.read()
    length = struct.unpack_from("<I", data, 12)[0]
    content = json.loads(data[20 : 20 + length])
    for node in content["nodes"]:
        if "name" in node:
            node["name"] = rename(node["name"])
    text = json.dumps(content).encode()
    text += b" " * (-len(text) % 4)
    rest = data[20 + length :]
    with open(output, "wb") as opened:
        opened.write(b"glTF" + struct.pack("<III", 2, 20 + len(text) + len(rest), len(text)) + b"JSON" + text + rest)


def can_come_back(name):
    """Whether a skeleton file can hold a name as it is."""
    return len(name) <= 50 and name.isascii() and name.isprintable() and not set(name) & set(" ,()#")


def prefixed_names(program, survey, source, glb, folder):
    """Complaints if names with a prefix do not come back from a skeleton file."""
    prefixed = os.path.join(folder, "prefixed.glb")
    rename_nodes(glb[0], prefixed, lambda name: name if ":" in name else PREFIX + name)
    before = gltffile.read(prefixed)
    _, files, complaints = convert.to_acclaim(program, convert.Source([prefixed], before, source.names), folder)
    if complaints:
        return complaints
    back = os.path.join(folder, "back.glb")
    complaints = convert.Run(program, "convert", "-q", *files, "-o", back).complaints()
    if complaints:
        return complaints
    names = {survey.figure.joints[index].name for index in survey.required if survey.figure.joints[index].parent >= 0}
    wanted = {name if ":" in name else PREFIX + name for name in names if not name.endswith("_End")}
    lost = sorted(name for name in wanted if can_come_back(name)) if wanted else []
    found = {joint.name for joint in gltffile.read(back).joints}
    lost = [name for name in lost if name not in found]
    return [f"{len(lost)} of {len(wanted)} names did not come back: {', '.join(lost[:5])}"] if lost else []
