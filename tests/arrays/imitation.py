"""The arrays of `asf convert --preset motion-imitation`."""
import numpy
from scipy.spatial.transform import Rotation

import kinematics

SHAPES = {
    "fps": ("<f8", ()),
    "body_names": ("<U", ("bodies",)),
    "body_positions": ("<f4", ("frames", "bodies", 3)),
    "body_rotations": ("<f4", ("frames", "bodies", 4)),
    "body_linear_velocities": ("<f4", ("frames", "bodies", 3)),
    "body_angular_velocities": ("<f4", ("frames", "bodies", 3)),
    "dof_names": ("<U", ("dofs",)),
    "dof_positions": ("<f4", ("frames", "dofs")),
    "dof_velocities": ("<f4", ("frames", "dofs")),
}


def differences(numbers, rate):
    """Central differences a second, one-sided at the ends."""
    if len(numbers) < 2:
        return numpy.zeros_like(numbers)
    result = numpy.empty_like(numbers)
    result[1:-1] = (numbers[2:] - numbers[:-2]) * rate / 2
    result[0] = (numbers[1] - numbers[0]) * rate
    result[-1] = (numbers[-1] - numbers[-2]) * rate
    return result


def angular(rotations, rate):
    """The same of rotations, in world axes."""
    frames, bodies = rotations.shape[:2]
    before = numpy.maximum(numpy.arange(frames) - 1, 0)
    after = numpy.minimum(numpy.arange(frames) + 1, frames - 1)
    turned = [Rotation.from_quat(numpy.roll(rotations[index].reshape(-1, 4), -1, axis=-1)) for index in (before, after)]
    vectors = (turned[1] * turned[0].inv()).as_rotvec().reshape(frames, bodies, 3)
    return vectors * rate / numpy.maximum(after - before, 1)[:, None, None]


def check_dofs(arrays, plain, rate):
    """Radians, metres and their differences; without the root's."""
    root = str(plain["names"][0]) + "."
    kept = numpy.array([not str(name).startswith(root) for name in plain["dof_names"]], bool)
    assert list(arrays["dof_names"]) == list(plain["dof_names"][kept])
    is_length = numpy.array([str(name).rsplit(".", 1)[1][0] == "t" for name in arrays["dof_names"]], bool)
    expected = plain["dof_angles"].astype("f8")[:, kept] * numpy.where(is_length, 1, numpy.pi / 180)
    scale = max([1.0, *numpy.abs(expected).max(initial=0, axis=1)])
    assert numpy.allclose(arrays["dof_positions"], expected, rtol=0, atol=1e-6 * scale), "dof_positions"
    # numpy.unwrap takes out full turns from frame to frame; half a turn a frame may go either way.
    turns = numpy.where(is_length, expected, numpy.unwrap(expected, axis=0)) if len(expected) else expected
    jumps = numpy.abs(numpy.diff(expected, axis=0, prepend=expected[:1])) % (2 * numpy.pi)
    near_half = (~is_length & (numpy.abs(jumps - numpy.pi) < 1e-3)).any(axis=0)
    wrong = numpy.where(near_half, 0, arrays["dof_velocities"] - differences(turns, rate))
    assert (numpy.abs(wrong) <= 1e-6 * scale * rate).all(), f"dof_velocities differ by {numpy.abs(wrong).max():.1e}"


def check(asf, take):
    plain = kinematics.load(asf.write("convert", ".npz", *take, "--up", "z", "--units", "m"))
    if (plain["parents"] == -1).sum() != 1:
        result = asf.run("convert", "-o", "no.npz", "--preset", "motion-imitation", *take)
        assert result.returncode == 1 and "one root" in result.stderr, result.stderr
        return "several roots"
    arrays = kinematics.load(asf.write("convert", ".npz", "--preset", "motion-imitation", *take))
    bodies = ~plain["is_end"]
    counts = {"bodies": int(bodies.sum()), "frames": len(plain["root_positions"])}
    counts["dofs"] = len(arrays["dof_names"])
    kinematics.check_shapes(arrays, SHAPES, {}, counts)
    assert list(arrays["body_names"]) == list(plain["names"][bodies])
    assert (arrays["body_positions"] == plain["world_positions"][:, bodies]).all()
    assert (arrays["body_rotations"] == plain["world_rotations"][:, bodies]).all()
    rate = float(arrays["fps"])
    assert rate == float(plain["fps"])
    check_dofs(arrays, plain, rate)
    # Single precision of the positions, times the rate.
    positions, rotations = arrays["body_positions"].astype("f8"), arrays["body_rotations"].astype("f8")
    scale = rate * max(1.0, numpy.abs(positions).max())
    linear = numpy.abs(arrays["body_linear_velocities"] - differences(positions, rate)).max()
    assert linear <= 2e-7 * scale, f"linear velocities differ by {linear:.1e}"
    expected = angular(rotations, rate)
    # A half turn between two frames may be about either side.
    unclear = numpy.linalg.norm(expected, axis=-1, keepdims=True) > rate * (numpy.pi / 2 - 1e-3)
    turn = numpy.abs(numpy.where(unclear, 0, arrays["body_angular_velocities"] - expected)).max()
    assert turn <= 1e-5 * rate, f"angular velocities differ by {turn:.1e}"
    return f"{counts['bodies']} bodies, {linear / scale:.1e}, {turn / rate:.1e}"
