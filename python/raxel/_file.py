# SPDX-License-Identifier: MIT
"""One picture file to one TIFF file, as a task for engines that spread work."""

from __future__ import annotations

import os
from typing import Optional, Union

from . import _options
from ._options import Value
from ._order import Order
from ._pictures import path_bytes, source_of
from ._report import Report, report_of

#: The manifest beside the targets, where no other is named.
MANIFEST = "raxel-manifest.jsonl"

Path = Union[str, "os.PathLike[str]"]


def export_file(
    source: Path,
    target: Path,
    *,
    skip_done: bool = False,
    manifest: Optional[Path] = None,
    **options: Value,
) -> Report:
    """Writes the file that ``raxel-export`` writes with the same options, and none of Python's defaults.

    The function keeps nothing between calls and can be pickled, so it runs under ``concurrent.futures``,
    Dask, Ray or Spark. The target is replaced when the new file is whole: a task that is run twice, or dies
    half-way, does no harm.

    :param skip_done: does nothing where the manifest says that the target was made with these options from
        a source of this size, time and digest, and the target has the digest that it had then; the report
        then says ``skipped``.
    :param manifest: the file that gets a line of JSON for each picture: ``source``, ``target``, ``sha256``,
        ``bytes``, ``options``, ``seconds`` and what the source was. With ``skip_done`` it is
        ``raxel-manifest.jsonl`` beside the target by default.
    :param options: as for :func:`raxel.save`, but without ``resume``, and without ``progress``: how far a task is,
        the engine that runs it knows.
    """
    if "resume" in options:
        raise TypeError("export_file() has no option 'resume'; skip_done=True does that")
    if skip_done and manifest is None:
        manifest = os.path.join(os.path.dirname(os.fspath(target)), MANIFEST)
    given: dict[str, object] = {**options, "manifest": manifest, "resume": skip_done}
    arguments = [*_options.arguments("export_file", given), ("output", os.fsdecode(path_bytes(target)))]
    with Order(arguments, [source_of(os.fspath(source))]) as order:
        order.run()
        return report_of(order.report())
