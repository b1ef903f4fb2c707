"""Where a kit for Android comes from, and which is refused."""

import os
import shutil
import subprocess
import tarfile
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
TOOLCHAIN = "build/cmake/android.toolchain.cmake"


def kit(script=ROOT / "scripts/android-kit", **variables):
    environment = {key: value for key, value in os.environ.items() if "ANDROID" not in key}
    return subprocess.run([script], env=environment | variables, capture_output=True, text=True)


@pytest.fixture
def archive(tmp_path):
    file = tmp_path / "content/kit" / TOOLCHAIN
    file.parent.mkdir(parents=True)
    file.write_text("# a kit\n")
    with tarfile.open(tmp_path / "kit.tar.xz", "w:xz") as tar:
        tar.add(tmp_path / "content/kit", "kit")
    return tmp_path / "kit.tar.xz"


def test_from_the_archive_then_from_the_folder_that_is_named(tmp_path, archive):
    (tmp_path / "checkout/scripts").mkdir(parents=True)
    for name in ("android-kit", "common.sh"):
        shutil.copy(ROOT / "scripts" / name, tmp_path / "checkout/scripts")
    script = tmp_path / "checkout/scripts/android-kit"
    for _ in range(2):  # unpacks it, finds it unpacked
        unpacked = kit(script, CORVANE_ANDROID_KIT=str(archive))
        assert unpacked.stdout == f"{tmp_path}/checkout/build/android-kit\n", unpacked.stderr
        assert (Path(unpacked.stdout.strip()) / TOOLCHAIN).read_text() == "# a kit\n"
    named = kit(script, CORVANE_ANDROID_KIT=str(archive), ANDROID_NDK_HOME=str(tmp_path / "content/kit"))
    assert named.stdout == f"{tmp_path}/content/kit\n"


def test_without_one():
    none = kit()
    assert (none.returncode, none.stdout, none.stderr.count("\n")) == (77, "", 1)
    assert kit(ANDROID_NDK_HOME="/nowhere").returncode == 1


def test_old_cpp_library_is_refused_in_one_line(tmp_path):
    real = subprocess.run([ROOT / "scripts/android-kit"], capture_output=True, text=True)
    if real.returncode == 77:
        pytest.skip("no kit")
    (tmp_path / "kit" / TOOLCHAIN).parent.mkdir(parents=True)
    (tmp_path / "kit/version").write_text("#define _LIBCPP_VERSION 15007\n")
    (tmp_path / "kit" / TOOLCHAIN).write_text(
        f'set(CMAKE_CXX_FLAGS_INIT "-isystem {tmp_path}/kit")\ninclude({real.stdout.strip()}/{TOOLCHAIN})\n')
    build = subprocess.run(["cmake", "--preset", "android-arm64", "-B", tmp_path / "build"], cwd=ROOT,
                           env=dict(os.environ, ANDROID_NDK_HOME=str(tmp_path / "kit")),
                           capture_output=True, text=True)  # fmt: skip
    assert build.returncode != 0
    assert " ".join(build.stderr.split()).count("This Android kit is too old") == 1
