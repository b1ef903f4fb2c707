// Puts the page together. Panels are drawn when they come into view.

function start() {
  readColours();
  Dygraph.PLUGINS = [Dygraph.Plugins.Grid, Dygraph.Plugins.Axes];
  const page = readPage();
  const runs = page.runs.map((run, number) => {
    run.number = number;
    run.colour = (run.side ?? number) % 16;
    unpackRun(run, page.arrayOf);
    return run;
  });
  const {first, last} = endsOf(runs);
  const clock = makeClock(runs.length === 1 ? runs[0].run.start : null, {first, last});
  const timeline = makeTimeline(first, last);
  const marks = runs.flatMap((run) => run.about.marks)
    .filter(([moment]) => moment >= first && moment <= last);
  const drawn = new Drawn(runs);
  const {panels, quiet} = panelsOf(runs, drawn);
  const charts = panels.map((panel) => new Chart(panel, timeline, clock, marks));
  const moment = new Moment(runs, timeline, clock, drawn);
  moment.element.hidden = !runs.some((run) => run.processes.length);
  const overview = new Overview(timeline, clock, overviewLines(runs), marks,
    Math.max(...runs.map((run) => run.run.seconds)));
  const given = page.tables.map(givenTable);
  const tables = [...processTables(runs, drawn, clock, last - first), figuresTable(runs)];

  document.body.replaceChildren(
    make('div', {class: 'page'}, headOf(runs, page.part),
      ...given.map((table) => table.element),
      runs.length === 1 ? tilesOf(runs[0]) : null,
      recordingOf(runs), overview.element,
      make('div', {class: 'body'},
        make('main', {}, charts.map((chart) => chart.element), quietNote(quiet)), moment.element),
      make('div', {class: 'tables'}, tables.map((table) => table.element)),
      footOf(page)));

  const redraw = () => {
    charts.forEach((chart) => chart.renew());
    overview.draw();
  };
  connect(timeline, charts, overview, moment);
  drawn.listeners.push(() => {
    for (const chart of charts) {
      if (chart.panel.processes) chart.setLines(drawn.lines(chart.panel.processes));
    }
    moment.draw();
  });
  followKeys(timeline, stepper(charts, timeline));
  drawWhenSeen(charts);
  onThemeChange(redraw);
  aroundPrint(() => {
    document.querySelector('#recording').open = true;
    charts.forEach((chart) => chart.draw());
  }, redraw);
  overview.draw();
  moment.draw();
  new ResizeObserver(perFrame(redraw)).observe(document.querySelector('main'));
}

/// A new stretch draws the panels in view; a new moment only moves the cursors.
function connect(timeline, charts, overview, moment) {
  let stretch = '';
  timeline.onChange(() => {
    const now = `${timeline.from} ${timeline.to}`;
    const moved = now !== stretch;
    stretch = now;
    for (const chart of charts) {
      if (moved) chart.stale = true;
      if (!chart.visible) continue;
      if (chart.stale) chart.draw();
      else chart.drawMoment();
    }
    overview.drawMoment();
    moment.draw();
  });
}

function drawWhenSeen(charts) {
  const chartOf = new Map(charts.map((chart) => [chart.element, chart]));
  const observer = new IntersectionObserver((entries) => {
    for (const {target, isIntersecting} of entries) {
      const chart = chartOf.get(target);
      chart.visible = isIntersecting;
      if (isIntersecting && chart.stale) chart.renew();
    }
  }, {rootMargin: '150px'});
  charts.forEach((chart) => observer.observe(chart.element));
}

/// From where the first period begins to the last sample; stretches of a long run can reach farther.
function endsOf(runs) {
  const begins = runs.flatMap((run) => run.metrics.map((metric) => metric.series())
    .concat(run.processes.flatMap((process) => [process.cpu(), process.pss()]))
    .filter((series) => series && series.exact && series.length)
    .map((series) => series.begin(0)));
  const first = Math.min(...begins, ...runs.map((run) => run.ends[0]));
  const last = Math.max(...runs.map((run) => run.ends[1]));
  return Number.isFinite(first) && last > first ? {first, last} : {first: 0, last: 1};
}

function overviewLines(runs) {
  return runs.map((run) => {
    const total = run.metrics.find(({metric}) => metric === 'TotalCPU');
    const any = total || run.metrics.find((metric) => metric.series() && metric.max > metric.min)
      || run.metrics.find((metric) => metric.series());
    return any && {series: any.series(), colour: runs.length > 1 ? run.colour : null};
  }).filter((line) => line && line.series);
}

/// The next sample of the finest line there is, in either direction.
function stepper(charts, timeline) {
  const series = charts.flatMap((chart) => chart.lines.map((line) => line.series)).filter(Boolean);
  const finest = series.sort((one, other) => other.length - one.length)[0];
  return (moment, direction) => {
    if (!finest) return moment;
    const place = finest.place(moment + (direction > 0 ? 1e-9 : -1e-9));
    const next = direction > 0 ? place + (finest.time[place] <= moment ? 1 : 0) : place - 1;
    return finest.time[Math.min(finest.length - 1, Math.max(0, next))] ?? timeline.first;
  };
}

function quietNote(quiet) {
  if (!quiet.length) return null;
  return make('p', {class: 'note quiet'}, `Recorded, and 0 throughout: ${quiet.join(', ')}.`);
}

start();
