"""What the program says to its command line: every receipt, the usage text, the refusals."""

import re

import pytest
from conftest import FIXTURES

CONSOLE = FIXTURES / "console"


def after_start(run):
    first, rest = run.out.split("\n", 1)
    assert re.fullmatch(r"qtime start = \d+\.\d{3}", first)
    return rest


@pytest.mark.parametrize("options", ["", "-h", "--help", "-v", "-m", "-H 1", "-E", "--nope", "-s"])
def test_usage(profiler, options):
    run = profiler.run(options)
    usage = re.sub(r"(?<=^Usage :)\S+", "PROGRAM", after_start(run))
    assert usage == (CONSOLE / "usage").read_text()
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


# A refused combination of times ends the program at once, so it shows what was received.
@pytest.mark.parametrize(
    "options, text, status",
    re.findall(r"^\$ (.*)\n((?:.*\n)*?)= (\d+)$", (CONSOLE / "receipts").read_text(), re.MULTILINE),
)
def test_receipts(profiler, options, text, status):
    run = profiler.run(options)
    assert after_start(run) == text
    assert (run.status, run.err) == (int(status), "")
    assert not (run.folder / "Results_corvane").exists()


@pytest.mark.parametrize(
    "options, period, flags",
    [
        # 1500 / 1000 is 1, which is not above the total time.
        ("-t 1 -o -G 1500 -j --csv", 1500, (1, 1, 0, 1)),
        ("-t 0 -o -G 9999999 -l", 9999999, (0, 0, 1, 0)),
    ],
)
def test_accepted(profiler, options, period, flags):
    run = profiler.run(options, "mem signal=2 1 1 1 0 0 0\n")
    dump = (
        "The parameters and flags have the following values : \n\tmem sampling time =  %d\n"
        "\n\tJsonfile = %d, \n\tCSVfile = %d, liveProfiling = %d, profilingTime = %ds, "
        "Reached the constructor for dataendpoint.\n"
    )
    assert dump % (period, *flags) in run.out
    assert run.status == 0
