# SPDX-License-Identifier: MIT
"""The indented blocks of a document under docs/, by its headings."""

from __future__ import annotations

import re
from pathlib import Path

DOCS = Path(__file__).parents[2] / "docs"


def blocks(name: str) -> dict[str, list[str]]:
    parts = re.split(r"^#+ (.*)\n", (DOCS / name).read_text(), flags=re.M)
    found: dict[str, list[str]] = {}
    for heading, text in zip(parts[1::2], parts[2::2]):
        pieces = re.findall(r"(?:^(?:    .*)?\n)+", text, re.M)
        found[heading] = [re.sub(r"^    ", "", piece, flags=re.M).strip("\n") for piece in pieces if piece.strip()]
    return found
