"""The two packages, each unpacked and used alone. scripts/package --test runs this."""

import json
import os
import subprocess
from pathlib import Path

import pytest

CONSUMER = Path(__file__).resolve().parent / "consumer"
SCRIPTED = Path(os.environ["CORVANE_SCRIPTED"])  # a folder with another build of the library


def output(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def assert_profiles(program, folder):
    out = output(*program, "--cpu", "--mem", "--proc", "--json", "--csv", "-s", "50", "-t", "1",
                 "-f", "x", cwd=folder)
    assert out.endswith("+" * 103 + "\n") and "MEM Total_Mem(KB)" in out
    run = folder / "Results_corvane/x"
    assert json.loads((run / "ProfilerOutput.json").read_text())["traceEvents"]


@pytest.fixture
def installed(tmp_path):
    output("dpkg", "-x", os.environ["CORVANE_DEB"], tmp_path / "root")
    return tmp_path / "root/usr"


def test_deb_runs_and_takes_another_library(installed, tmp_path):
    program = installed / "bin/profiler_app"
    assert_profiles([program], tmp_path)
    other = output(program, "--version", env={"LD_LIBRARY_PATH": str(SCRIPTED)})
    assert "Scripted Library Version" in other


def test_deb_holds_what_a_developer_needs(installed, tmp_path):
    output("cmake", "-G", "Ninja", "-D", "CMAKE_CXX_COMPILER=clang++-19", "-D",
           f"CMAKE_PREFIX_PATH={installed}", "-S", CONSUMER, "-B", tmp_path / "build")
    output("ninja", "-C", tmp_path / "build")
    total = int(output(tmp_path / "build/total_memory"))
    assert f"MemTotal: {total} kB" in " ".join(Path("/proc/meminfo").read_text().split())


def test_deb_holds_the_manual(installed):
    manual = (installed / "share/man/man1/profiler_app.1").read_text()
    assert all(f"\\-\\-{option}" in manual for option in ("cpu", "json", "csv", "qtimer", "pid\\-list"))
    assert (installed / "share/doc/corvane/LICENSE").exists()


@pytest.mark.skipif(os.environ["CORVANE_ARCHIVE"] == "none", reason="the Debian package alone")
def test_archive_is_one_file_that_needs_no_other(tmp_path):
    output("tar", "-xf", os.environ["CORVANE_ARCHIVE"], "-C", tmp_path, "--strip-components=1")
    program = tmp_path / "bin/profiler_app"
    elf = output("readelf", "-lWd", program)
    assert "INTERP" not in elf and "NEEDED" not in elf
    assert_profiles(["qemu-aarch64", program], tmp_path)
    print(f"static program: {program.stat().st_size} bytes")
