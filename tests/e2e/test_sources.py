"""Every source from its option to the bytes of its result file: the cases of fixtures/sources."""

import re
import signal

import pytest
from conftest import FIXTURES, RUNNER


def masked_times(text):
    return re.sub(r"^ *\d+\.\d\d", lambda time: "TIME".rjust(len(time[0])), text, flags=re.MULTILINE)


CASES = sorted(path.name for path in (FIXTURES / "sources").iterdir())


def check_result_file(source, run_with, normal=str):
    """By the run that `run_with` makes of the case's options and script."""
    case = (FIXTURES / "sources" / source).read_text()
    pattern = re.compile(r"\$ (.*?)\n(.*)--- console\n(.*)--- (\S+)\n(.*)", re.DOTALL)
    options, script, console, prefix, expected = pattern.fullmatch(case).groups()
    run = run_with(options, script)
    text = run.result(prefix)
    assert normal(masked_times(text)) == normal(expected)
    times = re.findall(r"^ *(\d+\.\d\d)", text, re.MULTILINE)
    assert times == sorted(times, key=float)
    lines = iter(run.out.split("\n"))  # others' may stand between
    assert all(line in lines for line in console.rstrip("\n").split("\n"))
    assert "\nProfiling done\n" in run.out
    assert (run.status, run.err) == (0, "")


@pytest.mark.parametrize("source", CASES)
def test_result_file(profiler, source):
    check_result_file(source, lambda options, script: profiler.run(options + " -f x", script))


def test_ddr_times_have_six_significant_digits(profiler):
    script = "ddr 1 2 3 4 5 6\nddr slow=1100 -1 0 0 0 0 9223372036854775807\nddr signal=2 0 0 0 0 0 0\n"
    run = profiler.run("-r -I 1 -t 9 -f x", script)
    columns = "llcc_rd llcc_wr llcc_total cabo_rd cabo_wr cabo_total".split()
    header, *lines = run.result("ddrprofiler").splitlines()
    assert header == "Time(usec)" + "".join(f"{name}(MB/s)".rjust(20) for name in columns)
    assert "Starting ddr profiler.\n" in run.out
    assert lines[0][10:] == "".join(figure.rjust(20) for figure in "123456")
    assert lines[1][-20:] == " 9223372036854775807"
    assert re.fullmatch(r" *\d{1,6}", lines[0][:10])
    assert re.fullmatch(r"1\.\d{1,5}e\+06", lines[1].split()[0])


def test_more_disks_counted_than_there_are(profiler):
    """The record that is not there is not read; an exception that nobody catches ends the run."""
    run = profiler.run("-i -J 1 -t 60 -f x", "disk sda 1 1\ndisk.toomany 1\n")
    assert "std::out_of_range" in run.err
    assert run.status == -signal.SIGABRT


def test_qtimer_stamps_with_the_counter(profiler):
    run = profiler.run("-c -A 5 -q -t 60 -f x", "cpu 1\n" * 3 + "cpu signal=2\n")
    start = float(re.match(r"qtime start = (.*)", run.out)[1])
    times = [float(line.split()[0]) for line in run.result("cpuprofiler").splitlines()[1:]]
    assert run.err.count("runs at") == run.err.count("Hz, not at 19200000") == bool(RUNNER)
    assert start < times[0] < times[1] < times[2] < start + 60e6
