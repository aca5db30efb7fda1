"""`asf angles` against the numbers in the files themselves."""
import csv
import json
import re

import numpy

import kinematics

INCH = 2.54


def words_of(path):
    """The lines of a text file as words, without comments."""
    with open(path, encoding="latin-1") as file:
        return [line.split("#")[0].split() for line in file]


def read_skeleton(path):
    """{bone: [(word, lower limit, upper limit)]}, whether angles are degrees, and centimetres in a unit of length."""
    text = " ".join(" ".join(words) for words in words_of(path))
    units = text.split(":units", 1)[1].split(":", 1)[0]
    unit = INCH / float(re.search(r"length ([-+.\deE]+)", units).group(1)) if "length" in units else INCH
    is_degrees = "rad" not in units.lower()
    factor = 1.0 if is_degrees else 180 / numpy.pi
    root = re.search(r":root.*?order ((?:[TR][XYZ] ?)+)", text, re.IGNORECASE)
    bones = {"root": [(word.lower(), -numpy.inf, numpy.inf) for word in root.group(1).split()]}
    for bone in re.findall(r"begin (.*?) end", text.split(":bonedata", 1)[1].split(":hierarchy", 1)[0]):
        name = re.search(r"name (\S+)", bone).group(1)
        dofs = re.search(r"dof ((?:(?:[tr][xyz]|l)\b ?)+)", bone, re.IGNORECASE)
        if dofs is None:
            continue
        names = dofs.group(1).lower().split()
        limits = re.findall(r"\(\s*(\S+?)\s+(\S+?)\s*\)", bone)
        limits += [("-inf", "inf")] * (len(names) - len(limits))
        scale = [unit if word[0] == "t" else factor for word in names]
        bones[name] = [(word, float(low) * s, float(high) * s) for word, (low, high), s in zip(names, limits, scale)]
    return bones, is_degrees, unit


def read_motion(path, bones, is_degrees, unit):
    """{frame: {bone.word: value}}."""
    frames, frame = {}, None
    for words in words_of(path):
        if not words:
            continue
        if words[0].upper() in (":RADIANS", ":DEGREES"):
            is_degrees = words[0].upper() == ":DEGREES"
        elif len(words) == 1 and words[0].lstrip("-").isdigit():
            frame = frames.setdefault(int(words[0]), {})
        elif frame is not None and words[0] in bones:
            angle = 1.0 if is_degrees else 180 / numpy.pi
            for (word, _, _), number in zip(bones[words[0]], words[1:]):
                frame[f"{words[0]}.{word}"] = float(number) * (unit if word[0] == "t" else angle)
    return frames


def read_bvh(path):
    """The same of a BVH file, by joint name and word; a joint's name may have blanks."""
    channels, name, frames, rows = [], "", {}, False
    with open(path, encoding="latin-1") as file:
        for line in file:
            words = line.split()
            if rows and words:
                numbers = [float(word) for word in words]
                frames[len(frames) + 1] = dict(zip(channels, numbers))
            elif words and words[0].upper() in ("ROOT", "JOINT"):
                name = line.split(None, 1)[1].split("{")[0].strip()
            elif words and words[0].upper() == "CHANNELS":
                for word in words[2:]:
                    channels.append(f"{name}.{'r' if 'rot' in word.lower() else 't'}{word[0].lower()}")
            elif words and " ".join(words[:2]).upper() == "FRAME TIME:":
                rows = True
    return frames


def check_numbers(arrays, frames):
    """How far the values are from those of the file."""
    largest = 0.0
    for row, number in enumerate(arrays["frames"]):
        frame = frames[int(number)]
        for column, name in enumerate(arrays["dof_names"]):
            if str(name) in frame:
                expected = frame[str(name)]
                error = abs(float(arrays["dof_angles"][row, column]) - expected) / max(1.0, abs(expected))
                assert error < 2e-6, f"frame {number}: {name} is {arrays['dof_angles'][row, column]}, not {expected}"
                largest = max(largest, error)
    return largest


def check_limits(arrays, bones):
    for name, limits in zip(arrays["dof_names"], arrays["dof_limits"]):
        bone, word = str(name).rsplit(".", 1)
        expected = [limit for limit in bones[bone] if limit[0] == word][0][1:]
        assert numpy.allclose(limits, expected, rtol=1e-6, atol=1e-6), f"{name} has the limits {limits}, not {expected}"


def check_tables(asf, arguments, arrays):
    """The same numbers as text, and what is outside the limits."""
    values = arrays["dof_angles"].astype("f8")
    low, high = arrays["dof_limits"].astype("f8").T
    outside = numpy.where(values < low, values - low, numpy.where(values > high, values - high, 0))
    unclear = numpy.minimum(numpy.abs(values - low), numpy.abs(values - high)) < 2e-3
    with open(asf.write("angles", ".csv", *arguments), encoding="utf-8", errors="surrogateescape", newline="") as file:
        rows = list(csv.reader(file))
    assert rows[0] == ["frame", "time", "bone", "dof", "value", "min", "max", "outside"], rows[0]
    numbers = numpy.array([[float(number) for number in row[4:]] for row in rows[1:]]).reshape(*values.shape, 4)
    close = {"rtol": 1e-6, "atol": 2e-5}
    assert numpy.allclose(numbers[..., 0], values, **close) and numpy.allclose(numbers[..., 1], low, **close)
    assert numpy.allclose(numpy.where(unclear, 0, numbers[..., 3]), numpy.where(unclear, 0, outside), rtol=1e-6, atol=1e-4), "outside"
    with open(asf.write("angles", ".json", *arguments), encoding="utf-8") as file:
        table = json.load(file)
    assert [dof["name"] for dof in table["dofs"]] == list(arrays["dof_names"])
    assert numpy.allclose([frame["angles"] for frame in table["frames"]], values, **close)
    listed = numpy.zeros(values.shape, bool)
    for row, frame in enumerate(table["frames"]):
        listed[row, frame["outside"]] = True
    assert ((listed == (outside != 0)) | unclear).all(), "outside, in JSON"
    assert (numpy.load(asf.write("angles", ".npy", *arguments), allow_pickle=False) == arrays["dof_angles"]).all()
    return int((numbers[..., 3] != 0).sum())


def check(asf, take):
    source = asf.inputs[0].lower()
    if source.endswith((".glb", ".gltf")):
        result = asf.run("angles", *take)
        assert result.returncode == 1 and "asf rotations --as euler" in result.stderr, result.stderr
        return "none"
    arguments = [*take, "--frames", "first-last:3"]
    arrays = kinematics.load(asf.write("angles", ".npz", *arguments))
    assert set(arrays) == {"fps", "dof_names", "dof_limits", "frames", "times", "dof_angles"}, set(arrays)
    if source.endswith(".asf"):
        bones, is_degrees, unit = read_skeleton(asf.inputs[0])
        frames = read_motion(asf.inputs[1], bones, is_degrees, unit)
        check_limits(arrays, bones)
        assert len(arrays["dof_names"]) == sum(word[0] != "l" for dofs in bones.values() for word, _, _ in dofs)
    else:
        frames = read_bvh(asf.inputs[0])
        assert numpy.isinf(arrays["dof_limits"]).all()
    error = check_numbers(arrays, frames)
    count = check_tables(asf, arguments, arrays)
    return f"{len(arrays['dof_names'])} degrees of freedom, {count} outside, {error:.1e}"
