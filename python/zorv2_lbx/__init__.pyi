"""LBX archives of the game tesk: the zorv2 library and its modding core."""

import os
from typing import Any, Dict, Iterable, Iterator, List, Optional, Sequence, TypedDict, Union, overload

import numpy as np
import numpy.typing as npt

_Path = Union[str, "os.PathLike[str]"]
_RGBA = npt.NDArray[np.uint8]  # (height, width, 4)
_Palette = npt.NDArray[np.uint8]  # (256, 4)
_Indices = npt.NDArray[np.uint16]  # (height, width), CLEAR where nothing is painted
_Frames = Union[Sequence[npt.ArrayLike], npt.ArrayLike]

CLEAR: int
"""The value of indices() where a frame paints nothing: 256."""

class Error(ValueError):
    """A failure of the library or the modding core; its message is theirs, unchanged."""

class LbxWarning(UserWarning):
    """What the modding core says a user should know, as the lbx tool says it on stderr."""

class Entry:
    """One entry of an archive: its bytes and the kind the library found for them."""

    @property
    def kind(self) -> str:
        """'graphic', 'cursor', 'text', 'font', 'empty', 'sound', 'abcost', 'leader', 'race' or 'unknown'."""
    @property
    def info(self) -> str:
        """The library's one-line description, as `lbx list` shows it."""
    @property
    def shape(self) -> str:
        """'graphic (8 frames of 48x32)', 'text (3 records of 100 bytes)', 'sound (22050 Hz, 8-bit, mono)'."""
    @property
    def data(self) -> bytes:
        """The entry's bytes, as the archive stores them."""
    @property
    def size(self) -> int: ...
    def verify(self, name: str = "entry") -> Optional[bool]:
        """Re-creates the entry and compares bytes, as `lbx verify`: True, False, or None if not re-creatable."""
    @staticmethod
    def from_bytes(data: bytes) -> "Entry":
        """An entry of these bytes, of the kind the library finds for them."""
    @staticmethod
    def empty(marker: bool = False) -> "Entry":
        """An empty entry: no bytes, or with marker=True the 22-byte marker text."""

class Graphic(Entry):
    """An image or animation: frames of 8-bit palette indices, given out as RGBA numpy arrays."""

    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...
    @property
    def frame_count(self) -> int: ...
    @property
    def flags(self) -> int:
        """The flag word's known flags: 0x0100 raw, 0x0400 clear, 0x0800 shadows, 0x1000 palette, 0x2000 loop."""
    @property
    def flag_names(self) -> str:
        """The flags by name, 'palette,loop', as create(flags=...) takes them."""
    @property
    def clear_once(self) -> int: ...
    @property
    def clear_mod(self) -> int: ...
    @property
    def has_palette(self) -> bool:
        """Whether the graphic holds a palette block of its own."""
    @property
    def palette_offset(self) -> int: ...
    @property
    def palette_size(self) -> int: ...
    @property
    def palette(self) -> Optional[_Palette]:
        """The graphic's own palette block over opaque black, (256, 4) uint8; None without a block."""
    def frame(self, index: int, palette: Optional[npt.ArrayLike] = None) -> _RGBA:
        """Frame `index` (negative from the end) as (height, width, 4) uint8 RGBA in `palette`; read-only (.copy() to edit)."""
    def frames(self, palette: Optional[npt.ArrayLike] = None) -> List[_RGBA]:
        """Every frame, as frame() gives them; decoded with the GIL released."""
    def indices(self, index: int) -> _Indices:
        """The palette indices frame `index` stores, (height, width) uint16; CLEAR where nothing is painted."""
    def with_palette(self, palette: npt.ArrayLike) -> "Graphic":
        """The same indices and settings with `palette` as the colours of its own block: a recolouring."""
    def to_pil(self, index: int = 0, palette: Optional[npt.ArrayLike] = None) -> "PIL.Image.Image":  # type: ignore[name-defined]
        """Frame `index` as a Pillow RGBA image (needs Pillow)."""
    @staticmethod
    def create(
        frames: _Frames,
        palette: npt.ArrayLike,
        *,
        flags: Union[int, str] = 0,
        clear_once: int = 0,
        clear_mod: int = 0,
        palette_offset: int = 0,
        palette_size: Optional[int] = None,
    ) -> "Graphic":
        """A new graphic of RGBA frames, every painted colour looked up in `palette`."""
    @staticmethod
    def from_indices(
        frames: _Frames,
        palette: Optional[npt.ArrayLike] = None,
        *,
        flags: Union[int, str] = 0,
        clear_once: int = 0,
        clear_mod: int = 0,
        palette_offset: int = 0,
        palette_size: Optional[int] = None,
    ) -> "Graphic":
        """A new graphic that stores exactly these indices (0 to 255, CLEAR where nothing is painted)."""

class Cursor(Entry):
    """A mouse cursor: 256 colours and 20 frames of 24x24; index 0 is transparent."""

    @property
    def palette(self) -> _Palette: ...
    @property
    def frame_count(self) -> int: ...
    def frame(self, index: int, palette: Optional[npt.ArrayLike] = None) -> _RGBA: ...
    def frames(self, palette: Optional[npt.ArrayLike] = None) -> List[_RGBA]: ...
    def indices(self, index: int) -> _Indices: ...
    def to_pil(self, index: int = 0, palette: Optional[npt.ArrayLike] = None) -> "PIL.Image.Image":  # type: ignore[name-defined]
        """Frame `index` as a Pillow RGBA image (needs Pillow)."""
    @staticmethod
    def create(frames: _Frames, palette: npt.ArrayLike) -> "Cursor":
        """A new cursor of 20 RGBA frames of 24x24; transparent pixels store index 0."""

class Text(Entry):
    """A table of strings in records of one length; each string is bytes."""

    def __len__(self) -> int: ...
    def __getitem__(self, index: int) -> bytes: ...
    def __iter__(self) -> Iterator[bytes]: ...
    @property
    def strings(self) -> List[bytes]: ...
    def decoded(self, charset: Optional[_Path] = None) -> List[str]:
        """Every record as text through a charset: CP437 by default, or a table file (HEX=text lines)."""
    @property
    def record_length(self) -> int: ...
    @staticmethod
    def create(strings: Iterable[Union[bytes, str]]) -> "Text":
        """A new text table of these strings (bytes, or ASCII str)."""

class Font(Entry):
    """Six fonts of 256 glyphs: their heights and widths."""

    @property
    def heights(self) -> List[int]: ...
    @property
    def widths(self) -> npt.NDArray[np.uint8]:
        """(6, 256) uint8."""

class Archive:
    """An LBX archive in memory: a sequence of entries."""

    def __init__(self, entries: Optional[Iterable[Entry]] = None) -> None: ...
    @property
    def path(self) -> Optional[str]:
        """The file it was read from; None for an archive made in memory."""
    @property
    def tagged(self) -> bool: ...
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, index: int) -> Entry: ...
    @overload
    def __getitem__(self, index: slice) -> List[Entry]: ...
    def __iter__(self) -> Iterator[Entry]: ...
    def append(self, entry: Entry) -> None: ...
    def replace(self, index: int, entry: Entry) -> None: ...
    def save(self, path: _Path, overwrite: bool = False) -> None:
        """Writes the archive safely to `path`; an existing file only with overwrite=True, never its own file."""
    def palette(self, index: int, palettes: Optional[_Path] = None) -> _Palette:
        """The colours graphic `index` shows in, found as `lbx export` finds them."""

def open(path: _Path) -> Archive:
    """Reads and validates the archive at `path`."""

class PackResult(TypedDict):
    archive: str
    entries: int
    changed: List[str]
    added: int
    moved: int
    removed: int
    arrangement: List[str]

def unpack(archive: Union[Archive, _Path], folder: _Path, *, overwrite: bool = False, palettes: Optional[_Path] = None) -> str:
    """Takes the archive apart into FOLDER/STEM/, as `lbx unpack -o FOLDER`; returns that folder."""

def pack(
    folder: _Path,
    out: Optional[_Path] = None,
    *,
    overwrite: bool = False,
    nearest: bool = False,
    strict: bool = False,
    grow: bool = False,
    records: bool = False,
) -> PackResult:
    """Builds the archive again from a folder that unpack made, as `lbx pack`."""

def diff(base: _Path, new: _Path) -> Dict[str, Any]:
    """What changed between two archive files, as `lbx diff --json` prints it."""

def make_mod(base: _Path, new: _Path, out: _Path, *, reversible: bool = False, bps: bool = False, overwrite: bool = False) -> str:
    """Writes the mod (or, with bps=True, the BPS patch) that makes `new` of `base`; returns its path."""

def patch(base: _Path, mods: Sequence[_Path], out: _Path, *, reverse: bool = False, prefer_last: bool = False, overwrite: bool = False) -> Dict[str, Any]:
    """Applies mods in order to `base`, each checked first, and writes `out`; returns what changed, as diff()."""
