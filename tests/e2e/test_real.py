"""Runs with our own monitor library on this machine's kernel."""

import csv
import json
import os
import re
import resource
import signal
import subprocess
import sys
import time
from pathlib import Path

from conftest import wait_until

HOSTILE = [b"new\nline", b'quo"te\\back', b"com,ma bl ank", b"\xff\xfe\xc3", b"p) R 1 (x", b"\t", b"x" * 3000]
EVERYTHING = "-cgadroipun --live --json --csv"


def sleeper(name):
    """A process whose argv[0] and short name are the given bytes."""
    code = "import ctypes, sys; ctypes.CDLL(None).prctl(15, bytes.fromhex(sys.argv[1])); sys.stdin.read()"
    return subprocess.Popen(
        [name, "-c", code, name[:15].hex()], executable=sys.executable, stdin=subprocess.PIPE
    )


def check_whole(run, suffix="x"):
    """Every line has its columns, every CSV row too, and the trace is strict JSON."""
    folder = run.folder / "Results_corvane" / suffix
    for path in folder.glob("*.txt"):
        header, *lines = path.read_text().split("\n")
        widths = {len(re.findall("[^ ]+", line)) for line in lines if line}
        assert widths <= {len(header.split())}, path.name
        with path.with_suffix(".csv").open(newline="") as file:
            assert {len(row) for row in csv.reader(file)} <= {len(header.split())}, path.name
    trace = json.loads((folder / "ProfilerOutput.json").read_text())
    for event in trace["traceEvents"]:
        assert all(isinstance(event[key], (int, float)) for key in ("ts", "pid", "tid")), event
    return trace["traceEvents"]


def test_full_profile(profiler):
    run = profiler.run(EVERYTHING + " -s 200 -t 1 -f x", scripted=False)
    names = {event["args"]["name"] for event in check_whole(run) if event["ph"] == "M"}
    assert {"CPU_STATS", "MEM_STATS", "PROC_STATS", "PROCMEM_STATS", "NET_STATS"} <= names
    assert all(re.fullmatch("corvane: .*", line) for line in run.err.splitlines())
    assert len(set(run.err.splitlines())) == len(run.err.splitlines())
    assert (run.status, run.out[-2:]) == (0, "+\n")


def test_hostile_process_names(profiler):
    processes = [sleeper(name) for name in HOSTILE]
    pids = ",".join(str(process.pid) for process in processes)
    run = profiler.run(f"-p -u -s 100 -t 1 -f x --json --csv -b {pids}", scripted=False)
    for process in processes:
        process.communicate()
    check_whole(run)
    for prefix in ("procprofiler", "procmem-profiler"):
        seen = {line.split()[1] for line in run.result(prefix).splitlines()[1:] if line}
        assert seen == {str(process.pid) for process in processes}


def test_more_processes_than_descriptors(profiler):
    command = ["one of many", "1000"]
    processes = [subprocess.Popen(command, executable="/bin/sleep") for _ in range(300)]
    run = profiler.run(
        EVERYTHING + " -s 200 -t 1 -f x", scripted=False,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (64, 64)),
    )  # fmt: skip
    for process in processes:
        process.kill()
        process.wait()
    check_whole(run)
    for prefix in ("procprofiler", "procmem-profiler"):
        assert run.result(prefix).count("one_of_many") >= 300
    assert run.status == 0


def test_ordinary_user(profiler, somebody_else):
    os.chmod(profiler.folder, 0o777)
    (profiler.folder / "calls").touch()
    run = profiler.run(EVERYTHING + " -s 100 -t 1 -f x", scripted=False, **somebody_else)
    assert run.out.endswith("+\n") and run.status == 0
    check_whole(run)
    own = [line.split() for line in run.result("procmem-profiler").splitlines()[1:] if line]
    hidden = "hidepid=" in Path("/proc/mounts").read_text()  # others' processes, from this user
    assert {fields[5] == "0" for fields in own} == ({False} if hidden else {False, True})  # PSS
    assert run.err.count("smaps_rollup") == (0 if hidden else 1)


def test_stopped_program_goes_on_without_a_burst(profiler):
    """A source has no more samples than there are periods in which it ran."""
    process = profiler.start("-c -o -s 20 -t 0 -f x", scripted=False)
    prefixes = ("cpuprofiler", "memprofiler")
    folder = profiler.folder / "Results_corvane/x"

    def rows():
        files = (folder / f"{prefix}_x.txt" for prefix in prefixes)
        return min(file.read_text().count("\n") if file.exists() else 0 for file in files) - 1

    wait_until(lambda: rows() >= 3)
    process.send_signal(signal.SIGSTOP)
    os.waitid(os.P_PID, process.pid, os.WSTOPPED)
    before = rows()
    time.sleep(0.5)  # what is tested is that time passes
    process.send_signal(signal.SIGCONT)
    wait_until(lambda: rows() >= before + 3)
    process.send_signal(signal.SIGINT)
    run = profiler.finish(process)
    for prefix in prefixes:
        times = [float(line.split()[0]) for line in run.result(prefix).splitlines()[1:]]
        assert len(times) <= (times[-1] - 500_000) / 20_000 + 3
    assert run.status == 0
