"""Reading and checking: every kind of source, rates, takes, and whatever is wrong."""

import io
import os
import pathlib
import shutil
import warnings

import numpy as np
import pytest
import qex

from conftest import ROOT, SAMPLES, folder_of, load, motions

BROKEN = sorted(path for folder in ["corpus", "findings"] for path in (ROOT / "fuzz" / folder).rglob("*") if path.is_file())


def test_every_kind_of_source(walk):
    path = SAMPLES / "walk.bvh"
    expected = qex.load(path).positions()
    with open(path, "rb") as file:
        sources = [str(path), path, path.read_bytes(), io.BytesIO(path.read_bytes()), file]
        for source in sources:
            np.testing.assert_array_equal(qex.load(source).positions(), expected)
    with pytest.raises(TypeError, match="'rb'"), open(path) as file:
        qex.load(file)
    for source in [3, None, ["a"]]:
        with pytest.raises(TypeError, match="expected a path"):
            qex.load(source)


def test_skeletons_of_bytes(walk):
    motion, skeleton = (SAMPLES / "walk.amc").read_bytes(), (SAMPLES / "walker.asf").read_bytes()
    for clip in [
        load(motion, base_dir=SAMPLES),
        load(motion, skeleton=SAMPLES / "walker.asf"),
        load(motion, skeleton=skeleton),
        load(io.BytesIO(motion), skeleton=io.BytesIO(skeleton), format="amc"),
        load(SAMPLES / "walk.amc", skeleton=skeleton),
    ]:
        np.testing.assert_array_equal(clip.rotations(), walk.rotations())
    with open(SAMPLES / "walk.amc", "rb") as file:
        assert load(file).skeleton == str(SAMPLES / "walker.asf")
    with pytest.raises(qex.Error, match="skeleton"):
        load(motion, base_dir=ROOT / "docs")
    with pytest.raises(qex.Error, match="give skeleton= or base_dir="):
        load(motion)
    with pytest.raises(qex.Error, match="skeleton= is for AMC files"):
        load(SAMPLES / "walk.bvh", skeleton=SAMPLES / "walker.asf")


def test_names_in_archives_are_no_paths(tmp_path, monkeypatch):
    import zipfile

    with zipfile.ZipFile(tmp_path / "walk.zip", "w") as archive:
        archive.write(SAMPLES / "walk.amc", "walk.amc")
    monkeypatch.chdir(SAMPLES)
    with zipfile.ZipFile(tmp_path / "walk.zip") as archive, archive.open("walk.amc") as file:
        with pytest.raises(qex.Error, match="give skeleton= or base_dir="):
            load(file)
    with open("walk.amc", "rb") as file:
        assert load(file).skeleton == str(SAMPLES / "walker.asf")


def test_buffers_of_gltf_bytes(tmp_path):
    qex.load(SAMPLES / "walk.bvh").save(tmp_path / "walk.gltf")
    data = (tmp_path / "walk.gltf").read_bytes()
    assert len(qex.load(data, base_dir=tmp_path)) == len(qex.load(SAMPLES / "walk.bvh"))
    with pytest.raises(qex.Error, match="walk.bin"):
        qex.load(data, base_dir=ROOT)


def test_a_skeleton_alone_is_one_frame_at_rest():
    clip = qex.load(SAMPLES / "walker.asf")
    assert len(clip) == 1 and clip.name == "walker"
    np.testing.assert_array_equal(clip.rotations()[0], clip.rest_rotations)
    assert len(clip.angles().names) > 20 and clip.angles().values.shape[0] == 0


def test_rates(tmp_path):
    text = "\n".join(line for line in (SAMPLES / "walk.amc").read_text().splitlines() if "SAMPLES-PER-SECOND" not in line.upper())
    (tmp_path / "walk.amc").write_text(text)
    shutil.copy(SAMPLES / "walker.asf", tmp_path)
    with pytest.warns(UserWarning, match="walk.amc does not say its frame rate") as warned:
        assert qex.load(tmp_path / "walk.amc").fps == 120
    assert warned[0].filename == __file__
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert qex.load(tmp_path / "walk.amc", source_fps=60).fps == 60
        assert qex.load(tmp_path / "walk.amc", source_fps=60).times[-1] == pytest.approx(4)
        clip = qex.load(tmp_path / "walk.amc", source_fps=60, fps=30)
        assert (clip.fps, len(clip)) == (30, 121)
        assert qex.load(SAMPLES / "walk.bvh").fps > 0
    with pytest.warns(UserWarning):
        assert qex.load_all(tmp_path / "walk.amc")[0].fps == 120
    for rate in [0, -1, float("nan"), 1e9]:
        with pytest.raises(ValueError, match="fps="):
            qex.load(SAMPLES / "walk.bvh", fps=rate)


def test_resampling_while_loading(walk):
    assert abs(load(SAMPLES / "walk.amc", fps=30).positions() - walk[::4].positions()).max() < 1e-3


def test_what_the_numbers_of_a_file_are(tmp_path, walk):
    walk.to(up="z", units="m").save(tmp_path / "z.bvh")
    back = qex.load(tmp_path / "z.bvh", source_up="z", source_units="m")
    assert (back.up, back.units) == ("y", "cm")
    assert abs(back.positions()[:, : len(walk.names)] - walk.positions()).max() < 1e-2
    same = qex.load(tmp_path / "z.bvh", source_up="z", source_units="m", up="z", units="m")
    assert abs(same.positions() - walk.to(up="z", units="m").positions()).max() < 1e-4
    with pytest.raises(ValueError, match="source_units= is for BVH"):
        load(SAMPLES / "walk.amc", source_units="m")
    with pytest.raises(ValueError, match="source_up="):
        load(SAMPLES / "walk.bvh", source_up="x")
    with pytest.warns(UserWarning, match="source_fps= is for AMC"):
        qex.load(SAMPLES / "walk.bvh", source_fps=60)


def test_problems_of_a_file_are_warnings(tmp_path):
    text = (SAMPLES / "walk.amc").read_text()
    (tmp_path / "walk.amc").write_text(text[: len(text) // 2])
    with pytest.warns(UserWarning, match="walk.amc:.* warning: ") as warned:
        clip = qex.load(tmp_path / "walk.amc", skeleton=SAMPLES / "walker.asf")
    assert warned[0].filename == __file__ and len(clip) < 241


def test_takes(tmp_path, walk):
    path = two_takes(tmp_path)
    with pytest.warns(UserWarning, match="2 takes"):
        assert qex.load(path).name == "slow"
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert qex.load(path, take="fast").name == "fast"
        assert qex.load(path, take=1).name == "fast"
        assert qex.load(path, take=-1).name == "fast"
        assert [clip.name for clip in qex.load_all(path)] == ["slow", "fast"]
    assert qex.load(path, take=np.int64(1)).name == "fast"
    with pytest.raises(IndexError, match="takes 0 to 1"):
        qex.load(path, take=2)
    for take in [1.5, True, b"fast"]:
        with pytest.raises(TypeError, match="whole number"):
            qex.load(path, take=take)
    with pytest.raises(qex.Error, match="take"):
        qex.load(path, take="slwo")


def two_takes(folder):
    """A glTF file with the takes slow and fast, which turn a joint."""
    import base64
    import json

    times, turns = np.array([0, 1], "<f4"), np.array([[0, 0, 0, 1], [0, 0.6, 0, 0.8]], "<f4")
    data = times.tobytes() + turns.tobytes()
    animation = {"channels": [{"sampler": 0, "target": {"node": 0, "path": "rotation"}}], "samplers": [{"input": 0, "output": 1}]}
    scene = {
        "asset": {"version": "2.0"},
        "nodes": [{"name": "hip"}],
        "scenes": [{"nodes": [0]}],
        "buffers": [{"byteLength": len(data), "uri": "data:application/octet-stream;base64," + base64.b64encode(data).decode()}],
        "bufferViews": [{"buffer": 0, "byteLength": 8}, {"buffer": 0, "byteOffset": 8, "byteLength": 32}],
        "accessors": [
            {"bufferView": 0, "componentType": 5126, "count": 2, "type": "SCALAR", "min": [0], "max": [1]},
            {"bufferView": 1, "componentType": 5126, "count": 2, "type": "VEC4"},
        ],
        "animations": [{**animation, "name": "slow"}, {**animation, "name": "fast"}],
    }
    path = folder / "two.gltf"
    path.write_text(json.dumps(scene))
    return path


def test_errors_say_where(tmp_path):
    (tmp_path / "bad.asf").write_text(":version 1.10\n:bonedata\n")
    with pytest.raises(qex.Error) as caught:
        qex.load(tmp_path / "bad.asf")
    assert caught.value.file == str(tmp_path / "bad.asf") and caught.value.line > 0 and caught.value.text
    assert str(caught.value) == f"{caught.value.file}:{caught.value.line}: {caught.value.text}"
    assert any(message.severity == "error" for message in caught.value.messages)
    for path in [tmp_path / "missing.bvh", tmp_path, "", os.devnull]:
        with pytest.raises(qex.Error):
            qex.load(path)
    with pytest.raises(ValueError, match="contents of a file as bytes"):
        qex.load((SAMPLES / "walk.bvh").read_text())
    with pytest.raises(ValueError, match="null byte"):
        qex.load("a\0b")


def test_arguments_that_do_not_fit():
    with pytest.raises(ValueError, match="format="):
        qex.load(b"", format="fbx")
    with pytest.raises(ValueError, match="base_dir="):
        qex.load(SAMPLES / "walk.bvh", base_dir=SAMPLES)
    with pytest.raises(ValueError, match="units="):
        qex.load(SAMPLES / "walk.bvh", units="ft")
    assert len(qex.load(SAMPLES / "walk.bvh", format=".BVH")) > 1


def test_messages_of_a_clip(walk):
    assert all(isinstance(message, qex.Message) for message in walk.messages)
    assert "walker.asf" in walk.messages[0].text and walk.messages[0].severity == "note"


def test_check():
    messages = qex.check(SAMPLES / "walk.amc")
    assert [message for message in messages if message.severity == "error"] == []
    bad = qex.check(b":version 1.10\n:units\n  length x\n:root\n  order TX\n:bonedata\n  begin\n", format="asf")
    assert any(message.severity == "error" for message in bad) and any(message.line == 3 for message in bad)
    assert [message.line for message in bad if message.line] == sorted(message.line for message in bad if message.line)
    assert "(" not in bad[0].kind
    missing = qex.check("missing.asf")
    assert missing[0].severity == "error" and str(missing[0]).startswith("missing.asf: error: ")


@pytest.mark.parametrize("path", BROKEN, ids=lambda path: f"{path.parent.name}-{path.name[:20]}")
def test_broken_files_are_an_error_or_a_clip(path):
    """Each whole, cut in the middle, and with bytes changed: an Error or a clip, whatever format it is said to be."""
    data = path.read_bytes()
    changed = bytearray(data)
    changed[:: max(1, len(data) // 7)] = b"\xff" * len(changed[:: max(1, len(data) // 7)])
    for contents in [data, data[: len(data) // 2], bytes(changed)]:
        for format in [None, "asf", "amc", "bvh", "glb", "gltf"]:
            try:
                clip = load(contents, format=format, skeleton=SAMPLES / "walker.asf" if format == "amc" else None)
                assert np.isfinite(clip.positions()).all() and len(clip.names) > 0
                repr(clip), clip.angles(), clip[0]
                if len(clip.angles().values):
                    clip.limit_violations()
            except qex.Error as error:
                assert str(error) and any(message.severity == "error" for message in error.messages)
            assert isinstance(qex.check(contents, format=format), list)


@pytest.mark.parametrize("path", motions(folder_of("ASF_OTHERS_DIR") or SAMPLES), ids=lambda path: path.name)
def test_files_of_other_makers(path):
    try:
        clips = load_all(path)
    except qex.Error as error:
        assert str(error).startswith(str(pathlib.Path(error.file))) and error.text
        return
    for clip in clips:
        assert np.isfinite(clip.positions()).all() and np.isfinite(clip.rotations("world", "6d")).all()
        assert len(clip.names) == len(clip.parents) == len(clip.rest_positions)


def load_all(path):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", UserWarning)
        return qex.load_all(path)
