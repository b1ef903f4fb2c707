// The headline figures of a run, each a link to where they come from.

function tilesOf(run) {
  const tiles = [
    processorTile(run), memoryTile(run), swapTile(run),
    trafficTile(run, {source: 'io', target: 'disks', name: 'Disk'}),
    trafficTile(run, {source: 'net', target: 'network', name: 'Network'}),
    processTile(run, 'cpu_seconds', 'Most processor time', 's'),
    processTile(run, 'pss_peak_kb', 'Most memory', 'KB'),
  ].filter(Boolean);
  return tiles.length ? make('div', {class: 'tiles'}, tiles) : null;
}

function tile(target, name, value, rest) {
  return make('a', {class: 'tile', href: `#${target}`}, make('span', {class: 'tile-name'}, name),
    make('span', {class: 'tile-value'}, value), make('span', {class: 'tile-rest'}, rest));
}

/// Of the machine as a whole.
function metricOf(run, source, name, unit) {
  return run.metrics.find((metric) => metric.source === source && metric.metric === name
    && metric.entity === '' && metric.unit === unit);
}

function processorTile(run) {
  const total = metricOf(run, 'cpu', 'TotalCPU', '%');
  return total ? tile('cores', 'Processor, mean', quantity(total.mean, '%'),
    `p95 ${quantity(total.p95, '%')}, peak ${quantity(total.max, '%')}`) : null;
}

function memoryTile(run) {
  const used = metricOf(run, 'mem', 'Used_Mem', 'KB');
  const all = metricOf(run, 'mem', 'Total_Mem', 'KB');
  if (!used) return null;
  const mean = `mean ${quantity(used.mean, 'KB')}`;
  return tile('memory', 'Memory, peak', quantity(used.max, 'KB'),
    all ? `of ${quantity(all.max, 'KB')}, ${mean}` : mean);
}

function swapTile(run) {
  const swap = metricOf(run, 'mem', 'Swap_Used', 'KB');
  return swap && swap.max > 0
    ? tile('memory', 'Swap, peak', quantity(swap.max, 'KB'), `mean ${quantity(swap.mean, 'KB')}`) : null;
}

/// The highest peak of all devices, the loopback left out unless there is nothing else.
function trafficTile(run, {source, target, name}) {
  const words = trafficWords[source];
  const moving = run.metrics.filter((metric) => metric.source === source && words.has(metric.metric)
    && metric.max > 0);
  const outside = moving.filter(({entity}) => entity !== 'lo');
  const [peak] = (outside.length ? outside : moving).sort((one, other) => other.max - one.max);
  return peak ? tile(target, `${name}, peak`, quantity(peak.max, peak.unit),
    [`${words.get(peak.metric)}, `, foreign(peak.entity), `; mean ${quantity(peak.mean, peak.unit)}`]) : null;
}

function processTile(run, key, name, unit) {
  const [top] = topOf(run.processes, key, 1);
  return top ? tile('processes', name, quantity(top[key], unit), [foreign(top.name), ` ${top.pid}`]) : null;
}
