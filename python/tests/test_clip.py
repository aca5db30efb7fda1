"""What a clip is: views, slices, steps, copies."""

import copy
import gc
import pickle
import weakref

import numpy as np
import pytest
import qex

from conftest import SAMPLES, load

STORED = ["parents", "moving_joints", "moving_translations"]


def same(one, other):
    """Whether two clips have the same numbers."""
    return all(
        np.array_equal(getattr(one._raw, key), getattr(other._raw, key))
        for key in ["names", "parents", "is_end", "quaternions", "moving_joints", "moving_translations", "rest_translations",
                    "rest_quaternions", "dofs", "dof_limits", "dof_values"]
    ) and (one.fps, one.units, one.up, one.name) == (other.fps, other.units, other.up, other.name)  # fmt: skip


def test_stored_arrays_are_views(walk):
    for view in [walk.rotations, lambda: walk.moving_translations, lambda: walk.parents, lambda: walk.angles(degrees=True).values]:
        one, other = view(), view()
        assert np.shares_memory(one, other) and not one.flags.writeable and one.flags.c_contiguous
        with pytest.raises(ValueError):
            one[...] = 0
        with pytest.raises(ValueError):
            one.setflags(write=True)


def test_views_outlive_the_clip():
    clip = load(SAMPLES / "walk.amc")
    expected = clip.rotations().copy()
    view, gone = clip.rotations(), weakref.ref(clip)
    del clip
    gc.collect()
    assert gone() is None
    load(SAMPLES / "robot" / "robot_pick.amc")  # Where its memory might have been.
    np.testing.assert_array_equal(view, expected)


def test_computed_arrays_are_the_callers(walk):
    for make in [walk.positions, walk.velocities, lambda: walk.rotations("world"), lambda: walk.rotations(order="xyzw"),
                 lambda: walk.rotations(form="euler"), walk.translations, lambda: walk.rotations(dtype=np.float64)]:  # fmt: skip
        one = make()
        expected = one.copy()
        one[...] = 7
        np.testing.assert_array_equal(make(), expected)


def test_a_clip_does_not_change(walk):
    with pytest.raises(AttributeError):
        walk.name = "run"
    with pytest.raises(AttributeError):
        walk.fps = 30
    with pytest.raises(TypeError, match="qex.load"):
        qex.Clip()


@pytest.mark.parametrize("part", [slice(100, 400), slice(None, None, 4), slice(None, None, -1), slice(-5, None), slice(200, 10, -7),
                                  slice(3, 4), slice(None, None, 10**12), slice(None, None, -(10**12))])  # fmt: skip
def test_slices_are_those_of_the_arrays(walk, part):
    clip = walk[part]
    np.testing.assert_array_equal(clip.rotations(), walk.rotations()[part])
    np.testing.assert_array_equal(clip.positions(), walk.positions()[part])
    np.testing.assert_array_equal(clip.angles(degrees=True).values, walk.angles(degrees=True).values[part])
    assert len(clip) == len(walk.rotations()[part])


def test_rates_of_slices(walk):
    assert walk[::4].fps == 30 and walk[100:].fps == 120 and walk[::-2].fps == 60
    assert walk[10:].times[0] == 0 and walk[::4].times[1] == pytest.approx(1 / 30)


def test_single_frames(walk):
    assert len(walk[5]) == 1 and len(walk[-1]) == 1
    np.testing.assert_array_equal(walk[np.int64(5)].positions()[0], walk.positions()[5])
    with pytest.raises(IndexError):
        walk[241]
    with pytest.raises(TypeError):
        walk["left_foot"]
    with pytest.raises(ValueError, match="at least one"):
        walk[5:5]
    assert len(list(walk[:3])) == 3


def test_joints_keep_their_transforms(walk):
    names = ["right_foot", "left_foot", "head"]
    chosen = walk.joints(names)
    assert sorted(chosen.names) == sorted(names)
    for name in names:
        one, other = chosen.positions()[:, chosen.names.index(name)], walk.positions()[:, walk.names.index(name)]
        assert abs(one - other).max() < 1e-3
    assert same(walk.joints(range(len(walk.names))), walk)
    assert walk.joints("head").names == walk.joints([walk.names.index("head")]).names == ["head"]
    with pytest.raises(KeyError, match="did you mean left_foot"):
        walk.joints(["left_fot"])
    with pytest.raises(IndexError):
        walk.joints([35])
    assert walk.joints(~walk.is_end).names == [name for name in walk.names if not name.endswith("_End")]
    with pytest.raises(ValueError, match="mask of joints"):
        walk.joints([True, False])
    with pytest.raises(ValueError, match="no joints"):
        walk.joints([])
    assert walk.joints(name for name in ["head"]).names == walk.joints(np.int64(walk.names.index("head"))).names == ["head"]
    with pytest.raises(TypeError, match="whole number"):
        walk.joints([1.5])


def test_steps_for_z_up_are_those_for_y_up(walk):
    for step in [qex.Clip.in_place, qex.Clip.start_at_origin, qex.Clip.mirror, lambda clip: clip.in_place(keep_turn=False)]:
        one, other = step(walk.to(up="z")).to(up="y"), step(walk)
        np.testing.assert_array_equal(one.rotations(), other.rotations())
        np.testing.assert_array_equal(one.positions(), other.positions())


def test_mirror(walk):
    twice = walk.mirror().mirror()
    assert abs(twice.positions() - walk.positions()).max() < 1e-3
    pairs = [(name, name.replace("left", "right")) for name in walk.names if name.startswith("left")]
    np.testing.assert_array_equal(walk.mirror(pairs).rotations(), walk.mirror().rotations())
    with pytest.raises(KeyError):
        walk.mirror([("left_foot", "rihgt_foot")])
    with pytest.raises(ValueError, match="two others"):
        walk.mirror([("left_foot", "right_foot"), ("head", "right_foot")])
    with pytest.warns(UserWarning, match="give pairs="):
        walk.joints(["root", "head"]).mirror()
    assert len(walk.mirror().angles().values) == 0
    with pytest.raises(ValueError, match=r"mirror\(\) lost them"):
        walk.mirror().limit_violations()


def test_join(walk):
    assert same(qex.join([walk[:100], walk[100:]]), walk)
    assert len(qex.join([walk, walk.to(units="m", up="z")], blend=10)) == 472
    np.testing.assert_allclose(qex.join([walk, walk.to(units="m", up="z")]).positions()[241:], walk.positions(), atol=1e-3)
    assert same(qex.join([walk]), walk)
    with pytest.raises(ValueError, match="same joints"):
        qex.join([walk, walk.joints(["head"])])
    with pytest.raises(ValueError, match="same rate: 60.0 and 120.0"):
        qex.join([walk, walk[::2]])
    with pytest.raises(ValueError, match="at least one"):
        qex.join([])
    with pytest.raises(TypeError):
        qex.join([walk, 5])


def test_many_clips_join_as_one_by_one(walk):
    parts = [walk[start : start + 7] for start in range(0, 230, 7)]
    for blend in [0, 3, 5]:
        one_by_one = parts[0]
        for part in parts[1:]:
            one_by_one = qex.join([one_by_one, part], blend)
        assert same(qex.join(parts, blend), one_by_one)
    for blend in [-1, 8]:
        with pytest.raises(ValueError, match="frames of the shortest"):
            qex.join(parts, blend)


def test_subclasses_stay(walk):
    class Walk(qex.Clip):
        pass

    clip = Walk.from_arrays(**arrays())
    assert type(clip) is Walk and type(clip[1:]) is Walk and type(clip.mirror([])) is Walk
    with pytest.raises(AttributeError):
        del clip.name


def test_every_translation_is_the_callers():
    turns = np.zeros((5, 2, 4))
    turns[..., 0] = 1
    clip = qex.Clip.from_arrays(**arrays(root_positions=None, translations=np.ones((5, 2, 3))))
    clip.translations()[:] = 7
    assert (clip.translations() == 1).all() and not clip.moving_translations.flags.writeable


def test_steps_leave_the_old_clip(walk):
    before = pickle.dumps(walk)
    for step in [lambda: walk[::2], lambda: walk.resample(60), lambda: walk.to(up="z", units="m"), walk.mirror, walk.in_place,
                 walk.start_at_origin, lambda: walk.joints(["head"]), lambda: walk.scale(2), lambda: qex.join([walk, walk])]:  # fmt: skip
        step()
    assert pickle.dumps(walk) == before


@pytest.mark.parametrize("call", [lambda clip: clip.resample(0), lambda clip: clip.resample(float("nan")), lambda clip: clip.resample(1e9),
                                  lambda clip: clip.scale(0), lambda clip: clip.scale(-1), lambda clip: clip.to(units="ft"),
                                  lambda clip: clip.to(up="x")])  # fmt: skip
def test_arguments_out_of_range(walk, call):
    with pytest.raises(ValueError, match="fps=|factor=|expected one of"):
        call(walk)


def test_pickles_and_copies(motion):
    restored = pickle.loads(pickle.dumps(motion))
    assert same(restored, motion) and restored.messages == motion.messages and restored.skeleton == motion.skeleton
    assert copy.copy(motion) is motion and copy.deepcopy(motion) is motion


def test_states_that_are_no_clip(walk):
    restore, (parts, *others) = walk.__reduce__()
    for key in ["rest_translations", "rest_quaternions", "quaternions", "moving_translations", "dof_values"]:
        for numbers in [parts[key].ravel()[:-1], np.concatenate([parts[key].ravel(), np.zeros(1000, np.float32)])]:
            with pytest.raises(ValueError):
                restore({**parts, key: numbers}, *others)


def test_angles(walk):
    degrees, radians = walk.angles(degrees=True), walk.angles()
    assert degrees.names == radians.names and degrees.names[:2] == ["root.tx", "root.ty"]
    assert degrees.units[0] == "cm" and degrees.units[3] == "deg" and radians.units[3] == "rad"
    turns = np.array([unit == "deg" for unit in degrees.units])
    np.testing.assert_allclose(radians.values[:, turns], np.radians(degrees.values[:, turns]), rtol=1e-6)
    np.testing.assert_array_equal(radians.values[:, ~turns], degrees.values[:, ~turns])
    np.testing.assert_allclose(radians.limits[turns], np.radians(degrees.limits[turns]), rtol=1e-6)
    assert degrees.values.shape == (241, len(degrees.names)) and degrees.limits.shape == (len(degrees.names), 2)
    assert [walk.names[joint] for joint in degrees.joints] == [name.split(".")[0] for name in degrees.names]


def test_limit_violations():
    clip = load(SAMPLES / "robot" / "robot_pick.amc")
    for degrees in [True, False]:
        angles, passed = clip.angles(degrees=degrees), clip.limit_violations(degrees=degrees)
        low, high = angles.limits.T
        margin = 1e-4
        expected = np.argwhere((angles.values < low - margin) | (angles.values > high + margin))
        np.testing.assert_array_equal(np.column_stack([passed["frame"], passed["dof"]]), expected)
        np.testing.assert_allclose(passed["value"], angles.values[passed["frame"], passed["dof"]])


def test_limits_that_are_passed(tmp_path):
    text = (SAMPLES / "walker.asf").read_text()
    (tmp_path / "tight.asf").write_text(text.replace("limits (-5.0 150.0)", "limits (-5.0 10.0)"))
    assert (tmp_path / "tight.asf").read_text() != text
    clip = load(SAMPLES / "walk.amc", skeleton=tmp_path / "tight.asf")
    passed, angles = clip.limit_violations(degrees=True), clip.angles(degrees=True)
    assert len(passed) > 100
    np.testing.assert_allclose(passed["excess"], passed["value"] - 10, atol=1e-4)
    assert {angles.names[dof] for dof in passed["dof"]} >= {"left_shin.rx", "right_shin.rx"}


def test_from_arrays(walk):
    made = qex.Clip.from_arrays(
        walk.names, walk.parents, walk.rest_positions, walk.rotations(), walk.moving_translations[:, 0], walk.fps, name="walk"
    )
    np.testing.assert_array_equal(made.positions(), walk.positions())
    swapped = qex.Clip.from_arrays(
        walk.names, walk.parents, walk.rest_positions, walk.rotations(order="xyzw"), None, 120, order="xyzw",
        translations=walk.translations(), units="m", up="z", rest_rotations=np.tile([0, 0, 0, 1], (35, 1)),
    )  # fmt: skip
    np.testing.assert_array_equal(swapped.rotations(), walk.rotations())
    assert (swapped.units, swapped.up, swapped.skeleton, swapped.messages) == ("m", "z", None, [])
    assert swapped.angles().names == [] and swapped.angles().values.shape == (0, 0) and len(swapped.limit_violations()) == 0


def arrays(**changed):
    turns = np.zeros((5, 2, 4))
    turns[..., 0] = 1
    given = {"names": ["hip", "knee"], "parents": [-1, 0], "rest": np.zeros((2, 3)), "rotations": turns,
             "root_positions": np.zeros((5, 3)), "fps": 30}  # fmt: skip
    return {**given, **changed}


@pytest.mark.parametrize(
    "changed, text",
    [
        ({"parents": [0, -1]}, "does not come before it"),
        ({"parents": [-1]}, "parents has shape"),
        ({"parents": [-1, 5]}, "does not come before it"),
        ({"rest": np.zeros((3, 2))}, "rest has shape"),
        ({"rest": np.full((2, 3), np.nan)}, "not finite"),
        ({"rotations": np.zeros((5, 2, 4))}, "no unit quaternion"),
        ({"rotations": np.zeros((5, 2, 3))}, "rotations has shape"),
        ({"rotations": np.zeros((0, 2, 4)), "root_positions": None}, "no frames"),
        ({"root_positions": np.zeros((4, 3))}, "root_positions has shape"),
        ({"root_positions": np.full((5, 3), np.inf)}, "not finite"),
        ({"fps": 0}, "frames a second"),
        ({"fps": float("nan")}, "frames a second"),
        ({"order": "zyxw"}, "order="),
        ({"names": [], "parents": [], "rest": np.zeros((0, 3)), "rotations": np.zeros((5, 0, 4)), "root_positions": None}, "0 joints"),
        ({"translations": np.zeros((5, 2, 3))}, "root_positions=None"),
    ],
)
def test_arrays_that_are_no_clip(changed, text):
    with pytest.raises(ValueError, match=text):
        qex.Clip.from_arrays(**arrays(**changed))


@pytest.mark.parametrize("changed", [{"parents": [-1.0, 0.0]}, {"parents": ["a", "b"]}, {"names": "ab"}, {"names": [1, 2]}])
def test_arrays_of_other_types(changed):
    with pytest.raises(TypeError, match="whole numbers|one text|are texts"):
        qex.Clip.from_arrays(**arrays(**changed))


def test_arrays_of_any_layout():
    turns = np.zeros((4, 2, 5), dtype=">f8")[..., ::-1].transpose(2, 1, 0)
    turns[..., 0] = 1
    clip = qex.Clip.from_arrays(**arrays(rotations=turns, root_positions=np.asfortranarray(np.ones((5, 3), np.int16))))
    np.testing.assert_array_equal(clip.positions()[:, 0], np.ones((5, 3)))


def test_names_that_are_not_ascii():
    clip = qex.Clip.from_arrays(**arrays(names=["Hüfte", "\udcff\udcfe"]))
    assert clip.names == ["Hüfte", "\udcff\udcfe"]
    assert pickle.loads(pickle.dumps(clip)).names == clip.names
    assert repr(clip.names)
