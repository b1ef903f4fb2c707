// The processes of a moment, so that a spike has a name.

const momentRows = 14;

class Moment {
  constructor(runs, timeline, clock, drawn) {
    Object.assign(this, {runs, timeline, clock, drawn});
    this.title = make('h2', {}, 'At a moment');
    this.hint = make('p', {class: 'hint'},
      'Move over a panel, or use the arrow keys: the processes of that moment are listed here. '
      + 'A click holds it, Esc lets go.');
    this.detail = make('p', {class: 'note'});
    this.lists = runs.map((run) => ({run, body: make('tbody')}));
    const tables = this.lists.map(({run, body}) => [
      runs.length > 1 ? make('h3', {}, swatch(run.colour), run.label) : null,
      make('table', {}, make('thead', {}, make('tr', {},
        make('th', {scope: 'col', class: 'number'}, 'PID'), make('th', {scope: 'col', class: 'name'}, 'Name'),
        make('th', {scope: 'col', class: 'number'}, '% of a core'),
        make('th', {scope: 'col', class: 'number'}, 'PSS', make('span', {class: 'unit'}, 'MB')))), body),
    ]);
    this.element = make('aside', {class: 'moment', 'aria-label': 'Processes at a moment'},
      make('header', {}, this.title, this.detail), this.hint, tables.flat());
  }

  draw() {
    const {moment, from, to, pinned} = this.timeline;
    this.element.classList.toggle('empty', moment === null);
    this.element.classList.toggle('pinned', pinned);
    this.hint.hidden = moment !== null;
    if (moment === null) {
      setText(this.title, 'At a moment');
      setText(this.detail, '');
      this.lists.forEach(({body}) => body.replaceChildren());
      return;
    }
    setText(this.title, `At ${momentText(this.clock, moment, to - from)}`);
    this.element.dataset.moment = moment;
    let coarse = 0;
    for (const {run, body} of this.lists) {
      const found = processesAt(run, moment);
      coarse = Math.max(coarse, found.step);
      const most = this.runs.length > 1 ? 5 : momentRows;
      body.replaceChildren(...found.rows.slice(0, most).map((row) => this.rowOf(row)));
    }
    const details = [pinned ? 'held' : '', coarse ? `mean of ${duration(coarse)}` : ''];
    setText(this.detail, details.filter(Boolean).join(' · '));
  }

  rowOf({pid, name, share, pss, process}) {
    const colour = process ? this.drawn.colourOf(process) : null;
    const hint = process ? 'Draw or no longer draw it' : null;
    const row = make('tr', {class: process ? 'clickable' : '', title: hint},
      make('td', {class: 'number'}, String(pid)), make('td', {class: 'name', title: name}, swatch(colour), name),
      make('td', {class: 'number', 'data-exact': share}, share === null ? none : fixed(share, 1)),
      make('td', {class: 'number'}, pss === null ? none : fixed(pss / 1024, 1)));
    if (process) row.addEventListener('click', () => this.drawn.toggle(process));
    return row;
  }
}

/// Who used the processor then, most first: samples where the page has them, and the list that was
/// kept of each stretch of the run, which also knows processes that were not kept themselves.
function processesAt(run, moment) {
  const rows = new Map();
  let step = 0;
  for (const process of run.processes) {
    const cpu = valueAt(process.cpu(), moment);
    const pss = valueAt(process.pss(), moment);
    const idle = process.cpu_peak === 0 && process.isThere(moment);
    const share = idle ? 0 : cpu && cpu.exact ? cpu.value : null;
    if (!cpu && !pss) continue;
    rows.set(process, {pid: process.pid, name: process.name, process, share, pss: pss && pss.value});
  }
  for (const {pid, name, share, length, end} of usersAt(run.moments, moment)) {
    const known = run.processes.filter((other) => other.pid === pid && other.last > end - length
      && other.first <= end);
    const process = known.find((other) => other.isThere(moment)) || null;
    if (!process && known.some((other) => other.name === name)) continue;  // before or after its life
    const row = process && rows.get(process);
    if (row && row.share !== null) continue;
    step = Math.max(step, length);
    if (row) row.share = share;
    else rows.set(process || pid, {pid, name, process, share, pss: null});
  }
  const sorted = [...rows.values()].filter((row) => row.share !== null || row.pss !== null)
    .sort((one, other) => (other.share ?? -1) - (one.share ?? -1) || (other.pss ?? -1) - (one.pss ?? -1));
  return {rows: sorted, step};
}

function valueAt(series, moment) {
  const place = series ? series.at(moment) : -1;
  return place < 0 ? null : {value: series.high[place], exact: series.exact};
}

/// The stretch that ends at or after the moment, if it reaches back to it.
function usersAt({end, seconds, first, who, share, people, step}, moment) {
  let place = 0;
  for (let high = end.length; place < high;) {
    const middle = (place + high) >> 1;
    if (end[middle] < moment) place = middle + 1;
    else high = middle;
  }
  if (place === end.length) return [];
  const length = Math.max(step, seconds[place]);
  if (end[place] - moment > length) return [];
  const users = [];
  for (let i = first[place]; i < (first[place + 1] ?? who.length); i++) {
    const [pid, name] = people[who[i]];
    users.push({pid, name, share: share[i], length, end: end[place]});
  }
  return users;
}
