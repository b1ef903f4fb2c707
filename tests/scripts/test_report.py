"""scripts/record and scripts/report from another folder: the run lies there, and its page."""

import subprocess
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"


def test_page_of_the_newest_run(tmp_path):
    for name in ("older", "newer"):
        record = [SCRIPTS / "record", "--only", "mem", "--every", "20ms", "--name", name, "-q", "--", "sh", "-c", "exit 3"]
        assert subprocess.run(record, cwd=tmp_path).returncode == 3
    report = subprocess.run([SCRIPTS / "report"], cwd=tmp_path, capture_output=True, text=True)
    assert (report.returncode, report.stdout) == (0, f"{tmp_path}/newer.html\n")
    assert '"newer"' in (tmp_path / "newer.html").read_text()
    missing = subprocess.run([SCRIPTS / "report", tmp_path / "none"], capture_output=True, text=True)
    assert (missing.returncode, missing.stdout) == (2, "") and "none is no folder" in missing.stderr
