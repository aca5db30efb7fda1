"""Memory and threads."""

import gc
import os
import signal
import subprocess
import sys
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
    previous = signal.signal(signal.SIGALRM, signal.default_int_handler)
    try:
        signal.setitimer(signal.ITIMER_REAL, 0.05)
        with pytest.raises(KeyboardInterrupt):
            qex.load(tmp_path / "long.amc", skeleton=SAMPLES / "walker.asf")
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, previous)


WORK = """
import qex, sys, threading, time, warnings
warnings.simplefilter("ignore")
walk = qex.load("samples/walk.amc")
long = qex.join([walk] * 50)
def work():
    while True:
        {work}
threading.Thread(target=work, daemon=True).start()
time.sleep(0.3)
view = walk.rotations()
"""


@pytest.mark.parametrize("work", ["qex.load('samples/walk.amc')", "long.rotations('world', 'matrix')", "long.resample(200)",
                                  "qex.check('samples/walk.amc')", "walk.save(sys.argv[1])"])  # fmt: skip
def test_the_interpreter_ends_while_threads_work(tmp_path, work):
    run = subprocess.run([sys.executable, "-c", WORK.format(work=work), tmp_path / "x.bvh"], capture_output=True, text=True, timeout=60)
    assert (run.returncode, run.stderr) == (0, "")


def test_forked_processes_load():
    """Data loaders fork, perhaps while another thread reads."""
    stop = threading.Event()

    def work():
        while not stop.is_set():
            qex.load(SAMPLES / "walker.asf")

    thread = threading.Thread(target=work)
    thread.start()
    try:
        for _ in range(20):
            child = os.fork()
            if child == 0:
                signal.alarm(20)
                qex.load(SAMPLES / "walker.asf")
                os._exit(0)
            assert os.waitpid(child, 0)[1] == 0
    finally:
        stop.set()
        thread.join()
