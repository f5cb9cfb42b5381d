"""Decoding and encoding release the GIL: other threads run meanwhile, and
threads that share entries get the frames one thread gets."""
import threading

import numpy as np

import zorv2_lbx as lbx


def big_graphic(frames=24, width=640, height=480):
    palette = np.zeros((256, 4), np.uint8)
    palette[:, 0] = np.arange(256) & 0xFC
    palette[:, 3] = 255
    rng = np.random.default_rng(31)
    first = palette[rng.integers(0, 256, (height, width))]
    pictures = [first]
    for f in range(1, frames):
        picture = pictures[-1].copy()
        picture[f * 10 : f * 10 + 40, :] = palette[f]
        pictures.append(picture)
    return lbx.Graphic.create(pictures, palette), palette


def test_python_runs_while_a_thread_decodes():
    graphic, palette = big_graphic()
    counted = 0
    done = threading.Event()

    def decode():
        for shade in range(4):
            colours = palette.copy()
            colours[:, 1] = shade * 4
            graphic.frames(colours)
        done.set()

    worker = threading.Thread(target=decode)
    worker.start()
    while not done.is_set():
        counted += 1
    worker.join()
    # With the GIL held through a decode this loop would hardly move; the
    # decodes take tens of milliseconds, in which it counts to many thousands.
    assert counted > 10000, counted


def test_threads_agree_with_one():
    graphic, palette = big_graphic(frames=6, width=320, height=200)
    shades = []
    for shade in range(6):
        colours = palette.copy()
        colours[:, 2] = shade * 8
        shades.append(colours)
    expected = [graphic.frames(colours) for colours in shades]
    results = [None] * 12
    failures = []

    def work(slot):
        try:
            results[slot] = graphic.frames(shades[slot % 6])
            lbx.Graphic.create(results[slot], shades[slot % 6])
        except Exception as failure:  # pragma: no cover - reported below
            failures.append(failure)

    threads = [threading.Thread(target=work, args=(slot,)) for slot in range(12)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures
    for slot, frames in enumerate(results):
        assert all(np.array_equal(a, b) for a, b in zip(frames, expected[slot % 6]))
