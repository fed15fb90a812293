"""What the guide shows is run, beside a clip of the name that it uses."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

PACKAGE = pathlib.Path(__file__).resolve().parents[1]
GUIDE = PACKAGE.parents[1] / "docs" / "python.md"
BLOCKS = re.findall(r"^```python\n(.*?)^```$", GUIDE.read_text(encoding="utf-8"), re.M | re.S)


def test_the_guide_has_programs():
    assert len(BLOCKS) >= 5


@pytest.mark.parametrize("number", range(len(BLOCKS)))
def test_program_of_the_guide_runs(number, clip, tmp_path):
    pytest.importorskip("numpy")
    shutil.copy(clip, tmp_path / "clip.mp4")
    program = tmp_path / "program.py"
    program.write_text(BLOCKS[number], encoding="utf-8")
    result = subprocess.run(
        [sys.executable, str(program)],
        cwd=tmp_path,
        env=dict(os.environ, PYTHONPATH=str(PACKAGE)),
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        timeout=120,
    )
    assert result.returncode == 0, result.stderr
    assert result.stderr == ""
