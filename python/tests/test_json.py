"""lbx list, check and verify --json: one JSON document on stdout, with the
keys the README documents, warnings on stderr, the same exit status."""
import json


def test_list(sample, run_lbx, tmp_path):
    odd = tmp_path / "INBOX.LBX"
    odd.write_bytes((sample / "CONFIRM.LBX").read_bytes())  # 3 entries where the game's INBOX has others
    listed = run_lbx("list", "--json", sample / "INBOX.LBX", odd, tmp_path / "none.lbx")
    assert listed.returncode == 1
    document = json.loads(listed.stdout)
    first, second, missing = document["archives"]
    assert list(first) == ["path", "count", "tagged", "catalogue", "entries"]
    assert first["count"] == 2 and first["tagged"] is True
    assert list(first["catalogue"]) == ["name", "row", "expected"] and first["catalogue"]["name"] == "INBOX"
    assert first["entries"][1] == {
        "index": 1,
        "kind": "graphic",
        "info": first["entries"][1]["info"],
        "shape": "graphic (8 frames of 48x32)",
    }
    assert second["count"] == 3
    assert "warning" in listed.stderr and "none.lbx" in listed.stderr
    assert missing["path"] == str(tmp_path / "none.lbx") and "error" in missing
    plain = run_lbx("list", sample / "INBOX.LBX")
    assert plain.returncode == 0 and not plain.stdout.startswith("{")


def test_check(sample, run_lbx, tmp_path):
    cut = tmp_path / "CUT.LBX"
    cut.write_bytes((sample / "INBOX.LBX").read_bytes()[:100])
    checked = run_lbx("check", "--json", sample / "FONTS.LBX", cut, tmp_path)
    assert checked.returncode == 1
    valid, invalid, folder = json.loads(checked.stdout)["archives"]
    assert folder == {"path": str(tmp_path), "valid": False, "error": f"'{tmp_path}' is a directory"}
    assert valid == {"path": str(sample / "FONTS.LBX"), "valid": True, "count": 14, "tagged": True}
    assert invalid["valid"] is False and invalid["error"] in checked.stderr
    assert run_lbx("check", "--json", sample / "FONTS.LBX").returncode == 0


def test_verify(sample, run_lbx, tmp_path):
    verified = run_lbx("verify", "--json", "-j", "2", sample / "INBOX.LBX", sample / "STARNAME.LBX", tmp_path / "x.lbx")
    assert verified.returncode == 1
    document = json.loads(verified.stdout)
    assert document["agreed"] is False
    inbox, starname, missing = document["archives"]
    assert inbox == {
        "path": str(sample / "INBOX.LBX"),
        "count": 2,
        "agreed": True,
        "kinds": {"graphic": {"passed": 2, "differs": 0, "notRecreatable": 0}},
        "differences": [],
    }
    assert starname["kinds"]["text"]["passed"] == 2
    assert "error" in missing
    good = run_lbx("verify", "--json", sample / "INBOX.LBX")
    assert good.returncode == 0 and json.loads(good.stdout)["agreed"] is True
