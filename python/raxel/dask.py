# SPDX-License-Identifier: MIT
"""A folder of pictures on a Dask cluster::

    from distributed import Client
    import raxel.dask
    reports = raxel.dask.export_folder(Client("scheduler:8786"), "scans", "tiffs", compress="t6")

Sources and targets must have the same names on all machines. One thread a worker is enough, since the filter
takes one picture at a time: ``dask-worker --nthreads 1 --nworkers 8``.
"""

from __future__ import annotations

import os
from collections import Counter
from typing import Any, Sequence, Union

from ._file import Path, export_file
from ._options import Value
from ._report import Report

#: How often a task is given to another worker when the one that had it fails.
RETRIES = 3


def targets_of(sources: Sequence[Path], folder: Path) -> list[str]:
    """The names that ``raxel-export -d`` would choose. Raises ValueError when two are the same."""
    names = [os.path.basename(os.fspath(source)) for source in sources]
    targets = [os.path.join(folder, (os.path.splitext(name)[0] or name) + ".tif") for name in names]
    twice = [target for target, count in Counter(targets).items() if count > 1]
    if twice:
        raise ValueError(f"two inputs would be written to {min(twice)}")
    return targets


def export_folder(
    client: Any, sources: Union[Path, Sequence[Path]], folder: Path, **options: Value
) -> list[Report]:
    """Exports every source to a TIFF of the same name in a folder, which is made when it is missing.

    What a manifest in the folder says is done is skipped, so that a worker that dies costs no more than
    the pictures it had in hand, and a second call goes on where the first was stopped.

    :param client: a ``distributed.Client``.
    :param sources: picture files, or a folder of which all files are taken.
    :param options: as for :func:`raxel.export_file`.
    :returns: the reports, in the order of the sources.
    :raises raxel.Error: for the first picture that cannot be exported, when all others have been tried.
    """
    if isinstance(sources, (str, os.PathLike)):
        with os.scandir(sources) as found:
            sources = sorted(entry.path for entry in found if entry.is_file())
    targets = targets_of(sources, folder)
    os.makedirs(folder, exist_ok=True)
    # Not pure: a picture whose file has changed is done anew, though the call is the same.
    futures = client.map(
        export_file, list(sources), targets, skip_done=True, pure=False, retries=RETRIES, **options
    )
    gathered: list[Any] = client.gather(futures, errors="skip")
    if len(gathered) == len(futures):
        return gathered
    failed = next(future for future in futures if future.status != "finished")
    reports: list[Report] = [failed.result()]  # raises what it failed with
    return reports
