"""Reading archives: the sequence, the kinds, the bytes, and frames equal to
those the C++ build decodes."""
import subprocess

import numpy as np
import pytest

import zorv2_lbx as lbx
from conftest import sample_paths


def fnv1a(rgba: np.ndarray) -> int:
    """The checksum of zorv2-lbx-frame-checksums: FNV-1a over the RGBA bytes,
    a transparent pixel as four zeros."""
    pixels = rgba.reshape(-1, 4).copy()
    pixels[pixels[:, 3] == 0] = 0
    value = 2166136261
    for byte in pixels.tobytes():
        value = ((value ^ byte) * 16777619) & 0xFFFFFFFF
    return value


def test_sequence(sample):
    archive = lbx.open(sample / "INBOX.LBX")
    assert len(archive) == 2
    assert archive.path == str(sample / "INBOX.LBX")
    assert [entry.kind for entry in archive] == ["graphic", "graphic"]
    assert archive[-1].data == archive[1].data
    assert archive[-2].data == archive[0].data
    assert [e.data for e in archive[::-1]] == [archive[1].data, archive[0].data]
    for index in (2, -3, 509):
        with pytest.raises(IndexError):
            archive[index]
    assert isinstance(archive[1], lbx.Graphic)
    assert "2 entries" in repr(archive)


def test_kinds_and_info_as_lbx_list(sample, run_lbx):
    for path in sample_paths(sample):
        listed = run_lbx("list", "--json", path)
        assert listed.returncode == 0
        import json

        entries = json.loads(listed.stdout)["archives"][0]["entries"]
        archive = lbx.open(path)
        assert [e.kind for e in archive] == [e["kind"] for e in entries]
        assert [e.info for e in archive] == [e["info"] for e in entries]
        assert [e.shape for e in archive] == [e["shape"] for e in entries]


def test_data_is_the_stored_bytes(sample, tmp_path):
    for path in sample_paths(sample):
        archive = lbx.open(path)
        copy = tmp_path / path.name
        archive.save(copy)
        # The library wrote the samples; written again they are the same file.
        assert copy.read_bytes() == path.read_bytes()
        again = lbx.open(copy)
        assert [e.data for e in again] == [e.data for e in archive]


def test_frames_equal_the_cpp_decode(sample, frame_checksums):
    paths = [str(p) for p in sample_paths(sample)]
    lines = subprocess.run([frame_checksums, *paths], check=True, capture_output=True, text=True).stdout.split("\n")
    expected = {}
    for line in filter(None, lines):
        path, index, frame, checksum = line.rsplit(" ", 3)
        expected[(path, int(index), int(frame))] = int(checksum, 16)
    assert expected
    got = {}
    for path in paths:
        archive = lbx.open(path)
        for index, entry in enumerate(archive):
            if isinstance(entry, lbx.Cursor):
                frames = entry.frames()
            elif isinstance(entry, lbx.Graphic) and entry.width and entry.height:
                frames = entry.frames(archive.palette(index))
                assert all(f.shape == (entry.height, entry.width, 4) and f.dtype == np.uint8 for f in frames)
            else:
                continue
            for number, frame in enumerate(frames):
                got[(path, index, number)] = fnv1a(frame)
    assert got == expected


def test_indices_and_palettes(sample):
    archive = lbx.open(sample / "INBOX.LBX")
    graphic = archive[0]
    assert graphic.has_palette
    palette = graphic.palette
    assert palette.shape == (256, 4) and palette.dtype == np.uint8
    indices = graphic.indices(0)
    assert indices.shape == (graphic.height, graphic.width)
    painted = indices != lbx.CLEAR
    frame = graphic.frame(0)
    # Each painted pixel shows its index's colour, at the DAC's precision.
    assert np.array_equal(frame[painted][:, :3] >> 2, palette[indices[painted]][:, :3] >> 2)
    assert (frame[~painted][:, 3] == 0).all()
    assert archive[1].palette is None
    cursor = lbx.open(sample / "FONTS.LBX")[1]
    assert isinstance(cursor, lbx.Cursor)
    assert cursor.frame(0).shape == (24, 24, 4)
    assert cursor.indices(19).shape == (24, 24)
    assert cursor.palette.shape == (256, 4)


def test_text_and_font(sample):
    table = lbx.open(sample / "STARNAME.LBX")[0]
    assert isinstance(table, lbx.Text)
    assert len(table) == 8 and table.record_length == 100
    assert all(isinstance(s, bytes) for s in table)
    assert table[-1] == table.strings[-1]
    with pytest.raises(IndexError):
        table[8]
    font = lbx.open(sample / "FONTS.LBX")[0]
    assert isinstance(font, lbx.Font)
    assert len(font.heights) == 6 and font.widths.shape == (6, 256)


def test_to_pil(sample):
    pytest.importorskip("PIL")
    graphic = lbx.open(sample / "INBOX.LBX")[1]
    image = graphic.to_pil(3)
    assert image.size == (graphic.width, graphic.height) and image.mode == "RGBA"
    assert np.array_equal(np.asarray(image), graphic.frame(3))
