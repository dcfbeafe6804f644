# SPDX-License-Identifier: MIT
"""The command's options as keywords, from the command's own table."""

from __future__ import annotations

import json
import os
from typing import Iterator, Mapping, NamedTuple, Optional, Sequence, Union

from . import _library

#: What a keyword takes. None is the same as leaving it out.
Value = Union[None, bool, int, float, str, "os.PathLike[str]", Sequence[object], Mapping[int, object]]


class Option(NamedTuple):
    """A row of the option table."""

    name: str  #: the keyword
    argument: Optional[str]  #: what stands for its value in texts; None for a flag
    choices: tuple[str, ...]  #: all that it can be; empty where that is open
    group: str  #: "Output", "Picture", "Filter" or "Report"
    help: str  #: a sentence without its full stop


#: The command's options that are no keywords here, and why.
NOT_IN_PYTHON: Mapping[str, str] = {
    "output": "the second argument of save() is the file",
    "directory": "a loop over export_file(), or raxel.dask.export_folder(), fills a folder",
    "jobs": "concurrent.futures and its like share work out",
    "threads": "is for the process: the environment variable RAXEL_THREADS says it",
    "no-sandbox": "a program's own process decodes its pictures",
    "no-dither": "dither=False",
    "dry-run": "raxel.plan()",
    "inspect": "raxel.inspect()",
    "list": "raxel.options() has the choices",
    "json": "results are objects",
    "quiet": "nothing is printed",
    "verbose": "the report that save() returns tells all",
    "version": "raxel.__version__",
    "shard": "the engine that spreads the work shares it out",
}


def _table() -> dict[str, Option]:
    rows = json.loads(_library.text(_library.lib.raxelHostOptions()))["options"]
    return {
        row["name"].replace("-", "_"): Option(
            row["name"].replace("-", "_"),
            row.get("argument"),
            tuple(row.get("choices", ())),
            row["group"],
            row["help"],
        )
        for row in rows
        if row["name"] not in NOT_IN_PYTHON
    }


_OPTIONS = _table()


def options() -> dict[str, Option]:
    """Every option of ``raxel-export`` that is a keyword of :func:`save` and its like, by keyword.

    The table is the command's own: dashes are underscores, and flags take True. What is missing is in
    ``raxel.NOT_IN_PYTHON``, with the reason.
    """
    return dict(_OPTIONS)


def _number(value: float) -> str:
    """Without an exponent, which the command line does not know."""
    return f"{value:.12f}".rstrip("0").rstrip(".") if isinstance(value, float) else str(value)


def _text(value: object) -> str:
    """A value as it would be written on a command line."""
    if isinstance(value, (int, float)) and not isinstance(value, bool):
        return _number(value)
    if isinstance(value, os.PathLike):
        return os.fsdecode(value)
    return str(value)


def _texts(name: str, value: object) -> list[str]:
    """A value's texts: several for an option that is repeated."""
    if name == "set":
        if isinstance(value, Mapping):
            return [f"{number}={_text(setting)}" for number, setting in value.items()]
        return [value] if isinstance(value, str) else [_text(entry) for entry in _sequence(value)]
    if isinstance(value, (str, os.PathLike)) or not isinstance(value, Sequence):
        return [_text(value)]
    parts = [_text(part) for part in value]
    if name == "background":
        return ["#" + "".join(f"{int(part):02x}" for part in parts)]
    return [("x" if name in ("dpi", "size") else ",").join(parts)]


def _sequence(value: object) -> Sequence[object]:
    return value if isinstance(value, Sequence) else [value]


def arguments(caller: str, given: Mapping[str, object]) -> Iterator[tuple[str, Optional[str]]]:
    """Names and texts for the command's parser. Raises TypeError for a keyword that is none."""
    for name, value in given.items():
        option = _OPTIONS.get(name)
        if option is None:
            raise TypeError(f"{caller}() has no option {name!r}; raxel.options() lists them")
        if value is None:
            continue
        switch = name.replace("_", "-")
        if option.argument is not None:
            if isinstance(value, bool):
                raise TypeError(f"{caller}(): {name} takes {option.argument}, not {value}")
            for text in _texts(name, value):
                yield switch, text
        elif not isinstance(value, bool):
            raise TypeError(f"{caller}(): {name} is True or False, not {value!r}")
        elif value:
            yield switch, None
        elif name == "dither":
            yield "no-dither", None
