# SPDX-License-Identifier: MIT
"""What an export has done, as a record."""

from __future__ import annotations

import json
from dataclasses import dataclass, field
from typing import Any


@dataclass(frozen=True)
class Report:
    """What became of a picture, or with :func:`raxel.plan` what would become of it."""

    source: str  #: the file, or "picture 1" for one in memory
    target: str  #: the file; empty when it went elsewhere
    bytes: int  #: of the whole file; 0 for a plan
    width: int  #: pixels in the file
    height: int  #: rows in the file
    bits: int  #: bits a pixel
    mode: str  #: "rgb", "bilevel"...
    compression: str  #: "lzw", "t6"...
    layout: str  #: "strips" or "tiles"
    dpi: tuple[float, float]  #: dots an inch across and down
    uncompressed_bytes: int  #: of the file without compression
    notes: tuple[str, ...]  #: what had to be changed on the way
    details: tuple[str, ...]  #: what else was done
    verified: bool  #: the file was decoded and compared
    seconds: dict[str, float] = field(compare=False)  #: "read", "prepare" and "write"
    pages: tuple[Report, ...] = ()  #: of a file of pages; the numbers above are the first one's
    skipped: bool = False  #: by ``skip_done``: the file was there already


def report_of(text: str) -> Report:
    """The report as the library writes it."""
    return _of(json.loads(text))


def _of(json_report: dict[str, Any]) -> Report:
    pages = tuple(_of(page) for page in json_report.get("pages", ()))
    file = json_report.get("file", {})
    if pages and not file:
        file = {
            "width": pages[0].width,
            "height": pages[0].height,
            "bits": pages[0].bits,
            "mode": pages[0].mode,
            "compression": pages[0].compression,
            "layout": pages[0].layout,
            "dpi": pages[0].dpi,
            "uncompressedBytes": sum(page.uncompressed_bytes for page in pages),
        }
    dpi = file.get("dpi", (0, 0))
    return Report(
        source=json_report["input"],
        target=json_report.get("output", ""),
        bytes=json_report.get("bytes", file.get("bytes", 0)),
        width=file.get("width", 0),
        height=file.get("height", 0),
        bits=file.get("bits", 0),
        mode=file.get("mode", ""),
        compression=file.get("compression", ""),
        layout=file.get("layout", "strips"),
        dpi=(float(dpi[0]), float(dpi[1])),
        uncompressed_bytes=file.get("uncompressedBytes", 0),
        notes=tuple(json_report.get("notes", ())),
        details=tuple(json_report.get("details", ())),
        verified=json_report.get("verified", False),
        seconds=dict(json_report.get("seconds", {})),
        pages=pages,
        skipped=json_report.get("skipped", False),
    )
