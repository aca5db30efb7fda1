"""Measures the package beside a plain NumPy reader, and two threads beside one. Each figure stands next to its bound.

usage: bench.py MOTION.amc
"""

import gc
import statistics
import sys
import threading
import time
import warnings

import numpy as np
import qex

REPEATS = 15


def best(work):
    """The shortest of some runs, in seconds."""
    gc.disable()
    times = []
    for _ in range(REPEATS):
        start = time.perf_counter()
        work()
        times.append(time.perf_counter() - start)
    gc.enable()
    return min(times)


def read_plainly(path):
    """The numbers of an AMC file, as scripts read them: lines, split, float. No skeleton, no rotations, no positions."""
    frames, values = [], {}
    with open(path) as file:
        for line in file:
            words = line.split()
            if not words or words[0][0] in "#:":
                continue
            if len(words) == 1 and words[0].isdigit():
                values = {}
                frames.append(values)
            else:
                values[words[0]] = [float(word) for word in words[1:]]
    return {bone: np.array([frame[bone] for frame in frames]) for bone in frames[0]}


def rate_of_threads(path, count):
    """Loads a second, by so many threads."""
    loads = 30

    def work():
        for _ in range(loads):
            clip = qex.load(path)
            clip.positions()
            clip.rotations("world")

    threads = [threading.Thread(target=work) for _ in range(count)]
    start = time.perf_counter()
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return loads * count / (time.perf_counter() - start)


def show(what, seconds, bound):
    print(f"{what:<58} {1e3 * seconds:8.1f} ms   {bound}")


def main(path):
    warnings.simplefilter("ignore", UserWarning)
    clip = qex.load(path)
    print(f"{clip}")
    load = best(lambda: qex.load(path).positions())
    show("load, and positions of all joints in all frames", load, "at most 50 ms")
    show("rotations of all joints in the world", best(lambda: clip.rotations("world")), "at most 10 ms")
    plain = best(lambda: read_plainly(path))
    show("a plain reader: lines, split, float; the numbers alone", plain, f"{plain / load:.1f} times as long")
    show("a view of the stored rotations", best(clip.rotations), "no copy")
    show("Euler angles", best(lambda: clip.rotations(form="euler", order="ZXY")), "")
    show("to 30 frames a second", best(lambda: clip.resample(30)), "")
    ratios = [1 / rate_of_threads(path, 1) * rate_of_threads(path, 2) for _ in range(5)]
    print(f"{'two threads that load and compute, times one (median of 5)':<58} {statistics.median(ratios):8.2f}      at least 1.7")


if __name__ == "__main__":
    main(sys.argv[1])
