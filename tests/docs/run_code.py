"""Runs the code blocks that extract_code.py wrote, each in a fresh folder with the clips that the texts speak of."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile


def parse_arguments():
    parser = argparse.ArgumentParser()
    for option in ("code", "emulator", "media", "tool", "library", "python-path"):
        parser.add_argument("--" + option, required=True)
    parser.add_argument("--programs", nargs="*", default=[])
    return parser.parse_args()


class Runner:
    def __init__(self, options, media):
        self.media = media
        self.emulator = [word for word in options.emulator.split("|") if word]
        self.bin = self.make_bin(options.tool)
        self.library = options.library
        self.python_path = options.python_path
        self.programs = {os.path.basename(path)[len("zo_doc_"):]: path for path in options.programs}

    def make_bin(self, tool):
        """A folder to search programs in, where the tool goes by its name."""
        folder = os.path.join(self.media, "bin")
        os.mkdir(folder)
        words = " ".join("'%s'" % word for word in self.emulator + [tool])
        with open(os.path.join(folder, "zo-video"), "w", encoding="utf-8") as script:
            script.write("#!/bin/sh\nexec %s \"$@\"\n" % words)
        os.chmod(os.path.join(folder, "zo-video"), 0o755)
        return folder

    def command(self, path):
        """What runs a block, or None where it cannot run."""
        name, extension = os.path.splitext(os.path.basename(path))
        if extension in (".cpp", ".c"):
            return self.emulator + [self.programs[name]]
        if extension == ".py":
            return [sys.executable, path] if self.library else None
        return ["sh", "-eu", path]

    def run(self, path):
        """None when the block works (or cannot run here), else what is wrong."""
        command = self.command(path)
        if command is None:
            return None
        environment = dict(os.environ, PYTHONPATH=self.python_path, ZO_VIDEO_LIBRARY=self.library,
                           PATH=self.bin + os.pathsep + os.environ["PATH"])
        with tempfile.TemporaryDirectory() as folder:
            for entry in os.scandir(self.media):
                if entry.is_file():
                    shutil.copy(entry.path, folder)
            done = subprocess.run(command, cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  universal_newlines=True, timeout=120, check=False)
        if done.returncode != 0:
            return "ends with %d\n%s%s" % (done.returncode, done.stdout, done.stderr)
        expected_path = os.path.splitext(path)[0] + ".out"
        if os.path.exists(expected_path):
            with open(expected_path, encoding="utf-8") as expected_file:
                expected = expected_file.read()
            if expected != done.stdout:
                return "prints\n%sinstead of\n%s" % (done.stdout, expected)
        return None


def main():
    options = parse_arguments()
    with tempfile.TemporaryDirectory() as media:
        emulator = [word for word in options.emulator.split("|") if word]
        subprocess.run(emulator + [options.media, media], check=True, timeout=300)
        runner = Runner(options, media)
        names = sorted(name for name in os.listdir(options.code) if not name.endswith(".out"))
        failures = 0
        for name in names:
            problem = runner.run(os.path.join(options.code, name))
            print("%-6s %s" % ("ok" if problem is None else "FAILED", name))
            if problem is not None:
                failures += 1
                print(problem)
    print("%d blocks, %d failed" % (len(names), failures))
    return 0 if names and not failures else 1


if __name__ == "__main__":
    sys.exit(main())
