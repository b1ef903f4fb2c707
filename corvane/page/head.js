// The head of the page: what was recorded, and how.

function headOf(runs, part) {
  const [run] = runs;
  const title = runs.length > 1 ? `${runs.length} runs` : run.label;
  document.title = `${title} · corvane`;
  const parts = runs.length > 1 ? []
    : [...run.about.machine.filter(Boolean).map(foreign), startOf(run), duration(run.run.seconds)];
  return make('header', {class: 'page-head'},
    make('p', {class: 'brand'}, 'corvane'), make('h1', {}, title),
    make('p', {class: 'facts'}, parts.filter(Boolean).flatMap((part, i) => (i ? [' · ', part] : [part]))),
    runs.length > 1 ? runList(runs) : null, partOf(runs, part));
}

/// What the page is of, where that is not all of the runs.
function partOf(runs, part) {
  if (!part) return null;
  const clock = makeClock(runs.length === 1 ? runs[0].run.start : null);
  const words = [];
  if (part.seconds) {
    const [from, to] = part.seconds;
    const end = to === null ? 'the end' : clock.label(to, to - from < 10 ? 0.1 : 1);
    words.push(`from ${clock.label(from, to - from < 10 ? 0.1 : 1)} to ${end}`);
  }
  if (part.processes.length) words.push('of processes only ', foreign(part.processes.join(', ')));
  return make('p', {class: 'part'}, 'A part of the recording: ',
    words.flatMap((word, i) => (i && part.seconds && i === 1 ? ['; ', word] : [word])));
}

function startOf(run) {
  const clock = makeClock(run.run.start);
  return clock.known ? `${clock.day(0)} ${clock.label(0, 1)} ${clock.zone}` : '';
}

function runList(runs) {
  return make('ul', {class: 'runs'}, runs.map((run) => make('li', {}, swatch(run.colour),
    `${run.number + 1} `, make('b', {}, foreign(run.label)), [startOf(run), duration(run.run.seconds)].filter(Boolean).join(' · '))));
}

/// How it was recorded: what the metadata say, the sources, what could not be measured.
function recordingOf(runs) {
  return make('details', {class: 'recording', id: 'recording'}, make('summary', {}, 'How it was recorded'),
    runs.map((run) => make('div', {class: 'columns'},
      make('div', {}, runs.length > 1 ? make('h3', {}, swatch(run.colour), run.label) : null,
        make('h3', {}, 'Sources'), sourceTable(run.run.sources),
        listOf('Not measured', run.about.missing), listOf('Not whole', run.notes), listOf('Marks', marksOf(run))),
      run.about.facts.length
        ? make('div', {}, make('h3', {}, 'Machine and recording'), factList(run.about.facts)) : null)));
}

function marksOf(run) {
  const clock = makeClock(run.run.start);
  return run.about.marks.map(([moment, text]) => `${clock.label(moment, 0.1)} ${text}`);
}

function sourceTable(sources) {
  const row = ({source, samples, expected, period_ms: period}) => make('tr', {},
    make('td', {class: 'name'}, source), make('td', {class: 'number'}, fixed(samples, 0)),
    make('td', {class: 'number'}, fixed(expected, 0)),
    make('td', {class: 'number'}, fixed(Math.max(0, expected - samples), 0)),
    make('td', {class: 'number'}, period === null ? none : fixed(period, 0)));
  const heading = (text, kind = 'number') => make('th', {class: kind, scope: 'col'}, text);
  const period = heading('Period');
  period.append(make('span', {class: 'unit'}, 'ms'));
  const headings = [heading('Source', 'name'), ...['Samples', 'expected', 'missed'].map((text) => heading(text))];
  return make('table', {}, make('thead', {}, make('tr', {}, headings, period)),
    make('tbody', {}, sources.map(row)));
}

function listOf(title, lines) {
  if (!lines.length) return null;
  return [make('h3', {}, title), make('ul', {class: 'notes'}, lines.map((line) => make('li', {}, line)))];
}

function factList(facts) {
  return make('dl', {}, facts.flatMap(([name, value]) => [make('dt', {}, name), make('dd', {}, value)]));
}
