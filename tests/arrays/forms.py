"""Every form of `asf rotations` read with SciPy, and every kind of file with numpy."""
import csv
import itertools
import json

import numpy
from scipy.spatial.transform import Rotation

import kinematics

ORDERS = ["".join(axes) for axes in itertools.product("XYZ", repeat=3) if axes[0] != axes[1] != axes[2]]


def quaternions_of(rotation):
    return numpy.roll(rotation.as_quat(), 1, axis=-1)


def rotations_of(form, numbers, order=None):
    """The rotations that an array stands for."""
    count = int(numpy.prod(numbers.shape[:2]))
    if form == "quat":
        return Rotation.from_quat(numpy.roll(numbers.reshape(count, 4), -1, axis=-1))
    if form == "matrix":
        return Rotation.from_matrix(numbers.reshape(count, 3, 3))
    if form == "6d":
        columns = numbers.reshape(count, 2, 3)
        third = numpy.cross(columns[:, 0], columns[:, 1])
        return Rotation.from_matrix(numpy.stack([columns[:, 0], columns[:, 1], third], -1))
    if form == "axis-angle":
        return Rotation.from_rotvec(numbers.reshape(count, 3))
    # Lower case: axes that stay fixed.
    return Rotation.from_euler(order.lower(), numbers.reshape(count, 3), degrees=True)


def check_form(asf, arguments, expected, form, order=None):
    options = ["--as", form, *(["--order", order] if order else [])]
    numbers = numpy.load(asf.write("rotations", ".npy", *arguments, *options), allow_pickle=False)
    shape = {"quat": (4,), "matrix": (3, 3), "6d": (6,), "axis-angle": (3,), "euler": (3,)}[form]
    assert numbers.dtype.str == "<f4" and numbers.shape[2:] == shape, f"{form}: {numbers.dtype.str} {numbers.shape}"
    got = quaternions_of(rotations_of(form, numbers.astype("f8"), order))
    # Degrees beyond a full turn keep fewer digits.
    tolerance = 1e-5 + 1e-8 * numpy.abs(numbers).max()
    difference = kinematics.distance_of_rotations(got, expected)
    assert difference < tolerance, f"{form} {order or ''} differs by {difference:.1e}"
    if form == "axis-angle":
        assert (numpy.linalg.norm(numbers.astype("f8"), axis=-1) <= numpy.pi + 1e-6).all()
    return difference


def check_euler_is_near(asf, arguments, order):
    """Of all triples of a rotation, the one nearest to that of the frame before."""
    angles = numpy.load(asf.write("rotations", ".npy", *arguments, "--as", "euler", "--order", order), allow_pickle=False).astype("f8")
    first, middle, last = numpy.moveaxis(angles[1:], -1, 0)
    other = numpy.stack([first + 180, (180 if order[0] != order[2] else 0) - middle, last + 180], -1)
    before = angles[:-1]
    near = numpy.abs(angles[1:] - before)
    other += 360 * numpy.round((before - other) / 360)
    assert (near <= 180 + 1e-3).all(), f"{order}: a step of more than half a turn"
    assert ((near**2).sum(-1) <= ((other - before) ** 2).sum(-1) + 1e-2).all(), f"{order}: another triple is nearer"


def check_files(asf, arguments):
    """The same numbers in every kind of file."""
    numbers = numpy.load(asf.write("rotations", ".npy", *arguments), allow_pickle=False)
    archive = kinematics.load(asf.write("rotations", ".npz", *arguments))
    assert (archive["local_rotations"] == numbers).all()
    assert set(archive) == {"fps", "names", "parents", "frames", "times", "local_rotations"}, set(archive)
    with open(asf.write("rotations", ".json", *arguments), encoding="utf-8") as file:
        table = json.load(file)
    assert table["kind"] == "rotations" and table["space"] == "local" and table["form"] == "quat", table["kind"]
    assert len(table["joints"]) == numbers.shape[1]
    close = {"rtol": 0, "atol": 1e-7}
    assert numpy.allclose([frame["rotations"] for frame in table["frames"]], numbers, **close)
    assert numpy.allclose([frame["time"] for frame in table["frames"]], archive["times"], rtol=0, atol=1e-6)
    assert numpy.allclose([frame["frame"] for frame in table["frames"]], archive["frames"], rtol=0, atol=1e-9)
    for wide in ([], ["--wide"]):
        with open(asf.write("rotations", ".csv", *arguments, *wide), encoding="utf-8", errors="surrogateescape", newline="") as file:
            rows = list(csv.reader(file))
        start = 2 if wide else 3
        values = numpy.array([[float(number) for number in row[start:]] for row in rows[1:]])
        assert numpy.allclose(values.reshape(numbers.shape), numbers, **close), "CSV"
        assert rows[0][:start] == ["frame", "time", "bone"][:start], rows[0][:start]


def check(asf, take):
    largest = 0.0
    count = len(numpy.load(asf.write("positions", ".npy", *take), allow_pickle=False))
    arguments = [*take, "--frames", f"first-last:{1 + count // 300}"]
    for space in ("local", "world"):
        spaced = [*arguments, "--space", space]
        reference = numpy.load(asf.write("rotations", ".npy", *spaced), allow_pickle=False).astype("f8")
        expected = reference.reshape(-1, 4)
        for form in ("quat", "matrix", "6d", "axis-angle"):
            largest = max(largest, check_form(asf, spaced, expected, form))
        for order in ORDERS:
            largest = max(largest, check_form(asf, spaced, expected, "euler", order))
    for order in ("ZXY", "XYX"):
        check_euler_is_near(asf, arguments, order)
    check_files(asf, arguments)
    return f"{len(ORDERS)} orders, {largest:.1e}"
