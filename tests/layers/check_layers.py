"""Holds the tools to their layers: each folder includes only from the layers
beneath it, and the modding core stays free of the terminal, the system's own
calls and state that outlives a call. Prints each breach; exit status 1 if any."""
import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1])
LIBRARY = {"archive", "entry", "images", "kinds", "knowledge"}
# What each folder may include besides the standard library, by the first
# parts of the included path.
ALLOWED = {
    "tools/modding": LIBRARY | {"tools/modding", "png.h", "nlohmann", "unistr.h", "uninorm.h", "unilbrk.h"},
    "tools/render": LIBRARY | {"tools/modding", "tools/render"},
    "tools/platform": LIBRARY | {"tools/modding", "tools/platform"},
    "tools/parallel": LIBRARY | {"tools/modding", "tools/platform", "tools/parallel"},
    "tools/cli": LIBRARY | {"tools", "CLI", "LbxVersion.h"},
    "web": LIBRARY | {"tools/modding", "tools/render", "emscripten"},
    # The Python module links the core and nothing of the command line.
    "python/src": LIBRARY | {"tools/modding", "python/src", "pybind11"},
}
for folder in LIBRARY:
    ALLOWED[folder] = set(LIBRARY) | {"Lbx.h"}
# The core says nothing itself, ends no process, calls the system only
# through the standard library, and keeps no state between calls.
CORE_FORBIDDEN = [
    (r"std::(cout|cerr|clog|cin)\b|\bprintf\(|\bputs\(", "writes to the standard streams"),
    (r"\b(std::)?(exit|abort|quick_exit)\(", "ends the process"),
    (r"#include <(iostream|unistd\.h|fcntl\.h|sys/[^>]+)>", "includes a terminal or POSIX header"),
    (r"\bthread_local\b|^\s*static\s+(?!const\b|constexpr\b)[\w:<>, ]+\s+\w+\s*(=|;|\{)", "keeps mutable state"),
]
INCLUDE = re.compile(r'#include\s*([<"])([^>"]+)[>"]')
STANDARD = re.compile(r"^([a-z_]+|sys/[a-z_]+)(\.h)?$")


def allowed(path: str, folder: str) -> bool:
    return any(path == prefix or path.startswith(prefix + "/") for prefix in ALLOWED[folder])


def breaches():
    for folder in ALLOWED:
        for source in sorted((ROOT / folder).glob("*.[ch]*")):
            text = source.read_text()
            name = source.relative_to(ROOT)
            for bracket, path in INCLUDE.findall(text):
                standard = bracket == "<" and STANDARD.match(path) and path not in {"png.h", "unistr.h", "uninorm.h", "unilbrk.h"}
                if not standard and not allowed(path, folder):
                    yield f"{name}: includes {path}, outside what {folder} may use"
            if folder == "tools/modding":
                for line_number, line in enumerate(text.splitlines(), 1):
                    for pattern, what in CORE_FORBIDDEN:
                        if re.search(pattern, line):
                            yield f"{name}:{line_number}: the core {what}: {line.strip()}"


found = list(breaches())
for breach in found:
    print(breach)
sys.exit(1 if found else 0)
