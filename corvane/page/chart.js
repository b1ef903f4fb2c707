// One panel with lines: title, legend with the values at the moment, and the plot. The axes and the
// grid are dygraphs'; the lines are drawn through its plug-in hook straight from the arrays.
//
// A panel: {id, title, unit, factor, lines, ceiling, idle, heat}
// A line:  {label, rest, series, colour, dash, hidden, folded}: the label's words may be strangers',
// what follows them as `rest` is ours; what is folded is only counted until it is asked for.
// Heat:    {rows, left}: what Heat draws, and how many rows there are besides

const axisWidth = 52;

class Chart {
  constructor(panel, timeline, clock, marks) {
    Object.assign(this, {panel, timeline, clock, marks, graph: null, visible: false, stale: true});
    this.note = make('span', {class: 'note',
      title: 'The line is the mean of each stretch of time, the band its least to its largest sample.'});
    this.legend = make('div', {class: 'legend'});
    this.plot = make('div', {class: 'plot'});
    this.cursor = make('div', {class: 'cursor', hidden: true});
    this.frame = make('div', {class: 'frame'}, this.plot, this.cursor);
    this.heat = panel.heat && panel.heat.rows.length ? new Heat(panel.heat.rows, timeline) : null;
    if (this.heat) this.frame.append(this.heat.element);
    const heading = make('h3', {}, panel.title, make('span', {class: 'unit'}, panel.unit));
    this.element = make('section', {class: 'panel', id: panel.id, 'aria-label': panel.title},
      make('header', {}, heading, this.note, this.legend), this.frame);
    if (this.heat && panel.heat.left) {
      this.element.append(make('p', {class: 'left note'}, `+ ${panel.heat.left} more cores`));
    }
    if (panel.idle && panel.idle.length) this.element.append(idleList(panel.idle));
    followPointer(this.frame, timeline, () => this.area(), (from, to) => this.peakWithin(from, to));
    this.setLines(panel.lines);
  }

  setLines(lines) {
    const before = new Map((this.lines || []).map((line) => [line.series, line]));
    for (const line of lines) line.hidden = (before.get(line.series) || line).hidden;
    const folded = lines.filter((line) => line.folded);
    this.lines = lines.filter((line) => !line.folded);
    this.legend.replaceChildren(...this.lines.map((line) => this.entryOf(line)));
    if (folded.length) this.legend.append(this.unfolderOf(folded));
    this.renew();
  }

  /// Puts the others in its place, to be shown one by one.
  unfolderOf(folded) {
    const unfold = make('button', {type: 'button', class: 'entry unfold', title: 'List them'},
      `+ ${folded.length} more`);
    unfold.addEventListener('click', () => {
      const entries = folded.map((line) => this.entryOf(line));
      unfold.replaceWith(...entries);
      entries[0].focus();
      this.lines.push(...folded);
      this.draw();
    });
    return unfold;
  }

  entryOf(line) {
    line.value = make('span', {class: 'value'});
    const entry = make('button', {type: 'button', class: 'entry', title: `Show or hide: ${line.label}`},
      swatch(line.colour), make('span', {class: 'label'}, foreign(line.label)),
      line.rest ? make('span', {class: 'rest'}, line.rest) : null, line.value);
    const tell = () => entry.setAttribute('aria-pressed', String(!line.hidden));
    tell();
    if (line.dash) entry.firstChild.classList.add('dashed');
    entry.addEventListener('click', () => {
      line.hidden = !line.hidden;
      tell();
      this.draw();
    });
    return entry;
  }

  /// The moment of the largest value that is drawn within a stretch of time.
  peakWithin(from, to) {
    const peaks = this.lines.filter((line) => line.series && !line.hidden)
      .map((line) => line.series.peakWithin(from, to)).filter(Boolean);
    return peaks.reduce((most, peak) => (peak.value > most.value ? peak : most),
      {value: -Infinity, moment: (from + to) / 2}).moment;
  }

  area() {
    return {left: axisWidth, width: Math.max(1, this.frame.clientWidth - axisWidth - 1)};
  }

  draw() {
    const {from, to} = this.timeline;
    const options = {
      dateWindow: [from, to],
      valueRange: this.range(from, to),
      ...colourOptions(),
    };
    if (this.graph) {
      this.graph.updateOptions(options);
    } else {
      this.graph = new Dygraph(this.plot, [[this.timeline.first, 0], [this.timeline.last, 0]],
        {...this.fixedOptions(), ...options});
    }
    this.stale = false;
    if (this.heat) this.heat.draw();
    this.tellDetail();
    this.drawMoment();
    Object.assign(this.element.dataset, {drawn: 'true', from, to});
  }

  fixedOptions() {
    return {
      labels: ['time', 'axes'],
      plotter: () => {},
      plugins: [{activate: () => ({
        willDrawChart: ({dygraph, drawingContext}) => this.drawLines(dygraph, drawingContext),
      })}],
      interactionModel: {},
      legend: 'never',
      highlightCircleSize: 0,
      rightGap: 1,
      xRangePad: 0,
      axes: {
        x: {
          axisLabelFormatter: (value) => String(value),
          ticker: (from, to, pixels) => timeTicks(from, to, Math.max(2, pixels / 90), this.clock),
          axisLabelWidth: 80,
        },
        y: {
          axisLabelFormatter: (value) => axisNumber(value),
          axisLabelWidth: axisWidth - 6,
          pixelsPerLabel: 24,
        },
      },
      axisTickSize: 3,
      xAxisHeight: 20,
      axisLabelFontSize: 11,
    };
  }

  range(from, to) {
    const shown = this.lines.filter((line) => !line.hidden && line.series);
    const largest = Math.max(0, ...shown.map((line) => line.series.largest(from, to))) * this.panel.factor;
    const least = Math.min(0, ...shown.map((line) => line.series.least(from, to))) * this.panel.factor;
    const ceiling = this.panel.ceiling;
    if (ceiling && largest <= ceiling) return [least * 1.05, ceiling * 1.04];
    return [least * 1.05, largest * 1.06 || 1];
  }

  drawLines(graph, context) {
    const {x, y, w, h} = graph.getArea();
    const [bottom, top] = graph.yAxisRange(0);
    const {from, to} = this.timeline;
    const scale = {
      from, to,
      x: (time) => x + ((time - from) / (to - from)) * w,
      y: (value) => y + h - ((value * this.panel.factor - bottom) / (top - bottom)) * h,
      perPixel: (to - from) / w,
    };
    context.save();
    context.beginPath();
    context.rect(x, y - 1, w, h + 2);
    context.clip();
    drawMarks(context, this.marks, scale, y, h);
    const shown = this.lines.filter((line) => !line.hidden && line.series);
    const coarse = shown.filter((line) => !line.series.exact);
    for (const line of coarse) {
      drawBand(context, line.series, scale, lineColour(line.colour), coarse.length > 1 ? faintBand : 0.32);
    }
    for (const line of shown) drawLine(context, line.series, scale, lineColour(line.colour), line.dash);
    context.restore();
  }

  /// Says whether what is seen are the samples themselves.
  tellDetail() {
    const coarse = this.lines.filter((line) => line.series && !line.series.exact && !line.hidden);
    const widest = Math.max(...coarse.map((line) => line.series.step));
    const text = coarse.length ? `min–max per ${duration(widest)}` : '';
    setText(this.note, text);
  }

  drawMoment() {
    const {moment, from, to} = this.timeline;
    const within = moment !== null && moment >= from && moment <= to;
    this.cursor.hidden = !within;
    this.cursor.classList.toggle('pinned', this.timeline.pinned);
    if (within) {
      const {left, width} = this.area();
      this.cursor.style.transform = `translateX(${left + ((moment - from) / (to - from)) * width}px)`;
    }
    for (const line of this.lines) setText(line.value, within ? this.valueAt(line.series, moment) : '');
  }

  valueAt(series, moment) {
    const place = series ? series.at(moment) : -1;
    if (place < 0) return none;
    const {factor} = this.panel;
    const high = figure(series.high[place] * factor);
    const low = figure(series.low[place] * factor);
    return series.exact || high === low ? high : `${low}…${high}`;
  }

  /// Draws it as large and in the colours as it is to be now, or once it comes into view.
  renew() {
    this.stale = true;
    if (!this.visible) return;
    if (this.graph) this.graph.resize();
    this.draw();
  }
}

/// What was said during the recording; its words stand in the strip above.
function drawMarks(context, marks, scale, top, height) {
  context.fillStyle = palette.quiet;
  for (const [moment] of marks) context.fillRect(Math.round(scale.x(moment)), top, 1, height);
}

const letters = [['T', 1e12], ['G', 1e9], ['M', 1e6], ['k', 1e3]];

/// Short enough for the room beside the plot: 0.5, 5000, 12.5k, 1M.
function axisNumber(value) {
  const size = Math.abs(value);
  if (size > 0 && size < 0.01) return String(Number(value.toPrecision(2)));
  const [letter, factor] = (size >= 1e4 && letters.find(([, least]) => size >= least)) || ['', 1];
  const short = value / factor;
  const whole = Number.isInteger(short) || (!letter && size >= 10);
  return fixed(short, whole ? 0 : size >= 1 ? 1 : 2) + letter;
}

function idleList(names) {
  if (names.length < 4) return make('p', {class: 'idle note'}, `Without any traffic: ${names.join(', ')}`);
  return make('details', {class: 'idle'},
    make('summary', {}, `${names.length} without any traffic`), make('p', {}, names.join(', ')));
}

/// The places of a series that are seen, and one more at both ends.
function placesIn(series, {from, to}) {
  return [Math.max(0, series.place(from) - 1), Math.min(series.length, series.place(to) + 2)];
}

/// Steps for what belongs to the time before a sample, straight from sample to sample for a state.
function drawLine(context, series, scale, colour, dash) {
  const [start, end] = placesIn(series, scale);
  context.strokeStyle = colour;
  context.fillStyle = colour;
  context.globalAlpha = 1;
  context.lineWidth = 1.4;
  context.lineJoin = 'round';
  context.setLineDash(dash || []);
  context.beginPath();
  const stepped = series.meaning !== 'state';
  for (let i = start; i < end; i++) {
    const y = scale.y(series.mid[i]);
    const x = scale.x(series.time[i]);
    const left = scale.x(series.begin(i));
    if (i === start || series.startsAnew(i)) context.moveTo(stepped ? left : x, y);
    else if (stepped) context.lineTo(left, y);
    context.lineTo(x, y);
  }
  context.stroke();
  context.setLineDash([]);
  if (series.exact && !stepped) drawSamples(context, series, scale, start, end);
}

/// How strong a band is that lies over others, where lines have to be told apart.
const faintBand = 0.18;

/// From the least to the largest, on whole pixels, so that a stretch narrower than one is as plain to
/// see as a wide one.
function drawBand(context, series, scale, colour, strength) {
  const [start, end] = placesIn(series, scale);
  context.fillStyle = colour;
  context.globalAlpha = strength;
  context.beginPath();
  for (let i = start; i < end; i++) {
    const left = Math.floor(scale.x(series.begin(i)));
    const right = Math.max(left + 1, Math.floor(scale.x(series.time[i])));
    const top = scale.y(series.high[i]);
    context.rect(left, top, right - left, Math.max(scale.y(series.low[i]) - top, 0.5));
  }
  context.fill();
}

/// Dots where there is room to tell the samples of a state apart, and for those that stand alone.
function drawSamples(context, series, scale, start, end) {
  const spread = end - start > 1
    ? (series.time[end - 1] - series.time[start]) / (end - start - 1) / scale.perPixel : Infinity;
  context.beginPath();
  for (let i = start; i < end; i++) {
    const alone = series.startsAnew(i) && (i + 1 === series.length || series.startsAnew(i + 1));
    if (!alone && spread < 14) continue;
    const x = scale.x(series.time[i]);
    const y = scale.y(series.mid[i]);
    context.moveTo(x + 2, y);
    context.arc(x, y, 2, 0, 2 * Math.PI);
  }
  context.fill();
}
