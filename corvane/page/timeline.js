// The one time axis of the page: which stretch is shown and which moment is looked at. All panels
// follow it.

function makeTimeline(first, last) {
  const listeners = [];
  const closest = Math.max((last - first) * 1e-6, 1e-3);
  const timeline = {first, last, from: first, to: last, moment: null, pinned: false};
  const tell = perFrame(() => listeners.forEach((listener) => listener(timeline)));
  const clamp = (moment) => Math.min(last, Math.max(first, moment));

  timeline.onChange = (listener) => listeners.push(listener);
  timeline.isWhole = () => timeline.from === first && timeline.to === last;
  timeline.show = (from, to) => {
    const length = Math.min(Math.max(to - from, closest), last - first);
    timeline.from = Math.min(Math.max(from, first), last - length);
    timeline.to = timeline.from + length;
    tell();
  };
  timeline.reset = () => timeline.show(first, last);
  timeline.zoom = (factor, around = timeline.moment ?? (timeline.from + timeline.to) / 2) => {
    const fixedPoint = Math.min(timeline.to, Math.max(timeline.from, around));
    timeline.show(fixedPoint - (fixedPoint - timeline.from) * factor,
      fixedPoint + (timeline.to - fixedPoint) * factor);
  };
  timeline.pan = (share) => {
    const by = (timeline.to - timeline.from) * share;
    timeline.show(timeline.from + by, timeline.to + by);
  };
  timeline.look = (moment) => {
    timeline.moment = moment === null ? null : clamp(moment);
    tell();
  };
  timeline.pin = (moment) => {
    timeline.pinned = moment !== null;
    timeline.look(moment);
    if (moment !== null && (timeline.moment < timeline.from || timeline.moment > timeline.to)) {
      const half = (timeline.to - timeline.from) / 2;
      timeline.show(timeline.moment - half, timeline.moment + half);
    }
  };
  return timeline;
}

/// Drag to zoom, click to hold a moment, double click for the whole run; Shift and drag to move
/// along, Ctrl and the wheel to zoom. `area()` gives the plot's left edge and width in the element;
/// `peakWithin(from, to)` the moment that is meant by the pixel that stands for all between.
function followPointer(element, timeline, area, peakWithin) {
  const selection = make('div', {class: 'selection', hidden: true});
  element.append(selection);
  let drag = null;
  const placeOf = (event) => event.clientX - element.getBoundingClientRect().left;
  const momentAt = (x) => {
    const {left, width} = area();
    const share = Math.min(1, Math.max(0, (x - left) / width));
    return timeline.from + share * (timeline.to - timeline.from);
  };
  const momentOn = (x) => peakWithin(momentAt(Math.floor(x)), momentAt(Math.floor(x) + 1));

  element.addEventListener('pointerdown', (event) => {
    if (event.button !== 0) return;
    drag = {x: placeOf(event), touch: event.pointerType === 'touch', moved: false};
    if (!drag.touch) element.setPointerCapture(event.pointerId);
  });
  element.addEventListener('pointermove', (event) => {
    const x = placeOf(event);
    if (drag && !drag.touch && (drag.moved || Math.abs(x - drag.x) > 4)) {
      drag.moved = true;
      if (event.shiftKey) {
        timeline.pan((drag.x - x) / area().width);
        drag.x = x;
      } else {
        selection.hidden = false;
        selection.style.left = `${Math.min(x, drag.x)}px`;
        selection.style.width = `${Math.abs(x - drag.x)}px`;
      }
    }
    if (!timeline.pinned || (drag && drag.touch)) timeline.look(momentOn(x));
  });
  element.addEventListener('pointerup', (event) => {
    if (!drag) return;
    const {x, moved} = drag;
    const ends = [momentAt(x), momentAt(placeOf(event))].sort((a, b) => a - b);
    const wasZoom = moved && !selection.hidden;
    drag = null;
    selection.hidden = true;
    if (wasZoom) timeline.show(ends[0], ends[1]);
    else if (!moved) timeline.pin(momentOn(x));
  });
  element.addEventListener('pointercancel', () => {
    drag = null;
    selection.hidden = true;
  });
  element.addEventListener('dblclick', () => {
    timeline.pin(null);
    timeline.reset();
  });
  element.addEventListener('wheel', (event) => {
    if (!event.ctrlKey) return;
    event.preventDefault();
    timeline.zoom(event.deltaY > 0 ? 1.25 : 0.8, momentAt(placeOf(event)));
  }, {passive: false});
}

/// Keys that work anywhere but in a field of text. `step(moment, direction)` gives the next moment.
function followKeys(timeline, step) {
  const arrow = (event, direction) => {
    if (event.shiftKey) return timeline.pan(direction / 4);
    return timeline.pin(step(timeline.moment ?? (direction > 0 ? timeline.from : timeline.to), direction));
  };
  const keys = {
    ArrowLeft: (event) => arrow(event, -1),
    ArrowRight: (event) => arrow(event, 1),
    '+': () => timeline.zoom(0.5),
    '=': () => timeline.zoom(0.5),
    '-': () => timeline.zoom(2),
    0: () => timeline.reset(),
    Escape: () => (timeline.pinned ? timeline.pin(null) : timeline.reset()),
  };
  document.addEventListener('keydown', (event) => {
    const typing = /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName);
    const scrolling = event.key.startsWith('Arrow') && event.target.matches('.scroll');
    if (typing || scrolling || event.ctrlKey || event.metaKey || event.altKey || !keys[event.key]) return;
    event.preventDefault();
    keys[event.key](event);
  });
}
