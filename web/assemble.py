#!/usr/bin/env python3
"""Puts the page together as one file: each /*@NAME*/ line of the template
(the first file) becomes the file of that name among the others.

Usage: assemble.py OUTPUT TEMPLATE PART...
"""

import pathlib
import re
import sys

# Text that would end or change the script element it is put in.
UNSAFE = re.compile(r"</script|<!--", re.IGNORECASE)


def main(output, template, *parts):
    texts = {pathlib.Path(part).name: pathlib.Path(part).read_text(encoding="utf-8") for part in parts}

    def part(match):
        name = match.group(1)
        text = texts[name]
        if name.endswith(".js") and UNSAFE.search(text):
            sys.exit(f"assemble.py: {name} holds {UNSAFE.search(text).group(0)!r}, which would end its script early")
        return text

    page = re.sub(r"^/\*@([\w.]+)\*/$", part, pathlib.Path(template).read_text(encoding="utf-8"), flags=re.MULTILINE)
    pathlib.Path(output).write_text(page, encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
