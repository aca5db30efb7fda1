#!/usr/bin/env python3
"""Prints, for ctest, the cases for each file of the folders in the environment variables ASF_CORPUS_DIR and ASF_OTHERS_DIR.

usage: cases.py ASF-PROGRAM

A skeleton makes a case with its motions, those that `asf` would find it for: it is the only skeleton in their folder, or has the longest
name that theirs begin with. ctest runs this when it starts, so that new files need no new configuration.
"""
import os
import pathlib
import sys

TESTS = {
    "realfiles": pathlib.Path(__file__).with_name("realfiles_test.py"),
    "arrays": pathlib.Path(__file__).parent.with_name("arrays") / "arrays_test.py",
}
FOLDERS = {"corpus": "ASF_CORPUS_DIR", "others": "ASF_OTHERS_DIR"}
KINDS = (".bvh", ".glb", ".gltf", ".asf")
TIMEOUT = 900


def quoted(text):
    """A CMake argument that stands for itself."""
    return f"[===[{text}]===]"


def skeleton_of(motion, skeletons):
    own = [path for path in skeletons if len(skeletons) == 1 or motion.stem.lower().startswith(path.stem.lower())]
    return max(own, key=lambda path: len(path.stem), default=None)


def motions_of(skeleton):
    entries = sorted(skeleton.parent.iterdir())
    skeletons = [path for path in entries if path.suffix.lower() == ".asf"]
    return [path for path in entries if path.suffix.lower() == ".amc" and skeleton_of(path, skeletons) == skeleton]


def print_case(name, inputs, program):
    for kind, test in TESTS.items():
        command = [sys.executable, "-B", test, program, *inputs]
        case = quoted(f"{kind}.{name}")
        print(f"add_test({case} {' '.join(quoted(part) for part in command)})")
        print(f"set_tests_properties({case} PROPERTIES TIMEOUT {TIMEOUT} LABELS {kind})")


def print_folder(name, folder, program):
    for path in sorted(pathlib.Path(folder).resolve().rglob("*")):
        if path.suffix.lower() in KINDS and path.is_file():
            motions = motions_of(path) if path.suffix.lower() == ".asf" else []
            print_case(f"{name}/{path.relative_to(pathlib.Path(folder).resolve())}", [path, *motions], program)


def main():
    for name, variable in FOLDERS.items():
        if os.environ.get(variable):
            print_folder(name, os.environ[variable], sys.argv[1])


if __name__ == "__main__":
    main()
