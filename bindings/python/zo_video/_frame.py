"""Frames: a picture with its number and time, and views of its pixels that are not copies."""
from __future__ import annotations

import collections
import ctypes
import weakref
from typing import TYPE_CHECKING, Any, Deque, Iterator, List, Optional, SupportsIndex, Tuple, Union

from ._errors import NotInitializedError, NotSupportedError, Status
from ._formats import Format, as_format, plane_shapes
from .plain import FramePointer, ZoFrame, library

if TYPE_CHECKING:
    import numpy

    Array = numpy.ndarray[Any, Any]
    Pixels = Union[Array, memoryview]

# Frames that nobody looks at any more, for the next ones: their memory is used again.
_SPARE_FRAMES = 4
_spares: Deque[Any] = collections.deque()


def _numpy() -> Any:
    """numpy, or None where it is not installed."""
    try:
        import numpy
    except ImportError:
        return None
    return numpy


def _give_back(p_frame: "ctypes._Pointer[ZoFrame]") -> None:
    # No lock: this runs whenever the garbage collector does.
    if len(_spares) < _SPARE_FRAMES:
        _spares.append(p_frame)
    else:
        library().zoFrame_release(ctypes.byref(p_frame))


class FrameMemory:
    """Owns one frame of the library. Whatever looks at the pixels holds on to this object, so they live as
    long as the last view, reader or no reader."""

    def __init__(self) -> None:
        try:
            self.p_frame = _spares.pop()
        except IndexError:
            self.p_frame = FramePointer()
            lib = library()
            lib.call(lib.zoFrame_create, ctypes.byref(self.p_frame))
        # Not at exit: views may outlive this module then.
        weakref.finalize(self, _give_back, self.p_frame).atexit = False

    @property
    def record(self) -> ZoFrame:
        record: ZoFrame = self.p_frame.contents
        return record


class Frame:
    """A picture of a clip.

    It stays valid whatever happens to the reader it came from, and so does every array taken from it.

    A frame is `empty` where the decoder did not produce a picture: it has a time, but no pixels.
    """

    def __init__(self, memory: FrameMemory, index: int) -> None:
        record = memory.record
        self._memory = memory
        self._index = index
        self._format = Format(record.format)
        self._size = (record.width, record.height)
        self._plane_count = record.plane_count
        self._timestamp = record.timestamp

    @property
    def index(self) -> int:
        """Number of the frame in its clip, counted from 0."""
        return self._index

    @property
    def timestamp(self) -> int:
        """Time in milliseconds of stream time."""
        return self._timestamp

    @property
    def time(self) -> float:
        """Time in seconds of stream time."""
        return self._timestamp / 1000

    @property
    def format(self) -> Format:
        return self._format

    @property
    def width(self) -> int:
        return self._size[0]

    @property
    def height(self) -> int:
        return self._size[1]

    @property
    def size(self) -> Tuple[int, int]:
        """Width and height in pixels."""
        return self._size

    @property
    def empty(self) -> bool:
        """True when the decoder produced no picture for this frame."""
        return self._plane_count == 0

    @property
    def strides(self) -> Tuple[int, ...]:
        """Bytes from one row to the next, for each plane."""
        return tuple(self._memory.record.strides[: self._plane_count])

    @property
    def planes(self) -> "Tuple[Pixels, ...]":
        """The planes, without copying them.

        With numpy: arrays of bytes, rows x columns (x channels where a plane interleaves them). Without: memory
        views of rows x stride, the padding at the end of each row included; see rows().
        """
        numpy = _numpy()
        return tuple(self._plane(i, shape, numpy) for i, shape in enumerate(self._shapes()))

    @property
    def array(self) -> "Pixels":
        """The only plane of a packed format (grey, BGR, RGB, ...), as `planes` gives it."""
        self._require_pixels()
        if self._plane_count != 1:
            raise NotSupportedError(
                Status.NOT_SUPPORTED,
                f"{self._format.name} has {self._plane_count} planes: take one of `planes`, or to_bgr() and such",
            )
        return self.planes[0]

    def rows(self, plane: SupportsIndex = 0) -> Iterator[memoryview]:
        """The rows of a plane without padding, as memory views of bytes. Planes are counted from 0 or, with a
        negative number, from the last."""
        self._require_pixels()
        try:
            index = range(self._plane_count)[plane]
        except IndexError:
            raise IndexError(f"no plane {plane} in a frame of {self._plane_count}") from None
        return self._rows(index)

    def tobytes(self) -> bytes:
        """A copy of all planes one after another, without padding."""
        self._require_pixels()
        return b"".join(bytes(row) for i in range(self._plane_count) for row in self.rows(i))

    def __array__(self, dtype: Any = None, copy: Optional[bool] = None) -> "Array":
        numpy = _numpy()
        array: "Array" = numpy.asarray(self.array)
        if dtype is not None and array.dtype != dtype:
            if copy is False:
                raise ValueError("another type needs a copy")
            return array.astype(dtype)
        return array.copy() if copy else array

    def convert(self, format: Union[Format, int, str], size: Optional[Tuple[SupportsIndex, SupportsIndex]] = None) -> "Frame":
        """A new frame in another pixel format and, where given, another size (width, height)."""
        from ._converter import thread_converter

        return thread_converter().convert(self, as_format(format), size)

    def to_bgr(self, size: Optional[Tuple[SupportsIndex, SupportsIndex]] = None) -> "Frame":
        """A new frame with blue, green and red bytes, as OpenCV has them."""
        return self.convert(Format.BGR24, size)

    def to_rgb(self, size: Optional[Tuple[SupportsIndex, SupportsIndex]] = None) -> "Frame":
        """A new frame with red, green and blue bytes, as Pillow and matplotlib have them."""
        return self.convert(Format.RGB24, size)

    def to_grey(self, size: Optional[Tuple[SupportsIndex, SupportsIndex]] = None) -> "Frame":
        """A new frame with one byte of brightness for each pixel."""
        return self.convert(Format.GRAY8, size)

    def __repr__(self) -> str:
        picture = "no picture" if self.empty else f"{self.width} x {self.height} {self._format.name}"
        return f"<zo_video.Frame {self._index} at {self._timestamp} ms, {picture}>"

    def _require_pixels(self) -> None:
        if self.empty:
            raise NotInitializedError(
                Status.NOT_INITIALIZED, f"the decoder produced no picture for frame {self._index}"
            )

    def _shapes(self) -> List[Tuple[int, ...]]:
        return plane_shapes(self._format, self._size[0], self._size[1], self._plane_count)

    def _rows(self, plane: int) -> Iterator[memoryview]:
        shape = self._shapes()[plane]
        stride = self.strides[plane]
        row_bytes = shape[1] * (shape[2] if len(shape) == 3 else 1)
        pixels = memoryview(self._bytes(plane, stride * shape[0])).cast("B")
        for y in range(shape[0]):
            yield pixels[y * stride : y * stride + row_bytes]

    def _bytes(self, plane: int, count: int) -> Any:
        address: Any = self._memory.record.p_planes[plane]
        view: Any = (ctypes.c_ubyte * count).from_address(address)
        view.owner = self._memory  # every view of this view keeps the pixels alive
        return view

    def _plane(self, plane: int, shape: Tuple[int, ...], numpy: Any) -> "Pixels":
        stride = self.strides[plane]
        pixels = self._bytes(plane, stride * shape[0])
        if numpy is None:
            return memoryview(pixels).cast("B").cast("B", (shape[0], stride))
        steps = (stride, 1) if len(shape) == 2 else (stride, shape[2], 1)
        array: "Pixels" = numpy.ndarray(shape, numpy.uint8, pixels, 0, steps)
        return array
