# SPDX-License-Identifier: MIT
"""An order of the library, and how it is run without keeping Python from anything else."""

from __future__ import annotations

import ctypes
import mmap
import threading
from ctypes import c_size_t, c_ssize_t, c_uint64, c_void_p, py_object
from queue import SimpleQueue
from types import TracebackType
from typing import Callable, Iterable, NamedTuple, Optional, Sequence

from . import _library
from ._error import Stopped, failure
from ._library import HostCalls, HostProgress, lib, text
from ._pictures import Source

#: Hears how far an export is, 0.0 to 1.0; answering False stops it.
Progress = Callable[[float], object]

# How long a stop waits for the library to end before it is left to end by itself. It looks whether it is to
# stop some fifty times a second.
_PATIENCE = 0.06


# What a callback is told of, at most, before the file is in its place.
_NEARLY = 0.99

# Bytes of any content, to be filled before anyone else sees them.
_new_bytes = ctypes.PYFUNCTYPE(py_object, c_void_p, c_ssize_t)(("PyBytes_FromStringAndSize", ctypes.pythonapi))
_bytes_address = ctypes.PYFUNCTYPE(c_void_p, py_object)(("PyBytes_AsString", ctypes.pythonapi))
_LARGE_PAGE = 2 << 20


def _use_large_pages(start: int, count: int) -> None:
    """Asks the system for large pages: without them touching memory for the first time takes longer than to
    copy into it. Where there are none, nothing changes."""
    advice = getattr(mmap, "MADV_HUGEPAGE", None)
    first, end = -(-start // _LARGE_PAGE) * _LARGE_PAGE, (start + count) // _LARGE_PAGE * _LARGE_PAGE
    if advice is not None and end > first:
        ctypes.CDLL(None).madvise(c_void_p(first), c_size_t(end - first), advice)


class _State(NamedTuple):
    """How far the library is."""

    stage: int
    part: float  # of the stage
    pages: int  # of the file, as far as it is known


class Order:
    """Options and pictures, and what becomes of them. A context manager."""

    def __init__(self, options: Iterable[tuple[str, Optional[str]]], sources: Sequence[Source]) -> None:
        self._handle = lib.raxelHostOrderNew()
        if not self._handle:
            raise MemoryError
        self._sources = sources  # borrowed by the library
        self._lent = False  # to a thread, which closes it if nobody waits
        try:
            for name, value in options:
                encoded = None if value is None else value.encode("utf-8", "surrogateescape")
                self._check(lib.raxelHostOrderSet(self._handle, name.encode(), encoded))
            for source in sources:
                if source.pixels is not None:
                    self._check(lib.raxelHostOrderPicture(self._handle, ctypes.byref(source.pixels)))
                else:
                    self._check(lib.raxelHostOrderFile(self._handle, source.path))
        except BaseException:
            self.close()
            raise

    def __enter__(self) -> Order:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if not self._lent:
            self.close()

    def close(self) -> None:
        """Frees what the library keeps, the file's bytes included."""
        handle, self._handle = self._handle, None
        lib.raxelHostOrderFree(handle)

    def _check(self, code: int) -> None:
        if code != _library.OK:
            message = text(lib.raxelHostOrderMessage(self._handle))
            raise failure(code, message, lib.raxelHostOrderError(self._handle))

    def _end(self, code: int, refused: bool) -> None:
        """Raises what a run has failed with, which is a stop where ``progress`` has asked for it."""
        if refused and code != _library.OK:
            raise Stopped(text(lib.raxelHostOrderMessage(self._handle)), None, code)
        self._check(code)

    def report(self) -> str:
        """What the run has done, as JSON."""
        return text(lib.raxelHostOrderReport(self._handle))

    def file(self) -> memoryview:
        """The file's bytes, where there is no other output; good until the order is closed."""
        count = c_uint64()
        address = lib.raxelHostOrderBytes(self._handle, ctypes.byref(count))
        if not address:
            return memoryview(b"")
        return memoryview((ctypes.c_char * count.value).from_address(address)).cast("B")

    def file_bytes(self) -> bytes:
        """The same as bytes of Python's own."""
        count = c_uint64()
        address = lib.raxelHostOrderBytes(self._handle, ctypes.byref(count))
        made: bytes = _new_bytes(None, count.value) if address else b""
        if made:
            room = _bytes_address(made)
            _use_large_pages(room, count.value)
            ctypes.memmove(room, address, count.value)
        return made

    def run(self, progress: Optional[Progress] = None) -> None:
        """Runs the order; raises what the library or ``progress`` fails with."""
        if threading.current_thread() is threading.main_thread():
            self._run_beside(progress)
        else:
            self._run_here(progress)

    def _calls(self, progress: Callable[[_State], bool]) -> HostCalls:
        calls = HostCalls()
        calls.size = ctypes.sizeof(HostCalls)

        def tell(_context: object, stage: int, part: float, _bytes: int) -> int:
            return 0 if progress(_State(stage, part, lib.raxelHostOrderPages(self._handle))) else 1

        calls.progress = HostProgress(tell)
        return calls

    def _run_here(self, progress: Optional[Progress]) -> None:
        """In a thread that no signal reaches."""
        calls = HostCalls()
        calls.size = ctypes.sizeof(HostCalls)
        failed: list[BaseException] = []
        refused: list[bool] = [False]
        if progress is not None:
            meter = _Meter()
            hear = progress

            def tell(state: _State) -> bool:
                try:
                    refused.append(hear(meter.whole(state)) is False)
                    return not refused[-1]
                except BaseException as error:
                    failed.append(error)
                    return False

            calls = self._calls(tell)
        code = lib.raxelHostOrderRun(self._handle, ctypes.byref(calls))
        if failed:
            raise failed[0]
        self._end(code, refused[-1])
        if progress is not None:
            progress(1.0)

    def _run_beside(self, progress: Optional[Progress]) -> None:
        """In the main thread: the library works in another, so that Ctrl-C gets through at once and
        ``progress`` is called here."""
        news: SimpleQueue[Optional[_State]] = SimpleQueue()
        answers: SimpleQueue[bool] = SimpleQueue()
        stopped, ended, lock = threading.Event(), threading.Event(), threading.Lock()
        codes: list[int] = []

        def tell(state: _State) -> bool:
            if stopped.is_set():
                return False
            if progress is None:
                return True
            news.put(state)
            return answers.get() and not stopped.is_set()

        calls = self._calls(tell)

        def work() -> None:
            try:
                if not stopped.is_set():
                    codes.append(lib.raxelHostOrderRun(self._handle, ctypes.byref(calls)))
            finally:
                news.put(None)
                with lock:
                    ended.set()
                    is_alone = stopped.is_set()
                if is_alone:
                    self.close()

        worker = threading.Thread(target=work, name="raxel")
        meter = _Meter()
        refused = False
        # An interrupt may come anywhere from here on: the order is the thread's until that has ended.
        self._lent = True
        try:
            worker.start()
            while True:
                state = news.get()
                if state is None:
                    break
                assert progress is not None
                refused = progress(meter.whole(state)) is False
                answers.put(not refused)
            worker.join()
            self._lent = False
        except BaseException:
            with lock:
                stopped.set()
                is_left = ended.is_set()
            answers.put(False)
            if is_left:
                self.close()
            ended.wait(_PATIENCE)
            raise
        self._end(codes[0], refused)
        if progress is not None:
            progress(1.0)


class _Meter:
    """One fraction, which never falls, of stages that begin anew with each page and of pages that may become more."""

    def __init__(self) -> None:
        self._done = -1
        self._stage = _library.WRITING
        self._last = 0.0

    def whole(self, state: _State) -> float:
        """The part of the whole that a part of a stage comes to."""
        if state.stage == _library.PREPARING and self._stage == _library.WRITING:
            self._done += 1
        self._stage = state.stage
        own = state.part if state.stage == _library.WRITING else 0.0
        self._last = max(self._last, min((max(self._done, 0) + own) / max(state.pages, 1), _NEARLY))
        return self._last
