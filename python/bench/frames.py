"""Reading every frame of the benchmarks' 509-entry archive from Python
against the same decode in C++: the module's cost over the library's.

Usage: frames.py PACKAGE_DIR BENCH_ARCHIVE_MAKER DECODE_FRAMES [ROUNDS]
(bench/python-frames runs it on the default build). Prints the median time
of each side and their ratio; the target is at most 1.3x."""
import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np

sys.path.insert(0, sys.argv[1])
import zorv2_lbx as lbx  # noqa: E402

maker, decoder = sys.argv[2], sys.argv[3]
rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 7
# Opaque black, as the C++ side's Palette::empty(): the colours cost nothing.
palette = np.zeros((256, 4), np.uint8)
palette[:, 3] = 255


def python_round(path):
    archive = lbx.open(path)  # not timed, as on the C++ side
    start = time.perf_counter()
    frames = 0
    for entry in archive:
        if isinstance(entry, lbx.Cursor) or (isinstance(entry, lbx.Graphic) and entry.width and entry.height):
            frames += len(entry.frames(palette))
    return time.perf_counter() - start, frames


# The two sides take turns, a round each, so that other work on a shared
# machine falls on both alike.
with tempfile.TemporaryDirectory() as folder:
    path = folder + "/BENCH.LBX"
    subprocess.run([maker, path], check=True)
    native, python = [], []
    for _ in range(rounds):
        output = subprocess.run([decoder, path, "2"], check=True, capture_output=True, text=True).stdout
        native.append(float(output.splitlines()[-1].split()[0]))  # its second round: pages warm, as Python's
        python_round(path)
        took, frames = python_round(path)
        python.append(took)

for name, chosen in (("median", statistics.median), ("best", min)):
    cpp, py = chosen(native), chosen(python)
    print(f"every frame of the 509-entry archive ({frames} frames), {name} of {rounds} rounds:")
    print(f"  C++ decode    {cpp * 1000:8.1f} ms")
    print(f"  Python        {py * 1000:8.1f} ms")
    print(f"  ratio         {py / cpp:8.2f}x time (target: at most 1.3x{'' if py / cpp <= 1.3 else ': not met'})")
