"""What the dynamic builds ask of a loader, and what the loader then really looks for."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

BUILD = Path(os.environ["CORVANE_BUILD"])
ANDROID = os.environ["CORVANE_PLATFORM"] == "Android"


def readelf(option, name):
    return subprocess.run(["readelf", option, BUILD / name], check=True, capture_output=True, text=True).stdout


def dynamic(name, entry):
    return re.findall(rf"\({entry}\) .*\[(.*)\]", readelf("-dW", name))


@pytest.mark.parametrize("name", ["profiler_app", "libcorvane.so", "corvane"])
def test_search_path_is_the_programs_own_folder_alone(name):
    own = ["$ORIGIN"] if "libcorvane.so" in dynamic(name, "NEEDED") or (ANDROID and name == "corvane") else []
    assert dynamic(name, "RUNPATH") == own
    assert dynamic(name, "RPATH") == []


def test_installed_program_finds_the_installed_library():
    assert re.fullmatch(r"\$ORIGIN:\$ORIGIN/\.\./lib\S*", *dynamic("installed/profiler_app", "RUNPATH"))


@pytest.mark.skipif(not ANDROID, reason="what Android's loader has")
@pytest.mark.parametrize("name, own", [("profiler_app", ["libcorvane.so"]), ("libcorvane.so", []), ("corvane", [])])
def test_fits_devices(name, own):
    needed = dynamic(name, "NEEDED")
    assert set(needed) - {"libm.so", "libdl.so"} == {*own, "libc++_shared.so", "libc.so"}
    alignments = re.findall(r"^ *LOAD .* (0x[0-9a-f]+)$", readelf("-lW", name), re.MULTILINE)
    assert alignments and all(int(alignment, 16) >= 0x4000 for alignment in alignments)


@pytest.mark.skipif(ANDROID or "CORVANE_RUNNER" in os.environ, reason="there is no loader for it here")
def test_loader_looks_in_no_folder_beside_the_programs(tmp_path):
    """A library of the system that somebody else put beside the program's folder is not even tried."""
    shared = tmp_path / "shared"
    for folder in ("tool", "lib", "lib64", "tool/elsewhere"):
        (shared / folder).mkdir(parents=True)
    for name in ("profiler_app", "libcorvane.so"):
        shutil.copy(BUILD / name, shared / "tool")
    for folder in ("lib", "lib64", "tool/elsewhere"):
        (shared / folder / "libm.so.6").write_text("no library")
    run = subprocess.run([shared / "tool/profiler_app", "--version"], cwd=shared / "tool/elsewhere",
                         env={"LD_DEBUG": "libs"}, capture_output=True, text=True)  # fmt: skip
    assert run.returncode == 0 and "Corvane Library Version" in run.stdout
    tried = re.findall(r"trying file=(.*)", run.stderr)
    assert str(shared / "tool/libcorvane.so") in tried
    foreign = [path for path in tried if not path.startswith(("/lib", "/usr/lib", f"{shared}/tool/"))]
    assert not foreign and not [path for path in tried if "elsewhere" in path]
