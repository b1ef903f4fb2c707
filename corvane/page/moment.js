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
    let coarse = 0;  // seconds that the shares shown are means of, at most
    for (const {run, body} of this.lists) {
      const found = processesAt(run, moment);
      const shown = found.slice(0, this.runs.length > 1 ? 5 : momentRows);
      coarse = Math.max(coarse, ...shown.map((row) => row.step));
      replaceRows(body, shown.map((row) => this.rowOf(row)));
    }
    const details = [pinned ? 'held' : '', coarse ? `mean of ${duration(coarse)}, ↑ peak` : ''];
    setText(this.detail, details.filter(Boolean).join(' · '));
  }

  rowOf({pid, name, share, peak, pss, process, step, past}) {
    const colour = process ? this.drawn.colourOf(process) : null;
    const label = process ? drawButton(colour, name, 'Draw or no longer draw it') : [swatch(colour), name];
    const title = past ? `${name}: in this stretch of time, but not at the moment itself` : name;
    const of = step ? `Mean of ${duration(step)}; highest sample ${fixed(peak, 1)}` : null;
    const mean = share === null ? none : fixed(share, 1);
    const higher = step && fixed(peak, 1) !== mean ? make('span', {class: 'peak'}, `↑${fixed(peak, 1)}`) : null;
    const row = make('tr', {class: [process ? 'clickable' : '', past ? 'past' : ''].join(' ').trim()},
      make('td', {class: 'number'}, String(pid)), make('td', {class: 'name', title}, label),
      make('td', {class: 'number', 'data-exact': share, title: of}, mean, higher),
      make('td', {class: 'number'}, pss === null ? none : fixed(pss / 1024, 1)));
    row.of = process;
    if (process) row.addEventListener('click', () => this.drawn.toggle(process));
    return row;
  }
}

/// Who used the processor then, the highest sample first: samples where the page has them, else means
/// of buckets, and the list that was kept of each stretch of the run, which also knows processes that
/// were not kept themselves. `step`: the seconds that a share is the mean of, `peak` being the highest
/// sample in them; 0: a sample.
function processesAt(run, moment) {
  const rows = new Map();
  for (const process of run.processes) {
    const cpu = valueAt(process.cpu(), moment);
    const pss = valueAt(process.pss(), moment);
    const idle = process.cpu_peak === 0 && process.isThere(moment);
    if (!cpu && !pss) continue;
    rows.set(process, {pid: process.pid, name: process.name, process, share: idle ? 0 : cpu && cpu.value,
      peak: idle ? 0 : cpu && cpu.high, step: idle || !cpu ? 0 : cpu.step, pss: pss && pss.value});
  }
  for (const {pid, name, share, peak, length, end} of usersAt(run.moments, moment)) {
    const known = run.processes.filter((other) => other.pid === pid && other.last > end - length
      && other.first <= end);
    const there = known.find((other) => other.isThere(moment));
    const process = there || known.find((other) => other.name === name) || null;
    if (process && !there && !run.moments.coarse) continue;  // before or after its life
    const step = run.moments.coarse ? length : 0;
    const row = rows.get(process);
    if (row && row.share !== null && row.step <= step) continue;
    if (row) Object.assign(row, {share, peak, step});
    else rows.set(process || pid, {pid, name, process, share, peak, step, pss: null, past: process && !there});
  }
  return [...rows.values()].filter((row) => row.share !== null || row.pss !== null)
    .sort((one, other) => (other.peak ?? -1) - (one.peak ?? -1) || (other.share ?? -1) - (one.share ?? -1)
      || (other.pss ?? -1) - (one.pss ?? -1));
}

function valueAt(series, moment) {
  const place = series ? series.at(moment) : -1;
  return place < 0 ? null : {value: series.mid[place], high: series.high[place], step: series.step};
}

/// The stretch that ends at or after the moment, if it reaches back to it.
function usersAt({end, seconds, first, who, share, peak, people, step, pause}, moment) {
  let place = 0;
  for (let high = end.length; place < high;) {
    const middle = (place + high) >> 1;
    if (end[middle] < moment) place = middle + 1;
    else high = middle;
  }
  if (place === end.length) return [];
  const length = Math.max(step, seconds[place]);
  if (end[place] - moment > Math.min(length, pause)) return [];
  const users = [];
  for (let i = first[place]; i < (first[place + 1] ?? who.length); i++) {
    const [pid, name] = people[who[i]];
    users.push({pid, name, share: share[i], peak: peak[i], length, end: end[place]});
  }
  return users;
}
