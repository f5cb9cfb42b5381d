"""LBX archives of the game tesk: the zorv2 library and its modding core.

    import zorv2_lbx as lbx
    archive = lbx.open("INBOX.LBX")
    for entry in archive:
        print(entry.kind, entry.info)

Frames are numpy arrays, (height, width, 4) uint8 RGBA; palettes (256, 4)
uint8; text tables sequences of bytes. Every failure of the library is an
lbx.Error (a ValueError) with the library's message; what the modding core
warns about is an lbx.LbxWarning.
"""

from ._core import (
    CLEAR,
    Archive,
    Cursor,
    Entry,
    Error,
    Font,
    Graphic,
    LbxWarning,
    Text,
    diff,
    make_mod,
    open,
    pack,
    patch,
    unpack,
)

__all__ = [
    "CLEAR",
    "Archive",
    "Cursor",
    "Entry",
    "Error",
    "Font",
    "Graphic",
    "LbxWarning",
    "Text",
    "diff",
    "make_mod",
    "open",
    "pack",
    "patch",
    "unpack",
]


def _image(rgba):
    try:
        from PIL import Image
    except ImportError as missing:  # pragma: no cover - Pillow is optional
        raise ImportError("to_pil() needs Pillow (Debian: python3-pil)") from missing
    return Image.fromarray(rgba, "RGBA")


def _graphic_to_pil(self, index=0, palette=None):
    """Frame `index` as a Pillow RGBA image, in `palette` as frame() takes it (needs Pillow)."""
    return _image(self.frame(index, palette))


def _cursor_to_pil(self, index=0, palette=None):
    """Frame `index` as a Pillow RGBA image (needs Pillow)."""
    return _image(self.frame(index, palette))


Graphic.to_pil = _graphic_to_pil
Cursor.to_pil = _cursor_to_pil
