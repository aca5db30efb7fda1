"""Forward kinematics of the arrays of `asf convert -o OUT.npz`, by their description in docs/arrays.md."""
import numpy

TOLERANCE = 1e-5  # Of the figure's extent: rounding to single precision.

SHAPES = {
    "fps": ("<f8", ()),
    "names": ("<U", ("joints",)),
    "parents": ("<i4", ("joints",)),
    "is_end": ("|b1", ("joints",)),
    "rest_positions": ("<f4", ("joints", 3)),
    "rest_rotations": ("<f4", ("joints", 4)),
    "local_rotations": ("<f4", ("frames", "joints", 4)),
    "root_positions": ("<f4", ("frames", 3)),
    "world_positions": ("<f4", ("frames", "joints", 3)),
    "world_rotations": ("<f4", ("frames", "joints", 4)),
    "dof_names": ("<U", ("dofs",)),
    "dof_angles": ("<f4", ("frames", "dofs")),
    "dof_limits": ("<f4", ("dofs", 2)),
}
MAYBE = {
    "local_positions": ("<f4", ("frames", "joints", 3)),
    "local_scalings": ("<f4", ("frames", "joints", 3)),
}


def load(path):
    """All arrays, none of them pickled."""
    with numpy.load(path, allow_pickle=False) as archive:
        return {name: archive[name] for name in archive.files}


def check_shapes(arrays, shapes, maybe, counts):
    for name, (dtype, shape) in {**shapes, **{name: maybe[name] for name in maybe if name in arrays}}.items():
        assert name in arrays, f"there is no array {name}"
        expected = tuple(counts[axis] if isinstance(axis, str) else axis for axis in shape)
        assert arrays[name].shape == expected, f"{name} has the shape {arrays[name].shape}, not {expected}"
        assert arrays[name].dtype.str.startswith(dtype), f"{name} is {arrays[name].dtype.str}, not {dtype}"
        if arrays[name].dtype.kind == "f" and name != "dof_limits":
            assert numpy.isfinite(arrays[name]).all(), f"{name} is not finite"
    unknown = set(arrays) - set(shapes) - set(maybe)
    assert not unknown, f"unknown arrays {unknown}"


def product(left, right):
    """Of quaternions w, x, y, z; the right one is applied first."""
    w, x, y, z = numpy.moveaxis(left, -1, 0)
    v, a, b, c = numpy.moveaxis(right, -1, 0)
    return numpy.stack(
        [w * v - x * a - y * b - z * c, w * a + x * v + y * c - z * b, w * b - x * c + y * v + z * a, w * c + x * b - y * a + z * v], -1
    )


def matrices(rotations):
    w, x, y, z = numpy.moveaxis(rotations / numpy.linalg.norm(rotations, axis=-1, keepdims=True), -1, 0)
    rows = [
        [1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)],
        [2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)],
        [2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)],
    ]
    return numpy.stack([numpy.stack(row, -1) for row in rows], -2)


def forward(arrays):
    """World positions, rotations and linear maps, from the local arrays alone."""
    local = arrays["local_rotations"].astype("f8")
    frames, joints = local.shape[:2]
    positions = numpy.repeat(arrays["rest_positions"][None].astype("f8"), frames, 0)
    positions[:, 0] = arrays["root_positions"]
    positions = arrays.get("local_positions", positions).astype("f8")
    maps = matrices(local)
    if "local_scalings" in arrays:
        maps = maps * arrays["local_scalings"].astype("f8")[:, :, None, :]
    rotations = local.copy()
    for joint, parent in enumerate(arrays["parents"]):
        assert parent < joint, "a parent comes after its child"
        if parent >= 0:
            positions[:, joint] = positions[:, parent] + numpy.einsum("fij,fj->fi", maps[:, parent], positions[:, joint])
            maps[:, joint] = maps[:, parent] @ maps[:, joint]
            rotations[:, joint] = product(rotations[:, parent], local[:, joint])
    return positions, rotations


def distance_of_rotations(one, other):
    """The largest component in which q, or -q, differs."""
    if one.size == 0:
        return 0.0
    return numpy.minimum(numpy.abs(one - other).max(-1), numpy.abs(one + other).max(-1)).max()


def check_continuity(rotations, name):
    assert (numpy.abs(numpy.linalg.norm(rotations, axis=-1) - 1) < 1e-5).all(), f"{name} are no unit quaternions"
    assert (rotations[:1, ..., 0] >= 0).all(), f"{name}: w is negative in the first frame"
    assert ((rotations[1:] * rotations[:-1]).sum(-1) >= -1e-6).all(), f"{name} change sign"


def check_archive(path):
    """The arrays of a file, and how far they are from each other, as a fraction of the extent."""
    arrays = load(path)
    counts = {"joints": len(arrays["names"]), "frames": len(arrays["root_positions"]), "dofs": len(arrays["dof_names"])}
    assert (arrays["dof_limits"][:, 0] <= arrays["dof_limits"][:, 1]).all() and not numpy.isnan(arrays["dof_limits"]).any()
    check_shapes(arrays, SHAPES, MAYBE, counts)
    positions, rotations = forward(arrays)
    extent = max(numpy.ptp(arrays["world_positions"].astype("f8"), axis=(0, 1)).max(), numpy.abs(arrays["world_positions"]).max(), 1e-3)
    error = numpy.abs(positions - arrays["world_positions"]).max() / extent
    turn = distance_of_rotations(rotations, arrays["world_rotations"].astype("f8"))
    assert error < TOLERANCE, f"positions differ by {error:.1e} of the extent"
    assert turn < 1e-5, f"rotations differ by {turn:.1e}"
    for name in ("local_rotations", "world_rotations", "rest_rotations"):
        rows = arrays[name] if name != "rest_rotations" else arrays[name][None]
        check_continuity(rows.astype("f8"), name)
    return arrays, max(error, turn)


def check_same_as_tables(asf, take, arrays):
    """What the commands positions and rotations write of the same frames is the same."""
    rate = ["--fps", repr(float(arrays["fps"]))]
    table = load(asf.write("positions", ".npz", "--ends", *take, *rate))
    assert list(table["names"]) == list(arrays["names"])
    assert (table["parents"] == arrays["parents"]).all()
    count = min(len(table["times"]), len(arrays["world_positions"]))
    assert abs(len(table["times"]) - len(arrays["world_positions"])) <= 1
    scale = max(numpy.abs(arrays["world_positions"]).max(), 1.0)
    same = numpy.abs(table["world_positions"][:count].astype("f8") - arrays["world_positions"][:count]).max()
    assert same <= 1e-5 * scale, f"asf positions differs by {same}"
    for space in ("local", "world"):
        name = f"{space}_rotations"
        table = load(asf.write("rotations", ".npz", "--ends", "--space", space, *take, *rate))
        assert numpy.abs(table[name][:count].astype("f8") - arrays[name][:count]).max() <= 1e-5, name


def check_turned(asf, take, arrays):
    """Metres with z up are the same motion."""
    turned, error = check_archive(asf.write("convert", ".npz", *take, "--up", "z", "--units", "m"))
    for name in ("world_positions", "root_positions", "rest_positions"):
        x, y, z = numpy.moveaxis(arrays[name].astype("f8") / 100, -1, 0)
        scale = max(1.0, numpy.abs(turned[name]).max())
        assert numpy.abs(turned[name] - numpy.stack([x, -z, y], -1)).max() <= 1e-6 * scale, f"{name} with z up"
    w, x, y, z = numpy.moveaxis(arrays["world_rotations"].astype("f8"), -1, 0)
    assert distance_of_rotations(turned["world_rotations"], numpy.stack([w, x, -z, y], -1)) <= 1e-6, "rotations with z up"
    return error


def check(asf, take):
    arrays, error = check_archive(asf.write("convert", ".npz", *take))
    check_same_as_tables(asf, take, arrays)
    turned = check_turned(asf, take, arrays)
    check_archive(asf.write("convert", ".npz", *take, "--fps", "24", "--in-place"))
    return f"{len(arrays['root_positions'])} frames, {len(arrays['names'])} joints, {max(error, turned):.1e}"
