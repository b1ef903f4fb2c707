"""The page as a file: what it holds, and what `corvane report` says when it cannot be made."""

import base64
import json
import math
import re
import struct

import pytest
from conftest import corvane, make_page
from made_run import MadeRun, columns, spike_run

TYPES = {"f32": "f", "f64": "d", "u32": "I"}


def read(page):
    """The head, and a function that gives the numbers of a reference."""
    text = page.read_text()
    head = json.loads(re.search(r'id="head">(.*?)</script>', text, re.S)[1])
    samples = base64.b64decode(re.search(r'id="samples">(.*?)</script>', text, re.S)[1], validate=True)

    def numbers(reference):
        at, count, kind = reference
        assert at % struct.calcsize(TYPES[kind]) == 0  # browsers refuse others
        return list(struct.unpack_from(f"<{count}{TYPES[kind]}", samples, at))
    return head, numbers


def of(entries, **wanted):
    return next(entry for entry in entries if all(entry[key] == value for key, value in wanted.items()))


def test_holds_the_samples_and_the_figures_of_show(tmp_path):
    run = spike_run(tmp_path, "spike")
    head, numbers = read(make_page(tmp_path / "page.html", run))
    [shown] = head["runs"]
    told = json.loads(corvane("show", "--json", run).stdout)
    for part in told:
        entries = told[part] if isinstance(told[part], list) else [told[part]]
        held = shown[part] if isinstance(told[part], list) else [shown[part]]
        assert [{key: entry[key] for key in wanted} for entry, wanted in zip(held, entries)] == entries
    assert shown["side"] is None and of(shown["metrics"], metric="Rx_packets")["meaning"] == "amount"
    used = of(shown["metrics"], metric="Used_Mem")["series"]
    assert numbers(used["time"]) == [float(t) for t in range(1, 61)]
    assert numbers(used["high"]) == [(2 << 20) + 1024 * t for t in range(1, 61)]
    # More than a 32-bit float holds; and what never was above 0 is not drawn.
    total = of(shown["metrics"], metric="Total_Mem")["series"]
    assert total["high"][2] == "f64" and numbers(total["high"])[0] == 1 << 24
    assert of(shown["metrics"], entity="loop0", metric="read")["series"] is None
    growing = of(shown["processes"], pid=300)["pss"]
    assert numbers(growing["high"])[-1] == 9000 + 1024 * 60
    moments = shown["moments"]
    first, who, share = (numbers(moments[key]) for key in ("first", "who", "share"))
    place = min(range(60), key=lambda i: abs(numbers(moments["end"])[i] - 40))
    assert moments["people"][who[first[place]]] == [200, "spiky"]
    assert share[first[place]] == pytest.approx(98.5)


def test_of_a_long_run_nothing_is_lost(tmp_path):
    times = [i / 2 for i in range(1, 5001) if not 2000 < i < 2200]
    level = lambda t: {777: 99.0, 1777: -5.0}.get(t, 10 + t % 7)
    run = MadeRun(tmp_path, "long")
    run.write("oddprofiler", columns([20] * 3, [["Time(usec)", "Level", "Dip"],
                                                *([t * 1e6, level(t), -3.0 * (t == 5)] for t in times)]))
    run.processes([(t, [(1, "one", t * 0.3, 30.0)]) for t in times])
    head, numbers = read(make_page(tmp_path / "page.html", run.folder))
    [shown] = head["runs"]
    series = of(shown["metrics"], metric="Level")["series"]
    buckets = {}
    for t in times:
        buckets.setdefault(math.floor(t / series["step"]), []).append(level(t))
    assert numbers(series["time"]) == pytest.approx([(place + 1) * series["step"] for place in buckets])
    for part, true in (("low", min), ("high", max), ("mean", lambda values: sum(values) / len(values))):
        assert numbers(series[part]) == pytest.approx([true(values) for values in buckets.values()])
    assert min(numbers(of(shown["metrics"], metric="Dip")["series"]["low"])) == -3
    assert all(share == pytest.approx(30) for share in numbers(shown["moments"]["share"]))


def test_arrays_lie_where_they_are_told_to(tmp_path):
    """Behind an odd number of 32-bit ones, and times of two metrics that are not the first ones."""
    run = MadeRun(tmp_path, "odd")
    run.cpu((t, [50, 20]) for t in range(1, 60))
    run.memory((t + 0.5, 5 << 20) for t in range(1, 60))
    head, numbers = read(make_page(tmp_path / "page.html", run.folder))
    for metric, value in (("Used_Mem", 5 << 20), ("Total_Mem", 1 << 24)):
        series = of(head["runs"][0]["metrics"], metric=metric)["series"]
        assert numbers(series["time"]) == [t + 0.5 for t in range(1, 60)]
        assert numbers(series["high"]) == [value] * 59


def test_tells_of_the_recording(tmp_path):
    run = spike_run(tmp_path, "spike", names=("steady", "</script>", "<!--<script>"))
    run.with_suffix(".run.json").write_text(json.dumps({
        "schema": 1, "command": {"arguments": ["make", "all"], "status": 2},
        "host": {"memory_kb": 2048000, "frequencies": [
            {"cores": "0-3", "governor": "schedutil", "min_khz": 300000, "max_khz": 1800000}]},
        "missing": [{"source": "gpu", "reason": "no card"}], "marks": [{"text": "here", "at": {"counter": 768000000}}]}))
    about = read(make_page(tmp_path / "page.html", run))[0]["runs"][0]["about"]
    facts = dict(about["facts"])
    assert (facts["Memory"], facts["Cores 0-3"]) == ("2000 MB", "schedutil, 300 to 1800 MHz")
    assert (facts["Command"], facts["Command ended"]) == ("make all", "status 2")
    assert (about["missing"], about["marks"]) == (["gpu: no card"], [[40, "here"]])


def test_takes_a_stretch_and_some_processes(tmp_path):
    run = spike_run(tmp_path, "spike")
    head, numbers = read(make_page(tmp_path / "page.html", run, "--from", 10, "--to", "20", "--process", "gr*"))
    [shown] = head["runs"]
    assert [process["name"] for process in shown["processes"]] == ["growing"]
    times = numbers(of(shown["metrics"], metric="TotalCPU")["series"]["time"])
    assert (times[0], times[-1]) == (10, 20)


@pytest.mark.parametrize("arguments, said", [
    (["nowhere"], "nowhere is no folder"),
    (["run", "-o", "missing/page.html"], "missing/page.html cannot be made: No such file or directory"),
    (["run", "-o", "/dev/full"], "/dev/full cannot be written: No space left on device"),
    (["run", "empty"], "empty holds no result files"),
    (["run", "-o", "run/cpuprofiler_run.txt"],
     "run/cpuprofiler_run.txt holds samples of the run; name another file"),
    (["--process", "x", "missing"], "missing is no folder"),
    (["run", "--ouptut", "x"], "unknown --ouptut; did you mean --output?"),
])
def test_refusals(tmp_path, monkeypatch, arguments, said):
    monkeypatch.chdir(tmp_path)
    spike_run(tmp_path, "run")
    (tmp_path / "empty").mkdir()
    refused = corvane("report", *arguments)
    assert (refused.returncode, refused.stdout, refused.stderr) == (2, "", f"corvane: {said}\n")
    assert sorted(path.name for path in tmp_path.iterdir()) == ["empty", "run"]


def test_unless_named_the_page_is_called_like_the_newest_run(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    spike_run(tmp_path / "Results_corvane", "yesterday")
    for arguments in ([], ["Results_corvane/yesterday/"]):
        made = corvane("report", *arguments)
        assert (made.returncode, made.stdout, made.stderr) == (0, "yesterday.html\n", "")
    assert (tmp_path / "yesterday.html").read_text().endswith("</html>\n")
