"""Nothing that a program does wrong may take the interpreter down."""
import copy
import gc
import subprocess
import sys
import threading
import weakref

import pytest

import zo_video
from conftest import number_of


def test_frame_outlives_its_reader(clip):
    reader = zo_video.open(clip, navigation=True)
    frame = reader[17]
    reader.close()
    del reader
    gc.collect()
    assert number_of(frame) == 17


def test_array_outlives_frame_and_reader(clip, pixels_as):
    reader = zo_video.open(clip, navigation=True)
    planes = [reader[i].planes[0] for i in range(30)]
    before = [bytes(plane) for plane in planes]
    reader.close()
    del reader
    gc.collect()
    with zo_video.open(clip) as other:  # takes whatever memory is free
        for frame in other:
            frame.to_bgr()
    assert [bytes(plane) for plane in planes] == before


def test_rows_outlive_their_frame(clip):
    with zo_video.open(clip, navigation=True) as reader:
        rows = list(reader[3].rows())
        expected = [bytes(row) for row in rows]
        for _ in reader:
            pass
    gc.collect()
    assert [bytes(row) for row in rows] == expected


def test_memory_of_forgotten_frames_is_used_again(clip):
    with zo_video.open(clip, navigation=True) as reader:
        addresses = set()
        for frame in reader:
            addresses.add(frame._memory.record.p_handle)
            del frame
    assert len(addresses) <= 8


def test_memory_of_kept_frames_is_not_used_again(clip):
    with zo_video.open(clip, navigation=True) as reader:
        frames = list(reader)
    assert len({frame._memory.record.p_planes[0] for frame in frames}) == 30
    assert [number_of(frame) for frame in frames] == list(range(30))


CALLS = {
    "read": lambda reader: reader.read(),
    "iterate": lambda reader: list(reader),
    "seek": lambda reader: reader.seek(0),
    "index": lambda reader: reader[0],
    "slice": lambda reader: reader[1:3],
    "length": len,
    "with": lambda reader: reader.__enter__(),
    "fps": lambda reader: reader.fps,
    "url": lambda reader: reader.url,
    "size": lambda reader: reader.size,
    "width": lambda reader: reader.width,
    "height": lambda reader: reader.height,
    "format": lambda reader: reader.format,
    "rotation": lambda reader: reader.rotation,
    "navigation": lambda reader: reader.navigation,
    "frame_index": lambda reader: reader.frame_index,
    "timestamp": lambda reader: reader.timestamp,
}


@pytest.mark.parametrize("call", CALLS.values(), ids=CALLS.keys())
def test_use_after_close(clip, call):
    reader = zo_video.open(clip, navigation=True)
    reader.read()
    reader.close()
    assert reader.closed
    assert not reader
    assert "closed" in repr(reader)
    with pytest.raises(zo_video.NotOpenedError):
        call(reader)


def test_double_close(clip):
    reader = zo_video.open(clip)
    reader.close()
    reader.close()
    with pytest.raises(zo_video.NotOpenedError):
        with reader:
            pass
    reader.close()


def test_close_inside_with(clip):
    with zo_video.open(clip) as reader:
        reader.close()
    assert reader.closed


def test_close_while_iterating(clip):
    reader = zo_video.open(clip)
    seen = []
    with pytest.raises(zo_video.NotOpenedError):
        for frame in reader:
            seen.append(frame)
            if len(seen) == 5:
                reader.close()
    assert [number_of(frame) for frame in seen] == list(range(5))


def test_slice_after_close(clip):
    with zo_video.open(clip, navigation=True) as reader:
        frames = reader[3:9]
    assert len(frames) == 6
    with pytest.raises(zo_video.NotOpenedError):
        frames[0]


def test_copies_share_the_reader(clip):
    reader = zo_video.open(clip)
    twin = copy.copy(reader)
    assert twin.read().index == 0
    reader.close()
    with pytest.raises(zo_video.NotOpenedError):
        twin.read()
    twin.close()


def test_forgotten_reader_is_closed(clip):
    reader = zo_video.open(clip)
    closer = reader._closer
    gone = weakref.ref(reader)
    del reader
    gc.collect()
    assert gone() is None
    assert not closer.alive


def test_failed_open_leaves_nothing_to_close(tmp_path):
    reader = zo_video.Reader.__new__(zo_video.Reader)
    with pytest.raises(zo_video.OpenError):
        reader.__init__(tmp_path / "missing.mp4")
    assert reader.closed
    reader.close()
    with pytest.raises(zo_video.NotOpenedError):
        reader.read()


def test_reader_in_many_threads(clip):
    """Threads that share a reader take turns: every frame is handed out once."""
    reader = zo_video.open(clip)
    frames, errors = [], []

    def work():
        try:
            for frame in reader:
                frames.append((frame.index, number_of(frame)))
        except Exception as error:
            errors.append(error)

    threads = [threading.Thread(target=work) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert errors == []
    assert sorted(frames) == [(i, i) for i in range(30)]


def test_jumps_in_many_threads(clip):
    reader = zo_video.open(clip, navigation=True)
    wrong = []

    def work(seed):
        for i in range(60):
            index = (seed * 7 + i * 11) % 30
            frame = reader[index]
            if frame.index != index or number_of(frame) != index:
                wrong.append(index)

    threads = [threading.Thread(target=work, args=(seed,)) for seed in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


def test_close_from_another_thread(clip):
    for _ in range(20):
        reader = zo_video.open(clip, navigation=True)
        outcomes = []

        def work():
            try:
                while True:
                    reader[5].to_bgr()
                    reader[25].to_bgr()
            except zo_video.NotOpenedError:
                outcomes.append("closed")
            except BaseException as error:
                outcomes.append(error)

        threads = [threading.Thread(target=work) for _ in range(3)]
        for thread in threads:
            thread.start()
        reader.close()
        for thread in threads:
            thread.join()
        assert outcomes == ["closed"] * 3


def test_converter_in_many_threads(clip):
    with zo_video.open(clip) as reader:
        frames = list(reader)
    converter = zo_video.Converter()
    expected = [frame.to_grey((16, 16)).tobytes() for frame in frames]
    wrong = []

    def work(step):
        for i in range(0, 30):
            frame = frames[i * step % 30]
            if converter.convert(frame, "GRAY8", (16, 16)).tobytes() != expected[frame.index]:
                wrong.append(frame.index)

    threads = [threading.Thread(target=work, args=(step,)) for step in (1, 7, 11, 13)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


def run_program(text, clip):
    """Runs a program of its own and gives its exit status: a crash is a negative one."""
    program = "import sys\nsys.path[:0] = " + repr(sys.path) + "\nimport zo_video\nclip = sys.argv[1]\n" + text
    return subprocess.run([sys.executable, "-X", "faulthandler", "-c", program, clip], timeout=120).returncode


@pytest.mark.parametrize(
    "text",
    [
        "reader = zo_video.open(clip)\nframe = reader.read()\n",
        "reader = zo_video.open(clip)\nplanes = reader.read().planes\ndel reader\n",
        "import builtins\nbuiltins.kept = zo_video.open(clip).read().to_bgr().array\n",
        "class Cycle:\n  pass\ncycle = Cycle()\ncycle.me = cycle\ncycle.frame = zo_video.open(clip).read()\n"
        "cycle.view = cycle.frame.planes[1]\n",
        "converter = zo_video.Converter()\nframe = converter.convert(zo_video.open(clip).read(), 'BGR24')\n",
    ],
    ids=["reader and frame", "planes only", "array in builtins", "cycle", "converter"],
)
def test_exit_with_objects_alive(clip, text):
    assert run_program(text, clip) == 0


def test_exit_while_a_thread_reads(clip):
    text = """
import threading
reader = zo_video.open(clip, navigation=True)
started = threading.Event()
def work():
    while True:
        reader[7].to_bgr()
        reader[3].planes
        started.set()
for _ in range(3):
    threading.Thread(target=work, daemon=True).start()
started.wait()
"""
    for _ in range(5):
        assert run_program(text, clip) == 0


def test_exit_from_the_interrupt_function(clip):
    assert run_program("zo_video.open(clip, interrupt=lambda: sys.exit(7))\n", clip) == 7
