#!/usr/bin/env python3
"""Measures `asf batch` on a generated collection, each figure beside its bound from the same run.

usage: collection.py ASF-PROGRAM [FILES]

The collection: the motions of ASF_CORPUS_DIR (or of samples/), cut at random frames, 25 to a folder with a skeleton, about 1.2 MB each;
2,500 FILES by default, 3 GB. It lies in a temporary folder, removed at the end.
"""
import json
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import time

BYTES_PER_FILE = 1_200_000
TRIALS = 25  # In each folder.
LARGE = 142_220  # Files of a large collection, for what a second call would take.


def sources():
    """(skeleton, head of the motion, its frames) of each motion."""
    folder = pathlib.Path(os.environ.get("ASF_CORPUS_DIR") or pathlib.Path(__file__).parent.parent / "samples")
    for motion in sorted(folder.rglob("*.amc")):
        skeletons = sorted(path for path in motion.parent.glob("*.asf") if motion.stem.startswith(path.stem[:4]))
        parts = re.split(r"(?m)^(?=\d+\s*$)", motion.read_text(encoding="latin-1"))
        if skeletons and len(parts) > 2:
            yield skeletons[0], parts[0], [part.split("\n", 1)[1] for part in parts[1:]]


def generate(folder, count):
    chance = random.Random(1)
    found = list(sources())
    for number in range(count):
        person, trial = divmod(number, TRIALS)
        skeleton, head, frames = found[person % len(found)]
        place = folder / f"{person:04}"
        if trial == 0:
            place.mkdir(parents=True)
            shutil.copy(skeleton, place / f"{person:04}.asf")
        start, size, text = chance.randrange(len(frames)), 0, [head]
        for index in range(1, 10**9):
            frame = f"{index}\n{frames[(start + index) % len(frames)]}"
            size += len(frame)
            text.append(frame)
            if size > BYTES_PER_FILE:
                break
        (place / f"{person:04}_{trial:02}.amc").write_text("".join(text), encoding="latin-1")


class Call:
    """A finished call: seconds, processor seconds of it and its workers, and its own peak memory in bytes."""

    def __init__(self, *arguments):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        start = time.monotonic()
        process = subprocess.Popen([str(one) for one in arguments], stderr=subprocess.DEVNULL)
        peak = 0
        while process.poll() is None:
            peak = max(peak, peak_of(process.pid))
            time.sleep(0.005)
        self.seconds = time.monotonic() - start
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        self.peak = peak
        if process.returncode != 0:
            sys.exit(f"{arguments} ended with {process.returncode}")


def peak_of(pid):
    try:
        with open(f"/proc/{pid}/status", encoding="ascii") as status:
            return next((int(line.split()[1]) * 1024 for line in status if line.startswith("VmHWM")), 0)
    except OSError:
        return 0


def single_cpu(program, folder, output, count):
    """Processor seconds a file of plain conversions, of files spread over the collection."""
    files = sorted(folder.rglob("*.amc"))
    chosen = files[:: max(1, len(files) // count)]
    output.mkdir()
    total = sum(Call(program, "convert", "-q", "--threads", 1, file, "-o", output / (file.stem + ".glb")).cpu for file in chosen)
    return total / len(chosen)


def read_all(folder):
    start = time.monotonic()
    for path in folder.rglob("*"):
        if path.is_file():
            with open(path, "rb") as file:
                while file.read(1 << 20):
                    pass
    return time.monotonic() - start


def show(name, value, bound):
    print(f"  {name:<58} {value:>14}   {bound}")


def run(program, folder, count):
    motions, size = folder / "in", 0
    generate(motions, count)
    size = sum(path.stat().st_size for path in motions.rglob("*"))
    few = folder / "few"
    generate(few, max(TRIALS, count // 10))
    reading = read_all(motions)
    print(f"{count} motions, {size / 1e9:.2f} GB, to GLB")

    single = single_cpu(program, motions, folder / "single", 100)
    report = folder / "report.jsonl"
    one = Call(program, "batch", motions, "-o", folder / "one", "--to", "glb", "--jobs", 1, "--report", report, "-q")
    workers = sum(json.loads(line)["cpuSeconds"] for line in open(report, encoding="utf-8"))
    shutil.rmtree(folder / "one")
    two = Call(program, "batch", motions, "-o", folder / "two", "--to", "glb", "--jobs", 2, "-q")
    show("2 jobs, times the rate of 1", f"{one.seconds / two.seconds:.3f}", "at least 1.85")
    show("bytes a second, 2 jobs", f"{size / two.seconds / 1e6:.0f} MB/s", f"reading the same files: {size / reading / 1e6:.0f} MB/s")
    show("processor time beside plain conversions'", f"{(one.cpu / (single * count) - 1) * 100:+.2f} %", "under 3 %")
    show("of it the run's own, without its workers", f"{(one.cpu / workers - 1) * 100:+.2f} %", "")

    small = Call(program, "batch", few, "-o", folder / "small", "--to", "glb", "--jobs", 2, "-q")
    again = Call(program, "batch", motions, "-o", folder / "two", "--to", "glb", "--jobs", 2, "-q")
    again_small = Call(program, "batch", few, "-o", folder / "small", "--to", "glb", "--jobs", 2, "-q")
    files = count - max(TRIALS, count // 10)
    show("memory a file", f"{max(again.peak - again_small.peak, two.peak - small.peak, 0) / files:.0f} bytes", "at most 300")
    show("memory of the run itself", f"{two.peak / 1e6:.1f} MB", "")
    show("a second call", f"{again.seconds:.3f} s", "under 2 s")
    each = (again.seconds - again_small.seconds) / files
    show("a second call, for each file", f"{each * 1e6:.0f} us", f"{LARGE} files: {each * LARGE:.1f} s")


def main():
    program = os.path.abspath(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 2500
    with tempfile.TemporaryDirectory(dir=os.environ.get("TMPDIR")) as folder:
        run(program, pathlib.Path(folder), count)


if __name__ == "__main__":
    main()
