"""Positions against a plain forward kinematics and against other programs' results; velocities against differences."""

import json

import numpy as np
import pytest

from conftest import SAMPLES, folder_of, load, motions


def rotate(quaternions, vectors):
    """Vectors turned by quaternions w, x, y, z."""
    w, axis = quaternions[..., :1], quaternions[..., 1:]
    twice = 2 * np.cross(axis, vectors)
    return vectors + w * twice + np.cross(axis, twice)


def multiply(one, other):
    """Products of quaternions w, x, y, z."""
    w = one[..., :1] * other[..., :1] - (one[..., 1:] * other[..., 1:]).sum(axis=-1, keepdims=True)
    axis = one[..., :1] * other[..., 1:] + other[..., :1] * one[..., 1:] + np.cross(one[..., 1:], other[..., 1:])
    return np.concatenate([w, axis], axis=-1)


def forward_kinematics(clip):
    turns = clip.rotations().astype(np.float64)
    turns /= np.linalg.norm(turns, axis=-1, keepdims=True)
    positions = clip.translations().astype(np.float64)
    for joint, parent in enumerate(clip.parents):
        if parent >= 0:
            positions[:, joint] = positions[:, parent] + rotate(turns[:, parent], positions[:, joint])
            turns[:, joint] = multiply(turns[:, parent], turns[:, joint])
    return positions


def size_of(positions):
    """The larger of height and width of a figure in its first frame."""
    return np.ptp(positions[0], axis=0).max()


def test_positions_are_those_of_a_plain_forward_kinematics(motion):
    if not np.all(motion.scalings() == 1):
        pytest.fail("a motion with scaled joints needs another kinematics")
    positions = forward_kinematics(motion)
    assert abs(motion.positions(dtype=np.float64) - positions).max() < 1e-6 * size_of(positions)
    assert abs(motion.positions() - positions).max() < 1e-6 * max(size_of(positions), abs(positions).max())


def test_joints_that_do_not_move_are_at_rest(motion):
    still = np.setdiff1d(np.arange(len(motion.names)), motion.moving_joints)
    at_rest = np.broadcast_to(motion.rest_positions[still], (len(motion), len(still), 3))
    np.testing.assert_array_equal(motion.translations()[:, still], at_rest)
    np.testing.assert_array_equal(motion.translations()[:, motion.moving_joints], motion.moving_translations)


def oracles():
    """Motions with the world positions that an independent program computed for them."""
    found = [(SAMPLES / "walk.amc", SAMPLES / "walk.world.json")]
    folder = folder_of("ASF_ORACLE_DIR")
    for path in motions(folder_of("ASF_CORPUS_DIR"), (".amc",)) if folder else []:
        found.append((path, folder / (path.stem + ".world.json")))
    return found


@pytest.mark.parametrize("path, oracle", oracles(), ids=lambda path: path.name)
def test_world_positions_of_independent_programs(path, oracle):
    clip = load(path)
    frames = json.loads(oracle.read_text())["frames"]
    positions = clip.positions(dtype=np.float64)
    size = size_of(positions)
    unit = unit_of(clip.skeleton)
    compared = 0
    for number, bones in frames.items():
        for name, bone in bones.items():
            start = clip.names.index(name)
            position = positions[int(number) - 1]
            assert abs(position[start] - np.array(bone["start"]) * unit).max() < 1e-6 * size, (number, name)
            ends = [joint for joint, parent in enumerate(clip.parents) if parent == start]
            if name != "root":
                assert min(abs(position[end] - np.array(bone["end"]) * unit).max() for end in ends) < 1e-6 * size, (number, name)
            compared += 1
    assert compared > 50


def unit_of(path):
    """Centimetres for each unit of a skeleton file."""
    words = open(path, encoding="latin-1").read().split()
    return 2.54 / float(words[words.index("length") + 1])


def test_velocities_are_differences(motion):
    positions = motion.positions(dtype=np.float64)
    expected = np.gradient(positions, 1 / motion.fps, axis=0) if len(motion) > 1 else np.zeros_like(positions)
    assert abs(motion.velocities(dtype=np.float64) - expected).max() < 1e-6 * max(1, abs(expected).max())


def test_angular_velocities_turn_one_frame_into_the_next():
    from scipy.spatial.transform import Rotation

    clip = load(SAMPLES / "walk.amc")
    turns = clip.rotations("world", "quat", "xyzw", dtype=np.float64)
    velocities = clip.angular_velocities(dtype=np.float64)
    for joint in range(len(clip.names)):
        before, after = Rotation.from_quat(turns[:-2, joint]), Rotation.from_quat(turns[2:, joint])
        expected = (after * before.inv()).as_rotvec() * clip.fps / 2
        assert abs(velocities[1:-1, joint] - expected).max() < 1e-6


def test_units_and_axes(walk):
    other = walk.to(up="z", units="m")
    expected = walk.positions(dtype=np.float64)[..., [0, 2, 1]] * [0.01, -0.01, 0.01]
    assert abs(other.positions(dtype=np.float64) - expected).max() < 1e-6
    assert (other.up, other.units) == ("z", "m") and (walk.up, walk.units) == ("y", "cm")
    back = other.to(up="y")
    np.testing.assert_array_equal(back.rotations(), walk.rotations())
    loaded = load(SAMPLES / "walk.amc", up="z", units="m")
    np.testing.assert_array_equal(loaded.positions(), other.positions())
    np.testing.assert_allclose(walk.to(units="in").positions() * 2.54, walk.positions(), rtol=1e-5, atol=1e-5)
