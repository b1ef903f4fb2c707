"""A console that is closed, full, goes away or stands still: the run and its results are the same."""

import contextlib
import os
import pty
import re
import shutil
import signal
import socket

import pytest
from conftest import read_all, wait_until


@pytest.mark.parametrize("target", ["closed", "/dev/full"])
def test_console_that_takes_nothing(profiler, target):
    command = ["sh", "-c", '"$0" "$@" ' + (">&- 2>&-" if target == "closed" else f">{target}")]
    run = profiler.run("-c -A 1 -f x", "cpu 1\n" * 3 + "cpu signal=2\n", before=command)
    assert run.status == 0
    assert run.result("cpuprofiler").count("\n") == 4


ROWS = 300
ROW = "1.00".rjust(20)
SCRIPT = f"cpu repeat={ROWS} 1 2 3\ncpu signal=2\n"
OPTIONS = "-c -A 1 --live --json --csv -f x"


def converted(run_or_profiler):
    """How many lines the whole CSV has, 0 as long as it, or the trace, is not whole."""
    folder = run_or_profiler.folder / "Results_corvane/x"
    trace, table = folder / "ProfilerOutput.json", folder / "cpuprofiler_x.csv"
    if not table.exists() or not trace.read_text().endswith("]}\n"):
        return 0
    lines = table.read_text().count("\n")
    return lines if lines == table.with_suffix(".txt").read_text().count("\n") else 0


@pytest.mark.parametrize("due", ["row", "text", "nothing"])
def test_reader_that_goes_away(profiler, due):
    """The next row or text ends the run; where none is due, it goes on to its own end."""
    rows = due == "row"
    options = OPTIONS if rows else OPTIONS.replace("--live ", "")
    without_end = "cpu repeat=9 1\ncpu repeat=9999999 " + ("1\n" if rows else "print=8 1\n")
    process = profiler.start(options + " -t 0", SCRIPT if due == "nothing" else without_end)
    seen = b""
    while seen.count(b"CPU Load") <= rows or b"Starting" not in seen:  # all but rows, in any order
        seen += process.stdout.readline()
    process.stdout.close()
    process.stderr.close()
    run = profiler.finish(process)
    assert converted(run) == ROWS + 1 if due == "nothing" else converted(run) > 1
    assert run.status == 0


def full(kind):
    """A console that takes nothing: our end, and the program's."""
    if kind == "socket":
        ours, its = (end.detach() for end in socket.socketpair())
    else:
        ours, its = pty.openpty() if kind == "terminal" else os.pipe()
    os.set_blocking(its, False)
    for piece in (b"=" * 99 + b"\n", b"\n"):
        with contextlib.suppress(BlockingIOError):
            while os.write(its, piece):
                pass
    os.set_blocking(its, True)
    return ours, its


def texts(console):
    """The lines that are no rows, without their figures; which thread came first is chance."""
    lines = (line for line in console.split("\n") if line != ROW)
    return sorted(re.sub(r"[\d.]+", "#", line) for line in lines)


@pytest.mark.parametrize("kind, end", [("pipe", "signal"), ("pipe", "reader"), ("terminal", "reader"),
                                       ("socket", "reader")])  # fmt: skip
def test_reader_that_stands_still(profiler, kind, end):
    """Rows are left out; all other text waits for the reader, or a signal, when the results are there."""
    expected = profiler.run(OPTIONS + " -t 0", SCRIPT)
    shutil.rmtree(profiler.folder / "Results_corvane")
    ours, its = full(kind)
    limit, script = ("-t 1", SCRIPT.split("cpu signal")[0]) if end == "signal" else ("-t 0", SCRIPT)
    process = profiler.start(f"{OPTIONS} {limit}", script, stdout=its, stderr=its)
    os.close(its)
    wait_until(lambda: converted(profiler) or process.poll() is not None)
    if end == "signal":
        process.send_signal(signal.SIGTERM)
    else:
        console = read_all(ours).lstrip("=\n")
        assert texts(console) == texts(expected.out)
        # What room there was; a terminal's makes more of it a little later.
        assert console.count(ROW + "\n") < (ROWS if kind == "terminal" else 9)
    run = profiler.finish(process)
    os.close(ours)
    assert converted(run) > 1 if end == "signal" else converted(run) == ROWS + 1
    assert run.status == 0


@pytest.mark.parametrize("end", ["reader", "signal", "gone"])
def test_reader_of_errors_alone(profiler, end):
    """Gone or standing still: what the library says of what this machine lacks holds up and ends nothing."""
    ours, its = full("pipe")
    if end == "gone":
        os.close(ours)
    process = profiler.start("-garo -s 100 -t 1 --csv -f x", scripted=False, stderr=its)
    os.close(its)
    wait_until((profiler.folder / "Results_corvane/x/memprofiler_x.csv").exists)
    if end == "reader":
        assert "corvane: " in read_all(ours)
    else:
        process.send_signal(signal.SIGTERM)
    run = profiler.finish(process)
    if end != "gone":
        os.close(ours)
    assert "SUMMARY" in run.out and "notifyThreadsExit" not in run.out
    assert run.status == 0
