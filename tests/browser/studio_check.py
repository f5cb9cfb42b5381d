#!/usr/bin/env python3
"""Makes edits through the browser studio, opened from its file in headless
Chromium, as a person would (files chosen in its pickers, text typed into a
record), downloads what the page makes and holds it byte for byte to what the
command line makes of the same edit: unpack, the same change to the files,
pack; diff and patch for mods and BPS patches. Refused edits must show the
command line's message and leave the archive as it was. Leaves a screenshot
of an edit for the README.

Usage: studio_check.py WEB_FOLDER LBX_TOOL OUTPUT_FOLDER
"""

import json
import pathlib
import shutil
import struct
import subprocess
import sys
import time
import zlib

from devtools import SKIPPED, Browser, Checks, Failure, find_chromium

ARCHIVES = ["FONTS.LBX", "INBOX.LBX", "SPHERSFX.LBX", "STARNAME.LBX"]


class Studio:
    """The page, and the command line beside it in a folder of the sample."""

    def __init__(self, browser, lbx, out):
        self.browser = browser
        self.lbx = lbx
        self.work = out / "work"
        self.downloads = out / "downloads"
        self.downloads.mkdir()
        browser.call("Browser.setDownloadBehavior", session=None, behavior="allow",
                     downloadPath=str(self.downloads), eventsEnabled=True)

    def run(self, *args):
        """lbx in the sample's folder, as a modder in the game's folder runs it."""
        return subprocess.run([self.lbx, *args], cwd=self.work, capture_output=True)

    def packed(self, archive, change, *options):
        """What pack makes of `change` done to the unpacked files, or its message."""
        stem = archive.split(".")[0]
        shutil.rmtree(self.work / stem, ignore_errors=True)
        self.run("unpack", archive)
        change(self.work / stem)
        done = self.run("pack", stem, "-o", "../packed.lbx", "--force", *options)
        if done.returncode != 0:
            return done.stderr.decode().removeprefix("lbx: ").strip()
        return (self.work.parent / "packed.lbx").read_bytes()

    def reopen(self, archive):
        """The archive as the sample has it, opened anew, its edits gone."""
        before = self.browser.evaluate("Number(document.body.dataset.shown)")
        self.browser.choose("#files", [self.work / archive])
        self.browser.wait_until(f"Number(document.body.dataset.shown) > {before}")

    def card(self, stem, index):
        selector = f"#{stem}-{index}"
        self.browser.evaluate(f"document.querySelector('{selector}').scrollIntoView()")
        self.browser.wait_until(f"document.querySelector('{selector}')?.dataset.drawn === '1'")
        return selector

    def edit(self, action):
        """Does `action` and waits for the page to show its outcome."""
        before = self.browser.evaluate("Number(document.body.dataset.edits ?? 0)")
        action()
        self.browser.wait_until(f"Number(document.body.dataset.edits ?? 0) > {before}", timeout=20)

    def choose(self, selector, *paths):
        self.edit(lambda: self.browser.choose(selector, paths))

    def click(self, selector):
        self.edit(lambda: self.browser.evaluate(f"document.querySelector('{selector}').click()"))

    def set_frame(self, card, frame):
        self.browser.evaluate(f"document.querySelector('{card} input.frame-number').value = '{frame}'")

    def type_record(self, stem, index, record, text):
        card = self.card(stem, index)
        field = f"{card} input.record[data-record='{record}']"
        self.edit(lambda: self.browser.evaluate(
            f"(() => {{ const field = document.querySelector(\"{field}\"); field.focus(); field.value = {json.dumps(text)};"
            "field.dispatchEvent(new Event('input')); field.dispatchEvent(new Event('change')); })()"))

    def download(self, stem, action):
        """The file the page gives for button `action` of archive `stem`."""
        for old in self.downloads.iterdir():
            old.unlink()
        self.browser.evaluate(f"document.querySelector('#{stem} button.{action}').click()")
        deadline = time.monotonic() + 20
        while time.monotonic() < deadline:
            files = list(self.downloads.iterdir())
            if len(files) == 1 and not files[0].name.endswith(".crdownload"):
                time.sleep(0.1)
                return files[0].read_bytes()
            time.sleep(0.05)
        raise Failure(f"no download from {action} of {stem}")

    def message(self, stem):
        return self.browser.evaluate(f"document.querySelector('#{stem} .messages .error')?.textContent ?? ''")


def check_frames(studio, checks, sample):
    frame = lambda folder, number: folder / f"INBOX_001_{number:03}.png"
    second = (studio.work.parent / "frames")
    subprocess.run([studio.lbx, "unpack", str(sample / "INBOX.LBX"), "-o", str(second)], check=True, capture_output=True)
    png = frame(second / "INBOX", 2)
    card = studio.card("INBOX", 1)

    studio.set_frame(card, 0)
    studio.choose(f"{card} input.replace-frame", png)
    expected = studio.packed("INBOX.LBX", lambda folder: shutil.copy(png, frame(folder, 0)))
    checks.expect(studio.download("INBOX", "download-archive") == expected,
                  "a frame replaced in the page is the archive pack makes")
    studio.browser.evaluate("document.getElementById('INBOX').scrollIntoView()")
    studio.browser.screenshot(str(studio.work.parent / "studio.png"))

    mod = studio.download("INBOX", "download-mod")
    (studio.work.parent / "page.lbxmod").write_bytes(mod)
    patched = studio.run("patch", "INBOX.LBX", "../page.lbxmod", "-o", "../patched.lbx")
    checks.expect(patched.returncode == 0 and (studio.work.parent / "patched.lbx").read_bytes() == expected,
                  f"the page's mod is one lbx patch applies: {patched.stderr!r}")
    studio.frame_edited = expected
    (studio.work / "page.bps").write_bytes(studio.download("INBOX", "download-bps"))
    patched = studio.run("patch", "INBOX.LBX", "page.bps", "-o", "../whole.lbx")
    checks.expect(patched.returncode == 0 and (studio.work.parent / "whole.lbx").read_bytes() == expected,
                  f"the page's BPS patch is one lbx patch applies: {patched.stderr!r}")

    studio.click("#INBOX button.undo")
    checks.expect(studio.download("INBOX", "download-archive") == (sample / "INBOX.LBX").read_bytes(),
                  "undone, the archive is the one opened")
    studio.click("#INBOX button.redo")
    checks.expect(studio.download("INBOX", "download-archive") == expected, "redone, it is the edited one again")

    card = studio.card("INBOX", 1)
    studio.set_frame(card, 3)
    studio.click(f"{card} button.remove-frame")
    card = studio.card("INBOX", 1)
    studio.choose(f"{card} input.add-frame", png)

    def remove_and_add(folder):
        shutil.copy(png, frame(folder, 0))
        manifest = json.loads((folder / "archive.json").read_text())
        frames = manifest["entries"][1]["frames"]
        (folder / frames.pop(3)).unlink()
        frames.append("INBOX_001_008.png")
        shutil.copy(png, folder / "INBOX_001_008.png")
        (folder / "archive.json").write_text(json.dumps(manifest))
    checks.expect(studio.download("INBOX", "download-archive") == studio.packed("INBOX.LBX", remove_and_add),
                  "a frame removed and one added are what pack makes of the manifest so edited")


def check_refusals(studio, checks, sample):
    studio.reopen("INBOX.LBX")
    before = studio.download("INBOX", "download-archive")
    bad = studio.work.parent / "bad.png"
    bad.write_bytes(b"GIF89a this is no PNG")
    wide = studio.work.parent / "frames" / "INBOX" / "INBOX_000_000.png"
    for name, png in (("a file that is no PNG", bad), ("a frame of another size", wide)):
        card = studio.card("INBOX", 1)
        studio.set_frame(card, 4)
        studio.choose(f"{card} input.replace-frame", png)
        expected = studio.packed("INBOX.LBX", lambda folder: shutil.copy(png, folder / "INBOX_001_004.png"))
        checks.expect(studio.message("INBOX") == expected, f"{name}: the page says {studio.message('INBOX')!r}, "
                                                           f"pack says {said(expected)!r}")
        checks.expect(studio.download("INBOX", "download-archive") == before, f"{name}: the archive is unchanged")

    # A colour the palette lacks, then the nearest colours taken.
    studio.run("export", "INBOX.LBX", "1", "-o", "../rgba")
    off = studio.work.parent / "off.png"
    recoloured_first_pixel(next((studio.work.parent / "rgba").glob("*_002.png")), off)
    card = studio.card("INBOX", 1)
    studio.set_frame(card, 4)
    studio.choose(f"{card} input.replace-frame", off)
    expected = studio.packed("INBOX.LBX", lambda folder: shutil.copy(off, folder / "INBOX_001_004.png"))
    checks.expect(studio.message("INBOX") == expected,
                  f"a missing colour: the page says {studio.message('INBOX')!r}, pack says {said(expected)!r}")
    studio.click("#INBOX button.nearest")
    nearest = studio.packed("INBOX.LBX", lambda folder: shutil.copy(off, folder / "INBOX_001_004.png"), "--nearest")
    # The page's archive holds the earlier edits of other frames too: the frame is compared.
    checks.expect(frame_of(studio, studio.download("INBOX", "download-archive"), 4) == frame_of(studio, nearest, 4),
                  "the nearest colours taken are what pack --nearest takes")


def check_png_forms(studio, checks):
    """Every form a PNG may take reads in the page as libpng reads it for pack: a
    frame replaced by each, the nearest colours taken, gives the frame pack
    --nearest makes of it."""
    source = next((studio.work.parent / "rgba").glob("*_002.png"))
    forms = studio.work.parent / "forms"
    forms.mkdir()
    write_png_forms(source, forms)
    studio.reopen("INBOX.LBX")
    for png in sorted(forms.iterdir()):
        card = studio.card("INBOX", 1)
        studio.set_frame(card, 5)
        studio.choose(f"{card} input.replace-frame", png)
        if studio.browser.evaluate("document.querySelector('#INBOX button.nearest') !== null"):
            studio.click("#INBOX button.nearest")
        page = studio.download("INBOX", "download-archive")
        packed = studio.packed("INBOX.LBX", lambda folder: shutil.copy(png, folder / "INBOX_001_005.png"), "--nearest")
        checks.expect(page == packed,
                      f"a frame from a PNG of {png.stem} is the one pack makes: {said(packed)}, "
                      f"the page says {studio.message('INBOX')!r}")


def frame_of(studio, archive, number):
    """Frame `number` of INBOX[1] in `archive`, as the tool unpacks it."""
    folder = studio.work.parent / "compare"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    (folder / "INBOX.LBX").write_bytes(archive)
    shutil.copy(studio.work / "FONTS.LBX", folder)
    subprocess.run([studio.lbx, "unpack", "INBOX.LBX"], cwd=folder, check=True, capture_output=True)
    return (folder / "INBOX" / f"INBOX_001_{number:03}.png").read_bytes()


# PNG files read and written with the standard library alone, beside the
# tool's libpng and the page's decoder.
def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def rgba_pixels(path):
    """The pixels of an 8-bit RGBA PNG without filters, as the tool writes them: rows of (r, g, b, a)."""
    data, at, chunks = path.read_bytes(), 8, []
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        chunks.append((kind, data[at + 8:at + 8 + length]))
        at += 12 + length
    width, height, depth, colour = struct.unpack(">IIBB", dict(chunks)[b"IHDR"][:10])
    assert depth == 8 and colour == 6
    raw = zlib.decompress(b"".join(body for kind, body in chunks if kind == b"IDAT"))
    stride = width * 4 + 1
    assert all(raw[y * stride] == 0 for y in range(height))
    return [[tuple(raw[y * stride + 1 + x * 4:y * stride + 5 + x * 4]) for x in range(width)] for y in range(height)]


def write_png(path, pixels, colour, depth, row_bytes, extra=b""):
    """`pixels` in PNG colour type `colour` at `depth` bits, each row made by `row_bytes`."""
    ihdr = struct.pack(">IIBBBBB", len(pixels[0]), len(pixels), depth, colour, 0, 0, 0)
    body = b"".join(b"\0" + row_bytes(row) for row in pixels)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", ihdr) + extra + chunk(b"IDAT", zlib.compress(body)) +
                     chunk(b"IEND", b""))


def rgba_row(row):
    return b"".join(bytes(p) for p in row)


def recoloured_first_pixel(source, target):
    """An RGBA copy of `source` whose first pixel is a colour no palette holds."""
    pixels = rgba_pixels(source)
    pixels[0][0] = (123, 45, 201, 255)
    write_png(target, pixels, 6, 8, rgba_row)


def packed_samples(values, bits):
    out, byte, used = bytearray(), 0, 0
    for value in values:
        byte, used = (byte << bits) | value, used + bits
        if used == 8:
            out.append(byte)
            byte, used = 0, 0
    if used:
        out.append(byte << (8 - used))
    return bytes(out)


def write_png_forms(source, folder):
    """One RGBA picture in the PNG forms other programs write: greys, 16 bits,
    packed samples, small palettes, transparency by tRNS."""
    pixels = rgba_pixels(source)
    grey = lambda p: (p[0] * 3 + p[1] * 6 + p[2]) // 10
    small = sorted({p[:3] for row in pixels for p in row})[:16]
    nearest = lambda p: min(range(len(small)), key=lambda i: sum((a - b) ** 2 for a, b in zip(small[i], p[:3])))
    palette = chunk(b"PLTE", b"".join(bytes(c) for c in small))
    forms = {
        "RGB, 8 bits": (2, 8, lambda row: b"".join(bytes(p[:3]) for p in row), b""),
        "RGBA, 16 bits": (6, 16, lambda row: b"".join(struct.pack(">4H", *(v * 257 for v in p)) for p in row), b""),
        "grey, 8 bits": (0, 8, lambda row: bytes(grey(p) for p in row), b""),
        "grey and alpha, 8 bits": (4, 8, lambda row: b"".join(bytes((grey(p), p[3])) for p in row), b""),
        "grey, 4 bits": (0, 4, lambda row: packed_samples([grey(p) >> 4 for p in row], 4), b""),
        "grey, 16 bits, a grey made transparent": (0, 16, lambda row: b"".join(struct.pack(">H", grey(p) * 257) for p in row),
                                                   chunk(b"tRNS", struct.pack(">H", grey(pixels[0][0]) * 257))),
        "RGB, a colour made transparent": (2, 8, lambda row: b"".join(bytes(p[:3]) for p in row),
                                           chunk(b"tRNS", struct.pack(">3H", *pixels[0][0][:3]))),
        "palette of 16, 4 bits": (3, 4, lambda row: packed_samples([nearest(p) for p in row], 4),
                                  palette + chunk(b"tRNS", bytes([0] + [255] * (len(small) - 1)))),
        "palette of 16, 8 bits": (3, 8, lambda row: bytes(nearest(p) for p in row), palette),
    }
    for name, (colour, depth, row_bytes, extra) in forms.items():
        write_png(folder / f"{name}.png", pixels, colour, depth, row_bytes, extra)


def check_text_and_sound(studio, checks):
    studio.type_record("STARNAME", 0, 1, "Wega")
    expected = studio.packed("STARNAME.LBX", lambda folder: replace_line(folder / "STARNAME_000.txt", 1, "Wega"))
    checks.expect(studio.download("STARNAME", "download-archive") == expected, "a record typed in place is what pack makes")
    field = f"{studio.card('STARNAME', 0)} input.record[data-record='3']"
    studio.browser.evaluate(f"(() => {{ const field = document.querySelector(\"{field}\"); field.value = 'Polaris\\\\x01';"
                            "field.dispatchEvent(new Event('input')); })()")
    room = f"document.querySelector(\"{field}\").parentElement.querySelector('.room').textContent"
    studio.browser.wait_until(f"{room} !== ''")
    checks.expect(studio.browser.evaluate(room) == "8 of 99 bytes",
                  f"a record's bytes and its room show as it is typed: {studio.browser.evaluate(room)!r}")
    long = "x" * 120
    studio.type_record("STARNAME", 0, 2, long)
    refused = studio.packed("STARNAME.LBX", lambda folder: [replace_line(folder / "STARNAME_000.txt", 1, "Wega"),
                                                            replace_line(folder / "STARNAME_000.txt", 2, long)])
    checks.expect(studio.message("STARNAME") == refused,
                  f"a record over its room: the page says {studio.message('STARNAME')!r}, pack says {said(refused)!r}")
    checks.expect(studio.download("STARNAME", "download-archive") == expected, "and the archive is unchanged")

    wave = studio.work / "SPHERSFX" / "SPHERSFX_000.wav"
    studio.run("unpack", "SPHERSFX.LBX")
    louder = studio.work.parent / "louder.wav"
    data = bytearray(wave.read_bytes())
    data[-1] = (data[-1] + 1) % 256
    louder.write_bytes(data)
    card = studio.card("SPHERSFX", 0)
    studio.choose(f"{card} input.replace-sound", louder)
    expected = studio.packed("SPHERSFX.LBX", lambda folder: shutil.copy(louder, folder / "SPHERSFX_000.wav"))
    checks.expect(studio.download("SPHERSFX", "download-archive") == expected, "a sound replaced is what pack makes")


def said(outcome):
    """A message as it stands; an archive, where a message was expected, by its size."""
    return outcome if isinstance(outcome, str) else f"an archive of {len(outcome)} bytes"


def replace_line(path, number, text):
    lines = path.read_bytes().split(b"\n")
    lines[number] = text.encode()
    path.write_bytes(b"\n".join(lines))


def check_mods(studio, checks, sample):
    """Mods made by the command line, applied in the page as lbx patch applies them."""
    studio.run("unpack", "STARNAME.LBX", "-o", "../theirs")
    replace_line(studio.work.parent / "theirs" / "STARNAME" / "STARNAME_001.txt", 0, "Oasis")
    studio.run("pack", "../theirs/STARNAME", "-o", "../theirs.lbx")
    studio.run("diff", "STARNAME.LBX", "../theirs.lbx", "-o", "theirs.lbxmod")
    # The page's STARNAME has a record edited: another mod applies over it.
    mine = studio.download("STARNAME", "download-archive")
    (studio.work.parent / "mine.lbx").write_bytes(mine)
    studio.choose("#STARNAME input.apply-patches", studio.work / "theirs.lbxmod")
    patched = studio.run("patch", "../mine.lbx", "theirs.lbxmod", "-o", "../both.lbx")
    checks.expect(patched.returncode == 0 and studio.download("STARNAME", "download-archive")
                  == (studio.work.parent / "both.lbx").read_bytes(), "a mod applied in the page is what lbx patch makes")
    # A mod made for another version of the archive is refused as lbx patch refuses it.
    for version in ("v2", "v3", "pagecopy"):
        (studio.work.parent / version).mkdir()
    shutil.copy(studio.work.parent / "theirs.lbx", studio.work.parent / "v2" / "STARNAME.LBX")
    studio.run("unpack", "../v2/STARNAME.LBX", "-o", "../v3source")
    replace_line(studio.work.parent / "v3source" / "STARNAME" / "STARNAME_000.txt", 1, "Deneb")
    studio.run("pack", "../v3source/STARNAME", "-o", "../v3/STARNAME.LBX")
    studio.run("diff", "../v2/STARNAME.LBX", "../v3/STARNAME.LBX", "-o", "other.lbxmod")
    before = studio.download("STARNAME", "download-archive")
    (studio.work.parent / "pagecopy" / "STARNAME.LBX").write_bytes(before)
    refused = studio.run("patch", "../pagecopy/STARNAME.LBX", "other.lbxmod", "-o", "../never.lbx").stderr.decode()
    studio.choose("#STARNAME input.apply-patches", studio.work / "other.lbxmod")
    shown = studio.message("STARNAME")
    checks.expect(refused.startswith("lbx: 'other.lbxmod' was made for another version") and
                  shown == refused.removeprefix("lbx: ").strip(),
                  f"a mod for another version: the page says {shown!r}, patch says {refused!r}")
    checks.expect(studio.download("STARNAME", "download-archive") == before, "and the archive is unchanged")


def check_bps(studio, checks):
    """A BPS patch applied in the page, and one made for another file refused."""
    studio.reopen("INBOX.LBX")
    studio.choose("#INBOX input.apply-patches", studio.work / "page.bps")
    checks.expect(studio.download("INBOX", "download-archive") == studio.frame_edited,
                  f"a BPS patch applied in the page gives what it was made of: {studio.message('INBOX')!r}")
    before = studio.download("STARNAME", "download-archive")
    studio.choose("#STARNAME input.apply-patches", studio.work / "page.bps")
    (studio.work.parent / "pagecopy" / "STARNAME.LBX").write_bytes(before)
    refused = studio.run("patch", "../pagecopy/STARNAME.LBX", "page.bps", "-o", "../never.lbx").stderr.decode()
    shown = studio.message("STARNAME")
    checks.expect(refused != "" and shown == refused.removeprefix("lbx: ").strip().replace("../pagecopy/", ""),
                  f"a BPS patch for another file: the page says {shown!r}, patch says {refused!r}")
    checks.expect(studio.download("STARNAME", "download-archive") == before, "and the archive is unchanged")


def main(web, lbx, out):
    find_chromium()
    page = pathlib.Path(web) / "index.html"
    if not page.exists():
        print(f"SKIPPED: the browser studio is not built in {web} (scripts/web builds it)")
        return SKIPPED
    out = pathlib.Path(out).resolve()
    shutil.rmtree(out, ignore_errors=True)
    sample = out / "sample"
    subprocess.run([lbx, "sample", str(sample)], check=True, stdout=subprocess.DEVNULL)
    shutil.copytree(sample, out / "work")

    checks = Checks()
    with Browser(width=1100, height=900) as browser:
        browser.open(page.resolve().as_uri())
        browser.wait_until("document.body.dataset.ready === '1'")
        studio = Studio(browser, lbx, out)
        browser.choose("#files", [sample / name for name in ARCHIVES])
        browser.wait_until(f"document.querySelectorAll('section.archive').length === {len(ARCHIVES)}")
        check_frames(studio, checks, sample)
        check_refusals(studio, checks, sample)
        check_png_forms(studio, checks)
        check_text_and_sound(studio, checks)
        check_mods(studio, checks, sample)
        check_bps(studio, checks)
        print(f"screenshot: {out / 'studio.png'}")
        checks.expect(browser.problems == [], f"no console error: {browser.problems}")
    return checks.finish()


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
