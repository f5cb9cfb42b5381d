"""Mods from Python: the same files and checks as lbx diff -o and lbx patch,
and text tables read through a charset."""
import shutil

import pytest

import zorv2_lbx as lbx


def edited_copy(sample, tmp_path):
    """INBOX.LBX with one frame of its animation painted over."""
    archive = lbx.open(sample / "INBOX.LBX")
    graphic = archive[1]
    frames = [graphic.indices(f).copy() for f in range(graphic.frame_count)]
    frames[2][0:4, 0:4] = 1
    archive.replace(1, lbx.Graphic.from_indices(frames, graphic.palette, flags=graphic.flags))
    archive.save(tmp_path / "edited.lbx")
    return tmp_path / "edited.lbx"


def test_a_mod_patches_a_fresh_copy_and_undoes(sample, tmp_path, run_lbx):
    edited = edited_copy(sample, tmp_path)
    mod = lbx.make_mod(sample / "INBOX.LBX", edited, tmp_path / "inbox.lbxmod", reversible=True)
    account = lbx.patch(sample / "INBOX.LBX", [mod], tmp_path / "patched.lbx")
    assert account["changes"][0]["frames"] == [2]
    assert (tmp_path / "patched.lbx").read_bytes() == edited.read_bytes()
    lbx.patch(tmp_path / "patched.lbx", [mod], tmp_path / "undone.lbx", reverse=True)
    assert (tmp_path / "undone.lbx").read_bytes() == (sample / "INBOX.LBX").read_bytes()
    # The command line takes the same file.
    assert run_lbx("patch", sample / "INBOX.LBX", mod, "-o", tmp_path / "by-lbx.lbx").returncode == 0
    assert (tmp_path / "by-lbx.lbx").read_bytes() == edited.read_bytes()
    assert lbx.diff(sample / "INBOX.LBX", edited) == lbx.diff(sample / "INBOX.LBX", tmp_path / "by-lbx.lbx") | {
        "new": str(edited)
    }


def test_a_mod_for_another_archive_writes_nothing(sample, tmp_path):
    mod = lbx.make_mod(sample / "INBOX.LBX", edited_copy(sample, tmp_path), tmp_path / "inbox.lbxmod")
    with pytest.raises(lbx.Error, match="was made for INBOX.LBX, not for .*FONTS.LBX.: entry 1 differs"):
        lbx.patch(sample / "FONTS.LBX", [mod], tmp_path / "out.lbx")
    assert not (tmp_path / "out.lbx").exists()
    with pytest.raises(lbx.Error, match="already exists"):
        lbx.make_mod(sample / "INBOX.LBX", sample / "INBOX.LBX", mod)


def test_text_through_a_charset(sample, tmp_path):
    table = lbx.open(sample / "STARNAME.LBX")[0]
    assert table.decoded()[:2] == ["Sol", "Vega"]
    (tmp_path / "greek.tbl").write_text("53=Σ\n6F=ο\n6C=λ\n", encoding="utf-8")
    assert table.decoded(tmp_path / "greek.tbl")[0] == "Σολ"
    assert lbx.Text.create([b"caf\x82"]).decoded() == ["café"]
