"""What corvane says of runs whose contents are known."""

import gzip
import json
import os
import pty
import random
import signal
import subprocess
import time

import made_runs
import pytest
from conftest import CORVANE, FIXTURES, corvane, read_all
from made_runs import DISK, MEM, NET, PROC, line, text_of, write_run

def shown(*arguments):
    done = corvane("show", "--json", *arguments)
    assert done.returncode == 0, done.stderr
    return json.loads(done.stdout)


def traced(folder, *arguments):
    done = corvane("trace", folder, "-o", folder.parent / "trace.json", *arguments)
    assert done.returncode == 0, done.stderr
    tracks = {}
    events = json.loads((folder.parent / "trace.json").read_bytes())["traceEvents"]
    for event in events:
        if event["ph"] == "C":
            assert all(type(value) in (int, float) for value in event["args"].values())
            tracks.setdefault(event["name"], []).append((event["ts"], *event["args"].values()))
    return tracks, events


@pytest.mark.parametrize("seed", [1, 2])
def test_processes_are_those_that_lived(tmp_path, seed):
    proc, procmem, lives = made_runs.processes(seed)
    report = shown(write_run(tmp_path / "r", proc=proc, procmem_=procmem))
    assert report["processes"] == [pytest.approx(figures) for figures in made_runs.kept(lives)]
    names = {name["name"]: name for name in report["names"]}
    for name, true in made_runs.by_name(lives).items():
        got = names.pop(name)
        assert got["processes"] == true["processes"]
        assert (got["first"], got["last"]) == pytest.approx((min(true["times"]), max(true["times"])))
        assert got["cpu_seconds"] == pytest.approx(true["cpu_seconds"])
        assert got["cpu_peak"] == pytest.approx(max(true["cpu"].values()))
        assert got["pss_peak_kb"] == max(true["pss"].values())
        assert got["pss_last_kb"] == true["pss"][max(true["pss"])]
    assert not names


# What the two sources list at which second: (total, name) or KB of PID 5, None where it is missing.
@pytest.mark.parametrize("proc, procmem, lives", [
    ({t: (t, "a") if t not in (5, 6) else None for t in range(1, 9)}, {2: 1, 6: None}, [(1, 4), (7, 8)]),
    ({t: (t, "a") for t in range(1, 9)}, {1: 7, 2: 7, 3: None, 4: 7, 5: 7}, [(1, 8)]),
    ({1: (0.01, "sh"), 2: (0.02, "sh"), 3: (0.02, "make"), 4: (0.5, "make")}, {}, [(1, 4)]),
    ({4: (1, "a"), 8: (3, "a")}, {t: 9 if t != 6 else None for t in range(1, 9)}, [(1, 5), (7, 8)]),
    ({1: (5, "a"), 2: (6, "a"), 3: (0.5, "a")}, {}, [(1, 2), (3, 3)]),
    ({}, {1: 3, 2: None, 3: 3}, [(1, 1), (3, 3)]),
    ({1: (1.01, "a"), 2: (1, "a"), 3: (1.01, "a")}, {}, [(1, 3)]),
], ids=["back later", "no memory for a moment", "another program", "seen by memory alone", "at once", "memory only",
        "rounded"])
def test_which_rows_are_one_process(tmp_path, proc, procmem, lives):
    other = (1, "init", 0.0, 0.0, 0.0, 0.0)
    cpu = [(t * 1e6, [other] + ([(5, row[1], 0.0, 0.0, row[0] + 0.0, 0.0)] if row else []))
           for t, row in proc.items()]
    memory = [(t * 1e6, [(1, 0, "init", 1, 1, 1, 1)] + ([(5, 1, "a", kb, kb, kb, kb)] if kb else []))
              for t, kb in procmem.items()]
    folder = write_run(tmp_path / "r", proc=text_of(PROC, cpu), procmem_=text_of(made_runs.PROCMEM, memory))
    found = [p for p in shown(folder)["processes"] if p["pid"] == 5]
    assert sorted((p["first"], p["last"]) for p in found) == lives


NAMED = {1: "sh", 2: "sh", 3: "work", 4: "work", 5: "sh", 6: "end"}


@pytest.mark.parametrize("meant, pids, names", [
    ([], [("end", 1, 6, 5, 1)], {"sh": (1, 5, 2, 1), "work": (3, 4, 2, 3), "end": (6, 6, 1, None)}),
    (["work"], [("work", 3, 4, 2, 3)], {"work": (3, 4, 2, 3)}),
    (["s?", "work"], [("sh", 1, 5, 4, 1)], {"sh": (1, 5, 2, 1), "work": (3, 4, 2, 3)}),
    ([5, "nobody"], [("end", 1, 6, 5, 1)], {"sh": (1, 5, 2, 1), "work": (3, 4, 2, 3), "end": (6, 6, 1, None)}),
], ids=["all", "one name", "two names", "PID"])
def test_each_sample_counts_under_its_name(tmp_path, meant, pids, names):
    """A process that uses a core and is renamed: seen last without memory, as a zombie is."""
    cpu = [(t * 1e6, [(5, name, 0.0, 0.0, float(t), 100.0)]) for t, name in NAMED.items()]
    memory = [(t * 1e6, [(5, 1, NAMED[t], t, t, t, t)]) for t in (1, 2, 3, 4)]
    folder = write_run(tmp_path / "r", proc=text_of(PROC, cpu), procmem_=text_of(made_runs.PROCMEM, memory))
    done = corvane("show", "--json", folder, *(word for name in meant for word in ("--process", name)))
    assert done.stderr == ("corvane: no process of r matches nobody\n" if "nobody" in meant else "")
    report = json.loads(done.stdout)
    figures = lambda p: (p["first"], p["last"], p["cpu_seconds"], p["pss_first_kb"])
    assert [(p["name"], *figures(p)) for p in report["processes"]] == pids
    assert {p["name"]: figures(p) for p in report["names"]} == names
    assert all((p["processes"], p["cpu_mean"]) == (1, 100) for p in report["names"])


def test_a_part_of_the_run_and_some_processes(tmp_path):
    proc, procmem, lives = made_runs.processes(3, seconds=60)
    folder = write_run(tmp_path / "r", proc=proc, procmem_=procmem)
    life = next(life for life in lives if len(life.cpu) > 40 and life.cpu[0][0] == 1)
    report = shown("--from", 10, "--to", 20.5, "--process", life.pid, "--process", "nob?dy*", folder)
    window = [sample for sample in life.cpu if 10 <= sample[0] <= 20.5]
    (process,) = [p for p in report["processes"] if p["first"] == 10]
    assert process["cpu_seconds"] == pytest.approx(window[-1][1] - window[0][1])
    assert (process["name"], process["last"]) == (life.name, pytest.approx(20.000512))
    assert {p["pid"] for p in report["processes"]} == {life.pid}
    assert [s["samples"] for s in report["run"]["sources"]] == [11, 11]
    names = {p["name"] for p in shown(folder, "--process", "worker_1?")["processes"]}
    assert names == {life.name for life in lives if life.name.startswith("worker_1") and len(life.name) == 9}


def test_metrics_against_all_samples(tmp_path):
    chance = random.Random(5)
    times = [100000 * i + chance.randrange(9) for i in range(1, 3000) if i % 500]
    cpu = [tuple(chance.randrange(10001) / 100 for _ in range(6)) for _ in times]
    cpu_header = ("Time(usec)", "TotalCPU", "cpu0(%)", "cpu1(%)", "CPUStealTime(%)", "cpu0steal(%)", "cpu1steal(%)")
    memory = [(16000000, *(chance.randrange(1 << 24) for _ in range(2)), "12.345", 0, 0, 0, "nan") for _ in times]
    disks = [[(name, chance.randrange(1 << 28), 0.0, chance.randrange(1 << 28), 0.0) for name in ("sda", "sdb")]
             for _ in times]
    nets = [[("eth0", 1, *(chance.randrange(1 << 24) for _ in range(6)))] for _ in times]
    folder = write_run(
        tmp_path / "r", cpu=line(*cpu_header) + "".join(line(float(t), *row) for t, row in zip(times, cpu)),
        mem=line(*MEM) + "".join(line(float(t), *row) for t, row in zip(times, memory)),
        diskio=text_of(DISK, zip(times, disks)), net=text_of(NET, zip(times, nets)))
    period = [(b - a) * 1e-6 for a, b in zip([2 * times[0] - times[1], *times], times)]
    rates = lambda rows, column: [row[column] / p / 2**20 for row, p in zip(rows, period)]
    expected = {
        ("cpu", "", "TotalCPU", "%"): [row[0] for row in cpu],
        ("cpu", "cpu1", "cpu1steal", "%"): [row[5] for row in cpu],
        ("mem", "", "Used_Mem", "KB"): [float(row[2]) for row in memory],
        ("io", "sdb", "write", "MB/s"): rates([rows[1] for rows in disks], 3),
        ("net", "eth0", "sent", "MB/s"): rates([rows[0] for rows in nets], 2),
        ("net", "eth0", "received", "MB/s"): rates([rows[0] for rows in nets], 3),
        ("net", "eth0", "Rx_packets", ""): [float(rows[0][5]) for rows in nets],
    }
    report = shown(folder)
    metrics = {(m["source"], m["entity"], m["metric"], m["unit"]): m for m in report["metrics"]}
    for key, values in expected.items():
        true = made_runs.figures_of(values)
        for figure in ("p50", "p95", "p99"):
            assert metrics[key][figure] == pytest.approx(true.pop(figure), rel=0.004)
        exact = "MB/s" not in key
        assert metrics[key]["sum"] == (pytest.approx(sum(values)) if key[2] == "Rx_packets" else None)
        for figure, value in true.items():
            assert metrics[key][figure] == (value if exact else pytest.approx(value, rel=1e-9)), (key, figure)
    # A swap share that is no number has no samples; the packets sent are not known.
    assert not {key[2] for key in metrics} & {"Swap_Used" + "%", "Tx_packets", "KB_read/s"}
    assert ("mem", "", "Swap_Used", "%") not in metrics
    assert [source["source"] for source in report["run"]["sources"]] == ["cpu", "mem", "io", "net"]
    cpu_source = report["run"]["sources"][0]
    assert (cpu_source["samples"], cpu_source["expected"]) == (len(times), len(times) + 5)
    assert cpu_source["period_ms"] == pytest.approx(100, abs=0.1)


def test_stamps_of_the_counter_stand_on_one_axis(tmp_path):
    up = 30 * 86400  # seconds, before the run
    stamp = lambda seconds: (up + seconds) * 1e6 + 0.05
    cpu = line("Time(usec)", "TotalCPU") + "".join(line(stamp(i), 50.0) for i in range(1, 9))
    mem = line(*MEM) + "".join(line(stamp(i / 2 + 0.25) + 0.3, 4, 3, 1, 25.0, 0, 0, 0, 0.0) for i in range(2, 9))
    folder = write_run(tmp_path / "r", cpu=cpu, mem=mem)
    assert shown(folder)["run"]["seconds"] == pytest.approx(7)
    tracks, _ = traced(folder)
    assert [ts for ts, _ in tracks["TotalCPU (%)"]] == pytest.approx([i * 1e6 for i in range(8)], abs=0.1)
    for state in ("Used_Mem (KB)", "Mem_Usage (%)"):
        assert tracks[state][0][0] == pytest.approx(1250000.3, abs=0.01)  # when it was read
    # The metadata know better where the run began, how fast the counter is, and what was asked for.
    start = {"wall": "2026-01-02T03:04:05.000000000+00:00", "boot_s": up - 1.0, "counter": (up - 1) * 19200000}
    (tmp_path / "r.run.json").write_text(json.dumps({
        "schema": 1, "counter_hz": 38400000, "start": start, "sources": [{"source": "mem", "period_ms": 125}]}))
    run = shown(f"{folder}/")["run"]
    assert (run["start"], run["sources"][1]["period_ms"]) == (start["wall"], 125)
    tracks, _ = traced(folder)
    assert [ts for ts, _ in tracks["TotalCPU (%)"]] == pytest.approx([(i + 1) * 5e5 for i in range(8)], abs=0.1)


def test_times_of_six_digits_do_not_tell_the_start(tmp_path):
    """They may be the same for two samples."""
    stamp = lambda seconds: 12345674000.05 + seconds * 1e6
    cpu = line("Time(usec)", "TotalCPU") + "".join(line(stamp(i), 50.0) for i in range(1, 4))
    rows = "".join(line(f"{stamp(i / 20):.6g}", pid, "a", 0.0, 0.0, 0.0, 1.0) + "\n" * (pid == 2)
                   for i in range(20, 60) for pid in (1, 2))
    folder = write_run(tmp_path / "r", cpu=cpu, proc=line(*PROC) + rows)
    assert [source["samples"] for source in shown(folder)["run"]["sources"]] == [3, 40]
    assert traced(folder)[0]["TotalCPU (%)"][0][0] == pytest.approx(0, abs=0.1)


@pytest.mark.parametrize("content, status, told", [
    ("", 2, "is empty"),
    ("no header\n1 2\n", 2, "does not begin with a header line"),
    ("Time(usec) TotalCPU\n", 2, "has no samples"),
    ("Time(usec) TotalCPU\n1000000.00 50.00\n2000000.00 7", 0, "ends in the middle of a line"),
    ("Time(usec) TotalCPU\n1000000.00 50.00\n1.00 2 3\nx 5\n500000.00 1\n", 0, "3 lines that are no sample"),
])
def test_files_that_are_not_whole(tmp_path, content, status, told):
    done = corvane("show", write_run(tmp_path / "r", cpu=content))
    assert (done.returncode, told in done.stderr) == (status, True), done.stderr
    assert corvane("report", "r", cwd=tmp_path).returncode == status
    assert sorted(os.listdir(tmp_path)) == (["r"] if status else ["r", "r.html"])
    if status == 0:
        assert "TotalCPU %                  50.00    50.00" in done.stdout
        tracks, _ = traced(tmp_path / "r")
        assert len(tracks["TotalCPU (%)"]) == 1


@pytest.mark.parametrize("arguments, told", [
    ([], "is required"), (["shwo"], "did you mean show?"), (["show", "--jsn"], "did you mean --json?"),
    (["frobnicate"], "unknown frobnicate\n"), (["show"], "no run below Results_corvane"), (["show", "nowhere"], "is no folder"),
    (["trace", "."], "--output is required"), (["trace", ".", "-o", "x"], "holds no result files"),
    (["convert", "."], "say what to make"), (["show", "--from", "x"], "--from"),
    (["show", "--from", "nan"], "'nan' is no number of seconds"), (["report", "--to", "inf"], "'inf' is no number"),
    (["trace", "--max-mb", "0"], "'0' is no size above 0"), (["trace", "--max-mb", "-1"], "'-1' is no size"),
])
def test_wrong_use(tmp_path, arguments, told):
    done = corvane(*arguments, cwd=tmp_path)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.startswith("corvane: ") and told in done.stderr and done.stderr.count("\n") == 1


def test_the_newest_run_is_meant(tmp_path):
    for name, ages in (("new", (30, 10)), ("old", (20, 20))):
        one = "Time(usec) TotalCPU\n1.00 5.00\n"
        folder = write_run(tmp_path / "Results_corvane" / name, cpu=one, mem=one)
        for age, path in zip(ages, sorted(folder.iterdir())):
            os.utime(path, (time.time() - age,) * 2)
            path.with_suffix(".csv").write_text("Time(usec),TotalCPU\n")
    done = corvane("show", cwd=tmp_path)
    assert done.stdout.startswith("Results_corvane/new: ") and not done.stderr


def test_show_tells_a_run_on_one_screen(tmp_path):
    times = [t for t in range(1, 101) if t not in (50, 51)]
    cpu = line("Time(usec)", "TotalCPU", "cpu0(%)") + "".join(line(t * 1e6, t - 0.5, 1.0) for t in times)
    ddr = line("Time(usec)", "llcc_rd(MB/s)") + "".join(line(t * 1e6, 0) for t in times)
    disks = [(t * 1e6, [("sda", 3 << 20, 0.0, t << 20, 0.0), ("loop0", 0, 0.0, 0, 0.0)]) for t in times]
    name = lambda pid: " a-name-that-is-longer-than-its-column" if pid == 12 else f"worker{pid // 3}"
    alive = lambda t: [pid for pid in range(1, 13) if pid != 11 or 10 <= t <= 20]
    proc = [(t * 1e6, [(pid, name(pid), 0.0, 0.0, t * pid / 100, pid + t % 2 * 1.0) for pid in alive(t)]) for t in times]
    pss = lambda pid, t: 1024 * (pid * 100 + (t if t < 90 else 90 - t))
    memory = [(t * 1e6 + 1, [(pid, 1, name(pid), 0, pss(pid, t), 0, 0) for pid in alive(t)]) for t in times]
    write_run(tmp_path / "r", cpu=cpu, ddr=ddr, diskio=text_of(DISK, disks), proc=text_of(PROC, proc),
              procmem_=text_of(made_runs.PROCMEM, memory))
    assert corvane("show", "r", cwd=tmp_path).stdout == (FIXTURES / "show/screen.txt").read_text()


HOSTILE = ['\x1b[31mred\x1b[0m', 'quote"back\\slash', "\x9b2J", "\u202egnp.exe", "tab\tbell\a", "<b>&", "ünïcode"]


def test_hostile_names(tmp_path):
    rows = lambda total: [(pid, name, 0.0, 0.0, total, 50.0) for pid, name in enumerate(HOSTILE, 10)]
    text = text_of(PROC, [(t, rows(t / 2e6)) for t in (1e6, 2e6, 3e6)]).encode().replace(b"<b>", b"<b>\xff\xfe")
    header = "Time(usec) evil\x1b[2J(%)\n1000000.00 5.00\n"
    folder = write_run(tmp_path / "r\x1b[5m", proc=text, cpu=header + "cut\x1b")
    done = corvane("show", folder)
    for text in (done.stdout, done.stderr):
        assert text and not [c for c in text if c != "\n" and not c.isprintable()]
    assert "?[31mred?[0m" in done.stdout and "ünïcode" in done.stdout
    assert all(len(line) <= 80 for line in done.stdout.splitlines()[2:])
    done = corvane("show", "--json", folder)
    assert done.stdout.isascii() and "\x1b" not in done.stdout
    names = {process["name"] for process in json.loads(done.stdout)["processes"]}
    assert names == {name.replace("<b>", "<b>\ufffd\ufffd") for name in HOSTILE}
    tracks, _ = traced(folder)
    assert f"{HOSTILE[1]} [11] CPU_Usage (%)" in tracks


def test_trace_has_every_sample_in_full(tmp_path):
    times = [500000 * i for i in range(1, 7)]
    proc = [(t, [(pid, "same", 0.0, 0.0, 0.5, float(pid)) for pid in (*range(1, 41), 40) if pid != 7 or t < 1.6e6]
             + [(41, "sh" if t < 1.6e6 else "make", 0.0, 0.0, 0.5, 7.0)]) for t in times]
    disks = [(t, [("sda", 1 << 20, 0.0, 0, 0.0), ("idle", 0, 0.0, 0, 0.0)]) for t in times]
    ddr = line("Time(usec)", "llcc_rd(MB/s)", "llcc_wr(MB/s)") + "".join(line(float(t), 3, 4) for t in times)
    folder = write_run(tmp_path / "r", proc=text_of(PROC, proc), diskio=text_of(DISK, disks), ddr=ddr)
    tracks, events = traced(folder)
    assert sum(name.startswith("same [") for name in tracks) == 40
    begins = [t - 500000 for t in times]
    for pid in (12, 40):
        assert tracks[f"same [{pid}] CPU_Usage (%)"] == [(begin, pid) for begin in begins]
    assert tracks["llcc (MB/s)"] == [(begin, 3, 4) for begin in begins]
    # One that has ended, or has another program, goes down to zero where its last period ends.
    for ended in ("same [7]", "sh [41]"):
        assert tracks[f"{ended} CPU_Usage (%)"] == [(0, 7), (500000, 7), (1000000, 7), (1500000, 0)]
    assert tracks["sda disk (MB/s)"] == [(begin, 2, 0) for begin in begins]
    assert "idle disk (MB/s)" not in tracks
    assert "idle disk (MB/s)" in traced(folder, "--all")[0]
    titles = {e["pid"]: e["args"]["name"] for e in events if e["name"] == "process_name"}
    order = {e["pid"]: e["args"]["sort_index"] for e in events if e["name"] == "process_sort_index"}
    assert sorted(titles.values()) == ["Disks", "Memory bandwidth", "Processes"] and order.keys() == titles.keys()
    assert corvane("trace", folder, "-o", tmp_path / "t.json.gz").returncode == 0
    assert json.loads(gzip.decompress((tmp_path / "t.json.gz").read_bytes()))["traceEvents"]


def test_trace_of_odd_numbers(tmp_path):
    values = {"-5": -5, "-0.25": -0.25, "1e2": 100, "nan": None, "inf": None, "007": 7, "5.": 5, ".5": 0.5}
    rows = "".join(f"{second}000000.00 {text} 0.04\n" for second, text in enumerate(values))
    tracks, _ = traced(write_run(tmp_path / "r", battery="Time(usec) Charge Small\n" + rows))
    assert len(tracks["Small"]) == len(values)
    assert tracks["Charge"] == [(at * 1e6, value) for at, value in enumerate(values.values()) if value is not None]


def test_each_life_has_a_track(tmp_path):
    """PID 5 is back after a sample without it, then with less time; to one listing the last is the second."""
    total = {1: 3.0, 2: 4.0, 3: None, 4: 1.0, 5: 2.0, 6: 0.5, 7: 1.0, 8: None}
    proc = [(t * 1e6, [(1, "init", 0.0, 0.0, 0.0, 0.0)] + [(5, "a", 0.0, 0.0, used, 9.0)] * bool(used))
            for t, used in total.items()]
    memory = [(t * 1e6, [(1, 0, "init", 1, 1, 1, 1)] + [(5, 1, "a", 7, 7, 7, 7)] * (t in (2, 6))) for t in range(1, 9)]
    tracks, _ = traced(write_run(tmp_path / "r", proc=text_of(PROC, proc), procmem_=text_of(made_runs.PROCMEM, memory)))
    second = lambda name: [(ts / 1e6, value) for ts, value in tracks[name]]
    assert second("a [5] CPU_Usage (%)") == [(0, 9), (1, 9), (2, 0)]
    assert second("a [5] #2 CPU_Usage (%)") == [(3, 9), (4, 9), (5, 0)]
    assert second("a [5] #3 CPU_Usage (%)") == [(5, 9), (6, 9), (7, 0)]
    assert second("a [5] PSS (KB)") == [(2, 7), (3, 0)] and second("a [5] #3 PSS (KB)") == [(6, 7), (7, 0)]


def test_trace_below_a_size(tmp_path):
    chance = random.Random(1)
    values = [chance.randrange(1, 10000) / 100 for _ in range(40000)]
    rows = "".join(line(1e5 * i, value) for i, value in enumerate(values, 1))
    folder = write_run(tmp_path / "r", cpu=line("Time(usec)", "TotalCPU") + rows)
    done = corvane("trace", folder, "-o", tmp_path / "trace.json", "--max-mb", 1)
    assert "an event stands for" in done.stderr
    assert (1 << 18) < (tmp_path / "trace.json").stat().st_size <= 1 << 20
    step = float(done.stderr.split("stands for ")[1].split()[0])
    expected = {}
    for i, value in enumerate(values, 1):
        at = int(1e5 * i * 1e-6 / step)
        expected[at] = max(value, expected.get(at, 0))
    events = json.loads((tmp_path / "trace.json").read_bytes())["traceEvents"]
    assert [e["args"]["value"] for e in events if e["ph"] == "C"] == list(expected.values())
    assert corvane("trace", folder, "-o", tmp_path / "t.json.gz", "--max-mb", 1).returncode == 0
    assert gzip.decompress((tmp_path / "t.json.gz").read_bytes()) == (tmp_path / "trace.json").read_bytes()


def test_an_interrupted_trace_leaves_nothing(tmp_path):
    """It tries step after step to get thousands of processes into a megabyte."""
    rows = [[(pid, f"p{pid}", 0.0, 1.0, 1.0, 1.0) for pid in range(t * 400, t * 400 + 400)] for t in range(1, 100)]
    folder = write_run(tmp_path / "r", proc=text_of(PROC, [(t * 1e6, r) for t, r in enumerate(rows, 1)]))
    (tmp_path / "t.json").write_text("of before")
    process = subprocess.Popen([*CORVANE, "trace", folder, "-o", tmp_path / "t.json", "--max-mb", "1"],
                               preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))  # as under nohup
    while not list(tmp_path.glob("t.json.part*")):
        assert process.poll() is None
    process.send_signal(signal.SIGHUP)
    process.send_signal(signal.SIGINT)
    assert process.wait(60) == -signal.SIGINT
    assert sorted(path.name for path in tmp_path.iterdir()) == ["r", "t.json"]
    assert (tmp_path / "t.json").read_text() == "of before"


def test_convert_makes_what_the_profiler_makes(profiler):
    run = profiler.run("--cpu --mem --proc --io --net -t 1 -s 200 --json --csv -f x", scripted=False)
    folder = profiler.folder / "Results_corvane/x"
    expected = {path.name: path.read_bytes() for path in folder.iterdir()}
    assert len(expected) == 11
    for name in expected:
        if not name.endswith(".txt"):
            (folder / name).unlink()
    above = profiler.folder / "netprofiler_"  # its name says nothing of what is in it
    above.mkdir()
    folder = (profiler.folder / "Results_corvane").rename(above / "cpu") / "x"
    done = corvane("convert", "--json", "--csv", "--summary", folder, cwd="/")
    assert (done.returncode, done.stderr) == (0, "")
    assert {path.name: path.read_bytes() for path in folder.iterdir()} == expected
    assert done.stdout.startswith("+++++") and run.out.endswith(done.stdout)


SMALL = "Time(usec) TotalCPU\n1000000.00 5.00\n2000000.00 6.00\n3000000.00 7.00\n"


@pytest.mark.parametrize("arguments, metadata, told", [
    (["--from", "9.5"], None, "no sample lies between --from and --to: r ends at 3.0 s"),
    (["--from", "2.9", "--to", "1"], None, "no sample lies between --from and --to: r ends at 3.0 s"),
    ([], '{"schema":', "r.run.json cannot be read as a run's metadata; the run is read without"),
    ([], '{"schema": 99}', "r.run.json cannot be read as a run's metadata; the run is read without"),
])
def test_what_is_said_of_a_run_in_one_line(tmp_path, arguments, metadata, told):
    write_run(tmp_path / "r", cpu=SMALL)
    if metadata:
        (tmp_path / "r.run.json").write_text(metadata)
    for command in (["show"], ["trace", "-o", "t.json"], ["report", "-o", "r.html"]):
        done = corvane(*command, "r", *arguments, cwd=tmp_path)
        assert (done.returncode, done.stderr) == (0 if metadata else 2, f"corvane: {told}\n")


@pytest.mark.parametrize("command", [["show"], ["show", "--json"], ["convert", "--summary"]])
def test_output_that_cannot_be_written(tmp_path, command):
    folder = write_run(tmp_path / "r", cpu=SMALL)
    with open("/dev/full", "w") as full:
        done = corvane(*command, folder, capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert (done.returncode, done.stderr) == (2, "corvane: standard output cannot be written: No space left on device\n")


@pytest.mark.parametrize("output, status, told", [
    ("/dev/null", 0, ""), ("/dev/full", 2, "cannot be written: No space left on device"),
    ("nowhere/t.json", 2, "cannot be made: No such file or directory"), (".", 2, "Is a directory"),
    ("r/cpuprofiler_r.txt", 2, "r/cpuprofiler_r.txt holds samples of the run; name another file"),
])
def test_where_a_trace_cannot_go(tmp_path, output, status, told):
    folder = write_run(tmp_path / "r", cpu=SMALL)
    done = corvane("trace", folder, "-o", output, cwd=tmp_path)
    assert (done.returncode, done.stderr.count("\n")) == (status, 1 if told else 0) and told in done.stderr
    assert os.listdir(tmp_path) == ["r"] and not os.path.isfile("/dev/null")


@pytest.mark.parametrize("arguments", [["show", "r"], ["convert", "--summary", "r"], ["compare", "r", "--with", "r"]],
                         ids=lambda arguments: arguments[0])
def test_standard_output_on_a_full_disk(tmp_path, arguments):
    write_run(tmp_path / "r", cpu=SMALL)
    with open("/dev/full", "w") as full:
        assert corvane(*arguments, cwd=tmp_path, capture_output=False, stdout=full).returncode == 2


def test_trace_of_a_part(tmp_path):
    rows = [(pid, "a" if pid < 5 else "b", 0.0, 0.0, 0.0, 9.0) for pid in range(1, 9)]
    folder = write_run(tmp_path / "r", cpu=SMALL, proc=text_of(PROC, [(t * 1e6, rows) for t in range(1, 9)]))
    tracks, _ = traced(folder, "--from", 2, "--to", 4, "--process", "b", "--process", 3)
    assert tracks.pop("TotalCPU (%)") == [(1000000, 6), (2000000, 7)]
    assert set(tracks) == {f"{'a' if pid < 5 else 'b'} [{pid}] CPU_Usage (%)" for pid in (3, 5, 6, 7, 8)}
    assert {tuple(events) for events in tracks.values()} == {((1000000, 9), (2000000, 9), (3000000, 9))}


def test_colour_is_for_terminals_that_want_it(tmp_path):
    folder = write_run(tmp_path / "r", cpu=SMALL)

    def on_terminal(**more):
        reader, writer = pty.openpty()
        corvane("show", folder, stdout=writer, stderr=writer, capture_output=False, env=os.environ | more)
        os.close(writer)
        text = read_all(reader)
        os.close(reader)
        return text

    assert "\x1b[1mProcessor" in on_terminal()
    assert "\x1b" not in on_terminal(NO_COLOR="1")


def test_what_grows_without_end_is_bounded(tmp_path):
    """Interfaces of containers, and names made of numbers."""
    devices = [(t * 1e6, [(f"veth{t * 100 + i}", 1 << 20, 0.0, 0, 0.0) for i in range(100)]) for t in range(1, 9)]
    names = [(t * 1e6, [(t * 100 + i, f"conftest{t * 100 + i}", 0.0, 0.0, i + 1.0, 1.0) for i in range(100)])
             for t in range(1, 40)]
    large = [(t * 1e6, [(t * 100, 1, f"conftest{t * 100}", 0, 1, 0, 0)]) for t in range(1, 40)]
    folder = write_run(tmp_path / "r", diskio=text_of(DISK, devices), proc=text_of(PROC, names),
                       procmem_=text_of(made_runs.PROCMEM, large))
    (folder / "cpuprofiler_other.txt").write_text(SMALL)
    (folder / "cpuprofiler_r.txt").write_text(SMALL.replace("7.00", "70.00"))
    done = corvane("show", "--json", folder)
    for told in ("more than 256 devices in io", "sums by name are of the names that used most",
                 "cpuprofiler_other.txt is left out: cpuprofiler_r.txt is of the same source"):
        assert told in done.stderr
    report = json.loads(done.stdout)
    assert len({metric["entity"] for metric in report["metrics"] if metric["source"] == "io"}) == 256
    assert report["metrics"][0]["max"] == 70
    # The first fifty that ended, of those with most time (100 s, one in each second), those whose
    # memory was measured, and the living.
    ended = [p for p in report["processes"] if p["last"] < 39]
    assert len(report["processes"]) - len(ended) == 100
    assert {p["cpu_seconds"] for p in ended} == {100, 99, 1, 0} and len(ended) == 50 + 38
    assert {p["pss_peak_kb"] for p in ended} == {1, None}
    assert {row[0][2] for _, row in large} <= {name["name"] for name in report["names"]}
    top = [name["cpu_seconds"] for name in report["names"]]
    assert top[:38] == [100] * 38 and len(top) <= 1024 + 100


def test_convert_of_a_malformed_run(tmp_path):
    folder = write_run(tmp_path / "Results_corvane" / "x", cpu="t a\n1 2\n2 3 4\n")
    done = corvane("convert", folder, "--json")
    assert (done.returncode, done.stdout) == (2, "") and "is malformed" in done.stderr
    assert b'"args" : {"load" : "3"}}' in (folder / "ProfilerOutput.json").read_bytes()
