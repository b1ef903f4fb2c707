// A table that sorts by its headings, filters by what is typed, and shows no more rows than asked
// for.
//
// A column: {key, title, unit, text(row), exact(row), help} for text, with `number: true` for
// numbers: `exact` is what is sorted by and shown in full as the cell's title.

const firstRows = 25;
const moreRows = 200;

class Table {
  constructor({id, title, note, columns, rows, sortBy, mark, onRow, rowHint}) {
    Object.assign(this, {id, columns, rows, mark, onRow, rowHint, limit: firstRows, words: []});
    this.order = sortBy ? {key: sortBy, down: true} : null;
    this.filter = make('input', {type: 'search', placeholder: 'Filter', 'aria-label': `Filter: ${title}`,
      oninput: () => this.search(), spellcheck: 'false', autocomplete: 'off'});
    this.count = make('span', {class: 'note', 'aria-live': 'polite'});
    this.headings = columns.map((column) => this.headingOf(column));
    this.body = make('tbody');
    this.more = make('button', {type: 'button', class: 'more', onclick: () => this.showMore()});
    this.element = make('section', {class: 'table', id, 'aria-label': title},
      make('header', {}, make('h3', {}, title), make('span', {class: 'note'}, note || ''), this.count,
        this.filter),
      make('div', {class: 'scroll', tabindex: '0', role: 'region', 'aria-label': title},
        make('table', {}, make('thead', {}, make('tr', {}, this.headings)), this.body)), this.more);
    this.fill();
  }

  headingOf(column) {
    const unit = column.unit ? make('span', {class: 'unit'}, column.unit) : null;
    const sort = make('button', {type: 'button', title: column.help || null}, column.title, unit);
    sort.addEventListener('click', () => {
      const down = this.order && this.order.key === column.key ? !this.order.down : Boolean(column.number);
      this.order = {key: column.key, down};
      this.fill();
    });
    return make('th', {scope: 'col', class: column.number ? 'number' : 'name'}, sort);
  }

  search() {
    this.words = this.filter.value.toLowerCase().split(/\s+/).filter(Boolean);
    this.limit = firstRows;
    this.fill();
  }

  showMore() {
    this.limit += moreRows;
    this.fill();
  }

  matching() {
    const plain = this.columns.filter((column) => !column.number || column.key === 'pid');
    const matches = (row) => {
      const text = plain.map((column) => column.text(row)).join(' ').toLowerCase();
      return this.words.every((word) => text.includes(word));
    };
    const rows = this.words.length ? this.rows.filter(matches) : [...this.rows];
    if (!this.order) return rows;
    const column = this.columns.find(({key}) => key === this.order.key);
    const valueOf = column.exact || column.text;
    const sign = this.order.down ? -1 : 1;
    return rows.sort((one, other) => sign * compare(valueOf(one), valueOf(other), this.order.down));
  }

  fill() {
    const rows = this.matching();
    this.headings.forEach((heading, i) => {
      const sorted = this.order && this.order.key === this.columns[i].key;
      if (sorted) heading.setAttribute('aria-sort', this.order.down ? 'descending' : 'ascending');
      else heading.removeAttribute('aria-sort');
    });
    replaceRows(this.body, rows.slice(0, this.limit).map((row) => this.lineOf(row)));
    const all = this.rows.length;
    setText(this.count, rows.length === all ? `${all}` : `${rows.length} of ${all}`);
    const left = rows.length - this.limit;
    this.more.hidden = left <= 0;
    setText(this.more, `${Math.min(left, moreRows)} more of ${rows.length}`);
  }

  lineOf(row) {
    const line = make('tr', {}, this.columns.map((column) => cellOf(column, row)));
    const colour = this.mark ? this.mark(row) : null;
    if (this.onRow) {
      const first = line.firstChild;
      first.replaceChildren(drawButton(colour, first.textContent, this.rowHint));
      line.of = row;
      line.classList.add('clickable');
      line.addEventListener('click', () => {
        if (!String(getSelection())) this.onRow(row);
      });
    }
    return line;
  }
}

function cellOf(column, row) {
  const text = column.text(row);
  if (!column.number) {
    const title = text.length > 24 ? text : null;
    return make('td', {class: column.class ? `name ${column.class(row)}` : 'name', title}, text);
  }
  const exact = column.exact(row);
  const known = exact !== null && exact !== undefined;
  const title = known && column.unit !== '' ? `${exact} ${column.exactUnit || column.unit || ''}`.trim() : null;
  return make('td', {class: 'number', 'data-exact': known ? String(exact) : null, title}, text);
}

/// What is not known comes last, whichever way is sorted.
function compare(one, other, down) {
  const missing = (value) => value === null || value === undefined;
  if (missing(one) || missing(other)) return (missing(one) - missing(other)) * (down ? -1 : 1);
  if (typeof one === 'string') return one.localeCompare(other, undefined, {numeric: true});
  return one - other;
}
