"""How a run begins and ends: folders, signals, faults."""

import itertools
import os
import re
import resource
import signal
import subprocess
from datetime import datetime, timedelta, timezone

import pytest
from conftest import RUNNER, SANITIZED, no_thread_sanitizer, wait_until

SUMMARY = (
    "+" * 47 + "SUMMARY" + "+" * 48 + "\n\n"
    + "Metric".rjust(30) + "".join("  |" + name.rjust(20) for name in ("Min", "Avg", "Max"))
    + "  |\n{rows}\n" + "+" * 103 + "\n"
)  # fmt: skip


def test_whole_console(profiler):
    run = profiler.run("-c -A 5 -t 60 -f x", "cpu 1 2 3\ncpu signal=14 2 2 4\n")
    rows = "".join(
        name.rjust(30) + "".join("  |" + value.rjust(20) for value in values.split()) + "  |\n"
        for name, values in [
            ("CPUStealTime(%)", "0.00 0.00 0.00"),
            ("TotalCPU", "1.00 1.50 2.00"),
            ("cpu0(%)", "2.00 2.00 2.00"),
            ("cpu0steal(%)", "0.00 0.00 0.00"),
            ("cpu1(%)", "3.00 3.50 4.00"),
            ("cpu1steal(%)", "0.00 0.00 0.00"),
        ]
    )
    text = re.sub(r"qtime start = .*", "qtime start = 1.000", run.out)
    text, files = re.sub(r"(File = .*\n)+", "FILES\n", text), re.findall("File = (.*)", run.out)
    text = re.sub(r"Starting cpu profiler\.\n", "", text, count=1)  # where it stands is chance
    assert sorted(files) == [".", "..", "cpuprofiler_x.txt"]
    path = "Results_corvane/x/cpuprofiler_x.txt"
    assert text == (
        "qtime start = 1.000\n--cpu option received. Setting the CPU Profiler flag.\n"
        "--cpu-sample-time option received.\n"
        "--total-time option received. Setting the profiling time now.\n"
        "--file option received\nfilename = x\n"
        "The parameters and flags have the following values : \n\tcpu sampling time =  5\n"
        "\n\tJsonfile = 0, \n\tCSVfile = 0, liveProfiling = 0, profilingTime = 60s, "
        "Reached the constructor for dataendpoint.\nFilename x\n"
        "Directory creation successful.\nCreating the log folder now.\n"
        "Directory creation successful.\nThe logFolder is Results_corvane/x\n"
        "Started all threads\n" + "CPU Load".rjust(20) + "\n\nwaitThread enter\nwaitThread exit\n"
        "Datapoint : Entered the destructor.\nProfiling done\n"
        "Directory to be parsed = Results_corvane/x\nFILES\n"
        f"Processing File : {path}\nCalling the CPU profiler parser\n"
        f"In generate Summary : Processing : {path}\n" + SUMMARY.format(rows=rows)
    )
    assert (run.status, run.err) == (0, "")


def test_nothing_enabled(profiler):
    run = profiler.run_and_signal("-f x", signal.SIGTERM, at="Started all threads")
    assert "Started all threads\n\n\nnotifyThreadsExit\nwaitThread enter\nwaitThread exit\n" in run.out
    assert run.out.endswith(SUMMARY.format(rows=""))
    assert run.status == 0


ALL = "-cgadroipun"
ENDLESS = """\
cpu slow=2 1
gpu 1
dsp2 1 1
dsp3 1 1
ddr 1
mem 1
proc 1 a|0 0 0 0
procmem 1 0 a|1 1 1 1
disk repeat=9999 sda 1 1
net lo 0 0 0 0 0 0 0
"""


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGABRT])
@pytest.mark.parametrize("at", ["Filename ", "Started all threads"])
def test_stop_signal_ends_a_run_without_a_limit(profiler, number, at):
    run = profiler.run_and_signal(f"{ALL} -s 600000 -t 0 -A 20 -N 20 -f x", number, ENDLESS, at=at)
    # Between these lines stand what the collectors say as they end.
    ends = "\n\n", "\nnotifyThreadsExit\n", "waitThread enter\n", "waitThread exit\n", "\nProfiling done\n"
    places = [run.out.index(text) for text in ends]
    assert places == sorted(places)
    assert run.out.endswith("+\n")
    assert run.result("diskioprofiler").count("\n") == 1  # no sample for a wait that was cut short
    assert (run.status, run.err) == (0, "")


def test_stop_after_the_timer_ends_a_run_without_a_limit(profiler):
    run = profiler.run_and_signal(
        "-o -i -s 50 -t 0 -t 1 -f x", signal.SIGINT, "mem 1\n" + "disk sda 1 1\n" * 999,
        at="waitThread enter",
    )  # fmt: skip
    assert "notifyThreadsExit" not in run.out
    assert (run.status, run.out[-2:]) == (0, "+\n")


def test_suffix_from_the_start_time(profiler):
    run = profiler.run("-c -A 5", "cpu 1\ncpu signal=2\n")
    suffix = re.search(r"Setting filename to current time\nFilename (.*)\n", run.out)[1]
    assert re.fullmatch(r"20\d\d-\d\d-\d\d-\d\d_\d\d_\d\d", suffix)
    assert run.result("cpuprofiler", suffix)


def test_second_run_with_a_suffix_overwrites(profiler):
    profiler.run("-c -A 1 -f x", "cpu 1\n" * 50 + "cpu signal=2\n")
    run = profiler.run("-c -A 1 -f x", "cpu 7\ncpu signal=2\n")
    exists = "Results_corvane exists.\n"
    assert exists + "Creating the log folder now.\n" + exists in run.out
    assert len(run.result("cpuprofiler").splitlines()) == 2


def test_unless_named_the_folder_is_called_after_the_local_time(profiler):
    run = profiler.run("-c -A 1", "cpu signal=1 1\n", env={"TZ": "XYZ-5:45"}, umask=0o022)
    [folder] = (run.folder / "Results_corvane").iterdir()
    start = datetime.strptime(folder.name + "+0545", "%Y-%m-%d-%H_%M_%S%z")
    assert timedelta() <= datetime.now(timezone.utc) - start < timedelta(minutes=5)
    assert [path.name for path in folder.iterdir()] == [f"cpuprofiler_{folder.name}.txt"]
    assert folder.stat().st_mode & 0o777 in (0o644, 0o744)  # root needs no right to enter


def test_two_runs_at_once_with_a_suffix(profiler):
    first = profiler.start("-o -r -s 600000 -t 0 -f x", "mem 2 1 1\nddr 1\n")
    folder = profiler.folder / "Results_corvane/x"
    wait_until(lambda: [path.read_text().count("\n") for path in folder.glob("*.txt")] == [2, 2])
    second = profiler.run("-o -r -s 1 -f x", "mem repeat=5 2 1 1\nmem signal=2 2 1 1\nddr 1\n")
    first.send_signal(signal.SIGINT)
    assert re.fullmatch("corvane: another run is writing into Results_corvane/x, .*\n", second.err)
    assert (second.status, second.out[-2:], profiler.finish(first).status) == (0, "+\n", 0)


@pytest.mark.parametrize(
    "suffix, error", [("a/b", 2), ("n" * 300, 36), ("a b", 0), ("\u00fc\u2603", 0), ("", 0)]
)
def test_suffixes(profiler, suffix, error):
    run = profiler.run("-c -A 1 -f", "cpu 1\ncpu signal=2\n", args_after=[suffix])
    reports = {0: "exists" if suffix == "" else "successful"}
    failed = f"Directory creation failed with error = {error}\n"
    assert reports.get(error, failed) in run.out.split("Creating the log folder now.\n")[1]
    assert ("The file could not be opened.\n\n" in run.out) == (error != 0)
    assert error or run.result("cpuprofiler", suffix)
    assert (run.status, run.err) == (0, "")


# Where its result file cannot be opened: what the source says, and whether the program goes on.
REFUSALS = {
    "-c": ("The file could not be opened.\n\n", False),
    "-g": ("Opening of the gpu_profiler file failed.\n", True),
    "-a": ("The dsp profiler file is not opened.\n", False),
    "-r": ("The file could not be opened.\n\n", False),
    "-o": ("The mem profiler file is not opened.\n", False),
    "-p": ("The file could not be opened.\n\n", False),
    "-i": ("The diskio profiler file is not opened.\n", False),
    "-u": ("The procmem file is not opened.\n", True),
    "-n": ("The file could not be opened.\n\n", False),
}


@pytest.mark.parametrize("source", REFUSALS)
def test_file_that_cannot_be_opened(profiler, source):
    (profiler.folder / "Results_corvane").touch()
    message, goes_on = REFUSALS[source]
    run = profiler.run(f"{source} -B 5 --live -t {1 if goes_on else 20} -f x", ENDLESS + "gpu 1 2\n")
    assert "Directory creation failed with error = 20\n" in run.out
    assert message in run.out
    assert ("\nProfiling done\n" in run.out) == goes_on
    assert ("2.00".rjust(20) + "1.00".rjust(20) in run.out) == (source == "-g")
    assert (run.status, run.err) == (0, "")


def test_300_starts_by_who_may_write_nothing_here(profiler, somebody_else):
    """Several sources fail in the same moment, and the process still ends once."""
    profiler.folder.chmod(0o555)
    for _ in range(300):
        run = profiler.run(f"{ALL} --live -t 20 -f x", scripted=False, **somebody_else)
        assert run.out.count("Directory creation failed with error = 13\n") == 1
        assert "is not opened" in run.out or "could not be opened" in run.out
        assert run.status == 0
        assert all(line.startswith("corvane: ") for line in run.err.splitlines())


def limit(resource_kind, size):
    return lambda: resource.setrlimit(resource_kind, (size, size))


@no_thread_sanitizer
def test_full_disk_keeps_the_complete_lines(profiler):
    run = profiler.run(
        "-c -A 1 --json --csv -f x", "cpu 1\n" * 50 + "cpu signal=2\n",
        preexec_fn=limit(resource.RLIMIT_FSIZE, 1000), env={"CORVANE_CALLS": "/dev/null"},
    )  # fmt: skip
    lines = run.result("cpuprofiler").splitlines(keepends=True)
    assert len(lines) == 1000 // 111 and {len(line) for line in lines} == {111}
    assert re.fullmatch("corvane: .*/cpuprofiler_x.txt: File too large; .*\ncorvane: "
                        ".*/ProfilerOutput.json .*: File too large; it is incomplete\n", run.err)  # fmt: skip
    assert len((run.folder / "Results_corvane/x/cpuprofiler_x.csv").read_text().splitlines()) == 9
    assert (run.status, run.out[-2:]) == (0, "+\n")


@no_thread_sanitizer
def test_full_disk_keeps_the_complete_lines_of_a_block(profiler):
    run = profiler.run(
        "-i -J 1 -f x", "disk repeat=9 a 1 1 b 2 2 c 3 3\ndisk signal=2\n",
        preexec_fn=limit(resource.RLIMIT_FSIZE, 1000), env={"CORVANE_CALLS": "/dev/null"},
    )  # fmt: skip
    text = run.result("diskioprofiler")
    devices = [line.split()[1] for line in text.splitlines()[1:] if line]
    assert (devices, text[-1]) == (["a", "b", "c"] * 2 + ["a"], "\n")


@pytest.mark.skipif(bool(SANITIZED or RUNNER), reason="needs stacks of its own")
def test_thread_that_cannot_be_started(profiler):
    run = profiler.run("-c -o --live -f x", "", preexec_fn=limit(resource.RLIMIT_STACK, 1 << 47))
    assert run.out.endswith(
        "/x\nStart threads failed!\nDatapoint : Entered the destructor.\n"
    )
    assert re.fullmatch("corvane: cpu: no thread could be started: .*\n", run.err)
    assert run.status == 0


@pytest.mark.parametrize("command", ["rm {0}/cpuprofiler_x.txt", "rm -r {0}"])
def test_results_removed_in_mid_run(profiler, command):
    process = profiler.start("-c -A 1 -o -G 1 -t 0 -f x", "cpu 1\n" * 99999 + "mem 2 1 1\n")
    while b"Started all threads" not in process.stdout.readline():
        pass
    folder = profiler.folder / "Results_corvane/x"
    wait_until(lambda: sum(path.stat().st_size > 0 for path in folder.glob("*.txt")) == 2)
    subprocess.run(command.format(folder).split(), check=True)
    process.send_signal(signal.SIGINT)
    run = profiler.finish(process)
    lost = re.findall("corvane: .*/(.*) was removed while the run went on\n", run.err)
    assert set(lost) == {"cpuprofiler_x.txt"} | ({"memprofiler_x.txt"} if "-r" in command else set())
    assert (run.status, run.out[-2:]) == (0, "+\n")


def test_signal_storm_lasts_into_the_conversions(profiler):
    folder = profiler.folder / "Results_corvane/x"
    folder.mkdir(parents=True)
    rows = 30_000 if RUNNER else 300_000
    (folder / "cpuprofiler_earlier.txt").write_text("t a b c\n" + "1 2 3 4\n" * rows)
    process = profiler.start("-c -A 1 --json --csv -t 0 -f x", "cpu 1\n" * 99999)
    while b"Started all threads" not in process.stdout.readline():
        pass
    trace = folder / "ProfilerOutput.json"
    numbers = itertools.cycle([2, 15, 6, 14])
    in_conversions = 0
    while process.poll() is None:
        process.send_signal(next(numbers))
        in_conversions += trace.exists()
    run = profiler.finish(process)
    assert in_conversions > 0
    assert trace.read_text().endswith("]}\n")
    assert (folder / "cpuprofiler_earlier.csv").read_text().count("\n") == rows + 1
    assert (run.status, run.out[-2:]) == (0, "+\n")


@pytest.mark.parametrize("seconds", [6, -6])
def test_wall_clock_set_in_mid_run(profiler, seconds):
    """The sources that the program paces itself go on with their period, at the times they had."""
    script = f"mem repeat=5 2 1 1\nmem step={seconds} 2 1 1\nmem repeat=5 2 1 1\nmem signal=2 2 1 1\n"
    run = profiler.run("-o -G 20 -t 5 -f x", script)
    times = [float(line.split()[0]) for line in run.result("memprofiler").splitlines()[1:]]
    assert len(times) == 12
    assert all(20e3 <= later - time < 2e6 for time, later in zip(times, times[1:]))


def test_day_of_samples_does_not_grow(profiler):
    """86,400 samples at full speed; the peak of memory is that of a short run."""
    peaks = []
    for samples in (864, 8640 if RUNNER else 86400):  # an emulator is slow
        script = f"cpu repeat={samples} 1 2 3\ncpu signal=2\n"
        process = profiler.start("-c -s 0 -t 0 -f x", script, env={"CORVANE_CALLS": "/dev/null"},
                                 stdout=subprocess.DEVNULL)  # fmt: skip
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = status
        peaks.append(usage.ru_maxrss)
        text = (profiler.folder / "Results_corvane/x/cpuprofiler_x.txt").read_text()
        assert (status, text.count("\n")) == (0, samples + 1)
    assert peaks[1] < peaks[0] + 1024  # KB
