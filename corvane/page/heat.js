// A strip of colour for each core, darker (in the dark: brighter) the busier it was: 64 cores are
// as readable as 4. A row: {label, series, ends}; values are percent. Without a series the core was
// idle from end to end.

class Heat {
  constructor(rows, timeline) {
    Object.assign(this, {rows, timeline});
    this.rowHeight = Math.max(5, Math.min(14, Math.floor(384 / rows.length)));
    this.canvas = make('canvas', {role: 'img', 'aria-label': `Load of ${rows.length} cores over time`});
    this.names = make('div', {class: 'heat-names', 'aria-hidden': 'true'});
    this.element = make('div', {class: 'heat'}, this.names, this.canvas);
    this.element.style.height = `${this.rowHeight * rows.length}px`;
    const every = rows.length > 16 ? 4 : Math.ceil(11 / this.rowHeight);
    rows.forEach((row, number) => {
      if (number % every) return;
      const name = make('span', {}, row.label);
      name.style.top = `${number * this.rowHeight}px`;
      name.style.lineHeight = `${Math.max(11, this.rowHeight)}px`;
      this.names.append(name);
    });
  }

  draw() {
    const ratio = window.devicePixelRatio || 1;
    const width = Math.max(1, Math.round(this.canvas.clientWidth * ratio));
    const height = Math.round(this.rowHeight * this.rows.length * ratio);
    if (this.canvas.width !== width) this.canvas.width = width;
    if (this.canvas.height !== height) this.canvas.height = height;
    const shades = heatShades();
    const picture = new ImageData(width, this.rows.length);
    this.rows.forEach((row, number) => this.shade(row, picture, number, shades));
    const small = document.createElement('canvas');
    small.width = width;
    small.height = this.rows.length;
    small.getContext('2d').putImageData(picture, 0, 0);
    const context = this.canvas.getContext('2d');
    context.imageSmoothingEnabled = false;
    context.clearRect(0, 0, width, height);
    context.drawImage(small, 0, 0, width, height);
    if (this.rowHeight >= 8) this.rule(context, width, height);
  }

  /// A thin gap between rows.
  rule(context, width, height) {
    const row = height / this.rows.length;
    for (let number = 1; number < this.rows.length; number++) {
      context.clearRect(0, Math.round(number * row) - 1, width, 1);
    }
  }

  /// Every pixel is midway between the mean and the largest of what falls into it, so that what lasts
  /// and what is brief are both seen; none is drawn where nothing was sampled.
  shade({series, ends}, picture, number, shades) {
    const {from, to} = this.timeline;
    const width = picture.width;
    const perPixel = (to - from) / width;
    let place = series ? series.place(from) : 0;
    for (let x = 0; x < width; x++) {
      const left = from + x * perPixel;
      const right = left + perPixel;
      let load = right >= ends[0] && left <= ends[1] ? 0 : null;
      if (series) {
        const start = place;
        while (place < series.length && series.time[place] <= right) place++;
        load = loadOf(series, start, Math.max(place, start + 1), right);
      }
      if (load === null) continue;
      const shade = shades[Math.max(0, Math.min(255, Math.round(load * 2.55)))];
      picture.data.set([...shade, 255], (number * width + x) * 4);
    }
  }
}

/// Of the values at some places; null where the first of them begins later than `right`.
function loadOf(series, start, end, right) {
  if (start >= series.length || series.begin(start) > right) return null;
  let sum = 0;
  let largest = 0;
  for (let place = start; place < end; place++) {
    sum += series.mid[place];
    largest = Math.max(largest, series.high[place]);
  }
  return (sum / (end - start) + largest) / 2;
}
