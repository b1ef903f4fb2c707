"""Runs the built program in a folder of its own, with the scripted monitor library in front."""

import contextlib
import os
import shlex
import shutil
import signal
import subprocess
import tempfile
import threading
import time
from pathlib import Path

import pytest

FIXTURES = Path(__file__).resolve().parent.parent / "fixtures"
BUILD = Path(os.environ["CORVANE_BUILD"])
RUNNER = shlex.split(os.environ.get("CORVANE_RUNNER", ""))  # an emulator, for another processor
PROGRAM = [*RUNNER, str(BUILD / "profiler_app")]
CORVANE = [*RUNNER, str(BUILD / "corvane")]
SANITIZED = os.environ.get("CORVANE_SANITIZE")
no_thread_sanitizer = pytest.mark.skipif(SANITIZED == "thread", reason="its own memory is files of this size")
PATIENCE = int(os.environ.get("CORVANE_PATIENCE", "60"))  # seconds for what is awaited


def corvane(*arguments, **options):
    options = {"capture_output": True, "text": True, "timeout": 120} | options
    return subprocess.run([*CORVANE, *map(str, arguments)], **options)
# A static build has a second program with the scripted library in it.
STATIC = (BUILD / "scripted/profiler_app").exists()
SCRIPTED_PROGRAM = [*RUNNER, str(BUILD / "scripted/profiler_app")] if STATIC else PROGRAM


def wait_until(condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.005)


def read_all(descriptor):
    """To the end of a pipe, a socket or a terminal."""
    pieces = []
    with contextlib.suppress(OSError):  # a terminal's end
        while pieces[-1:] != [b""]:
            pieces.append(os.read(descriptor, 1 << 16))
    return b"".join(pieces).decode().replace("\r\n", "\n")


class Run:
    """One run: its console text, exit status, result files and the recorded monitor calls."""

    def __init__(self, folder, process, out, err):
        self.folder, self.status = folder, process.returncode
        self.out, self.err = out.decode(), err.decode()

    def result(self, prefix, suffix="x"):
        path = self.folder / f"Results_corvane/{suffix}/{prefix}_{suffix}.txt"
        return path.read_bytes().decode()

    @property
    def calls(self):
        path = self.folder / "calls"
        return path.read_text().splitlines() if path.exists() else []


class Profiler:
    def __init__(self, folder):
        self.folder = folder
        self.processes = []

    def start(self, options, script="", scripted=True, before=(), args_after=(), **popen):
        environment = dict(os.environ, TZ="UTC")
        program = SCRIPTED_PROGRAM if scripted else PROGRAM
        if scripted:
            (self.folder / "script").write_text(script)
            environment |= {
                "LD_LIBRARY_PATH": str(BUILD / "scripted"),
                "CORVANE_SCRIPT": str(self.folder / "script"),
                "CORVANE_CALLS": str(self.folder / "calls"),
            }
        environment |= popen.pop("env", {})
        popen = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "bufsize": 0} | popen
        process = subprocess.Popen(
            [*before, *popen.pop("program", program), *options.split(), *args_after],
            cwd=self.folder, env=environment, **popen,
        )
        self.processes.append(process)
        return process

    def finish(self, process):
        try:
            out, err = process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            raise
        return Run(self.folder, process, out or b"", err or b"")

    def run(self, options, script="", **popen):
        return self.finish(self.start(options, script, **popen))

    def run_and_signal(self, options, number, script="", at="Started all threads", **popen):
        """Sends the signal when the console shows the text."""
        process = self.start(options, script, **popen)
        watchdog = threading.Timer(PATIENCE, process.kill)
        watchdog.start()
        seen = b""
        while at.encode() not in seen:
            line = process.stdout.readline()
            assert line, f"ended without {at!r}: {seen.decode()}"
            seen += line
        watchdog.cancel()
        process.send_signal(number)
        run = self.finish(process)
        run.out = seen.decode() + run.out
        return run


@pytest.fixture
def profiler(tmp_path):
    profiler = Profiler(tmp_path)
    yield profiler
    for process in profiler.processes:
        process.kill()  # a test that failed may have left it running


@pytest.fixture(scope="session")
def somebody_else():
    """How to start the program as a user who cannot enter the folders of root."""
    if os.geteuid() != 0 or RUNNER:
        pytest.skip("only root can become somebody else, whose emulator may lie where only root goes")
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        for name in ("profiler_app", "libcorvane.so"):
            shutil.copy(BUILD / name, folder)
        yield {"program": [folder + "/profiler_app"], "user": 65534, "group": 65534}


def pytest_configure():
    # What a test starts must be able to receive these, whatever the caller of the tests ignores;
    # to have a handler for one is not handed on.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    if signal.getsignal(signal.SIGHUP) == signal.SIG_IGN:
        signal.signal(signal.SIGHUP, lambda *_: None)
