"""corvane record: a command, a time or a wait for Ctrl-C, from its options to the run folder."""

import fcntl
import json
import os
import pty
import re
import resource
import signal
import subprocess
import termios
import time

import pytest
from conftest import BUILD, CORVANE, PROGRAM, RUNNER, corvane, no_thread_sanitizer, wait_until
from made_runs import line, write_run
from test_sources import CASES, check_result_file

pytestmark = pytest.mark.skipif(bool(RUNNER), reason="an emulated process starts no other one")
ENDLESS = "cpu repeat=99999 slow=2 1 2 3\nmem 4 3 1\nproc repeat=99999 7 a|1 1 2 0.5\n"


class Recorder:
    """Starts `corvane record` beside the scripted library, as the profiler's runner does."""

    def __init__(self, profiler):
        self.profiler, self.folder = profiler, profiler.folder

    def start(self, options, command=(), script=ENDLESS, **popen):
        return self.profiler.start("record " + options, script, program=CORVANE,
                                   args_after=["--", *command] if command else [], **popen)  # fmt: skip

    def run(self, *args, **kwargs):
        return self.profiler.finish(self.start(*args, **kwargs))

    def await_start(self, suffix="x"):
        """When the run has been described, the command has been started."""
        wait_until(lambda: self.path(f"{suffix}.run.json").exists())

    def path(self, name):
        return self.folder / "Results_corvane" / name

    def metadata(self, suffix="x"):
        return json.loads(self.path(f"{suffix}.run.json").read_bytes())

    def samples(self, prefix="cpu", suffix="x"):
        path = self.path(f"{suffix}/{prefix}profiler_{suffix}.txt")
        return path.read_text().splitlines()[1:] if path.exists() else []


@pytest.fixture
def recorder(profiler):
    return Recorder(profiler)


def processes_of(group_or_text):
    """Command lines of live processes that hold the text."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/cmdline", "rb") as file:
                words = file.read()
            with open(f"/proc/{pid}/stat", "rb") as file:  # others' names may be of any bytes
                zombie = file.read().rsplit(b")", 1)[1].split()[0] == b"Z"
        except OSError:
            continue
        if group_or_text.encode() in words and not zombie and int(pid) != os.getpid():
            found.append(words)
    return found


@pytest.mark.parametrize(
    "command, status, ending",
    [
        (["true"], 0, (0, None)),
        (["sh", "-c", "exit 3"], 3, (3, None)),
        (["sh", "-c", "kill -SEGV $$"], 139, (None, signal.SIGSEGV)),
        (["sh", "-c", "cat; echo $0 >&2; ls /proc/self/fd", "[a b]"], 0, (0, None)),
    ],
)
def test_command_is_itself(recorder, command, status, ending):
    """Its status, its words and its descriptors; nothing of ours on its output."""
    plain = subprocess.run(command, input=b"in\n", capture_output=True)
    process = recorder.start("--only cpu --every 5ms --name x -q", command, stdin=subprocess.PIPE)
    out, err = process.communicate(b"in\n", timeout=60)
    assert (process.returncode, out, err) == (status, plain.stdout, plain.stderr)
    metadata = recorder.metadata()
    told = metadata["command"]
    assert (told["arguments"], told["status"], told["signal"]) == (command, *ending)
    assert told["start"]["boot_s"] <= told["end"]["boot_s"] <= metadata["end"]["boot_s"]
    assert recorder.path("x.log").read_text().endswith("+\n")


def test_files_and_console_are_those_of_a_run_by_hand(recorder):
    script = "cpu 1 2 3\nmem 4 3 1\ncpu 2 2 4\ncpu signal=2 1\n"
    recorder.run("--only cpu,mem --every 7ms --every cpu=5ms --name x --csv -q", script=script)
    by_hand = recorder.folder / "by_hand"
    by_hand.mkdir()
    options = recorder.metadata()["profiler"]["arguments"][1:]
    run = subprocess.run([*PROGRAM, *options], cwd=by_hand, capture_output=True, env=dict(
        os.environ, LD_LIBRARY_PATH=str(BUILD / "scripted"), CORVANE_SCRIPT=str(recorder.folder / "script")
    ))  # fmt: skip
    console = recorder.path("x.log").read_text()
    # The start's time and the order of what threads and the folder's listing say are chance.
    assert sorted(console.splitlines()[1:]) == sorted(run.stdout.decode().splitlines()[1:])
    folders = recorder.path("x"), by_hand / "Results_corvane/x"
    assert sorted(os.listdir(folders[0])) == sorted(os.listdir(folders[1]))
    values = [[line.split()[1:] for line in (folder / "cpuprofiler_x.txt").read_text().splitlines()]
              for folder in folders]  # fmt: skip
    assert values[0] == values[1] and len(values[0]) == 3


WORDS = {"-a": "adsp", "-c": "cpu", "-d": "cdsp", "-g": "gpu", "-i": "io", "-n": "net", "-o": "mem",
         "-p": "proc", "-u": "procmem"}  # fmt: skip


@pytest.mark.parametrize("source", set(CASES) - {"disk_without_period", "cpu_without_cores", "cdsp_absent"})
def test_result_file(recorder, source):
    def record(options, script):
        option, _, period, _, seconds = options.split()
        run = recorder.run(f"--only {WORDS[option]} --every {period}ms --for {seconds}s --name x -q", script=script)
        assert run.out == ""
        run.out = recorder.path("x.log").read_text()
        run.err = re.sub(r"corvane: \w+ is not here: .*\n", "", run.err)
        return run

    check_result_file(source, record, lambda text: re.sub("^ *TIME", "TIME", text, flags=re.MULTILINE))


def test_for_a_time(recorder):
    run = recorder.run("--only mem,proc --every 100ms --for 1s --name x --label a=b=c --label d= --report")
    assert (run.status, run.out) == (0, "")
    assert recorder.path("x.html").read_text().endswith("</html>\n")
    lines = run.err.splitlines()
    assert lines[0] == "corvane: recorded Results_corvane/x"
    assert lines[1].endswith(" samples of 2 sources")
    assert lines[2:] == ["corvane: no process used 0.1 s of processor time"]
    metadata = recorder.metadata()
    assert metadata["sources"] == [{"source": word, "period_ms": 100} for word in ("mem", "proc")]
    assert metadata["labels"] == {"a": "b=c", "d": ""}
    assert (metadata["schema"], metadata["limit_s"], metadata["command"]) == (1, 1.0, None)
    assert metadata["profiler"]["version"].startswith("v2.")
    assert metadata["profiler"]["library"].startswith("Scripted Library Version : v0, ")
    start, end = (metadata[moment]["boot_s"] for moment in ("start", "end"))
    assert 1 <= end - start
    stamps = [float(line.split()[0]) * 19.2 / metadata["counter_hz"] for line in recorder.samples("mem")]
    assert all(start < stamp < end for stamp in stamps)


def test_disk_that_will_be_full(recorder):
    """Hours to go by what rows take: 51 bytes and 30 a core, 2 and 151 a process."""
    run = recorder.run("--only cpu,proc --every 1ms --for 99999h --name x -q", ["true"])
    told = r"corvane: the disk will be full in about (\d+) hours: about 907 MB an hour with 1 process, (.*) GB free in \.\n"
    hours, free = map(float, re.fullmatch(told, run.err).groups())
    assert hours == pytest.approx(free * 1024 / 907, rel=0.01, abs=1)


def test_half_a_second_is_a_time_too(recorder):
    run = recorder.run("--only cpu --every 50ms --for 500ms --name x -q")
    assert (run.status, run.err) == (0, "")
    assert recorder.samples()


MISTAKES = [
    ("--only cpuu", "--only: there is no source 'cpuu'; did you mean cpu?"),
    ("--without ddr,prok", "--without: there is no source 'prok'; did you mean proc?"),
    ("--only cpu,,mem", "--only: a source is missing, beside a comma or altogether"),
    ("--without foo", "--without: there is no source 'foo'"),
    ("--without pcu", "--without: there is no source 'pcu'; did you mean cpu?"),
    ("--only gpu", "none of the sources is here; see corvane sources"),
    ("--only cpu --without cpu", "--without: no source is left to record"),
    ("--for abc", "--for: 'abc' is no time; write it as 90s, 10m, 2h or 500ms"),
    ("--for 90", "--for: '90' has no unit; did you mean 90s?"),
    ("--every 100", "--every: '100' has no unit; did you mean 100ms?"),
    ("--for 3d", "--for: 'd' is no unit of time; write it as 90s, 10m, 2h or 500ms"),
    ("--for 1e9h", "--for: '1e9h' is no time; write it as 90s, 10m, 2h or 500ms"),
    ("--for 0s", "--for: '0s' is less than a millisecond"),
    ("--for 100ms", "--for: shorter than the period of cpu, it would have no sample"),
    ("--every abc=1s", "--every: there is no source 'abc'"),
    ("--only mem --every cpu=1s", "--every: cpu is not recorded"),
    ("--every 1.5ms", "--every: '1.5ms' is no whole number of milliseconds"),
    ("--every 9999h", "--every: 9999h is too long"),
    ("--label nonsense", "--label: 'nonsense' is not KEY=VALUE"),
    ("--name a/b", "--name: 'a/b' cannot be the name of a folder"),
    ("--name " + 201 * "n", "--name: too long, 201 bytes of at most 200"),
    ("--nmae x", "unknown --nmae; did you mean --name?"),
    ("make", "unknown make; a command to record stands after --"),
    ("-o nowhere", "nowhere: No such file or directory"),
    ("--profiler nothing", "nothing: there is no such profiler"),
    ("--mark=", "--mark: 1 required TEXT missing"),
    ("--mark a --for 3s", "--for excludes --mark"),
    ("--mark a -- true", "--mark: records nothing, so that there is no command to stand after --"),
    ("--mark hello", "nothing is being recorded in ."),
    ("--", "there is no command after --"),
]


@pytest.mark.parametrize("options, line", MISTAKES)
def test_mistake_is_one_line_and_nothing_is_made(recorder, options, line):
    run = recorder.run(options)
    said = re.sub("corvane: gpu is not here: .*\n", "", run.err)
    assert (run.status, run.out, said) == (2, "", f"corvane: {line}\n")
    assert set(os.listdir(recorder.folder)) - {"calls"} == {"script"}


def test_what_stands_in_the_way(recorder, somebody_else):
    recorder.run("--only mem --every 9ms --name x -q", ["true"])
    run = recorder.run("--only mem --name x", ["true"])
    assert run.err.startswith("corvane: there is a run of the name x in ") and run.status == 2
    (recorder.path("by_hand")).mkdir()
    assert recorder.run("--only mem --name by_hand", ["true"]).status == 2
    for mode, name in (0o644, "noexec"), (0o755, "foreign"):
        (recorder.folder / name).write_bytes(b"\x7fELF of no machine\nexit 5\n")
        (recorder.folder / name).chmod(mode)
    for command, status, said in [("no-such-command", 127, "there is no such command"), ("/tmp", 126, "is a folder"),
                                  ("./noexec", 126, "may not be executed"), ("./foreign", 126, "Exec format error")]:  # fmt: skip
        run = recorder.run("--only mem --every 9ms -q", [command])
        assert (run.status, run.err) == (status, f"corvane: {command}: {said}\n")
    (recorder.folder / "foreign").write_text("exit 5\n")  # a script that does not name its shell
    assert recorder.run("--only mem --every 9ms -q", ["./foreign"]).status == 5
    for place, owner in ("dangling", os.geteuid()), ("foreign_link", 12345):
        (recorder.folder / place).mkdir()
        link = recorder.folder / place / "Results_corvane"
        link.symlink_to("nowhere" if place == "dangling" else "..")
        os.chown(link, owner, owner, follow_symlinks=False)
        run = recorder.run(f"--only mem -o {place}")
        assert (run.status, run.err.startswith(f"corvane: {place}/Results_corvane: a link ")) == (2, True)
    recorder.folder.chmod(0o555)
    recorder.path("").rename(recorder.folder / "away")
    closed = somebody_else | {"program": CORVANE}
    run = recorder.profiler.run("record --only mem", program=closed["program"], user=closed["user"],
                                group=closed["group"])  # fmt: skip
    assert (run.status, run.err) == (2, "corvane: .: cannot be written: Permission denied\n")


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_signal_ends_a_recording_with_its_conversions(recorder, number):
    process = recorder.start("--only cpu,mem --every 20ms --name x --csv -q")
    recorder.await_start()
    wait_until(lambda: len(recorder.samples("mem")) >= 3)
    process.send_signal(number)
    run = recorder.profiler.finish(process)
    assert (run.status, run.err) == (0, "")
    assert recorder.path("x/cpuprofiler_x.csv").exists()
    assert recorder.metadata()["end"]


COUNTS_SIGNALS = """\
import os, signal, sys, time
parent = os.getppid()
for number in (signal.SIGINT, signal.SIGTERM):
    signal.signal(number, lambda n, f: open('got', 'a').write('%d\\n' % n))
open('ready', 'w').close()
while os.getppid() == parent and not os.path.exists('enough'): time.sleep(0.005)
time.sleep(0.3)
sys.exit(7)
"""


@pytest.mark.parametrize("number, to_group, times", [
    (signal.SIGTERM, False, 1), (signal.SIGTERM, True, 5), (signal.SIGINT, True, 1),
])  # fmt: skip
def test_command_is_signalled_once(recorder, number, to_group, times):
    """Whether a signal goes to all of a terminal's processes or to the recording alone."""
    process = recorder.start("--only mem --every 9ms --name x -q", ["python3", "-c", COUNTS_SIGNALS],
                             start_new_session=True)  # fmt: skip
    got = recorder.folder / "got"
    wait_until((recorder.folder / "ready").exists)
    recorder.await_start()
    for count in range(1, times + 1):
        (os.killpg if to_group else os.kill)(process.pid, number)
        wait_until(lambda: got.exists() and len(got.read_text().splitlines()) >= count)
    if number == signal.SIGINT:
        rows = len(recorder.samples("mem"))
        wait_until(lambda: len(recorder.samples("mem")) >= rows + 20)
    (recorder.folder / "enough").touch()
    assert recorder.profiler.finish(process).status == 7
    assert got.read_text() == f"{number:d}\n" * times
    # Ctrl-C is the command's own affair as long as it goes on: so does the recording.
    metadata = recorder.metadata()
    outlived = metadata["end"]["boot_s"] >= metadata["command"]["end"]["boot_s"]
    assert outlived == (number == signal.SIGINT)


@pytest.mark.parametrize("how, status", [("Ctrl-C", 130), ("hangup", 129)])
def test_terminal(recorder, how, status):
    """The terminal is the command's; its end and Ctrl-C in it leave whole results."""
    marker = f"9{os.getpid()}{time.monotonic_ns() % 10**6}"
    master, slave = pty.openpty()

    def own_terminal():
        os.setsid()
        fcntl.ioctl(slave, termios.TIOCSCTTY, 0)

    command = ["sh", "-c", f"tty >&2; exec sleep {marker}"]
    process = recorder.start("--only cpu --every 9ms --name x --csv", command, preexec_fn=own_terminal,
                             stdin=slave, stdout=slave, stderr=slave)  # fmt: skip
    os.close(slave)
    recorder.await_start()
    wait_until(lambda: processes_of(f"sleep\0{marker}"))
    if how == "Ctrl-C":
        os.write(master, b"\x03")
    else:
        os.close(master)
    assert process.wait(60) == status
    assert recorder.path("x/cpuprofiler_x.csv").exists()
    assert recorder.metadata()["command"]["signal"] == status - 128
    assert not processes_of(marker)


def test_second_signal_leaves_out_the_conversions(recorder):
    folder = recorder.path("x")
    process = recorder.start("--only cpu --every 1ms --name x --csv --json -q")
    recorder.await_start()
    (folder / "cpuprofiler_earlier.txt").write_text("t a b c\n" + "1 2 3 4\n" * 3_000_000)
    process.send_signal(signal.SIGINT)
    wait_until(lambda: "Starting JSON conversion" in recorder.path("x.log").read_text())
    time.sleep(0.3)  # what comes sooner is the same request
    process.send_signal(signal.SIGINT)
    run = recorder.profiler.finish(process)
    assert (run.status, run.err) == (0, "corvane: the conversions are left out; corvane convert makes them\n")
    assert sorted(os.listdir(folder)) == ["cpuprofiler_earlier.txt", "cpuprofiler_x.txt"]


@no_thread_sanitizer
def test_full_disk_is_told(recorder):
    full = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (8000, 8000))  # noqa: E731
    run = recorder.run("--only cpu --every 1ms --for 1s --name x --csv -q", preexec_fn=full,
                       script="cpu repeat=99999 1\n", env={"CORVANE_CALLS": "/dev/null"})  # fmt: skip
    told = "not written to the end: cpuprofiler_x.txt: File too large"
    assert (run.status, run.err) == (0, f"corvane: {told}\n")
    assert len(recorder.metadata()["faults"]) == 1 and recorder.metadata()["end"]


@pytest.mark.parametrize("closed", [(0,), (1,), (2,), (0, 1, 2)])
def test_closed_descriptors_stay_closed(recorder, closed):
    """For the command; of the recording they never become files."""
    look = ["sh", "-c", "for fd in 0 1 2; do [ -e /proc/$$/fd/$fd ] || : > closed$fd; done"]
    run = recorder.run("--only cpu --every 9ms --name x", look, preexec_fn=lambda: [os.close(fd) for fd in closed])
    assert run.status == 0 and recorder.metadata()["end"]
    assert sorted(path.name for path in recorder.folder.glob("closed*")) == [f"closed{fd}" for fd in closed]


PROFILERS = {
    "dies at once": ("echo what is wrong; exit 4", "could not start the run", "what is wrong"),
    "is killed": ("mkdir -p Results_corvane/x; echo Started all threads; echo sampling; kill -KILL $$",
                  "was ended by a signal: Killed", "sampling"),
    "gives up": ("mkdir -p Results_corvane/x; echo Started all threads; echo no more",
                 "ended with status 0 before its time", "no more"),
    "does not stop": ("trap '' INT; mkdir -p Results_corvane/x; echo Started all threads; exec sleep 99",
                      "does not stop", "Started all threads"),
}  # fmt: skip


@pytest.mark.parametrize("how", PROFILERS)
def test_profiler_that_fails(recorder, how):
    script, reason, last_line = PROFILERS[how]
    program = recorder.folder / "fails"
    program.write_text("#!/bin/sh\n[ $1 != --version ] || exit\n" + script + "\n")
    program.chmod(0o755)
    recorder.path("earlier").mkdir(parents=True)
    run = recorder.run(f"--profiler {program} --only cpu --every 100ms --name x -q", ["sleep", "0.3"],
                       env={"LD_LIBRARY_PATH": str(BUILD / "scripted")})  # fmt: skip
    assert run.status == 3
    assert reason in run.err.splitlines()[0]
    assert run.err.splitlines()[-1] == "corvane:   " + last_line
    if how == "dies at once":
        assert sorted(os.listdir(recorder.path(""))) == ["earlier"]
    else:
        assert recorder.metadata()["faults"]


def test_hostile_words_give_valid_json(recorder):
    text = 'a"b\\c\n\x1b[31m\udcff\u202e,\u00fc'
    raw = os.fsencode(text)
    run = recorder.profiler.finish(recorder.profiler.start(
        "record --only cpu --every 9ms -q", ENDLESS, program=CORVANE,
        args_after=["--name", raw, "--label", b"k=" + raw, "--", "true", raw, "--", "[x,y]", ""],
    ))  # fmt: skip
    assert (run.status, run.err) == (0, "")
    (path,) = (recorder.folder / "Results_corvane").glob("*.run.json")
    shown = text.replace("\udcff", "\ufffd")
    metadata = json.loads(path.read_bytes())
    assert metadata["labels"] == {"k": shown}
    assert metadata["command"]["arguments"] == ["true", shown, "--", "[x,y]", ""]


def test_marks(recorder):
    process = recorder.start("--only mem --every 9ms --name x -q")
    recorder.await_start()
    for text in ("one", "--two", "\u00fc"):
        run = recorder.profiler.run("record", program=CORVANE, args_after=["--mark=" + text])
        assert run.status == 0 and run.err.startswith("corvane: marked x at ")
    process.send_signal(signal.SIGINT)
    recorder.profiler.finish(process)
    metadata = recorder.metadata()
    assert [mark["text"] for mark in metadata["marks"]] == ["one", "--two", "\u00fc"]
    times = [mark["at"]["boot_s"] for mark in metadata["marks"]]
    assert sorted(times) == times and metadata["start"]["boot_s"] < times[0]
    run = recorder.run("--mark late --name x")
    assert (run.status, run.err) == (2, "corvane: nothing is being recorded in . as x\n")


def test_nothing_is_left_behind(recorder):
    """200 recordings, some of them killed: no process stays, and every one has its results."""
    marker = str(recorder.folder)
    for first in range(0, 200, 20):
        started = [
            recorder.start(f"--only cpu,mem --every 5ms --name n{number} -q --label folder={marker}", ["true"])
            for number in range(first, first + 20)
        ]
        for process in started:
            assert recorder.profiler.finish(process).status == 0
    folder = recorder.folder / "Results_corvane"
    assert len(list(folder.glob("*.run.json"))) == len(list(folder.glob("*.log"))) == 200
    assert not list(folder.glob(".*"))
    name = f"victim{os.getpid()}"
    victim = recorder.start(f"--only cpu --every 5ms --name {name} -q --label folder={marker}")
    recorder.await_start(name)
    assert processes_of(f"--file\0{name}\0")
    victim.kill()
    wait_until(lambda: not processes_of(f"--file\0{name}\0"))
    assert recorder.path(f"{name}.log").read_text().endswith("+\n")
    assert not processes_of(marker)


def test_sources_are_those_of_the_library_in_place(recorder):
    run = recorder.profiler.run("sources", "cpu 1\nmem 5\ndsp3 1 1\nproc signal=4 1\ngpu slow=60000 1\n", program=CORVANE)
    state = {line.split()[0]: line.split()[1] for line in run.out.splitlines()[:10]}
    there = [word for word, is_there in state.items() if is_there == "yes"]
    assert there == ["cpu", "cdsp", "mem"] and run.status == 0
    assert "\nproc      no   the monitor library crashed: Illegal instruction\n" in run.out
    assert "\nnet       no   the monitor library has none\n" in run.out
    assert "\ngpu       no   the monitor library does not answer\n" in run.out
    assert "Scripted Library Version : v0, " + str(BUILD / "scripted/libcorvane.so") in run.out
    own = recorder.profiler.run("sources", program=CORVANE, scripted=False)
    assert "Corvane Library Version : " in own.out
    assert "\nmem       yes  memory and swap\n" in own.out


GAUGES = {
    "thermal": ("acpitz(C)", ["41.500", "nan", "43.500"]),
    "freq": ("cpu1min(MHz)", ["300.000", "nan", "600.000"]),
    "power": ("package-0/dram_mean(W)", ["1.500", "nan", "2.500"]),
    "pressure": ("io_full(%)", ["0.000", "nan", "100.000"]),
}


def test_gauges_read_alike_everywhere(tmp_path):
    """Stamps of a 24.576 MHz counter that runs for a month, and a value that was not to be had."""
    folder = write_run(tmp_path / "x", **{
        word: line("Time(usec)", " " + column) + "".join(
            line((2592000 + i) * 24.576e6 / 19.2, value) for i, value in enumerate(values, 1))
        for word, (column, values) in GAUGES.items()
    })  # fmt: skip
    start = {"wall": "2026-11-22T22:41:07.250000000+01:00", "boot_s": 2592000.0, "counter": 2592000 * 24576000}
    (tmp_path / "x.run.json").write_text(json.dumps(
        {"schema": 1, "start": start, "counter_hz": 24576000, "sources": []}))  # fmt: skip
    report = json.loads(corvane("show", "--json", folder).stdout)
    assert report["run"]["seconds"] == pytest.approx(2, abs=1e-6)
    assert report["run"]["start"].startswith("2026-11-22T22:41:07")
    shown = {metric["source"]: metric for metric in report["metrics"]}
    assert corvane("trace", folder, "--all", "-o", tmp_path / "t.json").returncode == 0
    events = json.loads((tmp_path / "t.json").read_text())["traceEvents"]
    assert corvane("report", folder, "-o", tmp_path / "t.html").returncode == 0
    page = json.loads(re.search(r'id="head">(.*?)</script>', (tmp_path / "t.html").read_text(), re.S)[1])
    pages = {metric["source"]: metric for metric in page["runs"][0]["metrics"]}
    for word, (column, values) in GAUGES.items():
        name, unit = column[:-1].split("(")
        metric, first, last = shown[word], float(values[0]), float(values[2])
        assert (metric["metric"], metric["unit"], metric["count"]) == (name, unit, 2)
        assert (metric["min"], metric["max"], metric["mean"]) == (first, last, (first + last) / 2)
        assert metric["entity"] == ("cpu1" if word == "freq" else "")
        assert {key: pages[word][key] for key in metric} == metric
        drawn = [[*event["args"].values()] for event in events if event["name"] == f"{name} ({unit})"]
        assert drawn == [[first], [last]]
    assert corvane("convert", folder, "--json", "--csv").returncode == 0
    trace = json.loads((folder / "ProfilerOutput.json").read_text())["traceEvents"]
    drawn = [event["args"] for event in trace if event["name"] == "acpitz(C)"]
    assert drawn == [{"Temp(deg C)": value} for value in GAUGES["thermal"][1]]
    assert (folder / "powerprofiler_x.csv").read_text().splitlines()[-1].endswith(",2.50")
