// The run's data: the head is JSON, the samples are arrays of numbers in one base64 text.

const arrayTypes = {f32: Float32Array, f64: Float64Array, u32: Uint32Array};

function readPage() {
  const head = JSON.parse(withoutTurns(document.getElementById('head').textContent));
  const text = atob(document.getElementById('samples').textContent.trim());
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; i++) bytes[i] = text.charCodeAt(i);
  const arrays = new Map();
  head.arrayOf = ([at, count, type]) => {
    const key = `${at} ${count}`;
    if (!arrays.has(key)) arrays.set(key, new arrayTypes[type](bytes.buffer, at, count));
    return arrays.get(key);
  };
  return head;
}

/// Characters that turn the direction of the text around them, shown as marks.
function withoutTurns(text) {
  return text.replace(/[\u061c\u200e\u200f\u202a-\u202e\u2066-\u2069]/g, '\ufffd');
}

/// A series of samples, or of buckets with the least, mean and largest of their samples.
/// `time[i]` is the end of what a value stands for, `begin(i)` where that begins: at the same
/// moment for a state, a period or a bucket earlier for all else. `of`: {period} of its source in
/// seconds, {isThere(moment)} for what lives, {pause} in periods beyond which samples are missing.
class Series {
  constructor(packed, arrayOf, meaning, {period, isThere = () => true, pause = 12.5} = {}) {
    this.exact = !packed.step;
    this.step = packed.step || 0;
    this.meaning = meaning;
    this.isThere = isThere;
    this.high = arrayOf(packed.high);
    this.low = packed.low ? arrayOf(packed.low) : this.high;
    this.mid = packed.mean ? arrayOf(packed.mean) : this.high;
    this.time = packed.time ? arrayOf(packed.time)
      : Float64Array.from(this.high, (_, i) => packed.from + (i + 1) * packed.step);
    this.usual = this.exact ? period || middleStep(this.time) : this.step;
    // A period that was long is one all the same; between states that lie far apart nothing is known.
    this.pause = (!this.exact ? 2.5 : meaning === 'state' ? 3.5 : pause) * this.usual;
  }

  get length() {
    return this.time.length;
  }

  begin(i) {
    if (!this.exact) return this.time[i] - this.step;
    if (this.meaning === 'state') return this.time[i];
    return this.startsAnew(i) ? this.time[i] - this.usual : this.time[i - 1];
  }

  /// Whether samples are missing right before this one.
  startsAnew(i) {
    return i === 0 || this.time[i] - this.time[i - 1] > this.pause;
  }

  /// The first place whose time is not before the moment.
  place(moment) {
    let low = 0;
    let high = this.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.time[middle] < moment) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  /// The place of the value that holds at the moment, or -1.
  at(moment) {
    if (!this.isThere(moment)) return -1;
    const next = this.place(moment);
    if (this.exact && this.meaning === 'state') return this.nearest(moment, next);
    if (next < this.length) return this.begin(next) <= moment ? next : -1;
    // The last sample holds as long as the next one would have taken.
    return this.exact && next > 0 && moment - this.time[next - 1] <= this.usual ? next - 1 : -1;
  }

  nearest(moment, next) {
    const before = next > 0 ? moment - this.time[next - 1] : Infinity;
    const after = next < this.length ? this.time[next] - moment : Infinity;
    if (Math.min(before, after) > this.pause / 2) return -1;
    return before <= after ? next - 1 : next;
  }

  /// The largest value that holds within a stretch of time, and a moment in it when it does; null
  /// where none holds.
  peakWithin(from, to) {
    let best = -1;
    const end = Math.min(this.length - 1, this.place(to));
    for (let i = this.place(from); i <= end; i++) {
      if (this.begin(i) <= to && !(best >= 0 && this.high[best] >= this.high[i])) best = i;
    }
    if (best < 0) return null;
    const moment = this.exact ? this.time[best] : this.time[best] - this.step / 2;
    return {value: this.high[best], moment: Math.min(to, Math.max(from, moment))};
  }

  largest(from, to) {
    let largest = 0;
    const end = Math.min(this.length, this.place(to) + 1);
    for (let i = this.place(from); i < end; i++) if (this.high[i] > largest) largest = this.high[i];
    return largest;
  }

  least(from, to) {
    let least = 0;
    const end = Math.min(this.length, this.place(to) + 1);
    for (let i = this.place(from); i < end; i++) if (this.low[i] < least) least = this.low[i];
    return least;
  }
}

function middleStep(times) {
  if (times.length < 2) return 1;
  const steps = [];
  const stride = Math.max(1, Math.floor(times.length / 64));
  for (let i = 1; i < times.length; i += stride) steps.push(times[i] - times[i - 1]);
  return steps.sort((a, b) => a - b)[steps.length >> 1];
}

/// Puts series in place of their packed form, once each is asked for.
function unpackRun(run, arrayOf) {
  const lazily = (packed, meaning, of) => {
    let series;
    return () => (series ??= packed ? new Series(packed, arrayOf, meaning, of) : null);
  };
  run.metrics.forEach((metric) => { metric.series = lazily(metric.series, metric.meaning); });
  const cpuPeriod = periodOf(run, 'proc', 'cpu', arrayOf);
  const pssPeriod = periodOf(run, 'procmem', 'pss', arrayOf);
  for (const process of [...run.processes, ...run.names]) {
    const isOne = 'pid' in process;
    process.run = run;
    process.isThere = isOne ? (moment) => isAlive(process, moment, cpuPeriod) : () => true;
    const of = {isThere: process.isThere, pause: isOne ? 12.5 : 2.5};
    process.cpu = lazily(process.cpu, 'ofPeriod', {...of, period: cpuPeriod});
    process.pss = lazily(process.pss, 'state', {...of, period: pssPeriod});
  }
  const {moments} = run;
  // Else each stretch is one sample.
  moments.coarse = moments.step > cpuPeriod;
  moments.pause = Math.max(moments.step, 12.5 * cpuPeriod);
  for (const name of ['end', 'seconds', 'first', 'who', 'share', 'peak']) moments[name] = arrayOf(moments[name]);
  return run;
}

/// Seconds from sample to sample of a listing of processes: as asked for, or longer where they came
/// later than that.
function periodOf(run, word, key, arrayOf) {
  const source = run.run.sources.find((other) => other.source === word);
  const exact = run.processes.map((process) => process[key]).filter((packed) => packed && !packed.step);
  const longest = exact.reduce((most, {time}) => (time[1] > most[1] ? time : most), [0, 0]);
  const found = longest[1] >= 8 ? middleStep(arrayOf(longest)) : 0;
  return Math.max(((source && source.period_ms) || 0) / 1000, found) || 1;
}

/// Whether the process was there: from the period of its first sample to its last one, and on to
/// the end of the run where it outlived that.
function isAlive(process, moment, period) {
  const {first, last, alive} = process;
  if (moment > last + (alive ? period : 0) || moment < first - period) return false;
  const cpu = process.cpu();
  return moment >= first || !cpu || !cpu.exact || moment >= cpu.begin(0);
}
