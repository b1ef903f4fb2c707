// Colours for the canvases, as the style sheet has them for the theme in use.

let palette = null;

function readColours() {
  const style = getComputedStyle(document.documentElement);
  const colour = (name) => style.getPropertyValue(name).trim();
  palette = {
    lines: Array.from({length: 16}, (_, number) => colour(`--line-${number}`)),
    heat: Array.from({length: 5}, (_, number) => rgbOf(colour(`--heat-${number}`))),
    axis: colour('--axis'),
    grid: colour('--grid'),
    quiet: colour('--quiet'),
  };
}

function rgbOf(hex) {
  return [1, 3, 5].map((at) => parseInt(hex.slice(at, at + 2), 16));
}

function lineColour(number) {
  return palette.lines[number % palette.lines.length];
}

function colourOptions() {
  return {axisLineColor: palette.axis, gridLineColor: palette.grid};
}

/// 0 to 1 as one of 256 shades, from one end of the heat scale to the other.
function heatShades() {
  const last = palette.heat.length - 1;
  return Array.from({length: 256}, (_, shade) => {
    const place = (shade / 255) * last;
    const low = Math.min(last - 1, Math.floor(place));
    return palette.heat[low].map((part, i) =>
      Math.round(part + (palette.heat[low + 1][i] - part) * (place - low)));
  });
}

/// Calls the function when the browser changes between light and dark.
function onThemeChange(action) {
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
    readColours();
    action();
  });
}

/// Calls the functions before and after printing. Paper is light: what is drawn for it has to have
/// its colours, and all of it to be drawn, before the browser lays it out: a canvas that is touched
/// in between comes out empty.
function aroundPrint(before, after) {
  const turn = (printing, action) => {
    document.documentElement.classList.toggle('printing', printing);
    readColours();
    action();
  };
  window.addEventListener('beforeprint', () => turn(true, before));
  window.addEventListener('afterprint', () => turn(false, after));
}
