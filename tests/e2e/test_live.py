"""The live table: a row as soon as every source that is on has delivered."""

import re
import signal

import pytest


def cells(*texts):
    return "".join(text.rjust(20) for text in texts)


@pytest.mark.parametrize(
    "options, script, header, rows",
    [
        ("-c -A 5", "cpu 12.345\ncpu 0.004\ncpu 100\n", cells("CPU Load"),
         [cells("12.35"), cells("0.00"), cells("100.00")]),
        ("-c -A 5 -g -B 9999", "cpu 1\n" + "gpu 305.9 37.5 0 0 0\n",
         cells("CPU Load", "GPU Utilization", "GPU Freq(MHz)"),
         [cells("1.00", "37.50", "305.00")]),
        # The newest value of each: the memory waits for the third sample of the cores.
        ("-c -A 1 -o -G 9999", "cpu 1\ncpu repeat=9999 2\nmem await=3 4 3 1 0 0 0\n",
         cells("CPU Load", "Memory Usage(%)"), [cells("2.00", "25.00")]),
        ("-a -C 5 -d -D 5", "dsp2 7 1.5\ndsp3 9 2.5\n",
         cells("ADSP Load", "ADSP Frequency", "CDSP Load", "CDSP Frequency"),
         [cells("1.50", "7.00", "2.50", "9.00")]),
        ("-r -o -s 9999", "mem 4 3 1 0 0 0\nddr 1 2 3 4 5 4294967297\n",
         cells("DDR BW Total", "Memory Usage(%)"), [cells("1.00", "25.00")]),
        # With the network every value is text; its bytes are what its record has first.
        ("-o -G 1 -n -N 5", "mem 4 3 1 0 0 0\n"
         "net lo 9 9 9 9 9 9 9 eth0 1048576 2621440 0 0 0 0 0\nnet\n",
         cells("Memory Usage(%)", "Interface Name", "Tx(MB)", "Rx(MB)"),
         [cells("25.000000", "eth0", "1.000000", "2.500000")]),
        ("-p -F 5", "proc 1 a|0 0 0 0\n", "", []),
    ],
)  # fmt: skip
def test_rows(profiler, options, script, header, rows):
    """No source delivers more than its script has, but one that waits for the others' last."""
    run = profiler.run_and_signal(f"{options} --live -t 20 -f x", signal.SIGINT, script,
                                  at=(rows or ["Started all threads"])[-1])  # fmt: skip
    lines = run.out.split("\n")
    # Once by the main thread, once by the first hand-off, whichever comes first.
    assert [line for line in lines if header and line == header] == [header] * 2 * bool(header)
    width = len(header)
    shown = [line for line in lines if width and len(line) == width and line != header]
    assert [line for line in shown if line[-1].isdigit()] == rows
    if not header:
        assert [line for line in lines if line.startswith("  ") and "|" not in line] == []


def test_row_needs_a_new_sample_of_every_source(profiler):
    script = "cpu 7\nmem await=2 4 3 1\nmem repeat=5 4 2 2\nmem signal=2 4 1 3\n"
    run = profiler.run("-c -A 5 -o -G 1 --live -t 60 -f x", script)
    rows = [line for line in run.out.split("\n") if re.fullmatch(r"( +\d+\.\d\d){2}", line)]
    assert rows == [cells("7.00", "25.00")]


def test_header_stands_once_without_live(profiler):
    run = profiler.run("-c -A 5 -f x", "cpu 1\ncpu signal=2\n")
    assert run.out.split("\n").count(cells("CPU Load")) == 1


def test_gpu_frequency_has_all_that_its_type_holds(profiler):
    figures = {"1.9": "1.00", "1e19": "9999999980506447872.00", "2e19": "0.00", "-2": "0.00"}
    script = "".join(f"gpu {figure} 5\n" for figure in figures) + "gpu signal=2 0 0\n"
    run = profiler.run("-g -B 1 --live -t 60 -f x", script)
    rows = re.findall(r"^ +5\.00 *(\S+)$", run.out, re.MULTILINE)
    assert rows == list(figures.values())


def test_libraries_print_as_many_decimals_as_the_rows(profiler):
    run = profiler.run("-c -A 5 --live -t 60 -f x", "cpu print=1 1\ncpu print=1 1\ncpu signal=2\n")
    assert re.findall(r"^0\.12.*", run.out, re.MULTILINE) == ["0.125", "0.12"]
