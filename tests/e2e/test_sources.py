"""Every source from its option to the bytes of its result file."""

import re

import pytest


def fields(width, *texts):
    return "".join(text.rjust(width) for text in texts)


# source: (options, prefix, width of the time column, start message, script, header, lines)
# The lines are those of the file after the time column.
SOURCES = {
    "cpu": (
        "-c -A 5", "cpuprofiler", 15, "Starting cpu profiler.\n",
        "cpu 12.345 0 100 0.005 1 2\ncpu slow=20 -0.01 7 8 3 4 5.999\n",
        fields(15, "Time(usec)", "TotalCPU", "cpu0(%)", "cpu1(%)")
        + fields(20, "CPUStealTime(%)") + fields(15, "cpu0steal(%)", "cpu1steal(%)"),
        [fields(15, "12.35", "0.00", "100.00") + fields(20, "0.01") + fields(15, "1.00", "2.00"),
         fields(15, "-0.01", "7.00", "8.00") + fields(20, "3.00") + fields(15, "4.00", "6.00")],
    ),
    "no core": (
        "-c -A 5", "cpuprofiler", 15, "Starting cpu profiler.\n",
        "cpu.cores 0\ncpu 1 2\n",
        fields(15, "Time(usec)", "TotalCPU") + fields(20, "CPUStealTime(%)"),
        [fields(15, "1.00") + fields(20, "2.00")],
    ),
    "gpu": (
        "-g -B 9999", "gpuprofiler", 10,
        "GPUFreq(MHz)\nUtil(%)\nBusBusy\nrdbw\nwr\nStarting GPU profiling now.\n",
        "gpu signal=2 305.5 37 12.125 1e6 0\n",
        "Time(usec)   GPUFreq(MHz)   Util(%)   BusBusy   rdbw   wr",
        ["305.50".rjust(15) + "37.00".rjust(18) + "12.12".rjust(14) + "1000000.00".rjust(23)
         + "0.00".rjust(24)],
    ),
    "adsp": (
        "-a -C 5", "adspprofiler", 20, "Starting DSP profiling now.\n",
        "dsp2 768000000 12.5\ndsp2 0 0\n",
        "          Time(usec)  dsp_freq(Hz) dsp_load(%)",
        ["768000000".rjust(14) + "12.50".rjust(12), "0".rjust(14) + "0.00".rjust(12)],
    ),
    "cdsp, absent": (
        "-d -D 5", "cdspprofiler", 20, "Starting DSP profiling now.\n",
        "", "          Time(usec)  dsp_freq(Hz) dsp_load(%)", [],
    ),
    "mem": (
        "-o -G 9999", "memprofiler", 20, "",
        "mem signal=15 16000000 12000000 4000000 3000 1000 2000\n",
        fields(20, "Time(usec)", "Total_Mem(KB)", "Available_Mem(KB)", "Used_Mem(KB)",
               "Mem_Usage(%)", "Swap_Total(KB)", "Swap_Free(KB)", "Swap_Used(KB)",
               "Swap_Used(%)"),
        [fields(20, "16000000", "12000000", "4000000", "25.000", "3000", "1000", "2000",
                "66.667")],
    ),
    "mem without swap": (
        "-o -G 9999", "memprofiler", 20, "",
        "mem signal=15 3 1 2 0 0 0\n", None,
        [fields(20, "3", "1", "2", "66.667", "0", "0", "0", "0.000")],
    ),
    "proc": (
        "-p -F 5", "procprofiler", 20, "Starting the per process profiling\n",
        "proc 1 init|0.5 1.25 1.75 0.015 4711 my app,x|0 0 0 1.5\n"
        "proc 7 " + "n" * 45 + "|1e6 2 3 0\n",
        "          Time(usec)       PID" + "ProcessName".rjust(40)
        + fields(20, "UserTime", "SystemTime", "TotalTime", "CPU_Usage(%)"),
        ["1".rjust(10) + "init".rjust(40) + fields(20, "0.50", "1.25", "1.75", "1.50"),
         "4711".rjust(10) + "my_app_x".rjust(40) + fields(20, "0.00", "0.00", "0.00", "150.00"),
         "", "",
         "7".rjust(10) + "n" * 45 + fields(20, "1000000.00", "2.00", "3.00", "0.00"), "", ""],
    ),
    "disk": (
        "-i -J 10", "diskioprofiler", 20, "Starting disk profiling now.\n",
        "disk sda 2 0 dm-0 123 1000000\n",
        fields(20, "Time(usec)", "Device", "Bytes_read", "KB_read/s", "Bytes_write",
               "KB_write/s"),
        [fields(20, "sda", "1024", "100.00", "0", "0.00"),
         fields(20, "dm-0", "62976", "6150.00", "512000000", "50000000.00"), ""],
    ),
    "procmem": (
        "-u -U 5", "procmem-profiler", 20, "Starting Per Process Memory profiling now.\n",
        "procmem 1 0 init|4 3 2 1 22 1 my app,x|18446744073709551615 0 0 0\n",
        "          Time(usec)       PID      PPID"
        + fields(40, "ProcessName", "VSS(KB)", "PSS(KB)", "RSS(KB)", "USS(KB)"),
        ["1".rjust(10) + "0".rjust(10) + fields(40, "init", "4", "3", "2", "1"),
         "22".rjust(10) + "1".rjust(10)
         + fields(40, "my_app,x", "18446744073709551615", "0", "0", "0"), "", ""],
    ),
    "net": (
        "-n -N 5", "netprofiler", 20, "Strating the Network profiling\n",
        "net eth0 1 2 3 4 5 6 7 an-interface-of-22-chr 0 0 0 0 0 0 0\nnet\nnet signal=6 lo 0 0 9 0 0 0 0\n",
        fields(20, "Time(usec)", "Network_Interface", "Collisions", "Tx_bw(bytes)",
               "Rx_bw(bytes)", "Tx_packets", "Rx_packets", "Tx_packets(dropped)",
               "Rx_packets(dropped)"),
        [fields(20, "eth0", "1", "2", "3", "3", "5", "6", "7"),
         "an-interface-of-22-chr" + fields(20, *"0000000"), "", "",
         fields(20, "lo", "0", "0", "9", "9", "0", "0", "0"), ""],
    ),
}  # fmt: skip


@pytest.mark.parametrize("source", SOURCES)
def test_result_file(profiler, source):
    options, prefix, width, message, script, header, lines = SOURCES[source]
    if script and "signal" not in script:
        script += script.splitlines()[-1].split()[0] + " signal=2\n"  # one sample that is not taken
    run = profiler.run(f"{options} -t {60 if script else 1} -f x", script)
    text = run.result(prefix)
    assert text.endswith("\n")
    first, *rest = text[:-1].split("\n")
    assert header is None or first == header
    assert [line[width:] for line in rest] == lines
    times = [line[:width] for line in rest if line]
    assert all(re.fullmatch(r" *\d+\.\d\d", time) for time in times), times
    assert times == sorted(times, key=float)
    assert message in run.out
    assert (run.status, run.err) == (0, "")
    assert "\nProfiling done\n" in run.out


def test_ddr_times_have_six_significant_digits(profiler):
    script = "ddr 1 2 3 4 5 6\nddr slow=1100 -1 0 0 0 0 9223372036854775807\nddr signal=2 0 0 0 0 0 0\n"
    run = profiler.run("-r -I 1 -t 9 -f x", script)
    header, *lines = run.result("ddrprofiler").splitlines()
    assert header == fields(10, "Time(usec)") + fields(
        20, "llcc_rd(MB/s)", "llcc_wr(MB/s)", "llcc_total(MB/s)", "cabo_rd(MB/s)",
        "cabo_wr(MB/s)", "cabo_total(MB/s)")  # fmt: skip
    assert "Starting ddr profiler.\n" in run.out
    assert lines[0][10:] == fields(20, *"123456")
    assert lines[1][-20:] == " 9223372036854775807"
    assert re.fullmatch(r" *\d{1,6}", lines[0][:10])
    assert re.fullmatch(r"1\.\d{1,5}e\+06", lines[1].split()[0])


def test_monitors_are_called_as_promised(profiler):
    """Order and arguments of the calls; only the GPU's and the DDR's monitors are destroyed."""
    script = "cpu 1\nproc 1 a|0 0 0 0\nprocmem 1 0 a|0 0 0 0\ndisk sda 0 0\ndsp3 1 1\nddr signal=2 1\n"
    run = profiler.run("-cgdrpiun -s 50 -o -G 7 -t 0 --pid-list 1,2;9 -f x", script)
    calls = run.calls
    for order in (
        ["CPU_MON", "CPU_MON::corvane_setSamplingTime 50", "corvane_getPerCoreUsage",
         "corvane_getPerCoreStealTime"],
        ["DDR_MON", "DDR_MON::corvane_setSamplingTime 50", "~DDR_MON"],
        ["GPU_MON", "~GPU_MON"],
        ["DSP_MON 3"],
        ["MEMORY_MON"],
        ["PROCESS_MON 1 2", "PROCESS_MON::corvane_setSamplingTime 50",
         "corvane_getProcessStats 1 2"],
        ["DISK_MON", "DISK_MON::corvane_setSamplingTime 50"],
        ["PERPROCMEM_MON", "corvane_getPerProcessMemStats 1 2"],
        ["NET_MON", "NET_MON::corvane_setSamplingTime 50"],
    ):  # fmt: skip
        places = [calls.index(call) for call in order]
        assert places == sorted(places), calls
    assert {call for call in calls if call.startswith("~")} == {"~DDR_MON", "~GPU_MON"}
    assert run.status == 0


def test_qtimer_stamps_with_the_counter(profiler):
    run = profiler.run("-c -A 5 -q -t 1 -f x", "cpu 1\n" * 3)
    start = float(re.match(r"qtime start = (.*)", run.out)[1])
    times = [float(line.split()[0]) for line in run.result("cpuprofiler").splitlines()[1:]]
    assert start < times[0] < times[1] < times[2] < start + 60e6
