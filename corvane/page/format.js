// Numbers, quantities and times as text.

const thin = '\u202f';
const none = '–';

/// 1234.5 with one decimal: "1 234.5", separated by thin spaces.
function fixed(value, decimals) {
  if (value === null || value === undefined || !Number.isFinite(value)) return none;
  const [whole, fraction] = Math.abs(value).toFixed(decimals).split('.');
  const sign = value < 0 && Number(value.toFixed(decimals)) !== 0 ? '−' : '';
  const grouped = whole.length > 4 ? whole.replace(/\B(?=(\d{3})+$)/g, thin) : whole;
  return sign + grouped + (fraction ? `.${fraction}` : '');
}

/// With as many decimals as a reader can use: 0.25, 4.31, 43.1, 431.
function figure(value) {
  const size = Math.abs(value);
  return fixed(value, size >= 100 || size === 0 ? 0 : size >= 10 ? 1 : 2);
}

const unitSteps = new Map(Object.entries({
  KB: [['KB', 1], ['MB', 2 ** -10], ['GB', 2 ** -20]],
  bytes: [['bytes', 1], ['KB', 2 ** -10], ['MB', 2 ** -20], ['GB', 2 ** -30]],
  Hz: [['Hz', 1], ['kHz', 1e-3], ['MHz', 1e-6], ['GHz', 1e-9]],
  'MB/s': [['bytes/s', 2 ** 20], ['KB/s', 2 ** 10], ['MB/s', 1]],
  C: [['°C', 1]],
}));

/// How a file's unit is shown: the word for it and the factor to it, by the largest value there is.
function scaleOf(unit, largest) {
  const steps = unitSteps.get(unit) || [[unit, 1]];
  const fitting = steps.filter(([, factor]) => largest * factor >= 1);
  const [word, factor] = largest > 0 && fitting.length ? fitting.at(-1) : steps.at(unit === 'MB/s' ? 2 : 0);
  return {word, factor};
}

function quantity(value, unit) {
  if (value === null || value === undefined) return none;
  const {word, factor} = scaleOf(unit, Math.abs(value));
  return figure(value * factor) + (word ? thin + word : '');
}

/// 42.5 s, 12 min 30 s, 3 h 05 min
function duration(seconds) {
  if (seconds < 120) return `${fixed(seconds, seconds < 10 ? 2 : 1)}${thin}s`;
  const whole = Math.round(seconds);
  const minutes = Math.floor(whole / 60);
  if (whole < 7200) return `${minutes}${thin}min${whole % 60 ? ` ${whole % 60}${thin}s` : ''}`;
  return `${Math.floor(minutes / 60)}${thin}h ${String(minutes % 60).padStart(2, '0')}${thin}min`;
}

/// A moment of the run as text, on the clock of the machine that was measured where that is known;
/// with its day where the run, of which the ends are given, is not of one day.
function makeClock(start, ends) {
  const zone = /(Z|([+-])(\d\d):?(\d\d))$/.exec(start || '');
  const epoch = zone ? Date.parse(start) : NaN;
  if (!Number.isFinite(epoch)) return {known: false, label: elapsed, tick: elapsed, zero: 0};
  const minutes = zone[2] ? Number(`${zone[2]}1`) * (Number(zone[3]) * 60 + Number(zone[4])) : 0;
  const zero = epoch / 1000 + minutes * 60;
  const day = (seconds) => new Date((zero + seconds) * 1000).toISOString().slice(0, 10);
  const time = (seconds, step) => timeOfDay((((zero + seconds) % 86400) + 86400) % 86400, step);
  const severalDays = ends !== undefined && day(ends.first) !== day(ends.last);
  const short = (seconds) => day(seconds).slice(5);
  return {
    known: true,
    zero: zero % 86400,
    label: (seconds, step) => (severalDays ? `${short(seconds)} ${time(seconds, step)}` : time(seconds, step)),
    // On an axis midnight stands for its day.
    tick: (seconds, step) => (severalDays && (zero + seconds) % 86400 === 0 ? short(seconds) : time(seconds, step)),
    day,
    zone: zone[1] === 'Z' ? 'UTC' : zone[1],
  };
}

function decimalsOf(step) {
  return step >= 1 ? 0 : Math.min(3, Math.ceil(-Math.log10(step)));
}

function timeOfDay(seconds, step) {
  const unit = 10 ** decimalsOf(step);
  const rounded = Math.floor(seconds * unit + 1e-6) / unit;
  const two = (number) => String(Math.floor(number)).padStart(2, '0');
  const minutes = `${two(rounded / 3600)}:${two((rounded / 60) % 60)}`;
  if (step >= 60) return minutes;
  const rest = (rounded % 60).toFixed(decimalsOf(step));
  return `${minutes}:${rest.padStart(decimalsOf(step) ? 3 + decimalsOf(step) : 2, '0')}`;
}

/// Seconds since the start: 12.5 s; from two minutes on 2:05, from an hour on 1:02:05.
function elapsed(seconds, step) {
  if (Math.abs(seconds) < 120 && step < 60) return `${fixed(seconds, decimalsOf(step))}${thin}s`;
  if (step >= 60 && seconds === 0) return '0';
  const text = timeOfDay(seconds % 86400, Math.min(step, 59)).replace(/^0(?=\d)/, '');
  const days = Math.floor(seconds / 86400);
  const short = days ? `${days}d ${text}` : seconds < 3600 ? text.replace(/^0:0?/, '') : text;
  return short;
}

/// Where the axis is marked between two moments: at round times of its clock.
function timeTicks(from, to, most, clock) {
  const steps = [0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120,
    300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400];
  const step = steps.find((size) => (to - from) / size <= most)
    || 86400 * Math.ceil((to - from) / most / 86400);
  const first = Math.ceil((from + clock.zero) / step - 1e-9);
  const ticks = [];
  for (let number = first; number * step - clock.zero <= to + step * 1e-9; number++) {
    const moment = number * step - clock.zero;
    ticks.push({v: moment, label: clock.tick(moment, step)});
  }
  return ticks;
}
