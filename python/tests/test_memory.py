"""Memory and threads."""

import gc
import os
import threading

import numpy as np
import pytest
import qex

from conftest import SAMPLES, load


def resident():
    """Bytes of memory that the process has in use."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def use(path):
    clip = load(path)
    view = clip.rotations()
    clip.positions()
    clip.rotations("world", "matrix")
    clip[::2].resample(50).mirror()
    clip.angles(degrees=True)
    return view


def test_a_thousand_loads_keep_memory_flat():
    for _ in range(50):
        use(SAMPLES / "walk.bvh")
    gc.collect()
    before = resident()
    for _ in range(1000):
        use(SAMPLES / "walk.bvh")
    gc.collect()
    assert resident() - before < 4e6


def test_threads_have_their_own_clips(walk):
    expected, results = walk.positions(), {}

    def work(number):
        for _ in range(5):
            clip = load(SAMPLES / "walk.amc")
            results[number] = clip.resample(60).resample(120) and clip.positions()

    threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(results) == 4
    for result in results.values():
        np.testing.assert_array_equal(result, expected)


def test_threads_share_a_clip(walk):
    expected, failures = walk.rotations("world", "matrix"), []

    def work():
        for _ in range(10):
            if not np.array_equal(walk.rotations("world", "matrix"), expected):
                failures.append("other numbers")

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failures == []


def test_ctrl_c_stops_a_load(tmp_path):
    import signal

    lines = (SAMPLES / "walk.amc").read_text().splitlines()
    start = next(number for number, line in enumerate(lines) if line.strip() == "1")
    frames = [line for line in lines[start:]]
    with open(tmp_path / "long.amc", "w") as file:
        file.write("\n".join(lines[:start]) + "\n")
        number = 0
        for _ in range(200):
            for line in frames:
                number += line.strip().isdigit()
                file.write((str(number) if line.strip().isdigit() else line) + "\n")
    signal.setitimer(signal.ITIMER_REAL, 0.05)
    previous = signal.signal(signal.SIGALRM, signal.default_int_handler)
    try:
        with pytest.raises(KeyboardInterrupt):
            qex.load(tmp_path / "long.amc", skeleton=SAMPLES / "walker.asf")
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, previous)
