"""What goes wrong, as exceptions: one class for each status that a caller may want to tell apart."""
from __future__ import annotations

import builtins
import enum
from typing import Any, Dict, Optional, Tuple, Type


class Status(enum.IntEnum):
    """The library's statuses. The numbers never change."""

    OK = 0
    UNKNOWN_ERROR = 1
    INTERNAL_ERROR = 2
    STD_EXCEPTION = 3
    NULL_POINTER = 4
    OUT_OF_RANGE = 5
    INVALID_ARGUMENT = 6
    NOT_INITIALIZED = 7
    NOT_SUPPORTED = 8
    INVALID_STATE = 10
    NOT_ALLOWED = 11
    UNEXPECTED_RESULT = 12
    TIMEOUT = 13
    OUT_OF_MEMORY = 18
    OPEN_ERROR = 20
    READ_ERROR = 21
    WRITE_ERROR = 22
    SEEK_ERROR = 23
    NOT_OPENED = 24
    DECODER_ERROR = 27
    CODEC_ERROR = 28


class ZoVideoError(Exception):
    """Base of all errors of this package. `status` is the library's number, `message` its text."""

    status: Optional[int]
    message: str

    def __init__(self, status: Optional[int], message: str) -> None:
        super().__init__(message)
        try:
            self.status = status if status is None else Status(status)
        except ValueError:  # of a newer library
            self.status = status
        self.message = message

    def __reduce__(self) -> Tuple[Any, ...]:  # the arguments of BaseException are not those of this class
        return type(self), (self.status, self.message)

    def __str__(self) -> str:
        return self.message


class Interrupted(ZoVideoError):
    """The interrupt function asked to stop."""


class OutOfRangeError(ZoVideoError, IndexError):
    """No such frame."""


class InvalidArgumentError(ZoVideoError, ValueError):
    """A wrong value."""


class NotInitializedError(ZoVideoError, ValueError):
    """A frame without pixels where pixels are needed."""


class NotSupportedError(ZoVideoError, ValueError):
    """A pixel format that the operation does not handle."""


class NotAllowedError(ZoVideoError, TypeError):
    """Numbered frames of a clip that was opened without navigation, or that has no duration."""


class NotOpenedError(ZoVideoError, ValueError):
    """The reader is closed."""


class TimeoutError(ZoVideoError, builtins.TimeoutError):
    """A blocking call took longer than the time budget."""


class OutOfMemoryError(ZoVideoError, MemoryError):
    """An allocation failed."""


class OpenError(ZoVideoError, OSError):
    """A file or stream cannot be opened."""


class ReadError(ZoVideoError, OSError):
    """Reading failed, or the decoder refused what was read."""


class SeekError(ZoVideoError, OSError):
    """Seeking failed."""


class DecoderError(ZoVideoError):
    """There is no video stream, no decoder for it, or decoding failed."""


class CodecError(ZoVideoError):
    """An image failed to encode or decode."""


_CLASSES: Dict[int, Type[ZoVideoError]] = {
    Status.OUT_OF_RANGE: OutOfRangeError,
    Status.INVALID_ARGUMENT: InvalidArgumentError,
    Status.NOT_INITIALIZED: NotInitializedError,
    Status.NOT_SUPPORTED: NotSupportedError,
    Status.NOT_ALLOWED: NotAllowedError,
    Status.NOT_OPENED: NotOpenedError,
    Status.TIMEOUT: TimeoutError,
    Status.OUT_OF_MEMORY: OutOfMemoryError,
    Status.OPEN_ERROR: OpenError,
    Status.READ_ERROR: ReadError,
    Status.SEEK_ERROR: SeekError,
    Status.DECODER_ERROR: DecoderError,
    Status.CODEC_ERROR: CodecError,
}


def error_for(status: int, message: str) -> ZoVideoError:
    """The exception for a status that a plain function returned."""
    if status == Status.STD_EXCEPTION and message.endswith("std::bad_alloc"):
        return OutOfMemoryError(status, message)
    return _CLASSES.get(status, ZoVideoError)(status, message)
