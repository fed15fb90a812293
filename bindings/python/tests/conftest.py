"""Media for the tests.

ZO_VIDEO_LIBRARY names the library to test, ZO_EXAMPLE_MEDIA the program that makes clips: both as the build
leaves them (the second under tests/examples).
"""
import os
import subprocess
import sys

import pytest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir))

_EXTENSIONS = {"clip": "mp4", "odd": "mkv", "rotated": "mp4", "gap": "mp4", "damaged": "mov"}


@pytest.fixture(scope="session")
def media(tmp_path_factory):
    """A function that gives the path of a clip of some kind."""
    directory = tmp_path_factory.mktemp("media")
    maker = os.environ["ZO_EXAMPLE_MEDIA"]

    def make(kind):
        path = directory / f"{kind}.{_EXTENSIONS[kind]}"
        if not path.exists():
            subprocess.run([maker, kind, str(path)], check=True)
        return str(path)

    return make


@pytest.fixture
def clip(media):
    """30 pictures, 64 x 48, one every 40 ms, a key frame every 12; picture i carries the number i."""
    return media("clip")


@pytest.fixture(params=["numpy", "memoryview"])
def pixels_as(request, monkeypatch):
    """Runs a test with numpy and as if it were not installed."""
    import zo_video._frame

    if request.param == "memoryview":
        monkeypatch.setattr(zo_video._frame, "_numpy", lambda: None)
    else:
        pytest.importorskip("numpy")
    return request.param


def number_of(frame):
    """The number that a picture carries: 4 x 4 light and dark cells."""
    rows = [bytes(row) for row in frame.to_grey().rows()]
    height, width = len(rows), len(rows[0])
    number = 0
    for cell in range(16):
        top, left = cell // 4 * height // 4, cell % 4 * width // 4
        middle = [
            value
            for row in rows[top + height // 16 : top + height // 4 - height // 16]
            for value in row[left + width // 16 : left + width // 4 - width // 16]
        ]
        if sum(middle) / len(middle) > 128:
            number |= 1 << cell
    return number
