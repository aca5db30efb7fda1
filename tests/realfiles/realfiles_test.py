#!/usr/bin/env python3
"""Converts a file to every format with `asf` and compares the places of all joints with forward kinematics of the file's own numbers.

usage: realfiles_test.py ASF-PROGRAM FILE...

FILE...: a BVH or glTF file, or a skeleton (ASF) with its motions (AMC). Exits with 1 if a place, a joint or a message is wrong.
"""
import os
import struct
import sys
import tempfile

import acclaimfile
import compare
import convert
import figure
import strangers

# Largest distance, as a fraction of the figure's extent.
ACCLAIM_TOLERANCE = 1e-4
TOLERANCE = 1e-5

# Known defects: {name of the file: {name of the check}}. A listed check that succeeds fails the test.
EXPECTED_FAILURES = {}


class Test:
    def __init__(self, program, inputs, folder):
        self.program = program
        self.folder = folder
        self.source = convert.read_source(inputs)
        self.survey = compare.Survey(self.source.figure)
        self.expected = EXPECTED_FAILURES.get(os.path.basename(inputs[0]), set())
        self.failures = 0

    def report(self, check, complaints, note=""):
        is_expected = check in self.expected
        if bool(complaints) != is_expected:
            self.failures += 1
        word = ("known" if is_expected else "FAIL") if complaints else ("FAIL: no longer fails" if is_expected else "ok")
        print(f"{word}: {check}{': ' + note if note else ''}")
        for complaint in complaints[:12]:
            print(f"    {complaint}")

    def compare(self, results, tolerance):
        """Complaints about the results of a conversion, and the largest distance of a joint, in extents."""
        complaints, largest, pairing, last = [], 0.0, None, None
        for number, (result, take) in enumerate(results):
            if result is not last:
                pairing, last = compare.Pairing(self.source.figure, result), result
                complaints += compare.missing(self.survey, pairing)
            takes = (self.source.figure.takes[number], take) if self.source.figure.takes else (None, take)
            found, distance = compare.compare_places(self.survey, pairing, result, takes, tolerance)
            complaints += [f"{self.source.names[number]}: {text}" if self.source.names else text for text in found]
            largest = max(largest, distance)
        return complaints, largest

    def check(self, name, conversion, tolerance):
        """Reports one conversion; its files if it succeeded, else none."""
        results, files, complaints = conversion
        found, largest = self.compare(results, tolerance)
        complaints = complaints + found
        self.report(name, complaints, f"{largest:.1e}" if results else "")
        return files if results else []

    def make_folder(self, name):
        folder = os.path.join(self.folder, name)
        os.mkdir(folder)
        return folder

    def run(self):
        acclaim = self.check("ASF+AMC", convert.to_acclaim(self.program, self.source, self.make_folder("acclaim")), ACCLAIM_TOLERANCE)
        bvh = self.check("BVH", convert.to_bvh(self.program, self.source, self.make_folder("bvh")), TOLERANCE)
        glb = self.check("GLB", convert.to_gltf(self.program, self.source, self.make_folder("glb")), TOLERANCE)
        self.check("glTF", convert.to_gltf(self.program, self.source, self.make_folder("gltf"), "out.gltf"), TOLERANCE)
        if acclaim:
            back = self.back(acclaim, "acclaim-glb")
            for result, _ in back[0]:
                result.has_fixed_root = True
            self.check("ASF+AMC to GLB", back, ACCLAIM_TOLERANCE)
        if bvh and len(bvh) == 1:
            self.check("BVH to GLB", self.back(bvh, "bvh-glb"), TOLERANCE)
        if glb:
            self.check("GLB to BVH", convert.to_bvh(self.program, self.same(glb), self.make_folder("glb-bvh")), TOLERANCE)
            self.report("diff with its GLB", self.diff(glb * max(1, len(self.source.names))))
        if bvh:
            self.report("diff with its BVH", self.diff(bvh))
        self.check_strangers(glb)

    def same(self, files):
        """The source's figure and takes, in other files, which may be named after them."""
        names = convert.take_names(self.source)
        is_glb = files[0].endswith(".glb")
        return convert.Source(files, self.source.figure, self.source.names if is_glb else names)

    def back(self, files, folder):
        return convert.to_gltf(self.program, self.same(files), self.make_folder(folder))

    def diff(self, files):
        """Complaints about `asf diff` of each take with a file that holds it."""
        complaints = []
        for number, file in enumerate(files):
            name = self.source.names[number] if self.source.names else ""
            if self.source.inputs[0].lower().endswith(".asf"):
                sides = [self.source.inputs[0], *self.source.inputs[number + 1 : number + 2], file]
            else:
                sides = [*self.source.inputs, file]
            take = ["--take", name] if len(self.source.names) > 1 and number > 0 else []
            complaints += convert.Run(self.program, "diff", "-q", *sides, *take).complaints()
        return complaints

    def check_strangers(self, glb):
        if not self.survey.moving:
            return  # Roots match each other, and nothing else moves.
        self.report("skeleton of another figure", strangers.skeleton_of_another(self.program, self.source, self.make_folder("stranger")))
        if self.source.inputs[0].lower().endswith(".asf"):
            complaints = strangers.motion_of_another(self.program, self.survey, self.source, self.make_folder("foreign"))
            self.report("motion of another figure", complaints)
        if glb:
            self.report("prefixed names", strangers.prefixed_names(self.program, self.survey, self.source, glb, self.make_folder("prefix")))


def refused(program, inputs, folder, reason):
    """What these readers cannot read must be refused with a message."""
    run = convert.Run(program, "convert", *inputs, "-o", os.path.join(folder, "refused.glb"))
    is_right = run.status in (1, 3) and "error:" in run.err
    print(f"{'ok' if is_right else 'FAIL'}: unreadable ({reason!r}): status {run.status}: {run.err.strip()[-300:]}")
    return 0 if is_right else 1


def main():
    program, inputs = sys.argv[1], sys.argv[2:]
    empty = [path for path in inputs if path.lower().endswith(".amc") and not acclaimfile.has_frames(path)]
    with tempfile.TemporaryDirectory() as folder:
        try:
            test = Test(program, [path for path in inputs if path not in empty], folder)
        except (figure.FileError, ArithmeticError, AttributeError, LookupError, TypeError, ValueError, struct.error) as error:
            return refused(program, inputs, folder, error)
        test.run()
        for path in empty:
            run = convert.Run(program, "convert", inputs[0], path, "-o", os.path.join(folder, "empty.bvh"))
            test.report("motion without frames", [] if run.status == 1 and "frame" in run.err else [f"status {run.status}: {run.err}"])
    return 1 if test.failures else 0


if __name__ == "__main__":
    sys.exit(main())
