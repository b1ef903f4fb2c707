// The strip that stays in view: the whole run small, with the stretch that is shown; the moment
// looked at; buttons for who does not drag.

class Overview {
  /// `seconds` is how long all of it is, as the head tells it.
  constructor(timeline, clock, series, marks, seconds) {
    Object.assign(this, {timeline, clock, series, seconds});
    this.canvas = make('canvas', {'aria-hidden': 'true'});
    this.window = make('div', {class: 'window'});
    this.cursor = make('div', {class: 'cursor', hidden: true});
    this.strip = make('div', {class: 'strip', title: 'Drag to choose a stretch; inside of it: to move it'},
      this.canvas, this.window, this.cursor, marks.map((mark) => this.markOf(mark)));
    this.readout = make('output', {class: 'readout', 'aria-live': 'off'});
    const button = (text, title, action) =>
      make('button', {type: 'button', title, 'aria-label': title, onclick: action}, text);
    this.whole = button('All', 'All of it (0)', () => timeline.reset());
    this.element = make('nav', {class: 'overview', 'aria-label': 'Time'}, this.strip,
      make('div', {class: 'controls'}, this.readout,
        button('←', 'Earlier (Shift ←)', () => timeline.pan(-0.5)),
        button('→', 'Later (Shift →)', () => timeline.pan(0.5)),
        button('+', 'Closer (+)', () => timeline.zoom(0.5)),
        button('−', 'Farther (−)', () => timeline.zoom(2)), this.whole));
    this.followDrag();
  }

  markOf([moment, text]) {
    const {first, last} = this.timeline;
    const mark = make('span', {class: 'mark', title: text}, text);
    mark.style.left = `${(100 * (moment - first)) / (last - first)}%`;
    return mark;
  }

  followDrag() {
    const {timeline, strip} = this;
    const length = timeline.last - timeline.first;
    const momentAt = (event) => {
      const {left, width} = strip.getBoundingClientRect();
      return timeline.first + ((event.clientX - left) / width) * length;
    };
    let drag = null;
    strip.addEventListener('pointerdown', (event) => {
      strip.setPointerCapture(event.pointerId);
      const moment = momentAt(event);
      const inside = !timeline.isWhole() && moment > timeline.from && moment < timeline.to;
      drag = {moment, inside, from: timeline.from, to: timeline.to};
    });
    strip.addEventListener('pointermove', (event) => {
      if (!drag) return;
      const moment = momentAt(event);
      const by = moment - drag.moment;
      if (drag.inside) timeline.show(drag.from + by, drag.to + by);
      else if (Math.abs(by) > length / 200) timeline.show(Math.min(drag.moment, moment), Math.max(drag.moment, moment));
    });
    strip.addEventListener('pointerup', () => { drag = null; });
    strip.addEventListener('dblclick', () => timeline.reset());
  }

  /// What does not change with the stretch that is shown.
  draw() {
    const ratio = window.devicePixelRatio || 1;
    const width = Math.max(1, this.strip.clientWidth);
    const height = Math.max(1, this.strip.clientHeight);
    this.canvas.width = width * ratio;
    this.canvas.height = height * ratio;
    const context = this.canvas.getContext('2d');
    context.scale(ratio, ratio);
    const {first, last} = this.timeline;
    for (const {series, colour} of this.series) {
      const largest = series.largest(first, last) || 1;
      const scale = {
        from: first, to: last, perPixel: (last - first) / width,
        x: (time) => ((time - first) / (last - first)) * width,
        y: (value) => height - 2 - (value / largest) * (height - 4),
      };
      if (colour === null) fillUnder(context, series, scale, palette.axis);
      else drawRun(context, series, scale, lineColour(colour));
    }
    this.drawMoment();
  }

  drawMoment() {
    const {first, last, from, to, moment, pinned} = this.timeline;
    const share = (time) => `${(100 * (time - first)) / (last - first)}%`;
    this.window.style.left = share(from);
    this.window.style.right = `${(100 * (last - to)) / (last - first)}%`;
    this.window.classList.toggle('whole', this.timeline.isWhole());
    this.whole.disabled = this.timeline.isWhole();
    this.cursor.hidden = moment === null;
    if (moment !== null) this.cursor.style.left = share(moment);
    const text = (time) => momentText(this.clock, time, to - from);
    const stretch = this.timeline.isWhole() ? `all ${duration(this.seconds)}`
      : `${text(from)} to ${text(to)} · ${duration(to - from)}`;
    setText(this.readout, moment === null ? stretch : `${text(moment)}${pinned ? ' held' : ''} · ${stretch}`);
  }
}

/// A moment as finely as the stretch around it can tell.
function momentText(clock, moment, length) {
  return clock.label(moment, Math.min(1, 10 ** Math.floor(Math.log10(length / 400))));
}

/// One of several runs.
function drawRun(context, series, scale, colour) {
  if (!series.exact) drawBand(context, series, scale, colour, faintBand);
  drawLine(context, series, scale, colour);
}

/// The run's shape in one colour, from 0 to the mean, fainter to the largest.
function fillUnder(context, series, scale, colour) {
  context.fillStyle = colour;
  const bottom = scale.y(0) + 2;
  for (const [values, alpha] of series.exact ? [[series.mid, 1]] : [[series.high, 0.4], [series.mid, 1]]) {
    context.globalAlpha = alpha;
    context.beginPath();
    for (let i = 0; i < series.length; i++) {
      // A state has no length of its own; it fills what lies between it and the one before.
      const left = scale.x(series.startsAnew(i) ? series.begin(i) : series.time[i - 1]);
      const top = scale.y(values[i]);
      context.rect(left, top, Math.max(scale.x(series.time[i]) - left, 0.5), bottom - top);
    }
    context.fill();
  }
}
