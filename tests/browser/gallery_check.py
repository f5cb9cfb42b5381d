#!/usr/bin/env python3
"""Opens the gallery of the sample archives in headless Chromium and checks it
from inside the page: every picture loaded at its size, every player running
as its loop flag says, the controls and the remembered zoom, sounds that
play, nothing fetched from outside and no console error. Leaves a screenshot.

Usage: gallery_check.py LBX_TOOL OUTPUT_FOLDER
"""

import os
import pathlib
import shutil
import subprocess
import sys
import time

from devtools import Browser, Checks, find_chromium

SAMPLE = ["CONFIRM.LBX", "FONTS.LBX", "INBOX.LBX", "SPHERSFX.LBX", "STARNAME.LBX"]
WATCH_SECONDS = 3.0  # a 20-frame cursor comes round once in 2.4 s


def export_sample(lbx, out):
    shutil.rmtree(out, ignore_errors=True)
    subprocess.run([lbx, "sample", str(out / "sample")], check=True, stdout=subprocess.DEVNULL)
    for name in SAMPLE:
        subprocess.run([lbx, "export", str(out / "sample" / name), "--html", "-o", str(out / "gallery")],
                       check=True, stdout=subprocess.DEVNULL)
    return out / "gallery"


BADLY_LOADED = """(async () => {
  await Promise.all([...document.images].map((image) => image.decode().catch(() => null)));
  return [...document.images].filter((image) => !(image.complete
      && image.naturalWidth === Number(image.style.getPropertyValue('--w'))
      && image.naturalHeight === Number(image.style.getPropertyValue('--h')))).map((image) => image.src);
})()"""

PLAYERS = "[...document.querySelectorAll('.player')].map((p) => [Number(p.dataset.shown), p.dataset.state, " \
          "p.dataset.frames.split('|').length, p.dataset.loop === '1'])"


def watch_players(browser):
    """Each player's frames as seen over a few seconds, and its last state."""
    seen = None
    deadline = time.monotonic() + WATCH_SECONDS
    while time.monotonic() < deadline:
        now = browser.evaluate(PLAYERS)
        seen = [[] for _ in now] if seen is None else seen
        for frames, (shown, *_rest) in zip(seen, now):
            if not frames or frames[-1] != shown:
                frames.append(shown)
        time.sleep(0.03)
    return seen, now


def check_players(browser, checks):
    seen, final = watch_players(browser)
    checks.expect(len(final) == 5, f"five animations in the sample have players, found {len(final)}")
    for number, (frames, (shown, state, count, loop)) in enumerate(zip(seen, final)):
        if loop:
            wrapped = any(later < earlier for earlier, later in zip(frames, frames[1:]))
            checks.expect(state == "playing" and wrapped,
                          f"looping player {number} comes round and goes on: saw {frames}, {state}")
        else:
            checks.expect(state == "stopped" and shown == count - 1,
                          f"player {number} without loop stops on its last frame: saw {frames}, {state}")

    def first_player(action):
        return browser.evaluate(f"(() => {{ const p = document.querySelector('.player'); {action}; "
                                "return [Number(p.dataset.shown), p.dataset.state]; })()")

    first_player("if (p.dataset.state === 'playing') p.querySelector('[data-act=play]').click()")
    shown, state = first_player("p.querySelector('[data-act=next]').click()")
    after_back, _ = first_player("p.querySelector('[data-act=back]').click(); p.querySelector('[data-act=back]').click()")
    count = browser.evaluate("document.querySelector('.player').dataset.frames.split('|').length")
    checks.expect(state == "stopped" and after_back == (shown - 2) % count,
                  f"next and back step one frame while paused: {shown} then {after_back} of {count}")


def check_zoom(browser, checks, url):
    browser.evaluate("document.querySelector('#zoom [data-zoom=\"5\"]').click()")
    width = browser.evaluate("(() => { const i = document.querySelector('img.pix'); "
                             "return i.getBoundingClientRect().width / i.naturalWidth; })()")
    checks.expect(abs(width - 5) < 0.01, f"zoom 5x draws pictures five times their size, got {width}")
    browser.open(url)
    browser.wait_until("document.body.dataset.ready === '1'")
    kept = browser.evaluate("getComputedStyle(document.documentElement).getPropertyValue('--zoom').trim()")
    checks.expect(kept == "5", f"zoom is remembered across a reload, got {kept!r}")
    browser.evaluate("document.querySelector('#zoom [data-zoom=\"3\"]').click()")


def main(lbx, out):
    find_chromium()
    out = pathlib.Path(out).resolve()
    gallery = export_sample(lbx, out)
    checks = Checks()
    page = (gallery / "index.html").read_bytes()
    try:
        page.decode("utf-8", errors="strict")
        checks.expect(True, "")
    except UnicodeDecodeError as e:
        checks.expect(False, f"index.html is valid UTF-8: {e}")

    url = (gallery / "index.html").as_uri()
    with Browser(width=1000, height=940) as browser:
        browser.open(url)
        browser.wait_until("document.body.dataset.ready === '1'")
        badly = browser.evaluate(BADLY_LOADED)
        checks.expect(badly == [], f"every picture loads at its natural size: not {badly}")
        shown = set(browser.evaluate("[...document.images].map((i) => i.src.split('/').pop())"))
        pictures = {p.name for p in gallery.glob("*.png") if not p.name.endswith(("_sheet.png", "_palette.png"))}
        checks.expect(pictures <= shown, f"every exported picture is on the page: missing {sorted(pictures - shown)}")
        outside = browser.evaluate("performance.getEntriesByType('resource').map((r) => r.name)"
                                   ".filter((name) => !name.startsWith('file:'))")
        checks.expect(outside == [], f"nothing is fetched from outside the folder: {outside}")
        browser.wait_until("[...document.querySelectorAll('audio')].every((a) => a.readyState >= 1 || a.error)")
        sounds = browser.evaluate("[...document.querySelectorAll('audio')].map((a) => [a.error === null, a.duration])")
        checks.expect(len(sounds) == 1 and all(ok and duration > 0 for ok, duration in sounds),
                      f"the sample's sound is playable: {sounds}")
        check_players(browser, checks)
        check_zoom(browser, checks, url)
        browser.evaluate("document.getElementById('INBOX').scrollIntoView()")
        time.sleep(0.3)
        browser.screenshot(str(out / "gallery.png"))
        print(f"screenshot: {out / 'gallery.png'}")
        checks.expect(browser.problems == [], f"no console error: {browser.problems}")
    return checks.finish()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2]))
