"""What the program says to its command line: every receipt, the usage text, the refusals."""

import re

import pytest

USAGE = """\
Usage :{program} [options]  *note: all sampling time is 1s by default if not set explicitly
--cpu [--cpu-sample-time <sample time>] -> cpu profiling with cpu sample time(ms)
--gpu [--gpu-sample-time <sample time>] -> gpu profiling with gpu sample time(ms)
--adsp [--adsp-sample-time <sample time>] -> adsp profiling with adsp sample time(ms)
--cdsp [--cdsp-sample-time <sample time>] -> cdsp profiling with cdsp sample time(ms)
--ddr [--ddr-sample-time <sample time>] -> ddr profiling with ddr sample time(ms)
--proc [--proc-sample-time <sample time>] -> per process profiling with per process sample time(ms)
--mem [--mem-sample-time <sample time>] -> memory profiling with memory sample time(ms)
--io [--io-sample-time <sample time>] -> diskio profiling with io sample time(ms)
--procmem -> enable per process memory profiling
--pid-list -> profile particular pids for per process metrics
--net [--net-sample-time <sample time>] -> net profiling with net sample time(ms)
-t/--total-time <time in seconds>  -> total profiling time(s)
-s/--sample-time <time in ms>
-f/--file <file name> -> file name suffix
-l/--live             -> for live profiling
-j/--json             -> to create a JSON file
-j/--csv             -> to create a CSV file
-q/--qtimer           -> enable qtimer
-v/--version             -> prints the version of lib and app
-h/--help               -> prints this help menu
"""


def after_start(run):
    first, rest = run.out.split("\n", 1)
    assert re.fullmatch(r"qtime start = \d+\.\d{3}", first)
    return rest


@pytest.mark.parametrize("options", ["", "-h", "--help", "-v", "-m", "-H 1", "-E", "--nope", "-s"])
def test_usage(profiler, options):
    run = profiler.run(options)
    program = run.out.split("Usage :")[1].split(" [options]")[0]
    assert after_start(run) == USAGE.format(program=program)
    assert (run.status, run.err) == (0, "")


def test_version(profiler):
    run = profiler.run("--version")
    assert re.fullmatch(
        "\nScripted Library Version : v0\n\nCorvane Application Version Details : \n"
        "Corvane Application Version : v2.3.3\nBuild Date : [A-Z][a-z]{2} [ 1-3][0-9] 20[0-9]{2}\n"
        "Build Time : [0-9]{2}:[0-9]{2}:[0-9]{2}\nRelease Type : EXT\n",
        after_start(run),
    )
    assert run.status == 0
    own = profiler.run("--version", scripted=False)
    assert "\nCorvane Library Version : v1.0.0\n\n" in own.out


DUMP = "The parameters and flags have the following values : \n"
REFUSED = "Invalid input: profilingTime is smaller than samplingTime!\n"


def flags(json=0, csv=0, live=0, time=1):
    return (
        f"\n\tJsonfile = {json}, \n\tCSVfile = {csv}, liveProfiling = {live}, "
        f"profilingTime = {time}s, "
    )


TOTAL = "--total-time option received. Setting the profiling time now.\n"
CPU = "--cpu option received. Setting the CPU Profiler flag.\n"
# A refused combination of times ends the program at once, so it shows what was received.
REFUSE = " -t 1 -c --cpu-sample-time 2000"
RECEIVED_REFUSE = (
    TOTAL + CPU + "--cpu-sample-time option received.\n" + DUMP + "\tcpu sampling time =  2000\n"
) + REFUSED
INVALID = "{} is invalid for sample-time, back to default sample-time\n"


@pytest.mark.parametrize(
    "options, text, status",
    [
        ("-t -5 --cpu", TOTAL + "profilingTime invalid value: -5\n", 255),
        ("--json -j --csv --live -l --qtimer -q" + REFUSE,
         "--json option received\n" * 2 + "--csv option received\n"
         + "--live option received.\n" * 2 + "--qtimer option received\n" * 2 + RECEIVED_REFUSE, 0),
        ("--gpu -g --adsp -a --ddr -r" + REFUSE,
         "--gpu option received. Setting the GPU Profiler flag.\n" * 2
         + "--adsp option received. Setting the ADSP Profiler flag.\n" * 2
         + "--ddr option is received. Setting the ddr flag\n" * 2 + RECEIVED_REFUSE, 0),
        ("--cdsp -d --proc -p --mem -o --procmem -u --io -i --net -n" + REFUSE,
         "--cdsp optiong received. Setting the CDSP Profiler flag.\n" * 2
         + "--proc option received\n" * 2 + "--mem option received\n" * 2
         + "--procmem option received\n" * 2 + "--io option received\n" * 2
         + "--net option received. Setting the NET Profiler flag.\n" * 2 + RECEIVED_REFUSE, 0),
        ("-A 1 -B 1 -C 1 -D 1 -I 1 -J 1 -F 1 -G 1 -U 1 -N 1" + REFUSE,
         "--cpu-sample-time option received.\n--gpu-sample-time option received.\n"
         "--adsp-sample-time option received.\n--cdsp-sample-time optiong received.\n"
         "--ddr-sample-time option received.\n--io-sample-time option received\n"
         "--proc-sample-time option received\n--mem-sample-time option received\n"
         "--procmem-sample-time option received\n--net-sample-time option received\n"
         + RECEIVED_REFUSE, 0),
        ("-e 12x -f a:b.c -s 500 -b 1,2 -b 7;8" + REFUSE,
         "--ddr-profile-duration option received.\nObtained ddr-profile-duration = 12\n"
         "--file option received\nfilename = a:b.c\n"
         "--sample-time option received\nSampling Time = 500 ms\n"
         + "--pid-list option has been selected\n" * 2 + RECEIVED_REFUSE, 0),
        # The order of options matters: a time that was refused takes the common one of its moment.
        ("-A 0 -s 3000 -c -i -t 2",
         "--cpu-sample-time option received.\n" + INVALID.format("0")
         + "--sample-time option received\nSampling Time = 3000 ms\n" + CPU
         + "--io option received\n" + TOTAL + DUMP
         + "\tcpu sampling time =  1000\n\tdisk sampling time =  3000\n" + REFUSED, 0),
        ("-s 7000 -U -3 -u -N x -n -t 6",
         "--sample-time option received\nSampling Time = 7000 ms\n"
         "--procmem-sample-time option received\n" + INVALID.format("-3")
         + "--procmem option received\n--net-sample-time option received\n" + INVALID.format("x")
         + "--net option received. Setting the NET Profiler flag.\n" + TOTAL + DUMP
         + "\tprocmem sampling time =  7000\n" + REFUSED, 0),
    ],
)  # fmt: skip
def test_receipts(profiler, options, text, status):
    run = profiler.run(options)
    assert after_start(run) == text
    assert (run.status, run.err) == (status, "")
    assert not (run.folder / "Results_corvane").exists()


@pytest.mark.parametrize(
    "options, dump",
    [
        # 1500 / 1000 is 1, which is not above the total time.
        ("-t 1 -o -G 1500 -j --csv", "\tmem sampling time =  1500\n" + flags(json=1, csv=1)),
        ("-t 0 -o -G 9999999 -l", "\tmem sampling time =  9999999\n" + flags(live=1, time=0)),
    ],
)
def test_accepted(profiler, options, dump):
    run = profiler.run(options, "mem signal=2 1 1 1 0 0 0\n")
    assert DUMP + dump + "Reached the constructor for dataendpoint.\n" in run.out
    assert run.status == 0
