"""The check of imported names finds what Android lacks, and that alone."""

import subprocess
from pathlib import Path

CHECK = Path(__file__).resolve().parents[2] / "scripts/check-bionic"


def test_names_the_import_that_android_lacks(tmp_path):
    source, library = tmp_path / "a.c", tmp_path / "a.so"
    source.write_text("int strverscmp(), statx(), pread(); int f() { return strverscmp() + statx() + pread(); }")
    subprocess.run(["clang-19", "-w", "-std=c99", "-shared", "-fPIC", source, "-o", library], check=True)
    check = subprocess.run([CHECK, library], capture_output=True, text=True)
    assert check.returncode == 1
    assert [line.split()[3] for line in check.stderr.splitlines()] == ["statx,", "strverscmp,"]
