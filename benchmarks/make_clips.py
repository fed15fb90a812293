#!/usr/bin/env python3
"""Makes the clips that the benchmarks read, with the ffmpeg program. The same options give the same clips.

    make_clips.py DIRECTORY

Clips that are there already are kept.
"""
import os
import subprocess
import sys

GOP = 48


def source(size, seconds, rate=25, noise=8):
    """A moving test picture with some grain, so that pictures cost about what camera pictures cost."""
    return ["-f", "lavfi", "-i",
            "testsrc2=size=%s:rate=%d:duration=%s,noise=alls=%d:allf=t:all_seed=7" % (size, rate, seconds, noise)]


def x264(extra="", b_frames=3, gop=GOP, preset="veryfast"):
    params = "keyint=%d:min-keyint=%d:scenecut=0:bframes=%d:threads=1" % (gop, gop, b_frames)
    return ["-c:v", "libx264", "-preset", preset, "-pix_fmt", "yuv420p", "-x264-params", params + extra]


def x265(open_gop):
    return ["-c:v", "libx265", "-preset", "veryfast", "-pix_fmt", "yuv420p", "-x265-params",
            "keyint=%d:min-keyint=%d:scenecut=0:bframes=3:open-gop=%d:pools=none:frame-threads=1:log-level=error"
            % (GOP, GOP, open_gop)]


def mpeg4(b_frames):
    return ["-c:v", "mpeg4", "-q:v", "4", "-g", str(GOP), "-bf", str(b_frames), "-threads", "1"]


VP9 = ["-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-b:v", "2M", "-g", str(GOP), "-row-mt", "0",
       "-threads", "1"]
MJPEG = ["-c:v", "mjpeg", "-q:v", "4", "-pix_fmt", "yuvj420p", "-threads", "1"]
VARIABLE_RATE = ["-vf", "select='not(eq(mod(n,5),3))'", "-fps_mode", "vfr"]
SMALL = "320x180"


def repeated(clip, times):
    return ["-stream_loop", str(times - 1), "-i", clip, "-c", "copy"]


def recipes():
    """Name to ffmpeg arguments; '@' stands for the directory."""
    clips = {
        "sequential_h264.mp4": source("1920x1080", 6) + x264(),
        "sequential_mpeg4.avi": source("1280x720", 10) + mpeg4(0),
        "sequential_vp9.webm": source("1280x720", 10) + VP9,
        "sequential_hevc.mp4": source("1280x720", 6) + x265(0),
        "sequential_mjpeg.avi": source("1280x720", 8) + MJPEG,
        "jump_h264_b.mp4": source(SMALL, 60) + x264(),
        "jump_h264_long.mp4": source(SMALL, 600) + x264(),
        "jump_h264_vfr.mkv": source(SMALL, 60) + VARIABLE_RATE + x264(),
        "jump_h264.ts": source(SMALL, 60) + x264(),
        "jump_h264_open_gop.mp4": source(SMALL, 60) + x264(":open-gop=1"),
        "jump_hevc_open_gop.mp4": source(SMALL, 60) + x265(1),
        "jump_mpeg4.avi": source(SMALL, 60) + mpeg4(0),
        "jump_mpeg4_b.avi": source(SMALL, 60) + mpeg4(2),
        "jump_vp9.webm": source(SMALL, 60) + VP9,
        "jump_mjpeg.avi": source(SMALL, 60) + MJPEG,
        # Without B-frames, so that a group can be repeated with rising timestamps.
        "group.mp4": source("160x90", 8, rate=30, noise=4) + x264(b_frames=0, gop=60),
    }
    for container in ("mp4", "mkv"):
        clips["open_10min." + container] = repeated("@/group.mp4", 75)
        clips["open_2h." + container] = repeated("@/group.mp4", 900)
    return clips


def main():
    directory = sys.argv[1]
    os.makedirs(directory, exist_ok=True)
    for name, arguments in recipes().items():
        path = os.path.join(directory, name)
        if os.path.exists(path):
            continue
        part = os.path.join(directory, "part." + name)
        command = ["ffmpeg", "-v", "error", "-nostdin", "-y"]
        command += [a.replace("@", directory) for a in arguments]
        command += ["-an", "-flags", "+bitexact", "-fflags", "+bitexact", part]
        subprocess.run(command, check=True)
        os.rename(part, path)
        print("made %s, %d bytes" % (name, os.path.getsize(path)), file=sys.stderr)


if __name__ == "__main__":
    main()
