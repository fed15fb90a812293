import pathlib
import pickle
import socket
import threading
import time

import pytest

import zo_video
from zo_video._errors import error_for


@pytest.mark.parametrize("status", list(zo_video.Status)[1:])
def test_every_status_becomes_an_exception_that_carries_it(status):
    error = error_for(int(status), "what happened")
    assert isinstance(error, zo_video.ZoVideoError)
    assert error.status is status
    assert error.message == str(error) == "what happened"


def test_unknown_status_is_kept():
    error = error_for(99, "new")
    assert type(error) is zo_video.ZoVideoError
    assert error.status == 99


@pytest.mark.parametrize(
    "status, builtin",
    [
        (zo_video.Status.OUT_OF_RANGE, IndexError),
        (zo_video.Status.INVALID_ARGUMENT, ValueError),
        (zo_video.Status.TIMEOUT, TimeoutError),
        (zo_video.Status.OUT_OF_MEMORY, MemoryError),
        (zo_video.Status.OPEN_ERROR, OSError),
        (zo_video.Status.READ_ERROR, OSError),
        (zo_video.Status.NOT_OPENED, ValueError),
        (zo_video.Status.NOT_ALLOWED, TypeError),
    ],
)
def test_errors_are_the_builtin_ones_too(status, builtin):
    assert isinstance(error_for(int(status), "text"), builtin)


def test_failed_allocation_is_a_memory_error():
    error = error_for(3, "zoFrame_create: caught standard exception: std::bad_alloc")
    assert isinstance(error, MemoryError)
    assert error.status is zo_video.Status.STD_EXCEPTION
    assert not isinstance(error_for(3, "something else"), MemoryError)


def test_errors_are_pickled():
    error = pickle.loads(pickle.dumps(error_for(20, "not there")))
    assert type(error) is zo_video.OpenError
    assert error.status is zo_video.Status.OPEN_ERROR
    assert str(error) == "not there"


def test_missing_file(tmp_path):
    with pytest.raises(zo_video.OpenError, match="Failed to open video stream") as error:
        zo_video.open(tmp_path / "missing.mp4")
    assert error.value.status is zo_video.Status.OPEN_ERROR


def test_file_without_video(tmp_path):
    path = tmp_path / "text.mp4"
    path.write_text("no video at all")
    with pytest.raises(zo_video.ZoVideoError) as error:
        zo_video.open(path)
    assert error.value.status in (zo_video.Status.OPEN_ERROR, zo_video.Status.DECODER_ERROR)


@pytest.mark.parametrize("url", ["a\0b", b"\0"])
def test_zero_byte_in_the_url(url):
    with pytest.raises(ValueError):
        zo_video.open(url)


@pytest.mark.parametrize("url", [None, 7, 1.5, object()])
def test_url_of_another_type(url):
    with pytest.raises(TypeError):
        zo_video.open(url)


@pytest.mark.parametrize("timeout", [-1, -0.001, float("nan")])
def test_impossible_time_out(clip, timeout):
    with pytest.raises(ValueError):
        zo_video.open(clip, timeout=timeout)


def test_time_out_of_zero_runs_out_while_opening(clip):
    with pytest.raises(zo_video.TimeoutError) as error:
        zo_video.open(clip, timeout=0)
    assert error.value.status is zo_video.Status.TIMEOUT


@pytest.mark.parametrize("timeout", [60, 0.5e6, 1e30, float("inf"), None])
def test_long_time_outs(clip, timeout):
    with zo_video.open(clip, timeout=timeout) as reader:
        assert reader.read().index == 0


@pytest.fixture
def dead_camera():
    """An address that accepts connections and never answers."""
    server = socket.socket()
    server.bind(("127.0.0.1", 0))
    server.listen()
    yield f"http://127.0.0.1:{server.getsockname()[1]}/live.ts"
    server.close()


def test_dead_camera_times_out(dead_camera):
    with pytest.raises(TimeoutError):
        zo_video.open(dead_camera, timeout=0.2)


def test_interrupt_stops_opening(dead_camera):
    calls = []

    def stop():
        calls.append(None)
        return len(calls) >= 3

    with pytest.raises(zo_video.Interrupted):
        zo_video.open(dead_camera, interrupt=stop)
    assert len(calls) == 3, "it is not asked again"


def test_another_thread_interrupts(dead_camera):
    stop = threading.Event()
    timer = threading.Timer(0.2, stop.set)
    timer.start()
    with pytest.raises(zo_video.Interrupted):
        zo_video.open(dead_camera, interrupt=stop.is_set)
    timer.join()


@pytest.mark.parametrize("exception", [RuntimeError, KeyboardInterrupt, SystemExit, zo_video.OpenError])
def test_exception_in_the_interrupt_function_is_passed_on(clip, exception):
    error = exception(20, "from inside") if exception is zo_video.OpenError else exception("from inside")

    def fail():
        raise error

    with pytest.raises(exception) as caught:
        zo_video.open(clip, interrupt=fail)
    assert caught.value is error


@pytest.mark.parametrize("polls", [1, 2, 3, 5, 8, 13, 20])
@pytest.mark.parametrize("navigation", [False, True])
def test_interrupting_at_any_poll(clip, polls, navigation):
    left = [polls]

    def stop():
        left[0] -= 1
        return left[0] <= 0

    try:
        with zo_video.open(clip, navigation=navigation, interrupt=stop) as reader:
            assert left[0] > 0, "opened before it was asked that often"
            assert reader.read().index == 0
    except zo_video.Interrupted:
        assert left[0] <= 0


@pytest.mark.parametrize("before", [None, ""])
def test_interrupted_opening_leaves_no_part_of_an_index(clip, tmp_path, before):
    copy = tmp_path / "copy.mp4"
    copy.write_bytes(pathlib.Path(clip).read_bytes())
    index = tmp_path / "copy.mp4.zo"
    for polls in range(1, 1000):
        if before is not None:
            index.write_text(before)
        left = [polls]

        def stop():
            left[0] -= 1
            return left[0] <= 0

        try:
            with zo_video.open(
                copy, navigation=True, navigation_cache=True, skip_errors=True, interrupt=stop
            ) as reader:
                assert len(reader) == 30
            break
        except zo_video.Interrupted:
            assert (index.read_text() if index.exists() else None) == before
    assert polls > 1
    assert len(index.read_text().split()) == 30


def test_interrupt_that_never_stops(clip):
    with zo_video.open(clip, navigation=True, interrupt=lambda: False) as reader:
        assert len(list(reader)) == 30


def test_missing_library(monkeypatch):
    from zo_video import plain

    monkeypatch.setattr(plain, "_library", None)
    monkeypatch.setenv("ZO_VIDEO_LIBRARY", "/nonexistent/libzo_video.so")
    with pytest.raises(ImportError, match="ZO_VIDEO_LIBRARY"):
        zo_video.open("clip.mp4")


def test_dead_camera_does_not_hold_up_other_threads(dead_camera):
    ticks = []
    done = threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.005)

    thread = threading.Thread(target=tick)
    thread.start()
    try:
        with pytest.raises(TimeoutError):
            zo_video.open(dead_camera, timeout=0.5)
    finally:
        done.set()
        thread.join()
    assert len(ticks) >= 5
