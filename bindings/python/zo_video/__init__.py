"""Exact video frames: read a clip in order, or jump to any frame by its number.

    import zo_video

    with zo_video.open("clip.mp4", navigation=True) as reader:
        print(len(reader), "frames,", reader.fps, "a second")
        picture = reader[30].to_bgr().array      # a numpy array, height x width x 3
        for frame in reader[::25]:
            print(frame.index, frame.time)

The package is a thin layer over the plain functions of libzo_video.so, which has to be installed (or named by
the environment variable ZO_VIDEO_LIBRARY). numpy is used where it is installed and not needed otherwise.
"""
from ._converter import Converter
from ._errors import (
    CodecError,
    DecoderError,
    Interrupted,
    InvalidArgumentError,
    NotAllowedError,
    NotInitializedError,
    NotOpenedError,
    NotSupportedError,
    OpenError,
    OutOfMemoryError,
    OutOfRangeError,
    ReadError,
    SeekError,
    Status,
    TimeoutError,
    ZoVideoError,
)
from ._formats import Format
from ._frame import Frame
from ._reader import FrameSlice, Reader, open
from ._version import VERSION as __version__

__all__ = [
    "CodecError",
    "Converter",
    "DecoderError",
    "Format",
    "Frame",
    "FrameSlice",
    "Interrupted",
    "InvalidArgumentError",
    "NotAllowedError",
    "NotInitializedError",
    "NotOpenedError",
    "NotSupportedError",
    "OpenError",
    "OutOfMemoryError",
    "OutOfRangeError",
    "ReadError",
    "Reader",
    "SeekError",
    "Status",
    "TimeoutError",
    "ZoVideoError",
    "__version__",
    "open",
]
