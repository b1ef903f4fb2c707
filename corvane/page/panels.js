// Which panels a run has, from what was measured: the known sources first, then whatever else there
// is by its unit. What never was above 0 is named, not drawn.

/// In a map, as strangers' words are looked up in it.
const wordsFor = (words) => new Map(Object.entries(words));
const trafficWords = {
  io: wordsFor({read: 'read', write: 'written'}),
  net: wordsFor({received: 'received', sent: 'sent'}),
};

const layout = [
  {source: 'cpu', id: 'cores', title: 'Processor',
    labels: wordsFor({TotalCPU: 'all cores', CPUStealTime: 'taken by the hypervisor'})},
  {id: 'processes-cpu', title: 'Processes by processor time', unit: '% of a core', processes: 'cpu'},
  {source: 'mem', id: 'memory', title: 'Memory and swap', only: 'KB',
    labels: wordsFor({Used_Mem: 'used', Swap_Used: 'swap used'})},
  {id: 'processes-memory', title: 'Processes by memory', unit: 'KB', processes: 'pss'},
  {source: 'io', id: 'disks', title: 'Disks', labels: trafficWords.io},
  {source: 'net', id: 'network', title: 'Network', labels: trafficWords.net},
  {source: 'gpu', title: 'GPU'},
  {source: 'adsp', title: 'Audio DSP'},
  {source: 'cdsp', title: 'Compute DSP'},
  {source: 'ddr', title: 'Memory traffic'},
  {source: 'thermal', title: 'Temperature'},
  {source: 'freq', title: 'Core frequencies'},
  {source: 'power', title: 'Power'},
  {source: 'pressure', title: 'Pressure'},
];

const mostLines = 8;
const shownAtFirst = 6;

/// The panels of the runs, in order, and the names of the sources that stayed at 0 throughout.
function panelsOf(runs, drawn) {
  const sources = [...new Set(runs.flatMap((run) => run.metrics.map((metric) => metric.source)))];
  const unknown = sources.filter((source) => !layout.some((entry) => entry.source === source))
    .map((source) => ({source, title: source}));
  const quiet = [];
  const panels = [...layout, ...unknown].flatMap((entry) => {
    if (entry.processes) return processPanel(entry, runs, drawn);
    const panelsOfSource = sourcePanels(entry, runs);
    if (!panelsOfSource.length && sources.includes(entry.source)) quiet.push(entry.title);
    return panelsOfSource;
  });
  return {panels, quiet};
}

function processPanel(entry, runs, drawn) {
  if (!runs.some((run) => run.processes.some((process) => process[entry.processes]()))) return [];
  const largest = Math.max(0, ...runs.flatMap((run) => run.processes).map((process) => process.pss_peak_kb || 0));
  const {word, factor} = entry.unit === 'KB' ? scaleOf('KB', largest) : {word: entry.unit, factor: 1};
  return [{...entry, unit: word, factor, lines: drawn.lines(entry.processes)}];
}

/// A panel for each unit of the source.
function sourcePanels(entry, runs) {
  const wanted = ({source, metric, unit}) => source === entry.source
    && (!entry.labels || entry.labels.has(metric)) && (!entry.only || unit === entry.only);
  const found = runs.flatMap((run) => run.metrics.filter(wanted).map((metric) => ({run, metric})));
  const units = [...new Set(found.map(({metric}) => metric.unit))];
  return units.map((unit) => {
    const ofUnit = found.filter(({metric}) => metric.unit === unit);
    const id = units.length > 1 || !entry.id ? `${entry.source}-${unit.replace(/\W+/g, '')}` : entry.id;
    return unitPanel({...entry, id}, unit, ofUnit, runs);
  }).filter(Boolean);
}

function unitPanel(entry, unit, found, runs) {
  const several = runs.length > 1;
  const active = found.filter(({metric}) => metric.max > 0 || metric.min < 0);
  if (!active.length) return null;
  const ranks = rankOf(active, entry.labels);
  const {word, factor} = scaleOf(unit, Math.max(...active.map(({metric}) => metric.max)));
  const rankOfItem = ({metric}) => ranks.get(keyOf(metric));
  const ordered = [...active].sort((one, other) => one.run.number - other.run.number || rankOfItem(one) - rankOfItem(other));
  const lines = ordered.map(({run, metric}) => {
    const rank = ranks.get(keyOf(metric));
    const shown = several ? 2 : shownAtFirst;
    return {
      label: labelOf(metric, entry.labels, active),
      rest: several ? ['· ', foreign(run.label)] : null,
      series: metric.series(),
      colour: several ? run.colour : rank % 8,
      dash: dashes[(several ? rank : Math.floor(rank / 8)) % dashes.length],
      hidden: rank >= shown || isLimit(metric),
      folded: rank >= mostLines,
    };
  }).filter((line) => line.series);
  if (!lines.length) return null;
  return {
    id: entry.id, title: entry.title, unit: word, factor, lines, idle: idleNames(found, active),
    ceiling: unit === '%' ? 100 : null,
    heat: entry.source === 'cpu' ? coreRows(runs) : null,
  };
}

function keyOf(metric) {
  return `${metric.entity}\n${metric.metric}`;
}

/// The least and the most that a core is allowed: cpu0min and cpu0max of cpu0.
function isLimit({entity, metric}) {
  return entity !== '' && metric !== entity && metric.startsWith(entity);
}

/// The lines' order: as the layout has it for the machine as a whole, else the highest peak first,
/// the lines of one device beside each other, limits at the end.
function rankOf(active, labels) {
  const peaks = new Map();
  const ownerOf = ({entity, metric}) => entity || (labels ? '' : metric);
  for (const {metric} of active) {
    const peak = isLimit(metric) ? 0 : Math.max(metric.max, -metric.min);
    peaks.set(ownerOf(metric), Math.max(peaks.get(ownerOf(metric)) || 0, peak));
  }
  const order = labels ? [...labels.keys()] : [];
  const unique = [...new Map(active.map(({metric}) => [keyOf(metric), metric])).values()];
  unique.sort((one, other) => isLimit(one) - isLimit(other)
    || peaks.get(ownerOf(other)) - peaks.get(ownerOf(one))
    || order.indexOf(one.metric) - order.indexOf(other.metric));
  return new Map(unique.map((metric, rank) => [keyOf(metric), rank]));
}

function labelOf({entity, metric}, labels, active) {
  const word = labels ? labels.get(metric) : metric.replace(/_/g, ' ');
  if (!entity) return word;
  if (metric.startsWith(entity)) return `${entity} ${metric.slice(entity.length)}`.trim();
  const alone = new Set(active.map((other) => other.metric.metric)).size === 1;
  return alone && !labels ? entity : `${entity} ${word}`;
}

function idleNames(found, active) {
  const busy = new Set(active.map(({metric}) => metric.entity));
  return [...new Set(found.map(({metric}) => metric.entity))].filter((name) => name && !busy.has(name));
}

const mostCoreRows = {alone: 512, together: 64};

/// From the first period of a source to its last sample.
function endsOfSource(run, source) {
  const found = run.metrics.find((metric) => metric.source === source && metric.series());
  const series = found && found.series();
  return series ? [series.begin(0), series.time[series.length - 1]] : run.ends;
}

/// The first cores of each run, and how many there are besides.
function coreRows(runs) {
  const alone = runs.length === 1;
  const most = alone ? mostCoreRows.alone : Math.max(1, Math.floor(mostCoreRows.together / runs.length));
  const coresOf = (run) => run.metrics
    .filter(({source, entity, metric}) => source === 'cpu' && entity && metric === entity);
  const rows = runs.flatMap((run) => coresOf(run).slice(0, most).map((metric) => ({
    label: alone ? metric.entity : `${run.number + 1} ${metric.entity}`, series: metric.series(),
    ends: metric.count ? endsOfSource(run, 'cpu') : [Infinity, -Infinity]})));
  return {rows, left: runs.flatMap(coresOf).length - rows.length};
}
