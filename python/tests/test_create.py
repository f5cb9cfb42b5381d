"""Creating entries and archives, and saving them by the tool's rules."""
import numpy as np
import pytest

import zorv2_lbx as lbx


def palette_of(colours):
    palette = np.zeros((256, 4), np.uint8)
    palette[:, 3] = 255
    palette[: len(colours), :3] = colours
    return palette


def test_graphic_round_trip():
    palette = palette_of([(0, 0, 0), (252, 0, 0), (0, 252, 0), (0, 0, 252)])
    frames = np.zeros((3, 10, 16, 4), np.uint8)
    for f in range(3):
        frames[f, 2 : 5 + f, 3 : 9 + f] = palette[1 + f]
    graphic = lbx.Graphic.create(frames, palette, flags="loop,palette", palette_size=4)
    assert isinstance(graphic, lbx.Graphic)
    assert (graphic.width, graphic.height, graphic.frame_count) == (16, 10, 3)
    assert graphic.flag_names == "palette,loop"
    back = graphic.frames()
    for f in range(3):
        assert np.array_equal(back[f], frames[f])
    # Stored indices make the same entry again, byte for byte.
    again = lbx.Graphic.from_indices(
        [graphic.indices(f) for f in range(3)], graphic.palette, flags=graphic.flags, palette_size=4
    )
    assert again.data == graphic.data
    assert graphic.verify() is True


def test_sample_graphics_from_their_indices(sample):
    for name in ("INBOX.LBX", "CONFIRM.LBX", "SPHERSFX.LBX"):
        for entry in lbx.open(sample / name):
            if not isinstance(entry, lbx.Graphic):
                continue
            made = lbx.Graphic.from_indices(
                [entry.indices(f) for f in range(entry.frame_count)],
                entry.palette,
                flags=entry.flags,
                clear_once=entry.clear_once,
                clear_mod=entry.clear_mod,
                palette_offset=entry.palette_offset,
                palette_size=entry.palette_size,
            )
            assert made.data == entry.data


def test_recolour_and_save(sample, tmp_path):
    archive = lbx.open(sample / "INBOX.LBX")
    graphic = archive[0]
    palette = graphic.palette
    palette[:, :3] = palette[:, [2, 0, 1]]  # blue to red, red to green, green to blue
    recoloured = graphic.with_palette(palette)
    assert np.array_equal(recoloured.indices(0), graphic.indices(0))
    assert np.array_equal(recoloured.palette[:33], palette[:33])
    archive.replace(0, recoloured)
    archive.save(tmp_path / "INBOX.LBX")
    assert lbx.open(tmp_path / "INBOX.LBX")[0].data == recoloured.data


def test_text_cursor_empty_and_archive(tmp_path):
    table = lbx.Text.create([b"Sol", "Antares", b"\xe9toile"])
    assert table.strings == [b"Sol", b"Antares", b"\xe9toile"]
    palette = palette_of([(0, 0, 0), (252, 252, 252)])
    frames = np.zeros((20, 24, 24, 4), np.uint8)
    frames[:, 4:8, 4:8] = palette[1]
    cursor = lbx.Cursor.create(frames, palette)
    assert np.array_equal(cursor.frame(7)[4:8, 4:8], frames[7, 4:8, 4:8])
    archive = lbx.Archive([table, cursor])
    archive.append(lbx.Entry.empty())
    archive.append(lbx.Entry.from_bytes(b"\x01\x02\x03"))
    assert archive.path is None
    archive.save(tmp_path / "NEW.LBX")
    again = lbx.open(tmp_path / "NEW.LBX")
    assert [e.kind for e in again] == ["text", "cursor", "empty", "unknown"]
    assert again[0].strings == table.strings


def test_save_rules(sample, tmp_path):
    archive = lbx.open(sample / "STARNAME.LBX")
    with pytest.raises(lbx.Error, match="is one of this call's inputs; it is left as it is"):
        archive.save(sample / "STARNAME.LBX", overwrite=True)
    target = tmp_path / "OUT.LBX"
    target.write_bytes(b"mine")
    with pytest.raises(lbx.Error, match=r"already exists; overwrite=True replaces it"):
        archive.save(target)
    assert target.read_bytes() == b"mine"
    (tmp_path / "OUT.LBX.lbx-part").write_bytes(b"left")
    with pytest.raises(lbx.Error, match="is in the way of writing"):
        archive.save(target, overwrite=True)
    (tmp_path / "OUT.LBX.lbx-part").unlink()
    archive.save(target, overwrite=True)
    assert target.read_bytes() == (sample / "STARNAME.LBX").read_bytes()
    assert not (tmp_path / "OUT.LBX.lbx-part").exists()


def test_unpack_and_pack_give_the_archive_back(sample, tmp_path):
    folder = lbx.unpack(sample / "INBOX.LBX", tmp_path / "mod")
    assert folder == str(tmp_path / "mod" / "INBOX")
    assert (tmp_path / "mod" / "INBOX" / "archive.json").exists()
    with pytest.raises(lbx.Error, match="already holds files; overwrite=True writes into it"):
        lbx.unpack(lbx.open(sample / "INBOX.LBX"), tmp_path / "mod")
    done = lbx.pack(folder, tmp_path / "INBOX.LBX")
    assert done["entries"] == 2 and done["changed"] == []
    assert (tmp_path / "INBOX.LBX").read_bytes() == (sample / "INBOX.LBX").read_bytes()
    # An edited text table packs as a changed entry.
    lbx.unpack(sample / "STARNAME.LBX", tmp_path / "mod")
    text = tmp_path / "mod" / "STARNAME" / "STARNAME_000.txt"
    text.write_text(text.read_text().replace("Sol", "Sun", 1))
    done = lbx.pack(tmp_path / "mod" / "STARNAME")
    assert len(done["changed"]) == 1 and done["changed"][0].endswith("record 0")
    assert lbx.open(done["archive"])[0][0] == b"Sun"
