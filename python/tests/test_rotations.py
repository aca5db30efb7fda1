"""Rotations in every form and order against SciPy, from the same stored quaternions."""

import numpy as np
import pytest
from scipy.spatial.transform import Rotation, Slerp

from conftest import SAMPLES, load

CLOSE = 1e-9  # Radians, and numbers of matrices.
LETTERS = [a + b + c for a in "xyz" for b in "xyz" if b != a for c in "xyz" if c != b]
ORDERS = LETTERS + [order.upper() for order in LETTERS]


def scipy_rotations(clip, space):
    """Rotations as SciPy's, one of all joints in all frames, from the stored numbers."""
    local = [Rotation.from_quat(clip.rotations()[:, joint][:, [1, 2, 3, 0]].astype(float)) for joint in range(len(clip.names))]
    if space == "world":
        for joint, parent in enumerate(clip.parents):
            local[joint] = local[parent] * local[joint] if parent >= 0 else local[joint]
    return Rotation.concatenate(local)


def joint_by_joint(array):
    """The numbers in the order of scipy_rotations()."""
    return np.concatenate([array[:, joint] for joint in range(array.shape[1])])


def angle_between(one, other):
    return (one * other.inv()).magnitude().max()


@pytest.mark.parametrize("space", ["local", "world"])
def test_forms(motion, space):
    expected = scipy_rotations(motion, space)
    forms = {form: joint_by_joint(motion.rotations(space, form, dtype=np.float64)) for form in ["quat", "matrix", "6d", "axis_angle"]}
    assert angle_between(Rotation.from_quat(forms["quat"][:, [1, 2, 3, 0]]), expected) < CLOSE
    assert abs(forms["matrix"] - expected.as_matrix()).max() < CLOSE
    columns = expected.as_matrix()[:, :, :2].transpose(0, 2, 1).reshape(-1, 6)
    assert abs(forms["6d"] - columns).max() < CLOSE
    assert angle_between(Rotation.from_rotvec(forms["axis_angle"]), expected) < CLOSE
    degrees = joint_by_joint(motion.rotations(space, "axis_angle", degrees=True, dtype=np.float64))
    assert angle_between(Rotation.from_rotvec(degrees, degrees=True), expected) < CLOSE


@pytest.mark.parametrize("order", ORDERS)
def test_euler_angles_as_scipy_has_them(walk, order):
    clip = walk[::20]
    for space in ["local", "world"]:
        expected = scipy_rotations(clip, space)
        for degrees in [False, True]:
            angles = joint_by_joint(clip.rotations(space, "euler", order, degrees=degrees, dtype=np.float64))
            assert angle_between(Rotation.from_euler(order, angles, degrees=degrees), expected) < CLOSE


def test_euler_angles_of_real_motion(motion):
    expected = scipy_rotations(motion, "local")
    for order in ["xyz", "ZYX", "zxz", "YXY"]:
        angles = joint_by_joint(motion.rotations(form="euler", order=order, dtype=np.float64))
        assert angle_between(Rotation.from_euler(order, angles), expected) < CLOSE


def test_orders_of_quaternions(walk):
    wxyz, xyzw = walk.rotations(), walk.rotations(order="xyzw")
    np.testing.assert_array_equal(wxyz, xyzw[..., [3, 0, 1, 2]])
    world = walk.rotations("world", order="xyzw", dtype=np.float64)
    np.testing.assert_array_equal(world, walk.rotations("world", dtype=np.float64)[..., [1, 2, 3, 0]])


def test_quaternions_and_angles_do_not_jump(motion):
    for space in ["local", "world"]:
        quaternions = motion.rotations(space)
        assert (quaternions[1:] * quaternions[:-1]).sum(axis=2).min(initial=1) > -1e-6
    assert abs(np.linalg.norm(motion.rotations(), axis=2) - 1).max() < 1e-6


@pytest.mark.parametrize("fps", [30, 24000 / 1001, 1000, 7.5])
def test_resampling_is_slerp(motion, fps):
    resampled = motion.resample(fps)
    frames = np.minimum(resampled.times * motion.fps, len(motion) - 1)
    for joint in range(0, len(motion.names), 5):
        expected = Slerp(np.arange(len(motion)), Rotation.from_quat(motion.rotations(order="xyzw")[:, joint]))(frames)
        assert angle_between(Rotation.from_quat(resampled.rotations(order="xyzw")[:, joint]), expected) < 1e-6


def test_shapes_and_types(walk):
    sizes = {"quat": (4,), "matrix": (3, 3), "6d": (6,), "axis_angle": (3,), "euler": (3,)}
    for form, size in sizes.items():
        for space in ["local", "world"]:
            for dtype in [np.float32, np.float64, np.float16]:
                array = walk.rotations(space, form, dtype=dtype)
                assert array.shape == (241, len(walk.names), *size) and array.dtype == dtype and array.flags.c_contiguous


@pytest.mark.parametrize(
    "arguments",
    [
        {"space": "global"},
        {"form": "quaternion"},
        {"order": "xyz"},
        {"form": "matrix", "order": "wxyz"},
        {"form": "euler", "order": "xxy"},
        {"form": "euler", "order": "Xyz"},
        {"form": "euler", "order": "xy"},
        {"form": "euler", "order": "abc"},
        {"form": "euler", "order": ""},
        {"order": ""},
    ],
)
def test_words_that_are_none(walk, arguments):
    with pytest.raises(ValueError, match="expected|no order"):
        walk.rotations(**arguments)


def test_types_that_are_none(walk):
    with pytest.raises(TypeError, match="floating-point"):
        walk.rotations(dtype=int)


def test_scaled_joints_are_left_out_of_rotations():
    clip = load(SAMPLES / "walk.bvh")
    np.testing.assert_array_equal(clip.scalings(), np.ones((*clip.rotations().shape[:2], 3)))
