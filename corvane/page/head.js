// The head of the page: what was recorded and how, and the headline figures.

function headOf(runs, clock) {
  const [run] = runs;
  const title = runs.length > 1 ? `${runs.length} runs` : run.label;
  document.title = `${title} · corvane`;
  const parts = runs.length > 1 ? [] : [...run.about.machine,
    clock.known ? `${clock.day(0)} ${clock.label(0, 1)} ${clock.zone}` : '', duration(run.run.seconds)];
  return make('header', {class: 'page-head'},
    make('p', {class: 'brand'}, 'corvane'), make('h1', {}, title),
    make('p', {class: 'facts'}, parts.filter(Boolean).join(' · ')),
    runs.length > 1 ? runList(runs) : null);
}

function runList(runs) {
  return make('ul', {class: 'runs'}, runs.map((run) => make('li', {}, swatch(run.colour),
    make('b', {}, run.label), ` ${run.run.start || ''} ${duration(run.run.seconds)}`)));
}

/// How it was recorded: what the metadata say, the sources, what could not be measured.
function recordingOf(runs) {
  return make('details', {class: 'recording', id: 'recording'}, make('summary', {}, 'How it was recorded'),
    runs.map((run) => make('div', {class: 'columns'},
      make('div', {}, runs.length > 1 ? make('h3', {}, swatch(run.colour), run.label) : null,
        make('h3', {}, 'Sources'), sourceTable(run.run.sources), notesOf(run)),
      run.about.facts.length
        ? make('div', {}, make('h3', {}, 'Machine and recording'), factList(run.about.facts)) : null)));
}

function sourceTable(sources) {
  const row = ({source, samples, expected, period_ms: period}) => make('tr', {},
    make('td', {class: 'name'}, source), make('td', {class: 'number'}, fixed(samples, 0)),
    make('td', {class: 'number'}, fixed(expected, 0)),
    make('td', {class: 'number'}, fixed(Math.max(0, expected - samples), 0)),
    make('td', {class: 'number'}, period === null ? none : fixed(period, 0)));
  const headings = ['Samples', 'expected', 'missed'].map((text) => make('th', {class: 'number', scope: 'col'}, text));
  return make('table', {}, make('thead', {}, make('tr', {}, make('th', {class: 'name', scope: 'col'}, 'Source'), headings,
    make('th', {class: 'number', scope: 'col'}, 'Period', make('span', {class: 'unit'}, 'ms')))),
  make('tbody', {}, sources.map(row)));
}

function notesOf(run) {
  if (!run.notes.length) return null;
  return [make('h3', {}, 'Not measured, or not whole'), make('ul', {class: 'notes'}, run.notes.map((note) => make('li', {}, note)))];
}

function factList(facts) {
  return make('dl', {}, facts.flatMap(([name, value]) => [make('dt', {}, name), make('dd', {}, value)]));
}

function tilesOf(run) {
  const metric = (source, name, entity = '') =>
    run.metrics.find((other) => other.source === source && other.metric === name && other.entity === entity);
  const sumOf = (source, name) => run.metrics.filter((other) => other.source === source && other.metric === name
    && other.entity !== 'lo').sort((a, b) => b.mean - a.mean)[0];
  const percent = (value) => `${figure(value)}${thin}%`;
  const tile = (target, name, value, ...rest) => make('a', {class: 'tile', href: `#${target}`},
    make('span', {class: 'tile-name'}, name), make('span', {class: 'tile-value'}, value), make('span', {class: 'tile-rest'}, ...rest));
  const tiles = [];
  const total = metric('cpu', 'TotalCPU');
  if (total) tiles.push(tile('cores', 'Processor, mean', percent(total.mean), `p95 ${percent(total.p95)}, peak ${percent(total.max)}`));
  const used = metric('mem', 'Used_Mem');
  const all = metric('mem', 'Total_Mem');
  if (used) tiles.push(tile('memory', 'Memory, peak', quantity(used.max, 'KB'),
    all ? `of ${quantity(all.max, 'KB')}, mean ${quantity(used.mean, 'KB')}` : `mean ${quantity(used.mean, 'KB')}`));
  const swap = metric('mem', 'Swap_Used');
  if (swap && swap.max > 0) tiles.push(tile('memory', 'Swap, peak', quantity(swap.max, 'KB'), `mean ${quantity(swap.mean, 'KB')}`));
  for (const [source, target, name, one, other, words] of [
    ['io', 'disks', 'Disk', 'read', 'write', ['read', 'written']],
    ['net', 'network', 'Network', 'received', 'sent', ['received', 'sent']]]) {
    const pair = [sumOf(source, one), sumOf(source, other)].filter((found) => found && found.max > 0);
    if (!pair.length) continue;
    const peak = pair.sort((a, b) => b.max - a.max)[0];
    tiles.push(tile(target, `${name}, peak`, quantity(peak.max, 'MB/s'),
      `${words[peak.metric === one ? 0 : 1]}, ${peak.entity}; mean ${quantity(peak.mean, 'MB/s')}`));
  }
  const [top] = topOf(run.processes, 'cpu_seconds', 1);
  if (top) tiles.push(tile('processes', 'Most processor time', `${figure(top.cpu_seconds)}${thin}s`, `${top.name} ${top.pid}`));
  const [large] = topOf(run.processes, 'pss_peak_kb', 1);
  if (large) tiles.push(tile('processes', 'Most memory', quantity(large.pss_peak_kb, 'KB'), `${large.name} ${large.pid}`));
  return make('div', {class: 'tiles'}, tiles);
}
