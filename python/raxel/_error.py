# SPDX-License-Identifier: MIT
"""What goes wrong, as exceptions."""

from __future__ import annotations

from . import _library


class Error(OSError):
    """An export, or another call, that failed; the old file is as it was.

    ``str(error)`` is one sentence. ``errno`` is the system's number behind it, or None. ``code`` is the
    library's own number (``RaxelHostCode``), as 1 for an option or a picture that makes no sense.
    """

    def __init__(self, message: str, errno: int | None = None, code: int = 0) -> None:
        super().__init__(message)
        if errno:
            self.errno = errno
        self.message = message
        self.code = code

    def __str__(self) -> str:
        return self.message

    def __reduce__(self) -> tuple[type[Error], tuple[str, int | None, int]]:
        return type(self), (self.message, self.errno, self.code)


class Stopped(Error):
    """An export whose ``progress`` answered False."""


def failure(code: int, message: str = "", errno: int | None = None) -> Error:
    """The exception for a code of the library, whose own sentence does where there is no other."""
    return Error(message or _library.text(_library.lib.raxelHostMessage(code)), errno, code)
