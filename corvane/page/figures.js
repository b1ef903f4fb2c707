// Every figure of every metric, as `corvane show --json` gives them, and the tables that the page
// was given to put in front.

function figuresTable(runs) {
  const metrics = runs.flatMap((run) => run.metrics.map((metric) => Object.assign(metric, {run})));
  const text = (key, title) => ({key, title, text: (row) => row[key]});
  const statistic = (key, title) => ({
    key, title, number: true, exact: (row) => row[key],
    text: (row) => (row[key] === null ? none : figure(row[key])),
  });
  return new Table({
    id: 'figures', title: 'All figures', rows: metrics, note: 'full digits on each cell',
    columns: [text('source', 'Source'), text('entity', 'Of'), text('metric', 'Metric'), text('unit', 'Unit'),
      ...(runs.length > 1 ? [{key: 'run', title: 'Run', text: (row) => row.run.label}] : []),
      numberColumn('count', 'Samples', '', 0), statistic('min', 'min'), statistic('mean', 'mean'),
      statistic('p50', 'p50'), statistic('p95', 'p95'), statistic('p99', 'p99'), statistic('max', 'max')],
  });
}

/// {id, title, note, columns: [{title, unit, decimals}], rows: [[...]]}: a column with decimals
/// holds numbers (or null), one with `verdict` the words better, worse, same, inconclusive.
function givenTable(given, number) {
  const columns = given.columns.map((column, i) => {
    const key = String(i);
    if (column.decimals !== undefined) {
      return numberColumn(i, column.title, column.unit || '', column.decimals);
    }
    const classOf = column.verdict ? (row) => `verdict ${/^\w+$/.test(row[i]) ? row[i] : ''}` : null;
    const {title, unit} = column;
    return {key, title, unit, class: classOf, text: (row) => String(row[i] ?? none)};
  });
  return new Table({id: `given-${number}`, title: given.title, note: given.note, columns, rows: given.rows});
}
