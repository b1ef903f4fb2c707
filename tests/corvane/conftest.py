"""Runs the built `corvane` on run folders that the tests make."""

import os
import shlex
import subprocess
from pathlib import Path

import pytest

BUILD = Path(os.environ["CORVANE_BUILD"])
RUNNER = shlex.split(os.environ.get("CORVANE_RUNNER", ""))  # an emulator, for another processor
PROGRAM = [*RUNNER, str(BUILD / "corvane")]


@pytest.fixture
def corvane(tmp_path):
    """Runs `corvane` in a folder of its own; its output is text."""

    def run(*arguments, status=0, **options):
        options = {"cwd": tmp_path, "capture_output": True, "text": True} | options
        done = subprocess.run([*PROGRAM, *map(str, arguments)], stdin=subprocess.DEVNULL, **options)
        assert done.returncode == status, done.stderr
        return done

    return run


def write_rows(folder, prefix, header, rows):
    """A result file: `rows` are lists of fields, or None for an empty line."""
    folder.mkdir(parents=True, exist_ok=True)
    path = folder / f"{prefix}_{folder.name}.txt"
    with path.open("w") as file:
        for row in [header.split(), *rows]:
            file.write("".join(f"{field:>20}" for field in row or []) + "\n")
    return path
