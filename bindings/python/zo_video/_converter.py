"""Converting frames between pixel formats and sizes."""
from __future__ import annotations

import ctypes
import operator
import threading
import weakref
from typing import Optional, SupportsIndex, Tuple, Union

from ._errors import InvalidArgumentError, Status
from ._formats import Format, as_format
from ._frame import Frame, FrameMemory
from .plain import ZoSize, library

_LARGEST_SIDE = 2**31 - 1


def _release(handle: ctypes.c_void_p) -> None:
    library().zoVideoConverter_release(ctypes.byref(handle))


class Converter:
    """Converts frames, with bicubic scaling. It keeps its set-up, so converting a series of like frames
    through one object is cheap; threads that share one take turns."""

    def __init__(self) -> None:
        lib = library()
        self._handle = ctypes.c_void_p()
        self._lock = threading.Lock()
        lib.call(lib.zoVideoConverter_create, ctypes.byref(self._handle))
        # Not at exit: another thread may still be converting.
        weakref.finalize(self, _release, self._handle).atexit = False

    def convert(
        self, frame: Frame, format: Union[Format, int, str], size: Optional[Tuple[SupportsIndex, SupportsIndex]] = None
    ) -> Frame:
        """A new frame in that pixel format and, where given, that size (width, height) in pixels."""
        frame._require_pixels()
        width, height = map(operator.index, frame.size if size is None else size)
        if not (0 < width <= _LARGEST_SIDE and 0 < height <= _LARGEST_SIDE):
            raise InvalidArgumentError(Status.INVALID_ARGUMENT, f"a frame cannot be {width} x {height}")
        lib = library()
        result = FrameMemory()
        with self._lock:
            lib.call(
                lib.zoVideoConverter_convert,
                self._handle,
                frame._memory.p_frame,
                int(as_format(format)),
                ZoSize(width, height),
                result.p_frame,
            )
        return Frame(result, frame.index)


_of_thread = threading.local()


def thread_converter() -> Converter:
    """The calling thread's own converter."""
    converter: Optional[Converter] = getattr(_of_thread, "converter", None)
    if converter is None:
        converter = _of_thread.converter = Converter()
    return converter
