"""The page in a real browser: what is drawn, and what pointer and keys do."""

import json

import browser
import pytest
from conftest import corvane, make_page
from made_run import MadeRun, columns, spike_run

PANELS = ["cores", "processes-cpu", "memory", "processes-memory", "disks", "network"]
HOSTILE = ["<img/src=x/onerror=alert(1)>", "</script><script>alert(2)</script>", "{{1+1}}%s&lt;b&gt;"]


@pytest.fixture(scope="module")
def spike(tmp_path_factory):
    folder = tmp_path_factory.mktemp("spike")
    spike_run(folder, "spike")
    return make_page(folder / "page.html", folder / "spike")


def test_draws_every_panel_without_a_word_or_a_request(open_page, spike):
    page = open_page(spike)
    assert page.run("return [...document.querySelectorAll('.panel')].map((panel) => panel.id)") == PANELS
    for panel in PANELS:
        page.see(f"#{panel}")
        assert page.pixels(f"#{panel} canvas")["ink"].count("1") > 500
    assert "1" in page.pixels(".heat canvas")["ink"]
    assert page.text("#disks .idle") == "Without any traffic: loop0"
    assert page.texts(".tile-value")[2:4] == ["4.00\u202fMB/s", "2.00\u202fMB/s"]  # the busiest way
    assert page.complaints() == []
    for panel in PANELS:  # reading a picture twice makes the browser complain
        assert page.run("""const panel = document.querySelector(arguments[0]), canvas = panel.querySelector('canvas');
            const {data} = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
            const colour = getComputedStyle(panel.querySelector('.swatch')).backgroundColor.match(/\\d+/g).map(Number);
            return data.some((_, i) => i % 4 === 0 && colour.every((part, at) => data[i + at] === part))""", f"#{panel}")
    for panel, begin, end in (("cores", 0, 1), ("memory", 1 / 60, 1)):  # lines without a gap, and steps
        picture = page.pixels(f"#{panel} canvas")
        width = picture["width"]
        rows = [picture["ink"][at:at + width] for at in range(0, len(picture["ink"]), width)]
        columns_of_line = range(54 + int(begin * (width - 53)), 50 + int(end * (width - 53)))
        assert all(any(row[x] == "1" for row in rows) for x in columns_of_line)
        assert panel == "memory" or "1" * 12 in next(row for row in rows if "1" in row)
    page.run("scrollTo(0, 0)")
    page.picture("spike")
    blocked = "return fetch('data:,x').then(() => 'fetched', () => 'blocked')"
    assert page.run(blocked) == "blocked"


def test_a_spike_has_a_name(open_page, spike):
    page = open_page(spike)
    page.pointer("#cores", ("move", 39.5 / 60))
    page.wait("return document.querySelector('.moment tbody tr')")
    assert page.texts(".moment tbody tr:first-child td") == ["200", "spiky", "98.5", "6.8"]
    page.pointer("#cores", ("move", 0.2))
    page.wait("return document.querySelector('.moment tbody tr').innerText.includes('steady')")
    page.pointer("#cores", ("down", 39.5 / 60), ("up", 39.5 / 60), ("move", 0.9))
    page.wait("return document.querySelector('.moment.pinned tbody tr').innerText.includes('spiky')")
    page.picture("spike-held")
    page.key("ArrowRight")  # to the sample, whose period this is
    page.wait("return document.querySelector('.moment').dataset.moment === '40'")
    page.key("ArrowRight")
    page.wait("return document.querySelector('.moment tbody tr').innerText.includes('steady')")
    page.key("Escape")
    page.wait("return !document.querySelector('.moment.pinned')")


@pytest.mark.parametrize("period", [1, 0.1])
def test_nobody_is_named_before_or_after_its_life(open_page, tmp_path, period):
    run = MadeRun(tmp_path, "short-lived")
    lives = {10000: range(1, 41), 200: [10], 300: [20, 21, 22]}
    there = [(i, [pid for pid, life in lives.items() if i in life]) for i in range(1, 41)]
    run.cpu((i * period, [50, 20]) for i in range(1, 42))
    run.processes([(i * period, [(pid, f"p{pid}", 0.9 * i * period, 95.3) for pid in pids]) for i, pids in there])
    run.process_memory([(i * period, [(pid, f"p{pid}", 5000) for pid in pids]) for i, pids in there])
    page = open_page(make_page(tmp_path / "page.html", run.folder))
    for place, named in ((2, []), (8.5, []), (9.5, [200]), (10.5, []), (12, []), (18.5, []), (19.5, [300]),
                         (21.5, [300]), (22.5, []), (24, []), (39.8, []), (40.6, [])):
        page.pointer("#cores", ("move", place / 41))
        page.wait("return Math.abs(document.querySelector('.moment').dataset.moment - arguments[0]) < arguments[1]",
                  place * period, 0.2 * period)
        assert sorted(page.texts(".moment tbody td:first-child")) == [str(pid) for pid in [10000, *named]], place
    assert sorted(page.texts("#processes tbody td:first-child")) == ["10000", "200", "300"]


def test_a_legend_tells_the_values_of_the_moment(open_page, tmp_path):
    """In the unit of the axis; nothing where samples of a state are missing."""
    run = MadeRun(tmp_path, "paused")
    run.cpu((t, [50, 0]) for t in range(1, 41))
    run.memory((t, 5 << 20) for t in range(1, 41) if not 14 < t < 24 or t == 19)
    page = open_page(make_page(tmp_path / "page.html", run.folder))
    for place, told in ((10, "5.00"), (16.5, "–"), (30, "5.00")):
        page.pointer("#memory", ("move", place / 40))
        page.wait("return document.querySelector('#memory .value').innerText === arguments[0]", told)
    picture = page.pixels("#memory canvas")
    strip = page.pixels(".heat canvas", least=-1)
    assert set(strip["ink"][-4 * strip["width"]:]) == {"1"}  # a core without work is not one without samples
    lone = 52 + round(19 / 40 * (picture["width"] - 53))
    assert "1" in picture["ink"][lone::picture["width"]]


def test_zoom_on_one_panel_moves_all(open_page, spike):
    page = open_page(spike)
    page.pointer("#memory", ("move", 0.5), ("down", 0.5), ("move", 0.6), ("move", 0.7), ("up", 0.7))
    shown = []
    for panel in PANELS:
        page.see(f"#{panel}")
        shown.append(page.wait("""const {from, to} = document.querySelector(arguments[0]).dataset;
            return to - from < 20 && [from, to].map(Number)""", f"#{panel}"))
    assert all(stretch == shown[0] for stretch in shown)
    assert shown[0] == pytest.approx([30, 42], abs=1)
    for _ in range(5):
        page.run("document.querySelector('.controls button:nth-of-type(2)').click()")  # past the end
    page.wait("""const {from, to} = document.querySelector('#network').dataset;
        return Math.abs(to - 60) < 0.01 && to - from < 20""")
    page.key("0")
    page.wait("return document.querySelector('.controls button:last-child').disabled")
    for title, stretch in (("Closer (+)", [21, 51]), ("Earlier (Shift ←)", [6, 36]), ("Farther (−)", [0, 60])):
        page.run("document.querySelector(`.controls [title='${arguments[0]}']`).click()", title)
        page.wait("""const {from, to} = document.querySelector('#network').dataset;
            return [from, to].every((end, i) => Math.abs(end - arguments[0][i]) < 0.1)""", stretch)


def test_sorts_filters_and_draws(open_page, spike):
    page = open_page(spike)
    assert page.texts("#processes tbody .name") == ["steady", "growing", "spiky"]
    names = "return [...document.querySelectorAll('#processes tbody .name')].map((cell) => cell.innerText)"
    page.run("document.querySelectorAll('#processes th button')[4].click()")
    assert page.run(names) == ["spiky", "steady", "growing"]
    page.run("document.querySelectorAll('#processes th button')[4].click()")
    assert page.run(names) == ["growing", "steady", "spiky"]
    page.run("""const input = document.querySelector('#processes input');
        input.value = 'GROW 0';
        input.dispatchEvent(new Event('input'))""")
    assert page.run(names) == ["growing"]
    assert page.texts("#growing tbody .name") == ["growing"]
    page.see("#processes-cpu")
    before = page.texts("#processes-cpu .entry .rest")
    page.run("document.querySelector('#processes-cpu .entry').click()")
    page.run("document.querySelector('#names tbody tr:nth-child(2)').click()")
    assert len(page.texts("#processes-cpu .entry[aria-pressed=false]")) == 1
    assert page.texts("#names tbody [aria-pressed=true]") == page.texts("#names tbody tr:nth-child(2) .name")
    assert set(page.texts("#processes-cpu .entry .rest")) - set(before) == {"(all 1)"}
    page.run("""const button = document.querySelector('#names tbody tr:nth-child(2) button');
        button.focus();
        button.click()""")
    assert page.run("return document.activeElement.closest('tr').rowIndex") == 2
    assert page.texts("#processes-cpu .entry .rest") == before


@pytest.mark.parametrize("width, dark", [(1440, False), (1440, True), (400, False), (400, True)])
def test_light_and_dark_wide_and_narrow(open_page, spike, width, dark):
    page = open_page(spike, width=width, height=900, dark=dark)
    page.pointer("#cores", ("move", 0.4))
    page.wait("return document.querySelector('.moment tbody tr')")
    assert page.run("return document.documentElement.scrollWidth") == width
    red = page.run("return getComputedStyle(document.body).backgroundColor.match(/\\d+/)[0]")
    assert (int(red) < 60) == dark
    assert page.complaints() == []
    page.picture(f"{'dark' if dark else 'light'}-{width}")
    drawings = """['.strip', '#cores .plot', '#network .plot'].map((place) =>
        document.querySelector(`${place} canvas`).toDataURL())"""
    page.see("#network")
    page.see("#cores")
    before = page.run("return " + drawings)
    browser.show_as(page.driver, width, 900, not dark)
    for place in ("#cores", "#network"):  # one in view, one not
        page.see(place)
        page.wait(f"return {drawings}.filter((drawing, i) => drawing !== arguments[0][i]).length > arguments[1]",
                  before, 1 + (place == "#network"))
    after = page.run("return " + drawings)
    page.run("scrollTo(0, 0); dispatchEvent(new Event('beforeprint'))")
    assert page.run("return " + drawings)[1:] == (after if dark else before)[1:]  # paper is light
    page = open_page(spike, width=width, height=900, dark=dark)
    assert page.printed().count(b"/Subtype /Image") > len(PANELS)


def test_hostile_names_are_text(open_page, tmp_path):
    for number in (1, 2):
        run = spike_run(tmp_path, f"<b>run{number}<b>", names=HOSTILE, disk="<s>disk", interface="</style><u>net")
        odd = [["Time(usec)", "load(constructor)", "toString(__proto__)"], *([t * 1e6, 1.0, 2.0] for t in range(9))]
        for source in ("odd", "pressure"):
            (run / f"{source}profiler_{run.name}.txt").write_text(columns([25] * 3, odd))
        cpu = run / f"cpuprofiler_{run.name}.txt"
        cpu.write_text(cpu.read_text().replace("cpu1steal(%)", "toString(%) "))
    runs = sorted(tmp_path.iterdir())
    for name, chosen in (("one", runs[:1]), ("two", runs)):
        page = open_page(make_page(tmp_path / f"{name}.html", *chosen))
        for panel in PANELS:
            page.see(f"#{panel}")
        page.pointer("#cores", ("move", 0.3))
        page.wait("return document.querySelector('.moment tbody tr')")
        assert sorted(page.texts("#processes tbody .name:nth-child(2)")) == sorted(HOSTILE * len(chosen))
        assert page.run("return document.querySelectorAll('img, s, u, main script, .tables script').length") == 0
        assert page.text("#pressure-constructor .entry .label") == "load"
        assert page.texts("#odd-__proto__ h3") == ["odd__proto__"]
        assert not any("toString" in text for text in page.texts("#cores .entry"))
        assert "<s>disk read" in " ".join(page.texts("#disks .entry"))
        assert "<b>run1<b>" in page.text("h1" if name == "one" else ".runs")
        assert page.complaints() == []
    page.picture("hostile")


def test_names_do_not_turn_what_stands_beside_them(open_page, tmp_path):
    turned, hebrew = "\u202egnp.exe", "\u05d0\u05d1\u05d2"
    run = spike_run(tmp_path, "turned", names=(hebrew, turned, "last"), interface=hebrew)
    MadeRun.metadata(MadeRun(tmp_path / "other", "turned"), "2026-11-23T22:59:30.000000000Z", hebrew)
    (tmp_path / "other/turned.run.json").rename(tmp_path / "turned.run.json")
    page = open_page(make_page(tmp_path / "page.html", run))
    places = """return [...document.querySelectorAll('.facts, .tile-rest, .entry')].map((element) => {
        const texts = document.createTreeWalker(element, NodeFilter.SHOW_TEXT), places = [], range = new Range();
        for (let text; (text = texts.nextNode());) {
          const whole = text.parentNode.tagName === 'BDI';
          for (let i = 0; i < (whole ? 1 : text.length); i++) {
            range.setStart(text, whole ? 0 : i);
            range.setEnd(text, whole ? text.length : i + 1);
            if (range.toString().trim()) places.push(Math.round(range.getBoundingClientRect().top / 8) * 1e5
              + range.getBoundingClientRect().left);
          }
        }
        return places.every((place, i) => i === 0 || place >= places[i - 1]) ? '' : element.textContent;
      }).filter(Boolean)"""
    assert page.run(places) == []
    assert sorted(page.texts("#processes tbody .name")) == sorted(["last", "\ufffdgnp.exe", hebrew])
    page.picture("turned")


def test_tells_where_and_when_it_was_recorded(open_page, tmp_path):
    run = MadeRun(tmp_path, "told")
    run.cpu((t, [50, 20]) for t in range(1, 61))
    run.metadata("2026-11-23T22:59:30.000000000-05:30", "<i>host</i>", labels={"<b>": "</title><p>"},
                 missing=[("gpu", "<u>none</u>")], marks=[(31, "<b>pressed</b>")])
    page = open_page(make_page(tmp_path / "page.html", run.folder))
    assert page.text(".facts").startswith("<i>host</i> · 2026-11-23 22:59:30 -05:30 · ")
    page.run("document.querySelector('#recording').open = true")
    told = page.text("#recording")
    assert all(text in told for text in ("<b>\n</title><p>", "Not measured\ngpu: <u>none</u>"))
    assert page.text(".mark") == "<b>pressed</b>" and "Marks\n23:00:01.0 <b>pressed</b>" in told
    page.pointer("#cores", ("move", 0.5))
    page.wait("return document.querySelector('.readout').innerText.startsWith('23:00:00')")
    assert "23:00:00" in page.texts("#cores .dygraph-axis-label-x")
    assert page.complaints() == []
    page.picture("told")
    run.metadata("garbage", "host")
    page = open_page(make_page(tmp_path / "page.html", run.folder))
    assert page.text(".facts") == "host · 59.0\u202fs"
    run.metadata("2026-11-23T23:59:30.000000000+00:00", "host")
    run.processes([(t, [(1, "one", t * 0.3, 30.0)]) for t in range(1, 61)])
    page = open_page(make_page(tmp_path / "page.html", run.folder, "--to", "50", "--process", "o*"))
    assert page.text(".part") == "A part of the recording: from 23:59:30 to 00:00:20; of processes only o*"
    page.pointer("#cores", ("move", 0.7))
    page.wait("return document.querySelector('.readout').innerText.startsWith('11-24 00:00:0')")
    assert "11-24" in page.texts("#cores .dygraph-axis-label-x")


def test_several_runs_lie_over_each_other(open_page, tmp_path):
    short, long = spike_run(tmp_path / "1", "run"), spike_run(tmp_path / "2", "run", seconds=90, spike=70)
    page = open_page(make_page(tmp_path / "page.html", short, long))
    assert page.texts("#cores .entry .rest") == ["· 1/run", "· 2/run"]
    assert {text.split(" · ")[1] for text in page.texts("#processes-cpu .entry .rest")} == {"1/run", "2/run"}
    colours = page.run("""return ['#cores .swatch', '#processes-cpu .swatch'].map((patches) =>
        new Set([...document.querySelectorAll(patches)].map((patch) => patch.style.background)).size)""")
    assert colours == [2, 2]
    strip = page.pixels(".strip canvas")
    assert "1" in strip["ink"][int(0.9 * strip["width"])::strip["width"]]  # where only one of them still runs
    page.pointer("#cores", ("move", 69.5 / 90))
    page.wait("return document.querySelector('.moment tbody tr')")
    assert [text.split()[0:2] for text in page.texts(".moment tbody tr:first-child")] == [["200", "spiky"]]
    page.picture("several")


def test_what_there_is_no_room_for_is_counted_and_listed_when_asked_for(open_page, tmp_path):
    runs = []
    for number in range(2):
        run = MadeRun(tmp_path / str(number), "many")
        run.cpu([(t, [50] * 40) for t in (1, 2)], cores=40)
        zones = [[f"zone{i}(C)", *(65.0 if (i, t) == (17, 2) else 60.0 - i for t in (1, 2))] for i in range(20)]
        clocks = [[f"cpu{i}{limit}(MHz)", clock, clock] for i in range(9)
                  for limit, clock in (("", 600.0 + i), ("min", 300.0), ("max", 2800.0))]
        for source, found in (("thermal", zones), ("freq", clocks)):
            rows = zip(*[["Time(usec)", 1e6, 2e6], *found])
            run.write(f"{source}profiler", columns([20] * (1 + len(found)), rows))
        runs.append(run.folder)
    page = open_page(make_page(tmp_path / "one.html", runs[0]))
    shown = [f"#{panel} .entry[aria-pressed=true] .label" for panel in ("thermal-C", "freq-MHz")]
    assert [page.texts(entries) for entries in shown] == [
        ["zone17", *(f"zone{i}" for i in range(5))], [f"cpu{i}" for i in (8, 7, 6, 5, 4, 3)]]
    assert page.texts(".unfold") == ["+ 12 more", "+ 19 more"]
    page.run("document.querySelectorAll('.unfold').forEach((button) => button.click())")
    assert len(page.texts("#thermal-C .entry")) == 20
    assert page.texts("#freq-MHz .entry .label")[8:11] == ["cpu0", "cpu8 min", "cpu8 max"]
    page.picture("many")
    page = open_page(make_page(tmp_path / "two.html", *runs))
    names = page.texts(".heat-names span")
    assert ("1 cpu28" in names, "2 cpu28" in names, page.texts(".left")) == (True, True, ["+ 16 more cores"])


def test_a_run_without_the_usual(open_page, tmp_path):
    run = MadeRun(tmp_path, "states")
    rows = [["Time(usec)", "battery(uW)"], *([t * 1e6, 2.4e6 + t] for t in range(1, 21))]
    run.write("powerprofiler", columns([20] * 2, rows))
    run.processes([(1, [(5, "early", 0.0, 40.0)])])
    page = open_page(make_page(tmp_path / "page.html", run.folder))
    assert page.texts("#power-uW .dygraph-axis-label-y") == ["0", "1M", "2M"]
    assert page.texts("#processes-cpu .entry .label") == ["early"]
    assert page.texts(".tiles") == []
    full = page.run("""const {width, height} = document.querySelector('.strip canvas');
        const strip = document.querySelector('.strip canvas').getContext('2d').getImageData(0, height - 9, width, 1);
        return strip.data.filter((value, i) => i % 4 === 3 && value > 200).length / width""")
    assert full > 0.9
    page.picture("states")


def test_one_sample_of_a_day_is_seen_and_found(open_page, tmp_path):
    run = MadeRun(tmp_path, "day")
    day, spike = 86400, 50000
    run.cpu((t, [100 if t == spike else 3, 100 if t == spike else 3]) for t in range(1, day + 1))
    run.processes([(t, [*((pid, f"steady{pid}", t * 0.3, 30.0) for pid in range(10, 19)),
                        *([(2, "brief", 9.5, 95.0)] * (t == spike))]) for t in range(10, day + 1, 10)])
    page = open_page(make_page(tmp_path / "page.html", run.folder))
    page.see("#cores")
    assert page.run("return document.querySelector('#cores').dataset.to") == str(day)
    assert page.run("""const {width} = document.querySelector('.heat canvas');
        const row = document.querySelector('.heat canvas').getContext('2d').getImageData(0, 3, width, 1).data;
        const red = row.filter((_, i) => i % 4 === 0);
        return Math.max(...red) - Math.min(...red)""") > 40

    def columns_with_ink(row):
        picture = page.pixels("#cores canvas:not(.heat canvas)")
        line = picture["ink"][row * picture["width"]:(row + 1) * picture["width"]]
        return [x for x, ink in enumerate(line) if ink == "1" and x > 56]
    assert "min–max per 67.1" in page.text("#cores header")
    seen = columns_with_ink(30)
    assert seen and seen[-1] - seen[0] < 4
    assert page.run("""return document.querySelector('#cores canvas').getContext('2d')
        .getImageData(arguments[0], 30, 1, 1).data[3]""", seen[0]) < 128  # a line shows through
    assert page.texts("#processes tbody tr:first-child td")[-2:] == ["10\u202fs", "1d 0:00:00"]
    width = page.pixels("#cores canvas:not(.heat canvas)")["width"]
    part = (seen[0] - 52) / (width - 53)
    assert part == pytest.approx(spike / day, abs=0.005)
    page.pointer("#cores", ("move", part))  # one pixel, on which the page has the spike and its name
    page.wait("return document.querySelector('#cores .value').innerText === '3.00…100'")
    assert page.texts(".moment tbody .name")[:2] == ["brief", "steady10"]
    assert page.text(".moment tbody .peak") == "↑95.0"
    page.picture("day")
    page.pointer("#cores", ("move", part - 0.002), ("down", part - 0.002), ("move", part + 0.006),
                 ("up", part + 0.006))
    from_, to = page.wait("""const {from, to} = document.querySelector('#cores').dataset;
        return to - from < 1000 && [Number(from), Number(to)]""")
    assert from_ < spike < to
    page.pointer("#cores", ("move", (spike - from_) / (to - from_)))
    page.wait("return document.querySelector('#cores .value').innerText === '3.00…100'")
    page.picture("day-close")


def test_figures_are_those_of_show(open_page, spike, tmp_path):
    shown = json.loads(corvane("show", "--json", spike.parent / "spike").stdout)
    page = open_page(spike)
    rows = page.run("""document.querySelectorAll('#figures .more').forEach((more) => more.click());
        return [...document.querySelectorAll('#figures tbody tr')].map((row) => [...row.cells].map(
            (cell) => cell.dataset.exact ?? cell.textContent))""")
    keys = ["count", "min", "mean", "p50", "p95", "p99", "max"]
    assert {tuple(row[:4]): [float(text) for text in row[4:]] for row in rows} == {
        tuple(metric[key] for key in ("source", "entity", "metric", "unit")): [metric[key] for key in keys]
        for metric in shown["metrics"]}
    cells = page.run("""return [...document.querySelectorAll('#processes tbody tr')].map((row) =>
        [...row.cells].filter((cell) => cell.dataset.exact).map((cell) => Number(cell.dataset.exact)))""")
    order = ["pid", "cpu_seconds", "cpu_mean", "cpu_peak", "pss_first_kb", "pss_last_kb", "pss_peak_kb",
             "pss_growth_kb_per_min", "first", "last"]
    assert cells == [[process[key] for key in order] for process in shown["processes"]]
