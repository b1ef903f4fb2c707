// Who did it: which processes are drawn, and the tables of processes, of names and of growing memory.

/// The processes whose lines are drawn, each with a colour of its own as long as it is there.
class Drawn {
  constructor(runs) {
    this.several = runs.length > 1;
    this.slots = new Map();
    this.sets = {cpu: new Set(), pss: new Set()};
    this.listeners = [];
    const each = this.several ? Math.max(1, Math.floor(8 / runs.length)) : 5;
    for (const run of runs) {
      const byTime = topOf(run.processes, 'cpu_seconds', each);
      // In its first sample a process has a share, but has not yet used any time.
      (byTime.length ? byTime : topOf(run.processes, 'cpu_mean', each))
        .forEach((process) => this.sets.cpu.add(process));
      topOf(run.processes, 'pss_peak_kb', each).forEach((process) => this.sets.pss.add(process));
    }
    for (const process of [...this.sets.cpu, ...this.sets.pss]) this.slotOf(process);
  }

  has(process) {
    return this.sets.cpu.has(process) || this.sets.pss.has(process);
  }

  slotOf(process) {
    if (!this.slots.has(process)) {
      const taken = new Set(this.slots.values());
      let free = 0;
      while (taken.has(free)) free++;
      this.slots.set(process, free);
    }
    return this.slots.get(process);
  }

  colourOf(process) {
    if (!this.has(process)) return null;
    return this.several ? process.run.colour : this.slotOf(process) % 8;
  }

  toggle(process) {
    const drawn = this.has(process);
    for (const set of Object.values(this.sets)) {
      if (drawn) set.delete(process);
      else set.add(process);
    }
    if (drawn) this.slots.delete(process);
    else this.slotOf(process);
    this.listeners.forEach((listener) => listener());
  }

  lines(kind) {
    const nth = new Map();
    return [...this.sets[kind]].filter((process) => process[kind]()).map((process) => {
      const order = this.several ? (nth.get(process.run) || 0) : Math.floor(this.slotOf(process) / 8);
      nth.set(process.run, order + 1);
      return {
        label: process.name,
        rest: [process.pid ? String(process.pid) : `(all ${process.processes})`,
          this.several ? [' · ', foreign(process.run.label)] : []].flat(),
        series: process[kind](),
        colour: this.colourOf(process),
        dash: dashes[order % dashes.length],
      };
    });
  }
}

const dashes = [null, [6, 3], [2, 2], [8, 3, 2, 3]];

function topOf(rows, key, count) {
  return rows.filter((row) => row[key] > 0).sort((a, b) => b[key] - a[key]).slice(0, count);
}

/// A column of numbers: of the field, times the factor, with so many decimals.
function numberColumn(key, title, unit, decimals, {factor = 1, exactUnit, help} = {}) {
  return {
    key, title, unit, help, exactUnit, number: true,
    exact: (row) => row[key],
    text: (row) => (row[key] === null || row[key] === undefined ? none : fixed(row[key] * factor, decimals)),
  };
}

const inMegabytes = {factor: 2 ** -10, exactUnit: 'KB'};

function processTables(runs, drawn, clock, length) {
  const processes = runs.flatMap((run) => run.processes);
  const names = runs.flatMap((run) => run.names);
  const runColumn = runs.length < 2 ? []
    : [{key: 'run', title: 'Run', text: (row) => row.run.label}];
  const pid = {...numberColumn('pid', 'PID', '', 0), text: (row) => String(row.pid)};
  const name = {key: 'name', title: 'Name', text: (row) => row.name};
  const moment = (key, title) => ({
    key, title, number: true, unit: clock.known ? clock.zone : '', exactUnit: 's', exact: (row) => row[key],
    text: (row) => momentText(clock, row[key], length),
  });
  const life = [moment('first', 'from'), moment('last', 'to')];
  const grown = numberColumn('pss_grown_kb', 'Grown by', 'MB', 1, inMegabytes);
  const memory = [
    numberColumn('pss_first_kb', 'PSS first', 'MB', 1, inMegabytes),
    numberColumn('pss_last_kb', 'last', 'MB', 1, inMegabytes),
    numberColumn('pss_peak_kb', 'peak', 'MB', 1, inMegabytes),
    numberColumn('pss_growth_kb_per_min', 'growth', 'MB/min', 2, {factor: 2 ** -10, exactUnit: 'KB/min',
      help: 'Slope of the memory over the life of the process'}),
  ];
  const processor = [
    numberColumn('cpu_seconds', 'Processor', 's', 2, {help: 'Processor time used while it was recorded'}),
    numberColumn('cpu_mean', 'mean', '% of a core', 1),
    numberColumn('cpu_peak', 'peak', '% of a core', 1),
  ];
  const common = {
    mark: (row) => drawn.colourOf(row),
    onRow: (row) => drawn.toggle(row),
    rowHint: 'Draw or no longer draw it above',
  };
  const growing = growingOf(runs);
  if (!processes.length) return [];
  const tables = [
    new Table({id: 'processes', title: 'Processes', rows: processes, sortBy: 'cpu_seconds', ...common,
      columns: [pid, name, ...runColumn, ...processor, ...memory, ...life]}),
    new Table({id: 'names', title: 'By name', note: 'processes of one name summed up', ...common,
      columns: nameColumns(name, runColumn), rows: names, sortBy: 'cpu_seconds'}),
  ];
  if (growing.length) {
    tables.push(new Table({id: 'growing', title: 'Growing memory',
      note: 'of processes that were there for a tenth of the run or more',
      columns: [pid, name, ...runColumn, grown, ...memory, ...life],
      rows: growing, sortBy: 'pss_grown_kb', ...common}));
  }
  drawn.listeners.push(() => tables.forEach((table) => table.fill()));
  return tables;
}

function nameColumns(name, runColumn) {
  return [
    name, ...runColumn,
    numberColumn('processes', 'Processes', '', 0),
    numberColumn('cpu_seconds', 'Processor', 's', 2),
    numberColumn('cpu_mean', 'mean', '% of a core', 1),
    numberColumn('pss_first_kb', 'PSS first', 'MB', 1, inMegabytes),
    numberColumn('pss_last_kb', 'last', 'MB', 1, inMegabytes),
    numberColumn('pss_peak_kb', 'peak', 'MB', 1, inMegabytes),
    numberColumn('pss_growth_kb_per_min', 'growth', 'MB/min', 2, {factor: 2 ** -10, exactUnit: 'KB/min'}),
  ];
}

const leastGrowth = 51;  // KB: less would be told as 0.0 MB

/// Who has more memory at its end than at its beginning, and was there long enough for that to
/// tell anything.
function growingOf(runs) {
  return runs.flatMap((run) => run.processes.filter((process) => {
    process.pss_grown_kb = process.pss_last_kb - process.pss_first_kb;
    return process.pss_grown_kb > leastGrowth && process.last - process.first >= run.run.seconds / 10;
  }));
}
