"""What `corvane compare` says of sides of which it is known how they differ."""

import json
import random
import re

import pytest
from conftest import corvane
from made_runs import DISK, MEM, PROC, PROCMEM, text_of, write_run


def make_run(folder, seed, samples=60, used=1000000, intruder=None, period=1, crowd=0, idle=()):
    """Memory around `used` KB, a steady process, and one that loads a core now and then and reads; all
    that it writes it writes at the end."""
    noise = random.Random(seed)
    memory, usage, resident, disks = [], [], [], []
    for number in range(1, samples + 1):
        now = int(used + noise.gauss(0, 10000))
        memory.append((number * period * 1e6, [(4000000, 4000000 - now, now, now / 40000, 0, 0, 0, 0.0)]))
        processes = [(10, "steady", 20 + noise.gauss(0, 1), 500 + seed % 3 * 40 + 10 * bool(intruder))]
        processes += [(100 + pid, f"idle{pid}", 20 + noise.gauss(0, 1), 500) for pid in range(crowd)]
        if intruder and number % 3 == 0:
            processes.append((20, intruder, 90.0, 8000))
        usage.append((number * period * 1e6, [(pid, name, 0.0, 0.0, 0.0, load)
                                              for pid, name, load, _ in processes]))
        resident.append((number * period * 1e6, [(pid, 1, name, 9999, pss, 9000, 100)
                                                 for pid, name, _, pss in processes]))
        read, written = (1 << 18) * (5 if intruder else 4), (9 << 20) * (intruder is not None and number == samples)
        disks.append((number * period * 1e6, [("sda", read * period, 0.0, written, 0.0)]
                      + [(name, 0, 0.0, 0, 0.0) for name in idle]))
    write_run(folder, diskio=text_of(DISK, disks), mem=text_of(MEM, memory), proc=text_of(PROC, usage),
              procmem_=text_of(PROCMEM, resident))
    return folder


def compared(*arguments, status=0, **options):
    done = corvane("compare", *arguments, **options)
    assert done.returncode == status, done.stderr
    return done


def compared_page(page, base, other):
    compared(base, "--with", other, "--report", page)
    return page.read_text()


def figures(*arguments, **options):
    result = json.loads(compared(*arguments, "--json", **options).stdout)
    return {(one["source"], one["entity"], one["metric"]): one for one in result["metrics"]}


USED = ("mem", "", "Used_Mem")


@pytest.mark.parametrize("runs", [1, 3, 5])
def test_changes_are_named_and_nothing_else(tmp_path, runs):
    for number in range(runs):
        make_run(tmp_path / f"a{number}", number)
    (tmp_path / "a.txt").touch()  # beside the runs
    others = [make_run(tmp_path / f"b{number}", 89 + runs + number, used=1040000, intruder="thief")
              for number in range(runs)]
    found = figures("a*", "--with", *others, cwd=tmp_path)
    changed = {key[:2] if key[1] else key: one["verdict"] for key, one in found.items()
               if one["verdict"] in ("better", "worse")}
    assert changed == {
        USED: "worse",
        ("mem", "", "Available_Mem"): "worse",
        ("mem", "", "Mem_Usage"): "worse",
        ("io", "sda"): "worse",
        ("proc", "thief"): "worse",
        ("procmem", "thief"): "worse",
    }
    used = found[USED]
    assert used["difference"] == pytest.approx(used["new"] - used["base"])
    assert used["percent"] == pytest.approx(4, abs=0.6)
    assert used["low"] < 40000 < used["high"]
    assert used["low"] > 30000 and used["high"] < 50000
    assert found["proc", "thief", "CPU_Usage"]["new"] == pytest.approx(30)
    assert found["proc", "thief", "CPU_Usage"]["percent"] is None
    assert found["proc", "steady", "CPU_Usage"]["verdict"] == "same"
    assert (found["procmem", "steady", "PSS"]["p"] > 0.1) == (runs > 1)  # each run has another size


def test_one_run_that_went_wrong_does_not_decide(tmp_path):
    base = [make_run(tmp_path / f"a{number}", number, used=2000000 if number == 4 else 1000000) for number in range(5)]
    others = [make_run(tmp_path / f"b{number}", 90 + number) for number in range(5)]
    assert figures(*base, "--with", *others)[USED]["base"] == pytest.approx(1000000, rel=0.01)


def test_many_processes_do_not_hide_the_memory(tmp_path):
    base, other = (make_run(tmp_path / name, seed, used=used, crowd=100)
                   for name, seed, used in (("a", 0, 1000000), ("b", 3, 1005000)))
    found = figures(base, "--with", other, "--at-least", 0)
    assert 0.002 < found[USED]["p"] < 0.02 and found[USED]["verdict"] == "worse"


def test_a_process_that_comes_and_goes_in_a_long_run_is_not_certain(tmp_path):
    base, other = make_run(tmp_path / "a", 0, samples=600), make_run(tmp_path / "b", 3, samples=600, intruder="thief")
    thief = figures(base, "--with", other)["proc", "thief", "CPU_Usage"]
    assert thief["new"] == pytest.approx(30) and thief["low"] < 29.9 < 30.1 < thief["high"]


def test_what_is_told(tmp_path):
    base, other = make_run(tmp_path / "a", 1), make_run(tmp_path / "b", 4, used=1040000)
    text = compared(base, "--with", other).stdout
    told_figures = [line.split()[1] for line in text.splitlines() if line.endswith("worse")]
    assert sorted(told_figures[:2]) == ["Mem_Usage", "Used_Mem"]  # the same change
    assert told_figures[2:] == ["Available_Mem"]  # a smaller one
    assert text.endswith("3 worse, 0 better, 9 the same, 0 with too little to tell\n")
    assert max(map(len, text.splitlines())) <= 80
    for ends, told in (((r"mem Used_Mem +", r" +"), text),
                       (('"Used_Mem","KB",', r"\.\d+,"), compared_page(tmp_path / "page.html", base, other))):
        before, after = re.search(r"%s(\d+)%s(\d+)" % ends, told).groups()
        assert int(before) == pytest.approx(1000000, rel=0.01) and int(after) == pytest.approx(1040000, rel=0.01)
    assert " from 0 " in compared(base, "--with", make_run(tmp_path / "c", 3, intruder="thief")).stdout
    compared(base, "--with", other, "--fail-if", "mem.Used_Mem.mean > +3%", "--fail-if", "mem.No.mean > +1%", status=1)
    everything = compared(base, "--with", other, "--all").stdout
    assert "proc steady" in everything and "proc steady" not in text
    assert figures(base, "--with", other, "--at-least", "5%")[USED]["verdict"] == "same"
    for name in ("Used_Mem", "mem.Used_Mem"):
        told = figures(base, "--with", other, "--more-is-better", name)
        assert told[USED]["verdict"] == "better"
    page = (tmp_path / "page.html").read_text()
    assert "What differs between base and new" in page
    assert '"label":"base a","side":0' in page and '"label":"new b","side":1' in page
    compared(base, "--with", other, "--report", tmp_path / "nowhere/page.html",
             status=2)


def test_what_many_names_hold_back_is_no_sameness(tmp_path):
    """Six runs against six cannot single one of a hundred names out, but it is no noise either."""
    for side in "ab":
        for number in range(6):
            noise = random.Random(f"{side}{number}")
            samples = [(second * 1e6, [(pid, f"p{pid}", 0.0, 0.0, 0.0, noise.uniform(0, 10)) for pid in range(100)]
                        + [(999, "burner", 0.0, 0.0, 0.0, 40.0 + noise.random())] * (side == "b"))
                       for second in range(1, 13)]
            write_run(tmp_path / f"{side}{number}", proc=text_of(PROC, samples))
    found = figures("a*", "--with", "b*", cwd=tmp_path)
    burner = found["proc", "burner", "CPU_Usage"]
    assert (burner["verdict"], burner["held_back"]) == ("inconclusive", True)
    lines = compared("a*", "--with", "b*", cwd=tmp_path).stdout.splitlines()
    told = next(at for at, line in enumerate(lines) if line.startswith("May have changed"))
    assert lines[told + 1].startswith("proc burner") and lines[told + 1].endswith(" ?")
    # Noise that leaves room for ten times what is worth telling is not said to be the same.
    assert sum(one["verdict"] == "same" for one in found.values()) < 5


def test_one_run_against_several_is_judged_by_what_those_differ(tmp_path):
    one = make_run(tmp_path / "one", 7, used=1050000)
    for number, used in enumerate((980000, 1000000, 1040000, 960000, 1020000)):
        make_run(tmp_path / f"b{number}", number, used=used)
    used = figures(one, "--with", "b*", cwd=tmp_path)[USED]
    assert used["verdict"] != "better"
    # t of 4 degrees times s sqrt(1 + 1/5), s = 31623
    assert used["high"] - used["low"] == pytest.approx(2 * 2.776 * 31623 * 1.0954, rel=0.15)


def test_too_little_is_no_verdict(tmp_path):
    base, other = (make_run(tmp_path / name, 1, samples=9, used=used)
                   for name, used in (("a", 1000000), ("b", 2000000)))
    used = figures(base, "--with", other)[USED]
    assert (used["verdict"], used["low"], used["high"]) == ("inconclusive", None, None)


def test_other_settings_are_said_first(tmp_path):
    base, other, third = (make_run(tmp_path / f"{period}", 1, period=period) for period in (1, 0.5, 1.003))
    for run, kernel in ((base, "6.1.0"), (other, "6.6.1"), (third, "6.1.0")):
        (tmp_path / f"{run.name}.run.json").write_text(json.dumps({"schema": 1, "host": {"kernel": kernel}}))
    text = compared(base, "--with", other).stdout
    assert "kernel: 6.1.0 against 6.6.1\n" in text
    assert "period of mem: 1000 ms against 500 ms\n" in text
    assert "same on both sides: kernel: 6.1.0 against 6.6.1." in compared_page(tmp_path / "page.html", base, other)
    text = compared(base, other, "--with", third).stdout
    assert "kernel: 6.1.0, 6.6.1 against 6.1.0\n" in text and " and 1 more\n" in text
    # A period as it is measured wobbles.
    assert "Not the same" not in compared(base, "--with", third).stdout
    base, other = make_run(tmp_path / "a", 1, idle=["sdb"]), make_run(tmp_path / "b", 2, period=0.5)
    for run, labels in ((base, {"branch": "x"}), (other, {})):
        run.with_suffix(".run.json").write_text(json.dumps({"schema": 1, "labels": labels}))
    text = compared(base, "--with", other).stdout
    for difference in ("label branch: x against none", "length: 59 s against 29.5 s", "only base has io sdb"):
        assert f"  {difference}\n" in text


def test_what_cannot_be_compared(tmp_path):
    base, other = make_run(tmp_path / "a", 1), make_run(tmp_path / "b", 2)
    memory = write_run(tmp_path / "m", mem=(base / "memprofiler_a.txt").read_text())
    listing = write_run(tmp_path / "p", proc=(base / "procprofiler_a.txt").read_text())
    assert "nothing in common" in compared(memory, "--with", listing, status=2).stderr
    twice = compared(base, base, "--with", other, tmp_path / "." / "b", base)
    assert "1 of 2" in twice.stderr and "2 of 3" in twice.stderr and f"on both sides: {base}\n" in twice.stderr
    assert twice.stdout.startswith(f"base  {base}\nnew   {other} and 1 more\n")
    for option, value, said in (("--at-least", "nan%", "'nan%' is no share"),
                                ("--at-least", "abc", "'abc' is no share"),
                                ("--more-is-better", "mem.Used", "did you mean mem.Used_Mem"),
                                ("--more-is-better", "used_mem", "did you mean Used_Mem")):
        assert said in compared(base, "--with", other, option, value, status=2).stderr


@pytest.mark.parametrize("condition, status, said", [
    ("memory.Used_Mem.p95 > +3%", 1, "'memory.Used_Mem.p95 > +3%' holds"),
    ("mem.Used_Mem.mean > +5%", 0, ""),
    ("mem.Used_Mem.mean > +30MB", 1, "holds"),
    ("mem.Used_Mem.mean > +50MB", 0, ""),
    ("mem.Available_Mem.min < -1%", 1, "holds"),
    ("process:thief.pss.max > +7MB", 1, "holds: 0 -> 8000 KB, from 0\n"),
    ("process:thief.pss.max > +7.9MB", 0, ""),
    ("process:thief.pss.max > +8000KB", 0, ""),
    ("process:thief.pss.growth > +1KB", 0, ""),
    ("process:thief.cpu.mean > +5%", 1, "holds"),
    ("disk.sda.read.mean > +200KB/s", 1, "holds"),
    ("disk.sda.write.p95 > +1MB/s", 0, ""),
    ("mem.Mem_Usage.mean > +1MB", 2, "is in %, not in KB"),
    ("process:thief.cpu.mean > +31points", 0, ""),
    ("process:thief.cpu.mean > +29points", 1, "holds"),
    ("process:a>b.cpu.mean > +5%", 2, "no such figure"),
    ("process:teif.cpu.mean > +1%", 2, "did you mean process:thief.cpu or"),
    ("proc.steady.CPU_Usage.mean > +1%", 2, "did you mean process:steady."),
    ("mem.Used_Men.max > +1%", 2, "did you mean mem.Used_Mem?"),
    ("mem.Used_Mem.p90 > +1%", 2, "'p90' of mem.Used_Mem; there are mean min max p50 p95 p99\n"),
    ("process:thief.pss.p95 > +1%", 2, "there are mean max first last growth\n"),
    ("mem.Used_Mem.p95 > +5MB/s", 2, "mem.Used_Mem is in KB, not in MB/s\n"),
    ("mem.Used_Mem.p95 => +5%", 2, "what compares is > or <"),
    ("io.sdb.read.mean > +5%", 2, "only the base runs have this figure"),
    ("mem.Used_Mem.mean > +nan%", 2, "no number"),
    ("mem.Used_Mem.mean > +inf%", 2, "no number"),
    ("mem.Used_Mem.max > 1%", 2, "begins with + or -"),
    ("mem.Used_Mem.max > +1bananas", 2, "unknown unit"),
    ("mem.Used_Mem.max", 2, "no > or <"),
])
def test_conditions(tmp_path, condition, status, said):
    base, other = (
        [make_run(tmp_path / f"a{number}", 1, idle=["sdb"]) for number in range(2)],
        [make_run(tmp_path / f"b{number}", 2, used=1040000, intruder="thief") for number in range(2)])
    done = compared(*base, "--with", *other, "--fail-if", condition, status=status)
    assert said in done.stderr and bool(said) == bool(done.stderr)
