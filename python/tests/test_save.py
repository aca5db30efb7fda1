"""Writing: every format gives the motion back; all files or none; the same files as asf convert."""

import os
import subprocess
import warnings

import numpy as np
import pytest
import qex

from conftest import ROOT, SAMPLES, load

TOLERANCES = {".bvh": 1e-3, ".glb": 1e-3, ".gltf": 1e-3, ".npz": 1e-3, ".csv": 1e-3}  # Centimetres.


def positions_of(path, names, fps):
    """The positions that a file has of the joints."""
    if path.suffix == ".npz":
        arrays = np.load(path)
        return arrays["world_positions"][:, [list(arrays["names"]).index(name) for name in names]]
    if path.suffix == ".csv":
        rows = [line.split(",") for line in path.read_text().splitlines()]
        joints, positions = np.array([row[2] for row in rows[1:]]), np.array([row[-3:] for row in rows[1:]], float)
        return np.stack([positions[joints == name] for name in names], axis=1)
    clip = load(path, fps=fps)  # Keys that are far apart need not be frames.
    return clip.positions()[:, [clip.names.index(name) for name in names]]


@pytest.mark.parametrize("ending", list(TOLERANCES))
def test_every_format_gives_the_motion_back(motion, tmp_path, ending):
    path = tmp_path / ("out" + ending)
    motion.save(path)
    wanted = [joint for joint in range(len(motion.names)) if not motion.is_end[joint]]
    names = [motion.names[joint] for joint in wanted]
    assert abs(positions_of(path, names, motion.fps) - motion.positions()[:, wanted]).max() < TOLERANCES[ending]
    assert sorted(os.listdir(tmp_path)) == (["out.bin", "out.gltf"] if ending == ".gltf" else ["out" + ending])


def test_acclaim_files(motion, tmp_path):
    motion.save(tmp_path / "out.asf", tmp_path / "out.amc", write_rate=True)
    back = load(tmp_path / "out.amc")
    assert back.fps == pytest.approx(motion.fps)
    names = ["root" if parent < 0 else name for name, parent in zip(motion.names, motion.parents)]  # As an ASF file has it.
    joints = [back.names.index(name) for name, is_end in zip(names, motion.is_end) if not is_end]
    assert abs(back.positions()[:, joints] - motion.positions()[:, ~motion.is_end]).max() < 0.02


def test_a_motion_for_its_own_skeleton(tmp_path, walk):
    walk[::2].save(tmp_path / "half.amc")
    back = qex.load(tmp_path / "half.amc", skeleton=walk.skeleton)
    assert (back.fps, len(back)) == (60, 121)
    assert abs(back.positions() - walk[::2].positions()).max() < 0.02
    assert back.angles().names == walk.angles().names
    walk.save(tmp_path / "whole.amc", skeleton=SAMPLES / "walker.asf")
    with pytest.raises(ValueError, match="needs a skeleton"):
        load(SAMPLES / "walk.bvh").save(tmp_path / "none.amc")
    with pytest.raises(ValueError, match="AMC file alone"):
        walk.save(tmp_path / "x.bvh", skeleton=SAMPLES / "walker.asf")
    with pytest.raises(qex.Error, match="missing.asf"):
        walk.save(tmp_path / "x.amc", skeleton="missing.asf")


def test_limits_survive(tmp_path, walk):
    walk.save(tmp_path / "walk.asf", tmp_path / "walk.amc")
    limits = dict(zip(walk.angles().names, walk.angles().limits.tolist()))
    back = load(tmp_path / "walk.amc").angles()
    for name, low_high in zip(back.names, back.limits):
        np.testing.assert_allclose(low_high, limits[name], rtol=1e-5)
    assert set(back.names) >= set(limits)


def test_units_and_axes_of_files(tmp_path, walk):
    other = walk.to(up="z", units="m")
    other.save(tmp_path / "z.bvh", tmp_path / "z.npz", tmp_path / "z.glb")
    arrays = np.load(tmp_path / "z.npz")
    np.testing.assert_allclose(arrays["world_positions"], other.positions(), atol=1e-5)
    quaternions, expected = arrays["world_rotations"], other.rotations("world")
    assert abs(abs((quaternions * expected).sum(axis=-1)) - 1).max() < 1e-5
    bvh = qex.load(tmp_path / "z.bvh")
    assert abs(bvh.positions()[:, 0] - other.positions()[:, 0]).max() < 1e-4
    np.testing.assert_allclose(qex.load(tmp_path / "z.glb").positions()[:, 0], walk.positions()[:, 0], atol=1e-3)


def test_orders_and_presets(tmp_path, walk):
    walk.save(tmp_path / "x.bvh", order="ZXY")
    assert "Zrotation Xrotation Yrotation" in (tmp_path / "x.bvh").read_text()
    source = qex.load(SAMPLES / "walk.bvh")  # Joints without rotations at rest, so that channels are rotations.
    source.save(tmp_path / "x.bvh", order="ZXY")
    angles = qex.load(tmp_path / "x.bvh").angles(degrees=True)
    expected = source.rotations(form="euler", order="ZXY", degrees=True)[:, source.names.index("left_thigh")]
    columns = [angles.names.index(f"left_thigh.r{axis}") for axis in "zxy"]
    assert abs(angles.values[:, columns] - expected).max() < 1e-2
    walk.save(tmp_path / "x.npz", preset="motion-imitation")
    assert "body_positions" in np.load(tmp_path / "x.npz")
    walk.save(tmp_path / "mesh.glb")
    walk.save(tmp_path / "bones.glb", mesh=False)
    assert (tmp_path / "bones.glb").stat().st_size < (tmp_path / "mesh.glb").stat().st_size
    for arguments in [{"order": "xyx"}, {"order": "abc"}, {"preset": "games"}]:
        with pytest.raises(ValueError, match="expected|three different"):
            walk.save(tmp_path / "x.bvh", **arguments)


def test_the_same_files_as_asf_convert(tmp_path):
    """But for the rounding of a clip's single precision."""
    program = os.environ.get("ASF_PROGRAM", ROOT / "build" / "release" / "apps" / "asf" / "asf")
    source = SAMPLES / "walk.bvh"
    qex.load(source).save(tmp_path / "one.bvh", tmp_path / "one.npz", tmp_path / "one.csv")
    outputs = [word for name in ["two.bvh", "two.npz", "two.csv"] for word in ["-o", str(tmp_path / name)]]
    environment = {key: value for key, value in os.environ.items() if key != "LD_PRELOAD"}  # Of a sanitizer.
    subprocess.run([program, "convert", "-q", source, *outputs], check=True, env=environment)
    one, two = np.load(tmp_path / "one.npz"), np.load(tmp_path / "two.npz")
    assert one.files == two.files
    for name in one.files:
        if one[name].dtype.kind == "f":
            np.testing.assert_allclose(one[name], two[name], atol=1e-4, err_msg=name)
        else:
            np.testing.assert_array_equal(one[name], two[name])
    for ending in ["bvh", "csv"]:
        words = [(tmp_path / f"{name}.{ending}").read_text().replace(",", " ").split() for name in ["one", "two"]]
        assert len(words[0]) == len(words[1])
        for mine, other in zip(*words):
            assert mine == other or abs(float(mine) - float(other)) < 1e-3


def test_all_files_or_none(tmp_path, walk):
    (tmp_path / "old.bvh").write_text("old")
    for other in [tmp_path / "missing" / "x.glb", tmp_path]:
        with pytest.raises(qex.Error):
            walk.save(tmp_path / "old.bvh", other)
        assert (tmp_path / "old.bvh").read_text() == "old" and os.listdir(tmp_path) == ["old.bvh"]
    with pytest.raises(qex.Error, match="ends in .bvh"):
        walk.save(tmp_path / "walk.fbx")
    with pytest.raises(qex.Error, match="twice|other"):
        walk.save(tmp_path / "a.bvh", tmp_path / "a.bvh")
    with pytest.raises(TypeError, match="needs a path"):
        walk.save()
    assert os.listdir(tmp_path) == ["old.bvh"]


def test_a_full_device(tmp_path, walk):
    (tmp_path / "full.csv").symlink_to("/dev/full")
    with pytest.raises(qex.Error, match="No space left"):
        walk.save(tmp_path / "full.csv")


def test_a_pipe_whose_reader_leaves(tmp_path, walk):
    import threading

    os.mkfifo(tmp_path / "pipe.csv")

    def read_a_little():
        with open(tmp_path / "pipe.csv", "rb") as file:
            file.read(10)

    thread = threading.Thread(target=read_a_little)
    thread.start()
    with pytest.raises(BrokenPipeError):
        qex.join([walk] * 5).save(tmp_path / "pipe.csv")
    thread.join()


def test_a_motion_alone_has_the_axes_of_its_skeleton(tmp_path, walk):
    with pytest.raises(ValueError, match="axes of its skeleton"):
        walk.to(up="z").save(tmp_path / "x.amc")


def test_units_of_acclaim_files(tmp_path, walk):
    for units, length in [("cm", 2.54), ("m", 0.0254), ("in", 1)]:
        walk.to(units=units).save(tmp_path / "x.asf", tmp_path / "x.amc")
        words = (tmp_path / "x.asf").read_text().split()
        assert float(words[words.index("length") + 1]) == pytest.approx(length)
        assert abs(load(tmp_path / "x.amc").positions()[:, 0] - walk.positions()[:, 0]).max() < 1e-2


def test_clips_of_arrays_become_files(tmp_path):
    turns = np.zeros((30, 2, 4))
    angle = np.linspace(0, 1, 30)
    turns[:, 0, 0] = 1
    turns[:, 1, 0], turns[:, 1, 1] = np.cos(angle / 2), np.sin(angle / 2)
    made = qex.Clip.from_arrays(["hip", "knee"], [-1, 0], [[0, 90, 0], [0, -45, 0]], turns, np.linspace([0, 90, 0], [100, 90, 0], 30), 30)
    made.save(tmp_path / "x.bvh", tmp_path / "x.glb", tmp_path / "x.asf", tmp_path / "x.amc")
    for file in ["x.bvh", "x.glb", "x.amc"]:
        back = load(tmp_path / file)
        for joint in ["hip", "knee"]:
            name = "root" if joint == "hip" and file == "x.amc" else joint  # The name that an ASF file's root has.
            one, other = back.positions()[:, back.names.index(name)], made.positions()[:, made.names.index(joint)]
            assert abs(one - other).max() < 1e-3, file
        assert back.fps == pytest.approx(30)


def test_warnings_of_writers(tmp_path, walk):
    other = walk.joints([name for name in walk.names if "right" not in name])
    with pytest.warns(UserWarning, match="kept at rest"):
        other.save(tmp_path / "x.amc", skeleton=SAMPLES / "walker.asf")
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        walk.save(tmp_path / "x.bvh")


def test_names_that_are_not_utf8(tmp_path):
    clip = qex.Clip.from_arrays(["H\udcfcfte"], [-1], [[0, 0, 0]], [[[1, 0, 0, 0]]] * 3, None, 30, name="G\udce4hen")
    with pytest.warns(UserWarning, match="Name changed"):
        clip.save(str(tmp_path) + "/\udcfc.glb")
    for ending in ["bvh", "npz", "csv"]:
        clip.save(str(tmp_path) + f"/\udcfc.{ending}")
    assert len(os.listdir(tmp_path)) == 4
    assert qex.load(str(tmp_path) + "/\udcfc.bvh").names[0] == "H\udcfcfte"


def test_pictures(walk):
    for clip in [walk, walk.to(up="z", units="m"), walk[0], qex.load(SAMPLES / "walker.asf"), load(SAMPLES / "walk.bvh")]:
        assert "<svg" in clip._repr_html_() and "qex.Clip" in clip._repr_html_()
    assert walk._repr_html_() != walk[100:]._repr_html_()
    large = qex.Clip.from_arrays(["a"], [-1], [[3e38, 0, 0]], [[[1, 0, 0, 0]]], None, 30, units="m")
    assert "qex.Clip" in large._repr_html_() and "<svg" not in large._repr_html_()


def test_plots(walk):
    import matplotlib

    matplotlib.use("agg")
    ax = walk.plot("left_shin")
    angles = walk.angles(degrees=True)
    (line,) = ax.get_lines()
    np.testing.assert_array_equal(line.get_ydata(), angles.values[:, angles.names.index("left_shin.rx")])
    np.testing.assert_allclose(ax.patches[0].get_xy()[[0, 1], 1], angles.limits[angles.names.index("left_shin.rx")])
    assert (ax.get_xlabel(), ax.get_ylabel()) == ("seconds", "degrees")
    assert walk.plot("right_shin", ax=ax) is ax and len(ax.get_lines()) == 2
    assert len(walk.plot("root").get_lines()) == 3
    assert len(walk.plot("left_thigh.rx").get_lines()) == 1
    with pytest.raises(KeyError, match="did you mean"):
        walk.plot("left_shinn")
    with pytest.raises(ValueError, match="no degrees of freedom"):
        walk.plot(int(np.flatnonzero(walk.is_end)[0]))
    with pytest.raises(ValueError, match="no values"):
        qex.load(SAMPLES / "walker.asf").plot("left_shin")
    with pytest.raises(TypeError, match="needs a joint"):
        walk.plot()


def test_bands_of_one_limit(tmp_path):
    text = (SAMPLES / "walker.asf").read_text()
    (tmp_path / "one.asf").write_text(text.replace("limits (-5.0 150.0)", "limits (-inf 10.0)"))
    clip = load(SAMPLES / "walk.amc", skeleton=tmp_path / "one.asf")
    (band,) = clip.plot("left_shin").patches
    assert band.get_xy()[:, 1].max() == 10 and band.get_xy()[:, 1].min() < 10
