#!/usr/bin/env python3
"""Jumps to frames of a clip through the library's plain functions, with nothing but Python's standard library.

    frames_ctypes.py [--library libzo_video.so] CLIP INDEX...

The library is the one given, else the one that ZO_VIDEO_LIBRARY names, else the installed one. For everyday work the
package's own classes (zo_video.open) are shorter; this is the way down to the functions themselves.
"""
import argparse
import ctypes
import os
import sys

# The package is the installed one, else the one that lies beside this file in the sources.
sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "bindings", "python"))

from zo_video import ZoVideoError, plain  # noqa: E402


def print_frames(library, clip, indices):
    url = os.fsencode(clip)
    p_reader = plain.ReaderPointer()
    p_frame = plain.FramePointer()
    ready = ctypes.c_int()
    try:
        # No callback; no time-out; with navigation; errors are reported; no index file.
        library.call(library.zoVideoReader_create, None, None, url, len(url), -1, 1, 0, 0, ctypes.byref(p_reader))
        library.call(library.zoFrame_create, ctypes.byref(p_frame))
        reader = p_reader.contents
        print(f"{reader.frame_count} frames of {reader.width} x {reader.height}, {reader.fps:g} a second")
        for index in indices:
            library.call(library.zoVideoReader_moveByIndex, p_reader, index)
            library.call(library.zoVideoReader_read, p_reader, p_frame, ctypes.byref(ready))
            frame = p_frame.contents
            if not ready.value or frame.plane_count == 0:
                print(f"frame {index}: no picture")
                continue
            # The first plane, without copying it; rows may be padded.
            stride = frame.strides[0]
            plane = memoryview((ctypes.c_ubyte * (stride * frame.height)).from_address(frame.p_planes[0])).cast("B")
            mean = sum(sum(plane[row * stride:row * stride + frame.width])
                       for row in range(frame.height)) / (frame.width * frame.height)
            print(f"frame {reader.frame_index}: {frame.timestamp} ms, format {frame.format}, "
                  f"{frame.plane_count} planes, first bytes {bytes(plane[:4]).hex(' ')}, mean {mean:.1f}")
    finally:
        library.zoFrame_release(ctypes.byref(p_frame))
        library.zoVideoReader_release(ctypes.byref(p_reader))


def main():
    parser = argparse.ArgumentParser(description="Prints data of frames of a clip.")
    parser.add_argument("--library", help="path of libzo_video.so")
    parser.add_argument("clip")
    parser.add_argument("index", type=int, nargs="+", help="counted from 0")
    arguments = parser.parse_args()
    program = os.path.basename(sys.argv[0])
    try:
        library = plain.Library(arguments.library) if arguments.library else plain.library()
        print_frames(library, arguments.clip, arguments.index)
    except ZoVideoError as error:
        sys.exit(f"{program}: error {error.status:d}: {error}")
    except (OSError, ImportError) as error:
        sys.exit(f"{program}: {error}")


if __name__ == "__main__":
    main()
