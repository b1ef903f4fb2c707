"""Pacing without waiting: every thread's time is moved by its own waits alone."""

import os

import pytest

pytestmark = pytest.mark.skipif(
    os.environ.get("CORVANE_SANITIZE") == "thread", reason="it has clocks and waits of its own"
)
OWN_TIME = {"CORVANE_OWN_TIME": "1"}
END = 10_000  # ms

# Of each source: options, period in ms, whether its first sample comes at once, a script, and the
# calls of its monitor: before the first sample, for each, at the end.
SOURCES = {
    "cpuprofiler": (
        "-c -A", 1500, False, "cpu repeat=99 1",
        ["CPU_MON", "CPU_MON::corvane_setSamplingTime 1500"],
        ["corvane_getPerCoreUsage", "corvane_getPerCoreStealTime"], [],
    ),
    "gpuprofiler": (
        "-g -B", 700, True, "gpu 1", ["GPU_MON", "corvane_getGPUHeaders"],
        ["corvane_getGPUSample", "corvane_getGPUFrequency", "corvane_gpuBusBusy",
         "corvane_getGPUUtilization", "corvane_getReadBandwidth", "corvane_getWriteBandwidth"],
        ["~GPU_MON"],
    ),
    "adspprofiler": ("-a -C", 2300, False, "dsp2 repeat=99 1", ["DSP_MON 2"], [], []),
    "cdspprofiler": (
        "-d -D", 999, False, "dsp3 repeat=99 1", ["DSP_MON 3"],
        [], [],
    ),
    "ddrprofiler": (
        "-r -I", 3100, True, "ddr 1", ["DDR_MON", "DDR_MON::corvane_setSamplingTime 3100"],
        ["corvane_getDDRStats"], ["~DDR_MON"],
    ),
    "memprofiler": ("-o -G", 1100, True, "mem 1", ["MEMORY_MON"], ["corvane_getMemStats"], []),
    "procprofiler": (
        "-p -F", 250, False, "proc repeat=99 1 a|1 1 1 1",
        ["PROCESS_MON 1 2", "PROCESS_MON::corvane_setSamplingTime 250"],
        ["corvane_getProcessStats 1 2"], [],
    ),
    "diskioprofiler": (
        "-i -J", 2001, False, "disk repeat=99 sda 1 1",
        ["DISK_MON", "DISK_MON::corvane_setSamplingTime 2001"],
        ["corvane_getIOStats", "corvane_getNumOfIOStats"], [],
    ),
    "procmem-profiler": (
        "-u -U", 4700, True, "procmem repeat=99 1 0 a|1 1 1 1", ["PERPROCMEM_MON"],
        ["corvane_getPerProcessMemStats 1 2"], [],
    ),
    "netprofiler": (
        "-n -N", 5000, False, "net lo 0 0 0 0 0 0 0",
        ["NET_MON", "NET_MON::corvane_setSamplingTime 5000"], ["corvane_getNetstats"], [],
    ),
}  # fmt: skip


def times(text):
    return [float(line.split()[0]) for line in text.splitlines()[1:] if line]


def test_each_source_keeps_its_period_and_its_calls(profiler):
    """The last sample is the first one that reaches the total time."""
    options = " ".join(f"{source[0]} {source[1]}" for source in SOURCES.values())
    script = "\n".join(source[3] for source in SOURCES.values()) + "\n"
    run = profiler.run(f"{options} -b 1 --pid-list 2;9 -t 10 -f x", script, env=OWN_TIME)
    for prefix, (_, period, at_once, _, first, each, last) in SOURCES.items():
        rows = -(-END // period) + at_once
        start = 0 if at_once else period
        expected = [1000.0 * (start + period * row) for row in range(rows)]
        assert times(run.result(prefix)) == expected, prefix
        calls = [call for call in run.calls if call in first + each + last]
        assert calls == first + each * rows + last, prefix
    samples = sum(-(-END // SOURCES[prefix][1]) for prefix in ("adspprofiler", "cdspprofiler"))
    for call in ("Sample", "Frequency", "Utilization"):
        assert run.calls.count("corvane_getDSP" + call) == samples
    # Only the GPU's and the DDR's monitors are destroyed.
    assert {call for call in run.calls if call.startswith("~")} == {"~DDR_MON", "~GPU_MON"}
    assert run.status == 0


@pytest.mark.parametrize("period", [-1, -2950])
def test_negative_period_samples_back_to_back(profiler, period):
    script = "mem repeat=20 2 1 1\nmem signal=2 2 1 1\n"
    run = profiler.run(f"-o -s {period} -t 5 -f x", script, env=OWN_TIME)
    assert times(run.result("memprofiler")) == [0] * 21
    assert run.status == 0


def test_times_have_32_bits(profiler):
    run = profiler.run("-c -A 1 -t 30 -f x", "cpu pass=17000001 1\n", env=OWN_TIME)
    assert times(run.result("cpuprofiler")) == [17001000]  # and not ...01


def test_only_short_periods_are_woken_exactly(profiler):
    run = profiler.run("-c -A 100 -o -G 99 -t 1 -f x", "cpu 1\nmem 1\n", env=OWN_TIME)
    with open("/proc/self/timerslack_ns") as usual:
        slack = {"timer slack MEMORY_MON 1", "timer slack CPU_MON " + usual.read().strip()}
    assert {call for call in run.calls if "slack" in call} == slack
