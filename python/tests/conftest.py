"""Files and clips that the tests share. Real files are found by environment variables, as for the other tests of the project."""

import os
import pathlib
import warnings

import pytest
import qex

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLES = ROOT / "samples"


def folder_of(variable):
    return pathlib.Path(os.environ[variable]) if variable in os.environ else None


def load(path, **options):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", UserWarning)
        return qex.load(path, **options)


def motions(folder, endings=(".amc", ".bvh", ".glb", ".gltf")):
    return sorted(path for path in folder.rglob("*") if path.suffix.lower() in endings) if folder else []


# The project's own motions, and the real ones where there are.
MOTIONS = motions(SAMPLES) + motions(folder_of("ASF_CORPUS_DIR"))


@pytest.fixture(autouse=True)
def at_root(monkeypatch):
    monkeypatch.chdir(ROOT)


@pytest.fixture(scope="session")
def walk():
    return load(SAMPLES / "walk.amc")


@pytest.fixture(scope="session", params=MOTIONS, ids=lambda path: path.name)
def motion(request):
    """Every tenth frame of a motion."""
    return load(request.param)[::10]
