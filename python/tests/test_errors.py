"""Bad input is an lbx.Error with the library's message, never a crash."""
import random

import numpy as np
import pytest

import zorv2_lbx as lbx


def test_error_is_a_value_error():
    assert issubclass(lbx.Error, ValueError)
    assert issubclass(lbx.LbxWarning, UserWarning)


def test_messages_are_the_librarys(sample, tmp_path, run_lbx):
    cut = tmp_path / "CUT.LBX"
    cut.write_bytes((sample / "INBOX.LBX").read_bytes()[:3000])
    with pytest.raises(lbx.Error) as python:
        lbx.open(cut)
    checked = run_lbx("check", cut)
    assert checked.returncode == 1
    # The tool prints "lbx: MESSAGE"; the message is the same.
    assert checked.stderr.strip() == "lbx: " + str(python.value)
    with pytest.raises(lbx.Error, match="is a directory"):
        lbx.open(tmp_path)
    with pytest.raises(lbx.Error):
        lbx.open(tmp_path / "missing.lbx")


def test_bad_arguments():
    palette = np.zeros((256, 4), np.uint8)
    with pytest.raises(lbx.Error, match=r"shape \(256, 4\)"):
        lbx.Graphic.create([np.zeros((4, 4, 4), np.uint8)], np.zeros((16, 3), np.uint8))
    with pytest.raises(lbx.Error, match="frame 1 is 5x4, frame 0 4x4"):
        lbx.Graphic.create([np.zeros((4, 4, 4), np.uint8), np.zeros((4, 5, 4), np.uint8)], palette)
    with pytest.raises(lbx.Error, match="no frames given"):
        lbx.Graphic.create([], palette)
    with pytest.raises(lbx.Error):
        lbx.Graphic.create([np.zeros((4, 4, 4), np.uint8)], palette, flags="wobble")
    frame = np.full((4, 4, 4), 200, np.uint8)
    with pytest.raises(lbx.Error):  # a colour the palette lacks: the library's message
        lbx.Graphic.create([frame], palette)
    with pytest.raises(lbx.Error, match="a cursor is 20 frames of 24x24"):
        lbx.Cursor.create([np.zeros((24, 24, 4), np.uint8)], palette)
    with pytest.raises(lbx.Error, match="an index is 0 to 255"):
        lbx.Graphic.from_indices([np.full((2, 2), 300)])
    with pytest.raises(lbx.Error):
        lbx.Text.create(["non-ASCII \u00e9"])
    with pytest.raises(TypeError):
        lbx.Text.create([3])
    with pytest.raises(IndexError):
        lbx.Graphic.create([np.zeros((4, 4, 4), np.uint8)], palette).frame(1)


def test_any_bytes_never_crash():
    rng = random.Random(31)
    seeds = [
        bytes([16, 0, 8, 0, 0, 0, 3, 0, 0, 0, 0, 0, 20, 0, 0, 0]) + bytes(40),
        bytes(12544),
        bytes([3, 0, 100, 0]) + bytes(300),
    ]
    for _ in range(400):
        data = bytearray(rng.choice(seeds))
        for _ in range(rng.randrange(1, 8)):
            data[rng.randrange(len(data))] = rng.randrange(256)
        entry = lbx.Entry.from_bytes(bytes(data[: rng.randrange(len(data) + 1)]))
        try:
            if isinstance(entry, (lbx.Graphic, lbx.Cursor)):
                entry.frames()
                entry.indices(0)
            elif isinstance(entry, lbx.Text):
                list(entry)
            entry.verify()
        except lbx.Error:
            pass
