import copy
import pickle

import pytest

import zo_video
from conftest import number_of
from zo_video._formats import plane_shapes


class Number:
    """An integer that is no int."""

    def __init__(self, value):
        self._value = value

    def __index__(self):
        return self._value


def first_frame(path):
    with zo_video.open(path) as reader:
        return reader.read()


def test_planes_of_a_planar_frame(clip, pixels_as):
    planes = first_frame(clip).planes
    assert len(planes) == 3
    if pixels_as == "numpy":
        assert [plane.shape for plane in planes] == [(48, 64), (24, 32), (24, 32)]
        assert all(plane.dtype == "uint8" for plane in planes)
    else:
        strides = first_frame(clip).strides
        assert [plane.shape for plane in planes] == [(48, strides[0]), (24, strides[1]), (24, strides[2])]


def test_odd_sizes_round_chroma_up(media):
    numpy = pytest.importorskip("numpy")
    frame = first_frame(media("odd"))
    assert frame.size == (35, 27)
    assert [plane.shape for plane in frame.planes] == [(27, 35), (14, 18), (14, 18)]
    assert [len(row) for row in frame.rows(0)] == [35] * 27
    assert [len(row) for row in frame.rows(2)] == [18] * 14
    assert frame.tobytes() == b"".join(numpy.ascontiguousarray(plane).tobytes() for plane in frame.planes)
    assert number_of(frame) == 0


def test_arrays_are_no_copies(clip):
    numpy = pytest.importorskip("numpy")
    frame = first_frame(clip)
    one, other = frame.planes[0], frame.planes[0]
    assert numpy.shares_memory(one, other)
    one[3, 5] = 77
    assert other[3, 5] == 77
    assert bytes(list(frame.rows(0))[3])[5] == 77


def test_memory_views_are_no_copies(clip, pixels_as):
    frame = first_frame(clip)
    plane = frame.planes[0]
    plane[3, 5] = 77
    assert list(frame.rows(0))[3][5] == 77


@pytest.mark.parametrize(
    "convert, pixel_format, channels",
    [("to_bgr", "BGR24", 3), ("to_rgb", "RGB24", 3), ("to_grey", "GRAY8", 1)],
)
def test_conversion(clip, pixels_as, convert, pixel_format, channels):
    frame = first_frame(clip)
    converted = getattr(frame, convert)()
    assert converted.format is zo_video.Format[pixel_format]
    assert converted.size == (64, 48)
    assert (converted.index, converted.timestamp) == (frame.index, frame.timestamp)
    if pixels_as == "numpy":
        assert converted.array.shape == ((48, 64, 3) if channels == 3 else (48, 64))
    else:
        assert converted.array.shape == (48, converted.strides[0])
    assert len(converted.tobytes()) == 64 * 48 * channels


def test_bgr_is_rgb_backwards(clip):
    numpy = pytest.importorskip("numpy")
    frame = first_frame(clip)
    assert numpy.array_equal(frame.to_bgr().array[:, :, ::-1], frame.to_rgb().array)


def test_rows_count_planes_from_either_end(clip):
    frame = first_frame(clip)
    assert list(frame.rows(-3)) == list(frame.rows(0)) == list(frame.rows())
    assert list(frame.rows(-1)) == list(frame.rows(Number(2)))


@pytest.mark.parametrize("plane", [3, -4, 2**70])
def test_rows_of_a_plane_that_there_is_not(clip, plane):
    with pytest.raises(IndexError, match="plane"):
        first_frame(clip).rows(plane)


def test_rows_of_a_plane_of_another_type(clip):
    with pytest.raises(TypeError):
        first_frame(clip).rows(1.0)


def test_size_may_be_of_another_integer_type(clip):
    assert first_frame(clip).to_bgr(size=(Number(33), Number(17))).size == (33, 17)
    with pytest.raises(TypeError):
        first_frame(clip).to_bgr(size=(33.0, 17))


def test_conversion_to_another_size(clip):
    frame = first_frame(clip).to_bgr(size=(33, 17))
    assert frame.size == (33, 17)
    assert len(frame.tobytes()) == 33 * 17 * 3


@pytest.mark.parametrize(
    "pixel_format, planes",
    [
        ("GRAY8", [(27, 35)]),
        ("RGB24", [(27, 35, 3)]),
        ("bgr24", [(27, 35, 3)]),
        ("YUV420_PLANAR_I420", [(27, 35), (14, 18), (14, 18)]),
        ("YUV420_SEMIPLANAR_NV12", [(27, 35), (14, 18, 2)]),
        ("YUV420_SEMIPLANAR_NV21", [(27, 35), (14, 18, 2)]),
        ("YUV422_PLANAR", [(27, 35), (27, 18), (27, 18)]),
        ("YUV422_PACKED_YUY2", [(27, 18, 4)]),
        ("YUV422_PACKED_UYVY", [(27, 18, 4)]),
        ("YUV444_PLANAR", [(27, 35), (27, 35), (27, 35)]),
    ],
)
def test_shapes_in_every_format(media, pixel_format, planes):
    pytest.importorskip("numpy")
    frame = first_frame(media("odd")).convert(pixel_format)
    assert [plane.shape for plane in frame.planes] == planes
    # The last byte of each plane can be reached.
    for plane in frame.planes:
        plane[(-1,) * plane.ndim] = 1


def test_shapes_of_formats_that_no_conversion_gives():
    assert plane_shapes(zo_video.Format.YUV420_PLANAR_YV12, 35, 27, 3) == [(27, 35), (14, 18), (14, 18)]
    assert plane_shapes(zo_video.Format.YUV422_SEMIPLANAR_NV16, 35, 27, 2) == [(27, 35), (27, 18, 2)]
    assert plane_shapes(zo_video.Format.YUV444_PACKED_IYU2, 35, 27, 1) == [(27, 35, 3)]
    assert plane_shapes(zo_video.Format.UNDEFINED, 0, 0, 0) == []


def test_numpy_takes_packed_frames(clip):
    numpy = pytest.importorskip("numpy")
    frame = first_frame(clip).to_bgr()
    assert numpy.shares_memory(numpy.asarray(frame), frame.array)
    assert numpy.asarray(frame, dtype="float32").dtype == "float32"
    copied = numpy.array(frame)
    assert not numpy.shares_memory(copied, frame.array)


def test_array_of_a_planar_frame_is_refused(clip):
    with pytest.raises(zo_video.NotSupportedError, match="3 planes"):
        first_frame(clip).array


@pytest.mark.parametrize("pixel_format", ["YUV420_PLANAR_YV12", "YUV444_PACKED_IYU2", "CUSTOM_1"])
def test_unsupported_format(clip, pixel_format):
    with pytest.raises(zo_video.NotSupportedError) as error:
        first_frame(clip).convert(pixel_format)
    assert error.value.status is zo_video.Status.NOT_SUPPORTED


@pytest.mark.parametrize("pixel_format", [3, 21, -1, "BGR25"])
def test_unknown_format(clip, pixel_format):
    with pytest.raises(ValueError):
        first_frame(clip).convert(pixel_format)


@pytest.mark.parametrize("size", [(0, 10), (10, 0), (-1, 10), (2**31, 10), (10, 2**40)])
def test_impossible_size(clip, size):
    with pytest.raises(zo_video.InvalidArgumentError):
        first_frame(clip).to_grey(size)


def test_size_beyond_memory(clip):
    with pytest.raises(MemoryError):
        first_frame(clip).to_bgr((2**31 - 1, 2**31 - 1))


def test_missing_picture_is_an_empty_frame_with_its_time(media):
    with zo_video.open(media("gap"), navigation=True) as reader:
        frames = list(reader)
    assert [frame.index for frame in frames if frame.empty] == [4]
    gap = frames[4]
    assert gap.timestamp == 160
    assert gap.planes == ()
    assert gap.strides == ()
    assert "no picture" in repr(gap)
    for wanted in (lambda: gap.array, gap.rows, gap.tobytes, gap.to_bgr, lambda: zo_video.Converter().convert(gap, "GRAY8")):
        with pytest.raises(zo_video.NotInitializedError):
            wanted()


def test_converter_serves_many_frames(clip):
    converter = zo_video.Converter()
    with zo_video.open(clip) as reader:
        for frame in reader:
            small = converter.convert(frame, zo_video.Format.GRAY8, (16, 12))
            assert small.size == (16, 12)
            assert small.index == frame.index


def test_frames_are_not_pickled(clip):
    frame = first_frame(clip)
    with pytest.raises((TypeError, ValueError, pickle.PicklingError)):
        pickle.dumps(frame)
    with pytest.raises((TypeError, ValueError)):
        copy.deepcopy(frame)
    assert copy.copy(frame).tobytes() == frame.tobytes()
