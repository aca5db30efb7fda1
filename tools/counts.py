#!/usr/bin/env python3
"""Counts the instructions of the main jobs with callgrind and compares them with bench/baseline.json: a speed test without a clock.

usage: counts.py BUILD-FOLDER [--write]

Fails when a job takes over 3 % more than its baseline, and reports an outdated baseline when it takes over 3 % less.
--write stores the counts of this run as the baseline.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
BASELINE = ROOT / "bench" / "baseline.json"
TOLERANCE = 0.03


def count(command, *options):
    """Number of instructions of a command; with the option --toggle-collect, of one function."""
    result = subprocess.run(
        ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *options, *command], capture_output=True, text=True, check=False
    )
    found = re.search(r"Collected : (\d+)", result.stderr)
    if result.returncode != 0 or not found:
        sys.exit(f"counts: {' '.join(command)} failed\n{result.stderr[-2000:]}")
    return int(found.group(1))


def measure(build, folder):
    samples = ROOT / "samples"
    walker, walk, bvh = str(samples / "walker.asf"), str(samples / "walk.amc"), str(folder / "walk.bvh")
    convert = [str(build / "apps" / "asf" / "asf"), "convert", "--quiet", "--threads", "1"]

    def count_job(job):
        return count([str(build / "bench" / "counts" / "countjob"), job, walker, walk], "--toggle-collect=CountedJob")

    # In this order: the third job reads the BVH that the first one writes.
    return {
        "ASF+AMC to BVH": count([*convert, walk, "-o", bvh]),
        "ASF+AMC to glb": count([*convert, walk, "-o", str(folder / "walk.glb")]),
        "BVH to ASF+AMC": count([*convert, bvh, "-o", str(folder / "new.asf"), str(folder / "new.amc")]),
        "ASF reading": count_job("read-asf"),
        "AMC reading": count_job("read-amc"),
        "AMC import": count_job("import-amc"),
        "AMC writing": count_job("write-amc"),
    }


def main():
    with tempfile.TemporaryDirectory() as folder:
        results = measure(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(folder))
    if "--write" in sys.argv[2:]:
        BASELINE.write_text(json.dumps(results, indent=2) + "\n")
        print(f"wrote {BASELINE.relative_to(ROOT)}")
        return 0
    baseline = json.loads(BASELINE.read_text())
    worse = 0
    for job, instructions in results.items():
        ratio = instructions / baseline[job]
        state = "too many" if ratio > 1 + TOLERANCE else "far fewer, update the baseline" if ratio < 1 - TOLERANCE else "ok"
        worse += ratio > 1 + TOLERANCE
        print(f"{job}: {instructions:,} instructions, baseline {baseline[job]:,}, ratio {ratio:.3f}: {state}")
    return 1 if worse else 0


if __name__ == "__main__":
    sys.exit(main())
