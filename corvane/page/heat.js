// A strip of colour for each core, darker (in the dark: brighter) the busier it was: 64 cores are
// as readable as 4. A line: {label, series}; values are percent.

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
    this.rows.forEach((row, number) => this.shade(row.series, picture, number, shades));
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

  /// Every pixel is the mean of what falls into it; none is drawn where nothing was sampled.
  shade(series, picture, number, shades) {
    if (!series) return;
    const {from, to} = this.timeline;
    const width = picture.width;
    const perPixel = (to - from) / width;
    let place = series.place(from);
    for (let x = 0; x < width; x++) {
      const right = from + (x + 1) * perPixel;
      let sum = 0;
      let count = 0;
      while (place < series.length && series.time[place] <= right) {
        sum += series.mid[place++];
        count++;
      }
      if (count === 0) {
        if (place === series.length || series.begin(place) > right) continue;
        sum = series.mid[place];
        count = 1;
      }
      const shade = shades[Math.max(0, Math.min(255, Math.round((sum / count) * 2.55)))];
      picture.data.set([...shade, 255], (number * width + x) * 4);
    }
  }
}
