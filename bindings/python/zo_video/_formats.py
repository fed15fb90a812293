"""Pixel formats and the shapes of their planes."""
from __future__ import annotations

import enum
from typing import List, Tuple, Union


class Format(enum.IntEnum):
    """Pixel layouts. The numbers never change."""

    UNDEFINED = 0
    GRAY8 = 1
    RGB24 = 2
    BGR24 = 4
    YUV420_PLANAR_I420 = 6
    YUV420_PLANAR_YV12 = 7
    YUV420_SEMIPLANAR_NV12 = 8
    YUV420_SEMIPLANAR_NV21 = 9
    YUV422_PLANAR = 10
    YUV422_PACKED_YUY2 = 11
    YUV422_PACKED_UYVY = 12
    YUV422_SEMIPLANAR_NV16 = 13
    YUV444_PACKED_IYU2 = 14
    YUV444_PLANAR = 15
    CUSTOM_1 = 16
    CUSTOM_2 = 19
    CUSTOM_3 = 20


_THREE_BYTES = (Format.RGB24, Format.BGR24, Format.YUV444_PACKED_IYU2)
_PAIRS = (Format.YUV422_PACKED_YUY2, Format.YUV422_PACKED_UYVY)
_INTERLEAVED = (
    Format.YUV420_SEMIPLANAR_NV12,
    Format.YUV420_SEMIPLANAR_NV21,
    Format.YUV422_SEMIPLANAR_NV16,
)
_HALF_HEIGHT = (
    Format.YUV420_PLANAR_I420,
    Format.YUV420_PLANAR_YV12,
    Format.YUV420_SEMIPLANAR_NV12,
    Format.YUV420_SEMIPLANAR_NV21,
)


def plane_shapes(pixel_format: int, width: int, height: int, plane_count: int) -> List[Tuple[int, ...]]:
    """Shape of each plane in bytes: rows, columns and, where pixels are interleaved, channels.

    Chroma of odd sizes is rounded up. YUY2 and UYVY come as pairs of pixels: four bytes for two columns.
    """
    if plane_count == 0:
        return []
    half_width = (width + 1) // 2
    if pixel_format in _THREE_BYTES:
        return [(height, width, 3)]
    if pixel_format in _PAIRS:
        return [(height, half_width, 4)]
    chroma_height = (height + 1) // 2 if pixel_format in _HALF_HEIGHT else height
    if pixel_format in _INTERLEAVED:
        return [(height, width), (chroma_height, half_width, 2)]
    chroma_width = width if pixel_format == Format.YUV444_PLANAR else half_width
    chroma: List[Tuple[int, ...]] = [(chroma_height, chroma_width)] * (plane_count - 1)
    return [(height, width), *chroma]


def as_format(value: Union[Format, int, str]) -> Format:
    """A format given as such, by number or by name ("BGR24", also in lower case)."""
    if isinstance(value, str):
        try:
            return Format[value.upper()]
        except KeyError:
            raise ValueError(f"no such pixel format: {value!r}") from None
    return Format(value)
