"""Reading clips and streams."""
from __future__ import annotations

import contextlib
import ctypes
import operator
import os
import threading
import weakref
from typing import Callable, Iterator, Optional, Sequence, SupportsIndex, Tuple, Union, overload

from ._errors import Interrupted, InvalidArgumentError, NotAllowedError, NotOpenedError, ReadError, Status
from ._formats import Format
from ._frame import Frame, FrameMemory
from .plain import InterruptFunction, ReaderPointer, ZoVideoReader, library

_LONGEST_TIMEOUT_MS = 2**31 - 1


class _Interrupt:
    """Runs the caller's function from inside the library, where no exception may pass."""

    def __init__(self, function: Callable[[], object]) -> None:
        self._function = function
        self.stopped = False
        self.exception: Optional[BaseException] = None
        self.pointer = InterruptFunction(self._poll)

    def _poll(self, _opaque: Optional[int]) -> int:
        if not self.stopped:
            try:
                self.stopped = bool(self._function())
            except BaseException as exception:  # also KeyboardInterrupt: it is raised again outside
                self.exception = exception
                self.stopped = True
        return int(self.stopped)

    def raise_if_stopped(self) -> None:
        if self.exception is not None:
            raise self.exception
        if self.stopped:
            raise Interrupted(None, "opening was interrupted")


class _NewIndexFile:
    """The index file that an opening may leave beside a clip. One that a stopped opening wrote may hold a part of
    the index, and would be trusted."""

    def __init__(self, url: bytes) -> None:
        self._path = url + b".zo"
        self._was_there = os.path.lexists(self._path)
        self._had_content = os.path.exists(self._path) and os.path.getsize(self._path) > 0

    def discard(self) -> None:
        """Leaves the file as it was before the opening: away, or empty."""
        if self._had_content:
            return
        with contextlib.suppress(OSError):
            if self._was_there:
                os.truncate(self._path, 0)
            else:
                os.unlink(self._path)


def _release(lock: "threading._RLock", p_reader: "ctypes._Pointer[ZoVideoReader]") -> None:
    # At exit, a thread that nobody waits for may be reading: then the reader is left to the system.
    if lock.acquire(blocking=False):
        try:
            library().zoVideoReader_release(ctypes.byref(p_reader))
        finally:
            lock.release()


def _timeout_ms(timeout: Optional[float]) -> int:
    if timeout is None:
        return -1
    if not timeout >= 0:
        raise InvalidArgumentError(Status.INVALID_ARGUMENT, f"no such time-out: {timeout}")
    return int(min(timeout * 1000, _LONGEST_TIMEOUT_MS))


class Reader:
    """An open clip or stream; made by open().

    Iterating reads on from the current position. With navigation, len() is the number of frames, and frames
    are reached by their numbers: reader[30], reader[-1], reader[10:20], reader[::25].

    Threads may share a reader: they take turns, and close() waits for a read that is under way.
    """

    def __init__(
        self,
        url: Union[str, bytes, "os.PathLike[str]"],
        *,
        navigation: bool = False,
        skip_errors: bool = False,
        navigation_cache: bool = False,
        timeout: Optional[float] = None,
        interrupt: Optional[Callable[[], object]] = None,
    ) -> None:
        self._lock = threading.RLock()
        self._p_reader = ReaderPointer()
        self._closer: Optional[weakref.finalize] = None
        lib = library()
        text = os.fsencode(url)
        if b"\0" in text:
            raise InvalidArgumentError(Status.INVALID_ARGUMENT, "a zero byte in the url")
        budget = _timeout_ms(timeout)
        guard = None if interrupt is None else _Interrupt(interrupt)
        callback = None if guard is None else ctypes.cast(guard.pointer, ctypes.c_void_p)
        index_file = _NewIndexFile(text) if navigation and navigation_cache and guard is not None else None
        try:
            lib.call(
                lib.zoVideoReader_create,
                callback,
                None,
                text,
                len(text),
                budget,
                bool(navigation),
                bool(skip_errors),
                bool(navigation_cache),
                ctypes.byref(self._p_reader),
            )
        except Exception as error:
            # Depending on when the function asked to stop, the library reports what came of it.
            if guard is not None and guard.stopped:
                try:
                    guard.raise_if_stopped()
                except BaseException as reason:
                    raise reason from error
            raise
        # The function is polled while opening only.
        self._closer = weakref.finalize(self, _release, self._lock, self._p_reader)
        if guard is not None and guard.stopped:
            self._closer()
            if index_file is not None:
                index_file.discard()
            guard.raise_if_stopped()

    # --- closing

    def close(self) -> None:
        """Closes the clip. Frames read from it stay valid. Closing twice is fine."""
        with self._lock:
            if self._closer is not None:
                self._closer()

    @property
    def closed(self) -> bool:
        return self._closer is None or not self._closer.alive

    def __enter__(self) -> "Reader":
        self._record()
        return self

    def __exit__(self, *_exception: object) -> None:
        self.close()

    # --- reading in order

    def read(self) -> Optional[Frame]:
        """The next frame, or None at the end."""
        lib = library()
        memory = FrameMemory()
        ready = ctypes.c_int()
        with self._lock:
            record = self._record()
            lib.call(lib.zoVideoReader_read, self._p_reader, memory.p_frame, ctypes.byref(ready))
            return Frame(memory, record.frame_index) if ready.value else None

    def __iter__(self) -> Iterator[Frame]:
        while True:
            frame = self.read()
            if frame is None:
                return
            yield frame

    # --- frames by number

    def seek(self, index: SupportsIndex) -> None:
        """Makes frame `index`, counted from 0, the next one. Needs navigation."""
        lib = library()
        position = operator.index(index)
        if not -(2**63) <= position < 2**63:
            raise IndexError(f"no frame {index}")
        with self._lock:
            self._record()
            lib.call(lib.zoVideoReader_moveByIndex, self._p_reader, position)

    def __len__(self) -> int:
        with self._lock:
            if not self._navigable():
                raise NotAllowedError(
                    Status.NOT_ALLOWED, "the number of frames is not known: open with navigation=True"
                )
            return self._record().frame_count

    def __bool__(self) -> bool:
        return not self.closed

    @overload
    def __getitem__(self, index: SupportsIndex) -> Frame: ...

    @overload
    def __getitem__(self, index: slice) -> "FrameSlice": ...

    def __getitem__(self, index: Union[SupportsIndex, slice]) -> Union[Frame, "FrameSlice"]:
        if isinstance(index, slice):
            return FrameSlice(self, range(*index.indices(len(self))))
        with self._lock:
            count = len(self)
            position = _position(index, count)
            self.seek(position)
            frame = self.read()
        if frame is None:
            raise ReadError(Status.READ_ERROR, f"the clip ends before frame {position}")
        return frame

    def __reversed__(self) -> Iterator[Frame]:
        return iter(self[::-1])

    # --- what the clip is

    @property
    def url(self) -> str:
        with self._lock:
            return os.fsdecode(self._record().url)

    @property
    def fps(self) -> float:
        """Average frames per second, 0 when unknown."""
        with self._lock:
            return self._record().fps

    @property
    def width(self) -> int:
        return self.size[0]

    @property
    def height(self) -> int:
        return self.size[1]

    @property
    def size(self) -> Tuple[int, int]:
        """Width and height of the pictures in pixels."""
        with self._lock:
            record = self._record()
            return record.width, record.height

    @property
    def format(self) -> Format:
        """Pixel format of the frames."""
        with self._lock:
            return Format(self._record().format)

    @property
    def rotation(self) -> Optional[int]:
        """Degrees that a picture has to be turned clockwise to stand upright: 0, 90, 180 or 270, or None for
        another angle. Frames come as they are stored."""
        with self._lock:
            code = self._record().rotation
        return code * 90 if 0 <= code <= 3 else None

    @property
    def navigation(self) -> bool:
        """True when frames can be reached by their numbers."""
        with self._lock:
            return self._navigable()

    @property
    def frame_index(self) -> int:
        """Number of the frame that was read last, -1 before the first."""
        with self._lock:
            return self._record().frame_index

    @property
    def timestamp(self) -> int:
        """Time of the frame that was read last, in milliseconds."""
        with self._lock:
            return self._record().timestamp

    def __repr__(self) -> str:
        with self._lock:
            if self.closed:
                return "<zo_video.Reader, closed>"
            return f"<zo_video.Reader {self.url!r}, {self.width} x {self.height}, {self.fps:g} fps>"

    def _record(self) -> ZoVideoReader:
        """The library's record; the lock is held, so it stays."""
        if self.closed:
            raise NotOpenedError(Status.NOT_OPENED, "the reader is closed")
        return self._p_reader.contents

    def _navigable(self) -> bool:
        return self._record().frame_count > 0


def _position(index: "SupportsIndex", count: int) -> int:
    position = operator.index(index)
    if position < 0:
        position += count
    if not 0 <= position < count:
        raise IndexError(f"no frame {index} in a clip of {count}")
    return position


class FrameSlice(Sequence[Frame]):
    """Some frames of a clip. Nothing is read before it is asked for."""

    def __init__(self, reader: Reader, indices: range) -> None:
        self._reader = reader
        self._indices = indices

    @property
    def indices(self) -> range:
        """Numbers of the frames in the clip."""
        return self._indices

    def __len__(self) -> int:
        return len(self._indices)

    @overload
    def __getitem__(self, index: SupportsIndex) -> Frame: ...

    @overload
    def __getitem__(self, index: slice) -> "FrameSlice": ...

    def __getitem__(self, index: Union[SupportsIndex, slice]) -> Union[Frame, "FrameSlice"]:
        if isinstance(index, slice):
            return FrameSlice(self._reader, self._indices[index])
        return self._reader[self._indices[index]]

    def __iter__(self) -> Iterator[Frame]:
        for index in self._indices:
            yield self._reader[index]

    def __repr__(self) -> str:
        return f"<zo_video.FrameSlice of {len(self._indices)} frames>"


def open(
    url: Union[str, bytes, "os.PathLike[str]"],
    *,
    navigation: bool = False,
    skip_errors: bool = False,
    navigation_cache: bool = False,
    timeout: Optional[float] = None,
    interrupt: Optional[Callable[[], object]] = None,
) -> Reader:
    """Opens a clip or a stream.

    url               Path, or URL as FFmpeg knows them (RTSP goes over TCP).
    navigation        Index the file, so that frames can be reached by their numbers.
    skip_errors       Skip what cannot be read or decoded instead of raising.
    navigation_cache  Keep the index in the file <url>.zo, and use it from there the next time. An interrupted
                      opening leaves no new one; with skip_errors a time-out counts as an error, and the index
                      ends there.
    timeout           Longest time of each blocking call, now and in later reads, in seconds; None: no limit.
    interrupt         Called again and again while opening; a true result stops with Interrupted, and an
                      exception that it raises is passed on. (Ctrl-C works while opening when one is given.)

    Raises a ZoVideoError, by status: OpenError, TimeoutError, DecoderError, ...
    """
    return Reader(
        url,
        navigation=navigation,
        skip_errors=skip_errors,
        navigation_cache=navigation_cache,
        timeout=timeout,
        interrupt=interrupt,
    )
