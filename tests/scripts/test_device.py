"""scripts/device with a folder of this machine as the device."""

import json
import os
import signal
import subprocess
from pathlib import Path

import pytest

HERE = Path(__file__).resolve().parent
SCRIPT = HERE.parent.parent / "scripts/device"
BUILD = os.environ["CORVANE_BUILD"]


@pytest.fixture
def start(tmp_path):
    device, host = tmp_path / "device", tmp_path / "host"
    device.mkdir()
    host.mkdir()

    def run(*options, attached="0123\\tdevice", path=HERE, **variables):
        environment = dict(os.environ, DEVICE=str(device), ATTACHED=attached, **variables)
        environment["PATH"] = f"{path}:/usr/bin:/bin"
        return subprocess.Popen(
            [SCRIPT, BUILD, *options], cwd=host, env=environment, bufsize=0, start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        )

    run.device, run.host = device, host
    return run


def test_results_come_home_with_any_suffix(start):
    suffix = "it's \"a\" $HOME; x"
    process = start("--mem", "-s", "20", "-t", "1", "--json", "-f", suffix)
    out, err = process.communicate(timeout=60)
    assert process.returncode == 0, err
    assert f"filename = {suffix}\n" in out.decode()
    trace = start.host / "Results_corvane" / suffix / "ProfilerOutput.json"
    assert json.loads(trace.read_text())["traceEvents"]
    page = start.host / "Results_corvane" / f"{suffix}.html"
    assert err.decode().endswith(f"page: {page}\nscripts/device: trace: {trace}\n")
    assert page.read_text().startswith("<!DOCTYPE html>")
    assert not list(start.device.glob("corvane/run.*")), "left on the device"


def test_interrupt_ends_the_run_on_the_device(start):
    process = start("--mem", "-s", "20", "-t", "0", "-f", "x")
    out = b""
    while b"Started all threads" not in out:
        line = process.stdout.readline()
        assert line, process.stderr.read()
        out += line
    os.killpg(process.pid, signal.SIGINT)
    rest, err = process.communicate(timeout=60)
    assert process.returncode == 0, err
    assert rest.decode().endswith("+" * 103 + "\n")
    assert (start.host / "Results_corvane/x/memprofiler_x.txt").exists()


def test_records_on_the_device(start):
    process = start("record", "--only", "mem", "--every", "20ms", "--name", "a b", "--", "sh", "-c", "exit 3")
    out, err = process.communicate(timeout=60)
    assert (process.returncode, out) == (3, b""), err
    home = start.host / "Results_corvane"
    assert f"results: {home}/a b\n" in err.decode()
    assert json.loads((home / "a b.run.json").read_text())["command"]["status"] == 3
    assert (home / "a b.log").exists() and (home / "a b/memprofiler_a b.txt").exists()


def test_what_the_program_says_without_a_run_is_passed_on(start):
    process = start("--version")
    out, err = process.communicate(timeout=60)
    assert process.returncode == 0 and b"Corvane Library Version" in out, err
    assert not list(start.host.iterdir())


@pytest.mark.parametrize(
    "attached, message, settings",
    [
        ("", "no device:", {}),
        ("0123\\tunauthorized", "does not let adb in: 0123\tunauthorized", {}),
        ("0123\\tdevice\\n4567\\tdevice", "set ANDROID_SERIAL to one of: 0123 4567", {}),
        ("0123\\tdevice", "4567, which is not attached", {"ANDROID_SERIAL": "4567"}),
        ("", "no adb here", {"path": "/nowhere"}),
    ],
)
def test_says_what_is_missing(start, attached, message, settings):
    process = start("-c", attached=attached, **settings)
    out, err = process.communicate(timeout=60)
    assert (process.returncode, out) == (1, b"")
    assert message in err.decode() and err.count(b"\n") == 1


def test_one_of_several_devices(start):
    several = "0123\\tdevice\\n4567\\tdevice"
    process = start("--version", attached=several, ANDROID_SERIAL="4567")
    _, err = process.communicate(timeout=60)
    assert process.returncode == 0, err
