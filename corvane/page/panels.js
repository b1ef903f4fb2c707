// Which panels a run has, from what was measured: the known sources first, then whatever else there
// is by its unit. What never was above 0 is named, not drawn.

const layout = [
  {source: 'cpu', id: 'cores', title: 'Processor', ceiling: 100,
    labels: {TotalCPU: 'all cores', CPUStealTime: 'taken by the hypervisor'}},
  {id: 'processes-cpu', title: 'Processes by processor time', unit: '% of a core', processes: 'cpu'},
  {source: 'mem', id: 'memory', title: 'Memory and swap', only: 'KB',
    labels: {Used_Mem: 'used', Swap_Used: 'swap used'}},
  {id: 'processes-memory', title: 'Processes by memory', unit: 'KB', processes: 'pss'},
  {source: 'io', id: 'disks', title: 'Disks', labels: {read: 'read', write: 'written'}},
  {source: 'net', id: 'network', title: 'Network', labels: {received: 'received', sent: 'sent'}},
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
    && (!entry.labels || entry.labels[metric]) && (!entry.only || unit === entry.only);
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
  const ordered = active.filter((item) => rankOfItem(item) < mostLines)
    .sort((one, other) => one.run.number - other.run.number || rankOfItem(one) - rankOfItem(other));
  const lines = ordered.map(({run, metric}) => {
    const rank = ranks.get(keyOf(metric));
    return {
      label: labelOf(metric, entry.labels, active),
      rest: several ? ['· ', foreign(run.label)] : null,
      series: metric.series(),
      colour: several ? run.colour : rank,
      dash: several ? dashes[rank % dashes.length] : null,
      hidden: rank >= (several ? 2 : shownAtFirst),
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

/// The lines' order: as the layout has it for the machine as a whole, else the busiest first, the
/// lines of one device beside each other.
function rankOf(active, labels) {
  const weight = new Map();
  for (const {metric} of active) {
    weight.set(metric.entity, Math.max(weight.get(metric.entity) || 0, metric.mean));
  }
  const order = labels ? Object.keys(labels) : [];
  const unique = [...new Map(active.map(({metric}) => [keyOf(metric), metric])).values()];
  unique.sort((one, other) => weight.get(other.entity) - weight.get(one.entity)
    || order.indexOf(one.metric) - order.indexOf(other.metric));
  return new Map(unique.map((metric, rank) => [keyOf(metric), rank]));
}

function labelOf({entity, metric}, labels, active) {
  const word = labels ? labels[metric] : metric.replace(/_/g, ' ');
  if (!entity) return word;
  const alone = new Set(active.map((other) => other.metric.metric)).size === 1;
  return alone ? entity : `${entity} ${word}`;
}

function idleNames(found, active) {
  const busy = new Set(active.map(({metric}) => metric.entity));
  return [...new Set(found.map(({metric}) => metric.entity))].filter((name) => name && !busy.has(name));
}

const mostCoreRows = {alone: 512, together: 64};

function coreRows(runs) {
  return runs.flatMap((run) => run.metrics
    .filter(({source, entity, metric}) => source === 'cpu' && entity && metric === entity)
    .map((metric) => ({label: runs.length > 1 ? `${run.number + 1} ${metric.entity}` : metric.entity,
      series: metric.series()}))).slice(0, runs.length > 1 ? mostCoreRows.together : mostCoreRows.alone);
}
