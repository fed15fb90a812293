"""The library's plain functions and records as ctypes sees them, by the names that they have in C.

For what the package has no method for. Nothing here keeps a program from misusing memory: the rules are those of the
C headers.

    library = plain.library()
    p_frame = plain.FramePointer()
    library.call(library.zoFrame_create, ctypes.byref(p_frame))     # raises where the status is not 0
    library.zoFrame_release(ctypes.byref(p_frame))
"""
from __future__ import annotations

import ctypes
import ctypes.util
import os
import threading
from typing import TYPE_CHECKING, Any, List, Optional, Tuple

from ._errors import error_for
from ._version import VERSION

MESSAGE_SIZE = 4096


class ZoSize(ctypes.Structure):
    """Width and height in pixels."""

    width: int
    height: int

    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int)]


class ZoFrame(ctypes.Structure):
    """A frame: its pixels and what they are."""

    p_handle: Optional[int]
    format: int
    width: int
    height: int
    plane_count: int
    p_planes: "ctypes.Array[ctypes.c_void_p]"
    strides: "ctypes.Array[ctypes.c_uint]"
    timestamp: int

    _fields_ = [
        ("p_handle", ctypes.c_void_p),
        ("format", ctypes.c_int),
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
        ("plane_count", ctypes.c_int),
        ("p_planes", ctypes.c_void_p * 4),
        ("strides", ctypes.c_uint * 4),
        ("timestamp", ctypes.c_longlong),
    ]


class ZoVideoReader(ctypes.Structure):
    """An open clip, and the position in it."""

    p_handle: Optional[int]
    url: bytes
    timestamp: int
    format: int
    width: int
    height: int
    frame_count: int
    frame_index: int
    fps: float
    rotation: int

    _fields_ = [
        ("p_handle", ctypes.c_void_p),
        ("url", ctypes.c_char_p),
        ("timestamp", ctypes.c_longlong),
        ("format", ctypes.c_int),
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
        ("frame_count", ctypes.c_longlong),
        ("frame_index", ctypes.c_longlong),
        ("fps", ctypes.c_double),
        ("rotation", ctypes.c_int),
    ]


InterruptFunction = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p)
FramePointer = ctypes.POINTER(ZoFrame)
ReaderPointer = ctypes.POINTER(ZoVideoReader)

_MESSAGE = (ctypes.c_char_p, ctypes.c_uint)
# Functions that take a message buffer, which call() adds at the end.
_FUNCTIONS = {
    "zoFrame_create": (ctypes.POINTER(FramePointer),),
    "zoVideoReader_create": (
        ctypes.c_void_p,  # the interrupt function, or null
        ctypes.c_void_p,
        ctypes.c_char_p,
        ctypes.c_uint,
        ctypes.c_int,
        ctypes.c_int,
        ctypes.c_int,
        ctypes.c_int,
        ctypes.POINTER(ReaderPointer),
    ),
    "zoVideoReader_moveByIndex": (ReaderPointer, ctypes.c_longlong),
    "zoVideoReader_read": (ReaderPointer, FramePointer, ctypes.POINTER(ctypes.c_int)),
    "zoVideoConverter_create": (ctypes.POINTER(ctypes.c_void_p),),
    "zoVideoConverter_convert": (ctypes.c_void_p, FramePointer, ctypes.c_int, ZoSize, FramePointer),
}
_RELEASES = {
    "zoFrame_release": (ctypes.POINTER(FramePointer),),
    "zoVideoReader_release": (ctypes.POINTER(ReaderPointer),),
    "zoVideoConverter_release": (ctypes.POINTER(ctypes.c_void_p),),
}


class Library:
    """The loaded library. Calls let other Python threads run meanwhile."""

    def __init__(self, path: str) -> None:
        self._library = ctypes.CDLL(path)
        for name, arguments in _FUNCTIONS.items():
            self._prepare(name, arguments + _MESSAGE)
        for name, arguments in _RELEASES.items():
            self._prepare(name, arguments)
        # One message buffer for each thread: it is read after the call.
        self._messages = threading.local()

    def _prepare(self, name: str, arguments: Tuple[Any, ...]) -> None:
        function = getattr(self._library, name)
        function.argtypes = arguments
        function.restype = ctypes.c_int
        setattr(self, name, function)

    if TYPE_CHECKING:  # the plain functions, by their names

        def __getattr__(self, name: str) -> Any: ...

    def call(self, function: Any, *arguments: Any) -> None:
        """Calls one of the functions with a message buffer; a failure becomes an exception."""
        try:
            message = self._messages.buffer
        except AttributeError:
            message = self._messages.buffer = ctypes.create_string_buffer(MESSAGE_SIZE)
        status = function(*arguments, message, MESSAGE_SIZE)
        if status != 0:
            raise error_for(status, message.value.decode("utf-8", "replace"))


_lock = threading.Lock()
_library: Optional[Library] = None


def _candidates() -> List[str]:
    named = os.environ.get("ZO_VIDEO_LIBRARY")
    if named:
        return [named]
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), "libzo_video.so")
    found = ctypes.util.find_library("zo_video")
    own = "libzo_video.so." + VERSION.split(".")[0]  # the binary interface that this package was made for
    return [path for path in (beside if os.path.exists(beside) else None, own, found) if path] + ["libzo_video.so"]


def library() -> Library:
    """The library, loaded at first use."""
    global _library
    if _library is None:
        with _lock:
            if _library is None:
                errors = []
                for path in _candidates():
                    try:
                        _library = Library(path)
                        break
                    except (OSError, AttributeError) as error:
                        errors.append(str(error))
                else:
                    raise ImportError(
                        "cannot load libzo_video (install it, or name it in ZO_VIDEO_LIBRARY): "
                        + "; ".join(errors)
                    )
    return _library
