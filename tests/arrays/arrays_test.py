#!/usr/bin/env python3
"""Checks every array that `asf` writes of a motion with numpy and SciPy alone.

usage: arrays_test.py ASF-PROGRAM FILE...

FILE...: a BVH or glTF file, or a skeleton (ASF) with its motions (AMC), each of which is checked. Exits with 1 if an array is wrong.
"""
import json
import os
import subprocess
import sys
import tempfile

import angles
import forms
import kinematics
import imitation


def motions_of(inputs):
    """The arguments for each motion."""
    if inputs[0].lower().endswith(".asf"):
        return [[inputs[0], motion] for motion in inputs[1:]]
    return [inputs]


class Asf:
    """Runs the program on the files of one motion."""

    def __init__(self, program, inputs, folder):
        self.program, self.inputs, self.folder = program, inputs, folder
        self.count = 0

    def run(self, command, *arguments):
        result = subprocess.run(
            [self.program, command, "-q", *self.inputs, *arguments], capture_output=True, text=True, errors="replace", check=False
        )
        return result

    def write(self, command, ending, *arguments):
        """The path of a file that `asf COMMAND` wrote."""
        self.count += 1
        path = os.path.join(self.folder, f"{self.count}{ending}")
        result = self.run(command, *arguments, "-o", path)
        if result.returncode != 0:
            raise AssertionError(f"asf {command} {' '.join(arguments)} exits with {result.returncode}: {result.stderr.strip()[-300:]}")
        return path

    def has_motion(self):
        """False for a file without motion, or one that cannot be read: other tests are about those."""
        result = self.run("positions", "--frames", "first")
        return result.returncode == 0

    def take(self):
        """The options that pick the first of several takes."""
        result = subprocess.run([self.program, "info", "--json", *self.inputs], capture_output=True, text=True, check=False)
        takes = []
        for line in result.stdout.splitlines():
            takes = (json.loads(line).get("figure") or {}).get("takes") or takes
        return ["--take", takes[0]["name"]] if len(takes) > 1 else []


def main():
    failures = 0
    for inputs in motions_of(sys.argv[2:]):
        with tempfile.TemporaryDirectory() as folder:
            asf = Asf(sys.argv[1], inputs, folder)
            if not asf.has_motion():
                print(f"not read: {inputs[-1]}")
                continue
            take = asf.take()
            for check in (kinematics.check, forms.check, angles.check, imitation.check):
                try:
                    print(f"ok: {os.path.basename(inputs[-1])}: {check.__module__}: {check(asf, take)}")
                except AssertionError as error:
                    failures += 1
                    print(f"FAIL: {os.path.basename(inputs[-1])}: {check.__module__}: {error}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
