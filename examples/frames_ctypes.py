#!/usr/bin/env python3
"""Jumps to frames of a clip and prints their data, with nothing but Python's standard library.

    frames_ctypes.py [--library libzo_video.so] CLIP INDEX...

The library is the one given, else the one that ZO_VIDEO_LIBRARY names, else the installed one.
"""
import argparse
import ctypes
import ctypes.util
import os
import sys


class ZoFrame(ctypes.Structure):
    _fields_ = [
        ("p_handle", ctypes.c_void_p),
        ("format", ctypes.c_int),
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
        ("plane_count", ctypes.c_int),
        ("p_planes", ctypes.POINTER(ctypes.c_ubyte) * 4),
        ("strides", ctypes.c_uint * 4),
        ("timestamp", ctypes.c_longlong),
    ]


class ZoVideoReader(ctypes.Structure):
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


class Library:
    """The plain functions; a status other than 0 becomes a RuntimeError with the library's message."""

    def __init__(self, path):
        self._functions = ctypes.CDLL(path)
        self._message = ctypes.create_string_buffer(1024)

    def call(self, name, *arguments):
        status = getattr(self._functions, name)(*arguments, self._message, len(self._message))
        if status != 0:
            raise RuntimeError(f"error {status}: {self._message.value.decode(errors='replace')}")

    def release(self, name, p_object):
        getattr(self._functions, name)(ctypes.byref(p_object))


def print_frames(library, clip, indices):
    url = os.fsencode(clip)
    p_reader = ctypes.POINTER(ZoVideoReader)()
    p_frame = ctypes.POINTER(ZoFrame)()
    ready = ctypes.c_int()
    try:
        # No callback; no time-out; with navigation; errors are reported; no index file.
        library.call("zoVideoReader_create", None, None, url, ctypes.c_uint(len(url)), -1, 1, 0, 0,
                     ctypes.byref(p_reader))
        library.call("zoFrame_create", ctypes.byref(p_frame))
        reader = p_reader.contents
        print(f"{reader.frame_count} frames of {reader.width} x {reader.height}, {reader.fps:g} a second")
        for index in indices:
            library.call("zoVideoReader_moveByIndex", p_reader, ctypes.c_longlong(index))
            library.call("zoVideoReader_read", p_reader, p_frame, ctypes.byref(ready))
            frame = p_frame.contents
            if not ready.value or frame.plane_count == 0:
                print(f"frame {index}: no picture")
                continue
            # The first plane, without copying it; rows may be padded.
            plane = memoryview((ctypes.c_ubyte * (frame.strides[0] * frame.height)).from_address(
                ctypes.addressof(frame.p_planes[0].contents))).cast("B")
            mean = sum(sum(plane[row * frame.strides[0]:row * frame.strides[0] + frame.width])
                       for row in range(frame.height)) / (frame.width * frame.height)
            print(f"frame {reader.frame_index}: {frame.timestamp} ms, format {frame.format}, "
                  f"{frame.plane_count} planes, first bytes {bytes(plane[:4]).hex(' ')}, mean {mean:.1f}")
    finally:
        library.release("zoFrame_release", p_frame)
        library.release("zoVideoReader_release", p_reader)


def main():
    parser = argparse.ArgumentParser(description="Prints data of frames of a clip.")
    parser.add_argument("--library", help="path of libzo_video.so")
    parser.add_argument("clip")
    parser.add_argument("index", type=int, nargs="+", help="counted from 0")
    arguments = parser.parse_args()
    path = (arguments.library or os.environ.get("ZO_VIDEO_LIBRARY") or ctypes.util.find_library("zo_video")
            or "libzo_video.so")
    try:
        print_frames(Library(path), arguments.clip, arguments.index)
    except (OSError, RuntimeError) as error:
        sys.exit(f"{os.path.basename(sys.argv[0])}: {error}")


if __name__ == "__main__":
    main()
