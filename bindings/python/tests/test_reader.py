import os
import pathlib

import pytest

import zo_video
from conftest import number_of


def test_reads_every_frame_in_order(clip):
    with zo_video.open(clip) as reader:
        frames = list(reader)
    assert [frame.index for frame in frames] == list(range(30))
    assert [frame.timestamp for frame in frames] == [40 * i for i in range(30)]
    assert [number_of(frame) for frame in frames] == list(range(30))


def test_read_gives_none_at_the_end_again_and_again(clip):
    with zo_video.open(clip) as reader:
        for _ in reader:
            pass
        assert reader.read() is None
        assert reader.read() is None


def test_properties(clip):
    with zo_video.open(clip, navigation=True) as reader:
        assert reader.url == clip
        assert reader.fps == 25.0
        assert reader.size == (64, 48)
        assert (reader.width, reader.height) == (64, 48)
        assert reader.format is zo_video.Format.YUV420_PLANAR_I420
        assert reader.rotation == 0
        assert reader.navigation
        assert reader.frame_index == -1
        reader.seek(7)
        reader.read()
        assert reader.frame_index == 7
        assert reader.timestamp == 280
        assert "64 x 48" in repr(reader)


def test_rotation(media):
    with zo_video.open(media("rotated")) as reader:
        assert reader.rotation == 90


@pytest.mark.parametrize("convert", [str, os.fsencode, pathlib.Path], ids=["str", "bytes", "Path"])
def test_path_may_be(clip, convert):
    with zo_video.open(convert(clip)) as reader:
        assert reader.read().index == 0


def test_length_is_the_number_of_frames(clip):
    with zo_video.open(clip, navigation=True) as reader:
        assert len(reader) == 30


def test_without_navigation_there_is_no_length(clip):
    with zo_video.open(clip) as reader:
        assert not reader.navigation
        with pytest.raises(TypeError) as error:
            len(reader)
        assert error.value.status is zo_video.Status.NOT_ALLOWED
        with pytest.raises(zo_video.NotAllowedError):
            reader[0]
        with pytest.raises(zo_video.NotAllowedError):
            reader.seek(0)
        assert reader, "an open reader is true, length or not"
        assert reader.read().index == 0


@pytest.mark.parametrize("index", [17, 3, 29, 0, 12, -1, -30, -13])
def test_frame_by_number(clip, index):
    with zo_video.open(clip, navigation=True) as reader:
        frame = reader[index]
        assert frame.index == index % 30
        assert frame.timestamp == 40 * (index % 30)
        assert frame.time == pytest.approx(0.04 * (index % 30))
        assert number_of(frame) == index % 30


@pytest.mark.parametrize("index", [30, -31, 10**30, -(10**30)])
def test_number_outside_the_clip(clip, index):
    with zo_video.open(clip, navigation=True) as reader:
        with pytest.raises(IndexError):
            reader[index]
        with pytest.raises(IndexError):
            reader.seek(index)
        assert reader[5].index == 5


@pytest.mark.parametrize("index", [1.0, "1", None])
def test_number_of_another_type(clip, index):
    with zo_video.open(clip, navigation=True) as reader:
        with pytest.raises(TypeError):
            reader[index]


def test_number_may_be_numpys(clip):
    numpy = pytest.importorskip("numpy")
    with zo_video.open(clip, navigation=True) as reader:
        assert reader[numpy.int64(4)].index == 4


@pytest.mark.parametrize(
    "part",
    [
        slice(None),
        slice(10, 20),
        slice(None, None, 7),
        slice(-5, None),
        slice(None, None, -1),
        slice(25, 3, -4),
        slice(5, 5),
        slice(20, 100),
    ],
    ids=str,
)
def test_slice(clip, part):
    expected = list(range(30))[part]
    with zo_video.open(clip, navigation=True) as reader:
        frames = reader[part]
        assert len(frames) == len(expected)
        assert list(frames.indices) == expected
        assert [number_of(frame) for frame in frames] == expected
        assert [frame.index for frame in reversed(frames)] == expected[::-1]


def test_slice_of_a_slice(clip):
    with zo_video.open(clip, navigation=True) as reader:
        frames = reader[4:24][::3][1:]
        assert [frame.index for frame in frames] == list(range(30))[4:24][::3][1:]
        assert frames[-1].index == 22
        with pytest.raises(IndexError):
            frames[100]


def test_iteration_goes_on_from_the_current_position(clip):
    with zo_video.open(clip, navigation=True) as reader:
        reader.seek(27)
        assert [frame.index for frame in reader] == [27, 28, 29]
        assert list(reader) == []
        reader.seek(28)
        assert [frame.index for frame in reader] == [28, 29]


def test_seek_takes_any_integer(clip):
    class Seven:
        def __index__(self):
            return 7

    with zo_video.open(clip, navigation=True) as reader:
        reader.seek(Seven())
        assert reader.read().index == 7
        with pytest.raises(TypeError):
            reader.seek(7.0)


def test_reversed(clip):
    with zo_video.open(clip, navigation=True) as reader:
        assert [number_of(frame) for frame in reversed(reader)] == list(range(30))[::-1]


def test_navigation_cache_keeps_the_index_beside_the_clip(clip, tmp_path):
    copy = tmp_path / "copy.mp4"
    copy.write_bytes(pathlib.Path(clip).read_bytes())
    with zo_video.open(copy, navigation=True):
        pass
    assert not (tmp_path / "copy.mp4.zo").exists()
    with zo_video.open(copy, navigation=True, navigation_cache=True):
        pass
    assert len((tmp_path / "copy.mp4.zo").read_text().split()) == 30


def test_skip_errors(media):
    with zo_video.open(media("damaged")) as reader:
        reader.read()
        reader.read()
        with pytest.raises((zo_video.ReadError, zo_video.DecoderError)):
            reader.read()
        assert reader.read() is not None, "the reader goes on after an error"
    with zo_video.open(media("damaged"), skip_errors=True) as reader:
        assert sum(not frame.empty for frame in reader) == 9


def test_version_is_that_of_the_project():
    version = os.environ.get("ZO_VERSION")
    if version is None:
        pytest.skip("only the build knows the version")
    assert zo_video.__version__ == version
